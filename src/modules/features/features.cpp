#include "modules/features/features.h"

#include <cstdlib>
#include <cstring>

#include "base/fixed_text.h"
#include "base/job_state.h"
#include "base/job_text.h"
#include "base/output_channel.h"
#include "base/ppd_queries.h"
#include "engine/row_writer.h"
#include "modules/job_comments/job_comments.h"

FeaturesOptionRecord zpjlOptionFeatures;

const int32_t OptionTabMarginNone = 0;
const int32_t OptionTabMargin = 1;
const int32_t OptionTrimmerNone = 0;
const int32_t OptionTrimmer = 1;
const int32_t SelectTrimmerNone = 1;
const int32_t SelectTrimmer = 2;
const int32_t SelectTrimmerTopLower = 3;
const int32_t OptionBookletMarginNone = 0;
const int32_t OptionBookletMargin = 1;
const int32_t OptionNumInSequenceNone = 0;
const int32_t OptionNumInSequence = 1;
const int32_t OptionOffsetStackingNone = 1;
const int32_t OptionOffsetStackingEndOfSet = 2;
const int32_t OptionOffsetStackingDeviceDeactivation = 3;
const int32_t OptionOffsetStackingEndOfSetPage = 4;
const int32_t OptionOffsetStackingEndOfSetCopy = 5;
const int32_t EjectOptionsOff = 1;
const int32_t EjectOptionsDown = 2;
const int32_t EjectOptionsUp = 3;
const int32_t EjectOptionsDownReverse = 4;
const int32_t EjectOptionsUpReverse = 5;
const int32_t OptionAutoFitNone = 0;
const int32_t OptionAutoFit = 1;
const int32_t OptionSepratorPagesNone = 1;
const int32_t specialPagesMediaNoTab = 0;
const int32_t specialPagesMediaTab = 1;
const int32_t specialPagesMediasizeA5 = 1;
const int32_t specialPagesMediasizeNoA5 = 0;

const char* const mediaTypeIsTab = "true";
const char* const mediaTypeNoTab = "false";
const char* const punchHoleCoil = "Coil";
const char* const coilPunchFaceOn = "true";
const char* const coilPunchFaceOff = "false";
const char* const mediaTypeA5 = "A5";

// ---- Ticket bindings ---------------------------------------------------------

namespace {

constexpr int32_t kIntSize = sizeof(int32_t);
constexpr FeaturesOptionRecord& F = zpjlOptionFeatures;

}  // namespace

