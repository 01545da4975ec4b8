#include <cstdio>

#include "inspect/report_output.h"
#include "inspect/text_display.h"
#include "job/job_header.h"

namespace {

// Column widths of the header listing.
constexpr size_t kNameColumn = 16;
constexpr size_t kWordsColumn = 34;

std::string Pad(const std::string& text, size_t width) {
  // Width in characters, not bytes, so UTF-8 words line up.
  size_t characters = 0;
  for (unsigned char c : text) characters += (c & 0xC0) != 0x80 ? 1 : 0;
  return characters >= width ? text + " " : text + std::string(width - characters, ' ');
}

std::string ShownValue(const HeaderLine& line, bool utf8) {
  if (line.sealed) return DescribeSealedField(*line.sealed);
  if (!line.parsed.hasValue) return "";
  std::string value = DisplayText(line.parsed.value, utf8);
  if (line.parsed.kind == LineKind::kSet && line.parsed.quoted) value = "\"" + value + "\"";
  if (line.parsed.value.empty() && !line.parsed.quoted) value = "(empty)";
  if (line.parsed.value.empty() && line.parsed.kind == LineKind::kJobAttr) value = "(empty)";
  return value;
}

void AppendLine(std::string* out, const HeaderLine& line, bool utf8,
                const ReportSettings& settings) {
  const std::string indent = "    ";
  std::string text = indent + Pad(line.parsed.name.empty() ? DisplayText(line.bytes, utf8)
                                                           : DisplayText(line.parsed.name, utf8),
                                  kNameColumn);
  text += Pad(line.meaning.words != nullptr ? line.meaning.words : "?", kWordsColumn);
  text += ShownValue(line, utf8);
  if (!line.valueWords.empty()) text += " (" + line.valueWords + ")";
  if (line.ending == "CR LF") text += "  CR LF";
  if (line.ending.empty()) text += "  (no line end)";
  if (!line.meaning.source.empty()) text += "  from " + line.meaning.source;
  while (!text.empty() && text.back() == ' ') text.pop_back();
  *out += text + "\n";
  const std::string continuation = indent + std::string(kNameColumn + kWordsColumn, ' ');
  if (line.sealed && line.sealed->openAttempted) {
    std::string opening = DescribeOpening(*line.sealed);
    if (line.sealed->opened && settings.showSecrets) {
      opening += "; payload \"" + DisplayText(line.sealed->payload, utf8) + "\"";
    }
    *out += continuation + opening + "\n";
  }
  for (const std::string& problem : line.problems) {
    if (line.sealed && line.sealed->openAttempted && problem == DescribeOpening(*line.sealed))
      continue;
    *out += continuation + "! " + problem + "\n";
  }
}

std::string Bytes(size_t count) {
  return std::to_string(count) + (count == 1 ? " byte" : " bytes");
}

void AppendEnvelope(std::string* out, const StreamReport& report) {
  *out += "Envelope\n";
  std::string uels;
  for (size_t at : report.uelOffsets) {
    uels += (uels.empty() ? "byte " : ", byte ") + std::to_string(at);
    if (report.trailerOffset && at == *report.trailerOffset) uels += " (trailer)";
  }
  *out += "  " + Pad("universal exit language", 26) + (uels.empty() ? "missing" : uels) + "\n";
  if (report.leadingBytes > 0) {
    *out +=
        "  " + Pad("before it", 26) + Bytes(report.leadingBytes) + " that do not belong there\n";
  }
  std::string encoding = report.utf8 ? "UTF-8" : "Shift-JIS (no encoding line)";
  if (const HeaderLine* line = report.HeaderAt(report.encodingLine)) {
    encoding += ", line " + std::to_string(line->lineNumber);
  }
  *out += "  " + Pad("text encoding", 26) + encoding + "\n";
  std::string jobMode = "missing";
  if (const HeaderLine* line = report.HeaderAt(report.jobModeLine)) {
    jobMode = "line " + std::to_string(line->lineNumber) + ": " +
              DisplayText(line->bytes, report.utf8) + "  " +
              (line->ending.empty() ? std::string("(no line end)") : line->ending);
  }
  *out += "  " + Pad("job mode", 26) + jobMode + "\n";
  std::string languageSwitch = "missing";
  if (report.languageSwitchOffset) {
    languageSwitch = "byte " + std::to_string(*report.languageSwitchOffset);
    for (const HeaderLine& line : report.header) {
      if (line.offset == *report.languageSwitchOffset) {
        languageSwitch = "line " + std::to_string(line.lineNumber) + ", " + languageSwitch;
      }
    }
  }
  *out += "  " + Pad("language switch", 26) + languageSwitch + "\n";
  if (report.postscript) {
    *out += "  " + Pad("end-of-job byte 0x04", 26) +
            (report.postscript->endOfJobByte ? "at the end of the PostScript" : "none") + "\n";
  }
  std::string trailer = "missing";
  if (report.trailerOffset) {
    trailer = "byte " + std::to_string(*report.trailerOffset) +
              (report.trailerComplete ? "" : ", cut short");
    if (report.trailingBytes > 0) trailer += ", " + Bytes(report.trailingBytes) + " after it";
  }
  *out += "  " + Pad("trailer", 26) + trailer + "\n";
  *out += "  " + Pad("mode", 26) + ModeId(report.mode) +
          (report.debugCopyForm ? " (debug job copy)" : "") + "\n";
}

void AppendLines(std::string* out, const std::vector<HeaderLine>& lines, bool utf8,
                 const ReportSettings& settings, const StreamReport& report) {
  LineGroup current = LineGroup::kUnknown;
  bool first = true;
  for (const HeaderLine& line : lines) {
    // The envelope section shows the language switch.
    if (line.parsed.name == kEnterLanguageCommandName) continue;
    const LineGroup group = line.meaning.group;
    if ((first || group != current) && group != LineGroup::kInsertion) {
      std::string title = "  " + std::string(GroupTitle(group));
      if (group == LineGroup::kJobInformation && !report.jobInformationVersion.empty()) {
        title += ", version " + DisplayText(report.jobInformationVersion, utf8);
      }
      *out += title + "\n";
      current = group;
      first = false;
    }
    AppendLine(out, line, utf8, settings);
  }
}

std::string FragmentLine(const Fragment& fragment, bool utf8) {
  std::string text =
      "    " + Pad("line " + std::to_string(fragment.line), 12) + FragmentTitle(fragment.kind);
  if (fragment.page > 0) text += " on page " + std::to_string(fragment.page);
  if (!fragment.anchor.empty()) text += ", " + fragment.anchor;
  std::string details;
  for (const auto& [name, value] : fragment.details) {
    details += (details.empty() ? ": " : ", ") + name + " " + DisplayText(value, utf8);
  }
  text += details;
  if (!fragment.complete) text += " (incomplete: a line of it was cut)";
  return text + "\n";
}

void AppendPostScript(std::string* out, const PostScriptReport& ps, bool utf8) {
  *out += "PostScript: " + Bytes(ps.size) + " from byte " + std::to_string(ps.offset) + ", " +
          std::to_string(ps.lines) + (ps.lines == 1 ? " line, " : " lines, ") +
          std::to_string(ps.pages) + (ps.pages == 1 ? " page" : " pages") + "\n";
  if (!ps.pageEnds.empty()) {
    // A long job's page ends are in the JSON document; here the first ones.
    constexpr size_t kShownPageEnds = 12;
    std::string ends;
    for (size_t i = 0; i < ps.pageEnds.size() && i < kShownPageEnds; ++i) {
      const PageEnd& end = ps.pageEnds[i];
      ends += (ends.empty() ? "" : ", ") + std::string("line ") + std::to_string(end.line) + " (" +
              end.kind + ")";
    }
    if (ps.pageEnds.size() > kShownPageEnds) {
      ends += " and " + std::to_string(ps.pageEnds.size() - kShownPageEnds) + " more";
    }
    *out += "  page ends: " + ends + "\n";
  }
  if (ps.fragments.empty()) {
    *out += "  nothing inserted by the filter\n";
    return;
  }
  *out += "  inserted by the filter (lines of the PostScript part)\n";
  for (const Fragment& fragment : ps.fragments) *out += FragmentLine(fragment, utf8);
}

}  // namespace

