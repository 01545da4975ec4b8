#include "ticket/ticket_access.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "base/fixed_text.h"
#include "platform/job_ppd.h"
#include "platform/job_ticket.h"
#include "ticket/text_encoding.h"

namespace {

// Ticket values are copied into a work buffer of this size before decoding.
constexpr int32_t kWorkBufferSize = 1024;

constexpr const char kLayoutRowsKey[] = "com.apple.print.PrintSettings.PMLayoutRows..n.";
constexpr const char kLayoutColumnsKey[] = "com.apple.print.PrintSettings.PMLayoutColumns..n.";

// atoi as the C library has it (strtol cut to int), without its undefined
// behaviour for out-of-range text.
int32_t TicketAtoi(const char* text) {
  return static_cast<int32_t>(std::strtol(text, nullptr, 10));
}

bool HoldsInteger(int32_t size) { return size >= static_cast<int32_t>(sizeof(int32_t)); }

// The common start of the converting string getters: destination zeroed,
// value cut to the work buffer and slash-numeric decoded. False when the key
// is absent.
bool ReadDecodedValue(const char* key, int32_t optionCount, cups_option_t* options,
                      void* destination, int32_t size, char (&work)[kWorkBufferSize]) {
  char* text = static_cast<char*>(destination);
  if (text != nullptr && size > 0) ZeroText(text, static_cast<size_t>(size));
  const char* value = cupsGetOption(key, optionCount, options);
  if (value == nullptr) return false;
  ZeroText(work, sizeof work);
  CopyText(work, sizeof work, value);
  numstrtochar(work, kWorkBufferSize);
  return true;
}

using Converter = int32_t (*)(const char* source, char* destination, int32_t size);

// A converting string getter: the decoded value converted into the
// destination. Returns the converted byte length, or -1 when the key is absent.
int32_t ReadConverted(const char* key, int32_t optionCount, cups_option_t* options,
                      void* destination, int32_t size, Converter convert) {
  char work[kWorkBufferSize];
  if (!ReadDecodedValue(key, optionCount, options, destination, size, work)) return -1;
  return convert(work, static_cast<char*>(destination), size);
}

// The N-up text shared by the job-attribute and comment getters: the
// "number-up" value, else the product of the layout rows and columns, else
// "1". `prefix` goes in front of the first two.
unsigned ReadNumberUp(const char* key, int32_t optionCount, cups_option_t* options,
                      void* destination, int32_t size, const char* prefix) {
  char* text = static_cast<char*>(destination);
  if (text != nullptr && size > 0) ZeroText(text, static_cast<size_t>(size));
  char work[kWorkBufferSize] = {};
  const char* value = cupsGetOption(key, optionCount, options);
  const char* rows = cupsGetOption(kLayoutRowsKey, optionCount, options);
  const char* columns = cupsGetOption(kLayoutColumnsKey, optionCount, options);
  if (value != nullptr) {
    CopyText(work, sizeof work, prefix);
    AppendText(work, sizeof work, value);
  } else {
    // A layout key on its own counts the other factor as 1.
    int64_t product = static_cast<int64_t>(rows != nullptr ? TicketAtoi(rows) : 1) *
                      (columns != nullptr ? TicketAtoi(columns) : 1);
    if ((rows != nullptr || columns != nullptr) && product != 1) {
      char digits[3];  // two digits: layouts go up to 16 pages per sheet
      CopyText(work, sizeof work, prefix);
      AppendText(work, sizeof work,
                 itoa(static_cast<int32_t>(static_cast<uint32_t>(product)), digits, sizeof digits));
    } else {
      CopyText(work, sizeof work, "1");
    }
  }
  numstrtochar(work, kWorkBufferSize);
  ConvertUTF8ToEncoding(work, text, size);
  return 1;
}

}  // namespace

int GetTicketFromArray(char* argv[], const TicketBinding* table, int32_t count) {
  cups_option_t* options = nullptr;
  int32_t optionCount = ParseJobTicket(argv != nullptr ? argv[5] : nullptr, &options);
  if (table == nullptr || count < 1) return 1;
  for (int32_t i = 0; i < count; ++i) {
    const TicketBinding& row = table[i];
    if (row.getter != nullptr) row.getter(row.key, optionCount, options, row.destination, row.size);
  }
  return 1;
}

unsigned CheckTicketKey(const char* key, int32_t optionCount, cups_option_t* options,
                        void* destination, int32_t size) {
  int32_t absent = cupsGetOption(key, optionCount, options) == nullptr ? 1 : 0;
  if (destination != nullptr && HoldsInteger(size)) {
    std::memcpy(destination, &absent, sizeof absent);
  }
  return 1;
}

unsigned GetTicketInteger(const char* key, int32_t optionCount, cups_option_t* options,
                          void* destination, int32_t size) {
  const char* value = cupsGetOption(key, optionCount, options);
  int32_t number = value != nullptr ? TicketAtoi(value) : -1;
  if (destination != nullptr && HoldsInteger(size)) {
    std::memcpy(destination, &number, sizeof number);
  }
  return value != nullptr ? 1 : 0;
}