// clang-format off
const TicketBinding FeaturesticketData[] = {
    {JTZ_KEY("TabMarginSwitchTicket"), &F.tabMarginSwitch, kIntSize, GetTicketInteger},
    {JTZ_KEY("TrimmerSwitchTicket"), &F.trimmerSwitch, kIntSize, GetTicketInteger},
    {ETZ_KEY("TrimmerSelectTicket"), &F.trimmerSelect, kIntSize, GetTicketInteger},
    {JTZ_KEY("BookletMarginSwitchTicket"), &F.bookletMarginSwitch, kIntSize, GetTicketInteger},
    {JTZ_KEY("TabMarginMMShiftTicket"), F.tabMarginShift, kFeaturesMMSize,
     GetTicketStringConvertedToPrtLang},
    {JTZ_KEY("TrimmerMMCuttingSizeTicket"), F.trimmerCuttingSize, kFeaturesMMSize,
     GetTicketStringConvertedToPrtLang},
    {ETZ_KEY("TrimmerWidthMMSizeTicket"), F.trimmerWidth, kFeaturesMMSize,
     GetTicketStringConvertedToPrtLang},
    {ETZ_KEY("TrimmerHeightMMSizeTicket"), F.trimmerHeight, kFeaturesMMSize,
     GetTicketStringConvertedToPrtLang},
    {ETZ_KEY("TrimmerAdjustMMSizeTicket"), F.trimmerAdjust, kFeaturesMMSize,
     GetTicketStringConvertedToPrtLang},
    {JTZ_KEY("NumInSequenceSwitchTicket"), &F.numInSequenceSwitch, kIntSize, GetTicketInteger},
    {JTZ_KEY("NumInSequenceLArrowTicket"), F.numInSequenceStart, kFeaturesMMSize,
     GetTicketStringConvertedToPrtLang},
    {JTZ_KEY("OffsetStackingListTicket"), &F.offsetStackingList, kIntSize, GetTicketInteger},
    {JTZ_KEY("OffsetStackingPagesLArrowTicket"), F.offsetStackingPages, kFeaturesCountSize,
     GetTicketStringConvertedToPrtLang},
    {JTZ_KEY("OffsetStackingUnitsLArrowTicket"), F.offsetStackingUnits, kFeaturesCountSize,
     GetTicketStringConvertedToPrtLang},
    {JTZ_KEY("SeparatorPageListTicket"), &F.separatorPagesList, kIntSize, GetTicketInteger},
    {JTZ_KEY("SeparatorPageTicket"), F.separatorPages, kFeaturesTextSize,
     GetTicketStringConvertedToPrtLang},
    {JTZ_KEY("AutoFitSwitchTicket"), &F.autoFitSwitch, kIntSize, GetTicketInteger},
    {JTZ_KEY("BookletMarginMMShiftTicket"), F.bookletMarginShift, kFeaturesMMSize,
     GetTicketStringConvertedToPrtLang},
    {JTZ_KEY("EjectOptionsListTicket"), &F.ejectOptions, kIntSize, GetTicketInteger},
    {"media", F.media, kFeaturesTextSize, GetTicketStringConvertedToPrtLang},
    {ETZ_KEY("whetherMediaSizeA5Ticket"), &F.specialPagesA5, kIntSize, GetTicketInteger},
    {"KRNumPunchHoles", F.punchHoles, kFeaturesTextSize, GetTicketStringConvertedToPrtLang},
    {JTZ_KEY("featuresMediaTypeTabTicket"), F.featuresMediaTypeTab, kFeaturesTextSize,
     GetTicketStringConvertedToPrtLang},
    {JTZ_KEY("CoilPunchFaceTicket"), F.coilPunchFace, kFeaturesTextSize,
     GetTicketStringConvertedToPrtLang},
    {JTZ_KEY("whetherMediaTypeTabTicket"), &F.specialPagesMediaTab, kIntSize, GetTicketInteger},
};
// clang-format on
const int32_t FeaturesticketDataNum = sizeof FeaturesticketData / sizeof FeaturesticketData[0];

void FeaturesGetTicketFromPDE(char* argv[]) {
  GetTicketFromArray(argv, FeaturesticketData, FeaturesticketDataNum);
}

// ---- Header rows -------------------------------------------------------------

