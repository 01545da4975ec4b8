// The inspector's two outputs of one StreamReport: a readable report for
// people and one JSON document for scripts (its schema is
// docs/zpjl-inspect-schema.json). Neither ever shows the text of a sealed
// field; an opened payload appears only when `showSecrets` is set.
#pragma once

#include <string>

#include "inspect/stream_inspection.h"

struct ReportSettings {
  std::string source;        // file name, or "-" for standard input
  bool keyGiven = false;     // --key was given
  bool showSecrets = false;  // --show-secrets
};

std::string RenderText(const StreamReport& report, const ReportSettings& settings);
std::string RenderJson(const StreamReport& report, const ReportSettings& settings);

// The version of the JSON document's layout (its "schema_version").
constexpr int kReportSchemaVersion = 1;

// A header line as shown: its bytes made visible, a sealed field's text
// replaced by "<sealed field, N characters>".
std::string ShownLine(const HeaderLine& line, bool utf8);
