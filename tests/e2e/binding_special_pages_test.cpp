// Perfect binding and special pages blocks in the header of whole jobs
// through the built filter.
#include <chrono>
#include <string>
#include <vector>

#include "filter_runner.h"

namespace {

const std::string kEnterPS = "@PJL ENTER LANGUAGE=POSTSCRIPT\n";
const std::string kSP = " com.korvanel.qd.jtz.printsettings.ZPIF";

std::string Lines(const std::vector<std::string>& attributes) {
  std::string text;
  for (const std::string& attribute : attributes)
    text += "@PJL SET JOBATTR=\"@" + attribute + "\"\n";
  return text;
}

// The header of a job without PostScript (the PPD writes no PRINTJOBINFO block).
std::string Header(const std::string& options, const char* ppd = "ppd/perfect_binding.ppd") {
  FilterJob job;
  job.ppd = Fixture(ppd);
  job.options = options;
  job.file = "/nonexistent/job.ps";
  FilterRun run = RunFilter(job);
  EXPECT_EQ(run.status, 0);
  return SplitStream(run.out).header;
}

size_t Count(const std::string& text, const std::string& part) {
  size_t count = 0;
  for (size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++count;
  return count;
}

struct BlockCase {
  const char* name;
  std::string options;
  std::vector<std::string> lines;  // empty: the module writes nothing
  const char* ppd;
};
void PrintTo(const BlockCase& c, std::ostream* os) { *os << c.name; }

// Binding lines: one block from @PBRE to @PBCI after the job mode line.
class PerfectBindingJob : public ::testing::TestWithParam<BlockCase> {};
TEST_P(PerfectBindingJob, HeaderBlock) {
  const BlockCase& c = GetParam();
  std::string header = Header(c.options, c.ppd);
  std::string block = Lines(c.lines);
  EXPECT_EQ(Count(header, "JOBATTR=\"@PB"), Count(block, "JOBATTR=\"@PB")) << Visible(header);
  if (c.lines.empty()) return;
  size_t at = header.find(block);
  ASSERT_NE(at, std::string::npos) << Visible(header);
  EXPECT_GT(at, header.find("@PJL JOB MODE=PRINTER\r\n"));
}

// A4 is 595 x 842 points: 2100 x 2970 tenths of a millimetre.
INSTANTIATE_TEST_SUITE_P(
    Jobs, PerfectBindingJob,
    ::testing::Values(
        BlockCase{"RightThreeEdgeMinimumOnA4",
                  "KRPBindPosition=BindRight KRPBindTrimming=3EdgeCutMinimum KRPBindPageSize=A4 "
                  "KRPBindCutPageSize=A3",
                  {"PBRE=RIGHT", "MSDA=ROTLEFPORT", "PBTC=FULLBLEED", "PBBP=A4", "PBTP=CUSTOM",
                   "PBTW=2030", "PBTH=2830", "PBCI=OFF"},
                  "ppd/perfect_binding.ppd"},
        BlockCase{"A4InTenthsOfAMillimetre",
                  "KRPBindPosition=BindLeft KRPBindTrimming=3EdgeSpecifySize KRPBindPageSize=A3 "
                  "KRPBindCutPageSize=A4",
                  {"PBRE=LEFT", "MSDA=ROTSEFLAND", "PBTC=FULLBLEED", "PBBP=A3", "PBTP=A4",
                   "PBTW=2100", "PBTH=2970", "ISXO=-435", "ISXT=435", "PBCI=OFF"},
                  "ppd/perfect_binding.ppd"},
        BlockCase{"CoverAdjustmentsLeft",
                  "KRPBindPosition=BindLeft KRPBindTrimming=None KRPBindCoverAdjustX=5 "
                  "KRPBindCoverAdjustY=5 KRPBindRotationAdjustTop=1 KRPBindRotationAdjustBot=2",
                  {"PBRE=LEFT", "MSDA=ROTSEFLAND", "PBTC=OFF", "PBTP=", "PBAT=1", "PBAB=2",
                   "PBAX=5", "PBAY=-5", "PBCI=OFF"},
                  "ppd/perfect_binding.ppd"},
        // The sheet is turned: top and bottom trade places.
        BlockCase{"CoverAdjustmentsRight",
                  "KRPBindPosition=BindRight KRPBindTrimming=None KRPBindCoverAdjustX=5 "
                  "KRPBindCoverAdjustY=5 KRPBindRotationAdjustTop=1 KRPBindRotationAdjustBot=2",
                  {"PBRE=RIGHT", "MSDA=ROTLEFPORT", "PBTC=OFF", "PBTP=", "PBAB=1", "PBAT=2",
                   "PBAX=-5", "PBAY=5", "PBCI=OFF"},
                  "ppd/perfect_binding.ppd"},
        BlockCase{"CoverDLIsLedger",
                  "KRPBindPosition=BindTop KRPBindTrimming=None KRPBindPageSize=Letter "
                  "KRPBindCoverPageSize=DL KRPBindCoverMediaType=CoatingPaper1A "
                  "KRPBindCoverMediaColor=Ivory KRPBindCoverPaperTray=2ndTray",
                  {"PBRE=TOP", "MSDA=ROTSEFLAND", "PBTC=OFF", "PBBP=LETTER", "PBTP=LETTER",
                   "PBCP=LEDGER", "PBCQ=COATEDPAPERA", "PBCC=IVORY", "PBCT=INTRAY2", "PBCI=OFF"},
                  "ppd/perfect_binding.ppd"},
        BlockCase{"PositionNone",
                  "KRPBindPosition=None KRPBindTrimming=3EdgeCut KRPBindCoverMediaColor=Blue",
                  {},
                  "ppd/perfect_binding.ppd"},
        // Known to the table, not to the PPD: the sizes count as 0.
        BlockCase{"PageSizeThePPDDoesNotKnow",
                  "KRPBindPosition=BindLeft KRPBindTrimming=1EdgeCut KRPBindPageSize=SRA3 "
                  "KRPBindCutPositionFore=4mm",
                  {"PBRE=LEFT", "MSDA=ROTSEFLAND", "PBTC=FACE", "PBBP=SA3", "PBTP=CUSTOM",
                   "PBTW=-40", "PBTH=0", "ISXO=-20", "ISXT=20", "PBCI=OFF"},
                  "ppd/perfect_binding.ppd"},
        BlockCase{"PPDWithoutTheSize",
                  "KRPBindPosition=BindRight KRPBindTrimming=3EdgeCutMinimum KRPBindPageSize=A3",
                  {"PBRE=RIGHT", "MSDA=ROTLEFPORT", "PBTC=FULLBLEED", "PBBP=A3", "PBTP=CUSTOM",
                   "PBTW=-70", "PBTH=-140", "PBCI=OFF"},
                  "ppd/bare.ppd"}),
    [](const ::testing::TestParamInfo<BlockCase>& info) { return info.param.name; });

// Special-page lines: the last ones before the language switch. View
// records give the size number at character 6 (cover), 8 (insertion) or 4
// (exception); "33" is a custom size.
class SpecialPagesJob : public ::testing::TestWithParam<BlockCase> {};
TEST_P(SpecialPagesJob, HeaderBlock) {
  const BlockCase& c = GetParam();
  auto start = std::chrono::steady_clock::now();
  std::string header = Header(c.options, c.ppd);
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(20));
  std::string tail = Lines(c.lines) + kEnterPS;
  ASSERT_GE(header.size(), tail.size()) << Visible(header);
  EXPECT_TRUE(SameStream(tail, header.substr(header.size() - tail.size())));
  for (const char* attribute : {"EFCV=", "EBCV=", "EMCT=", "EMCP=", "EIST=", "EOVS="}) {
    EXPECT_EQ(Count(header, attribute), Count(tail, attribute)) << attribute;
  }
}

INSTANTIATE_TEST_SUITE_P(
    Jobs, SpecialPagesJob,
    ::testing::Values(
        BlockCase{"OneFrontCover",
                  kSP + "CoverCountTicket=1" + kSP + "CommandTicket_0=0,0,0,5" + kSP +
                      "CoverValueTicket_0=0,0,print-front",
                  {"EFCV=PRINTFRONT", "EMCT=TRAYT1", "EBCV=NONE"},
                  "ppd/perfect_binding.ppd"},
        BlockCase{"OneBackCover",
                  kSP + "CoverCountTicket=1" + kSP + "CommandTicket_0=0,1,0,33" + kSP +
                      "CoverValueTicket_0=1,1,print-back,ThickPaper,yellow,2100,2970",
                  {"EFCV=NONE", "EBCV=PRINTBACK", "EMCP=CUSTOM", "EMCW=2100", "EMCH=2970",
                   "EMCQ=ThickPaper", "EMCC=YELLOW"},
                  "ppd/perfect_binding.ppd"},
        BlockCase{"TwoCovers",
                  kSP + "CoverCountTicket=2" + kSP + "CommandTicket_0=0,0,0,5" + kSP +
                      "CommandTicket_1=0,1,0,12" + kSP + "CoverValueTicket_0=0,0,print-both" + kSP +
                      "CoverValueTicket_1=1,1,print-front,Plain,custom_2,2159,2794",
                  {"EFCV=PRINTBOTH", "EMCT=TRAYT1", "EBCV=PRINTFRONT", "EMCP=FORMALSIZE",
                   "EMCW=2159", "EMCH=2794", "EMCQ=Plain", "EMCC=CUSTOM2"},
                  "ppd/perfect_binding.ppd"},
        BlockCase{"InsertionWithMedia",
                  kSP + "InsertionCountTicket=1" + kSP + "CommandTicket_0=1,0,0,0,33" + kSP +
                      "InsertionValueTicket_0=1,4,2,orange,1000,1500,Recycled",
                  {"EIST=4", "EMCP=CUSTOM", "EMCW=1000", "EMCH=1500", "EMCQ=Recycled",
                   "EMCC=ORANGE", "EISC=2"},
                  "ppd/perfect_binding.ppd"},
        BlockCase{"ExceptionWithEveryLine",
                  kSP + "ExceptionCountTicket=1" + kSP + "CommandTicket_0=2,0,7" + kSP +
                      "ExceptionValueTicket_0=0,1,0,2,5,two-sided-short-edge,Plain,no-color,"
                      "2970,4200",
                  {"EOVS=2", "EMCP=FORMALSIZE", "EMCW=2970", "EMCH=4200", "EMCQ=Plain",
                   "EMCC=CLEAR", "EMDP=TUMBLE", "EOVE=5"},
                  "ppd/perfect_binding.ppd"},
        BlockCase{
            "UnmappedColours",
            kSP + "CoverCountTicket=1" + kSP + "InsertionCountTicket=1" + kSP +
                "CommandTicket_0=0,0,0,5" + kSP + "CommandTicket_1=1,0,0,0,5" + kSP +
                "CoverValueTicket_0=0,1,print-front,Plain,Blue,10,20" + kSP +
                "InsertionValueTicket_0=1,1,1,purple,10,20,Plain",
            {"EFCV=PRINTFRONT", "EMCP=FORMALSIZE", "EMCW=10", "EMCH=20", "EMCQ=Plain", "EBCV=NONE",
             "EIST=1", "EMCP=FORMALSIZE", "EMCW=10", "EMCH=20", "EMCQ=Plain", "EISC=1"},
            "ppd/perfect_binding.ppd"},
        BlockCase{"AbsentCounts",
                  kSP + "CommandTicket_0=0,0,0,5" + kSP + "CoverValueTicket_0=0,0,print-front",
                  {},
                  "ppd/perfect_binding.ppd"},
        BlockCase{"NegativeCount",
                  kSP + "CoverCountTicket=-1" + kSP + "ExceptionCountTicket=1" + kSP +
                      "CommandTicket_0=2,0,33" + kSP + "CoverValueTicket_0=0,0,print-front" + kSP +
                      "ExceptionValueTicket_0=0,0,0,1,1,one-sided,Plain,white,1,2",
                  {"EOVS=1", "EMCP=CUSTOM", "EMCW=1", "EMCH=2", "EMCQ=Plain", "EMCC=WHITE",
                   "EMDP=SIMPLEX", "EOVE=1"},
                  "ppd/perfect_binding.ppd"},
        BlockCase{"CountsOverflowingTheSum",
                  kSP + "CoverCountTicket=2147483647" + kSP + "InsertionCountTicket=1" + kSP +
                      "CommandTicket_0=0,0,0,5" + kSP + "CoverValueTicket_0=0,0,print-front",
                  {},
                  "ppd/perfect_binding.ppd"},
        // Near the 32-bit limit: the far record is found without probing
        // every index before it.
        BlockCase{"HugeCount",
                  kSP + "CoverCountTicket=2147483647" + kSP + "CommandTicket_0=0,0,0,33" + kSP +
                      "CoverValueTicket_0=0,0,print-front" + kSP +
                      "CoverValueTicket_2147483646=1,0,print-back",
                  {"EFCV=PRINTFRONT", "EMCT=TRAYT1", "EBCV=PRINTBACK", "EMCT=TRAYT1"},
                  "ppd/perfect_binding.ppd"}),
    [](const ::testing::TestParamInfo<BlockCase>& info) { return info.param.name; });

// Both modules in one job: binding first, special pages last.
TEST(BindingAndSpecialPages, HeaderOrder) {
  std::string header = Header("KRPBindPosition=BindLeft KRPBindTrimming=None KRPBindPageSize=A4" +
                              kSP + "CoverCountTicket=1" + kSP + "CommandTicket_0=0,0,0,5" + kSP +
                              "CoverValueTicket_0=0,0,print-front");
  std::string binding =
      Lines({"PBRE=LEFT", "MSDA=ROTSEFLAND", "PBTC=OFF", "PBBP=A4", "PBTP=A4", "PBCI=OFF"});
  std::string pages = Lines({"EFCV=PRINTFRONT", "EMCT=TRAYT1", "EBCV=NONE"}) + kEnterPS;
  size_t bindingAt = header.find(binding);
  ASSERT_NE(bindingAt, std::string::npos) << Visible(header);
  ASSERT_GE(header.size(), pages.size());
  EXPECT_EQ(header.substr(header.size() - pages.size()), pages) << Visible(header);
  EXPECT_LE(bindingAt + binding.size(), header.size() - pages.size());
}

}  // namespace