namespace {

const char prtfmtStrFeaturesTabsOff[] = "@PJL SET JOBATTR=%c@TABS=OFF%c%c";
const char prtfmtStrFeaturesTabs[] = "@PJL SET JOBATTR=%c@TABS=%s%c%c";
const char prtfmtStrFeaturesTrimmerOff[] = "@PJL SET JOBATTR=%c@TRMR=0%c%c";
const char prtfmtStrFeaturesTrimmer[] = "@PJL SET JOBATTR=%c@TRMR=%s%c%c";
const char prtfmtStrFeaturesTrimmerFore[] = "@PJL SET JOBATTR=%c@TRFW=%s%c%c";
const char prtfmtStrFeaturesTrimmerForeOff[] = "@PJL SET JOBATTR=%c@TRFW=0%c%c";
const char prtfmtStrFeaturesTrimmerAdjust[] = "@PJL SET JOBATTR=%c@TROP=%s%c%c";
const char prtfmtStrFeaturesTrimmerAdjustOff[] = "@PJL SET JOBATTR=%c@TROP=0%c%c";
const char prtfmtStrFeaturesNumberingOff[] = "@PJL SET JOBATTR=%c@MDOC=0%c%c";
const char prtfmtStrFeaturesNumbering[] = "@PJL SET JOBATTR=%c@MDOC=%s%c%c";
const char prtfmtStrFeaturesOffsetPages[] = "@PJL SET JOBOFFSET=PAGES%c";
const char prtfmtStrFeaturesOffsetCopies[] = "@PJL SET JOBOFFSET=COPIES%c";
const char prtfmtStrFeaturesOffsetCount[] = "@PJL SET JOBATTR=%c@OCSN=%s%c%c";
const char prtfmtStrFeaturesFaceOff[] = "@PJL SET JOBATTR=%c@FACE=OFF%c%c";
const char prtfmtStrFeaturesFaceDown[] = "@PJL SET JOBATTR=%c@FACE=DOWN%c%c";
const char prtfmtStrFeaturesFaceUp[] = "@PJL SET JOBATTR=%c@FACE=UP%c%c";
const char prtfmtStrFeaturesFaceDownReverse[] = "@PJL SET JOBATTR=%c@FACE=DOWN_REVERSE%c%c";
const char prtfmtStrFeaturesFaceUpReverse[] = "@PJL SET JOBATTR=%c@FACE=UP_REVERSE%c%c";

// Parameter lists: quote, value, quote, line feed for a row with a value;
// quote, quote, line feed for a fixed row; line feed alone for plain PJL.
const ParamPointer cmdParaListFeaturesFixed[] = {&CTRLSym_DOUBLE, &CTRLSym_DOUBLE, &CTRLSym_LF};
const int32_t cmdParaNumFeaturesFixed = 3;
const ParamPointer cmdParaListFeaturesLineEnd[] = {&CTRLSym_LF};
const int32_t cmdParaNumFeaturesLineEnd = 1;
const int32_t cmdParaNumFeaturesValue = 4;

#define FEATURES_VALUE_LIST(name, field)                                                       \
  const ParamPointer cmdParaListFeatures##name[] = {&CTRLSym_DOUBLE, F.field, &CTRLSym_DOUBLE, \
                                                    &CTRLSym_LF}

FEATURES_VALUE_LIST(TabMarginShift, tabMarginShift);
FEATURES_VALUE_LIST(TrimmerCuttingSize, trimmerCuttingSize);
FEATURES_VALUE_LIST(TrimmerWidth, trimmerWidth);
FEATURES_VALUE_LIST(TrimmerHeight, trimmerHeight);
FEATURES_VALUE_LIST(TrimmerAdjust, trimmerAdjust);
FEATURES_VALUE_LIST(NumInSequenceStart, numInSequenceStart);
FEATURES_VALUE_LIST(OffsetStackingPages, offsetStackingPages);
FEATURES_VALUE_LIST(OffsetStackingUnits, offsetStackingUnits);

#undef FEATURES_VALUE_LIST

// Condition items. An integer item compares a record field with an option
// code; a string item's reference is the cell of a reference string.
#define INT_IS(field, code) \
  { &F.field, &code, IntCampareFunc }
#define STR_EQUALS(field, cell) \
  { F.field, &cell, StrEqualCampareFunc }
#define STR_CONTAINS(field, cell) \
  { F.field, &cell, StrContainCampareFunc }
#define STR_NOT_CONTAINS(field, cell) \
  { F.field, &cell, StrNotContainCampareFunc }

// clang-format off
const ConditionItem comparationItemFeaturesTabMarginOff[] = {
    INT_IS(tabMarginSwitch, OptionTabMarginNone)};
const ConditionItem comparationItemFeaturesTabMarginOn[] = {
    INT_IS(tabMarginSwitch, OptionTabMargin)};
const ConditionItem comparationItemFeaturesTrimmerOff[] = {
    INT_IS(trimmerSwitch, OptionTrimmerNone)};
