// Whole print streams taken apart: the envelope checks, the header lines and
// where the header ends, the insertion mode's PJL, the debug copy's form,
// and any bytes at all without a crash.
#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

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

std::string Findings(const StreamReport& report) {
  std::string text;
  for (const Finding& finding : report.findings) text += finding.text + "\n";
  return text;
}

StreamReport Inspect(const std::string& bytes) { return InspectStream(bytes, {}); }

// Crafted streams and what the text report (findings included) and the
// JSON document must say about them.
TEST(InspectStream, ReportsSayWhatIsThere) {
  const std::string good = Stream(Attr("CNAM", "host"));
  const std::string toner = "@PJL SET ECONOMODE=OFF\n@PJL SET REDUCTIONRATE=0\n";
  const std::string info = "@PJL COMMENT PRINTJOBINFO ";
  const std::string insertionBody = "%%EOF%!PS\nep\n\n";
  const std::string legacy = kUEL + kJobMode +
                             Attr("ACNA", "\x82\xa0\xe0\x40", "\r\n") +
                             Attr("LUNA", "a\x1b" "b\xff") + kEnter + kPostScript + kTrailer;
  const struct {
    const char* name;
    std::string bytes;
    bool malformed;
    std::vector<std::string> says;  // "json:" first: in the JSON document
  } kCases[] = {
      {"well-formed", good, false, {"well-formed", "Findings\n  none"}},
      {"legacy printer, no encoding line", kUEL + kJobMode + kEnter + kPostScript + kTrailer, false,
       {"json:\"encoding_line\": null"}},
      {"empty", "", true, {"the stream is empty"}},
      {"plain PostScript", "%!PS\nshowpage\n", true, {"no universal exit language"}},
      {"message before the header", "ERROR[150]: RSA Encrypt failed[99].\n" + good, true,
       {"36 bytes before the universal exit language: ERROR[150]"}},
      {"no job mode", kUEL + kEncoding + kEnter + kPostScript + kTrailer, true, {"no job mode line"}},
      {"job mode ends in LF",
       kUEL + kEncoding + "@PJL JOB MODE=PRINTER\n" + kEnter + kPostScript + kTrailer, true,
       {"the job mode line is"}},
      {"job mode after a module line",
       kUEL + kEncoding + Attr("CNAM", "h") + kJobMode + kEnter + kPostScript + kTrailer, true,
       {"the job mode line comes after other lines"}},
      {"line break after the UEL", kUEL + "\n" + kJobMode + kEnter + kPostScript + kTrailer, true,
       {"no PJL line directly after"}},
      {"no language switch", kUEL + kEncoding + kJobMode + Attr("CNAM", "h") + kTrailer, true,
       {"no language switch"}},
      {"no trailer", good.substr(0, good.size() - kTrailer.size()), true, {"no trailer"}},
      {"trailer cut short", good.substr(0, good.size() - 3), true, {"the trailer is cut short"}},
      {"bytes after the trailer", good + "junk", true, {"4 bytes after the trailer: junk"}},
      {"stream ends in the header", kUEL + kEncoding + kJobMode + "@PJL SET JOBATTR=\"@CN", true,
       {"the stream ends inside the header, in line 3"}},
      {"language switch with CR LF",
       kUEL + kJobMode + "@PJL ENTER LANGUAGE=POSTSCRIPT\r\n" + kPostScript + kTrailer, true,
       {"the language switch ends in CR LF"}},
      {"UEL inside the job", Stream("", "%!PS\n" + kUEL + "\nep\n\x04"), false,
       {"a universal exit language inside the job"}},
      {"cancelled job", Stream("", "%!PS\nbp\n"), false, {"does not end with the end-of-job byte"}},
      {"unreadable input", Stream("", ""), false, {"no PostScript at all"}},
      {"a fragment elsewhere", Stream("", "%!PS\nbp\nkrfbp\nep\n\x04"), false,
       {"PostScript line 3: watermark page setup where the filter does not insert it"}},
      // Header lines in order, grouped, with their meaning.
      {"header lines",
       Stream("@PJL SET HOLD=STORE\n@PJL SET USERNAME=\"bob\"\r\n" + Attr("CNAM", "host") +
              Attr("PBRE", "LEFT") + "@PJL SET RENDERMODE=COLOR\n"),
       false,
       {"  print type\n    HOLD            hold the job                      STORE (secure print: "
        "held until released with the password)\n    USERNAME        user of the held job       "
        "       \"bob\"  CR LF\n  accounting\n",
        "  perfect binding\n", "  device settings\n    RENDERMODE", "job mode                  line 2:",
        "json:\"line\": 4"}},
      {"a line not in the filter's form", Stream(Attr("JOAU", "bob")), false,
       {"line 3", "not in the form the filter writes @JOAU in"}},
      {"a line end the filter does not write", Stream(Attr("CNAM", "host", "\r\n")), false,
       {"ends in CR LF; the filter ends @CNAM in LF"}},
      {"an unknown line", Stream(Attr("QQQQ", "1")), false, {"not a line this filter writes"}},
      {"a value missing its closing quote", Stream("@PJL SET HOLD=STORE\n@PJL SET USERNAME=\"bob\r\n"),
       false,
       {"USERNAME        user of the held job              bob  CR LF\n",
        "line 4 (USERNAME): not in the form the filter writes USERNAME in"}},
      {"a password that is not sealed", Stream("@PJL SET HOLDENCRYPTKEY=\"pw\"\r\n"), false,
       {"not sealed: 2 characters that are not base64"}},
      {"base64 that is not a blob",
       Stream("@PJL SET HOLDENCRYPTKEY=\"3YbDtlJWKPh+/9c9e5YYPA==\"\r\n"), false,
       {"not a sealed blob: 24 characters", "json:\"aes_mode\": null,\n"}},
      {"a universal exit language in the header and no trailer",
       kUEL + kEncoding + kJobMode + Attr("CNAM", kUEL) + kEnter + kPostScript, true,
       {"no trailer"}},
      {"accounting after finishing", Stream(Attr("TABS", "12") + Attr("CNAM", "h")), false,
       {"accounting line after the finishing lines"}},
      {"a fragment cut short",
       Stream("", "%!PS\n[{\n%%BeginNonPPDFeatures\n1 dict dup/SeparatorPages[1]put/Custom/ProcSet "
                  "findresource/setcoverseparator get exec\n%%EndNonPPDFeatures\nep\n\x04"),
       false, {"separator pages: pages 1 (incomplete: a line of it was cut)"}},
      {"a watermark text cut short at the end",
       Stream("", "%!PS\nbp\npgsave restore /pgsave save store gsave\n0.50 0.50 0.50 setrgbcolor\n"
                  "/Courier 48 selectfont\n1.00 2.00 moveto\n45 rotate\n(xxxxxxxx\nep\n\x04"),
       false,
       {"line 3      watermark text: colour 0.50 0.50 0.50, font /Courier 48, position 1.00 "
        "2.00, angle 45 (incomplete: a line of it was cut)\n"}},
      // A cut watermark text ends at its grestore only within a few lines;
      // what follows is read on its own.
      {"a watermark text cut short",
       Stream("", "%!PS\nbp\npgsave restore /pgsave save store gsave\n1.00 0.00 0.00 setrgbcolor\n"
                  "cut\nx\nx\nx\nx\nx\nkrfbp\nx\nx\ngrestore\nep\n\x04"),
       false,
       {"line 3      watermark text: colour 1.00 0.00 0.00 (incomplete: a line of it was cut)\n"
        "    line 11     watermark page setup\n"}},
      {"groups out of order", Stream(Attr("CNAM", "h") + "@PJL SET HOLD=STORE\n"), false,
       {"a print type line after the accounting lines"}},
      {"information block", Stream(info + "VERSION=1.3.0\n" + info + "BEGIN\n" + info + "END\n"),
       false, {"job information, version 1.3.0", "Findings\n  none"}},
      {"information block without version", Stream(info + "BEGIN\n" + info + "END\n"), false,
       {"does not start with its version line"}},
      {"information block without end", Stream(info + "VERSION=1.5.0\n" + info + "BEGIN\n"), false,
       {"has no END line"}},
      // In the insertion mode the derived PJL follows the header; where the
      // header ends is read from the lines themselves.
      {"insertion, header only", Stream(Attr("CNAM", "h") + toner, insertionBody), false,
       {"mode                      insertion", "json:\"insertion_pjl\": []"}},
      {"insertion, defaults after the header",
       Stream(Attr("CNAM", "h") + Attr("GRGU", "OFF") + "@PJL SET ECONOMODE=OFF\n", insertionBody),
       false, {"PJL from PPD feature code (insertion mode): 2 lines"}},
      {"insertion, toner saver then the same line derived",
       Stream(Attr("CNAM", "h") + toner + "@PJL SET ECONOMODE=OFF\n", insertionBody), false,
       {"Header: 5 lines", "PJL from PPD feature code (insertion mode): 1 line"}},
      {"insertion, a device setting ends the header",
       Stream(Attr("EFCV", "NONE") + "@PJL SET RENDERMODE=COLOR\n@PJL SET ECONOMODE=MODE1\n",
              insertionBody),
       false, {"Header: 4 lines", "PJL from PPD feature code (insertion mode): 1 line"}},
      {"insertion, after the job information",
       Stream(info + "VERSION=1.5.0\n" + info + "BEGIN\n" + info + "END\n" +
                  "@PJL SET RESOLUTION=600\n@PJL SET BITSPERPIXEL=1\n",
              insertionBody),
       false, {"PJL from PPD feature code (insertion mode): 2 lines"}},
      {"envelope lines among the derived PJL",
       kUEL + kJobMode + Attr("CNAM", "h") + Attr("TRAP", "ON") + kEncoding + kJobMode + kEnter +
           insertionBody + kTrailer,
       false, {"job mode                  line 1:", "json:\"encoding_line\": null"}},
      {"debug copy of an insertion-mode job",
       kUEL + kEncoding + kJobMode + Attr("CNAM", "h") + "%!PS\n%%BeginSetup\n" +
           Attr("TRAP", "ON") + "%%BeginFeature: *KRSetTrapMode True\n%%EndSetup\n"
           "bp\nep\nbp\nep\n\n\x04" + kEnter + "xy" + kTrailer,
       false,
       {"the debug copy of a job in the PPD-feature insertion mode", "*KRSetTrapMode True",
        "line 6", "2 bytes between the language switch and the trailer", "2 pages"}},
      // A Shift-JIS printer's values show as UTF-8 (lead bytes 82 and E0);
      // bytes that are no text are escaped, control bytes made visible.
      {"Shift-JIS values", legacy, false,
       {"document name" + std::string(21, ' ') + "\xe3\x81\x82\xe6\xbc\xbe  CR LF\n",
        "a<ESC>b\\xFF\n"}},
      {"UTF-8 values", Stream(Attr("ACNA", "\xe0\xa4\x85\xdf\xbf", "\r\n")), false,
       {"document name" + std::string(21, ' ') + "\xe0\xa4\x85\xdf\xbf  CR LF\n"}},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.name);
    const StreamReport report = Inspect(c.bytes);
    EXPECT_EQ(report.Malformed(), c.malformed) << Findings(report);
    const std::string text = RenderText(report, {"-", false, false});
    const std::string json = RenderJson(report, {"-", false, false});
    for (const std::string& says : c.says) {
      if (says.rfind("json:", 0) == 0) {
        EXPECT_NE(json.find(says.substr(5)), std::string::npos) << says << "\n" << json;
      } else {
        EXPECT_NE(text.find(says), std::string::npos) << says << "\n" << text;
      }
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

}  // namespace
