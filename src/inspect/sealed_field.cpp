#include "inspect/sealed_field.h"

#include <cstring>
#include <vector>

#include "inspect/text_display.h"
#include "platform/crypto.h"
#include "platform/crypto_private_key.h"
#include "secure/base64.h"
#include "secure/key_material.h"
#include "secure/sec_blob.h"

namespace {

// Longer text cannot be a field the filter wrote (the field buffers hold
// 2048 bytes); it is not decoded at all.
constexpr size_t kLongestField = 1 << 16;
constexpr size_t kAesKeyLength = 32;

uint32_t LE32(const uint8_t* at) {
  return uint32_t{at[0]} | uint32_t{at[1]} << 8 | uint32_t{at[2]} << 16 | uint32_t{at[3]} << 24;
}

bool StrictBase64(std::string_view text) {
  if (text.empty() || text.size() % 4 != 0) return false;
  size_t padding = 0;
  while (padding < 2 && text[text.size() - 1 - padding] == '=') ++padding;
  for (size_t i = 0; i + padding < text.size(); ++i) {
    if (std::strchr(B64CHR, text[i]) == nullptr || text[i] == '\0') return false;
  }
  return true;
}

// Checks the layout and fills the header fields; false with the reason.
bool ReadLayout(const std::vector<uint8_t>& blob, SealedFieldReport* report) {
  if (blob.size() < kSecBlobHeaderLength) {
    report->layoutProblem =
        "shorter than the " + std::to_string(kSecBlobHeaderLength) + "-byte blob header";
    return false;
  }
  if (blob[0] != kSecBlobMagic[0] || blob[1] != kSecBlobMagic[1]) {
    report->layoutProblem = "does not start with the blob's bytes 08 01";
    return false;
  }
  report->cipherLength = LE32(&blob[kSecBlobCipherLengthOffset]);
  report->totalLength = LE32(&blob[kSecBlobTotalLengthOffset]);
  report->aesMode = blob[kSecBlobAesModeOffset];
  report->keyType = blob[kSecBlobKeyTypeOffset];
  report->reservedZero = LE32(&blob[kSecBlobReservedOffset]) == 0;
  uint32_t ivLength = 0;
  uint32_t tagLength = 0;
  if (report->aesMode == kSecBlobAesModeCBC) {
    ivLength = kSecBlobCbcIvLength;
  } else if (report->aesMode == kSecBlobAesModeReserved) {
    ivLength = kSecBlobReservedModeIvLength;
    tagLength = kSecBlobReservedModeTagLength;
  } else {
    report->layoutProblem = "unknown AES mode " + std::to_string(report->aesMode);
    return false;
  }
  if (report->keyType != kSecBlobKeyType2048 && report->keyType != kSecBlobKeyType3072) {
    report->layoutProblem = "unknown key type " + std::to_string(report->keyType);
    return false;
  }
  if (report->totalLength != blob.size()) {
    report->layoutProblem = "the header gives " + std::to_string(report->totalLength) +
                            " bytes, the blob has " + std::to_string(blob.size());
    return false;
  }
  const uint64_t fixed =
      uint64_t{kSecBlobHeaderLength} + ivLength + tagLength + report->cipherLength;
  if (fixed >= report->totalLength) {
    report->layoutProblem = "no room for a wrapped key";
    return false;
  }
  report->wrappedKeyLength = static_cast<uint32_t>(report->totalLength - fixed);
  if (report->aesMode == kSecBlobAesModeCBC &&
      (report->cipherLength == 0 || report->cipherLength % kAesBlockLength != 0)) {
    report->layoutProblem = "the ciphertext is not whole AES blocks";
    return false;
  }
  return true;
}

bool DigestMatches(const std::vector<uint8_t>& blob, uint32_t keyType) {
  const uint8_t* builtIn =
      keyType == kSecBlobKeyType2048 ? pubkey2048_OFFICIAL_SHA256 : pubkey3072_OFFICIAL_SHA256;
  return std::memcmp(&blob[kSecBlobDigestOffset], builtIn, kSecBlobDigestLength) == 0;
}

bool Printable(const std::string& payload, bool utf8) {
  for (unsigned char c : payload) {
    if (c < 0x20 || c == 0x7F) return false;
  }
  return IsValidText(payload, utf8);
}

// Unwraps the content key, derives the AES key and decrypts. False with the
// reason in report->openError.
bool Open(const std::vector<uint8_t>& blob, const OpeningKey& key, bool utf8,
          SealedFieldReport* report) {
  if (report->aesMode != kSecBlobAesModeCBC) {
    report->openError = "AES mode 0 has no cipher";
    return false;
  }
  const uint8_t* wrapped = &blob[kSecBlobHeaderLength];
  const uint8_t* iv = wrapped + report->wrappedKeyLength;
  const uint8_t* cipher = iv + kSecBlobCbcIvLength;
  std::vector<uint8_t> contentKey;
  CryptoError error;
  if (!CryptoRsaOaepSha256Decrypt(key.privateKeyPem, wrapped, report->wrappedKeyLength, &contentKey,
                                  &error)) {
    report->openError = "the wrapped key does not open with this key: " + error.description;
    return false;
  }
  uint8_t aesKey[kAesKeyLength];
  const bool derived = CryptoHmacSha256(contentKey.data(), contentKey.size(),
                                        &blob[kSecBlobSaltOffset], kSecBlobSaltLength, aesKey);
  CryptoCleanse(contentKey.data(), contentKey.size());
  if (!derived) {
    report->openError = "the AES key could not be derived";
    return false;
  }
  std::vector<uint8_t> plain(report->cipherLength);
  size_t plainLength = 0;
  const int32_t status =
      CryptoAesCbcDecrypt(aesKey, sizeof aesKey, iv, cipher, report->cipherLength, plain.data(),
                          plain.size(), &plainLength);
  CryptoCleanse(aesKey, sizeof aesKey);
  if (status != kCipherSuccess) {
    CryptoCleanse(plain.data(), plain.size());
    report->openError = "the payload does not decrypt (status " + std::to_string(status) + ")";
    return false;
  }
  const std::string payload(reinterpret_cast<const char*>(plain.data()), plainLength);
  CryptoCleanse(plain.data(), plain.size());
  report->payloadLength = payload.size();
  report->printable = Printable(payload, utf8);
  if (key.keepPayload) report->payload = payload;
  return true;
}

}  // namespace