const ConditionItem comparationItemFeaturesTrimmerOn[] = {INT_IS(trimmerSwitch, OptionTrimmer)};
const ConditionItem comparationItemFeaturesSelectFore[] = {INT_IS(trimmerSelect, SelectTrimmer)};
const ConditionItem comparationItemFeaturesSelectTopLower[] = {
    INT_IS(trimmerSelect, SelectTrimmerTopLower)};
const ConditionItem comparationItemFeaturesNumberingOff[] = {
    INT_IS(numInSequenceSwitch, OptionNumInSequenceNone)};
const ConditionItem comparationItemFeaturesNumberingOn[] = {
    INT_IS(numInSequenceSwitch, OptionNumInSequence)};
const ConditionItem comparationItemFeaturesOffsetByPages[] = {
    INT_IS(offsetStackingList, OptionOffsetStackingEndOfSetPage)};
const ConditionItem comparationItemFeaturesOffsetByCopies[] = {
    INT_IS(offsetStackingList, OptionOffsetStackingEndOfSetCopy)};
const ConditionItem comparationItemFeaturesEjectDown[] = {INT_IS(ejectOptions, EjectOptionsDown)};
const ConditionItem comparationItemFeaturesEjectUp[] = {INT_IS(ejectOptions, EjectOptionsUp)};
const ConditionItem comparationItemFeaturesEjectDownReverse[] = {
    INT_IS(ejectOptions, EjectOptionsDownReverse)};
const ConditionItem comparationItemFeaturesEjectUpReverse[] = {
    INT_IS(ejectOptions, EjectOptionsUpReverse)};

// Coil punching with the coil face on: OFF only without any tab stock or
// A5 involvement, UP as soon as the job or its special pages use either.
const ConditionItem comparationItemFeaturesFaceOffCoilPlain[] = {
    INT_IS(ejectOptions, EjectOptionsOff),
    STR_CONTAINS(punchHoles, punchHoleCoil),
    STR_EQUALS(featuresMediaTypeTab, mediaTypeNoTab),
    INT_IS(specialPagesMediaTab, specialPagesMediaNoTab),
    STR_EQUALS(coilPunchFace, coilPunchFaceOn),
    STR_NOT_CONTAINS(media, mediaTypeA5),
    INT_IS(specialPagesA5, specialPagesMediasizeNoA5)};
const ConditionItem comparationItemFeaturesFaceOffNoCoil[] = {
    INT_IS(ejectOptions, EjectOptionsOff),
    STR_NOT_CONTAINS(punchHoles, punchHoleCoil),
    STR_EQUALS(coilPunchFace, coilPunchFaceOn)};
const ConditionItem comparationItemFeaturesFaceOffCoilFaceOff[] = {
    INT_IS(ejectOptions, EjectOptionsOff),
    STR_EQUALS(coilPunchFace, coilPunchFaceOff)};
const ConditionItem comparationItemFeaturesFaceUpMediaA5[] = {
    INT_IS(ejectOptions, EjectOptionsOff),
    STR_CONTAINS(punchHoles, punchHoleCoil),
    STR_EQUALS(featuresMediaTypeTab, mediaTypeNoTab),
    INT_IS(specialPagesMediaTab, specialPagesMediaNoTab),
    STR_CONTAINS(media, mediaTypeA5),
    INT_IS(specialPagesA5, specialPagesMediasizeNoA5),
    STR_EQUALS(coilPunchFace, coilPunchFaceOn)};
const ConditionItem comparationItemFeaturesFaceUpSpecialA5[] = {
    INT_IS(ejectOptions, EjectOptionsOff),
    STR_CONTAINS(punchHoles, punchHoleCoil),
    STR_EQUALS(featuresMediaTypeTab, mediaTypeNoTab),
    INT_IS(specialPagesMediaTab, specialPagesMediaNoTab),
    STR_NOT_CONTAINS(media, mediaTypeA5),
    INT_IS(specialPagesA5, specialPagesMediasizeA5),
    STR_EQUALS(coilPunchFace, coilPunchFaceOn)};
