#include "modules/watermark/watermark.h"

#include <cmath>
#include <cstring>

#include "frame/fixed_text.h"
#include "frame/output_channel.h"

WatermarkOptionRecord psOptionWatermark;

namespace {

constexpr int32_t kIntSize = sizeof(int32_t);
constexpr int32_t kFloatSize = sizeof(float);

}  // namespace

// clang-format off
const TicketBinding WatermarkticketData[] = {
    {JTZ_KEY("WMARKNameTicket"), psOptionWatermark.name, kWatermarkTextSize, GetTicketString},
    {JTZ_KEY("WMARKOptionsTicket"), &psOptionWatermark.options, kIntSize, GetTicketInteger},
    {JTZ_KEY("WMARKOnlyFirstTicket"), &psOptionWatermark.onlyFirst, kIntSize, GetTicketInteger},
    {JTZ_KEY("WMARKTextTicket"), psOptionWatermark.text, kWatermarkTextSize,
     GetTicketStringConvertedToPrtLang},
    {JTZ_KEY("WMARKOrientationTicket"), &psOptionWatermark.orientation, kIntSize,
     GetTicketInteger},
    {JTZ_KEY("WMARKPaperHeightTicket"), &psOptionWatermark.paperHeight, kIntSize,
     GetTicketInteger},
    {JTZ_KEY("WMARKPaperWidthTicket"), &psOptionWatermark.paperWidth, kIntSize, GetTicketInteger},
    {JTZ_KEY("WMARKFilePathTicket"), psOptionWatermark.filePath, kWatermarkTextSize,
     GetTicketStringConvertedToPrtLang},
    {JTZ_KEY("WMARKTypeTicket"), &psOptionWatermark.type, kIntSize, GetTicketInteger},
    {JTZ_KEY("WMARKFontTicket"), psOptionWatermark.font, kWatermarkTextSize, GetTicketString},
    {JTZ_KEY("WMARKFontSizeTicket"), &psOptionWatermark.fontSize, kIntSize, GetTicketInteger},
    {JTZ_KEY("WMARKFontTypeTicket"), &psOptionWatermark.fontType, kIntSize, GetTicketInteger},
    {JTZ_KEY("WMARKColorRTicket"), &psOptionWatermark.colorR, kFloatSize, GetTicketFloat},
    {JTZ_KEY("WMARKColorGTicket"), &psOptionWatermark.colorG, kFloatSize, GetTicketFloat},
    {JTZ_KEY("WMARKColorBTicket"), &psOptionWatermark.colorB, kFloatSize, GetTicketFloat},
    {JTZ_KEY("WMARKColorATicket"), &psOptionWatermark.colorA, kFloatSize, GetTicketFloat},
    {JTZ_KEY("WMARKAngleTicket"), &psOptionWatermark.angle, kIntSize, GetTicketInteger},
    {JTZ_KEY("WMARKDensityTicket"), &psOptionWatermark.density, kIntSize, GetTicketInteger},
    {JTZ_KEY("WMARKScaleTicket"), &psOptionWatermark.scale, kFloatSize, GetTicketFloat},
    {JTZ_KEY("WMARKPosHorizontalTicket"), &psOptionWatermark.posHorizontal, kFloatSize,
     GetTicketFloat},
    {JTZ_KEY("WMARKPosVerticalTicket"), &psOptionWatermark.posVertical, kFloatSize,
     GetTicketFloat},
    {JTZ_KEY("WMARKWidthTicket"), &psOptionWatermark.width, kFloatSize, GetTicketFloat},
    {JTZ_KEY("WMARKHeightTicket"), &psOptionWatermark.height, kFloatSize, GetTicketFloat},
    {JTZ_KEY("WMARKhOffsetTicket"), &psOptionWatermark.hOffset, kFloatSize, GetTicketFloat},
    {JTZ_KEY("WMARKvOffsetTicket"), &psOptionWatermark.vOffset, kFloatSize, GetTicketFloat},
};
// clang-format on
const int32_t WatermarkticketDataNum = sizeof WatermarkticketData / sizeof WatermarkticketData[0];

void WatermarkGetTicketFromPDE(char* argv[]) {
  GetTicketFromArray(argv, WatermarkticketData, WatermarkticketDataNum);
}

