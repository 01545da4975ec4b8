#include "identity/host_identity.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "base/fixed_text.h"
#include "base/job_state.h"
#include "base/ppd_queries.h"
#include "ticket/text_encoding.h"

namespace {

constexpr char kIPv4Sign[] = ".";
constexpr char kIPv6Sign[] = ":";
constexpr char kIPv4LocalHost[] = "127.0.0.1";  // compared whole
constexpr char kIPv6LocalHost[] = "fe80::1";    // compared as a substring

constexpr size_t kHostNameWorkSize = 256;
constexpr int32_t kHostNameMaxUnits = 32;
constexpr size_t kNumericAddressSize = 46;
// Width of the eight-group IPv6 text with its colons, plus the slack the
// zero-fill count is taken from.
constexpr long kIPv6FillBase = 43;

// A broken invariant ends the job cleanly rather than with a core dump.
void RequireOrExit(bool holds, const char* what) {
  if (holds) return;
  std::fprintf(stderr, "ERROR: assertion failed: %s\n", what);
  std::exit(1);
}

bool IsASCII(const char* text) {
  for (const unsigned char* p = reinterpret_cast<const unsigned char*>(text); *p != '\0'; ++p) {
    if (*p >= 0x80) return false;
  }
  return true;
}

// The host name as the printer gets it; false when the system has none.
bool ReadHostNameForPrinter(char* destination) {
  ZeroText(destination, kHostNameStrSize);
  char work[kHostNameWorkSize];
  if (!ReadLocalHostName(work, sizeof work)) return false;
  CopyHostNameForPrinter(work, IsUTF8PrinterEncoding(), destination);
  return true;
}

void FormatIPv4(const std::string& text, char* out, size_t size) {
  std::string result = "I";
  size_t start = 0;
  while (true) {
    size_t end = text.find('.', start);
    std::string component = text.substr(start, end == std::string::npos ? end : end - start);
    if (component.size() > 3) return;
    long value = std::strtol(component.c_str(), nullptr, 10);
    if (value < 0 || value >= 256) return;
    char hex[3];
    FormatText(hex, sizeof hex, "%02lX", value);
    result += hex;
    if (end == std::string::npos) break;
    start = end + 1;
  }
  CopyText(out, size, result.c_str());
}

// Pads the groups to four digits and widens the first "0000" group to the
// missing zero groups. The fill count comes from the padded width, so a text
// of three or four groups gains one group more than the eight-group form;
// the printer side expects exactly this text.
void FormatIPv6(std::string text, char* out, size_t size) {
  size_t zone = text.find('%');
  if (zone != std::string::npos) text.erase(zone);
  std::string padded;
  size_t start = 0;
  while (true) {
    size_t end = text.find(':', start);
    std::string group = text.substr(start, end == std::string::npos ? end : end - start);
    if (group.size() < 4) group.insert(0, 4 - group.size(), '0');
    padded += group;
    if (end == std::string::npos) break;
    padded += ':';
    start = end + 1;
  }
  long width = static_cast<long>(padded.size());
  std::string fill;
  if (kIPv6FillBase - width >= 4) {
    for (long i = 0; i < (kIPv6FillBase - width) / 4; ++i) {
      if (i > 0) fill += ':';
      fill += "0000";
    }
  }
  std::string result;
  for (long position = 0; position <= width - 5; ++position) {
    if (padded.compare(static_cast<size_t>(position), 4, "0000") == 0) {
      result = padded.substr(0, static_cast<size_t>(position)) + fill +
               padded.substr(static_cast<size_t>(position) + 4);
      break;
    }
  }
  std::string digits = "6";
  for (char c : result) {
    if (c != ':') digits += c;
  }
  CopyText(out, size, digits.c_str());
}

}  // namespace

void CopyHostNameForPrinter(const char* name, bool utf8, char* destination) {
  ZeroText(destination, kHostNameStrSize);
  char work[kHostNameWorkSize] = {};
  CopyText(work, sizeof work, name);
  if (utf8) CutUTF8ToUnits(work, sizeof work, kHostNameMaxUnits);
  CopyTextPrefix(destination, kHostNameStrSize, work, kHostNameStrSize - 1);
}

void getHostName(char* destination) { ReadHostNameForPrinter(destination); }

bool MyPrintAddressArray(const std::vector<ResolvedAddress>* addresses, const char* name,
                         char* output, int32_t capacity) {
  RequireOrExit(addresses != nullptr, "addresses != NULL");
  RequireOrExit(name != nullptr, "name != NULL");
  size_t room = output != nullptr && capacity > 0 ? static_cast<size_t>(capacity) : 0;
  bool result = false;
  for (const ResolvedAddress& address : *addresses) {
    char text[kNumericAddressSize];
    result = NumericHostText(address, text, sizeof text);
    if (!result) continue;
    if (std::strstr(text, kIPv4Sign) != nullptr && std::strcmp(text, kIPv4LocalHost) != 0) {
      CopyText(output, room, text);
      return true;
    }
    if (std::strstr(text, kIPv6Sign) != nullptr && std::strstr(text, kIPv6LocalHost) == nullptr) {
      CopyText(output, room, text);
    }
  }
  return result;
}

bool getHostAddress(const char* name, char* output, int32_t capacity) {
  if (name == nullptr || output == nullptr || capacity < 0) return false;
  RequireOrExit(IsASCII(name), "inputString != NULL");
  ZeroText(output, static_cast<size_t>(capacity));
  std::vector<ResolvedAddress> addresses;
  if (!ResolveHostName(name, &addresses)) return false;
  return MyPrintAddressArray(&addresses, name, output, capacity);
}

void GetClientIPAddress(char* hostNameOut, char* addressOut) {
  ZeroText(addressOut, kIPAddressStrSize);
  if (!ReadHostNameForPrinter(hostNameOut)) return;
  char numeric[kHostAddressCapacity];
  if (!getHostAddress(hostNameOut, numeric, sizeof numeric)) return;
  FormatClientAddressText(numeric, addressOut, kIPAddressStrSize);
}

void FormatClientAddressText(const char* numeric, char* out, size_t size) {
  ZeroText(out, size);
  if (numeric == nullptr) return;
  std::string text(numeric);
  if (text.find(kIPv4Sign) != std::string::npos) {
    FormatIPv4(text, out, size);
  } else if (text.find(kIPv6Sign) != std::string::npos) {
    FormatIPv6(text, out, size);
  }
}
