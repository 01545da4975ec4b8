#include "secure/base64.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

namespace {

std::vector<uint8_t> B(const std::string& text) {
  return std::vector<uint8_t>(text.begin(), text.end());
}

TEST(Base64Codec, PublishedVectorsBothWays) {
  const struct {
    const char* data;
    const char* text;
  } cases[] = {{"f", "Zg=="},        {"fo", "Zm8="},        {"foo", "Zm9v"},
               {"foob", "Zm9vYg=="}, {"fooba", "Zm9vYmE="}, {"foobar", "Zm9vYmFy"}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.data);
    const std::vector<uint8_t> data = B(c.data);
    std::string text(16, '#');
    int32_t length = -7;
    ASSERT_EQ(XSPBinToB64(data.data(), static_cast<int32_t>(data.size()), text.data(), &length, 16),
              kXSPSuccess);
    EXPECT_EQ(text.substr(0, static_cast<size_t>(length)), c.text);
    EXPECT_EQ(text[static_cast<size_t>(length)], '#');  // no terminator written

    std::vector<uint8_t> decoded(16, 0xEE);
    ASSERT_EQ(
        XSPB64ToBin(c.text, static_cast<int32_t>(strlen(c.text)), decoded.data(), &length, 16),
        kXSPSuccess);
    decoded.resize(static_cast<size_t>(length));
    EXPECT_EQ(decoded, data);
  }
}

// Every sealed password field and every stored password text of the
// password tests goes through the codec against independent tools too.
TEST(Base64Codec, EncoderResultCodesAndRoomNeeded) {
  const std::vector<uint8_t> data(2000, 0x5A);
  const struct {
    const char* name;
    bool withData, withOut, withLength;
    int32_t dataLength, capacity;
    int32_t result, reported;  // reported: *outLength afterwards (-99: untouched)
  } cases[] = {
      {"no data", false, true, true, 4, 100, kXSPMissingPointer, -99},
      {"no output with room", true, false, true, 4, 100, kXSPMissingPointer, -99},
      {"no output, asking the room", true, false, true, 4, 0, kXSPNoRoom, 8},
      {"empty data", true, true, true, 0, 100, kXSPBadLength, -99},
      {"negative capacity", true, true, true, 4, -1, kXSPBadLength, -99},
      {"room so large it overflows", true, true, true, INT32_MAX, 100, kXSPBadLength, -99},
      {"one byte", true, true, true, 1, 0, kXSPNoRoom, 4},
      {"empty-payload blob", true, true, true, 368, 0, kXSPNoRoom, 492},
      {"239-byte password blob", true, true, true, 592, 0, kXSPNoRoom, 792},
      {"the unfinished blob", true, true, true, 2000, 2000, kXSPNoRoom, 2668},
      {"exact room", true, true, true, 4, 8, kXSPSuccess, 8},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    std::string out(2100, '#');
    int32_t length = -99;
    const int32_t result =
        XSPBinToB64(c.withData ? data.data() : nullptr, c.dataLength,
                    c.withOut ? out.data() : nullptr, c.withLength ? &length : nullptr, c.capacity);
    EXPECT_EQ(result, c.result);
    EXPECT_EQ(length, c.reported);
    if (result != kXSPSuccess) {
      EXPECT_EQ(out, std::string(2100, '#'));
    }
  }
}

TEST(Base64Codec, DecoderResultCodesAndRoomNeeded) {
  const struct {
    const char* name;
    const char* text;  // null: no text
    int32_t textLength;
    bool withOut, withLength;
    int32_t capacity;
    int32_t result, reported;
  } cases[] = {
      {"no text", nullptr, 0, true, true, 10, kXSPMissingPointer, -99},
      {"no output with room", "Zm9v", 4, false, true, 10, kXSPMissingPointer, -99},
      {"no output, asking the room", "Zm9vYg==", 8, false, true, 0, kXSPNoRoom, 4},
      {"empty text", "", 0, true, true, 10, kXSPBadLength, -99},
      {"length not a multiple of 4", "Zm9vY", 5, true, true, 10, kXSPBadLength, -99},
      {"negative capacity", "Zm9v", 4, true, true, -1, kXSPBadLength, -99},
      {"one pad", "Zm9vYmE=", 8, true, true, 4, kXSPNoRoom, 5},
      {"two pads, exact room", "Zm9vYg==", 8, true, true, 4, kXSPSuccess, 4},
      {"trailing blank hides the pads", "Zg==    ", 8, true, true, 0, kXSPNoRoom, 6},
      {"stored password of 240 bytes", nullptr, 344, true, true, 255, kXSPNoRoom, 256},
  };
  const std::string long344 = std::string(342, 'A') + "==";
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    const char* text = c.text;
    if (c.textLength == 344) text = long344.c_str();
    std::vector<uint8_t> out(300, 0xEE);
    int32_t length = -99;
    const int32_t result = XSPB64ToBin(text, c.textLength, c.withOut ? out.data() : nullptr,
                                       c.withLength ? &length : nullptr, c.capacity);
    EXPECT_EQ(result, c.result);
    EXPECT_EQ(length, c.reported);
    if (result != kXSPSuccess) {
      EXPECT_EQ(out, std::vector<uint8_t>(300, 0xEE));
    }
  }
}

TEST(Base64Codec, DecoderIsLenient) {
  const struct {
    const char* name;
    std::string text;
    int32_t textLength;  // 0: the text's size
    int32_t capacity;
    std::vector<uint8_t> bytes;
  } cases[] = {
      {"line breaks and tabs between groups", "Zm9v\r\n\t YmFy", 0, 100, B("foobar")},
      {"blanks inside a group", "Z m 9 v ", 0, 100, B("foo")},
      {"trailing blanks after the pads", "Zg==    ", 0, 100, B("f")},
      {"character outside the alphabet", "Zm*v", 0, 100, {0x66, 0x7F, 0xEF}},
      {"pad sign in front", "=AAA", 0, 100, {0xFC, 0x00, 0x00}},
      {"missing fourth character", std::string("Zm9\0", 4), 0, 100, {0x66}},
      {"text ends before its length", std::string("Zm8=\0ZZZ", 8), 0, 100, B("fo")},
      {"length shorter than the text", "Zm9vYmFy", 4, 100, B("foo")},
      {"more bytes than the pads admit stay within capacity", "Zm9v====", 0, 2, B("fo")},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    std::vector<uint8_t> out(20, 0xEE);
    int32_t length = -99;
    const int32_t textLength =
        c.textLength != 0 ? c.textLength : static_cast<int32_t>(c.text.size());
    ASSERT_EQ(XSPB64ToBin(c.text.c_str(), textLength, out.data(), &length, c.capacity),
              kXSPSuccess);
    ASSERT_EQ(length, static_cast<int32_t>(c.bytes.size()));
    EXPECT_EQ(std::vector<uint8_t>(out.begin(), out.begin() + length), c.bytes);
    EXPECT_EQ(out[static_cast<size_t>(length)], 0xEE);
  }
}

}  // namespace
