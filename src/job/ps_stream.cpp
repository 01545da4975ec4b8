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

// Page-structure comments, matched by their start (they carry arguments).
const StructuralLine kPageStructureLines[] = {
    ZPJL_LINE("%%Page:", PSLineKind::kPageComment),
    ZPJL_LINE("%%Trailer", PSLineKind::kTrailer),
    ZPJL_LINE("%%BeginDocument", PSLineKind::kBeginDocument),
    ZPJL_LINE("%%EndDocument", PSLineKind::kEndDocument),
};
#undef ZPJL_LINE

// The longest exact structural line: anything longer is plain or a comment.
constexpr size_t kLongestStructuralLine = 35;

// Output held for the page-device hook beyond this is let go: the job is then
// taken to need the hook (and loses it again at an "ep" or "endp" line).
constexpr size_t kHoldLimit = 8 * 1024 * 1024;

void WriteLine(const char* line, size_t length, char terminator, FILE* out) {
  if (length > 0) KZfwrite(line, 1, length, out);
  KZfputc(static_cast<unsigned char>(terminator), out);
}

}  // namespace

PSLineKind ClassifyPSLine(const char* line, size_t length) {
  if (length <= kLongestStructuralLine) {
    for (const StructuralLine& known : kStructuralLines) {
      if (length == known.length && std::memcmp(line, known.text, length) == 0) return known.kind;
    }
  }
  if (length < 2 || line[0] != '%' || line[1] != '%') return PSLineKind::kPlain;
  for (const StructuralLine& known : kPageStructureLines) {
    if (length >= known.length && std::memcmp(line, known.text, known.length) == 0) {
      return known.kind;
    }
  }
  return PSLineKind::kPlain;
}

LineCandidates StructuralLineCandidates() {
  LineCandidates candidates = LineCandidates::None();
  for (const StructuralLine& known : kStructuralLines) candidates.Add(known.text, known.length);
  for (const StructuralLine& known : kPageStructureLines) {
    candidates.Add(known.text, known.length);
    candidates.AddLengthsFrom(known.text, known.length);
  }
  return candidates;
}

bool PageMarks::EndsPage(PSLineKind kind) {
  if (kind == PSLineKind::kBeginDocument) ++embedded;
  if (kind == PSLineKind::kEndDocument && embedded > 0) --embedded;
  if (kind != PSLineKind::kPageComment || endsPages || embedded > 0) return false;
  bool ended = inPage;
  pageComments = true;
  inPage = true;
  return ended;
}

bool PageMarks::EndsLastPage() {
  bool ended = inPage && !endsPages && embedded == 0;
  if (ended) inPage = false;
  return ended;
}

bool HeldOutput::Hold() {
  stream_ = open_memstream(&bytes_, &length_);
  if (stream_ == nullptr) return false;
  SetHeldStream(stream_);
  return true;
}

size_t HeldOutput::size() const {
  long at = ftell(stream_);
  return at > 0 ? static_cast<size_t>(at) : 0;
}

void HeldOutput::Release(FILE* out, bool withHook) {
  fclose(stream_);  // sets bytes_ and length_
  stream_ = nullptr;
  SetHeldStream(nullptr);
  size_t written = 0;
  for (const Deferred& due : deferred_) {
    size_t at = std::min(due.at, length_);
    if (at > written) KZfwrite(bytes_ + written, 1, at - written, out);
    written = std::max(written, at);
    if ((due.point == kPointPageHook) == withHook) {
      OutputPSCommandFromFilter(due.point, due.page, out);
    }
  }
  if (length_ > written) KZfwrite(bytes_ + written, 1, length_ - written, out);
  deferred_.clear();
  std::free(bytes_);
  bytes_ = nullptr;
}

void PSLineState::Start() {
  if (!PageHookWanted()) return;
  hook = held.Hold() ? PageHook::kHolding : PageHook::kPending;
}

void PSLineState::BeforeCode(FILE* out) {
  if (codeSeen) return;
  codeSeen = true;
  if (hook == PageHook::kHolding) held.MarkHookHere();
  if (hook == PageHook::kPending) {
    OutputPSCommandFromFilter(kPointPageHook, page, out);
    hook = PageHook::kInstalled;
  }
}

