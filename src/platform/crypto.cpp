#include "platform/crypto.h"

#include <openssl/crypto.h>
#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/hmac.h>
#include <openssl/pem.h>
#include <openssl/rand.h>
#include <openssl/rsa.h>
#include <openssl/x509.h>

#include <climits>
#include <cstring>
#include <memory>

namespace {

// The library takes int lengths; anything near INT_MAX is refused up front.
constexpr size_t kMaxLibraryLength = static_cast<size_t>(INT_MAX) - 64;

struct PkeyFree {
  void operator()(EVP_PKEY* key) const { EVP_PKEY_free(key); }
};
struct PkeyCtxFree {
  void operator()(EVP_PKEY_CTX* ctx) const { EVP_PKEY_CTX_free(ctx); }
};
struct CipherCtxFree {
  void operator()(EVP_CIPHER_CTX* ctx) const { EVP_CIPHER_CTX_free(ctx); }
};
struct BioFree {
  void operator()(BIO* bio) const { BIO_free(bio); }
};
struct EncodeCtxFree {
  void operator()(EVP_ENCODE_CTX* ctx) const { EVP_ENCODE_CTX_free(ctx); }
};

// Takes the library's most recent error (or our own reason when it has none)
// and empties its queue, so one failure never colours the next call.
void TakeLibraryError(CryptoError* error, const char* fallback) {
  unsigned long code = ERR_peek_last_error();
  if (code != 0) {
    char text[256];
    ERR_error_string_n(code, text, sizeof text);
    error->code = static_cast<int32_t>(code & 0x7fffffffUL);
    if (error->code == 0) error->code = kCryptoInvalidParameter;
    error->description = text;
  } else {
    error->code = kCryptoInvalidParameter;
    error->description = fallback;
  }
  ERR_clear_error();
}

// Reads an unencrypted RSA private key from PEM text; fills `error` when
// the text holds none. A passphrase is never asked for.
std::unique_ptr<EVP_PKEY, PkeyFree> ReadRsaPrivateKey(const std::string& pem, CryptoError* error) {
  std::unique_ptr<EVP_PKEY, PkeyFree> key;
  if (pem.empty() || pem.size() > kMaxLibraryLength) {
    error->code = kCryptoInvalidParameter;
    error->description = "no private key text";
    return key;
  }
  std::unique_ptr<BIO, BioFree> bio(BIO_new_mem_buf(pem.data(), static_cast<int>(pem.size())));
  static char kNoPassphrase[] = "";
  if (bio) key.reset(PEM_read_bio_PrivateKey(bio.get(), nullptr, nullptr, kNoPassphrase));
  if (!key) {
    TakeLibraryError(error, "the text holds no unencrypted PEM private key");
    return key;
  }
  if (EVP_PKEY_get_base_id(key.get()) != EVP_PKEY_RSA) {
    key.reset();
    TakeLibraryError(error, "the key is not an RSA key");
  }
  return key;
}

// The cipher for a key length, fetched from the library's provider once:
// an init with the library's static cipher object looks it up again every
// time. Falls back to that object should the fetch fail.
const EVP_CIPHER* AesCbcForKeyLength(size_t keyLength) {
  struct Fetched {
    const char* name;
    const EVP_CIPHER* (*fallback)();
  };
  static const Fetched kByLength[] = {
      {"AES-128-CBC", EVP_aes_128_cbc}, {"AES-192-CBC", EVP_aes_192_cbc}, {"AES-256-CBC", EVP_aes_256_cbc}};
  static const EVP_CIPHER* fetched[3] = {};
  size_t index;
  switch (keyLength) {
    case 16:
      index = 0;
      break;
    case 24:
      index = 1;
      break;
    case 32:
      index = 2;
      break;
    default:
      return nullptr;
  }
  if (fetched[index] == nullptr) {
    fetched[index] = EVP_CIPHER_fetch(nullptr, kByLength[index].name, nullptr);
    ERR_clear_error();
  }
  return fetched[index] != nullptr ? fetched[index] : kByLength[index].fallback();
}

// The public key of the last DER text given, kept parsed: a job seals
// several passwords for the same printer key, and parsing it goes through
// the library's decoder machinery each time.
class PublicKeyCache {
 public:
  // A key this cache keeps (do not free), or nullptr, with the library's
  // error queue as d2i_PUBKEY left it, when `der` is not one DER
  // SubjectPublicKeyInfo.
  EVP_PKEY* Get(const uint8_t* der, size_t length) {
    if (key_ != nullptr && der_.size() == length && memcmp(der_.data(), der, length) == 0) return key_;
    const unsigned char* cursor = der;
    EVP_PKEY* key = d2i_PUBKEY(nullptr, &cursor, static_cast<long>(length));
    if (key != nullptr && cursor != der + length) {
      EVP_PKEY_free(key);
      key = nullptr;
    }
    if (key == nullptr) return nullptr;
    if (key_ != nullptr) EVP_PKEY_free(key_);
    key_ = key;
    der_.assign(der, der + length);
    return key_;
  }