const ConditionItem comparationItemFeaturesFaceUpBothA5[] = {
    INT_IS(ejectOptions, EjectOptionsOff),
    STR_CONTAINS(punchHoles, punchHoleCoil),
    STR_EQUALS(featuresMediaTypeTab, mediaTypeNoTab),
    INT_IS(specialPagesMediaTab, specialPagesMediaNoTab),
    STR_CONTAINS(media, mediaTypeA5),
    INT_IS(specialPagesA5, specialPagesMediasizeA5),
    STR_EQUALS(coilPunchFace, coilPunchFaceOn)};
const ConditionItem comparationItemFeaturesFaceUpMediaTab[] = {
    INT_IS(ejectOptions, EjectOptionsOff),
    STR_CONTAINS(punchHoles, punchHoleCoil),
    STR_EQUALS(featuresMediaTypeTab, mediaTypeIsTab),
    INT_IS(specialPagesMediaTab, specialPagesMediaNoTab),
    STR_EQUALS(coilPunchFace, coilPunchFaceOn)};
const ConditionItem comparationItemFeaturesFaceUpSpecialTab[] = {
    INT_IS(ejectOptions, EjectOptionsOff),
    STR_CONTAINS(punchHoles, punchHoleCoil),
    STR_EQUALS(featuresMediaTypeTab, mediaTypeNoTab),
    INT_IS(specialPagesMediaTab, specialPagesMediaTab),
    STR_EQUALS(coilPunchFace, coilPunchFaceOn)};
const ConditionItem comparationItemFeaturesFaceUpBothTab[] = {
    INT_IS(ejectOptions, EjectOptionsOff),
    STR_CONTAINS(punchHoles, punchHoleCoil),
    STR_EQUALS(featuresMediaTypeTab, mediaTypeIsTab),
    INT_IS(specialPagesMediaTab, specialPagesMediaTab),
    STR_EQUALS(coilPunchFace, coilPunchFaceOn)};
// clang-format on

#undef INT_IS
#undef STR_EQUALS
#undef STR_CONTAINS
#undef STR_NOT_CONTAINS

// One header row before binding: its format, parameter list and condition items.
struct FeaturesRowSource {
  const char* format;
  const ParamPointer* params;
  int32_t paramCount;
  const ConditionItem* conditions;
  int32_t conditionCount;
};

template <size_t N>
constexpr int32_t CountOf(const ConditionItem (&)[N]) {
  return static_cast<int32_t>(N);
}

