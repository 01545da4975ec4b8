#include "modules/perfect_binding/perfect_binding.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <ostream>
#include <string>
#include <vector>

namespace {

const std::string kFixturePPD = std::string(ZPJL_FIXTURES) + "/ppd/perfect_binding.ppd";

// Reads `ticket` as the job options and returns the perfect-binding header lines.
std::string RunPerfectBind(const std::string& ticket, const std::string& ppd = kFixturePPD) {
  setenv("PPD", ppd.c_str(), 1);
  std::string options = ticket;
  char name[] = "pstozpjl", job[] = "1", user[] = "user", title[] = "title", copies[] = "1";
  char* argv[] = {name, job, user, title, copies, options.data(), nullptr};
  PBindGetTicketFromPDE(argv);
  testing::internal::CaptureStdout();
  OutputZPJLCommandforPerfectBind();
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
  std::string ticket;
  std::vector<std::string> lines;
};

void PrintTo(const HeaderCase& c, std::ostream* os) { *os << c.name; }

class PerfectBindHeader : public testing::TestWithParam<HeaderCase> {};

TEST_P(PerfectBindHeader, WritesTheseLines) {
  const HeaderCase& c = GetParam();
  EXPECT_EQ(RunPerfectBind(c.ticket), Lines(c.lines));
}

// A4 is 595 x 842 points: 2100 x 2970 tenths. A3 2970 x 4200, Letter
// 2160 x 2790, Tabloid 2790 x 4320, A5 (419.5 x 595.3) 1470 x 2100.
INSTANTIATE_TEST_SUITE_P(
    Trimming, PerfectBindHeader,
    testing::Values(
        HeaderCase{"RightThreeEdgeMinimumOnA4",
                   "KRPBindPosition=BindRight KRPBindTrimming=3EdgeCutMinimum KRPBindPageSize=A4 "
                   "KRPBindCutPageSize=A3 KRPBindCutPositionTop=2mm KRPBindCutPositionFore=3mm",
                   {"PBRE=RIGHT", "MSDA=ROTLEFPORT", "PBTC=FULLBLEED", "PBBP=A4", "PBTP=CUSTOM",
                    "PBTW=2030", "PBTH=2830", "PBCI=OFF"}},
        HeaderCase{"ForeEdgeMinimumCutsOnlyTheWidth",
                   "KRPBindPosition=BindLeft KRPBindTrimming=1EdgeCutMinimum KRPBindPageSize=A4 "
                   "KRPBindCutPositionTop=9mm",
                   {"PBRE=LEFT", "MSDA=ROTSEFLAND", "PBTC=FACE", "PBBP=A4", "PBTP=CUSTOM",
                    "PBTW=2030", "PBTH=2970", "PBCI=OFF"}},
        HeaderCase{"SpecifiedSizeCentresTheImageLeft",
                   "KRPBindPosition=BindLeft KRPBindTrimming=3EdgeSpecifySize KRPBindPageSize=A3 "
                   "KRPBindCutPageSize=A4 KRPBindCutPositionFore=5mm",
                   {"PBRE=LEFT", "MSDA=ROTSEFLAND", "PBTC=FULLBLEED", "PBBP=A3", "PBTP=A4",
                    "PBTW=2100", "PBTH=2970", "ISXO=-435", "ISXT=435", "PBCI=OFF"}},
        HeaderCase{"SpecifiedSizeCentresTheImageRight",
                   "KRPBindPosition=BindRight KRPBindTrimming=1EdgeSpecifySize KRPBindPageSize=A3 "
                   "KRPBindCutPageSize=A4",
                   {"PBRE=RIGHT", "MSDA=ROTLEFPORT", "PBTC=FACE", "PBBP=A3", "PBTP=A4",
                    "PBTW=2100", "PBTH=2970", "ISXO=435", "ISXT=-435", "PBCI=OFF"}},
        HeaderCase{"ForeEdgeCutIgnoresTheTopPosition",
                   "KRPBindPosition=BindTop KRPBindTrimming=1EdgeCut KRPBindPageSize=Letter "
                   "KRPBindCutPageSize=A4 KRPBindCutPositionFore=10mm KRPBindCutPositionTop=4mm",
                   {"PBRE=TOP", "MSDA=ROTSEFLAND", "PBTC=FACE", "PBBP=LETTER", "PBTP=CUSTOM",
                    "PBTW=2060", "PBTH=2790", "ISXO=-50", "ISXT=50", "PBCI=OFF"}},
        HeaderCase{"ThreeEdgeCutTakesBothPositions",
                   "KRPBindPosition=BindRight KRPBindTrimming=3EdgeCut KRPBindPageSize=Tabloid "
                   "KRPBindCutPositionFore=3mm KRPBindCutPositionTop=5mm",
                   {"PBRE=RIGHT", "MSDA=ROTLEFPORT", "PBTC=FULLBLEED", "PBBP=LEDGER",
                    "PBTP=CUSTOM", "PBTW=2760", "PBTH=4220", "ISXO=15", "ISXT=-15", "PBCI=OFF"}},
        HeaderCase{"TopPositionAloneWritesNoWidth",
                   "KRPBindPosition=BindLeft KRPBindTrimming=3EdgeCut KRPBindPageSize=A4 "
                   "KRPBindCutPositionTop=5mm",
                   {"PBRE=LEFT", "MSDA=ROTSEFLAND", "PBTC=FULLBLEED", "PBBP=A4", "PBTP=CUSTOM",
                    "PBTH=2870", "ISXO=0", "ISXT=0", "PBCI=OFF"}},
        HeaderCase{"NoTrimmingTakesThePageSize",
                   "KRPBindPosition=BindLeft KRPBindTrimming=None KRPBindPageSize=A5 "
                   "KRPBindCutPageSize=A3 KRPBindCutPositionFore=7mm",
                   {"PBRE=LEFT", "MSDA=ROTSEFLAND", "PBTC=OFF", "PBBP=A5", "PBTP=A5",
                    "PBCI=OFF"}},
        HeaderCase{"UnknownChoicesPassThrough",
                   "KRPBindPosition=Middle KRPBindTrimming=Shave",
                   {"PBRE=Middle", "MSDA=", "PBTC=Shave", "PBTP=CUSTOM", "PBTW=0", "PBTH=0",
                    "ISXO=0", "ISXT=0", "PBCI=OFF"}},
        // Known to the table but not to the PPD: no size, so the cuts come off nothing.
        HeaderCase{"PageSizeThePPDDoesNotKnow",
                   "KRPBindPosition=BindLeft KRPBindTrimming=3EdgeCutMinimum "
                   "KRPBindPageSize=KR13x19",
                   {"PBRE=LEFT", "MSDA=ROTSEFLAND", "PBTC=FULLBLEED", "PBBP=13X19",
                    "PBTP=CUSTOM", "PBTW=-70", "PBTH=-140", "PBCI=OFF"}},
        HeaderCase{"PageSizeNobodyKnows",
                   "KRPBindPosition=BindRight KRPBindTrimming=None KRPBindPageSize=Postcard",
                   {"PBRE=RIGHT", "MSDA=ROTLEFPORT", "PBTC=OFF", "PBBP=", "PBTP=",
                    "PBCI=OFF"}}),
    [](const testing::TestParamInfo<HeaderCase>& info) { return info.param.name; });

// Every adjustment set: 1 cut fore, 2 cut top/bottom, 3 rotation top,
// 4 rotation bottom, 5 rotation fore, 6 cover X, 7 cover Y, 8 cut position.
const char kAdjustments[] =
    " KRPBindTrimming=None KRPBindCutPageAdjustmentFore=1 KRPBindCutPageAdjustmentTB=2"
    " KRPBindRotationAdjustTop=3 KRPBindRotationAdjustBot=4 KRPBindRotationAdjustFore=5"
    " KRPBindCoverAdjustX=6 KRPBindCoverAdjustY=7 KRPBindCutPositionAdjustmentTB=8";

INSTANTIATE_TEST_SUITE_P(
    Adjustments, PerfectBindHeader,
    testing::Values(
        HeaderCase{"Left",
                   std::string("KRPBindPosition=BindLeft") + kAdjustments,
                   {"PBRE=LEFT", "MSDA=ROTSEFLAND", "PBTC=OFF", "PBTP=", "PBAW=1", "PBAH=2",
                    "PBAT=3", "PBAB=4", "PBAF=5", "PBAX=6", "PBAY=-7", "PBAV=8", "PBCI=OFF"}},
        // The sheet is turned: top and bottom trade places, signs of mode 1 flip.
        HeaderCase{"Right",
                   std::string("KRPBindPosition=BindRight") + kAdjustments,
                   {"PBRE=RIGHT", "MSDA=ROTLEFPORT", "PBTC=OFF", "PBTP=", "PBAW=1", "PBAH=2",
                    "PBAB=3", "PBAT=4", "PBAF=-5", "PBAX=-6", "PBAY=7", "PBAV=-8", "PBCI=OFF"}},
        HeaderCase{"Top",
                   std::string("KRPBindPosition=BindTop") + kAdjustments,
                   {"PBRE=TOP", "MSDA=ROTSEFLAND", "PBTC=OFF", "PBTP=", "PBAW=1", "PBAH=2",
                    "PBAT=3", "PBAB=4", "PBAF=5", "PBAX=6", "PBAY=-7", "PBAV=8", "PBCI=OFF"}},
        HeaderCase{"NegativeValuesFlipToo",
                   "KRPBindPosition=BindRight KRPBindTrimming=None KRPBindCoverAdjustX=-5 "
                   "KRPBindCoverAdjustY=-5 KRPBindRotationAdjustBot=-2",
                   {"PBRE=RIGHT", "MSDA=ROTLEFPORT", "PBTC=OFF", "PBTP=", "PBAT=-2", "PBAX=5",
                    "PBAY=-5", "PBCI=OFF"}}),
    [](const testing::TestParamInfo<HeaderCase>& info) { return info.param.name; });

INSTANTIATE_TEST_SUITE_P(
    Cover, PerfectBindHeader,
    testing::Values(
        HeaderCase{"AllCoverLines",
                   "KRPBindPosition=BindLeft KRPBindTrimming=None KRPBindCoverPageSize=DL "
                   "KRPBindCoverMediaType=ThickPaper2 KRPBindCoverMediaColor=Blue "
                   "KRPBindCoverPaperTray=HCF1",
                   {"PBRE=LEFT", "MSDA=ROTSEFLAND", "PBTC=OFF", "PBTP=", "PBCP=LEDGER",
                    "PBCQ=SUPERTHICK", "PBCC=BLUE", "PBCT=INTRAY6", "PBCI=OFF"}},
        // The colour, not the tray, decides whether the tray line is written.
        HeaderCase{"TrayWithoutColourIsNotWritten",
                   "KRPBindPosition=BindLeft KRPBindTrimming=None KRPBindCoverPaperTray=MSI",
                   {"PBRE=LEFT", "MSDA=ROTSEFLAND", "PBTC=OFF", "PBTP=", "PBCI=OFF"}},
        HeaderCase{"ColourWithoutTrayWritesAnEmptyTray",
                   "KRPBindPosition=BindLeft KRPBindTrimming=None "
                   "KRPBindCoverMediaColor=Goldenrod KRPBindCoverPageSize=Shoebox",
                   {"PBRE=LEFT", "MSDA=ROTSEFLAND", "PBTC=OFF", "PBTP=", "PBCP=",
                    "PBCC=GOLDENROD", "PBCT=", "PBCI=OFF"}}),
    [](const testing::TestParamInfo<HeaderCase>& info) { return info.param.name; });

TEST(PerfectBind, OffOrAbsentPositionWritesNothing) {
  for (const char* ticket : {"KRPBindPosition=None KRPBindTrimming=3EdgeCut KRPBindPageSize=A4",
                             "KRPBindTrimming=3EdgeCut KRPBindPageSize=A4", "",
                             "KRPBindPosition=OFF"}) {
    EXPECT_EQ(RunPerfectBind(ticket), "") << ticket;
  }
}

TEST(PerfectBind, MissingPPDCountsSizesAsZero) {
  std::string expected = Lines({"PBRE=LEFT", "MSDA=ROTSEFLAND", "PBTC=FULLBLEED", "PBBP=A4",
                                "PBTP=CUSTOM", "PBTW=-70", "PBTH=-140", "PBCI=OFF"});
  EXPECT_EQ(RunPerfectBind("KRPBindPosition=BindLeft KRPBindTrimming=3EdgeCutMinimum "
                           "KRPBindPageSize=A4",
                           std::string(ZPJL_FIXTURES) + "/ppd/no-such-file.ppd"),
            expected);
}

TEST(PerfectBind, ReadingNormalisesTheRecord) {
  RunPerfectBind("KRPBindPosition=BindRight KRPBindTrimming=3EdgeCutMinimum "
                 "KRPBindImagePosition=3 KRPBindCutPageSize=A4");
  EXPECT_STREQ(psoptionpbind.position, "RIGHT");
  EXPECT_STREQ(psoptionpbind.rotation, "ROTLEFPORT");
  EXPECT_STREQ(psoptionpbind.trimming, "FULLBLEED");
  EXPECT_STREQ(psoptionpbind.cutPositionFore, "7mm");
  EXPECT_STREQ(psoptionpbind.cutPositionTop, "7mm");
  EXPECT_STREQ(psoptionpbind.cutPageSize, "");
  EXPECT_EQ(psoptionpbind.minimumCut, 1);
  // The key carries a leading "no", so the real option never reaches it.
  EXPECT_EQ(psoptionpbind.imagePosition, -1);

  // A second job starts from a cleared record.
  RunPerfectBind("KRPBindPosition=None KRPBindTrimming=3EdgeCut");
  EXPECT_STREQ(psoptionpbind.position, "OFF");
  EXPECT_STREQ(psoptionpbind.rotation, "");
  EXPECT_EQ(psoptionpbind.minimumCut, 0);
}

TEST(PerfectBind, PageSizesInTenthsOfAMillimetre) {
  setenv("PPD", kFixturePPD.c_str(), 1);
  struct {
    const char* name;
    int32_t width, length;
  } cases[] = {
      {"A4", 2100, 2970},   {"A3", 2970, 4200},      {"Letter", 2160, 2790},
      {"B5", 1820, 2570},   {"A5", 1470, 2100},      {"Tabloid", 2790, 4320},
      {"KR13x19", 0, 0},    {"", 0, 0},
  };
  for (const auto& c : cases) {
    int32_t width = -1, length = -1;
    PBindPageSizeInTenths(c.name, &width, &length);
    EXPECT_EQ(width, c.width) << c.name;
    EXPECT_EQ(length, c.length) << c.name;
  }
}

TEST(PerfectBind, DigitalWriterSignModes) {
  struct {
    const char* text;
    const char* position;
    int32_t signMode;
    const char* expected;
  } cases[] = {
      {"5", "RIGHT", 0, "@PJL SET JOBATTR=\"@PBAX=5\"\n"},
      {"5", "RIGHT", 1, "@PJL SET JOBATTR=\"@PBAX=-5\"\n"},
      {"5", "LEFT", 1, "@PJL SET JOBATTR=\"@PBAX=5\"\n"},
      {"5", "LEFT", 2, "@PJL SET JOBATTR=\"@PBAX=-5\"\n"},
      {"5", "TOP", 2, "@PJL SET JOBATTR=\"@PBAX=-5\"\n"},
      {"5", "RIGHT", 2, "@PJL SET JOBATTR=\"@PBAX=5\"\n"},
      {"-12", "RIGHT", 1, "@PJL SET JOBATTR=\"@PBAX=12\"\n"},
      {"abc", "RIGHT", 1, "@PJL SET JOBATTR=\"@PBAX=0\"\n"},
      {"7mm", "LEFT", 0, "@PJL SET JOBATTR=\"@PBAX=7\"\n"},
      // The most negative number has no positive twin: it stays itself.
      {"-2147483648", "RIGHT", 1, "@PJL SET JOBATTR=\"@PBAX=-2147483648\"\n"},
      {"", "RIGHT", 1, ""},
  };
  for (const auto& c : cases) {
    testing::internal::CaptureStdout();
    OutputZPJLCommandforPBindDigital(c.text, 1, "PBAX", c.position, c.signMode);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), c.expected)
        << c.text << " " << c.position << " " << c.signMode;
  }
}

