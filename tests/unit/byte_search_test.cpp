#include "frame/byte_search.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

namespace {

constexpr ByteTriple kTRC = {{'T', 'R', 'C'}};
constexpr ByteTriple kCPR = {{'C', 'P', 'R'}};

using Finder = size_t (*)(const char*, size_t, ByteTriple, ByteTriple, uint32_t*, size_t);

std::vector<Finder> Finders() {
  std::vector<Finder> finders{FindTriples, FindTriplesScalar};
#if defined(__SSE2__)
  finders.push_back(FindTriplesSse2);
#endif
#if ZPJL_SCAN_AVX2
  if (HasAvx2()) finders.push_back(FindTriplesAvx2);
#endif
  return finders;
}

std::vector<uint32_t> Found(Finder find, const std::string& text, size_t capacity, size_t* count) {
  std::vector<uint32_t> offsets(capacity + 1, 0xFFFFFFFF);
  *count = find(text.data(), text.size(), kTRC, kCPR, offsets.data(), capacity);
  EXPECT_EQ(offsets[capacity], 0xFFFFFFFF) << "wrote past the capacity";
  offsets.resize(std::min(*count, capacity));
  return offsets;
}

TEST(FindTriples, FixedCases) {
  struct Case {
    std::string text;
    std::vector<uint32_t> offsets;
  };
  const Case cases[] = {
      {"", {}},
      {"TR", {}},
      {"TRC", {0}},
      {"CPRTRC", {0, 3}},
      {"xTRCPR", {1, 3}},  // overlapping: TRC at 1, CPR at 3
      {"TRc tRC TR\nC", {}},
      {std::string(40, 'x') + "TRC", {40}},                      // in the scalar tail
      {std::string(31, 'x') + "TRC" + std::string(40, 'x'), {31}},  // across a vector step
      {std::string(30, 'x') + "CPR" + std::string(30, 'x') + "TRC", {30, 63}},
      {std::string("TR\0C\0TRC", 8), {5}},
      {"\x94\x92\x83TRC", {3}},  // bytes with the sign bit set beside it
  };
  for (Finder find : Finders()) {
    for (const Case& c : cases) {
      size_t count = 0;
      EXPECT_EQ(Found(find, c.text, 16, &count), c.offsets) << ::testing::PrintToString(c.text);
      EXPECT_EQ(count, c.offsets.size());
    }
  }
}

TEST(FindTriples, EveryWayAgreesOnRandomText) {
  std::mt19937 random(20261126);
  const char alphabet[] = "TRCPx\n";
  for (int round = 0; round < 500; ++round) {
    std::string text;
    size_t length = random() % 300;
    for (size_t i = 0; i < length; ++i) text += alphabet[random() % (sizeof alphabet - 1)];
    size_t capacity = 1 + random() % 20;
    size_t expectedCount = 0;
    std::vector<uint32_t> expected = Found(FindTriplesScalar, text, capacity, &expectedCount);
    for (Finder find : Finders()) {
      size_t count = 0;
      ASSERT_EQ(Found(find, text, capacity, &count), expected) << text;
      ASSERT_EQ(count, expectedCount) << text;
    }
  }
}

TEST(FindTriples, SaysWhenThereAreMoreThanItKeeps) {
  std::string text;
  for (int i = 0; i < 10; ++i) text += "TRC-";
  for (Finder find : Finders()) {
    size_t count = 0;
    std::vector<uint32_t> offsets = Found(find, text, 4, &count);
    EXPECT_EQ(count, 5u);
    EXPECT_EQ(offsets, (std::vector<uint32_t>{0, 4, 8, 12}));
    EXPECT_EQ(Found(find, text, 10, &count).size(), 10u);
    EXPECT_EQ(count, 10u);
  }
}

}  // namespace
