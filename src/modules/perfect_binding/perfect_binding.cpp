#include "modules/perfect_binding/perfect_binding.h"

#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <cups/ppd.h>

#include "base/fixed_text.h"
#include "base/job_text.h"
#include "base/output_channel.h"
#include "engine/table_rows.h"
#include "platform/job_ppd.h"

PBindOption psoptionpbind;

namespace {

constexpr PBindOption& pb = psoptionpbind;

constexpr TicketRow kTicketRows[] = {
    Row("KRPBindPosition", pb.position, TicketRead::Text),
    Row("KRPBindTrimming", pb.trimming, TicketRead::Text),
    Row("KRPBindCutPageSize", pb.cutPageSize, TicketRead::Text),
    // The leading "no" keeps this key from ever matching the PPD option.
    Row("noKRPBindImagePosition", pb.imagePosition, TicketRead::Integer),
    Row("KRPBindCutPositionTop", pb.cutPositionTop, TicketRead::Text),
    Row("KRPBindCutPositionFore", pb.cutPositionFore, TicketRead::Text),
    Row("KRPBindPageSize", pb.pageSize, TicketRead::Text),
    Row("KRPBindCoverPageSize", pb.coverPageSize, TicketRead::Text),
    Row("KRPBindCoverMediaType", pb.coverMediaType, TicketRead::Text),
    Row("KRPBindCoverMediaColor", pb.coverMediaColor, TicketRead::Text),
    Row("KRPBindCoverPaperTray", pb.coverPaperTray, TicketRead::Text),
    Row("KRPBindRotationAdjustTop", pb.rotationAdjustTop, TicketRead::Text),
    Row("KRPBindRotationAdjustBot", pb.rotationAdjustBot, TicketRead::Text),
    Row("KRPBindRotationAdjustFore", pb.rotationAdjustFore, TicketRead::Text),
    Row("KRPBindCutPageAdjustmentTB", pb.cutPageAdjustmentTB, TicketRead::Text),
    Row("KRPBindCutPageAdjustmentFore", pb.cutPageAdjustmentFore, TicketRead::Text),
    Row("KRPBindCutPositionAdjustmentTB", pb.cutPositionAdjustmentTB, TicketRead::Text),
    Row("KRPBindCoverAdjustX", pb.coverAdjustX, TicketRead::Text),
    Row("KRPBindCoverAdjustY", pb.coverAdjustY, TicketRead::Text),
};
constexpr auto kBindings = MakeBindings(kTicketRows, false);

}  // namespace

const TicketBinding* const PBindticketData = kBindings.data();
const int32_t PBindticketDataNum = static_cast<int32_t>(kBindings.size());

const PBindTranslation PerfectBindParam[] = {
    // Sizes
    {"A3", "A3"},
    {"A4", "A4"},
    {"A5", "A5"},
    {"B4", "JISB4"},
    {"B5", "JISB5"},
    {"SRA3", "SA3"},
    {"8x10", "8X10"},
    {"KR11x15", "11X15"},
    {"KR889x122", "SPECIALA4"},
    {"KR122x170", "DT_SPECIALA3"},
    {"KR126x192", "126X192"},
    {"KR13x18", "13X18"},
    {"KR13x19", "13X19"},
    {"KR16-KAI", "ROC16K"},
    {"KR16-KAI-GCO", "16KAIGCO"},
    {"KR8-KAI", "ROC8K"},
    {"KR8-KAI-GCO", "8KAIGCO"},
    {"KRA4Cover", "A4COVER"},
    {"9x11", "LETTERCOVER"},
    {"Letter", "LETTER"},
    {"Executive", "EXECUTIVE"},
    {"Tabloid", "LEDGER"},
    {"TabloidExtra", "12X18"},
    // Media types
    {"Default", "OFF"},
    {"Stationary", "NORMAL"},
    {"StationaryS1", "NORMALS1"},
    {"RecyclePaper", "RECYCLE"},
    {"RecyclePaperS1", "RECYCLES1"},
    {"ThickPaper", "THICK"},
    {"ThickPaperS1", "THICKS1"},
    {"ThickPaper2", "SUPERTHICK"},
    {"ThickPaper2S1", "SUPERTHICKS1"},
    {"CoatingPaper1", "COATEDPAPER"},
    {"CoatingPaper1A", "COATEDPAPERA"},
    {"CoatingPaper1B", "COATEDPAPERB"},
    {"CoatingPaper2", "COATEDPAPER2"},
    {"PrePrintedPaper", "PREPRINTED"},
    {"PrePrintedThickPaper1", "PREPRINTEDTHICK1"},
    {"PrePrintedThickPaper1S1", "PREPRINTEDTHICK1S1"},
    {"PrePrintedThickPaper2", "PREPRINTEDTHICK2"},
    {"PrePrintedThickPaper2S1", "PREPRINTEDTHICK2S1"},
    {"PrePrintedPlainPaperS1", "PREPRINTEDS1"},
    {"CustomSizedPaper1", "USER1"},
    {"CustomSizedPaper2", "USER2"},
    {"CustomSizedPaper3", "USER3"},
    {"CustomSizedPaper4", "USER4"},
    {"CustomSizedPaper5", "USER5"},
    // Colours
    {"White", "WHITE"},
    {"Blue", "BLUE"},
    {"Yellow", "YELLOW"},
    {"Green", "GREEN"},
    {"Pink", "PINK"},
    {"Clear", "CLEAR"},
    {"Ivory", "IVORY"},
    {"Gray", "GRAY"},
    {"Buff", "BUFF"},
    {"Goldenrod", "GOLDENROD"},
    {"Red", "RED"},
    {"Orange", "ORANGE"},
    {"Custom1", "CUSTOM1"},
    {"Custom2", "CUSTOM2"},
    {"Custom3", "CUSTOM3"},
    {"Custom4", "CUSTOM4"},
    {"Custom5", "CUSTOM5"},
    {"Other", "OTHER"},
    // Trays; oversized trays and high-capacity feeders are the same inputs.
    {"Any", "UNSPECIFIED"},
    {"AutoTray", "AUTO"},
    {"1stTray", "INTRAY1"},
    {"2ndTray", "INTRAY2"},
    {"3rdTray", "INTRAY3"},
    {"4thTray", "INTRAY4"},
    {"MSI", "INTRAY5"},
    {"6thTrayOverSized", "INTRAY6"},
    {"7thTrayOverSized", "INTRAY7"},
    {"HCF1", "INTRAY6"},
    {"HCF2", "INTRAY7"},
    {"PBindInserter", "INTRAY9"},
    {"", ""},
};
const int32_t PerfectBindParamNum = 77;

