// Special pages: front and back covers, inserted sheets and exception page
// ranges, sent to the printer as extended job attributes in the header.
//
// The ticket carries three counts and, per page setting, a "view" record
// (kind and paper-size selection of the dialog) and a "value" record (the
// setting itself). Both are comma-separated lists read field by field into
// kSPFieldSize-byte buffers.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>

#include "ticket/ticket_access.h"

struct SpecialPageOption {
  int32_t coverCount;
  int32_t insertionCount;
  int32_t exceptionCount;
};

extern SpecialPageOption psOptionSpecialPage;

extern const TicketBinding* const SpecialPageTicketData;
extern const int32_t SpecialPageTicketDataNum;

// Prefixes of the indexed keys; the index (0-based) follows as "%d".
extern const char kSPViewTicketKey[];
extern const char kSPZPCoverValueKey[];
extern const char kSPZPInsertionValueKey[];
extern const char kSPZPExceptionValueKey[];

// The paper-size selection number of a custom size.
extern const char CustomPapertyeSelectNumber[];

// Flat name, value lists; each count is the number of strings (2 per pair).
extern const char* const CoverTypeZPJLComm[];
extern const int32_t CoverTypeZPJLCommValueCount;
extern const char* const MediaColorZPJLComm[];
extern const int32_t MediaColorZPJLCommValueCount;
extern const char* const SidesZPJLComm[];
extern const int32_t SidesZPJLCommValueCount;

// Size of every field buffer, terminator included.
constexpr size_t kSPFieldSize = 64;

// Zeroes `out` (outSize bytes) and copies the field at the start of `text`
// (up to its first comma) into it, cut at outSize - 1 bytes. Returns the
// field's full length plus 1 (the step to the next field), 0 when `text`
// has no comma (the whole text was the field), -1 for a null pointer.
int getOneValue(const char* text, char* out, size_t outSize);

// Looks `name` up among the names (even positions) of `map`; on a match
// copies the value that follows into `out` (outSize bytes) and returns 0.
// Returns -1 when nothing matches or `count` is below 1.
int getSpecialPageZPJLValue(const char* name, const char* const* map, int32_t count, char* out,
                            size_t outSize);

// Writes the media lines of a cover: "0" the default tray; "1" the size
// kind, width, height, media type and colour read from `record` at
// `position` (media type, colour, width, height). The mapped colour is left
// in `colour` (kSPFieldSize bytes), empty when it does not map.
void OutputSPMediaSizeAndColor(const char* mediaSource, int32_t position, const char* record,
                               const char* sizeNumber, char* colour, FILE* stream);

void SpecialPageInializeDescriptionTable();
int SpecialPageGetTicketFromPDE(char* argv[]);
void OutputZPJLCommandForSpecialPage(char* argv[], FILE* stream);

// The attributes of the special-pages lines.
inline constexpr const char* SpecialPageAttributeNames[] = {
    "EFCV", "EBCV", "EMCT", "EMCP", "EMCW", "EMCH", "EMCQ", "EMCC", "EIST", "EISC", "EOVS", "EMDP",
    "EOVE",
};
