// PostScript pass-through: copies the job line by line to the print stream,
// lets the modules insert PostScript at fixed structural lines (injection
// points), counts and logs pages and stops at a page boundary on cancel.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>

#include "engine/injection_point.h"

// Line buffer size, and the length at which a line is written as a chunk
// (lines longer than that pass through in pieces and are never matched).
constexpr size_t kPSLineBufferSize = 8192;
constexpr size_t kPSLineChunk = 8065;

// The structural lines the pass-through acts on; everything else is plain.
enum class PSLineKind {
  kPlain,
  kEndPage,        // "ep"
  kEndPageAlt,     // "endp"
  kShowPage,       // "showpage"
  kBeginPage,      // "bp"
  kEndSetup,       // "%%EndSetup"
  kSetPageDevice,  // "userdict/setpagedevice{pop}bind put"
  kEndPageSetup,   // "%%EndPageSetup"
  kBeginProlog,    // "%%BeginProlog"
  kEndProlog,      // "%%EndProlog"
};

// The kind of a whole line (without its terminator).
PSLineKind ClassifyPSLine(const char* line, size_t length);

// Admits the structural lines (and some others): what a line scanner must
// show ClassifyPSLine. Declared in line_scanner.h.
class LineCandidates;
LineCandidates StructuralLineCandidates();

// State of one pass over the job's lines.
struct PSLineState {
  int32_t page = 0;
  bool prologSeen = false;
};

// Handles one complete line (without its terminator) as the pass-through
// does: injections, page count, page log, then the line and its terminator,
// all written to `out` through the output channel. Returns false when the
// job was cancelled at this line (nothing more may be written).
bool HandlePSLine(PSLineState& state, const char* line, size_t length, char terminator,
                  char* argv[], FILE* out);

// Copies the job (stdin when argc is 6, else the file argv[6]) to stdout.
void OutputPSStream(int argc, char* argv[]);

// "PAGE:<page> <copies>" on stderr, on systems from 10.7 on.
void OutputPageLogCommand(int32_t page, char* argv[]);

// A new string (free() it) of text[first..last]; empty when first > last.
char* GetSubString(const char* text, int first, int last);
