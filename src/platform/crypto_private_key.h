// RSA-OAEP decryption with a private key, for reading sealed fields back
// (the stream inspector). It stays on OpenSSL, whose PEM reader takes every
// form a key file comes in; the filter itself never links it.
#pragma once

#include <string>
#include <vector>

#include "platform/crypto.h"

// RSA-OAEP decryption, SHA-256 as both the OAEP digest and the MGF1 digest,
// with the RSA private key given as PEM text (PKCS#8 or the traditional RSA
// form, unencrypted). On success fills `out` with the plain bytes. On failure
// (a key that is not an RSA private key, a ciphertext that does not decrypt
// under it) fills `error` and leaves `out` empty.
bool CryptoRsaOaepSha256Decrypt(const std::string& privateKeyPem, const void* in, size_t inLength,
                                std::vector<uint8_t>* out, CryptoError* error);

// True when `privateKeyPem` holds an RSA private key the decryption takes;
// otherwise the reason is in `error`.
bool CryptoCheckRsaPrivateKey(const std::string& privateKeyPem, CryptoError* error);
