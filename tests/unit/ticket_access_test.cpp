#include "ticket/ticket_access.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

namespace {

// An option array built value by value, so that empty values and exact
// bytes reach the getters as written.
class Ticket {
 public:
  Ticket(std::initializer_list<std::pair<const char*, std::string>> values) {
    for (const auto& value : values) {
      count_ = cupsAddOption(value.first, value.second.c_str(), count_, &options_);
    }
  }
  ~Ticket() { cupsFreeOptions(count_, options_); }
  Ticket(const Ticket&) = delete;
  Ticket& operator=(const Ticket&) = delete;

  int32_t count() const { return count_; }
  cups_option_t* options() const { return options_; }

 private:
  int count_ = 0;
  cups_option_t* options_ = nullptr;
};

constexpr char kRows[] = "com.apple.print.PrintSettings.PMLayoutRows..n.";
constexpr char kColumns[] = "com.apple.print.PrintSettings.PMLayoutColumns..n.";

}  // namespace

TEST(Numstrtochar, SlashNumericDecoding) {
  struct Case {
    const char* name;
    const char* text;
    std::string expected;  // bytes up to the first NUL
  };
  const Case cases[] = {
      {"three bytes", "/65/66/67", "ABC"},
      {"256 or more gives 0", "/300", ""},
      {"-1 is byte 255", "/-1", "\xFF"},
      {"low eight bits of a negative", "/-300", "\xD4"},
      {"empty run is 0", "//", ""},
      {"empty run in the middle ends the text", "/65//66", "A"},
      {"trailing slash", "/65/", "A"},
      {"atoi reads the leading digits", "/65a/66", "AB"},
      {"atoi skips leading blanks", "/ 65", "A"},
      {"no leading slash: unchanged", "65/66", "65/66"},
      {"a lone slash: unchanged", "/", "/"},
  };
  for (const Case& c : cases) {
    char buffer[64];
    std::memset(buffer, 'x', sizeof buffer);
    std::memcpy(buffer, c.text, std::strlen(c.text) + 1);
    numstrtochar(buffer, sizeof buffer);
    EXPECT_EQ(std::string(buffer), c.expected) << c.name;
  }
  // "//" writes the 0 byte itself, not just an early terminator.
  char slashes[4] = {'/', '/', '\0', 'x'};
  numstrtochar(slashes, sizeof slashes);
  EXPECT_EQ(slashes[0], '\0');
  EXPECT_EQ(slashes[3], 'x');
}

TEST(Numstrtochar, StaysInsideTheLimit) {
  // No terminator inside the limit: nothing is read or written past it.
  char unterminated[4] = {'/', '6', '5', '6'};
  numstrtochar(unterminated, sizeof unterminated);
  EXPECT_EQ(std::string(unterminated, 4), "/656");
  // A limit shorter than the text leaves the text alone.
  char text[16] = "/65/66";
  numstrtochar(text, 4);
  EXPECT_STREQ(text, "/65/66");
  numstrtochar(nullptr, 16);  // must not crash
}

TEST(Itoa, DigitsBackwardsAndBounded) {
  struct Case {
    int32_t value;
    int32_t size;
    const char* expected;
  };
  const Case cases[] = {
      {0, 3, ""},  // zero formats as the empty text
      {7, 3, "7"},
      {99, 3, "99"},
      {100, 3, "00"},    // lowest digits kept, nothing before the buffer
      {144, 3, "44"},
      {-5, 3, "5"},      // no sign
      {INT32_MIN, 12, "2147483648"},
      {5, 1, ""},
  };
  for (const Case& c : cases) {
    // Guards on both sides catch a write outside the buffer.
    std::vector<char> memory(static_cast<size_t>(c.size) + 2, '#');
    char* buffer = memory.data() + 1;
    char* text = itoa(c.value, buffer, c.size);
    EXPECT_STREQ(text, c.expected) << c.value << " in " << c.size;
    EXPECT_GE(text, buffer);
    EXPECT_LT(text, buffer + c.size);
    EXPECT_EQ(memory.front(), '#');
    EXPECT_EQ(memory.back(), '#');
  }
  char untouched = '#';
  EXPECT_STREQ(itoa(5, &untouched, 0), "");
  EXPECT_EQ(untouched, '#');
}

