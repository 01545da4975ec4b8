#include "modules/accounting/accounting.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "engine/command.h"
#include "frame/fixed_text.h"
#include "frame/job_state.h"
#include "header_modules_run.h"
#include "sealed_fields.h"

namespace {

using namespace modrun;

const char kPrefix[] = "com.korvanel.qd.jtz.printsettings.";

std::string Key(const std::string& suffix, const std::string& value) {
  return kPrefix + suffix + "=" + value + " ";
}

// The two line forms of the accounting attributes.
std::string CRLF(const std::string& attribute, const std::string& value) {
  return "@PJL SET JOBATTR=\"@" + attribute + "=" + value + "\"\r\n";
}
std::string LF(const std::string& attribute, const std::string& value) {
  return "@PJL SET JOBATTR=\"@" + attribute + "=" + value + "\"\n";
}

std::string Expand(const FormatEntry& row) {
  char line[kCommandBufferSize];
  BuildPrintComand(row.format, row.params, line, sizeof line);
  return line;
}

template <size_t N>
void Fill(char (&field)[N], const char* text) {
  CopyText(field, N, text);
}

// Each row's format and parameters, with every text set to a marker that
// names its field: the output column of both tables, row by row.
TEST(AccountingTables, EachRowExpandsToItsLine) {
  ResetJobState();
  JBAInializeDescriptionTableFromFilter();
  JBAOption& j = zpjlOptionJBA;
  Fill(HostNameStr, "HOST");
  Fill(StdUserName, "LOGIN");
  Fill(StdJBAUserName, "JBALOGIN");
  Fill(StdDocumentName, "DOC");
  Fill(StdNUpInfo, "N2");
  Fill(IPAddressStr, "10.0.0.9");
  Fill(j.ipAddress, "IPA");
  Fill(j.adminUserID, "AUID");
  Fill(j.adminUserPassword, "APW");
  Fill(j.adminDomainName, "ADOM");
  Fill(j.adminAccountID, "AACC");
  Fill(j.adminStorageID, "ASTO");
  Fill(j.adminStoragePassword, "ASPW");
  Fill(j.userID, "UID");
  Fill(j.userPassword, "UPW");
  Fill(j.domainName, "UDOM");
  Fill(j.accountID, "UACC");
  Fill(j.storageID, "USTO");
  Fill(j.storagePassword, "USPW");
  Fill(j.inputUserID, "IUID");
  Fill(j.inputUserPassword, "IUPW");
  Fill(j.inputDomainName, "IDOM");
  Fill(j.inputAccountID, "IACC");
  Fill(j.inputStorageID, "ISTO");
  Fill(j.inputStoragePassword, "ISPW");

  const std::vector<std::string> admin = {
      /*  0 */ CRLF("JOAU", "JBALOGIN"),
      /*  1 */ LF("JOAU", "UnknownUser"),
      /*  2 */ CRLF("JOAU", "JBALOGIN"),
      /*  3 */ CRLF("JOAU", "JBALOGIN"),
      /*  4 */ LF("JOAU", "UnknownUser"),
      /*  5 */ CRLF("JOAU", "AUID"),
      /*  6 */ CRLF("JOEP", "APW"),
      /*  7 */ CRLF("JOEP", ""),
      /*  8 */ CRLF("JOEP", "APW"),
      /*  9 */ CRLF("JOEP", ""),
      /* 10 */ CRLF("JOAD", "ADOM"),
      /* 11 */ CRLF("DAID", "AACC"),
      /* 12 */ CRLF("DAID", ""),
      /* 13 */ CRLF("ACID", "ASTO"),
      /* 14 */ CRLF("ACNA", "DOC"),
      /* 15 */ CRLF("ACEP", "ASPW"),
      /* 16 */ CRLF("ACEP", ""),
      /* 17 */ CRLF("JOAU", "IUID"),
      /* 18 */ CRLF("JOAU", "UnknownUser"),
      /* 19 */ CRLF("JOAU", "UnknownUser"),
      /* 20 */ CRLF("JOEP", "IUPW"),
      /* 21 */ CRLF("JOEP", ""),
      /* 22 */ CRLF("JOEP", ""),
      /* 23 */ CRLF("JOEP", ""),
      /* 24 */ CRLF("JOAD", "IDOM"),
      /* 25 */ CRLF("DAID", "IACC"),
      /* 26 */ CRLF("DAID", ""),
      /* 27 */ CRLF("DAID", ""),
      /* 28 */ CRLF("DAID", ""),
      /* 29 */ CRLF("ACID", "ISTO"),
      /* 30 */ CRLF("ACNA", "DOC"),
      /* 31 */ LF("JOAU", "UnknownUser"),
      /* 32 */ LF("JOEP", ""),
      /* 33 */ CRLF("ACEP", "ISPW"),
      /* 34 */ CRLF("ACEP", ""),
  };
  const std::vector<std::string> common = {
      /*  0 */ LF("CNAM", "HOST"),
      /*  1 */ LF("CNAM", "UnknownHost"),
      /*  2 */ LF("LUNA", "LOGIN"),
      /*  3 */ LF("LUNA", "UnknownUser"),
      /*  4 */ LF("HOAD", "IPA"),
      /*  5 */ LF("HOAD", "10.0.0.9"),
      /*  6 */ LF("NLPP", "N2"),
      /*  7 */ CRLF("JOAU", "JBALOGIN"),
      /*  8 */ LF("JOAU", "UnknownUser"),
      /*  9 */ CRLF("JOAU", "JBALOGIN"),
      /* 10 */ CRLF("JOAU", "JBALOGIN"),
      /* 11 */ LF("JOAU", "UnknownUser"),
      /* 12 */ CRLF("JOAU", "JBALOGIN"),
      /* 13 */ CRLF("JOAU", "UID"),
      /* 14 */ CRLF("JOEP", "UPW"),
      /* 15 */ CRLF("JOEP", ""),
      /* 16 */ CRLF("JOEP", "UPW"),
      /* 17 */ CRLF("JOEP", ""),
      /* 18 */ CRLF("JOAD", "UDOM"),
      /* 19 */ CRLF("DAID", "UACC"),
      /* 20 */ CRLF("DAID", ""),
      /* 21 */ CRLF("ACID", "USTO"),
      /* 22 */ CRLF("ACEP", "USPW"),
      /* 23 */ CRLF("ACEP", ""),
      /* 24 */ CRLF("JOAU", "IUID"),
      /* 25 */ CRLF("JOAU", "UnknownUser"),
      /* 26 */ CRLF("JOAU", "UnknownUser"),
      /* 27 */ CRLF("JOEP", "IUPW"),
      /* 28 */ CRLF("JOEP", ""),
      /* 29 */ CRLF("JOEP", ""),
      /* 30 */ CRLF("JOEP", ""),
      /* 31 */ CRLF("JOAD", "IDOM"),
      /* 32 */ CRLF("DAID", "IACC"),
      /* 33 */ CRLF("DAID", ""),
      /* 34 */ CRLF("DAID", ""),
      /* 35 */ CRLF("DAID", ""),
      /* 36 */ CRLF("ACID", "ISTO"),
      /* 37 */ CRLF("ACNA", "DOC"),
      /* 38 */ LF("JOAU", "UnknownUser"),
      /* 39 */ LF("JOEP", ""),
      /* 40 */ CRLF("ACEP", "ISPW"),
      /* 41 */ CRLF("ACEP", ""),
  };
  ASSERT_EQ(static_cast<int32_t>(admin.size()), JBAFmtTableAdminNum);
  ASSERT_EQ(static_cast<int32_t>(common.size()), JBAFmtTableCommonNum);
  for (int32_t i = 0; i < JBAFmtTableAdminNum; ++i) {
    EXPECT_EQ(Expand(JBAFmtTableAdmin[i]), admin[i]) << "administrator row " << i;
  }
  for (int32_t i = 0; i < JBAFmtTableCommonNum; ++i) {
    EXPECT_EQ(Expand(JBAFmtTableCommon[i]), common[i]) << "common row " << i;
  }
  ResetJobState();
}

// ---- Which rows hold -----------------------------------------------------

enum class Side { Admin, User };

// A setting of the administrator or user set: the user key is "JBA" +
// suffix, the administrator key "JBAAdmin" + suffix.
struct SetValue {
  const char* suffix;
  const char* value;
};

std::string SetKey(Side side, const std::string& suffix) {
  return (side == Side::Admin ? "JBAAdmin" : "JBA") + suffix;
}

// The common row that mirrors each administrator row for the user set
// (-1: no mirror; the document name goes out by a common row of its own).
const int kUserRowOf[JBAFmtTableAdminNum] = {
    7,  8,  9,  10, 11, 13, 14, 15, 16, 17, 18, 19, 20, 21, -1, 22, 23, 24,
    25, 26, 27, 28, 29, 30, 31, 32, 33, 34, 35, 36, 37, 38, 39, 40, 41,
};

// One accounting situation in either set. `rows` are administrator row
// numbers; for the user set they become their common mirrors.
struct SetCase {
  const char* name;
  bool entryTime;  // the input radio button instead of the setting one
  std::vector<SetValue> own;
  std::string shared;  // keys both sets read
  std::vector<int> rows;
};

std::vector<SetCase> SetCases() {
  const auto K = Key;
  return {
      {"login user, no list", false,
       {{"UserIDListCtrlTicket", "1"}, {"UserPasswordTextEditTicket", "pw"}},
       K("JBAInfoListTicketKey", "0"), {0, 6, 12, 14}},
      {"login user, user account list", false, {{"UserIDListCtrlTicket", "1"}},
       K("JBAInfoListTicketKey", "1") + K("JBAInfoSetListTicketKey", "0"), {2, 7, 12, 14}},
      {"login user, billing list", false, {{"UserIDListCtrlTicket", "1"}},
       K("JBAInfoListTicketKey", "2") + K("JBAInfoSetListTicketKey", "0"), {1, 7, 12, 14}},
      {"login user, all lists", false, {{"UserIDListCtrlTicket", "1"}},
       K("JBAInfoListTicketKey", "3") + K("JBAInfoSetListTicketKey", "0"), {3, 7, 12, 14}},
      {"login user hidden by info set 8", false, {{"UserIDListCtrlTicket", "1"}},
       K("JBAInfoListTicketKey", "1") + K("JBAInfoSetListTicketKey", "8"), {4, 7, 12, 14}},
      {"entered ID with password, domain, account, storage", false,
       {{"UserIDListCtrlTicket", "2"},
        {"UserIDTextEditTicket", "u123"},
        {"UserPasswordTextEditTicket", "pw"},
        {"DomainNameTextEditTicket", "dom"},
        {"AccountIDTextEditTicket", "acc"},
        {"StorageIDTextEditTicket", "sto"},
        {"StoragePasswordTextEditTicket", "spw"}},
       "", {5, 8, 10, 11, 13, 14, 15}},
      {"entered ID and storage without passwords", false,
       {{"UserIDListCtrlTicket", "2"},
        {"UserIDTextEditTicket", "u123"},
        {"StorageIDTextEditTicket", "sto"}},
       "", {5, 9, 12, 13, 14, 16}},
      {"entry time: user, password, domain, account", true, {},
       K("JBAInputAuthRadioBtnTicketKey", "1") + K("JBAInputUserIDTextEditTicket", "iu") +
           K("JBAInputUserPasswordTextEditTicket", "ipw") +
           K("JBAInputDomainNameTextEditTicket", "idom") +
           K("JBAInputAccountIDTextEditTicket", "iacc") + K("JBAInfoSetListTicketKey", "0"),
       {17, 20, 24, 25, 30}},
      {"entry time: identity hidden by info set 8", true, {},
       K("JBAInputAuthRadioBtnTicketKey", "1") + K("JBAInputUserIDTextEditTicket", "iu") +
           K("JBAInputAccountIDTextEditTicket", "iacc") + K("JBAInfoSetListTicketKey", "8"),
       {18, 21, 26, 30}},
      {"entry time: nothing entered", true, {},
       K("JBAInputAuthRadioBtnTicketKey", "1") + K("JBAInfoSetListTicketKey", "0"),
       {19, 23, 27, 30}},
      {"entry time: user without password", true, {},
       K("JBAInputAuthRadioBtnTicketKey", "1") + K("JBAInputUserIDTextEditTicket", "iu") +
           K("JBAInfoSetListTicketKey", "0"),
       {17, 22, 27, 30}},
      {"entry time: storage with password", true, {},
       K("JBAInputStrgRadioBtnTicketKey", "1") + K("JBAInfoListTicketKey", "1") +
           K("JBAInputStorageIDTextEditTicket", "ist") +
           K("JBAInputStoragePasswordTextEditTicket", "isp"),
       {28, 29, 30, 31, 32, 33}},
      {"entry time: storage without password, no list", true, {},
       K("JBAInputStrgRadioBtnTicketKey", "1") + K("JBAInfoListTicketKey", "0") +
           K("JBAInputStorageIDTextEditTicket", "ist"),
       {29, 30, 31, 32, 34}},
  };
}

HeaderJob SetJob(const SetCase& c, Side side) {
  HeaderJob job;
  job.ppd = "modules-utf8.ppd";
  job.ticket = Key("JBAManageTypeListTicketKey", side == Side::Admin ? "1" : "2") +
               Key(SetKey(side, c.entryTime ? "UserInputRadioBtnTicket"
                                            : "UserSettingRadioBtnTicket"),
                   "1") +
               c.shared;
  for (const SetValue& v : c.own) job.ticket += Key(SetKey(side, v.suffix), v.value);
  return job;
}

// Rows of the common table that hold in every case below: host, login
// user, N-up and document name.
const std::vector<int> kClientRows = {0, 2, 6, 37};

std::vector<int> Sorted(std::vector<int> rows) {
  std::sort(rows.begin(), rows.end());
  return rows;
}

TEST(AccountingTables, SetRowsHoldExactlyForTheirSettings) {
  std::vector<bool> seenAdmin(JBAFmtTableAdminNum), seenCommon(JBAFmtTableCommonNum);
  for (const SetCase& c : SetCases()) {
    for (Side side : {Side::Admin, Side::User}) {
      const char* sideName = side == Side::Admin ? "administrator: " : "user: ";
      PrepareHeaderModules(SetJob(c, side));
      std::vector<int> admin, common = kClientRows;
      bool userIDKeySent = false;
      for (const SetValue& v : c.own) {
        userIDKeySent |= side == Side::User && std::string(v.suffix) == "UserIDTextEditTicket";
      }
      if (!userIDKeySent) common.push_back(12);
      for (int row : c.rows) {
        if (side == Side::Admin) {
          admin.push_back(row);
        } else if (kUserRowOf[row] >= 0) {
          common.push_back(kUserRowOf[row]);
        }
      }
      common = Sorted(common);
      common.erase(std::unique(common.begin(), common.end()), common.end());
      EXPECT_EQ(FiringRows(JBAFmtTableAdmin, JBAFmtTableAdminNum), admin) << sideName << c.name;
      EXPECT_EQ(FiringRows(JBAFmtTableCommon, JBAFmtTableCommonNum), common)
          << sideName << c.name;
      for (int row : admin) seenAdmin[row] = true;
      for (int row : common) seenCommon[row] = true;
    }
  }
  // The client rows that need a particular job identity.
  struct ClientCase {
    const char* name;
    HeaderJob job;
    std::vector<int> common;
  };
  HeaderJob empty;
  empty.hostName = empty.userName = empty.jbaUserName = empty.documentName = "";
  HeaderJob ticketAddress;
  ticketAddress.ticket = Key("JBAIPAddressStringTicket", "192.0.2.7");
  HeaderJob identityAddress;
  identityAddress.ipAddress = "192.0.2.8";
  const ClientCase clientCases[] = {
      {"no accounting keys", HeaderJob(), {0, 2, 6, 12, 37}},
      {"no host, user or document name", empty, {1, 3, 6, 12}},
      {"address from the ticket", ticketAddress, {0, 2, 4, 6, 12, 37}},
      {"address from the identity buffer", identityAddress, {0, 2, 5, 6, 12, 37}},
  };
  for (const ClientCase& c : clientCases) {
    PrepareHeaderModules(c.job);
    EXPECT_EQ(FiringRows(JBAFmtTableAdmin, JBAFmtTableAdminNum), std::vector<int>()) << c.name;
    EXPECT_EQ(FiringRows(JBAFmtTableCommon, JBAFmtTableCommonNum), c.common) << c.name;
    for (int row : c.common) seenCommon[row] = true;
  }
  // Together the cases reach every row of both tables.
  for (int i = 0; i < JBAFmtTableAdminNum; ++i) EXPECT_TRUE(seenAdmin[i]) << "admin row " << i;
  for (int i = 0; i < JBAFmtTableCommonNum; ++i) EXPECT_TRUE(seenCommon[i]) << "common row " << i;
}

// ---- Lines written ---------------------------------------------------------

struct OutputCase {
  const char* name;
  HeaderJob job;
  std::string expected;
};

HeaderJob Job(const std::string& ticket, const char* ppd = "modules-utf8.ppd") {
  HeaderJob job;
  job.ppd = ppd;
  job.ticket = ticket;
  return job;
}

TEST(AccountingOutput, WritesTheLinesInTableOrder) {
  const std::string client = LF("CNAM", "mac1") + LF("LUNA", "bob") + LF("NLPP", "1");
  const std::string userLogin = Key("JBAManageTypeListTicketKey", "2") +
                                Key("JBAUserSettingRadioBtnTicket", "1") +
                                Key("JBAUserIDListCtrlTicket", "1");
  HeaderJob noHost = Job("");
  noHost.hostName = "";
  HeaderJob noDocument = Job("");
  noDocument.documentName = "";
  // A legacy printer leaves the accounting name as the raw argument, which
  // may be empty: the owner line then stops after its opening quote.
  HeaderJob noAccountingName = Job("", "modules-legacy-default04.ppd");
  noAccountingName.jbaUserName = "";
  HeaderJob longName = Job("");
  longName.userName = std::string(200, 'L');
  longName.jbaUserName = std::string(96, 'J');
  const std::vector<OutputCase> cases = {
      {"no accounting keys", Job(""),
       client + CRLF("JOAU", "bob") + CRLF("ACNA", "report")},
      {"empty host name", noHost,
       LF("CNAM", "UnknownHost") + LF("LUNA", "bob") + LF("NLPP", "1") + CRLF("JOAU", "bob") +
           CRLF("ACNA", "report")},
      {"no document name", noDocument, client + CRLF("JOAU", "bob")},
      {"no accounting name", noAccountingName,
       client + "@PJL SET JOBATTR=\"" + CRLF("ACNA", "report")},
      {"login user names of 200 and 96 bytes", longName,
       LF("CNAM", "mac1") + LF("LUNA", std::string(200, 'L')) + LF("NLPP", "1") +
           CRLF("JOAU", std::string(96, 'J')) + CRLF("ACNA", "report")},
      {"number-up", Job(std::string("number-up=4")),
       LF("CNAM", "mac1") + LF("LUNA", "bob") + LF("NLPP", "N4") + CRLF("JOAU", "bob") +
           CRLF("ACNA", "report")},
      {"user set, login user, no list, user ID key sent empty",
       Job(userLogin + Key("JBAInfoListTicketKey", "0") + Key("JBAUserIDTextEditTicket", "''")),
       client + CRLF("JOAU", "bob") + CRLF("JOEP", "") + CRLF("DAID", "") +
           CRLF("ACNA", "report")},
      // Without the user ID key the login user goes out twice.
      {"user set, login user, no user ID key", Job(userLogin + Key("JBAInfoListTicketKey", "0")),
       client + CRLF("JOAU", "bob") + CRLF("JOAU", "bob") + CRLF("JOEP", "") +
           CRLF("DAID", "") + CRLF("ACNA", "report")},
      {"user set, identity hidden by info set 8",
       Job(userLogin + Key("JBAInfoListTicketKey", "3") + Key("JBAInfoSetListTicketKey", "8") +
           Key("JBAUserIDTextEditTicket", "''")),
       client + LF("JOAU", "UnknownUser") + CRLF("JOEP", "") + CRLF("DAID", "") +
           CRLF("ACNA", "report")},
      {"user set, billing list",
       Job(userLogin + Key("JBAInfoListTicketKey", "2") + Key("JBAInfoSetListTicketKey", "0") +
           Key("JBAUserIDTextEditTicket", "''") + Key("JBAAccountIDTextEditTicket", "B-7")),
       client + LF("JOAU", "UnknownUser") + CRLF("JOEP", "") + CRLF("DAID", "B-7") +
           CRLF("ACNA", "report")},
      // The administrator table comes first, so its lines lead.
      {"administrator set, entered ID, domain and account",
       Job(Key("JBAManageTypeListTicketKey", "1") + Key("JBAAdminUserSettingRadioBtnTicket", "1") +
           Key("JBAAdminUserIDListCtrlTicket", "2") + Key("JBAAdminUserIDTextEditTicket", "chief") +
           Key("JBAAdminDomainNameTextEditTicket", "corp") +
           Key("JBAAdminAccountIDTextEditTicket", "A-1") +
           Key("JBAAdminStorageIDTextEditTicket", "box9")),
       CRLF("JOAU", "chief") + CRLF("JOEP", "") + CRLF("JOAD", "corp") + CRLF("DAID", "A-1") +
           CRLF("ACID", "box9") + CRLF("ACNA", "report") + CRLF("ACEP", "") + client +
           CRLF("JOAU", "bob") + CRLF("ACNA", "report")},
      {"user set ignored while the administrator set applies",
       Job(Key("JBAManageTypeListTicketKey", "1") + Key("JBAUserSettingRadioBtnTicket", "1") +
           Key("JBAUserIDListCtrlTicket", "2") + Key("JBAUserIDTextEditTicket", "u1")),
       client + CRLF("ACNA", "report")},
      {"user entry time, identity hidden by info set 8",
       Job(Key("JBAManageTypeListTicketKey", "2") + Key("JBAUserInputRadioBtnTicket", "1") +
           Key("JBAInputAuthRadioBtnTicketKey", "1") + Key("JBAInfoSetListTicketKey", "8") +
           Key("JBAInputUserIDTextEditTicket", "typed") +
           Key("JBAInputDomainNameTextEditTicket", "corp")),
       client + CRLF("JOAU", "bob") + CRLF("JOAU", "UnknownUser") + CRLF("JOEP", "") +
           CRLF("JOAD", "corp") + CRLF("DAID", "") + CRLF("ACNA", "report")},
      {"administrator entry time, storage",
       Job(Key("JBAManageTypeListTicketKey", "1") + Key("JBAAdminUserInputRadioBtnTicket", "1") +
           Key("JBAInputStrgRadioBtnTicketKey", "1") + Key("JBAInfoListTicketKey", "1") +
           Key("JBAInputStorageIDTextEditTicket", "77")),
       CRLF("DAID", "") + CRLF("ACID", "77") + CRLF("ACNA", "report") +
           LF("JOAU", "UnknownUser") + LF("JOEP", "") + CRLF("ACEP", "") + client +
           CRLF("JOAU", "bob") + CRLF("ACNA", "report")},
  };
  for (const OutputCase& c : cases) {
    std::string out = RunAccounting(c.job);
    EXPECT_EQ(out, c.expected) << c.name << "\n" << ShowControlBytes(out);
  }
}

// Passwords go to the printer sealed; the test key opens them.
TEST(AccountingOutput, SendsThePasswordsSealed) {
  const std::string owner = StoredPasswordText("pw-owner");
  const std::string storage = StoredPasswordText("pw-storage");
  ASSERT_FALSE(owner.empty());
  ASSERT_FALSE(storage.empty());
  const std::string client = LF("CNAM", "mac1") + LF("LUNA", "bob") + LF("NLPP", "1");
  const std::string userSet = Key("JBAManageTypeListTicketKey", "2") +
                              Key("JBAUserSettingRadioBtnTicket", "1");
  const std::vector<OutputCase> cases = {
      {"user set, login user with password",
       Job(userSet + Key("JBAUserIDListCtrlTicket", "1") + Key("JBAInfoListTicketKey", "0") +
           Key("JBAUserIDTextEditTicket", "''") + Key("JBAUserPasswordTextEditTicket", owner)),
       client + CRLF("JOAU", "bob") + CRLF("JOEP", "<sealed:pw-owner>") + CRLF("DAID", "") +
           CRLF("ACNA", "report")},
      {"user set, entered user ID, password and storage",
       Job(userSet + Key("JBAUserIDListCtrlTicket", "2") + Key("JBAUserIDTextEditTicket", "u123") +
           Key("JBAUserPasswordTextEditTicket", owner) + Key("JBAStorageIDTextEditTicket", "s9") +
           Key("JBAStoragePasswordTextEditTicket", storage)),
       client + CRLF("JOAU", "u123") + CRLF("JOEP", "<sealed:pw-owner>") + CRLF("DAID", "") +
           CRLF("ACID", "s9") + CRLF("ACEP", "<sealed:pw-storage>") + CRLF("ACNA", "report")},
      {"administrator set, login user with password and storage",
       Job(Key("JBAManageTypeListTicketKey", "1") + Key("JBAAdminUserSettingRadioBtnTicket", "1") +
           Key("JBAAdminUserIDListCtrlTicket", "1") + Key("JBAInfoListTicketKey", "0") +
           Key("JBAAdminUserPasswordTextEditTicket", owner) +
           Key("JBAAdminAccountIDTextEditTicket", "A-2") +
           Key("JBAAdminStorageIDTextEditTicket", "s8") +
           Key("JBAAdminStoragePasswordTextEditTicket", storage)),
       CRLF("JOAU", "bob") + CRLF("JOEP", "<sealed:pw-owner>") + CRLF("DAID", "A-2") +
           CRLF("ACID", "s8") + CRLF("ACNA", "report") + CRLF("ACEP", "<sealed:pw-storage>") +
           client + CRLF("JOAU", "bob") + CRLF("ACNA", "report")},
      {"user entry time, user and storage with passwords",
       Job(Key("JBAManageTypeListTicketKey", "2") + Key("JBAUserInputRadioBtnTicket", "1") +
           Key("JBAInputAuthRadioBtnTicketKey", "1") + Key("JBAInfoSetListTicketKey", "0") +
           Key("JBAInputUserIDTextEditTicket", "typed") +
           Key("JBAInputUserPasswordTextEditTicket", owner) +
           Key("JBAInputAccountIDTextEditTicket", "acc") +
           Key("JBAInputStrgRadioBtnTicketKey", "1") + Key("JBAInfoListTicketKey", "1") +
           Key("JBAInputStorageIDTextEditTicket", "s7") +
           Key("JBAInputStoragePasswordTextEditTicket", storage)),
       client + CRLF("JOAU", "bob") + CRLF("JOAU", "typed") +
           CRLF("JOEP", "<sealed:pw-owner>") + CRLF("DAID", "acc") + CRLF("DAID", "") +
           CRLF("ACID", "s7") + CRLF("ACNA", "report") + LF("JOAU", "UnknownUser") +
           LF("JOEP", "") + CRLF("ACEP", "<sealed:pw-storage>")},
  };
  for (const OutputCase& c : cases) {
    std::string out = RunAccounting(c.job);
    EXPECT_EQ(WithOpenedFields(out), c.expected) << c.name << "\n" << ShowControlBytes(out);
  }
}

// ---- Ticket reading --------------------------------------------------------

// Every text destination keeps at most its size - 1 bytes of the ticket value.
TEST(AccountingTicket, CutsEachTextToItsSize) {
  JBAOption& j = zpjlOptionJBA;
  struct Field {
    const char* key;
    const char* text;
    size_t size;
  };
  const Field fields[] = {
      {"JBAMacHostNameStringTicket", j.hostName, 33},
      {"JBAIPAddressStringTicket", j.ipAddress, 46},
      {"JBAUserIDTextEditTicket", j.userID, 97},
      {"JBADomainNameTextEditTicket", j.domainName, 65},
      {"JBAAccountIDTextEditTicket", j.accountID, 33},
      {"JBAStorageIDTextEditTicket", j.storageID, 73},
      {"JBAAdminUserIDTextEditTicket", j.adminUserID, 97},
      {"JBAAdminDomainNameTextEditTicket", j.adminDomainName, 65},
      {"JBAAdminAccountIDTextEditTicket", j.adminAccountID, 33},
      {"JBAAdminStorageIDTextEditTicket", j.adminStorageID, 73},
      {"JBAInputStorageIDTextEditTicket", j.inputStorageID, 73},
      {"JBAInputUserIDTextEditTicket", j.inputUserID, 97},
      {"JBAInputDomainNameTextEditTicket", j.inputDomainName, 65},
      {"JBAInputAccountIDTextEditTicket", j.inputAccountID, 33},
  };
  // Each field gets its own letter, so a row bound to the wrong field shows.
  std::string ticket;
  char letter = 'a';
  for (const Field& f : fields) ticket += Key(f.key, std::string(300, letter++));
  const std::string layoutValue(300, '7');
  for (const char* key : {"com.apple.print.PrintSettings.PMLayoutDirection..n.",
                          "com.apple.print.PrintSettings.PMLayoutRows..n.",
                          "com.apple.print.PrintSettings.PMLayoutColumns..n."}) {
    ticket += std::string(key) + "=" + layoutValue + " ";
  }
  for (const char* base :
       {"com.apple.print.subTicket.page_format_ticket..d.com.apple.print.subTicket."
        "paper_info_ticket..d.com.apple.print.PaperInfo.PMUnadjustedPaperRect",
        "com.apple.print.subTicket.paper_info_ticket..d.com.apple.print.PaperInfo."
        "PMUnadjustedPaperRect"}) {
    for (const char* element : {"..a.0..n.", "..a.1..n.", "..a.2..n.", "..a.3..n."}) {
      ticket += std::string(base) + element + "=" + element[4] + layoutValue + " ";
    }
  }
  ticket += "number-up=" + std::string(300, '9');
  for (const char* ppd : {"modules-utf8.ppd", "modules-legacy-default04.ppd"}) {
    PrepareHeaderModules(Job(ticket, ppd));
    letter = 'a';
    for (const Field& f : fields) {
      EXPECT_EQ(std::string(f.text), std::string(f.size - 1, letter++)) << f.key << " " << ppd;
    }
    EXPECT_EQ(std::string(StdNUpInfo), "N" + std::string(8, '9')) << ppd;
    EXPECT_EQ(std::string(StdLayoutInfo), std::string(9, '9')) << ppd;
    for (const char* buffer : {StdLayoutDirectionInfo, StdLayoutRowInfo, StdLayoutColumnInfo}) {
      EXPECT_EQ(std::string(buffer), std::string(9, '7')) << ppd;
    }
    // Element n of the rectangle: origin X is 1, origin Y 0, height 2, width 3.
    const std::pair<const char*, char> rects[] = {
        {StdPaperInfoRectOriginXKey, '1'},      {StdPaperInfoRectOriginYKey, '0'},
        {StdPaperInfoRectHeightKey, '2'},       {StdPaperInfoRectWidthKey, '3'},
        {StdAdobePaperInfoRectOriginXKey, '1'}, {StdAdobePaperInfoRectOriginYKey, '0'},
        {StdAdobePaperInfoRectHeightKey, '2'},  {StdAdobePaperInfoRectWidthKey, '3'},
    };
    for (const auto& [buffer, element] : rects) {
      EXPECT_EQ(std::string(buffer), element + std::string(18, '7')) << ppd;
    }
  }
}

// Integer settings read as numbers, -1 when absent; the user-ID flag is set
// only when the key is missing.
TEST(AccountingTicket, ReadsEachSettingIntoItsField) {
  JBAOption& j = zpjlOptionJBA;
  const std::pair<const char*, const int32_t*> settings[] = {
      {"JBAInfoListTicketKey", &j.infoList},
      {"JBAInfoSetListTicketKey", &j.infoSetList},
      {"JBAManageTypeListTicketKey", &j.manageType},
      {"JBAUserSettingRadioBtnTicket", &j.userSetting},
      {"JBAUserIDListCtrlTicket", &j.userIDType},
      {"JBAUserInputRadioBtnTicket", &j.userInput},
      {"JBAAdminUserSettingRadioBtnTicket", &j.adminUserSetting},
      {"JBAAdminUserIDListCtrlTicket", &j.adminUserIDType},
      {"JBAAdminUserInputRadioBtnTicket", &j.adminUserInput},
      {"JBAInputAuthRadioBtnTicketKey", &j.inputAuth},
      {"JBAInputStrgRadioBtnTicketKey", &j.inputStorage},
  };
  std::string ticket;
  int32_t value = 11;
  for (const auto& [key, field] : settings) ticket += Key(key, std::to_string(value++));
  PrepareHeaderModules(Job(ticket + Key("JBAUserIDTextEditTicket", "''")));
  value = 11;
  for (const auto& [key, field] : settings) EXPECT_EQ(*field, value++) << key;
  EXPECT_EQ(j.userIDAbsent, 0);

  PrepareHeaderModules(Job(""));
  for (const auto& [key, field] : settings) EXPECT_EQ(*field, -1) << key;
  EXPECT_EQ(j.userIDAbsent, JBAUserNameNotExist);
}

// A UTF-8 printer gets the user and storage IDs in UTF-8; every other text,
// and every text on a legacy printer, arrives in the Shift-JIS form.
TEST(AccountingTicket, ReadsIdentifiersInUTF8OnUTF8Printers) {
  const std::string kana = "\xE3\x82\xA2";  // KATAKANA LETTER A
  const std::string sjis = "\x83\x41";
  JBAOption& j = zpjlOptionJBA;
  struct Field {
    const char* key;
    const char* text;
    bool utf8OnUTF8Printer;
  };
  const Field fields[] = {
      {"JBAUserIDTextEditTicket", j.userID, true},
      {"JBAStorageIDTextEditTicket", j.storageID, true},
      {"JBAInputStorageIDTextEditTicket", j.inputStorageID, true},
      {"JBAInputUserIDTextEditTicket", j.inputUserID, true},
      {"JBAAdminUserIDTextEditTicket", j.adminUserID, true},
      {"JBAAdminStorageIDTextEditTicket", j.adminStorageID, true},
      {"JBAMacHostNameStringTicket", j.hostName, false},
      {"JBAIPAddressStringTicket", j.ipAddress, false},
      {"JBADomainNameTextEditTicket", j.domainName, false},
      {"JBAAccountIDTextEditTicket", j.accountID, false},
      {"JBAAdminDomainNameTextEditTicket", j.adminDomainName, false},
      {"JBAAdminAccountIDTextEditTicket", j.adminAccountID, false},
      {"JBAInputDomainNameTextEditTicket", j.inputDomainName, false},
      {"JBAInputAccountIDTextEditTicket", j.inputAccountID, false},
  };
  std::string ticket;
  for (const Field& f : fields) ticket += Key(f.key, kana);
  PrepareHeaderModules(Job(ticket, "modules-utf8.ppd"));
  for (const Field& f : fields) {
    EXPECT_EQ(std::string(f.text), f.utf8OnUTF8Printer ? kana : sjis) << f.key;
  }
  PrepareHeaderModules(Job(ticket, "modules-legacy-default04.ppd"));
  for (const Field& f : fields) EXPECT_EQ(std::string(f.text), sjis) << f.key << " legacy";
}

}  // namespace
