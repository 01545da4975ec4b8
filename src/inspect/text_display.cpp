#include "inspect/text_display.h"

#include <cstdio>

#include "platform/text_codec.h"

namespace {

// Length of the character that starts at `lead`, by the encoding's lead
// byte rules; 0 for a byte that starts none.
size_t CharacterLength(unsigned char lead, bool utf8) {
  if (lead < 0x80) return 1;
  if (utf8) {
    if (lead >= 0xC2 && lead <= 0xDF) return 2;
    if (lead >= 0xE0 && lead <= 0xEF) return 3;
    if (lead >= 0xF0 && lead <= 0xF4) return 4;
    return 0;
  }
  if ((lead >= 0x81 && lead <= 0x9F) || (lead >= 0xE0 && lead <= 0xFC)) return 2;
  if (lead >= 0xA1 && lead <= 0xDF) return 1;  // half-width katakana
  return 0;
}

// The UTF-8 form of one multi-byte character, or "" when it is not valid.
std::string Convert(std::string_view character, bool utf8) {
  std::u16string units;
  if (utf8) {
    const std::string terminated(character);
    if (!DecodeUTF8(terminated.c_str(), &units) || units.empty()) return "";
  } else if (!DecodeShiftJISX0213(character.data(), character.size(), &units) || units.empty()) {
    return "";
  }
  return EncodeUTF8(units.data(), units.size());
}

// Walks `bytes` character by character; `visit` gets each valid character
// (already UTF-8) or, for a byte that starts none, an empty text and the byte.
template <typename Visit>
void Walk(std::string_view bytes, bool utf8, Visit visit) {
  size_t at = 0;
  while (at < bytes.size()) {
    const auto lead = static_cast<unsigned char>(bytes[at]);
    const size_t length = CharacterLength(lead, utf8);
    if (lead < 0x80) {
      visit(std::string(1, static_cast<char>(lead)), lead, true);
      ++at;
      continue;
    }
    std::string converted;
    if (length != 0 && at + length <= bytes.size()) {
      converted = Convert(bytes.substr(at, length), utf8);
    }
    if (converted.empty()) {
      visit("", lead, false);
      ++at;
    } else {
      visit(converted, lead, true);
      at += length;
    }
  }
}

}  // namespace

bool IsValidText(std::string_view bytes, bool utf8) {
  bool valid = true;
  Walk(bytes, utf8,
       [&](const std::string&, unsigned char byte, bool ok) { valid = valid && ok && byte != 0; });
  return valid;
}

std::string DisplayText(std::string_view bytes, bool utf8) {
  std::string out;
  Walk(bytes, utf8, [&](const std::string& text, unsigned char byte, bool ok) {
    char escaped[8];
    if (!ok) {
      snprintf(escaped, sizeof escaped, "\\x%02X", byte);
      out += escaped;
    } else if (byte == 0x1B) {
      out += "<ESC>";
    } else if (byte == '\r') {
      out += "<CR>";
    } else if (byte < 0x20 || byte == 0x7F) {
      snprintf(escaped, sizeof escaped, "<%02X>", byte);
      out += escaped;
    } else {
      out += text;
    }
  });
  return out;
}

std::string DisplayExcerpt(std::string_view bytes, bool utf8, size_t limit) {
  if (bytes.size() <= limit) return DisplayText(bytes, utf8);
  // Cut where a character starts, as near the limit as the encoding allows.
  size_t cut = limit;
  while (cut > 0 && utf8 && (static_cast<unsigned char>(bytes[cut]) & 0xC0) == 0x80) --cut;
  return DisplayText(bytes.substr(0, cut), utf8) + "...";
}
