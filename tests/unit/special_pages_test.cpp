#include "modules/special_pages/special_pages.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstring>
#include <ostream>
#include <string>
#include <vector>

namespace {

const std::string kPrefix = "com.korvanel.qd.jtz.printsettings.";

std::string Key(const std::string& name) { return kPrefix + name; }

// Ticket text for the three counts (empty: key absent) and the records.
struct Ticket {
  std::string covers, insertions, exceptions;
  std::vector<std::string> views, coverValues, insertionValues, exceptionValues;
  std::string extra;

  std::string Text() const {
    std::string text = extra;
    auto add = [&text](const std::string& key, const std::string& value) {
      text += " " + Key(key) + "=" + value;
    };
    if (!covers.empty()) add("ZPIFCoverCountTicket", covers);
    if (!insertions.empty()) add("ZPIFInsertionCountTicket", insertions);
    if (!exceptions.empty()) add("ZPIFExceptionCountTicket", exceptions);
    auto addAll = [&add](const char* prefix, const std::vector<std::string>& records) {
      for (size_t i = 0; i < records.size(); ++i) {
        if (!records[i].empty()) add(prefix + std::to_string(i), records[i]);
      }
    };
    addAll("ZPIFCommandTicket_", views);
    addAll("ZPIFCoverValueTicket_", coverValues);
    addAll("ZPIFInsertionValueTicket_", insertionValues);
    addAll("ZPIFExceptionValueTicket_", exceptionValues);
    return text;
  }
};

std::string RunSpecialPages(const std::string& ticket) {
  std::string options = ticket;
  char name[] = "pstozpjl", job[] = "1", user[] = "user", title[] = "title", copies[] = "1";
  char* argv[] = {name, job, user, title, copies, options.data(), nullptr};
  SpecialPageInializeDescriptionTable();
  SpecialPageGetTicketFromPDE(argv);
  testing::internal::CaptureStdout();
  OutputZPJLCommandForSpecialPage(argv);
  return testing::internal::GetCapturedStdout();
}

std::string Lines(const std::vector<std::string>& attributes) {
  std::string text;
  for (const std::string& attribute : attributes) {
    text += "@PJL SET JOBATTR=\"@" + attribute + "\"\n";
  }
  return text;
}

struct HeaderCase {
  const char* name;
  Ticket ticket;
  std::vector<std::string> lines;
};

void PrintTo(const HeaderCase& c, std::ostream* os) { *os << c.name; }

class SpecialPageHeader : public testing::TestWithParam<HeaderCase> {};

TEST_P(SpecialPageHeader, WritesTheseLines) {
  const HeaderCase& c = GetParam();
  EXPECT_EQ(RunSpecialPages(c.ticket.Text()), Lines(c.lines));
}

// View records: the size number starts at character 6 for a cover, 8 for an
// insertion and 4 for an exception; "33" is a custom size.
INSTANTIATE_TEST_SUITE_P(
    Covers, SpecialPageHeader,
    testing::Values(
        HeaderCase{"OneFrontCoverFromTheTray",
                   {"1", "", "", {"0,0,0,5"}, {"0,0,print-front"}, {}, {}, ""},
                   {"EFCV=PRINTFRONT", "EMCT=TRAYT1", "EBCV=NONE"}},
        HeaderCase{"OneBackCoverWithMedia",
                   {"1", "", "", {"0,0,0,33"}, {"1,1,print-back,Thick,blue,2100,2970"}, {}, {},
                    ""},
                   {"EFCV=NONE", "EBCV=PRINTBACK", "EMCP=CUSTOM", "EMCW=2100", "EMCH=2970",
                    "EMCQ=Thick", "EMCC=BLUE"}},
        HeaderCase{"TwoCoversWriteNoNone",
                   {"2", "", "", {"0,0,0,33", "0,0,0,7"},
                    {"0,1,print-both,Plain,no-color,100,200", "1,0,print-none"}, {}, {}, ""},
                   {"EFCV=PRINTBOTH", "EMCP=CUSTOM", "EMCW=100", "EMCH=200", "EMCQ=Plain",
                    "EMCC=CLEAR", "EBCV=PRINTNONE", "EMCT=TRAYT1"}},
        HeaderCase{"UnmappedCoverTypeAndColour",
                   {"1", "", "", {"0,0,0,4"}, {"0,1,print-side,Plain,Blue,10,20"}, {}, {}, ""},
                   {"EMCP=FORMALSIZE", "EMCW=10", "EMCH=20", "EMCQ=Plain", "EBCV=NONE"}},
        HeaderCase{"UnknownMediaSourceWritesNoMediaLines",
                   {"1", "", "", {"0,0,0,4"}, {"0,2,print-front,Plain,red,1,2"}, {}, {}, ""},
                   {"EFCV=PRINTFRONT", "EBCV=NONE"}},
        HeaderCase{"NeitherFrontNorBackWritesNothing",
                   {"1", "", "", {"0,0,0,4"}, {"2,0,print-front"}, {}, {}, ""},
                   {}},
        HeaderCase{"MissingViewRecordIsFormalSize",
                   {"1", "", "", {}, {"0,1,print-front,Plain,white,1,2"}, {}, {}, ""},
                   {"EFCV=PRINTFRONT", "EMCP=FORMALSIZE", "EMCW=1", "EMCH=2", "EMCQ=Plain",
                    "EMCC=WHITE", "EBCV=NONE"}}),
    [](const testing::TestParamInfo<HeaderCase>& info) { return info.param.name; });

INSTANTIATE_TEST_SUITE_P(
    InsertionsAndExceptions, SpecialPageHeader,
    testing::Values(
        HeaderCase{"InsertionWithMedia",
                   {"", "1", "", {"1,0,0,0,33"}, {}, {"1,5,2,no-color,2100,2970,Thick"}, {}, ""},
                   {"EIST=5", "EMCP=CUSTOM", "EMCW=2100", "EMCH=2970", "EMCQ=Thick",
                    "EMCC=CLEAR", "EISC=2"}},
        HeaderCase{"InsertionFromTheTray",
                   {"", "1", "", {"1,0,0,0,12"}, {}, {"0,3,1"}, {}, ""},
                   {"EIST=3", "EMCT=TRAYT1", "EISC=1"}},
        HeaderCase{"ExceptionWithEveryLine",
                   {"", "", "1", {"2,0,33"}, {}, {},
                    {"a,b,c,3,7,two-sided-short-edge,Plain,pink,2100,2970"}, ""},
                   {"EOVS=3", "EMCP=CUSTOM", "EMCW=2100", "EMCH=2970", "EMCQ=Plain", "EMCC=PINK",
                    "EMDP=TUMBLE", "EOVE=7"}},
        HeaderCase{"ExceptionWithUnmappedColourAndSides",
                   {"", "", "1", {"2,0,5"}, {}, {},
                    {"a,b,c,1,2,Two-Sided,Plain,Pink,10,20"}, ""},
                   {"EOVS=1", "EMCP=FORMALSIZE", "EMCW=10", "EMCH=20", "EMCQ=Plain", "EOVE=2"}},
        // A short record repeats its last field instead of reading past its end.
        HeaderCase{"ShortExceptionRecord",
                   {"", "", "1", {"2,0,5"}, {}, {}, {"a,b,c,4"}, ""},
                   {"EOVS=4", "EMCP=FORMALSIZE", "EMCW=4", "EMCH=4", "EMCQ=4", "EOVE=4"}},
        // Views of every kind interleaved: each kind takes its own in order.
        HeaderCase{"ViewsPairWithinTheirKind",
                   {"2", "1", "1",
                    {"1,0,0,0,33", "0,0,0,7", "2,0,33", "0,0,0,33"},
                    {"0,1,print-front,P,white,1,2", "1,1,print-back,Q,red,3,4"},
                    {"1,9,1,gray,5,6,R"},
                    {"x,y,z,1,1,one-sided,S,green,7,8"},
                    ""},
                   {"EFCV=PRINTFRONT", "EMCP=FORMALSIZE", "EMCW=1", "EMCH=2", "EMCQ=P",
                    "EMCC=WHITE", "EBCV=PRINTBACK", "EMCP=CUSTOM", "EMCW=3", "EMCH=4", "EMCQ=Q",
                    "EMCC=RED", "EIST=9", "EMCP=CUSTOM", "EMCW=5", "EMCH=6", "EMCQ=R",
                    "EMCC=GRAY", "EISC=1", "EOVS=1", "EMCP=CUSTOM", "EMCW=7", "EMCH=8",
                    "EMCQ=S", "EMCC=GREEN", "EMDP=SIMPLEX", "EOVE=1"}},
        // Value record 1 pairs with the second cover view even when record 0
        // is missing.
        HeaderCase{"MissingValueRecordKeepsThePairing",
                   {"2", "", "", {"0,0,0,33", "0,0,0,5"}, {"", "1,1,print-back,Q,red,3,4"},
                    {}, {}, ""},
                   {"EBCV=PRINTBACK", "EMCP=FORMALSIZE", "EMCW=3", "EMCH=4", "EMCQ=Q",
                    "EMCC=RED"}}),
    [](const testing::TestParamInfo<HeaderCase>& info) { return info.param.name; });

INSTANTIATE_TEST_SUITE_P(
    Counts, SpecialPageHeader,
    testing::Values(
        HeaderCase{"AbsentCountsWriteNothing",
                   {"", "", "", {"0,0,0,5"}, {"0,0,print-front"}, {}, {}, ""},
                   {}},
        HeaderCase{"ZeroCountsWriteNothing",
                   {"0", "0", "0", {"0,0,0,5"}, {"0,0,print-front"}, {}, {}, ""},
                   {}},
        HeaderCase{"NegativeCountCountsAsZero",
                   {"-5", "1", "", {"1,0,0,0,1"}, {"0,0,print-front"}, {"0,3,1"}, {}, ""},
                   {"EIST=3", "EMCT=TRAYT1", "EISC=1"}},
        // Records beyond the count are not read, however many there are.
        HeaderCase{"RecordsBeyondTheCountAreIgnored",
                   {"1", "", "", {"0,0,0,5", "0,0,0,5"},
                    {"0,0,print-front", "1,0,print-back"}, {}, {}, ""},
                   {"EFCV=PRINTFRONT", "EMCT=TRAYT1", "EBCV=NONE"}},
        HeaderCase{"SumBeyondThirtyTwoBitsWritesNothing",
                   {"2000000000", "2000000000", "", {"0,0,0,5"}, {"0,0,print-front"},
                    {"0,3,1"}, {}, ""},
                   {}},
        // A huge count with a record at its far end: found without probing
        // every index in between. "01" is not how an index is written.
        HeaderCase{"HugeCountFindsFarRecords",
                   {"2147483647", "", "", {"0,0,0,33"}, {"0,0,print-front"}, {}, {},
                    Key("ZPIFCoverValueTicket_2147483646") + "=1,0,print-back " +
                        Key("ZPIFCoverValueTicket_01") + "=1,0,print-both " +
                        Key("zpifcovervalueticket_7") + "=1,0,print-none"},
                   {"EFCV=PRINTFRONT", "EMCT=TRAYT1", "EBCV=PRINTNONE", "EMCT=TRAYT1",
                    "EBCV=PRINTBACK", "EMCT=TRAYT1"}}),
    [](const testing::TestParamInfo<HeaderCase>& info) { return info.param.name; });

TEST(SpecialPages, HugeCountsFinishQuickly) {
  Ticket ticket{"2147483647", "-2147483648", "2147483647", {}, {}, {}, {}, ""};
  Ticket big{"1000000000", "1000000000", "147483647", {"0,0,0,33"}, {"0,0,print-front"}, {},
             {}, ""};
  auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(RunSpecialPages(ticket.Text()), "");
  EXPECT_EQ(RunSpecialPages(big.Text()), Lines({"EFCV=PRINTFRONT", "EMCT=TRAYT1"}));
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
}

TEST(SpecialPages, CountsAreReadAndCleared) {
  RunSpecialPages(Ticket{"3", "", "-7", {}, {}, {}, {}, ""}.Text());
  EXPECT_EQ(psOptionSpecialPage.coverCount, 3);
  EXPECT_EQ(psOptionSpecialPage.insertionCount, -1);
  EXPECT_EQ(psOptionSpecialPage.exceptionCount, -7);
  SpecialPageInializeDescriptionTable();
  EXPECT_EQ(psOptionSpecialPage.coverCount, 0);
  EXPECT_EQ(psOptionSpecialPage.insertionCount, 0);
  EXPECT_EQ(psOptionSpecialPage.exceptionCount, 0);
}

TEST(SpecialPages, GetOneValue) {
  const std::string longField(100, 'q');
  struct {
    std::string text;
    std::string field;
    int step;
  } cases[] = {
      {"abc,def", "abc", 4},
      {"abc", "abc", 0},
      {"", "", 0},
      {",x", "", 1},
      {"a,,b", "a", 2},
      // Cut to the buffer, but the step still reaches the next field.
      {longField + ",next", longField.substr(0, kSPFieldSize - 1), 101},
      {longField, longField.substr(0, kSPFieldSize - 1), 0},
  };
  for (const auto& c : cases) {
    char out[kSPFieldSize + 8];
    std::memset(out, 'x', sizeof out);
    EXPECT_EQ(getOneValue(c.text.c_str(), out, kSPFieldSize), c.step) << c.text;
    EXPECT_EQ(std::string(out), c.field) << c.text;
    EXPECT_EQ(out[kSPFieldSize], 'x') << "wrote past the field buffer: " << c.text;
  }
  char out[kSPFieldSize];
  EXPECT_EQ(getOneValue(nullptr, out, sizeof out), -1);
  EXPECT_EQ(getOneValue("a,b", nullptr, sizeof out), -1);
}

TEST(SpecialPages, ValueMaps) {
  EXPECT_EQ(CoverTypeZPJLCommValueCount, 8);
  EXPECT_EQ(MediaColorZPJLCommValueCount, 36);
  EXPECT_EQ(SidesZPJLCommValueCount, 6);

  struct {
    const char* name;
    const char* const* map;
    int32_t count;
    int result;
    const char* value;
  } cases[] = {
      {"print-none", CoverTypeZPJLComm, 8, 0, "PRINTNONE"},
      {"print-both", CoverTypeZPJLComm, 8, 0, "PRINTBOTH"},
      {"print-both", CoverTypeZPJLComm, 6, -1, ""},  // beyond the given count
      {"PRINTFRONT", CoverTypeZPJLComm, 8, -1, ""},   // values are not names
      {"white", MediaColorZPJLComm, 36, 0, "WHITE"},
      {"no-color", MediaColorZPJLComm, 36, 0, "CLEAR"},
      {"custom_3", MediaColorZPJLComm, 36, 0, "CUSTOM3"},
      {"other", MediaColorZPJLComm, 36, 0, "OTHER"},
      {"Blue", MediaColorZPJLComm, 36, -1, ""},
      {"one-sided", SidesZPJLComm, 6, 0, "SIMPLEX"},
      {"two-sided-long-edge", SidesZPJLComm, 6, 0, "DUPLEX"},
      {"two-sided-short-edge", SidesZPJLComm, 6, 0, "TUMBLE"},
      {"one-sided", SidesZPJLComm, 0, -1, ""},
      {"one-sided", SidesZPJLComm, -3, -1, ""},
      {"", SidesZPJLComm, 6, -1, ""},
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
      {"1", 4, "0,1,Plain,red,10,20", "33",
       {"EMCP=CUSTOM", "EMCW=10", "EMCH=20", "EMCQ=Plain", "EMCC=RED"}, "RED"},
      {"1", 4, "0,1,Plain,Red,10,20", "333",
       {"EMCP=FORMALSIZE", "EMCW=10", "EMCH=20", "EMCQ=Plain"}, ""},
      // A position outside the record starts at its beginning.
      {"1", 99, "a,b,c,d", "", {"EMCP=FORMALSIZE", "EMCW=c", "EMCH=d", "EMCQ=a"}, ""},
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
