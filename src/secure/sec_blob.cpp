#include "secure/sec_blob.h"

#include <cstdio>
#include <cstring>
#include <string>

#include "platform/crypto.h"
#include "secure/key_material.h"

namespace {

constexpr uint32_t kContentKeyLength = kSecBlobContentKeyLength;
constexpr uint32_t kSaltLength = kSecBlobSaltLength;
constexpr uint32_t kAesKeyLength = 32;
constexpr uint32_t kCbcIvLength = kSecBlobCbcIvLength;
constexpr uint32_t kReservedModeIvLength = kSecBlobReservedModeIvLength;
constexpr uint32_t kReservedModeTagLength = kSecBlobReservedModeTagLength;
constexpr size_t kRsaDescriptionRoom = 512;

// Numbers of the failure messages, so a report names the step that failed.
enum MessageNumber : int {
  kMsgStorageEncryptHmac = 39,
  kMsgStorageEncryptAes = 52,
  kMsgStorageDecryptHmac = 84,
  kMsgTooLong = 88,
  kMsgStorageDecryptAes = 97,
  kMsgInvalidKeyType = 106,
  kMsgContentKeyRandom = 114,
  kMsgSaltRandom = 122,
  kMsgKeyDerivation = 131,
  kMsgIvRandom = 139,
  kMsgRsaEncrypt = 150,
  kMsgAesEncrypt = 161,
};

// Keys and plaintext copies are wiped however the function leaves.
template <size_t N>
struct SecretBytes {
  uint8_t bytes[N] = {};
  ~SecretBytes() { CryptoCleanse(bytes, N); }
};

void PutLE32(uint8_t* at, uint32_t value) {
  at[0] = static_cast<uint8_t>(value);
  at[1] = static_cast<uint8_t>(value >> 8);
  at[2] = static_cast<uint8_t>(value >> 16);
  at[3] = static_cast<uint8_t>(value >> 24);
}

uint32_t RunAes(bool encrypt, uint32_t mode, const uint8_t* key, uint32_t keyLength,
                const uint8_t* iv, uint32_t ivLength, const uint8_t* in, uint32_t inLength,
                uint32_t outCapacity, uint8_t* out, uint32_t* outLength) {
  if (mode != kSecBlobAesModeCBC) {
    puts("AES Error. Unsupported AES Mode.");
    return kSecBlobInvalidArgument;
  }
  int32_t status = kCipherParamError;
  // CBC reads 16 IV bytes; a caller that says it has fewer gets a parameter
  // error rather than a read past its buffer.
  if (outLength != nullptr && (iv == nullptr || ivLength >= kCbcIvLength)) {
    size_t produced = 0;
    status =
        encrypt
            ? CryptoAesCbcEncrypt(key, keyLength, iv, in, inLength, out, outCapacity, &produced)
            : CryptoAesCbcDecrypt(key, keyLength, iv, in, inLength, out, outCapacity, &produced);
    if (status == kCipherSuccess) *outLength = static_cast<uint32_t>(produced);
  }
  if (status != kCipherSuccess) {
    printf("AES Error[%d]\n", status);
    return kSecBlobCryptoFailure;
  }
  return kSecBlobSuccess;
}

uint32_t RunStorageCipher(bool encrypt, const uint8_t* data, uint32_t dataLength,
                          const uint8_t* keyA, uint32_t keyALength, const uint8_t* keyB,
                          uint32_t keyBLength, const uint8_t* iv, uint32_t ivLength, uint8_t* out,
                          uint32_t* outLength) {
  if (outLength == nullptr) return kSecBlobInvalidArgument;
  SecretBytes<kAesKeyLength> aesKey;
  uint32_t result =
      SecBlobEncInternal_GenerateHMAC(keyA, keyALength, keyB, keyBLength, aesKey.bytes);
  if (result != kSecBlobSuccess) {
    printf("ERROR[%d]: Key Derivation HMAC failed[%d].\n",
           encrypt ? kMsgStorageEncryptHmac : kMsgStorageDecryptHmac, static_cast<int>(result));
    return kSecBlobCryptoFailure;
  }
  result = RunAes(encrypt, kSecBlobAesModeCBC, aesKey.bytes, kAesKeyLength, iv, ivLength, data,
                  dataLength, *outLength, out, outLength);
  if (result != kSecBlobSuccess) {
    printf("ERROR[%d]: AES %s failed[%d].\n",
           encrypt ? kMsgStorageEncryptAes : kMsgStorageDecryptAes, encrypt ? "Encrypt" : "Decrypt",
           static_cast<int>(result));
    return kSecBlobCryptoFailure;
  }
  return kSecBlobSuccess;
}

}  // namespace

