#include "modules/features/features.h"

#include <cstdlib>
#include <cstring>

#include "base/fixed_text.h"
#include "base/job_state.h"
#include "base/job_text.h"
#include "base/output_channel.h"
#include "base/ppd_queries.h"
#include "engine/injection_point.h"
#include "engine/row_writer.h"
#include "engine/table_rows.h"
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

constexpr FeaturesOptionRecord& F = zpjlOptionFeatures;

constexpr TicketRow kTicketRows[] = {
    Row(JTZ_KEY("TabMarginSwitchTicket"), F.tabMarginSwitch, TicketRead::Integer),
    Row(JTZ_KEY("TrimmerSwitchTicket"), F.trimmerSwitch, TicketRead::Integer),
    Row(ETZ_KEY("TrimmerSelectTicket"), F.trimmerSelect, TicketRead::Integer),
    Row(JTZ_KEY("BookletMarginSwitchTicket"), F.bookletMarginSwitch, TicketRead::Integer),
    Row(JTZ_KEY("TabMarginMMShiftTicket"), F.tabMarginShift, TicketRead::Text),
    Row(JTZ_KEY("TrimmerMMCuttingSizeTicket"), F.trimmerCuttingSize, TicketRead::Text),
    Row(ETZ_KEY("TrimmerWidthMMSizeTicket"), F.trimmerWidth, TicketRead::Text),
    Row(ETZ_KEY("TrimmerHeightMMSizeTicket"), F.trimmerHeight, TicketRead::Text),
    Row(ETZ_KEY("TrimmerAdjustMMSizeTicket"), F.trimmerAdjust, TicketRead::Text),
    Row(JTZ_KEY("NumInSequenceSwitchTicket"), F.numInSequenceSwitch, TicketRead::Integer),
    Row(JTZ_KEY("NumInSequenceLArrowTicket"), F.numInSequenceStart, TicketRead::Text),
    Row(JTZ_KEY("OffsetStackingListTicket"), F.offsetStackingList, TicketRead::Integer),
    Row(JTZ_KEY("OffsetStackingPagesLArrowTicket"), F.offsetStackingPages, TicketRead::Text),
    Row(JTZ_KEY("OffsetStackingUnitsLArrowTicket"), F.offsetStackingUnits, TicketRead::Text),
    Row(JTZ_KEY("SeparatorPageListTicket"), F.separatorPagesList, TicketRead::Integer),
    Row(JTZ_KEY("SeparatorPageTicket"), F.separatorPages, TicketRead::Text),
    Row(JTZ_KEY("AutoFitSwitchTicket"), F.autoFitSwitch, TicketRead::Integer),
    Row(JTZ_KEY("BookletMarginMMShiftTicket"), F.bookletMarginShift, TicketRead::Text),
    Row(JTZ_KEY("EjectOptionsListTicket"), F.ejectOptions, TicketRead::Integer),
    Row("media", F.media, TicketRead::Text),
    Row(ETZ_KEY("whetherMediaSizeA5Ticket"), F.specialPagesA5, TicketRead::Integer),
    Row("KRNumPunchHoles", F.punchHoles, TicketRead::Text),
    Row(JTZ_KEY("featuresMediaTypeTabTicket"), F.featuresMediaTypeTab, TicketRead::Text),
    Row(JTZ_KEY("CoilPunchFaceTicket"), F.coilPunchFace, TicketRead::Text),
    Row(JTZ_KEY("whetherMediaTypeTabTicket"), F.specialPagesMediaTab, TicketRead::Integer),
};
constexpr auto kBindings = MakeBindings(kTicketRows, false);

}  // namespace

const TicketBinding* const FeaturesticketData = kBindings.data();
const int32_t FeaturesticketDataNum = static_cast<int32_t>(kBindings.size());

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

// Condition items: an integer item compares a record field with an option
// code; a text item's reference is the cell of a reference string.
// clang-format off
const ConditionItem comparationItemFeaturesTabMarginOff[] = {
    Is(F.tabMarginSwitch, OptionTabMarginNone)};
const ConditionItem comparationItemFeaturesTabMarginOn[] = {
    Is(F.tabMarginSwitch, OptionTabMargin)};
const ConditionItem comparationItemFeaturesTrimmerOff[] = {
    Is(F.trimmerSwitch, OptionTrimmerNone)};
const ConditionItem comparationItemFeaturesTrimmerOn[] = {Is(F.trimmerSwitch, OptionTrimmer)};
const ConditionItem comparationItemFeaturesSelectFore[] = {Is(F.trimmerSelect, SelectTrimmer)};
const ConditionItem comparationItemFeaturesSelectTopLower[] = {
    Is(F.trimmerSelect, SelectTrimmerTopLower)};
const ConditionItem comparationItemFeaturesNumberingOff[] = {
    Is(F.numInSequenceSwitch, OptionNumInSequenceNone)};
const ConditionItem comparationItemFeaturesNumberingOn[] = {
    Is(F.numInSequenceSwitch, OptionNumInSequence)};
const ConditionItem comparationItemFeaturesOffsetByPages[] = {
    Is(F.offsetStackingList, OptionOffsetStackingEndOfSetPage)};
