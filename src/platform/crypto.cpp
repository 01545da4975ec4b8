#include "platform/crypto.h"

#include <mbedtls/asn1.h>
#include <mbedtls/base64.h>
#include <mbedtls/cipher.h>
#include <mbedtls/md.h>
#include <mbedtls/pk.h>
#include <mbedtls/platform_util.h>
#include <mbedtls/rsa.h>

#include <sys/random.h>

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

// The RSA public key of the last DER text given, kept parsed: a job seals
// several passwords for the same printer key.
class PublicKeyCache {
 public:
  PublicKeyCache() { mbedtls_pk_init(&key_); }
  ~PublicKeyCache() { mbedtls_pk_free(&key_); }
  PublicKeyCache(const PublicKeyCache&) = delete;
  PublicKeyCache& operator=(const PublicKeyCache&) = delete;

  // The key set up for OAEP with SHA-256, or nullptr with `error` filled when
  // `der` is not one DER SubjectPublicKeyInfo of an RSA key.
  mbedtls_rsa_context* Get(const uint8_t* der, size_t length, CryptoError* error) {
    if (!der_.empty() && der_.size() == length && memcmp(der_.data(), der, length) == 0)
      return mbedtls_pk_rsa(key_);
    der_.clear();
    mbedtls_pk_free(&key_);
    mbedtls_pk_init(&key_);
    // The library reads one SubjectPublicKeyInfo from the front of the data;
    // the outer element must cover it all.
    auto* cursor = const_cast<unsigned char*>(der);
    size_t inner = 0;
    int status = mbedtls_asn1_get_tag(&cursor, der + length, &inner,
                                      MBEDTLS_ASN1_CONSTRUCTED | MBEDTLS_ASN1_SEQUENCE);
    if (status == 0 && cursor + inner != der + length) status = MBEDTLS_ERR_ASN1_LENGTH_MISMATCH;
    if (status == 0) status = mbedtls_pk_parse_public_key(&key_, der, length);
    if (status != 0) {
      SetError(error, -status, "the key data is not one DER SubjectPublicKeyInfo");
      return nullptr;
    }
    if (mbedtls_pk_get_type(&key_) != MBEDTLS_PK_RSA) {
      SetError(error, kCryptoInvalidParameter, "the key is not an RSA key");
      return nullptr;
    }
    mbedtls_rsa_context* rsa = mbedtls_pk_rsa(key_);
    mbedtls_rsa_set_padding(rsa, MBEDTLS_RSA_PKCS_V21, MBEDTLS_MD_SHA256);
    der_.assign(der, der + length);
    return rsa;
  }

 private:
  std::vector<uint8_t> der_;
  mbedtls_pk_context key_;
};

mbedtls_cipher_type_t AesCbcForKeyLength(size_t keyLength) {
  switch (keyLength) {
    case 16:
      return MBEDTLS_CIPHER_AES_128_CBC;
    case 24:
      return MBEDTLS_CIPHER_AES_192_CBC;
    case 32:
      return MBEDTLS_CIPHER_AES_256_CBC;
    default:
      return MBEDTLS_CIPHER_NONE;
  }
}

int32_t AesCbc(bool encrypt, const uint8_t* key, size_t keyLength, const uint8_t* iv,
               const void* in, size_t inLength, void* out, size_t outCapacity, size_t* outLength) {
  if (key == nullptr || outLength == nullptr || (in == nullptr && inLength != 0) ||
      inLength > kMaxLibraryLength)
    return kCipherParamError;
  const mbedtls_cipher_type_t type = AesCbcForKeyLength(keyLength);
  if (type == MBEDTLS_CIPHER_NONE) return kCipherKeySizeError;
  if (!encrypt && inLength % kAesBlockLength != 0) return kCipherAlignmentError;
  const size_t needed = encrypt ? (inLength / kAesBlockLength + 1) * kAesBlockLength : inLength;
  if (out == nullptr || outCapacity < needed) return kCipherBufferTooSmall;

  mbedtls_cipher_context_t cipher;
  mbedtls_cipher_init(&cipher);
  static const uint8_t kZeroIv[kAesBlockLength] = {};
  static const uint8_t kNothing = 0;
  if (mbedtls_cipher_setup(&cipher, mbedtls_cipher_info_from_type(type)) != 0 ||
      mbedtls_cipher_setkey(&cipher, key, static_cast<int>(keyLength * 8),
                            encrypt ? MBEDTLS_ENCRYPT : MBEDTLS_DECRYPT) != 0 ||
      mbedtls_cipher_set_padding_mode(&cipher, MBEDTLS_PADDING_PKCS7) != 0) {
    mbedtls_cipher_free(&cipher);
    return kCipherParamError;
  }
  // The library may write a block beyond the input before it settles; work
  // in a private buffer so `out` only ever receives the finished result.
  std::vector<uint8_t> work(inLength + 2 * kAesBlockLength);
  size_t produced = 0;
  const int done = mbedtls_cipher_crypt(
      &cipher, iv != nullptr ? iv : kZeroIv, kAesBlockLength,
      inLength != 0 ? static_cast<const uint8_t*>(in) : &kNothing, inLength, work.data(), &produced);
  mbedtls_cipher_free(&cipher);
  int32_t status = kCipherSuccess;
  if (done != 0) {
    status = encrypt ? kCipherParamError : kCipherDecodeError;
  } else if (produced > outCapacity) {
    status = kCipherBufferTooSmall;
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
