#include "base/byte_search.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

namespace {

constexpr BytePattern kTTRC = {{'T', 'T', 'R', 'C'}};
constexpr BytePattern kTCPR = {{'T', 'C', 'P', 'R'}};

using Finder = size_t (*)(const char*, size_t, BytePattern, BytePattern, uint32_t*, size_t);

std::vector<Finder> Finders() {
  std::vector<Finder> finders{FindPatterns, FindPatternsScalar};
#if defined(__SSE2__)
  finders.push_back(FindPatternsSse2);
#endif
#if ZPJL_SCAN_AVX2
  if (HasAvx2()) finders.push_back(FindPatternsAvx2);
#endif
  return finders;
}

std::vector<uint32_t> Found(Finder find, const std::string& text, size_t capacity, size_t* count) {
  std::vector<uint32_t> offsets(capacity + 1, 0xFFFFFFFF);
  *count = find(text.data(), text.size(), kTTRC, kTCPR, offsets.data(), capacity);
  EXPECT_EQ(offsets[capacity], 0xFFFFFFFF) << "wrote past the capacity";
  offsets.resize(std::min(*count, capacity));
  return offsets;
}

TEST(FindPatterns, FixedCases) {
  struct Case {
    std::string text;
    std::vector<uint32_t> offsets;
  };
  const Case cases[] = {
      {"", {}},
      {"TTR", {}},
      {"TTRC", {0}},
      {"TCPRTTRC", {0, 4}},
      {"xTTTRCPR", {2}},        // "TTRC" at 2; "TCPR" needs the C before the P
      {"TTRCTCPR", {0, 4}},
      {"TTRc tTRC TTR\nC TRC", {}},
      {std::string(40, 'x') + "TTRC", {40}},                       // in the plain tail
      {std::string(30, 'x') + "TTRC" + std::string(40, 'x'), {30}},  // across a vector step
      {std::string(14, 'x') + "TCPR" + std::string(40, 'x'), {14}},  // across a 16-byte step
      {std::string(29, 'x') + "TCPR" + std::string(30, 'x') + "TTRC", {29, 63}},
      {std::string("TTR\0C\0TTRC", 10), {6}},
      {"\x94\x94\x92\x83TTRC", {4}},  // bytes with the sign bit set beside it
  };
  for (Finder find : Finders()) {
    for (const Case& c : cases) {
      size_t count = 0;
      EXPECT_EQ(Found(find, c.text, 16, &count), c.offsets) << ::testing::PrintToString(c.text);
      EXPECT_EQ(count, c.offsets.size());
    }
  }
}

TEST(FindPatterns, EveryWayAgreesOnRandomText) {
  std::mt19937 random(20261126);
  const char alphabet[] = "TRCPx\n";
  for (int round = 0; round < 500; ++round) {
    std::string text;
    size_t length = random() % 300;
    for (size_t i = 0; i < length; ++i) text += alphabet[random() % (sizeof alphabet - 1)];
    size_t capacity = 1 + random() % 20;
    size_t expectedCount = 0;
    std::vector<uint32_t> expected = Found(FindPatternsScalar, text, capacity, &expectedCount);
    for (Finder find : Finders()) {
      size_t count = 0;
      ASSERT_EQ(Found(find, text, capacity, &count), expected) << text;
      ASSERT_EQ(count, expectedCount) << text;
    }
  }
}

TEST(FindPatterns, SaysWhenThereAreMoreThanItKeeps) {
  std::string text;
  for (int i = 0; i < 10; ++i) text += "TTRC-";
  for (Finder find : Finders()) {
    size_t count = 0;
    std::vector<uint32_t> offsets = Found(find, text, 4, &count);
    EXPECT_EQ(count, 5u);
    EXPECT_EQ(offsets, (std::vector<uint32_t>{0, 5, 10, 15}));
    EXPECT_EQ(Found(find, text, 10, &count).size(), 10u);
    EXPECT_EQ(count, 10u);
  }
}

}  // namespace
