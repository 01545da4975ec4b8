// Whole print streams taken apart: the envelope checks, the header lines and
// where the header ends, the insertion mode's PJL, the debug copy's form,
// and any bytes at all without a crash.
#include <gtest/gtest.h>

#include <random>
#include <string>

#include "inspect/report_output.h"
#include "inspect/stream_inspection.h"

namespace {

const std::string kUEL = "\x1b%-12345X";
const std::string kTrailer = kUEL + "@PJL EOJ\n";
const std::string kEncoding = "@PJL SET STRINGCODESET=UTF8\n";
const std::string kJobMode = "@PJL JOB MODE=PRINTER\r\n";
const std::string kEnter = "@PJL ENTER LANGUAGE=POSTSCRIPT\n";
const std::string kPostScript = "%!PS\nbp\nep\nbp\nep\n\x04";

std::string Attr(const std::string& name, const std::string& value, const char* end = "\n") {
  return "@PJL SET JOBATTR=\"@" + name + "=" + value + "\"" + end;
}

std::string Stream(const std::string& lines, const std::string& ps = kPostScript) {
  return kUEL + kEncoding + kJobMode + lines + kEnter + ps + kTrailer;
}

bool HasFinding(const StreamReport& report, Severity severity, const std::string& part) {
  for (const Finding& finding : report.findings) {
    if (finding.severity == severity && finding.text.find(part) != std::string::npos) return true;
  }
  return false;
}

std::string Findings(const StreamReport& report) {
  std::string text;
  for (const Finding& finding : report.findings) text += finding.text + "\n";
  return text;
}

StreamReport Inspect(const std::string& bytes) { return InspectStream(bytes, {}); }

TEST(InspectStream, EnvelopeChecks) {
  const std::string good = Stream(Attr("CNAM", "host"));
  const struct {
    const char* name;
    std::string bytes;
    bool malformed;
    const char* finding;
  } kCases[] = {
      {"well-formed", good, false, ""},
      {"legacy printer, no encoding line", kUEL + kJobMode + kEnter + kPostScript + kTrailer, false,
       ""},
      {"empty", "", true, "the stream is empty"},
      {"plain PostScript", "%!PS\nshowpage\n", true, "no universal exit language"},
      {"message before the header", "ERROR[150]: RSA Encrypt failed[99].\n" + good, true,
       "36 bytes before the universal exit language: ERROR[150]"},
      {"no job mode", kUEL + kEncoding + kEnter + kPostScript + kTrailer, true, "no job mode line"},
      {"job mode ends in LF",
       kUEL + kEncoding + "@PJL JOB MODE=PRINTER\n" + kEnter + kPostScript + kTrailer, true,
       "the job mode line is"},
      {"job mode after a module line",
       kUEL + kEncoding + Attr("CNAM", "h") + kJobMode + kEnter + kPostScript + kTrailer, true,
       "the job mode line comes after other lines"},
      {"line break after the UEL", kUEL + "\n" + kJobMode + kEnter + kPostScript + kTrailer, true,
       "no PJL line directly after"},
      {"no language switch", kUEL + kEncoding + kJobMode + Attr("CNAM", "h") + kTrailer, true,
       "no language switch"},
      {"no trailer", good.substr(0, good.size() - kTrailer.size()), true, "no trailer"},
      {"trailer cut short", good.substr(0, good.size() - 3), true, "the trailer is cut short"},
      {"trailer without its line end", good.substr(0, good.size() - 1), true, "cut short"},
      {"bytes after the trailer", good + "junk", true, "4 bytes after the trailer: junk"},
      {"stream ends in the header", kUEL + kEncoding + kJobMode + "@PJL SET JOBATTR=\"@CN", true,
       "the stream ends inside the header"},
      {"language switch with CR LF",
       kUEL + kJobMode + "@PJL ENTER LANGUAGE=POSTSCRIPT\r\n" + kPostScript + kTrailer, true,
       "the language switch ends in CR LF"},
      {"UEL inside the job", Stream("", "%!PS\n" + kUEL + "\nep\n\x04"), false,
       "a universal exit language inside the job"},
      {"cancelled job", Stream("", "%!PS\nbp\n"), false, "does not end with the end-of-job byte"},
      {"unreadable input", Stream("", ""), false, "no PostScript at all"},
      {"a fragment elsewhere", Stream("", "%!PS\nbp\nkrfbp\nep\n\x04"), false,
       "PostScript line 3: watermark page setup where the filter does not insert it"},
  };
  for (const auto& c : kCases) {
    const StreamReport report = Inspect(c.bytes);
    EXPECT_EQ(report.Malformed(), c.malformed) << c.name << "\n" << Findings(report);
    if (c.finding[0] != '\0') {
      EXPECT_TRUE(
          HasFinding(report, c.malformed ? Severity::kMalformed : Severity::kNote, c.finding))
          << c.name << "\n"
          << Findings(report);
    } else {
      EXPECT_TRUE(report.findings.empty()) << c.name << "\n" << Findings(report);
    }
  }
}

// Every strict prefix of a stream lacks its trailer, and says so; every
// byte flipped or dropped still yields a report.
TEST(InspectStream, CutAndDamagedStreamsNeverPassAndNeverCrash) {
  const std::string good = Stream(Attr("CNAM", "host") + "@PJL SET HOLDENCRYPTKEY=\"QUJD\"\r\n" +
                                  "@PJL COMMENT PRINTJOBINFO VERSION=1.5.0\n");
  ASSERT_FALSE(Inspect(good).Malformed()) << Findings(Inspect(good));
  for (size_t length = 0; length < good.size(); ++length) {
    EXPECT_TRUE(Inspect(good.substr(0, length)).Malformed()) << length;
  }
  std::mt19937 random(20240611);
  for (int round = 0; round < 2000; ++round) {
    std::string damaged = good;
    const int edits = 1 + static_cast<int>(random() % 4);
    for (int e = 0; e < edits && !damaged.empty(); ++e) {
      const size_t at = random() % damaged.size();
      switch (random() % 3) {
        case 0:
          damaged[at] = static_cast<char>(random() % 256);
          break;
        case 1:
          damaged.erase(at, 1 + random() % 8);
          break;
        default:
          damaged.insert(at, 1, "\n\r\x1b\"=@%\x04"[random() % 8]);
          break;
      }
    }
    const StreamReport report = Inspect(damaged);
    // The renderers take whatever the reader made of it.
    EXPECT_FALSE(RenderText(report, {}).empty());
    EXPECT_FALSE(RenderJson(report, {}).empty());
  }
}

TEST(InspectStream, HeaderLinesInOrderWithTheirMeaning) {
  const std::string header =
      "@PJL SET HOLD=STORE\n"
      "@PJL SET USERNAME=\"bob\"\r\n" +
      Attr("CNAM", "host") + Attr("JOAU", "bob", "\r\n") + Attr("PBRE", "LEFT") +
      "@PJL SET RENDERMODE=COLOR\n";
  const StreamReport report = Inspect(Stream(header));
  ASSERT_FALSE(report.Malformed()) << Findings(report);
  EXPECT_TRUE(report.utf8);
  EXPECT_EQ(report.mode, StreamMode::kPassThrough);
  const struct {
    const char* name;
    LineGroup group;
    const char* value;
    const char* ending;
    size_t lineNumber;
  } kExpected[] = {
      {"STRINGCODESET", LineGroup::kEnvelope, "UTF8", "LF", 1},
      {"JOB MODE", LineGroup::kEnvelope, "PRINTER", "CR LF", 2},
      {"HOLD", LineGroup::kPrintType, "STORE", "LF", 3},
      {"USERNAME", LineGroup::kPrintType, "bob", "CR LF", 4},
      {"@CNAM", LineGroup::kAccounting, "host", "LF", 5},
      {"@JOAU", LineGroup::kAccounting, "bob", "CR LF", 6},
      {"@PBRE", LineGroup::kPerfectBinding, "LEFT", "LF", 7},
      {"RENDERMODE", LineGroup::kDeviceSettings, "COLOR", "LF", 8},
      {"ENTER LANGUAGE", LineGroup::kEnvelope, "POSTSCRIPT", "LF", 9},
  };
  ASSERT_EQ(report.header.size(), sizeof kExpected / sizeof kExpected[0]);
  for (size_t i = 0; i < report.header.size(); ++i) {
    const HeaderLine& line = report.header[i];
    EXPECT_EQ(line.parsed.name, kExpected[i].name);
    EXPECT_EQ(line.meaning.group, kExpected[i].group) << line.parsed.name;
    EXPECT_EQ(line.parsed.value, kExpected[i].value) << line.parsed.name;
    EXPECT_EQ(line.ending, kExpected[i].ending) << line.parsed.name;
    EXPECT_EQ(line.lineNumber, kExpected[i].lineNumber) << line.parsed.name;
    EXPECT_TRUE(line.problems.empty()) << line.parsed.name;
  }
  EXPECT_EQ(report.header[2].valueWords, "secure print: held until released with the password");
}

TEST(InspectStream, LinesThatDoNotFitAreNoted) {
  const struct {
    std::string line;
    const char* problem;
  } kCases[] = {
      {Attr("JOAU", "bob"), "not in the form the filter writes @JOAU in"},
      {Attr("CNAM", "host", "\r\n"), "ends in CR LF; the filter ends @CNAM in LF"},
      {Attr("PBRE", "LEFT", "\r\n"), "ends in CR LF; the filter ends @PBRE in LF"},
      {Attr("QQQQ", "1"), "not a line this filter writes"},
      {"@PJL SET HOLDENCRYPTKEY=\"pw\"\r\n",
       "not sealed: 2 characters that are not base64 (a password the filter could not open"},
      {"@PJL SET HOLDENCRYPTKEY=\"3YbDtlJWKPh+/9c9e5YYPA==\"\r\n",
       "not a sealed blob: 24 characters"},
  };
  for (const auto& c : kCases) {
    const StreamReport report = Inspect(Stream(c.line));
    EXPECT_FALSE(report.Malformed()) << c.line;
    ASSERT_EQ(report.header.size(), 4u) << c.line;
    const HeaderLine& line = report.header[2];
    ASSERT_EQ(line.problems.size(), 1u) << c.line;
    EXPECT_EQ(line.problems[0].rfind(c.problem, 0), 0u) << line.problems[0];
    EXPECT_TRUE(HasFinding(report, Severity::kNote, "line 3")) << Findings(report);
  }
}

TEST(InspectStream, GroupsOutOfOrderAndBrokenInformationBlocksAreNoted) {
  const struct {
    std::string lines;
    const char* finding;
    const char* version;
  } kCases[] = {
      {Attr("CNAM", "h") + "@PJL SET HOLD=STORE\n", "a print type line after the accounting lines",
       ""},
      {"@PJL COMMENT PRINTJOBINFO VERSION=1.3.0\n@PJL COMMENT PRINTJOBINFO BEGIN\n"
       "@PJL COMMENT PRINTJOBINFO END\n",
       "", "1.3.0"},
      {"@PJL COMMENT PRINTJOBINFO BEGIN\n@PJL COMMENT PRINTJOBINFO END\n",
       "does not start with its version line", ""},
      {"@PJL COMMENT PRINTJOBINFO VERSION=1.5.0\n@PJL COMMENT PRINTJOBINFO BEGIN\n",
       "has no END line", "1.5.0"},
  };
  for (const auto& c : kCases) {
    const StreamReport report = Inspect(Stream(c.lines));
    EXPECT_FALSE(report.Malformed());
    EXPECT_EQ(report.jobInformationVersion, c.version);
    if (c.finding[0] != '\0') {
      EXPECT_TRUE(HasFinding(report, Severity::kNote, c.finding)) << Findings(report);
    } else {
      EXPECT_TRUE(report.findings.empty()) << Findings(report);
    }
  }
}

// In the insertion mode the PJL derived from feature code follows the
// header; where the header ends is read from the lines themselves.
TEST(InspectStream, InsertionModePJLIsToldFromTheHeader) {
  const std::string toner = "@PJL SET ECONOMODE=OFF\n@PJL SET REDUCTIONRATE=0\n";
  const struct {
    const char* name;
    std::string lines;
    size_t header;     // module lines in the header
    size_t insertion;  // lines of the insertion mode
  } kCases[] = {
      {"header only", Attr("CNAM", "h") + toner, 3, 0},
      {"defaults after the header",
       Attr("CNAM", "h") + Attr("GRGU", "OFF") + "@PJL SET ECONOMODE=OFF\n", 1, 2},
      {"toner saver, then the same line derived",
       Attr("CNAM", "h") + toner + "@PJL SET ECONOMODE=OFF\n", 3, 1},
      {"derived line after special pages", Attr("EFCV", "NONE") + "@PJL SET ECONOMODE=MODE1\n", 1,
       1},
      {"after the job information",
       "@PJL COMMENT PRINTJOBINFO VERSION=1.5.0\n@PJL COMMENT PRINTJOBINFO BEGIN\n"
       "@PJL COMMENT PRINTJOBINFO END\n@PJL SET RESOLUTION=600\n@PJL SET BITSPERPIXEL=1\n",
       3, 2},
  };
  for (const auto& c : kCases) {
    const StreamReport report = Inspect(Stream(c.lines, "%%EOF%!PS\nep\n\n"));
    // Envelope lines: encoding, job mode, language switch.
    EXPECT_EQ(report.header.size(), c.header + 3) << c.name;
    EXPECT_EQ(report.insertion.size(), c.insertion) << c.name;
    for (const HeaderLine& line : report.insertion) {
      EXPECT_EQ(line.meaning.group, LineGroup::kInsertion) << c.name << ": " << line.bytes;
      EXPECT_FALSE(line.meaning.source.empty()) << c.name;
    }
    // The held-back "%%EOF" before the first line tells the mode even without derived PJL.
    EXPECT_EQ(report.mode, StreamMode::kInsertion) << c.name;
    EXPECT_FALSE(report.Malformed()) << c.name << Findings(report);
  }
}

// Envelope lines after the header's end belong to the insertion part; the
// envelope refers only to lines that stay in the header.
TEST(InspectStream, EnvelopeLinesAmongTheInsertionPJL) {
  const std::string stream = kUEL + kJobMode + Attr("CNAM", "h") + Attr("TRAP", "ON") + kEncoding +
                             kJobMode + kEnter + "%%EOF%!PS\nep\n" + kTrailer;
  const StreamReport report = Inspect(stream);
  EXPECT_EQ(report.insertion.size(), 3u);
  EXPECT_FALSE(report.encodingLine);
  ASSERT_TRUE(report.HeaderAt(report.jobModeLine));
  EXPECT_EQ(report.HeaderAt(report.jobModeLine)->lineNumber, 1u);
  EXPECT_NE(RenderText(report, {}).find("job mode                  line 1:"), std::string::npos);
  EXPECT_NE(RenderJson(report, {}).find("\"encoding_line\": null"), std::string::npos);
}

// The debug copy of an insertion-mode job mirrors the spooled PostScript,
// with the derived PJL among its lines, before the language switch.
TEST(InspectStream, DebugCopyOfAnInsertionModeJob) {
  const std::string copy = kUEL + kEncoding + kJobMode + Attr("CNAM", "h") +
                           "%!PS\n%%BeginSetup\n" + Attr("TRAP", "ON") +
                           "%%BeginFeature: *KRSetTrapMode True\n%%EndSetup\n"
                           "bp\nep\nbp\nep\n\n\x04" +
                           kEnter + kTrailer;
  const StreamReport report = Inspect(copy);
  EXPECT_FALSE(report.Malformed()) << Findings(report);
  EXPECT_TRUE(report.debugCopyForm);
  EXPECT_EQ(report.mode, StreamMode::kInsertion);
  ASSERT_EQ(report.insertion.size(), 1u);
  EXPECT_EQ(report.insertion[0].meaning.source, "*KRSetTrapMode True");
  EXPECT_EQ(report.insertion[0].lineNumber, 6u);
  ASSERT_TRUE(report.postscript);
  EXPECT_EQ(report.postscript->pages, 2);
  EXPECT_TRUE(report.postscript->endOfJobByte);
  EXPECT_TRUE(HasFinding(report, Severity::kNote,
                         "the debug copy of a job in the PPD-feature insertion mode"));
}

// Wherever a stream is cut, no part of a sealed field's text is shown.
TEST(InspectStream, ACutSealedFieldIsNeverShown) {
  std::string field;
  for (int i = 0; i < 123; ++i) field += "Zm9v";
  const std::string line = "@PJL SET HOLDENCRYPTKEY=\"" + field + "\"\r\n";
  const std::string stream = Stream(line + Attr("JOEP", field, "\r\n"));
  const size_t start = stream.find(field);
  for (size_t cut = start + 8; cut < stream.size(); cut += 37) {
    const StreamReport report = Inspect(stream.substr(0, cut));
    for (const std::string& shown : {RenderText(report, {}), RenderJson(report, {})}) {
      EXPECT_EQ(shown.find("Zm9vZm9v"), std::string::npos) << cut << "\n" << shown;
    }
  }
}

// A Shift-JIS printer's values show as UTF-8; bytes that are no text are
// escaped, and control bytes made visible.
TEST(InspectStream, ValuesShowInTheStreamsEncoding) {
  const std::string legacy = kUEL + kJobMode + Attr("ACNA", "\x82\xa0\x82\xa2", "\r\n") +
                             Attr("LUNA",
                                  "a\x1b"
                                  "b\xff") +
                             kEnter + kPostScript + kTrailer;
  const StreamReport report = Inspect(legacy);
  EXPECT_FALSE(report.utf8);
  const std::string text = RenderText(report, {"-", false, false});
  EXPECT_NE(text.find("document name" + std::string(21, ' ') + "\xe3\x81\x82\xe3\x81\x84  CR LF\n"),
            std::string::npos)
      << text;
  EXPECT_NE(text.find("a<ESC>b\\xFF\n"), std::string::npos) << text;
}

}  // namespace
