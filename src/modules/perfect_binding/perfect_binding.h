// Perfect binding: binding edge, trimming, cut sizes and positions, image
// and cover adjustments and cover media, sent as extended job attributes.
//
// The job options carry the PPD's choice names; reading the ticket turns
// them into the printer's words, and sizes go out in tenths of a millimetre
// computed from the PPD's page sizes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>

#include "ticket/ticket_access.h"

constexpr size_t kPBindTextSize = 256;

struct PBindOption {
  char position[kPBindTextSize];
  char rotation[kPBindTextSize];
  char trimming[kPBindTextSize];
  char cutPageSize[kPBindTextSize];
  char cutPositionTop[kPBindTextSize];
  char cutPositionFore[kPBindTextSize];
  char cutPageAdjustmentFore[kPBindTextSize];
  char cutPageAdjustmentTB[kPBindTextSize];
  char rotationAdjustTop[kPBindTextSize];
  char rotationAdjustBot[kPBindTextSize];
  char rotationAdjustFore[kPBindTextSize];
  char coverAdjustX[kPBindTextSize];
  char coverAdjustY[kPBindTextSize];
  char coverPageSize[kPBindTextSize];
  char coverMediaType[kPBindTextSize];
  char coverMediaColor[kPBindTextSize];
  char coverPaperTray[kPBindTextSize];
  char pageSize[kPBindTextSize];
  char cutPositionAdjustmentTB[kPBindTextSize];
  int32_t imagePosition;  // read, never used
  int32_t minimumCut;     // 1 when a minimum cut was chosen
};

extern PBindOption psoptionpbind;

extern const TicketBinding* const PBindticketData;
extern const int32_t PBindticketDataNum;

// PPD choice name and printer word; the last row is an empty pair.
struct PBindTranslation {
  const char* ppdName;
  const char* printerWord;
};
extern const PBindTranslation PerfectBindParam[];
extern const int32_t PerfectBindParamNum;  // rows before the empty pair

// Copies the printer word for `name` into `out` (size bytes); empty when the
// name has none.
void convertPBindPPDValue(const char* name, char* out, size_t size);

// Width and length of the PPD page size `name` in tenths of a millimetre
// (whole millimetres times 10); 0 and 0 when the PPD does not know it.
void PBindPageSizeInTenths(const char* name, int32_t* width, int32_t* length);

// "@PJL SET JOBATTR=\"@<attribute>=<value>\"\n".
void OutputZPJLCommandforPBindNormal(const char* value, const char* attribute, FILE* stream);

// When `text` is non-empty, writes atoi(text) * factor as @<attribute>,
// negated for sign mode 1 when `position` is "RIGHT" and for sign mode 2
// when it is "TOP" or "LEFT".
void OutputZPJLCommandforPBindDigital(const char* text, int32_t factor, const char* attribute,
                                      const char* position, int32_t signMode, FILE* stream);

// Clears the record, reads the ticket and turns choice names into printer words.
int PBindGetTicketFromPDE(char* argv[]);

// The perfect-binding header lines; nothing when binding is off.
void OutputZPJLCommandforPerfectBind(FILE* stream);

// The attributes the perfect-binding lines carry, in the order they are
// written (the inspector knows the lines by these names).
inline constexpr const char* PBindAttributeNames[] = {
    "PBRE", "MSDA", "PBTC", "PBBP", "PBTP", "PBTW", "PBTH", "ISXO", "ISXT", "PBAW", "PBAH",
    "PBAT", "PBAB", "PBAF", "PBAX", "PBAY", "PBAV", "PBCP", "PBCQ", "PBCC", "PBCT", "PBCI",
};
