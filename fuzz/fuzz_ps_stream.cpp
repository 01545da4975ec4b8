// The PostScript pass-through and the PPD-feature insertion scan, checked
// against a byte-at-a-time model of both.
//
// Input: one byte choosing the path, one byte seeding the block sizes, then
// the PostScript job. Paths:
//   0  LineScanner fed in blocks of varying size, lines through HandlePSLine
//      (plain lines skipped or spanned as the seed says);
//   1  OutputPSStream reading the job from a file;
//   2  the insertion mode on a colour printer, 3 on a monochrome printer.
// The job ticket is empty, so no module inserts PostScript, and the build's
// page log goes to stderr only. Every path must write exactly what the model
// says.
#include <cstdlib>
#include <string>

#include "base/job_state.h"
#include "fuzz_support.h"
#include "job/feature_insertion.h"
#include "job/line_scanner.h"
#include "job/module_dispatch.h"
#include "job/ps_stream.h"
#include "modules/job_comments/job_comments.h"

namespace {

// The reference reader: one byte at a time into a line buffer. A CR or LF
// ends a line (written with its terminator); a line reaching kPSLineChunk
// bytes is written as it stands and starts afresh. Returns the text of the
// unfinished line.
std::string ModelLines(const std::string& bytes, std::string* out, std::string line = "") {
  for (char c : bytes) {
    if (c == '\r' || c == '\n') {
      *out += line;
      *out += c;
      line.clear();
    } else {
      line += c;
      if (line.size() == kPSLineChunk) {
        *out += line;
        line.clear();
      }
    }
  }
  return line;
}

// Pass-through: the byte read at end of file (0xFF) is stored like any
// other, so it goes out only when it completes a chunk; then Ctrl-D.
std::string ModelPassThrough(const std::string& job) {
  std::string out;
  ModelLines(job + '\xFF', &out);
  return out + '\x04';
}

// Insertion mode, PostScript part: pass 1 spools every byte but the last,
// which is held back and written after the lines with a Ctrl-D unless it is
// one; pass 2 copies the spool's complete lines, led by the text of pass 1's
// unfinished line.
std::string ModelInsertionPostScript(const std::string& job) {
  std::string spool;
  std::string pending;
  if (!job.empty()) {
    pending = ModelLines(job.substr(0, job.size() - 1), &spool);
    spool += job.back();
  }
  if (job.empty() || job.back() != '\x04') spool += '\x04';
  std::string out;
  ModelLines(spool, &out, pending);
  return out;
}

// Lines go through the real line handler, chunks straight out, as the
// pass-through's own sink does. The seed's two low bits choose how much the
// scanner may skip: the structural-line candidates or all lines, and plain
// lines in spans or one by one.
class HandlerSink : public LineSink {
 public:
  HandlerSink(char** argv, uint8_t seed) : argv_(argv), spans_((seed & 2) != 0) {
    if ((seed & 1) != 0) candidates_ = StructuralLineCandidates();
  }
  void Chunk(const char* bytes, size_t length) override { fwrite(bytes, 1, length, stdout); }
  bool Line(const char* line, size_t length, char terminator) override {
    return HandlePSLine(state_, line, length, terminator, argv_, stdout);
  }
  bool Plain(const char* line, size_t length) override {
    return spans_ && ClassifyPSLine(line, length) == PSLineKind::kPlain;
  }
  void Span(const char* bytes, size_t length) override {
    if (spans_) {
      fwrite(bytes, 1, length, stdout);
    } else {
      LineSink::Span(bytes, length);
    }
  }

 private:
  char** argv_;
  bool spans_;
  PSLineState state_;
};

void FeedInBlocks(const std::string& job, uint8_t seed, LineScanner& scanner) {
  uint32_t state = seed * 2654435761u + 1;
  size_t at = 0;
  while (at < job.size()) {
    state = state * 1103515245u + 12345u;
    // Mostly small blocks, now and then one longer than a chunk.
    size_t block = (state >> 16) % 7 == 0 ? (state >> 8) % 20000 : (state >> 8) % 64;
    if (block == 0) block = 1;
    if (block > job.size() - at) block = job.size() - at;
    scanner.Feed(job.data() + at, block);
    at += block;
  }
  scanner.FinishInput();
}

// Before the language switch the insertion mode writes only PJL SET lines.
void CheckDerivedPJL(const std::string& pjl) {
  size_t at = 0;
  while (at < pjl.size()) {
    size_t end = pjl.find('\n', at);
    fuzz::Check(end != std::string::npos, "a derived PJL line ends with LF", fuzz::Visible(pjl));
    fuzz::Check(pjl.compare(at, 9, "@PJL SET ") == 0, "a derived line is a PJL SET line",
                fuzz::Visible(pjl.substr(at, end + 1 - at)));
    at = end + 1;
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static fuzz::StdoutCapture capture;
  static fuzz::MemoryFile jobFile("job");
  static const bool ready = [] {
    setenv("TMPDIR", "/dev/shm", 0);  // the insertion mode's spool file
    return true;
  }();
  (void)ready;

  fuzz::Input in(data, size);
  uint8_t path = in.Byte() % 4;
  uint8_t seed = in.Byte();
  std::string job = in.Rest();

  if (path >= 2) {
    setenv("PPD", fuzz::Fixture(path == 2 ? "ppd/decomp-color.ppd" : "ppd/decomp-mono.ppd").c_str(),
           1);
  } else {
    unsetenv("PPD");
  }
  ResetJobState();
  CommentResetOptionRecord();
  char name[] = "pstozpjl", id[] = "1", user[] = "alice", title[] = "report", copies[] = "1",
       ticket[] = "";
  std::string file = jobFile.path();
  char* argv[] = {name, id, user, title, copies, ticket, file.data(), nullptr};
  // The modules' records from an empty ticket: nothing to insert.
  InializeDescriptionTable();
  GetTicketFromPDE(argv);

  if (path == 0) {
    HandlerSink sink(argv, seed);
    LineScanner scanner(sink);
    FeedInBlocks(job, seed, scanner);
    std::string out = capture.Take();
    std::string expected;
    ModelLines(job + '\xFF', &expected);
    fuzz::Check(out == expected, "scanned in blocks, the lines are the byte-wise reader's",
                "got " + fuzz::Visible(out) + "\nwant " + fuzz::Visible(expected));
    return 0;
  }

  jobFile.Set(job);
  if (path == 1) {
    OutputPSStream(7, argv);
    std::string out = capture.Take();
    std::string expected = ModelPassThrough(job);
    fuzz::Check(out == expected, "the pass-through copies the job as the byte-wise reader does",
                "got " + fuzz::Visible(out) + "\nwant " + fuzz::Visible(expected));
    return 0;
  }

  OutputPSStreamtoFileandInsertPJLforFeaturePDE(7, argv);
  std::string out = capture.Take();
  const std::string enter = "@PJL ENTER LANGUAGE=POSTSCRIPT\n";
  size_t switchAt = out.find(enter);
  fuzz::Check(switchAt != std::string::npos, "the insertion mode writes the language switch",
              fuzz::Visible(out));
  CheckDerivedPJL(out.substr(0, switchAt));
  std::string postscript = out.substr(switchAt + enter.size());
  std::string expected = ModelInsertionPostScript(job);
  fuzz::Check(postscript == expected, "pass 2 copies the spooled job as the model does",
              "got " + fuzz::Visible(postscript) + "\nwant " + fuzz::Visible(expected));
  return 0;
}
