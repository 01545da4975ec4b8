// Sealed password fields read back: the blob is described from its layout,
// and the test recipient key opens what the filter sealed.
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <vector>

#include "inspect/sealed_field.h"
#include "sealed_blob.h"
#include "secure/base64.h"
#include "secure/key_material.h"
#include "secure/sec_blob.h"

namespace {

std::string ReadText(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::stringstream text;
  text << in.rdbuf();
  return text.str();
}

std::vector<uint8_t> Seal(const std::string& payload) {
  std::vector<uint8_t> blob(2000);
  uint32_t length = static_cast<uint32_t>(blob.size());
  EXPECT_EQ(Encode_Random(reinterpret_cast<const uint8_t*>(payload.data()),
                          static_cast<uint32_t>(payload.size()), blob.data(), &length),
            kSecBlobSuccess);
  blob.resize(length);
  return blob;
}

std::string Field(const std::vector<uint8_t>& blob) {
  std::string text(blob.size() / 3 * 4 + 8, '\0');
  int32_t length = 0;
  XSPBinToB64(blob.data(), static_cast<int32_t>(blob.size()), text.data(), &length,
              static_cast<int32_t>(text.size()));
  text.resize(static_cast<size_t>(length));
  return text;
}

OpeningKey TestKey(bool keep) { return {ReadText(TestPrivateKeyPath2048()), keep}; }

// The field texts the filter makes: the lengths follow the payload in
// 16-byte steps, and the test key opens every one.
TEST(InspectSealedField, DescribesAndOpensWhatTheFilterSeals) {
  const struct {
    std::string payload;
    bool utf8;
    size_t characters;
    size_t blob;
    bool printable;
  } kCases[] = {
      {"", true, 492, 368, true},
      {"1234", true, 492, 368, true},
      {"0123456789abcdef", true, 512, 384, true},
      {std::string(239, 'p'), true, 792, 592, true},
      {"tab\there", true, 492, 368, false},
      {"\xe3\x81\x82", true, 492, 368, true},    // UTF-8 text on a UTF-8 printer
      {"\xe3\x81\x82", false, 492, 368, false},  // not Shift-JIS text
      {"\x82\xa0", false, 492, 368, true},       // Shift-JIS text on a legacy printer
  };
  for (const auto& c : kCases) {
    const std::string field = Field(Seal(c.payload));
    SealedFieldReport report = InspectSealedField(field, TestKey(false), c.utf8);
    EXPECT_EQ(report.characters, c.characters);
    EXPECT_TRUE(report.base64);
    EXPECT_TRUE(report.blob) << report.layoutProblem;
    EXPECT_EQ(report.blobBytes, c.blob);
    EXPECT_EQ(report.keyType, 0u);
    EXPECT_EQ(report.wrappedKeyLength, 256u);
    EXPECT_TRUE(report.digestMatches);
    EXPECT_TRUE(report.opened) << report.openError;
    EXPECT_EQ(report.payloadLength, c.payload.size());
    EXPECT_EQ(report.printable, c.printable) << c.payload;
    EXPECT_TRUE(report.payload.empty()) << "kept without being asked";

    report = InspectSealedField(field, TestKey(true), c.utf8);
    EXPECT_EQ(report.payload, c.payload);
  }
}

TEST(InspectSealedField, DescriptionNamesTheBlobNeverItsText) {
  const std::string field = Field(Seal("1234"));
  const SealedFieldReport report = InspectSealedField(field, {}, true);
  EXPECT_EQ(DescribeSealedField(report),
            "sealed, 492 characters, blob 368 bytes, key type 0, digest matches the built-in "
            "recipient key");
  EXPECT_FALSE(report.openAttempted);
  EXPECT_EQ(DescribeOpening(report), "");
}

// Damage to the blob is named; a field that is not one is told apart from
// one that does not open.
TEST(InspectSealedField, NamesWhatIsWrongWithABlob) {
  const std::vector<uint8_t> good = Seal("1234");
  auto with = [&](size_t at, uint8_t byte) {
    std::vector<uint8_t> blob = good;
    blob[at] = byte;
    return Field(blob);
  };
  std::vector<uint8_t> shortened(good.begin(), good.begin() + 40);
  std::vector<uint8_t> longer = good;
  longer.push_back(0);
  longer.push_back(0);
  longer.push_back(0);
  const struct {
    std::string field;
    const char* description;
  } kCases[] = {
      {"3YbDtlJWKPh+/9c9e5YYPA==",
       "not a sealed blob: 24 characters, 16 bytes, shorter than the 80-byte blob header"},
      {"abc", "not sealed: 3 characters that are not base64"},
      {"ab!d", "not sealed: 4 characters that are not base64"},
      {"a===", "not sealed: 4 characters that are not base64"},
      {Field(shortened),
       "not a sealed blob: 56 characters, 40 bytes, shorter than the 80-byte blob header"},
      {with(0, 0x09),
       "not a sealed blob: 492 characters, 368 bytes, does not start with the blob's bytes 08 01"},
      {with(10, 7), "not a sealed blob: 492 characters, 368 bytes, unknown AES mode 7"},
      {with(11, 2), "not a sealed blob: 492 characters, 368 bytes, unknown key type 2"},
      {with(6, 0x71),
       "not a sealed blob: 492 characters, 368 bytes, the header gives 369 bytes, the blob has "
       "368"},
      {Field(longer),
       "not a sealed blob: 496 characters, 371 bytes, the header gives 368 bytes, the blob has "
       "371"},
      {with(2, 17),
       "not a sealed blob: 492 characters, 368 bytes, the ciphertext is not whole AES blocks"},
      {with(11, 1),
       "sealed, 492 characters, blob 368 bytes, key type 1, digest does not match the built-in "
       "recipient key"},
      {with(12, 1),
       "sealed, 492 characters, blob 368 bytes, key type 0, digest matches the built-in recipient "
       "key, bytes 12 to 15 not zero"},
      {with(20, good[20] ^ 1),
       "sealed, 492 characters, blob 368 bytes, key type 0, digest does not match the built-in "
       "recipient key"},
  };
  for (const auto& c : kCases) {
    EXPECT_EQ(DescribeSealedField(InspectSealedField(c.field, {}, true)), c.description);
  }
}

TEST(InspectSealedField, SaysWhyABlobDoesNotOpen) {
  const std::vector<uint8_t> good = Seal("1234");
  std::vector<uint8_t> wrappedDamaged = good;
  wrappedDamaged[100] ^= 0x40;
  std::vector<uint8_t> cipherDamaged = good;
  cipherDamaged.back() ^= 0x01;  // the padding no longer verifies, or the text is another
  const struct {
    std::vector<uint8_t> blob;
    std::string key;
    const char* start;
  } kCases[] = {
      {good, ReadText(TestPrivateKeyPath3072()), "does not open: the wrapped key does not open"},
      {wrappedDamaged, ReadText(TestPrivateKeyPath2048()),
       "does not open: the wrapped key does not open"},
  };
  for (const auto& c : kCases) {
    const SealedFieldReport report = InspectSealedField(Field(c.blob), {c.key, true}, true);
    EXPECT_TRUE(report.openAttempted);
    EXPECT_FALSE(report.opened);
    EXPECT_EQ(DescribeOpening(report).rfind(c.start, 0), 0u) << DescribeOpening(report);
    EXPECT_TRUE(report.payload.empty());
  }
  // A damaged last block either fails its padding or yields other bytes.
  const SealedFieldReport damaged =
      InspectSealedField(Field(cipherDamaged), {ReadText(TestPrivateKeyPath2048()), true}, true);
  EXPECT_TRUE(!damaged.opened || damaged.payload != "1234");
}

}  // namespace
