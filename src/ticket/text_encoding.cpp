#include "ticket/text_encoding.h"

#include <cstring>
#include <string>

#include "base/fixed_text.h"
#include "base/ppd_queries.h"
#include "platform/text_codec.h"

namespace {

// Room for one converted unit and its terminator.
constexpr size_t kUnitBufferSize = 6;

// Backslash and tilde go out as their ASCII bytes in every encoding: the
// Shift-JIS forms would print as a yen sign and an overline.
bool KeepsASCIIByte(char16_t unit) { return unit == u'\\' || unit == u'~'; }

using UnitEncoder = bool (*)(char16_t unit, char* out, size_t size);

// The shared walk of both converters: one unit at a time, a unit without a
// form dropped, each appended with the bounded append (which may cut the last
// character of a full buffer on purpose).
int32_t ConvertUnits(const char* source, char* destination, int32_t size, UnitEncoder encoder) {
  if (destination == nullptr || size <= 0) return 0;
  size_t room = static_cast<size_t>(size);
  ZeroText(destination, room);
  std::u16string units;
  if (!DecodeUTF8(source, &units)) return 0;
  size_t length = 0;
  for (char16_t unit : units) {
    if (length + 1 >= room) break;  // full: later units cannot add a byte
    char converted[kUnitBufferSize];
    bool ok = KeepsASCIIByte(unit) ? EncodeUnitUTF8(unit, converted, sizeof converted)
                                   : encoder(unit, converted, sizeof converted);
    if (!ok) continue;
    length += CopyText(destination + length, room - length, converted);
  }
  return static_cast<int32_t>(length);
}

// The longest working text "(" text ")" can hold, in UTF-16 units.
constexpr size_t kPPDWorkingUnits = 510;

}  // namespace

int32_t ConvertUTF8ToEncoding(const char* source, char* destination, int32_t size) {
  return ConvertUnits(source, destination, size, EncodeUnitShiftJISX0213);
}

int32_t ConvertUTF8ToEncodingForUTF8(const char* source, char* destination, int32_t size) {
  return ConvertUnits(source, destination, size, EncodeUnitUTF8);
}

int32_t ConvertUTF8ToPPDEncoding(const char* source, char* destination, int32_t size,
                                 CFStringEncoding /*encoding*/) {
  // The encoding is chosen by the caller but the printer takes these strings
  // as UTF-8 either way, so it does not change the bytes.
  if (destination == nullptr || size <= 0) return 0;
  size_t room = static_cast<size_t>(size);
  ZeroText(destination, room);
  std::u16string units;
  if (!DecodeUTF8(source, &units)) return 0;
  std::string text = units.size() + 2 <= kPPDWorkingUnits ? "(" + std::string(source) + ")"
                                                          : std::string(source);
  // Whole or nothing: a text that does not fit gives 0.
  if (text.size() + 1 > room) return 0;
  std::memcpy(destination, text.data(), text.size());
  return static_cast<int32_t>(text.size());
}

CFStringEncoding GetCFStringSimEncodingFromPPD(ppd_file_t* ppd) {
  // The attribute, not ppd->lang_encoding: libcups reports its own text
  // encoding there rather than the file's value.
  return PPDAttrEquals(ppd, "LanguageEncoding", "JIS83-RKSJ") ? kCFStringEncodingJIS_X0208_83
                                                              : kCFStringEncodingUTF8;
}

bool checkIfCharacterIsMultibyte(const char* text) {
  std::u16string units;
  if (!DecodeUTF8(text, &units)) return false;
  for (char16_t unit : units) {
    if (KeepsASCIIByte(unit)) continue;
    char converted[kUnitBufferSize];
    if (!EncodeUnitShiftJISX0213(unit, converted, sizeof converted)) return true;
  }
  return false;
}

int32_t CountUTF16Units(const char* text) {
  std::u16string units;
  DecodeUTF8(text, &units);
  return static_cast<int32_t>(units.size());
}

void CutUTF8ToUnits(char* text, int32_t size, int32_t count) {
  if (text == nullptr || size <= 0 || count < 0) return;
  std::u16string units;
  DecodeUTF8(text, &units);
  if (units.size() <= static_cast<size_t>(count)) return;
  std::string rebuilt = EncodeUTF8(units.data(), static_cast<size_t>(count));
  ZeroText(text, static_cast<size_t>(size));
  CopyText(text, static_cast<size_t>(size), rebuilt.c_str());
}
