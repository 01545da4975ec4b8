// The two questions about the printer's colour that several header lines
// ask, and the render colour they decide. Each opens the job's PPD itself.
#pragma once

// Values of the PPD attribute "ColorDevice" and default choices of "KRColorMode".
extern const char* const DeviceColorModeMono;      // "False"
extern const char* const DeviceColorModeColor;     // "True"
extern const char* const DefaultKZColorModeBlack;  // "Black"
extern const char* const DefaultKZColorModeColor;  // "Color"

// 1 when the PPD attribute "ColorDevice" is "True", else 0 (also without a PPD).
int IsColorDeivce();

// 1 when the PPD's default choice of "KRColorMode" is "Color", else 0.
int getDefaultColorMode();

// True when the job's PPD defines the option "KRColorMode" (false without a PPD).
bool PPDHasColorModeOption();

// How the job is rendered, from the ticket's colour mode: "Color" and "Black"
// decide it; another value leaves it to the printer when the PPD offers the
// option (else grey); no value follows the device and its default mode.
enum class RenderColor { kColor, kGrayscale, kNone };
RenderColor DecideRenderColor(const char* colorMode);
