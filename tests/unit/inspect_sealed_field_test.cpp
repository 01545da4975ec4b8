// Sealed password fields read back: what is wrong with a damaged blob is
// named, and why it does not open (whole streams only carry sound blobs).
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "inspect/sealed_field.h"
#include "sealed_blob.h"
#include "secure/base64.h"
#include "secure/sec_blob.h"

namespace {

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

TEST(InspectSealedField, NamesWhatIsWrongWithABlob) {
  const std::vector<uint8_t> good = Seal("1234");
  auto with = [&](size_t at, uint8_t byte) {
    std::vector<uint8_t> blob = good;
    blob[at] = byte;
    return Field(blob);
  };
  std::vector<uint8_t> longer = good;
  longer.insert(longer.end(), 3, 0);
  const std::string damaged = "not a sealed blob: 492 characters, 368 bytes, ";
  const struct {
    std::string field;
    std::string description;
  } kCases[] = {
      {"abc", "not sealed: 3 characters that are not base64"},
      {"a===", "not sealed: 4 characters that are not base64"},
      {Field(std::vector<uint8_t>(good.begin(), good.begin() + 40)),
       "not a sealed blob: 56 characters, 40 bytes, shorter than the 80-byte blob header"},
      {with(0, 0x09), damaged + "does not start with the blob's bytes 08 01"},
      {with(1, 0x02), damaged + "does not start with the blob's bytes 08 01"},
      {with(10, 7), damaged + "unknown AES mode 7"},
      {with(11, 2), damaged + "unknown key type 2"},
      {with(6, 0x71), damaged + "the header gives 369 bytes, the blob has 368"},
      // The lengths are four bytes each, least significant first.
      {with(8, 1), damaged + "the header gives 65904 bytes, the blob has 368"},
      {with(9, 1), damaged + "the header gives 16777584 bytes, the blob has 368"},
      {Field(longer),
       "not a sealed blob: 496 characters, 371 bytes, the header gives 368 bytes, the blob has 371"},
      {with(2, 17), damaged + "the ciphertext is not whole AES blocks"},
      {with(12, 1),
       "sealed, 492 characters, blob 368 bytes, key type 0, digest matches the built-in recipient "
       "key, bytes 12 to 15 not zero"},
  };
  for (const auto& c : kCases) {
    EXPECT_EQ(DescribeSealedField(InspectSealedField(c.field, {}, true)), c.description);
  }
}

TEST(InspectSealedField, SaysWhyABlobDoesNotOpen) {
  const std::vector<uint8_t> good = Seal("1234");
  std::vector<uint8_t> wrappedDamaged = good;
  wrappedDamaged[100] ^= 0x40;
  for (const auto& [blob, key] : {std::pair(good, TestPrivateKeyPath3072()),
                                  std::pair(wrappedDamaged, TestPrivateKeyPath2048())}) {
    const std::vector<uint8_t> pem = ReadBytes(key);
    const SealedFieldReport report =
        InspectSealedField(Field(blob), {std::string(pem.begin(), pem.end()), true}, true);
    EXPECT_FALSE(report.opened);
    EXPECT_EQ(DescribeOpening(report).rfind("does not open: the wrapped key does not open", 0), 0u)
        << DescribeOpening(report);
    EXPECT_TRUE(report.payload.empty());
  }
}

}  // namespace
