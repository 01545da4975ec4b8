#include "modules/features/features.h"

#include <array>
#include <cstdlib>
#include <cstring>
#include <utility>

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
constexpr ParamPointer cmdParaListFeaturesFixed[] = {&CTRLSym_DOUBLE, &CTRLSym_DOUBLE, &CTRLSym_LF};
constexpr int32_t cmdParaNumFeaturesFixed = 3;
constexpr ParamPointer cmdParaListFeaturesLineEnd[] = {&CTRLSym_LF};
constexpr int32_t cmdParaNumFeaturesLineEnd = 1;
constexpr int32_t cmdParaNumFeaturesValue = 4;

constexpr ParamPointer cmdParaListFeaturesTabMarginShift[] = {
    &CTRLSym_DOUBLE, F.tabMarginShift, &CTRLSym_DOUBLE, &CTRLSym_LF};
constexpr ParamPointer cmdParaListFeaturesTrimmerCuttingSize[] = {
    &CTRLSym_DOUBLE, F.trimmerCuttingSize, &CTRLSym_DOUBLE, &CTRLSym_LF};
constexpr ParamPointer cmdParaListFeaturesTrimmerWidth[] = {
    &CTRLSym_DOUBLE, F.trimmerWidth, &CTRLSym_DOUBLE, &CTRLSym_LF};
constexpr ParamPointer cmdParaListFeaturesTrimmerHeight[] = {
    &CTRLSym_DOUBLE, F.trimmerHeight, &CTRLSym_DOUBLE, &CTRLSym_LF};
constexpr ParamPointer cmdParaListFeaturesTrimmerAdjust[] = {
    &CTRLSym_DOUBLE, F.trimmerAdjust, &CTRLSym_DOUBLE, &CTRLSym_LF};
constexpr ParamPointer cmdParaListFeaturesNumInSequenceStart[] = {
    &CTRLSym_DOUBLE, F.numInSequenceStart, &CTRLSym_DOUBLE, &CTRLSym_LF};
constexpr ParamPointer cmdParaListFeaturesOffsetStackingPages[] = {
    &CTRLSym_DOUBLE, F.offsetStackingPages, &CTRLSym_DOUBLE, &CTRLSym_LF};
constexpr ParamPointer cmdParaListFeaturesOffsetStackingUnits[] = {
    &CTRLSym_DOUBLE, F.offsetStackingUnits, &CTRLSym_DOUBLE, &CTRLSym_LF};

// Condition items: an integer item compares a record field with an option
// code; a text item's reference is the cell of a reference string.
// clang-format off
constexpr ConditionItem comparationItemFeaturesTabMarginOff[] = {
    Is(F.tabMarginSwitch, OptionTabMarginNone)};
constexpr ConditionItem comparationItemFeaturesTabMarginOn[] = {
    Is(F.tabMarginSwitch, OptionTabMargin)};
constexpr ConditionItem comparationItemFeaturesTrimmerOff[] = {
    Is(F.trimmerSwitch, OptionTrimmerNone)};
constexpr ConditionItem comparationItemFeaturesTrimmerOn[] = {Is(F.trimmerSwitch, OptionTrimmer)};
constexpr ConditionItem comparationItemFeaturesSelectFore[] = {Is(F.trimmerSelect, SelectTrimmer)};
constexpr ConditionItem comparationItemFeaturesSelectTopLower[] = {
    Is(F.trimmerSelect, SelectTrimmerTopLower)};
constexpr ConditionItem comparationItemFeaturesNumberingOff[] = {
    Is(F.numInSequenceSwitch, OptionNumInSequenceNone)};
constexpr ConditionItem comparationItemFeaturesNumberingOn[] = {
    Is(F.numInSequenceSwitch, OptionNumInSequence)};
constexpr ConditionItem comparationItemFeaturesOffsetByPages[] = {
    Is(F.offsetStackingList, OptionOffsetStackingEndOfSetPage)};
constexpr ConditionItem comparationItemFeaturesOffsetByCopies[] = {
    Is(F.offsetStackingList, OptionOffsetStackingEndOfSetCopy)};
constexpr ConditionItem comparationItemFeaturesEjectDown[] = {Is(F.ejectOptions, EjectOptionsDown)};
constexpr ConditionItem comparationItemFeaturesEjectUp[] = {Is(F.ejectOptions, EjectOptionsUp)};
constexpr ConditionItem comparationItemFeaturesEjectDownReverse[] = {
    Is(F.ejectOptions, EjectOptionsDownReverse)};
constexpr ConditionItem comparationItemFeaturesEjectUpReverse[] = {
    Is(F.ejectOptions, EjectOptionsUpReverse)};

