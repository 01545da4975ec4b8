#include "platform/crypto_private_key.h"

#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/rsa.h>

#include <climits>
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
struct BioFree {
  void operator()(BIO* bio) const { BIO_free(bio); }
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

}  // namespace

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
