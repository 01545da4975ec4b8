// The base64 codec of the password fields.
//
// Input: one byte choosing the check, then its data:
//   even  encode the rest and decode it again: the same bytes;
//   odd   decode the rest as text with a length and a capacity from the
//         input, into a buffer of exactly that capacity.
#include <cstring>
#include <string>
#include <vector>

#include "fuzz_support.h"
#include "secure/base64.h"

namespace {

void RoundTrip(const std::string& bytes) {
  if (bytes.empty()) return;
  const auto* data = reinterpret_cast<const uint8_t*>(bytes.data());
  const int32_t length = static_cast<int32_t>(bytes.size());
  int32_t needed = 0;
  fuzz::Check(XSPBinToB64(data, length, nullptr, &needed, 0) == kXSPNoRoom, "size query");
  fuzz::Check(needed == (length + 2) / 3 * 4, "four characters per three bytes");
  std::vector<char> text(static_cast<size_t>(needed));
  int32_t written = 0;
  fuzz::Check(XSPBinToB64(data, length, text.data(), &written, needed) == kXSPSuccess, "encode");
  std::vector<uint8_t> back(bytes.size());
  int32_t decoded = 0;
  fuzz::Check(XSPB64ToBin(std::string(text.begin(), text.end()).c_str(), written, back.data(),
                          &decoded, length) == kXSPSuccess,
              "decode");
  fuzz::Check(decoded == length && std::memcmp(back.data(), data, bytes.size()) == 0,
              "decoding gives the bytes back");
}

void DecodeAnyText(fuzz::Input& in) {
  const int32_t length = static_cast<int32_t>(in.Number(600)) - 4;
  const int32_t capacity = static_cast<int32_t>(in.Number(600)) - 4;
  std::string text = in.Rest();
  // A length beyond the text's NUL, never beyond the buffer holding it.
  if (length > 0 && text.size() < static_cast<size_t>(length)) text.resize(static_cast<size_t>(length));
  std::vector<uint8_t> out(capacity > 0 ? static_cast<size_t>(capacity) : 0);
  int32_t outLength = -7;
  if (XSPB64ToBin(text.c_str(), length, capacity > 0 ? out.data() : nullptr, &outLength,
                  capacity) == kXSPSuccess) {
    fuzz::Check(outLength >= 0 && outLength <= capacity, "never more than the capacity");
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  fuzz::Input in(data, size);
  if (in.Byte() % 2 == 0) {
    RoundTrip(in.Rest());
  } else {
    DecodeAnyText(in);
  }
  return 0;
}