// Coil punching with the coil face on: OFF only without any tab stock or
// A5 involvement, UP as soon as the job or its special pages use either.
constexpr ConditionItem comparationItemFeaturesFaceOffCoilPlain[] = {
    Is(F.ejectOptions, EjectOptionsOff),
    Contains(F.punchHoles, punchHoleCoil),
    TextIs(F.featuresMediaTypeTab, mediaTypeNoTab),
    Is(F.specialPagesMediaTab, specialPagesMediaNoTab),
    TextIs(F.coilPunchFace, coilPunchFaceOn),
    NotContains(F.media, mediaTypeA5),
    Is(F.specialPagesA5, specialPagesMediasizeNoA5)};
constexpr ConditionItem comparationItemFeaturesFaceOffNoCoil[] = {
    Is(F.ejectOptions, EjectOptionsOff),
    NotContains(F.punchHoles, punchHoleCoil),
    TextIs(F.coilPunchFace, coilPunchFaceOn)};
constexpr ConditionItem comparationItemFeaturesFaceOffCoilFaceOff[] = {
    Is(F.ejectOptions, EjectOptionsOff),
    TextIs(F.coilPunchFace, coilPunchFaceOff)};
constexpr ConditionItem comparationItemFeaturesFaceUpMediaA5[] = {
    Is(F.ejectOptions, EjectOptionsOff),
    Contains(F.punchHoles, punchHoleCoil),
    TextIs(F.featuresMediaTypeTab, mediaTypeNoTab),
    Is(F.specialPagesMediaTab, specialPagesMediaNoTab),
    Contains(F.media, mediaTypeA5),
    Is(F.specialPagesA5, specialPagesMediasizeNoA5),
    TextIs(F.coilPunchFace, coilPunchFaceOn)};
constexpr ConditionItem comparationItemFeaturesFaceUpSpecialA5[] = {
    Is(F.ejectOptions, EjectOptionsOff),
    Contains(F.punchHoles, punchHoleCoil),
    TextIs(F.featuresMediaTypeTab, mediaTypeNoTab),
    Is(F.specialPagesMediaTab, specialPagesMediaNoTab),
    NotContains(F.media, mediaTypeA5),
    Is(F.specialPagesA5, specialPagesMediasizeA5),
    TextIs(F.coilPunchFace, coilPunchFaceOn)};
constexpr ConditionItem comparationItemFeaturesFaceUpBothA5[] = {
    Is(F.ejectOptions, EjectOptionsOff),
    Contains(F.punchHoles, punchHoleCoil),
    TextIs(F.featuresMediaTypeTab, mediaTypeNoTab),
    Is(F.specialPagesMediaTab, specialPagesMediaNoTab),
    Contains(F.media, mediaTypeA5),
    Is(F.specialPagesA5, specialPagesMediasizeA5),
    TextIs(F.coilPunchFace, coilPunchFaceOn)};
constexpr ConditionItem comparationItemFeaturesFaceUpMediaTab[] = {
    Is(F.ejectOptions, EjectOptionsOff),
    Contains(F.punchHoles, punchHoleCoil),
    TextIs(F.featuresMediaTypeTab, mediaTypeIsTab),
    Is(F.specialPagesMediaTab, specialPagesMediaNoTab),
    TextIs(F.coilPunchFace, coilPunchFaceOn)};
constexpr ConditionItem comparationItemFeaturesFaceUpSpecialTab[] = {
    Is(F.ejectOptions, EjectOptionsOff),
    Contains(F.punchHoles, punchHoleCoil),
    TextIs(F.featuresMediaTypeTab, mediaTypeNoTab),
    Is(F.specialPagesMediaTab, specialPagesMediaTab),
    TextIs(F.coilPunchFace, coilPunchFaceOn)};
constexpr ConditionItem comparationItemFeaturesFaceUpBothTab[] = {
    Is(F.ejectOptions, EjectOptionsOff),
    Contains(F.punchHoles, punchHoleCoil),
    TextIs(F.featuresMediaTypeTab, mediaTypeIsTab),
    Is(F.specialPagesMediaTab, specialPagesMediaTab),
    TextIs(F.coilPunchFace, coilPunchFaceOn)};
// clang-format on

// One header row: its format, its parameter table with the count its kind
// states, and its condition table.
struct FeaturesRow {
  const char* format;
  ParamTable params;
  int32_t statedCount;
  ConditionTable conditions;
};

