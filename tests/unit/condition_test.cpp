#include "engine/condition.h"

#include <gtest/gtest.h>

namespace {

const int32_t kThree = 3;
const int32_t kFour = 4;
const char* const kNeedle = "ab";
const char* const kNothing = "";

struct CompareCase {
  const char* name;
  CompareFunc compare;
  const void* value;
  const void* reference;
  int expected;
};
void PrintTo(const CompareCase& c, std::ostream* os) { *os << c.name; }

class CompareTest : public ::testing::TestWithParam<CompareCase> {};

TEST_P(CompareTest, Holds) {
  const CompareCase& c = GetParam();
  EXPECT_EQ(c.compare(c.value, c.reference), c.expected);
}

INSTANTIATE_TEST_SUITE_P(
    Functions, CompareTest,
    ::testing::Values(
        CompareCase{"IntEqual", IntCampareFunc, &kThree, &kThree, 1},
        CompareCase{"IntNotEqual", IntCampareFunc, &kThree, &kFour, 0},
        CompareCase{"IntNoEqualDiffers", IntNoEqualCampareFunc, &kThree, &kFour, 1},
        CompareCase{"StrEqual", StrEqualCampareFunc, "ab", &kNeedle, 1},
        CompareCase{"StrEqualPrefixOnly", StrEqualCampareFunc, "abc", &kNeedle, 0},
        CompareCase{"ContainHit", StrContainCampareFunc, "xaby", &kNeedle, 1},
        CompareCase{"ContainEmptyValueFails", StrContainCampareFunc, "", &kNeedle, 0},
        CompareCase{"ContainNullValueFails", StrContainCampareFunc, nullptr, &kNeedle, 0},
        CompareCase{"ContainEmptyReferenceHolds", StrContainCampareFunc, "x", &kNothing, 1},
        CompareCase{"NotContainEmptyValueHolds", StrNotContainCampareFunc, "", &kNeedle, 1},
        CompareCase{"NotContainNullValueHolds", StrNotContainCampareFunc, nullptr, &kNeedle, 1},
        CompareCase{"NotContainHit", StrNotContainCampareFunc, "zab", &kNeedle, 0},
        CompareCase{"NoNullText", StrNoNULLCampareFunc, "a", &kNothing, 1},
        CompareCase{"NoNullEmpty", StrNoNULLCampareFunc, "", &kNothing, 0},
        CompareCase{"NoNullMissing", StrNoNULLCampareFunc, nullptr, &kNothing, 0},
        CompareCase{"IsNullEmpty", StrIsNULLCampareFunc, "", &kNothing, 1},
        CompareCase{"IsNullMissing", StrIsNULLCampareFunc, nullptr, &kNothing, 1},
        CompareCase{"LengthLessThanEqualFails", StrLengthLessThanCampareFunc, "abc", &kThree, 0},
        CompareCase{"LengthLessThanHolds", StrLengthLessThanCampareFunc, "abc", &kFour, 1}),
    [](const ::testing::TestParamInfo<CompareCase>& info) { return info.param.name; });

int gCalls = 0;
int CountingHolds(const void*, const void*) { return ++gCalls, 1; }
int CountingFails(const void*, const void*) { return ++gCalls, 0; }

TEST(ConditionCompare, StopsAtFirstFailure) {
  const ConditionItem items[] = {{nullptr, nullptr, CountingHolds},
                                 {nullptr, nullptr, CountingFails},
                                 {nullptr, nullptr, CountingHolds}};
  ConditionTable table;
  InitializeComparationTable(&table, 3, items);
  gCalls = 0;
  EXPECT_EQ(ConditionCompare(&table), 0);
  EXPECT_EQ(gCalls, 2);
}

// All items must hold, read when the table is evaluated; no items hold.
TEST(ConditionCompare, SeesValuesAtEvaluationTime) {
  int32_t setting = 0;
  const ConditionItem items[] = {{"xaby", &kNeedle, StrContainCampareFunc},
                                 {&setting, &kFour, IntCampareFunc}};
  ConditionTable table;
  InitializeComparationTable(&table, 2, items);
  EXPECT_EQ(ConditionCompare(&table), 0);
  setting = 4;
  EXPECT_EQ(ConditionCompare(&table), 1);
  InitializeComparationTable(&table, 0, nullptr);
  EXPECT_EQ(ConditionCompare(&table), 1);
}

}  // namespace
