// Watermark module: draws a line of text across the job's pages by writing
// PostScript at the pass-through's injection points. It writes no PJL.
//
// Only text watermarks (type 0) with a name produce output. The prolog
// fragment defines a page save slot; the page-end fragments restore the page
// save object of the job, draw the text in the page's own coordinate system,
// and leave the job's "ep"/"endp" to finish the page.
#pragma once

#include <cstdint>
#include <cstdio>

#include "ticket/ticket_access.h"

constexpr int32_t kWatermarkTextSize = 256;

// The PostScript lines the module writes, without their line ends. The
// inspector reads a job back by these same constants.
inline constexpr const char* kWatermarkPrologLines[] = {
    "userdict/krfInfo 2 dict dup begin",
    "/krfpgsave 0 def",
    "/krfbp{/krfpgsave save restore} bind def",
};
inline constexpr char kWatermarkPageSetupLine[] = "krfbp";
// The line that opens a text block before "ep", before "endp", and at the
// module's own save slot.
inline constexpr const char* kWatermarkOpeningLines[] = {
    "pgsave restore /pgsave save store gsave",
    "pm restore /pm save store gsave",
    "krfpgsave restore /krfpgsave save store gsave",
};
// The operators that end the text block's lines, in order: colour, font,
// position, angle, text.
inline constexpr const char* kWatermarkTextOperators[] = {"setrgbcolor", "selectfont", "moveto",
                                                          "rotate", "show"};
inline constexpr char kWatermarkCloseLine[] = "grestore";

// The job's watermark settings, in ticket-table order. Numbers are -1 and
// texts empty when the ticket lacks them.
struct WatermarkOptionRecord {
  char name[kWatermarkTextSize];
  int32_t options;
  int32_t onlyFirst;              // non-zero: each injection point emits once per job
  char text[kWatermarkTextSize];  // a PostScript string token, drawn as is
  int32_t orientation;            // 1, 3: width x height page; 2, 4: turned
  int32_t paperHeight;
  int32_t paperWidth;
  char filePath[kWatermarkTextSize];
  int32_t type;  // 0: text watermark; anything else: no output
  char font[kWatermarkTextSize];
  int32_t fontSize;
  int32_t fontType;
  float colorR;
  float colorG;
  float colorB;
  float colorA;
  int32_t angle;    // degrees
  int32_t density;  // percent applied to the colour
  float scale;
  float posHorizontal;
  float posVertical;
  float width;  // extent of the text as the dialog measured it
  float height;
  float hOffset;  // added to the computed start point
  float vOffset;
};

extern WatermarkOptionRecord psOptionWatermark;

extern const TicketBinding* const WatermarkticketData;
extern const int32_t WatermarkticketDataNum;

// Size of the buffer each drawn line is formatted into (longer lines are cut).
constexpr size_t kWatermarkLineSize = 100;

// Fills psOptionWatermark from the job ticket (argument 5).
void WatermarkGetTicketFromPDE(char* argv[]);

// The first and last lines of the page-device hook, and the line that turns
// it off (what zpjl-inspect knows them by).
inline constexpr char kWatermarkPageHookFirst[] = "mark{userdict/krfWM 4 dict put krfWM begin";
inline constexpr char kWatermarkPageHookLast[] = "}stopped cleartomark";
inline constexpr char kWatermarkPageHookOff[] = "userdict/krfWM known{krfWM/state get/on false put}if";

// Whether the job has a text watermark, so that the pass-through must give
// jobs that end their pages without "ep"/"endp" the page-device hook.
bool WatermarkWantsPageHook();

// Writes the watermark PostScript for injection point `point` to `stream`
// through the output channel. `page` is not used.
void WatermarkOutputPSCommandFromFilter(int32_t point, int32_t page, FILE* stream);

// The start point of the text so that its rotated box is centred on the
// page, plus the offsets. Angles outside 0..360 give the offsets alone.
void GetWatermarkPostion(float* x, float* y, float horizontalOffset, float verticalOffset);

// Sets the per-point emission flags back to "emit" (they otherwise live for
// the process); for tests that run several jobs in one process.
void ResetWatermarkState();
