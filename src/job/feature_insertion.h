// PPD-feature PJL insertion mode (PPD attribute KRPSDecompMode "1").
//
// The device settings that the print system wrote into the job as PPD
// feature code must also reach the printer as PJL, and PJL must come before
// the language switch. So the job is spooled to a temporary file while the
// PJL derived from its feature lines goes out (pass 1); then the language
// switch and the spooled PostScript follow (pass 2).
#pragma once

#include <cstddef>
#include <cstdint>

// Both passes. Input: the file argv[6] when argc is 7, else stdin.
void OutputPSStreamtoFileandInsertPJLforFeaturePDE(int argc, char* argv[]);

// The PJL of one "%%BeginFeature:" line (resolution, halftone, colour
// defaults, the device-settings row), written to stdout. Job-wide state.
struct FeatureScanState {
  int32_t resolution = 0;
  bool resolutionPending = true;
  bool colorDefaultsPending = true;
};
void OutputPJLForFeatureLine(FeatureScanState& state, const char* line, size_t length);

// The JOBATTR lines of a screen/tone-curve line (all of TTRC GTRC ITRC TSCR
// GSCR ISCR, or all of TCPR GCPR ICPR): each value's digits, named by the four
// characters before its separator. Other lines write nothing.
void OutputPJLForScreenLine(const char* line, size_t length);

// The lines an output mode of 600x600 or 1200x1200 gives, in their order:
// the resolution, then the two raster lines.
inline constexpr char kResolution600Line[] = "@PJL SET RESOLUTION=600\n";
inline constexpr char kResolution1200Line[] = "@PJL SET RESOLUTION=1200\n";
inline constexpr const char* kRasterLines[] = {"@PJL SET BITSPERPIXEL=1\n",
                                               "@PJL SET JOBATTR=\"@DRDM=RASTER\"\n"};

// The screen/tone-curve and further attribute names, each list ended by "".
extern const char* const TRCSCRCommand[];
extern const char* const CPRCommand[];

// Copies the ticket option "KROutputMode" into g_DLOutputMode (255 bytes);
// returns 1, or 0 when the option is missing.
extern char g_DLOutputMode[255];
int GetDLOutputMode(char* argv[]);

// "@PJL SET JOBATTR=\"@<name>=<value>\"\n" for each name of a list ended by
// "", with the integer at the same index of `values`.
void outputZPJLCommandFromArray(const char* const* names, const int32_t* values);