namespace {

// Long enough for any attribute line of this module: a 4-letter attribute
// and a value from a kPBindTextSize field are never cut, so a line always
// keeps its closing quote and line end.
constexpr size_t kPBindLineSize = kPBindTextSize + 64;

// What the chosen binding edge means for the printer.
struct PositionRule {
  const char* choice;
  const char* position;
  const char* rotation;  // nullptr: rotation stays as it is
};
const PositionRule kPositionRules[] = {
    {"None", "OFF", nullptr},
    {"BindLeft", "LEFT", "ROTSEFLAND"},
    {"BindRight", "RIGHT", "ROTLEFPORT"},
    {"BindTop", "TOP", "ROTSEFLAND"},
};

const char kMinimumCut[] = "7mm";


// Two's-complement wrap into 32 bits: hostile ticket numbers give the value
// a 32-bit computation would, without signed overflow.
int32_t Wrap32(int64_t value) {
  return static_cast<int32_t>(static_cast<uint32_t>(static_cast<uint64_t>(value)));
}

// atoi with the result wrapped to 32 bits rather than undefined on overflow.
int32_t TextToInt(const char* text) { return Wrap32(std::strtoll(text, nullptr, 10)); }

// Whole millimetres of a cut position such as "7mm" (the unit is the last
// two characters).
int32_t CutPositionMillimetres(const char* text) {
  size_t length = std::strlen(text);
  char number[kPBindTextSize];
  CopyTextPrefix(number, sizeof number, text, length >= 2 ? length - 2 : 0);
  return TextToInt(number);
}

void OutputPBindNumber(const char* attribute, int32_t value, FILE* stream) {
  char line[kPBindLineSize];
  FormatText(line, sizeof line, "@PJL SET JOBATTR=\"@%s=%d\"\n", attribute, value);
  KZfputs(line, stream);
}

// Points to tenths of a millimetre through whole millimetres (1 pt = 6/17 mm).
// Sizes beyond any sheet, or not numbers at all, count as unknown.
int32_t PointsToTenths(float points) {
  if (!(points > -1.0e6f && points < 1.0e6f)) return 0;
  int32_t whole = static_cast<int32_t>(points);
  return whole * 60 / 170 * 10;
}

void NormalisePosition(PBindOption* option) {
  for (const PositionRule& rule : kPositionRules) {
    if (!Equals(option->position, rule.choice)) continue;
    if (rule.rotation != nullptr) CopyText(option->rotation, kPBindTextSize, rule.rotation);
    CopyText(option->position, kPBindTextSize, rule.position);
    return;
  }
}

// What a trimming choice does to the cut settings: the cut page size is
// kept or cleared, each cut position kept, cleared or set to the minimum cut.
enum class Cut { Keep, Clear, Minimum };
struct TrimmingRule {
  const char* choice;
  bool keepCutPage;
  Cut fore;
  Cut top;
};
const TrimmingRule kTrimmingRules[] = {
    {"None", false, Cut::Clear, Cut::Clear},
    {"3EdgeSpecifySize", true, Cut::Clear, Cut::Clear},
    {"1EdgeSpecifySize", true, Cut::Clear, Cut::Clear},
    {"1EdgeCut", false, Cut::Keep, Cut::Clear},
    {"3EdgeCutMinimum", false, Cut::Minimum, Cut::Minimum},
    {"1EdgeCutMinimum", false, Cut::Minimum, Cut::Clear},
};
// Any other choice: the cut page size cleared, both positions kept.
constexpr TrimmingRule kOtherTrimming = {"", false, Cut::Keep, Cut::Keep};

void ApplyCut(Cut cut, char* position, PBindOption* option) {
  if (cut == Cut::Clear) ZeroText(position, kPBindTextSize);
  if (cut == Cut::Minimum) {
    CopyText(position, kPBindTextSize, kMinimumCut);
    option->minimumCut = 1;
  }
}

// The trimming choice decides which cut settings apply, then becomes the
// printer's word for it.
void NormaliseTrimming(PBindOption* option) {
  const char* trimming = option->trimming;
  const TrimmingRule* rule = &kOtherTrimming;
  for (const TrimmingRule& candidate : kTrimmingRules) {
    if (Equals(trimming, candidate.choice)) rule = &candidate;
  }
  if (!rule->keepCutPage) ZeroText(option->cutPageSize, kPBindTextSize);
  ApplyCut(rule->fore, option->cutPositionFore, option);
  ApplyCut(rule->top, option->cutPositionTop, option);

  if (Equals(trimming, "None")) {
    CopyText(option->trimming, kPBindTextSize, "OFF");
  } else if (StartsWith(trimming, "1Edge")) {
    CopyText(option->trimming, kPBindTextSize, "FACE");
  } else if (StartsWith(trimming, "3Edge")) {
    CopyText(option->trimming, kPBindTextSize, "FULLBLEED");
  }
}

// Translates `name` and writes it as @<attribute>.
void OutputPBindTranslated(const char* name, const char* attribute, FILE* stream) {
  char word[kPBindTextSize];
  convertPBindPPDValue(name, word, sizeof word);
  OutputZPJLCommandforPBindNormal(word, attribute, stream);
}

}  // namespace