namespace {

// Where the pass-through asks for the page-device hook (before the job's
// first line of code) and where it takes it back (before the first "ep" or
// "endp" of a job it was installed in).
constexpr int32_t kPointPageHook = 40;
constexpr int32_t kPointPageHookOff = 41;

// The injection points the module handles, each with its emission flag.
// 29 is part of the module's protocol although the pass-through never
// raises it.
enum InjectionSlot {
  kSlotProlog,
  kSlotPageSetup,
  kSlotEndPage,
  kSlotEndPageAlt,
  kSlotSaveSlot,
  kSlotCount
};

struct EmissionFlags {
  int32_t bToPrint[kSlotCount] = {1, 1, 1, 1, 1};
};

EmissionFlags& InjectTextWatermark() {
  static EmissionFlags flags;
  return flags;
}

int SlotOfPoint(int32_t point) {
  switch (point) {
    case 13:
      return kSlotProlog;
    case 24:
      return kSlotPageSetup;
    case 27:
      return kSlotEndPage;
    case 28:
      return kSlotEndPageAlt;
    case 29:
      return kSlotSaveSlot;
    default:
      return -1;
  }
}

// The line that restores the job's page save object and opens a fresh
// graphics state for the text, by the save object each point's page uses.
const char* OpeningLine(int slot) {
  switch (slot) {
    case kSlotEndPage:
      return "pgsave restore /pgsave save store gsave\n";
    case kSlotEndPageAlt:
      return "pm restore /pm save store gsave\n";
    default:
      return "krfpgsave restore /krfpgsave save store gsave\n";
  }
}

float Faded(float component, int32_t density) {
  return 1 - (1 - component) * (static_cast<float>(density) / 100);
}

// The lines that draw the text, without the closing grestore. They depend
// only on the job's settings, the same at every page, so they are formatted
// once (formatting the numbers was most of what a page cost) and again only
// if the settings change.
const char* TextLines() {
  static WatermarkOptionRecord formattedFor;
  static bool formatted = false;
  static char lines[5 * kWatermarkLineSize];
  const WatermarkOptionRecord& w = psOptionWatermark;
  if (formatted && std::memcmp(&formattedFor, &w, sizeof w) == 0) return lines;

  float x = 0;
  float y = 0;
  GetWatermarkPostion(&x, &y, w.hOffset, w.vOffset);
  char line[kWatermarkLineSize];
  ZeroText(lines, sizeof lines);
  FormatText(line, sizeof line, "%.2f%c%.2f%c%.2f setrgbcolor\n",
             static_cast<double>(Faded(w.colorR, w.density)), ' ',
             static_cast<double>(Faded(w.colorG, w.density)), ' ',
             static_cast<double>(Faded(w.colorB, w.density)));
  AppendText(lines, sizeof lines, line);
  FormatText(line, sizeof line, "/%s%c%d selectfont\n", w.font, ' ', w.fontSize);
  AppendText(lines, sizeof lines, line);
  FormatText(line, sizeof line, "%.2f%c%.2f moveto\n", static_cast<double>(x), ' ',
             static_cast<double>(y));
  AppendText(lines, sizeof lines, line);
  FormatText(line, sizeof line, "%d rotate\n", w.angle);
  AppendText(lines, sizeof lines, line);
  FormatText(line, sizeof line, "%s show\n", w.text);
  AppendText(lines, sizeof lines, line);
  formattedFor = w;
  formatted = true;
  return lines;
}

void DrawText(const char* opening, FILE* stream) {
  KZfprintf(stream, opening);
  KZfprintf(stream, TextLines());
  KZfprintf(stream, "grestore\n");
}

// The page-device hook for jobs that end their pages some other way: an
// EndPage procedure, installed once before the job's own code, draws the
// text at every showpage of the sheet (reason 0), in the sheet's default
// coordinates, then hands over to the EndPage it replaced. Its state lives in
// global VM, so a page's restore does not undo the count of marked sheets or
// the switch that turns it off. Each step is guarded: a printer without the
// page device, or a bad font, loses the mark and never the job.
void InstallPageHook(FILE* stream) {
  const WatermarkOptionRecord& w = psOptionWatermark;
  KZfprintf(stream,
            "mark{userdict/krfWM 4 dict put krfWM begin\n"
            "currentglobal true setglobal/state 2 dict def setglobal"
            " state/on true put state/sheets 0 put\n");
  KZfprintf(stream, w.onlyFirst == 0 ? "/only false def" : "/only true def");
  KZfprintf(stream,
            "/prev currentpagedevice/EndPage get def\n"
            "/draw{gsave initgraphics mark{\n");
  KZfprintf(stream, TextLines());
  KZfprintf(stream,
            "}stopped cleartomark grestore}bind def end\n"
            "<</EndPage{userdict/krfWM get begin dup 0 eq state/on get and"
            "{state/sheets get dup 0 eq only not or{draw}if 1 add state exch/sheets exch put}if"
            "/prev load end exec}bind>>systemdict/setpagedevice get exec\n"
            "}stopped cleartomark\n");
}

// The job turned out to draw the text itself at its "ep"/"endp" lines.
void RemovePageHook(FILE* stream) {
  KZfprintf(stream, "userdict/krfWM known{krfWM/state get/on false put}if\n");
}

}  // namespace

