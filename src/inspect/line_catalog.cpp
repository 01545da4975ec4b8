#include "inspect/line_catalog.h"

#include <climits>
#include <cstring>
#include <set>

#include "engine/command.h"
#include "engine/condition.h"
#include "job/feature_insertion.h"
#include "job/job_header.h"
#include "modules/accounting/accounting.h"
#include "modules/device_settings/device_settings.h"
#include "modules/features/features.h"
#include "modules/job_comments/job_comments.h"
#include "modules/perfect_binding/perfect_binding.h"
#include "modules/print_type/print_type.h"
#include "modules/special_pages/special_pages.h"
#include "secure/password_field.h"

namespace {

struct GroupNames {
  LineGroup group;
  const char* id;
  const char* title;
};
const GroupNames kGroupNames[] = {
    {LineGroup::kEnvelope, "envelope", "envelope"},
    {LineGroup::kPrintType, "print-type", "print type"},
    {LineGroup::kAccounting, "accounting", "accounting"},
    {LineGroup::kFinishing, "finishing", "finishing"},
    {LineGroup::kPerfectBinding, "perfect-binding", "perfect binding"},
    {LineGroup::kBooklet, "booklet", "booklet"},
    {LineGroup::kDeviceSettings, "device-settings", "device settings"},
    {LineGroup::kSpecialPages, "special-pages", "special pages"},
    {LineGroup::kJobInformation, "job-information", "job information"},
    {LineGroup::kInsertion, "insertion", "PJL from PPD feature code"},
    {LineGroup::kUnknown, "unknown", "not a line of this filter"},
};

const GroupNames& NamesOf(LineGroup group) {
  for (const GroupNames& names : kGroupNames) {
    if (names.group == group) return names;
  }
  return kGroupNames[sizeof kGroupNames / sizeof kGroupNames[0] - 1];
}

bool StartsWith(std::string_view text, std::string_view prefix) {
  return text.size() >= prefix.size() && text.compare(0, prefix.size(), prefix) == 0;
}

// Splits "NAME=value" at its first "=".
void SplitNameValue(std::string_view text, PJLLine* line) {
  size_t equals = text.find('=');
  line->name = std::string(text.substr(0, equals));
  if (equals != std::string_view::npos) {
    line->hasValue = true;
    line->value = std::string(text.substr(equals + 1));
  }
}

// ---- Plain words ----------------------------------------------------------
// The inspector's own: what each name means to the people who run printers.

struct Words {
  LineKind kind;
  const char* name;
  const char* words;
};

// clang-format off
const Words kWords[] = {
    // Envelope
    {LineKind::kSet, "STRINGCODESET", "text encoding of the values"},
    {LineKind::kCommand, "JOB MODE", "job mode"},
    {LineKind::kCommand, "ENTER LANGUAGE", "language switch"},
    {LineKind::kCommand, "EOJ", "end of job"},
    // Print type
    {LineKind::kSet, "HOLD", "hold the job"},
    {LineKind::kSet, "HOLDTYPE", "hold type"},
    {LineKind::kSet, "BOXNUMBER", "mailbox number"},
    {LineKind::kSet, "BOXENCRYPTKEY", "mailbox password"},
    {LineKind::kSet, "USERNAME", "user of the held job"},
    {LineKind::kSet, "HOLDENCRYPTKEY", "secure print password"},
    {LineKind::kSet, "JOBNAME", "job name on the printer's panel"},
    {LineKind::kJobAttr, "@PRTM", "delayed print time"},
    // Accounting
    {LineKind::kJobAttr, "@CNAM", "client host name"},
    {LineKind::kJobAttr, "@LUNA", "login user"},
    {LineKind::kJobAttr, "@HOAD", "client address"},
    {LineKind::kJobAttr, "@NLPP", "pages per sheet"},
    {LineKind::kJobAttr, "@JOAU", "job owner"},
    {LineKind::kJobAttr, "@JOEP", "job owner password"},
    {LineKind::kJobAttr, "@JOAD", "job owner domain"},
    {LineKind::kJobAttr, "@DAID", "account ID"},
    {LineKind::kJobAttr, "@ACID", "storage ID"},
    {LineKind::kJobAttr, "@ACNA", "document name"},
    {LineKind::kJobAttr, "@ACEP", "storage password"},
    // Finishing
    {LineKind::kJobAttr, "@TABS", "tab margin shift (mm)"},
    {LineKind::kJobAttr, "@TRMR", "trimmer cut (mm)"},
    {LineKind::kJobAttr, "@TRFW", "trimmer cut, top and lower edges (mm)"},
    {LineKind::kJobAttr, "@TROP", "trimmer adjustment (mm)"},
    {LineKind::kJobAttr, "@MDOC", "numbering of copies, start value"},
    {LineKind::kSet, "JOBOFFSET", "offset stacking"},
    {LineKind::kJobAttr, "@OCSN", "offset stacking interval"},
    {LineKind::kJobAttr, "@FACE", "output face"},
    // Perfect binding (sizes in tenths of a millimetre)
    {LineKind::kJobAttr, "@PBRE", "binding edge"},
    {LineKind::kJobAttr, "@MSDA", "sheet rotation"},
    {LineKind::kJobAttr, "@PBTC", "trimming"},
    {LineKind::kJobAttr, "@PBBP", "body page size"},
    {LineKind::kJobAttr, "@PBTP", "cut page size"},
    {LineKind::kJobAttr, "@PBTW", "width after trimming (0.1 mm)"},
    {LineKind::kJobAttr, "@PBTH", "height after trimming (0.1 mm)"},
    {LineKind::kJobAttr, "@ISXO", "image shift, odd pages (0.1 mm)"},
    {LineKind::kJobAttr, "@ISXT", "image shift, even pages (0.1 mm)"},
    {LineKind::kJobAttr, "@PBAW", "cut page adjustment, fore edge"},
    {LineKind::kJobAttr, "@PBAH", "cut page adjustment, top and bottom"},
    {LineKind::kJobAttr, "@PBAT", "rotation adjustment, top"},
    {LineKind::kJobAttr, "@PBAB", "rotation adjustment, bottom"},
    {LineKind::kJobAttr, "@PBAF", "rotation adjustment, fore edge"},
    {LineKind::kJobAttr, "@PBAX", "cover adjustment, across"},
    {LineKind::kJobAttr, "@PBAY", "cover adjustment, along"},
    {LineKind::kJobAttr, "@PBAV", "cut position adjustment, top and bottom"},
    {LineKind::kJobAttr, "@PBCP", "cover page size"},
    {LineKind::kJobAttr, "@PBCQ", "cover media type"},
    {LineKind::kJobAttr, "@PBCC", "cover media colour"},
    {LineKind::kJobAttr, "@PBCT", "cover paper tray"},
    {LineKind::kJobAttr, "@PBCI", "cover inserter"},
    // Booklet
    {LineKind::kJobAttr, "@DIND", "booklet direction"},
    {LineKind::kJobAttr, "@DIBB", "booklet binding edge"},
    {LineKind::kJobAttr, "@DIBK", "booklet division"},
    // Device settings
    {LineKind::kSet, "ECONOMODE", "toner saver"},
    {LineKind::kSet, "REDUCTIONRATE", "toner reduction rate (%)"},
    {LineKind::kJobAttr, "@LWAD", "line weight adjustment"},
    {LineKind::kSet, "RENDERMODE", "render mode"},
    // Special pages
    {LineKind::kJobAttr, "@EFCV", "front cover"},
    {LineKind::kJobAttr, "@EBCV", "back cover"},
    {LineKind::kJobAttr, "@EMCT", "special page media source"},
    {LineKind::kJobAttr, "@EMCP", "special page size kind"},
    {LineKind::kJobAttr, "@EMCW", "special page width"},
    {LineKind::kJobAttr, "@EMCH", "special page height"},
    {LineKind::kJobAttr, "@EMCQ", "special page media type"},
    {LineKind::kJobAttr, "@EMCC", "special page media colour"},
    {LineKind::kJobAttr, "@EIST", "inserted sheets, position"},
    {LineKind::kJobAttr, "@EISC", "inserted sheets, count"},
    {LineKind::kJobAttr, "@EOVS", "exception pages, first page"},
    {LineKind::kJobAttr, "@EMDP", "exception pages, sides"},
    {LineKind::kJobAttr, "@EOVE", "exception pages, last page"},
    // Job information
    {LineKind::kComment, "VERSION", "block version"},
    {LineKind::kComment, "BEGIN", "block begins"},
    {LineKind::kComment, "PDLTYPE", "page description language"},
    {LineKind::kComment, "JOBTYPE", "job type"},
    {LineKind::kComment, "JOBCOPIES", "copies of the whole job"},
    {LineKind::kComment, "PAGECOPIES", "copies of each page"},
    {LineKind::kComment, "DUPLEXTYPE", "duplex"},
    {LineKind::kComment, "COLORMODE", "colour mode"},
    {LineKind::kComment, "NUP", "pages per sheet"},
    {LineKind::kComment, "STAPLE", "staple"},
    {LineKind::kComment, "PUNCH", "punch"},
    {LineKind::kComment, "BOOKLETTYPE", "booklet"},
    {LineKind::kComment, "ORIENTATION", "orientation"},
    {LineKind::kComment, "NUPEX", "page order on the sheet"},
    {LineKind::kComment, "SADDLESTAPLE", "saddle stitch"},
    {LineKind::kComment, "STAPLEEX", "staple position"},
    {LineKind::kComment, "PUNCHEX", "punch holes and position"},
    {LineKind::kComment, "MIXEDSIZETYPE", "mixed paper sizes"},
    {LineKind::kComment, "CUD", "colour universal design"},
    {LineKind::kComment, "END", "block ends"},
    // PJL from PPD feature code
    {LineKind::kJobAttr, "@TRAP", "trapping"},
    {LineKind::kJobAttr, "@DDPM", "letterhead duplex mode"},
    {LineKind::kJobAttr, "@GRGU", "grey balance"},
    {LineKind::kSet, "BITSPERPIXEL", "bits per pixel"},
    {LineKind::kSet, "RESOLUTION", "resolution (dpi)"},
    {LineKind::kJobAttr, "@DRDM", "rendering method"},
    {LineKind::kJobAttr, "@PSBR", "brightness"},
    {LineKind::kJobAttr, "@RGBP", "RGB input profile"},
    {LineKind::kJobAttr, "@RGBG", "RGB correction"},
    {LineKind::kSet, "RET", "smoothing"},
    {LineKind::kJobAttr, "@SBKP", "skip blank sheets"},
    {LineKind::kJobAttr, "@BSPM", "monochrome priority"},
    {LineKind::kJobAttr, "@AJCL", "cyan density, low"},
    {LineKind::kJobAttr, "@AJCM", "cyan density, middle"},
    {LineKind::kJobAttr, "@AJCH", "cyan density, high"},
    {LineKind::kJobAttr, "@AJML", "magenta density, low"},
    {LineKind::kJobAttr, "@AJMM", "magenta density, middle"},
    {LineKind::kJobAttr, "@AJMH", "magenta density, high"},
    {LineKind::kJobAttr, "@AJYL", "yellow density, low"},
    {LineKind::kJobAttr, "@AJYM", "yellow density, middle"},
    {LineKind::kJobAttr, "@AJYH", "yellow density, high"},
    {LineKind::kJobAttr, "@AJKL", "black density, low"},
    {LineKind::kJobAttr, "@AJKM", "black density, middle"},
    {LineKind::kJobAttr, "@AJKH", "black density, high"},
    {LineKind::kJobAttr, "@TTRC", "tone curve, text"},
    {LineKind::kJobAttr, "@GTRC", "tone curve, graphics"},
    {LineKind::kJobAttr, "@ITRC", "tone curve, images"},
    {LineKind::kJobAttr, "@TSCR", "screen, text"},
    {LineKind::kJobAttr, "@GSCR", "screen, graphics"},
    {LineKind::kJobAttr, "@ISCR", "screen, images"},
    {LineKind::kJobAttr, "@TCPR", "colour processing, text"},
    {LineKind::kJobAttr, "@GCPR", "colour processing, graphics"},
    {LineKind::kJobAttr, "@ICPR", "colour processing, images"},
};
// clang-format on

// Fixed words for values, by name.
struct ValueWordsRow {
  const char* name;
  const char* value;
  const char* words;
};

// clang-format off
const ValueWordsRow kValueWords[] = {
    {"STRINGCODESET", "UTF8", "UTF-8"},
    {"HOLD", "STORE", "secure print: held until released with the password"},
    {"HOLD", "PROOF", "sample print: one set now, the rest held"},
    {"HOLD", "BOXSTORE", "stored in a mailbox on the printer"},
    {"HOLDTYPE", "PRIVATE", "released only with a password"},
    {"@JOAU", "UnknownUser", "no user known"},
    {"@LUNA", "UnknownUser", "no user known"},
    {"@CNAM", "UnknownHost", "no host name known"},
    {"@TABS", "OFF", "no tab margin shift"},
    {"@TRMR", "0", "no trimming"},
    {"@MDOC", "0", "no numbering"},
    {"JOBOFFSET", "PAGES", "by pages"},
    {"JOBOFFSET", "COPIES", "by copies"},
    {"@FACE", "OFF", "off"},
    {"@FACE", "UP", "face up"},
    {"@FACE", "DOWN", "face down"},
    {"@FACE", "UP_REVERSE", "face up, reverse order"},
    {"@FACE", "DOWN_REVERSE", "face down, reverse order"},
    {"@PBRE", "LEFT", "left edge"},
    {"@PBRE", "RIGHT", "right edge"},
    {"@PBRE", "TOP", "top edge"},
    {"@MSDA", "ROTSEFLAND", "short-edge feed, landscape"},
    {"@MSDA", "ROTLEFPORT", "long-edge feed, portrait"},
    {"@PBTC", "OFF", "no trimming"},
    {"@PBTC", "FACE", "fore edge"},
    {"@PBTC", "FULLBLEED", "three edges"},
    {"@PBTP", "CUSTOM", "custom"},
    {"@PBCI", "OFF", "off"},
    {"@DIBB", "OFF", "no booklet"},
    {"@DIBB", "LEFT", "left edge"},
    {"@DIBB", "RIGHT", "right edge"},
    {"@DIBK", "OFF", "no booklet"},
    {"@DIBK", "NONEDIVIDE", "one booklet"},
    {"@DIBK", "MANUALDIVIDE", "divided into sets of sheets"},
    {"ECONOMODE", "ON", "on"},
    {"ECONOMODE", "OFF", "off"},
    {"RENDERMODE", "COLOR", "colour"},
    {"RENDERMODE", "GRAYSCALE", "grey scale"},
    {"@EFCV", "NONE", "no front cover"},
    {"@EBCV", "NONE", "no back cover"},
    {"@EMCT", "TRAYT1", "the default tray"},
    {"@EMCP", "CUSTOM", "custom size"},
    {"@EMCP", "FORMALSIZE", "standard size"},
    {"@DRDM", "RASTER", "raster"},
    {"@TRAP", "ON", "on"},
    {"@TRAP", "OFF", "off"},
};
// clang-format on

// ---- Lines written by code --------------------------------------------------
// Their names come from the headers of the modules that write them.

template <size_t N>
void AddNames(std::vector<LineCatalog::NamedLine>* names, LineKind kind,
              const char* const (&list)[N], LineGroup group) {
  const char* prefix = kind == LineKind::kJobAttr ? "@" : "";
  for (const char* name : list) names->push_back({kind, prefix + std::string(name), group});
}

std::vector<LineCatalog::NamedLine> CollectNamesWrittenByCode() {
  std::vector<LineCatalog::NamedLine> names;
  const char* const encoding[] = {kEncodingSettingName};
  AddNames(&names, LineKind::kSet, encoding, LineGroup::kEnvelope);
  AddNames(&names, LineKind::kCommand, EnvelopeCommandNames, LineGroup::kEnvelope);
  AddNames(&names, LineKind::kJobAttr, PBindAttributeNames, LineGroup::kPerfectBinding);
  AddNames(&names, LineKind::kJobAttr, BookletAttributeNames, LineGroup::kBooklet);
  AddNames(&names, LineKind::kSet, DeviceSettingsSetNames, LineGroup::kDeviceSettings);
  AddNames(&names, LineKind::kJobAttr, DeviceSettingsAttributeNames, LineGroup::kDeviceSettings);
  AddNames(&names, LineKind::kJobAttr, SpecialPageAttributeNames, LineGroup::kSpecialPages);
  AddNames(&names, LineKind::kComment, CommentItemNames, LineGroup::kJobInformation);
  return names;
}

const std::vector<LineCatalog::NamedLine> kNamesWrittenByCode = CollectNamesWrittenByCode();

// The insertion mode's own lines for the output-mode feature.
struct FixedInsertionLine {
  const char* bytes;
  const char* source;
};
const FixedInsertionLine kResolutionLines[] = {
    {kResolution600Line, "*KROutputMode 600x600"},
    {kResolution1200Line, "*KROutputMode 1200x1200"},
    {kRasterLines[0], "*KROutputMode 600x600 or 1200x1200"},
    {kRasterLines[1], "*KROutputMode 600x600 or 1200x1200"},
};

// ---- Table rows, expanded -------------------------------------------------

const std::string kMarkText(1, kValueMark);
constexpr int32_t kMarkNumber = INT32_MIN;
// The engine turns control bytes of a text value into '?', so text goes in
// as DEL, which it keeps and no format holds, and becomes the mark after.
const std::string kTextStandIn(1, '\x7F');

// The fields the ticket fills with sealed password text.
std::set<const void*> SealedFields() {
  std::set<const void*> fields;
  auto add = [&](const TicketBinding* rows, int32_t count) {
    for (int32_t i = 0; i < count; ++i) {
      if (rows[i].getter == GetTicketPasswordStringConvertedToEncryption) {
        fields.insert(rows[i].destination);
      }
    }
  };
  add(PrintTypeticketData, PrintTypeTicketDataNum);
  add(JBAticketDataCommon.data(), JBATicketDataNumCommon);
  add(JBAticketDataAdmin.data(), JBATicketDataNumAdmin);
  return fields;
}

// Expands a row with the value marker for every "%s" and "%d".
std::string ExpandRow(const FormatEntry& entry, const std::set<const void*>& sealedFields,
                      bool* sealed) {
  *sealed = false;
  std::vector<ParamPointer> substitute;
  int32_t index = 0;
  for (const char* symbol = GetNextCtrlSym(entry.format); symbol != nullptr;
       symbol = GetNextCtrlSym(symbol + 2), ++index) {
    const void* value = nullptr;
    if (entry.params != nullptr && entry.params->list != nullptr && index < entry.params->count) {
      value = entry.params->list[index];
    }
    if (symbol[1] == 's') {
      if (sealedFields.count(value) != 0) *sealed = true;
      value = kTextStandIn.c_str();
    } else if (symbol[1] == 'd') {
      value = &kMarkNumber;
    }
    substitute.push_back(value);
    if (symbol[2] == '\0') break;
  }
  ParamTable table{static_cast<int32_t>(substitute.size()), substitute.data()};
  char out[kCommandBufferSize];
  BuildPrintComand(entry.format, &table, out, sizeof out);
  std::string bytes = out;
  for (const std::string& standIn : {std::to_string(kMarkNumber), kTextStandIn}) {
    for (size_t at = bytes.find(standIn); at != std::string::npos; at = bytes.find(standIn)) {
      bytes.replace(at, standIn.size(), kMarkText);
    }
  }
  return bytes;
}

void AddTable(std::vector<LineTemplate>* templates, LineGroup group, const char* name,
              const FormatEntry* table, int32_t count, const std::set<const void*>& sealedFields) {
  for (int32_t row = 0; row < count; ++row) {
    bool sealed = false;
    std::string bytes = ExpandRow(table[row], sealedFields, &sealed);
    if (bytes.empty()) continue;
    bool known = false;
    for (const LineTemplate& existing : *templates) {
      known = known || (existing.bytes == bytes && existing.group == group);
    }
    if (known) continue;
    templates->push_back(
        {group, bytes, sealed, std::string(name) + "[" + std::to_string(row) + "]"});
  }
}

std::string Expand(const FormatEntry* table) {
  bool sealed = false;
  return ExpandRow(table[0], {}, &sealed);
}

// "LF", "CR LF" or "" for a line's bytes.
std::string EndingOf(std::string_view bytes) {
  if (StartsWith(bytes.substr(bytes.size() >= 2 ? bytes.size() - 2 : 0), "\r\n")) return "CR LF";
  if (!bytes.empty() && bytes.back() == '\n') return "LF";
  return "";
}

std::string_view WithoutEnding(std::string_view bytes) {
  if (!bytes.empty() && bytes.back() == '\n') bytes.remove_suffix(1);
  if (!bytes.empty() && bytes.back() == '\r') bytes.remove_suffix(1);
  return bytes;
}

// Reverse lookup in a flat name, value list: the names whose value is `value`.
std::string NamesFor(const char* const* map, int32_t count, const std::string& value) {
  std::string names;
  for (int32_t i = 0; i + 1 < count; i += 2) {
    if (value == map[i + 1]) names += (names.empty() ? "" : " or ") + std::string(map[i]);
  }
  return names;
}

}  // namespace