unsigned GetTicketFloat(const char* key, int32_t optionCount, cups_option_t* options,
                        void* destination, int32_t size) {
  const char* value = cupsGetOption(key, optionCount, options);
  float number = value != nullptr ? static_cast<float>(std::atof(value)) : -1.0f;
  if (destination != nullptr && size >= static_cast<int32_t>(sizeof(float))) {
    std::memcpy(destination, &number, sizeof number);
  }
  return value != nullptr ? 1 : 0;
}

unsigned GetTicketString(const char* key, int32_t optionCount, cups_option_t* options,
                         void* destination, int32_t size) {
  char* text = static_cast<char*>(destination);
  if (text != nullptr && size > 0) ZeroText(text, static_cast<size_t>(size));
  const char* value = cupsGetOption(key, optionCount, options);
  if (value == nullptr) return 0;
  ConvertUTF8ToEncoding(value, text, size);
  return 1;
}

unsigned GetTicketStringConvertedToPrtLang(const char* key, int32_t optionCount,
                                           cups_option_t* options, void* destination,
                                           int32_t size) {
  return ReadConverted(key, optionCount, options, destination, size, ConvertUTF8ToEncoding) >= 0;
}

unsigned GetTicketStringConvertedToPrtLangForUTF8(const char* key, int32_t optionCount,
                                                  cups_option_t* options, void* destination,
                                                  int32_t size) {
  return ReadConverted(key, optionCount, options, destination, size,
                       ConvertUTF8ToEncodingForUTF8) >= 0;
}

unsigned GetLengthOfTicketStringConvertedToPrtLang(const char* key, int32_t optionCount,
                                                   cups_option_t* options, void* destination,
                                                   int32_t size) {
  return static_cast<unsigned>(std::max(
      0, ReadConverted(key, optionCount, options, destination, size, ConvertUTF8ToEncoding)));
}

unsigned GetLengthOfTicketStringConvertedToPrtLangForUTF8(const char* key, int32_t optionCount,
                                                          cups_option_t* options,
                                                          void* destination, int32_t size) {
  return static_cast<unsigned>(std::max(0, ReadConverted(key, optionCount, options, destination,
                                                         size, ConvertUTF8ToEncodingForUTF8)));
}

unsigned GetTicketStringConvertedToPPDEncodingString(const char* key, int32_t optionCount,
                                                     cups_option_t* options, void* destination,
                                                     int32_t size) {
  ppd_file_t* ppd = JobPPD();
  CFStringEncoding encoding = GetCFStringSimEncodingFromPPD(ppd);
  char work[kWorkBufferSize];
  if (!ReadDecodedValue(key, optionCount, options, destination, size, work)) return 0;
  ConvertUTF8ToPPDEncoding(work, static_cast<char*>(destination), size, encoding);
  return 1;
}

unsigned GetNumberUpTicketString(const char* key, int32_t optionCount, cups_option_t* options,
                                 void* destination, int32_t size) {
  return ReadNumberUp(key, optionCount, options, destination, size, "N");
}

unsigned GetNumberUpTicketStringForComment(const char* key, int32_t optionCount,
                                           cups_option_t* options, void* destination,
                                           int32_t size) {
  return ReadNumberUp(key, optionCount, options, destination, size, "");
}

void numstrtochar(char* text, int32_t limit) {
  if (text == nullptr || limit < 1 || text[0] != '/') return;
  size_t bound = static_cast<size_t>(limit);
  size_t length = strnlen(text, bound);
  // No terminator inside the buffer: not a text this routine can decode.
  if (length < 2 || length >= bound) return;
  size_t read = 1;
  size_t written = 0;
  while (read < length) {
    size_t end = read;
    while (end < length && text[end] != '/') ++end;
    text[end] = '\0';
    long number = std::strtol(text + read, nullptr, 10);
    // "/-1" stands for byte 255; anything from 256 up gives 0.
    text[written] = number >= 256 ? '\0' : static_cast<char>(number & 0xFF);
    text[written + 1] = '\0';
    ++written;
    read = end + 1;
  }
}

char* itoa(int32_t value, char* buffer, int32_t size) {
  static char empty[1];
  if (buffer == nullptr || size < 1) {
    empty[0] = '\0';
    return empty;
  }
  char* digit = buffer + (size - 1);
  *digit = '\0';
  // Magnitude, so that no value makes a sign or a negative digit; digits that
  // do not fit before buffer[0] are left out (the lowest ones are kept).
  uint32_t rest = value < 0 ? 0u - static_cast<uint32_t>(value) : static_cast<uint32_t>(value);
  while (rest != 0 && digit > buffer) {
    *--digit = static_cast<char>('0' + rest % 10);
    rest /= 10;
  }
  return digit;
}
