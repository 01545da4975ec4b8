// The base64 codec of the password fields, and the password getter that
// uses it.
//
// Input: one byte choosing the check, then its data:
//   0  encode the rest, decode it again: the same bytes;
//   1  decode the rest as text with a length and capacity from the input,
//      into a buffer of exactly that capacity;
//   2  the password getter on the rest as a ticket value, into a
//      destination of a size from the input;
//   3  the rest as a plain password the print dialog stored: the field must
//      be a sealed blob of the right size and hold nothing of the password.
#include <cstring>
#include <string>
#include <vector>

#include "fuzz_support.h"
#include "secure/base64.h"
#include "secure/key_material.h"
#include "secure/password_field.h"
#include "secure/sec_blob.h"

namespace {

// The room the decoder asks for: a quarter of the length times three, less
// the "=" at the end of a text that fills its length.
int32_t RoomNeeded(const std::string& text, int32_t length) {
  int32_t padding = 0;
  if (std::strlen(text.c_str()) >= static_cast<size_t>(length)) {
    for (int32_t at = length - 1; at >= 0 && text[static_cast<size_t>(at)] == '='; --at) ++padding;
  }
  return length / 4 * 3 - padding;
}

void RoundTrip(const std::string& bytes) {
  if (bytes.empty()) return;
  const auto* data = reinterpret_cast<const uint8_t*>(bytes.data());
  int32_t length = static_cast<int32_t>(bytes.size());
  int32_t needed = 0;
  fuzz::Check(XSPBinToB64(data, length, nullptr, &needed, 0) == kXSPNoRoom, "size query");
  fuzz::Check(needed == (length + 2) / 3 * 4, "four characters per three bytes");
  std::vector<char> text(static_cast<size_t>(needed));
  int32_t written = 0;
  fuzz::Check(XSPBinToB64(data, length, text.data(), &written, needed) == kXSPSuccess, "encode");
  fuzz::Check(written == needed, "the whole room used");
  std::string encoded(text.begin(), text.end());
  for (char c : encoded) {
    fuzz::Check(c == '=' || std::strchr(B64CHR, c) != nullptr, "only the alphabet and padding");
  }
  std::vector<uint8_t> back(bytes.size());
  int32_t decoded = 0;
  fuzz::Check(XSPB64ToBin(encoded.c_str(), written, back.data(), &decoded, length) == kXSPSuccess,
              "decode", encoded);
  fuzz::Check(decoded == length && std::memcmp(back.data(), data, bytes.size()) == 0,
              "decoding gives the bytes back", encoded);
}

void DecodeAnyText(fuzz::Input& in) {
  int32_t length = static_cast<int32_t>(in.Number(600)) - 4;
  int32_t capacity = static_cast<int32_t>(in.Number(600)) - 4;
  std::string text = in.Rest();
  // The decoder may be handed a length beyond the text's NUL, never beyond
  // the buffer holding it.
  if (length > 0 && text.size() < static_cast<size_t>(length))
    text.resize(static_cast<size_t>(length));
  std::vector<uint8_t> out(capacity > 0 ? static_cast<size_t>(capacity) : 0);
  int32_t outLength = -7;
  int32_t result =
      XSPB64ToBin(text.c_str(), length, capacity > 0 ? out.data() : nullptr, &outLength, capacity);
  if (length <= 0 || capacity < 0 || length % 4 != 0) {
    fuzz::Check(result == kXSPBadLength || result == kXSPMissingPointer, "bad lengths refused");
    return;
  }
  if (capacity == 0) {
    fuzz::Check(result == kXSPNoRoom && outLength == RoomNeeded(text, length), "size query");
    return;
  }
  if (result == kXSPNoRoom) {
    fuzz::Check(outLength == RoomNeeded(text, length) && outLength > capacity,
                "no room means more than the capacity is needed");
    return;
  }
  fuzz::Check(result == kXSPSuccess, "a sized decode succeeds");
  fuzz::Check(outLength >= 0 && outLength <= capacity, "never more than the capacity");
}

unsigned RunGetter(const std::string& value, std::vector<char>& field) {
  static const char kKey[] = "com.korvanel.qd.jtz.printsettings.PrintTypePasswordTicketKey";
  cups_option_t option = {const_cast<char*>(kKey), const_cast<char*>(value.c_str())};
  return GetTicketPasswordStringConvertedToEncryption(kKey, 1, &option, field.data(),
                                                      static_cast<int32_t>(field.size()));
}

void GetterOnAnyValue(fuzz::Input& in) {
  size_t size = 1 + in.Number(2048);
  std::string value = in.UntilNul();
  std::vector<char> field(size, '\x55');
  unsigned result = RunGetter(value, field);
  fuzz::Check(result <= 1, "the getter answers 0 or 1");
  fuzz::Check(std::memchr(field.data(), '\0', size) != nullptr, "the field is terminated");
}

// The text the print dialog stores for `password`, made with the filter's
// own storage cipher and codec.
std::string StoredText(const std::string& password) {
  uint8_t cipher[512];
  uint32_t cipherLength = sizeof cipher;
  if (Encode_Storage(reinterpret_cast<const uint8_t*>(password.data()),
                     static_cast<uint32_t>(password.size()), seed1, sizeof seed1, seed2,
                     sizeof seed2, seed3, sizeof seed3, cipher, &cipherLength) != kSecBlobSuccess) {
    fuzz::Fail("the storage cipher seals any password");
  }
  std::vector<char> text(1024);
  int32_t textLength = 0;
  fuzz::Check(XSPBinToB64(cipher, static_cast<int32_t>(cipherLength), text.data(), &textLength,
                          static_cast<int32_t>(text.size())) == kXSPSuccess,
              "encode the stored password");
  return std::string(text.data(), static_cast<size_t>(textLength));
}

void SealedPassword(fuzz::Input& in) {
  // A password the getter can open: no NUL (it is text), at most 239 bytes.
  std::string password = in.UntilNul().substr(0, 239);
  std::string stored = StoredText(password);
  std::vector<char> field(2048);
  unsigned result = RunGetter(stored, field);
  std::string text(field.data());
  if (stored[0] == '/') {
    // The getter reads a value starting with "/" as slash-separated byte
    // values first, which leaves nothing to open: no field, and no password.
    fuzz::Check(text.find(password) == std::string::npos || password.size() < 8,
                "the plain password is not in the field", password);
    return;
  }
  fuzz::Check(result == 1, "a stored password becomes a field", stored);
  size_t blob = 80 + 256 + 16 + 16 * (password.size() / 16 + 1);
  fuzz::Check(text.size() == (blob + 2) / 3 * 4, "the field is the base64 of one sealed blob",
              text);
  fuzz::Check(text != stored, "the stored text is not sent as it came");
  // The first 48 bytes of a blob (header and recipient key digest) are the
  // same in every blob: their 64 base64 characters may hold anything. The
  // rest is random or enciphered, where eight bytes of the password (or of
  // its base64 characters) appearing by chance are out of reach.
  std::vector<uint8_t> sealed(blob);
  int32_t sealedLength = 0;
  fuzz::Check(XSPB64ToBin(text.c_str(), static_cast<int32_t>(text.size()), sealed.data(),
                          &sealedLength, static_cast<int32_t>(blob)) == kXSPSuccess &&
                  static_cast<size_t>(sealedLength) == blob,
              "the field decodes to the blob");
  if (password.size() >= 8) {
    fuzz::Check(text.find(password, 64) == std::string::npos,
                "the plain password is not in the field", password + "\nfield " + text);
    std::string varying(sealed.begin() + 48, sealed.end());
    fuzz::Check(varying.find(password) == std::string::npos,
                "the plain password is not in the blob", password);
  }
  fuzz::Check(sealed[0] == 0x08 && sealed[1] == 0x01 && sealed[10] == 1 && sealed[11] == 0,
              "a mode 1, key type 0 blob");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static fuzz::StdoutCapture capture;  // the crypto layer's messages go to stdout
  fuzz::Input in(data, size);
  switch (in.Byte() % 4) {
    case 0:
      RoundTrip(in.Rest());
      break;
    case 1:
      DecodeAnyText(in);
      break;
    case 2:
      GetterOnAnyValue(in);
      break;
    default:
      SealedPassword(in);
      break;
  }
  capture.Take();
  return 0;
}
