#include "modules/features/features.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "engine/module_dispatch.h"
#include "frame/fixed_text.h"
#include "frame/job_state.h"
#include "modules/job_comments/job_comments.h"
#include "test_support.h"

namespace {

template <size_t N>
void Set(char (&field)[N], const char* text) {
  CopyText(field, N, text);
}

class FeaturesTest : public ::testing::Test {
 protected:
  void SetUp() override {
    InializeDescriptionTable();
    Reset();
  }
  void TearDown() override { ResetJobState(); }
  // Every module's settings as for a ticket without options.
  static void Reset() {
    ResetJobState();
    FilterArguments none("");
    GetTicketFromPDE(none.argv);
  }
  static std::string Header() {
    return CaptureStdout([] { FeaturesOutputZPJLCommandFromFilter(nullptr); });
  }
};

// Reads `settings` ("Name=value ...") as the job ticket. Each name is a
// print-dialog key of its domain, or a system option.
void ReadFeatures(const std::string& settings) {
  const std::string etz = " TrimmerSelectTicket TrimmerWidthMMSizeTicket TrimmerHeightMMSizeTicket "
                          "TrimmerAdjustMMSizeTicket whetherMediaSizeA5Ticket ";
  std::string ticket;
  for (size_t at = 0, end; at < settings.size(); at = end + 1) {
    end = std::min(settings.find(' ', at), settings.size());
    const std::string token = settings.substr(at, end - at);
    const std::string name = token.substr(0, token.find('='));
    if (name == "media" || name == "KRNumPunchHoles") {
      ticket += token + " ";
    } else if (etz.find(" " + name + " ") != std::string::npos) {
      ticket += "com.korvanel.qd.etz.printsettings." + token + " ";
    } else {
      ticket += "com.korvanel.qd.jtz.printsettings." + token + " ";
    }
  }
  FilterArguments args(ticket);
  FeaturesGetTicketFromPDE(args.argv);
}

TEST_F(FeaturesTest, HeaderRows) {
  const struct {
    const char* settings;
    std::string expected;
  } cases[] = {
      {"", ""},
      {"TabMarginSwitchTicket=0", Attr("TABS=OFF")},
      {"TabMarginSwitchTicket=1 TabMarginMMShiftTicket=12", Attr("TABS=12")},
      {"TabMarginMMShiftTicket=12", ""},
      {"TrimmerSwitchTicket=0", Attr("TRMR=0")},
      {"TrimmerSwitchTicket=1 TrimmerMMCuttingSizeTicket=30", Attr("TRMR=30")},
      {"TrimmerSelectTicket=2 TrimmerMMCuttingSizeTicket=25 TrimmerWidthMMSizeTicket=7 "
       "TrimmerHeightMMSizeTicket=8 TrimmerAdjustMMSizeTicket=9",
       Attr("TRMR=25") + Attr("TRFW=0") + Attr("TROP=0")},
      {"TrimmerSelectTicket=3 TrimmerMMCuttingSizeTicket=25 TrimmerWidthMMSizeTicket=210 "
       "TrimmerHeightMMSizeTicket=297 TrimmerAdjustMMSizeTicket=2",
       Attr("TRMR=210") + Attr("TRFW=297") + Attr("TROP=2")},
      // Trimmer on with the fore edge: rows 4 and 5 both write the cut.
      {"TrimmerSwitchTicket=1 TrimmerSelectTicket=2 TrimmerMMCuttingSizeTicket=30",
       Attr("TRMR=30") + Attr("TRMR=30") + Attr("TRFW=0") + Attr("TROP=0")},
      {"NumInSequenceSwitchTicket=0", Attr("MDOC=0")},
      {"NumInSequenceSwitchTicket=1 NumInSequenceLArrowTicket=5", Attr("MDOC=5")},
      {"OffsetStackingListTicket=4 OffsetStackingPagesLArrowTicket=10 "
       "OffsetStackingUnitsLArrowTicket=3",
       "@PJL SET JOBOFFSET=PAGES\n" + Attr("OCSN=10")},
      {"OffsetStackingListTicket=5 OffsetStackingPagesLArrowTicket=10 "
       "OffsetStackingUnitsLArrowTicket=3",
       "@PJL SET JOBOFFSET=COPIES\n" + Attr("OCSN=3")},
      {"OffsetStackingListTicket=1 OffsetStackingPagesLArrowTicket=10", ""},
      // Several at once come in row order.
      {"EjectOptionsListTicket=3 OffsetStackingListTicket=4 OffsetStackingPagesLArrowTicket=99999 "
       "TabMarginSwitchTicket=1 TabMarginMMShiftTicket=4 TrimmerSwitchTicket=0",
       Attr("TABS=4") + Attr("TRMR=0") + "@PJL SET JOBOFFSET=PAGES\n" + Attr("OCSN=99999") +
           Attr("FACE=UP")},
  };
  for (const auto& c : cases) {
    ReadFeatures(c.settings);
    EXPECT_EQ(Header(), c.expected) << c.settings;
  }
}

// Coil punching with the coil face on, no tab stock, no A5: face OFF. Later
// settings of a case replace these.
const std::string kCoilJob =
    "EjectOptionsListTicket=1 KRNumPunchHoles=CoilPunch featuresMediaTypeTabTicket=false "
    "whetherMediaTypeTabTicket=0 CoilPunchFaceTicket=true media=Letter "
    "whetherMediaSizeA5Ticket=0 ";

TEST_F(FeaturesTest, EveryFaceRowIsReachableAlone) {
  const struct {
    int row;  // the one FACE row that holds, 0 for none
    std::string settings;
    const char* face;
  } cases[] = {
      {17, kCoilJob, "OFF"},
      {18, kCoilJob + "KRNumPunchHoles=2Holes", "OFF"},
      {18, "EjectOptionsListTicket=1 CoilPunchFaceTicket=true", "OFF"},
      {19, kCoilJob + "CoilPunchFaceTicket=false", "OFF"},
      {20, "EjectOptionsListTicket=2", "DOWN"},
      {21, "EjectOptionsListTicket=3", "UP"},
      {22, "EjectOptionsListTicket=4", "DOWN_REVERSE"},
      {23, "EjectOptionsListTicket=5", "UP_REVERSE"},
      {24, kCoilJob + "media=A5", "UP"},
      {25, kCoilJob + "whetherMediaSizeA5Ticket=1", "UP"},
      {26, kCoilJob + "media=A5Rotated whetherMediaSizeA5Ticket=1", "UP"},
      {27, kCoilJob + "featuresMediaTypeTabTicket=true", "UP"},
      {28, kCoilJob + "whetherMediaTypeTabTicket=1", "UP"},
      {29, kCoilJob + "featuresMediaTypeTabTicket=true whetherMediaTypeTabTicket=1", "UP"},
      {0, kCoilJob + "featuresMediaTypeTabTicket=", nullptr},
      {0, "EjectOptionsListTicket=1", nullptr},
      {0, "EjectOptionsListTicket=6", nullptr},
  };
  std::vector<bool> reached(FeaturesFmtTableNum + 1, false);
  for (const auto& c : cases) {
    ReadFeatures(c.settings);
    for (int row = 17; row <= FeaturesFmtTableNum; ++row) {
      bool holds = ConditionCompare(FeaturesFmtTable[row - 1].conditions) == 1;
      EXPECT_EQ(holds, row == c.row) << c.settings << ": row " << row;
      if (holds) reached[row] = true;
    }
    EXPECT_EQ(Header(), c.face != nullptr ? Attr(std::string("FACE=") + c.face) : "") << c.settings;
  }
  for (int row = 17; row <= FeaturesFmtTableNum; ++row) EXPECT_TRUE(reached[row]) << row;
}

const char kSeparator[] =
    "[{\n%%BeginNonPPDFeatures\n"
    "1 dict dup/SeparatorPages[1,3]put/Custom/ProcSet findresource/setcoverseparator get exec\n"
    "%%EndNonPPDFeatures\n} stopped cleartomark\n";
const char kImageShift[] =
    "[{\n%%BeginNonPPDFeatures\n5.000/Custom/ProcSet findresource/setsignatureimageshift get "
    "exec\n%%EndNonPPDFeatures\n} stopped cleartomark\n";
std::string AutoScale(const char* on) {
  return std::string(
             "[{\n%%BeginNonPPDFeatures\n/Custom/ProcSet findresource/"
             "setsignatureautoscale 2 copy known {get ") +
         on + " exch exec} {pop pop} ifelse\n%%EndNonPPDFeatures\n} stopped cleartomark\n";
}

TEST_F(FeaturesTest, InjectionPointsByPagesPerSheet) {
  const std::string autoFit = kImageShift + AutoScale("true");
  const struct {
    const char *rows, *columns;
    int32_t point;
    std::string expected;
  } cases[] = {
      // 1-up (no layout counts as 1-up): separator at 14, auto-fit at 16.
      {"1", "1", 14, kSeparator},
      {"1", "1", 16, autoFit},
      {"", "", 14, kSeparator},
      // N-up: both at 21, separator first.
      {"1", "2", 14, ""},
      {"1", "2", 21, kSeparator + autoFit},
      // A negative product is neither 1-up (unsigned) nor N-up (signed).
      {"-1", "2", 14, ""},
      {"-1", "2", 21, ""},
      {"1", "1", 13, ""},
      {"1", "2", 27, ""},
  };
  for (const auto& c : cases) {
    FeaturesOptionRecord& f = zpjlOptionFeatures;
    f.separatorPagesList = 2, Set(f.separatorPages, "1,3");
    f.bookletMarginSwitch = 1, Set(f.bookletMarginShift, "5"), f.autoFitSwitch = 1;
    Set(StdLayoutRowInfo, c.rows);
    Set(StdLayoutColumnInfo, c.columns);
    std::string out =
        CaptureStream([&c](FILE* s) { FeaturesOutputPSCommandFromFilter(c.point, s); });
    EXPECT_EQ(out, c.expected) << c.rows << "x" << c.columns << " at " << c.point;
  }
}

TEST_F(FeaturesTest, SeparatorPagesFragment) {
  const std::string fixed = "]put/Custom/ProcSet findresource/setcoverseparator get exec";
  const struct {
    int32_t list;
    const char* pages;
    std::string line;  // the variable line, "" for no fragment
  } cases[] = {
      {1, "1,3", ""},
      {2, "1,3", "1 dict dup/SeparatorPages[1,3" + fixed + "\n"},
      // 13 characters fill the 100-byte line; one more cuts its line end.
      {2, "1,2,3,4,5,6,7", "1 dict dup/SeparatorPages[1,2,3,4,5,6,7" + fixed + "\n"},
      {2, "1,2,3,4,5,6,78", "1 dict dup/SeparatorPages[1,2,3,4,5,6,78" + fixed},
      // Only number characters: no comment, format or bracket gets in.
      {2, "%s%n]", "1 dict dup/SeparatorPages[?????" + fixed + "\n"},
  };
  for (const auto& c : cases) {
    zpjlOptionFeatures.separatorPagesList = c.list;
    Set(zpjlOptionFeatures.separatorPages, c.pages);
    std::string expected = c.line.empty() ? ""
                                          : "[{\n%%BeginNonPPDFeatures\n" + c.line +
                                                "%%EndNonPPDFeatures\n} stopped cleartomark\n";
    EXPECT_EQ(CaptureStream(FeaturesOutputSeparatorPages), expected) << c.pages;
  }
}

TEST_F(FeaturesTest, AutoFitFollowsTheBookletMargin) {
  const struct {
    int32_t bookletMargin, autoFit;
    std::string expected;
  } cases[] = {
      {0, 1, ""},
      {1, -1, kImageShift},
      {1, 0, kImageShift + AutoScale("false")},
      {1, 1, kImageShift + AutoScale("true")},
  };
  for (const auto& c : cases) {
    zpjlOptionFeatures.bookletMarginSwitch = c.bookletMargin;
    zpjlOptionFeatures.autoFitSwitch = c.autoFit;
    Set(zpjlOptionFeatures.bookletMarginShift, "5");
    EXPECT_EQ(CaptureStream(FeaturesOutputAutoFit), c.expected)
        << c.bookletMargin << " " << c.autoFit;
  }
}

class BookletTest : public ::testing::Test {
 protected:
  void SetUp() override { UsePPD("utf8-color.ppd"); }
  void TearDown() override {
    unsetenv("PPD");
    CommentResetOptionRecord();
  }
  static std::string Lines(const char* numberUp, int32_t orientation, const char* signature,
                           const char* division) {
    CommentResetOptionRecord();
    Set(psoptioncomment.numberUp, numberUp);
    psoptioncomment.orientation = orientation;
    Set(psoptioncomment.signature, signature);
    Set(psoptioncomment.signatureVolume, division);
    return CaptureStdout(OutputZPJLCommandforBooklet);
  }
};

TEST_F(BookletTest, DirectionByLayoutAndOrientation) {
  const struct {
    const char* numberUp;
    int32_t orientation;
    const char* direction;
  } cases[] = {
      {"", 1, "PORTRAIT"},
      // The sheet-turning layouts: the portrait orientations give landscape.
      {"2", 1, "LANDSCAPE"},
      {"2", 4, "PORTRAIT"},
      {"6", 5, "PORTRAIT"},
      // Every other layout follows the orientation.
      {"1", 4, "LANDSCAPE"},
      {"1", 3, "PORTRAIT"},
      {"16", 4, "LANDSCAPE"},
      {"9", 6, "PORTRAIT"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(Lines(c.numberUp, c.orientation, "", ""), Attr(std::string("DIND=") + c.direction))
        << c.numberUp << " / " << c.orientation;
  }
}

TEST_F(BookletTest, BindingAndDivision) {
  const struct {
    const char *signature, *division;
    std::string lines;
  } cases[] = {
      {"", "10Sheets", ""},
      {"None", "10Sheets", Attr("DIBB=OFF") + Attr("DIBK=OFF")},
      {"BookLeft", "None", Attr("DIBB=LEFT") + Attr("DIBK=NONEDIVIDE")},
      {"RightSig", "10Sheets", Attr("DIBB=RIGHT") + Attr("DIBK=MANUALDIVIDE")},
      {"LeftRight", "", Attr("DIBB=LEFT") + Attr("DIBK=NONEDIVIDE")},
      {"CenterFold", "3Sheets", Attr("DIBK=MANUALDIVIDE")},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(Lines("", 1, c.signature, c.division), Attr("DIND=PORTRAIT") + c.lines)
        << c.signature << " / " << c.division;
  }
}

TEST_F(BookletTest, OnlyUTF8PrintersGetTheAttributes) {
  const std::string all = Attr("DIND=LANDSCAPE") + Attr("DIBB=LEFT") + Attr("DIBK=NONEDIVIDE");
  const struct {
    const char* ppd;  // "": PPD unset
    bool writes;
  } cases[] = {{"utf8-nocomment.ppd", true},
               {"legacy-mono.ppd", false},
               {"no-such-file.ppd", false},
               {"", false}};
  for (const auto& c : cases) {
    UsePPD(c.ppd);
    EXPECT_EQ(Lines("2", 1, "BookLeft", "None"), c.writes ? all : "") << c.ppd;
  }
}

}  // namespace
