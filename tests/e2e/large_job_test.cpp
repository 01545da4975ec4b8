// Jobs larger than the filter's read blocks, through the built filter: the
// lines that matter fall on every side of a block boundary, next to over-long
// lines and mixed line ends, and the output must not depend on where the
// reads happened to end (a file reads in whole blocks, a pipe in whatever
// pieces the writer left).
#include <unistd.h>

#include <algorithm>
#include <random>
#include <string>

#include "filter_runner.h"

namespace {

constexpr size_t kBlock = 1 << 16;
constexpr size_t kChunk = 8065;
const std::string kEnterPS = "@PJL ENTER LANGUAGE=POSTSCRIPT\n";

// Where two large streams first differ, for a readable failure.
::testing::AssertionResult SameLargeStream(const std::string& expected, const std::string& actual) {
  if (expected == actual) return ::testing::AssertionSuccess();
  size_t at = 0;
  while (at < expected.size() && at < actual.size() && expected[at] == actual[at]) ++at;
  size_t from = at < 40 ? 0 : at - 40;
  return ::testing::AssertionFailure()
         << "sizes " << expected.size() << " and " << actual.size() << ", first difference at "
         << at << "\nexpected: " << Visible(expected.substr(from, 120))
         << "\nactual:   " << Visible(actual.substr(from, 120));
}

// The "ep" lines a byte-wise reader sees: lines end at CR or LF, and a line
// reaching 8065 bytes is cut there and starts afresh.
int PageEnds(const std::string& input) {
  int pages = 0;
  std::string line;
  for (char c : input) {
    if (c == '\r' || c == '\n') {
      pages += line == "ep";
      line.clear();
    } else if ((line += c).size() == kChunk) {
      line.clear();
    }
  }
  return pages;
}

// Filler of every kind, then `marker` placed so that it starts `shift`
// bytes before a block boundary, for shifts around each boundary.
std::string JobAroundBoundaries(const std::string& marker, std::mt19937& random, int blocks) {
  const char* fillers[] = {"72.00 700.50 moveto", "(revenue north) show", "",
                           "0.2000 0.3000 0.4000 rg", "%%Page: 1 1", "e", "epx", " ep", "bpx"};
  std::string job;
  for (int block = 1; block <= blocks; ++block) {
    size_t shift = static_cast<size_t>(block % 5);  // 0 to 4 bytes before the boundary
    size_t target = block * kBlock - shift;
    while (job.size() < target) {
      switch (random() % 8) {
        case 0:
          job += std::string(kChunk + random() % 3000, 'x') + "\n";  // chunked
          break;
        case 1:
          job += std::string(kChunk, 'y') + "ep\n";  // a chunk, then "ep" afresh
          break;
        case 2:
          job += fillers[random() % (sizeof fillers / sizeof *fillers)] + std::string("\r\n");
          break;
        default:
          job += fillers[random() % (sizeof fillers / sizeof *fillers)] + std::string("\n");
      }
      if (job.size() > target) {
        job.resize(target - std::min<size_t>(target, 1));
        job += "\n";
      }
    }
    job += marker;
  }
  return job + "%%EOF\n";
}

struct Feed {
  const char* name;
  bool fromFile;
};

class LargeJobTest : public ::testing::TestWithParam<Feed> {
 protected:
  FilterRun Run(FilterJob job, const std::string& input) {
    if (GetParam().fromFile) {
      // One file per test and process: ctest runs the cases side by side.
      const ::testing::TestInfo* test = ::testing::UnitTest::GetInstance()->current_test_info();
      std::string name = test->name();
      std::replace(name.begin(), name.end(), '/', '-');
      std::string path = ::testing::TempDir() + name + "-" + std::to_string(getpid()) + ".ps";
      FILE* file = fopen(path.c_str(), "wb");
      EXPECT_NE(file, nullptr);
      fwrite(input.data(), 1, input.size(), file);
      fclose(file);
      job.file = path;
      FilterRun run = RunFilter(job);
      unlink(path.c_str());
      return run;
    }
    job.input = input;
    return RunFilter(job);
  }
};

TEST_P(LargeJobTest, PassThroughCopiesEveryByteAndSeesEveryPageEnd) {
  std::mt19937 random(20261124);
  std::string input = JobAroundBoundaries("ep\nbp\r%%EndPageSetup\n", random, 12);
  FilterJob job;
  job.ppd = Fixture("ppd/utf8-color.ppd");
  FilterRun header = RunFilter(job);
  StreamParts parts = SplitStream(header.out);
  FilterRun run = Run(job, input);
  EXPECT_EQ(run.status, 0);
  EXPECT_TRUE(SameLargeStream(parts.header + input + "\x04" + kTrailer, run.out));
  int pages = PageEnds(input);
  EXPECT_GT(pages, 12);
  size_t logged = 0;
  for (size_t at = run.err.find("PAGE:"); at != std::string::npos; at = run.err.find("PAGE:", at + 1)) {
    ++logged;
  }
  EXPECT_EQ(logged, static_cast<size_t>(pages));
}

TEST_P(LargeJobTest, InsertionModeFindsScreenLinesWhereverTheyLie) {
  std::mt19937 random(20261125);
  // A screen line of each list, then lines that hold some of the names only.
  const std::string screen =
      "TTRC 64 GTRC 64 ITRC 64 TSCR 64 GSCR 64 ISCR 64\n"
      "TCPR 12 GCPR 34 ICPR 56\n"
      "TTRC GTRC ITRC TSCR GSCR\nTTRC TCPR TTRCTCPR\n";
  const int blocks = 6;
  std::string input = JobAroundBoundaries(screen, random, blocks);
  // A block crowded with decoys, more than the filter lists per block.
  input.insert(input.size() - 6, std::string(3000, 'T') + "RC " + std::string(200, ' ') + "\n");
  for (int i = 0; i < 400; ++i) input.insert(input.size() - 6, "xTTRC yTCPR\n");
  input.insert(input.size() - 6, screen);

  std::string once;
  for (const char* name : {"TTRC", "GTRC", "ITRC", "TSCR", "GSCR", "ISCR"}) {
    once += std::string("@PJL SET JOBATTR=\"@") + name + "=64\"\n";
  }
  once += "@PJL SET JOBATTR=\"@TCPR=12\"\n@PJL SET JOBATTR=\"@GCPR=34\"\n"
          "@PJL SET JOBATTR=\"@ICPR=56\"\n";
  std::string derived;
  for (int i = 0; i < blocks + 1; ++i) derived += once;

  FilterJob job;
  job.ppd = Fixture("ppd/decomp-mono.ppd");
  job.file = "/nonexistent/job.ps";
  FilterRun header = RunFilter(job);
  ASSERT_GE(header.out.size(), kTrailer.size());
  std::string head = header.out.substr(0, header.out.size() - kTrailer.size());
  job.file.reset();

  FilterRun run = Run(job, input);
  EXPECT_EQ(run.status, 0);
  // The unfinished last line ("%%EOF", its line feed held back) leads the copy.
  std::string body = "%%EOF" + input.substr(0, input.size() - 6) + "\n";
  EXPECT_TRUE(SameLargeStream(head + derived + kEnterPS + body + kTrailer, run.out));
}

INSTANTIATE_TEST_SUITE_P(Inputs, LargeJobTest,
                         ::testing::Values(Feed{"Pipe", false}, Feed{"File", true}),
                         [](const ::testing::TestParamInfo<Feed>& info) { return info.param.name; });

}  // namespace