uint32_t SecBlobEncInternal_GenerateRandom(uint32_t length, uint8_t* buffer) {
  const int32_t status = CryptoRandomBytes(buffer, length);
  if (status != 0) {
    printf("Generate Random Error[%d]", status);
    return kSecBlobCryptoFailure;
  }
  return kSecBlobSuccess;
}

uint32_t SecBlobEncInternal_GenerateHMAC(const uint8_t* key, uint32_t keyLength,
                                         const uint8_t* data, uint32_t dataLength, uint8_t* mac) {
  return CryptoHmacSha256(key, keyLength, data, dataLength, mac) ? kSecBlobSuccess
                                                                 : kSecBlobCryptoFailure;
}

std::vector<uint8_t> SecBlobEnc_Decode_Key(const char* keyText) {
  std::vector<uint8_t> der;
  if (!CryptoBase64Decode(keyText, &der)) der.clear();
  return der;
}

uint32_t SecBlobEncInternal_RSAEncrypt(const char* keyText, uint32_t /*keyTextLength*/,
                                       const uint8_t* plain, uint32_t plainLength,
                                       uint32_t outCapacity, uint8_t* out, uint32_t* outLength) {
  CryptoError error;
  std::vector<uint8_t> sealed;
  const std::vector<uint8_t> der = SecBlobEnc_Decode_Key(keyText);
  if (der.empty()) {
    error.code = kCryptoInvalidParameter;
    error.description = "the public key text does not decode";
  } else if (CryptoRsaOaepSha256Encrypt(der.data(), der.size(), plain, plainLength, &sealed,
                                        &error)) {
    if (out == nullptr || outLength == nullptr || sealed.size() > outCapacity) {
      error.code = kCryptoInvalidParameter;
      error.description = "no room for the RSA ciphertext";
    } else {
      memcpy(out, sealed.data(), sealed.size());
      *outLength = static_cast<uint32_t>(sealed.size());
    }
  }
  if (error.code != 0) {
    const std::string description = error.description.substr(0, kRsaDescriptionRoom - 1);
    printf("RSA Error[%d] %s", error.code, description.c_str());
    return kSecBlobCryptoFailure;
  }
  return kSecBlobSuccess;
}

uint32_t SecBlobEncInternal_AESEncrypt(uint32_t mode, const uint8_t* key, uint32_t keyLength,
                                       const uint8_t* iv, uint32_t ivLength, const uint8_t* in,
                                       uint32_t inLength, uint32_t outCapacity, uint8_t* out,
                                       uint32_t* outLength) {
  return RunAes(true, mode, key, keyLength, iv, ivLength, in, inLength, outCapacity, out,
                outLength);
}

uint32_t SecBlobEncInternal_AESDecrypt(uint32_t mode, const uint8_t* key, uint32_t keyLength,
                                       const uint8_t* iv, uint32_t ivLength, const uint8_t* in,
                                       uint32_t inLength, uint32_t outCapacity, uint8_t* out,
                                       uint32_t* outLength) {
  return RunAes(false, mode, key, keyLength, iv, ivLength, in, inLength, outCapacity, out,
                outLength);
}

