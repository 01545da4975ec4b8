// Print type module: how the printer treats the job (print at once, secure
// print held for a password, sample print, delayed print, mailbox) and the
// job name shown on the printer's panel. Its lines are the first module
// output of the job header.
#pragma once

#include <cstdint>
#include <cstdio>

#include "engine/command.h"
#include "ticket/ticket_access.h"

// Job settings read from the ticket. Text is NUL-terminated in the printer's
// encoding; sizes include the NUL. Passwords hold the sealed base64 field.
struct PrintTypeOption {
  int32_t printType;
  char userName[97];
  char password[2048];
  int32_t documentNameType;
  char documentName[193];
  char delayTime[17];
  char mailboxNumber[5];
  char mailboxPassword[2048];
};

extern PrintTypeOption zpjlOptionPrintType;

// printType values.
inline constexpr int32_t OptionSecurePrintNone = 1;
inline constexpr int32_t OptionSecurePrint = 2;
inline constexpr int32_t OptionSamplePrint = 3;
inline constexpr int32_t OptionDelayPrint = 4;
inline constexpr int32_t OptionMBN = 5;
// documentNameType values.
inline constexpr int32_t OptionDocumentNameAutoRetrieve = 1;
inline constexpr int32_t OptionDocumentNameEnterName = 2;
// A secure-print user name must be shorter than this.
inline constexpr int32_t PRINTTYPEUSERNAMEDMAXLEN = 97;

// Ticket bindings; the UTF-8 variant differs only in the getters of
// userName and documentName.
inline constexpr int32_t PrintTypeTicketDataNum = 8;
extern const TicketBinding* const PrintTypeticketData;
extern const TicketBinding* const PrintTypeticketDataForUTF8;

// The full table, and the partial one (no mailbox, no delayed print) for
// UTF-8 printers whose PPD lists "Default04" under "KRZPrintTypeSettings".
inline constexpr int32_t PrintTypeFmtTableNum = 12;
inline constexpr int32_t PrintTypeFmtPartTableNum = 7;
extern const FormatEntry PrintTypeFmtTable[PrintTypeFmtTableNum];
extern const FormatEntry PrintTypeFmtPartTable[PrintTypeFmtPartTableNum];

// The tables are constants: checks that each parameter table holds its
// static list and count.
void PrintTypeInializeDescriptionTableFromFilter();
void PrintTypeInitializeCmdParaTable();

// Reads the ticket (argv[5]) into zpjlOptionPrintType. Returns 1.
int PrintTypeGetTicketFromPDE(char* argv[]);

// Writes the partial or the full table, chosen by the PPD.
void PrintTypeOutputZPJLCommandFromFilter(char* argv[], FILE* stream);
