#include "modules/print_type/print_type.h"

#include <array>
#include <cstddef>

#include "base/job_state.h"
#include "base/ppd_queries.h"
#include "engine/condition.h"
#include "engine/row_writer.h"
#include "engine/table_rows.h"
#include "platform/job_ppd.h"

PrintTypeOption zpjlOptionPrintType;

namespace {

constexpr PrintTypeOption& pt = zpjlOptionPrintType;

// ---- Ticket bindings ------------------------------------------------------

constexpr TicketRow kTicketRows[PrintTypeTicketDataNum] = {
    Row(JTZ_KEY("PrintTypeTicketKey"), pt.printType, TicketRead::Integer),
    Row(JTZ_KEY("PrintTypeUserNameTicketKey"), pt.userName, TicketRead::Name),
    Row(JTZ_KEY("PrintTypePasswordTicketKey"), pt.password, TicketRead::Password),
    Row(JTZ_KEY("DocumentNameTypeTicketKey"), pt.documentNameType, TicketRead::Integer),
    Row(JTZ_KEY("DocumentNameTicketKey"), pt.documentName, TicketRead::Name),
    Row(JTZ_KEY("DelayPrintTicketKey"), pt.delayTime, TicketRead::Text),
    Row(JTZ_KEY("PrintTypeMBNTicketKey"), pt.mailboxNumber, TicketRead::Text),
    Row(JTZ_KEY("PrintTypeMBNPasswordTicketKey"), pt.mailboxPassword, TicketRead::Password),
};
constexpr std::array<TicketBinding, PrintTypeTicketDataNum> kBindings =
    MakeBindings(kTicketRows, false);
constexpr std::array<TicketBinding, PrintTypeTicketDataNum> kBindingsForUTF8 =
    MakeBindings(kTicketRows, true);

}  // namespace

const TicketBinding* const PrintTypeticketData = kBindings.data();
const TicketBinding* const PrintTypeticketDataForUTF8 = kBindingsForUTF8.data();

