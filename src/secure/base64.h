// The base64 codec of the password fields: standard alphabet, "=" padding,
// no line breaks on output; a lenient decoder that skips white space and
// does not reject characters outside the alphabet.
//
// Results: 0 success; -1 a required pointer is missing (input, output
// length, or output while capacity is non-zero); -2 a length is out of
// range; -3 capacity is 0 or too small: *outLength then holds the room
// needed and nothing is written.
#pragma once

#include <cstdint>

constexpr int32_t kXSPSuccess = 0;
constexpr int32_t kXSPMissingPointer = -1;
constexpr int32_t kXSPBadLength = -2;
constexpr int32_t kXSPNoRoom = -3;

// "A".."Z", "a".."z", "0".."9", "+", "/".
extern const char B64CHR[65];
// Inverse of B64CHR; every other byte value, "=" included, is 0xFF.
extern const uint8_t B64TBL[256];

// Encodes dataLength bytes (at least 1) as 4 characters per 3 bytes, the
// last group padded with "=". No terminating NUL is written.
int32_t XSPBinToB64(const uint8_t* data, int32_t dataLength, char* out, int32_t* outLength,
                    int32_t capacity);

// Decodes textLength characters (a positive multiple of 4). The room needed
// is textLength / 4 * 3 less the "=" at the end of the text. The text ends at
// textLength or at its first NUL, whichever comes first. Characters outside
// the alphabet are decoded through their table value 0xFF; the decoder
// never writes more than `capacity` bytes.
int32_t XSPB64ToBin(const char* text, int32_t textLength, uint8_t* out, int32_t* outLength,
                    int32_t capacity);