TEST(PerfectBind, HugeNumbersDoNotOverflow) {
  // Ticket numbers far outside 32 bits must neither crash nor trip the
  // overflow checks; the lines still come out whole.
  std::string out = RunPerfectBind(
      "KRPBindPosition=BindRight KRPBindTrimming=3EdgeCut KRPBindPageSize=A4 "
      "KRPBindCutPositionFore=99999999999mm KRPBindCutPositionTop=-2147483648mm "
      "KRPBindCoverAdjustX=-99999999999999999999");
  EXPECT_NE(out.find("@PJL SET JOBATTR=\"@PBTW="), std::string::npos);
  EXPECT_NE(out.find("@PJL SET JOBATTR=\"@PBAX="), std::string::npos);
  const std::string last = "@PJL SET JOBATTR=\"@PBCI=OFF\"\n";
  ASSERT_GE(out.size(), last.size());
  EXPECT_EQ(out.substr(out.size() - last.size()), last);
}

TEST(PerfectBind, LongValuesKeepTheirLineEnd) {
  std::string value(255, 'W');
  std::string out = RunPerfectBind("KRPBindPosition=" + value);
  EXPECT_EQ(out.substr(0, out.find('\n') + 1), "@PJL SET JOBATTR=\"@PBRE=" + value + "\"\n");
}

