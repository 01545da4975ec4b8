// zpjl-inspect on what the filter really writes (the header lines of every
// feature are read back in the job lines table): the fragments and pages of
// PostScript features, the insertion mode's PJL, every fixture printer, in
// the JSON schema the inspector documents. Broken streams must be reported as malformed, and
// usage errors as such.
#include <cups/ppd.h>
#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <map>
#include <string>
#include <vector>

#include "base/ppd_queries.h"
#include "filter_runner.h"
#include "inspect/inspect_cli.h"
#include "inspect/stream_inspection.h"
#include "sealed_blob.h"

namespace {

const std::string kSchema = std::string(ZPJL_SOURCE_DIR) + "/docs/zpjl-inspect-schema.json";
const char kPython[] = "/usr/bin/python3";

std::string Findings(const StreamReport& report) {
  std::string text;
  for (const Finding& finding : report.findings) text += "  " + finding.text + "\n";
  return text;
}

FilterRun RunJob(const std::string& ppd, const std::string& options, const std::string& input) {
  FilterJob job;
  job.ppd = Fixture(ppd);
  job.title = "Quarterly report";
  job.options = "number-up=1" + options;
  if (input.empty()) {
    job.file = Fixture("ps/app-letter-2page.ps");
  } else {
    job.input = input;
  }
  return RunFilter(job);
}

FilterRun RunInspector(const std::vector<std::string>& args, const std::string& input) {
  FilterJob job;
  job.filter = ZPJL_INSPECT;
  job.argv = args;
  job.input = input;
  return RunFilter(job);
}

// Validates `json` against the documented schema with python3's jsonschema.
// Returns "" when it holds, "skip" without the module, else the reason.
std::string SchemaProblem(const std::string& json) {
  FilterJob job;
  job.filter = kPython;
  job.argv = std::vector<std::string>{
      "-c",
      "import json, sys\n"
      "try:\n    import jsonschema\nexcept ImportError:\n    sys.exit(77)\n"
      "jsonschema.validate(json.load(sys.stdin), json.load(open(sys.argv[1])))\n",
      kSchema};
  job.input = json;
  FilterRun run = RunFilter(job);
  if (run.status == 77) return "skip";
  return run.status == 0 ? "" : run.err;
}

OpeningKey TestKey() { return {ReadFile(TestPrivateKeyPath2048()), true}; }

const std::string kHold = StoredPasswordText("quokka");
const std::string kOwner = StoredPasswordText("pw100");

const std::string kWatermark =
    Key("WMARKNameTicket", "Draft") + Key("WMARKTypeTicket", "0") +
    Key("WMARKTextTicket", "(DRAFT)") + Key("WMARKFontTicket", "Courier") +
    Key("WMARKFontSizeTicket", "48") + Key("WMARKOrientationTicket", "1") +
    Key("WMARKPaperWidthTicket", "612") + Key("WMARKPaperHeightTicket", "792") +
    Key("WMARKAngleTicket", "45") + Key("WMARKDensityTicket", "50") +
    Key("WMARKOnlyFirstTicket", "0") + Key("WMARKWidthTicket", "200") +
    Key("WMARKHeightTicket", "20");

// Every fixture PPD with a job that asks for every feature at once: the
// stream is well-formed, the mode and text encoding are the PPD's, every
// fragment the job asked for is found complete where the filter inserts it,
// and the command's JSON document keeps to its schema.
TEST(InspectEveryPrinter, RichJobOnEveryFixturePPD) {
  const std::string options =
      Key("PrintTypeTicketKey", "2") + Key("PrintTypeUserNameTicketKey", "alice") +
      Key("PrintTypePasswordTicketKey", kHold) + Key("JBAManageTypeListTicketKey", "2") +
      Key("JBAUserSettingRadioBtnTicket", "1") + Key("JBAUserIDListCtrlTicket", "1") +
      Key("JBAUserPasswordTextEditTicket", kOwner) + Key("JBAInfoListTicketKey", "0") +
      Key("TabMarginSwitchTicket", "0") + Key("EjectOptionsListTicket", "2") +
      Key("SeparatorPageListTicket", "2") + Key("SeparatorPageTicket", "2") +
      Key("ZPIFCoverCountTicket", "1") + Key("ZPIFCommandTicket_0", "0,0,0,5") +
      Key("ZPIFCoverValueTicket_0", "0,0,print-front") + kWatermark +
      Key("BookletMarginSwitchTicket", "1") + Key("BookletMarginMMShiftTicket", "5") +
      Key("AutoFitSwitchTicket", "1") +
      " KRPBindPosition=BindLeft KRPBindTrimming=None KRTonerSaver=Mode1 KRSignature=None";
  const std::map<std::string, int> fragments = {
      {"watermark-prolog", 1}, {"watermark-page-setup", 2}, {"watermark-text", 2},
      {"separator-pages", 1},  {"booklet-margin-shift", 1}, {"auto-fit", 1}};
  std::vector<std::string> ppds;
  for (const std::string& dir :
       {std::string(ZPJL_FIXTURES) + "/ppd", std::string(ZPJL_SOURCE_DIR) + "/ppd"}) {
    if (DIR* d = opendir(dir.c_str())) {
      while (dirent* entry = readdir(d)) {
        const std::string name = entry->d_name;
        if (name.size() > 4 && name.compare(name.size() - 4, 4, ".ppd") == 0)
          ppds.push_back(dir + "/" + name);
      }
      closedir(d);
    }
  }
  ASSERT_GE(ppds.size(), 20u);
  for (const std::string& path : ppds) {
    ppd_file_t* ppd = ppdOpenFile(path.c_str());
    ASSERT_NE(ppd, nullptr) << path;
    const bool utf8 = PPDAttrEquals(ppd, "KRPrinterLanguageEncoding", "UTF-8");
    const bool insertion = PPDAttrEquals(ppd, "KRPSDecompMode", "1");
    ppdClose(ppd);

    FilterJob job;
    job.ppd = path;
    job.options = "number-up=1" + options;
    job.file = Fixture("ps/app-letter-2page.ps");
    FilterRun run = RunFilter(job);
    ASSERT_EQ(run.status, 0) << path;
    const StreamReport report = InspectStream(run.out, {TestKey()});
    EXPECT_FALSE(report.Malformed()) << path << "\n" << Findings(report);
    EXPECT_EQ(report.utf8, utf8) << path;
    EXPECT_EQ(report.mode, insertion ? StreamMode::kInsertion : StreamMode::kPassThrough) << path;
    for (const Finding& finding : report.findings) {
      // The insertion mode's held-back last line is the only remark.
      EXPECT_TRUE(insertion && finding.text.find("%%EOF") != std::string::npos)
          << path << ": " << finding.text;
    }
    EXPECT_EQ(report.SealedFields(), 2) << path;
    for (const HeaderLine& line : report.header) {
      if (line.sealed) {
        EXPECT_TRUE(line.sealed->opened) << path << ": " << line.parsed.name;
      }
    }
    ASSERT_TRUE(report.postscript) << path;
    EXPECT_EQ(report.postscript->pages, 2) << path;
    std::map<std::string, int> found;
    for (const Fragment& fragment : report.postscript->fragments) {
      ++found[fragment.kind];
      EXPECT_TRUE(fragment.complete) << path << ": " << fragment.kind;
      EXPECT_FALSE(fragment.anchor.empty()) << path << ": " << fragment.kind;
      if (fragment.kind == "watermark-text") {
        EXPECT_EQ(fragment.page, found[fragment.kind]) << path;
      }
    }
    EXPECT_EQ(found, fragments) << path;
    // The command says the same in its JSON document, in the documented schema.
    FilterRun json = RunInspector({"--json", "--key", TestPrivateKeyPath2048()}, run.out);
    EXPECT_EQ(json.status, kExitWellFormed) << json.err;
    const std::string problem = SchemaProblem(json.out);
    if (problem != "skip") {
      EXPECT_EQ(problem, "") << path << "\n" << json.out;
    }
  }
}

// Exit status 1 for broken envelopes, through the command (what the reports
// say of each kind of damage is the crafted-stream table's).
TEST(InspectCommand, BrokenStreamsAreMalformed) {
  FilterRun run = RunJob("ppd/modules-utf8.ppd", "", "");
  ASSERT_EQ(run.status, 0);
  const std::string& good = run.out;
  const size_t trailer = good.rfind(kTrailer);
  ASSERT_NE(trailer, std::string::npos);
  const struct {
    const char* name;
    std::string bytes;
    int status;
    const char* says;
  } kCases[] = {
      {"whole", good, kExitWellFormed, "well-formed"},
      {"cut in the PostScript", good.substr(0, trailer - 40), kExitMalformed,
       "malformed: no trailer"},
      {"empty", "", kExitMalformed, "malformed: the stream is empty"},
  };
  for (const auto& c : kCases) {
    FilterRun inspected = RunInspector({}, c.bytes);
    EXPECT_EQ(inspected.status, c.status) << c.name << "\n" << inspected.out << inspected.err;
    EXPECT_NE(inspected.out.find(c.says), std::string::npos) << c.name << "\n" << inspected.out;
    FilterRun json = RunInspector({"--json", "-"}, c.bytes);
    EXPECT_EQ(json.status, c.status) << c.name;
    EXPECT_NE(json.out.find(c.status == 0 ? "\"well_formed\": true" : "\"well_formed\": false"),
              std::string::npos)
        << c.name;
    const std::string problem = SchemaProblem(json.out);
    if (problem != "skip") {
      EXPECT_EQ(problem, "") << c.name << "\n" << json.out;
    }
  }
}

TEST(InspectCommand, UsageErrors) {
  ScratchDir scratch;
  ASSERT_TRUE(scratch.ok());
  ASSERT_TRUE(WriteText(scratch.File("not-a-key.pem"), "-----BEGIN PUBLIC KEY-----\nAAAA\n"));
  const struct {
    std::vector<std::string> args;
    const char* says;
  } kCases[] = {
      {{"--colour"}, "unknown option --colour"},
      {{"a.prn", "b.prn"}, "more than one input file"},
      {{"/nonexistent/job.prn"}, "/nonexistent/job.prn: No such file or directory"},
      {{"--show-secrets"}, "--show-secrets needs --key"},
      {{"--key"}, "--key needs a file"},
      {{"--key", scratch.File("not-a-key.pem")}, "not an RSA private key"},
      {{"--key", "/nonexistent/key.pem"}, "/nonexistent/key.pem: No such file or directory"},
  };
  for (const auto& c : kCases) {
    FilterRun run = RunInspector(c.args, "");
    EXPECT_EQ(run.status, kExitUsage) << c.says;
    EXPECT_NE(run.err.find(c.says), std::string::npos) << run.err;
    EXPECT_NE(run.err.find("usage: zpjl-inspect"), std::string::npos);
    EXPECT_EQ(run.out, "");
  }
  FilterRun help = RunInspector({"--help"}, "");
  EXPECT_EQ(help.status, 0);
  EXPECT_EQ(help.out.rfind("usage: zpjl-inspect", 0), 0u);
}

// A sealed field shows its form; its text never; its payload only when asked.
TEST(InspectCommand, SealedFieldsOpenOnlyAsFarAsAsked) {
  FilterRun run =
      RunJob("ppd/modules-utf8.ppd",
             Key("PrintTypeTicketKey", "2") + Key("PrintTypeUserNameTicketKey", "alice") +
                 Key("PrintTypePasswordTicketKey", kHold),
             "");
  ASSERT_EQ(run.status, 0);
  const size_t from = run.out.find("HOLDENCRYPTKEY=\"") + 16;
  const std::string field = run.out.substr(from, run.out.find('"', from) - from);
  ASSERT_EQ(field.size(), 492u);
  const std::string form =
      "sealed, 492 characters, blob 368 bytes, key type 0, digest matches the built-in recipient "
      "key";
  const struct {
    std::vector<std::string> args;
    std::vector<std::string> shows;
    std::vector<std::string> hides;
  } kCases[] = {
      {{}, {form}, {"opens", "quokka"}},
      {{"--key", TestPrivateKeyPath2048()},
       {form, "opens: payload 6 bytes, printable"},
       {"quokka"}},
      {{"--key", TestPrivateKeyPath2048(), "--show-secrets"}, {form, "payload \"quokka\""}, {}},
      {{"--key", TestPrivateKeyPath3072()},
       {form, "does not open: the wrapped key does not open"},
       {"quokka"}},
      {{"--json", "--key", TestPrivateKeyPath2048()},
       {"\"payload_bytes\": 6", "\"payload\": null"},
       {"quokka"}},
      {{"--json", "--key", TestPrivateKeyPath2048(), "--show-secrets"},
       {"\"payload\": \"quokka\""},
       {}},
  };
  for (const auto& c : kCases) {
    FilterRun inspected = RunInspector(c.args, run.out);
    EXPECT_EQ(inspected.status, kExitWellFormed) << inspected.err;
    EXPECT_EQ(inspected.out.find(field), std::string::npos) << "the field's text is shown";
    EXPECT_EQ(inspected.out.find(field.substr(0, 40)), std::string::npos)
        << "part of the field is shown";
    for (const std::string& shown : c.shows) {
      EXPECT_NE(inspected.out.find(shown), std::string::npos) << shown << "\n" << inspected.out;
    }
    for (const std::string& hidden : c.hides) {
      EXPECT_EQ(inspected.out.find(hidden), std::string::npos) << hidden << "\n" << inspected.out;
    }
  }
  // One byte of the key digest changed: a blob sealed for another recipient.
  std::string foreign = run.out;
  foreign[from + 27] = foreign[from + 27] == 'A' ? 'B' : 'A';
  EXPECT_NE(RunInspector({}, foreign).out.find("digest does not match the built-in recipient key"),
            std::string::npos);
  EXPECT_NE(RunInspector({"--json"}, foreign).out.find("\"digest_matches_builtin\": false"),
            std::string::npos);
}

}  // namespace
