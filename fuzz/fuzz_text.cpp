// The text converters into destinations of exactly the stated size (so a
// write past the bound is caught): UTF-8 into the printer's encodings, the
// UTF-16 unit cut, slash-numeric decoding, the decimal formatter and the
// Shift-JIS width cut. Every result must be terminated inside its buffer.
//
// Input: the destination size (two bytes), a number (four bytes), then the
// text (up to a NUL).
#include <cstring>
#include <string>
#include <vector>

#include "fuzz_support.h"
#include "ticket/name_validation.h"
#include "ticket/text_encoding.h"
#include "ticket/ticket_access.h"

namespace {

void CheckTerminated(const std::vector<char>& buffer, const char* what) {
  fuzz::Check(std::memchr(buffer.data(), '\0', buffer.size()) != nullptr, what);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  fuzz::Input in(data, size);
  const size_t room = 1 + in.Number(600);
  const int32_t number = static_cast<int32_t>(in.Byte() << 24 | in.Byte() << 16 |
                                              in.Byte() << 8 | in.Byte());
  const std::string text = in.UntilNul();

  for (auto convert : {ConvertUTF8ToEncoding, ConvertUTF8ToEncodingForUTF8}) {
    std::vector<char> out(room, '\x55');
    const int32_t length = convert(text.c_str(), out.data(), static_cast<int32_t>(room));
    CheckTerminated(out, "a converted text is terminated");
    fuzz::Check(length == static_cast<int32_t>(std::strlen(out.data())), "its length is the text's");
  }
  std::vector<char> cut(room, '\0');
  std::memcpy(cut.data(), text.data(), std::min(text.size(), room - 1));
  CutUTF8ToUnits(cut.data(), static_cast<int32_t>(room), number % 300);
  CheckTerminated(cut, "a cut text is terminated");

  std::vector<char> slashes(room, '\0');
  std::memcpy(slashes.data(), text.data(), std::min(text.size(), room));
  numstrtochar(slashes.data(), static_cast<int32_t>(room));

  std::vector<char> digits(room, '\x55');
  const char* decimal = itoa(number, digits.data(), static_cast<int32_t>(room));
  fuzz::Check(decimal >= digits.data() && decimal < digits.data() + room, "digits in the buffer");
  CheckTerminated(digits, "the digits are terminated");

  std::vector<char> wide(text.begin(), text.end());
  wide.push_back('\0');
  CutShiftJISTextByWidth(wide.data(), number % 300);
  fuzz::Check(text.compare(0, std::strlen(wide.data()), wide.data()) == 0, "the cut keeps a prefix");
  (void)checkIfCharacterIsMultibyte(text.c_str());
  (void)CountUTF16Units(text.c_str());
  return 0;
}