namespace {

// ---- Format strings -------------------------------------------------------
// Hold lines end in LF alone; value lines end in CR LF. The mailbox number
// goes unquoted, every other value in quotes.

const char prtfmtStrHoldStore[] = "@PJL SET HOLD=STORE\n";
const char prtfmtStrHoldTypePrivate[] = "@PJL SET HOLDTYPE=PRIVATE\n";
const char prtfmtStrHoldProof[] = "@PJL SET HOLD=PROOF\n";
const char prtfmtStrHoldBoxStore[] = "@PJL SET HOLD=BOXSTORE\n";
const char prtfmtStrBoxNumber[] = "@PJL SET BOXNUMBER=%s%c%c";
const char prtfmtStrBoxEncryptKey[] = "@PJL SET BOXENCRYPTKEY=%c%s%c%c%c";
const char prtfmtStrUserName[] = "@PJL SET USERNAME=%c%s%c%c%c";
const char prtfmtStrHoldEncryptKey[] = "@PJL SET HOLDENCRYPTKEY=%c%s%c%c%c";
const char prtfmtStrJobName[] = "@PJL SET JOBNAME=%c%s%c\r\n";
const char prtfmtStrDelayTime[] = "@PJL SET JOBATTR=%c@PRTM=%s%c\r\n";

// ---- Parameter lists ------------------------------------------------------

const ParamPointer cmdParaListBoxNumber[] = {pt.mailboxNumber, &CTRLSym_CR, &CTRLSym_LF};
const int32_t cmdParaNumBoxNumber = 3;
const ParamPointer cmdParaListBoxEncryptKey[] = {&CTRLSym_DOUBLE, pt.mailboxPassword,
                                                 &CTRLSym_DOUBLE, &CTRLSym_CR, &CTRLSym_LF};
const int32_t cmdParaNumBoxEncryptKey = 5;
const ParamPointer cmdParaListUserName[] = {&CTRLSym_DOUBLE, pt.userName, &CTRLSym_DOUBLE,
                                            &CTRLSym_CR, &CTRLSym_LF};
const int32_t cmdParaNumUserName = 5;
const ParamPointer cmdParaListHoldEncryptKey[] = {&CTRLSym_DOUBLE, pt.password, &CTRLSym_DOUBLE,
                                                  &CTRLSym_CR, &CTRLSym_LF};
const int32_t cmdParaNumHoldEncryptKey = 5;
const ParamPointer cmdParaListAutoJobName[] = {&CTRLSym_DOUBLE, PTStdDocumentName, &CTRLSym_DOUBLE};
const int32_t cmdParaNumAutoJobName = 3;
const ParamPointer cmdParaListEnteredJobName[] = {&CTRLSym_DOUBLE, pt.documentName,
                                                  &CTRLSym_DOUBLE};
const int32_t cmdParaNumEnteredJobName = 3;
const ParamPointer cmdParaListDelayTime[] = {&CTRLSym_DOUBLE, pt.delayTime, &CTRLSym_DOUBLE};
const int32_t cmdParaNumDelayTime = 3;

ParamTable symParaBoxNumber;
ParamTable symParaBoxEncryptKey;
ParamTable symParaUserName;
ParamTable symParaHoldEncryptKey;
ParamTable symParaAutoJobName;
ParamTable symParaEnteredJobName;
ParamTable symParaDelayTime;

// ---- Condition items ------------------------------------------------------

const ConditionItem comparationItemHoldStore[] = {
    Is(pt.printType, OptionSecurePrint), Set(pt.userName),
    ShorterThan(pt.userName, PRINTTYPEUSERNAMEDMAXLEN)};
// The password test stands twice; kept as the printers' tables have it.
const ConditionItem comparationItemHoldTypePrivate[] = {
    Is(pt.printType, OptionSecurePrint), Set(pt.userName), Set(pt.password), Set(pt.password)};
const ConditionItem comparationItemHoldProof[] = {Is(pt.printType, OptionSamplePrint),
                                                  Set(pt.userName)};
const ConditionItem comparationItemMailbox[] = {Is(pt.printType, OptionMBN)};
const ConditionItem comparationItemMailboxPassword[] = {Is(pt.printType, OptionMBN),
                                                        Set(pt.mailboxPassword)};
// Every print type but normal, delayed and mailbox printing, including a
// print type the ticket did not set.
const ConditionItem comparationItemUserName[] = {Not(pt.printType, OptionSecurePrintNone),
                                                 Not(pt.printType, OptionDelayPrint),
                                                 Not(pt.printType, OptionMBN), Set(pt.userName)};
const ConditionItem comparationItemHoldEncryptKey[] = {Is(pt.printType, OptionSecurePrint),
                                                       Set(pt.userName), Set(pt.password)};
const ConditionItem comparationItemAutoJobName[] = {
    Not(pt.printType, OptionSecurePrintNone),
    Is(pt.documentNameType, OptionDocumentNameAutoRetrieve), Set(PTStdDocumentName)};
const ConditionItem comparationItemEnteredJobName[] = {
    Not(pt.printType, OptionSecurePrintNone), Is(pt.documentNameType, OptionDocumentNameEnterName),
    Set(pt.documentName)};
const ConditionItem comparationItemDelayTime[] = {Is(pt.printType, OptionDelayPrint),
                                                  Set(pt.delayTime)};

template <size_t N>
void Bind(ConditionTable* table, const ConditionItem (&items)[N]) {
  InitializeComparationTable(table, static_cast<int32_t>(N), items);
}

ConditionTable comparationHoldStore;
ConditionTable comparationHoldTypePrivate;
ConditionTable comparationHoldProof;
ConditionTable comparationMailbox;
ConditionTable comparationMailboxPassword;
ConditionTable comparationUserName;
ConditionTable comparationHoldEncryptKey;
ConditionTable comparationAutoJobName;
ConditionTable comparationEnteredJobName;
ConditionTable comparationDelayTime;

}  // namespace

// ---- Format tables --------------------------------------------------------

const FormatEntry PrintTypeFmtTable[PrintTypeFmtTableNum] = {
    /*  0 */ {prtfmtStrHoldStore, nullptr, &comparationHoldStore},
    /*  1 */ {prtfmtStrHoldTypePrivate, nullptr, &comparationHoldTypePrivate},
    /*  2 */ {prtfmtStrHoldProof, nullptr, &comparationHoldProof},
    /*  3 */ {prtfmtStrHoldBoxStore, nullptr, &comparationMailbox},
    /*  4 */ {prtfmtStrHoldTypePrivate, nullptr, &comparationMailboxPassword},
    /*  5 */ {prtfmtStrBoxNumber, &symParaBoxNumber, &comparationMailbox},
    /*  6 */ {prtfmtStrBoxEncryptKey, &symParaBoxEncryptKey, &comparationMailboxPassword},
    /*  7 */ {prtfmtStrUserName, &symParaUserName, &comparationUserName},
    /*  8 */ {prtfmtStrHoldEncryptKey, &symParaHoldEncryptKey, &comparationHoldEncryptKey},
    /*  9 */ {prtfmtStrJobName, &symParaAutoJobName, &comparationAutoJobName},
    /* 10 */ {prtfmtStrJobName, &symParaEnteredJobName, &comparationEnteredJobName},
    /* 11 */ {prtfmtStrDelayTime, &symParaDelayTime, &comparationDelayTime},
};

