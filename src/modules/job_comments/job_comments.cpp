#include "modules/job_comments/job_comments.h"

#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "base/fixed_text.h"
#include "base/job_text.h"
#include "base/output_channel.h"
#include "base/ppd_queries.h"
#include "base/printer_color.h"
#include "engine/table_rows.h"
#include "platform/job_ppd.h"

CommentOptionRecord psoptioncomment;

namespace {

// Short name for the record in this file's tables.
constexpr CommentOptionRecord& rec = psoptioncomment;

const char kCommentSidesTicketKey[] = "sides";
const char kCommentColorModeTicketKey[] = "KRColorMode";
const char kCommentNumberUpTicketKey[] = "number-up";
const char kCommentStapleTicketKey[] = "KRStaple";
const char kCommentPunchTicketKey[] = "KRPunch";
const char kCommentPunchHolesTicketKey[] = "KRNumPunchHoles";
const char kCommentSignatureTicketKey[] = "KRSignature";
const char kCommentSigVolTicketKey[] = "KRSigVol";
const char kCommentLineWeightTicketKey[] = "KRLineWeightAdjustment";
const char kCommentTonerSaverTicketKey[] = "KRTonerSaver";
const char kCommentTonerReductionRateTicketKey[] = "KRTonerReductionRate";
const char kCommentDuplexBindingEdgeTicketKey[] = "DuplexBindingEdge..n.";
const char kCommentCopiesTicketKey[] = "com.apple.print.PrintSettings.PMCopies..n.";
const char kCommentOrientationTicketKey[] = "orientation-requested";
const char kCommentLayoutDirectionTicketKey[] =
    "com.apple.print.PrintSettings.PMLayoutDirection..n.";

// Every line is formatted whole into a buffer of this size (longer text is cut).
constexpr size_t kCommentLineSize = 100;

constexpr TicketRow kTicketRows[] = {
    Row(kCommentSidesTicketKey, rec.sides, TicketRead::Text),
    Row(kCommentColorModeTicketKey, rec.colorMode, TicketRead::Text),
    Row(kCommentNumberUpTicketKey, rec.numberUp, TicketRead::NumberUpForComment),
    Row(kCommentStapleTicketKey, rec.staple, TicketRead::Text),
    Row(kCommentPunchTicketKey, rec.punch, TicketRead::Text),
    Row(kCommentPunchHolesTicketKey, rec.punchHoles, TicketRead::Text),
    Row(kCommentSignatureTicketKey, rec.signature, TicketRead::Text),
    Row(kCommentSigVolTicketKey, rec.signatureVolume, TicketRead::Text),
    Row(kCommentLineWeightTicketKey, rec.lineWeightAdjustment, TicketRead::Text),
    Row(kCommentTonerSaverTicketKey, rec.tonerSaver, TicketRead::Text),
    Row(kCommentTonerReductionRateTicketKey, rec.tonerReductionRate, TicketRead::Text),
    Row(kCommentDuplexBindingEdgeTicketKey, rec.duplexBindingEdge, TicketRead::Integer),
    Row(kCommentCopiesTicketKey, rec.copies, TicketRead::Integer),
    Row(kCommentOrientationTicketKey, rec.orientation, TicketRead::Integer),
    Row(kCommentLayoutDirectionTicketKey, rec.layoutDirection, TicketRead::Integer),
};
constexpr auto kBindings = MakeBindings(kTicketRows, false);

}  // namespace

const TicketBinding* const CommentticketData = kBindings.data();
const int32_t CommentticketDataNum = static_cast<int32_t>(kBindings.size());

void CommentResetOptionRecord() { std::memset(&psoptioncomment, 0, sizeof psoptioncomment); }

void CommentGetTicketFromPDE(char* argv[]) {
  // Collate is kept: it starts empty and is set below at most once per job.
  CommentOptionRecord fresh{};
  std::memcpy(fresh.collate, rec.collate, sizeof fresh.collate);
  rec = fresh;

  GetTicketFromArray(argv, CommentticketData, CommentticketDataNum);

  const char* rawTicket = argv != nullptr ? argv[5] : nullptr;
  if (rawTicket != nullptr) {
    // "nocollate" contains "collate", so it is tested first.
    if (std::strstr(rawTicket, "nocollate") != nullptr) {
      CopyText(rec.collate, sizeof rec.collate, "nocollate");
    } else if (std::strstr(rawTicket, "collate") != nullptr) {
      CopyText(rec.collate, sizeof rec.collate, "collate");
    }
  }

  // An absent binding edge reads as -1 and keeps the ticket's sides.
  if (rec.sides[0] == '\0' || rec.duplexBindingEdge == 0) {
    CopyText(rec.sides, sizeof rec.sides, "one-sided");
  }
  // A booklet is always printed on both sides, flipped on the short edge.
  if (rec.signature[0] != '\0' && std::strcmp(rec.signature, "None") != 0) {
    CopyText(rec.sides, sizeof rec.sides, "two-sided-short-edge");
  }
  if (rec.orientation == -1) rec.orientation = 1;
  if (rec.layoutDirection == -1) rec.layoutDirection = 1;
}