const ConditionItem comparationItemFeaturesOffsetByCopies[] = {
    Is(F.offsetStackingList, OptionOffsetStackingEndOfSetCopy)};
const ConditionItem comparationItemFeaturesEjectDown[] = {Is(F.ejectOptions, EjectOptionsDown)};
const ConditionItem comparationItemFeaturesEjectUp[] = {Is(F.ejectOptions, EjectOptionsUp)};
const ConditionItem comparationItemFeaturesEjectDownReverse[] = {
    Is(F.ejectOptions, EjectOptionsDownReverse)};
const ConditionItem comparationItemFeaturesEjectUpReverse[] = {
    Is(F.ejectOptions, EjectOptionsUpReverse)};

// Coil punching with the coil face on: OFF only without any tab stock or
// A5 involvement, UP as soon as the job or its special pages use either.
const ConditionItem comparationItemFeaturesFaceOffCoilPlain[] = {
    Is(F.ejectOptions, EjectOptionsOff),
    Contains(F.punchHoles, punchHoleCoil),
    TextIs(F.featuresMediaTypeTab, mediaTypeNoTab),
    Is(F.specialPagesMediaTab, specialPagesMediaNoTab),
    TextIs(F.coilPunchFace, coilPunchFaceOn),
    NotContains(F.media, mediaTypeA5),
    Is(F.specialPagesA5, specialPagesMediasizeNoA5)};
const ConditionItem comparationItemFeaturesFaceOffNoCoil[] = {
    Is(F.ejectOptions, EjectOptionsOff),
    NotContains(F.punchHoles, punchHoleCoil),
    TextIs(F.coilPunchFace, coilPunchFaceOn)};
const ConditionItem comparationItemFeaturesFaceOffCoilFaceOff[] = {
    Is(F.ejectOptions, EjectOptionsOff),
    TextIs(F.coilPunchFace, coilPunchFaceOff)};
const ConditionItem comparationItemFeaturesFaceUpMediaA5[] = {
    Is(F.ejectOptions, EjectOptionsOff),
    Contains(F.punchHoles, punchHoleCoil),
    TextIs(F.featuresMediaTypeTab, mediaTypeNoTab),
    Is(F.specialPagesMediaTab, specialPagesMediaNoTab),
    Contains(F.media, mediaTypeA5),
    Is(F.specialPagesA5, specialPagesMediasizeNoA5),
    TextIs(F.coilPunchFace, coilPunchFaceOn)};
const ConditionItem comparationItemFeaturesFaceUpSpecialA5[] = {
    Is(F.ejectOptions, EjectOptionsOff),
    Contains(F.punchHoles, punchHoleCoil),
    TextIs(F.featuresMediaTypeTab, mediaTypeNoTab),
    Is(F.specialPagesMediaTab, specialPagesMediaNoTab),
    NotContains(F.media, mediaTypeA5),
    Is(F.specialPagesA5, specialPagesMediasizeA5),
    TextIs(F.coilPunchFace, coilPunchFaceOn)};
const ConditionItem comparationItemFeaturesFaceUpBothA5[] = {
    Is(F.ejectOptions, EjectOptionsOff),
    Contains(F.punchHoles, punchHoleCoil),
    TextIs(F.featuresMediaTypeTab, mediaTypeNoTab),
    Is(F.specialPagesMediaTab, specialPagesMediaNoTab),
    Contains(F.media, mediaTypeA5),
    Is(F.specialPagesA5, specialPagesMediasizeA5),
    TextIs(F.coilPunchFace, coilPunchFaceOn)};
const ConditionItem comparationItemFeaturesFaceUpMediaTab[] = {
    Is(F.ejectOptions, EjectOptionsOff),
    Contains(F.punchHoles, punchHoleCoil),
    TextIs(F.featuresMediaTypeTab, mediaTypeIsTab),
    Is(F.specialPagesMediaTab, specialPagesMediaNoTab),
    TextIs(F.coilPunchFace, coilPunchFaceOn)};
const ConditionItem comparationItemFeaturesFaceUpSpecialTab[] = {
    Is(F.ejectOptions, EjectOptionsOff),
    Contains(F.punchHoles, punchHoleCoil),
    TextIs(F.featuresMediaTypeTab, mediaTypeNoTab),
    Is(F.specialPagesMediaTab, specialPagesMediaTab),
    TextIs(F.coilPunchFace, coilPunchFaceOn)};
const ConditionItem comparationItemFeaturesFaceUpBothTab[] = {
    Is(F.ejectOptions, EjectOptionsOff),
    Contains(F.punchHoles, punchHoleCoil),
    TextIs(F.featuresMediaTypeTab, mediaTypeIsTab),
    Is(F.specialPagesMediaTab, specialPagesMediaTab),
    TextIs(F.coilPunchFace, coilPunchFaceOn)};
// clang-format on

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
  if (point == kPointEndProlog && IsSinglePageSheet(pages)) {
    FeaturesOutputSeparatorPages(stream);
  } else if (point == kPointSetPageDevice && pages >= 2) {
    // An N-up job sets its page device after the prolog, so both go there.
    FeaturesOutputSeparatorPages(stream);
    FeaturesOutputAutoFit(stream);
  } else if (point == kPointEndSetup && IsSinglePageSheet(pages)) {
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
