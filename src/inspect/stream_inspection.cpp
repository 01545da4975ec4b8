#include "inspect/stream_inspection.h"

#include <algorithm>

#include "inspect/text_display.h"
#include "job/job_header.h"
#include "modules/device_settings/device_settings.h"
#include "modules/job_comments/job_comments.h"

namespace {

constexpr size_t kExcerpt = 120;

struct RawLine {
  size_t offset;
  std::string_view text;    // without its end
  std::string_view ending;  // "\n", "\r\n" or "" at the end of the stream
  size_t size() const { return text.size() + ending.size(); }
};

// The LF-ended line at `at`; a CR just before the LF belongs to its end.
RawLine NextLine(std::string_view bytes, size_t at) {
  const size_t lf = bytes.find('\n', at);
  if (lf == std::string_view::npos) return {at, bytes.substr(at), {}};
  if (lf > at && bytes[lf - 1] == '\r') {
    return {at, bytes.substr(at, lf - 1 - at), bytes.substr(lf - 1, 2)};
  }
  return {at, bytes.substr(at, lf - at), bytes.substr(lf, 1)};
}

// The line with the end it had in the stream.
std::string Whole(const HeaderLine& line) {
  return line.bytes + (line.ending == "CR LF" ? "\r\n" : line.ending == "LF" ? "\n" : "");
}

std::string EndingName(std::string_view ending) {
  if (ending == "\r\n") return "CR LF";
  if (ending == "\n") return "LF";
  return "";
}

bool StartsWith(std::string_view text, std::string_view prefix) {
  return text.size() >= prefix.size() && text.compare(0, prefix.size(), prefix) == 0;
}

// Order of the groups in the header; the insertion mode's PJL comes after.
int Rank(LineGroup group) {
  switch (group) {
    case LineGroup::kEnvelope:
      return 0;
    case LineGroup::kPrintType:
      return 1;
    case LineGroup::kAccounting:
      return 2;
    case LineGroup::kFinishing:
      return 3;
    case LineGroup::kPerfectBinding:
      return 4;
    case LineGroup::kBooklet:
      return 5;
    case LineGroup::kDeviceSettings:
      return 6;
    case LineGroup::kSpecialPages:
      return 7;
    case LineGroup::kJobInformation:
      return 8;
    case LineGroup::kInsertion:
    case LineGroup::kUnknown:
      break;
  }
  return 9;
}

std::string Plural(size_t count, const char* one, const char* many) {
  return std::to_string(count) + " " + (count == 1 ? one : many);
}

class Inspector {
 public:
  Inspector(std::string_view bytes, const InspectOptions& options)
      : bytes_(bytes), options_(options), catalog_(LineCatalog::Get()), env_(catalog_.envelope()) {}

  StreamReport Run();

 private:
  void Note(std::string text) { report_.findings.push_back({Severity::kNote, std::move(text)}); }
  void Malformed(std::string text) {
    report_.findings.push_back({Severity::kMalformed, std::move(text)});
  }
  std::string Visible(std::string_view bytes) const {
    return DisplayExcerpt(bytes, report_.utf8, kExcerpt);
  }
  std::string LineName(const HeaderLine& line) const {
    return "line " + std::to_string(line.lineNumber);
  }

  size_t LineNumberAt(size_t offset) const {
    return 1 + static_cast<size_t>(std::count(bytes_.begin(), bytes_.begin() + offset, '\n'));
  }

  HeaderLine MakeLine(const RawLine& raw, size_t lineNumber) const;
  void ReadHeader();
  void CheckEnvelopeLines();
  void SplitOffInsertion();
  void DescribeLine(HeaderLine* line, bool insertion);
  void CheckOrderAndBlocks();
  void ReadTrailer();
  void ReadBody();
  void DecideMode();

