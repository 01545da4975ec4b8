// The print type and accounting lines of the job header through the built
// filter: their order among themselves and within the header.
#include <cstring>

#include "filter_runner.h"
#include "sealed_fields.h"

namespace {

std::string Key(const std::string& suffix, const std::string& value) {
  return "com.korvanel.qd.jtz.printsettings." + suffix + "=" + value + " ";
}

std::string CRLF(const std::string& attribute, const std::string& value) {
  return "@PJL SET JOBATTR=\"@" + attribute + "=" + value + "\"\r\n";
}
std::string LF(const std::string& attribute, const std::string& value) {
  return "@PJL SET JOBATTR=\"@" + attribute + "=" + value + "\"\n";
}

// The lines of the print type and accounting modules, in stream order.
std::string ModuleLines(const std::string& stream) {
  static const char* const kStarts[] = {
      "@PJL SET HOLD",
      "@PJL SET BOX",
      "@PJL SET USERNAME=",
      "@PJL SET JOBNAME=",
      "@PJL SET JOBATTR=\"@PRTM=",
      "@PJL SET JOBATTR=\"@CNAM=",
      "@PJL SET JOBATTR=\"@LUNA=",
      "@PJL SET JOBATTR=\"@HOAD=",
      "@PJL SET JOBATTR=\"@NLPP=",
      "@PJL SET JOBATTR=\"@JOAU=",
      "@PJL SET JOBATTR=\"@JOEP=",
      "@PJL SET JOBATTR=\"@JOAD=",
      "@PJL SET JOBATTR=\"@DAID=",
      "@PJL SET JOBATTR=\"@ACID=",
      "@PJL SET JOBATTR=\"@ACNA=",
      "@PJL SET JOBATTR=\"@ACEP=",
  };
  std::string header = SplitStream(stream).header;
  std::string lines;
  size_t at = 0;
  while (at < header.size()) {
    size_t end = header.find('\n', at);
    end = end == std::string::npos ? header.size() : end + 1;
    std::string line = header.substr(at, end - at);
    for (const char* start : kStarts) {
      if (line.compare(0, std::strlen(start), start) == 0) {
        lines += line;
        break;
      }
    }
    at = end;
  }
  return lines;
}

struct PrinterCase {
  const char* ppd;
  bool utf8;
};
const PrinterCase kPrinters[] = {
    {"ppd/modules-utf8.ppd", true},
    {"ppd/utf8-color.ppd", true},
    {"ppd/legacy-mono.ppd", false},
};

// With no accounting key the printer still learns host, login user, N-up,
// owner (the login user, as no user ID came) and document, in that order.
TEST(AccountingStream, JobWithoutAccountingKeys) {
  for (const PrinterCase& printer : kPrinters) {
    FilterJob job;
    job.ppd = Fixture(printer.ppd);
    job.file = "/nonexistent/job.ps";
    FilterRun run = RunFilter(job);
    ASSERT_EQ(run.status, 0) << printer.ppd;
    EXPECT_TRUE(SameStream(LF("CNAM", ClientHostName(printer.utf8)) + LF("LUNA", "alice") +
                               LF("NLPP", "1") + CRLF("JOAU", "alice") + CRLF("ACNA", "report"),
                           ModuleLines(run.out)))
        << printer.ppd;
  }
}

// A typical secure-print job with accounting: the whole header, byte for
// byte, with the sealed passwords opened by the test key. The print type
// lines follow the job mode line, the accounting lines follow them.
TEST(AccountingStream, SecurePrintJobHeader) {
  const std::string hold = StoredPasswordText("1234");
  const std::string owner = StoredPasswordText("pw100");
  ASSERT_FALSE(hold.empty());
  ASSERT_FALSE(owner.empty());
  FilterJob job;
  job.ppd = Fixture("ppd/modules-utf8.ppd");
  job.title = "Quarterly report";
  job.file = "/nonexistent/job.ps";
  job.options = Key("PrintTypeTicketKey", "2") + Key("PrintTypeUserNameTicketKey", "alice") +
                Key("PrintTypePasswordTicketKey", hold) + Key("DocumentNameTypeTicketKey", "1") +
                Key("JBAManageTypeListTicketKey", "2") + Key("JBAUserSettingRadioBtnTicket", "1") +
                Key("JBAUserIDListCtrlTicket", "2") + Key("JBAUserIDTextEditTicket", "u100") +
                Key("JBAUserPasswordTextEditTicket", owner) +
                Key("JBAAccountIDTextEditTicket", "acct7") + Key("JBAInfoListTicketKey", "0") +
                Key("JBAIPAddressStringTicket", "192.0.2.7");
  FilterRun run = RunFilter(job);
  ASSERT_EQ(run.status, 0);
  const std::string header = kUEL + "@PJL SET STRINGCODESET=UTF8\n" + "@PJL JOB MODE=PRINTER\r\n" +
                             "@PJL SET HOLD=STORE\n"
                             "@PJL SET HOLDTYPE=PRIVATE\n"
                             "@PJL SET USERNAME=\"alice\"\r\n"
                             "@PJL SET HOLDENCRYPTKEY=\"<sealed:1234>\"\r\n"
                             "@PJL SET JOBNAME=\"Quarterly report\"\r\n" +
                             LF("CNAM", ClientHostName(true)) + LF("LUNA", "alice") +
                             LF("HOAD", "192.0.2.7") + LF("NLPP", "1") + CRLF("JOAU", "u100") +
                             CRLF("JOEP", "<sealed:pw100>") + CRLF("DAID", "acct7") +
                             CRLF("ACNA", "Quarterly report") +
                             "@PJL SET JOBATTR=\"@DIND=PORTRAIT\"\n"
                             "@PJL SET RENDERMODE=GRAYSCALE\n" +
                             "@PJL ENTER LANGUAGE=POSTSCRIPT\n";
  EXPECT_TRUE(SameStream(header + kTrailer, WithOpenedFields(run.out)));
}

}  // namespace
