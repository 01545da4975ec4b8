// The job ticket (CUPS option string of argument 5), parsed once per process.
#pragma once

#include <cups/cups.h>

// Parses `ticket` with cupsParseOptions and returns the option count, setting
// *options. The same text is parsed only once; the array stays valid for the
// rest of the process and must not be freed. A null ticket gives no options.
int ParseJobTicket(const char* ticket, cups_option_t** options);
