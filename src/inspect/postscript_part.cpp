#include "inspect/postscript_part.h"

#include <cstdlib>
#include <cstring>
#include <iterator>

#include "modules/features/features.h"
#include "modules/watermark/watermark.h"

namespace {

struct Line {
  size_t offset;
  std::string_view text;  // without its end
};

// Lines as an editor shows them: LF, CR LF or a lone CR ends one. The filter
// itself splits CR LF into two lines, which finds the same whole lines.
std::vector<Line> SplitLines(std::string_view bytes) {
  std::vector<Line> lines;
  size_t start = 0;
  for (size_t at = 0; at < bytes.size(); ++at) {
    const char c = bytes[at];
    if (c != '\n' && c != '\r') continue;
    lines.push_back({start, bytes.substr(start, at - start)});
    if (c == '\r' && at + 1 < bytes.size() && bytes[at + 1] == '\n') ++at;
    start = at + 1;
  }
  if (start < bytes.size()) lines.push_back({start, bytes.substr(start)});
  return lines;
}

bool StartsWith(std::string_view text, std::string_view prefix) {
  return text.size() >= prefix.size() && text.compare(0, prefix.size(), prefix) == 0;
}
bool EndsWith(std::string_view text, std::string_view suffix) {
  return text.size() >= suffix.size() &&
         text.compare(text.size() - suffix.size(), suffix.size(), suffix) == 0;
}

// The structural lines the filter inserts next to.
constexpr std::string_view kBeginProlog = "%%BeginProlog";
constexpr std::string_view kEndProlog = "%%EndProlog";
constexpr std::string_view kEndSetup = "%%EndSetup";
constexpr std::string_view kEndPageSetup = "%%EndPageSetup";
constexpr std::string_view kSetPageDeviceOff = "userdict/setpagedevice{pop}bind put";

// ---- Watermark ----------------------------------------------------------------
// Its lines come from the module that writes them.

// What each line of a text block carries, by the operator that ends it.
const char* const kWatermarkDetails[] = {"colour", "font", "position", "angle", "text"};
static_assert(std::size(kWatermarkDetails) == std::size(kWatermarkTextOperators),
              "one detail per text line");

// The page-device hook of jobs that do not end their pages in "ep"/"endp":
// the block's last line lies within this many lines of its first.
constexpr size_t kPageHookMaxLines = 16;

// ---- Separator pages and auto-fit -----------------------------------------------

constexpr std::string_view kBlockOpen = kNonPPDBlockOpen;
constexpr std::string_view kBlockBegin = kNonPPDBlockBegin;
constexpr std::string_view kBlockEnd = kNonPPDBlockEnd;
constexpr std::string_view kBlockClose = kNonPPDBlockClose;

// The middle line of a bracketed block: text before and after its value.
struct BracketedFragment {
  const char* kind;
  std::string_view before;
  std::string_view after;
  const char* detail;
};
const BracketedFragment kBracketed[] = {
    {"separator-pages", kSeparatorPagesFragment.before, kSeparatorPagesFragment.after, "pages"},
    {"booklet-margin-shift", kBookletMarginShiftFragment.before,
     kBookletMarginShiftFragment.after, "shift (mm)"},
    {"auto-fit", kAutoFitFragment.before, kAutoFitFragment.after, "auto-fit"},
};

// Where the filter puts each fragment: after or before a structural line.
struct AnchorRule {
  const char* kind;
  bool after;
  std::string_view line;
};
const AnchorRule kAnchors[] = {
    {"watermark-prolog", true, kBeginProlog},
    {"watermark-page-setup", true, kEndPageSetup},
    {"watermark-text", false, "ep"},
    {"watermark-text", false, "endp"},
    {"watermark-page-hook-off", false, "ep"},
    {"watermark-page-hook-off", false, "endp"},
    {"separator-pages", false, kEndProlog},
    {"separator-pages", false, kSetPageDeviceOff},
    {"booklet-margin-shift", false, kEndSetup},
    {"booklet-margin-shift", false, kSetPageDeviceOff},
    {"auto-fit", false, kEndSetup},
    {"auto-fit", false, kSetPageDeviceOff},
};

struct Scanner {
  const std::vector<Line>& lines;
  PostScriptReport* report;

