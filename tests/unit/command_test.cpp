#include "engine/command.h"

#include <gtest/gtest.h>

#include <string>

namespace {

const int32_t kFive = 5;
const int32_t kMinus = -17;
const char kEmpty[] = "";
const char kBob[] = "bob";

struct ExpansionCase {
  const char* name;
  const char* format;
  std::vector<ParamPointer> params;
  std::string expected;
};
// Named, not dumped byte by byte (the strings' unused bytes are undefined).
void PrintTo(const ExpansionCase& c, std::ostream* os) { *os << c.name; }

class ExpansionTest : public ::testing::TestWithParam<ExpansionCase> {};

TEST_P(ExpansionTest, Expands) {
  const ExpansionCase& c = GetParam();
  ParamTable table = {static_cast<int32_t>(c.params.size()), c.params.data()};
  char out[kCommandBufferSize];
  BuildPrintComand(c.format, &table, out, sizeof out);
  EXPECT_EQ(std::string(out), c.expected);
}

INSTANTIATE_TEST_SUITE_P(
    Formats, ExpansionTest,
    ::testing::Values(
        ExpansionCase{"UniversalExit", "%c%c-12345X", {&CTRLSym_ESC, &CTRLSym_PERCENTAGE},
                      "\x1b%-12345X"},
        ExpansionCase{"CrLfLine", "@PJL JOB MODE=PRINTER%c%c", {&CTRLSym_CR, &CTRLSym_LF},
                      "@PJL JOB MODE=PRINTER\r\n"},
        ExpansionCase{"EmptyStringDropsLiteralAndRest",
                      "@PJL SET JOBATTR=%c@JOAU=%s%c%c%c",
                      {&CTRLSym_DOUBLE, kEmpty, &CTRLSym_DOUBLE, &CTRLSym_CR, &CTRLSym_LF},
                      "@PJL SET JOBATTR=\""},
        ExpansionCase{"StringValue", "@PJL SET JOBATTR=%c@JOAU=%s%c%c",
                      {&CTRLSym_DOUBLE, kBob, &CTRLSym_DOUBLE, &CTRLSym_LF},
                      "@PJL SET JOBATTR=\"@JOAU=bob\"\n"},
        ExpansionCase{"DoublePercentBeforeSymbol", "100%%d", {&kFive}, "100%5"},
        ExpansionCase{"NegativeDecimal", "x=%d;", {&kMinus}, "x=-17;"},
        ExpansionCase{"UnknownSymbolIsLiteral", "a%xb%d", {&kFive}, "a%xb5"},
        ExpansionCase{"TrailingPercentIsLiteral", "%d%", {&kFive}, "5%"},
        ExpansionCase{"SymbolAtEndStopsScan", "v=%d", {&kFive}, "v=5"},
        // Fewer parameters than symbols: the line stops where they run out.
        ExpansionCase{"TooFewParameters", "a%db%dc", {&kFive}, "a5"},
        ExpansionCase{"MoreParametersThanSymbols", "%c%c-12345X@PJL EOJ\n",
                      {&CTRLSym_ESC, &CTRLSym_PERCENTAGE, &CTRLSym_CR, &CTRLSym_LF},
                      "\x1b%-12345X@PJL EOJ\n"}),
    [](const ::testing::TestParamInfo<ExpansionCase>& info) { return info.param.name; });

TEST(BuildPrintComand, NullParamTableCopiesFormatWithoutSymbols) {
  char out[kCommandBufferSize];
  BuildPrintComand("plain text\n", nullptr, out, sizeof out);
  EXPECT_STREQ(out, "plain text\n");
  BuildPrintComand("before %d after", nullptr, out, sizeof out);
  EXPECT_STREQ(out, "");
  BuildPrintComand("", nullptr, out, sizeof out);
  EXPECT_STREQ(out, "");
}

TEST(BuildPrintComand, OutputIsCutAtOutSize) {
  const ParamPointer params[] = {kBob};
  ParamTable table = {1, params};
  char out[kCommandBufferSize];
  BuildPrintComand("0123456789%s", &table, out, 8);
  EXPECT_STREQ(out, "0123456");
}

TEST(BuildPrintComand, LongFormatIsCutToWorkBuffer) {
  std::string format(5000, 'a');
  char out[kCommandBufferSize];
  BuildPrintComand(format.c_str(), nullptr, out, sizeof out);
  EXPECT_EQ(std::string(out), std::string(kCommandBufferSize - 1, 'a'));
}

TEST(ControlSymbols, RecognisesOnlyTheThree) {
  EXPECT_EQ(IsCtrlSym("%d"), 1);
  EXPECT_EQ(IsCtrlSym("%c"), 1);
  EXPECT_EQ(IsCtrlSym("%s"), 1);
  EXPECT_EQ(IsCtrlSym("%%"), 0);
  EXPECT_EQ(IsCtrlSym("%x"), 0);
  EXPECT_EQ(IsCtrlSym("%d "), 0);
}

TEST(ControlSymbols, NextSymbolSkipsNonSymbols) {
  const char text[] = "a%%b%xc%%d";
  const char* found = GetNextCtrlSym(text);
  ASSERT_NE(found, nullptr);
  EXPECT_EQ(found - text, 8);
  EXPECT_EQ(GetNextCtrlSym("no symbols %"), nullptr);
}

TEST(ControlSymbols, ConversionLengths) {
  char buffer[16];
  EXPECT_EQ(getCtrlSym("%d", &kMinus, buffer, sizeof buffer), 3);
  EXPECT_STREQ(buffer, "-17");
  EXPECT_EQ(getCtrlSym("%s", kEmpty, buffer, sizeof buffer), 0);
  EXPECT_EQ(getCtrlSym("%q", kBob, buffer, sizeof buffer), 0);
  EXPECT_EQ(getCtrlSym("%s", "0123456789abcdefXYZ", buffer, sizeof buffer), 15);
}

}  // namespace
