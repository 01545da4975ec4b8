#include "modules/accounting/accounting.h"

#include <cstddef>
#include <initializer_list>
#include <utility>

#include "engine/condition.h"
#include "engine/job_header.h"
#include "frame/job_state.h"
#include "frame/ppd_queries.h"
#include "secure/password_field.h"

JBAOption zpjlOptionJBA;

namespace {

constexpr JBAOption& jba = zpjlOptionJBA;

// ---- Ticket bindings ------------------------------------------------------

// How a row reads its key. `Name` is text that UTF-8 printers take in UTF-8
// (user and storage IDs); every other text is read in the Shift-JIS form.
enum class Read { Integer, Text, Name, Password, KeyAbsent, NumberUp };

struct TicketRow {
  const char* key;
  void* destination;
  int32_t size;
  Read read;
};

template <typename Field>
constexpr TicketRow Row(const char* key, Field& field, Read read) {
  return {key, &field, static_cast<int32_t>(sizeof field), read};
}
constexpr TicketRow Row(const char* key, char* buffer, int32_t size, Read read) {
  return {key, buffer, size, read};
}

constexpr TicketGetter GetterFor(Read read, bool utf8) {
  switch (read) {
    case Read::Integer:
      return GetTicketInteger;
    case Read::Text:
      return GetTicketStringConvertedToPrtLang;
    case Read::Name:
      return utf8 ? GetTicketStringConvertedToPrtLangForUTF8 : GetTicketStringConvertedToPrtLang;
    case Read::Password:
      return GetTicketPasswordStringConvertedToEncryption;
    case Read::KeyAbsent:
      return CheckTicketKey;
    case Read::NumberUp:
      return GetNumberUpTicketString;
  }
  return GetTicketStringConvertedToPrtLang;
}

template <size_t N, size_t... I>
constexpr std::array<TicketBinding, N> MakeBindings(const TicketRow (&rows)[N], bool utf8,
                                                    std::index_sequence<I...>) {
  return {{{rows[I].key, rows[I].destination, rows[I].size, GetterFor(rows[I].read, utf8)}...}};
}
template <size_t N>
constexpr std::array<TicketBinding, N> MakeBindings(const TicketRow (&rows)[N], bool utf8) {
  return MakeBindings(rows, utf8, std::make_index_sequence<N>{});
}

constexpr char kJBAHostNameTicketKey[] =
    "com.korvanel.qd.jtz.printsettings.JBAMacHostNameStringTicket";
constexpr char kJBAIPAddressTicketKey[] =
    "com.korvanel.qd.jtz.printsettings.JBAIPAddressStringTicket";
constexpr char kJBAInfoListTicketKey[] = "com.korvanel.qd.jtz.printsettings.JBAInfoListTicketKey";
constexpr char kJBAInfoSetListTicketKey[] =
    "com.korvanel.qd.jtz.printsettings.JBAInfoSetListTicketKey";
constexpr char kJBAManageTypeTicketKey[] =
    "com.korvanel.qd.jtz.printsettings.JBAManageTypeListTicketKey";
constexpr char kJBAUserSettingTicketKey[] =
    "com.korvanel.qd.jtz.printsettings.JBAUserSettingRadioBtnTicket";
constexpr char kJBAUserIDTypeTicketKey[] =
    "com.korvanel.qd.jtz.printsettings.JBAUserIDListCtrlTicket";
constexpr char kJBAUserIDTicketKey[] = "com.korvanel.qd.jtz.printsettings.JBAUserIDTextEditTicket";
constexpr char kJBADomainNameTicketKey[] =
    "com.korvanel.qd.jtz.printsettings.JBADomainNameTextEditTicket";
constexpr char kJBAUserPasswordTicketKey[] =
    "com.korvanel.qd.jtz.printsettings.JBAUserPasswordTextEditTicket";
constexpr char kJBAAccountIDTicketKey[] =
    "com.korvanel.qd.jtz.printsettings.JBAAccountIDTextEditTicket";
constexpr char kJBAStorageIDTicketKey[] =
    "com.korvanel.qd.jtz.printsettings.JBAStorageIDTextEditTicket";
constexpr char kJBAStoragePasswordTicketKey[] =
    "com.korvanel.qd.jtz.printsettings.JBAStoragePasswordTextEditTicket";
constexpr char kJBAUserInputTicketKey[] =
    "com.korvanel.qd.jtz.printsettings.JBAUserInputRadioBtnTicket";
constexpr char kJBAAdminUserSettingTicketKey[] =
    "com.korvanel.qd.jtz.printsettings.JBAAdminUserSettingRadioBtnTicket";
constexpr char kJBAAdminUserIDTypeTicketKey[] =
    "com.korvanel.qd.jtz.printsettings.JBAAdminUserIDListCtrlTicket";
constexpr char kJBAAdminUserIDTicketKey[] =
    "com.korvanel.qd.jtz.printsettings.JBAAdminUserIDTextEditTicket";
constexpr char kJBAAdminDomainNameTicketKey[] =
    "com.korvanel.qd.jtz.printsettings.JBAAdminDomainNameTextEditTicket";
constexpr char kJBAAdminUserPasswordTicketKey[] =
    "com.korvanel.qd.jtz.printsettings.JBAAdminUserPasswordTextEditTicket";
constexpr char kJBAAdminAccountIDTicketKey[] =
    "com.korvanel.qd.jtz.printsettings.JBAAdminAccountIDTextEditTicket";
constexpr char kJBAAdminStorageIDTicketKey[] =
    "com.korvanel.qd.jtz.printsettings.JBAAdminStorageIDTextEditTicket";
constexpr char kJBAAdminStoragePasswordTicketKey[] =
    "com.korvanel.qd.jtz.printsettings.JBAAdminStoragePasswordTextEditTicket";
constexpr char kJBAAdminUserInputTicketKey[] =
    "com.korvanel.qd.jtz.printsettings.JBAAdminUserInputRadioBtnTicket";
constexpr char kJBAInputAuthTicketKey[] =
    "com.korvanel.qd.jtz.printsettings.JBAInputAuthRadioBtnTicketKey";
constexpr char kJBAInputStorageTicketKey[] =
    "com.korvanel.qd.jtz.printsettings.JBAInputStrgRadioBtnTicketKey";
constexpr char kJBAInputStorageIDTicketKey[] =
    "com.korvanel.qd.jtz.printsettings.JBAInputStorageIDTextEditTicket";
constexpr char kJBAInputStoragePasswordTicketKey[] =
    "com.korvanel.qd.jtz.printsettings.JBAInputStoragePasswordTextEditTicket";
constexpr char kJBAInputUserIDTicketKey[] =
    "com.korvanel.qd.jtz.printsettings.JBAInputUserIDTextEditTicket";
constexpr char kJBAInputDomainNameTicketKey[] =
    "com.korvanel.qd.jtz.printsettings.JBAInputDomainNameTextEditTicket";
constexpr char kJBAInputUserPasswordTicketKey[] =
    "com.korvanel.qd.jtz.printsettings.JBAInputUserPasswordTextEditTicket";
constexpr char kJBAInputAccountIDTicketKey[] =
    "com.korvanel.qd.jtz.printsettings.JBAInputAccountIDTextEditTicket";

constexpr char kNumberUpTicketKey[] = "number-up";
constexpr char kLayoutDirectionTicketKey[] = "com.apple.print.PrintSettings.PMLayoutDirection..n.";
constexpr char kLayoutRowsTicketKey[] = "com.apple.print.PrintSettings.PMLayoutRows..n.";
constexpr char kLayoutColumnsTicketKey[] = "com.apple.print.PrintSettings.PMLayoutColumns..n.";
constexpr char kPaperRectOriginXTicketKey[] =
    "com.apple.print.subTicket.page_format_ticket..d."
    "com.apple.print.subTicket.paper_info_ticket..d."
    "com.apple.print.PaperInfo.PMUnadjustedPaperRect..a.1..n.";
constexpr char kPaperRectOriginYTicketKey[] =
    "com.apple.print.subTicket.page_format_ticket..d."
    "com.apple.print.subTicket.paper_info_ticket..d."
    "com.apple.print.PaperInfo.PMUnadjustedPaperRect..a.0..n.";
constexpr char kPaperRectHeightTicketKey[] =
    "com.apple.print.subTicket.page_format_ticket..d."
    "com.apple.print.subTicket.paper_info_ticket..d."
    "com.apple.print.PaperInfo.PMUnadjustedPaperRect..a.2..n.";
constexpr char kPaperRectWidthTicketKey[] =
    "com.apple.print.subTicket.page_format_ticket..d."
    "com.apple.print.subTicket.paper_info_ticket..d."
    "com.apple.print.PaperInfo.PMUnadjustedPaperRect..a.3..n.";
constexpr char kAdobePaperRectOriginXTicketKey[] =
    "com.apple.print.subTicket.paper_info_ticket..d."
    "com.apple.print.PaperInfo.PMUnadjustedPaperRect..a.1..n.";
constexpr char kAdobePaperRectOriginYTicketKey[] =
    "com.apple.print.subTicket.paper_info_ticket..d."
    "com.apple.print.PaperInfo.PMUnadjustedPaperRect..a.0..n.";
constexpr char kAdobePaperRectHeightTicketKey[] =
    "com.apple.print.subTicket.paper_info_ticket..d."
    "com.apple.print.PaperInfo.PMUnadjustedPaperRect..a.2..n.";
constexpr char kAdobePaperRectWidthTicketKey[] =
    "com.apple.print.subTicket.paper_info_ticket..d."
    "com.apple.print.PaperInfo.PMUnadjustedPaperRect..a.3..n.";

// The layout buffers are larger, but the dialog's values are short.
constexpr int32_t kLayoutTextSize = 10;
constexpr int32_t kPaperRectTextSize = 20;

constexpr TicketRow kCommonTicketRows[JBATicketDataNumCommon] = {
    Row(kJBAHostNameTicketKey, jba.hostName, Read::Text),
    Row(kJBAIPAddressTicketKey, jba.ipAddress, Read::Text),
    Row(kJBAInfoListTicketKey, jba.infoList, Read::Integer),
    Row(kJBAInfoSetListTicketKey, jba.infoSetList, Read::Integer),
    Row(kNumberUpTicketKey, StdNUpInfo, kLayoutTextSize, Read::NumberUp),
    Row(kNumberUpTicketKey, StdLayoutInfo, kLayoutTextSize, Read::Text),
    Row(kLayoutDirectionTicketKey, StdLayoutDirectionInfo, kLayoutTextSize, Read::Text),
    Row(kLayoutRowsTicketKey, StdLayoutRowInfo, kLayoutTextSize, Read::Text),
    Row(kLayoutColumnsTicketKey, StdLayoutColumnInfo, kLayoutTextSize, Read::Text),
    Row(kPaperRectOriginXTicketKey, StdPaperInfoRectOriginXKey, kPaperRectTextSize, Read::Text),
    Row(kPaperRectOriginYTicketKey, StdPaperInfoRectOriginYKey, kPaperRectTextSize, Read::Text),
    Row(kPaperRectHeightTicketKey, StdPaperInfoRectHeightKey, kPaperRectTextSize, Read::Text),
    Row(kPaperRectWidthTicketKey, StdPaperInfoRectWidthKey, kPaperRectTextSize, Read::Text),
    Row(kAdobePaperRectOriginXTicketKey, StdAdobePaperInfoRectOriginXKey, kPaperRectTextSize,
        Read::Text),
    Row(kAdobePaperRectOriginYTicketKey, StdAdobePaperInfoRectOriginYKey, kPaperRectTextSize,
        Read::Text),
    Row(kAdobePaperRectHeightTicketKey, StdAdobePaperInfoRectHeightKey, kPaperRectTextSize,
        Read::Text),
    Row(kAdobePaperRectWidthTicketKey, StdAdobePaperInfoRectWidthKey, kPaperRectTextSize,
        Read::Text),
    Row(kJBAManageTypeTicketKey, jba.manageType, Read::Integer),
    Row(kJBAUserSettingTicketKey, jba.userSetting, Read::Integer),
    Row(kJBAUserIDTypeTicketKey, jba.userIDType, Read::Integer),
    Row(kJBAUserIDTicketKey, jba.userIDAbsent, Read::KeyAbsent),
    Row(kJBAUserIDTicketKey, jba.userID, Read::Name),
    Row(kJBAUserPasswordTicketKey, jba.userPassword, Read::Password),
    Row(kJBADomainNameTicketKey, jba.domainName, Read::Text),
    Row(kJBAInputDomainNameTicketKey, jba.inputDomainName, Read::Text),
    Row(kJBAAccountIDTicketKey, jba.accountID, Read::Text),
    Row(kJBAStorageIDTicketKey, jba.storageID, Read::Name),
    Row(kJBAStoragePasswordTicketKey, jba.storagePassword, Read::Password),
    Row(kJBAUserInputTicketKey, jba.userInput, Read::Integer),
    Row(kJBAInputAuthTicketKey, jba.inputAuth, Read::Integer),
    Row(kJBAInputStorageTicketKey, jba.inputStorage, Read::Integer),
    Row(kJBAInputStorageIDTicketKey, jba.inputStorageID, Read::Name),
    Row(kJBAInputStoragePasswordTicketKey, jba.inputStoragePassword, Read::Password),
    Row(kJBAInputUserIDTicketKey, jba.inputUserID, Read::Name),
    Row(kJBAInputUserPasswordTicketKey, jba.inputUserPassword, Read::Password),
    Row(kJBAInputAccountIDTicketKey, jba.inputAccountID, Read::Text),
};

constexpr TicketRow kAdminTicketRows[JBATicketDataNumAdmin] = {
    Row(kJBAAdminUserSettingTicketKey, jba.adminUserSetting, Read::Integer),
    Row(kJBAAdminUserIDTypeTicketKey, jba.adminUserIDType, Read::Integer),
    Row(kJBAAdminUserIDTicketKey, jba.adminUserID, Read::Name),
    Row(kJBAAdminDomainNameTicketKey, jba.adminDomainName, Read::Text),
    Row(kJBAAdminUserPasswordTicketKey, jba.adminUserPassword, Read::Password),
    Row(kJBAAdminAccountIDTicketKey, jba.adminAccountID, Read::Text),
    Row(kJBAAdminStorageIDTicketKey, jba.adminStorageID, Read::Name),
    Row(kJBAAdminStoragePasswordTicketKey, jba.adminStoragePassword, Read::Password),
    Row(kJBAAdminUserInputTicketKey, jba.adminUserInput, Read::Integer),
};

}  // namespace

