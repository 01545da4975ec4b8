#include "modules/watermark/watermark.h"

#include <cstring>
#include <string_view>

#include "base/fixed_text.h"
#include "base/job_text.h"
#include "base/output_channel.h"
#include "engine/injection_point.h"
#include "engine/table_rows.h"

WatermarkOptionRecord psOptionWatermark;

namespace {

constexpr TicketRow kTicketRows[] = {
    Row(JTZ_KEY("WMARKNameTicket"), psOptionWatermark.name, TicketRead::RawText),
    Row(JTZ_KEY("WMARKOptionsTicket"), psOptionWatermark.options, TicketRead::Integer),
    Row(JTZ_KEY("WMARKOnlyFirstTicket"), psOptionWatermark.onlyFirst, TicketRead::Integer),
    Row(JTZ_KEY("WMARKTextTicket"), psOptionWatermark.text, TicketRead::Text),
    Row(JTZ_KEY("WMARKOrientationTicket"), psOptionWatermark.orientation, TicketRead::Integer),
    Row(JTZ_KEY("WMARKPaperHeightTicket"), psOptionWatermark.paperHeight, TicketRead::Integer),
    Row(JTZ_KEY("WMARKPaperWidthTicket"), psOptionWatermark.paperWidth, TicketRead::Integer),
    Row(JTZ_KEY("WMARKFilePathTicket"), psOptionWatermark.filePath, TicketRead::Text),
    Row(JTZ_KEY("WMARKTypeTicket"), psOptionWatermark.type, TicketRead::Integer),
    Row(JTZ_KEY("WMARKFontTicket"), psOptionWatermark.font, TicketRead::RawText),
    Row(JTZ_KEY("WMARKFontSizeTicket"), psOptionWatermark.fontSize, TicketRead::Integer),
    Row(JTZ_KEY("WMARKFontTypeTicket"), psOptionWatermark.fontType, TicketRead::Integer),
    Row(JTZ_KEY("WMARKColorRTicket"), psOptionWatermark.colorR, TicketRead::Float),
    Row(JTZ_KEY("WMARKColorGTicket"), psOptionWatermark.colorG, TicketRead::Float),
    Row(JTZ_KEY("WMARKColorBTicket"), psOptionWatermark.colorB, TicketRead::Float),
    Row(JTZ_KEY("WMARKColorATicket"), psOptionWatermark.colorA, TicketRead::Float),
    Row(JTZ_KEY("WMARKAngleTicket"), psOptionWatermark.angle, TicketRead::Integer),
    Row(JTZ_KEY("WMARKDensityTicket"), psOptionWatermark.density, TicketRead::Integer),
    Row(JTZ_KEY("WMARKScaleTicket"), psOptionWatermark.scale, TicketRead::Float),
    Row(JTZ_KEY("WMARKPosHorizontalTicket"), psOptionWatermark.posHorizontal, TicketRead::Float),
    Row(JTZ_KEY("WMARKPosVerticalTicket"), psOptionWatermark.posVertical, TicketRead::Float),
    Row(JTZ_KEY("WMARKWidthTicket"), psOptionWatermark.width, TicketRead::Float),
    Row(JTZ_KEY("WMARKHeightTicket"), psOptionWatermark.height, TicketRead::Float),
    Row(JTZ_KEY("WMARKhOffsetTicket"), psOptionWatermark.hOffset, TicketRead::Float),
    Row(JTZ_KEY("WMARKvOffsetTicket"), psOptionWatermark.vOffset, TicketRead::Float),
};
constexpr auto kBindings = MakeBindings(kTicketRows, false);

}  // namespace

const TicketBinding* const WatermarkticketData = kBindings.data();
const int32_t WatermarkticketDataNum = static_cast<int32_t>(kBindings.size());

void WatermarkGetTicketFromPDE(char* argv[]) {
  GetTicketFromArray(argv, WatermarkticketData, WatermarkticketDataNum);
}

namespace {

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
    case kPointBeginProlog:
      return kSlotProlog;
    case kPointEndPageSetup:
      return kSlotPageSetup;
    case kPointEndPage:
      return kSlotEndPage;
    case kPointEndPageAlt:
      return kSlotEndPageAlt;
    case kPointPageSaveRestore:
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
      return kWatermarkOpeningLines[0];
    case kSlotEndPageAlt:
      return kWatermarkOpeningLines[1];
    default:
      return kWatermarkOpeningLines[2];
  }
}

void WriteLine(const char* line, FILE* stream) {
  KZfprintf(stream, line);
  KZfprintf(stream, "\n");
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
  FormatText(line, sizeof line, "%.2f%c%.2f%c%.2f %s\n",
             static_cast<double>(Faded(w.colorR, w.density)), ' ',
             static_cast<double>(Faded(w.colorG, w.density)), ' ',
             static_cast<double>(Faded(w.colorB, w.density)), kWatermarkTextOperators[0]);
  AppendText(lines, sizeof lines, line);
  char font[sizeof w.font];
  PostScriptNameText(font, sizeof font, w.font);
  FormatText(line, sizeof line, "/%s%c%d %s\n", font, ' ', w.fontSize,
             kWatermarkTextOperators[1]);
  AppendText(lines, sizeof lines, line);
  FormatText(line, sizeof line, "%.2f%c%.2f %s\n", static_cast<double>(x), ' ',
             static_cast<double>(y), kWatermarkTextOperators[2]);
  AppendText(lines, sizeof lines, line);
  FormatText(line, sizeof line, "%d %s\n", w.angle, kWatermarkTextOperators[3]);
  AppendText(lines, sizeof lines, line);
  char text[PostScriptStringSize(sizeof w.text)];
  PostScriptStringToken(text, sizeof text, w.text);
  FormatText(line, sizeof line, "%s %s\n", text, kWatermarkTextOperators[4]);
  AppendText(lines, sizeof lines, line);
  formattedFor = w;
  formatted = true;
  return lines;
}