const char* GroupId(LineGroup group) { return NamesOf(group).id; }
const char* GroupTitle(LineGroup group) { return NamesOf(group).title; }

const char* KindId(LineKind kind) {
  switch (kind) {
    case LineKind::kJobAttr:
      return "jobattr";
    case LineKind::kSet:
      return "set";
    case LineKind::kComment:
      return "comment";
    case LineKind::kCommand:
      return "command";
    case LineKind::kOther:
      break;
  }
  return "other";
}

namespace {

// Takes the quotes off `text`; a line cut short keeps the name and value it
// has, so a half field is still known by its name.
std::string_view Unquote(std::string_view text, bool* quoted, bool* balanced) {
  const bool opening = !text.empty() && text.front() == '"';
  if (opening) text.remove_prefix(1);
  const bool closing = !text.empty() && text.back() == '"';
  if (closing) text.remove_suffix(1);
  *quoted = opening && closing;
  *balanced = opening == closing;
  return text;
}

}  // namespace

PJLLine ParsePJLLine(std::string_view text) {
  static constexpr std::string_view kJobAttr = "@PJL SET JOBATTR=";
  static constexpr std::string_view kSet = "@PJL SET ";
  static constexpr std::string_view kComment = "@PJL COMMENT PRINTJOBINFO ";
  static constexpr std::string_view kPJL = "@PJL ";
  PJLLine line;
  bool balanced = true;
  if (StartsWith(text, kJobAttr)) {
    line.kind = LineKind::kJobAttr;
    const std::string_view inner = Unquote(text.substr(kJobAttr.size()), &line.quoted, &balanced);
    SplitNameValue(inner, &line);
    line.wellFormed = line.quoted && line.hasValue && line.name.size() == 5 && line.name[0] == '@';
  } else if (StartsWith(text, kSet)) {
    line.kind = LineKind::kSet;
    SplitNameValue(text.substr(kSet.size()), &line);
    line.value = std::string(Unquote(line.value, &line.quoted, &balanced));
    line.wellFormed = balanced && line.hasValue;
  } else if (StartsWith(text, kComment)) {
    line.kind = LineKind::kComment;
    SplitNameValue(text.substr(kComment.size()), &line);
  } else if (StartsWith(text, kPJL)) {
    line.kind = LineKind::kCommand;
    SplitNameValue(text.substr(kPJL.size()), &line);
  } else {
    line.wellFormed = false;
  }
  return line;
}

