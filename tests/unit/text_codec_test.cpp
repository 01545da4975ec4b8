#include "platform/text_codec.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <map>
#include <string>
#include <vector>

#include "ticket/text_encoding.h"

namespace {

std::string Hex(const std::string& bytes) {
  static const char digits[] = "0123456789ABCDEF";
  std::string out;
  for (unsigned char c : bytes) {
    out += digits[c >> 4];
    out += digits[c & 15];
  }
  return out;
}

// The reference table written by tests/tools/shift_jisx0213_table.py:
// code point -> upper-case hex bytes, or "-" for no form.
std::map<unsigned, std::string> ReadPythonTable() {
  std::map<unsigned, std::string> table;
  std::string command =
      std::string("python3 ") + ZPJL_FIXTURES + "/../tools/shift_jisx0213_table.py";
  FILE* pipe = popen(command.c_str(), "r");
  if (pipe == nullptr) return table;
  char line[64];
  while (std::fgets(line, sizeof line, pipe) != nullptr) {
    unsigned codePoint = 0;
    char bytes[32] = {};
    if (std::sscanf(line, "%4X %31s", &codePoint, bytes) == 2) table[codePoint] = bytes;
  }
  pclose(pipe);
  return table;
}

std::string Utf8Of(unsigned codePoint) {
  char16_t unit = static_cast<char16_t>(codePoint);
  return EncodeUTF8(&unit, 1);
}

}  // namespace

// Every BMP character through ConvertUTF8ToEncoding, against Python's codec.
TEST(ShiftJISX0213Table, MatchesPythonCodecForEveryBMPCharacter) {
  std::map<unsigned, std::string> reference = ReadPythonTable();
  ASSERT_EQ(reference.size(), 0x10000u) << "python3 reference table missing";

  // Deliberate differences: code point -> our bytes ("-": no form).
  const std::map<unsigned, std::string> deliberate = {
      // Backslash and tilde always go out as their ASCII bytes; the codec
      // gives the full-width forms.
      {0x005C, "5C"},
      {0x007E, "7E"},
      // Our tables follow the 2004 edition of JIS X 0213; the Python codec
      // knows the 2000 edition. The 2004 edition adds ten ideographs...
      {0x4FF1, "879F"},
      {0x525D, "889E"},
      {0x541E, "989E"},
      {0x5653, "EAA5"},
      {0x59F8, "EFF8"},
      {0x5C5B, "EFF9"},
      {0x5E77, "EFFA"},
      {0x7626, "EFFB"},
      {0x7E6B, "EFFC"},
      // ...moves one ideograph to its corrected code point...
      {0x9B1C, "FC5A"},
      {0x9B1D, "-"},
      // ...and maps the white parentheses to the full-width forms.
      {0xFF5F, "81D4"},
      {0xFF60, "81D5"},
      {0x2985, "-"},
      {0x2986, "-"},
      // 0x815C is the em dash in JIS X 0213 (the horizontal bar in the
      // codec).
      {0x2014, "815C"},
      {0x2015, "-"},
      // With backslash and tilde on the ASCII route, the full-width reverse
      // solidus and tilde keep the two-byte forms of their own.
      {0xFF3C, "815F"},
      {0xFF5E, "81B0"},
  };

  std::vector<std::string> mismatches;
  size_t converted = 0;
  for (unsigned codePoint = 1; codePoint <= 0xFFFF; ++codePoint) {
    std::string ours;
    if (codePoint >= 0xD800 && codePoint <= 0xDFFF) {
      // Not expressible in UTF-8: the unit encoder the converter uses.
      char out[6];
      ours = EncodeUnitShiftJISX0213(static_cast<char16_t>(codePoint), out, sizeof out) ? Hex(out) : "-";
    } else {
      char out[6];
      ConvertUTF8ToEncoding(Utf8Of(codePoint).c_str(), out, sizeof out);
      ours = out[0] != '\0' ? Hex(out) : "-";
    }
    if (ours != "-") ++converted;
    auto special = deliberate.find(codePoint);
    const std::string& expected = special != deliberate.end() ? special->second : reference[codePoint];
    if (ours != expected) {
      char line[80];
      std::snprintf(line, sizeof line, "U+%04X ours %s python %s", codePoint, ours.c_str(),
                    reference[codePoint].c_str());
      mismatches.push_back(line);
    }
  }
  std::string report;
  for (const std::string& line : mismatches) report += line + "\n";
  EXPECT_TRUE(mismatches.empty()) << mismatches.size() << " mismatches:\n" << report;
  EXPECT_GT(converted, 11000u);
}