 private:
  std::vector<uint8_t> der_;
  EVP_PKEY* key_ = nullptr;
};

int32_t AesCbc(bool encrypt, const uint8_t* key, size_t keyLength, const uint8_t* iv,
               const void* in, size_t inLength, void* out, size_t outCapacity, size_t* outLength) {
  if (key == nullptr || outLength == nullptr || (in == nullptr && inLength != 0) ||
      inLength > kMaxLibraryLength)
    return kCipherParamError;
  const EVP_CIPHER* cipher = AesCbcForKeyLength(keyLength);
  if (cipher == nullptr) return kCipherKeySizeError;
  if (!encrypt && inLength % kAesBlockLength != 0) return kCipherAlignmentError;
  const size_t needed = encrypt ? (inLength / kAesBlockLength + 1) * kAesBlockLength : inLength;
  if (out == nullptr || outCapacity < needed) return kCipherBufferTooSmall;

  static const uint8_t kZeroIv[kAesBlockLength] = {};
  std::unique_ptr<EVP_CIPHER_CTX, CipherCtxFree> ctx(EVP_CIPHER_CTX_new());
  if (!ctx) return kCipherMemoryFailure;
  if (EVP_CipherInit_ex(ctx.get(), cipher, nullptr, key, iv != nullptr ? iv : kZeroIv,
                        encrypt ? 1 : 0) != 1) {
    ERR_clear_error();
    return kCipherParamError;
  }
  // The library may write up to a block beyond the input before it settles;
  // work in a private buffer so `out` only ever receives the finished result.
  std::vector<uint8_t> work(inLength + 2 * kAesBlockLength);
  static const uint8_t kNothing = 0;
  int updated = 0;
  int finished = 0;
  bool ok = EVP_CipherUpdate(ctx.get(), work.data(), &updated,
                             inLength != 0 ? static_cast<const uint8_t*>(in) : &kNothing,
                             static_cast<int>(inLength)) == 1 &&
            EVP_CipherFinal_ex(ctx.get(), work.data() + updated, &finished) == 1;
  int32_t status = kCipherSuccess;
  if (!ok) {
    ERR_clear_error();
    status = encrypt ? kCipherParamError : kCipherDecodeError;
  } else {
    const size_t produced = static_cast<size_t>(updated) + static_cast<size_t>(finished);
    if (produced > outCapacity) {
      status = kCipherBufferTooSmall;
    } else {
      memcpy(out, work.data(), produced);
      *outLength = produced;
    }
  }
  OPENSSL_cleanse(work.data(), work.size());
  return status;
}

}  // namespace

int32_t CryptoRandomBytes(void* buffer, size_t length) {
  auto* bytes = static_cast<unsigned char*>(buffer);
  while (length > 0) {
    const int chunk = length > static_cast<size_t>(INT_MAX) ? INT_MAX : static_cast<int>(length);
    if (bytes == nullptr || RAND_bytes(bytes, chunk) != 1) {
      ERR_clear_error();
      return -1;
    }
    bytes += chunk;
    length -= static_cast<size_t>(chunk);
  }
  return 0;
}

bool CryptoHmacSha256(const void* key, size_t keyLength, const void* data, size_t dataLength,
                      uint8_t* mac) {
  if (mac == nullptr || keyLength > kMaxLibraryLength || (key == nullptr && keyLength != 0) ||
      (data == nullptr && dataLength != 0))
    return false;
  // Empty key or message: the library wants a real pointer even for 0 bytes.
  static const uint8_t kNothing = 0;
  unsigned int macLength = 0;
  const unsigned char* result =
      HMAC(EVP_sha256(), keyLength != 0 ? key : &kNothing, static_cast<int>(keyLength),
           dataLength != 0 ? static_cast<const unsigned char*>(data) : &kNothing, dataLength, mac,
           &macLength);
  if (result == nullptr || macLength != kHmacSha256Length) {
    ERR_clear_error();
    return false;
  }
  return true;
}

bool CryptoBase64Decode(const char* text, std::vector<uint8_t>* out) {
  out->clear();
  if (text == nullptr) return false;
  const size_t length = strlen(text);
  if (length > kMaxLibraryLength) return false;
  std::unique_ptr<EVP_ENCODE_CTX, EncodeCtxFree> ctx(EVP_ENCODE_CTX_new());
  if (!ctx) return false;
  std::vector<uint8_t> decoded(length / 4 * 3 + 3 + 64);
  int updated = 0;
  int finished = 0;
  EVP_DecodeInit(ctx.get());
  bool ok = EVP_DecodeUpdate(ctx.get(), decoded.data(), &updated,
                             reinterpret_cast<const unsigned char*>(text),
                             static_cast<int>(length)) >= 0 &&
            EVP_DecodeFinal(ctx.get(), decoded.data() + updated, &finished) == 1;
  ERR_clear_error();
  if (!ok) return false;
  decoded.resize(static_cast<size_t>(updated) + static_cast<size_t>(finished));
  *out = std::move(decoded);
  return true;
}