bool MatchTemplate(std::string_view pattern, std::string_view line, std::string* value) {
  const size_t mark = pattern.find(kValueMark);
  if (mark == std::string_view::npos) {
    if (pattern != line) return false;
    if (value != nullptr) value->clear();
    return true;
  }
  const std::string_view before = pattern.substr(0, mark);
  const std::string_view after = pattern.substr(mark + 1);
  if (after.find(kValueMark) != std::string_view::npos) return false;
  if (line.size() <= before.size() + after.size()) return false;
  if (!StartsWith(line, before)) return false;
  if (line.compare(line.size() - after.size(), after.size(), after) != 0) return false;
  std::string_view middle = line.substr(before.size(), line.size() - before.size() - after.size());
  // A value never spans a line end.
  if (middle.find('\n') != std::string_view::npos) return false;
  if (value != nullptr) *value = std::string(middle);
  return true;
}

LineCatalog::LineCatalog() {
  // Every table is a constant of the filter's library: reading them here
  // changes no filter state.
  envelope_.uel = Expand(prtFmtTableZPJLHead);
  envelope_.jobMode = Expand(prtFmtTableZPJLJobMode);
  envelope_.enterLanguage = Expand(prtFmtTableEnterPS);
  envelope_.trailer = Expand(prtFmtTableZPJLTrailer);
  envelope_.encodingLine = "@PJL SET STRINGCODESET=UTF8\n";

  const std::set<const void*> sealed = SealedFields();
  // Rows without a value first, so that a fixed row wins over a value row
  // of the same attribute.
  std::vector<LineTemplate> rows;
  AddTable(&rows, LineGroup::kPrintType, "PrintTypeFmtTable", PrintTypeFmtTable,
           PrintTypeFmtTableNum, sealed);
  AddTable(&rows, LineGroup::kPrintType, "PrintTypeFmtPartTable", PrintTypeFmtPartTable,
           PrintTypeFmtPartTableNum, sealed);
  AddTable(&rows, LineGroup::kAccounting, "JBAFmtTableAdmin", JBAFmtTableAdmin, JBAFmtTableAdminNum,
           sealed);
  AddTable(&rows, LineGroup::kAccounting, "JBAFmtTableCommon", JBAFmtTableCommon,
           JBAFmtTableCommonNum, sealed);
  AddTable(&rows, LineGroup::kFinishing, "FeaturesFmtTable", FeaturesFmtTable, FeaturesFmtTableNum,
           sealed);
  for (int pass = 0; pass < 2; ++pass) {
    for (const LineTemplate& row : rows) {
      const bool fixed = row.bytes.find(kValueMark) == std::string::npos;
      if (fixed == (pass == 0)) templates_.push_back(row);
    }
  }

  for (int32_t i = 0; i < FeaturePPDKeyNameandMarkedValuetoPJLCommandNum; ++i) {
    const DeviceSettingCommand& row = FeaturePPDKeyNameandMarkedValuetoPJLCommand[i];
    insertion_.push_back({LineGroup::kInsertion, row.command, false,
                          std::string("*") + row.keyword + " " + row.choice});
  }
  for (const PPDKeyDefault* key = PPDKeyArray; key->keyword != nullptr; ++key) {
    insertion_.push_back({LineGroup::kInsertion, key->defaultCommand, false,
                          std::string("default: the PPD has no ") + key->keyword});
  }
  for (const FixedInsertionLine& line : kResolutionLines) {
    insertion_.push_back({LineGroup::kInsertion, line.bytes, false, line.source});
  }
  for (const char* const* list : {TRCSCRCommand, CPRCommand}) {
    for (const char* const* name = list; (*name)[0] != '\0'; ++name) {
      insertion_.push_back({LineGroup::kInsertion,
                            std::string("@PJL SET JOBATTR=\"@") + *name + "=" + kMarkText + "\"\n",
                            false, "screen and tone-curve settings in the PostScript"});
    }
  }
}

