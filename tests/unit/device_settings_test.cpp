#include "modules/device_settings/device_settings.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <functional>
#include <set>
#include <string>
#include <utility>

#include "frame/fixed_text.h"
#include "modules/job_comments/job_comments.h"
#include "platform/job_ppd.h"

namespace {

std::string FixturePPD(const char* name) {
  return std::string(ZPJL_FIXTURES) + "/ppd/" + name;
}

void UsePPD(const char* name) { setenv("PPD", FixturePPD(name).c_str(), 1); }

std::string Capture(const std::function<void()>& write) {
  testing::internal::CaptureStdout();
  write();
  return testing::internal::GetCapturedStdout();
}

class DeviceSettingsTest : public testing::Test {
 protected:
  void SetUp() override {
    CommentResetOptionRecord();
    UsePPD("jobinfo-utf8-color.ppd");
  }
  void TearDown() override { unsetenv("PPD"); }

  static void Set(char* field, const char* text) { CopyText(field, kCommentTextSize, text); }
};

// ---- Toner saver ----------------------------------------------------------------

struct TonerCase {
  const char* saver;
  const char* rate;
  const char* expected;
};

TEST_F(DeviceSettingsTest, TonerSaverLines) {
  const TonerCase cases[] = {
      // A user rate follows a seven-character prefix and is capped at 99.
      {"UserInput", "Reduce_150", "@PJL SET ECONOMODE=ON\n@PJL SET REDUCTIONRATE=99\n"},
      {"UserInput", "Reduce_35", "@PJL SET ECONOMODE=ON\n@PJL SET REDUCTIONRATE=35\n"},
      {"UserInput", "Reduce_0", "@PJL SET ECONOMODE=OFF\n@PJL SET REDUCTIONRATE=0\n"},
      {"UserInput", "Reduce_-5", "@PJL SET ECONOMODE=OFF\n@PJL SET REDUCTIONRATE=0\n"},
      {"UserInput", "Reduce_xx", "@PJL SET ECONOMODE=OFF\n@PJL SET REDUCTIONRATE=0\n"},
      // The prefix is skipped unread, whatever it holds.
      {"UserInput", "1234567" "8", "@PJL SET ECONOMODE=ON\n@PJL SET REDUCTIONRATE=8\n"},
      // Seven characters or fewer: no lines at all.
      {"UserInput", "Reduce_", ""},
      {"UserInput", "", ""},
      // Only seven characters of the tail are read: "0000001" and then "5" is ignored.
      {"UserInput", "Reduce_00000015", "@PJL SET ECONOMODE=ON\n@PJL SET REDUCTIONRATE=1\n"},
      {"UserInput", "Reduce_123456789012345678901234567890",
       "@PJL SET ECONOMODE=ON\n@PJL SET REDUCTIONRATE=99\n"},
      {"Mode1", "", "@PJL SET ECONOMODE=MODE1\n@PJL SET REDUCTIONRATE=0\n"},
      {"Mode2", "", "@PJL SET ECONOMODE=MODE2\n@PJL SET REDUCTIONRATE=0\n"},
      {"Mode3", "Reduce_50", "@PJL SET ECONOMODE=MODE3\n@PJL SET REDUCTIONRATE=0\n"},
      {"true", "", "@PJL SET ECONOMODE=ON\n@PJL SET REDUCTIONRATE=0\n"},
      {"false", "", "@PJL SET ECONOMODE=OFF\n@PJL SET REDUCTIONRATE=0\n"},
      // The PPD spellings are not the header's: only the rate line follows.
      {"True", "", "@PJL SET REDUCTIONRATE=0\n"},
      {"False", "", "@PJL SET REDUCTIONRATE=0\n"},
      {"Mode4", "", "@PJL SET REDUCTIONRATE=0\n"},
      {"", "Reduce_50", ""},
  };
  for (const TonerCase& c : cases) {
    SCOPED_TRACE(std::string(c.saver) + " / " + c.rate);
    CommentResetOptionRecord();
    Set(psoptioncomment.tonerSaver, c.saver);
    Set(psoptioncomment.tonerReductionRate, c.rate);
    EXPECT_EQ(Capture(OutputZPJLCommandForTonerSaver), c.expected);
  }
}

// ---- Line weight and render mode ------------------------------------------------

struct LineWeightCase {
  const char* weight;
  const char* expected;
};

TEST_F(DeviceSettingsTest, LineWeightComesBeforeRenderMode) {
  const LineWeightCase cases[] = {
      {"Strongly2", "@PJL SET JOBATTR=\"@LWAD=-2\"\n"},
      {"Weakly1", "@PJL SET JOBATTR=\"@LWAD=1\"\n"},
      {"Normal", "@PJL SET JOBATTR=\"@LWAD=0\"\n"},
      // Only the first digit is sent; "Strongly" wins over "Weakly".
      {"Level3Strongly", "@PJL SET JOBATTR=\"@LWAD=-3\"\n"},
      {"Weakly25", "@PJL SET JOBATTR=\"@LWAD=2\"\n"},
      {"StronglyWeakly4", "@PJL SET JOBATTR=\"@LWAD=-4\"\n"},
      // No digit, or neither word: nothing.
      {"Strongly", ""},
      {"Medium3", ""},
      {"normal", ""},
      {"", ""},
  };
  for (const LineWeightCase& c : cases) {
    SCOPED_TRACE(c.weight);
    CommentResetOptionRecord();
    Set(psoptioncomment.lineWeightAdjustment, c.weight);
    Set(psoptioncomment.colorMode, "Black");
    EXPECT_EQ(Capture(OutputZPJLCommandOthers),
              std::string(c.expected) + "@PJL SET RENDERMODE=GRAYSCALE\n");
  }
}

TEST_F(DeviceSettingsTest, LineWeightDigitSearchStopsAtAFullBuffer) {
  // A field filled to its last byte, without a digit.
  std::memset(psoptioncomment.lineWeightAdjustment, 'S', kCommentTextSize - 1);
  std::memcpy(psoptioncomment.lineWeightAdjustment, "Strongly", 8);
  Set(psoptioncomment.colorMode, "Color");
  EXPECT_EQ(Capture(OutputZPJLCommandOthers), "@PJL SET RENDERMODE=COLOR\n");
}

struct RenderCase {
  const char* ppd;  // fixture name, or a path that does not exist
  const char* colorMode;
  const char* expected;
};

TEST_F(DeviceSettingsTest, RenderModeByColorModeAndPPD) {
  const RenderCase cases[] = {
      // No colour mode in the ticket: colour device and default "Color" both needed.
      {"jobinfo-utf8-color.ppd", "", "@PJL SET RENDERMODE=COLOR\n"},
      {"jobinfo-utf8-color-black-default.ppd", "", "@PJL SET RENDERMODE=GRAYSCALE\n"},
      {"jobinfo-legacy-mono.ppd", "", "@PJL SET RENDERMODE=GRAYSCALE\n"},
      {"jobinfo-no-encoding-no-pcfilename.ppd", "", "@PJL SET RENDERMODE=GRAYSCALE\n"},
      {"no-such-file.ppd", "", "@PJL SET RENDERMODE=GRAYSCALE\n"},
      // The ticket's own choice wins over the device.
      {"jobinfo-legacy-mono.ppd", "Color", "@PJL SET RENDERMODE=COLOR\n"},
      {"jobinfo-utf8-color.ppd", "Black", "@PJL SET RENDERMODE=GRAYSCALE\n"},
      // Another choice is the printer's when the PPD offers the option.
      {"jobinfo-utf8-color.ppd", "Auto", ""},
      {"jobinfo-legacy-mono.ppd", "Auto", ""},
      {"jobinfo-no-encoding-no-pcfilename.ppd", "Auto", "@PJL SET RENDERMODE=GRAYSCALE\n"},
      {"no-such-file.ppd", "Auto", "@PJL SET RENDERMODE=GRAYSCALE\n"},
      {"jobinfo-utf8-color.ppd", "color", ""},
  };
  for (const RenderCase& c : cases) {
    SCOPED_TRACE(std::string(c.ppd) + " / " + c.colorMode);
    UsePPD(c.ppd);
    CommentResetOptionRecord();
    Set(psoptioncomment.colorMode, c.colorMode);
    EXPECT_EQ(Capture(OutputZPJLCommandOthers), c.expected);
  }
}

struct PrinterCase {
  const char* ppd;
  int colorDevice;
  int defaultColor;
};

TEST_F(DeviceSettingsTest, PrinterColourQuestions) {
  const PrinterCase cases[] = {
      {"jobinfo-utf8-color.ppd", 1, 1},
      {"jobinfo-utf8-color-black-default.ppd", 1, 0},
      {"jobinfo-legacy-mono.ppd", 0, 1},
      {"jobinfo-no-encoding-no-pcfilename.ppd", 1, 0},
      {"no-such-file.ppd", 0, 0},
  };
  for (const PrinterCase& c : cases) {
    SCOPED_TRACE(c.ppd);
    UsePPD(c.ppd);
    EXPECT_EQ(IsColorDeivce(), c.colorDevice);
    EXPECT_EQ(getDefaultColorMode(), c.defaultColor);
  }
  unsetenv("PPD");
  EXPECT_EQ(IsColorDeivce(), 0);
  EXPECT_EQ(getDefaultColorMode(), 0);
}

// ---- Device-settings command table ------------------------------------------------

struct LookupCase {
  const char* keyword;
  const char* choice;
  const char* expected;  // nullptr: no row
};

TEST(DeviceSettingsLookupTest, FindsTheRowOfKeywordAndChoice) {
  const LookupCase cases[] = {
      {"*KRSetTrapMode", "False", "@PJL SET JOBATTR=\"@TRAP=OFF\"\n"},
      {"*KRSetTrapMode", "True", "@PJL SET JOBATTR=\"@TRAP=ON\"\n"},
      {"*KRGrayBalance", "True", "@PJL SET JOBATTR=\"@GRGU=TEXTGRAPHICS\"\n"},
      {"*KROutputMode", "HighSpeed", "@PJL SET BITSPERPIXEL=1\n"},
      {"*KRBrightnes", "Bright5", "@PJL SET JOBATTR=\"@PSBR=5\"\n"},
      {"*KRBrightnes", "Normal", "@PJL SET JOBATTR=\"@PSBR=0\"\n"},
      {"*KRBrightnes", "Dark3", "@PJL SET JOBATTR=\"@PSBR=-3\"\n"},
      {"*KRRGBInputProfile", "AdobeRGB", "@PJL SET JOBATTR=\"@RGBP=ADOBERGB\"\n"},
      {"*KRRGBBCorrection", "Dark", "@PJL SET JOBATTR=\"@RGBG=22\"\n"},
      {"*Smoothing", "False", "@PJL SET RET=OFF\n"},
      {"*KRTonerSaver", "True", "@PJL SET ECONOMODE=ON\n"},
      {"*KRMonochromePriority", "True", "@PJL SET JOBATTR=\"@BSPM=ON\"\n"},
      {"*KRColorDensityCyanLow", "-3", "@PJL SET JOBATTR=\"@AJCL=0\"\n"},
      {"*KRColorDensityMagentaMid", "0", "@PJL SET JOBATTR=\"@AJMM=3\"\n"},
      {"*KRColorDensityYellowHigh", "+1", "@PJL SET JOBATTR=\"@AJYH=4\"\n"},
      {"*KRColorDensityBlackHigh", "+3", "@PJL SET JOBATTR=\"@AJKH=6\"\n"},
      // Spellings the table does not hold.
      {"*KRColorDensityBlackHigh", "+0", nullptr},
      {"*KRColorDensityBlackHigh", "3", nullptr},
      {"*KRBrightnes", "Bright0", nullptr},
      {"*KRBrightness", "Normal", nullptr},
      {"*KRRGBCorrection", "Dark", nullptr},
      {"*KRTonerSaver", "true", nullptr},
      {"*KRSetTrapMode", "", nullptr},
      {"KRSetTrapMode", "True", nullptr},
      {"**KRSetTrapMode", "True", nullptr},
      {"*", "True", nullptr},
      {"", "", nullptr},
  };
  for (const LookupCase& c : cases) {
    SCOPED_TRACE(std::string(c.keyword) + " " + c.choice);
    const char* command = GetThePJLCommandfromKeywordsandMarkedValue(c.keyword, c.choice);
    if (c.expected == nullptr) {
      EXPECT_EQ(command, nullptr);
    } else {
      ASSERT_NE(command, nullptr);
      EXPECT_STREQ(command, c.expected);
    }
  }
  EXPECT_EQ(GetThePJLCommandfromKeywordsandMarkedValue(nullptr, "True"), nullptr);
  EXPECT_EQ(GetThePJLCommandfromKeywordsandMarkedValue("*KRSetTrapMode", nullptr), nullptr);
}

TEST(DeviceSettingsLookupTest, TableHoldsEveryRowOnceInItsOrder) {
  ASSERT_EQ(FeaturePPDKeyNameandMarkedValuetoPJLCommandNum, 123);
  const DeviceSettingCommand* table = FeaturePPDKeyNameandMarkedValuetoPJLCommand;
  EXPECT_STREQ(table[0].keyword, "KRSetTrapMode");
  EXPECT_STREQ(table[38].command, "@PJL SET JOBATTR=\"@BSPM=ON\"\n");
  EXPECT_STREQ(table[39].keyword, "KRColorDensityCyanLow");
  EXPECT_STREQ(table[39].choice, "-3");
  EXPECT_STREQ(table[122].keyword, "KRColorDensityBlackHigh");
  EXPECT_STREQ(table[122].choice, "+3");

  std::set<std::pair<std::string, std::string>> seen;
  for (int32_t i = 0; i < FeaturePPDKeyNameandMarkedValuetoPJLCommandNum; ++i) {
    SCOPED_TRACE(i);
    EXPECT_TRUE(seen.emplace(table[i].keyword, table[i].choice).second) << "duplicate row";
    std::string command = table[i].command;
    EXPECT_EQ(command.rfind("@PJL SET ", 0), 0u);
    EXPECT_EQ(command.back(), '\n');
  }
}

// ---- Default lines for features the PPD lacks --------------------------------------

TEST_F(DeviceSettingsTest, DefaultLinesForFeaturesMissingFromThePPD) {
  ppd_file_t* ppd = AcquireJobPPD();  // defines trapping and toner saver only
  ASSERT_NE(ppd, nullptr);
  EXPECT_EQ(Capture([&] { OutputPJLCommandForPPDKeyArray(PPDKeyArray, ppd); }),
            "@PJL SET JOBATTR=\"@GRGU=OFF\"\n"
            "@PJL SET JOBATTR=\"@PSBR=0\"\n"
            "@PJL SET JOBATTR=\"@RGBP=SRGB\"\n"
            "@PJL SET JOBATTR=\"@RGBG=22\"\n");
  ReleaseJobPPD(ppd);

  UsePPD("jobinfo-legacy-mono.ppd");
  ppd = AcquireJobPPD();
  ASSERT_NE(ppd, nullptr);
  EXPECT_EQ(Capture([&] { OutputPJLCommandForPPDKeyArray(PPDKeyArray, ppd); }),
            "@PJL SET JOBATTR=\"@TRAP=OFF\"\n"
            "@PJL SET JOBATTR=\"@GRGU=OFF\"\n"
            "@PJL SET JOBATTR=\"@PSBR=0\"\n"
            "@PJL SET JOBATTR=\"@RGBP=SRGB\"\n"
            "@PJL SET JOBATTR=\"@RGBG=22\"\n"
            "@PJL SET ECONOMODE=OFF\n");
  ReleaseJobPPD(ppd);

  EXPECT_EQ(Capture([] { OutputPJLCommandForPPDKeyArray(PPDKeyArray, nullptr); }), "");
}

}  // namespace
