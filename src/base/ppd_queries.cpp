#include "base/ppd_queries.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "platform/job_ppd.h"
#include "platform/kernel_release.h"

ppd_attr_t* ppdFindAttr_ALT(ppd_file_t* ppd, const char* keyword) {
  if (ppd == nullptr || keyword == nullptr || ppd->num_attrs < 1) return nullptr;
  size_t length = std::strlen(keyword);
  for (int i = 0; i < ppd->num_attrs; ++i) {
    ppd_attr_t* attr = ppd->attrs[i];
    if (attr != nullptr && std::strncmp(attr->name, keyword, length) == 0) return attr;
  }
  return nullptr;
}

int CheckIfPPDKeywordSupported(ppd_file_t* ppd, const char* keyword, const char* word) {
  ppd_attr_t* attr = ppdFindAttr_ALT(ppd, keyword);
  if (attr == nullptr || attr->value == nullptr) return 0;
  return std::strstr(attr->value, word) != nullptr ? 1 : 0;
}

bool PPDAttrEquals(ppd_file_t* ppd, const char* keyword, const char* value) {
  ppd_attr_t* attr = ppdFindAttr_ALT(ppd, keyword);
  return attr != nullptr && attr->value != nullptr && std::strcmp(attr->value, value) == 0;
}

bool IsUTF8PrinterEncoding() {
  return PPDAttrEquals(JobPPD(), "KRPrinterLanguageEncoding", "UTF-8");
}

uint32_t PackSystemVersion(const char* release) {
  uint32_t version = 0x1000;
  if (release == nullptr) return version;
  char* end = nullptr;
  long major = std::strtol(release, &end, 10);
  if (end == release) return version;  // no leading number: nothing to add
  if (major > 0) version += ((static_cast<uint32_t>(major) << 4) + 192) & 255;
  if (*end == '\0') return version;
  const char* minorText = end + 1;
  long minor = std::strtol(minorText, &end, 10);
  if (end != minorText && minor > 0) version += static_cast<uint32_t>(minor) & 15;
  return version;
}

namespace {

uint32_t CachedSystemVersion() {
  static uint32_t osVersion = 0xFFFFFFFFu;
  if (osVersion == 0xFFFFFFFFu) {
    char release[16];
    osVersion = ReadKernelRelease(release, sizeof release) ? PackSystemVersion(release) : 0x1000;
  }
  return osVersion;
}

}  // namespace

int Gestalt_ALT(uint32_t selector, int32_t* result) {
  uint32_t version = CachedSystemVersion();
  switch (selector) {
    case kGestaltSystemVersion:
      *result = static_cast<int32_t>(version);
      return 0;
    case kGestaltSystemVersionMajor:
      *result = static_cast<int32_t>(((version >> 12) & 15) * 10 + ((version >> 8) & 15));
      return 0;
    case kGestaltSystemVersionMinor:
      *result = static_cast<int32_t>((version >> 4) & 15);
      return 0;
    case kGestaltSystemVersionBugFix:
      *result = static_cast<int32_t>(version & 15);
      return 0;
    default:
      fprintf(stderr, "Gestalt_ALT : selector '%x' not supported.\n", selector);
      return -1;
  }
}
