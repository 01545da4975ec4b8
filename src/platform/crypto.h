// The cryptographic primitives the filter uses: random bytes (from the
// kernel), HMAC-SHA256, RSA-OAEP (SHA-256 digest and MGF1) with a DER
// SubjectPublicKeyInfo, AES-CBC with PKCS#7 padding, and base64 decoding of
// key text, over Mbed TLS's crypto library: a job seals its passwords in a
// fraction of the time and memory a general-purpose library takes to start.
// Nothing else in the filter calls the library directly.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

constexpr size_t kHmacSha256Length = 32;
constexpr size_t kAesBlockLength = 16;

// Fills `length` bytes with cryptographically strong random bytes. Returns 0,
// or -1 when the generator fails (the buffer is then unspecified).
int32_t CryptoRandomBytes(void* buffer, size_t length);

// HMAC-SHA256 of `data` under `key`; writes 32 bytes to `mac`. An empty key or
// message is valid. False only when the library fails.
bool CryptoHmacSha256(const void* key, size_t keyLength, const void* data, size_t dataLength,
                      uint8_t* mac);

// Decodes base64 text, skipping line ends (and blanks before them). False
// (and `out` cleared) on a character outside the alphabet, a blank inside a
// line or a malformed end.
bool CryptoBase64Decode(const char* text, std::vector<uint8_t>* out);

// What went wrong in an RSA operation: a non-zero code and its description.
struct CryptoError {
  int32_t code = 0;
  std::string description;
};

// Status for "a parameter (here: the key data) is not valid"; the receiving
// side knows failures by the original platform's numbers.
constexpr int32_t kCryptoInvalidParameter = -50;

// RSA-OAEP encryption, SHA-256 as both the OAEP digest and the MGF1 digest,
// with the RSA public key in `spkiDer` (a DER SubjectPublicKeyInfo, nothing
// after it). On success fills `out` (the key's modulus length). On failure
// fills `error` and leaves `out` empty.
bool CryptoRsaOaepSha256Encrypt(const uint8_t* spkiDer, size_t derLength, const void* plain,
                                size_t plainLength, std::vector<uint8_t>* out, CryptoError* error);

// AES-CBC statuses, with the values of the original platform constants.
constexpr int32_t kCipherSuccess = 0;
constexpr int32_t kCipherParamError = -4300;
constexpr int32_t kCipherBufferTooSmall = -4301;
constexpr int32_t kCipherMemoryFailure = -4302;
constexpr int32_t kCipherAlignmentError = -4303;
constexpr int32_t kCipherDecodeError = -4304;
constexpr int32_t kCipherKeySizeError = -4310;

// AES-CBC with PKCS#7 padding; the key length (16, 24 or 32) selects AES-128,
// -192 or -256; `iv` is 16 bytes (null: all zero). `out` is written only on
// success, with *outLength bytes. Encryption needs room for the padded
// length, decryption for the ciphertext length; less is
// kCipherBufferTooSmall. A ciphertext that is not whole blocks is
// kCipherAlignmentError, a padding that does not verify kCipherDecodeError.
int32_t CryptoAesCbcEncrypt(const uint8_t* key, size_t keyLength, const uint8_t* iv, const void* in,
                            size_t inLength, void* out, size_t outCapacity, size_t* outLength);
int32_t CryptoAesCbcDecrypt(const uint8_t* key, size_t keyLength, const uint8_t* iv, const void* in,
                            size_t inLength, void* out, size_t outCapacity, size_t* outLength);

// Overwrites `length` bytes with zeros in a way the compiler keeps.
void CryptoCleanse(void* buffer, size_t length);