bool WatermarkWantsPageHook() {
  const WatermarkOptionRecord& w = psOptionWatermark;
  return w.name[0] != '\0' && w.type == 0;
}

void WatermarkOutputPSCommandFromFilter(int32_t point, int32_t page, FILE* stream) {
  (void)page;
  WatermarkOptionRecord& w = psOptionWatermark;
  if (!WatermarkWantsPageHook()) return;
  w.options = 1;
  if (point == kPointPageHook) return InstallPageHook(stream);
  if (point == kPointPageHookOff) return RemovePageHook(stream);

  int slot = SlotOfPoint(point);
  if (slot < 0) return;
  int32_t& toPrint = InjectTextWatermark().bToPrint[slot];
  if (toPrint == 0) return;

  switch (slot) {
    case kSlotProlog:
      // The dictionary stays open on purpose: the page fragments find
      // krfpgsave and krfbp through it.
      KZfprintf(stream, "userdict/krfInfo 2 dict dup begin\n");
      KZfprintf(stream, "/krfpgsave 0 def\n");
      KZfprintf(stream, "/krfbp{/krfpgsave save restore} bind def\n");
      break;
    case kSlotPageSetup:
      KZfprintf(stream, "krfbp\n");
      break;
    default:
      DrawText(OpeningLine(slot), stream);
      break;
  }
  toPrint = w.onlyFirst == 0 ? 1 : 0;
}

void ResetWatermarkState() { InjectTextWatermark() = EmissionFlags(); }

namespace {

constexpr double kPi = 3.1415926;

// One row of the angle ranges. The text box's half extents, turned by what
// is left of the angle after the row's phase, give one component along the
// text and one across it; each quarter turn adds them to the centre with its
// own signs, and the odd quarters exchange the two between x and y.
struct AngleRange {
  uint32_t low;
  uint32_t high;
  double phase;
  bool swapped;  // x takes the across component, y the along one
  int xSign;
  int ySign;
};

const AngleRange kAngleRanges[] = {
    {0, 90, 0.0, false, -1, -1},
    {91, 180, 1.5707963, true, +1, -1},
    {181, 270, 3.1415926, false, +1, +1},
    {271, 360, 4.7123889, true, -1, +1},
};

const AngleRange* RangeOf(int32_t angle) {
  // Compared unsigned, so a negative angle falls outside every range.
  const uint32_t a = static_cast<uint32_t>(angle);
  for (const AngleRange& range : kAngleRanges) {
    if (a >= range.low && a <= range.high) return &range;
  }
  return nullptr;
}

}  // namespace

void GetWatermarkPostion(float* x, float* y, float horizontalOffset, float verticalOffset) {
  const WatermarkOptionRecord& w = psOptionWatermark;
  float cx = 0;
  float cy = 0;
  const float halfPaperWidth = static_cast<float>(w.paperWidth) / 2;
  const float halfPaperHeight = static_cast<float>(w.paperHeight) / 2;
  if (w.orientation == 1 || w.orientation == 3) {
    cx = halfPaperWidth;
    cy = halfPaperHeight;
  } else if (w.orientation == 2 || w.orientation == 4) {
    cx = halfPaperHeight;
    cy = halfPaperWidth;
  }

  float px = 0;
  float py = 0;
  if (const AngleRange* range = RangeOf(w.angle)) {
    const double phi = w.angle * kPi / 180 - range->phase;
    const float hw = w.width / 2;
    const float hh = w.height / 2;
    const double along = std::cos(phi) * hw - std::sin(phi) * hh;
    const double across = std::cos(phi) * hh + std::sin(phi) * hw;
    px = static_cast<float>(cx + range->xSign * (range->swapped ? across : along));
    py = static_cast<float>(cy + range->ySign * (range->swapped ? along : across));
  }
  *x = px + horizontalOffset;
  *y = py + verticalOffset;
}
