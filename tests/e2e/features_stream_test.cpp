// Where separator pages and auto-fit land in the PostScript of 1-up and
// 2-up jobs through the built filter.
#include <string>

#include "filter_runner.h"

namespace {

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
      Key("SeparatorPageListTicket", "2") + Key("SeparatorPageTicket", "2") +
      Key("BookletMarginSwitchTicket", "1") + Key("BookletMarginMMShiftTicket", "3") +
      Key("AutoFitSwitchTicket", "0");
  const std::string oneUp = "com.apple.print.PrintSettings.PMLayoutRows..n.=1 "
                            "com.apple.print.PrintSettings.PMLayoutColumns..n.=1";
  const std::string twoUp = "com.apple.print.PrintSettings.PMLayoutRows..n.=1 "
                            "com.apple.print.PrintSettings.PMLayoutColumns..n.=2";
  const std::string setPageDevice = "userdict/setpagedevice{pop}bind put\n";
  const struct {
    const char* name;
    std::string options;
    std::string expectedAround;  // the fragments with the lines around them
  } cases[] = {
      {"1-up", finishing + oneUp,
       "end\n" + std::string(kSeparator) + "%%EndProlog\n%%BeginSetup\n"},
      {"1-up", finishing + oneUp, setPageDevice + kAutoFit + "%%EndSetup\n"},
      {"no layout", finishing, "end\n" + std::string(kSeparator) + "%%EndProlog\n"},
      {"2-up", finishing + twoUp,
       "<</PageSize[612 792]>>setpagedevice\n" + std::string(kSeparator) + kAutoFit +
           setPageDevice + "%%EndSetup\n"},
  };
  for (const auto& c : cases) {
    FilterJob job;
    job.ppd = Fixture("ppd/utf8-color.ppd");
    job.options = c.options;
    job.input = ReadFile(Fixture("ps/app-letter-2page.ps"));
    FilterRun run = RunFilter(job);
    ASSERT_EQ(run.status, 0) << run.err;
    const std::string body = SplitStream(run.out).body;
    EXPECT_NE(body.find(c.expectedAround), std::string::npos) << c.name << "\n" << Visible(body);
    // Each fragment is written once.
    EXPECT_EQ(body.find("setcoverseparator"), body.rfind("setcoverseparator")) << c.name;
    EXPECT_EQ(body.find("setsignatureimageshift"), body.rfind("setsignatureimageshift"))
        << c.name;
  }
}

}  // namespace
