// Settings fixed when the filter is built; see README, "Build-time configuration".
#pragma once

// The file whose existence turns on the debug job copy.
const char* JobCopyFlagPath();

// printf pattern of the debug copy's name on older systems: one "%s", the time stamp.
const char* LegacyJobCopyPattern();

// The Darwin kernel release the system-version gates read, or "" to ask the
// running system (only a Darwin system has one to ask).
const char* BuiltInKernelRelease();
