#include "modules/features/features.h"

#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "engine/module_dispatch.h"
#include "frame/fixed_text.h"
#include "frame/job_state.h"
#include "frame/ps_stream.h"
#include "modules/job_comments/job_comments.h"
#include "module_output_capture.h"

namespace {

using Adjust = std::function<void(FeaturesOptionRecord&)>;

template <size_t N>
void Set(char (&field)[N], const char* text) {
  CopyText(field, N, text);
}

class FeaturesTest : public ::testing::Test {
 protected:
  void SetUp() override {
    InializeDescriptionTable();
    ResetJobState();
    // Every module's settings absent, as for a ticket without options.
    FilterArguments none("");
    GetTicketFromPDE(none.argv);
  }
  void TearDown() override { ResetJobState(); }

  static std::string Header() {
    return CaptureStdout([] { FeaturesOutputZPJLCommandFromFilter(nullptr); });
  }
  static std::string PostScriptAt(int32_t point) {
    return CaptureStream([point](FILE* s) { FeaturesOutputPSCommandFromFilter(point, s); });
  }
};

std::string Attr(const std::string& value) {
  return "@PJL SET JOBATTR=\"@" + value + "\"\n";
}

TEST_F(FeaturesTest, HeaderRows) {
  const struct {
    const char* name;
    Adjust setup;
    std::string expected;
  } cases[] = {
      {"nothing set", [](FeaturesOptionRecord&) {}, ""},
      {"tab margin off", [](FeaturesOptionRecord& f) { f.tabMarginSwitch = 0; },
       Attr("TABS=OFF")},
      {"tab margin 12",
       [](FeaturesOptionRecord& f) {
         f.tabMarginSwitch = 1;
         Set(f.tabMarginShift, "12");
       },
       Attr("TABS=12")},
      {"tab shift without the switch", [](FeaturesOptionRecord& f) { Set(f.tabMarginShift, "12"); },
       ""},
      {"trimmer off", [](FeaturesOptionRecord& f) { f.trimmerSwitch = 0; }, Attr("TRMR=0")},
      {"trimmer on",
       [](FeaturesOptionRecord& f) {
         f.trimmerSwitch = 1;
         Set(f.trimmerCuttingSize, "30");
       },
       Attr("TRMR=30")},
      {"trimmer fore edge",
       [](FeaturesOptionRecord& f) {
         f.trimmerSelect = 2;
         Set(f.trimmerCuttingSize, "25");
         Set(f.trimmerWidth, "7");
         Set(f.trimmerHeight, "8");
         Set(f.trimmerAdjust, "9");
       },
       Attr("TRMR=25") + Attr("TRFW=0") + Attr("TROP=0")},
      {"trimmer top and lower edges",
       [](FeaturesOptionRecord& f) {
         f.trimmerSelect = 3;
         Set(f.trimmerCuttingSize, "25");
         Set(f.trimmerWidth, "210");
         Set(f.trimmerHeight, "297");
         Set(f.trimmerAdjust, "2");
       },
       Attr("TRMR=210") + Attr("TRFW=297") + Attr("TROP=2")},
      {"trimmer selection none", [](FeaturesOptionRecord& f) { f.trimmerSelect = 1; }, ""},
      {"trimmer on with fore edge writes TRMR twice",
       [](FeaturesOptionRecord& f) {
         f.trimmerSwitch = 1;
         f.trimmerSelect = 2;
         Set(f.trimmerCuttingSize, "30");
       },
       Attr("TRMR=30") + Attr("TRMR=30") + Attr("TRFW=0") + Attr("TROP=0")},
      {"numbering off", [](FeaturesOptionRecord& f) { f.numInSequenceSwitch = 0; },
       Attr("MDOC=0")},
      {"numbering from 5",
       [](FeaturesOptionRecord& f) {
         f.numInSequenceSwitch = 1;
         Set(f.numInSequenceStart, "5");
       },
       Attr("MDOC=5")},
      {"offset stacking by pages",
       [](FeaturesOptionRecord& f) {
         f.offsetStackingList = 4;
         Set(f.offsetStackingPages, "10");
         Set(f.offsetStackingUnits, "3");
       },
       "@PJL SET JOBOFFSET=PAGES\n" + Attr("OCSN=10")},
      {"offset stacking by copies",
       [](FeaturesOptionRecord& f) {
         f.offsetStackingList = 5;
         Set(f.offsetStackingPages, "10");
         Set(f.offsetStackingUnits, "3");
       },
       "@PJL SET JOBOFFSET=COPIES\n" + Attr("OCSN=3")},
      {"offset stacking none", [](FeaturesOptionRecord& f) { f.offsetStackingList = 1; }, ""},
      {"offset stacking end of set", [](FeaturesOptionRecord& f) { f.offsetStackingList = 2; },
       ""},
      {"offset stacking device deactivation",
       [](FeaturesOptionRecord& f) { f.offsetStackingList = 3; }, ""},
      {"all together, in row order",
       [](FeaturesOptionRecord& f) {
         f.tabMarginSwitch = 1;
         Set(f.tabMarginShift, "4");
         f.trimmerSwitch = 0;
         f.numInSequenceSwitch = 1;
         Set(f.numInSequenceStart, "100");
         f.offsetStackingList = 4;
         Set(f.offsetStackingPages, "99999");
         f.ejectOptions = 3;
       },
       Attr("TABS=4") + Attr("TRMR=0") + Attr("MDOC=100") + "@PJL SET JOBOFFSET=PAGES\n" +
           Attr("OCSN=99999") + Attr("FACE=UP")},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    FilterArguments none("");
    FeaturesGetTicketFromPDE(none.argv);
    c.setup(zpjlOptionFeatures);
    EXPECT_EQ(Header(), c.expected);
  }
}

// A job that punches coil holes and keeps the coil face up: with no tab
// stock and no A5 anywhere the face is OFF.
void CoilJob(FeaturesOptionRecord& f) {
  f.ejectOptions = 1;
  Set(f.punchHoles, "CoilPunch");
  Set(f.featuresMediaTypeTab, "false");
  f.specialPagesMediaTab = 0;
  Set(f.coilPunchFace, "true");
  Set(f.media, "Letter");
  f.specialPagesA5 = 0;
}

TEST_F(FeaturesTest, EveryFaceRowIsReachableAlone) {
  const struct {
    int row;  // 1-based row of the table that must hold, 0 for none
    Adjust setup;
    const char* face;
  } cases[] = {
      {17, CoilJob, "OFF"},
      {18,
       [](FeaturesOptionRecord& f) {
         CoilJob(f);
         Set(f.punchHoles, "2Holes");
       },
       "OFF"},
      {18,
       [](FeaturesOptionRecord& f) {
         f.ejectOptions = 1;
         Set(f.coilPunchFace, "true");
       },
       "OFF"},
      {19,
       [](FeaturesOptionRecord& f) {
         CoilJob(f);
         Set(f.coilPunchFace, "false");
       },
       "OFF"},
      {20, [](FeaturesOptionRecord& f) { f.ejectOptions = 2; }, "DOWN"},
      {21, [](FeaturesOptionRecord& f) { f.ejectOptions = 3; }, "UP"},
      {22, [](FeaturesOptionRecord& f) { f.ejectOptions = 4; }, "DOWN_REVERSE"},
      {23, [](FeaturesOptionRecord& f) { f.ejectOptions = 5; }, "UP_REVERSE"},
      {24,
       [](FeaturesOptionRecord& f) {
         CoilJob(f);
         Set(f.media, "A5");
       },
       "UP"},
      {25,
       [](FeaturesOptionRecord& f) {
         CoilJob(f);
         f.specialPagesA5 = 1;
       },
       "UP"},
      {26,
       [](FeaturesOptionRecord& f) {
         CoilJob(f);
         Set(f.media, "A5Rotated");
         f.specialPagesA5 = 1;
       },
       "UP"},
      {27,
       [](FeaturesOptionRecord& f) {
         CoilJob(f);
         Set(f.featuresMediaTypeTab, "true");
       },
       "UP"},
      {28,
       [](FeaturesOptionRecord& f) {
         CoilJob(f);
         f.specialPagesMediaTab = 1;
       },
       "UP"},
      {29,
       [](FeaturesOptionRecord& f) {
         CoilJob(f);
         Set(f.featuresMediaTypeTab, "true");
         f.specialPagesMediaTab = 1;
       },
       "UP"},
      // Coil face on but the tab stock setting missing: no rule applies.
      {0,
       [](FeaturesOptionRecord& f) {
         CoilJob(f);
         Set(f.featuresMediaTypeTab, "");
       },
       nullptr},
      {0, [](FeaturesOptionRecord& f) { f.ejectOptions = 1; }, nullptr},
      {0, [](FeaturesOptionRecord& f) { f.ejectOptions = 6; }, nullptr},
  };
  std::vector<bool> reached(FeaturesFmtTableNum + 1, false);
  for (const auto& c : cases) {
    SCOPED_TRACE("row " + std::to_string(c.row));
    FilterArguments none("");
    FeaturesGetTicketFromPDE(none.argv);
    c.setup(zpjlOptionFeatures);
    for (int row = 17; row <= FeaturesFmtTableNum; ++row) {
      bool holds = ConditionCompare(FeaturesFmtTable[row - 1].conditions) == 1;
      EXPECT_EQ(holds, row == c.row) << "row " << row;
      if (holds) reached[row] = true;
    }
    EXPECT_EQ(Header(), c.face != nullptr ? Attr(std::string("FACE=") + c.face) : "");
  }
  for (int row = 17; row <= FeaturesFmtTableNum; ++row) EXPECT_TRUE(reached[row]) << row;
}

// Separator pages "1,3" and a booklet margin shift of 5 with auto-fit on.
void SeparatorAndAutoFit(FeaturesOptionRecord& f) {
  f.separatorPagesList = 2;
  Set(f.separatorPages, "1,3");
  f.bookletMarginSwitch = 1;
  Set(f.bookletMarginShift, "5");
  f.autoFitSwitch = 1;
}

const char kSeparator[] =
    "[{\n%%BeginNonPPDFeatures\n"
    "1 dict dup/SeparatorPages[1,3]put/Custom/ProcSet findresource/setcoverseparator get exec\n"
    "%%EndNonPPDFeatures\n} stopped cleartomark\n";
const char kImageShift[] =
    "[{\n%%BeginNonPPDFeatures\n"
    "5.000/Custom/ProcSet findresource/setsignatureimageshift get exec\n"
    "%%EndNonPPDFeatures\n} stopped cleartomark\n";
const char kAutoScaleOn[] =
    "[{\n%%BeginNonPPDFeatures\n"
    "/Custom/ProcSet findresource/setsignatureautoscale 2 copy known {get true exch exec} "
    "{pop pop} ifelse\n"
    "%%EndNonPPDFeatures\n} stopped cleartomark\n";
const char kAutoScaleOff[] =
    "[{\n%%BeginNonPPDFeatures\n"
    "/Custom/ProcSet findresource/setsignatureautoscale 2 copy known {get false exch exec} "
    "{pop pop} ifelse\n"
    "%%EndNonPPDFeatures\n} stopped cleartomark\n";

TEST_F(FeaturesTest, SeparatorAndAutoFitPointsByPagesPerSheet) {
  const std::string autoFit = std::string(kImageShift) + kAutoScaleOn;
  const std::string both = kSeparator + autoFit;
  const struct {
    const char* rows;
    const char* columns;
    int32_t point;
    std::string expected;
  } cases[] = {
      // 1-up: separator before the prolog ends, auto-fit before the setup ends.
      {"1", "1", 14, kSeparator},
      {"1", "1", 16, autoFit},
      {"1", "1", 21, ""},
      // No layout in the ticket counts as 1-up.
      {"", "", 14, kSeparator},
      {"", "", 16, autoFit},
      {"", "", 21, ""},
      // 2-up and 4-up: both at the page device line, separator first.
      {"1", "2", 14, ""},
      {"1", "2", 16, ""},
      {"1", "2", 21, both},
      {"2", "2", 21, both},
      {"2", "1", 16, ""},
      // A negative product is neither 1-up (unsigned) nor N-up (signed).
      {"-1", "2", 14, ""},
      {"-1", "2", 16, ""},
      {"-1", "2", 21, ""},
      // Other injection points never write.
      {"1", "1", 13, ""},
      {"1", "1", 23, ""},
      {"1", "1", 24, ""},
      {"1", "1", 27, ""},
      {"1", "2", 28, ""},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(std::string(c.rows) + "x" + c.columns + " at " + std::to_string(c.point));
    SeparatorAndAutoFit(zpjlOptionFeatures);
    Set(StdLayoutRowInfo, c.rows);
    Set(StdLayoutColumnInfo, c.columns);
    EXPECT_EQ(PostScriptAt(c.point), c.expected);
  }
}

// A job through the pass-through: where the fragments land among its lines.
std::string PassThrough(const std::vector<const char*>& lines) {
  char copies[] = "1";
  char* argv[7] = {nullptr, nullptr, nullptr, nullptr, copies, nullptr, nullptr};
  return CaptureStream([&](FILE* out) {
    PSLineState state;
    for (const char* line : lines) HandlePSLine(state, line, std::strlen(line), '\n', argv, out);
  });
}

TEST_F(FeaturesTest, FragmentsLandAtTheirLinesInAJob) {
  const std::vector<const char*> job = {
      "%!PS-Adobe-3.0", "%%BeginProlog", "%%EndProlog", "%%BeginProlog", "%%EndProlog",
      "%%BeginSetup", "userdict/setpagedevice{pop}bind put", "%%EndSetup", "bp", "ep"};
  const std::string autoFit = std::string(kImageShift) + kAutoScaleOn;
  const struct {
    const char* rows;
    const char* columns;
    std::string expected;
  } cases[] = {
      {"1", "1",
       "%!PS-Adobe-3.0\n%%BeginProlog\n" + std::string(kSeparator) +
           "%%EndProlog\n%%BeginProlog\n%%EndProlog\n%%BeginSetup\n"
           "userdict/setpagedevice{pop}bind put\n" + autoFit + "%%EndSetup\nbp\nep\n"},
      {"2", "1",
       "%!PS-Adobe-3.0\n%%BeginProlog\n%%EndProlog\n%%BeginProlog\n%%EndProlog\n"
       "%%BeginSetup\n" + std::string(kSeparator) + autoFit +
           "userdict/setpagedevice{pop}bind put\n%%EndSetup\nbp\nep\n"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(std::string(c.rows) + "x" + c.columns);
    SeparatorAndAutoFit(zpjlOptionFeatures);
    Set(StdLayoutRowInfo, c.rows);
    Set(StdLayoutColumnInfo, c.columns);
    EXPECT_EQ(PassThrough(job), c.expected);
  }
}

TEST_F(FeaturesTest, SeparatorPagesFragment) {
  const struct {
    int32_t list;
    const char* pages;
    std::string expected;
  } cases[] = {
      {-1, "1,3", ""},
      {1, "1,3", ""},
      {2, "1,3", kSeparator},
      {0, "1,3", kSeparator},
      // 13 characters fill the 100-byte line exactly; one more cuts its end.
      {2, "1,2,3,4,5,6,7",
       "[{\n%%BeginNonPPDFeatures\n1 dict dup/SeparatorPages[1,2,3,4,5,6,7]put/Custom/ProcSet "
       "findresource/setcoverseparator get exec\n%%EndNonPPDFeatures\n} stopped cleartomark\n"},
      {2, "1,2,3,4,5,6,78",
       "[{\n%%BeginNonPPDFeatures\n1 dict dup/SeparatorPages[1,2,3,4,5,6,78]put/Custom/ProcSet "
       "findresource/setcoverseparator get exec%%EndNonPPDFeatures\n} stopped cleartomark\n"},
      // Ticket text is never a format.
      {2, "%s%n", "[{\n%%BeginNonPPDFeatures\n1 dict dup/SeparatorPages[%s%n]put/Custom/ProcSet "
                  "findresource/setcoverseparator get exec\n%%EndNonPPDFeatures\n} stopped "
                  "cleartomark\n"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(std::to_string(c.list) + " " + c.pages);
    zpjlOptionFeatures.separatorPagesList = c.list;
    Set(zpjlOptionFeatures.separatorPages, c.pages);
    EXPECT_EQ(CaptureStream([](FILE* s) { FeaturesOutputSeparatorPages(s); }), c.expected);
  }
}

TEST_F(FeaturesTest, AutoFitFollowsTheBookletMargin) {
  const struct {
    int32_t bookletMargin;
    int32_t autoFit;
    std::string expected;
  } cases[] = {
      {-1, 1, ""},
      {0, 1, ""},
      {1, -1, kImageShift},
      {1, 0, std::string(kImageShift) + kAutoScaleOff},
      {1, 1, std::string(kImageShift) + kAutoScaleOn},
      {1, 7, std::string(kImageShift) + kAutoScaleOn},
      {2, 0, std::string(kImageShift) + kAutoScaleOff},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(std::to_string(c.bookletMargin) + " " + std::to_string(c.autoFit));
    zpjlOptionFeatures.bookletMarginSwitch = c.bookletMargin;
    zpjlOptionFeatures.autoFitSwitch = c.autoFit;
    Set(zpjlOptionFeatures.bookletMarginShift, "5");
    EXPECT_EQ(CaptureStream([](FILE* s) { FeaturesOutputAutoFit(s); }), c.expected);
  }
}

std::string BookletLines(const char* numberUp, int32_t orientation, const char* signature,
                         const char* division) {
  CommentResetOptionRecord();
  CommentOptionRecord& job = psoptioncomment;
  Set(job.numberUp, numberUp);
  job.orientation = orientation;
  Set(job.signature, signature);
  Set(job.signatureVolume, division);
  return CaptureStdout([] { OutputZPJLCommandforBooklet(); });
}

class BookletTest : public ::testing::Test {
 protected:
  void SetUp() override { UsePPD("utf8-color.ppd"); }
  void TearDown() override {
    unsetenv("PPD");
    CommentResetOptionRecord();
  }
  static void UsePPD(const std::string& name) {
    setenv("PPD", (std::string(ZPJL_FIXTURES) + "/ppd/" + name).c_str(), 1);
  }
};

TEST_F(BookletTest, DirectionByLayoutAndOrientation) {
  const struct {
    const char* numberUp;
    int32_t orientation;
    const char* direction;
  } cases[] = {
      {"", 1, "PORTRAIT"},   {"", 4, "PORTRAIT"},   {"", 5, "PORTRAIT"},
      // The sheet-turning layouts: portrait orientations give landscape.
      {"2", 1, "LANDSCAPE"}, {"2", 6, "LANDSCAPE"}, {"2", 4, "PORTRAIT"},
      {"2", 5, "PORTRAIT"},  {"6", 1, "LANDSCAPE"}, {"6", 3, "PORTRAIT"},
      // Every other layout follows the orientation.
      {"1", 4, "LANDSCAPE"}, {"1", 5, "LANDSCAPE"}, {"1", 3, "PORTRAIT"},
      {"1", 1, "PORTRAIT"},  {"4", 5, "LANDSCAPE"}, {"9", 6, "PORTRAIT"},
      {"16", 4, "LANDSCAPE"}, {"20", 4, "LANDSCAPE"}, {"3", 1, "PORTRAIT"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(std::string(c.numberUp) + " / " + std::to_string(c.orientation));
    EXPECT_EQ(BookletLines(c.numberUp, c.orientation, "", ""),
              Attr(std::string("DIND=") + c.direction));
  }
}

TEST_F(BookletTest, BindingAndDivision) {
  const std::string portrait = Attr("DIND=PORTRAIT");
  const struct {
    const char* signature;
    const char* division;
    std::string lines;
  } cases[] = {
      {"", "10Sheets", ""},
      {"None", "10Sheets", Attr("DIBB=OFF") + Attr("DIBK=OFF")},
      {"BookLeft", "None", Attr("DIBB=LEFT") + Attr("DIBK=NONEDIVIDE")},
      {"LeftSigCenterStaple", "", Attr("DIBB=LEFT") + Attr("DIBK=NONEDIVIDE")},
      {"RightSig", "10Sheets", Attr("DIBB=RIGHT") + Attr("DIBK=MANUALDIVIDE")},
      {"LeftRight", "5Sheets", Attr("DIBB=LEFT") + Attr("DIBK=MANUALDIVIDE")},
      {"CenterFold", "", Attr("DIBK=NONEDIVIDE")},
      {"CenterFold", "3Sheets", Attr("DIBK=MANUALDIVIDE")},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(std::string(c.signature) + " / " + c.division);
    EXPECT_EQ(BookletLines("", 1, c.signature, c.division), portrait + c.lines);
  }
}

TEST_F(BookletTest, OnlyUTF8PrintersGetTheAttributes) {
  const struct {
    const char* ppd;  // nullptr: no PPD at all
    bool writes;
  } cases[] = {
      {"utf8-color.ppd", true},
      {"utf8-nocomment.ppd", true},
      {"legacy-mono.ppd", false},
      {"bare.ppd", false},
      {"no-such-file.ppd", false},
      {nullptr, false},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.ppd != nullptr ? c.ppd : "no PPD");
    if (c.ppd != nullptr) {
      UsePPD(c.ppd);
    } else {
      unsetenv("PPD");
    }
    std::string lines = BookletLines("2", 1, "BookLeft", "None");
    EXPECT_EQ(lines, c.writes ? Attr("DIND=LANDSCAPE") + Attr("DIBB=LEFT") +
                                    Attr("DIBK=NONEDIVIDE")
                              : "");
  }
}

TEST(FeaturesTicket, EveryKeyReachesItsField) {
  const std::string jtz = "com.korvanel.qd.jtz.printsettings.";
  const std::string etz = "com.korvanel.qd.etz.printsettings.";
  std::string ticket;
  auto add = [&ticket](const std::string& key, const char* value) {
    ticket += " " + key + "=" + value;
  };
  add(jtz + "TabMarginSwitchTicket", "1");
  add(jtz + "TrimmerSwitchTicket", "0");
  add(etz + "TrimmerSelectTicket", "3");
  add(jtz + "BookletMarginSwitchTicket", "1");
  add(jtz + "TabMarginMMShiftTicket", "12");
  add(jtz + "TrimmerMMCuttingSizeTicket", "30");
  add(etz + "TrimmerWidthMMSizeTicket", "210");
  add(etz + "TrimmerHeightMMSizeTicket", "297");
  add(etz + "TrimmerAdjustMMSizeTicket", "2");
  add(jtz + "NumInSequenceSwitchTicket", "1");
  add(jtz + "NumInSequenceLArrowTicket", "7");
  add(jtz + "OffsetStackingListTicket", "5");
  add(jtz + "OffsetStackingPagesLArrowTicket", "10");
  add(jtz + "OffsetStackingUnitsLArrowTicket", "20");
  add(jtz + "SeparatorPageListTicket", "2");
  add(jtz + "SeparatorPageTicket", "1,3");
  add(jtz + "AutoFitSwitchTicket", "0");
  add(jtz + "BookletMarginMMShiftTicket", "6");
  add(jtz + "EjectOptionsListTicket", "4");
  add("media", "A5");
  add(etz + "whetherMediaSizeA5Ticket", "1");
  add("KRNumPunchHoles", "CoilPunch");
  add(jtz + "featuresMediaTypeTabTicket", "true");
  add(jtz + "CoilPunchFaceTicket", "false");
  add(jtz + "whetherMediaTypeTabTicket", "1");
  // Texts longer than their field are cut at its size.
  add(jtz + "TrimmerMMCuttingSizeTicket", "123456");
  FilterArguments args(ticket);
  FeaturesGetTicketFromPDE(args.argv);

  const FeaturesOptionRecord& f = zpjlOptionFeatures;
  EXPECT_EQ(f.tabMarginSwitch, 1);
  EXPECT_EQ(f.trimmerSwitch, 0);
  EXPECT_EQ(f.trimmerSelect, 3);
  EXPECT_EQ(f.bookletMarginSwitch, 1);
  EXPECT_STREQ(f.tabMarginShift, "12");
  EXPECT_STREQ(f.trimmerCuttingSize, "1234");
  EXPECT_STREQ(f.trimmerWidth, "210");
  EXPECT_STREQ(f.trimmerHeight, "297");
  EXPECT_STREQ(f.trimmerAdjust, "2");
  EXPECT_EQ(f.separatorPagesList, 2);
  EXPECT_STREQ(f.separatorPages, "1,3");
  EXPECT_EQ(f.autoFitSwitch, 0);
  EXPECT_STREQ(f.bookletMarginShift, "6");
  EXPECT_EQ(f.numInSequenceSwitch, 1);
  EXPECT_STREQ(f.numInSequenceStart, "7");
  EXPECT_EQ(f.offsetStackingList, 5);
  EXPECT_STREQ(f.offsetStackingPages, "10");
  EXPECT_STREQ(f.offsetStackingUnits, "20");
  EXPECT_EQ(f.ejectOptions, 4);
  EXPECT_STREQ(f.media, "A5");
  EXPECT_EQ(f.specialPagesA5, 1);
  EXPECT_STREQ(f.punchHoles, "CoilPunch");
  EXPECT_STREQ(f.featuresMediaTypeTab, "true");
  EXPECT_STREQ(f.coilPunchFace, "false");
  EXPECT_EQ(f.specialPagesMediaTab, 1);
  EXPECT_EQ(FeaturesticketDataNum, 25);
}

}  // namespace
