// User names and titles through the job flow's conversion and validation,
// on a UTF-8 and a Shift-JIS printer, with and without a product type.
//
// Input: a flags byte (printer, product type), then the user name and the
// title, each up to a NUL.
#include <string>

#include "fuzz_support.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  fuzz::Input in(data, size);
  const uint8_t flags = in.Byte();
  static const char* const kProducts[] = {nullptr, "2", "3", "5", "-7"};
  fuzz::Job job;
  job.ppd = fuzz::Fixture((flags & 1) != 0 ? "ppd/text-utf8.ppd" : "ppd/text-shiftjis.ppd");
  if (const char* product = kProducts[(flags >> 1) % 5]) {
    job.ticket = "com.korvanel.qd.jtz.printsettings.PrintTypeProductTypeTicketKey=" +
                 std::string(product) + " com.korvanel.qd.jtz.printsettings.PrintTypeTicketKey=3";
  }
  job.user = in.UntilNul();
  job.title = in.UntilNul();
  job.postscript = "%!PS\nshowpage\n";
  const std::string stream = fuzz::RunJob(job);
  // A name never ends a header line early: every header line is PJL.
  const size_t enter = stream.find("@PJL ENTER LANGUAGE=POSTSCRIPT\n");
  fuzz::Check(enter != std::string::npos, "the language switch is there");
  for (size_t at = fuzz::UniversalExit().size(); at < enter; at = stream.find('\n', at) + 1) {
    fuzz::Check(stream.compare(at, 5, "@PJL ") == 0, "every header line is a PJL line",
                fuzz::Visible(stream.substr(at, 80)));
  }
  return 0;
}
