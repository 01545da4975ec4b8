// The whole job header from a job ticket: one job through FilterMain, so
// that every module reads the ticket and writes its header lines, on a small
// PostScript job that has every injection point, so that the PostScript
// modules write theirs.
//
// Input: one byte choosing the printer (a fixture PPD, or none), then the
// ticket text, then optionally NUL, the user name, NUL, the title.
// Property: whatever they hold, they add no line to the header.
#include <algorithm>
#include <cstdlib>
#include <string>

#include "frame/job_flow.h"
#include "frame/job_state.h"
#include "fuzz_support.h"
#include "modules/job_comments/job_comments.h"
#include "modules/watermark/watermark.h"

namespace {

struct Printer {
  const char* ppd;  // under tests/fixtures, or nullptr for no PPD
  bool insertion;   // KRPSDecompMode "1": the language switch comes after pass 1
};

const Printer kPrinters[] = {
    {"ppd/utf8-color.ppd", false},
    {"ppd/legacy-mono.ppd", false},
    {"ppd/modules-utf8-default04.ppd", false},
    {"ppd/modules-legacy-default04.ppd", false},
    {"ppd/jobinfo-utf8-color.ppd", false},
    {"ppd/jobinfo-utf8-color-black-default.ppd", false},
    {"ppd/perfect_binding.ppd", false},
    {"ppd/listed-model.ppd", false},
    {"ppd/bare.ppd", false},
    {"ppd/decomp-color.ppd", true},
    {nullptr, false},
};
constexpr size_t kPrinterCount = sizeof kPrinters / sizeof kPrinters[0];

// Every line at which the pass-through lets the modules write.
const char kJob[] =
    "%!PS-Adobe-3.0\n%%BeginProlog\n%%EndProlog\n%%BeginSetup\n%%EndSetup\n"
    "userdict/setpagedevice{pop}bind put\nbp\n%%EndPageSetup\n(page) show\nep\n"
    "bp\n%%EndPageSetup\nendp\nshowpage\n";

// No ticket, user name or title adds a line to the header: every line is
// a PJL line, with no control byte but its CR LF end and its quotes paired,
// so no value ended early. The only ESC
// bytes in the stream are the envelope's.
void CheckHeaderLines(const std::string& stream) {
  const std::string& uel = fuzz::UniversalExit();
  size_t end = stream.find("@PJL ENTER LANGUAGE=POSTSCRIPT\n");
  fuzz::Check(end != std::string::npos, "the header ends with the language switch");
  for (size_t at = uel.size(), next; at < end; at = next + 1) {
    next = stream.find('\n', at);
    std::string line = stream.substr(at, next - at);
    if (!line.empty() && line.back() == '\r') line.pop_back();
    fuzz::Check(line.compare(0, 5, "@PJL ") == 0, "every header line is a PJL line",
                fuzz::Visible(line));
    for (char c : line) {
      fuzz::Check(static_cast<unsigned char>(c) >= 0x20 || c == '\t',
                  "no control byte inside a header line", fuzz::Visible(line));
    }
    fuzz::Check(std::count(line.begin(), line.end(), '"') % 2 == 0,
                "quotes paired in a header line", fuzz::Visible(line));
  }
  fuzz::Check(std::count(stream.begin(), stream.end(), '\x1b') == 2,
              "no ESC but the envelope's", fuzz::Visible(stream));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static fuzz::StdoutCapture capture;
  static fuzz::MemoryFile jobFile("job");
  static const bool ready = [] {
    setenv("TMPDIR", "/dev/shm", 0);  // the insertion mode's spool file
    jobFile.Set(kJob);
    return true;
  }();
  (void)ready;
  fuzz::Input in(data, size);
  const Printer& printer = kPrinters[in.Byte() % kPrinterCount];
  std::string ticket = in.UntilNul();
  std::string user = in.empty() ? "alice" : in.UntilNul();
  std::string title = in.empty() ? "report" : in.UntilNul();

  if (printer.ppd != nullptr) {
    setenv("PPD", fuzz::Fixture(printer.ppd).c_str(), 1);
  } else {
    unsetenv("PPD");
  }
  ResetJobState();
  CommentResetOptionRecord();
  ResetWatermarkState();

  char name[] = "pstozpjl", id[] = "1", copies[] = "1";
  std::string input = jobFile.path();
  char* argv[] = {name,          id,           user.data(), title.data(), copies,
                  ticket.data(), input.data(), nullptr};
  int status = FilterMain(7, argv);
  std::string stream = fuzz::AfterCryptoMessages(capture.Take());

  fuzz::Check(status == 0, "exit status 0");
  fuzz::Check(fuzz::StartsWith(stream, fuzz::UniversalExit() + "@PJL"),
              "the stream starts with the universal exit language", fuzz::Visible(stream));
  CheckHeaderLines(stream);
  // The job's end: Ctrl-D after the last line in pass-through; in the
  // insertion mode the held-back last line end, as an empty line.
  const std::string end =
      printer.insertion ? "\n\n" + fuzz::Trailer() : "showpage\n\x04" + fuzz::Trailer();
  fuzz::Check(fuzz::EndsWith(stream, end), "the stream ends with the job end and trailer",
              fuzz::Visible(stream.substr(stream.size() > 200 ? stream.size() - 200 : 0)));
  return 0;
}
