// Any PPD text as the job's printer: a job whose ticket and PostScript reach
// every PPD-dependent line (colour questions, page sizes, the partial print
// type table, feature code for the insertion mode).
//
// Input: the PPD text.
#include <string>

#include "fuzz_support.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static fuzz::MemoryFile ppd("ppd");
  ppd.Set(std::string(reinterpret_cast<const char*>(data), size));
  fuzz::Job job;
  job.ppd = ppd.path();
  job.ticket =
      "KRColorMode=Auto KRTonerSaver=Mode1 KRSignature=BookLeft KRSigVol=None number-up=2 "
      "KRPBindPosition=BindLeft KRPBindTrimming=3EdgeSpecifySize KRPBindPageSize=A3 "
      "KRPBindCutPageSize=A4 KRPBindCoverPageSize=DL "
      "com.korvanel.qd.jtz.printsettings.PrintTypeTicketKey=5 "
      "com.korvanel.qd.jtz.printsettings.PrintTypeMBNTicketKey=12";
  job.postscript =
      "%!PS-Adobe-3.0\n%%BeginFeature: *KROutputMode 1200x1200\n%%EndFeature\n"
      "%%BeginFeature: *KRHalftone Fineness\n%%BeginFeature: *KRSetTrapMode True\n"
      "TTRC 64 GTRC 64 ITRC 64 TSCR 64 GSCR 64 ISCR 64\n%%EndProlog\nbp\nep\n%%EOF\n";
  fuzz::RunJob(job);
  return 0;
}
