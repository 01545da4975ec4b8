// Sealing data for the printer and opening what the print dialog stored.
//
// Key-transport blob (little-endian, no alignment):
//   0  0x08, 0x01          2  Clen (u32)          6  total length (u32)
//   10 AES mode            11 key type            12 four zero bytes
//   16 recipient key digest (32)                  48 salt (32)
//   80 wrapped content key (Wlen: RSA-OAEP-SHA256, 256 for a 2048-bit key)
//   then the IV (16; 12 reserved for mode 0), a tag (16, mode 0 only) and
//   the AES-CBC ciphertext of the payload (Clen, PKCS#7 padded).
// The AES key is HMAC-SHA256(content key, salt) and is never stored.
//
// Storage cipher: bare AES-256-CBC ciphertext under HMAC-SHA256(A, B) with
// the IV supplied by the caller.
//
// Every operation returns 0, 2 (invalid argument) or 99 (a cryptographic
// step failed) and reports failures on plain standard output, the print
// stream: those lines deliberately stay out of the debug job copy.
#pragma once

#include <cstdint>
#include <vector>

constexpr uint32_t kSecBlobSuccess = 0;
constexpr uint32_t kSecBlobInvalidArgument = 2;
constexpr uint32_t kSecBlobCryptoFailure = 99;

// AES modes: 1 is AES-256-CBC; 0 has room reserved in the layout (12-byte IV,
// 16-byte tag) but the cipher routines refuse it.
constexpr uint32_t kSecBlobAesModeReserved = 0;
constexpr uint32_t kSecBlobAesModeCBC = 1;
// Key types: which recipient key digest goes into the blob.
constexpr uint32_t kSecBlobKeyType2048 = 0;
constexpr uint32_t kSecBlobKeyType3072 = 1;

// Largest payload a blob takes.
constexpr uint32_t kSecBlobMaxPayload = 99500;
// Fixed part of a blob: header, digest and salt.
constexpr uint32_t kSecBlobHeaderLength = 80;
// Where the fields of the layout above are, for writers and readers alike.
constexpr uint8_t kSecBlobMagic[2] = {0x08, 0x01};
constexpr uint32_t kSecBlobCipherLengthOffset = 2;
constexpr uint32_t kSecBlobTotalLengthOffset = 6;
constexpr uint32_t kSecBlobAesModeOffset = 10;
constexpr uint32_t kSecBlobKeyTypeOffset = 11;
constexpr uint32_t kSecBlobReservedOffset = 12;  // four zero bytes
constexpr uint32_t kSecBlobDigestOffset = 16;
constexpr uint32_t kSecBlobDigestLength = 32;
constexpr uint32_t kSecBlobSaltOffset = 48;
constexpr uint32_t kSecBlobSaltLength = 32;
constexpr uint32_t kSecBlobContentKeyLength = 32;
constexpr uint32_t kSecBlobCbcIvLength = 16;
constexpr uint32_t kSecBlobReservedModeIvLength = 12;
constexpr uint32_t kSecBlobReservedModeTagLength = 16;
// Room for the wrapped content key (an RSA key of up to 4096 bits).
constexpr uint32_t kSecBlobWrappedKeyRoom = 512;

// `length` random bytes. 0, or 99 after "Generate Random Error[%d]".
uint32_t SecBlobEncInternal_GenerateRandom(uint32_t length, uint8_t* buffer);

// HMAC-SHA256 into `mac` (32 bytes). 0; 99 only if the library itself fails.
uint32_t SecBlobEncInternal_GenerateHMAC(const uint8_t* key, uint32_t keyLength,
                                         const uint8_t* data, uint32_t dataLength, uint8_t* mac);

// RSA-OAEP-SHA256 of `plain` with the base64 public key text. Writes the
// ciphertext and its length when it fits `outCapacity`. 0, or 99 after
// "RSA Error[%d] %s" (a key text that does not decode included).
uint32_t SecBlobEncInternal_RSAEncrypt(const char* keyText, uint32_t keyTextLength,
                                       const uint8_t* plain, uint32_t plainLength,
                                       uint32_t outCapacity, uint8_t* out, uint32_t* outLength);

