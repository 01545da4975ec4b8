// The whole job header from a job ticket: one job through FilterMain with an
// empty PostScript job, so that every module reads the ticket and writes its
// header lines.
//
// Input: one byte choosing the printer (a fixture PPD, or none), then the
// ticket text, then optionally NUL, the user name, NUL, the title.
#include <cstdlib>
#include <string>

#include "frame/job_flow.h"
#include "frame/job_state.h"
#include "fuzz_support.h"
#include "modules/job_comments/job_comments.h"

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

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static fuzz::StdoutCapture capture;
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

  char name[] = "pstozpjl", id[] = "1", copies[] = "1", input[] = "/dev/null";
  char* argv[] = {name, id, user.data(), title.data(), copies, ticket.data(), input, nullptr};
  int status = FilterMain(7, argv);
  std::string stream = fuzz::AfterCryptoMessages(capture.Take());

  fuzz::Check(status == 0, "exit status 0");
  fuzz::Check(fuzz::StartsWith(stream, fuzz::UniversalExit() + "@PJL"),
              "the stream starts with the universal exit language", fuzz::Visible(stream));
  // An empty job: pass-through writes only Ctrl-D; the insertion mode writes
  // its language switch and nothing of the (empty) spool.
  const std::string end = printer.insertion ? "@PJL ENTER LANGUAGE=POSTSCRIPT\n" + fuzz::Trailer()
                                            : "\x04" + fuzz::Trailer();
  fuzz::Check(fuzz::EndsWith(stream, end), "the stream ends with the job end and trailer",
              fuzz::Visible(stream.substr(stream.size() > 200 ? stream.size() - 200 : 0)));
  return 0;
}
