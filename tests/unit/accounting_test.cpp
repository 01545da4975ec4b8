#include "modules/accounting/accounting.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "engine/command.h"
#include "header_modules_run.h"
#include "sealed_blob.h"

namespace {

// The two line ends of the accounting attributes.
std::string R(const std::string& attribute, const std::string& value) {
  return AttrCRLF(attribute + "=" + value);
}
std::string N(const std::string& attribute, const std::string& value) {
  return Attr(attribute + "=" + value);
}

std::string Expand(const FormatEntry& row) {
  char line[kCommandBufferSize];
  BuildPrintComand(row.format, row.params, line, sizeof line);
  return line;
}

// Each row's format and parameters, with every text set to a marker naming
// its field: the output column of both tables, row by row. R ends in CR LF,
// N in LF alone.
TEST(AccountingTables, EachRowExpandsToItsLine) {
  ResetJobState();
  JBAInializeDescriptionTableFromFilter();
  JBAOption& j = zpjlOptionJBA;
  // clang-format off
  const std::pair<char*, const char*> markers[] = {
      {HostNameStr, "HOST"}, {StdUserName, "LOGIN"}, {StdJBAUserName, "JBALOGIN"},
      {StdDocumentName, "DOC"}, {StdNUpInfo, "N2"}, {IPAddressStr, "10.0.0.9"},
      {j.ipAddress, "IPA"}, {j.adminUserID, "AUID"}, {j.adminUserPassword, "APW"},
      {j.adminDomainName, "ADOM"}, {j.adminAccountID, "AACC"}, {j.adminStorageID, "ASTO"},
      {j.adminStoragePassword, "ASPW"}, {j.userID, "UID"}, {j.userPassword, "UPW"},
      {j.domainName, "UDOM"}, {j.accountID, "UACC"}, {j.storageID, "USTO"},
      {j.storagePassword, "USPW"}, {j.inputUserID, "IUID"}, {j.inputUserPassword, "IUPW"},
      {j.inputDomainName, "IDOM"}, {j.inputAccountID, "IACC"}, {j.inputStorageID, "ISTO"},
      {j.inputStoragePassword, "ISPW"},
  };
  for (const auto& [field, text] : markers) CopyText(field, 32, text);

  const std::string unknown = "UnknownUser";
  const std::vector<std::string> admin = {
      /*  0 */ R("JOAU", "JBALOGIN"), N("JOAU", unknown), R("JOAU", "JBALOGIN"),
      /*  3 */ R("JOAU", "JBALOGIN"), N("JOAU", unknown), R("JOAU", "AUID"),
      /*  6 */ R("JOEP", "APW"), R("JOEP", ""), R("JOEP", "APW"), R("JOEP", ""),
      /* 10 */ R("JOAD", "ADOM"), R("DAID", "AACC"), R("DAID", ""), R("ACID", "ASTO"),
      /* 14 */ R("ACNA", "DOC"), R("ACEP", "ASPW"), R("ACEP", ""),
      /* 17 */ R("JOAU", "IUID"), R("JOAU", unknown), R("JOAU", unknown),
      /* 20 */ R("JOEP", "IUPW"), R("JOEP", ""), R("JOEP", ""), R("JOEP", ""),
      /* 24 */ R("JOAD", "IDOM"), R("DAID", "IACC"), R("DAID", ""), R("DAID", ""), R("DAID", ""),
      /* 29 */ R("ACID", "ISTO"), R("ACNA", "DOC"), N("JOAU", unknown), N("JOEP", ""),
      /* 33 */ R("ACEP", "ISPW"), R("ACEP", ""),
  };
  const std::vector<std::string> common = {
      /*  0 */ N("CNAM", "HOST"), N("CNAM", "UnknownHost"), N("LUNA", "LOGIN"),
      /*  3 */ N("LUNA", unknown), N("HOAD", "IPA"), N("HOAD", "10.0.0.9"), N("NLPP", "N2"),
      /*  7 */ R("JOAU", "JBALOGIN"), N("JOAU", unknown), R("JOAU", "JBALOGIN"),
      /* 10 */ R("JOAU", "JBALOGIN"), N("JOAU", unknown), R("JOAU", "JBALOGIN"),
      /* 13 */ R("JOAU", "UID"), R("JOEP", "UPW"), R("JOEP", ""), R("JOEP", "UPW"),
      /* 17 */ R("JOEP", ""), R("JOAD", "UDOM"), R("DAID", "UACC"), R("DAID", ""),
      /* 21 */ R("ACID", "USTO"), R("ACEP", "USPW"), R("ACEP", ""),
      /* 24 */ R("JOAU", "IUID"), R("JOAU", unknown), R("JOAU", unknown),
      /* 27 */ R("JOEP", "IUPW"), R("JOEP", ""), R("JOEP", ""), R("JOEP", ""),
      /* 31 */ R("JOAD", "IDOM"), R("DAID", "IACC"), R("DAID", ""), R("DAID", ""), R("DAID", ""),
      /* 36 */ R("ACID", "ISTO"), R("ACNA", "DOC"), N("JOAU", unknown), N("JOEP", ""),
      /* 40 */ R("ACEP", "ISPW"), R("ACEP", ""),
  };
  // clang-format on
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

// A setting of one set: the user key is "JBA" + suffix, the administrator
// key "JBAAdmin" + suffix.
struct SetValue {
  const char* suffix;
  const char* value;
};

// The common row mirroring each administrator row for the user set; the
// administrator document-name row has none.
// clang-format off
const int kUserRowOf[JBAFmtTableAdminNum] = {
    7,  8,  9,  10, 11, 13, 14, 15, 16, 17, 18, 19, 20, 21, -1, 22, 23, 24,
    25, 26, 27, 28, 29, 30, 31, 32, 33, 34, 35, 36, 37, 38, 39, 40, 41,
};
// clang-format on

// One situation, run in either set. `rows` are administrator row numbers;
// for the user set they become their common mirrors.
struct SetCase {
  const char* name;
  bool entryTime;  // the input radio button instead of the setting one
  std::vector<SetValue> own;
  std::string shared;  // keys both sets read
  std::vector<int> rows;
};

TEST(AccountingTables, RowsHoldExactlyForTheirSettings) {
  const auto K = Key;
  const std::string list = "JBAInfoListTicketKey", set8 = "JBAInfoSetListTicketKey",
                    auth = "JBAInputAuthRadioBtnTicketKey";
  // clang-format off
  const std::vector<SetCase> cases = {
      {"login user, no list", false, {{"UserIDListCtrlTicket", "1"},
       {"UserPasswordTextEditTicket", "pw"}}, K(list, "0"), {0, 6, 12, 14}},
      {"login user, user account list", false, {{"UserIDListCtrlTicket", "1"}},
       K(list, "1") + K(set8, "0"), {2, 7, 12, 14}},
      {"login user, billing list", false, {{"UserIDListCtrlTicket", "1"}},
       K(list, "2") + K(set8, "0"), {1, 7, 12, 14}},
      {"login user, all lists", false, {{"UserIDListCtrlTicket", "1"}},
       K(list, "3") + K(set8, "0"), {3, 7, 12, 14}},
      {"login user hidden by info set 8", false, {{"UserIDListCtrlTicket", "1"}},
       K(list, "1") + K(set8, "8"), {4, 7, 12, 14}},
      {"entered ID, password, domain, account, storage", false,
       {{"UserIDListCtrlTicket", "2"}, {"UserIDTextEditTicket", "u123"},
        {"UserPasswordTextEditTicket", "pw"}, {"DomainNameTextEditTicket", "dom"},
        {"AccountIDTextEditTicket", "acc"}, {"StorageIDTextEditTicket", "sto"},
        {"StoragePasswordTextEditTicket", "spw"}},
       "", {5, 8, 10, 11, 13, 14, 15}},
      {"entered ID and storage without passwords", false,
       {{"UserIDListCtrlTicket", "2"}, {"UserIDTextEditTicket", "u123"},
        {"StorageIDTextEditTicket", "sto"}},
       "", {5, 9, 12, 13, 14, 16}},
      {"entry time: user, password, domain, account", true, {},
       K(auth, "1") + K("JBAInputUserIDTextEditTicket", "iu") +
           K("JBAInputUserPasswordTextEditTicket", "ipw") +
           K("JBAInputDomainNameTextEditTicket", "idom") +
           K("JBAInputAccountIDTextEditTicket", "iacc") + K(set8, "0"),
       {17, 20, 24, 25, 30}},
      {"entry time: identity hidden by info set 8", true, {},
       K(auth, "1") + K("JBAInputUserIDTextEditTicket", "iu") +
           K("JBAInputAccountIDTextEditTicket", "iacc") + K(set8, "8"),
       {18, 21, 26, 30}},
      {"entry time: nothing entered", true, {}, K(auth, "1") + K(set8, "0"), {19, 23, 27, 30}},
      {"entry time: user without password", true, {},
       K(auth, "1") + K("JBAInputUserIDTextEditTicket", "iu") + K(set8, "0"), {17, 22, 27, 30}},
      {"entry time: storage with password", true, {},
       K("JBAInputStrgRadioBtnTicketKey", "1") + K(list, "1") +
           K("JBAInputStorageIDTextEditTicket", "ist") +
           K("JBAInputStoragePasswordTextEditTicket", "isp"),
       {28, 29, 30, 31, 32, 33}},
      {"entry time: storage without password, no list", true, {},
       K("JBAInputStrgRadioBtnTicketKey", "1") + K(list, "0") +
           K("JBAInputStorageIDTextEditTicket", "ist"),
       {29, 30, 31, 32, 34}},
  };
  // clang-format on
  std::vector<bool> seenAdmin(JBAFmtTableAdminNum), seenCommon(JBAFmtTableCommonNum);
  auto check = [&](const HeaderJob& job, const std::vector<int>& admin,
                   const std::vector<int>& common, const std::string& name) {
    PrepareHeaderModules(job);
    EXPECT_EQ(FiringRows(JBAFmtTableAdmin, JBAFmtTableAdminNum), admin) << name;
    EXPECT_EQ(FiringRows(JBAFmtTableCommon, JBAFmtTableCommonNum), common) << name;
    for (int row : admin) seenAdmin[row] = true;
    for (int row : common) seenCommon[row] = true;
  };
  for (const SetCase& c : cases) {
    for (Side side : {Side::Admin, Side::User}) {
      const std::string prefix = side == Side::Admin ? "JBAAdmin" : "JBA";
      HeaderJob job;
      job.ppd = "modules-utf8.ppd";
      job.ticket =
          K("JBAManageTypeListTicketKey", side == Side::Admin ? "1" : "2") +
          K(prefix + (c.entryTime ? "UserInputRadioBtnTicket" : "UserSettingRadioBtnTicket"), "1") +
          c.shared;
      // Host, login user, N-up and document name hold throughout; the login
      // user as owner too, unless the user set sends a user ID key.
      std::vector<int> admin, common = {0, 2, 6, 12, 37};
      for (const SetValue& v : c.own) {
        job.ticket += K(prefix + v.suffix, v.value);
        if (side == Side::User && std::string(v.suffix) == "UserIDTextEditTicket") {
          common.erase(std::find(common.begin(), common.end(), 12));
        }
      }
      for (int row : c.rows) {
        if (side == Side::Admin) admin.push_back(row);
        if (side == Side::User && kUserRowOf[row] >= 0) common.push_back(kUserRowOf[row]);
      }
      std::sort(common.begin(), common.end());
      common.erase(std::unique(common.begin(), common.end()), common.end());
      check(job, admin, common, prefix + ": " + c.name);
    }
  }
  // The client rows that need a particular job identity.
  HeaderJob empty, ticketAddress, identityAddress;
  empty.hostName = empty.userName = empty.jbaUserName = empty.documentName = "";
  ticketAddress.ticket = K("JBAIPAddressStringTicket", "192.0.2.7");
  identityAddress.ipAddress = "192.0.2.8";
  check(HeaderJob(), {}, {0, 2, 6, 12, 37}, "no accounting keys");
  check(empty, {}, {1, 3, 6, 12}, "no host, user or document name");
  check(ticketAddress, {}, {0, 2, 4, 6, 12, 37}, "address from the ticket");
  check(identityAddress, {}, {0, 2, 5, 6, 12, 37}, "address from the identity buffer");
  // Together the cases reach every row of both tables.
  for (int i = 0; i < JBAFmtTableAdminNum; ++i) EXPECT_TRUE(seenAdmin[i]) << "admin row " << i;
  for (int i = 0; i < JBAFmtTableCommonNum; ++i) EXPECT_TRUE(seenCommon[i]) << "common row " << i;
}

// ---- Lines written ---------------------------------------------------------

HeaderJob Job(const std::string& ticket, const char* ppd = "modules-utf8.ppd") {
  HeaderJob job;
  job.ppd = ppd;
  job.ticket = ticket;
  return job;
}

// Whole outputs: the administrator table before the common table, each in
// row order, passwords sealed for the printer (opened here with the test
// key), IDs in UTF-8 on a UTF-8 printer and every other text in Shift-JIS.
TEST(AccountingOutput, WritesTheLinesInTableOrder) {
  const std::string owner = StoredPasswordText("pw-owner");
  const std::string storage = StoredPasswordText("pw-storage");
  ASSERT_FALSE(owner.empty());
  ASSERT_FALSE(storage.empty());
  const std::string client = N("CNAM", "mac1") + N("LUNA", "bob") + N("NLPP", "1");
  const std::string userLogin =
      Key("JBAManageTypeListTicketKey", "2") + Key("JBAUserSettingRadioBtnTicket", "1") +
      Key("JBAUserIDListCtrlTicket", "1") + Key("JBAInfoListTicketKey", "0");
  const std::string kana = "\xE3\x82\xA2", sjis = "\x83\x41";  // KATAKANA LETTER A
  const std::string kanaIDs = Key("JBAManageTypeListTicketKey", "2") +
                              Key("JBAUserSettingRadioBtnTicket", "1") +
                              Key("JBAUserIDListCtrlTicket", "2") +
                              Key("JBAUserIDTextEditTicket", kana) +
                              Key("JBADomainNameTextEditTicket", kana);
  HeaderJob noHost = Job("number-up=4");
  noHost.hostName = "";
  // A legacy printer keeps the raw argument as accounting name, which may be
  // empty: the owner line then stops after its opening quote.
  HeaderJob noAccountingName = Job("", "modules-legacy-default04.ppd");
  noAccountingName.jbaUserName = "";
  const struct {
    const char* name;
    HeaderJob job;
    std::string expected;
  } cases[] = {
      {"no accounting keys", Job(""), client + R("JOAU", "bob") + R("ACNA", "report")},
      {"empty host name, 4-up", noHost,
       N("CNAM", "UnknownHost") + N("LUNA", "bob") + N("NLPP", "N4") + R("JOAU", "bob") +
           R("ACNA", "report")},
      {"empty accounting name", noAccountingName,
       client + "@PJL SET JOBATTR=\"" + R("ACNA", "report")},
      // Without the user ID key the login user goes out twice.
      {"user set, login user with password, no user ID key",
       Job(userLogin + Key("JBAUserPasswordTextEditTicket", owner)),
       client + R("JOAU", "bob") + R("JOAU", "bob") + R("JOEP", "<sealed:pw-owner>") +
           R("DAID", "") + R("ACNA", "report")},
      {"administrator set, entered ID, domain, account and storage",
       Job(Key("JBAManageTypeListTicketKey", "1") + Key("JBAAdminUserSettingRadioBtnTicket", "1") +
           Key("JBAAdminUserIDListCtrlTicket", "2") + Key("JBAAdminUserIDTextEditTicket", "chief") +
           Key("JBAAdminUserPasswordTextEditTicket", owner) +
           Key("JBAAdminDomainNameTextEditTicket", "corp") +
           Key("JBAAdminAccountIDTextEditTicket", "A-1") +
           Key("JBAAdminStorageIDTextEditTicket", "box9") +
           Key("JBAAdminStoragePasswordTextEditTicket", storage)),
       R("JOAU", "chief") + R("JOEP", "<sealed:pw-owner>") + R("JOAD", "corp") + R("DAID", "A-1") +
           R("ACID", "box9") + R("ACNA", "report") + R("ACEP", "<sealed:pw-storage>") + client +
           R("JOAU", "bob") + R("ACNA", "report")},
      {"user entry time, user and storage with passwords",
       Job(Key("JBAManageTypeListTicketKey", "2") + Key("JBAUserInputRadioBtnTicket", "1") +
           Key("JBAInputAuthRadioBtnTicketKey", "1") + Key("JBAInfoSetListTicketKey", "0") +
           Key("JBAInputUserIDTextEditTicket", "typed") +
           Key("JBAInputUserPasswordTextEditTicket", owner) +
           Key("JBAInputAccountIDTextEditTicket", "acc") +
           Key("JBAInputStrgRadioBtnTicketKey", "1") + Key("JBAInfoListTicketKey", "1") +
           Key("JBAInputStorageIDTextEditTicket", "s7") +
           Key("JBAInputStoragePasswordTextEditTicket", storage)),
       client + R("JOAU", "bob") + R("JOAU", "typed") + R("JOEP", "<sealed:pw-owner>") +
           R("DAID", "acc") + R("DAID", "") + R("ACID", "s7") + R("ACNA", "report") +
           N("JOAU", "UnknownUser") + N("JOEP", "") + R("ACEP", "<sealed:pw-storage>")},
      {"IDs on a UTF-8 printer", Job(kanaIDs),
       client + R("JOAU", kana) + R("JOEP", "") + R("JOAD", sjis) + R("DAID", "") +
           R("ACNA", "report")},
      {"IDs on a legacy printer", Job(kanaIDs, "modules-legacy-default04.ppd"),
       client + R("JOAU", sjis) + R("JOEP", "") + R("JOAD", sjis) + R("DAID", "") +
           R("ACNA", "report")},
  };
  for (const auto& c : cases) {
    std::string out = RunAccounting(c.job);
    EXPECT_EQ(WithOpenedFields(out), c.expected) << c.name << "\n" << Visible(out);
  }
  ResetJobState();
}

}  // namespace
