#include "modules/accounting/accounting.h"

#include <array>
#include <cstddef>
#include <utility>

#include "base/job_state.h"
#include "base/ppd_queries.h"
#include "engine/condition.h"
#include "engine/row_writer.h"
#include "engine/table_rows.h"

JBAOption zpjlOptionJBA;

namespace {

constexpr JBAOption& jba = zpjlOptionJBA;

// ---- Ticket bindings ------------------------------------------------------

constexpr char kJBAHostNameTicketKey[] = JTZ_KEY("JBAMacHostNameStringTicket");
constexpr char kJBAIPAddressTicketKey[] = JTZ_KEY("JBAIPAddressStringTicket");
constexpr char kJBAInfoListTicketKey[] = JTZ_KEY("JBAInfoListTicketKey");
constexpr char kJBAInfoSetListTicketKey[] = JTZ_KEY("JBAInfoSetListTicketKey");
constexpr char kJBAManageTypeTicketKey[] = JTZ_KEY("JBAManageTypeListTicketKey");
constexpr char kJBAUserSettingTicketKey[] = JTZ_KEY("JBAUserSettingRadioBtnTicket");
constexpr char kJBAUserIDTypeTicketKey[] = JTZ_KEY("JBAUserIDListCtrlTicket");
constexpr char kJBAUserIDTicketKey[] = JTZ_KEY("JBAUserIDTextEditTicket");
constexpr char kJBADomainNameTicketKey[] = JTZ_KEY("JBADomainNameTextEditTicket");
constexpr char kJBAUserPasswordTicketKey[] = JTZ_KEY("JBAUserPasswordTextEditTicket");
constexpr char kJBAAccountIDTicketKey[] = JTZ_KEY("JBAAccountIDTextEditTicket");
constexpr char kJBAStorageIDTicketKey[] = JTZ_KEY("JBAStorageIDTextEditTicket");
constexpr char kJBAStoragePasswordTicketKey[] = JTZ_KEY("JBAStoragePasswordTextEditTicket");
constexpr char kJBAUserInputTicketKey[] = JTZ_KEY("JBAUserInputRadioBtnTicket");
constexpr char kJBAAdminUserSettingTicketKey[] = JTZ_KEY("JBAAdminUserSettingRadioBtnTicket");
constexpr char kJBAAdminUserIDTypeTicketKey[] = JTZ_KEY("JBAAdminUserIDListCtrlTicket");
constexpr char kJBAAdminUserIDTicketKey[] = JTZ_KEY("JBAAdminUserIDTextEditTicket");
constexpr char kJBAAdminDomainNameTicketKey[] = JTZ_KEY("JBAAdminDomainNameTextEditTicket");
constexpr char kJBAAdminUserPasswordTicketKey[] = JTZ_KEY("JBAAdminUserPasswordTextEditTicket");
constexpr char kJBAAdminAccountIDTicketKey[] = JTZ_KEY("JBAAdminAccountIDTextEditTicket");
constexpr char kJBAAdminStorageIDTicketKey[] = JTZ_KEY("JBAAdminStorageIDTextEditTicket");
constexpr char kJBAAdminStoragePasswordTicketKey[] =
    JTZ_KEY("JBAAdminStoragePasswordTextEditTicket");
constexpr char kJBAAdminUserInputTicketKey[] = JTZ_KEY("JBAAdminUserInputRadioBtnTicket");
constexpr char kJBAInputAuthTicketKey[] = JTZ_KEY("JBAInputAuthRadioBtnTicketKey");
constexpr char kJBAInputStorageTicketKey[] = JTZ_KEY("JBAInputStrgRadioBtnTicketKey");
constexpr char kJBAInputStorageIDTicketKey[] = JTZ_KEY("JBAInputStorageIDTextEditTicket");
constexpr char kJBAInputStoragePasswordTicketKey[] =
    JTZ_KEY("JBAInputStoragePasswordTextEditTicket");
constexpr char kJBAInputUserIDTicketKey[] = JTZ_KEY("JBAInputUserIDTextEditTicket");
constexpr char kJBAInputDomainNameTicketKey[] = JTZ_KEY("JBAInputDomainNameTextEditTicket");
constexpr char kJBAInputUserPasswordTicketKey[] = JTZ_KEY("JBAInputUserPasswordTextEditTicket");
constexpr char kJBAInputAccountIDTicketKey[] = JTZ_KEY("JBAInputAccountIDTextEditTicket");

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
    Row(kJBAHostNameTicketKey, jba.hostName, TicketRead::Text),
    Row(kJBAIPAddressTicketKey, jba.ipAddress, TicketRead::Text),
    Row(kJBAInfoListTicketKey, jba.infoList, TicketRead::Integer),
    Row(kJBAInfoSetListTicketKey, jba.infoSetList, TicketRead::Integer),
    Row(kNumberUpTicketKey, StdNUpInfo, kLayoutTextSize, TicketRead::NumberUp),
    Row(kNumberUpTicketKey, StdLayoutInfo, kLayoutTextSize, TicketRead::Text),
    Row(kLayoutDirectionTicketKey, StdLayoutDirectionInfo, kLayoutTextSize, TicketRead::Text),
    Row(kLayoutRowsTicketKey, StdLayoutRowInfo, kLayoutTextSize, TicketRead::Text),
    Row(kLayoutColumnsTicketKey, StdLayoutColumnInfo, kLayoutTextSize, TicketRead::Text),
    Row(kPaperRectOriginXTicketKey, StdPaperInfoRectOriginXKey, kPaperRectTextSize,
        TicketRead::Text),
    Row(kPaperRectOriginYTicketKey, StdPaperInfoRectOriginYKey, kPaperRectTextSize,
        TicketRead::Text),
    Row(kPaperRectHeightTicketKey, StdPaperInfoRectHeightKey, kPaperRectTextSize, TicketRead::Text),
    Row(kPaperRectWidthTicketKey, StdPaperInfoRectWidthKey, kPaperRectTextSize, TicketRead::Text),
    Row(kAdobePaperRectOriginXTicketKey, StdAdobePaperInfoRectOriginXKey, kPaperRectTextSize,
        TicketRead::Text),
    Row(kAdobePaperRectOriginYTicketKey, StdAdobePaperInfoRectOriginYKey, kPaperRectTextSize,
        TicketRead::Text),
    Row(kAdobePaperRectHeightTicketKey, StdAdobePaperInfoRectHeightKey, kPaperRectTextSize,
        TicketRead::Text),
    Row(kAdobePaperRectWidthTicketKey, StdAdobePaperInfoRectWidthKey, kPaperRectTextSize,
        TicketRead::Text),
    Row(kJBAManageTypeTicketKey, jba.manageType, TicketRead::Integer),
    Row(kJBAUserSettingTicketKey, jba.userSetting, TicketRead::Integer),
    Row(kJBAUserIDTypeTicketKey, jba.userIDType, TicketRead::Integer),
    Row(kJBAUserIDTicketKey, jba.userIDAbsent, TicketRead::KeyAbsent),
    Row(kJBAUserIDTicketKey, jba.userID, TicketRead::Name),
    Row(kJBAUserPasswordTicketKey, jba.userPassword, TicketRead::Password),
    Row(kJBADomainNameTicketKey, jba.domainName, TicketRead::Text),
    Row(kJBAInputDomainNameTicketKey, jba.inputDomainName, TicketRead::Text),
    Row(kJBAAccountIDTicketKey, jba.accountID, TicketRead::Text),
    Row(kJBAStorageIDTicketKey, jba.storageID, TicketRead::Name),
    Row(kJBAStoragePasswordTicketKey, jba.storagePassword, TicketRead::Password),
    Row(kJBAUserInputTicketKey, jba.userInput, TicketRead::Integer),
    Row(kJBAInputAuthTicketKey, jba.inputAuth, TicketRead::Integer),
    Row(kJBAInputStorageTicketKey, jba.inputStorage, TicketRead::Integer),
    Row(kJBAInputStorageIDTicketKey, jba.inputStorageID, TicketRead::Name),
    Row(kJBAInputStoragePasswordTicketKey, jba.inputStoragePassword, TicketRead::Password),
    Row(kJBAInputUserIDTicketKey, jba.inputUserID, TicketRead::Name),
    Row(kJBAInputUserPasswordTicketKey, jba.inputUserPassword, TicketRead::Password),
    Row(kJBAInputAccountIDTicketKey, jba.inputAccountID, TicketRead::Text),
};

