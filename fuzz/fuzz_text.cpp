// The text converters, against models: UTF-8 into the printer's encodings,
// the UTF-16 unit count and cut, slash-numeric decoding, the decimal
// formatter and the Shift-JIS width cut. Destinations are heap buffers of
// exactly the stated size, so a write past the bound is caught.
//
// Input: the destination size (two bytes), a number (four bytes), then the
// text (up to a NUL).
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "fuzz_support.h"
#include "platform/text_codec.h"
#include "ticket/name_validation.h"
#include "ticket/text_encoding.h"
#include "ticket/ticket_access.h"

namespace {

// Strict UTF-8 (no overlong forms, no surrogates, nothing above U+10FFFF).
// Returns the code points of the valid prefix; *valid tells whether that is
// the whole text.
std::vector<char32_t> DecodeStrict(const std::string& text, bool* valid) {
  std::vector<char32_t> points;
  size_t i = 0;
  *valid = true;
  while (i < text.size()) {
    unsigned char c = static_cast<unsigned char>(text[i]);
    size_t extra;
    char32_t cp;
    char32_t minimum;
    if (c < 0x80) {
      extra = 0, cp = c, minimum = 0;
    } else if (c >= 0xC2 && c <= 0xDF) {
      extra = 1, cp = c & 0x1F, minimum = 0x80;
    } else if (c >= 0xE0 && c <= 0xEF) {
      extra = 2, cp = c & 0x0F, minimum = 0x800;
    } else if (c >= 0xF0 && c <= 0xF4) {
      extra = 3, cp = c & 0x07, minimum = 0x10000;
    } else {
      *valid = false;
      return points;
    }
    if (i + extra >= text.size()) {  // cut short
      *valid = false;
      return points;
    }
    for (size_t k = 1; k <= extra; ++k) {
      unsigned char d = static_cast<unsigned char>(text[i + k]);
      if ((d & 0xC0) != 0x80) {
        *valid = false;
        return points;
      }
      cp = cp << 6 | (d & 0x3F);
    }
    if (cp < minimum || cp > 0x10FFFF || (cp >= 0xD800 && cp <= 0xDFFF)) {
      *valid = false;
      return points;
    }
    points.push_back(cp);
    i += extra + 1;
  }
  return points;
}

std::u16string Units(const std::vector<char32_t>& points) {
  std::u16string units;
  for (char32_t cp : points) {
    if (cp < 0x10000) {
      units += static_cast<char16_t>(cp);
    } else {
      units += static_cast<char16_t>(0xD800 + ((cp - 0x10000) >> 10));
      units += static_cast<char16_t>(0xDC00 + ((cp - 0x10000) & 0x3FF));
    }
  }
  return units;
}

std::string Utf8(const std::vector<char32_t>& points) {
  std::u16string units = Units(points);
  return EncodeUTF8(units.data(), units.size());
}

// Runs a converter into a buffer of exactly `size` bytes (at least one).
template <typename Convert>
std::string Converted(size_t size, int32_t* length, Convert convert) {
  std::vector<char> out(size, '\x55');
  *length = convert(out.data(), static_cast<int32_t>(size));
  fuzz::Check(std::memchr(out.data(), '\0', size) != nullptr, "the destination is terminated");
  std::string text(out.data());
  fuzz::Check(*length == static_cast<int32_t>(text.size()), "the length is the text's");
  return text;
}

void CheckConverters(const std::string& text, size_t size) {
  bool valid = false;
  std::vector<char32_t> points = DecodeStrict(text, &valid);
  fuzz::Check(IsValidUTF8(text.c_str()) == valid, "UTF-8 validity", fuzz::Visible(text));
  std::u16string units = Units(points);
  fuzz::Check(CountUTF16Units(text.c_str()) == static_cast<int32_t>(units.size()),
              "the unit count of the valid part", fuzz::Visible(text));

  int32_t length = 0;
  std::string utf8 = Converted(size, &length, [&](char* out, int32_t room) {
    return ConvertUTF8ToEncodingForUTF8(text.c_str(), out, room);
  });
  // Characters outside the Basic Multilingual Plane are dropped; the text is
  // cut at size - 1 bytes, inside a character if need be.
  std::vector<char32_t> bmp;
  for (char32_t cp : points) {
    if (cp < 0x10000) bmp.push_back(cp);
  }
  std::string expected = valid ? Utf8(bmp).substr(0, size - 1) : "";
  fuzz::Check(utf8 == expected, "UTF-8 output",
              "got " + fuzz::Visible(utf8) + "\nwant " + fuzz::Visible(expected));

  std::string sjis = Converted(size, &length, [&](char* out, int32_t room) {
    return ConvertUTF8ToEncoding(text.c_str(), out, room);
  });
  expected.clear();
  if (valid) {
    for (char16_t unit : units) {
      char one[6];
      if (unit == u'\\' || unit == u'~') {
        expected += static_cast<char>(unit);
      } else if (EncodeUnitShiftJISX0213(unit, one, sizeof one)) {
        expected += one;
      }
    }
    expected = expected.substr(0, size - 1);
  }
  fuzz::Check(sjis == expected, "Shift-JIS output",
              "got " + fuzz::Visible(sjis) + "\nwant " + fuzz::Visible(expected));
  bool ascii = true;
  for (char c : text) ascii = ascii && static_cast<unsigned char>(c) < 0x80;
  if (ascii) fuzz::Check(sjis == text.substr(0, size - 1), "ASCII stays as it is");

  std::string ppd = Converted(size, &length, [&](char* out, int32_t room) {
    return ConvertUTF8ToPPDEncoding(text.c_str(), out, room, kCFStringEncodingUTF8);
  });
  expected = units.size() + 2 <= 510 ? "(" + text + ")" : text;
  if (!valid || expected.size() + 1 > size) expected.clear();
  fuzz::Check(ppd == expected, "PPD-encoding output, whole or nothing");

  bool unmapped = false;
  for (char16_t unit : units) {
    char one[6];
    if (unit != u'\\' && unit != u'~' && !EncodeUnitShiftJISX0213(unit, one, sizeof one)) {
      unmapped = true;
    }
  }
  fuzz::Check(checkIfCharacterIsMultibyte(text.c_str()) == (valid && unmapped),
              "representability test");
}

void CheckUnitCut(const std::string& text, size_t size, int32_t count) {
  std::vector<char> buffer(size, '\0');
  std::memcpy(buffer.data(), text.data(), std::min(text.size(), size - 1));
  std::string before(buffer.data());
  CutUTF8ToUnits(buffer.data(), static_cast<int32_t>(size), count);
  fuzz::Check(buffer[size - 1] == '\0', "the cut text is terminated");
  bool beforeValid = false;
  std::u16string beforeUnits = Units(DecodeStrict(before, &beforeValid));
  std::string expected = before;
  if (count >= 0 && beforeUnits.size() > static_cast<size_t>(count)) {
    expected = EncodeUTF8(beforeUnits.data(), static_cast<size_t>(count)).substr(0, size - 1);
  }
  fuzz::Check(std::string(buffer.data()) == expected, "cut to the first units",
              fuzz::Visible(before) + " count " + std::to_string(count));
}

// Slash-numeric decoding: "/65/66" is "AB"; each run between slashes is a
// decimal number (as strtol reads it), 256 and above give 0, others their
// low eight bits; a 0 byte ends the text.
std::string ModelSlashNumbers(const std::string& text) {
  if (text.size() < 2 || text[0] != '/') return text;
  std::string out;
  size_t read = 1;
  while (read < text.size()) {
    size_t end = text.find('/', read);
    if (end == std::string::npos) end = text.size();
    long number = std::strtol(text.substr(read, end - read).c_str(), nullptr, 10);
    char byte = number >= 256 ? '\0' : static_cast<char>(number & 0xFF);
    if (byte == '\0') break;
    out += byte;
    read = end + 1;
  }
  return out;
}

void CheckSlashNumbers(const std::string& text, size_t limit) {
  std::vector<char> buffer(limit, '\0');
  std::memcpy(buffer.data(), text.data(), std::min(text.size(), limit));
  bool terminated = text.size() < limit;
  std::string before(buffer.data(), terminated ? text.size() : limit);
  numstrtochar(buffer.data(), static_cast<int32_t>(limit));
  if (!terminated) {
    fuzz::Check(std::string(buffer.data(), limit) == before,
                "an unterminated buffer is left alone");
    return;
  }
  std::string got(buffer.data());
  fuzz::Check(got == ModelSlashNumbers(before), "slash-numeric decoding",
              fuzz::Visible(before) + " -> " + fuzz::Visible(got));
}

void CheckDecimal(int32_t value, size_t size) {
  std::vector<char> buffer(size, '\x55');
  char* text = itoa(value, buffer.data(), static_cast<int32_t>(size));
  fuzz::Check(text >= buffer.data() && text < buffer.data() + size, "the digits are in the buffer");
  uint32_t magnitude = value < 0 ? 0u - static_cast<uint32_t>(value) : static_cast<uint32_t>(value);
  std::string digits = magnitude == 0 ? "" : std::to_string(magnitude);
  if (digits.size() > size - 1) digits = digits.substr(digits.size() - (size - 1));
  fuzz::Check(std::string(text) == digits, "the lowest digits that fit");
}

void CheckWidthCut(const std::string& text, int32_t limit) {
  std::vector<char> buffer(text.begin(), text.end());
  buffer.push_back('\0');
  CutShiftJISTextByWidth(buffer.data(), limit);
  std::string got(buffer.data());
  fuzz::Check(text.compare(0, got.size(), got) == 0, "the cut keeps a prefix");
  if (limit >= 1 && got.size() < text.size()) {
    fuzz::Check(
        got.size() == static_cast<size_t>(limit) || got.size() + 1 == static_cast<size_t>(limit),
        "the cut is at the limit or one before it");
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  fuzz::Input in(data, size);
  size_t room = 1 + in.Number(1100);
  uint32_t raw = 0;
  for (int i = 0; i < 4; ++i) raw = raw << 8 | in.Byte();
  int32_t number = static_cast<int32_t>(raw);
  std::string text = in.UntilNul();

  CheckConverters(text, room);
  CheckUnitCut(text, room, static_cast<int32_t>(raw % 300) - 2);
  CheckSlashNumbers(text, room);
  CheckDecimal(number, 1 + raw % 12);
  CheckWidthCut(text, static_cast<int32_t>(raw % 70) - 1);
  return 0;
}
