// Reads a print stream as the filter writes it (or its debug job copy) and
// takes it apart: the PJL envelope, every header line with what it means,
// the sealed password fields, the PostScript part with the fragments the
// filter put in, and the PJL that the insertion mode derives from PPD
// feature code. Any bytes are accepted; what does not fit is reported.
//
//   InspectOptions options;
//   StreamReport report = InspectStream(bytes, options);
//   if (report.Malformed()) ...
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "inspect/line_catalog.h"
#include "inspect/postscript_part.h"
#include "inspect/sealed_field.h"

enum class Severity { kNote, kMalformed };

struct Finding {
  Severity severity;
  std::string text;  // plain words; stream bytes in it are already made visible
};

struct HeaderLine {
  size_t offset = 0;      // in the stream
  size_t lineNumber = 0;  // 1-based, counted in the stream
  std::string bytes;      // the line without its end
  std::string ending;     // "LF", "CR LF", or "" when the stream ends first
  PJLLine parsed;
  LineClass meaning;
  std::string valueWords;                   // plain words for the value, if any
  std::optional<SealedFieldReport> sealed;  // a non-empty sealed password field
  std::vector<std::string> problems;
};

enum class StreamMode {
  kPassThrough,  // PostScript after the header, ended by 0x04
  kInsertion,    // PJL from PPD feature code before the language switch
  kUnknown,
};
const char* ModeId(StreamMode mode);  // "pass-through", "insertion", "unknown"

struct StreamReport {
  size_t size = 0;
  bool utf8 = false;  // the encoding line names UTF-8; else text is Shift-JIS
  StreamMode mode = StreamMode::kUnknown;
  bool debugCopyForm = false;  // PostScript mirrored before the language switch

  std::vector<size_t> uelOffsets;
  size_t leadingBytes = 0;             // before the first universal exit language
  std::optional<size_t> encodingLine;  // index into `header`
  std::optional<size_t> jobModeLine;   // index into `header`
  std::optional<size_t> languageSwitchOffset;
  std::optional<size_t> trailerOffset;
  bool trailerComplete = false;
  size_t trailingBytes = 0;           // after the trailer
  std::string jobInformationVersion;  // "1.3.0", "1.5.0" or ""

  std::vector<HeaderLine> header;     // from the first line to the language switch
  std::vector<HeaderLine> insertion;  // PJL derived from feature code
  std::optional<PostScriptReport> postscript;
  std::vector<Finding> findings;

  bool Malformed() const;
  int SealedFields() const;
  // The header line at `index` (encodingLine, jobModeLine), or nullptr.
  const HeaderLine* HeaderAt(const std::optional<size_t>& index) const;
};

struct InspectOptions {
  OpeningKey key;
};

StreamReport InspectStream(std::string_view bytes, const InspectOptions& options);
