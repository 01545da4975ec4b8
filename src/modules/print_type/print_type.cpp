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

constexpr ParamPointer cmdParaListBoxNumber[] = {pt.mailboxNumber, &CTRLSym_CR, &CTRLSym_LF};
constexpr int32_t cmdParaNumBoxNumber = 3;
constexpr ParamPointer cmdParaListBoxEncryptKey[] = {&CTRLSym_DOUBLE, pt.mailboxPassword,
                                                     &CTRLSym_DOUBLE, &CTRLSym_CR, &CTRLSym_LF};
constexpr int32_t cmdParaNumBoxEncryptKey = 5;
constexpr ParamPointer cmdParaListUserName[] = {&CTRLSym_DOUBLE, pt.userName, &CTRLSym_DOUBLE,
                                                &CTRLSym_CR, &CTRLSym_LF};
constexpr int32_t cmdParaNumUserName = 5;
constexpr ParamPointer cmdParaListHoldEncryptKey[] = {&CTRLSym_DOUBLE, pt.password,
                                                      &CTRLSym_DOUBLE, &CTRLSym_CR, &CTRLSym_LF};
constexpr int32_t cmdParaNumHoldEncryptKey = 5;
constexpr ParamPointer cmdParaListAutoJobName[] = {&CTRLSym_DOUBLE, PTStdDocumentName,
                                                   &CTRLSym_DOUBLE};
constexpr int32_t cmdParaNumAutoJobName = 3;
constexpr ParamPointer cmdParaListEnteredJobName[] = {&CTRLSym_DOUBLE, pt.documentName,
                                                      &CTRLSym_DOUBLE};
constexpr int32_t cmdParaNumEnteredJobName = 3;
constexpr ParamPointer cmdParaListDelayTime[] = {&CTRLSym_DOUBLE, pt.delayTime, &CTRLSym_DOUBLE};
constexpr int32_t cmdParaNumDelayTime = 3;

constexpr ParamTable symParaBoxNumber = Params(cmdParaListBoxNumber);
constexpr ParamTable symParaBoxEncryptKey = Params(cmdParaListBoxEncryptKey);
constexpr ParamTable symParaUserName = Params(cmdParaListUserName);
constexpr ParamTable symParaHoldEncryptKey = Params(cmdParaListHoldEncryptKey);
constexpr ParamTable symParaAutoJobName = Params(cmdParaListAutoJobName);
constexpr ParamTable symParaEnteredJobName = Params(cmdParaListEnteredJobName);
constexpr ParamTable symParaDelayTime = Params(cmdParaListDelayTime);

// ---- Condition items ------------------------------------------------------

constexpr ConditionItem comparationItemHoldStore[] = {
    Is(pt.printType, OptionSecurePrint), Set(pt.userName),
    ShorterThan(pt.userName, PRINTTYPEUSERNAMEDMAXLEN)};
// The password test stands twice; kept as the printers' tables have it.
constexpr ConditionItem comparationItemHoldTypePrivate[] = {
    Is(pt.printType, OptionSecurePrint), Set(pt.userName), Set(pt.password), Set(pt.password)};
constexpr ConditionItem comparationItemHoldProof[] = {Is(pt.printType, OptionSamplePrint),
                                                  Set(pt.userName)};
constexpr ConditionItem comparationItemMailbox[] = {Is(pt.printType, OptionMBN)};
constexpr ConditionItem comparationItemMailboxPassword[] = {Is(pt.printType, OptionMBN),
                                                        Set(pt.mailboxPassword)};
// Every print type but normal, delayed and mailbox printing, including a
// print type the ticket did not set.
constexpr ConditionItem comparationItemUserName[] = {Not(pt.printType, OptionSecurePrintNone),
                                                 Not(pt.printType, OptionDelayPrint),
                                                 Not(pt.printType, OptionMBN), Set(pt.userName)};
constexpr ConditionItem comparationItemHoldEncryptKey[] = {Is(pt.printType, OptionSecurePrint),
                                                       Set(pt.userName), Set(pt.password)};
constexpr ConditionItem comparationItemAutoJobName[] = {
    Not(pt.printType, OptionSecurePrintNone),
    Is(pt.documentNameType, OptionDocumentNameAutoRetrieve), Set(PTStdDocumentName)};
constexpr ConditionItem comparationItemEnteredJobName[] = {
    Not(pt.printType, OptionSecurePrintNone), Is(pt.documentNameType, OptionDocumentNameEnterName),
    Set(pt.documentName)};
constexpr ConditionItem comparationItemDelayTime[] = {Is(pt.printType, OptionDelayPrint),
                                                  Set(pt.delayTime)};

constexpr ConditionTable comparationHoldStore = Conditions(comparationItemHoldStore);
constexpr ConditionTable comparationHoldTypePrivate = Conditions(comparationItemHoldTypePrivate);
constexpr ConditionTable comparationHoldProof = Conditions(comparationItemHoldProof);
constexpr ConditionTable comparationMailbox = Conditions(comparationItemMailbox);
constexpr ConditionTable comparationMailboxPassword = Conditions(comparationItemMailboxPassword);
constexpr ConditionTable comparationUserName = Conditions(comparationItemUserName);
constexpr ConditionTable comparationHoldEncryptKey = Conditions(comparationItemHoldEncryptKey);
constexpr ConditionTable comparationAutoJobName = Conditions(comparationItemAutoJobName);
constexpr ConditionTable comparationEnteredJobName = Conditions(comparationItemEnteredJobName);
constexpr ConditionTable comparationDelayTime = Conditions(comparationItemDelayTime);

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
  RequireCmdParaTable(symParaBoxNumber, cmdParaNumBoxNumber, cmdParaListBoxNumber);
  RequireCmdParaTable(symParaBoxEncryptKey, cmdParaNumBoxEncryptKey, cmdParaListBoxEncryptKey);
  RequireCmdParaTable(symParaUserName, cmdParaNumUserName, cmdParaListUserName);
  RequireCmdParaTable(symParaHoldEncryptKey, cmdParaNumHoldEncryptKey, cmdParaListHoldEncryptKey);
  RequireCmdParaTable(symParaAutoJobName, cmdParaNumAutoJobName, cmdParaListAutoJobName);
  RequireCmdParaTable(symParaEnteredJobName, cmdParaNumEnteredJobName, cmdParaListEnteredJobName);
  RequireCmdParaTable(symParaDelayTime, cmdParaNumDelayTime, cmdParaListDelayTime);
}

void PrintTypeInializeDescriptionTableFromFilter() { PrintTypeInitializeCmdParaTable(); }

int PrintTypeGetTicketFromPDE(char* argv[]) {
  const TicketBinding* table =
      IsUTF8PrinterEncoding() ? PrintTypeticketDataForUTF8 : PrintTypeticketData;
  GetTicketFromArray(argv, table, PrintTypeTicketDataNum);
  return 1;
}

void PrintTypeOutputZPJLCommandFromFilter(char* argv[], FILE* stream) {
  bool partial = false;
  ppd_file_t* ppd = JobPPD();
  if (ppd != nullptr) {
    partial = PPDAttrEquals(ppd, "KRPrinterLanguageEncoding", "UTF-8") &&
              CheckIfPPDKeywordSupported(ppd, "KRZPrintTypeSettings", "Default04") == 1;
  }
  if (partial) {
    OutputZPJLCommandFromArray(argv, PrintTypeFmtPartTable, PrintTypeFmtPartTableNum, stream);
  } else {
    OutputZPJLCommandFromArray(argv, PrintTypeFmtTable, PrintTypeFmtTableNum, stream);
  }
}