// Every BMP character that has a Shift-JIS form decodes back to itself, so the
// width walk sees the characters the converter wrote.
TEST(ShiftJISX0213Table, EveryEncodedCharacterDecodesBack) {
  std::vector<std::string> failures;
  for (unsigned codePoint = 1; codePoint <= 0xFFFF; ++codePoint) {
    if (codePoint == 0x5C || codePoint == 0x7E) continue;  // ASCII route, see above
    char out[6];
    if (!EncodeUnitShiftJISX0213(static_cast<char16_t>(codePoint), out, sizeof out)) continue;
    std::u16string units;
    bool complete = DecodeShiftJISX0213(out, std::strlen(out), &units);
    if (!complete || units != std::u16string(1, static_cast<char16_t>(codePoint))) {
      char line[64];
      std::snprintf(line, sizeof line, "U+%04X via %s", codePoint, Hex(out).c_str());
      failures.push_back(line);
    }
  }
  std::string report;
  for (const std::string& line : failures) report += line + "\n";
  EXPECT_TRUE(failures.empty()) << report;
}

// The UTF-8 route is the identity for every BMP character outside the
// surrogate range.
TEST(UTF8UnitTable, EveryBMPCharacterRoundTrips) {
  size_t failures = 0;
  for (unsigned codePoint = 1; codePoint <= 0xFFFF; ++codePoint) {
    if (codePoint >= 0xD800 && codePoint <= 0xDFFF) continue;
    std::string utf8 = Utf8Of(codePoint);
    char out[6];
    int32_t length = ConvertUTF8ToEncodingForUTF8(utf8.c_str(), out, sizeof out);
    if (std::string(out) != utf8 || length != static_cast<int32_t>(utf8.size())) ++failures;
  }
  EXPECT_EQ(failures, 0u);
}

TEST(DecodeUTF8, ValidityAndPrefix) {
  struct Case {
    const char* name;
    const char* text;
    bool valid;
    std::u16string prefix;
  };
  const Case cases[] = {
      {"empty", "", true, u""},
      {"ascii", "abc", true, u"abc"},
      {"two-byte", "\xC3\xA9", true, u"\u00E9"},
      {"three-byte", "\xE3\x81\x82", true, u"\u3042"},
      {"four-byte becomes a pair", "\xF0\x9F\x98\x80", true, u"\xD83D\xDE00"},
      {"byte order mark kept", "\xEF\xBB\xBF" "A", true, u"\uFEFFA"},
      {"overlong NUL", "a\xC0\x80", false, u"a"},
      {"overlong three-byte", "ab\xE0\x80\x80", false, u"ab"},
      {"encoded surrogate", "x\xED\xA0\x80", false, u"x"},
      {"above U+10FFFF", "\xF4\x90\x80\x80", false, u""},
      {"lead byte F5", "\xF5\x80\x80\x80", false, u""},
      {"stray continuation", "ok\x80", false, u"ok"},
      {"cut at the end", "\xE3\x81\x82\xE3\x81", false, u"\u3042"},
      {"Latin-1 byte", "caf\xE9", false, u"caf"},
  };
  for (const Case& c : cases) {
    std::u16string units;
    EXPECT_EQ(DecodeUTF8(c.text, &units), c.valid) << c.name;
    EXPECT_EQ(units, c.prefix) << c.name;
    EXPECT_EQ(IsValidUTF8(c.text), c.valid) << c.name;
  }
  std::u16string units = u"stale";
  EXPECT_FALSE(DecodeUTF8(nullptr, &units));
  EXPECT_TRUE(units.empty());
}

