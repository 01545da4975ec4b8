#include "platform/crypto.h"

#include <mbedtls/aes.h>
#include <mbedtls/asn1.h>
#include <mbedtls/base64.h>
#include <mbedtls/md.h>
#include <mbedtls/oid.h>
#include <mbedtls/platform_util.h>
#include <mbedtls/rsa.h>

#include <sys/random.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstring>

namespace {

// Lengths near the int range are refused up front.
constexpr size_t kMaxLibraryLength = static_cast<size_t>(INT_MAX) - 64;

void SetError(CryptoError* error, int32_t code, const char* description) {
  error->code = code != 0 ? code : kCryptoInvalidParameter;
  error->description = description;
}

// Random bytes come straight from the kernel's generator: seeding a
// generator of our own would cost more than the few dozen bytes a job needs.
// In the library's callback form too, for RSA-OAEP's seed.
int FillRandom(void*, unsigned char* out, size_t length) {
  while (length > 0) {
    const ssize_t got = getrandom(out, length, 0);
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) return MBEDTLS_ERR_RSA_RNG_FAILED;
    out += got;
    length -= static_cast<size_t>(got);
  }
  return 0;
}

// The RSA public key in a DER SubjectPublicKeyInfo, read with the ASN.1
// parser alone: the library's generic key parser would link in every other
// key type it knows, and the filter is loaded once per job. Returns 0 or a
// library error code; *notRsa tells a well-formed key of another type.
int ReadRsaPublicKey(const uint8_t* der, size_t length, mbedtls_rsa_context* rsa, bool* notRsa) {
  auto* cursor = const_cast<unsigned char*>(der);
  const unsigned char* end = der + length;
  const auto kSequence = MBEDTLS_ASN1_CONSTRUCTED | MBEDTLS_ASN1_SEQUENCE;
  size_t inner = 0;
  int status = mbedtls_asn1_get_tag(&cursor, end, &inner, kSequence);
  if (status == 0 && cursor + inner != end) return MBEDTLS_ERR_ASN1_LENGTH_MISMATCH;
  mbedtls_asn1_buf algorithm;
  if (status == 0) status = mbedtls_asn1_get_alg_null(&cursor, end, &algorithm);
  if (status != 0) return status;
  static const char kRsaOid[] = MBEDTLS_OID_PKCS1_RSA;
  if (algorithm.len != sizeof kRsaOid - 1 || memcmp(algorithm.p, kRsaOid, algorithm.len) != 0) {
    *notRsa = true;
    return MBEDTLS_ERR_ASN1_UNEXPECTED_TAG;
  }
  // subjectPublicKey: a BIT STRING holding RSAPublicKey ::= SEQUENCE {
  // modulus INTEGER, publicExponent INTEGER }, nothing after either.
  status = mbedtls_asn1_get_bitstring_null(&cursor, end, &inner);
  if (status == 0 && cursor + inner != end) return MBEDTLS_ERR_ASN1_LENGTH_MISMATCH;
  if (status == 0) status = mbedtls_asn1_get_tag(&cursor, end, &inner, kSequence);
  if (status == 0 && cursor + inner != end) return MBEDTLS_ERR_ASN1_LENGTH_MISMATCH;
  size_t modulusLength = 0, exponentLength = 0;
  if (status == 0) status = mbedtls_asn1_get_tag(&cursor, end, &modulusLength, MBEDTLS_ASN1_INTEGER);
  const unsigned char* modulus = cursor;
  if (status == 0) cursor += modulusLength;
  if (status == 0) status = mbedtls_asn1_get_tag(&cursor, end, &exponentLength, MBEDTLS_ASN1_INTEGER);
  if (status == 0 && cursor + exponentLength != end) return MBEDTLS_ERR_ASN1_LENGTH_MISMATCH;
  if (status == 0)
    status = mbedtls_rsa_import_raw(rsa, modulus, modulusLength, nullptr, 0, nullptr, 0, nullptr, 0,
                                    cursor, exponentLength);
  if (status == 0) status = mbedtls_rsa_complete(rsa);
  if (status == 0) status = mbedtls_rsa_check_pubkey(rsa);
  return status;
}

