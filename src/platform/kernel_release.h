// The release string of the running Darwin kernel, e.g. "19.6.0".
#pragma once

#include <cstddef>

// Fills `out` (size bytes, terminated) and returns true, or returns false when
// there is no Darwin release to report. A build-time release wins over the
// running system; a non-Apple system has no Darwin kernel to ask.
bool ReadKernelRelease(char* out, size_t size);