bool CryptoRsaOaepSha256Encrypt(const uint8_t* spkiDer, size_t derLength, const void* plain,
                                size_t plainLength, std::vector<uint8_t>* out, CryptoError* error) {
  out->clear();
  *error = CryptoError();
  if (spkiDer == nullptr || derLength == 0 || derLength > kMaxLibraryLength ||
      (plain == nullptr && plainLength != 0)) {
    error->code = kCryptoInvalidParameter;
    error->description = "no public key data";
    return false;
  }
  static PublicKeyCache keys;
  EVP_PKEY* key = keys.Get(spkiDer, derLength);
  if (key == nullptr) {
    TakeLibraryError(error, "the key data is not one DER SubjectPublicKeyInfo");
    return false;
  }
  if (EVP_PKEY_get_base_id(key) != EVP_PKEY_RSA) {
    TakeLibraryError(error, "the key is not an RSA key");
    return false;
  }
  std::unique_ptr<EVP_PKEY_CTX, PkeyCtxFree> ctx(EVP_PKEY_CTX_new(key, nullptr));
  static const uint8_t kNothing = 0;
  const auto* input = plainLength != 0 ? static_cast<const unsigned char*>(plain) : &kNothing;
  size_t length = 0;
  if (!ctx || EVP_PKEY_encrypt_init(ctx.get()) != 1 ||
      EVP_PKEY_CTX_set_rsa_padding(ctx.get(), RSA_PKCS1_OAEP_PADDING) != 1 ||
      EVP_PKEY_CTX_set_rsa_oaep_md(ctx.get(), EVP_sha256()) != 1 ||
      EVP_PKEY_CTX_set_rsa_mgf1_md(ctx.get(), EVP_sha256()) != 1 ||
      EVP_PKEY_encrypt(ctx.get(), nullptr, &length, input, plainLength) != 1) {
    TakeLibraryError(error, "the RSA operation could not be set up");
    return false;
  }
  std::vector<uint8_t> sealed(length);
  if (EVP_PKEY_encrypt(ctx.get(), sealed.data(), &length, input, plainLength) != 1) {
    TakeLibraryError(error, "the RSA encryption failed");
    return false;
  }
  sealed.resize(length);
  *out = std::move(sealed);
  return true;
}

bool CryptoCheckRsaPrivateKey(const std::string& privateKeyPem, CryptoError* error) {
  *error = CryptoError();
  return ReadRsaPrivateKey(privateKeyPem, error) != nullptr;
}

bool CryptoRsaOaepSha256Decrypt(const std::string& privateKeyPem, const void* in, size_t inLength,
                                std::vector<uint8_t>* out, CryptoError* error) {
  out->clear();
  *error = CryptoError();
  if (in == nullptr || inLength == 0 || inLength > kMaxLibraryLength) {
    error->code = kCryptoInvalidParameter;
    error->description = "no ciphertext";
    return false;
  }
  std::unique_ptr<EVP_PKEY, PkeyFree> key = ReadRsaPrivateKey(privateKeyPem, error);
  if (!key) return false;
  std::unique_ptr<EVP_PKEY_CTX, PkeyCtxFree> ctx(EVP_PKEY_CTX_new(key.get(), nullptr));
  const auto* input = static_cast<const unsigned char*>(in);
  size_t length = 0;
  if (!ctx || EVP_PKEY_decrypt_init(ctx.get()) != 1 ||
      EVP_PKEY_CTX_set_rsa_padding(ctx.get(), RSA_PKCS1_OAEP_PADDING) != 1 ||
      EVP_PKEY_CTX_set_rsa_oaep_md(ctx.get(), EVP_sha256()) != 1 ||
      EVP_PKEY_CTX_set_rsa_mgf1_md(ctx.get(), EVP_sha256()) != 1 ||
      EVP_PKEY_decrypt(ctx.get(), nullptr, &length, input, inLength) != 1) {
    TakeLibraryError(error, "the RSA operation could not be set up");
    return false;
  }
  std::vector<uint8_t> plain(length);
  if (EVP_PKEY_decrypt(ctx.get(), plain.data(), &length, input, inLength) != 1) {
    OPENSSL_cleanse(plain.data(), plain.size());
    TakeLibraryError(error, "the RSA decryption failed (another key, or damaged data)");
    return false;
  }
  plain.resize(length);
  *out = std::move(plain);
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
  if (buffer != nullptr && length != 0) OPENSSL_cleanse(buffer, length);
}
