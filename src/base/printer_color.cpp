#include "base/printer_color.h"

#include <cstring>

#include "base/ppd_queries.h"
#include "platform/job_ppd.h"

const char* const DeviceColorModeMono = "False";
const char* const DeviceColorModeColor = "True";
const char* const DefaultKZColorModeBlack = "Black";
const char* const DefaultKZColorModeColor = "Color";

namespace {

bool Equals(const char* text, const char* word) { return std::strcmp(text, word) == 0; }

}  // namespace

int IsColorDeivce() {
  ppd_file_t* ppd = AcquireJobPPD();
  if (ppd == nullptr) return 0;
  int result = 0;
  ppd_attr_t* attr = ppdFindAttr_ALT(ppd, "ColorDevice");
  if (attr != nullptr && attr->value != nullptr && !Equals(attr->value, DeviceColorModeMono)) {
    result = Equals(attr->value, DeviceColorModeColor) ? 1 : 0;
  }
  ReleaseJobPPD(ppd);
  return result;
}

int getDefaultColorMode() {
  ppd_file_t* ppd = AcquireJobPPD();
  if (ppd == nullptr) return 0;
  int result = 0;
  ppd_option_t* option = ppdFindOption(ppd, "KRColorMode");
  if (option != nullptr && !Equals(option->defchoice, DefaultKZColorModeBlack)) {
    result = Equals(option->defchoice, DefaultKZColorModeColor) ? 1 : 0;
  }
  ReleaseJobPPD(ppd);
  return result;
}

bool PPDHasColorModeOption() {
  ppd_file_t* ppd = AcquireJobPPD();
  bool has = ppd != nullptr && ppdFindOption(ppd, "KRColorMode") != nullptr;
  ReleaseJobPPD(ppd);
  return has;
}

RenderColor DecideRenderColor(const char* colorMode) {
  if (Equals(colorMode, DefaultKZColorModeColor)) return RenderColor::kColor;
  if (Equals(colorMode, DefaultKZColorModeBlack)) return RenderColor::kGrayscale;
  if (colorMode[0] != '\0') {
    // A mode such as "Auto" is the printer's to resolve when the PPD offers it.
    return PPDHasColorModeOption() ? RenderColor::kNone : RenderColor::kGrayscale;
  }
  int colorDevice = IsColorDeivce();
  int colorDefault = getDefaultColorMode();
  return colorDevice == 1 && colorDefault == 1 ? RenderColor::kColor : RenderColor::kGrayscale;
}