TEST(PerfectBind, TranslationTable) {
  ASSERT_EQ(PerfectBindParamNum, 77);
  EXPECT_STREQ(PerfectBindParam[77].ppdName, "");
  for (int32_t i = 0; i < PerfectBindParamNum; ++i) {
    EXPECT_STRNE(PerfectBindParam[i].ppdName, "") << i;
  }

  struct {
    const char* name;
    const char* word;
  } cases[] = {
      {"A3", "A3"},           {"B4", "JISB4"},         {"KR122x170", "DT_SPECIALA3"},
      {"TabloidExtra", "12X18"}, {"Tabloid", "LEDGER"}, {"Default", "OFF"},
      {"PrePrintedThickPaper2S1", "PREPRINTEDTHICK2S1"}, {"CustomSizedPaper5", "USER5"},
      {"Clear", "CLEAR"},     {"Other", "OTHER"},       {"6thTrayOverSized", "INTRAY6"},
      {"HCF1", "INTRAY6"},    {"HCF2", "INTRAY7"},      {"PBindInserter", "INTRAY9"},
      {"a4", ""},             {"DL", ""},               {"", ""},
  };
  for (const auto& c : cases) {
    char out[kPBindTextSize];
    std::memset(out, 'x', sizeof out);
    convertPBindPPDValue(c.name, out, sizeof out);
    EXPECT_STREQ(out, c.word) << c.name;
  }

  char small[6];
  convertPBindPPDValue("PBindInserter", small, sizeof small);
  EXPECT_STREQ(small, "INTRA");
}