TEST(NumberTickets, IntegerFloatAndKeyFlag) {
  Ticket ticket({{"n", "42"}, {"neg", "-3"}, {"junk", "abc"}, {"lead", " 12x"}, {"empty", ""},
                 {"f", "1.5"}});
  struct Case {
    const char* key;
    unsigned present;
    int32_t integer;
    float real;
    int32_t absentFlag;
  };
  const Case cases[] = {
      {"n", 1, 42, 42.0f, 0},
      {"neg", 1, -3, -3.0f, 0},
      {"junk", 1, 0, 0.0f, 0},
      {"lead", 1, 12, 12.0f, 0},
      {"empty", 1, 0, 0.0f, 0},  // present even with an empty value
      {"f", 1, 1, 1.5f, 0},
      {"missing", 0, -1, -1.0f, 1},
  };
  for (const Case& c : cases) {
    int32_t integer = 777;
    EXPECT_EQ(GetTicketInteger(c.key, ticket.count(), ticket.options(), &integer, 4), c.present)
        << c.key;
    EXPECT_EQ(integer, c.integer) << c.key;
    float real = 777.0f;
    EXPECT_EQ(GetTicketFloat(c.key, ticket.count(), ticket.options(), &real, 4), c.present)
        << c.key;
    EXPECT_FLOAT_EQ(real, c.real) << c.key;
    int32_t flag = 777;
    EXPECT_EQ(CheckTicketKey(c.key, ticket.count(), ticket.options(), &flag, 4), 1u) << c.key;
    EXPECT_EQ(flag, c.absentFlag) << c.key;
  }
  // A destination too small for a number is left alone.
  int16_t small[2] = {5, 5};
  GetTicketInteger("n", ticket.count(), ticket.options(), small, 2);
  EXPECT_EQ(small[0], 5);
  EXPECT_EQ(small[1], 5);
}

TEST(StringTickets, DecodingAndConversionPerGetter) {
  const std::string longValue(40, 'a');
  const std::string hugeValue(1500, 'b');
  Ticket ticket({{"slash", "/72/105"},
                 {"kana", "\xE3\x81\x82"},
                 {"kanaBytes", "/227/129/130"},
                 {"long", longValue},
                 {"huge", hugeValue},
                 {"tilde", "a~b\\c"}});
  struct Case {
    const char* name;
    TicketGetter getter;
    const char* key;
    int32_t size;
    unsigned result;
    std::string expected;
  };
  const Case cases[] = {
      {"plain: no decoding", GetTicketString, "slash", 64, 1, "/72/105"},
      {"plain: Shift-JIS", GetTicketString, "kana", 64, 1, "\x82\xA0"},
      {"PrtLang: decoded", GetTicketStringConvertedToPrtLang, "slash", 64, 1, "Hi"},
      {"PrtLang: decoded bytes then Shift-JIS", GetTicketStringConvertedToPrtLang, "kanaBytes", 64,
       1, "\x82\xA0"},
      {"PrtLang: ASCII route", GetTicketStringConvertedToPrtLang, "tilde", 64, 1, "a~b\\c"},
      {"PrtLang: size 33 holds 32", GetTicketStringConvertedToPrtLang, "long", 33, 1,
       longValue.substr(0, 32)},
      {"PrtLang: work buffer cuts at 1023", GetTicketStringConvertedToPrtLang, "huge", 2048, 1,
       hugeValue.substr(0, 1023)},
      {"PrtLang: absent", GetTicketStringConvertedToPrtLang, "missing", 64, 0, ""},
      {"ForUTF8: decoded bytes stay UTF-8", GetTicketStringConvertedToPrtLangForUTF8, "kanaBytes",
       64, 1, "\xE3\x81\x82"},
      {"ForUTF8: kana cut at the end", GetTicketStringConvertedToPrtLangForUTF8, "kana", 3, 1,
       "\xE3\x81"},
      {"Length: Shift-JIS length", GetLengthOfTicketStringConvertedToPrtLang, "kana", 64, 2,
       "\x82\xA0"},
      {"Length: cut length", GetLengthOfTicketStringConvertedToPrtLang, "long", 33, 32,
       longValue.substr(0, 32)},
      {"LengthForUTF8: UTF-8 length", GetLengthOfTicketStringConvertedToPrtLangForUTF8,
       "kanaBytes", 64, 3, "\xE3\x81\x82"},
      {"PPD encoding: parenthesised", GetTicketStringConvertedToPPDEncodingString, "slash", 64, 1,
       "(Hi)"},
      {"PPD encoding: too small", GetTicketStringConvertedToPPDEncodingString, "slash", 4, 1, ""},
      {"PPD encoding: absent", GetTicketStringConvertedToPPDEncodingString, "missing", 64, 0, ""},
  };
  for (const Case& c : cases) {
    std::string buffer(static_cast<size_t>(c.size) + 1, 'x');
    unsigned result = c.getter(c.key, ticket.count(), ticket.options(), &buffer[0], c.size);
    EXPECT_EQ(result, c.result) << c.name;
    EXPECT_EQ(std::string(buffer.c_str()), c.expected) << c.name;
    // The whole destination is zero behind the text, and nothing past it.
    for (size_t i = c.expected.size(); i < static_cast<size_t>(c.size); ++i) {
      ASSERT_EQ(buffer[i], '\0') << c.name << " byte " << i;
    }
    EXPECT_EQ(buffer[static_cast<size_t>(c.size)], 'x') << c.name;
  }
}

