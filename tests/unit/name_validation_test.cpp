#include "ticket/name_validation.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "base/fixed_text.h"
#include "base/job_state.h"
#include "test_support.h"

namespace {

void UseMode(bool utf8) { UsePPD(utf8 ? "text-utf8.ppd" : "text-shiftjis.ppd"); }

const std::string kKanaA = "\xE3\x81\x82";          // UTF-8 hiragana a
const std::string kSJISKanaA = "\x82\xA0";           // Shift-JIS hiragana a
const std::string kSJISKanji = "\x8A\xBF\x8E\x9A";   // two kanji
const std::string kSJISOne = "\x88\xEA";             // kanji "one": estimated width 1
const std::string kSJISHalfA = "\xB1";               // half-width katakana a: width 2
const std::string kSJISIdeographicSpace = "\x81\x40";

// A ticket with the product type, or without that key.
std::string ProductType(const char* type) {
  return type != nullptr ? Key("PrintTypeProductTypeTicketKey", type) : "copies=1";
}

TEST(ValidateDada, TablesByteAndPairRanges) {
  const ValidateDataScale noRanges = {0, {}, 0, {}};
  struct Case {
    const char* name;
    const ValidateDataScale* table;
    std::string text;
    int expected;
  };
  const Case cases[] = {
      {"empty text", &userNameValidateDataScale, "", 1},
      {"ASCII, kana pair, half-width katakana", &userNameValidateDataScale,
       "alice 01" + kSJISKanaA + kSJISHalfA, 1},
      {"tab", &userNameValidateDataScale, "a\tb", 0},
      {"DEL", &userNameValidateDataScale, "a\x7F", 0},
      {"lone lead byte at the end", &userNameValidateDataScale, "a\x81", 0},
      {"pair beyond the last row", &userNameValidateDataScale, "\xFD\x40", 0},
      {"pair first: lead byte with a space passes", &userNameValidateDataScale, "\x82\x20", 1},
      // Each UTF-8 kana byte happens to fall in a Shift-JIS range.
      {"UTF-8 kana passes the Shift-JIS table", &docuNameValidateDataScale, kKanaA + kKanaA, 1},
      {"UTF-8 table passes control bytes", &userNameValidateDataScaleForUTF8, "\t\x01", 1},
      {"Product02: wave dash pair", &docuNameValidateDataScaleForProduct02, "a\x81\x60", 1},
      {"Product02: pair 0xFF61", &docuNameValidateDataScaleForProduct02, "\xFF\x61", 1},
      {"Product02: kana pair fails", &docuNameValidateDataScaleForProduct02, kSJISKanaA, 0},
      {"Product02: ideographic space fails", &docuNameValidateDataScaleForProduct02,
       kSJISIdeographicSpace, 0},
      {"Product03: kanji", &docuNameValidateDataScaleForProduct03, kSJISKanji, 1},
      {"no byte ranges: a byte fails", &noRanges, "a", 0},
  };
  for (const Case& c : cases) {
    // Exactly text and terminator, so a read past the terminator is caught.
    std::vector<char> buffer(c.text.begin(), c.text.end());
    buffer.push_back('\0');
    EXPECT_EQ(ValidateDada(buffer.data(), c.table), c.expected) << c.name;
  }
}

TEST(ValidateDada, SingleTestsAndSpaceTables) {
  const unsigned char pair[] = {0x81, 0x60, 0};
  EXPECT_TRUE(ISWordValid(pair, &docuNameValidateDataScaleForProduct02));
  EXPECT_FALSE(ISByteValid(pair, &docuNameValidateDataScaleForProduct02));
  EXPECT_TRUE(ISByteValid(pair + 1, &docuNameValidateDataScaleForProduct02));
  const ValidateDataScale negative = {-1, {{0x00, 0xFF}}, -1, {{0x0000, 0xFFFF}}};
  EXPECT_FALSE(ISByteValid(pair, &negative));
  EXPECT_FALSE(ISWordValid(pair, &negative));
  const SpaceDataScale spaces = {2, {{0x20, 0x20}, {0x8140, 0x8140}}};
  const unsigned char space[] = {0x81, 0x40, 0x20, 0};
  EXPECT_TRUE(ISWordSpace(space, &spaces));
  EXPECT_FALSE(ISByteSpace(space, &spaces));
  EXPECT_TRUE(ISByteSpace(space + 2, &spaces));
  const SpaceDataScale none = {0, {{0x20, 0x20}}};
  EXPECT_FALSE(ISByteSpace(space + 2, &none));
}

TEST(IsAllSpace, SpacesAndIdeographicSpaces) {
  struct Case {
    std::string text;
    int expected;
  };
  const Case cases[] = {
      {"", 1},
      {" " + kSJISIdeographicSpace + " ", 1},
      {" a", 0},
      {"\t", 0},
      {"\x81", 0},
      {"\xE3\x80\x80", 0},  // the UTF-8 ideographic space is not one
  };
  for (const Case& c : cases) EXPECT_EQ(IsAllSpace(c.text.c_str()), c.expected) << c.text;
}

TEST(InvalidateStdUserName, BothModes) {
  struct Case {
    const char* name;
    bool utf8;
    std::string user;         // StdUserName after conversion
    std::string expectedUser;
    std::string expectedJBA;  // StdJBAUserName after validation
  };
  const Case cases[] = {
      {"Shift-JIS: ideographic spaces", false, kSJISIdeographicSpace + kSJISIdeographicSpace,
       "UnknownUser", kSJISIdeographicSpace + kSJISIdeographicSpace},
      {"Shift-JIS: control byte keeps the raw accounting name", false, "bad\tname", "UnknownUser",
       "bad\tname"},
      {"Shift-JIS: 300 bytes cut to 255", false, std::string(300, 'n'), std::string(255, 'n'),
       std::string(32, 'n')},
      {"UTF-8: 40 characters, accounting name cut to 32", true, std::string(40, 'u'),
       std::string(40, 'u'), std::string(32, 'u')},
      {"UTF-8: 32 characters untouched", true, Repeat(kKanaA, 32), Repeat(kKanaA, 32),
       Repeat(kKanaA, 32)},
      {"UTF-8: 300 characters cut to 255", true, std::string(300, 'w'), std::string(255, 'w'),
       std::string(32, 'w')},
      {"UTF-8: spaces", true, "   ", "UnknownUser", "UnknownUser"},
      {"UTF-8: ideographic space is not a space here", true, "\xE3\x80\x80", "\xE3\x80\x80",
       "\xE3\x80\x80"},
  };
  for (const Case& c : cases) {
    UseMode(c.utf8);
    ResetJobState();
    // The buffers as the job flow leaves them before the validation.
    CopyText(StdUserName, sizeof StdUserName, c.user.c_str());
    size_t jbaSize = c.utf8 ? kStdJBAUserNameSize : kStdJBAUserNameLegacySize;
    CopyTextPrefix(StdJBAUserName, jbaSize, StdUserName, jbaSize - 1);
    InvalidateStdUserName();
    EXPECT_EQ(std::string(StdUserName), c.expectedUser) << c.name;
    EXPECT_EQ(std::string(StdJBAUserName), c.expectedJBA) << c.name;
  }
  UsePPD("");
}

TEST(InvalidateDocumentNames, ProductTypesInBothModes) {
  struct Case {
    const char* name;
    bool utf8;
    const char* productType;  // nullptr: key absent
    std::string title;        // StdDocumentName after conversion
    std::string expectedStd;
    std::string expectedPT;
  };
  const std::string ascii100(100, 'd');
  const Case cases[] = {
      // Shift-JIS mode: the print type name is a copy made by the validation.
      {"SJIS absent: no copy, long name kept", false, nullptr, ascii100, ascii100, ""},
      {"SJIS 2: kanji emptied for print type", false, "2", kSJISKanji, kSJISKanji, ""},
      {"SJIS 2: seven kana cut at width 12", false, "2", Repeat(kSJISKanaA, 7),
       Repeat(kSJISKanaA, 6), ""},
      {"SJIS 2: width jumps past 12, cut at 11", false, "2", "A" + Repeat(kSJISKanaA, 6),
       "A" + Repeat(kSJISKanaA, 5), ""},
      {"SJIS 2: half-width katakana width 2, one byte", false, "2", Repeat(kSJISHalfA, 14),
       Repeat(kSJISHalfA, 12), Repeat(kSJISHalfA, 12)},
      {"SJIS 3: cut to 64", false, "3", ascii100, std::string(64, 'd'), std::string(64, 'd')},
      {"SJIS 5: cut to 24", false, "5", ascii100, std::string(24, 'd'), std::string(24, 'd')},
      {"SJIS 1: narrow estimate leaves the name long", false, "1", Repeat(kSJISOne, 13),
       Repeat(kSJISOne, 13), Repeat(kSJISOne, 12)},
      {"SJIS 1: control byte emptied", false, "1", "a\tb", "a\tb", ""},
      // UTF-8 mode: the print type name is a second conversion of the title.
      {"UTF-8 absent: Shift-JIS table fails a tab", true, nullptr, "a\tb", "a\tb", ""},
      {"UTF-8 5: 24 units, wide table", true, "5", Repeat(kKanaA, 30), Repeat(kKanaA, 24),
       Repeat(kKanaA, 24)},
      {"UTF-8 2: 12 units", true, "2", Repeat(kKanaA, 15), Repeat(kKanaA, 12),
       Repeat(kKanaA, 12)},
      {"UTF-8 3: wide table passes a tab", true, "3", "a\tb", "a\tb", "a\tb"},
      {"UTF-8 1: ASCII", true, "1", ascii100, std::string(24, 'd'), std::string(24, 'd')},
  };
  for (const Case& c : cases) {
    UseMode(c.utf8);
    ResetJobState();
    FilterArguments args(ProductType(c.productType));
    CopyText(StdDocumentName, sizeof StdDocumentName, c.title.c_str());
    if (c.utf8) CopyText(PTStdDocumentName, sizeof PTStdDocumentName, c.title.c_str());
    // The calling order of the job flow.
    InvalidateStdDocumentNameForProductType(args.argv);
    if (c.utf8) InvalidatePrintTypeDocumentNameForProductType(args.argv);
    EXPECT_EQ(std::string(StdDocumentName), c.expectedStd) << c.name;
    EXPECT_EQ(std::string(PTStdDocumentName), c.expectedPT) << c.name;
  }
  UsePPD("");
}

TEST(InvalidateDocumentNames, PrintTypeNameInShiftJISMode) {
  struct Case {
    const char* productType;
    std::string name;
    std::string expected;
  };
  const Case cases[] = {
      {nullptr, std::string(40, 'p'), std::string(40, 'p')},
      {nullptr, "a\tb", ""},
      {"2", kSJISKanaA, ""},
      {"3", Repeat(kSJISKanaA, 40), Repeat(kSJISKanaA, 32)},
  };
  UseMode(false);
  for (const Case& c : cases) {
    ResetJobState();
    FilterArguments args(ProductType(c.productType));
    CopyText(PTStdDocumentName, sizeof PTStdDocumentName, c.name.c_str());
    InvalidatePrintTypeDocumentNameForProductType(args.argv);
    EXPECT_EQ(std::string(PTStdDocumentName), c.expected) << (c.productType ? c.productType : "-");
  }
  UsePPD("");
}

TEST(InvalidateDocumentNames, WidthWalkCutsInsideTheText) {
  struct Case {
    std::string text;
    int32_t limit;
    std::string expected;
  };
  const Case cases[] = {
      {std::string(30, 'x'), 24, std::string(24, 'x')},
      {Repeat(kSJISKanaA, 13), 24, Repeat(kSJISKanaA, 12)},
      {"x" + Repeat(kSJISKanaA, 13), 24, "x" + Repeat(kSJISKanaA, 11)},
      // Width 12 is reached after six bytes; the cut would lie past the end.
      {Repeat(kSJISHalfA, 8), 12, Repeat(kSJISHalfA, 8)},
      {"", 12, ""},
  };
  for (const Case& c : cases) {
    std::vector<char> buffer(c.text.begin(), c.text.end());
    buffer.push_back('\0');
    CutShiftJISTextByWidth(buffer.data(), c.limit);
    EXPECT_EQ(std::string(buffer.data()), c.expected) << c.text;
  }
}

TEST(InvalidateDocumentNames, FixedCutTo24) {
  for (size_t length : {30, 24, 3}) {
    ResetJobState();
    CopyText(StdDocumentName, sizeof StdDocumentName, std::string(length, 'q').c_str());
    EXPECT_EQ(InvalidateStdDocumentName(), static_cast<int>(length));
    EXPECT_EQ(std::strlen(StdDocumentName), std::min<size_t>(length, 24));
  }
}

}  // namespace
