#include "modules/device_settings/device_settings.h"

#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "base/fixed_text.h"
#include "base/output_channel.h"
#include "base/ppd_queries.h"
#include "modules/job_comments/job_comments.h"
#include "platform/job_ppd.h"

// ---- Header lines -------------------------------------------------------------

namespace {

constexpr size_t kDeviceLineSize = 100;

// The reduction-rate choices carry a fixed seven-character prefix before the rate.
constexpr size_t kReductionRatePrefixLength = 7;
constexpr size_t kReductionRateDigits = 7;
constexpr long kMaxReductionRate = 99;

struct TonerSaverRow {
  const char* setting;
  const char* command;
};

// Lower-case "false"/"true" here, unlike the PPD choices of the command table.
const TonerSaverRow kTonerSaverRows[] = {
    {"false", "@PJL SET ECONOMODE=OFF\n"},     {"true", "@PJL SET ECONOMODE=ON\n"},
    {"Mode1", "@PJL SET ECONOMODE=MODE1\n"},   {"Mode2", "@PJL SET ECONOMODE=MODE2\n"},
    {"Mode3", "@PJL SET ECONOMODE=MODE3\n"},
};

void OutputUserReductionRate(const char* rate, FILE* stream) {
  if (std::strlen(rate) <= kReductionRatePrefixLength) return;
  char digits[kReductionRateDigits + 1];
  CopyTextPrefix(digits, sizeof digits, rate + kReductionRatePrefixLength, kReductionRateDigits);
  long value = std::strtol(digits, nullptr, 10);
  if (value > kMaxReductionRate) value = kMaxReductionRate;
  if (value > 0) {
    char line[kDeviceLineSize];
    FormatText(line, sizeof line, "@PJL SET REDUCTIONRATE=%d\n", static_cast<int>(value));
    KZfputs("@PJL SET ECONOMODE=ON\n", stream);
    KZfputs(line, stream);
  } else {
    KZfputs("@PJL SET ECONOMODE=OFF\n", stream);
    KZfputs("@PJL SET REDUCTIONRATE=0\n", stream);
  }
}

// The first decimal digit of `text`, or NUL when there is none.
char FirstDigit(const char* text) {
  for (; *text != '\0'; ++text) {
    if (std::isdigit(static_cast<unsigned char>(*text))) return *text;
  }
  return '\0';
}

void OutputLineWeight(const char* weight, FILE* stream) {
  if (weight[0] == '\0') return;
  if (Equals(weight, "Normal")) {
    KZfputs("@PJL SET JOBATTR=\"@LWAD=0\"\n", stream);
    return;
  }
  char level = FirstDigit(weight);
  if (level == '\0') return;
  char line[kDeviceLineSize];
  // The printer counts thicker lines as negative adjustments.
  if (std::strstr(weight, "Strongly") != nullptr) {
    FormatText(line, sizeof line, "@PJL SET JOBATTR=\"@LWAD=-%c\"\n", level);
  } else if (std::strstr(weight, "Weakly") != nullptr) {
    FormatText(line, sizeof line, "@PJL SET JOBATTR=\"@LWAD=%c\"\n", level);
  } else {
    return;
  }
  KZfputs(line, stream);
}

void OutputRenderMode(const char* colorMode, FILE* stream) {
  switch (DecideRenderColor(colorMode)) {
    case RenderColor::kColor:
      KZfputs("@PJL SET RENDERMODE=COLOR\n", stream);
      break;
    case RenderColor::kGrayscale:
      KZfputs("@PJL SET RENDERMODE=GRAYSCALE\n", stream);
      break;
    case RenderColor::kNone:
      break;
  }
}

}  // namespace

void OutputZPJLCommandForTonerSaver(FILE* stream) {
  const char* saver = psoptioncomment.tonerSaver;
  if (saver[0] == '\0') return;
  if (Equals(saver, "UserInput")) {
    OutputUserReductionRate(psoptioncomment.tonerReductionRate, stream);
    return;
  }
  for (const TonerSaverRow& row : kTonerSaverRows) {
    if (Equals(saver, row.setting)) {
      KZfputs(row.command, stream);
      break;
    }
  }
  KZfputs("@PJL SET REDUCTIONRATE=0\n", stream);
}

void OutputZPJLCommandOthers(FILE* stream) {
  OutputLineWeight(psoptioncomment.lineWeightAdjustment, stream);
  OutputRenderMode(psoptioncomment.colorMode, stream);
}

// ---- Device-settings command table ----------------------------------------------

