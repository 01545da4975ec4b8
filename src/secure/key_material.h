// Key material embedded at build time from the key directory (see README,
// "Key material"): the printers' RSA-2048 public key as base64 text, the
// digests that name the recipient key inside a blob, and the storage cipher's
// key material shared with the print dialog. Deployment data, never modified.
#pragma once

#include <cstdint>

// Base64 of the DER SubjectPublicKeyInfo: six lines of 64 characters and one
// of 8, each ended by "\n" (399 characters).
constexpr uint32_t kRecipientKeyTextLength = 399;
extern const char RSA_PUBKEY_2048_OFFICIAL[kRecipientKeyTextLength + 1];

// Key identifiers written into a blob for key type 0 (2048 bits) and 1 (3072).
extern const uint8_t pubkey2048_OFFICIAL_SHA256[32];
extern const uint8_t pubkey3072_OFFICIAL_SHA256[32];

// Storage cipher: AES key = HMAC-SHA256(seed1, seed2), IV = seed3.
extern const uint8_t seed1[32];
extern const uint8_t seed2[32];
extern const uint8_t seed3[16];
