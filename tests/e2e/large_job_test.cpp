// Jobs larger than the filter's read blocks, with the lines that matter on
// every side of a block boundary next to over-long lines and mixed line
// ends: the output must not depend on where the reads ended (a file reads in
// whole blocks, a pipe in whatever pieces the writer left).
#include <random>
#include <string>

#include "filter_runner.h"
#include "sealed_blob.h"

namespace {

constexpr size_t kBlock = 1 << 16;
constexpr size_t kChunk = 8065;

// The "ep" lines a byte-wise reader sees: lines end at CR or LF, and a line
// reaching 8065 bytes is cut there and starts afresh.
size_t PageEnds(const std::string& input) {
  size_t pages = 0;
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

// Filler of every kind, then `marker` placed so that it starts 0 to 4 bytes
// before each block boundary.
std::string JobAroundBoundaries(const std::string& marker, std::mt19937& random, int blocks) {
  const char* fillers[] = {"72.00 700.50 moveto", "(revenue north) show", "",
                           "0.2000 0.3000 0.4000 rg", "%%Page: 1 1", "e", "epx", " ep", "bpx"};
  std::string job;
  for (int block = 1; block <= blocks; ++block) {
    size_t target = block * kBlock - static_cast<size_t>(block % 5);
    while (job.size() < target) {
      switch (random() % 8) {
        case 0: job += std::string(kChunk + random() % 3000, 'x') + "\n"; break;  // chunked
        case 1: job += std::string(kChunk, 'y') + "ep\n"; break;  // a chunk, then "ep" afresh
        case 2: job += fillers[random() % 9] + std::string("\r\n"); break;
        default: job += fillers[random() % 9] + std::string("\n");
      }
      if (job.size() > target) {
        job.resize(target - 1);
        job += "\n";
      }
    }
    job += marker;
  }
  return job + "%%EOF\n";
}

class LargeJobTest : public ::testing::TestWithParam<bool> {
 protected:
  // The job from a pipe, or from a file when the parameter says so.
  FilterRun Run(FilterJob job, const std::string& input) {
    if (!GetParam()) {
      job.input = input;
      return RunFilter(job);
    }
    ScratchDir dir;
    job.file = dir.File("job.ps");
    EXPECT_TRUE(dir.ok() && WriteText(*job.file, input));
    return RunFilter(job);
  }
};

TEST_P(LargeJobTest, PassThroughCopiesEveryByteAndSeesEveryPageEnd) {
  std::mt19937 random(20261124);
  std::string input = JobAroundBoundaries("ep\nbp\r%%EndPageSetup\n", random, 12);
  FilterJob job;
  job.ppd = Fixture("ppd/utf8-color.ppd");
  FilterRun run = Run(job, input);
  EXPECT_EQ(run.status, 0);
  EXPECT_TRUE(SameStream(SplitStream(RunFilter(job).out).header + input + "\x04" + kTrailer, run.out));
  size_t pages = PageEnds(input), logged = 0;
  EXPECT_GT(pages, 12u);
  for (size_t at = run.err.find("PAGE:"); at != std::string::npos; at = run.err.find("PAGE:", at + 1)) {
    ++logged;
  }
  EXPECT_EQ(logged, pages);
}

TEST_P(LargeJobTest, InsertionModeFindsScreenLinesWhereverTheyLie) {
  std::mt19937 random(20261125);
  // A screen line of each list, then lines that hold some of the names only.
  const std::string screen =
      "TTRC 64 GTRC 64 ITRC 64 TSCR 64 GSCR 64 ISCR 64\nTCPR 12 GCPR 34 ICPR 56\n"
      "TTRC GTRC ITRC TSCR GSCR\nTTRC TCPR TTRCTCPR\n";
  const int blocks = 6;
  std::string input = JobAroundBoundaries(screen, random, blocks);
  // A block crowded with decoys, more than the filter lists per block.
  input.insert(input.size() - 6, std::string(3000, 'T') + "RC " + std::string(200, ' ') + "\n" +
                                     Repeat("xTTRC yTCPR\n", 400) + screen);
  std::string derived;
  for (int i = 0; i < blocks + 1; ++i) {
    for (const char* name : {"TTRC", "GTRC", "ITRC", "TSCR", "GSCR", "ISCR"}) {
      derived += Attr(name + std::string("=64"));
    }
    derived += Attrs({"TCPR=12", "GCPR=34", "ICPR=56"});
  }
  FilterJob job;
  job.ppd = Fixture("ppd/decomp-mono.ppd");
  job.file = "/nonexistent/job.ps";
  std::string head = RunFilter(job).out;
  ASSERT_GE(head.size(), kTrailer.size());
  head.resize(head.size() - kTrailer.size());
  job.file.reset();
  FilterRun run = Run(job, input);
  EXPECT_EQ(run.status, 0);
  // The unfinished last line ("%%EOF", its line feed held back) leads the copy.
  EXPECT_TRUE(SameStream(head + derived + "@PJL ENTER LANGUAGE=POSTSCRIPT\n%%EOF" +
                             input.substr(0, input.size() - 6) + "\n" + kTrailer,
                         run.out));
}

INSTANTIATE_TEST_SUITE_P(Inputs, LargeJobTest, ::testing::Values(false, true),
                         [](const ::testing::TestParamInfo<bool>& info) {
                           return info.param ? "File" : "Pipe";
                         });

}  // namespace