std::string RenderText(const StreamReport& report, const ReportSettings& settings) {
  std::string out;
  const bool utf8 = report.utf8;
  out += "Print stream " + settings.source + ": " + Bytes(report.size) + ", " +
         (report.Malformed() ? "envelope MALFORMED" : "well-formed") + "\n\n";
  AppendEnvelope(&out, report);
  size_t headerLines = 0;
  for (const HeaderLine& line : report.header) {
    headerLines += line.parsed.name != kEnterLanguageCommandName;
  }
  out += "\nHeader: " + std::to_string(headerLines) + (headerLines == 1 ? " line" : " lines");
  const int sealed = report.SealedFields();
  if (sealed > 0) out += ", " + std::to_string(sealed) + " sealed";
  out += "\n";
  AppendLines(&out, report.header, utf8, settings, report);
  if (!report.insertion.empty()) {
    out +=
        "\nPJL from PPD feature code (insertion mode): " + std::to_string(report.insertion.size()) +
        (report.insertion.size() == 1 ? " line\n" : " lines\n");
    AppendLines(&out, report.insertion, utf8, settings, report);
  }
  if (report.postscript) {
    out += "\n";
    AppendPostScript(&out, *report.postscript, utf8);
  }
  out += "\nFindings\n";
  if (report.findings.empty()) out += "  none\n";
  for (const Finding& finding : report.findings) {
    out += std::string("  ") +
           (finding.severity == Severity::kMalformed ? "malformed: " : "note: ") + finding.text +
           "\n";
  }
  return out;
}

std::string ShownLine(const HeaderLine& line, bool utf8) {
  if (!line.sealed) return DisplayText(line.bytes, utf8);
  const size_t at = line.bytes.rfind(line.parsed.value);
  const std::string redacted =
      "<sealed field, " + std::to_string(line.sealed->characters) + " characters>";
  if (at == std::string::npos) return redacted;
  return DisplayText(line.bytes.substr(0, at), utf8) + redacted +
         DisplayText(line.bytes.substr(at + line.parsed.value.size()), utf8);
}