#define ROW_VALUE(format, list, items) \
  { format, cmdParaListFeatures##list, cmdParaNumFeaturesValue, items, CountOf(items) }
#define ROW_FIXED(format, items) \
  { format, cmdParaListFeaturesFixed, cmdParaNumFeaturesFixed, items, CountOf(items) }
#define ROW_PLAIN(format, items) \
  { format, cmdParaListFeaturesLineEnd, cmdParaNumFeaturesLineEnd, items, CountOf(items) }

// With the trimmer on and selection 2, rows 4 and 5 both hold: the same
// @TRMR line is written twice, deliberately.
// clang-format off
constexpr FeaturesRowSource kFeaturesRows[] = {
    ROW_FIXED(prtfmtStrFeaturesTabsOff, comparationItemFeaturesTabMarginOff),
    ROW_VALUE(prtfmtStrFeaturesTabs, TabMarginShift, comparationItemFeaturesTabMarginOn),
    ROW_FIXED(prtfmtStrFeaturesTrimmerOff, comparationItemFeaturesTrimmerOff),
    ROW_VALUE(prtfmtStrFeaturesTrimmer, TrimmerCuttingSize, comparationItemFeaturesTrimmerOn),
    ROW_VALUE(prtfmtStrFeaturesTrimmer, TrimmerCuttingSize, comparationItemFeaturesSelectFore),
    ROW_VALUE(prtfmtStrFeaturesTrimmer, TrimmerWidth, comparationItemFeaturesSelectTopLower),
    ROW_VALUE(prtfmtStrFeaturesTrimmerFore, TrimmerHeight, comparationItemFeaturesSelectTopLower),
    ROW_FIXED(prtfmtStrFeaturesTrimmerForeOff, comparationItemFeaturesSelectFore),
    ROW_VALUE(prtfmtStrFeaturesTrimmerAdjust, TrimmerAdjust,
              comparationItemFeaturesSelectTopLower),
    ROW_FIXED(prtfmtStrFeaturesTrimmerAdjustOff, comparationItemFeaturesSelectFore),
    ROW_FIXED(prtfmtStrFeaturesNumberingOff, comparationItemFeaturesNumberingOff),
    ROW_VALUE(prtfmtStrFeaturesNumbering, NumInSequenceStart, comparationItemFeaturesNumberingOn),
    ROW_PLAIN(prtfmtStrFeaturesOffsetPages, comparationItemFeaturesOffsetByPages),
    ROW_PLAIN(prtfmtStrFeaturesOffsetCopies, comparationItemFeaturesOffsetByCopies),
    ROW_VALUE(prtfmtStrFeaturesOffsetCount, OffsetStackingPages,
              comparationItemFeaturesOffsetByPages),
    ROW_VALUE(prtfmtStrFeaturesOffsetCount, OffsetStackingUnits,
              comparationItemFeaturesOffsetByCopies),
    ROW_FIXED(prtfmtStrFeaturesFaceOff, comparationItemFeaturesFaceOffCoilPlain),
    ROW_FIXED(prtfmtStrFeaturesFaceOff, comparationItemFeaturesFaceOffNoCoil),
    ROW_FIXED(prtfmtStrFeaturesFaceOff, comparationItemFeaturesFaceOffCoilFaceOff),
    ROW_FIXED(prtfmtStrFeaturesFaceDown, comparationItemFeaturesEjectDown),
    ROW_FIXED(prtfmtStrFeaturesFaceUp, comparationItemFeaturesEjectUp),
    ROW_FIXED(prtfmtStrFeaturesFaceDownReverse, comparationItemFeaturesEjectDownReverse),
    ROW_FIXED(prtfmtStrFeaturesFaceUpReverse, comparationItemFeaturesEjectUpReverse),
    ROW_FIXED(prtfmtStrFeaturesFaceUp, comparationItemFeaturesFaceUpMediaA5),
    ROW_FIXED(prtfmtStrFeaturesFaceUp, comparationItemFeaturesFaceUpSpecialA5),
    ROW_FIXED(prtfmtStrFeaturesFaceUp, comparationItemFeaturesFaceUpBothA5),
    ROW_FIXED(prtfmtStrFeaturesFaceUp, comparationItemFeaturesFaceUpMediaTab),
    ROW_FIXED(prtfmtStrFeaturesFaceUp, comparationItemFeaturesFaceUpSpecialTab),
    ROW_FIXED(prtfmtStrFeaturesFaceUp, comparationItemFeaturesFaceUpBothTab),
};
// clang-format on

#undef ROW_VALUE
#undef ROW_FIXED
#undef ROW_PLAIN

constexpr int32_t kFeaturesRowCount = sizeof kFeaturesRows / sizeof kFeaturesRows[0];
static_assert(kFeaturesRowCount == 29, "one source per header row");

ParamTable symParaFeatures[kFeaturesRowCount];
ConditionTable comparationFeatures[kFeaturesRowCount];

#define FEATURES_ROW(i) \
  { kFeaturesRows[i].format, &symParaFeatures[i], &comparationFeatures[i] }

}  // namespace

