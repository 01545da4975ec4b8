// Typed reading of the job ticket (the CUPS option string of argument 5)
// into module option records.
//
// A module describes its settings as a table of TicketBinding rows; each row
// names a ticket key, the destination field and its size, and a getter.
// Every getter overwrites its destination, so an absent key leaves a defined
// value: -1 for numbers, empty text, 1 for the CheckTicketKey flag.
#pragma once

#include <cstddef>
#include <cstdint>

#include <cups/cups.h>

// A ticket key of the print dialog's two settings domains.
#define JTZ_KEY(name) "com.korvanel.qd.jtz.printsettings." name
#define ETZ_KEY(name) "com.korvanel.qd.etz.printsettings." name

// Getter signature: key, parsed options, destination and its size in bytes
// (terminator included for text). Returns 1 when the key was present.
using TicketGetter = unsigned (*)(const char* key, int32_t optionCount, cups_option_t* options,
                                  void* destination, int32_t size);

struct TicketBinding {
  const char* key;
  void* destination;
  int32_t size;
  TicketGetter getter;
};

// Parses argv[5] and calls each row's getter in order. Always returns 1.
int GetTicketFromArray(char* argv[], const TicketBinding* table, int32_t count);

// int32 destination: 1 when the key is ABSENT, 0 when present. Returns 1.
unsigned CheckTicketKey(const char* key, int32_t optionCount, cups_option_t* options,
                        void* destination, int32_t size);
// int32 destination via atoi; absent: -1, returns 0.
unsigned GetTicketInteger(const char* key, int32_t optionCount, cups_option_t* options,
                          void* destination, int32_t size);
// float destination via atof; absent: -1.0, returns 0.
unsigned GetTicketFloat(const char* key, int32_t optionCount, cups_option_t* options,
                        void* destination, int32_t size);
// Text in the printer's Shift-JIS form, no slash-numeric decoding.
unsigned GetTicketString(const char* key, int32_t optionCount, cups_option_t* options,
                         void* destination, int32_t size);
// Text after slash-numeric decoding, in the Shift-JIS form.
unsigned GetTicketStringConvertedToPrtLang(const char* key, int32_t optionCount,
                                           cups_option_t* options, void* destination,
                                           int32_t size);
// Text after slash-numeric decoding, in UTF-8.
unsigned GetTicketStringConvertedToPrtLangForUTF8(const char* key, int32_t optionCount,
                                                  cups_option_t* options, void* destination,
                                                  int32_t size);
// As the two above, returning the converted byte length.
unsigned GetLengthOfTicketStringConvertedToPrtLang(const char* key, int32_t optionCount,
                                                   cups_option_t* options, void* destination,
                                                   int32_t size);
unsigned GetLengthOfTicketStringConvertedToPrtLangForUTF8(const char* key, int32_t optionCount,
                                                          cups_option_t* options,
                                                          void* destination, int32_t size);
// Text after slash-numeric decoding, "(" text ")" in the PPD's encoding.
unsigned GetTicketStringConvertedToPPDEncodingString(const char* key, int32_t optionCount,
                                                     cups_option_t* options, void* destination,
                                                     int32_t size);
// N-up text for job attributes ("N4", or "1") and for comment lines ("4", or "1").
unsigned GetNumberUpTicketString(const char* key, int32_t optionCount, cups_option_t* options,
                                 void* destination, int32_t size);
unsigned GetNumberUpTicketStringForComment(const char* key, int32_t optionCount,
                                           cups_option_t* options, void* destination,
                                           int32_t size);

// Slash-numeric decoding in place: "/65/66/67" becomes "ABC". `limit` is the
// size of the buffer holding `text`.
void numstrtochar(char* text, int32_t limit);

// Decimal text of a non-negative `value` written backwards into `buffer`
// (size bytes); returns a pointer to its first digit. 0 gives "".
char* itoa(int32_t value, char* buffer, int32_t size);