TEST(PerfectBind, TicketTableReadsInItsOrder) {
  const char* keys[] = {
      "KRPBindPosition",          "KRPBindTrimming",           "KRPBindCutPageSize",
      "noKRPBindImagePosition",   "KRPBindCutPositionTop",     "KRPBindCutPositionFore",
      "KRPBindPageSize",          "KRPBindCoverPageSize",      "KRPBindCoverMediaType",
      "KRPBindCoverMediaColor",   "KRPBindCoverPaperTray",     "KRPBindRotationAdjustTop",
      "KRPBindRotationAdjustBot", "KRPBindRotationAdjustFore", "KRPBindCutPageAdjustmentTB",
      "KRPBindCutPageAdjustmentFore", "KRPBindCutPositionAdjustmentTB", "KRPBindCoverAdjustX",
      "KRPBindCoverAdjustY",
  };
  ASSERT_EQ(PBindticketDataNum, 19);
  for (int32_t i = 0; i < PBindticketDataNum; ++i) {
    EXPECT_STREQ(PBindticketData[i].key, keys[i]) << i;
    int32_t expectedSize = i == 3 ? 4 : static_cast<int32_t>(kPBindTextSize);
    EXPECT_EQ(PBindticketData[i].size, expectedSize) << i;
  }
}

}  // namespace
