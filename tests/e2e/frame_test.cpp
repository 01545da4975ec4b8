// The job frame through the built filter: arguments, envelope, pass-through,
// page log, signals and the debug job copy.
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstring>

#include "filter_runner.h"

namespace {

TEST(Arguments, WrongCountIsAUsageError) {
  const std::vector<std::vector<std::string>> wrong = {
      {}, {"1", "u", "t", "1"}, {"1", "u", "t", "1", "", "f", "extra"}};
  for (const auto& args : wrong) {
    FilterJob job;
    job.argv = args;
    FilterRun run = RunFilter(job);
    EXPECT_EQ(run.status, 1) << args.size();
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err, "Usage: pstozpjl job-id user title copies options [file]\n");
  }
}

// The PostScript is copied as it comes, then the end-of-job byte (reading
// from a file rather than a pipe is the large-job tests' business).
TEST(PassThrough, BodyAsItCame) {
  const std::string document = ReadFile(Fixture("ps/simple.ps"));
  const struct {
    const char* name;
    std::string input;
    std::string body;
  } cases[] = {
      {"CR LF", "a\r\nb\n", "a\r\nb\n\x04"},
      {"%%EndProlog twice", "%%EndProlog\n%%EndProlog\n", "%%EndProlog\n%%EndProlog\n\x04"},
      {"an unterminated last line is lost", "a\nshowpage", "a\n\x04"},
      {"empty", "", "\x04"},
      {"a long line", std::string(20000, 'x') + "\n", std::string(20000, 'x') + "\n\x04"},
      // The byte-wise reader's end-of-file value completes an 8065-byte chunk.
      {"an unterminated chunk", std::string(8064, 'v'), std::string(8064, 'v') + "\xff\x04"},
      {"NUL bytes", std::string("a\0b\n", 4), std::string("a\0b\n\x04", 5)},
      {"a document", document, document + "\x04"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    FilterJob job;
    job.ppd = Fixture("ppd/bare.ppd");
    job.input = c.input;
    FilterRun run = RunFilter(job);
    EXPECT_EQ(run.status, 0);
    StreamParts parts = SplitStream(run.out);
    EXPECT_TRUE(SameStream(c.body, parts.body));
    EXPECT_TRUE(SameStream(kTrailer, parts.trailer));
  }
}

TEST(PassThrough, UnopenableFileWritesNoPostScriptInEitherMode) {
  const std::string enterPS = "@PJL ENTER LANGUAGE=POSTSCRIPT\n";
  for (const char* ppd : {"ppd/bare.ppd", "ppd/decomp-color.ppd"}) {
    FilterJob job;
    job.ppd = Fixture(ppd);
    job.file = "/nonexistent/job.ps";
    FilterRun run = RunFilter(job);
    EXPECT_EQ(run.status, 0) << ppd;
    const bool insertion = std::string(ppd).find("decomp") != std::string::npos;
    const std::string end = insertion ? kTrailer : enterPS + kTrailer;
    ASSERT_GE(run.out.size(), end.size()) << ppd;
    EXPECT_EQ(run.out.substr(run.out.size() - end.size()), end) << ppd;
    EXPECT_EQ(run.out.find(enterPS) == std::string::npos, insertion) << ppd;
    EXPECT_NE(run.err.find("ERROR: Unable to open print file \"/nonexistent/job.ps\""),
              std::string::npos)
        << run.err;
  }
}

TEST(PageLog, OnePageLineAtEachPageEnd) {
  const struct {
    const char* name;
    std::string filter;
    std::string input;
    std::string log;
  } cases[] = {
      // "endp" counts a page but logs none.
      {"Darwin 19", ZPJL_FILTER, "bp\nep\nbp\nendp\nbp\nep\n", "PAGE:1 3\nPAGE:3 3\n"},
      {"Darwin 20 wraps below 10.7", ZPJL_FILTER_DARWIN20, "bp\nep\nbp\nep\n", ""},
      {"Darwin 11 is 10.7 exactly", ZPJL_FILTER_DARWIN11, "bp\nep\n", "PAGE:1 3\n"},
      {"a chunk's remainder is a line", ZPJL_FILTER, std::string(8065, 'z') + "ep\n", "PAGE:1 3\n"},
      {"a long line is no page end", ZPJL_FILTER, std::string(8064, 'z') + "ep\n", ""},
      // Jobs that do not end their pages in "ep"/"endp": their "%%Page:"
      // comments outside embedded documents, or else their "showpage" lines.
      {"showpage lines without other marks", ZPJL_FILTER, "showpage\nep \n", "PAGE:1 3\n"},
      {"page comments outside embedded documents", ZPJL_FILTER,
       "%%Page: 1 1\nshowpage\n%%Page: 2 2\n%%BeginDocument: x\n%%Page: 1 1\n%%EndDocument\n"
       "showpage\n%%Trailer\n%%Page: 3 3\n",
       "PAGE:1 3\nPAGE:2 3\nPAGE:3 3\n"},
      {"page comments of a job with ep", ZPJL_FILTER,
       "%%Page: 1 1\nbp\nep\n%%Page: 2 2\nbp\nendp\n%%Trailer\n", "PAGE:1 3\n"},
  };
  for (const auto& c : cases) {
    FilterJob job;
    job.filter = c.filter;
    job.ppd = Fixture("ppd/bare.ppd");
    job.copies = "3";
    job.input = c.input;
    EXPECT_EQ(RunFilter(job).err, c.log) << c.name;
  }
}

// A cancel ends the job at a page boundary: before the page after the one
// being read, in jobs that end their pages in "ep" as in jobs with page
// comments (here with a watermark, whose hook goes in before the first code).
TEST(Signals, TermStopsAtTheNextPageEnd) {
  const struct {
    const char* name;
    std::string options;
    std::string firstPages;  // written before the cancel, up to the last page log
    std::string log;         // the last page log before the cancel
    std::string rest;
    std::string body;        // the PostScript sent, without the hook
  } cases[] = {
      {"ep lines", "", "%!PS\nbp\n(1)\nep\nbp\n(2)\nep\n", "PAGE:2 1\n",
       "bp\n(3)\nep\nbp\n(4)\nep\n", "%!PS\nbp\n(1)\nep\nbp\n(2)\nep\nbp\n(3)\n"},
      {"page comments",
       Key("WMARKNameTicket", "W") + Key("WMARKTypeTicket", "0") + Key("WMARKTextTicket", "(W)"),
       "%!PS\n%%Page: 1 1\n(1) EP\n%%Page: 2 2\n", "PAGE:1 1\n",
       "(2) EP\n%%Page: 3 3\n(3) EP\n%%Trailer\n",
       "%!PS\n%%Page: 1 1\n(1) EP\n%%Page: 2 2\n(2) EP\n"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    FilterJob job;
    job.ppd = Fixture("ppd/bare.ppd");
    job.options = c.options;
    FilterProcess process(job);
    ASSERT_TRUE(process.Write(c.firstPages));
    ASSERT_TRUE(process.WaitForError(c.log));
    process.Signal(SIGTERM);
    // Give the handler time to run before more of the job arrives.
    usleep(200000);
    process.Write(c.rest);
    FilterRun run = process.Finish();
    EXPECT_EQ(run.status, 0);
    StreamParts parts = SplitStream(run.out);
    const std::string hookEnd = "}stopped cleartomark\n";
    size_t hook = parts.body.find("mark{userdict/krfWM");
    if (hook != std::string::npos) {
      parts.body.erase(hook, parts.body.find(hookEnd, hook) + hookEnd.size() - hook);
    }
    EXPECT_TRUE(SameStream(c.body, parts.body));
    EXPECT_TRUE(SameStream(kTrailer, parts.trailer));
  }
}

TEST(Signals, BrokenPipeGivesExitStatusOne) {
  FilterJob job;
  job.ppd = Fixture("ppd/bare.ppd");
  FilterProcess process(job);
  process.CloseOutput();
  process.Write("%!PS\nbp\nep\n");
  FilterRun run = process.Finish();
  EXPECT_EQ(run.termSignal, 0);
  EXPECT_EQ(run.status, 1);
}

// ---- The debug job copy ----------------------------------------------------

void RemoveFiles(const std::string& dir) {
  for (const std::string& name : FilesIn(dir)) unlink((dir + "/" + name).c_str());
}

std::string MakeTempDir(const std::string& suffix = "") {
  char pattern[] = "/tmp/pstozpjl-copy-XXXXXX";
  std::string dir = mkdtemp(pattern);
  if (!suffix.empty()) {
    dir += "/" + suffix;
    mkdir(dir.c_str(), 0755);
  }
  return dir;
}

// Runs one job with the flag file present and returns the single copy found
// in `dir` (checked for its name, mode and content).
void ExpectCopyIn(const std::string& filter, std::optional<std::string> tmpdir,
                  const std::string& dir) {
  RemoveFiles(dir);
  FilterJob job;
  job.filter = filter;
  job.ppd = Fixture("ppd/utf8-color.ppd");
  job.env["TMPDIR"] = tmpdir;
  job.input = ReadFile(Fixture("ps/simple.ps"));
  FilterRun run = RunFilter(job);
  ASSERT_EQ(run.status, 0);
  std::vector<std::string> copies = FilesIn(dir);
  ASSERT_EQ(copies.size(), 1u) << dir;
  const std::string& name = copies[0];
  EXPECT_TRUE(name.size() == 20 && name.compare(0, 2, "kr") == 0 &&
              name.find_first_not_of("0123456789", 2) == 16 && name.compare(16, 4, ".job") == 0)
      << name;
  std::string path = dir + "/" + copies[0];
  struct stat info;
  ASSERT_EQ(stat(path.c_str(), &info), 0);
  EXPECT_EQ(info.st_mode & 07777, 0676u);
  EXPECT_TRUE(SameStream(run.out, ReadFile(path)));
  unlink(path.c_str());
}

TEST(DebugJobCopy, EqualsThePrintStream) {
  const std::string copyDir = ZPJL_TEST_COPY_DIR;
  const std::string legacyDir = copyDir + "/legacy";
  mkdir(copyDir.c_str(), 0755);
  mkdir(legacyDir.c_str(), 0755);
  const std::string flag = copyDir + "/krjobcopy";
  FILE* f = fopen(flag.c_str(), "w");
  ASSERT_NE(f, nullptr);
  fclose(f);

  std::string tmp = MakeTempDir();
  ExpectCopyIn(ZPJL_FILTER_DARWIN19, tmp, tmp);
  std::string percent = MakeTempDir("100%");
  ExpectCopyIn(ZPJL_FILTER_DARWIN19, percent + "%", percent);
  // Other conversions, an unset TMPDIR and systems before 10.10 use the legacy name.
  ExpectCopyIn(ZPJL_FILTER_DARWIN19, tmp + "/%n%s", legacyDir);
  sleep(1);  // legacy names differ only by the second
  ExpectCopyIn(ZPJL_FILTER_DARWIN19, std::nullopt, legacyDir);
  sleep(1);
  ExpectCopyIn(ZPJL_FILTER_DARWIN13, tmp, legacyDir);
  EXPECT_TRUE(FilesIn(tmp).empty());

  unlink(flag.c_str());
  FilterJob job;
  job.filter = ZPJL_FILTER_DARWIN19;
  job.env["TMPDIR"] = tmp;
  RunFilter(job);
  EXPECT_TRUE(FilesIn(tmp).empty()) << "no flag file, no copy";
  rmdir(percent.c_str());
  rmdir(percent.substr(0, percent.rfind('/')).c_str());
  rmdir(tmp.c_str());
}

}  // namespace
