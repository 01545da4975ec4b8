#include "modules/special_pages/special_pages.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstring>
#include <ostream>
#include <string>
#include <vector>

#include "test_support.h"

namespace {

const std::string kSP = " com.korvanel.qd.jtz.printsettings.ZPIF";

std::string RunSpecialPages(const std::string& ticket) {
  FilterArguments args(ticket);
  SpecialPageInializeDescriptionTable();
  SpecialPageGetTicketFromPDE(args.argv);
  return CaptureStdout([&] { OutputZPJLCommandForSpecialPage(args.argv); });
}

struct HeaderCase {
  const char* name;
  std::string ticket;
  std::vector<std::string> lines;
};
void PrintTo(const HeaderCase& c, std::ostream* os) { *os << c.name; }

class SpecialPageHeader : public testing::TestWithParam<HeaderCase> {};
TEST_P(SpecialPageHeader, WritesTheseLines) {
  // Counts are untrusted: a huge one must not make the job wait.
  auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(RunSpecialPages(GetParam().ticket), Attrs(GetParam().lines));
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10));
}

// View records: kind, then the size number at character 6 (cover),
// 8 (insertion) or 4 (exception); "33" is a custom size.
INSTANTIATE_TEST_SUITE_P(
    Records, SpecialPageHeader,
    testing::Values(
        HeaderCase{"OneFrontCover",
                   kSP + "CoverCountTicket=1" + kSP + "CommandTicket_0=0,0,0,5" + kSP +
                       "CoverValueTicket_0=0,0,print-front",
                   {"EFCV=PRINTFRONT", "EMCT=TRAYT1", "EBCV=NONE"}},
        HeaderCase{"OneBackCover",
                   kSP + "CoverCountTicket=1" + kSP + "CommandTicket_0=0,1,0,33" + kSP +
                       "CoverValueTicket_0=1,1,print-back,ThickPaper,yellow,2100,2970",
                   {"EFCV=NONE", "EBCV=PRINTBACK", "EMCP=CUSTOM", "EMCW=2100", "EMCH=2970",
                    "EMCQ=ThickPaper", "EMCC=YELLOW"}},
        HeaderCase{"TwoCovers",
                   kSP + "CoverCountTicket=2" + kSP + "CommandTicket_0=0,0,0,5" + kSP +
                       "CommandTicket_1=0,1,0,12" + kSP + "CoverValueTicket_0=0,0,print-both" + kSP +
                       "CoverValueTicket_1=1,1,print-front,Plain,custom_2,2159,2794",
                   {"EFCV=PRINTBOTH", "EMCT=TRAYT1", "EBCV=PRINTFRONT", "EMCP=FORMALSIZE",
                    "EMCW=2159", "EMCH=2794", "EMCQ=Plain", "EMCC=CUSTOM2"}},
        HeaderCase{"InsertionWithMedia",
                   kSP + "InsertionCountTicket=1" + kSP + "CommandTicket_0=1,0,0,0,33" + kSP +
                       "InsertionValueTicket_0=1,4,2,orange,1000,1500,Recycled",
                   {"EIST=4", "EMCP=CUSTOM", "EMCW=1000", "EMCH=1500", "EMCQ=Recycled",
                    "EMCC=ORANGE", "EISC=2"}},
        HeaderCase{"ExceptionWithEveryLine",
                   kSP + "ExceptionCountTicket=1" + kSP + "CommandTicket_0=2,0,7" + kSP +
                       "ExceptionValueTicket_0=0,1,0,2,5,two-sided-short-edge,Plain,no-color,"
                       "2970,4200",
                   {"EOVS=2", "EMCP=FORMALSIZE", "EMCW=2970", "EMCH=4200", "EMCQ=Plain",
                    "EMCC=CLEAR", "EMDP=TUMBLE", "EOVE=5"}},
        HeaderCase{
            "UnmappedColours",
            kSP + "CoverCountTicket=1" + kSP + "InsertionCountTicket=1" + kSP +
                "CommandTicket_0=0,0,0,5" + kSP + "CommandTicket_1=1,0,0,0,5" + kSP +
                "CoverValueTicket_0=0,1,print-front,Plain,Blue,10,20" + kSP +
                "InsertionValueTicket_0=1,1,1,purple,10,20,Plain",
            {"EFCV=PRINTFRONT", "EMCP=FORMALSIZE", "EMCW=10", "EMCH=20", "EMCQ=Plain", "EBCV=NONE",
             "EIST=1", "EMCP=FORMALSIZE", "EMCW=10", "EMCH=20", "EMCQ=Plain", "EISC=1"}},
        HeaderCase{"AbsentCounts",
                   kSP + "CommandTicket_0=0,0,0,5" + kSP + "CoverValueTicket_0=0,0,print-front",
                   {}},
        HeaderCase{"NegativeCount",
                   kSP + "CoverCountTicket=-1" + kSP + "ExceptionCountTicket=1" + kSP +
                       "CommandTicket_0=2,0,33" + kSP + "CoverValueTicket_0=0,0,print-front" + kSP +
                       "ExceptionValueTicket_0=0,0,0,1,1,one-sided,Plain,white,1,2",
                   {"EOVS=1", "EMCP=CUSTOM", "EMCW=1", "EMCH=2", "EMCQ=Plain", "EMCC=WHITE",
                    "EMDP=SIMPLEX", "EOVE=1"}},
        HeaderCase{"CountsOverflowingTheSum",
                   kSP + "CoverCountTicket=2147483647" + kSP + "InsertionCountTicket=1" + kSP +
                       "CommandTicket_0=0,0,0,5" + kSP + "CoverValueTicket_0=0,0,print-front",
                   {}},
        // Near the 32-bit limit: the far record is found without probing
        // every index before it.
        HeaderCase{"HugeCount",
                   kSP + "CoverCountTicket=2147483647" + kSP + "CommandTicket_0=0,0,0,33" + kSP +
                       "CoverValueTicket_0=0,0,print-front" + kSP +
                       "CoverValueTicket_2147483646=1,0,print-back",
                   {"EFCV=PRINTFRONT", "EMCT=TRAYT1", "EBCV=PRINTBACK", "EMCT=TRAYT1"}},
        HeaderCase{
            "UnmappedCoverType",
            kSP + "CoverCountTicket=1" + kSP + "CommandTicket_0=0,0,0,4" + kSP +
                "CoverValueTicket_0=0,1,print-side,Plain,red,10,20",
            {"EMCP=FORMALSIZE", "EMCW=10", "EMCH=20", "EMCQ=Plain", "EMCC=RED", "EBCV=NONE"}},
        HeaderCase{"NeitherFrontNorBack",
                   kSP + "CoverCountTicket=1" + kSP + "CoverValueTicket_0=2,0,print-front",
                   {}},
        HeaderCase{"InsertionFromTheTray",
                   kSP + "InsertionCountTicket=1" + kSP + "InsertionValueTicket_0=0,3,1",
                   {"EIST=3", "EMCT=TRAYT1", "EISC=1"}},
        HeaderCase{"UnmappedSides",
                   kSP + "ExceptionCountTicket=1" + kSP + "CommandTicket_0=2,0,5" + kSP +
                       "ExceptionValueTicket_0=a,b,c,1,2,Two-Sided,Plain,Pink,10,20",
                   {"EOVS=1", "EMCP=FORMALSIZE", "EMCW=10", "EMCH=20", "EMCQ=Plain", "EOVE=2"}},
        // A short record repeats its last field instead of reading past its end.
        HeaderCase{"ShortExceptionRecord",
                   kSP + "ExceptionCountTicket=1" + kSP + "ExceptionValueTicket_0=a,b,c,4",
                   {"EOVS=4", "EMCP=FORMALSIZE", "EMCW=4", "EMCH=4", "EMCQ=4", "EOVE=4"}},
        // Views of every kind interleaved: each kind takes its own, in order.
        HeaderCase{"ViewsPairWithinTheirKind",
                   kSP + "CoverCountTicket=2" + kSP + "InsertionCountTicket=1" + kSP +
                       "ExceptionCountTicket=1" + kSP + "CommandTicket_0=1,0,0,0,33" + kSP +
                       "CommandTicket_1=0,0,0,7" + kSP + "CommandTicket_2=2,0,33" + kSP +
                       "CommandTicket_3=0,0,0,33" + kSP + "CoverValueTicket_0=0,1,,P,white,1,2" +
                       kSP + "CoverValueTicket_1=1,1,,Q,red,3,4" + kSP +
                       "InsertionValueTicket_0=1,9,1,gray,5,6,R" + kSP +
                       "ExceptionValueTicket_0=x,y,z,1,1,,S,green,7,8",
                   {"EMCP=FORMALSIZE", "EMCW=1", "EMCH=2", "EMCQ=P",    "EMCC=WHITE", "EMCP=CUSTOM",
                    "EMCW=3",          "EMCH=4", "EMCQ=Q", "EMCC=RED",  "EIST=9",     "EMCP=CUSTOM",
                    "EMCW=5",          "EMCH=6", "EMCQ=R", "EMCC=GRAY", "EISC=1",     "EOVS=1",
                    "EMCP=CUSTOM",     "EMCW=7", "EMCH=8", "EMCQ=S",    "EMCC=GREEN", "EOVE=1"}},
        // Value record 1 takes the second cover view even when record 0 is missing.
        HeaderCase{"MissingValueRecordKeepsThePairing",
                   kSP + "CoverCountTicket=2" + kSP + "CommandTicket_0=0,0,0,33" + kSP +
                       "CommandTicket_1=0,0,0,5" + kSP + "CoverValueTicket_1=1,1,,Q,red,3,4",
                   {"EMCP=FORMALSIZE", "EMCW=3", "EMCH=4", "EMCQ=Q", "EMCC=RED"}},
        // Keys match without regard to case, as the option lookup does; "01"
        // is not how an index is written.
        HeaderCase{"IndexSpelling",
                   kSP + "CoverCountTicket=9" + kSP + "CoverValueTicket_01=0,0,print-both" +
                       " com.korvanel.qd.jtz.printsettings.zpifcovervalueticket_7=1,0,print-none",
                   {"EBCV=PRINTNONE", "EMCT=TRAYT1"}}),
    [](const testing::TestParamInfo<HeaderCase>& info) { return info.param.name; });

TEST(SpecialPages, GetOneValue) {
  const std::string longField(100, 'q');
  struct {
    std::string text, field;
    int step;
  } cases[] = {
      {"abc,def", "abc", 4},
      {"abc", "abc", 0},
      {"", "", 0},
      {",x", "", 1},
      // Cut to the buffer, but the step still reaches the next field.
      {longField + ",next", longField.substr(0, kSPFieldSize - 1), 101},
      {longField, longField.substr(0, kSPFieldSize - 1), 0},
  };
  for (const auto& c : cases) {
    char out[kSPFieldSize + 8];
    std::memset(out, 'x', sizeof out);
    EXPECT_EQ(getOneValue(c.text.c_str(), out, kSPFieldSize), c.step) << c.text;
    EXPECT_EQ(std::string(out), c.field) << c.text;
    EXPECT_EQ(out[kSPFieldSize], 'x') << "wrote past the field: " << c.text;
  }
  char out[kSPFieldSize];
  EXPECT_EQ(getOneValue(nullptr, out, sizeof out), -1);
  EXPECT_EQ(getOneValue("a,b", nullptr, sizeof out), -1);
}

}  // namespace
