#include "secure/sec_blob.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "platform/crypto.h"
#include "sealed_blob.h"
#include "secure/key_material.h"
#include "test_support.h"

namespace {

std::vector<uint8_t> Pattern(size_t length, uint8_t seed) {
  std::vector<uint8_t> bytes(length);
  for (size_t i = 0; i < length; ++i) bytes[i] = static_cast<uint8_t>(seed + i * 7);
  return bytes;
}

bool EndsWith(const std::string& text, const std::string& tail) {
  return text.size() >= tail.size() &&
         text.compare(text.size() - tail.size(), tail.size(), tail) == 0;
}

std::vector<uint8_t> Bytes(const uint8_t* data, size_t length) {
  return std::vector<uint8_t>(data, data + length);
}

// The SHA-256 of the DER public half of a private key, by the openssl tool.
std::vector<uint8_t> PublicKeyDigest(const std::string& privateKeyPath) {
  ScratchDir scratch;
  std::string diagnostics;
  if (!RunOpenssl({"pkey", "-in", privateKeyPath, "-pubout", "-outform", "DER", "-out",
                   scratch.File("der")},
                  &diagnostics) ||
      !RunOpenssl(
          {"dgst", "-sha256", "-binary", "-out", scratch.File("digest"), scratch.File("der")},
          &diagnostics)) {
    ADD_FAILURE() << diagnostics;
  }
  return ReadBytes(scratch.File("digest"));
}

struct Sealed {
  uint32_t result = 0;
  std::string printed;
  std::vector<uint8_t> blob;
};

// Seals with the blob builder, or through the filter's entry point Encode_Random
// when keyText is null.
Sealed Seal(uint32_t aesMode, uint32_t keyType, const std::vector<uint8_t>& payload,
            const char* keyText = RSA_PUBKEY_2048_OFFICIAL) {
  Sealed sealed;
  sealed.blob.assign(payload.size() + 1024, 0xEE);
  uint32_t length = static_cast<uint32_t>(sealed.blob.size());
  const auto payloadLength = static_cast<uint32_t>(payload.size());
  sealed.printed = CaptureStdout([&] {
    sealed.result = keyText == nullptr
                        ? Encode_Random(payload.data(), payloadLength, sealed.blob.data(), &length)
                        : SecBlobEnc_KT_Encrypt(aesMode, keyType, payload.data(), payloadLength,
                                                keyText, static_cast<uint32_t>(strlen(keyText)),
                                                sealed.blob.data(), &length);
  });
  if (sealed.result == kSecBlobSuccess) sealed.blob.resize(length);
  return sealed;
}

// ---- Interoperability: what the filter seals, the openssl tool opens ------

// The blob opens with the test private key; the digest in its header is
// that of the test key of its key type, so the built-in key material is the
// key directory's test key pair.
TEST(SealedBlobInterop, OpensWithTheOpensslToolAndTheTestKey) {
  const std::vector<uint8_t> digest2048 = PublicKeyDigest(TestPrivateKeyPath2048());
  const std::vector<uint8_t> digest3072 = PublicKeyDigest(TestPrivateKeyPath3072());
  ASSERT_EQ(digest2048.size(), 32u);
  ASSERT_EQ(digest3072.size(), 32u);
  struct Case {
    bool entryPoint;  // Encode_Random: mode 1, key type 0, the built-in key
    uint32_t keyType;
    size_t payloadLength;
    uint32_t blobLength;
  };
  const Case cases[] = {
      {false, 0, 0, 368},  {false, 0, 15, 368}, {false, 0, 16, 384},      {false, 0, 239, 592},
      {false, 1, 40, 400}, {true, 0, 31, 384},  {false, 0, 99500, 99856},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE("payload of " + std::to_string(c.payloadLength) + " bytes, key type " +
                 std::to_string(c.keyType) + (c.entryPoint ? ", Encode_Random" : ""));
    const std::vector<uint8_t> payload = Pattern(c.payloadLength, 3);
    const Sealed sealed = Seal(kSecBlobAesModeCBC, c.keyType, payload,
                               c.entryPoint ? nullptr : RSA_PUBKEY_2048_OFFICIAL);
    ASSERT_EQ(sealed.result, kSecBlobSuccess) << sealed.printed;
    EXPECT_EQ(sealed.printed, "");
    ASSERT_EQ(sealed.blob.size(), c.blobLength);

    OpenedBlob opened;
    std::string error;
    ASSERT_TRUE(OpenSealedBlob(sealed.blob, &opened, &error)) << error;
    EXPECT_EQ(opened.payload, std::string(payload.begin(), payload.end()));
    EXPECT_EQ(opened.Part("magic"), std::vector<uint8_t>({0x08, 0x01}));
    EXPECT_EQ(opened.Number("cipher_length"), 16 * (c.payloadLength / 16 + 1));
    EXPECT_EQ(opened.Number("total_length"), c.blobLength);
    EXPECT_EQ(opened.Number("aes_mode"), 1u);
    EXPECT_EQ(opened.Number("key_type"), c.keyType);
    EXPECT_EQ(opened.Number("reserved"), 0u);
    EXPECT_EQ(opened.Part("wrapped_key").size(), 256u);
    EXPECT_EQ(opened.Part("digest"), c.keyType == 1 ? digest3072 : digest2048);
  }
}

// ---- Limits and refusals -----------------------------------------------------

TEST(SealedBlobRefusals, ResultAndMessageLeaveTheOutputUntouched) {
  struct Case {
    const char* name;
    uint32_t aesMode;
    uint32_t keyType;
    uint32_t length;
    const char* keyText;
    uint32_t result;
    const char* printedHead;  // the whole text unless printedTail is set
    const char* printedTail;
    uint32_t room = 700;  // 16 bytes seal into 384
  };
  const char* official = RSA_PUBKEY_2048_OFFICIAL;
  const Case cases[] = {
      {"one byte over the limit", 1, 0, 99501, official, 2, "ERROR[88]: too long bufLen [99501].\n",
       nullptr},
      {"length compared unsigned", 1, 0, 0xFFFFFFFFu, official, 2,
       "ERROR[88]: too long bufLen [-1].\n", nullptr},
      {"limit checked before the key type", 1, 7, 99501, official, 2,
       "ERROR[88]: too long bufLen [99501].\n", nullptr},
      {"key type 2", 1, 2, 16, official, 2, "ERROR[106]: invalid key type[2].\n", nullptr},
      {"key type checked before the AES mode", 0, 3, 16, official, 2,
       "ERROR[106]: invalid key type[3].\n", nullptr},
      {"AES mode 0", 0, 0, 16, official, 99,
       "AES Error. Unsupported AES Mode.\nERROR[161]: AES Encrypt failed[2].\n", nullptr},
      {"AES mode 2", 2, 1, 0, official, 99,
       "AES Error. Unsupported AES Mode.\nERROR[161]: AES Encrypt failed[2].\n", nullptr},
      {"key text not base64", 1, 0, 16, "MIIB*IjAN", 99, "RSA Error[-50] ",
       "ERROR[150]: RSA Encrypt failed[99].\n"},
      {"empty key text", 1, 0, 16, "", 99, "RSA Error[-50] ",
       "ERROR[150]: RSA Encrypt failed[99].\n"},
      {"key text decodes to no key", 1, 0, 16, "QUJDRA==\n", 99, "RSA Error[",
       "ERROR[150]: RSA Encrypt failed[99].\n"},
      {"room one byte short of the blob", 1, 0, 16, official, 2, "", nullptr, 383},
  };
  std::vector<uint8_t> payload(16, 0x41);
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    std::vector<uint8_t> out(700, 0xEE);
    uint32_t outLength = c.room;
    uint32_t result = 0;
    const std::string printed = CaptureStdout([&] {
      result =
          SecBlobEnc_KT_Encrypt(c.aesMode, c.keyType, payload.data(), c.length, c.keyText,
                                static_cast<uint32_t>(strlen(c.keyText)), out.data(), &outLength);
    });
    EXPECT_EQ(result, c.result);
    if (c.printedTail == nullptr) {
      EXPECT_EQ(printed, c.printedHead);
    } else {
      EXPECT_EQ(printed.compare(0, strlen(c.printedHead), c.printedHead), 0) << printed;
      EXPECT_TRUE(EndsWith(printed, c.printedTail)) << printed;
    }
    EXPECT_EQ(outLength, c.room);
    EXPECT_EQ(out, std::vector<uint8_t>(700, 0xEE));
  }
}

