#include "modules/special_pages/special_pages.h"

#include <gtest/gtest.h>

#include <cstring>
#include <ostream>
#include <string>
#include <vector>

namespace {

const std::string kSP = " com.korvanel.qd.jtz.printsettings.ZPIF";

std::string RunSpecialPages(const std::string& ticket) {
  std::string options = ticket;
  char name[] = "pstozpjl", job[] = "1", user[] = "u", title[] = "t", copies[] = "1";
  char* argv[] = {name, job, user, title, copies, options.data(), nullptr};
  SpecialPageInializeDescriptionTable();
  SpecialPageGetTicketFromPDE(argv);
  testing::internal::CaptureStdout();
  OutputZPJLCommandForSpecialPage(argv);
  return testing::internal::GetCapturedStdout();
}

std::string Lines(const std::vector<std::string>& attributes) {
  std::string text;
  for (const std::string& attribute : attributes)
    text += "@PJL SET JOBATTR=\"@" + attribute + "\"\n";
  return text;
}

struct HeaderCase {
  const char* name;
  std::string ticket;
  std::vector<std::string> lines;
};
void PrintTo(const HeaderCase& c, std::ostream* os) { *os << c.name; }

class SpecialPageHeader : public testing::TestWithParam<HeaderCase> {};
TEST_P(SpecialPageHeader, WritesTheseLines) {
  EXPECT_EQ(RunSpecialPages(GetParam().ticket), Lines(GetParam().lines));
}

// View records: kind, then the size number at character 6 (cover),
// 8 (insertion) or 4 (exception); "33" is a custom size.
INSTANTIATE_TEST_SUITE_P(
    Records, SpecialPageHeader,
    testing::Values(
        HeaderCase{
            "UnmappedCoverType",
            kSP + "CoverCountTicket=1" + kSP + "CommandTicket_0=0,0,0,4" + kSP +
                "CoverValueTicket_0=0,1,print-side,Plain,red,10,20",
            {"EMCP=FORMALSIZE", "EMCW=10", "EMCH=20", "EMCQ=Plain", "EMCC=RED", "EBCV=NONE"}},
        HeaderCase{"UnknownMediaSourceWritesNoMediaLines",
                   kSP + "CoverCountTicket=1" + kSP + "CoverValueTicket_0=0,2,print-front,P,red",
                   {"EFCV=PRINTFRONT", "EBCV=NONE"}},
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
        HeaderCase{"RecordsBeyondTheCountAreIgnored",
                   kSP + "CoverCountTicket=1" + kSP + "CoverValueTicket_0=0,0,print-front" + kSP +
                       "CoverValueTicket_1=1,0,print-back",
                   {"EFCV=PRINTFRONT", "EMCT=TRAYT1", "EBCV=NONE"}},
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

TEST(SpecialPages, ValueMaps) {
  struct {
    const char* name;
    const char* const* map;
    int32_t count;
    int result;
    const char* value;
  } cases[] = {
      {"print-both", CoverTypeZPJLComm, CoverTypeZPJLCommValueCount, 0, "PRINTBOTH"},
      {"print-both", CoverTypeZPJLComm, 6, -1, ""},  // beyond the given count
      {"PRINTFRONT", CoverTypeZPJLComm, CoverTypeZPJLCommValueCount, -1, ""},  // a value
      {"other", MediaColorZPJLComm, MediaColorZPJLCommValueCount, 0, "OTHER"},
      {"custom_5", MediaColorZPJLComm, MediaColorZPJLCommValueCount, 0, "CUSTOM5"},
      {"two-sided-short-edge", SidesZPJLComm, SidesZPJLCommValueCount, 0, "TUMBLE"},
      {"one-sided", SidesZPJLComm, 0, -1, ""},
      {"one-sided", SidesZPJLComm, -3, -1, ""},
  };
  for (const auto& c : cases) {
    char out[kSPFieldSize] = {};
    EXPECT_EQ(getSpecialPageZPJLValue(c.name, c.map, c.count, out, sizeof out), c.result)
        << c.name << " " << c.count;
    EXPECT_STREQ(out, c.value) << c.name << " " << c.count;
  }
}

TEST(SpecialPages, MediaLinesOfACover) {
  struct {
    const char* source;
    int32_t position;
    const char* record;
    const char* sizeNumber;
    std::vector<std::string> lines;
    const char* colour;
  } cases[] = {
      {"0", 0, "", "33", {"EMCT=TRAYT1"}, ""},
      {"1",
       4,
       "0,1,Plain,red,10,20",
       "33",
       {"EMCP=CUSTOM", "EMCW=10", "EMCH=20", "EMCQ=Plain", "EMCC=RED"},
       "RED"},
      // A position outside the record starts at its beginning.
      {"1", 99, "a,b,c,d", "333", {"EMCP=FORMALSIZE", "EMCW=c", "EMCH=d", "EMCQ=a"}, ""},
      {"2", 0, "a,b,c,d", "33", {}, ""},
  };
  for (const auto& c : cases) {
    char colour[kSPFieldSize];
    std::memset(colour, 'x', sizeof colour);
    testing::internal::CaptureStdout();
    OutputSPMediaSizeAndColor(c.source, c.position, c.record, c.sizeNumber, colour);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), Lines(c.lines)) << c.record;
    EXPECT_STREQ(colour, c.colour) << c.record;
  }
}

}  // namespace