const LineCatalog& LineCatalog::Get() {
  static const LineCatalog catalog;
  return catalog;
}

const std::vector<LineCatalog::NamedLine>& LineCatalog::NamesWrittenByCode() {
  return kNamesWrittenByCode;
}

const char* LineCatalog::Words(LineKind kind, const std::string& name) {
  for (const struct Words& row : kWords) {
    if (row.kind == kind && name == row.name) return row.words;
  }
  return nullptr;
}

LineClass LineCatalog::ClassifyHeaderLine(std::string_view bytes) const {
  LineClass result;
  const PJLLine line = ParsePJLLine(WithoutEnding(bytes));
  result.words = Words(line.kind, line.name);
  for (const LineTemplate& row : templates_) {
    if (MatchTemplate(row.bytes, bytes)) {
      result.group = row.group;
      result.sealed = row.sealed;
      result.exactRow = true;
      result.row = row.origin;
      result.expectedEnding = EndingOf(row.bytes);
      return result;
    }
  }
  // A table attribute in a form no row has: name the endings its rows have.
  for (const LineTemplate& row : templates_) {
    const PJLLine rowLine = ParsePJLLine(WithoutEnding(row.bytes));
    if (rowLine.kind != line.kind || rowLine.name != line.name) continue;
    result.group = row.group;
    result.sealed = result.sealed || row.sealed;
    const std::string ending = EndingOf(row.bytes);
    if (result.expectedEnding.find(ending) == std::string::npos) {
      result.expectedEnding += (result.expectedEnding.empty() ? "" : " or ") + ending;
    }
  }
  if (result.group != LineGroup::kUnknown) return result;
  for (const NamedLine& named : kNamesWrittenByCode) {
    if (named.kind != line.kind || line.name != named.name) continue;
    result.group = named.group;
    result.expectedEnding = named.name == kJobModeCommandName ? "CR LF" : "LF";
    result.exactRow = line.wellFormed && EndingOf(bytes) == result.expectedEnding &&
                      (line.kind != LineKind::kSet || !line.quoted);
    return result;
  }
  return result;
}

