// Finishing features module: tab margin shift, trimmer, numbering, offset
// stacking and output face as table-driven job attributes in the header;
// separator pages and auto-fit (with the booklet margin shift) as PostScript
// at the pass-through's injection points; and the booklet direction,
// binding and division attributes written after perfect binding.
#pragma once

#include <cstdint>
#include <cstdio>

#include "engine/command.h"
#include "engine/condition.h"
#include "ticket/ticket_access.h"

// Sizes of the record's text fields, terminator included.
constexpr int32_t kFeaturesMMSize = 5;
constexpr int32_t kFeaturesCountSize = 6;
constexpr int32_t kFeaturesTextSize = 100;

// The job's finishing settings. Numbers are -1 and texts empty when the
// ticket lacks them; texts are in the printer's language encoding.
struct FeaturesOptionRecord {
  int32_t tabMarginSwitch;      // 0 off, 1 on
  int32_t trimmerSwitch;        // 0 off, 1 on
  int32_t trimmerSelect;        // 1 none, 2 fore edge, 3 top and lower edges
  int32_t bookletMarginSwitch;  // 0 off, 1 on
  char tabMarginShift[kFeaturesMMSize];
  char trimmerCuttingSize[kFeaturesMMSize];
  char trimmerWidth[kFeaturesMMSize];
  char trimmerHeight[kFeaturesMMSize];
  char trimmerAdjust[kFeaturesMMSize];
  int32_t separatorPagesList;  // 1 none
  char separatorPages[kFeaturesTextSize];
  int32_t autoFitSwitch;  // 0 off, 1 on
  char bookletMarginShift[kFeaturesMMSize];
  int32_t numInSequenceSwitch;  // 0 off, 1 on
  char numInSequenceStart[kFeaturesMMSize];
  int32_t offsetStackingList;  // 1 none ... 5 end of set by copies
  char offsetStackingPages[kFeaturesCountSize];
  char offsetStackingUnits[kFeaturesCountSize];
  int32_t ejectOptions;  // 1 off, 2 down, 3 up, 4 down reverse, 5 up reverse
  char media[kFeaturesTextSize];
  int32_t specialPagesA5;  // 0 no, 1 yes
  char punchHoles[kFeaturesTextSize];
  char featuresMediaTypeTab[kFeaturesTextSize];  // "true" or "false"
  char coilPunchFace[kFeaturesTextSize];         // "true" or "false"
  int32_t specialPagesMediaTab;                  // 0 no, 1 yes
};

extern FeaturesOptionRecord zpjlOptionFeatures;

extern const TicketBinding* const FeaturesticketData;
extern const int32_t FeaturesticketDataNum;

// Option codes, the references of the rows' conditions.
extern const int32_t OptionTabMarginNone;
extern const int32_t OptionTabMargin;
extern const int32_t OptionTrimmerNone;
extern const int32_t OptionTrimmer;
extern const int32_t SelectTrimmerNone;
extern const int32_t SelectTrimmer;
extern const int32_t SelectTrimmerTopLower;
extern const int32_t OptionBookletMarginNone;
extern const int32_t OptionBookletMargin;
extern const int32_t OptionNumInSequenceNone;
extern const int32_t OptionNumInSequence;
extern const int32_t OptionOffsetStackingNone;
extern const int32_t OptionOffsetStackingEndOfSet;
extern const int32_t OptionOffsetStackingDeviceDeactivation;
extern const int32_t OptionOffsetStackingEndOfSetPage;
extern const int32_t OptionOffsetStackingEndOfSetCopy;
extern const int32_t EjectOptionsOff;
extern const int32_t EjectOptionsDown;
extern const int32_t EjectOptionsUp;
extern const int32_t EjectOptionsDownReverse;
extern const int32_t EjectOptionsUpReverse;
extern const int32_t OptionAutoFitNone;
extern const int32_t OptionAutoFit;
extern const int32_t OptionSepratorPagesNone;
extern const int32_t specialPagesMediaNoTab;
extern const int32_t specialPagesMediaTab;
extern const int32_t specialPagesMediasizeA5;
extern const int32_t specialPagesMediasizeNoA5;

// Reference strings, each a cell holding the text (the string comparisons
// take a pointer to such a cell).
extern const char* const mediaTypeIsTab;    // "true"
extern const char* const mediaTypeNoTab;    // "false"
extern const char* const punchHoleCoil;     // "Coil"
extern const char* const coilPunchFaceOn;   // "true"
extern const char* const coilPunchFaceOff;  // "false"
extern const char* const mediaTypeA5;       // "A5"

// The header rows, one attribute line each, written when their conditions hold.
extern const FormatEntry* const FeaturesFmtTable;
extern const int32_t FeaturesFmtTableNum;

// The rows are constants: checks that each parameter table holds the count
// its row's kind states.
void FeaturesInializeDescriptionTableFromFilter();
void FeaturesInitializeCmdParaTable();

// Fills zpjlOptionFeatures from the job ticket (argument 5).
void FeaturesGetTicketFromPDE(char* argv[]);

// Writes the header rows whose conditions hold, in row order.
void FeaturesOutputZPJLCommandFromFilter(char* argv[], FILE* stream);

// The PostScript hook: separator pages before the first "%%EndProlog" (14)
// and auto-fit before "%%EndSetup" (16) on 1-up jobs; both, separator
// first, before "userdict/setpagedevice{pop}bind put" (21) on N-up jobs.
// The sheet's pages come from the layout rows and columns of the job.
void FeaturesOutputPSCommandFromFilter(int32_t point, FILE* stream);

// The two PostScript fragments; each writes nothing when its option is off.
void FeaturesOutputSeparatorPages(FILE* stream);
void FeaturesOutputAutoFit(FILE* stream);

// Size of the buffer the variable PostScript lines are formatted into.
constexpr size_t kFeaturesPSLineSize = 100;

// The PostScript the module writes: each fragment is a block of these four
// lines around one middle line, which is `before`, the value and `after`.
// The inspector reads a job back by these same constants.
inline constexpr char kNonPPDBlockOpen[] = "[{";
inline constexpr char kNonPPDBlockBegin[] = "%%BeginNonPPDFeatures";
inline constexpr char kNonPPDBlockEnd[] = "%%EndNonPPDFeatures";
inline constexpr char kNonPPDBlockClose[] = "} stopped cleartomark";
struct NonPPDFragment {
  const char* before;
  const char* after;
};
inline constexpr NonPPDFragment kSeparatorPagesFragment = {
    "1 dict dup/SeparatorPages[", "]put/Custom/ProcSet findresource/setcoverseparator get exec"};
inline constexpr NonPPDFragment kBookletMarginShiftFragment = {
    "", ".000/Custom/ProcSet findresource/setsignatureimageshift get exec"};
// The value is "true" or "false".
inline constexpr NonPPDFragment kAutoFitFragment = {
    "/Custom/ProcSet findresource/setsignatureautoscale 2 copy known {get ",
    " exch exec} {pop pop} ifelse"};

// @DIND, @DIBB and @DIBK from the job information comments record, on
// printers whose language encoding is UTF-8 only.
void OutputZPJLCommandforBooklet(FILE* stream);

// The attributes of the booklet lines.
inline constexpr const char* BookletAttributeNames[] = {"DIND", "DIBB", "DIBK"};