// Mode 1: AES-CBC, PKCS#7, 16-byte IV (ivLength is not used), key length
// selecting the key size; writes the produced length to *outLength. 0, or 99
// after "AES Error[%d]\n" with the cipher status. Any other mode: 2 after the
// line "AES Error. Unsupported AES Mode.".
uint32_t SecBlobEncInternal_AESEncrypt(uint32_t mode, const uint8_t* key, uint32_t keyLength,
                                       const uint8_t* iv, uint32_t ivLength, const uint8_t* in,
                                       uint32_t inLength, uint32_t outCapacity, uint8_t* out,
                                       uint32_t* outLength);
uint32_t SecBlobEncInternal_AESDecrypt(uint32_t mode, const uint8_t* key, uint32_t keyLength,
                                       const uint8_t* iv, uint32_t ivLength, const uint8_t* in,
                                       uint32_t inLength, uint32_t outCapacity, uint8_t* out,
                                       uint32_t* outLength);

// DER bytes of a base64 key text (line ends skipped); empty when it does not
// decode or decodes to nothing.
std::vector<uint8_t> SecBlobEnc_Decode_Key(const char* keyText);

// Seals `data` in a key-transport blob for `keyText`. *outLength holds the
// room in `out` on entry and the blob length on success; the blob needs
// 80 + Wlen + 16 + dataLength rounded up to the next whole 16 bytes. Results:
//   2  dataLength above 99,500 (message 88), key type not 0 or 1 (106), room
//      too small for the finished blob (no message);
//   99 random (114, 122, 139), HMAC (131), RSA (150) or AES (161) failure.
// On failure neither `out` nor *outLength is touched.
uint32_t SecBlobEnc_KT_Encrypt(uint32_t aesMode, uint32_t keyType, const uint8_t* data,
                               uint32_t dataLength, const char* keyText, uint32_t keyTextLength,
                               uint8_t* out, uint32_t* outLength);

// Storage cipher. *outLength holds the room on entry, the output length on
// success. 0, or 99 after message 39 / 52 (encrypt) or 84 / 97 (decrypt).
uint32_t SecBlobEnc_DataStorage_Encrypt(const uint8_t* data, uint32_t dataLength,
                                        const uint8_t* keyA, uint32_t keyALength,
                                        const uint8_t* keyB, uint32_t keyBLength, const uint8_t* iv,
                                        uint32_t ivLength, uint8_t* out, uint32_t* outLength);
uint32_t SecBlobEnc_DataStorage_Decrypt(const uint8_t* data, uint32_t dataLength,
                                        const uint8_t* keyA, uint32_t keyALength,
                                        const uint8_t* keyB, uint32_t keyBLength, const uint8_t* iv,
                                        uint32_t ivLength, uint8_t* out, uint32_t* outLength);

// Entry points for the rest of the filter.
uint32_t Encode_Storage(const uint8_t* data, uint32_t dataLength, const uint8_t* keyA,
                        uint32_t keyALength, const uint8_t* keyB, uint32_t keyBLength,
                        const uint8_t* iv, uint32_t ivLength, uint8_t* out, uint32_t* outLength);
uint32_t Decode_Storage(const uint8_t* data, uint32_t dataLength, const uint8_t* keyA,
                        uint32_t keyALength, const uint8_t* keyB, uint32_t keyBLength,
                        const uint8_t* iv, uint32_t ivLength, uint8_t* out, uint32_t* outLength);
// A blob in mode 1 for the built-in 2048-bit recipient key (key type 0).
uint32_t Encode_Random(const uint8_t* data, uint32_t dataLength, uint8_t* out, uint32_t* outLength);
uint32_t Generate_Random(uint32_t length, uint8_t* buffer);

// Debugging aid: writes `length` bytes to the file at `path`; prints
// "cannot open file" when it cannot be opened.
void outputData(const uint8_t* buffer, uint32_t length, const char* path);