uint32_t SecBlobEnc_KT_Encrypt(uint32_t aesMode, uint32_t keyType, const uint8_t* data,
                               uint32_t dataLength, const char* keyText, uint32_t keyTextLength,
                               uint8_t* out, uint32_t* outLength) {
  if (dataLength > kSecBlobMaxPayload) {
    printf("ERROR[%d]: too long bufLen [%d].\n", kMsgTooLong, static_cast<int>(dataLength));
    return kSecBlobInvalidArgument;
  }
  if ((data == nullptr && dataLength != 0) || out == nullptr || outLength == nullptr)
    return kSecBlobInvalidArgument;

  const uint32_t cipherRoom = dataLength + kAesBlockLength;
  std::vector<uint8_t> cipherText(cipherRoom);
  struct WipeOnExit {
    std::vector<uint8_t>& bytes;
    ~WipeOnExit() { CryptoCleanse(bytes.data(), bytes.size()); }
  } wipeCipherText{cipherText};
  const uint32_t tagLength = aesMode == kSecBlobAesModeCBC ? 0 : kReservedModeTagLength;

  const uint8_t* digest = nullptr;
  if (keyType == kSecBlobKeyType3072) {
    digest = pubkey3072_OFFICIAL_SHA256;
  } else if (keyType == kSecBlobKeyType2048) {
    digest = pubkey2048_OFFICIAL_SHA256;
  } else {
    printf("ERROR[%d]: invalid key type[%d].\n", kMsgInvalidKeyType, static_cast<int>(keyType));
    return kSecBlobInvalidArgument;
  }

  SecretBytes<kContentKeyLength> contentKey;
  SecretBytes<kAesKeyLength> aesKey;
  uint8_t salt[kSaltLength] = {};
  uint8_t iv[kCbcIvLength] = {};
  uint8_t wrappedKey[kSecBlobWrappedKeyRoom] = {};
  uint32_t wrappedLength = 0;
  uint32_t cipherLength = 0;

  uint32_t result = SecBlobEncInternal_GenerateRandom(kContentKeyLength, contentKey.bytes);
  if (result != kSecBlobSuccess) {
    printf("ERROR[%d]: generate random failed[%d].\n", kMsgContentKeyRandom,
           static_cast<int>(result));
    return kSecBlobCryptoFailure;
  }
  result = SecBlobEncInternal_GenerateRandom(kSaltLength, salt);
  if (result != kSecBlobSuccess) {
    printf("ERROR[%d]: generate random failed[%d].\n", kMsgSaltRandom, static_cast<int>(result));
    return kSecBlobCryptoFailure;
  }
  result = SecBlobEncInternal_GenerateHMAC(contentKey.bytes, kContentKeyLength, salt, kSaltLength,
                                           aesKey.bytes);
  if (result != kSecBlobSuccess) {
    printf("ERROR[%d]: Key Derivation HMAC failed[%d].\n", kMsgKeyDerivation,
           static_cast<int>(result));
    return kSecBlobCryptoFailure;
  }
  const uint32_t ivLength =
      aesMode != kSecBlobAesModeReserved ? kCbcIvLength : kReservedModeIvLength;
  result = SecBlobEncInternal_GenerateRandom(ivLength, iv);
  if (result != kSecBlobSuccess) {
    printf("ERROR[%d]: generate random failed[%d].\n", kMsgIvRandom, static_cast<int>(result));
    return kSecBlobCryptoFailure;
  }
  result =
      SecBlobEncInternal_RSAEncrypt(keyText, keyTextLength, contentKey.bytes, kContentKeyLength,
                                    kSecBlobWrappedKeyRoom, wrappedKey, &wrappedLength);
  if (result != kSecBlobSuccess) {
    printf("ERROR[%d]: RSA Encrypt failed[%d].\n", kMsgRsaEncrypt, static_cast<int>(result));
    return kSecBlobCryptoFailure;
  }
  result = SecBlobEncInternal_AESEncrypt(aesMode, aesKey.bytes, kAesKeyLength, iv, ivLength, data,
                                         dataLength, cipherRoom, cipherText.data(), &cipherLength);
  if (result != kSecBlobSuccess) {
    printf("ERROR[%d]: AES Encrypt failed[%d].\n", kMsgAesEncrypt, static_cast<int>(result));
    return kSecBlobCryptoFailure;
  }

  const uint32_t total = kSecBlobHeaderLength + wrappedLength + ivLength + tagLength + cipherLength;
  if (total > *outLength) return kSecBlobInvalidArgument;
  uint8_t* at = out;
  memset(at, 0, kSecBlobHeaderLength);
  at[0] = kSecBlobMagic[0];
  at[1] = kSecBlobMagic[1];
  PutLE32(at + kSecBlobCipherLengthOffset, cipherLength);
  PutLE32(at + kSecBlobTotalLengthOffset, total);
  at[kSecBlobAesModeOffset] = static_cast<uint8_t>(aesMode);
  at[kSecBlobKeyTypeOffset] = static_cast<uint8_t>(keyType);
  memcpy(at + kSecBlobDigestOffset, digest, kSecBlobDigestLength);
  memcpy(at + kSecBlobSaltOffset, salt, kSaltLength);
  at += kSecBlobHeaderLength;
  memcpy(at, wrappedKey, wrappedLength);
  at += wrappedLength;
  memcpy(at, iv, ivLength);
  at += ivLength;
  memset(at, 0, tagLength);
  at += tagLength;
  memcpy(at, cipherText.data(), cipherLength);
  *outLength = total;
  return kSecBlobSuccess;
}

