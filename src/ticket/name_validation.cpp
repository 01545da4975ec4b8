#include "ticket/name_validation.h"

#include <cstring>
#include <string>

#include "base/fixed_text.h"
#include "base/job_state.h"
#include "base/ppd_queries.h"
#include "platform/job_ticket.h"
#include "platform/text_codec.h"
#include "ticket/text_encoding.h"
#include "ticket/ticket_access.h"

namespace {

// Shift-JIS: ASCII, half-width katakana, and the two-byte rows.
constexpr ValidateDataScale kShiftJISText = {
    2, {{0x20, 0x7E}, {0xA1, 0xDF}},
    4, {{0x8140, 0x9F7E}, {0x8180, 0x9FFC}, {0xE040, 0xFC7E}, {0xE080, 0xFCFC}}};

// UTF-8: every byte and pair from the space up.
constexpr ValidateDataScale kAnyText = {
    1, {{0x20, 0xFF}},
    1, {{0x0020, 0xFFFF}}};

}  // namespace

const ValidateDataScale userNameValidateDataScale = kShiftJISText;
const ValidateDataScale userNameValidateDataScaleForUTF8 = kAnyText;
const ValidateDataScale docuNameValidateDataScale = kShiftJISText;

// The first pair range can never match inside a text (its first byte would
// be NUL); it is kept, so only single bytes, 0x8160 and 0xFF61-0xFF9F pass.
const ValidateDataScale docuNameValidateDataScaleForProduct02 = {
    2, {{0x20, 0x7E}, {0xA1, 0xDF}},
    3, {{0x0020, 0x007E}, {0x8160, 0x8160}, {0xFF61, 0xFF9F}}};

const ValidateDataScale docuNameValidateDataScaleForProduct03 = kShiftJISText;
const ValidateDataScale docuNameValidateDataScaleForProduct03UTF8 = kAnyText;

const char defaultUserName[] = "UnknownUser";

namespace {

constexpr char kProductTypeTicketKey[] = JTZ_KEY("PrintTypeProductTypeTicketKey");

// Longest user name: 255 UTF-16 units, or 255 bytes in Shift-JIS.
constexpr int32_t kUserNameMaxUnits = 255;
constexpr size_t kUserNameMaxBytes = 255;
// The accounting copy of a long UTF-8 user name: 32 units.
constexpr int32_t kJBAUserNameUnits = 32;

// The ASCII space, and the ideographic space of Shift-JIS.
const SpaceDataScale kByteSpaces = {1, {{0x20, 0x20}}};
const SpaceDataScale kWordSpaces = {1, {{0x8140, 0x8140}}};

int32_t UsedCount(int32_t count) { return count < kValidateRangeMax ? count : kValidateRangeMax; }

bool InRanges(int32_t value, int32_t count, const int32_t (*ranges)[2]) {
  for (int32_t i = 0; i < UsedCount(count); ++i) {
    if (value >= ranges[i][0] && value <= ranges[i][1]) return true;
  }
  return false;
}

int32_t WordAt(const unsigned char* position) { return position[0] * 256 + position[1]; }

struct ProductType {
  bool present;
  int32_t type;
};

ProductType ReadProductType(char* argv[]) {
  cups_option_t* options = nullptr;
  int32_t count = ParseJobTicket(argv != nullptr ? argv[5] : nullptr, &options);
  ProductType result = {false, -1};
  result.present =
      GetTicketInteger(kProductTypeTicketKey, count, options, &result.type, sizeof result.type) == 1;
  return result;
}

// The table a Shift-JIS document name is checked against.
const ValidateDataScale* ShiftJISDocumentTable(int32_t productType) {
  switch (productType) {
    case 3: return &docuNameValidateDataScaleForProduct03;
    case 2: return &docuNameValidateDataScaleForProduct02;
    default: return &docuNameValidateDataScale;
  }
}

void SetUnknownUser(char* buffer, size_t size) {
  ZeroText(buffer, size);
  CopyText(buffer, size, defaultUserName);
}

void ClearIfInvalid(char* text, size_t size, const ValidateDataScale* table) {
  if (ValidateDada(text, table) != 1) ZeroText(text, size);
}

}  // namespace

bool ISByteValid(const unsigned char* position, const ValidateDataScale* table) {
  return table->byteRangeCount >= 1 &&
         InRanges(position[0], table->byteRangeCount, table->byteRanges);
}

bool ISWordValid(const unsigned char* position, const ValidateDataScale* table) {
  return table->wordRangeCount >= 1 &&
         InRanges(WordAt(position), table->wordRangeCount, table->wordRanges);
}

bool ISByteSpace(const unsigned char* position, const SpaceDataScale* table) {
  return table->count >= 1 && InRanges(position[0], table->count, table->ranges);
}

bool ISWordSpace(const unsigned char* position, const SpaceDataScale* table) {
  return table->count >= 1 && InRanges(WordAt(position), table->count, table->ranges);
}

int ValidateDada(const char* text, const ValidateDataScale* table) {
  if (text == nullptr || table == nullptr) return 0;
  const unsigned char* p = reinterpret_cast<const unsigned char*>(text);
  while (*p != '\0') {
    if (ISWordValid(p, table)) {
      // A last byte passes as a pair with the terminator; the walk ends
      // there rather than stepping past the terminator.
      if (p[1] == '\0') return 1;
      p += 2;
    } else if (ISByteValid(p, table)) {
      p += 1;
    } else {
      return 0;
    }
  }
  return 1;
}

