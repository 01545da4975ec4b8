#include "base/ppd_queries.h"

#include <gtest/gtest.h>

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "platform/job_ppd.h"

namespace {

std::string FixturePPD(const char* name) { return std::string(ZPJL_FIXTURES) + "/ppd/" + name; }

struct ReleaseCase {
  const char* release;
  uint32_t packed;
};
void PrintTo(const ReleaseCase& c, std::ostream* os) { *os << c.release; }

class PackSystemVersionTest : public ::testing::TestWithParam<ReleaseCase> {};

TEST_P(PackSystemVersionTest, Packs) {
  EXPECT_EQ(PackSystemVersion(GetParam().release), GetParam().packed) << GetParam().release;
}

INSTANTIATE_TEST_SUITE_P(
    Releases, PackSystemVersionTest,
    ::testing::Values(ReleaseCase{"13.4.0", 0x1094}, ReleaseCase{"19.6.0", 0x10F6},
                      ReleaseCase{"14.0.0", 0x10A0}, ReleaseCase{"11.4.2", 0x1074},
                      // Kernel 20 and later wrap around into the 10.0 range.
                      ReleaseCase{"20.6.0", 0x1006}, ReleaseCase{"21.0.1", 0x1010},
                      ReleaseCase{"", 0x1000}, ReleaseCase{"abc", 0x1000},
                      ReleaseCase{"19", 0x10F0}, ReleaseCase{"0.5", 0x1005},
                      ReleaseCase{"10.31", 0x106F}));

TEST(Gestalt, AnswersFromTheBuiltInRelease) {
  // The unit tests link the default configuration: kernel release 19.6.0.
  int32_t value = 0;
  ASSERT_EQ(Gestalt_ALT(kGestaltSystemVersion, &value), 0);
  EXPECT_EQ(value, 0x10F6);
  ASSERT_EQ(Gestalt_ALT(kGestaltSystemVersionMajor, &value), 0);
  EXPECT_EQ(value, 10);
  ASSERT_EQ(Gestalt_ALT(kGestaltSystemVersionMinor, &value), 0);
  EXPECT_EQ(value, 15);
  ASSERT_EQ(Gestalt_ALT(kGestaltSystemVersionBugFix, &value), 0);
  EXPECT_EQ(value, 6);
}

TEST(Gestalt, UnknownSelectorLeavesResult) {
  int32_t value = 1234;
  testing::internal::CaptureStderr();
  EXPECT_EQ(Gestalt_ALT(0x61626364, &value), -1);
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "Gestalt_ALT : selector '61626364' not supported.\n");
  EXPECT_EQ(value, 1234);
}

TEST(PPDQueries, FindsFirstAttributeByPrefix) {
  setenv("PPD", FixturePPD("prefix-attr.ppd").c_str(), 1);
  ppd_file_t* ppd = AcquireJobPPD();
  ASSERT_NE(ppd, nullptr);
  ppd_attr_t* attr = ppdFindAttr_ALT(ppd, "KRPSDecompMode");
  ASSERT_NE(attr, nullptr);
  EXPECT_STREQ(attr->name, "KRPSDecompModeX");
  EXPECT_STREQ(attr->value, "0");
  EXPECT_FALSE(PPDAttrEquals(ppd, "KRPSDecompMode", "1"));
  EXPECT_EQ(ppdFindAttr_ALT(ppd, "NoSuchAttribute"), nullptr);
  ReleaseJobPPD(ppd);
}

TEST(PPDQueries, KeywordSupportedIsSubstringOfValue) {
  setenv("PPD", FixturePPD("utf8-color.ppd").c_str(), 1);
  ppd_file_t* ppd = AcquireJobPPD();
  ASSERT_NE(ppd, nullptr);
  EXPECT_EQ(CheckIfPPDKeywordSupported(ppd, "KRPrinterLanguageEncoding", "TF-"), 1);
  EXPECT_EQ(CheckIfPPDKeywordSupported(ppd, "KRPrinterLanguageEncoding", "SJIS"), 0);
  EXPECT_EQ(CheckIfPPDKeywordSupported(ppd, "Missing", ""), 0);
  EXPECT_TRUE(IsUTF8PrinterEncoding());
  ReleaseJobPPD(ppd);
}

TEST(PPDQueries, MissingPPDMeansMissingAttributes) {
  EXPECT_EQ(ppdFindAttr_ALT(nullptr, "PCFileName"), nullptr);
  setenv("PPD", FixturePPD("does-not-exist.ppd").c_str(), 1);
  EXPECT_EQ(AcquireJobPPD(), nullptr);
  EXPECT_FALSE(IsUTF8PrinterEncoding());
  unsetenv("PPD");
  EXPECT_EQ(AcquireJobPPD(), nullptr);
  setenv("PPD", FixturePPD("legacy-mono.ppd").c_str(), 1);
  EXPECT_FALSE(IsUTF8PrinterEncoding());
}

TEST(JobPPD, ParsedOnceUntilForgotten) {
  char path[] = "/tmp/zpjl-ppd-cache-XXXXXX";
  int fd = mkstemp(path);
  ASSERT_GE(fd, 0);
  close(fd);
  auto write = [&](const char* encoding) {
    std::string text = std::string("*PPD-Adobe: \"4.3\"\n*KRPrinterLanguageEncoding: \"") +
                       encoding + "\"\n";
    FILE* file = fopen(path, "w");
    ASSERT_NE(file, nullptr);
    fputs(text.c_str(), file);
    fclose(file);
  };
  write("UTF-8");
  setenv("PPD", path, 1);
  EXPECT_TRUE(IsUTF8PrinterEncoding());
  write("SJIS");
  EXPECT_TRUE(IsUTF8PrinterEncoding()) << "the same path is read once";
  ForgetJobPPD();
  EXPECT_FALSE(IsUTF8PrinterEncoding()) << "forgotten, the file is read again";
  ForgetJobPPD();
  unlink(path);
  EXPECT_EQ(AcquireJobPPD(), nullptr);
  unsetenv("PPD");
}

}  // namespace
