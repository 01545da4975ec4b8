#include "platform/text_codec.h"

#include <iconv.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <vector>

namespace {

const iconv_t kNoDescriptor = reinterpret_cast<iconv_t>(-1);
const size_t kIconvFailed = static_cast<size_t>(-1);

// One iconv descriptor for the whole process. A text is a handful of bytes
// and conversion goes unit by unit, so opening per call would dominate.
class Descriptor {
 public:
  Descriptor(const char* to, const char* from) : cd_(iconv_open(to, from)) {}
  ~Descriptor() {
    if (cd_ != kNoDescriptor) iconv_close(cd_);
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  bool usable() const { return cd_ != kNoDescriptor; }
  iconv_t get() const { return cd_; }
  // Back to the initial state, dropping anything a failed call left behind.
  void Reset() const { iconv(cd_, nullptr, nullptr, nullptr, nullptr); }

 private:
  iconv_t cd_;
};

// UTF-16LE is named explicitly so iconv neither writes nor expects a byte
// order mark.
const Descriptor& UTF8ToUTF16() {
  static const Descriptor d("UTF-16LE", "UTF-8");
  return d;
}
const Descriptor& UTF16ToShiftJIS() {
  static const Descriptor d("SHIFT_JISX0213", "UTF-16LE");
  return d;
}
const Descriptor& ShiftJISToUTF16() {
  static const Descriptor d("UTF-16LE", "SHIFT_JISX0213");
  return d;
}

void AppendLittleEndianUnits(const char* bytes, size_t length, std::u16string* units) {
  for (size_t i = 0; i + 1 < length; i += 2) {
    unsigned low = static_cast<unsigned char>(bytes[i]);
    unsigned high = static_cast<unsigned char>(bytes[i + 1]);
    units->push_back(static_cast<char16_t>(low | (high << 8)));
  }
}

// Runs a decoder to UTF-16LE over `length` bytes; keeps the units of the
// valid prefix when the input is bad or cut short.
//
// The whole text goes in one call with room for all of it (no decoder here
// makes more than two output bytes of one input byte): the C library's
// JIS X 0213 decoder, stopped for room between the two characters that one
// code stands for, writes the second one again and again without reading on.
bool DecodeToUnits(const Descriptor& d, const char* bytes, size_t length, std::u16string* units) {
  units->clear();
  if (!d.usable()) return false;
  d.Reset();
  std::vector<char> buffer(2 * length + 16);  // and the flush of a held character
  char* in = const_cast<char*>(bytes);
  size_t inLeft = length;
  char* out = buffer.data();
  size_t outLeft = buffer.size();
  bool complete = iconv(d.get(), &in, &inLeft, &out, &outLeft) != kIconvFailed;
  if (iconv(d.get(), nullptr, nullptr, &out, &outLeft) == kIconvFailed) complete = false;
  AppendLittleEndianUnits(buffer.data(), static_cast<size_t>(out - buffer.data()), units);
  d.Reset();
  return complete && inLeft == 0;
}

bool IsSurrogate(char16_t unit) { return unit >= 0xD800 && unit <= 0xDFFF; }
bool IsHighSurrogate(char16_t unit) { return unit >= 0xD800 && unit <= 0xDBFF; }
bool IsLowSurrogate(char16_t unit) { return unit >= 0xDC00 && unit <= 0xDFFF; }

void AppendCodePointUTF8(char32_t cp, std::string* out) {
  if (cp < 0x80) {
    out->push_back(static_cast<char>(cp));
  } else if (cp < 0x800) {
    out->push_back(static_cast<char>(0xC0 | (cp >> 6)));
    out->push_back(static_cast<char>(0x80 | (cp & 0x3F)));
  } else if (cp < 0x10000) {
    out->push_back(static_cast<char>(0xE0 | (cp >> 12)));
    out->push_back(static_cast<char>(0x80 | ((cp >> 6) & 0x3F)));
    out->push_back(static_cast<char>(0x80 | (cp & 0x3F)));
  } else {
    out->push_back(static_cast<char>(0xF0 | (cp >> 18)));
    out->push_back(static_cast<char>(0x80 | ((cp >> 12) & 0x3F)));
    out->push_back(static_cast<char>(0x80 | ((cp >> 6) & 0x3F)));
    out->push_back(static_cast<char>(0x80 | (cp & 0x3F)));
  }
}

}  // namespace

bool DecodeUTF8(const char* text, std::u16string* units) {
  if (text == nullptr) {
    units->clear();
    return false;
  }
  const size_t length = std::strlen(text);
  // ASCII, what most texts are, is its own UTF-16; the converter (a module
  // the C library loads) is opened only for the rest.
  if (std::all_of(text, text + length, [](char c) { return static_cast<unsigned char>(c) < 0x80; })) {
    units->assign(text, text + length);
    return true;
  }
  return DecodeToUnits(UTF8ToUTF16(), text, length, units);
}

bool IsValidUTF8(const char* text) {
  std::u16string units;
  return DecodeUTF8(text, &units);
}

bool EncodeUnitShiftJISX0213(char16_t unit, char* out, size_t size) {
  if (size == 0) return false;
  std::memset(out, 0, size);
  // ASCII stands for itself in this encoding, so its converter (two modules
  // the C library loads) is opened only for the rest.
  if (unit < 0x80 && size > 1) {
    out[0] = static_cast<char>(unit);
    return true;
  }
  const Descriptor& d = UTF16ToShiftJIS();
  if (!d.usable() || IsSurrogate(unit)) return false;
  char in[2] = {static_cast<char>(unit & 0xFF), static_cast<char>(unit >> 8)};
  char* inPtr = in;
  size_t inLeft = sizeof in;
  char* outPtr = out;
  size_t outLeft = size - 1;  // keep the terminator
  d.Reset();
  bool ok = iconv(d.get(), &inPtr, &inLeft, &outPtr, &outLeft) != kIconvFailed;
  // The JIS X 0213 encoder holds back a kana that a following combining
  // mark could join; the flush writes it out.
  if (ok) ok = iconv(d.get(), nullptr, nullptr, &outPtr, &outLeft) != kIconvFailed;
  d.Reset();
  if (!ok || inLeft != 0 || outPtr == out) {
    std::memset(out, 0, size);
    return false;
  }
  return true;
}

bool EncodeUnitUTF8(char16_t unit, char* out, size_t size) {
  if (size == 0) return false;
  std::memset(out, 0, size);
  if (IsSurrogate(unit) || size < 4) return false;
  std::string bytes;
  AppendCodePointUTF8(unit, &bytes);
  std::memcpy(out, bytes.data(), bytes.size());
  return true;
}

std::string EncodeUTF8(const char16_t* units, size_t count) {
  std::string out;
  for (size_t i = 0; i < count; ++i) {
    char16_t unit = units[i];
    if (!IsSurrogate(unit)) {
      AppendCodePointUTF8(unit, &out);
    } else if (IsHighSurrogate(unit) && i + 1 < count && IsLowSurrogate(units[i + 1])) {
      char32_t cp = 0x10000 + ((static_cast<char32_t>(unit) - 0xD800) << 10) +
                    (static_cast<char32_t>(units[i + 1]) - 0xDC00);
      AppendCodePointUTF8(cp, &out);
      ++i;
    }
  }
  return out;
}

bool DecodeShiftJISX0213(const char* bytes, size_t length, std::u16string* units) {
  if (bytes == nullptr) {
    units->clear();
    return length == 0;
  }
  return DecodeToUnits(ShiftJISToUTF16(), bytes, length, units);
}