template <size_t P, size_t N>
constexpr FeaturesRow ValueRow(const char* format, const ParamPointer (&list)[P],
                               const ConditionItem (&items)[N]) {
  return {format, Params(list), cmdParaNumFeaturesValue, Conditions(items)};
}
template <size_t N>
constexpr FeaturesRow FixedRow(const char* format, const ConditionItem (&items)[N]) {
  return {format, Params(cmdParaListFeaturesFixed), cmdParaNumFeaturesFixed, Conditions(items)};
}
template <size_t N>
constexpr FeaturesRow PlainRow(const char* format, const ConditionItem (&items)[N]) {
  return {format, Params(cmdParaListFeaturesLineEnd), cmdParaNumFeaturesLineEnd,
          Conditions(items)};
}

// With the trimmer on and selection 2, rows 4 and 5 both hold: the same
// @TRMR line is written twice, deliberately.
// clang-format off
constexpr FeaturesRow kFeaturesRows[] = {
    FixedRow(prtfmtStrFeaturesTabsOff, comparationItemFeaturesTabMarginOff),
    ValueRow(prtfmtStrFeaturesTabs, cmdParaListFeaturesTabMarginShift,
             comparationItemFeaturesTabMarginOn),
    FixedRow(prtfmtStrFeaturesTrimmerOff, comparationItemFeaturesTrimmerOff),
    ValueRow(prtfmtStrFeaturesTrimmer, cmdParaListFeaturesTrimmerCuttingSize,
             comparationItemFeaturesTrimmerOn),
    ValueRow(prtfmtStrFeaturesTrimmer, cmdParaListFeaturesTrimmerCuttingSize,
             comparationItemFeaturesSelectFore),
    ValueRow(prtfmtStrFeaturesTrimmer, cmdParaListFeaturesTrimmerWidth,
             comparationItemFeaturesSelectTopLower),
    ValueRow(prtfmtStrFeaturesTrimmerFore, cmdParaListFeaturesTrimmerHeight,
             comparationItemFeaturesSelectTopLower),
    FixedRow(prtfmtStrFeaturesTrimmerForeOff, comparationItemFeaturesSelectFore),
    ValueRow(prtfmtStrFeaturesTrimmerAdjust, cmdParaListFeaturesTrimmerAdjust,
             comparationItemFeaturesSelectTopLower),
    FixedRow(prtfmtStrFeaturesTrimmerAdjustOff, comparationItemFeaturesSelectFore),
    FixedRow(prtfmtStrFeaturesNumberingOff, comparationItemFeaturesNumberingOff),
    ValueRow(prtfmtStrFeaturesNumbering, cmdParaListFeaturesNumInSequenceStart,
             comparationItemFeaturesNumberingOn),
    PlainRow(prtfmtStrFeaturesOffsetPages, comparationItemFeaturesOffsetByPages),
    PlainRow(prtfmtStrFeaturesOffsetCopies, comparationItemFeaturesOffsetByCopies),
    ValueRow(prtfmtStrFeaturesOffsetCount, cmdParaListFeaturesOffsetStackingPages,
             comparationItemFeaturesOffsetByPages),
    ValueRow(prtfmtStrFeaturesOffsetCount, cmdParaListFeaturesOffsetStackingUnits,
             comparationItemFeaturesOffsetByCopies),
    FixedRow(prtfmtStrFeaturesFaceOff, comparationItemFeaturesFaceOffCoilPlain),
    FixedRow(prtfmtStrFeaturesFaceOff, comparationItemFeaturesFaceOffNoCoil),
    FixedRow(prtfmtStrFeaturesFaceOff, comparationItemFeaturesFaceOffCoilFaceOff),
    FixedRow(prtfmtStrFeaturesFaceDown, comparationItemFeaturesEjectDown),
    FixedRow(prtfmtStrFeaturesFaceUp, comparationItemFeaturesEjectUp),
    FixedRow(prtfmtStrFeaturesFaceDownReverse, comparationItemFeaturesEjectDownReverse),
    FixedRow(prtfmtStrFeaturesFaceUpReverse, comparationItemFeaturesEjectUpReverse),
    FixedRow(prtfmtStrFeaturesFaceUp, comparationItemFeaturesFaceUpMediaA5),
    FixedRow(prtfmtStrFeaturesFaceUp, comparationItemFeaturesFaceUpSpecialA5),
    FixedRow(prtfmtStrFeaturesFaceUp, comparationItemFeaturesFaceUpBothA5),
    FixedRow(prtfmtStrFeaturesFaceUp, comparationItemFeaturesFaceUpMediaTab),
    FixedRow(prtfmtStrFeaturesFaceUp, comparationItemFeaturesFaceUpSpecialTab),
    FixedRow(prtfmtStrFeaturesFaceUp, comparationItemFeaturesFaceUpBothTab),
};
// clang-format on

constexpr int32_t kFeaturesRowCount = sizeof kFeaturesRows / sizeof kFeaturesRows[0];
static_assert(kFeaturesRowCount == 29, "one source per header row");

