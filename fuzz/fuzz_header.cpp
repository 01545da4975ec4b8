// The whole job header from a job ticket, user name and title (converted
// and validated for a UTF-8 or a Shift-JIS printer), on a small job that
// has every line at which the PostScript modules write.
//
// Input: one byte choosing the printer (a fixture PPD, or none), then the
// ticket text, then optionally NUL, the user name, NUL, the title.
// Property: whatever they hold, they add no line to the header.
#include <algorithm>

#include "fuzz_support.h"

namespace {

struct Printer {
  const char* ppd;  // under tests/fixtures, or nullptr for no PPD
  bool insertion;   // KRPSDecompMode "1": the language switch comes after pass 1
};

const Printer kPrinters[] = {
    {"ppd/utf8-color.ppd", false},        {"ppd/legacy-mono.ppd", false},
    {"ppd/modules-utf8-default04.ppd", false}, {"ppd/modules-legacy-default04.ppd", false},
    {"ppd/jobinfo-utf8-color.ppd", false}, {"ppd/perfect_binding.ppd", false},
    {"ppd/listed-model.ppd", false},      {"ppd/decomp-color.ppd", true},
    {"ppd/text-utf8.ppd", false},         {"ppd/text-shiftjis.ppd", false},
    {nullptr, false},
};

bool EvenQuotes(const std::string& line) {
  return std::count(line.begin(), line.end(), '"') % 2 == 0;
}

// A row whose value is empty ends after its opening quote, without a line
// end, and the next row follows on the same line ("@PJL SET JOBATTR=\"@PJL
// SET ..."): its own quote is then the odd one.
bool QuotesPaired(const std::string& line) {
  if (EvenQuotes(line)) return true;
  size_t cut = line.find("=\"@PJL ");
  return cut != std::string::npos && line.find('"') == cut + 1 && EvenQuotes(line.substr(cut + 2));
}

// Every header line is a PJL line with no control byte but its CR LF end
// and its quotes paired, so no value ended early or started a line; the
// only ESC bytes in the stream are the envelope's.
void CheckHeaderLines(const std::string& stream) {
  size_t end = stream.find("@PJL ENTER LANGUAGE=POSTSCRIPT\n");
  fuzz::Check(end != std::string::npos, "the header ends with the language switch");
  for (size_t at = kUEL.size(), next; at < end; at = next + 1) {
    next = stream.find('\n', at);
    std::string line = stream.substr(at, next - at);
    if (!line.empty() && line.back() == '\r') line.pop_back();
    fuzz::Check(line.compare(0, 5, "@PJL ") == 0, "every header line is a PJL line",
                fuzz::Visible(line));
    for (char c : line) {
      fuzz::Check(static_cast<unsigned char>(c) >= 0x20 || c == '\t',
                  "no control byte inside a header line", fuzz::Visible(line));
    }
    fuzz::Check(QuotesPaired(line), "quotes paired in a header line", fuzz::Visible(line));
  }
  fuzz::Check(std::count(stream.begin(), stream.end(), '\x1b') == 2,
              "no ESC but the envelope's", fuzz::Visible(stream));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  fuzz::Input in(data, size);
  const Printer& printer = kPrinters[in.Byte() % (sizeof kPrinters / sizeof kPrinters[0])];
  fuzz::Job job;
  job.ppd = printer.ppd != nullptr ? Fixture(printer.ppd) : "";
  job.ticket = in.UntilNul();
  if (!in.empty()) job.user = in.UntilNul();
  if (!in.empty()) job.title = in.UntilNul();
  job.postscript =
      "%!PS-Adobe-3.0\n%%BeginProlog\n%%EndProlog\n%%BeginSetup\n%%EndSetup\n"
      "userdict/setpagedevice{pop}bind put\nbp\n%%EndPageSetup\n(page) show\nep\n"
      "bp\n%%EndPageSetup\nendp\nshowpage\n";
  const std::string stream = fuzz::RunJob(job);
  CheckHeaderLines(stream);
  // Whatever the ticket says, the job's own end goes out: Ctrl-D after the
  // last line in pass-through; in the insertion mode the held-back line end.
  const std::string end = printer.insertion ? "\n\n" : "showpage\n\x04";
  fuzz::Check(fuzz::EndsWith(stream, end + kTrailer), "the job's end before the trailer",
              fuzz::Visible(stream.substr(stream.size() > 200 ? stream.size() - 200 : 0)));
  return 0;
}
