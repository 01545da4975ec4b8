// UTF-8 text into the printer's encoding: UTF-8, or Shift-JIS (JIS X 0213
// form), one UTF-16 unit at a time. Unconvertible units and surrogate halves
// are dropped; the bounded append may cut a multi-byte character at the end
// of a full buffer. Backslash and tilde always stay 0x5C and 0x7E.
#pragma once

#include <cstdint>

#include <cups/ppd.h>

// Encoding names, with the values of the original platform constants.
using CFStringEncoding = uint32_t;
constexpr CFStringEncoding kCFStringEncodingUTF8 = 0x08000100;
constexpr CFStringEncoding kCFStringEncodingShiftJIS_X0213 = 0x0628;
constexpr CFStringEncoding kCFStringEncodingJIS_X0208_83 = 0x0621;

// Each zero-fills `destination` (size bytes) and returns the byte length of
// the text written; invalid UTF-8 gives 0 and an all-zero destination.
int32_t ConvertUTF8ToEncoding(const char* source, char* destination, int32_t size);
int32_t ConvertUTF8ToEncodingForUTF8(const char* source, char* destination, int32_t size);
int32_t ConvertUTF8ToPPDEncoding(const char* source, char* destination, int32_t size,
                                 CFStringEncoding encoding);

CFStringEncoding GetCFStringSimEncodingFromPPD(ppd_file_t* ppd);

// True when some character of `text` has no Shift-JIS form.
bool checkIfCharacterIsMultibyte(const char* text);

// Length of UTF-8 `text` in UTF-16 units (the unit the name limits count
// in). Counts the valid prefix of a text whose end was cut mid-character.
int32_t CountUTF16Units(const char* text);

// When UTF-8 `text` is longer than `count` UTF-16 units, rebuilds it in
// place (size bytes, zeroed first) from its first `count` units; a surrogate
// pair split by the cut is left out. Shorter texts stay as they are.
void CutUTF8ToUnits(char* text, int32_t size, int32_t count);
