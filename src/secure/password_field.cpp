#include "secure/password_field.h"

#include <cstdio>
#include <cstring>

#include "base/fixed_text.h"
#include "platform/crypto.h"
#include "secure/base64.h"
#include "secure/key_material.h"
#include "secure/sec_blob.h"
#include "ticket/text_encoding.h"
#include "ticket/ticket_access.h"

namespace {

constexpr size_t kWorkSize = 1024;
// The dialog's ciphertext may decode to at most this many bytes.
constexpr int32_t kStoredCipherRoom = 255;
constexpr uint32_t kOpenedRoom = 255;
constexpr int32_t kBlobRoom = 2000;
constexpr int32_t kFieldRoom = 2000;

// Wipes the buffers that held the opened password however the getter leaves.
struct PasswordBuffers {
  uint8_t decoded[kBlobRoom] = {};
  uint8_t opened[kOpenedRoom] = {};
  uint8_t blob[kBlobRoom] = {};
  ~PasswordBuffers() {
    CryptoCleanse(opened, sizeof opened);
    CryptoCleanse(blob, sizeof blob);
  }
};

}  // namespace

unsigned GetTicketPasswordStringConvertedToEncryption(const char* key, int32_t optionCount,
                                                      cups_option_t* options, void* destination,
                                                      int32_t size) {
  char* field = static_cast<char*>(destination);
  if (size > 0) ZeroText(field, static_cast<size_t>(size));
  const char* value = cupsGetOption(key, optionCount, options);
  if (value == nullptr || size <= 0) return 0;

  char work[kWorkSize];
  ZeroText(work, sizeof work);
  CopyText(work, sizeof work, value);
  numstrtochar(work, static_cast<int32_t>(sizeof work));
  ZeroText(field, static_cast<size_t>(size));
  ConvertUTF8ToEncoding(work, field, size);

  // The length of the value as received, not of the converted text: the
  // decoder stops at the converted text's end either way.
  const size_t valueLength = strlen(value);
  const int32_t textLength =
      valueLength > static_cast<size_t>(INT32_MAX) ? INT32_MAX : static_cast<int32_t>(valueLength);
  PasswordBuffers buffers;
  int32_t decodedLength = 0;
  if (XSPB64ToBin(field, textLength, buffers.decoded, &decodedLength, kStoredCipherRoom) !=
      kXSPSuccess)
    return 0;

  uint32_t openedLength = kOpenedRoom;
  if (Decode_Storage(buffers.decoded, static_cast<uint32_t>(decodedLength), seed1, sizeof seed1,
                     seed2, sizeof seed2, seed3, sizeof seed3, buffers.opened,
                     &openedLength) != kSecBlobSuccess)
    return 1;  // the stored text goes to the printer as it came

  uint32_t blobLength = kBlobRoom;
  const uint32_t sealed = Encode_Random(buffers.opened, openedLength, buffers.blob, &blobLength);
  if (sealed != kSecBlobSuccess)
    fprintf(stderr, "##filter debug## final encode failed encodeResult : %d \n",
            static_cast<int>(sealed));

  // The text must leave room for the terminator the zeroed field provides.
  const int32_t capacity = size - 1 < kFieldRoom ? size - 1 : kFieldRoom;
  int32_t fieldLength = 0;
  return XSPBinToB64(buffers.blob, static_cast<int32_t>(blobLength), field, &fieldLength,
                     capacity) == kXSPSuccess
             ? 1
             : 0;
}
