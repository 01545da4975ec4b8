#include "platform/kernel_release.h"

#include <cstdio>
#include <cstring>

#include "platform/build_config.h"

#if defined(__APPLE__)
#include <sys/sysctl.h>
#include <sys/types.h>
#endif

bool ReadKernelRelease(char* out, size_t size) {
  if (size == 0) return false;
  std::memset(out, 0, size);
  const char* configured = BuiltInKernelRelease();
  if (configured != nullptr && configured[0] != '\0') {
    std::snprintf(out, size, "%s", configured);
    return true;
  }
#if defined(__APPLE__)
  int mib[2] = {CTL_KERN, KERN_OSRELEASE};
  size_t length = size;
  if (sysctl(mib, 2, out, &length, nullptr, 0) != 0) return false;
  out[size - 1] = '\0';
  return true;
#else
  return false;
#endif
}