void OutputZPJLCommandforCommentVersionLow(FILE* stream) {
  KZfputs("@PJL COMMENT PRINTJOBINFO VERSION=1.3.0\n", stream);
}

void OutputZPJLCommandforCommentVersionHigh(FILE* stream) {
  KZfputs("@PJL COMMENT PRINTJOBINFO VERSION=1.5.0\n", stream);
}

void OutputZPJLCommandforCommentBegin(FILE* stream) {
  KZfputs("@PJL COMMENT PRINTJOBINFO BEGIN\n", stream);
  KZfputs("@PJL COMMENT PRINTJOBINFO PDLTYPE=PDL[POSTSCRIPT]:VERSION[3]\n", stream);
  KZfputs("@PJL COMMENT PRINTJOBINFO JOBTYPE=PRINT\n", stream);
}

void OutputZPJLCommandforCommentEnd(FILE* stream) {
  KZfputs("@PJL COMMENT PRINTJOBINFO END\n", stream);
}

namespace {

bool IsEmpty(const char* text) { return text[0] == '\0'; }

// Writes "@PJL COMMENT PRINTJOBINFO <item>\n"; a null item writes nothing.
void PutCommentItem(const char* item, FILE* stream) {
  if (item == nullptr) return;
  char line[kCommentLineSize];
  FormatText(line, sizeof line, "@PJL COMMENT PRINTJOBINFO %s\n", item);
  KZfputs(line, stream);
}

// ---- Basic lines ----------------------------------------------------------

void PutCopies(FILE* stream) {
  if (IsEmpty(rec.collate)) return;
  char line[kCommentLineSize];
  if (Equals(rec.collate, "collate")) {
    FormatText(line, sizeof line, "@PJL COMMENT PRINTJOBINFO JOBCOPIES=%d\n", rec.copies);
    KZfputs(line, stream);
    PutCommentItem("PAGECOPIES=1", stream);
  } else {
    FormatText(line, sizeof line, "@PJL COMMENT PRINTJOBINFO PAGECOPIES=%d\n", rec.copies);
    KZfputs(line, stream);
    PutCommentItem("JOBCOPIES=1", stream);
  }
}

// First match wins: a sides text or a binding edge (-1 never matches).
struct DuplexRule {
  const char* sides;
  int32_t bindingEdge;
  const char* item;
};

const DuplexRule kDuplexRules[] = {
    {"two-sided-long-edge", -1, "DUPLEXTYPE=DUPLEX"},
    {nullptr, 2, "DUPLEXTYPE=DUPLEX"},
    {"two-sided-short-edge", 3, "DUPLEXTYPE=TUMBLE"},
    {"one-sided", 1, "DUPLEXTYPE=SIMPLEX"},
};

void PutDuplex(FILE* stream) {
  if (IsEmpty(rec.sides)) return;
  for (const DuplexRule& rule : kDuplexRules) {
    bool sidesMatch = rule.sides != nullptr && Equals(rec.sides, rule.sides);
    bool edgeMatch = rule.bindingEdge != -1 && rec.duplexBindingEdge == rule.bindingEdge;
    if (sidesMatch || edgeMatch) {
      PutCommentItem(rule.item, stream);
      return;
    }
  }
}

void PutColorMode(FILE* stream) {
  switch (DecideRenderColor(rec.colorMode)) {
    case RenderColor::kColor:
      PutCommentItem("COLORMODE=COLOR", stream);
      break;
    case RenderColor::kGrayscale:
      PutCommentItem("COLORMODE=GRAYSCALE", stream);
      break;
    case RenderColor::kNone:
      break;
  }
}

void PutNumberUp(FILE* stream) {
  if (IsEmpty(rec.numberUp)) return;
  char line[kCommentLineSize];
  char safe[kCommentLineSize];
  FormatText(line, sizeof line, "@PJL COMMENT PRINTJOBINFO NUP=%s\n",
             CleanPJLCopy(safe, sizeof safe, rec.numberUp));
  KZfputs(line, stream);
}

void PutStaple(FILE* stream) {
  if (IsEmpty(rec.staple)) return;
  // Saddle stapling is a booklet setting, not a staple.
  bool off = Equals(rec.staple, "None") || Equals(rec.staple, "SaddleStaple");
  PutCommentItem(off ? "STAPLE=OFF" : "STAPLE=ON", stream);
}

void PutPunch(FILE* stream) {
  if (IsEmpty(rec.punch)) return;
  PutCommentItem(Equals(rec.punch, "None") ? "PUNCH=OFF" : "PUNCH=ON", stream);
}

void PutBooklet(FILE* stream) {
  if (IsEmpty(rec.signature)) return;
  if (Equals(rec.signature, "None") || IsEmpty(rec.signatureVolume)) {
    PutCommentItem("BOOKLETTYPE=TYPE[NOBOOKLET]", stream);
    return;
  }
  if (Equals(rec.signatureVolume, "None")) {
    PutCommentItem("BOOKLETTYPE=TYPE[NONEDIVIDE]", stream);
    return;
  }
  // The volume is a sheet count followed by a word ("10Sheets"): keep the count.
  char* word = std::strstr(rec.signatureVolume, "Sheet");
  if (word != nullptr) {
    size_t offset = static_cast<size_t>(word - rec.signatureVolume);
    ZeroText(word, sizeof rec.signatureVolume - offset);
  }
  char line[kCommentLineSize];
  char safe[kCommentLineSize];
  FormatText(line, sizeof line,
             "@PJL COMMENT PRINTJOBINFO BOOKLETTYPE=TYPE[MANUALDIVIDE]:THRESHOLD[%s]\n",
             CleanPJLCopy(safe, sizeof safe, rec.signatureVolume));
  KZfputs(line, stream);
}

// ---- Advanced lines -------------------------------------------------------

enum class SignatureSide { kLeft, kRight, kNone, kOther };
enum class NupShape { kSingle, kGrid, kPair, kOther };

struct SignatureSideRow {
  const char* signature;
  SignatureSide side;
};

const SignatureSideRow kSignatureSides[] = {
    {"LeftSig", SignatureSide::kLeft},
    {"LeftSigCenterStaple", SignatureSide::kLeft},
    {"LeftSigFold", SignatureSide::kLeft},
    {"RightSig", SignatureSide::kRight},
    {"RightSigCenterStaple", SignatureSide::kRight},
    {"RightSigFold", SignatureSide::kRight},
    {"", SignatureSide::kNone},
    {"None", SignatureSide::kNone},
};

SignatureSide SideOfSignature(const char* signature) {
  for (const SignatureSideRow& row : kSignatureSides) {
    if (Equals(signature, row.signature)) return row.side;
  }
  return SignatureSide::kOther;
}

NupShape ShapeOfNumberUp(const char* numberUp) {
  if (IsEmpty(numberUp)) return NupShape::kSingle;
  switch (std::atoi(numberUp)) {
    case 1:
      return NupShape::kSingle;
    case 4:
    case 9:
    case 16:
      return NupShape::kGrid;
    case 2:
    case 6:
      return NupShape::kPair;
    default:
      return NupShape::kOther;
  }
}

const char kPortrait[] = "ORIENTATION=PORTRAIT";
const char kLandscape[] = "ORIENTATION=LANDSCAPE";
const char kRotatedPortrait[] = "ORIENTATION=ROTATEDPORTRAIT";
const char kRotatedLandscape[] = "ORIENTATION=ROTATEDLANDSCAPE";

// The page orientations the ticket can ask for, in the column order below.
const int32_t kOrientationColumns[] = {1, 4, 5, 6};

// How the sheet lies for a booklet side and an N-up shape, by orientation.
struct OrientationRow {
  SignatureSide side;
  NupShape shape;
  const char* items[4];
};

constexpr SignatureSide kLeft = SignatureSide::kLeft;
constexpr SignatureSide kRight = SignatureSide::kRight;
constexpr SignatureSide kNone = SignatureSide::kNone;

const OrientationRow kOrientationRows[] = {
    {kLeft, NupShape::kSingle, {kLandscape, kRotatedPortrait, kRotatedPortrait, kLandscape}},
    {kLeft, NupShape::kGrid, {kLandscape, kRotatedPortrait, kRotatedPortrait, kLandscape}},
    {kLeft, NupShape::kPair, {kRotatedPortrait, kLandscape, kLandscape, kRotatedPortrait}},
    {kRight, NupShape::kSingle, {kRotatedLandscape, kPortrait, kPortrait, kRotatedLandscape}},
    {kRight, NupShape::kGrid, {kRotatedLandscape, kPortrait, kPortrait, kRotatedLandscape}},
    {kRight, NupShape::kPair, {kPortrait, kRotatedLandscape, kRotatedLandscape, kPortrait}},
    {kNone, NupShape::kPair, {kLandscape, kPortrait, kPortrait, kLandscape}},
    {kNone, NupShape::kGrid, {kPortrait, kLandscape, kLandscape, kPortrait}},
    {kNone, NupShape::kSingle, {kPortrait, kLandscape, kRotatedLandscape, kRotatedPortrait}},
};

const char* OrientationItem() {
  SignatureSide side = SideOfSignature(rec.signature);
  NupShape shape = ShapeOfNumberUp(rec.numberUp);
  for (const OrientationRow& row : kOrientationRows) {
    if (row.side != side || row.shape != shape) continue;
    for (size_t column = 0; column < 4; ++column) {
      if (kOrientationColumns[column] == rec.orientation) return row.items[column];
    }
    return nullptr;
  }
  return nullptr;
}

// N-up page order by page count range and layout direction.
struct NupOrderRule {
  int32_t minPages;
  int32_t maxPages;
  int32_t direction;
  const char* item;
};

const NupOrderRule kNupOrderRules[] = {
    {2, 2, 1, "NUPEX=RIGHTTODOWN"},      {2, 2, 5, "NUPEX=RIGHTTODOWN"},
    {2, 2, 3, "NUPEX=LEFTTOUP"},         {2, 2, 6, "NUPEX=LEFTTOUP"},
    {3, INT_MAX, 1, "NUPEX=RIGHTTHENDOWN"}, {3, INT_MAX, 3, "NUPEX=LEFTTHENDOWN"},
    {3, INT_MAX, 5, "NUPEX=DOWNTHENRIGHT"}, {3, INT_MAX, 6, "NUPEX=DOWNTHENLEFT"},
};

const char* NupOrderItem() {
  if (IsEmpty(rec.numberUp)) return nullptr;
  int32_t pages = std::atoi(rec.numberUp);
  for (const NupOrderRule& rule : kNupOrderRules) {
    if (pages >= rule.minPages && pages <= rule.maxPages && rec.layoutDirection == rule.direction) {
      return rule.item;
    }
  }
  return nullptr;
}

const char* SaddleStitchItem() {
  if (IsEmpty(rec.signature)) return nullptr;
  bool saddle = Equals(rec.signature, "LeftSigCenterStaple") ||
                Equals(rec.signature, "RightSigCenterStaple");
  return saddle ? "SADDLESTAPLE=ON" : "SADDLESTAPLE=OFF";
}

// A word found in a setting and the text it stands for.
struct WordMap {
  const char* word;
  const char* text;
};

const WordMap kStaplePositions[] = {
    {"LeftDouble", "STAPLEEX=LEFTDUAL"},         {"UpperLeftSingle", "STAPLEEX=TOPLEFT"},
    {"TopDouble", "STAPLEEX=TOPDUAL"},           {"UpperRightSingle", "STAPLEEX=TOPRIGHT"},
    {"RightDouble", "STAPLEEX=RIGHTDUAL"},       {"LowerRightSingle", "STAPLEEX=BOTTOMRIGHT"},
    {"BottomDouble", "STAPLEEX=BOTTOMDUAL"},     {"LowerLeftSingle", "STAPLEEX=BOTTOMLEFT"},
};

const WordMap kPunchLocations[] = {
    {"Left", "LEFT"}, {"Top", "TOP"}, {"Right", "RIGHT"}, {"Bottom", "BOTTOM"},
};

const WordMap kPunchHoles[] = {
    {"2Holes", "TWO"}, {"3Holes", "THREE"}, {"4Holes", "FOUR"}, {"CoilPunch", "COIL"},
};

// The first row (in table order) whose word occurs in `setting`.
template <size_t N>
const char* FindContained(const WordMap (&map)[N], const char* setting) {
  for (const WordMap& row : map) {
    if (std::strstr(setting, row.word) != nullptr) return row.text;
  }
  return nullptr;
}

template <size_t N>
const char* FindEqual(const WordMap (&map)[N], const char* setting) {
  for (const WordMap& row : map) {
    if (Equals(setting, row.word)) return row.text;
  }
  return nullptr;
}

const char* StaplePositionItem() {
  if (IsEmpty(rec.staple)) return nullptr;
  return FindContained(kStaplePositions, rec.staple);
}

void PutPunchPosition(FILE* stream) {
  const char* location = FindContained(kPunchLocations, rec.punch);
  const char* holes = FindEqual(kPunchHoles, rec.punchHoles);
  if (location == nullptr || holes == nullptr) return;
  char line[kCommentLineSize];
  FormatText(line, sizeof line, "@PJL COMMENT PRINTJOBINFO PUNCHEX=HOLES[%s]:LOCATION[%s]\n",
             holes, location);
  KZfputs(line, stream);
}

}  // namespace