void DrawText(const char* opening, FILE* stream) {
  WriteLine(opening, stream);
  KZfprintf(stream, TextLines());
  WriteLine(kWatermarkCloseLine, stream);
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
  KZfprintf(stream, kWatermarkPageHookFirst);
  KZfprintf(stream,
            "\ncurrentglobal true setglobal/state 2 dict def setglobal"
            " state/on true put state/sheets 0 put\n");
  KZfprintf(stream, w.onlyFirst == 0 ? "/only false def" : "/only true def");
  KZfprintf(stream,
            "/prev currentpagedevice/EndPage get def\n"
            "/draw{gsave initgraphics mark{\n");
  // A text line cut at the line size would leave its string open and take
  // the rest of the job into it: such a text is not drawn.
  const std::string_view lines = TextLines();
  constexpr std::string_view kShowEnd = " show\n";
  if (lines.size() >= kShowEnd.size() && lines.substr(lines.size() - kShowEnd.size()) == kShowEnd) {
    KZfprintf(stream, lines.data());
  } else {
    fprintf(stderr, "DEBUG: The watermark text is too long to be drawn.\n");
  }
  KZfprintf(stream,
            "}stopped cleartomark grestore}bind def end\n"
            "<</EndPage{userdict/krfWM get begin dup 0 eq state/on get and"
            "{state/sheets get dup 0 eq only not or{draw}if 1 add state exch/sheets exch put}if"
            "/prev load end exec}bind>>systemdict/setpagedevice get exec\n");
  KZfprintf(stream, kWatermarkPageHookLast);
  KZfprintf(stream, "\n");
}

// The job turned out to draw the text itself at its "ep"/"endp" lines.
void RemovePageHook(FILE* stream) {
  KZfprintf(stream, kWatermarkPageHookOff);
  KZfprintf(stream, "\n");
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
      for (const char* line : kWatermarkPrologLines) WriteLine(line, stream);
      break;
    case kSlotPageSetup:
      WriteLine(kWatermarkPageSetupLine, stream);
      break;
    default:
      DrawText(OpeningLine(slot), stream);
      break;
  }
  toPrint = w.onlyFirst == 0 ? 1 : 0;
}

void ResetWatermarkState() { InjectTextWatermark() = EmissionFlags(); }

