#include "modules/perfect_binding/perfect_binding.h"

#include <gtest/gtest.h>

#include <cstring>
#include <ostream>
#include <string>
#include <vector>

#include "test_support.h"

namespace {

std::string RunPerfectBind(const std::string& ticket) {
  UsePPD("perfect_binding.ppd");
  FilterArguments args(ticket);
  PBindGetTicketFromPDE(args.argv);
  return CaptureStdout(OutputZPJLCommandforPerfectBind);
}

struct HeaderCase {
  const char* name;
  std::string ticket;
  std::vector<std::string> lines;
};
void PrintTo(const HeaderCase& c, std::ostream* os) { *os << c.name; }

class PerfectBindHeader : public testing::TestWithParam<HeaderCase> {};
TEST_P(PerfectBindHeader, WritesTheseLines) {
  EXPECT_EQ(RunPerfectBind(GetParam().ticket), Attrs(GetParam().lines));
}

// Tenths of a millimetre: A4 2100 x 2970, A3 2970 x 4200, Letter 2160 x 2790,
// Tabloid 2790 x 4320, A5 (419.5 x 595.3 points) 1470 x 2100.
INSTANTIATE_TEST_SUITE_P(
    Jobs, PerfectBindHeader,
    testing::Values(
        HeaderCase{"ForeEdgeMinimumCutsOnlyTheWidth",
                   "KRPBindPosition=BindLeft KRPBindTrimming=1EdgeCutMinimum KRPBindPageSize=A4 "
                   "KRPBindCutPositionTop=9mm",
                   {"PBRE=LEFT", "MSDA=ROTSEFLAND", "PBTC=FACE", "PBBP=A4", "PBTP=CUSTOM",
                    "PBTW=2030", "PBTH=2970", "PBCI=OFF"}},
        HeaderCase{"RightThreeEdgeMinimumOnA4",
                   "KRPBindPosition=BindRight KRPBindTrimming=3EdgeCutMinimum KRPBindPageSize=A4 "
                   "KRPBindCutPageSize=A3",
                   {"PBRE=RIGHT", "MSDA=ROTLEFPORT", "PBTC=FULLBLEED", "PBBP=A4", "PBTP=CUSTOM",
                    "PBTW=2030", "PBTH=2830", "PBCI=OFF"}},
        HeaderCase{"SpecifiedSizeCentresTheImageRight",
                   "KRPBindPosition=BindRight KRPBindTrimming=1EdgeSpecifySize KRPBindPageSize=A3 "
                   "KRPBindCutPageSize=A4 KRPBindCutPositionFore=5mm",
                   {"PBRE=RIGHT", "MSDA=ROTLEFPORT", "PBTC=FACE", "PBBP=A3", "PBTP=A4", "PBTW=2100",
                    "PBTH=2970", "ISXO=435", "ISXT=-435", "PBCI=OFF"}},
        HeaderCase{"ForeEdgeCutIgnoresTheTopPosition",
                   "KRPBindPosition=BindTop KRPBindTrimming=1EdgeCut KRPBindPageSize=Letter "
                   "KRPBindCutPageSize=A4 KRPBindCutPositionFore=10mm KRPBindCutPositionTop=4mm",
                   {"PBRE=TOP", "MSDA=ROTSEFLAND", "PBTC=FACE", "PBBP=LETTER", "PBTP=CUSTOM",
                    "PBTW=2060", "PBTH=2790", "ISXO=-50", "ISXT=50", "PBCI=OFF"}},
        HeaderCase{"ThreeEdgeCutTakesBothPositions",
                   "KRPBindPosition=BindRight KRPBindTrimming=3EdgeCut KRPBindPageSize=Tabloid "
                   "KRPBindCutPositionFore=3mm KRPBindCutPositionTop=5mm",
                   {"PBRE=RIGHT", "MSDA=ROTLEFPORT", "PBTC=FULLBLEED", "PBBP=LEDGER", "PBTP=CUSTOM",
                    "PBTW=2760", "PBTH=4220", "ISXO=15", "ISXT=-15", "PBCI=OFF"}},
        HeaderCase{"TopPositionAloneWritesNoWidth",
                   "KRPBindPosition=BindLeft KRPBindTrimming=3EdgeCut KRPBindPageSize=A4 "
                   "KRPBindCutPositionTop=5mm",
                   {"PBRE=LEFT", "MSDA=ROTSEFLAND", "PBTC=FULLBLEED", "PBBP=A4", "PBTP=CUSTOM",
                    "PBTH=2870", "ISXO=0", "ISXT=0", "PBCI=OFF"}},
        HeaderCase{"NoTrimmingTakesThePageSize",
                   "KRPBindPosition=BindLeft KRPBindTrimming=None KRPBindPageSize=A5 "
                   "KRPBindCutPageSize=A3 KRPBindCutPositionFore=7mm",
                   {"PBRE=LEFT", "MSDA=ROTSEFLAND", "PBTC=OFF", "PBBP=A5", "PBTP=A5", "PBCI=OFF"}},
        HeaderCase{"UnknownChoicesPassThrough",
                   "KRPBindPosition=Middle KRPBindTrimming=Shave",
                   {"PBRE=Middle", "MSDA=", "PBTC=Shave", "PBTP=CUSTOM", "PBTW=0", "PBTH=0",
                    "ISXO=0", "ISXT=0", "PBCI=OFF"}},
        // Known to the table, not to the PPD: the sizes count as 0.
        HeaderCase{"PageSizeThePPDDoesNotKnow",
                   "KRPBindPosition=BindLeft KRPBindTrimming=1EdgeCut KRPBindPageSize=SRA3 "
                   "KRPBindCutPositionFore=4mm",
                   {"PBRE=LEFT", "MSDA=ROTSEFLAND", "PBTC=FACE", "PBBP=SA3", "PBTP=CUSTOM",
                    "PBTW=-40", "PBTH=0", "ISXO=-20", "ISXT=20", "PBCI=OFF"}},
        HeaderCase{"PageSizeNobodyKnows",
                   "KRPBindPosition=BindRight KRPBindTrimming=None KRPBindPageSize=Postcard",
                   {"PBRE=RIGHT", "MSDA=ROTLEFPORT", "PBTC=OFF", "PBBP=", "PBTP=", "PBCI=OFF"}},
        HeaderCase{"OffPosition", "KRPBindPosition=OFF KRPBindPageSize=A4", {}},
        HeaderCase{"PositionNone",
                   "KRPBindPosition=None KRPBindTrimming=3EdgeCut KRPBindCoverMediaColor=Blue", {}},
        // Every adjustment; sign mode 1 flips on the right, mode 2 on the left and top.
        HeaderCase{"AllAdjustmentsRight",
                   "KRPBindPosition=BindRight KRPBindTrimming=None KRPBindCutPageAdjustmentFore=1 "
                   "KRPBindCutPageAdjustmentTB=2 KRPBindRotationAdjustTop=3 "
                   "KRPBindRotationAdjustBot=4 KRPBindRotationAdjustFore=5 KRPBindCoverAdjustX=6 "
                   "KRPBindCoverAdjustY=-7 KRPBindCutPositionAdjustmentTB=8",
                   {"PBRE=RIGHT", "MSDA=ROTLEFPORT", "PBTC=OFF", "PBTP=", "PBAW=1", "PBAH=2",
                    "PBAB=3", "PBAT=4", "PBAF=-5", "PBAX=-6", "PBAY=-7", "PBAV=-8", "PBCI=OFF"}},
        HeaderCase{"CoverAdjustmentsLeft",
                   "KRPBindPosition=BindLeft KRPBindTrimming=None KRPBindCoverAdjustX=5 "
                   "KRPBindCoverAdjustY=5 KRPBindRotationAdjustTop=1 KRPBindRotationAdjustBot=2",
                   {"PBRE=LEFT", "MSDA=ROTSEFLAND", "PBTC=OFF", "PBTP=", "PBAT=1", "PBAB=2",
                    "PBAX=5", "PBAY=-5", "PBCI=OFF"}},
        HeaderCase{
            "ModeTwoFlipsOnTop",
            "KRPBindPosition=BindTop KRPBindTrimming=None KRPBindRotationAdjustFore=5 "
            "KRPBindCoverAdjustY=-7",
            {"PBRE=TOP", "MSDA=ROTSEFLAND", "PBTC=OFF", "PBTP=", "PBAF=5", "PBAY=7", "PBCI=OFF"}},
        HeaderCase{"CoverDLIsLedger",
                   "KRPBindPosition=BindTop KRPBindTrimming=None KRPBindPageSize=Letter "
                   "KRPBindCoverPageSize=DL KRPBindCoverMediaType=CoatingPaper1A "
                   "KRPBindCoverMediaColor=Ivory KRPBindCoverPaperTray=2ndTray",
                   {"PBRE=TOP", "MSDA=ROTSEFLAND", "PBTC=OFF", "PBBP=LETTER", "PBTP=LETTER",
                    "PBCP=LEDGER", "PBCQ=COATEDPAPERA", "PBCC=IVORY", "PBCT=INTRAY2", "PBCI=OFF"}},
        // The colour, not the tray, decides whether the tray line is written.
        HeaderCase{"TrayWithoutColourIsNotWritten",
                   "KRPBindPosition=BindLeft KRPBindTrimming=None KRPBindCoverPaperTray=MSI",
                   {"PBRE=LEFT", "MSDA=ROTSEFLAND", "PBTC=OFF", "PBTP=", "PBCI=OFF"}},
        HeaderCase{"ColourWithoutTrayWritesAnEmptyTray",
                   "KRPBindPosition=BindLeft KRPBindTrimming=None KRPBindCoverMediaColor=Goldenrod "
                   "KRPBindCoverPageSize=Shoebox",
                   {"PBRE=LEFT", "MSDA=ROTSEFLAND", "PBTC=OFF", "PBTP=", "PBCP=", "PBCC=GOLDENROD",
                    "PBCT=", "PBCI=OFF"}}),
    [](const testing::TestParamInfo<HeaderCase>& info) { return info.param.name; });

TEST(PerfectBind, HostileValuesStaySafe) {
  // Numbers far outside 32 bits must not overflow; every line stays whole.
  std::string out = RunPerfectBind(
      "KRPBindPosition=BindRight KRPBindTrimming=3EdgeCut KRPBindPageSize=A4 "
      "KRPBindCutPositionFore=99999999999mm KRPBindCutPositionTop=-2147483648mm "
      "KRPBindCoverAdjustX=-99999999999999999999");
  EXPECT_NE(out.find("@PBTW="), std::string::npos);
  EXPECT_NE(out.find("@PBAX="), std::string::npos);

  std::string value(255, 'W');
  out = RunPerfectBind("KRPBindPosition=" + value);
  EXPECT_EQ(out.substr(0, out.find('\n') + 1), Attr("PBRE=" + value));
}

TEST(PerfectBind, TranslationTable) {
  ASSERT_EQ(PerfectBindParamNum, 77);
  EXPECT_STREQ(PerfectBindParam[PerfectBindParamNum].ppdName, "");
  struct {
    const char* name;
    const char* word;
  } cases[] = {
      {"KR122x170", "DT_SPECIALA3"},
      {"PBindInserter", "INTRAY9"},
      {"a4", ""},
      {"", ""},
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

}  // namespace
