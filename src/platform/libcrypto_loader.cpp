// libcrypto, loaded on first use.
//
// Most jobs carry no password to seal, yet a filter linked against
// libcrypto pays for it at every start: about 1.4 MB of resident memory and
// the relocation of the library's symbols. So the filter is not linked
// against it; the OpenSSL functions that platform/crypto.cpp calls are
// defined here instead, each forwarding to the library, which is opened
// with dlopen the first time any of them is called. The definitions use the
// library's own declarations, so a signature that differs does not compile,
// and a function that crypto.cpp starts to use without a forwarder here
// does not link.
//
// When the library cannot be opened, each function fails the way the
// library reports failure (null, 0, -1), and the password fields fall back
// as they do on any cryptographic failure.
#include <dlfcn.h>

#include <openssl/crypto.h>
#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/hmac.h>
#include <openssl/opensslv.h>
#include <openssl/pem.h>
#include <openssl/rand.h>
#include <openssl/rsa.h>
#include <openssl/x509.h>

#include <cstddef>

namespace {

// The run-time name of the library these headers belong to.
#define ZPJL_LIBCRYPTO_NAME "libcrypto.so." OPENSSL_MSTR(OPENSSL_SHLIB_VERSION)

void* Resolve(const char* name) {
  static void* library = dlopen(ZPJL_LIBCRYPTO_NAME, RTLD_NOW | RTLD_LOCAL);
  return library != nullptr ? dlsym(library, name) : nullptr;
}

}  // namespace