namespace {

// One row of the angle ranges. The text box's half extents, turned by what
// is left of the angle after the row's quarter turns (kTurns), give one
// component along the text and one across it; each quarter turn adds them
// to the centre with its own signs, and the odd quarters exchange the two
// between x and y.
struct AngleRange {
  uint32_t low;
  uint32_t high;
  bool swapped;  // x takes the across component, y the along one
  int xSign;
  int ySign;
};

const AngleRange kAngleRanges[] = {
    {0, 90, false, -1, -1},
    {91, 180, true, +1, -1},
    {181, 270, false, +1, +1},
    {271, 360, true, -1, +1},
};

// cos and sin of what is left of each whole angle after its row's quarter
// turns: phi = angle * 3.1415926 / 180 less 0, 1.5707963, 3.1415926 or
// 4.7123889, as the C library computes them (bit for bit, so the output
// stays the same). Looking them up keeps the library's large tables, a
// quarter megabyte, out of every job's memory.
struct Turn {
  double cosine;
  double sine;
};
const Turn kTurns[361] = {
    {0x1p+0, 0x0p+0}, {0x1.ffec097f6665bp-1, 0x1.1df0b266cac0bp-6},
    {0x1.ffb0278c1e08ep-1, 0x1.1de58c4db4439p-5}, {0x1.ff4c5ed1952cbp-1, 0x1.acbc7414663f1p-5},
    {0x1.fec0b717c6accp-1, 0x1.1db8f68501d91p-4}, {0x1.fe0d3b429ea78p-1, 0x1.64fd6b263fe4ap-4},
    {0x1.fd31f95121178p-1, 0x1.ac260939b03a8p-4}, {0x1.fc2f025c526b9p-1, 0x1.f32d4436d0816p-4},
    {0x1.fb046a95e2353p-1, 0x1.1d06c917cf827p-3}, {0x1.f9b2494698066p-1, 0x1.4060b61f96598p-3},
    {0x1.f838b8cc829f6p-1, 0x1.63a1a77bf9402p-3}, {0x1.f697d698e98ffp-1, 0x1.86c6dd68f0cc4p-3},
    {0x1.f4cfc32e01752p-1, 0x1.a9cd9a4c12e4bp-3}, {0x1.f2e0a21c63025p-1, 0x1.ccb322eb48c8bp-3},
    {0x1.f0ca9a004506dp-1, 0x1.ef74bea355aa2p-3}, {0x1.ee8dd47e79a86p-1, 0x1.0907dbcf14ca2p-2},
    {0x1.ec2a7e412f0e3p-1, 0x1.1a40ad847e346p-2}, {0x1.e9a0c6f473bdbp-1, 0x1.2b637ca5165a5p-2},
    {0x1.e6f0e1427eedep-1, 0x1.3c6ef31b6f17bp-2}, {0x1.e41b02cfbd1cap-1, 0x1.4d61bca429d8ep-2},
    {0x1.e11f6436a1336p-1, 0x1.5e3a86e8803e6p-2}, {0x1.ddfe41033a8fbp-1, 0x1.6ef80198a6578p-2},
    {0x1.dab7d7ae9047fp-1, 0x1.7f98de8604634p-2}, {0x1.d74c6999c207dp-1, 0x1.901bd1bd460fp-2},
    {0x1.d3bc3b08eee6fp-1, 0x1.a07f91a03d281p-2}, {0x1.d007931de29ecp-1, 0x1.b0c2d6ff95bc6p-2},
    {0x1.cc2ebbd2898a4p-1, 0x1.c0e45d3459aa2p-2}, {0x1.c83201f32bddep-1, 0x1.d0e2e239419f4p-2},
    {0x1.c411b518708bcp-1, 0x1.e0bd26c3d1909p-2}, {0x1.bfce27a1284a1p-1, 0x1.f071ee5d3eb2dp-2},
    {0x1.bb67aeabe139ap-1, 0x1.ffffff7b1d053p-2}, {0x1.b6dea21043aa9p-1, 0x1.07b311cbe93ffp-1},
    {0x1.b2335c5838865p-1, 0x1.0f5193a566ff1p-1}, {0x1.ad663ab8d9e46p-1, 0x1.16daed3040018p-1},
    {0x1.a8779d0b2e5a5p-1, 0x1.1e4e87f909bb4p-1}, {0x1.a367e5c4af954p-1, 0x1.25abcf3e72427p-1},
    {0x1.9e3779ef9cd34p-1, 0x1.2cf22ffcd9e4dp-1}, {0x1.98e6c12319d68p-1, 0x1.342118f9c9fbdp-1},
    {0x1.9376257b1aee2p-1, 0x1.3b37facf481aep-1}, {0x1.8de613901eb6fp-1, 0x1.423647f704b46p-1},
    {0x1.8836fa6eb638cp-1, 0x1.491b74d564589p-1}, {0x1.82694b8edc0a3p-1, 0x1.4fe6f7c462aefp-1},
    {0x1.7c7d7acb1b264p-1, 0x1.5698491e4e54p-1}, {0x1.7673fe5786266p-1, 0x1.5d2ee3485cc1fp-1},
    {0x1.704d4eb87f935p-1, 0x1.63aa42bd15743p-1}, {0x1.6a09e6b95405cp-1, 0x1.6a09e6169373cp-1},
    {0x1.63aa4362a6d37p-1, 0x1.704d4e189c7f5p-1}, {0x1.5d2ee3f0b205p-1, 0x1.7673fdba8d087p-1},
    {0x1.569849c95a5a9p-1, 0x1.7c7d7a31183bep-1}, {0x1.4fe6f87218227p-1, 0x1.82694af7db55ep-1},
    {0x1.491b7585b5ad4p-1, 0x1.8836f9dac381p-1}, {0x1.423648a9e42a7p-1, 0x1.8de612ff45854p-1},
    {0x1.3b37fb84a7bf7p-1, 0x1.937624ed668e1p-1}, {0x1.342119b19baa4p-1, 0x1.98e6c0989554ep-1},
    {0x1.2cf230b70f477p-1, 0x1.9e37796852fd4p-1}, {0x1.25abcffafcd4p-1, 0x1.a367e540aaf7bp-1},
    {0x1.1e4e88b7dac7fp-1, 0x1.a8779c8a7940bp-1}, {0x1.16daedf148a82p-1, 0x1.ad663a3b7e57fp-1},
    {0x1.0f51946898321p-1, 0x1.b2335bde404dap-1}, {0x1.07b3129133c6cp-1, 0x1.b6dea199b8488p-1},
    {0x1.00000084e2facp-1, 0x1.bb67ae38cbecap-1}, {0x1.f071efefdc6f1p-2, 0x1.bfce2731920bap-1},
    {0x1.e0bd285a44b36p-2, 0x1.c411b4ac620f7p-1}, {0x1.d0e2e3d36a771p-2, 0x1.c832018aad90dp-1},
    {0x1.c0e45ed2183aep-2, 0x1.cc2ebb6da3925p-1}, {0x1.b0c2d8a0c9c28p-2, 0x1.d00792bc9cda4p-1},
    {0x1.a07f9344c61acp-2, 0x1.d3bc3aab50ebcp-1}, {0x1.901bd36503238p-2, 0x1.d74c693fd322cp-1},
    {0x1.7f98e030d48e2p-2, 0x1.dab7d758577c6p-1}, {0x1.6ef803466850ap-2, 0x1.ddfe40b0be96dp-1},
    {0x1.5e3a889912829p-2, 0x1.e11f63e7e87bep-1}, {0x1.4d61be576aac7p-2, 0x1.e41b0284cdcap-1},
    {0x1.3c6ef4d13c8ap-2, 0x1.e6f0e0fb5ed8p-1}, {0x1.2b637e5d4e479p-2, 0x1.e9a0c6b128707p-1},
    {0x1.1a40af3efe485p-2, 0x1.ec2a7e01bdc9p-1}, {0x1.0907dd8bba832p-2, 0x1.ee8dd442e75dbp-1},
    {0x1.ef74c220a70ddp-3, 0x1.f0ca99c8965bep-1}, {0x1.ccb3266c5a74fp-3, 0x1.f2e0a1e89c4ebp-1},
    {0x1.a9cd9dd09ee54p-3, 0x1.f4cfc2fe26c26p-1}, {0x1.86c6e0f0b0e75p-3, 0x1.f697d66cfe997p-1},
    {0x1.63a1ab06a6fc9p-3, 0x1.f838b8a48ad1ep-1}, {0x1.4060b9aceb02fp-3, 0x1.f9b24922967fbp-1},
    {0x1.1d06cca78430fp-3, 0x1.fb046a75d9c42p-1}, {0x1.f32d4b5a6bb5ep-4, 0x1.fc2f0240458fap-1},
    {0x1.ac261060eec26p-4, 0x1.fd31f93912009p-1}, {0x1.64fd725092f3ep-4, 0x1.fe0d3b2e8f35fp-1},
    {0x1.1db8fdb1da643p-4, 0x1.fec0b707b870fp-1}, {0x1.acbc827203d78p-5, 0x1.ff4c5ec589673p-1},
    {0x1.1de59aae1f927p-5, 0x1.ffb0278415aa3p-1}, {0x1.1df0cf2afecf9p-6, 0x1.ffec097b620e2p-1},
    {0x1.cc553391a6262p-26, 0x1.ffffffffffffdp-1}, {0x1.ffec097f6665bp-1, 0x1.1df0b266cac33p-6},
    {0x1.ffb0278c1e08ep-1, 0x1.1de58c4db4421p-5}, {0x1.ff4c5ed1952cbp-1, 0x1.acbc7414663ecp-5},
    {0x1.fec0b717c6accp-1, 0x1.1db8f68501d89p-4}, {0x1.fe0d3b429ea78p-1, 0x1.64fd6b263fe4cp-4},
    {0x1.fd31f95121178p-1, 0x1.ac260939b03b3p-4}, {0x1.fc2f025c526b9p-1, 0x1.f32d4436d081bp-4},
    {0x1.fb046a95e2353p-1, 0x1.1d06c917cf82fp-3}, {0x1.f9b2494698066p-1, 0x1.4060b61f96595p-3},
    {0x1.f838b8cc829f6p-1, 0x1.63a1a77bf9403p-3}, {0x1.f697d698e98ffp-1, 0x1.86c6dd68f0cc3p-3},
    {0x1.f4cfc32e01752p-1, 0x1.a9cd9a4c12e4ep-3}, {0x1.f2e0a21c63025p-1, 0x1.ccb322eb48c94p-3},
    {0x1.f0ca9a004506dp-1, 0x1.ef74bea355a9fp-3}, {0x1.ee8dd47e79a86p-1, 0x1.0907dbcf14ca4p-2},
    {0x1.ec2a7e412f0e3p-1, 0x1.1a40ad847e346p-2}, {0x1.e9a0c6f473bdbp-1, 0x1.2b637ca5165a7p-2},
    {0x1.e6f0e1427eedfp-1, 0x1.3c6ef31b6f178p-2}, {0x1.e41b02cfbd1cbp-1, 0x1.4d61bca429d8dp-2},
    {0x1.e11f6436a1335p-1, 0x1.5e3a86e8803e8p-2}, {0x1.ddfe41033a8fbp-1, 0x1.6ef80198a6578p-2},
    {0x1.dab7d7ae9047ep-1, 0x1.7f98de8604636p-2}, {0x1.d74c6999c207dp-1, 0x1.901bd1bd460eep-2},
    {0x1.d3bc3b08eee6fp-1, 0x1.a07f91a03d28p-2}, {0x1.d007931de29edp-1, 0x1.b0c2d6ff95bc1p-2},
    {0x1.cc2ebbd2898a3p-1, 0x1.c0e45d3459aa3p-2}, {0x1.c83201f32bddep-1, 0x1.d0e2e239419f4p-2},
    {0x1.c411b518708bcp-1, 0x1.e0bd26c3d1906p-2}, {0x1.bfce27a1284ap-1, 0x1.f071ee5d3eb3p-2},
    {0x1.bb67aeabe139bp-1, 0x1.ffffff7b1d04fp-2}, {0x1.b6dea21043aa9p-1, 0x1.07b311cbe93ffp-1},
    {0x1.b2335c5838865p-1, 0x1.0f5193a566ff1p-1}, {0x1.ad663ab8d9e47p-1, 0x1.16daed3040017p-1},
    {0x1.a8779d0b2e5a4p-1, 0x1.1e4e87f909bb6p-1}, {0x1.a367e5c4af955p-1, 0x1.25abcf3e72425p-1},
    {0x1.9e3779ef9cd33p-1, 0x1.2cf22ffcd9e4dp-1}, {0x1.98e6c12319d68p-1, 0x1.342118f9c9fbdp-1},
    {0x1.9376257b1aee3p-1, 0x1.3b37facf481adp-1}, {0x1.8de613901eb6dp-1, 0x1.423647f704b48p-1},
    {0x1.8836fa6eb638ep-1, 0x1.491b74d564587p-1}, {0x1.82694b8edc0a2p-1, 0x1.4fe6f7c462af1p-1},
    {0x1.7c7d7acb1b264p-1, 0x1.5698491e4e54p-1}, {0x1.7673fe5786267p-1, 0x1.5d2ee3485cc1ep-1},
    {0x1.704d4eb87f935p-1, 0x1.63aa42bd15743p-1}, {0x1.6a09e6b95405ep-1, 0x1.6a09e6169373ap-1},
    {0x1.63aa4362a6d36p-1, 0x1.704d4e189c7f7p-1}, {0x1.5d2ee3f0b205p-1, 0x1.7673fdba8d088p-1},
    {0x1.569849c95a5a9p-1, 0x1.7c7d7a31183bep-1}, {0x1.4fe6f87218229p-1, 0x1.82694af7db55dp-1},
    {0x1.491b7585b5ad5p-1, 0x1.8836f9dac380fp-1}, {0x1.423648a9e42a6p-1, 0x1.8de612ff45854p-1},
    {0x1.3b37fb84a7bf6p-1, 0x1.937624ed668e1p-1}, {0x1.342119b19baa4p-1, 0x1.98e6c0989554ep-1},
    {0x1.2cf230b70f477p-1, 0x1.9e37796852fd4p-1}, {0x1.25abcffafcd3ep-1, 0x1.a367e540aaf7cp-1},
    {0x1.1e4e88b7dac82p-1, 0x1.a8779c8a79409p-1}, {0x1.16daedf148a81p-1, 0x1.ad663a3b7e58p-1},
    {0x1.0f51946898321p-1, 0x1.b2335bde404dap-1}, {0x1.07b3129133c6cp-1, 0x1.b6dea199b8488p-1},
    {0x1.00000084e2fa9p-1, 0x1.bb67ae38cbeccp-1}, {0x1.f071efefdc6f4p-2, 0x1.bfce2731920b9p-1},
    {0x1.e0bd285a44b36p-2, 0x1.c411b4ac620f7p-1}, {0x1.d0e2e3d36a771p-2, 0x1.c832018aad90dp-1},
    {0x1.c0e45ed2183aep-2, 0x1.cc2ebb6da3925p-1}, {0x1.b0c2d8a0c9c21p-2, 0x1.d00792bc9cda6p-1},
    {0x1.a07f9344c61bp-2, 0x1.d3bc3aab50ebbp-1}, {0x1.901bd36503234p-2, 0x1.d74c693fd322dp-1},
    {0x1.7f98e030d48e2p-2, 0x1.dab7d758577c6p-1}, {0x1.6ef803466850ap-2, 0x1.ddfe40b0be96dp-1},
    {0x1.5e3a889912829p-2, 0x1.e11f63e7e87bep-1}, {0x1.4d61be576aacbp-2, 0x1.e41b0284cdcap-1},
    {0x1.3c6ef4d13c89dp-2, 0x1.e6f0e0fb5ed81p-1}, {0x1.2b637e5d4e476p-2, 0x1.e9a0c6b128707p-1},
    {0x1.1a40af3efe48cp-2, 0x1.ec2a7e01bdc8fp-1}, {0x1.0907dd8bba82fp-2, 0x1.ee8dd442e75dcp-1},
    {0x1.ef74c220a70e4p-3, 0x1.f0ca99c8965bep-1}, {0x1.ccb3266c5a757p-3, 0x1.f2e0a1e89c4eap-1},
    {0x1.a9cd9dd09ee4cp-3, 0x1.f4cfc2fe26c27p-1}, {0x1.86c6e0f0b0e75p-3, 0x1.f697d66cfe997p-1},
    {0x1.63a1ab06a6fc9p-3, 0x1.f838b8a48ad1ep-1}, {0x1.4060b9aceb037p-3, 0x1.f9b24922967fbp-1},
    {0x1.1d06cca7842ffp-3, 0x1.fb046a75d9c42p-1}, {0x1.f32d4b5a6bb4fp-4, 0x1.fc2f0240458fap-1},
    {0x1.ac261060eec45p-4, 0x1.fd31f93912009p-1}, {0x1.64fd725092f1ep-4, 0x1.fe0d3b2e8f35fp-1},
    {0x1.1db8fdb1da653p-4, 0x1.fec0b707b870fp-1}, {0x1.acbc827203d78p-5, 0x1.ff4c5ec589673p-1},
    {0x1.1de59aae1f947p-5, 0x1.ffb0278415aa3p-1}, {0x1.1df0cf2afecb9p-6, 0x1.ffec097b620e2p-1},
    {0x1.cc553391a6262p-26, 0x1.ffffffffffffdp-1}, {0x1.ffec097f6665bp-1, 0x1.1df0b266cabf3p-6},
    {0x1.ffb0278c1e08ep-1, 0x1.1de58c4db4461p-5}, {0x1.ff4c5ed1952cbp-1, 0x1.acbc74146640cp-5},
    {0x1.fec0b717c6accp-1, 0x1.1db8f68501d79p-4}, {0x1.fe0d3b429ea79p-1, 0x1.64fd6b263fe2cp-4},
    {0x1.fd31f95121178p-1, 0x1.ac260939b03a3p-4}, {0x1.fc2f025c526bap-1, 0x1.f32d4436d080bp-4},
    {0x1.fb046a95e2353p-1, 0x1.1d06c917cf81fp-3}, {0x1.f9b2494698066p-1, 0x1.4060b61f9659dp-3},
    {0x1.f838b8cc829f6p-1, 0x1.63a1a77bf9403p-3}, {0x1.f697d698e98ffp-1, 0x1.86c6dd68f0cc3p-3},
    {0x1.f4cfc32e01751p-1, 0x1.a9cd9a4c12e55p-3}, {0x1.f2e0a21c63025p-1, 0x1.ccb322eb48c94p-3},
    {0x1.f0ca9a004506dp-1, 0x1.ef74bea355aa6p-3}, {0x1.ee8dd47e79a87p-1, 0x1.0907dbcf14c9cp-2},
    {0x1.ec2a7e412f0e2p-1, 0x1.1a40ad847e34dp-2}, {0x1.e9a0c6f473bdbp-1, 0x1.2b637ca5165a3p-2},
    {0x1.e6f0e1427eedfp-1, 0x1.3c6ef31b6f178p-2}, {0x1.e41b02cfbd1cap-1, 0x1.4d61bca429d9p-2},
    {0x1.e11f6436a1335p-1, 0x1.5e3a86e8803e8p-2}, {0x1.ddfe41033a8fbp-1, 0x1.6ef80198a6578p-2},
    {0x1.dab7d7ae9047fp-1, 0x1.7f98de8604633p-2}, {0x1.d74c6999c207cp-1, 0x1.901bd1bd460f5p-2},
    {0x1.d3bc3b08eee6ep-1, 0x1.a07f91a03d284p-2}, {0x1.d007931de29edp-1, 0x1.b0c2d6ff95bc1p-2},
    {0x1.cc2ebbd2898a2p-1, 0x1.c0e45d3459aaap-2}, {0x1.c83201f32bddep-1, 0x1.d0e2e239419f4p-2},
    {0x1.c411b518708bcp-1, 0x1.e0bd26c3d1906p-2}, {0x1.bfce27a1284a2p-1, 0x1.f071ee5d3eb29p-2},
    {0x1.bb67aeabe1399p-1, 0x1.ffffff7b1d056p-2}, {0x1.b6dea21043aa9p-1, 0x1.07b311cbe93ffp-1},
    {0x1.b2335c5838865p-1, 0x1.0f5193a566ff1p-1}, {0x1.ad663ab8d9e45p-1, 0x1.16daed304001ap-1},
    {0x1.a8779d0b2e5a4p-1, 0x1.1e4e87f909bb6p-1}, {0x1.a367e5c4af955p-1, 0x1.25abcf3e72425p-1},
    {0x1.9e3779ef9cd36p-1, 0x1.2cf22ffcd9e4ap-1}, {0x1.98e6c12319d68p-1, 0x1.342118f9c9fbdp-1},
    {0x1.9376257b1aee3p-1, 0x1.3b37facf481adp-1}, {0x1.8de613901eb7p-1, 0x1.423647f704b45p-1},
    {0x1.8836fa6eb638bp-1, 0x1.491b74d56458ap-1}, {0x1.82694b8edc0a2p-1, 0x1.4fe6f7c462af1p-1},
    {0x1.7c7d7acb1b264p-1, 0x1.5698491e4e54p-1}, {0x1.7673fe578626ap-1, 0x1.5d2ee3485cc1bp-1},
    {0x1.704d4eb87f933p-1, 0x1.63aa42bd15746p-1}, {0x1.6a09e6b95405ep-1, 0x1.6a09e6169373ap-1},
    {0x1.63aa4362a6d39p-1, 0x1.704d4e189c7f4p-1}, {0x1.5d2ee3f0b205p-1, 0x1.7673fdba8d088p-1},
    {0x1.569849c95a5a9p-1, 0x1.7c7d7a31183bep-1}, {0x1.4fe6f87218229p-1, 0x1.82694af7db55dp-1},
    {0x1.491b7585b5ad8p-1, 0x1.8836f9dac380cp-1}, {0x1.423648a9e42a6p-1, 0x1.8de612ff45854p-1},
    {0x1.3b37fb84a7bf6p-1, 0x1.937624ed668e1p-1}, {0x1.342119b19baa4p-1, 0x1.98e6c0989554ep-1},
    {0x1.2cf230b70f477p-1, 0x1.9e37796852fd4p-1}, {0x1.25abcffafcd42p-1, 0x1.a367e540aaf7ap-1},
    {0x1.1e4e88b7dac82p-1, 0x1.a8779c8a79409p-1}, {0x1.16daedf148a7ep-1, 0x1.ad663a3b7e582p-1},
    {0x1.0f5194689831ep-1, 0x1.b2335bde404dcp-1}, {0x1.07b3129133c68p-1, 0x1.b6dea199b848bp-1},
    {0x1.00000084e2fafp-1, 0x1.bb67ae38cbec8p-1}, {0x1.f071efefdc6edp-2, 0x1.bfce2731920bbp-1},
    {0x1.e0bd285a44b36p-2, 0x1.c411b4ac620f7p-1}, {0x1.d0e2e3d36a771p-2, 0x1.c832018aad90dp-1},
    {0x1.c0e45ed2183aep-2, 0x1.cc2ebb6da3925p-1}, {0x1.b0c2d8a0c9c28p-2, 0x1.d00792bc9cda4p-1},
    {0x1.a07f9344c61bp-2, 0x1.d3bc3aab50ebbp-1}, {0x1.901bd3650323bp-2, 0x1.d74c693fd322bp-1},
    {0x1.7f98e030d48dbp-2, 0x1.dab7d758577c8p-1}, {0x1.6ef8034668502p-2, 0x1.ddfe40b0be96fp-1},
    {0x1.5e3a889912831p-2, 0x1.e11f63e7e87bcp-1}, {0x1.4d61be576aac3p-2, 0x1.e41b0284cdca1p-1},
    {0x1.3c6ef4d13c89dp-2, 0x1.e6f0e0fb5ed81p-1}, {0x1.2b637e5d4e476p-2, 0x1.e9a0c6b128707p-1},
    {0x1.1a40af3efe485p-2, 0x1.ec2a7e01bdc9p-1}, {0x1.0907dd8bba836p-2, 0x1.ee8dd442e75dbp-1},
    {0x1.ef74c220a70e4p-3, 0x1.f0ca99c8965bep-1}, {0x1.ccb3266c5a757p-3, 0x1.f2e0a1e89c4eap-1},
    {0x1.a9cd9dd09ee3dp-3, 0x1.f4cfc2fe26c27p-1}, {0x1.86c6e0f0b0e65p-3, 0x1.f697d66cfe998p-1},
    {0x1.63a1ab06a6fd8p-3, 0x1.f838b8a48ad1dp-1}, {0x1.4060b9aceb047p-3, 0x1.f9b24922967fap-1},
    {0x1.1d06cca7842ffp-3, 0x1.fb046a75d9c42p-1}, {0x1.f32d4b5a6bb4fp-4, 0x1.fc2f0240458fap-1},
    {0x1.ac261060eec26p-4, 0x1.fd31f93912009p-1}, {0x1.64fd725092f3ep-4, 0x1.fe0d3b2e8f35fp-1},
    {0x1.1db8fdb1da653p-4, 0x1.fec0b707b870fp-1}, {0x1.acbc827203d78p-5, 0x1.ff4c5ec589673p-1},
    {0x1.1de59aae1f947p-5, 0x1.ffb0278415aa3p-1}, {0x1.1df0cf2afec39p-6, 0x1.ffec097b620e2p-1},
    {0x1.cc553411a6262p-26, 0x1.ffffffffffffdp-1}, {0x1.ffec097f6665bp-1, 0x1.1df0b266cabf3p-6},
    {0x1.ffb0278c1e08ep-1, 0x1.1de58c4db44a1p-5}, {0x1.ff4c5ed1952cbp-1, 0x1.acbc74146644cp-5},
    {0x1.fec0b717c6acbp-1, 0x1.1db8f68501db9p-4}, {0x1.fe0d3b429ea78p-1, 0x1.64fd6b263fe6cp-4},
    {0x1.fd31f95121178p-1, 0x1.ac260939b03c3p-4}, {0x1.fc2f025c526b9p-1, 0x1.f32d4436d082ap-4},
    {0x1.fb046a95e2353p-1, 0x1.1d06c917cf82fp-3}, {0x1.f9b2494698065p-1, 0x1.4060b61f965bdp-3},
    {0x1.f838b8cc829f6p-1, 0x1.63a1a77bf9403p-3}, {0x1.f697d698e98ffp-1, 0x1.86c6dd68f0cc3p-3},
    {0x1.f4cfc32e0175p-1, 0x1.a9cd9a4c12e65p-3}, {0x1.f2e0a21c63024p-1, 0x1.ccb322eb48ca4p-3},
    {0x1.f0ca9a004506cp-1, 0x1.ef74bea355ab6p-3}, {0x1.ee8dd47e79a85p-1, 0x1.0907dbcf14cabp-2},
    {0x1.ec2a7e412f0e2p-1, 0x1.1a40ad847e34dp-2}, {0x1.e9a0c6f473bdap-1, 0x1.2b637ca5165abp-2},
    {0x1.e6f0e1427eedep-1, 0x1.3c6ef31b6f18p-2}, {0x1.e41b02cfbd1c7p-1, 0x1.4d61bca429dap-2},
    {0x1.e11f6436a1333p-1, 0x1.5e3a86e8803f7p-2}, {0x1.ddfe41033a8fbp-1, 0x1.6ef80198a6578p-2},
    {0x1.dab7d7ae9047fp-1, 0x1.7f98de8604633p-2}, {0x1.d74c6999c207ap-1, 0x1.901bd1bd460fdp-2},
    {0x1.d3bc3b08eee6dp-1, 0x1.a07f91a03d28bp-2}, {0x1.d007931de29eap-1, 0x1.b0c2d6ff95bcfp-2},
    {0x1.cc2ebbd2898a2p-1, 0x1.c0e45d3459aaap-2}, {0x1.c83201f32bdddp-1, 0x1.d0e2e239419fbp-2},
    {0x1.c411b518708bbp-1, 0x1.e0bd26c3d190dp-2}, {0x1.bfce27a1284ap-1, 0x1.f071ee5d3eb3p-2},
    {0x1.bb67aeabe1395p-1, 0x1.ffffff7b1d064p-2}, {0x1.b6dea21043aa9p-1, 0x1.07b311cbe93ffp-1},
    {0x1.b2335c5838865p-1, 0x1.0f5193a566ff1p-1}, {0x1.ad663ab8d9e42p-1, 0x1.16daed304001ep-1},
    {0x1.a8779d0b2e5a2p-1, 0x1.1e4e87f909bb9p-1}, {0x1.a367e5c4af95p-1, 0x1.25abcf3e7242bp-1},
    {0x1.9e3779ef9cd31p-1, 0x1.2cf22ffcd9e51p-1}, {0x1.98e6c12319d66p-1, 0x1.342118f9c9fc1p-1},
    {0x1.9376257b1aee1p-1, 0x1.3b37facf481bp-1}, {0x1.8de613901eb6dp-1, 0x1.423647f704b48p-1},
    {0x1.8836fa6eb6386p-1, 0x1.491b74d564591p-1}, {0x1.82694b8edc0a2p-1, 0x1.4fe6f7c462af1p-1},
    {0x1.7c7d7acb1b264p-1, 0x1.5698491e4e54p-1}, {0x1.7673fe5786267p-1, 0x1.5d2ee3485cc1ep-1},
    {0x1.704d4eb87f93p-1, 0x1.63aa42bd15748p-1}, {0x1.6a09e6b954058p-1, 0x1.6a09e6169374p-1},
    {0x1.63aa4362a6d33p-1, 0x1.704d4e189c7f9p-1}, {0x1.5d2ee3f0b204dp-1, 0x1.7673fdba8d08ap-1},
    {0x1.569849c95a5a6p-1, 0x1.7c7d7a31183cp-1}, {0x1.4fe6f87218226p-1, 0x1.82694af7db56p-1},
    {0x1.491b7585b5ad2p-1, 0x1.8836f9dac3812p-1}, {0x1.423648a9e42a6p-1, 0x1.8de612ff45854p-1},
    {0x1.3b37fb84a7bf6p-1, 0x1.937624ed668e1p-1}, {0x1.342119b19baa4p-1, 0x1.98e6c0989554ep-1},
    {0x1.2cf230b70f471p-1, 0x1.9e37796852fd8p-1}, {0x1.25abcffafcd3bp-1, 0x1.a367e540aaf7ep-1},
    {0x1.1e4e88b7dac7bp-1, 0x1.a8779c8a7940ep-1}, {0x1.16daedf148a7ep-1, 0x1.ad663a3b7e582p-1},
    {0x1.0f51946898324p-1, 0x1.b2335bde404d8p-1}, {0x1.07b3129133c62p-1, 0x1.b6dea199b848fp-1},
    {0x1.00000084e2fa2p-1, 0x1.bb67ae38cbedp-1}, {0x1.f071efefdc6edp-2, 0x1.bfce2731920bbp-1},
    {0x1.e0bd285a44b36p-2, 0x1.c411b4ac620f7p-1}, {0x1.d0e2e3d36a771p-2, 0x1.c832018aad90dp-1},
    {0x1.c0e45ed2183aep-2, 0x1.cc2ebb6da3925p-1}, {0x1.b0c2d8a0c9c28p-2, 0x1.d00792bc9cda4p-1},
    {0x1.a07f9344c61a1p-2, 0x1.d3bc3aab50ebfp-1}, {0x1.901bd3650322dp-2, 0x1.d74c693fd322fp-1},
    {0x1.7f98e030d48dbp-2, 0x1.dab7d758577c8p-1}, {0x1.6ef8034668502p-2, 0x1.ddfe40b0be96fp-1},
    {0x1.5e3a889912822p-2, 0x1.e11f63e7e87bfp-1}, {0x1.4d61be576aac3p-2, 0x1.e41b0284cdca1p-1},
    {0x1.3c6ef4d13c89dp-2, 0x1.e6f0e0fb5ed81p-1}, {0x1.2b637e5d4e466p-2, 0x1.e9a0c6b12870ap-1},
    {0x1.1a40af3efe475p-2, 0x1.ec2a7e01bdc92p-1}, {0x1.0907dd8bba827p-2, 0x1.ee8dd442e75ddp-1},
    {0x1.ef74c220a70c5p-3, 0x1.f0ca99c8965cp-1}, {0x1.ccb3266c5a738p-3, 0x1.f2e0a1e89c4ecp-1},
    {0x1.a9cd9dd09ee5cp-3, 0x1.f4cfc2fe26c26p-1}, {0x1.86c6e0f0b0e85p-3, 0x1.f697d66cfe996p-1},
    {0x1.63a1ab06a6f99p-3, 0x1.f838b8a48ad2p-1}, {0x1.4060b9aceb008p-3, 0x1.f9b24922967fdp-1},
    {0x1.1d06cca7842ffp-3, 0x1.fb046a75d9c42p-1}, {0x1.f32d4b5a6bb4fp-4, 0x1.fc2f0240458fap-1},
    {0x1.ac261060eec26p-4, 0x1.fd31f93912009p-1}, {0x1.64fd725092f3ep-4, 0x1.fe0d3b2e8f35fp-1},
    {0x1.1db8fdb1da653p-4, 0x1.fec0b707b870fp-1}, {0x1.acbc827203cf8p-5, 0x1.ff4c5ec589674p-1},
    {0x1.1de59aae1f8c7p-5, 0x1.ffb0278415aa3p-1}, {0x1.1df0cf2afec39p-6, 0x1.ffec097b620e2p-1},
    {0x1.cc553311a6262p-26, 0x1.ffffffffffffdp-1},
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
    const Turn& turn = kTurns[w.angle];
    const float hw = w.width / 2;
    const float hh = w.height / 2;
    const double along = turn.cosine * hw - turn.sine * hh;
    const double across = turn.cosine * hh + turn.sine * hw;
    px = static_cast<float>(cx + range->xSign * (range->swapped ? across : along));
    py = static_cast<float>(cy + range->ySign * (range->swapped ? along : across));
  }
  *x = px + horizontalOffset;
  *y = py + verticalOffset;
}