namespace {

// The job has shown that it does not end its pages in "ep"/"endp": held
// output goes out with the hook in its place (or the hook waits for the
// first line of code).
void TakeHook(PSLineState& state, FILE* out) {
  if (state.hook != PageHook::kHolding) return;
  state.held.Release(out, true);
  state.hook = state.codeSeen ? PageHook::kInstalled : PageHook::kPending;
}

// The job ends its pages in "ep"/"endp" (the first such line is next): it
// draws the watermark there and gets no hook.
void DeclineHook(PSLineState& state, FILE* out) {
  if (state.hook == PageHook::kHolding) state.held.Release(out, false);
  if (state.hook == PageHook::kInstalled) {
    OutputPSCommandFromFilter(kPointPageHookOff, state.page, out);
  }
  state.hook = PageHook::kNone;
}

void LogNextPage(PSLineState& state, char* argv[]) {
  ++state.pagesLogged;
  OutputPageLogCommand(state.pagesLogged, argv);
}

bool IsCode(const char* line, size_t length) { return length > 0 && line[0] != '%'; }

// The injections that pair with "ep"/"endp" page ends ("%%BeginProlog" and
// "%%EndPageSetup"): held back while the job's shape is open, left out of a
// job that gets the page-device hook.
void InjectForPageEnds(PSLineState& state, int32_t point, FILE* out) {
  if (state.hook == PageHook::kHolding) state.held.Defer(point, state.page);
  if (state.hook == PageHook::kNone) OutputPSCommandFromFilter(point, state.page, out);
}

}  // namespace

void PSLineState::CheckHeld(FILE* out) {
  if (hook == PageHook::kHolding && held.size() > kHoldLimit) TakeHook(*this, out);
}

void PSLineState::WriteChunk(const char* bytes, size_t length, FILE* out) {
  if (SeekingCode()) BeforeCode(Target(out));
  KZfwrite(bytes, 1, length, Target(out));
  CheckHeld(out);
}

void FinishPSLines(PSLineState& state, char* argv[], FILE* out, bool stopped) {
  if (state.hook == PageHook::kHolding) state.held.Release(out, !stopped);
  if (!stopped && state.marks.EndsLastPage()) LogNextPage(state, argv);
  for (int32_t page = state.marks.ShowpagePages(); page > 0; --page) LogNextPage(state, argv);
}

bool HandlePSLine(PSLineState& state, const char* line, size_t length, char terminator,
                  char* argv[], FILE* base) {
  if (state.SeekingCode() && IsCode(line, length)) state.BeforeCode(state.Target(base));
  PSLineKind kind = ClassifyPSLine(line, length);
  if ((kind == PSLineKind::kEndPage || kind == PSLineKind::kEndPageAlt) && !state.marks.endsPages) {
    state.marks.endsPages = true;
    DeclineHook(state, base);
  }
  FILE* out = state.Target(base);
  switch (kind) {
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
      if (state.marks.embedded == 0) ++state.marks.showpages;
      break;
    case PSLineKind::kPageComment:
    case PSLineKind::kBeginDocument:
    case PSLineKind::kEndDocument:
      if (state.marks.EndsPage(kind)) {
        TakeHook(state, base);
        // The page that ended is logged also when the job stops here.
        bool cancelled = CancelJob == 1;
        LogNextPage(state, argv);
        if (cancelled) return false;
      }
      WriteLine(line, length, terminator, state.Target(base));
      break;
    case PSLineKind::kTrailer:
      if (state.marks.EndsLastPage()) {
        TakeHook(state, base);
        LogNextPage(state, argv);
      }
      WriteLine(line, length, terminator, state.Target(base));
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
      InjectForPageEnds(state, kPointEndPageSetup, out);
      break;
    case PSLineKind::kBeginProlog:
      WriteLine(line, length, terminator, out);
      InjectForPageEnds(state, kPointBeginProlog, out);
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
  state.CheckHeld(base);
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
  explicit PassThroughSink(char* argv[]) : argv_(argv) {
    structural_ = StructuralLineCandidates();
    candidates_ = structural_;
    state_.Start();
  }
  void Chunk(const char* bytes, size_t length) override {
    state_.WriteChunk(bytes, length, stdout);
  }
  bool Line(const char* line, size_t length, char terminator) override {
    return HandlePSLine(state_, line, length, terminator, argv_, stdout);
  }
  bool Plain(const char* line, size_t length) override {
    if (state_.SeekingCode() && IsCode(line, length)) return false;
    return ClassifyPSLine(line, length) == PSLineKind::kPlain;
  }
  void Span(const char* bytes, size_t length) override {
    KZfwrite(bytes, 1, length, state_.Target(stdout));
    state_.CheckHeld(stdout);
  }
  void Block(const char*, size_t) override {
    // All lines are looked at until the first line of code.
    if (seeking_ == state_.SeekingCode()) return;
    seeking_ = !seeking_;
    candidates_ = seeking_ ? LineCandidates() : structural_;
  }
  void Finish(bool stopped) { FinishPSLines(state_, argv_, stdout, stopped); }

 private:
  char** argv_;
  PSLineState state_;
  LineCandidates structural_ = LineCandidates::None();
  bool seeking_ = false;  // candidates_ are all lines
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
  bool ended = ScanLines(fd, sink) == ScanResult::kEndOfInput;
  sink.Finish(!ended);
  if (ended) KZfputs(kEndOfJob, stdout);
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