TEST(NumberUpTickets, AttributeAndCommentTexts) {
  struct Case {
    const char* name;
    std::vector<std::pair<const char*, std::string>> values;
    const char* attribute;
    const char* comment;
  };
  const Case cases[] = {
      {"number-up 2", {{"number-up", "2"}}, "N2", "2"},
      {"number-up wins over the layout", {{"number-up", "6"}, {kRows, "2"}, {kColumns, "2"}},
       "N6", "6"},
      {"rows 2 columns 2", {{kRows, "2"}, {kColumns, "2"}}, "N4", "4"},
      {"rows 1 columns 1", {{kRows, "1"}, {kColumns, "1"}}, "1", "1"},
      {"nothing", {}, "1", "1"},
      {"rows alone", {{kRows, "3"}}, "N3", "3"},
      {"a single 1", {{kRows, "1"}}, "1", "1"},
      {"product 0 formats as nothing", {{kRows, "0"}, {kColumns, "5"}}, "N", ""},
      {"product too wide for two digits", {{kRows, "100"}, {kColumns, "100"}}, "N00", "00"},
      {"slash value decoded only without the N", {{"number-up", "/52"}}, "N/52", "4"},
      {"cut to the destination", {{"number-up", "123456789012"}}, "N12345678", "123456789"},
  };
  for (const Case& c : cases) {
    int count = 0;
    cups_option_t* options = nullptr;
    for (const auto& value : c.values) {
      count = cupsAddOption(value.first, value.second.c_str(), count, &options);
    }
    char attribute[11];
    std::memset(attribute, 'x', sizeof attribute);
    EXPECT_EQ(GetNumberUpTicketString("number-up", count, options, attribute, 10), 1u) << c.name;
    EXPECT_STREQ(attribute, c.attribute) << c.name;
    EXPECT_EQ(attribute[10], 'x') << c.name;
    char comment[11];
    std::memset(comment, 'x', sizeof comment);
    EXPECT_EQ(GetNumberUpTicketStringForComment("number-up", count, options, comment, 10), 1u)
        << c.name;
    EXPECT_STREQ(comment, c.comment) << c.name;
    EXPECT_EQ(comment[10], 'x') << c.name;
    cupsFreeOptions(count, options);
  }
}
