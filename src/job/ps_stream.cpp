#include "job/ps_stream.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "base/job_state.h"
#include "base/output_channel.h"
#include "base/ppd_queries.h"
#include "job/line_scanner.h"
#include "job/module_dispatch.h"

namespace {

constexpr char kEndOfJob[] = "\x04";

struct StructuralLine {
  const char* text;
  size_t length;
  PSLineKind kind;
};

#define ZPJL_LINE(text, kind) {text, sizeof text - 1, kind}
const StructuralLine kStructuralLines[] = {
    ZPJL_LINE("ep", PSLineKind::kEndPage),
    ZPJL_LINE("endp", PSLineKind::kEndPageAlt),
    ZPJL_LINE("showpage", PSLineKind::kShowPage),
    ZPJL_LINE("bp", PSLineKind::kBeginPage),
    ZPJL_LINE("%%EndSetup", PSLineKind::kEndSetup),
    ZPJL_LINE("userdict/setpagedevice{pop}bind put", PSLineKind::kSetPageDevice),
    ZPJL_LINE("%%EndPageSetup", PSLineKind::kEndPageSetup),
    ZPJL_LINE("%%BeginProlog", PSLineKind::kBeginProlog),
    ZPJL_LINE("%%EndProlog", PSLineKind::kEndProlog),
};
#undef ZPJL_LINE

// The longest structural line: anything longer is plain without a look.
constexpr size_t kLongestStructuralLine = 35;

void WriteLine(const char* line, size_t length, char terminator, FILE* out) {
  if (length > 0) KZfwrite(line, 1, length, out);
  KZfputc(static_cast<unsigned char>(terminator), out);
}

}  // namespace

PSLineKind ClassifyPSLine(const char* line, size_t length) {
  if (length > kLongestStructuralLine) return PSLineKind::kPlain;
  for (const StructuralLine& known : kStructuralLines) {
    if (length == known.length && std::memcmp(line, known.text, length) == 0) return known.kind;
  }
  return PSLineKind::kPlain;
}

LineCandidates StructuralLineCandidates() {
  LineCandidates candidates = LineCandidates::None();
  for (const StructuralLine& known : kStructuralLines) candidates.Add(known.text, known.length);
  return candidates;
}

bool HandlePSLine(PSLineState& state, const char* line, size_t length, char terminator,
                  char* argv[], FILE* out) {
  switch (ClassifyPSLine(line, length)) {
    case PSLineKind::kEndPage:
      ++state.page;
      OutputPSCommandFromFilter(kPointEndPage, state.page, out);
      if (CancelJob == 1) return false;
      WriteLine(line, length, terminator, out);
      OutputPageLogCommand(state.page, argv);
      break;
    case PSLineKind::kEndPageAlt:
      ++state.page;
      OutputPSCommandFromFilter(kPointEndPageAlt, state.page, out);
      if (CancelJob == 1) return false;
      WriteLine(line, length, terminator, out);
      break;
    case PSLineKind::kShowPage:
      if (CancelJob == 1) return false;
      WriteLine(line, length, terminator, out);
      break;
    case PSLineKind::kBeginPage:
      WriteLine(line, length, terminator, out);
      OutputPSCommandFromFilter(kPointBeginPage, state.page, out);
      break;
    case PSLineKind::kEndSetup:
      OutputPSCommandFromFilter(kPointEndSetup, state.page, out);
      WriteLine(line, length, terminator, out);
      break;
    case PSLineKind::kSetPageDevice:
      OutputPSCommandFromFilter(kPointSetPageDevice, state.page, out);
      WriteLine(line, length, terminator, out);
      break;
    case PSLineKind::kEndPageSetup:
      WriteLine(line, length, terminator, out);
      OutputPSCommandFromFilter(kPointEndPageSetup, state.page, out);
      break;
    case PSLineKind::kBeginProlog:
      WriteLine(line, length, terminator, out);
      OutputPSCommandFromFilter(kPointBeginProlog, state.page, out);
      break;
    case PSLineKind::kEndProlog:
      if (!state.prologSeen) OutputPSCommandFromFilter(kPointEndProlog, state.page, out);
      WriteLine(line, length, terminator, out);
      state.prologSeen = true;
      break;
    case PSLineKind::kPlain:
      WriteLine(line, length, terminator, out);
      break;
  }
  return true;
}

void OutputPageLogCommand(int32_t page, char* argv[]) {
  int32_t version = 0;
  if (Gestalt_ALT(kGestaltSystemVersion, &version) != 0 || version < 4208) return;
  fprintf(stderr, "PAGE:%d %s\n", page, argv[4] != nullptr ? argv[4] : "");
}

namespace {

// Sink of the pass-through: chunks and lines go to stdout.
class PassThroughSink : public LineSink {
 public:
  explicit PassThroughSink(char* argv[]) : argv_(argv) { candidates_ = StructuralLineCandidates(); }
  void Chunk(const char* bytes, size_t length) override { KZfwrite(bytes, 1, length, stdout); }
  bool Line(const char* line, size_t length, char terminator) override {
    return HandlePSLine(state_, line, length, terminator, argv_, stdout);
  }
  bool Plain(const char* line, size_t length) override {
    return ClassifyPSLine(line, length) == PSLineKind::kPlain;
  }
  void Span(const char* bytes, size_t length) override { KZfwrite(bytes, 1, length, stdout); }

 private:
  char** argv_;
  PSLineState state_;
};

}  // namespace

void OutputPSStream(int argc, char* argv[]) {
  int fd = STDIN_FILENO;
  if (argc != 6) {
    fd = open(argv[6], O_RDONLY);
    if (fd < 0) {
      fprintf(stderr, "ERROR: Unable to open print file \"%s\": %s\n", argv[6], strerror(errno));
      return;
    }
  }
  PassThroughSink sink(argv);
  if (ScanLines(fd, sink) == ScanResult::kEndOfInput) KZfputs(kEndOfJob, stdout);
  if (fd != STDIN_FILENO) close(fd);
}

char* GetSubString(const char* text, int first, int last) {
  size_t length = 0;
  if (first >= 0 && last >= first) {
    size_t available = strnlen(text, static_cast<size_t>(last) + 1);
    if (available > static_cast<size_t>(first)) {
      length = std::min(available, static_cast<size_t>(last) + 1) - static_cast<size_t>(first);
    }
  }
  char* result = static_cast<char*>(std::malloc(length + 1));
  if (result == nullptr) return nullptr;
  if (length > 0) std::memcpy(result, text + first, length);
  result[length] = '\0';
  return result;
}
