// The PPD attribute queries on any PPD text: the text is written to a file
// that PPD names, every query the filter makes is asked, and then a whole job
// runs on that printer with a ticket and PostScript that reach the
// PPD-dependent lines (colour questions, page sizes, feature code).
//
// Input: the PPD text.
#include <cstdlib>
#include <cstring>
#include <string>

#include "base/job_state.h"
#include "base/ppd_queries.h"
#include "fuzz_support.h"
#include "job/job_flow.h"
#include "modules/device_settings/device_settings.h"
#include "modules/job_comments/job_comments.h"
#include "modules/perfect_binding/perfect_binding.h"
#include "platform/job_ppd.h"
#include "ticket/text_encoding.h"

namespace {

// Every attribute name the filter asks for, and a few prefixes of them.
const char* const kKeywords[] = {
    "KRPrinterLanguageEncoding",
    "KRPSDecompMode",
    "PCFileName",
    "CommentOn",
    "ColorDevice",
    "KRZPrintTypeSettings",
    "LanguageEncoding",
    "KR",
    "",
    "DefaultKRColorMode",
};

const char* const kPageSizes[] = {"A4", "A3", "Letter", "Tabloid", "Custom.100x200", "", "DL"};

// A ticket that makes the modules ask the PPD: colour mode and toner saver
// for the device lines, booklet and perfect binding for page sizes, print
// type for the partial-table test.
const char kTicket[] =
    "KRColorMode=Auto KRTonerSaver=Mode1 KRSignature=BookLeft KRSigVol=None number-up=2 "
    "KRPBindPosition=BindLeft KRPBindTrimming=3EdgeSpecifySize KRPBindPageSize=A3 "
    "KRPBindCutPageSize=A4 KRPBindCoverPageSize=DL "
    "com.korvanel.qd.jtz.printsettings.PrintTypeTicketKey=5 "
    "com.korvanel.qd.jtz.printsettings.PrintTypeMBNTicketKey=12";

// Feature code for the insertion mode, should the PPD ask for it.
const char kJob[] =
    "%!PS-Adobe-3.0\n%%BeginFeature: *KROutputMode 1200x1200\n%%EndFeature\n"
    "%%BeginFeature: *KRHalftone Fineness\n%%BeginFeature: *KRSetTrapMode True\n"
    "TTRC 64 GTRC 64 ITRC 64 TSCR 64 GSCR 64 ISCR 64\n%%EndProlog\nbp\nep\n%%EOF\n";

void AskEveryQuery() {
  ppd_file_t* ppd = AcquireJobPPD();
  for (const char* keyword : kKeywords) {
    ppd_attr_t* attr = ppdFindAttr_ALT(ppd, keyword);
    if (attr != nullptr) {
      fuzz::Check(std::strncmp(attr->name, keyword, std::strlen(keyword)) == 0,
                  "the attribute found begins with the keyword", attr->name);
      if (attr->value != nullptr) (void)std::strlen(attr->value);
    }
    CheckIfPPDKeywordSupported(ppd, keyword, "Default04");
    PPDAttrEquals(ppd, keyword, "UTF-8");
  }
  GetCFStringSimEncodingFromPPD(ppd);
  OutputPJLCommandForPPDKeyArray(PPDKeyArray, ppd);
  ReleaseJobPPD(ppd);
  IsUTF8PrinterEncoding();
  IsColorDeivce();
  getDefaultColorMode();
  PPDHasColorModeOption();
  for (const char* name : kPageSizes) {
    int32_t width = -1, length = -1;
    PBindPageSizeInTenths(name, &width, &length);
    fuzz::Check(width % 10 == 0 && length % 10 == 0, "page sizes are whole millimetres");
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static fuzz::StdoutCapture capture;
  static fuzz::MemoryFile ppdFile("ppd");
  static fuzz::MemoryFile jobFile("job");
  static const bool ready = [] {
    setenv("TMPDIR", "/dev/shm", 0);  // the insertion mode's spool file
    setenv("PPD", ppdFile.path().c_str(), 1);
    jobFile.Set(kJob);
    return true;
  }();
  (void)ready;

  ppdFile.Set(std::string(reinterpret_cast<const char*>(data), size));
  ForgetJobPPD();
  ResetJobState();
  CommentResetOptionRecord();

  AskEveryQuery();
  capture.Take();

  char name[] = "pstozpjl", id[] = "1", user[] = "alice", title[] = "report", copies[] = "1";
  std::string ticket = kTicket;
  std::string file = jobFile.path();
  char* argv[] = {name, id, user, title, copies, ticket.data(), file.data(), nullptr};
  int status = FilterMain(7, argv);
  std::string stream = fuzz::AfterCryptoMessages(capture.Take());
  fuzz::Check(status == 0, "exit status 0");
  fuzz::Check(fuzz::StartsWith(stream, fuzz::UniversalExit() + "@PJL"),
              "the stream starts with the universal exit language", fuzz::Visible(stream));
  fuzz::Check(fuzz::EndsWith(stream, fuzz::Trailer()), "the stream ends with the trailer",
              fuzz::Visible(stream.substr(stream.size() > 200 ? stream.size() - 200 : 0)));
  return 0;
}