void convertPBindPPDValue(const char* name, char* out, size_t size) {
  ZeroText(out, size);
  if (name == nullptr) return;
  for (const PBindTranslation* row = PerfectBindParam; row->ppdName[0] != '\0'; ++row) {
    if (Equals(name, row->ppdName)) {
      CopyText(out, size, row->printerWord);
      return;
    }
  }
}

void PBindPageSizeInTenths(const char* name, int32_t* width, int32_t* length) {
  *width = 0;
  *length = 0;
  if (name == nullptr || name[0] == '\0') return;
  ppd_file_t* ppd = JobPPD();
  ppd_size_t* size = ppd != nullptr ? ppdPageSize(ppd, name) : nullptr;
  if (size != nullptr) {
    *width = PointsToTenths(size->width);
    *length = PointsToTenths(size->length);
  }
}

void OutputZPJLCommandforPBindNormal(const char* value, const char* attribute, FILE* stream) {
  char line[kPBindLineSize];
  char safe[kPBindLineSize];
  FormatText(line, sizeof line, "@PJL SET JOBATTR=\"@%s=%s\"\n", attribute,
             CleanPJLCopy(safe, sizeof safe, value));
  KZfputs(line, stream);
}

void OutputZPJLCommandforPBindDigital(const char* text, int32_t factor, const char* attribute,
                                      const char* position, int32_t signMode, FILE* stream) {
  if (text == nullptr || text[0] == '\0') return;
  int32_t value = Wrap32(static_cast<int64_t>(TextToInt(text)) * factor);
  bool negate = (signMode == 1 && Equals(position, "RIGHT")) ||
                (signMode == 2 && (Equals(position, "TOP") || Equals(position, "LEFT")));
  if (negate) value = Wrap32(-static_cast<int64_t>(value));
  OutputPBindNumber(attribute, value, stream);
}

int PBindGetTicketFromPDE(char* argv[]) {
  std::memset(&psoptionpbind, 0, sizeof psoptionpbind);
  GetTicketFromArray(argv, PBindticketData, PBindticketDataNum);
  NormalisePosition(&psoptionpbind);
  NormaliseTrimming(&psoptionpbind);
  return 1;
}

