// The job's PPD file (environment variable PPD), parsed once per process and
// kept open until exit: every PPD question of a job reads the same record.
#pragma once

#include <cups/ppd.h>

// The parsed PPD named by $PPD, or nullptr when PPD is unset or unreadable.
// The file is read again only when $PPD names another path.
ppd_file_t* JobPPD();

// Closes the cached PPD, so that the next JobPPD() reads the file again
// (for tests and fuzzing that rewrite one file between jobs).
void ForgetJobPPD();