  std::string_view At(size_t i) const {
    return i < lines.size() ? lines[i].text : std::string_view();
  }

  void Add(Fragment fragment) { report->fragments.push_back(std::move(fragment)); }

  // Each recogniser returns the lines it took at `i`, or 0.
  size_t WatermarkProlog(size_t i) {
    const size_t count = std::size(kWatermarkPrologLines);
    for (size_t k = 0; k < count; ++k) {
      if (At(i + k) != kWatermarkPrologLines[k]) return 0;
    }
    Fragment f;
    f.kind = "watermark-prolog";
    f.line = i + 1;
    f.lines = count;
    Add(std::move(f));
    return count;
  }

  size_t WatermarkPageSetup(size_t i) {
    if (At(i) != kWatermarkPageSetupLine) return 0;
    Fragment f;
    f.kind = "watermark-page-setup";
    f.line = i + 1;
    f.lines = 1;
    Add(std::move(f));
    return 1;
  }

  size_t WatermarkText(size_t i) {
    bool opening = false;
    for (std::string_view candidate : kWatermarkOpeningLines) {
      opening = opening || At(i) == candidate;
    }
    if (!opening) return 0;
    Fragment f;
    f.kind = "watermark-text";
    f.line = i + 1;
    size_t k = 1;
    for (size_t n = 0; n < std::size(kWatermarkTextOperators); ++n) {
      const std::string suffix = std::string(" ") + kWatermarkTextOperators[n];
      const std::string_view line = At(i + k);
      if (!EndsWith(line, suffix)) {
        // A line longer than its 99-byte buffer lost its end and ran into
        // the next one; take what there is up to the closing grestore.
        f.complete = false;
        break;
      }
      f.details.emplace_back(kWatermarkDetails[n],
                             std::string(line.substr(0, line.size() - suffix.size())));
      ++k;
    }
    if (f.complete && At(i + k) == kWatermarkCloseLine) {
      ++k;
    } else {
      f.complete = false;
      // Stop at the grestore that closes the block, within its few lines.
      size_t end = k;
      while (end < 8 && i + end < lines.size() && !EndsWith(At(i + end), kWatermarkCloseLine)) {
        ++end;
      }
      k = i + end < lines.size() && end < 8 ? end + 1 : k;
    }
    f.lines = k;
    const std::string_view next = At(i + k);
    if (next == "ep" || next == "endp") f.page = report->pages + 1;
    Add(std::move(f));
    return k;
  }

  // The hook drawn at every sheet of jobs that end their pages otherwise,
  // with its text, and the line that turns it off.
  size_t WatermarkPageHook(size_t i) {
    if (At(i) == kWatermarkPageHookOff) {
      Add(Fragment{"watermark-page-hook-off", i + 1, 1, 0, "", true, {}});
      return 1;
    }
    if (At(i) != kWatermarkPageHookFirst) return 0;
    Fragment f;
    f.kind = "watermark-page-hook";
    f.line = i + 1;
    size_t k = 1;
    for (; k < kPageHookMaxLines && i + k < lines.size(); ++k) {
      const std::string_view line = At(i + k);
      if (line == kWatermarkPageHookLast) break;
      constexpr std::string_view kShow = " show";
      if (EndsWith(line, kShow)) {
        f.details.emplace_back("text", std::string(line.substr(0, line.size() - kShow.size())));
      }
      if (StartsWith(line, "/only true def")) f.details.emplace_back("sheets", "first only");
    }
    f.complete = At(i + k) == kWatermarkPageHookLast;
    f.lines = f.complete ? k + 1 : 1;
    const size_t taken = f.lines;
    Add(std::move(f));
    return taken;
  }

