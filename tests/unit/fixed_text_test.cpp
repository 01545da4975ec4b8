#include "base/fixed_text.h"

#include <gtest/gtest.h>

#include <cstring>

namespace {

TEST(FixedText, CopyCutsAndTerminates) {
  char buffer[6];
  std::memset(buffer, 'x', sizeof buffer);
  EXPECT_EQ(CopyText(buffer, sizeof buffer, "abcdefgh"), 5u);
  EXPECT_STREQ(buffer, "abcde");
  EXPECT_EQ(CopyText(buffer, sizeof buffer, "ab"), 2u);
  EXPECT_STREQ(buffer, "ab");
  EXPECT_EQ(CopyText(buffer, 0, "ab"), 0u);
}

TEST(FixedText, PrefixStopsAtCountAndNul) {
  char buffer[10];
  EXPECT_EQ(CopyTextPrefix(buffer, sizeof buffer, "abcdef", 3), 3u);
  EXPECT_STREQ(buffer, "abc");
  EXPECT_EQ(CopyTextPrefix(buffer, sizeof buffer, "ab", 5), 2u);
  EXPECT_STREQ(buffer, "ab");
  EXPECT_EQ(CopyTextPrefix(buffer, 3, "abcdef", 5), 2u);
  EXPECT_STREQ(buffer, "ab");
}

TEST(FixedText, AppendCutsInsideMultibyteCharacter) {
  char buffer[6] = "ab";
  EXPECT_EQ(AppendText(buffer, sizeof buffer, "\xe3\x81\x82\xe3\x81\x82"), 5u);
  EXPECT_STREQ(buffer, "ab\xe3\x81\x82");
  EXPECT_EQ(AppendText(buffer, sizeof buffer, "zz"), 5u);
  EXPECT_STREQ(buffer, "ab\xe3\x81\x82");
  char small[4] = "abc";
  EXPECT_EQ(AppendTextPrefix(small, sizeof small, "x", 1), 3u);
}

TEST(FixedText, FormatCuts) {
  char buffer[5];
  EXPECT_EQ(FormatText(buffer, sizeof buffer, "%d-%s", 12, "abc"), 4u);
  EXPECT_STREQ(buffer, "12-a");
  EXPECT_EQ(FormatText(buffer, sizeof buffer, "%s", "ok"), 2u);
  EXPECT_STREQ(buffer, "ok");
}

TEST(FixedText, ZeroClearsWholeBuffer) {
  char buffer[8];
  std::memset(buffer, 'x', sizeof buffer);
  ZeroText(buffer, sizeof buffer);
  for (char c : buffer) EXPECT_EQ(c, '\0');
}

}  // namespace