constexpr TicketRow kAdminTicketRows[JBATicketDataNumAdmin] = {
    Row(kJBAAdminUserSettingTicketKey, jba.adminUserSetting, TicketRead::Integer),
    Row(kJBAAdminUserIDTypeTicketKey, jba.adminUserIDType, TicketRead::Integer),
    Row(kJBAAdminUserIDTicketKey, jba.adminUserID, TicketRead::Name),
    Row(kJBAAdminDomainNameTicketKey, jba.adminDomainName, TicketRead::Text),
    Row(kJBAAdminUserPasswordTicketKey, jba.adminUserPassword, TicketRead::Password),
    Row(kJBAAdminAccountIDTicketKey, jba.adminAccountID, TicketRead::Text),
    Row(kJBAAdminStorageIDTicketKey, jba.adminStorageID, TicketRead::Name),
    Row(kJBAAdminStoragePasswordTicketKey, jba.adminStoragePassword, TicketRead::Password),
    Row(kJBAAdminUserInputTicketKey, jba.adminUserInput, TicketRead::Integer),
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

// One condition; an unused term (the default) ends a row's list.
struct Term {
  Operand operand;
  CompareFunc compare;
  const void* reference;
  bool used;
};

constexpr Operand Of(Own field) { return {field, nullptr}; }
constexpr Operand Of(const int32_t& shared) { return {Own::None, &shared}; }
constexpr Operand Of(const char* shared) { return {Own::None, shared}; }
constexpr Operand kNoValue = {Own::None, nullptr};

template <typename Field>
constexpr Term Is(Field&& field, const int32_t& constant) {
  return {Of(field), IntCampareFunc, &constant, true};
}
template <typename Field>
constexpr Term Not(Field&& field, const int32_t& constant) {
  return {Of(field), IntNoEqualCampareFunc, &constant, true};
}
template <typename Field>
constexpr Term Set(Field&& field) {
  return {Of(field), StrNoNULLCampareFunc, &OptionNULLStr, true};
}
template <typename Field>
constexpr Term Empty(Field&& field) {
  return {Of(field), StrIsNULLCampareFunc, &OptionNULLStr, true};
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
constexpr RowDescription kAdminRows[JBAFmtTableAdminNum] = {
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
constexpr RowDescription kClientRows[] = {
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
constexpr CommonSource kCommonLayout[JBAFmtTableCommonNum] = {
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

constexpr const void* OwnField(Own field, Side side) {
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

constexpr const void* Resolve(const Operand& operand, Side side) {
  return operand.own == Own::None ? operand.shared : OwnField(operand.own, side);
}

// One bound row: its parameter list and condition items, and the tables that
// hold them. Computed by the compiler from the row descriptions.
struct BoundRow {
  ParamPointer params[5] = {};
  int32_t paramCount = 0;
  ConditionItem items[2 + kMaxTerms] = {};
  int32_t itemCount = 0;
};

constexpr int32_t ParamCountOf(Shape shape) {
  switch (shape) {
    case Shape::ValueCRLF:
      return 5;
    case Shape::ValueLF:
    case Shape::EmptyCRLF:
      return 4;
    case Shape::FixedLF:
      return 2;
  }
  return 0;
}

constexpr void BindParams(const RowDescription& row, Side side, BoundRow* bound) {
  const void* q = &CTRLSym_DOUBLE;
  const void* value = Resolve(row.value, side);
  const ParamPointer valueCRLF[] = {q, value, q, &CTRLSym_CR, &CTRLSym_LF};
  const ParamPointer valueLF[] = {q, value, q, &CTRLSym_LF};
  const ParamPointer emptyCRLF[] = {q, q, &CTRLSym_CR, &CTRLSym_LF};
  const ParamPointer* list = valueCRLF;
  if (row.format->shape == Shape::ValueLF) list = valueLF;
  if (row.format->shape == Shape::EmptyCRLF) list = emptyCRLF;
  if (row.format->shape == Shape::FixedLF) list = emptyCRLF;  // the two quotes
  bound->paramCount = ParamCountOf(row.format->shape);
  for (int32_t i = 0; i < bound->paramCount; ++i) bound->params[i] = list[i];
}

constexpr void BindConditions(const RowDescription& row, Side side, Standing standing,
                              BoundRow* bound) {
  if (standing != Standing::None) {
    bound->items[bound->itemCount++] = {
        &jba.manageType, side == Side::Admin ? &JBAModeListAdmin : &JBAModeListUser,
        IntCampareFunc};
    bound->items[bound->itemCount++] = {
        OwnField(standing == Standing::Setting ? Own::Setting : Own::Input, side),
        &OptionUserInputTypeSelected, IntCampareFunc};
  }
  for (const Term& term : row.terms) {
    if (!term.used) break;
    bound->items[bound->itemCount++] = {Resolve(term.operand, side), term.reference, term.compare};
  }
}

constexpr BoundRow BindRow(const RowDescription& row, Side side, Standing standing) {
  BoundRow bound;
  BindParams(row, side, &bound);
  BindConditions(row, side, standing, &bound);
  return bound;
}

constexpr Standing AdminRowStanding(int adminRow) {
  return adminRow < kFirstEntryTimeRow ? Standing::Setting : Standing::Input;
}

constexpr std::array<BoundRow, JBAFmtTableAdminNum> BindAdminRows() {
  std::array<BoundRow, JBAFmtTableAdminNum> rows{};
  for (int row = 0; row < JBAFmtTableAdminNum; ++row) {
    rows[row] = BindRow(kAdminRows[row], Side::Admin, AdminRowStanding(row));
  }
  return rows;
}

// The user set: the common table's own rows and the mirrors of the
// administrator rows, in the common table's order.
constexpr std::array<BoundRow, JBAFmtTableCommonNum> BindCommonRows() {
  std::array<BoundRow, JBAFmtTableCommonNum> rows{};
  for (int row = 0; row < JBAFmtTableCommonNum; ++row) {
    const CommonSource& source = kCommonLayout[row];
    rows[row] = source.mirror ? BindRow(kAdminRows[source.index], Side::User,
                                        AdminRowStanding(source.index))
                              : BindRow(kClientRows[source.index], Side::User, Standing::None);
  }
  return rows;
}

constexpr auto kAdminBound = BindAdminRows();
constexpr auto kCommonBound = BindCommonRows();

template <size_t N, size_t... I>
constexpr std::array<ParamTable, N> ParamTablesOf(const std::array<BoundRow, N>& rows,
                                                  std::index_sequence<I...>) {
  return {{{rows[I].paramCount, rows[I].params}...}};
}
template <size_t N, size_t... I>
constexpr std::array<ConditionTable, N> ConditionTablesOf(const std::array<BoundRow, N>& rows,
                                                          std::index_sequence<I...>) {
  return {{{rows[I].itemCount, rows[I].items}...}};
}

constexpr auto symParaJBAAdmin =
    ParamTablesOf(kAdminBound, std::make_index_sequence<JBAFmtTableAdminNum>{});
constexpr auto comparationJBAAdmin =
    ConditionTablesOf(kAdminBound, std::make_index_sequence<JBAFmtTableAdminNum>{});
constexpr auto symParaJBACommon =
    ParamTablesOf(kCommonBound, std::make_index_sequence<JBAFmtTableCommonNum>{});
constexpr auto comparationJBACommon =
    ConditionTablesOf(kCommonBound, std::make_index_sequence<JBAFmtTableCommonNum>{});

constexpr const char* FormatOfCommonRow(int row) {
  const CommonSource& source = kCommonLayout[row];
  return source.mirror ? kAdminRows[source.index].format->text
                       : kClientRows[source.index].format->text;
}

template <size_t... I>
constexpr std::array<FormatEntry, JBAFmtTableAdminNum> AdminTable(std::index_sequence<I...>) {
  return {{{kAdminRows[I].format->text, &symParaJBAAdmin[I], &comparationJBAAdmin[I]}...}};
}
template <size_t... I>
constexpr std::array<FormatEntry, JBAFmtTableCommonNum> CommonTable(std::index_sequence<I...>) {
  return {{{FormatOfCommonRow(I), &symParaJBACommon[I], &comparationJBACommon[I]}...}};
}

constexpr auto kAdminTable = AdminTable(std::make_index_sequence<JBAFmtTableAdminNum>{});
constexpr auto kCommonTable = CommonTable(std::make_index_sequence<JBAFmtTableCommonNum>{});

}  // namespace

const FormatEntry* const JBAFmtTableAdmin = kAdminTable.data();
const FormatEntry* const JBAFmtTableCommon = kCommonTable.data();

namespace {

// The control symbols of a format, each of which needs a parameter.
int32_t SymbolCount(const char* format) {
  int32_t count = 0;
  for (const char* symbol = GetNextCtrlSym(format); symbol != nullptr;
       symbol = GetNextCtrlSym(symbol + 2)) {
    ++count;
    if (symbol[2] == '\0') break;
  }
  return count;
}

}  // namespace

// The tables are constants: checks that each row's parameters match the
// control symbols of its format, so that no row loses its value.
void JBAInializeDescriptionTableFromFilter() {
  for (int row = 0; row < JBAFmtTableAdminNum; ++row) {
    RequireCmdParaTable(symParaJBAAdmin[row], SymbolCount(kAdminTable[row].format),
                        kAdminBound[row].params);
  }
  for (int row = 0; row < JBAFmtTableCommonNum; ++row) {
    RequireCmdParaTable(symParaJBACommon[row], SymbolCount(kCommonTable[row].format),
                        kCommonBound[row].params);
  }
}

int JBAGetTicketFromPDE(char* argv[]) {
  const bool utf8 = IsUTF8PrinterEncoding();
  const auto& common = utf8 ? JBAticketDataCommonForUTF8 : JBAticketDataCommon;
  const auto& admin = utf8 ? JBAticketDataAdminForUTF8 : JBAticketDataAdmin;
  GetTicketFromArray(argv, common.data(), JBATicketDataNumCommon);
  GetTicketFromArray(argv, admin.data(), JBATicketDataNumAdmin);
  return 1;
}

void JBAOutputZPJLCommandFromFilter(char* argv[], FILE* stream) {
  OutputZPJLCommandFromArray(argv, JBAFmtTableAdmin, JBAFmtTableAdminNum, stream);
  OutputZPJLCommandFromArray(argv, JBAFmtTableCommon, JBAFmtTableCommonNum, stream);
}