void OutputZPJLCommandforPerfectBind(FILE* stream) {
  const PBindOption& option = psoptionpbind;
  const char* position = option.position;
  if (position[0] == '\0' || Equals(position, "OFF")) return;

  OutputZPJLCommandforPBindNormal(option.position, "PBRE", stream);
  OutputZPJLCommandforPBindNormal(option.rotation, "MSDA", stream);
  OutputZPJLCommandforPBindNormal(option.trimming, "PBTC", stream);

  int32_t width = 0;
  int32_t length = 0;
  if (option.pageSize[0] != '\0') {
    PBindPageSizeInTenths(option.pageSize, &width, &length);
    OutputPBindTranslated(option.pageSize, "PBBP", stream);
  }

  const bool trimmed = !Equals(option.trimming, "OFF");
  char cutPage[kPBindTextSize];
  int32_t cutWidth = 0;
  int32_t cutLength = 0;
  int32_t offset = 0;  // image offset across the sheet
  if (option.cutPageSize[0] != '\0') {
    PBindPageSizeInTenths(option.cutPageSize, &cutWidth, &cutLength);
    offset = Wrap32((static_cast<int64_t>(width) - cutWidth) / 2);
    convertPBindPPDValue(option.cutPageSize, cutPage, sizeof cutPage);
  } else if (trimmed) {
    CopyText(cutPage, sizeof cutPage, "CUSTOM");
  } else {
    convertPBindPPDValue(option.pageSize, cutPage, sizeof cutPage);
    cutWidth = width;
    cutLength = length;
  }
  OutputZPJLCommandforPBindNormal(cutPage, "PBTP", stream);

  if (trimmed) {
    const bool fore = option.cutPositionFore[0] != '\0';
    const bool top = option.cutPositionTop[0] != '\0';
    if (fore) {
      int64_t n = CutPositionMillimetres(option.cutPositionFore);
      offset = Wrap32(5 * n);
      OutputPBindNumber("PBTW", Wrap32(width - 10 * n), stream);
    }
    if (top) {
      // Both top and bottom edges are cut.
      int64_t m = CutPositionMillimetres(option.cutPositionTop);
      OutputPBindNumber("PBTH", Wrap32(length - 20 * m), stream);
    } else if (fore) {
      OutputPBindNumber("PBTH", length, stream);
    } else {
      OutputPBindNumber("PBTW", cutWidth, stream);
      OutputPBindNumber("PBTH", cutLength, stream);
    }
    if (option.minimumCut == 0) {
      int32_t negated = Wrap32(-static_cast<int64_t>(offset));
      bool right = Equals(position, "RIGHT");
      OutputPBindNumber("ISXO", right ? offset : negated, stream);
      OutputPBindNumber("ISXT", right ? negated : offset, stream);
    }
  }

  OutputZPJLCommandforPBindDigital(option.cutPageAdjustmentFore, 1, "PBAW", position, 0, stream);
  OutputZPJLCommandforPBindDigital(option.cutPageAdjustmentTB, 1, "PBAH", position, 0, stream);
  if (Equals(position, "RIGHT")) {
    // The sheet is turned, so top and bottom trade places.
    OutputZPJLCommandforPBindDigital(option.rotationAdjustTop, 1, "PBAB", position, 0, stream);
    OutputZPJLCommandforPBindDigital(option.rotationAdjustBot, 1, "PBAT", position, 0, stream);
  } else {
    OutputZPJLCommandforPBindDigital(option.rotationAdjustTop, 1, "PBAT", position, 0, stream);
    OutputZPJLCommandforPBindDigital(option.rotationAdjustBot, 1, "PBAB", position, 0, stream);
  }
  OutputZPJLCommandforPBindDigital(option.rotationAdjustFore, 1, "PBAF", position, 1, stream);
  OutputZPJLCommandforPBindDigital(option.coverAdjustX, 1, "PBAX", position, 1, stream);
  OutputZPJLCommandforPBindDigital(option.coverAdjustY, 1, "PBAY", position, 2, stream);
  OutputZPJLCommandforPBindDigital(option.cutPositionAdjustmentTB, 1, "PBAV", position, 1, stream);

  if (option.coverPageSize[0] != '\0') {
    const char* coverSize = Equals(option.coverPageSize, "DL") ? "Tabloid" : option.coverPageSize;
    OutputPBindTranslated(coverSize, "PBCP", stream);
  }
  if (option.coverMediaType[0] != '\0') {
    OutputPBindTranslated(option.coverMediaType, "PBCQ", stream);
  }
  if (option.coverMediaColor[0] != '\0') {
    OutputPBindTranslated(option.coverMediaColor, "PBCC", stream);
  }
  // The colour, not the tray, decides whether the tray goes out.
  if (option.coverMediaColor[0] != '\0') {
    OutputPBindTranslated(option.coverPaperTray, "PBCT", stream);
  }

  OutputZPJLCommandforPBindNormal("OFF", "PBCI", stream);
}