template <size_t... I>
constexpr std::array<FormatEntry, kFeaturesRowCount> FormatEntries(std::index_sequence<I...>) {
  return {{{kFeaturesRows[I].format, &kFeaturesRows[I].params, &kFeaturesRows[I].conditions}...}};
}
constexpr auto kFeaturesFmtTable = FormatEntries(std::make_index_sequence<kFeaturesRowCount>{});

}  // namespace

const FormatEntry* const FeaturesFmtTable = kFeaturesFmtTable.data();
const int32_t FeaturesFmtTableNum = kFeaturesRowCount;

void FeaturesInitializeCmdParaTable() {
  for (const FeaturesRow& row : kFeaturesRows) {
    RequireCmdParaTable(row.params, row.statedCount, row.params.list);
  }
}

void FeaturesInializeDescriptionTableFromFilter() { FeaturesInitializeCmdParaTable(); }

void FeaturesOutputZPJLCommandFromFilter(char* argv[], FILE* stream) {
  OutputZPJLCommandFromArray(argv, FeaturesFmtTable, FeaturesFmtTableNum, stream);
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

void WriteLine(const char* line, FILE* stream) {
  KZfprintf(stream, line);
  KZfprintf(stream, "\n");
}

void BeginNonPPDFeature(FILE* stream) {
  WriteLine(kNonPPDBlockOpen, stream);
  WriteLine(kNonPPDBlockBegin, stream);
}

void EndNonPPDFeature(FILE* stream) {
  WriteLine(kNonPPDBlockEnd, stream);
  WriteLine(kNonPPDBlockClose, stream);
}

// The middle line of a fragment, cut at the line size as every formatted
// PostScript line is.
void WriteFragmentLine(const NonPPDFragment& fragment, const char* value, FILE* stream) {
  char line[kFeaturesPSLineSize];
  FormatText(line, sizeof line, "%s%s%s\n", fragment.before, value, fragment.after);
  KZfprintf(stream, line);
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
  char pages[sizeof f.separatorPages];
  PostScriptNumberText(pages, sizeof pages, f.separatorPages);
  BeginNonPPDFeature(stream);
  WriteFragmentLine(kSeparatorPagesFragment, pages, stream);
  EndNonPPDFeature(stream);
}

void FeaturesOutputAutoFit(FILE* stream) {
  const FeaturesOptionRecord& f = zpjlOptionFeatures;
  if (f.bookletMarginSwitch == -1 || f.bookletMarginSwitch == OptionBookletMarginNone) return;
  char shift[sizeof f.bookletMarginShift];
  PostScriptNumberText(shift, sizeof shift, f.bookletMarginShift);
  BeginNonPPDFeature(stream);
  WriteFragmentLine(kBookletMarginShiftFragment, shift, stream);
  EndNonPPDFeature(stream);

  if (f.autoFitSwitch == -1) return;
  // Longer than the line size, so written whole rather than formatted.
  BeginNonPPDFeature(stream);
  KZfprintf(stream, kAutoFitFragment.before);
  KZfprintf(stream, f.autoFitSwitch == OptionAutoFitNone ? "false" : "true");
  WriteLine(kAutoFitFragment.after, stream);
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

void OutputZPJLCommandforBooklet(FILE* stream) {
  // Only printers that take UTF-8 know the booklet attributes.
  if (!IsUTF8PrinterEncoding()) return;
  const CommentOptionRecord& job = psoptioncomment;

  if (IsLandscapeBooklet(job.numberUp, job.orientation)) {
    KZfputs("@PJL SET JOBATTR=\"@DIND=LANDSCAPE\"\n", stream);
  } else {
    KZfputs("@PJL SET JOBATTR=\"@DIND=PORTRAIT\"\n", stream);
  }

  if (job.signature[0] == '\0') return;
  if (std::strcmp(job.signature, "None") == 0) {
    KZfputs("@PJL SET JOBATTR=\"@DIBB=OFF\"\n", stream);
    KZfputs("@PJL SET JOBATTR=\"@DIBK=OFF\"\n", stream);
    return;
  }
  if (std::strstr(job.signature, "Left") != nullptr) {
    KZfputs("@PJL SET JOBATTR=\"@DIBB=LEFT\"\n", stream);
  } else if (std::strstr(job.signature, "Right") != nullptr) {
    KZfputs("@PJL SET JOBATTR=\"@DIBB=RIGHT\"\n", stream);
  }
  if (job.signatureVolume[0] != '\0' && std::strcmp(job.signatureVolume, "None") != 0) {
    KZfputs("@PJL SET JOBATTR=\"@DIBK=MANUALDIVIDE\"\n", stream);
  } else {
    KZfputs("@PJL SET JOBATTR=\"@DIBK=NONEDIVIDE\"\n", stream);
  }
}