// ---- Storage cipher ----------------------------------------------------------

std::string StorageKeyHex(const uint8_t* keyA, size_t keyALength, const uint8_t* keyB,
                          size_t keyBLength) {
  ScratchDir scratch;
  std::string diagnostics;
  if (!WriteBytes(scratch.File("b"), Bytes(keyB, keyBLength)) ||
      !RunOpenssl({"dgst", "-sha256", "-mac", "HMAC", "-macopt", "hexkey:" + Hex(keyA, keyALength),
                   "-binary", "-out", scratch.File("key"), scratch.File("b")},
                  &diagnostics)) {
    ADD_FAILURE() << diagnostics;
    return "";
  }
  return Hex(ReadBytes(scratch.File("key")));
}

// What the storage cipher seals, the openssl tool opens (the other way
// round, every stored password text of the password tests is the tool's).
TEST(StorageCipher, InteroperatesWithTheOpensslTool) {
  const std::string key = StorageKeyHex(seed1, 32, seed2, 32);
  ASSERT_EQ(key.size(), 64u);
  for (size_t length : {0, 16, 239}) {
    SCOPED_TRACE(length);
    const std::vector<uint8_t> payload = Pattern(length, 11);
    ScratchDir scratch;
    std::string diagnostics;
    std::vector<uint8_t> sealed(length + 32, 0);
    uint32_t sealedLength = static_cast<uint32_t>(sealed.size());
    ASSERT_EQ(Encode_Storage(payload.data(), static_cast<uint32_t>(length), seed1, 32, seed2, 32,
                             seed3, 16, sealed.data(), &sealedLength),
              0u);
    EXPECT_EQ(sealedLength, 16 * (length / 16 + 1));
    sealed.resize(sealedLength);
    ASSERT_TRUE(WriteBytes(scratch.File("ours"), sealed));
    ASSERT_TRUE(RunOpenssl({"enc", "-d", "-aes-256-cbc", "-K", key, "-iv", Hex(seed3, 16), "-in",
                            scratch.File("ours"), "-out", scratch.File("opened")},
                           &diagnostics))
        << diagnostics;
    EXPECT_EQ(ReadBytes(scratch.File("opened")), payload);
  }
}

