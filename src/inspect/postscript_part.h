// The PostScript part of a print stream: its size, lines and pages, and the
// fragments the filter put into it (watermark prolog and page text,
// separator pages, booklet margin shift and auto-fit), each at its line.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

struct PageEnd {
  size_t line;       // 1-based line of the PostScript part
  std::string kind;  // "ep" or "endp"
  int page;          // the page it ends
};

struct Fragment {
  std::string kind;      // see FragmentTitle
  size_t line = 0;       // first line, 1-based
  size_t lines = 0;      // lines it takes
  int page = 0;          // watermark text: the page it is drawn on; else 0
  std::string anchor;    // the structural line it stands at, e.g. "after %%BeginProlog"
  bool complete = true;  // false when a line of it was cut or is missing
  std::vector<std::pair<std::string, std::string>> details;  // name, value (stream bytes)
};

struct PostScriptReport {
  size_t offset = 0;  // in the stream
  size_t size = 0;    // bytes, the end-of-job byte included
  size_t lines = 0;
  int pages = 0;
  std::vector<PageEnd> pageEnds;
  std::vector<Fragment> fragments;
  bool endOfJobByte = false;  // ends with 0x04
  std::string firstLine;      // for the insertion mode's held-back last line
};

// "watermark-prolog", "watermark-page-setup", "watermark-text",
// "watermark-page-hook", "watermark-page-hook-off", "separator-pages",
// "booklet-margin-shift", "auto-fit".
const char* FragmentTitle(const std::string& kind);

// Analyses `bytes`, which start at `offset` of the stream.
PostScriptReport InspectPostScript(std::string_view bytes, size_t offset);
