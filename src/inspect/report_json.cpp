#include <cstdio>
#include <optional>

#include "inspect/report_output.h"
#include "inspect/text_display.h"

namespace {

// A small writer for one JSON document: objects and arrays nest, members and
// elements are separated and indented by the writer. Strings must be UTF-8
// (DisplayText makes them so).
class Json {
 public:
  void Open(char bracket) {
    Separate();
    out_ += bracket;
    first_.push_back(true);
  }
  void Close(char bracket) {
    const bool empty = first_.back();
    first_.pop_back();
    if (!empty) NewLine();
    out_ += bracket;
  }
  void Key(const char* key) {
    Separate();
    Quote(key);
    out_ += ": ";
    afterKey_ = true;
  }
  void String(const std::string& text) {
    Separate();
    Quote(text);
  }
  void Number(size_t value) {
    Separate();
    out_ += std::to_string(value);
  }
  void Bool(bool value) {
    Separate();
    out_ += value ? "true" : "false";
  }
  void Null() {
    Separate();
    out_ += "null";
  }

  // Members in one go.
  void Member(const char* key, const std::string& value) {
    Key(key);
    String(value);
  }
  void Member(const char* key, size_t value) {
    Key(key);
    Number(value);
  }
  void Member(const char* key, bool value) {
    Key(key);
    Bool(value);
  }
  // A literal would otherwise turn into a bool.
  void Member(const char* key, const char* value) = delete;
  void MemberOrNull(const char* key, const std::string& value) {
    Key(key);
    if (value.empty())
      Null();
    else
      String(value);
  }
  void MemberOrNull(const char* key, const std::optional<size_t>& value) {
    Key(key);
    if (value)
      Number(*value);
    else
      Null();
  }

  std::string Take() { return out_ + "\n"; }

 private:
  void NewLine() {
    out_ += '\n';
    out_.append(2 * first_.size(), ' ');
  }
  // Before a value: a comma and line break, unless it follows its key.
  void Separate() {
    if (afterKey_) {
      afterKey_ = false;
      return;
    }
    if (first_.empty()) return;
    if (!first_.back()) out_ += ',';
    first_.back() = false;
    NewLine();
  }

  void Quote(const std::string& raw) {
    // Whatever a caller passes, the document stays UTF-8.
    const std::string text = IsValidText(raw, true) ? raw : DisplayText(raw, true);
    out_ += '"';
    for (unsigned char c : text) {
      if (c == '"' || c == '\\') {
        out_ += '\\';
        out_ += static_cast<char>(c);
      } else if (c < 0x20 || c == 0x7F) {
        char escaped[8];
        snprintf(escaped, sizeof escaped, "\\u%04x", c);
        out_ += escaped;
      } else {
        out_ += static_cast<char>(c);
      }
    }
    out_ += '"';
  }