TEST(StorageCipher, FailuresPrintTheirNumberedMessage) {
  static const uint8_t keyA[32] = {0xA1};
  static const uint8_t keyB[32] = {0xB2};
  static const uint8_t iv[16] = {0xC3};
  struct Case {
    const char* name;
    decltype(&Encode_Storage) operation;
    std::vector<uint8_t> in;
    uint32_t room;
    const char* printed;
  };
  const Case cases[] = {
      {"encrypt into too little room", Encode_Storage, Pattern(16, 0), 16,
       "AES Error[-4301]\nERROR[52]: AES Encrypt failed[99].\n"},
      {"decrypt a partial block", Decode_Storage, Pattern(33, 0), 255,
       "AES Error[-4303]\nERROR[97]: AES Decrypt failed[99].\n"},
      // Nothing to decrypt: no padding that verifies.
      {"decrypt nothing",
       Decode_Storage,
       {},
       255,
       "AES Error[-4304]\nERROR[97]: AES Decrypt failed[99].\n"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    std::vector<uint8_t> out(255, 0xEE);
    uint32_t outLength = c.room;
    uint32_t result = 0;
    const std::string printed = CaptureStdout([&] {
      result = c.operation(c.in.data(), static_cast<uint32_t>(c.in.size()), keyA, 32, keyB, 32, iv,
                           16, out.data(), &outLength);
    });
    EXPECT_EQ(result, kSecBlobCryptoFailure);
    EXPECT_EQ(printed, c.printed);
    EXPECT_EQ(outLength, c.room);
    EXPECT_EQ(out, std::vector<uint8_t>(255, 0xEE));
  }
}

}  // namespace

// A job seals several passwords for one key, and the platform layer keeps
// the key parsed between them: alternating keys, and key data that differs
// from the kept one only at its end, must still each be taken as given.
TEST(SealedBlobInternals, EachSealUsesTheKeyItIsGiven) {
  std::vector<uint8_t> key2048;
  std::vector<uint8_t> key3072;
  ASSERT_TRUE(CryptoBase64Decode(RSA_PUBKEY_2048_OFFICIAL, &key2048));
  ASSERT_TRUE(CryptoBase64Decode(PublicKeyTextOf(TestPrivateKeyPath3072()).c_str(), &key3072));
  std::vector<uint8_t> trailing = key2048;
  trailing.push_back(0);
  const std::vector<uint8_t> truncated(key3072.begin(), key3072.end() - 1);
  struct Step {
    const std::vector<uint8_t>* der;
    size_t sealedLength;  // 0: refused
  };
  const Step steps[] = {{&key2048, 256}, {&key3072, 384}, {&key2048, 256}, {&trailing, 0},
                        {&key2048, 256}, {&truncated, 0}, {&key3072, 384}, {&key3072, 384}};
  const std::string plain = "secret";
  for (const Step& step : steps) {
    std::vector<uint8_t> sealed;
    CryptoError error;
    const bool ok = CryptoRsaOaepSha256Encrypt(step.der->data(), step.der->size(), plain.data(),
                                               plain.size(), &sealed, &error);
    EXPECT_EQ(ok, step.sealedLength != 0) << error.description;
    EXPECT_EQ(sealed.size(), step.sealedLength);
    EXPECT_EQ(error.code != 0, !ok);
  }
}