// A forwarder: `failed` is what the function answers without the library.
#define ZPJL_FORWARD(result, name, params, args, failed)                         \
  extern "C" result name params {                                                \
    static const auto real = reinterpret_cast<decltype(&name)>(Resolve(#name)); \
    if (real == nullptr) return failed;                                          \
    return real args;                                                            \
  }
#define ZPJL_FORWARD_VOID(name, params, args)                                    \
  extern "C" void name params {                                                  \
    static const auto real = reinterpret_cast<decltype(&name)>(Resolve(#name)); \
    if (real != nullptr) real args;                                              \
  }

// Errors.
ZPJL_FORWARD(unsigned long, ERR_peek_last_error, (void), (), 0)
ZPJL_FORWARD_VOID(ERR_error_string_n, (unsigned long e, char* buf, size_t len), (e, buf, len))
ZPJL_FORWARD_VOID(ERR_clear_error, (void), ())

// Random bytes, digests, MAC, wiping.
ZPJL_FORWARD(int, RAND_bytes, (unsigned char* buf, int num), (buf, num), 0)
ZPJL_FORWARD(const EVP_MD*, EVP_sha256, (void), (), nullptr)
ZPJL_FORWARD(unsigned char*, HMAC,
             (const EVP_MD* evp_md, const void* key, int key_len, const unsigned char* data,
              size_t data_len, unsigned char* md, unsigned int* md_len),
             (evp_md, key, key_len, data, data_len, md, md_len), nullptr)

extern "C" void OPENSSL_cleanse(void* ptr, size_t len) {
  static const auto real =
      reinterpret_cast<decltype(&OPENSSL_cleanse)>(Resolve("OPENSSL_cleanse"));
  if (real != nullptr) {
    real(ptr, len);
    return;
  }
  // Without the library, still wipe in a way the compiler keeps.
  volatile unsigned char* bytes = static_cast<volatile unsigned char*>(ptr);
  for (size_t i = 0; i < len; ++i) bytes[i] = 0;
}

// AES-CBC.
ZPJL_FORWARD(const EVP_CIPHER*, EVP_aes_128_cbc, (void), (), nullptr)
ZPJL_FORWARD(const EVP_CIPHER*, EVP_aes_192_cbc, (void), (), nullptr)
ZPJL_FORWARD(const EVP_CIPHER*, EVP_aes_256_cbc, (void), (), nullptr)
ZPJL_FORWARD(EVP_CIPHER*, EVP_CIPHER_fetch,
             (OSSL_LIB_CTX * ctx, const char* algorithm, const char* properties),
             (ctx, algorithm, properties), nullptr)
ZPJL_FORWARD(EVP_CIPHER_CTX*, EVP_CIPHER_CTX_new, (void), (), nullptr)
ZPJL_FORWARD_VOID(EVP_CIPHER_CTX_free, (EVP_CIPHER_CTX * ctx), (ctx))
ZPJL_FORWARD(int, EVP_CipherInit_ex,
             (EVP_CIPHER_CTX * ctx, const EVP_CIPHER* cipher, ENGINE* impl,
              const unsigned char* key, const unsigned char* iv, int enc),
             (ctx, cipher, impl, key, iv, enc), 0)
ZPJL_FORWARD(int, EVP_CipherUpdate,
             (EVP_CIPHER_CTX * ctx, unsigned char* out, int* outl, const unsigned char* in,
              int inl),
             (ctx, out, outl, in, inl), 0)
ZPJL_FORWARD(int, EVP_CipherFinal_ex, (EVP_CIPHER_CTX * ctx, unsigned char* outm, int* outl),
             (ctx, outm, outl), 0)

// Base64 decoding.
ZPJL_FORWARD(EVP_ENCODE_CTX*, EVP_ENCODE_CTX_new, (void), (), nullptr)
ZPJL_FORWARD_VOID(EVP_ENCODE_CTX_free, (EVP_ENCODE_CTX * ctx), (ctx))
ZPJL_FORWARD_VOID(EVP_DecodeInit, (EVP_ENCODE_CTX * ctx), (ctx))
ZPJL_FORWARD(int, EVP_DecodeUpdate,
             (EVP_ENCODE_CTX * ctx, unsigned char* out, int* outl, const unsigned char* in,
              int inl),
             (ctx, out, outl, in, inl), -1)
ZPJL_FORWARD(int, EVP_DecodeFinal, (EVP_ENCODE_CTX * ctx, unsigned char* out, int* outl),
             (ctx, out, outl), -1)

// RSA-OAEP with a public key.
ZPJL_FORWARD(EVP_PKEY*, d2i_PUBKEY, (EVP_PKEY * *a, const unsigned char** pp, long length),
             (a, pp, length), nullptr)
ZPJL_FORWARD_VOID(EVP_PKEY_free, (EVP_PKEY * pkey), (pkey))
ZPJL_FORWARD(int, EVP_PKEY_get_base_id, (const EVP_PKEY* pkey), (pkey), EVP_PKEY_NONE)
ZPJL_FORWARD(EVP_PKEY_CTX*, EVP_PKEY_CTX_new, (EVP_PKEY * pkey, ENGINE* e), (pkey, e), nullptr)
ZPJL_FORWARD_VOID(EVP_PKEY_CTX_free, (EVP_PKEY_CTX * ctx), (ctx))
ZPJL_FORWARD(int, EVP_PKEY_encrypt_init, (EVP_PKEY_CTX * ctx), (ctx), 0)
ZPJL_FORWARD(int, EVP_PKEY_CTX_set_rsa_padding, (EVP_PKEY_CTX * ctx, int pad_mode),
             (ctx, pad_mode), 0)
ZPJL_FORWARD(int, EVP_PKEY_CTX_set_rsa_oaep_md, (EVP_PKEY_CTX * ctx, const EVP_MD* md), (ctx, md),
             0)
ZPJL_FORWARD(int, EVP_PKEY_CTX_set_rsa_mgf1_md, (EVP_PKEY_CTX * ctx, const EVP_MD* md), (ctx, md),
             0)
ZPJL_FORWARD(int, EVP_PKEY_encrypt,
             (EVP_PKEY_CTX * ctx, unsigned char* out, size_t* outlen, const unsigned char* in,
              size_t inlen),
             (ctx, out, outlen, in, inlen), 0)

// RSA-OAEP with a private key read from PEM text (reading a print stream back).
ZPJL_FORWARD(BIO*, BIO_new_mem_buf, (const void* buf, int len), (buf, len), nullptr)
ZPJL_FORWARD(int, BIO_free, (BIO * a), (a), 0)
ZPJL_FORWARD(EVP_PKEY*, PEM_read_bio_PrivateKey,
             (BIO * bp, EVP_PKEY** x, pem_password_cb* cb, void* u), (bp, x, cb, u), nullptr)
ZPJL_FORWARD(int, EVP_PKEY_decrypt_init, (EVP_PKEY_CTX * ctx), (ctx), 0)
ZPJL_FORWARD(int, EVP_PKEY_decrypt,
             (EVP_PKEY_CTX * ctx, unsigned char* out, size_t* outlen, const unsigned char* in,
              size_t inlen),
             (ctx, out, outlen, in, inlen), 0)