TEST(EncodeUnit, SurrogateHalvesHaveNoForm) {
  struct Case {
    char16_t unit;
    const char* utf8;      // nullptr: no form
    const char* shiftJIS;  // hex, "" for no form
  };
  const Case cases[] = {
      {u'A', "A", "41"},
      {0x00E9, "\xC3\xA9", "857E"},
      {0x0E01, "\xE0\xB8\x81", ""},      // Thai: no Shift-JIS form
      {0x3042, "\xE3\x81\x82", "82A0"},  // hiragana a
      {0x4E00, "\xE4\xB8\x80", "88EA"},
      {0xFF71, "\xEF\xBD\xB1", "B1"},    // half-width katakana a
      {0x00A5, "\xC2\xA5", "5C"},        // yen sign owns 0x5C in Shift-JIS
      {0xD83D, nullptr, ""},
      {0xDE00, nullptr, ""},
  };
  for (const Case& c : cases) {
    char out[6];
    EXPECT_EQ(EncodeUnitUTF8(c.unit, out, sizeof out), c.utf8 != nullptr) << int(c.unit);
    EXPECT_STREQ(out, c.utf8 != nullptr ? c.utf8 : "") << int(c.unit);
    EXPECT_EQ(EncodeUnitShiftJISX0213(c.unit, out, sizeof out), c.shiftJIS[0] != '\0');
    EXPECT_EQ(Hex(out), c.shiftJIS) << int(c.unit);
  }
  // No room for a two-byte form plus terminator: no form at all.
  char small[2] = {'x', 'x'};
  EXPECT_FALSE(EncodeUnitShiftJISX0213(0x3042, small, sizeof small));
  EXPECT_EQ(small[0], '\0');
}

TEST(EncodeUTF8, PairsJoinedHalvesDropped) {
  struct Case {
    const char* name;
    std::u16string units;
    std::string utf8;
  };
  const Case cases[] = {
      {"plain", u"ab\u3042", "ab\xE3\x81\x82"},
      {"pair", u"x\xD83D\xDE00y", "x\xF0\x9F\x98\x80y"},
      {"high half at the end", u"x\xD83D", "x"},
      {"low half alone", u"\xDE00z", "z"},
      {"two highs", u"\xD83D\xD83D\xDE00", "\xF0\x9F\x98\x80"},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(EncodeUTF8(c.units.data(), c.units.size()), c.utf8) << c.name;
  }
}

TEST(DecodeShiftJISX0213, UnitsAndPrefix) {
  struct Case {
    const char* name;
    std::string bytes;
    bool complete;
    std::u16string units;
  };
  const Case cases[] = {
      {"ascii", "AB", true, u"AB"},
      {"kana and kanji", "\x82\xA0\x88\xEA", true, u"\u3042\u4E00"},
      {"half-width katakana", "\xB1", true, u"\uFF71"},
      // One code that stands for a kana with a combining mark: two units.
      {"combining sequence", "\x82\xF5", true, u"\u304B\u309A"},
      // A plane-2 ideograph outside the BMP: a surrogate pair.
      {"outside the BMP", "\xF0\x40", true, u"\xD840\xDC89"},
      {"lead byte cut off", "A\x82", false, u"A"},
      {"bad trail byte", "A\x82\x20" "B", false, u"A"},
  };
  for (const Case& c : cases) {
    std::u16string units;
    EXPECT_EQ(DecodeShiftJISX0213(c.bytes.data(), c.bytes.size(), &units), c.complete) << c.name;
    EXPECT_EQ(units, c.units) << c.name;
  }
}