  size_t Bracketed(size_t i) {
    if (At(i) != kBlockOpen || At(i + 1) != kBlockBegin) return 0;
    const std::string_view middle = At(i + 2);
    for (const BracketedFragment& shape : kBracketed) {
      if (!StartsWith(middle, shape.before)) continue;
      const std::string_view rest = middle.substr(shape.before.size());
      const size_t end = rest.find(shape.after);
      // A line longer than its 100-byte buffer lost its end and line feed,
      // so the block's next line runs on after it.
      const bool glued = EndsWith(middle, kBlockEnd);
      if (end == std::string_view::npos && (!glued || shape.before.empty())) continue;
      std::string_view value = rest.substr(0, end);
      if (end == std::string_view::npos) {
        value = rest.substr(0, rest.find(kBlockEnd));
        value = value.substr(0, value.find(shape.after.substr(0, 1)));
      }
      if (shape.before.empty() && value.find('/') != std::string_view::npos) continue;
      Fragment f;
      f.kind = shape.kind;
      f.line = i + 1;
      f.lines = glued ? 4 : 5;
      std::string shown(value);
      if (std::strcmp(shape.kind, "auto-fit") == 0) shown = shown == "true" ? "on" : "off";
      f.details.emplace_back(shape.detail, shown);
      f.complete = !glued && end != std::string_view::npos && At(i + 3) == kBlockEnd &&
                   At(i + 4) == kBlockClose;
      const size_t taken = f.lines;
      Add(std::move(f));
      return taken;
    }
    return 0;
  }
};

}  // namespace

const char* FragmentTitle(const std::string& kind) {
  if (kind == "watermark-prolog") return "watermark prolog";
  if (kind == "watermark-page-setup") return "watermark page setup";
  if (kind == "watermark-text") return "watermark text";
  if (kind == "watermark-page-hook") return "watermark page-device hook";
  if (kind == "watermark-page-hook-off") return "watermark page-device hook off";
  if (kind == "separator-pages") return "separator pages";
  if (kind == "booklet-margin-shift") return "booklet margin shift";
  if (kind == "auto-fit") return "auto-fit";
  return "fragment";
}

PostScriptReport InspectPostScript(std::string_view bytes, size_t offset) {
  PostScriptReport report;
  report.offset = offset;
  report.size = bytes.size();
  report.endOfJobByte = !bytes.empty() && bytes.back() == '\x04';
  const std::vector<Line> lines = SplitLines(bytes);
  report.lines = lines.size();
  if (!lines.empty()) report.firstLine = std::string(lines[0].text.substr(0, 80));
  Scanner scanner{lines, &report};
  for (size_t i = 0; i < lines.size();) {
    const std::string_view text = lines[i].text;
    if (text == "ep" || text == "endp") {
      ++report.pages;
      report.pageEnds.push_back({i + 1, std::string(text), report.pages});
      ++i;
      continue;
    }
    size_t taken = scanner.WatermarkProlog(i);
    if (taken == 0) taken = scanner.WatermarkPageSetup(i);
    if (taken == 0) taken = scanner.WatermarkText(i);
    if (taken == 0) taken = scanner.WatermarkPageHook(i);
    if (taken == 0) taken = scanner.Bracketed(i);
    i += taken == 0 ? 1 : taken;
  }
  // Anchors: the line before a fragment, and the first line after it that
  // is not another fragment (fragments written at one point follow each
  // other, as separator pages and auto-fit do).
  std::vector<Fragment>& fragments = report.fragments;
  std::string_view next;
  for (size_t i = fragments.size(); i-- > 0;) {
    Fragment& f = fragments[i];
    const size_t after = f.line - 1 + f.lines;
    const bool followed = i + 1 < fragments.size() && fragments[i + 1].line - 1 == after;
    if (!followed) next = scanner.At(after);
    const std::string_view previous = f.line >= 2 ? scanner.At(f.line - 2) : std::string_view();
    for (const AnchorRule& rule : kAnchors) {
      if (f.kind != rule.kind || (rule.after ? previous : next) != rule.line) continue;
      f.anchor = (rule.after ? "after " : "before ") + std::string(rule.line);
      break;
    }
  }
  return report;
}