const std::array<TicketBinding, JBATicketDataNumCommon> JBAticketDataCommon =
    MakeBindings(kCommonTicketRows, false);
const std::array<TicketBinding, JBATicketDataNumCommon> JBAticketDataCommonForUTF8 =
    MakeBindings(kCommonTicketRows, true);
const std::array<TicketBinding, JBATicketDataNumAdmin> JBAticketDataAdmin =
    MakeBindings(kAdminTicketRows, false);
const std::array<TicketBinding, JBATicketDataNumAdmin> JBAticketDataAdminForUTF8 =
    MakeBindings(kAdminTicketRows, true);

namespace {

// ---- Format strings -------------------------------------------------------
// The line ends are uneven on purpose: the client rows end in LF, the owner,
// password, domain, account and storage rows in CR LF, and four fixed rows in
// the literal LF of their format. The printers expect exactly these bytes.

// How a format takes its parameters (Q is the double quote).
enum class Shape {
  ValueCRLF,  // Q, value, Q, CR, LF
  ValueLF,    // Q, value, Q, LF
  EmptyCRLF,  // Q, Q, CR, LF
  FixedLF,    // Q, Q
};

struct RowFormat {
  const char* text;
  Shape shape;
};

constexpr RowFormat prtfmtStrJOAU = {"@PJL SET JOBATTR=%c@JOAU=%s%c%c%c", Shape::ValueCRLF};
constexpr RowFormat prtfmtStrJOEP = {"@PJL SET JOBATTR=%c@JOEP=%s%c%c%c", Shape::ValueCRLF};
constexpr RowFormat prtfmtStrJOAD = {"@PJL SET JOBATTR=%c@JOAD=%s%c%c%c", Shape::ValueCRLF};
constexpr RowFormat prtfmtStrDAID = {"@PJL SET JOBATTR=%c@DAID=%s%c%c%c", Shape::ValueCRLF};
constexpr RowFormat prtfmtStrACID = {"@PJL SET JOBATTR=%c@ACID=%s%c%c%c", Shape::ValueCRLF};
constexpr RowFormat prtfmtStrACNA = {"@PJL SET JOBATTR=%c@ACNA=%s%c%c%c", Shape::ValueCRLF};
constexpr RowFormat prtfmtStrACEP = {"@PJL SET JOBATTR=%c@ACEP=%s%c%c%c", Shape::ValueCRLF};

constexpr RowFormat prtfmtStrCNAM = {"@PJL SET JOBATTR=%c@CNAM=%s%c%c", Shape::ValueLF};
constexpr RowFormat prtfmtStrLUNA = {"@PJL SET JOBATTR=%c@LUNA=%s%c%c", Shape::ValueLF};
constexpr RowFormat prtfmtStrHOAD = {"@PJL SET JOBATTR=%c@HOAD=%s%c%c", Shape::ValueLF};
constexpr RowFormat prtfmtStrNLPP = {"@PJL SET JOBATTR=%c@NLPP=%s%c%c", Shape::ValueLF};

constexpr RowFormat prtfmtStrJOEPEmpty = {"@PJL SET JOBATTR=%c@JOEP=%c%c%c", Shape::EmptyCRLF};
constexpr RowFormat prtfmtStrDAIDEmpty = {"@PJL SET JOBATTR=%c@DAID=%c%c%c", Shape::EmptyCRLF};
constexpr RowFormat prtfmtStrACEPEmpty = {"@PJL SET JOBATTR=%c@ACEP=%c%c%c", Shape::EmptyCRLF};
constexpr RowFormat prtfmtStrJOAUUnknown = {"@PJL SET JOBATTR=%c@JOAU=UnknownUser%c%c%c",
                                            Shape::EmptyCRLF};

constexpr RowFormat prtfmtStrCNAMUnknownLF = {"@PJL SET JOBATTR=%c@CNAM=UnknownHost%c\n",
                                              Shape::FixedLF};
constexpr RowFormat prtfmtStrLUNAUnknownLF = {"@PJL SET JOBATTR=%c@LUNA=UnknownUser%c\n",
                                              Shape::FixedLF};
constexpr RowFormat prtfmtStrJOAUUnknownLF = {"@PJL SET JOBATTR=%c@JOAU=UnknownUser%c\n",
                                              Shape::FixedLF};
constexpr RowFormat prtfmtStrJOEPEmptyLF = {"@PJL SET JOBATTR=%c@JOEP=%c\n", Shape::FixedLF};

// ---- Row descriptions -----------------------------------------------------

// A field that the administrator set and the user set each have their own
// of; a description names it once and binding picks the set's field.
enum class Own {
  None,
  Setting,  // adminUserSetting / userSetting
  Input,    // adminUserInput / userInput
  IDType,
  UserID,
  UserPassword,
  DomainName,
  AccountID,
  StorageID,
  StoragePassword,
};

// What a value or a condition reads: a set's own field, or a shared place.
struct Operand {
  Own own;
  const void* shared;
};

// One condition; a term without a function ends a row's list.
struct Term {
  Operand operand;
  CompareFunc compare;
  const void* reference;
};

// The empty text that the set/empty tests are given as reference (not read).
const char* const OptionNULLStr = "";

constexpr Operand Of(Own field) { return {field, nullptr}; }
constexpr Operand Of(const int32_t& shared) { return {Own::None, &shared}; }
constexpr Operand Of(const char* shared) { return {Own::None, shared}; }
constexpr Operand kNoValue = {Own::None, nullptr};

template <typename Field>
constexpr Term Is(Field&& field, const int32_t& constant) {
  return {Of(field), IntCampareFunc, &constant};
}
template <typename Field>
constexpr Term Not(Field&& field, const int32_t& constant) {
  return {Of(field), IntNoEqualCampareFunc, &constant};
}
template <typename Field>
constexpr Term Set(Field&& field) {
  return {Of(field), StrNoNULLCampareFunc, &OptionNULLStr};
}
template <typename Field>
constexpr Term Empty(Field&& field) {
  return {Of(field), StrIsNULLCampareFunc, &OptionNULLStr};
}

constexpr int kMaxTerms = 5;

struct RowDescription {
  const RowFormat* format;
  Operand value;
  Term terms[kMaxTerms];
};

// Short names for the table rows below.
constexpr int32_t kLogin = OptionComInUserTypeUseLogin;
constexpr int32_t kEntered = OptionComInUserTypeEnterName;
constexpr int32_t kOn = OptionUserInputTypeSelected;

// The administrator rows. Rows 0-16 (the settings made in the dialog) also
// need manageType = administrator and adminUserSetting on; rows 17-34 (the
// values entered at print time) manageType = administrator and
// adminUserInput on. The user set mirrors them in the common table.
constexpr int kFirstEntryTimeRow = 17;
// clang-format off
const RowDescription kAdminRows[JBAFmtTableAdminNum] = {
    /*  0 */ {&prtfmtStrJOAU, Of(StdJBAUserName),
              {Is(Own::IDType, kLogin), Set(StdUserName), Is(jba.infoList, JBAInfoListNotExist)}},
    /*  1 */ {&prtfmtStrJOAUUnknownLF, kNoValue,
              {Is(Own::IDType, kLogin), Not(jba.infoList, JBAInfoListNotExist),
               Is(jba.infoList, JBAInfoListBillingSelect), Not(jba.infoSetList, Case_8)}},
    /*  2 */ {&prtfmtStrJOAU, Of(StdJBAUserName),
              {Is(Own::IDType, kLogin), Set(StdUserName), Not(jba.infoList, JBAInfoListNotExist),
               Is(jba.infoList, JBAInfoListUserAccntSelect), Not(jba.infoSetList, Case_8)}},
    /*  3 */ {&prtfmtStrJOAU, Of(StdJBAUserName),
              {Is(Own::IDType, kLogin), Set(StdUserName), Not(jba.infoList, JBAInfoListNotExist),
               Is(jba.infoList, JBAInfoListAllSelect), Not(jba.infoSetList, Case_8)}},
    /*  4 */ {&prtfmtStrJOAUUnknownLF, kNoValue,
              {Is(Own::IDType, kLogin), Not(jba.infoList, JBAInfoListNotExist),
               Is(jba.infoSetList, Case_8)}},
    /*  5 */ {&prtfmtStrJOAU, Of(Own::UserID), {Is(Own::IDType, kEntered), Set(Own::UserID)}},
    /*  6 */ {&prtfmtStrJOEP, Of(Own::UserPassword),
              {Is(Own::IDType, kLogin), Set(StdUserName), Set(Own::UserPassword)}},
    /*  7 */ {&prtfmtStrJOEPEmpty, kNoValue,
              {Is(Own::IDType, kLogin), Set(StdUserName), Empty(Own::UserPassword)}},
    /*  8 */ {&prtfmtStrJOEP, Of(Own::UserPassword),
              {Is(Own::IDType, kEntered), Set(Own::UserID), Set(Own::UserPassword)}},
    /*  9 */ {&prtfmtStrJOEPEmpty, kNoValue,
              {Is(Own::IDType, kEntered), Set(Own::UserID), Empty(Own::UserPassword)}},
    /* 10 */ {&prtfmtStrJOAD, Of(Own::DomainName), {Set(Own::DomainName)}},
    /* 11 */ {&prtfmtStrDAID, Of(Own::AccountID), {Set(Own::AccountID)}},
    /* 12 */ {&prtfmtStrDAIDEmpty, kNoValue, {Empty(Own::AccountID)}},
    /* 13 */ {&prtfmtStrACID, Of(Own::StorageID), {Set(Own::StorageID)}},
    /* 14 */ {&prtfmtStrACNA, Of(StdDocumentName), {Set(StdDocumentName)}},
    /* 15 */ {&prtfmtStrACEP, Of(Own::StoragePassword),
              {Set(Own::StorageID), Set(Own::StoragePassword)}},
    /* 16 */ {&prtfmtStrACEPEmpty, kNoValue, {Set(Own::StorageID), Empty(Own::StoragePassword)}},

    // Entered at print time: the input fields are shared by both sets.
    /* 17 */ {&prtfmtStrJOAU, Of(jba.inputUserID),
              {Is(jba.inputAuth, kOn), Set(jba.inputUserID), Not(jba.infoSetList, Case_8)}},
    /* 18 */ {&prtfmtStrJOAUUnknown, kNoValue,
              {Is(jba.inputAuth, kOn), Is(jba.infoSetList, Case_8)}},
    /* 19 */ {&prtfmtStrJOAUUnknown, kNoValue,
              {Is(jba.inputAuth, kOn), Empty(jba.inputUserID), Not(jba.infoSetList, Case_8)}},
    /* 20 */ {&prtfmtStrJOEP, Of(jba.inputUserPassword),
              {Is(jba.inputAuth, kOn), Set(jba.inputUserID), Set(jba.inputUserPassword),
               Not(jba.infoSetList, Case_8)}},
    /* 21 */ {&prtfmtStrJOEPEmpty, kNoValue,
              {Is(jba.inputAuth, kOn), Is(jba.infoSetList, Case_8)}},
    /* 22 */ {&prtfmtStrJOEPEmpty, kNoValue,
              {Is(jba.inputAuth, kOn), Empty(jba.inputUserPassword), Set(jba.inputUserID),
               Not(jba.infoSetList, Case_8)}},
    /* 23 */ {&prtfmtStrJOEPEmpty, kNoValue,
              {Is(jba.inputAuth, kOn), Empty(jba.inputUserID), Not(jba.infoSetList, Case_8)}},
    /* 24 */ {&prtfmtStrJOAD, Of(jba.inputDomainName),
              {Is(jba.inputAuth, kOn), Set(jba.inputDomainName)}},
    /* 25 */ {&prtfmtStrDAID, Of(jba.inputAccountID),
              {Is(jba.inputAuth, kOn), Set(jba.inputAccountID), Not(jba.infoSetList, Case_8)}},
    /* 26 */ {&prtfmtStrDAIDEmpty, kNoValue,
              {Is(jba.inputAuth, kOn), Set(jba.inputAccountID), Is(jba.infoSetList, Case_8)}},
    /* 27 */ {&prtfmtStrDAIDEmpty, kNoValue,
              {Is(jba.inputAuth, kOn), Empty(jba.inputAccountID)}},
    /* 28 */ {&prtfmtStrDAIDEmpty, kNoValue,
              {Is(jba.inputStorage, kOn), Not(jba.infoList, JBAInfoListNotExist)}},
    /* 29 */ {&prtfmtStrACID, Of(jba.inputStorageID),
              {Is(jba.inputStorage, kOn), Set(jba.inputStorageID)}},
    /* 30 */ {&prtfmtStrACNA, Of(StdDocumentName), {Set(StdDocumentName)}},
    /* 31 */ {&prtfmtStrJOAUUnknownLF, kNoValue, {Is(jba.inputStorage, kOn)}},
    /* 32 */ {&prtfmtStrJOEPEmptyLF, kNoValue, {Is(jba.inputStorage, kOn)}},
    /* 33 */ {&prtfmtStrACEP, Of(jba.inputStoragePassword),
              {Is(jba.inputStorage, kOn), Set(jba.inputStorageID),
               Set(jba.inputStoragePassword)}},
    /* 34 */ {&prtfmtStrACEPEmpty, kNoValue,
              {Is(jba.inputStorage, kOn), Set(jba.inputStorageID),
               Empty(jba.inputStoragePassword)}},
};
// clang-format on

// The common table's own rows, which hold in every accounting mode.
// clang-format off
const RowDescription kClientRows[] = {
    /* 0 */ {&prtfmtStrCNAM, Of(HostNameStr), {Set(HostNameStr)}},
    /* 1 */ {&prtfmtStrCNAMUnknownLF, kNoValue, {Empty(HostNameStr)}},
    /* 2 */ {&prtfmtStrLUNA, Of(StdUserName), {Set(StdUserName)}},
    /* 3 */ {&prtfmtStrLUNAUnknownLF, kNoValue, {Empty(StdUserName)}},
    /* 4 */ {&prtfmtStrHOAD, Of(jba.ipAddress), {Set(jba.ipAddress)}},
    /* 5 */ {&prtfmtStrHOAD, Of(IPAddressStr), {Empty(jba.ipAddress), Set(IPAddressStr)}},
    /* 6 */ {&prtfmtStrNLPP, Of(StdNUpInfo), {Set(StdNUpInfo)}},
    // Common row 12: the login user as owner when the dialog sent no user ID.
    /* 7 */ {&prtfmtStrJOAU, Of(StdJBAUserName), {Is(jba.userIDAbsent, JBAUserNameNotExist)}},
    // Common row 37: the document name, whenever it is known.
    /* 8 */ {&prtfmtStrACNA, Of(StdDocumentName), {Set(StdDocumentName)}},
};
// clang-format on

// Where a row of the common table comes from: one of its own rows, or the
// user mirror of an administrator row.
struct CommonSource {
  bool mirror;
  int index;
};
constexpr CommonSource Client(int index) { return {false, index}; }
constexpr CommonSource Mirror(int adminRow) { return {true, adminRow}; }

// clang-format off
const CommonSource kCommonLayout[JBAFmtTableCommonNum] = {
    /*  0- 6 */ Client(0), Client(1), Client(2), Client(3), Client(4), Client(5), Client(6),
    /*  7-11 */ Mirror(0), Mirror(1), Mirror(2), Mirror(3), Mirror(4),
    /* 12    */ Client(7),
    /* 13-19 */ Mirror(5), Mirror(6), Mirror(7), Mirror(8), Mirror(9), Mirror(10), Mirror(11),
    // No mirror of administrator row 14: the common row 37 sends the name.
    /* 20-23 */ Mirror(12), Mirror(13), Mirror(15), Mirror(16),
    /* 24-30 */ Mirror(17), Mirror(18), Mirror(19), Mirror(20), Mirror(21), Mirror(22), Mirror(23),
    /* 31-36 */ Mirror(24), Mirror(25), Mirror(26), Mirror(27), Mirror(28), Mirror(29),
    /* 37    */ Client(8),
    /* 38-41 */ Mirror(31), Mirror(32), Mirror(33), Mirror(34),
};
// clang-format on

// ---- Binding --------------------------------------------------------------

enum class Side { Admin, User };

// The conditions a row of a set needs besides its own: none for the common
// table's own rows, else manageType naming the set and the set's radio button
// (setting or input) on.
enum class Standing { None, Setting, Input };

const void* OwnField(Own field, Side side) {
  const bool admin = side == Side::Admin;
  switch (field) {
    case Own::None:
      return nullptr;
    case Own::Setting:
      return admin ? &jba.adminUserSetting : &jba.userSetting;
    case Own::Input:
      return admin ? &jba.adminUserInput : &jba.userInput;
    case Own::IDType:
      return admin ? &jba.adminUserIDType : &jba.userIDType;
    case Own::UserID:
      return admin ? jba.adminUserID : jba.userID;
    case Own::UserPassword:
      return admin ? jba.adminUserPassword : jba.userPassword;
    case Own::DomainName:
      return admin ? jba.adminDomainName : jba.domainName;
    case Own::AccountID:
      return admin ? jba.adminAccountID : jba.accountID;
    case Own::StorageID:
      return admin ? jba.adminStorageID : jba.storageID;
    case Own::StoragePassword:
      return admin ? jba.adminStoragePassword : jba.storagePassword;
  }
  return nullptr;
}

const void* Resolve(const Operand& operand, Side side) {
  return operand.own == Own::None ? operand.shared : OwnField(operand.own, side);
}

// Storage of one bound row: its parameter list and condition items, and the
// records that point at them.
struct BoundRow {
  ParamPointer params[5];
  ParamTable paramTable;
  ConditionItem items[2 + kMaxTerms];
  ConditionTable conditionTable;
};

BoundRow adminRows[JBAFmtTableAdminNum];
BoundRow commonRows[JBAFmtTableCommonNum];
bool tablesBound = false;

void SetParams(BoundRow* bound, std::initializer_list<ParamPointer> list) {
  int32_t count = 0;
  for (ParamPointer pointer : list) bound->params[count++] = pointer;
  InitializeCmdParaTable(&bound->paramTable, count, bound->params);
}

void BindParams(const RowDescription& row, Side side, BoundRow* bound) {
  const void* q = &CTRLSym_DOUBLE;
  const void* value = Resolve(row.value, side);
  switch (row.format->shape) {
    case Shape::ValueCRLF:
      SetParams(bound, {q, value, q, &CTRLSym_CR, &CTRLSym_LF});
      break;
    case Shape::ValueLF:
      SetParams(bound, {q, value, q, &CTRLSym_LF});
      break;
    case Shape::EmptyCRLF:
      SetParams(bound, {q, q, &CTRLSym_CR, &CTRLSym_LF});
      break;
    case Shape::FixedLF:
      SetParams(bound, {q, q});
      break;
  }
}

void BindConditions(const RowDescription& row, Side side, Standing standing, BoundRow* bound) {
  int32_t count = 0;
  auto add = [&](const void* value, CompareFunc compare, const void* reference) {
    bound->items[count++] = {value, reference, compare};
  };
  if (standing != Standing::None) {
    add(&jba.manageType, IntCampareFunc,
        side == Side::Admin ? &JBAModeListAdmin : &JBAModeListUser);
    add(OwnField(standing == Standing::Setting ? Own::Setting : Own::Input, side), IntCampareFunc,
        &OptionUserInputTypeSelected);
  }
  for (const Term& term : row.terms) {
    if (term.compare == nullptr) break;
    add(Resolve(term.operand, side), term.compare, term.reference);
  }
  InitializeComparationTable(&bound->conditionTable, count, bound->items);
}

void BindRow(const RowDescription& row, Side side, Standing standing, BoundRow* bound,
             FormatEntry* entry) {
  BindParams(row, side, bound);
  BindConditions(row, side, standing, bound);
  *entry = {row.format->text, &bound->paramTable, &bound->conditionTable};
}

Standing AdminRowStanding(int adminRow) {
  return adminRow < kFirstEntryTimeRow ? Standing::Setting : Standing::Input;
}

}  // namespace

