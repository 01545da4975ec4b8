#include "modules/device_settings/device_settings.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "base/fixed_text.h"
#include "modules/job_comments/job_comments.h"
#include "platform/job_ppd.h"
#include "test_support.h"

namespace {

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
      // A user rate follows a seven-character prefix and is capped at 99
      // (the whole-header table shows "Reduce_150" and a rate too short).
      {"UserInput", "Reduce_0", "@PJL SET ECONOMODE=OFF\n@PJL SET REDUCTIONRATE=0\n"},
      {"UserInput", "Reduce_-5", "@PJL SET ECONOMODE=OFF\n@PJL SET REDUCTIONRATE=0\n"},
      // The prefix is skipped unread, whatever it holds.
      {"UserInput", "1234567" "8", "@PJL SET ECONOMODE=ON\n@PJL SET REDUCTIONRATE=8\n"},
      // Only seven characters of the tail are read: "0000001" and then "5" is ignored.
      {"UserInput", "Reduce_00000015", "@PJL SET ECONOMODE=ON\n@PJL SET REDUCTIONRATE=1\n"},
      {"UserInput", "Reduce_123456789012345678901234567890",
       "@PJL SET ECONOMODE=ON\n@PJL SET REDUCTIONRATE=99\n"},
      {"Mode3", "Reduce_50", "@PJL SET ECONOMODE=MODE3\n@PJL SET REDUCTIONRATE=0\n"},
      {"true", "", "@PJL SET ECONOMODE=ON\n@PJL SET REDUCTIONRATE=0\n"},
      // Not a setting of the header (nor is the PPD's "True"): only the rate line.
      {"Mode4", "", "@PJL SET REDUCTIONRATE=0\n"},
      {"", "Reduce_50", ""},
  };
  for (const TonerCase& c : cases) {
    SCOPED_TRACE(std::string(c.saver) + " / " + c.rate);
    CommentResetOptionRecord();
    Set(psoptioncomment.tonerSaver, c.saver);
    Set(psoptioncomment.tonerReductionRate, c.rate);
    EXPECT_EQ(CaptureStdout(OutputZPJLCommandForTonerSaver), c.expected);
  }
}

// ---- Line weight and render mode ------------------------------------------------

struct LineWeightCase {
  const char* weight;
  const char* expected;
};

TEST_F(DeviceSettingsTest, LineWeightComesBeforeRenderMode) {
  const LineWeightCase cases[] = {
      // Only the first digit is sent; "Strongly" wins over "Weakly".
      {"Level3Strongly", "@PJL SET JOBATTR=\"@LWAD=-3\"\n"},
      {"StronglyWeakly4", "@PJL SET JOBATTR=\"@LWAD=-4\"\n"},
      // No digit, or neither word: nothing.
      {"Strongly", ""},
      {"Medium3", ""},
  };
  for (const LineWeightCase& c : cases) {
    SCOPED_TRACE(c.weight);
    CommentResetOptionRecord();
    Set(psoptioncomment.lineWeightAdjustment, c.weight);
    Set(psoptioncomment.colorMode, "Black");
    EXPECT_EQ(CaptureStdout(OutputZPJLCommandOthers),
              std::string(c.expected) + "@PJL SET RENDERMODE=GRAYSCALE\n");
  }
}

TEST_F(DeviceSettingsTest, LineWeightDigitSearchStopsAtAFullBuffer) {
  // A field filled to its last byte, without a digit.
  std::memset(psoptioncomment.lineWeightAdjustment, 'S', kCommentTextSize - 1);
  std::memcpy(psoptioncomment.lineWeightAdjustment, "Strongly", 8);
  Set(psoptioncomment.colorMode, "Color");
  EXPECT_EQ(CaptureStdout(OutputZPJLCommandOthers), "@PJL SET RENDERMODE=COLOR\n");
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
      {"jobinfo-legacy-mono.ppd", "", "@PJL SET RENDERMODE=GRAYSCALE\n"},
      {"no-such-file.ppd", "", "@PJL SET RENDERMODE=GRAYSCALE\n"},
      // The ticket's own choice wins over the device.
      {"jobinfo-legacy-mono.ppd", "Color", "@PJL SET RENDERMODE=COLOR\n"},
      {"jobinfo-utf8-color.ppd", "Black", "@PJL SET RENDERMODE=GRAYSCALE\n"},
      // Another choice is the printer's when the PPD offers the option.
      {"no-such-file.ppd", "Auto", "@PJL SET RENDERMODE=GRAYSCALE\n"},
  };
  for (const RenderCase& c : cases) {
    SCOPED_TRACE(std::string(c.ppd) + " / " + c.colorMode);
    UsePPD(c.ppd);
    CommentResetOptionRecord();
    Set(psoptioncomment.colorMode, c.colorMode);
    EXPECT_EQ(CaptureStdout(OutputZPJLCommandOthers), c.expected);
  }
}