// Seven rows of one colour-density control: choices -3 to +3 send 0 to 6.
#define KR_COLOR_DENSITY_ROWS(keyword, attribute)                  \
  {keyword, "-3", "@PJL SET JOBATTR=\"@" attribute "=0\"\n"},      \
      {keyword, "-2", "@PJL SET JOBATTR=\"@" attribute "=1\"\n"},  \
      {keyword, "-1", "@PJL SET JOBATTR=\"@" attribute "=2\"\n"},  \
      {keyword, "0", "@PJL SET JOBATTR=\"@" attribute "=3\"\n"},   \
      {keyword, "+1", "@PJL SET JOBATTR=\"@" attribute "=4\"\n"},  \
      {keyword, "+2", "@PJL SET JOBATTR=\"@" attribute "=5\"\n"},  \
      {keyword, "+3", "@PJL SET JOBATTR=\"@" attribute "=6\"\n"}

// "KRBrightnes" and "KRRGBBCorrection" are the printers' own keyword spellings.
const DeviceSettingCommand FeaturePPDKeyNameandMarkedValuetoPJLCommand[] = {
    {"KRSetTrapMode", "False", "@PJL SET JOBATTR=\"@TRAP=OFF\"\n"},
    {"KRSetTrapMode", "True", "@PJL SET JOBATTR=\"@TRAP=ON\"\n"},
    {"KRLetterHeadDuplexMode", "DupAuto", "@PJL SET JOBATTR=\"@DDPM=AUTO\"\n"},
    {"KRLetterHeadDuplexMode", "DupOff", "@PJL SET JOBATTR=\"@DDPM=OFF\"\n"},
    {"KRLetterHeadDuplexMode", "DupOn", "@PJL SET JOBATTR=\"@DDPM=ON\"\n"},
    {"KRGrayBalance", "True", "@PJL SET JOBATTR=\"@GRGU=TEXTGRAPHICS\"\n"},
    {"KRGrayBalance", "False", "@PJL SET JOBATTR=\"@GRGU=OFF\"\n"},
    {"KROutputMode", "HighSpeed", "@PJL SET BITSPERPIXEL=1\n"},
    {"KROutputMode", "Standard", "@PJL SET BITSPERPIXEL=8\n"},
    {"KRBrightnes", "Bright5", "@PJL SET JOBATTR=\"@PSBR=5\"\n"},
    {"KRBrightnes", "Bright4", "@PJL SET JOBATTR=\"@PSBR=4\"\n"},
    {"KRBrightnes", "Bright3", "@PJL SET JOBATTR=\"@PSBR=3\"\n"},
    {"KRBrightnes", "Bright2", "@PJL SET JOBATTR=\"@PSBR=2\"\n"},
    {"KRBrightnes", "Bright1", "@PJL SET JOBATTR=\"@PSBR=1\"\n"},
    {"KRBrightnes", "Normal", "@PJL SET JOBATTR=\"@PSBR=0\"\n"},
    {"KRBrightnes", "Dark5", "@PJL SET JOBATTR=\"@PSBR=-5\"\n"},
    {"KRBrightnes", "Dark4", "@PJL SET JOBATTR=\"@PSBR=-4\"\n"},
    {"KRBrightnes", "Dark3", "@PJL SET JOBATTR=\"@PSBR=-3\"\n"},
    {"KRBrightnes", "Dark2", "@PJL SET JOBATTR=\"@PSBR=-2\"\n"},
    {"KRBrightnes", "Dark1", "@PJL SET JOBATTR=\"@PSBR=-1\"\n"},
    {"KRRGBInputProfile", "SRGB", "@PJL SET JOBATTR=\"@RGBP=SRGB\"\n"},
    {"KRRGBInputProfile", "AdobeRGB", "@PJL SET JOBATTR=\"@RGBP=ADOBERGB\"\n"},
    {"KRRGBBCorrection", "Off", "@PJL SET JOBATTR=\"@RGBG=0\"\n"},
    {"KRRGBBCorrection", "Lightest", "@PJL SET JOBATTR=\"@RGBG=10\"\n"},
    {"KRRGBBCorrection", "Light", "@PJL SET JOBATTR=\"@RGBG=14\"\n"},
    {"KRRGBBCorrection", "Standard", "@PJL SET JOBATTR=\"@RGBG=18\"\n"},
    {"KRRGBBCorrection", "Dark", "@PJL SET JOBATTR=\"@RGBG=22\"\n"},
    {"KRRGBBCorrection", "Darkest", "@PJL SET JOBATTR=\"@RGBG=26\"\n"},
    {"Smoothing", "True", "@PJL SET RET=ON\n"},
    {"Smoothing", "False", "@PJL SET RET=OFF\n"},
    {"KRTonerSaver", "False", "@PJL SET ECONOMODE=OFF\n"},
    {"KRTonerSaver", "True", "@PJL SET ECONOMODE=ON\n"},
    {"KRTonerSaver", "Mode1", "@PJL SET ECONOMODE=MODE1\n"},
    {"KRTonerSaver", "Mode2", "@PJL SET ECONOMODE=MODE2\n"},
    {"KRTonerSaver", "Mode3", "@PJL SET ECONOMODE=MODE3\n"},
    {"KRSaveBlankSheet", "False", "@PJL SET JOBATTR=\"@SBKP=OFF\"\n"},
    {"KRSaveBlankSheet", "True", "@PJL SET JOBATTR=\"@SBKP=ON\"\n"},
    {"KRMonochromePriority", "False", "@PJL SET JOBATTR=\"@BSPM=OFF\"\n"},
    {"KRMonochromePriority", "True", "@PJL SET JOBATTR=\"@BSPM=ON\"\n"},
    KR_COLOR_DENSITY_ROWS("KRColorDensityCyanLow", "AJCL"),
    KR_COLOR_DENSITY_ROWS("KRColorDensityCyanMid", "AJCM"),
    KR_COLOR_DENSITY_ROWS("KRColorDensityCyanHigh", "AJCH"),
    KR_COLOR_DENSITY_ROWS("KRColorDensityMagentaLow", "AJML"),
    KR_COLOR_DENSITY_ROWS("KRColorDensityMagentaMid", "AJMM"),
    KR_COLOR_DENSITY_ROWS("KRColorDensityMagentaHigh", "AJMH"),
    KR_COLOR_DENSITY_ROWS("KRColorDensityYellowLow", "AJYL"),
    KR_COLOR_DENSITY_ROWS("KRColorDensityYellowMid", "AJYM"),
    KR_COLOR_DENSITY_ROWS("KRColorDensityYellowHigh", "AJYH"),
    KR_COLOR_DENSITY_ROWS("KRColorDensityBlackLow", "AJKL"),
    KR_COLOR_DENSITY_ROWS("KRColorDensityBlackMid", "AJKM"),
    KR_COLOR_DENSITY_ROWS("KRColorDensityBlackHigh", "AJKH"),
};

