// The job's PPD file (environment variable PPD), parsed once per process.
//
// Callers keep the open/close shape of the classic filter code: they acquire
// the PPD where they need a value and release it when done. The file is read
// only on the first acquisition for a given path; releasing keeps it cached.
#pragma once

#include <cups/ppd.h>

// The parsed PPD named by $PPD, or nullptr when PPD is unset or unreadable.
ppd_file_t* AcquireJobPPD();

// Gives a PPD from AcquireJobPPD back. Accepts nullptr.
void ReleaseJobPPD(ppd_file_t* ppd);

// Closes the cached PPD, so that the next acquisition reads the file again
// (for tests and fuzzing that rewrite one file between jobs).
void ForgetJobPPD();
