#include "ticket/text_encoding.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "test_support.h"

namespace {

using ConverterFn = int32_t (*)(const char*, char*, int32_t);

struct ConvertCase {
  const char* name;
  const char* source;
  int32_t size;
  std::string expected;  // bytes of the text written
};

// Runs one converter case on a buffer pre-filled with a marker, so that
// both the text and the zero fill behind it are checked, as well as the
// bytes after the buffer (which must stay untouched).
void CheckConversion(ConverterFn convert, const ConvertCase& c) {
  std::string buffer(static_cast<size_t>(c.size) + 4, 'x');
  int32_t length = convert(c.source, &buffer[0], c.size);
  EXPECT_EQ(length, static_cast<int32_t>(c.expected.size())) << c.name;
  EXPECT_EQ(buffer.substr(0, c.expected.size()), c.expected) << c.name;
  EXPECT_EQ(buffer.substr(c.expected.size(), c.size - c.expected.size()),
            std::string(c.size - c.expected.size(), '\0'))
      << c.name;
  EXPECT_EQ(buffer.substr(static_cast<size_t>(c.size)), "xxxx") << c.name;
}

TEST(ConvertUTF8ToEncoding, ShiftJISOutputAndCutRules) {
  const ConvertCase cases[] = {
      {"backslash and tilde stay ASCII", "a\\b~c", 16, "a\\b~c"},
      {"kana", "\xE3\x81\x82", 16, "\x82\xA0"},
      {"kana, room for one byte", "\xE3\x81\x82", 2, "\x82"},
      {"size 1 holds only the terminator", "\xE3\x81\x82", 1, ""},
      {"second kana cut after its first byte", "\xE3\x81\x82\xE3\x81\x84", 4, "\x82\xA0\x82"},
      {"ASCII after a full buffer is dropped", "ab\xE3\x81\x82" "cd", 4, "ab\x82"},
      {"half-width katakana is one byte", "\xEF\xBD\xB1\xEF\xBD\xB2", 16, "\xB1\xB2"},
      {"character without a form dropped", "a\xE0\xB8\x81" "b", 16, "ab"},
      {"emoji dropped", "a\xF0\x9F\x98\x80" "b", 16, "ab"},
      {"invalid UTF-8 gives nothing", "ab\xFF" "cd", 16, ""},
      {"cut UTF-8 gives nothing", "ab\xE3\x81", 16, ""},
      {"long text stops at size - 1", "abcdefghij", 5, "abcd"},
  };
  for (const ConvertCase& c : cases) CheckConversion(ConvertUTF8ToEncoding, c);
}

TEST(ConvertUTF8ToEncodingForUTF8, UTF8OutputAndCutRules) {
  const ConvertCase cases[] = {
      {"backslash and tilde", "a\\b~c", 16, "a\\b~c"},
      {"exact fit", "\xE3\x81\x82\xE3\x81\x84", 7, "\xE3\x81\x82\xE3\x81\x84"},
      {"second kana cut after two bytes", "\xE3\x81\x82\xE3\x81\x84", 6, "\xE3\x81\x82\xE3\x81"},
      {"second kana cut after one byte", "\xE3\x81\x82\xE3\x81\x84", 5, "\xE3\x81\x82\xE3"},
      {"characters without a Shift-JIS form kept", "\xE0\xB8\x81\xC3\xA9", 16,
       "\xE0\xB8\x81\xC3\xA9"},
      {"emoji dropped", "a\xF0\x9F\x98\x80" "b", 16, "ab"},
      {"invalid UTF-8 gives nothing", "ab\xC0\x80", 16, ""},
  };
  for (const ConvertCase& c : cases) CheckConversion(ConvertUTF8ToEncodingForUTF8, c);
}

TEST(ConvertUTF8, DegenerateArguments) {
  char marker[4] = {'x', 'x', 'x', 'x'};
  EXPECT_EQ(ConvertUTF8ToEncoding("abc", marker, 0), 0);
  EXPECT_EQ(ConvertUTF8ToEncodingForUTF8("abc", marker, -3), 0);
  EXPECT_EQ(ConvertUTF8ToPPDEncoding("abc", marker, 0, kCFStringEncodingUTF8), 0);
  EXPECT_EQ(std::string(marker, 4), "xxxx");
  char buffer[8];
  EXPECT_EQ(ConvertUTF8ToEncoding(nullptr, buffer, sizeof buffer), 0);
  EXPECT_EQ(buffer[0], '\0');
  EXPECT_EQ(ConvertUTF8ToEncoding("abc", nullptr, 8), 0);
}

TEST(ConvertUTF8ToPPDEncoding, ParenthesisedWholeOrNothing) {
  const std::string longest(508, 'a');  // with "(" and ")": 510 units
  const std::string tooLong(509, 'a');
  const struct {
    const char* name;
    std::string source;
    int32_t size;
    CFStringEncoding encoding;
    std::string expected;
  } cases[] = {
      {"exact fit", "abc", 6, kCFStringEncodingUTF8, "(abc)"},
      {"one byte short", "abc", 5, kCFStringEncodingUTF8, ""},
      {"encoding does not change the bytes", "\xE3\x81\x82", 16, kCFStringEncodingJIS_X0208_83,
       "(\xE3\x81\x82)"},
      {"emoji kept whole", "\xF0\x9F\x98\x80", 16, kCFStringEncodingUTF8, "(\xF0\x9F\x98\x80)"},
      {"invalid UTF-8", "a\xFF", 16, kCFStringEncodingUTF8, ""},
      {"longest working text", longest, 1024, kCFStringEncodingUTF8, "(" + longest + ")"},
      {"too long for the working text: plain", tooLong, 1024, kCFStringEncodingUTF8, tooLong},
  };
  for (const auto& c : cases) {
    std::string buffer(static_cast<size_t>(c.size), 'x');
    int32_t length = ConvertUTF8ToPPDEncoding(c.source.c_str(), &buffer[0], c.size, c.encoding);
    EXPECT_EQ(length, static_cast<int32_t>(c.expected.size())) << c.name;
    EXPECT_EQ(std::string(buffer.c_str()), c.expected) << c.name;
  }
}

TEST(GetCFStringSimEncodingFromPPD, LanguageEncodingValues) {
  const struct {
    const char* ppd;
    CFStringEncoding expected;
  } cases[] = {{"text-utf8.ppd", kCFStringEncodingUTF8},  // no LanguageEncoding
               {"bare.ppd", kCFStringEncodingUTF8},       // ISOLatin1
               {"text-jis83.ppd", kCFStringEncodingJIS_X0208_83}};
  for (const auto& c : cases) {
    ppd_file_t* ppd = ppdOpenFile(Fixture(std::string("ppd/") + c.ppd).c_str());
    ASSERT_NE(ppd, nullptr) << c.ppd;
    EXPECT_EQ(GetCFStringSimEncodingFromPPD(ppd), c.expected) << c.ppd;
    ppdClose(ppd);
  }
  EXPECT_EQ(GetCFStringSimEncodingFromPPD(nullptr), 0x08000100u);
  EXPECT_EQ(kCFStringEncodingShiftJIS_X0213, 0x0628u);
  EXPECT_EQ(kCFStringEncodingJIS_X0208_83, 0x0621u);
}

TEST(CheckIfCharacterIsMultibyte, TrueOnlyForCharactersWithoutAForm) {
  const struct {
    const char* text;
    bool expected;
  } cases[] = {
      {"a\\b~\xE3\x81\x82\xE6\xBC\xA2", false},  // ASCII, kana and kanji
      {"a\xE0\xB8\x81", true},                  // Thai has no form
      {"\xF0\x9F\x98\x80", true},               // nor have surrogate halves
      {"\xFF", false},                          // invalid UTF-8 is no text
      {"", false},
  };
  for (const auto& c : cases) EXPECT_EQ(checkIfCharacterIsMultibyte(c.text), c.expected) << c.text;
  EXPECT_FALSE(checkIfCharacterIsMultibyte(nullptr));
}

TEST(UTF16Units, CountAndCut) {
  const struct {
    const char* name;
    const char* text;
    int32_t units;
    int32_t cutTo;
    const char* afterCut;
  } cases[] = {
      {"kana count one unit each", "\xE3\x81\x82\xE3\x81\x84\xE3\x81\x86", 3, 2,
       "\xE3\x81\x82\xE3\x81\x84"},
      {"equal length untouched", "abc", 3, 3, "abc"},
      {"emoji counts two units", "a\xF0\x9F\x98\x80" "b", 4, 3, "a\xF0\x9F\x98\x80"},
      {"cut through a pair drops it", "a\xF0\x9F\x98\x80" "b", 4, 2, "a"},
      {"cut tail counts its valid prefix", "ab\xE3\x81", 2, 1, "a"},
      {"cut to nothing", "abc", 3, 0, ""},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(CountUTF16Units(c.text), c.units) << c.name;
    // Junk behind the terminator is cleared by a rebuild.
    char buffer[32];
    std::memset(buffer, 'x', sizeof buffer);
    std::memcpy(buffer, c.text, std::strlen(c.text) + 1);
    CutUTF8ToUnits(buffer, sizeof buffer, c.cutTo);
    EXPECT_STREQ(buffer, c.afterCut) << c.name;
    if (c.units > c.cutTo) {
      EXPECT_EQ(std::string(buffer + 16, 16), std::string(16, '\0')) << c.name;
    }
  }
}

}  // namespace
