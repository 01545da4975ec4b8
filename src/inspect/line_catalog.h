// What the inspector knows about the PJL lines the filter writes.
//
// Table-driven lines (print type, accounting, finishing) are known by their
// rows: each row of the filter's format tables is expanded with a marker in
// place of its value, which gives the exact bytes around the value, the line
// end, and whether the value is a sealed password field (a value bound to a
// field that the ticket reads with the password getter). The device-settings
// command table and its default lines give the PJL of the insertion mode. The
// lines that modules write by code (perfect binding, booklet, device
// settings, special pages, job information) are known by name. Plain words
// for every name are the inspector's own.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

// Feature groups, in the order the header carries them.
enum class LineGroup {
  kEnvelope,
  kPrintType,
  kAccounting,
  kFinishing,
  kPerfectBinding,
  kBooklet,
  kDeviceSettings,
  kSpecialPages,
  kJobInformation,
  kInsertion,  // PJL derived from PPD feature code in the insertion mode
  kUnknown,
};

const char* GroupId(LineGroup group);     // "print-type", for scripts
const char* GroupTitle(LineGroup group);  // "print type", for people

enum class LineKind {
  kJobAttr,  // @PJL SET JOBATTR="@NAME=value"
  kSet,      // @PJL SET NAME=value (value maybe quoted)
  kComment,  // @PJL COMMENT PRINTJOBINFO ITEM[=value]
  kCommand,  // any other @PJL line (JOB, ENTER, EOJ)
  kOther,    // not PJL
};

const char* KindId(LineKind kind);

// A PJL line taken apart; `text` has no line end.
struct PJLLine {
  LineKind kind = LineKind::kOther;
  std::string name;   // "@JOAU", "HOLD", "DUPLEXTYPE", "JOB MODE"
  std::string value;  // without its quotes
  bool quoted = false;
  bool hasValue = false;   // "=" present
  bool wellFormed = true;  // quotes where the form needs them
};
PJLLine ParsePJLLine(std::string_view text);

// Where the value of a template goes.
constexpr char kValueMark = '\x01';

// One row of a filter table, expanded.
struct LineTemplate {
  LineGroup group;
  std::string bytes;   // the line with its end; kValueMark stands for the value
  bool sealed;         // the value is a sealed password field
  std::string origin;  // table and row ("JBAFmtTableCommon[12]"); insertion: the PPD feature
};

// The envelope's bytes, expanded from the frame's tables.
struct EnvelopeBytes {
  std::string uel;            // ESC "%-12345X"
  std::string jobMode;        // "@PJL JOB MODE=PRINTER" CR LF
  std::string enterLanguage;  // "@PJL ENTER LANGUAGE=POSTSCRIPT" LF
  std::string trailer;        // ESC "%-12345X@PJL EOJ" LF
  std::string encodingLine;   // "@PJL SET STRINGCODESET=UTF8" LF
};

// What a line is, as far as the catalog knows.
struct LineClass {
  LineGroup group = LineGroup::kUnknown;
  const char* words = nullptr;  // plain words for the name, or nullptr
  bool sealed = false;          // carries a sealed password field
  bool exactRow = false;        // the line equals a known row with its line end
  std::string row;              // that row ("PrintTypeFmtTable[7]"), if any
  std::string expectedEnding;   // "LF" or "CR LF" when the name is known
  std::string source;           // insertion mode: the feature it came from
};

class LineCatalog {
 public:
  // Built once from the filter's tables.
  static const LineCatalog& Get();

  const EnvelopeBytes& envelope() const { return envelope_; }

  // A header line; `bytes` includes its line end (LF or CR LF) if any.
  LineClass ClassifyHeaderLine(std::string_view bytes) const;
  // A line of the PJL that the insertion mode derives from feature code.
  LineClass ClassifyInsertionLine(std::string_view bytes) const;
  // True when `bytes` could be insertion-mode PJL and not a header line
  // (only the insertion mode writes it).
  bool OnlyInInsertionMode(std::string_view bytes) const;

  // Plain words for a value of `name` ("STORE" of HOLD), or an empty
  // string: fixed words, or the PPD or dialog name a printer word came from.
  std::string ValueWords(const std::string& name, const std::string& value) const;

  // For tests: every table row the catalog holds, and the names known by code.
  const std::vector<LineTemplate>& templates() const { return templates_; }
  const std::vector<LineTemplate>& insertionLines() const { return insertion_; }
  struct NamedLine {
    LineKind kind;
    std::string name;
    LineGroup group;
  };
  static const std::vector<NamedLine>& NamesWrittenByCode();
  static const char* Words(LineKind kind, const std::string& name);

 private:
  LineCatalog();
  EnvelopeBytes envelope_;
  std::vector<LineTemplate> templates_;
  std::vector<LineTemplate> insertion_;
};

// Whether `line` (bytes with its end) fits `pattern` (a template with at
// most one kValueMark standing for a non-empty value); the value goes to
// `value` when given.
bool MatchTemplate(std::string_view pattern, std::string_view line, std::string* value = nullptr);