#undef KR_COLOR_DENSITY_ROWS

const int32_t FeaturePPDKeyNameandMarkedValuetoPJLCommandNum =
    static_cast<int32_t>(sizeof FeaturePPDKeyNameandMarkedValuetoPJLCommand /
                         sizeof FeaturePPDKeyNameandMarkedValuetoPJLCommand[0]);

static_assert(sizeof FeaturePPDKeyNameandMarkedValuetoPJLCommand /
                      sizeof FeaturePPDKeyNameandMarkedValuetoPJLCommand[0] ==
                  123,
              "the device-settings command table has 123 rows");

const char* GetThePJLCommandfromKeywordsandMarkedValue(const char* keyword, const char* choice) {
  // Feature code names the keyword with its asterisk ("*KRSetTrapMode").
  if (keyword == nullptr || choice == nullptr || keyword[0] != '*') return nullptr;
  for (const DeviceSettingCommand& row : FeaturePPDKeyNameandMarkedValuetoPJLCommand) {
    if (Equals(keyword + 1, row.keyword) && Equals(choice, row.choice)) return row.command;
  }
  return nullptr;
}

// The RGB correction default is the "Dark" level (22), not "Off".
const PPDKeyDefault PPDKeyArray[] = {
    {"KRSetTrapMode", "@PJL SET JOBATTR=\"@TRAP=OFF\"\n"},
    {"KRGrayBalance", "@PJL SET JOBATTR=\"@GRGU=OFF\"\n"},
    {"KRBrightnes", "@PJL SET JOBATTR=\"@PSBR=0\"\n"},
    {"KRRGBInputProfile", "@PJL SET JOBATTR=\"@RGBP=SRGB\"\n"},
    {"KRRGBBCorrection", "@PJL SET JOBATTR=\"@RGBG=22\"\n"},
    {"KRTonerSaver", "@PJL SET ECONOMODE=OFF\n"},
    {nullptr, nullptr},
};

void OutputPJLCommandForPPDKeyArray(const PPDKeyDefault* keys, ppd_file_t* ppd) {
  if (keys == nullptr || ppd == nullptr) return;
  for (const PPDKeyDefault* key = keys; key->keyword != nullptr; ++key) {
    if (ppdFindOption(ppd, key->keyword) == nullptr) KZfputs(key->defaultCommand, stdout);
  }
}
