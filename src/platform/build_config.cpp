#include "platform/build_config.h"

// The three values come from the build (CMake cache variables of the same names).
const char* JobCopyFlagPath() { return ZPJL_JOBCOPY_FLAG; }
const char* LegacyJobCopyPattern() { return ZPJL_LEGACY_JOBCOPY_PATTERN; }
const char* BuiltInKernelRelease() { return ZPJL_KERNEL_RELEASE; }