int IsAllSpace(const char* text) {
  if (text == nullptr) return 1;
  const unsigned char* p = reinterpret_cast<const unsigned char*>(text);
  while (*p != '\0') {
    if (ISByteSpace(p, &kByteSpaces)) {
      p += 1;
    } else if (ISWordSpace(p, &kWordSpaces)) {
      p += 2;  // the second byte is 0x40, never the terminator
    } else {
      return 0;
    }
  }
  return 1;
}

void InvalidateStdUserName() {
  if (IsUTF8PrinterEncoding()) {
    int32_t units = CountUTF16Units(StdUserName);
    if (units > kUserNameMaxUnits) {
      CutUTF8ToUnits(StdUserName, sizeof StdUserName, kUserNameMaxUnits);
    }
    if (units >= 1 && ValidateDada(StdUserName, &userNameValidateDataScaleForUTF8) == 1 &&
        IsAllSpace(StdUserName) != 1) {
      if (units > kJBAUserNameUnits) {
        std::u16string name;
        DecodeUTF8(StdUserName, &name);
        ZeroText(StdJBAUserName, sizeof StdJBAUserName);
        CopyText(StdJBAUserName, sizeof StdJBAUserName,
                 EncodeUTF8(name.data(), kJBAUserNameUnits).c_str());
      }
      return;
    }
    SetUnknownUser(StdUserName, sizeof StdUserName);
    SetUnknownUser(StdJBAUserName, sizeof StdJBAUserName);
    return;
  }
  if (std::strlen(StdUserName) > kUserNameMaxBytes) StdUserName[kUserNameMaxBytes] = '\0';
  if (StdUserName[0] != '\0' && ValidateDada(StdUserName, &userNameValidateDataScale) == 1 &&
      IsAllSpace(StdUserName) != 1) {
    return;
  }
  // StdJBAUserName keeps the raw bytes it was given in this mode.
  SetUnknownUser(StdUserName, kStdUserNameLegacySize);
}

void InvalidateStdDocumentNameForProductType(char* argv[]) {
  bool utf8 = IsUTF8PrinterEncoding();
  ProductType product = ReadProductType(argv);
  if (!product.present) {
    if (!utf8) ClearIfInvalid(PTStdDocumentName, sizeof PTStdDocumentName, &docuNameValidateDataScale);
    return;
  }
  int32_t limit = DocumentNameLimitForProductType(product.type);
  if (utf8) {
    CutUTF8ToUnits(StdDocumentName, sizeof StdDocumentName, limit);
    return;
  }
  if (std::strlen(StdDocumentName) > static_cast<size_t>(limit)) {
    CutShiftJISTextByWidth(StdDocumentName, limit);
  }
  if (product.type == 3 || product.type == 2) ZeroText(PTStdDocumentName, sizeof PTStdDocumentName);
  CopyTextPrefix(PTStdDocumentName, sizeof PTStdDocumentName, StdDocumentName,
                 static_cast<size_t>(limit));
  ClearIfInvalid(PTStdDocumentName, sizeof PTStdDocumentName, ShiftJISDocumentTable(product.type));
}

void InvalidatePrintTypeDocumentNameForProductType(char* argv[]) {
  bool utf8 = IsUTF8PrinterEncoding();
  ProductType product = ReadProductType(argv);
  const ValidateDataScale* table = &docuNameValidateDataScale;
  if (product.present) {
    int32_t limit = DocumentNameLimitForProductType(product.type);
    if (utf8) {
      CutUTF8ToUnits(PTStdDocumentName, sizeof PTStdDocumentName, limit);
      // Type 5 shares the wide table here while keeping the default limit.
      if (product.type == 5 || product.type == 3) table = &docuNameValidateDataScaleForProduct03UTF8;
    } else {
      CutShiftJISTextByWidth(PTStdDocumentName, limit);
      table = ShiftJISDocumentTable(product.type);
    }
  }
  ClearIfInvalid(PTStdDocumentName, sizeof PTStdDocumentName, table);
}

int InvalidateStdDocumentName() {
  constexpr size_t kLimit = 24;
  size_t length = std::strlen(StdDocumentName);
  if (length > kLimit) StdDocumentName[kLimit] = '\0';
  return static_cast<int>(length);
}

int32_t DocumentNameLimitForProductType(int32_t productType) {
  switch (productType) {
    case 3: return 64;
    case 2: return 12;
    default: return 24;
  }
}

void CutShiftJISTextByWidth(char* text, int32_t limit) {
  if (text == nullptr || limit < 1) return;
  size_t length = std::strlen(text);
  std::u16string units;
  DecodeShiftJISX0213(text, length, &units);
  int32_t width = 0;
  for (char16_t unit : units) {
    width += (unit & 0x1000) != 0 || (unit & 0x0100) != 0 ? 2 : 1;
    size_t cut;
    if (width == limit) {
      cut = static_cast<size_t>(limit);
    } else if (width == limit + 1) {
      cut = static_cast<size_t>(limit - 1);  // keeps a two-byte character whole
    } else {
      continue;
    }
    // The estimate can reach the limit before the bytes do; a cut past the
    // end of the text changes nothing.
    if (cut < length) text[cut] = '\0';
    return;
  }
}