FormatEntry JBAFmtTableAdmin[JBAFmtTableAdminNum];
FormatEntry JBAFmtTableCommon[JBAFmtTableCommonNum];

void JBAInializeDescriptionTableFromFilter() {
  for (int row = 0; row < JBAFmtTableCommonNum; ++row) {
    const CommonSource& source = kCommonLayout[row];
    if (source.mirror) {
      BindRow(kAdminRows[source.index], Side::User, AdminRowStanding(source.index),
              &commonRows[row], &JBAFmtTableCommon[row]);
    } else {
      BindRow(kClientRows[source.index], Side::User, Standing::None, &commonRows[row],
              &JBAFmtTableCommon[row]);
    }
  }
  for (int row = 0; row < JBAFmtTableAdminNum; ++row) {
    BindRow(kAdminRows[row], Side::Admin, AdminRowStanding(row), &adminRows[row],
            &JBAFmtTableAdmin[row]);
  }
  tablesBound = true;
}

int JBAGetTicketFromPDE(char* argv[]) {
  const bool utf8 = IsUTF8PrinterEncoding();
  const auto& common = utf8 ? JBAticketDataCommonForUTF8 : JBAticketDataCommon;
  const auto& admin = utf8 ? JBAticketDataAdminForUTF8 : JBAticketDataAdmin;
  GetTicketFromArray(argv, common.data(), JBATicketDataNumCommon);
  GetTicketFromArray(argv, admin.data(), JBATicketDataNumAdmin);
  return 1;
}

void JBAOutputZPJLCommandFromFilter(char* argv[]) {
  if (!tablesBound) return;
  OutputZPJLCommandFromArray(argv, JBAFmtTableAdmin, JBAFmtTableAdminNum);
  OutputZPJLCommandFromArray(argv, JBAFmtTableCommon, JBAFmtTableCommonNum);
}
