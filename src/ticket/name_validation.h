// User and document names cut to the printer's limits and checked against
// the byte ranges it accepts.
//
// The routines work on the job identity buffers of frame/job_state.h. In
// UTF-8 mode lengths count UTF-16 units; otherwise they count Shift-JIS
// bytes, estimated by a width walk for document names. A user name that
// fails becomes "UnknownUser"; a print type document name that fails is
// emptied.
#pragma once

#include <cstdint>

constexpr int kValidateRangeMax = 10;

// Allowed single bytes and byte pairs (first byte * 256 + second byte);
// inclusive ranges, only the first `count` of each list used.
struct ValidateDataScale {
  int32_t byteRangeCount;
  int32_t byteRanges[kValidateRangeMax][2];
  int32_t wordRangeCount;
  int32_t wordRanges[kValidateRangeMax][2];
};

// A list of space characters: single bytes or byte pairs.
struct SpaceDataScale {
  int32_t count;
  int32_t ranges[kValidateRangeMax][2];
};

extern const ValidateDataScale userNameValidateDataScale;
extern const ValidateDataScale userNameValidateDataScaleForUTF8;
extern const ValidateDataScale docuNameValidateDataScale;
extern const ValidateDataScale docuNameValidateDataScaleForProduct02;
extern const ValidateDataScale docuNameValidateDataScaleForProduct03;
extern const ValidateDataScale docuNameValidateDataScaleForProduct03UTF8;

extern const char defaultUserName[];  // "UnknownUser"

// Whether the byte at `position`, or the pair it starts, is in a range.
bool ISByteValid(const unsigned char* position, const ValidateDataScale* table);
bool ISWordValid(const unsigned char* position, const ValidateDataScale* table);
bool ISByteSpace(const unsigned char* position, const SpaceDataScale* table);
bool ISWordSpace(const unsigned char* position, const SpaceDataScale* table);

// 1 when the whole NUL-terminated text passes `table` (pairs tried first).
int ValidateDada(const char* text, const ValidateDataScale* table);

// 1 when the text holds only spaces and ideographic spaces (or nothing).
int IsAllSpace(const char* text);

// Cuts StdUserName to the printer's limit; replaces an empty, all-space or
// invalid name with "UnknownUser" (and, in UTF-8 mode, StdJBAUserName too).
void InvalidateStdUserName();

// Cut and check of StdDocumentName and PTStdDocumentName by the product type
// in the ticket of argv[5].
void InvalidateStdDocumentNameForProductType(char* argv[]);
void InvalidatePrintTypeDocumentNameForProductType(char* argv[]);

// Cuts StdDocumentName to 24 bytes; returns its length before the cut.
int InvalidateStdDocumentName();

// The name limit for a product type: 64 for 3, 12 for 2, else 24.
int32_t DocumentNameLimitForProductType(int32_t productType);

// Cuts Shift-JIS `text` by the estimated width of its characters (2 for a
// UTF-16 unit with bit 0x1000 or 0x0100 set, else 1): at byte `limit` when
// the width reaches it, at limit - 1 when it jumps over it.
void CutShiftJISTextByWidth(char* text, int32_t limit);
