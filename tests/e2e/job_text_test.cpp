// Hostile job text on every path into the print stream, on a UTF-8 and a
// Shift-JIS printer: the header keeps (or drops, never adds) the lines a clean
// value of the same length gives, no ESC but the envelope's, and each
// PostScript fragment stays one token.
#include <algorithm>
#include <string>
#include <vector>

#include "filter_runner.h"

namespace {

// A ticket value quoted as the option parser takes it: any byte but NUL.
std::string Quoted(const std::string& value) {
  std::string quoted = "\"";
  for (char c : value) quoted += (c == '"' || c == '\\') ? std::string("\\") + c : std::string(1, c);
  return quoted + "\"";
}

const char* const kTicketTextKeys[] = {
    "PrintTypeUserNameTicketKey", "DocumentNameTicketKey", "JBAUserIDTextEditTicket",
    "JBADomainNameTextEditTicket", "JBAAccountIDTextEditTicket", "JBAMacHostNameStringTicket",
    "JBAIPAddressStringTicket", "TabMarginMMShiftTicket", "TrimmerMMCuttingSizeTicket",
    "NumInSequenceLArrowTicket", "OffsetStackingUnitsLArrowTicket", "ZPIFCoverValueTicket_0",
    "ZPIFInsertionValueTicket_0", "WMARKTextTicket", "WMARKFontTicket", "SeparatorPageTicket",
    "BookletMarginMMShiftTicket",
};

struct Path {
  const char* name;
  void (*put)(FilterJob& job, const std::string& value);
};

const Path kPaths[] = {
    {"title",
     [](FilterJob& job, const std::string& v) {
       job.title = v;
       job.options += Key("PrintTypeTicketKey", "3") + Key("PrintTypeUserNameTicketKey", "u") +
                      Key("DocumentNameTypeTicketKey", "1") + Key("PrintTypeProductTypeTicketKey", "3");
     }},
    {"user", [](FilterJob& job, const std::string& v) { job.user = v; }},
    {"ticket text",
     [](FilterJob& job, const std::string& v) {
       job.options += Key("PrintTypeTicketKey", "3") + Key("DocumentNameTypeTicketKey", "2") +
                      Key("JBAManageTypeListTicketKey", "2") + Key("JBAUserSettingRadioBtnTicket", "1") +
                      Key("JBAUserIDListCtrlTicket", "1") + Key("TabMarginSwitchTicket", "1") +
                      Key("TrimmerSwitchTicket", "1") + Key("NumberingSwitchTicket", "1") +
                      Key("ZPIFCoverCountTicket", "1") + Key("ZPIFInsertionCountTicket", "1") +
                      Key("WMARKTypeTicket", "0") + Key("WMARKNameTicket", "w") +
                      Key("SeparatorPageListTicket", "2") + Key("BookletMarginSwitchTicket", "1");
       for (const char* key : kTicketTextKeys) job.options += Key(key, Quoted(v));
       for (const char* option : {"number-up", "KRSigVol", "KRPBindTrimming",
                                  "KRPBindCoverMediaType", "KRPBindCutPageSize"}) {
         job.options += std::string(" ") + option + "=" + Quoted(v);
       }
       job.options += " KRSignature=Booklet KRPBindPosition=BindLeft ";
     }},
    {"mailbox number",
     [](FilterJob& job, const std::string& v) {
       job.options += Key("PrintTypeTicketKey", "5") + Key("PrintTypeMBNTicketKey", Quoted(v));
     }},
    {"delay time",
     [](FilterJob& job, const std::string& v) {
       job.options += Key("PrintTypeTicketKey", "4") + Key("DelayPrintTicketKey", Quoted(v));
     }},
    // A screen line whose attribute names are the four bytes before each
    // digit, the value's bytes among them.
    {"insertion-mode names",
     [](FilterJob& job, const std::string& v) {
       job.ppd = Fixture("ppd/decomp-mono.ppd");
       job.input = "%!PS\n%%BeginFeature: *KRHalftone Auto\nTSCR GSCR ISCR TTRC GTRC ITRC " + v +
                   " 7\n%%EndFeature\nshowpage\n";
     }},
};

// The value with '?' for each byte that may end a PJL line or quote.
std::string SameLengthCleanValue(std::string value) {
  for (char& c : value) {
    if (static_cast<unsigned char>(c) < 0x20 && c != '\t') c = '?';
    if (c == '"') c = '\'';
  }
  return value;
}

// What each header line sets, its value left out; every line must be a PJL
// line with balanced quotes and no control byte.
std::vector<std::string> LineKeys(const std::string& header, const std::string& what) {
  std::vector<std::string> keys;
  for (size_t at = 0, end; at < header.size(); at = end + 1) {
    end = std::min(header.find('\n', at), header.size());
    std::string line = header.substr(at, end - at);
    if (!line.empty() && line.back() == '\r') line.pop_back();
    EXPECT_EQ(line.compare(0, 5, "@PJL "), 0) << what << Visible(line);
    EXPECT_EQ(std::count(line.begin(), line.end(), '"') % 2, 0) << what << Visible(line);
    EXPECT_TRUE(std::all_of(line.begin(), line.end(), [](char c) {
      return static_cast<unsigned char>(c) >= 0x20 || c == '\t';
    })) << what << Visible(line);
    size_t equals = line.find('=');
    if (line.compare(0, 17, "@PJL SET JOBATTR=") == 0) equals = line.find('=', equals + 1);
    keys.push_back(line.substr(0, equals));
  }
  return keys;
}

// Whether every key of `part` occurs in `whole`, in the same order.
bool IsSubsequence(const std::vector<std::string>& part, const std::vector<std::string>& whole) {
  size_t next = 0;
  for (const std::string& key : part) {
    while (next < whole.size() && whole[next] != key) ++next;
    if (next++ >= whole.size()) return false;
  }
  return true;
}

// The text of the line that ends with `suffix`, or "<none>".
std::string LineBefore(const std::string& text, const std::string& suffix) {
  size_t end = text.find(suffix);
  if (end == std::string::npos) return "<none>";
  size_t start = text.rfind('\n', end);
  return text.substr(start + 1, end - start - 1);
}

// A literal string that closes exactly at its end, or a hex string.
bool IsOneStringToken(const std::string& token) {
  if (token.size() >= 2 && token.front() == '<') {
    return token.back() == '>' && token.find_first_not_of("0123456789abcdefABCDEF ", 1) ==
                                      token.size() - 1;
  }
  if (token.empty() || token.front() != '(') return false;
  int depth = 0;
  for (size_t i = 0; i < token.size(); ++i) {
    unsigned char c = static_cast<unsigned char>(token[i]);
    if (c < 0x20 && c != '\t') return false;
    if (c == '\\') ++i;
    depth += (c == '(') - (c == ')');
    if (depth == 0) return i + 1 == token.size();
  }
  return false;
}

void ExpectPostScriptTokens(const std::string& body, const std::string& what) {
  EXPECT_TRUE(IsOneStringToken(LineBefore(body, " show\ngrestore\n"))) << what << Visible(body);
  std::string font = LineBefore(body, " -1 selectfont\n");
  EXPECT_TRUE(font.size() > 1 && font[0] == '/' &&
              font.find_first_of("()<>[]{}/% \t\r", 1) == std::string::npos)
      << what << Visible(font);
  std::string shift = LineBefore(body, ".000/Custom/ProcSet findresource/setsignatureimageshift");
  EXPECT_EQ(shift.find_first_not_of("0123456789+-., ?"), std::string::npos) << what << shift;
  // The separator line is cut at 99 bytes: what follows the numbers is the
  // line's own text, as far as it goes.
  const std::string fixed = "]put/Custom/ProcSet findresource/setcoverseparator get exec\n";
  size_t open = body.find("SeparatorPages[");
  ASSERT_NE(open, std::string::npos) << what;
  size_t rest = body.find_first_not_of("0123456789+-., ?", open + 15);
  size_t length = std::min(fixed.size(), open - 11 + 99 - rest);
  EXPECT_EQ(body.compare(rest, length, fixed, 0, length), 0)
      << what << Visible(body.substr(open, 120));
}

TEST(JobText, NeverWritesPrinterCommands) {
  const std::string hostile[] = {
      "\x1b%-12345X@PJL FSDELETE NAME=\"0:\\x\"",
      "a\rb",
      "a\nb",
      "x\r\n@PJL DEFAULT COPIES=99",
      "\"",
      "\x01\x07\x0b\x0c\x1f\x7f",
      "a) show (\\",
      "/27/37/45/49/50/51/52/53/88/13/10/34",  // the dialog's byte form: ESC ... CR LF quote
      "%n%s%x%p",  // never a format
  };
  for (const char* ppd : {"ppd/jobinfo-utf8-color.ppd", "ppd/legacy-mono.ppd"}) {
    for (const Path& path : kPaths) {
      for (const std::string& value : hostile) {
        const std::string what = std::string(ppd) + ", " + path.name + ", " + Visible(value) + ": ";
        FilterJob job, clean;
        job.ppd = clean.ppd = Fixture(ppd);
        job.input = clean.input =
            "%!PS\n%%BeginProlog\n%%EndProlog\n%%BeginSetup\n%%EndSetup\nbp\nep\nshowpage\n";
        path.put(job, value);
        path.put(clean, SameLengthCleanValue(value));
        FilterRun run = RunFilter(job);
        ASSERT_EQ(run.status, 0) << what << run.err;
        ASSERT_EQ(run.out.compare(0, kUEL.size(), kUEL), 0) << what;
        const std::string cleanOut = RunFilter(clean).out;
        auto header = [](const std::string& out) {
          return out.substr(kUEL.size(), out.find("@PJL ENTER LANGUAGE=POSTSCRIPT\n") - kUEL.size());
        };
        ASSERT_NE(run.out.find("@PJL ENTER LANGUAGE=POSTSCRIPT\n"), std::string::npos) << what;
        EXPECT_TRUE(IsSubsequence(LineKeys(header(run.out), what), LineKeys(header(cleanOut), what)))
            << what << "\n" << Visible(header(run.out)) << "\n" << Visible(header(cleanOut));
        // The envelope's two ESC bytes, and those of the job's own PostScript.
        EXPECT_EQ(std::count(run.out.begin(), run.out.end(), '\x1b'),
                  std::count(job.input.begin(), job.input.end(), '\x1b') + 2) << what;
        if (std::string(path.name) == "ticket text") ExpectPostScriptTokens(run.out, what);
      }
    }
  }
}

// The watermark text renders as typed: a string the dialog wrote stays as
// it is unless something in it would end it early.
TEST(JobText, WatermarkTextShowsAsTyped) {
  for (const auto& [text, token] : std::vector<std::pair<std::string, std::string>>{
           {"(a (b) c)", "(a (b) c)"}, {"<48 65>", "<48 65>"}, {"DRAFT", "(DRAFT)"},
           {"(a) show (b)", "(a\\) show \\(b)"}, {"(C:\\x\\)", "(C:\\\\x\\\\)"},
           {"(\x1b%-12345X\r\n)", "(?%-12345X?" "?)"}, {"<4G>", "(<4G>)"}}) {
    FilterJob job;
    job.ppd = Fixture("ppd/utf8-color.ppd");
    job.options = Key("WMARKTypeTicket", "0") + Key("WMARKNameTicket", "w") +
                  Key("WMARKTextTicket", Quoted(text));
    job.input = "%!PS\nbp\nep\n";
    EXPECT_EQ(LineBefore(RunFilter(job).out, " show\n"), token) << text;
  }
}

}  // namespace