uint32_t SecBlobEnc_DataStorage_Encrypt(const uint8_t* data, uint32_t dataLength,
                                        const uint8_t* keyA, uint32_t keyALength,
                                        const uint8_t* keyB, uint32_t keyBLength, const uint8_t* iv,
                                        uint32_t ivLength, uint8_t* out, uint32_t* outLength) {
  return RunStorageCipher(true, data, dataLength, keyA, keyALength, keyB, keyBLength, iv, ivLength,
                          out, outLength);
}

uint32_t SecBlobEnc_DataStorage_Decrypt(const uint8_t* data, uint32_t dataLength,
                                        const uint8_t* keyA, uint32_t keyALength,
                                        const uint8_t* keyB, uint32_t keyBLength, const uint8_t* iv,
                                        uint32_t ivLength, uint8_t* out, uint32_t* outLength) {
  return RunStorageCipher(false, data, dataLength, keyA, keyALength, keyB, keyBLength, iv, ivLength,
                          out, outLength);
}

uint32_t Encode_Storage(const uint8_t* data, uint32_t dataLength, const uint8_t* keyA,
                        uint32_t keyALength, const uint8_t* keyB, uint32_t keyBLength,
                        const uint8_t* iv, uint32_t ivLength, uint8_t* out, uint32_t* outLength) {
  return SecBlobEnc_DataStorage_Encrypt(data, dataLength, keyA, keyALength, keyB, keyBLength, iv,
                                        ivLength, out, outLength);
}

uint32_t Decode_Storage(const uint8_t* data, uint32_t dataLength, const uint8_t* keyA,
                        uint32_t keyALength, const uint8_t* keyB, uint32_t keyBLength,
                        const uint8_t* iv, uint32_t ivLength, uint8_t* out, uint32_t* outLength) {
  return SecBlobEnc_DataStorage_Decrypt(data, dataLength, keyA, keyALength, keyB, keyBLength, iv,
                                        ivLength, out, outLength);
}

uint32_t Encode_Random(const uint8_t* data, uint32_t dataLength, uint8_t* out,
                       uint32_t* outLength) {
  return SecBlobEnc_KT_Encrypt(kSecBlobAesModeCBC, kSecBlobKeyType2048, data, dataLength,
                               RSA_PUBKEY_2048_OFFICIAL, kRecipientKeyTextLength, out, outLength);
}

uint32_t Generate_Random(uint32_t length, uint8_t* buffer) {
  return SecBlobEncInternal_GenerateRandom(length, buffer);
}

void outputData(const uint8_t* buffer, uint32_t length, const char* path) {
  FILE* file = path != nullptr ? fopen(path, "wb") : nullptr;
  if (file == nullptr) {
    printf("cannot open file");
    return;
  }
  if (buffer != nullptr && length != 0) fwrite(buffer, 1, length, file);
  fclose(file);
}