const FormatEntry FeaturesFmtTable[] = {
    FEATURES_ROW(0),  FEATURES_ROW(1),  FEATURES_ROW(2),  FEATURES_ROW(3),  FEATURES_ROW(4),
    FEATURES_ROW(5),  FEATURES_ROW(6),  FEATURES_ROW(7),  FEATURES_ROW(8),  FEATURES_ROW(9),
    FEATURES_ROW(10), FEATURES_ROW(11), FEATURES_ROW(12), FEATURES_ROW(13), FEATURES_ROW(14),
    FEATURES_ROW(15), FEATURES_ROW(16), FEATURES_ROW(17), FEATURES_ROW(18), FEATURES_ROW(19),
    FEATURES_ROW(20), FEATURES_ROW(21), FEATURES_ROW(22), FEATURES_ROW(23), FEATURES_ROW(24),
    FEATURES_ROW(25), FEATURES_ROW(26), FEATURES_ROW(27), FEATURES_ROW(28),
};
const int32_t FeaturesFmtTableNum = kFeaturesRowCount;
static_assert(sizeof FeaturesFmtTable / sizeof FeaturesFmtTable[0] == kFeaturesRowCount,
              "one format entry per header row");

#undef FEATURES_ROW

void FeaturesInitializeCmdParaTable() {
  for (int32_t i = 0; i < kFeaturesRowCount; ++i) {
    InitializeCmdParaTable(&symParaFeatures[i], kFeaturesRows[i].paramCount,
                           kFeaturesRows[i].params);
  }
}

void FeaturesInitialzieComparationTable() {
  for (int32_t i = 0; i < kFeaturesRowCount; ++i) {
    InitializeComparationTable(&comparationFeatures[i], kFeaturesRows[i].conditionCount,
                               kFeaturesRows[i].conditions);
  }
}

void FeaturesInializeDescriptionTableFromFilter() {
  FeaturesInitializeCmdParaTable();
  FeaturesInitialzieComparationTable();
}

void FeaturesOutputZPJLCommandFromFilter(char* argv[]) {
  OutputZPJLCommandFromArray(argv, FeaturesFmtTable, FeaturesFmtTableNum);
}

// ---- PostScript fragments ----------------------------------------------------

namespace {

// Pages per side of the sheet, from the layout the job ticket gave. The
// product wraps like the 32-bit arithmetic it stands for, never overflowing.
int32_t PagesPerSheetSide() {
  uint32_t rows = static_cast<uint32_t>(std::atoi(StdLayoutRowInfo));
  uint32_t columns = static_cast<uint32_t>(std::atoi(StdLayoutColumnInfo));
  return static_cast<int32_t>(rows * columns);
}

// Compared unsigned on purpose: a negative product is not "at most one".
bool IsSinglePageSheet(int32_t pages) { return static_cast<uint32_t>(pages) <= 1; }

void BeginNonPPDFeature(FILE* stream) {
  KZfprintf(stream, "[{\n");
  KZfprintf(stream, "%%BeginNonPPDFeatures\n");
}

void EndNonPPDFeature(FILE* stream) {
  KZfprintf(stream, "%%EndNonPPDFeatures\n");
  KZfprintf(stream, "} stopped cleartomark\n");
}

}  // namespace

void FeaturesOutputPSCommandFromFilter(int32_t point, FILE* stream) {
  const int32_t pages = PagesPerSheetSide();
  if (point == 14 && IsSinglePageSheet(pages)) {
    FeaturesOutputSeparatorPages(stream);
  } else if (point == 21 && pages >= 2) {
    // An N-up job sets its page device after the prolog, so both go there.
    FeaturesOutputSeparatorPages(stream);
    FeaturesOutputAutoFit(stream);
  } else if (point == 16 && IsSinglePageSheet(pages)) {
    FeaturesOutputAutoFit(stream);
  }
}

