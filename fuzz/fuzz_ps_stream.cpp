// Any PostScript through the pass-through and the PPD-feature insertion
// mode, against a byte-at-a-time model of both.
//
// Input: one byte choosing the printer (no PPD: pass-through; a colour or a
// monochrome printer in the insertion mode), then the PostScript job. The
// ticket is empty, so no module inserts PostScript.
#include <string>

#include "fuzz_support.h"
#include "job/ps_stream.h"

namespace {

// The reference reader: one byte at a time into a line buffer. A CR or LF
// ends a line (written with its terminator); a line reaching kPSLineChunk
// bytes is written as it stands. Returns the unfinished line.
std::string ModelLines(const std::string& bytes, std::string* out, std::string line = "") {
  for (char c : bytes) {
    line += c;
    if (c == '\r' || c == '\n' || line.size() == kPSLineChunk) {
      *out += line;
      line.clear();
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

// Insertion mode: pass 1 spools every byte but the last, which is held back
// and written after the lines with a Ctrl-D unless it is one; pass 2 copies
// the spool's complete lines, led by pass 1's unfinished line.
std::string ModelInsertion(const std::string& job) {
  std::string spool, pending;
  if (!job.empty()) {
    pending = ModelLines(job.substr(0, job.size() - 1), &spool);
    spool += job.back();
  }
  if (job.empty() || job.back() != '\x04') spool += '\x04';
  std::string out;
  ModelLines(spool, &out, pending);
  return out;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  fuzz::Input in(data, size);
  const uint8_t printer = in.Byte() % 3;
  static const char* const kPPDs[] = {"", "ppd/decomp-color.ppd", "ppd/decomp-mono.ppd"};
  fuzz::Job job;
  job.ppd = printer == 0 ? "" : Fixture(kPPDs[printer]);
  job.postscript = in.Rest();
  const std::string stream = fuzz::RunJob(job);
  const std::string enter = "@PJL ENTER LANGUAGE=POSTSCRIPT\n";
  const size_t switchAt = stream.find(enter);
  fuzz::Check(switchAt != std::string::npos, "the language switch", fuzz::Visible(stream));
  const std::string body = stream.substr(switchAt + enter.size());
  const std::string expected =
      (printer == 0 ? ModelPassThrough(job.postscript) : ModelInsertion(job.postscript)) +
      kTrailer;
  fuzz::Check(body == expected, "the PostScript is copied as the byte-wise reader does",
              "got " + fuzz::Visible(body) + "\nwant " + fuzz::Visible(expected));
  return 0;
}