// ---- Device-settings command table ------------------------------------------------

struct LookupCase {
  const char* keyword;
  const char* choice;
  const char* expected;  // nullptr: no row
};

TEST(DeviceSettingsLookupTest, FindsTheRowOfKeywordAndChoice) {
  ASSERT_EQ(FeaturePPDKeyNameandMarkedValuetoPJLCommandNum, 123);
  const LookupCase cases[] = {
      {"*KRSetTrapMode", "False", "@PJL SET JOBATTR=\"@TRAP=OFF\"\n"},
      {"*KROutputMode", "HighSpeed", "@PJL SET BITSPERPIXEL=1\n"},
      {"*KRBrightnes", "Bright5", "@PJL SET JOBATTR=\"@PSBR=5\"\n"},
      {"*KRBrightnes", "Dark3", "@PJL SET JOBATTR=\"@PSBR=-3\"\n"},
      {"*KRRGBBCorrection", "Dark", "@PJL SET JOBATTR=\"@RGBG=22\"\n"},
      {"*KRTonerSaver", "True", "@PJL SET ECONOMODE=ON\n"},
      {"*KRMonochromePriority", "True", "@PJL SET JOBATTR=\"@BSPM=ON\"\n"},
      {"*KRColorDensityCyanLow", "-3", "@PJL SET JOBATTR=\"@AJCL=0\"\n"},
      {"*KRColorDensityYellowHigh", "+1", "@PJL SET JOBATTR=\"@AJYH=4\"\n"},
      {"*KRColorDensityBlackHigh", "+3", "@PJL SET JOBATTR=\"@AJKH=6\"\n"},
      // Spellings the table does not hold.
      {"*KRColorDensityBlackHigh", "+0", nullptr},
      {"*KRBrightnes", "Bright0", nullptr},
      {"*KRBrightness", "Normal", nullptr},
      {"*KRTonerSaver", "true", nullptr},
      {"*KRSetTrapMode", "", nullptr},
      {"KRSetTrapMode", "True", nullptr},
      {"**KRSetTrapMode", "True", nullptr},
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

// ---- Default lines for features the PPD lacks --------------------------------------

TEST_F(DeviceSettingsTest, DefaultLinesForFeaturesMissingFromThePPD) {
  ppd_file_t* ppd = AcquireJobPPD();  // defines trapping and toner saver only
  ASSERT_NE(ppd, nullptr);
  EXPECT_EQ(CaptureStdout([&] { OutputPJLCommandForPPDKeyArray(PPDKeyArray, ppd); }),
            "@PJL SET JOBATTR=\"@GRGU=OFF\"\n"
            "@PJL SET JOBATTR=\"@PSBR=0\"\n"
            "@PJL SET JOBATTR=\"@RGBP=SRGB\"\n"
            "@PJL SET JOBATTR=\"@RGBG=22\"\n");
  ReleaseJobPPD(ppd);

  UsePPD("jobinfo-legacy-mono.ppd");
  ppd = AcquireJobPPD();
  ASSERT_NE(ppd, nullptr);
  EXPECT_EQ(CaptureStdout([&] { OutputPJLCommandForPPDKeyArray(PPDKeyArray, ppd); }),
            "@PJL SET JOBATTR=\"@TRAP=OFF\"\n"
            "@PJL SET JOBATTR=\"@GRGU=OFF\"\n"
            "@PJL SET JOBATTR=\"@PSBR=0\"\n"
            "@PJL SET JOBATTR=\"@RGBP=SRGB\"\n"
            "@PJL SET JOBATTR=\"@RGBG=22\"\n"
            "@PJL SET ECONOMODE=OFF\n");
  ReleaseJobPPD(ppd);

  EXPECT_EQ(CaptureStdout([] { OutputPJLCommandForPPDKeyArray(PPDKeyArray, nullptr); }), "");
}

}  // namespace