void FeaturesOutputSeparatorPages(FILE* stream) {
  const FeaturesOptionRecord& f = zpjlOptionFeatures;
  if (f.separatorPagesList == -1 || f.separatorPagesList == OptionSepratorPagesNone) return;
  char line[kFeaturesPSLineSize];
  char pages[sizeof f.separatorPages];
  PostScriptNumberText(pages, sizeof pages, f.separatorPages);
  BeginNonPPDFeature(stream);
  FormatText(line, sizeof line,
             "1 dict dup/SeparatorPages[%s]put/Custom/ProcSet findresource/setcoverseparator get "
             "exec\n",
             pages);
  KZfprintf(stream, line);
  EndNonPPDFeature(stream);
}

void FeaturesOutputAutoFit(FILE* stream) {
  const FeaturesOptionRecord& f = zpjlOptionFeatures;
  if (f.bookletMarginSwitch == -1 || f.bookletMarginSwitch == OptionBookletMarginNone) return;
  char line[kFeaturesPSLineSize];
  char shift[sizeof f.bookletMarginShift];
  PostScriptNumberText(shift, sizeof shift, f.bookletMarginShift);
  BeginNonPPDFeature(stream);
  FormatText(line, sizeof line,
             "%s.000/Custom/ProcSet findresource/setsignatureimageshift get exec\n", shift);
  KZfprintf(stream, line);
  EndNonPPDFeature(stream);

  if (f.autoFitSwitch == -1) return;
  BeginNonPPDFeature(stream);
  if (f.autoFitSwitch == OptionAutoFitNone) {
    KZfprintf(stream,
              "/Custom/ProcSet findresource/setsignatureautoscale 2 copy known {get false exch "
              "exec} {pop pop} ifelse\n");
  } else {
    KZfprintf(stream,
              "/Custom/ProcSet findresource/setsignatureautoscale 2 copy known {get true exch "
              "exec} {pop pop} ifelse\n");
  }
  EndNonPPDFeature(stream);
}

// ---- Booklet attributes ------------------------------------------------------

namespace {

// The layouts 2-up and 6-up turn the sheet, so the portrait orientations
// (1, 6) give a landscape booklet there; elsewhere the landscape
// orientations (4, 5) do.
bool IsLandscapeBooklet(const char* numberUp, int32_t orientation) {
  if (numberUp[0] == '\0') return false;
  const int n = std::atoi(numberUp);
  if (n == 2 || n == 6) return orientation == 1 || orientation == 6;
  return orientation == 4 || orientation == 5;
}

}  // namespace

void OutputZPJLCommandforBooklet() {
  // Only printers that take UTF-8 know the booklet attributes.
  if (!IsUTF8PrinterEncoding()) return;
  const CommentOptionRecord& job = psoptioncomment;

  if (IsLandscapeBooklet(job.numberUp, job.orientation)) {
    KZfputs("@PJL SET JOBATTR=\"@DIND=LANDSCAPE\"\n", stdout);
  } else {
    KZfputs("@PJL SET JOBATTR=\"@DIND=PORTRAIT\"\n", stdout);
  }

  if (job.signature[0] == '\0') return;
  if (std::strcmp(job.signature, "None") == 0) {
    KZfputs("@PJL SET JOBATTR=\"@DIBB=OFF\"\n", stdout);
    KZfputs("@PJL SET JOBATTR=\"@DIBK=OFF\"\n", stdout);
    return;
  }
  if (std::strstr(job.signature, "Left") != nullptr) {
    KZfputs("@PJL SET JOBATTR=\"@DIBB=LEFT\"\n", stdout);
  } else if (std::strstr(job.signature, "Right") != nullptr) {
    KZfputs("@PJL SET JOBATTR=\"@DIBB=RIGHT\"\n", stdout);
  }
  if (job.signatureVolume[0] != '\0' && std::strcmp(job.signatureVolume, "None") != 0) {
    KZfputs("@PJL SET JOBATTR=\"@DIBK=MANUALDIVIDE\"\n", stdout);
  } else {
    KZfputs("@PJL SET JOBATTR=\"@DIBK=NONEDIVIDE\"\n", stdout);
  }
}