LineClass LineCatalog::ClassifyInsertionLine(std::string_view bytes) const {
  LineClass result;
  const PJLLine line = ParsePJLLine(WithoutEnding(bytes));
  result.words = Words(line.kind, line.name);
  for (const LineTemplate& row : insertion_) {
    if (!MatchTemplate(row.bytes, bytes)) continue;
    result.group = LineGroup::kInsertion;
    result.exactRow = true;
    result.expectedEnding = "LF";
    if (result.source.find(row.origin) == std::string::npos) {
      result.source += (result.source.empty() ? "" : ", or ") + row.origin;
    }
  }
  return result;
}

bool LineCatalog::OnlyInInsertionMode(std::string_view bytes) const {
  if (ClassifyInsertionLine(bytes).group != LineGroup::kInsertion) return false;
  return ClassifyHeaderLine(bytes).group == LineGroup::kUnknown;
}

std::string LineCatalog::ValueWords(const std::string& name, const std::string& value) const {
  for (const ValueWordsRow& row : kValueWords) {
    if (name == row.name && value == row.value) return row.words;
  }
  static const char* const kPBindTranslated[] = {"@PBBP", "@PBTP", "@PBCP",
                                                 "@PBCQ", "@PBCC", "@PBCT"};
  for (const char* attribute : kPBindTranslated) {
    if (name != attribute) continue;
    std::string names;
    for (int32_t i = 0; i < PerfectBindParamNum; ++i) {
      if (value == PerfectBindParam[i].printerWord) {
        names += (names.empty() ? "" : " or ") + std::string(PerfectBindParam[i].ppdName);
      }
    }
    return names.empty() ? "" : "PPD choice " + names;
  }
  std::string names;
  if (name == "@EFCV" || name == "@EBCV") {
    names = NamesFor(CoverTypeZPJLComm, CoverTypeZPJLCommValueCount, value);
  } else if (name == "@EMCC") {
    names = NamesFor(MediaColorZPJLComm, MediaColorZPJLCommValueCount, value);
  } else if (name == "@EMDP") {
    names = NamesFor(SidesZPJLComm, SidesZPJLCommValueCount, value);
  }
  return names.empty() ? "" : "dialog value " + names;
}
