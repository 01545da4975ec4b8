// Character set conversion through iconv: UTF-8, UTF-16 code units and the
// Shift-JIS form of JIS X 0213.
//
// The converters work on UTF-16 code units because the printer-encoding
// rules are stated per unit (a surrogate half on its own has no form in any
// encoding). The iconv descriptors are opened once per process.
#pragma once

#include <cstddef>
#include <string>

// Decodes NUL-terminated UTF-8 into UTF-16 units. Returns true when the
// whole text is valid UTF-8; otherwise `units` holds the units of the valid
// prefix (up to the first bad or incomplete sequence).
bool DecodeUTF8(const char* text, std::u16string* units);

// True when `text` is valid UTF-8 (no overlong forms, no encoded surrogates,
// nothing above U+10FFFF).
bool IsValidUTF8(const char* text);

// The Shift-JIS (JIS X 0213) bytes of one UTF-16 unit, written to `out`
// (room for `size` bytes, NUL-terminated). Returns false, with `out` empty,
// when the unit has no form of its own (unmapped, or a surrogate half).
bool EncodeUnitShiftJISX0213(char16_t unit, char* out, size_t size);

// The UTF-8 bytes of one UTF-16 unit, NUL-terminated in `out` (size >= 4).
// Returns false, with `out` empty, for a surrogate half.
bool EncodeUnitUTF8(char16_t unit, char* out, size_t size);

// Encodes UTF-16 units as UTF-8. A surrogate pair becomes one four-byte
// sequence; a surrogate half without its partner is left out.
std::string EncodeUTF8(const char16_t* units, size_t count);

// Decodes Shift-JIS (JIS X 0213) bytes into UTF-16 units. Returns true when
// all `length` bytes decoded; otherwise `units` holds the valid prefix.
bool DecodeShiftJISX0213(const char* bytes, size_t length, std::u16string* units);
