#include "job/job_copy.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

namespace {

struct PatternCase {
  const char* pattern;
  bool accepted;
  const char* expanded;
};
void PrintTo(const PatternCase& c, std::ostream* os) { *os << c.pattern; }

class JobCopyPatternTest : public ::testing::TestWithParam<PatternCase> {};

TEST_P(JobCopyPatternTest, Expands) {
  const PatternCase& c = GetParam();
  char out[kJobCopyPathSize] = "untouched";
  EXPECT_EQ(ExpandJobCopyPattern(c.pattern, "20261121101500", out, sizeof out), c.accepted)
      << c.pattern;
  EXPECT_STREQ(out, c.accepted ? c.expanded : "untouched");
}

INSTANTIATE_TEST_SUITE_P(
    Patterns, JobCopyPatternTest,
    ::testing::Values(PatternCase{"/tmp/kr%s.job", true, "/tmp/kr20261121101500.job"},
                      PatternCase{"/tmp/100%%/kr%s.job", true, "/tmp/100%/kr20261121101500.job"},
                      PatternCase{"/private/tmp/kr%s.job", true,
                                  "/private/tmp/kr20261121101500.job"},
                      PatternCase{"/tmp/%s/kr%s.job", false, ""},
                      PatternCase{"/tmp/%n/kr%s.job", false, ""},
                      PatternCase{"/tmp/%d/kr%s.job", false, ""},
                      PatternCase{"/tmp/kr.job", false, ""},
                      PatternCase{"/tmp/kr%s.job%", false, ""},
                      PatternCase{"/tmp/kr%s%%", true, "/tmp/kr20261121101500%"}));

TEST(JobCopyPath, LongTmpDirIsCutToPathBuffer) {
  std::string tmpdir = "/" + std::string(2000, 'd');
  setenv("TMPDIR", tmpdir.c_str(), 1);
  char path[kJobCopyPathSize];
  ASSERT_TRUE(MakeJobCopyPath(0, path, sizeof path));
  // The suffix with its conversion is cut off, so the legacy pattern is taken.
  EXPECT_EQ(std::string(path).find("/ddd"), std::string::npos);
  unsetenv("TMPDIR");
}

}  // namespace
