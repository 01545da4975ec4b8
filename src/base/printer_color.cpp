#include "base/printer_color.h"

#include "base/fixed_text.h"
#include "base/ppd_queries.h"
#include "platform/job_ppd.h"

const char* const DeviceColorModeMono = "False";
const char* const DeviceColorModeColor = "True";
const char* const DefaultKZColorModeBlack = "Black";
const char* const DefaultKZColorModeColor = "Color";

int IsColorDeivce() {
  ppd_file_t* ppd = JobPPD();
  if (ppd == nullptr) return 0;
  ppd_attr_t* attr = ppdFindAttr_ALT(ppd, "ColorDevice");
  if (attr == nullptr || attr->value == nullptr) return 0;
  return Equals(attr->value, DeviceColorModeColor) ? 1 : 0;
}

int getDefaultColorMode() {
  ppd_file_t* ppd = JobPPD();
  if (ppd == nullptr) return 0;
  ppd_option_t* option = ppdFindOption(ppd, "KRColorMode");
  if (option == nullptr) return 0;
  return Equals(option->defchoice, DefaultKZColorModeColor) ? 1 : 0;
}

bool PPDHasColorModeOption() {
  ppd_file_t* ppd = JobPPD();
  return ppd != nullptr && ppdFindOption(ppd, "KRColorMode") != nullptr;
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