void OutputZPJLCommandforCommentBasic(FILE* stream) {
  PutCopies(stream);
  PutDuplex(stream);
  PutColorMode(stream);
  PutNumberUp(stream);
  PutStaple(stream);
  PutPunch(stream);
  PutBooklet(stream);
}

void OutputZPJLCommandforCommentAdvanced(FILE* stream) {
  PutCommentItem(OrientationItem(), stream);
  PutCommentItem(NupOrderItem(), stream);
  PutCommentItem(SaddleStitchItem(), stream);
  PutCommentItem(StaplePositionItem(), stream);
  PutPunchPosition(stream);
  PutCommentItem("MIXEDSIZETYPE=NONE", stream);
  PutCommentItem("CUD=OFF", stream);
}

const char* const kCommentedModelList[] = {
    "ZA200JP", "ZA205JP", "ZA210JP", "ZA215JP", "ZA220JP", "ZA225JP", "ZA230JP", "ZA235JP",
    "ZA240JP", "ZA245JP", "ZA250JP", "ZA255JP", "ZA260JP", "ZA265JP", "ZA270JP", "ZA275JP",
    "ZB200JP", "ZB205JP", "ZB210JP", "ZB215JP", "ZB220JP", "ZB225JP", "ZB230JP", "ZB235JP",
    "ZB240JP", "ZB245JP", "ZB250JP", "ZB255JP", "ZB260JP", "ZB265JP", "ZB270JP", "ZB275JP",
    "ZC200JP", "ZC205JP", "ZC210JP", "ZC215JP", "ZC220JP", "ZC225JP", "ZC230JP", "ZC235JP",
    "ZC240JP", "ZC245JP", "ZC250JP", "ZC255JP", "ZC260JP", "ZC265JP", "ZC270JP", "ZC275JP",
    "ZD200JP", "ZD205JP", "ZD210JP", "ZD215JP", "ZD220JP", "ZD225JP", "ZD230JP", "ZD235JP",
    "ZD240JP", "ZD245JP", "ZD250JP", "ZD255JP", "ZD260JP", "ZD265JP", "ZD270JP", "ZD275JP",
    "",
};

