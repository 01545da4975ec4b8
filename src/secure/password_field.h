// Password fields of the job ticket: opened from the storage cipher the print
// dialog used, sealed for the printer, written as base64 text.
#pragma once

#include <cstdint>

#include <cups/cups.h>

// Ticket getter (see ticket/ticket_access.h). Returns 1 when the destination
// holds the field text, 0 when the key is absent or no field could be made.
unsigned GetTicketPasswordStringConvertedToEncryption(const char* key, int32_t optionCount,
                                                      cups_option_t* options, void* destination,
                                                      int32_t size);
