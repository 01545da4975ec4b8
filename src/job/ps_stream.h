// PostScript pass-through: copies the job line by line to the print stream,
// lets the modules insert PostScript at fixed structural lines (injection
// points), counts and logs pages and stops at a page boundary on cancel.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <vector>

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
  // Page structure of jobs that do not end their pages in "ep"/"endp".
  kPageComment,    // "%%Page:..."
  kTrailer,        // "%%Trailer"
  kBeginDocument,  // "%%BeginDocument..." (an embedded document's pages are not the job's)
  kEndDocument,    // "%%EndDocument..."
};

// The kind of a whole line (without its terminator).
PSLineKind ClassifyPSLine(const char* line, size_t length);

// Admits the structural lines (and some others): what a line scanner must
// show ClassifyPSLine. Declared in line_scanner.h.
class LineCandidates;
LineCandidates StructuralLineCandidates();

// The pages of a job that does not end them in "ep"/"endp" lines: its
// "%%Page:" comments outside embedded documents, or else its "showpage" lines.
struct PageMarks {
  bool endsPages = false;  // an "ep" or "endp" line was seen: the job counts its own pages
  int32_t embedded = 0;    // depth of "%%BeginDocument"
  bool pageComments = false;
  bool inPage = false;
  int32_t showpages = 0;  // "showpage" lines outside embedded documents
  // Whether this "%%Page:" or "%%BeginDocument"/"%%EndDocument" line ends a
  // page of the job (a page comment after the first).
  bool EndsPage(PSLineKind kind);
  // Whether the job's last page ends here ("%%Trailer" or the end of input).
  bool EndsLastPage();
  // The pages the "showpage" lines tell, for a job that turned out to have
  // neither page comments nor "ep"/"endp" (a prolog may hold such a line too,
  // so they are known only at the end).
  int32_t ShowpagePages() const { return endsPages || pageComments ? 0 : showpages; }
};

// Output held back in memory until the job shows how it ends its pages, so
// that the page-device hook can still go in before its first line of code,
// or else the injections that belong to "ep"/"endp" jobs where they were
// due. What is held does not reach the debug copy until it is released.
class HeldOutput {
 public:
  bool Hold();  // false when no memory stream could be opened
  bool active() const { return stream_ != nullptr; }
  FILE* stream() const { return stream_; }
  // Bytes held so far.
  size_t size() const;
  // An injection due here, made at release unless the job gets the hook.
  void Defer(int32_t point, int32_t page) { deferred_.push_back({size(), point, page}); }
  // Where the page-device hook goes, if the job gets it.
  void MarkHookHere() { deferred_.push_back({size(), kPointPageHook, 0}); }
  // Writes the held bytes to `out` through the output channel, with either
  // the hook (`withHook`) or the deferred injections in their places.
  void Release(FILE* out, bool withHook);

 private:
  struct Deferred {
    size_t at;
    int32_t point;
    int32_t page;
  };
  FILE* stream_ = nullptr;
  char* bytes_ = nullptr;
  size_t length_ = 0;
  std::vector<Deferred> deferred_;
};

// Where the page-device hook stands for the job.
enum class PageHook {
  kNone,       // not wanted, or the job ends its pages in "ep"/"endp"
  kHolding,    // output held until the job's shape shows
  kPending,    // to be written before the job's first line of code
  kInstalled,  // written
};

// State of one pass over the job's lines.
struct PSLineState {
  int32_t page = 0;
  bool prologSeen = false;
  PageMarks marks;
  int32_t pagesLogged = 0;  // pages logged by PageMarks
  PageHook hook = PageHook::kNone;
  bool codeSeen = false;
  HeldOutput held;

  // Asks the modules whether the job needs the page-device hook and, if it
  // does, starts holding output.
  void Start();
  // Where lines go now: the held output, or `out`.
  FILE* Target(FILE* out) const { return held.active() ? held.stream() : out; }
  // Whether lines must be shown to HandlePSLine until the first line of code.
  bool SeekingCode() const { return !codeSeen && hook != PageHook::kNone; }
  // Before a piece of the job's code: the first one gets the hook.
  void BeforeCode(FILE* out);
  // After writing while output is held: a large enough hold is let go as if
  // the job had shown that it needs the hook.
  void CheckHeld(FILE* out);
  // A piece of an over-long line, which is code: after the hook if it is
  // due, to where lines go now.
  void WriteChunk(const char* bytes, size_t length, FILE* out);
};

// Handles one complete line (without its terminator) as the pass-through
// does: injections, page count, page log, then the line and its terminator,
// all written to `out` (or held, see PSLineState) through the output
// channel. Returns false when the job was cancelled at this line (nothing
// more may be written).
bool HandlePSLine(PSLineState& state, const char* line, size_t length, char terminator,
                  char* argv[], FILE* out);

// The end of the job's lines: held output goes out, and the pages not yet
// logged are (unless the pass was `stopped` by a cancel at a page boundary,
// where the last one was).
void FinishPSLines(PSLineState& state, char* argv[], FILE* out, bool stopped);

// Copies the job (stdin when argc is 6, else the file argv[6]) to stdout.
void OutputPSStream(int argc, char* argv[]);

// "PAGE:<page> <copies>" on stderr, on systems from 10.7 on.
void OutputPageLogCommand(int32_t page, char* argv[]);

// A new string (free() it) of text[first..last]; empty when first > last.
char* GetSubString(const char* text, int first, int last);