namespace {

void OutputJobInformationBlock(bool advanced, FILE* stream) {
  if (advanced) {
    OutputZPJLCommandforCommentVersionHigh(stream);
  } else {
    OutputZPJLCommandforCommentVersionLow(stream);
  }
  OutputZPJLCommandforCommentBegin(stream);
  OutputZPJLCommandforCommentBasic(stream);
  if (advanced) OutputZPJLCommandforCommentAdvanced(stream);
  OutputZPJLCommandforCommentEnd(stream);
}

bool IsCommentedModel(const char* pcFileName) {
  for (const char* const* code = kCommentedModelList; (*code)[0] != '\0'; ++code) {
    if (std::strstr(pcFileName, *code) != nullptr) return true;
  }
  return false;
}

void OutputJobInformation(ppd_file_t* ppd, FILE* stream) {
  ppd_attr_t* encoding = ppdFindAttr_ALT(ppd, "KRPrinterLanguageEncoding");
  if (encoding != nullptr) {
    if (encoding->value == nullptr || std::strcmp(encoding->value, "UTF-8") != 0) {
      OutputJobInformationBlock(false, stream);
      return;
    }
  } else {
    ppd_attr_t* pcFileName = ppdFindAttr_ALT(ppd, "PCFileName");
    if (pcFileName == nullptr) return;
    if (pcFileName->value != nullptr && IsCommentedModel(pcFileName->value)) {
      OutputJobInformationBlock(false, stream);
      return;
    }
  }
  if (PPDAttrEquals(ppd, "CommentOn", "True")) OutputJobInformationBlock(true, stream);
}

}  // namespace

void OutputZPJLCommandForJobInformation(FILE* stream) { OutputJobInformation(JobPPD(), stream); }