// The RSA public key of the last DER text given, kept parsed: a job seals
// several passwords for the same printer key.
class PublicKeyCache {
 public:
  PublicKeyCache() { Reset(); }
  ~PublicKeyCache() { mbedtls_rsa_free(&key_); }
  PublicKeyCache(const PublicKeyCache&) = delete;
  PublicKeyCache& operator=(const PublicKeyCache&) = delete;

  // The key set up for OAEP with SHA-256, or nullptr with `error` filled when
  // `der` is not one DER SubjectPublicKeyInfo of an RSA key.
  mbedtls_rsa_context* Get(const uint8_t* der, size_t length, CryptoError* error) {
    if (!der_.empty() && der_.size() == length && memcmp(der_.data(), der, length) == 0)
      return &key_;
    der_.clear();
    mbedtls_rsa_free(&key_);
    Reset();
    bool notRsa = false;
    const int status = ReadRsaPublicKey(der, length, &key_, &notRsa);
    if (notRsa) {
      SetError(error, kCryptoInvalidParameter, "the key is not an RSA key");
      return nullptr;
    }
    if (status != 0) {
      SetError(error, -status, "the key data is not one DER SubjectPublicKeyInfo");
      return nullptr;
    }
    der_.assign(der, der + length);
    return &key_;
  }

 private:
  void Reset() { mbedtls_rsa_init(&key_, MBEDTLS_RSA_PKCS_V21, MBEDTLS_MD_SHA256); }

  std::vector<uint8_t> der_;
  mbedtls_rsa_context key_;
};

bool IsAesKeyLength(size_t keyLength) {
  return keyLength == 16 || keyLength == 24 || keyLength == 32;
}

// Sets *textLength to the length of the text a PKCS#7-padded plaintext of
// `length` bytes holds; false when its padding does not verify. Every
// padding byte is looked at.
bool StripPadding(const uint8_t* plain, size_t length, size_t* textLength) {
  if (length == 0) return false;
  const uint8_t pad = plain[length - 1];
  if (pad == 0 || pad > kAesBlockLength) return false;
  uint8_t differ = 0;
  for (size_t i = length - pad; i < length; ++i) differ |= plain[i] ^ pad;
  *textLength = length - pad;
  return differ == 0;
}

// CBC over whole blocks of `work` in place; encryption first pads the
// `inLength` bytes there. Sets *produced to the bytes of the result; false
// when the library fails or a decrypted padding does not verify.
bool CbcInPlace(bool encrypt, const uint8_t* key, size_t keyLength, const uint8_t* iv,
                std::vector<uint8_t>* work, size_t inLength, size_t* produced) {
  size_t length = inLength;
  if (encrypt) {
    const size_t pad = kAesBlockLength - inLength % kAesBlockLength;
    length = inLength + pad;
    std::fill(work->begin() + inLength, work->begin() + length, static_cast<uint8_t>(pad));
  }
  uint8_t chain[kAesBlockLength] = {};
  if (iv != nullptr) memcpy(chain, iv, sizeof chain);
  mbedtls_aes_context aes;
  mbedtls_aes_init(&aes);
  const auto bits = static_cast<unsigned>(keyLength * 8);
  int status = encrypt ? mbedtls_aes_setkey_enc(&aes, key, bits) : mbedtls_aes_setkey_dec(&aes, key, bits);
  if (status == 0)
    status = mbedtls_aes_crypt_cbc(&aes, encrypt ? MBEDTLS_AES_ENCRYPT : MBEDTLS_AES_DECRYPT,
                                   length, chain, work->data(), work->data());
  mbedtls_aes_free(&aes);
  if (status != 0) return false;
  *produced = length;
  return encrypt || StripPadding(work->data(), length, produced);
}

int32_t AesCbc(bool encrypt, const uint8_t* key, size_t keyLength, const uint8_t* iv,
               const void* in, size_t inLength, void* out, size_t outCapacity, size_t* outLength) {
  if (key == nullptr || outLength == nullptr || (in == nullptr && inLength != 0) ||
      inLength > kMaxLibraryLength)
    return kCipherParamError;
  if (!IsAesKeyLength(keyLength)) return kCipherKeySizeError;
  if (!encrypt && inLength % kAesBlockLength != 0) return kCipherAlignmentError;
  const size_t needed = encrypt ? (inLength / kAesBlockLength + 1) * kAesBlockLength : inLength;
  if (out == nullptr || outCapacity < needed) return kCipherBufferTooSmall;
  // Work in a private buffer so `out` only ever receives the finished result.
  std::vector<uint8_t> work(needed);
  if (inLength != 0) memcpy(work.data(), in, inLength);
  size_t produced = 0;
  int32_t status = kCipherSuccess;
  if (!CbcInPlace(encrypt, key, keyLength, iv, &work, inLength, &produced)) {
    status = encrypt ? kCipherParamError : kCipherDecodeError;
  } else {
    if (produced != 0) memcpy(out, work.data(), produced);
    *outLength = produced;
  }
  CryptoCleanse(work.data(), work.size());
  return status;
}

}  // namespace

