#include "secure/sec_blob.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "platform/crypto.h"
#include "sealed_blob.h"
#include "secure/key_material.h"

namespace {

std::string StdoutOf(const std::function<void()>& action) {
  testing::internal::CaptureStdout();
  action();
  return testing::internal::GetCapturedStdout();
}

std::vector<uint8_t> Pattern(size_t length, uint8_t seed) {
  std::vector<uint8_t> bytes(length);
  for (size_t i = 0; i < length; ++i) bytes[i] = static_cast<uint8_t>(seed + i * 7);
  return bytes;
}

std::vector<uint8_t> Bytes(const uint8_t* data, size_t length) {
  return std::vector<uint8_t>(data, data + length);
}

bool EndsWith(const std::string& text, const std::string& tail) {
  return text.size() >= tail.size() &&
         text.compare(text.size() - tail.size(), tail.size(), tail) == 0;
}

// The key text form of a PEM public key: its base64 body, every line ended by "\n".
std::string KeyTextOfPem(const std::string& pem) {
  std::string text;
  size_t at = 0;
  while (at < pem.size()) {
    size_t end = pem.find('\n', at);
    if (end == std::string::npos) end = pem.size();
    const std::string line = pem.substr(at, end - at);
    if (!line.empty() && line.compare(0, 5, "-----") != 0) text += line + "\n";
    at = end + 1;
  }
  return text;
}

std::string PublicKeyTextOf(const std::string& privateKeyPath) {
  ScratchDir scratch;
  std::string diagnostics;
  if (!RunOpenssl({"pkey", "-in", privateKeyPath, "-pubout", "-out", scratch.File("pub")},
                  &diagnostics)) {
    ADD_FAILURE() << diagnostics;
    return "";
  }
  const std::vector<uint8_t> pem = ReadBytes(scratch.File("pub"));
  return KeyTextOfPem(std::string(pem.begin(), pem.end()));
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
  sealed.printed = StdoutOf([&] {
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

TEST(SealedBlobInterop, OpensWithTheOpensslToolAndTheTestKey) {
  struct Case {
    bool entryPoint;  // Encode_Random: mode 1, key type 0, the built-in key
    uint32_t keyType;
    size_t payloadLength;
    uint32_t blobLength;
  };
  const Case cases[] = {
      {false, 0, 0, 368},  {false, 0, 1, 368},       {false, 0, 15, 368}, {false, 0, 16, 384},
      {false, 0, 17, 384}, {false, 0, 239, 592},     {false, 1, 40, 400}, {true, 0, 0, 368},
      {true, 0, 31, 384},  {false, 0, 99500, 99856},
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
    EXPECT_EQ(opened.magic[0], 0x08);
    EXPECT_EQ(opened.magic[1], 0x01);
    EXPECT_EQ(opened.cipherLength, 16 * (c.payloadLength / 16 + 1));
    EXPECT_EQ(opened.totalLength, c.blobLength);
    EXPECT_EQ(opened.aesMode, 1);
    EXPECT_EQ(opened.keyType, c.keyType);
    EXPECT_EQ(opened.reserved, 0u);
    EXPECT_EQ(opened.wrappedKey.size(), 256u);
    EXPECT_EQ(opened.digest,
              Bytes(c.keyType == 1 ? pubkey3072_OFFICIAL_SHA256 : pubkey2048_OFFICIAL_SHA256, 32));
  }
}

TEST(SealedBlobInterop, WrappedKeyTakesTheLengthOfTheRecipientKey) {
  // The digest follows the key type, not the key: a 3072-bit key text with
  // key type 0 still gets the 2048-bit digest and a 384-byte wrapped key.
  const std::string keyText = PublicKeyTextOf(TestPrivateKeyPath3072());
  ASSERT_FALSE(keyText.empty());
  const std::vector<uint8_t> payload = Pattern(20, 9);
  const Sealed sealed = Seal(kSecBlobAesModeCBC, kSecBlobKeyType2048, payload, keyText.c_str());
  ASSERT_EQ(sealed.result, kSecBlobSuccess) << sealed.printed;
  ASSERT_EQ(sealed.blob.size(), 80u + 384 + 16 + 32);
  OpenedBlob opened;
  std::string error;
  ASSERT_TRUE(OpenSealedBlob(sealed.blob, &opened, &error, TestPrivateKeyPath3072())) << error;
  EXPECT_EQ(opened.wrappedKey.size(), 384u);
  EXPECT_EQ(opened.digest, Bytes(pubkey2048_OFFICIAL_SHA256, 32));
  EXPECT_EQ(opened.payload, std::string(payload.begin(), payload.end()));
}

TEST(SealedBlobInterop, TwoBlobsOfOnePayloadShareOnlyTheHeader) {
  const std::vector<uint8_t> payload = Pattern(48, 1);
  const Sealed first = Seal(kSecBlobAesModeCBC, 0, payload);
  const Sealed second = Seal(kSecBlobAesModeCBC, 0, payload);
  ASSERT_EQ(first.result, kSecBlobSuccess);
  ASSERT_EQ(second.result, kSecBlobSuccess);
  ASSERT_EQ(first.blob.size(), second.blob.size());
  EXPECT_TRUE(std::equal(first.blob.begin(), first.blob.begin() + 48, second.blob.begin()));
  OpenedBlob a, b;
  std::string error;
  ASSERT_TRUE(OpenSealedBlob(first.blob, &a, &error)) << error;
  ASSERT_TRUE(OpenSealedBlob(second.blob, &b, &error)) << error;
  EXPECT_NE(a.salt, b.salt);
  EXPECT_NE(a.contentKey, b.contentKey);
  EXPECT_NE(a.wrappedKey, b.wrappedKey);
  EXPECT_NE(a.iv, b.iv);
  EXPECT_NE(a.cipherText, b.cipherText);
  EXPECT_EQ(a.payload, b.payload);
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
  };
  std::vector<uint8_t> payload(16, 0x41);
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    std::vector<uint8_t> out(700, 0xEE);
    uint32_t outLength = 700;
    uint32_t result = 0;
    const std::string printed = StdoutOf([&] {
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
    EXPECT_EQ(outLength, 700u);
    EXPECT_EQ(out, std::vector<uint8_t>(700, 0xEE));
  }
}

TEST(SealedBlobRefusals, RoomMustHoldTheWholeBlob) {
  const std::vector<uint8_t> payload = Pattern(20, 2);
  for (uint32_t room : {0u, 383u, 384u, 385u}) {
    SCOPED_TRACE(room);
    std::vector<uint8_t> out(385, 0xEE);
    uint32_t outLength = room;
    const uint32_t result = SecBlobEnc_KT_Encrypt(
        1, 0, payload.data(), 20, RSA_PUBKEY_2048_OFFICIAL, 399, out.data(), &outLength);
    if (room < 384) {
      EXPECT_EQ(result, kSecBlobInvalidArgument);
      EXPECT_EQ(outLength, room);
      EXPECT_EQ(out, std::vector<uint8_t>(385, 0xEE));
    } else {
      EXPECT_EQ(result, kSecBlobSuccess);
      EXPECT_EQ(outLength, 384u);  // 80 + 256 + 16 + 32
      EXPECT_EQ(out[384], 0xEE);
    }
  }
}

// ---- The internal routines ---------------------------------------------------

TEST(SealedBlobInternals, AesRoutinesReportTheCipherStatus) {
  static const uint8_t key[32] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10};
  static const uint8_t iv[16] = {16, 15, 14};
  // One block that decrypts to sixteen zero bytes: a padding that never verifies.
  ScratchDir scratch;
  std::string diagnostics;
  ASSERT_TRUE(WriteBytes(scratch.File("zeros"), std::vector<uint8_t>(16, 0)));
  ASSERT_TRUE(RunOpenssl({"enc", "-aes-256-cbc", "-nopad", "-K", Hex(key, 32), "-iv", Hex(iv, 16),
                          "-in", scratch.File("zeros"), "-out", scratch.File("unpadded")},
                         &diagnostics))
      << diagnostics;
  const std::vector<uint8_t> unpadded = ReadBytes(scratch.File("unpadded"));
  ASSERT_EQ(unpadded.size(), 16u);
  const std::vector<uint8_t> plain = Pattern(16, 0);

  using AesRoutine = uint32_t (*)(uint32_t, const uint8_t*, uint32_t, const uint8_t*, uint32_t,
                                  const uint8_t*, uint32_t, uint32_t, uint8_t*, uint32_t*);
  struct Case {
    const char* name;
    AesRoutine routine;
    uint32_t mode;
    uint32_t keyLength;
    uint32_t ivLength;
    std::vector<uint8_t> in;
    uint32_t capacity;
    uint32_t result;
    uint32_t produced;
    const char* printed;
  };
  const Case cases[] = {
      {"encrypt one block", SecBlobEncInternal_AESEncrypt, 1, 32, 16, plain, 32, 0, 32, ""},
      {"encrypt without room for the padding", SecBlobEncInternal_AESEncrypt, 1, 32, 16, plain, 31,
       99, 0, "AES Error[-4301]\n"},
      {"encrypt in mode 0", SecBlobEncInternal_AESEncrypt, 0, 32, 16, plain, 32, 2, 0,
       "AES Error. Unsupported AES Mode.\n"},
      {"decrypt in mode 0", SecBlobEncInternal_AESDecrypt, 0, 32, 16, unpadded, 32, 2, 0,
       "AES Error. Unsupported AES Mode.\n"},
      {"decrypt a padding that does not verify", SecBlobEncInternal_AESDecrypt, 1, 32, 16, unpadded,
       32, 99, 0, "AES Error[-4304]\n"},
      {"decrypt a partial block", SecBlobEncInternal_AESDecrypt, 1, 32, 16, Pattern(17, 0), 32, 99,
       0, "AES Error[-4303]\n"},
      {"key of 20 bytes", SecBlobEncInternal_AESEncrypt, 1, 20, 16, plain, 32, 99, 0,
       "AES Error[-4310]\n"},
      {"IV said to be shorter than a block", SecBlobEncInternal_AESEncrypt, 1, 32, 8, plain, 32, 99,
       0, "AES Error[-4300]\n"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    std::vector<uint8_t> out(64, 0xEE);
    uint32_t outLength = 0;
    uint32_t result = 0;
    const std::string printed = StdoutOf([&] {
      result = c.routine(c.mode, key, c.keyLength, iv, c.ivLength, c.in.data(),
                         static_cast<uint32_t>(c.in.size()), c.capacity, out.data(), &outLength);
    });
    EXPECT_EQ(result, c.result);
    EXPECT_EQ(printed, c.printed);
    EXPECT_EQ(outLength, c.produced);
    if (c.result != 0) {
      EXPECT_EQ(out, std::vector<uint8_t>(64, 0xEE));
    }
  }
}

TEST(SealedBlobInternals, DecodeKeySkipsLineEndsAndRefusesOtherText) {
  const std::vector<uint8_t> der = SecBlobEnc_Decode_Key(RSA_PUBKEY_2048_OFFICIAL);
  ASSERT_EQ(der.size(), 294u);
  EXPECT_EQ(Hex(der.data(), 4), "30820122");
  std::string oneLine = RSA_PUBKEY_2048_OFFICIAL;
  oneLine.erase(std::remove(oneLine.begin(), oneLine.end(), '\n'), oneLine.end());
  EXPECT_EQ(SecBlobEnc_Decode_Key(oneLine.c_str()), der);
  for (const char* bad : {"", "\n", "MIIB*IjAN", "QUJ"}) {
    SCOPED_TRACE(bad);
    EXPECT_TRUE(SecBlobEnc_Decode_Key(bad).empty());
  }
  EXPECT_TRUE(SecBlobEnc_Decode_Key(nullptr).empty());
}

TEST(SealedBlobInternals, OutputDataWritesTheBytesOrSaysItCannot) {
  ScratchDir scratch;
  const std::vector<uint8_t> bytes = Pattern(300, 4);
  EXPECT_EQ(StdoutOf([&] { outputData(bytes.data(), 300, scratch.File("dump").c_str()); }), "");
  EXPECT_EQ(ReadBytes(scratch.File("dump")), bytes);
  EXPECT_EQ(
      StdoutOf([&] { outputData(bytes.data(), 300, scratch.File("no-such-dir/dump").c_str()); }),
      "cannot open file");
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

TEST(StorageCipher, InteroperatesWithTheOpensslTool) {
  const std::string key = StorageKeyHex(seed1, 32, seed2, 32);
  ASSERT_EQ(key.size(), 64u);
  for (size_t length : {0, 5, 16, 239}) {
    SCOPED_TRACE(length);
    const std::vector<uint8_t> payload = Pattern(length, 11);
    ScratchDir scratch;
    std::string diagnostics;

    // Ours encrypts, the tool decrypts.
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

    // The tool encrypts, ours decrypts.
    ASSERT_TRUE(WriteBytes(scratch.File("plain"), payload));
    ASSERT_TRUE(RunOpenssl({"enc", "-aes-256-cbc", "-K", key, "-iv", Hex(seed3, 16), "-in",
                            scratch.File("plain"), "-out", scratch.File("theirs")},
                           &diagnostics))
        << diagnostics;
    const std::vector<uint8_t> theirs = ReadBytes(scratch.File("theirs"));
    std::vector<uint8_t> opened(255, 0);
    uint32_t openedLength = 255;
    ASSERT_EQ(Decode_Storage(theirs.data(), static_cast<uint32_t>(theirs.size()), seed1, 32, seed2,
                             32, seed3, 16, opened.data(), &openedLength),
              0u);
    opened.resize(openedLength);
    EXPECT_EQ(opened, payload);
  }
}

TEST(StorageCipher, FailuresPrintTheirNumberedMessage) {
  static const uint8_t keyA[32] = {0xA1};
  static const uint8_t keyB[32] = {0xB2};
  static const uint8_t iv[16] = {0xC3};
  // A ciphertext whose plaintext ends in a zero byte: the padding never verifies.
  ScratchDir scratch;
  std::string diagnostics;
  ASSERT_TRUE(WriteBytes(scratch.File("zeros"), std::vector<uint8_t>(32, 0)));
  ASSERT_TRUE(
      RunOpenssl({"enc", "-aes-256-cbc", "-nopad", "-K", StorageKeyHex(keyA, 32, keyB, 32), "-iv",
                  Hex(iv, 16), "-in", scratch.File("zeros"), "-out", scratch.File("bad")},
                 &diagnostics))
      << diagnostics;
  const std::vector<uint8_t> badPadding = ReadBytes(scratch.File("bad"));
  ASSERT_EQ(badPadding.size(), 32u);

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
      {"decrypt a padding that does not verify", Decode_Storage, badPadding, 255,
       "AES Error[-4304]\nERROR[97]: AES Decrypt failed[99].\n"},
      {"decrypt a partial block", Decode_Storage, Pattern(33, 0), 255,
       "AES Error[-4303]\nERROR[97]: AES Decrypt failed[99].\n"},
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
    const std::string printed = StdoutOf([&] {
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
