#include "platform/text_codec.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <map>
#include <string>
#include <vector>

#include "ticket/text_encoding.h"

namespace {

template <typename Text>
Text Repeat(const Text& piece, size_t times) {
  Text text;
  for (size_t i = 0; i < times; ++i) text += piece;
  return text;
}
std::string Repeat(const char* piece, size_t times) { return Repeat(std::string(piece), times); }
std::u16string Repeat(const char16_t* piece, size_t times) {
  return Repeat(std::u16string(piece), times);
}

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

TEST(DecodeUTF8, ValidityAndPrefix) {
  const struct {
    const char* text;
    bool valid;
    std::u16string prefix;
  } cases[] = {
      {"", true, u""},
      {"a\xC3\xA9\xE3\x81\x82", true, u"a\u00E9\u3042"},
      {"\xF0\x9F\x98\x80", true, u"\xD83D\xDE00"},  // four bytes become a pair
      {"\xF4\x8F\xBF\xBF", true, u"\xDBFF\xDFFF"},  // U+10FFFF, the last pair
      {"a\xC0\x80", false, u"a"},                       // overlong
      {"x\xED\xA0\x80", false, u"x"},                  // an encoded surrogate
      {"\xF4\x90\x80\x80", false, u""},               // above U+10FFFF
      {"ok\x80", false, u"ok"},                          // a stray continuation byte
      {"\xE3\x81\x82\xE3\x81", false, u"\u3042"},      // cut at the end
  };
  for (const auto& c : cases) {
    std::u16string units;
    EXPECT_EQ(DecodeUTF8(c.text, &units), c.valid) << Hex(c.text);
    EXPECT_EQ(units, c.prefix) << Hex(c.text);
    EXPECT_EQ(IsValidUTF8(c.text), c.valid) << Hex(c.text);
    if (c.valid) {
      EXPECT_EQ(EncodeUTF8(units.data(), units.size()), c.text) << Hex(c.text);
    }
  }
  std::u16string units = u"stale";
  EXPECT_FALSE(DecodeUTF8(nullptr, &units));
  EXPECT_TRUE(units.empty());
}

TEST(EncodeUnit, NoRoomForATwoByteFormIsNoForm) {
  char small[2] = {'x', 'x'};
  EXPECT_FALSE(EncodeUnitShiftJISX0213(0x3042, small, sizeof small));
  EXPECT_EQ(small[0], '\0');
  char out[6];
  EXPECT_FALSE(EncodeUnitUTF8(0xD83D, out, sizeof out));
  EXPECT_STREQ(out, "");
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
      // Two-character codes where a decoder working in 512-byte pieces of
      // output runs out of room between the two (it then never finished).
      {"tone pair across a piece boundary", std::string(255, 'a') + "\x86\x86" "b", true,
       std::u16string(255, u'a') + u"\u02E5\u02E9b"},
      {"combining kana across a piece boundary", std::string(255, 'a') + "\x82\xF5", true,
       std::u16string(255, u'a') + u"\u304B\u309A"},
      {"many tone pairs after one byte", "a" + Repeat("\x86\x86", 300), true,
       u"a" + Repeat(u"\u02E5\u02E9", 300)},
  };
  for (const Case& c : cases) {
    std::u16string units;
    EXPECT_EQ(DecodeShiftJISX0213(c.bytes.data(), c.bytes.size(), &units), c.complete) << c.name;
    EXPECT_EQ(units, c.units) << c.name;
  }
}