int32_t CryptoRandomBytes(void* buffer, size_t length) {
  if (buffer == nullptr && length != 0) return -1;
  return FillRandom(nullptr, static_cast<unsigned char*>(buffer), length) == 0 ? 0 : -1;
}

bool CryptoHmacSha256(const void* key, size_t keyLength, const void* data, size_t dataLength,
                      uint8_t* mac) {
  if (mac == nullptr || keyLength > kMaxLibraryLength || (key == nullptr && keyLength != 0) ||
      (data == nullptr && dataLength != 0))
    return false;
  // Empty key or message: the library wants a real pointer even for 0 bytes.
  static const uint8_t kNothing = 0;
  return mbedtls_md_hmac(mbedtls_md_info_from_type(MBEDTLS_MD_SHA256),
                         keyLength != 0 ? static_cast<const uint8_t*>(key) : &kNothing, keyLength,
                         dataLength != 0 ? static_cast<const uint8_t*>(data) : &kNothing,
                         dataLength, mac) == 0;
}

bool CryptoBase64Decode(const char* text, std::vector<uint8_t>* out) {
  out->clear();
  if (text == nullptr) return false;
  const size_t length = strlen(text);
  if (length > kMaxLibraryLength) return false;
  std::vector<uint8_t> decoded(length / 4 * 3 + 3);
  size_t produced = 0;
  if (mbedtls_base64_decode(decoded.data(), decoded.size(), &produced,
                            reinterpret_cast<const unsigned char*>(text), length) != 0)
    return false;
  decoded.resize(produced);
  *out = std::move(decoded);
  return true;
}

bool CryptoRsaOaepSha256Encrypt(const uint8_t* spkiDer, size_t derLength, const void* plain,
                                size_t plainLength, std::vector<uint8_t>* out, CryptoError* error) {
  out->clear();
  *error = CryptoError();
  if (spkiDer == nullptr || derLength == 0 || derLength > kMaxLibraryLength ||
      (plain == nullptr && plainLength != 0)) {
    SetError(error, kCryptoInvalidParameter, "no public key data");
    return false;
  }
  static PublicKeyCache keys;
  mbedtls_rsa_context* key = keys.Get(spkiDer, derLength, error);
  if (key == nullptr) return false;
  static const uint8_t kNothing = 0;
  std::vector<uint8_t> sealed(mbedtls_rsa_get_len(key));
  const int status = mbedtls_rsa_rsaes_oaep_encrypt(
      key, FillRandom, nullptr, MBEDTLS_RSA_PUBLIC, nullptr, 0,
      plainLength, plainLength != 0 ? static_cast<const uint8_t*>(plain) : &kNothing,
      sealed.data());
  if (status != 0) {
    SetError(error, -status, "the RSA encryption failed");
    return false;
  }
  *out = std::move(sealed);
  return true;
}

int32_t CryptoAesCbcEncrypt(const uint8_t* key, size_t keyLength, const uint8_t* iv, const void* in,
                            size_t inLength, void* out, size_t outCapacity, size_t* outLength) {
  return AesCbc(true, key, keyLength, iv, in, inLength, out, outCapacity, outLength);
}

int32_t CryptoAesCbcDecrypt(const uint8_t* key, size_t keyLength, const uint8_t* iv, const void* in,
                            size_t inLength, void* out, size_t outCapacity, size_t* outLength) {
  return AesCbc(false, key, keyLength, iv, in, inLength, out, outCapacity, outLength);
}

void CryptoCleanse(void* buffer, size_t length) {
  if (buffer != nullptr && length != 0) mbedtls_platform_zeroize(buffer, length);
}