SealedFieldReport InspectSealedField(std::string_view text, const OpeningKey& key, bool utf8) {
  SealedFieldReport report;
  report.characters = text.size();
  if (text.size() > kLongestField || !StrictBase64(text)) return report;
  report.base64 = true;
  const int32_t length = static_cast<int32_t>(text.size());
  std::vector<uint8_t> blob(text.size() / 4 * 3);
  int32_t decoded = 0;
  const std::string terminated(text);
  if (XSPB64ToBin(terminated.c_str(), length, blob.data(), &decoded,
                  static_cast<int32_t>(blob.size())) != kXSPSuccess) {
    report.base64 = false;
    return report;
  }
  blob.resize(static_cast<size_t>(decoded));
  report.blobBytes = blob.size();
  report.blob = ReadLayout(blob, &report);
  if (!report.blob) return report;
  report.digestMatches = DigestMatches(blob, report.keyType);
  if (key.privateKeyPem.empty()) return report;
  report.openAttempted = true;
  report.opened = Open(blob, key, utf8, &report);
  return report;
}

std::string DescribeSealedField(const SealedFieldReport& report) {
  const std::string characters = std::to_string(report.characters) + " characters";
  if (!report.base64) return "not sealed: " + characters + " that are not base64";
  if (!report.blob) {
    return "not a sealed blob: " + characters + ", " + std::to_string(report.blobBytes) +
           " bytes, " + report.layoutProblem;
  }
  std::string text = "sealed, " + characters + ", blob " + std::to_string(report.blobBytes) +
                     " bytes, key type " + std::to_string(report.keyType) + ", digest " +
                     (report.digestMatches ? "matches" : "does not match") +
                     " the built-in recipient key";
  if (report.aesMode != kSecBlobAesModeCBC) text += ", AES mode " + std::to_string(report.aesMode);
  if (!report.reservedZero) text += ", bytes 12 to 15 not zero";
  return text;
}

std::string DescribeOpening(const SealedFieldReport& report) {
  if (!report.openAttempted) return "";
  if (!report.opened) return "does not open: " + report.openError;
  return "opens: payload " + std::to_string(report.payloadLength) + " bytes, " +
         (report.printable ? "printable" : "not printable");
}