  std::string out_;
  std::vector<bool> first_;
  bool afterKey_ = false;
};

void WriteSealed(Json& json, const SealedFieldReport& field, const ReportSettings& settings,
                 bool utf8) {
  json.Open('{');
  json.Member("description", DescribeSealedField(field));
  json.Member("characters", field.characters);
  json.Member("base64", field.base64);
  json.Member("blob_bytes", field.blobBytes);
  json.Member("blob", field.blob);
  json.MemberOrNull("layout_problem", field.layoutProblem);
  json.Key("aes_mode");
  if (field.blob)
    json.Number(field.aesMode);
  else
    json.Null();
  json.Key("key_type");
  if (field.blob)
    json.Number(field.keyType);
  else
    json.Null();
  json.Key("cipher_bytes");
  if (field.blob)
    json.Number(field.cipherLength);
  else
    json.Null();
  json.Key("wrapped_key_bytes");
  if (field.blob)
    json.Number(field.wrappedKeyLength);
  else
    json.Null();
  json.Member("digest_matches_builtin", field.blob && field.digestMatches);
  json.Key("opening");
  if (!field.openAttempted) {
    json.Null();
  } else {
    json.Open('{');
    json.Member("opened", field.opened);
    json.MemberOrNull("error", field.openError);
    json.Member("payload_bytes", field.payloadLength);
    json.Member("printable", field.printable);
    json.Key("payload");
    if (field.opened && settings.showSecrets)
      json.String(DisplayText(field.payload, utf8));
    else
      json.Null();
    json.Close('}');
  }
  json.Close('}');
}

void WriteLine(Json& json, const HeaderLine& line, const ReportSettings& settings, bool utf8) {
  json.Open('{');
  json.Member("line", line.lineNumber);
  json.Member("offset", line.offset);
  json.Member("group", std::string(GroupId(line.meaning.group)));
  json.Member("kind", std::string(KindId(line.parsed.kind)));
  json.Member("name", DisplayText(line.parsed.name, utf8));
  json.MemberOrNull("words", line.meaning.words != nullptr ? line.meaning.words : "");
  json.Key("value");
  if (line.sealed || !line.parsed.hasValue)
    json.Null();
  else
    json.String(DisplayText(line.parsed.value, utf8));
  json.Member("quoted", line.parsed.quoted);
  json.MemberOrNull("value_words", line.valueWords);
  json.Member("ending", line.ending);
  json.Member("matches_filter_form", line.meaning.exactRow);
  json.MemberOrNull("row", line.meaning.row);
  json.MemberOrNull("source", line.meaning.source);
  json.Member("text", ShownLine(line, utf8));
  json.Key("sealed");
  if (line.sealed)
    WriteSealed(json, *line.sealed, settings, utf8);
  else
    json.Null();
  json.Key("problems");
  json.Open('[');
  for (const std::string& problem : line.problems) json.String(problem);
  json.Close(']');
  json.Close('}');
}

void WritePostScript(Json& json, const PostScriptReport& ps, bool utf8) {
  json.Open('{');
  json.Member("offset", ps.offset);
  json.Member("size", ps.size);
  json.Member("lines", ps.lines);
  json.Member("pages", static_cast<size_t>(ps.pages));
  json.Member("end_of_job_byte", ps.endOfJobByte);
  json.Key("page_ends");
  json.Open('[');
  for (const PageEnd& end : ps.pageEnds) {
    json.Open('{');
    json.Member("line", end.line);
    json.Member("kind", end.kind);
    json.Member("page", static_cast<size_t>(end.page));
    json.Close('}');
  }
  json.Close(']');
  json.Key("fragments");
  json.Open('[');
  for (const Fragment& fragment : ps.fragments) {
    json.Open('{');
    json.Member("kind", fragment.kind);
    json.Member("title", std::string(FragmentTitle(fragment.kind)));
    json.Member("line", fragment.line);
    json.Member("lines", fragment.lines);
    json.Key("page");
    if (fragment.page > 0)
      json.Number(static_cast<size_t>(fragment.page));
    else
      json.Null();
    json.MemberOrNull("anchor", fragment.anchor);
    json.Member("complete", fragment.complete);
    json.Key("details");
    json.Open('{');
    for (const auto& [name, value] : fragment.details)
      json.Member(name.c_str(), DisplayText(value, utf8));
    json.Close('}');
    json.Close('}');
  }
  json.Close(']');
  json.Close('}');
}

}  // namespace

std::string RenderJson(const StreamReport& report, const ReportSettings& settings) {
  const bool utf8 = report.utf8;
  Json json;
  json.Open('{');
  json.Member("schema_version", static_cast<size_t>(kReportSchemaVersion));
  json.Member("source", settings.source);
  json.Member("size", report.size);
  json.Member("well_formed", !report.Malformed());
  json.Member("mode", std::string(ModeId(report.mode)));
  json.Member("debug_copy_form", report.debugCopyForm);
  json.Member("text_encoding", std::string(utf8 ? "UTF-8" : "Shift-JIS"));

  json.Key("envelope");
  json.Open('{');
  json.Key("uel_offsets");
  json.Open('[');
  for (size_t at : report.uelOffsets) json.Number(at);
  json.Close(']');
  json.Member("leading_bytes", report.leadingBytes);
  for (const auto& [key, index] : {std::pair{"encoding_line", report.encodingLine},
                                   std::pair{"job_mode_line", report.jobModeLine}}) {
    json.Key(key);
    if (const HeaderLine* line = report.HeaderAt(index)) {
      json.Number(line->lineNumber);
    } else {
      json.Null();
    }
  }
  json.MemberOrNull("language_switch_offset", report.languageSwitchOffset);
  json.Key("trailer");
  if (!report.trailerOffset) {
    json.Null();
  } else {
    json.Open('{');
    json.Member("offset", *report.trailerOffset);
    json.Member("complete", report.trailerComplete);
    json.Member("trailing_bytes", report.trailingBytes);
    json.Close('}');
  }
  json.Member("end_of_job_byte", report.postscript && report.postscript->endOfJobByte);
  json.Close('}');

  json.Key("header");
  json.Open('[');
  for (const HeaderLine& line : report.header) WriteLine(json, line, settings, utf8);
  json.Close(']');
  json.MemberOrNull("job_information_version", DisplayText(report.jobInformationVersion, utf8));
  json.Key("insertion_pjl");
  json.Open('[');
  for (const HeaderLine& line : report.insertion) WriteLine(json, line, settings, utf8);
  json.Close(']');
  json.Key("postscript");
  if (report.postscript)
    WritePostScript(json, *report.postscript, utf8);
  else
    json.Null();

  json.Key("findings");
  json.Open('[');
  for (const Finding& finding : report.findings) {
    json.Open('{');
    json.Member("severity",
                std::string(finding.severity == Severity::kMalformed ? "malformed" : "note"));
    json.Member("text", finding.text);
    json.Close('}');
  }
  json.Close(']');
  json.Close('}');
  return json.Take();
}