// Rows 0, 1, 2, 7, 8, 9 and 10 of the full table.
const FormatEntry PrintTypeFmtPartTable[PrintTypeFmtPartTableNum] = {
    {prtfmtStrHoldStore, nullptr, &comparationHoldStore},
    {prtfmtStrHoldTypePrivate, nullptr, &comparationHoldTypePrivate},
    {prtfmtStrHoldProof, nullptr, &comparationHoldProof},
    {prtfmtStrUserName, &symParaUserName, &comparationUserName},
    {prtfmtStrHoldEncryptKey, &symParaHoldEncryptKey, &comparationHoldEncryptKey},
    {prtfmtStrJobName, &symParaAutoJobName, &comparationAutoJobName},
    {prtfmtStrJobName, &symParaEnteredJobName, &comparationEnteredJobName},
};

void PrintTypeInitializeCmdParaTable() {
  InitializeCmdParaTable(&symParaBoxNumber, cmdParaNumBoxNumber, cmdParaListBoxNumber);
  InitializeCmdParaTable(&symParaBoxEncryptKey, cmdParaNumBoxEncryptKey, cmdParaListBoxEncryptKey);
  InitializeCmdParaTable(&symParaUserName, cmdParaNumUserName, cmdParaListUserName);
  InitializeCmdParaTable(&symParaHoldEncryptKey, cmdParaNumHoldEncryptKey,
                         cmdParaListHoldEncryptKey);
  InitializeCmdParaTable(&symParaAutoJobName, cmdParaNumAutoJobName, cmdParaListAutoJobName);
  InitializeCmdParaTable(&symParaEnteredJobName, cmdParaNumEnteredJobName,
                         cmdParaListEnteredJobName);
  InitializeCmdParaTable(&symParaDelayTime, cmdParaNumDelayTime, cmdParaListDelayTime);
}

void PrintTypeInitialzieComparationTable() {
  Bind(&comparationHoldStore, comparationItemHoldStore);
  Bind(&comparationHoldTypePrivate, comparationItemHoldTypePrivate);
  Bind(&comparationHoldProof, comparationItemHoldProof);
  Bind(&comparationMailbox, comparationItemMailbox);
  Bind(&comparationMailboxPassword, comparationItemMailboxPassword);
  Bind(&comparationUserName, comparationItemUserName);
  Bind(&comparationHoldEncryptKey, comparationItemHoldEncryptKey);
  Bind(&comparationAutoJobName, comparationItemAutoJobName);
  Bind(&comparationEnteredJobName, comparationItemEnteredJobName);
  Bind(&comparationDelayTime, comparationItemDelayTime);
}

void PrintTypeInializeDescriptionTableFromFilter() {
  PrintTypeInitializeCmdParaTable();
  PrintTypeInitialzieComparationTable();
}

int PrintTypeGetTicketFromPDE(char* argv[]) {
  const TicketBinding* table =
      IsUTF8PrinterEncoding() ? PrintTypeticketDataForUTF8 : PrintTypeticketData;
  GetTicketFromArray(argv, table, PrintTypeTicketDataNum);
  return 1;
}

void PrintTypeOutputZPJLCommandFromFilter(char* argv[]) {
  bool partial = false;
  ppd_file_t* ppd = JobPPD();
  if (ppd != nullptr) {
    partial = PPDAttrEquals(ppd, "KRPrinterLanguageEncoding", "UTF-8") &&
              CheckIfPPDKeywordSupported(ppd, "KRZPrintTypeSettings", "Default04") == 1;
  }
  if (partial) {
    OutputZPJLCommandFromArray(argv, PrintTypeFmtPartTable, PrintTypeFmtPartTableNum);
  } else {
    OutputZPJLCommandFromArray(argv, PrintTypeFmtTable, PrintTypeFmtTableNum);
  }
}
