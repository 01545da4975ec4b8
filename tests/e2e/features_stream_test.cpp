// The finishing features through the built filter: where the header rows and
// booklet attributes stand in the header, and where separator pages and
// auto-fit land in the PostScript of 1-up and 2-up jobs.
#include <string>

#include "filter_runner.h"

namespace {

const std::string kSettings = " com.korvanel.qd.jtz.printsettings.";

std::string Attr(const std::string& value) { return "@PJL SET JOBATTR=\"@" + value + "\"\n"; }

FilterRun RunSampleJob(const std::string& ppd, const std::string& options) {
  FilterJob job;
  job.ppd = Fixture("ppd/" + ppd);
  job.options = options;
  job.input = ReadFile(Fixture("ps/app-letter-2page.ps"));
  return RunFilter(job);
}

TEST(FeaturesStream, HeaderRowsThenBookletBeforeTheDeviceSettings) {
  const std::string options = kSettings + "TabMarginSwitchTicket=1" + kSettings +
                              "TabMarginMMShiftTicket=12" + kSettings +
                              "EjectOptionsListTicket=3 number-up=2 KRSignature=BookLeft "
                              "KRSigVol=None KRTonerSaver=Mode1";
  FilterRun run = RunSampleJob("utf8-color.ppd", options);
  ASSERT_EQ(run.status, 0) << run.err;
  const std::string header = SplitStream(run.out).header;
  // In header order: accounting, the features rows, the booklet lines, the
  // toner saver, the job information block.
  const std::string inOrder[] = {
      "@ACNA=",
      Attr("TABS=12"),
      Attr("FACE=UP"),
      Attr("DIND=LANDSCAPE") + Attr("DIBB=LEFT") + Attr("DIBK=NONEDIVIDE"),
      "@PJL SET ECONOMODE=",
      "@PJL COMMENT PRINTJOBINFO VERSION="};
  size_t at = 0;
  for (const std::string& part : inOrder) {
    size_t found = header.find(part, at);
    ASSERT_NE(found, std::string::npos) << "missing or out of order: " << part << "\n"
                                        << Visible(header);
    at = found + part.size();
  }
}

const char kSeparator[] =
    "[{\n%%BeginNonPPDFeatures\n"
    "1 dict dup/SeparatorPages[2]put/Custom/ProcSet findresource/setcoverseparator get exec\n"
    "%%EndNonPPDFeatures\n} stopped cleartomark\n";
const char kAutoFit[] =
    "[{\n%%BeginNonPPDFeatures\n"
    "3.000/Custom/ProcSet findresource/setsignatureimageshift get exec\n"
    "%%EndNonPPDFeatures\n} stopped cleartomark\n"
    "[{\n%%BeginNonPPDFeatures\n"
    "/Custom/ProcSet findresource/setsignatureautoscale 2 copy known {get false exch exec} "
    "{pop pop} ifelse\n"
    "%%EndNonPPDFeatures\n} stopped cleartomark\n";

TEST(FeaturesStream, SeparatorAndAutoFitByLayout) {
  const std::string finishing =
      kSettings + "SeparatorPageListTicket=2" + kSettings + "SeparatorPageTicket=2" + kSettings +
      "BookletMarginSwitchTicket=1" + kSettings + "BookletMarginMMShiftTicket=3" + kSettings +
      "AutoFitSwitchTicket=0";
  const std::string layout = " com.apple.print.PrintSettings.PMLayoutRows..n.=";
  const std::string columns = " com.apple.print.PrintSettings.PMLayoutColumns..n.=";
  const std::string setPageDevice = "userdict/setpagedevice{pop}bind put\n";
  const struct {
    const char* name;
    std::string options;
    std::string expectedAround;  // the fragments with the lines they precede
  } cases[] = {
      {"1-up", finishing + layout + "1" + columns + "1", std::string(kSeparator) + "%%EndProlog\n"},
      {"1-up", finishing + layout + "1" + columns + "1", setPageDevice + kAutoFit + "%%EndSetup\n"},
      {"no layout", finishing, std::string(kSeparator) + "%%EndProlog\n"},
      {"2-up", finishing + layout + "1" + columns + "2", "end\n%%EndProlog\n%%BeginSetup\n"},
      {"2-up", finishing + layout + "1" + columns + "2",
       std::string(kSeparator) + kAutoFit + setPageDevice + "%%EndSetup\n"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    FilterRun run = RunSampleJob("utf8-color.ppd", c.options);
    ASSERT_EQ(run.status, 0) << run.err;
    const std::string body = SplitStream(run.out).body;
    EXPECT_NE(body.find(c.expectedAround), std::string::npos) << Visible(body);
    // Each fragment is written once.
    EXPECT_EQ(body.find("setcoverseparator"), body.rfind("setcoverseparator"));
    EXPECT_EQ(body.find("setsignatureimageshift"), body.rfind("setsignatureimageshift"));
  }
}

}  // namespace