  std::string_view bytes_;
  const InspectOptions& options_;
  const LineCatalog& catalog_;
  const EnvelopeBytes& env_;
  StreamReport report_;
  size_t headerStart_ = 0;
  size_t bodyStart_ = 0;  // after the header's last line
  size_t bodyEnd_ = 0;    // the trailer, or the end
};

HeaderLine Inspector::MakeLine(const RawLine& raw, size_t lineNumber) const {
  HeaderLine line;
  line.offset = raw.offset;
  line.lineNumber = lineNumber;
  line.bytes = std::string(raw.text);
  line.ending = EndingName(raw.ending);
  line.parsed = ParsePJLLine(raw.text);
  return line;
}

void Inspector::ReadHeader() {
  headerStart_ = report_.uelOffsets.front() + env_.uel.size();
  const std::string enterLanguage(env_.enterLanguage.substr(0, env_.enterLanguage.size() - 1));
  size_t at = headerStart_;
  size_t lineNumber = LineNumberAt(at);
  while (at < bytes_.size()) {
    const RawLine raw = NextLine(bytes_, at);
    if (!StartsWith(raw.text, "@PJL")) break;
    report_.header.push_back(MakeLine(raw, lineNumber));
    at += raw.size();
    ++lineNumber;
    if (raw.text == enterLanguage) {
      report_.languageSwitchOffset = raw.offset;
      if (EndingName(raw.ending) != "LF") {
        Malformed("the language switch ends in " +
                  (raw.ending.empty() ? std::string("nothing") : EndingName(raw.ending)) +
                  "; the filter ends it in LF");
      }
      break;
    }
    if (raw.ending.empty()) {
      Malformed("the stream ends inside the header, in line " + std::to_string(lineNumber - 1));
      break;
    }
  }
  bodyStart_ = at;
}

void Inspector::CheckEnvelopeLines() {
  const std::string_view encoding = env_.encodingLine;
  const std::string_view jobMode = env_.jobMode;
  size_t next = 0;
  for (size_t i = 0; i < report_.header.size(); ++i) {
    HeaderLine& line = report_.header[i];
    const std::string whole = Whole(line);
    if (line.parsed.kind == LineKind::kSet && line.parsed.name == kEncodingSettingName) {
      if (report_.encodingLine) continue;
      report_.encodingLine = i;
      report_.utf8 = true;
      if (whole != encoding)
        Note(LineName(line) + ": the encoding line is not \"" + Visible(encoding) + "\"");
      if (i != 0) Note(LineName(line) + ": the encoding line is not the first line of the header");
    } else if (line.parsed.kind == LineKind::kCommand && line.parsed.name == kJobModeCommandName) {
      if (report_.jobModeLine) continue;
      report_.jobModeLine = i;
      if (whole != jobMode) {
        Malformed(LineName(line) + ": the job mode line is \"" + Visible(whole) + "\", not \"" +
                  Visible(jobMode) + "\"");
      }
      if (i != next) Malformed(LineName(line) + ": the job mode line comes after other lines");
    }
    if (report_.encodingLine && i == *report_.encodingLine) next = i + 1;
  }
  if (!report_.jobModeLine && !report_.header.empty()) {
    Malformed("no job mode line (" + Visible(jobMode) + ")");
  }
}

void Inspector::SplitOffInsertion() {
  // Only the PJL before the language switch can be the insertion mode's.
  size_t end = report_.header.size();
  if (report_.languageSwitchOffset && end > 0) --end;
  int stage = 0;
  size_t start = end;
  for (size_t i = 0; i < end; ++i) {
    const HeaderLine& line = report_.header[i];
    const std::string whole = Whole(line);
    if (catalog_.OnlyInInsertionMode(whole)) {
      start = i;
      break;
    }
    const LineClass header = catalog_.ClassifyHeaderLine(whole);
    const bool derivable = catalog_.ClassifyInsertionLine(whole).group == LineGroup::kInsertion;
    if (derivable && line.parsed.name == kTonerSaverSettingName) {
      // The header's toner-saver line is always followed by the reduction rate.
      const bool rateFollows =
          i + 1 < end && report_.header[i + 1].parsed.name == kReductionRateSettingName;
      if (!rateFollows || stage > Rank(LineGroup::kDeviceSettings)) {
        start = i;
        break;
      }
    }
    if (header.group != LineGroup::kUnknown) stage = std::max(stage, Rank(header.group));
  }
  if (start == end) return;
  report_.insertion.assign(report_.header.begin() + static_cast<std::ptrdiff_t>(start),
                           report_.header.begin() + static_cast<std::ptrdiff_t>(end));
  report_.header.erase(report_.header.begin() + static_cast<std::ptrdiff_t>(start),
                       report_.header.begin() + static_cast<std::ptrdiff_t>(end));
}

void Inspector::DescribeLine(HeaderLine* line, bool insertion) {
  const std::string whole = Whole(*line);
  line->meaning =
      insertion ? catalog_.ClassifyInsertionLine(whole) : catalog_.ClassifyHeaderLine(whole);
  line->valueWords = catalog_.ValueWords(line->parsed.name, line->parsed.value);
  const std::string name = Visible(line->parsed.name.empty() ? line->bytes : line->parsed.name);
  if (line->meaning.group == LineGroup::kUnknown) {
    line->problems.push_back(insertion ? "not a line the insertion mode writes"
                                       : "not a line this filter writes");
  } else if (!line->meaning.exactRow) {
    if (!line->meaning.expectedEnding.empty() && line->ending != line->meaning.expectedEnding &&
        line->meaning.expectedEnding.find(line->ending.empty() ? "?" : line->ending) ==
            std::string::npos) {
      line->problems.push_back("ends in " +
                               (line->ending.empty() ? std::string("nothing") : line->ending) +
                               "; the filter ends " + name + " in " + line->meaning.expectedEnding);
    } else {
      line->problems.push_back("not in the form the filter writes " + name + " in");
    }
  }
  if (line->meaning.sealed && !line->parsed.value.empty()) {
    line->sealed = InspectSealedField(line->parsed.value, options_.key, report_.utf8);
    const SealedFieldReport& field = *line->sealed;
    if (!field.blob) {
      line->problems.push_back(DescribeSealedField(field) +
                               " (a password the filter could not open and passed on as it was?)");
    } else if (!field.digestMatches) {
      line->problems.push_back(
          "the sealed field names a recipient key other than the built-in one");
    }
    if (field.openAttempted && !field.opened) line->problems.push_back(DescribeOpening(field));
  }
  for (const std::string& problem : line->problems) {
    Note(LineName(*line) + " (" + name + "): " + problem);
  }
}

void Inspector::CheckOrderAndBlocks() {
  int stage = 0;
  LineGroup last = LineGroup::kEnvelope;
  std::vector<const HeaderLine*> block;
  for (const HeaderLine& line : report_.header) {
    const LineGroup group = line.meaning.group;
    if (group == LineGroup::kUnknown || line.parsed.name == kEnterLanguageCommandName) continue;
    if (group == LineGroup::kJobInformation) block.push_back(&line);
    if (Rank(group) < stage) {
      Note(LineName(line) + ": a " + GroupTitle(group) + " line after the " + GroupTitle(last) +
           " lines; the filter writes " + GroupTitle(group) + " earlier");
      continue;
    }
    stage = Rank(group);
    last = group;
  }
  if (block.empty()) return;
  const HeaderLine& first = *block.front();
  if (first.parsed.name == kCommentVersionItem) {
    report_.jobInformationVersion = first.parsed.value;
  } else {
    Note(LineName(first) + ": the job information block does not start with its version line");
  }
  if (block.size() < 2 || block[1]->parsed.name != "BEGIN") {
    Note("the job information block has no BEGIN line after its version line");
  }
  if (block.back()->parsed.name != kCommentEndItem) {
    Note("the job information block has no END line");
  }
}

void Inspector::ReadTrailer() {
  bodyEnd_ = bytes_.size();
  const size_t last = bytes_.rfind(env_.uel);
  if (last == std::string_view::npos || last < bodyStart_ || last < headerStart_) {
    Malformed("no trailer (" + Visible(env_.trailer) +
              "): the stream is cut short, or the job was not finished");
    return;
  }
  const std::string_view rest = bytes_.substr(last);
  const std::string_view trailer = env_.trailer;
  if (StartsWith(rest, trailer)) {
    report_.trailerOffset = last;
    report_.trailerComplete = true;
    report_.trailingBytes = rest.size() - trailer.size();
    bodyEnd_ = last;
    if (report_.trailingBytes > 0) {
      Malformed(Plural(report_.trailingBytes, "byte", "bytes") +
                " after the trailer: " + Visible(rest.substr(trailer.size())));
    }
  } else if (StartsWith(trailer, rest)) {
    report_.trailerOffset = last;
    bodyEnd_ = last;
    Malformed("the trailer is cut short: " + Visible(rest) + " instead of " + Visible(trailer));
  } else {
    Malformed("no trailer (" + Visible(trailer) +
              "): the stream is cut short, or the job was not finished");
  }
}

void Inspector::ReadBody() {
  std::string_view body = bytes_.substr(bodyStart_, bodyEnd_ - bodyStart_);
  if (report_.languageSwitchOffset) {
    report_.postscript = InspectPostScript(body, bodyStart_);
    return;
  }
  // No language switch where the header ends. The debug copy of an
  // insertion-mode job holds the spooled PostScript here, the derived PJL
  // among its lines, then the language switch (after the end-of-job byte).
  const std::string_view enter = env_.enterLanguage;
  size_t found = std::string_view::npos;
  for (size_t at = body.find(enter); at != std::string_view::npos; at = body.find(enter, at + 1)) {
    if (at == 0 || body[at - 1] == '\n' || body[at - 1] == '\x04') found = at;
  }
  // Only a header that has its job mode line can be followed by the copy's PostScript.
  if (!report_.jobModeLine) found = std::string_view::npos;
  if (found == std::string_view::npos) {
    std::string after = "other bytes";
    if (body.empty()) {
      after = report_.trailerOffset
                  ? "the trailer (the insertion mode writes none when it cannot read the job)"
                  : "the end of the stream";
    }
    Malformed("no language switch (" + Visible(enter) + "): the header runs into " + after);
    if (!body.empty()) report_.postscript = InspectPostScript(body, bodyStart_);
    return;
  }
  report_.debugCopyForm = true;
  report_.languageSwitchOffset = bodyStart_ + found;
  std::string mirrored;
  size_t lineNumber = LineNumberAt(bodyStart_);
  for (size_t at = 0; at < found;) {
    const RawLine raw = NextLine(body.substr(0, found), at);
    if (StartsWith(raw.text, "@PJL ")) {
      RawLine absolute = raw;
      absolute.offset += bodyStart_;
      report_.insertion.push_back(MakeLine(absolute, lineNumber));
    } else {
      mirrored.append(body.substr(at, raw.size()));
    }
    at += raw.size();
    ++lineNumber;
  }
  Note(
      "the PostScript comes before the language switch, with the derived PJL among its lines: "
      "the debug copy of a job in the PPD-feature insertion mode");
  const std::string_view after = body.substr(found + enter.size());
  if (!after.empty()) {
    Note(Plural(after.size(), "byte", "bytes") + " between the language switch and the trailer");
  }
  PostScriptReport ps = InspectPostScript(mirrored, bodyStart_);
  report_.postscript = std::move(ps);
}

void Inspector::DecideMode() {
  const PostScriptReport* ps = report_.postscript ? &*report_.postscript : nullptr;
  // The insertion mode's second pass puts the spooled job's unfinished last
  // line ("%%EOF" for most jobs) in front of the job's first line.
  size_t held = std::string::npos;
  if (ps != nullptr && !ps->endOfJobByte && !report_.debugCopyForm &&
      !StartsWith(ps->firstLine, "%!")) {
    held = ps->firstLine.find("%!");
  }
  if (report_.debugCopyForm || !report_.insertion.empty() ||
      (held != std::string::npos && held > 0)) {
    report_.mode = StreamMode::kInsertion;
  } else if (ps != nullptr && ps->endOfJobByte) {
    report_.mode = StreamMode::kPassThrough;
  }
  if (ps == nullptr || !report_.languageSwitchOffset) return;
  if (ps->size == 0) {
    Note("no PostScript at all: the filter could not read the job's input");
  } else if (!ps->endOfJobByte && report_.mode != StreamMode::kInsertion) {
    Note("the PostScript does not end with the end-of-job byte 0x04: the job was cancelled");
  }
  if (held != std::string::npos && held > 0) {
    Note("the first PostScript line begins with \"" + Visible(ps->firstLine.substr(0, held)) +
         "\", the spooled job's unfinished last line");
  }
}

StreamReport Inspector::Run() {
  report_.size = bytes_.size();
  if (bytes_.empty()) {
    Malformed("the stream is empty");
    return report_;
  }
  const std::string_view uel = env_.uel;
  for (size_t at = bytes_.find(uel); at != std::string_view::npos; at = bytes_.find(uel, at + 1)) {
    report_.uelOffsets.push_back(at);
  }
  if (report_.uelOffsets.empty()) {
    Malformed("no universal exit language (" + Visible(uel) +
              ") anywhere: not a print stream of this filter");
    return report_;
  }
  report_.leadingBytes = report_.uelOffsets.front();
  // The encoding decides how text shows; look for its line before anything is shown.
  report_.utf8 =
      bytes_.find(env_.encodingLine, report_.leadingBytes) == report_.leadingBytes + uel.size();
  if (report_.leadingBytes > 0) {
    Malformed(
        Plural(report_.leadingBytes, "byte", "bytes") +
        " before the universal exit language: " + Visible(bytes_.substr(0, report_.leadingBytes)));
  }
  ReadHeader();
  if (report_.header.empty()) {
    Malformed("no PJL line directly after the universal exit language");
  }
  // The split comes first: it moves lines out of the header, and the
  // envelope checks keep indexes into it.
  SplitOffInsertion();
  CheckEnvelopeLines();
  ReadTrailer();
  ReadBody();
  for (HeaderLine& line : report_.header) DescribeLine(&line, false);
  for (HeaderLine& line : report_.insertion) DescribeLine(&line, true);
  CheckOrderAndBlocks();
  for (size_t uelAt : report_.uelOffsets) {
    if (uelAt == report_.uelOffsets.front()) continue;
    if (report_.trailerOffset && uelAt == *report_.trailerOffset) continue;
    Note("a universal exit language inside the job at byte " + std::to_string(uelAt));
  }
  DecideMode();
  if (report_.postscript) {
    for (const Fragment& fragment : report_.postscript->fragments) {
      if (!fragment.anchor.empty()) continue;
      Note("PostScript line " + std::to_string(fragment.line) + ": " +
           FragmentTitle(fragment.kind) +
           " where the filter does not insert it (the application's own?)");
    }
  }
  return report_;
}

}  // namespace

const char* ModeId(StreamMode mode) {
  switch (mode) {
    case StreamMode::kPassThrough:
      return "pass-through";
    case StreamMode::kInsertion:
      return "insertion";
    case StreamMode::kUnknown:
      break;
  }
  return "unknown";
}

bool StreamReport::Malformed() const {
  for (const Finding& finding : findings) {
    if (finding.severity == Severity::kMalformed) return true;
  }
  return false;
}

int StreamReport::SealedFields() const {
  int count = 0;
  for (const HeaderLine& line : header) count += line.sealed ? 1 : 0;
  return count;
}

const HeaderLine* StreamReport::HeaderAt(const std::optional<size_t>& index) const {
  return index && *index < header.size() ? &header[*index] : nullptr;
}

StreamReport InspectStream(std::string_view bytes, const InspectOptions& options) {
  return Inspector(bytes, options).Run();
}
