#include "modules/print_type/print_type.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "engine/command.h"
#include "frame/fixed_text.h"
#include "frame/job_state.h"
#include "header_modules_run.h"
#include "sealed_fields.h"

namespace {

using namespace modrun;

std::string Key(const std::string& suffix, const std::string& value) {
  return "com.korvanel.qd.jtz.printsettings." + suffix + "=" + value + " ";
}

std::string Expand(const FormatEntry& row) {
  char line[kCommandBufferSize];
  BuildPrintComand(row.format, row.params, line, sizeof line);
  return line;
}

// Each row's format and parameters, with every value set to a marker text.
TEST(PrintTypeTables, EachRowExpandsToItsLine) {
  PrintTypeInializeDescriptionTableFromFilter();
  PrintTypeOption& pt = zpjlOptionPrintType;
  CopyText(pt.userName, sizeof pt.userName, "USER");
  CopyText(pt.password, sizeof pt.password, "PASS");
  CopyText(pt.documentName, sizeof pt.documentName, "TYPED");
  CopyText(pt.delayTime, sizeof pt.delayTime, "1230");
  CopyText(pt.mailboxNumber, sizeof pt.mailboxNumber, "12");
  CopyText(pt.mailboxPassword, sizeof pt.mailboxPassword, "BOXPW");
  CopyText(PTStdDocumentName, sizeof PTStdDocumentName, "AUTO");

  const std::vector<std::string> full = {
      /*  0 */ "@PJL SET HOLD=STORE\n",
      /*  1 */ "@PJL SET HOLDTYPE=PRIVATE\n",
      /*  2 */ "@PJL SET HOLD=PROOF\n",
      /*  3 */ "@PJL SET HOLD=BOXSTORE\n",
      /*  4 */ "@PJL SET HOLDTYPE=PRIVATE\n",
      /*  5 */ "@PJL SET BOXNUMBER=12\r\n",
      /*  6 */ "@PJL SET BOXENCRYPTKEY=\"BOXPW\"\r\n",
      /*  7 */ "@PJL SET USERNAME=\"USER\"\r\n",
      /*  8 */ "@PJL SET HOLDENCRYPTKEY=\"PASS\"\r\n",
      /*  9 */ "@PJL SET JOBNAME=\"AUTO\"\r\n",
      /* 10 */ "@PJL SET JOBNAME=\"TYPED\"\r\n",
      /* 11 */ "@PJL SET JOBATTR=\"@PRTM=1230\"\r\n",
  };
  ASSERT_EQ(static_cast<int32_t>(full.size()), PrintTypeFmtTableNum);
  for (int32_t i = 0; i < PrintTypeFmtTableNum; ++i) {
    EXPECT_EQ(Expand(PrintTypeFmtTable[i]), full[i]) << "full row " << i;
  }
  const int partOf[PrintTypeFmtPartTableNum] = {0, 1, 2, 7, 8, 9, 10};
  for (int32_t i = 0; i < PrintTypeFmtPartTableNum; ++i) {
    EXPECT_EQ(Expand(PrintTypeFmtPartTable[i]), full[partOf[i]]) << "partial row " << i;
  }
  ResetJobState();
}

// Which rows hold for a ticket, in the full and in the partial table.
struct FiringCase {
  const char* name;
  std::string ticket;
  std::string printTypeDocumentName;
  std::vector<int> full;
  std::vector<int> partial;
};

TEST(PrintTypeTables, RowsHoldExactlyForTheirSettings) {
  const std::string secure = Key("PrintTypeTicketKey", "2") + Key("PrintTypeUserNameTicketKey", "u1");
  const std::string auto_name = Key("DocumentNameTypeTicketKey", "1");
  const std::string typed_name =
      Key("DocumentNameTypeTicketKey", "2") + Key("DocumentNameTicketKey", "typed");
  const std::vector<FiringCase> cases = {
      {"no keys", "", "report", {}, {}},
      {"secure print with password and document name",
       secure + Key("PrintTypePasswordTicketKey", "pw") + auto_name, "report",
       {0, 1, 7, 8, 9}, {0, 1, 3, 4, 5}},
      {"secure print without password", secure, "report", {0, 7}, {0, 3}},
      {"secure print without user name",
       Key("PrintTypeTicketKey", "2") + Key("PrintTypePasswordTicketKey", "pw"), "", {}, {}},
      {"sample print", Key("PrintTypeTicketKey", "3") + Key("PrintTypeUserNameTicketKey", "u1"),
       "", {2, 7}, {2, 3}},
      {"sample print without user name", Key("PrintTypeTicketKey", "3"), "", {}, {}},
      {"delayed print", Key("PrintTypeTicketKey", "4") + Key("DelayPrintTicketKey", "1230") +
                            Key("PrintTypeUserNameTicketKey", "u1") + typed_name,
       "", {10, 11}, {6}},
      {"delayed print without time", Key("PrintTypeTicketKey", "4"), "", {}, {}},
      {"mailbox with password",
       Key("PrintTypeTicketKey", "5") + Key("PrintTypeMBNTicketKey", "12") +
           Key("PrintTypeMBNPasswordTicketKey", "bp") + Key("PrintTypeUserNameTicketKey", "u1"),
       "", {3, 4, 5, 6}, {}},
      {"mailbox without password",
       Key("PrintTypeTicketKey", "5") + Key("PrintTypeMBNTicketKey", "12"), "", {3, 5}, {}},
      {"document name chosen but empty after validation",
       Key("PrintTypeTicketKey", "3") + auto_name, "", {}, {}},
      {"typed name chosen but none typed",
       Key("PrintTypeTicketKey", "3") + Key("DocumentNameTypeTicketKey", "2"), "report", {}, {}},
      {"normal printing sends nothing",
       Key("PrintTypeTicketKey", "1") + Key("PrintTypeUserNameTicketKey", "u1") + typed_name,
       "report", {}, {}},
      {"no print type, user name and typed name",
       Key("PrintTypeUserNameTicketKey", "u1") + typed_name, "", {7, 10}, {3, 6}},
  };
  std::vector<bool> seenFull(PrintTypeFmtTableNum), seenPartial(PrintTypeFmtPartTableNum);
  for (const FiringCase& c : cases) {
    HeaderJob job;
    job.ppd = "modules-utf8.ppd";
    job.ticket = c.ticket;
    job.printTypeDocumentName = c.printTypeDocumentName;
    PrepareHeaderModules(job);
    EXPECT_EQ(FiringRows(PrintTypeFmtTable, PrintTypeFmtTableNum), c.full) << c.name;
    EXPECT_EQ(FiringRows(PrintTypeFmtPartTable, PrintTypeFmtPartTableNum), c.partial) << c.name;
    for (int row : c.full) seenFull[row] = true;
    for (int row : c.partial) seenPartial[row] = true;
  }
  // The cases above reach every row of both tables.
  for (int32_t i = 0; i < PrintTypeFmtTableNum; ++i) EXPECT_TRUE(seenFull[i]) << "full row " << i;
  for (int32_t i = 0; i < PrintTypeFmtPartTableNum; ++i) {
    EXPECT_TRUE(seenPartial[i]) << "partial row " << i;
  }
}

// The lines written for a ticket, through the table the PPD chooses.
struct OutputCase {
  const char* name;
  const char* ppd;
  std::string ticket;
  std::string printTypeDocumentName;
  std::string expected;
};

TEST(PrintTypeOutput, WritesTheChosenTablesLines) {
  const std::string mailbox = Key("PrintTypeTicketKey", "5") + Key("PrintTypeMBNTicketKey", "12");
  const std::string delayed = Key("PrintTypeTicketKey", "4") + Key("DelayPrintTicketKey", "1230") +
                              Key("DocumentNameTypeTicketKey", "1");
  const std::string sample = Key("PrintTypeTicketKey", "3") +
                             Key("PrintTypeUserNameTicketKey", "u1") +
                             Key("DocumentNameTypeTicketKey", "2") +
                             Key("DocumentNameTicketKey", "Quarterly");
  const std::vector<OutputCase> cases = {
      {"mailbox without password", "modules-utf8.ppd", mailbox, "report",
       "@PJL SET HOLD=BOXSTORE\n@PJL SET BOXNUMBER=12\r\n"},
      {"mailbox number is cut to four bytes", "modules-utf8.ppd",
       Key("PrintTypeTicketKey", "5") + Key("PrintTypeMBNTicketKey", "123456"), "",
       "@PJL SET HOLD=BOXSTORE\n@PJL SET BOXNUMBER=1234\r\n"},
      {"delayed print with the document name", "modules-utf8.ppd", delayed, "report",
       "@PJL SET JOBNAME=\"report\"\r\n@PJL SET JOBATTR=\"@PRTM=1230\"\r\n"},
      {"sample print with a typed name", "modules-utf8.ppd", sample, "report",
       "@PJL SET HOLD=PROOF\n@PJL SET USERNAME=\"u1\"\r\n@PJL SET JOBNAME=\"Quarterly\"\r\n"},
      // The partial table has no mailbox and no delayed-print rows.
      {"UTF-8 printer listing Default04: mailbox", "modules-utf8-default04.ppd", mailbox,
       "report", ""},
      {"UTF-8 printer listing Default04: delayed print", "modules-utf8-default04.ppd", delayed,
       "report", "@PJL SET JOBNAME=\"report\"\r\n"},
      {"UTF-8 printer listing Default04: sample print", "modules-utf8-default04.ppd", sample,
       "report",
       "@PJL SET HOLD=PROOF\n@PJL SET USERNAME=\"u1\"\r\n@PJL SET JOBNAME=\"Quarterly\"\r\n"},
      // Default04 counts only on a UTF-8 printer; without a PPD the full table applies.
      {"legacy printer listing Default04", "modules-legacy-default04.ppd", mailbox, "",
       "@PJL SET HOLD=BOXSTORE\n@PJL SET BOXNUMBER=12\r\n"},
      {"no PPD", "", mailbox, "", "@PJL SET HOLD=BOXSTORE\n@PJL SET BOXNUMBER=12\r\n"},
  };
  for (const OutputCase& c : cases) {
    HeaderJob job;
    job.ppd = c.ppd;
    job.ticket = c.ticket;
    job.printTypeDocumentName = c.printTypeDocumentName;
    std::string out = RunPrintType(job);
    EXPECT_EQ(out, c.expected) << c.name << "\n" << ShowControlBytes(out);
  }
}

// The typed name and the user name arrive in UTF-8 on a UTF-8 printer and
// in the Shift-JIS form otherwise; the delay time always in the latter.
TEST(PrintTypeTicket, ChoosesTheTicketTableByThePrinterEncoding) {
  const std::string kana = "\xE3\x82\xA2";  // KATAKANA LETTER A
  const std::string ticket = Key("PrintTypeTicketKey", "3") +
                             Key("PrintTypeUserNameTicketKey", kana) +
                             Key("DocumentNameTypeTicketKey", "2") +
                             Key("DocumentNameTicketKey", kana) + Key("DelayPrintTicketKey", kana);
  struct Case {
    const char* ppd;
    std::string userName, documentName;
  } cases[] = {
      {"modules-utf8.ppd", kana, kana},
      {"modules-legacy-default04.ppd", "\x83\x41", "\x83\x41"},
  };
  for (const Case& c : cases) {
    HeaderJob job;
    job.ppd = c.ppd;
    job.ticket = ticket;
    PrepareHeaderModules(job);
    EXPECT_EQ(zpjlOptionPrintType.userName, c.userName) << c.ppd;
    EXPECT_EQ(zpjlOptionPrintType.documentName, c.documentName) << c.ppd;
    EXPECT_STREQ(zpjlOptionPrintType.delayTime, "\x83\x41") << c.ppd;
  }
}

// Every text field keeps at most its size - 1 bytes; an absent number reads -1.
TEST(PrintTypeTicket, CutsEachFieldToItsSize) {
  const std::string longText(3000, 'x');
  HeaderJob job;
  job.ppd = "modules-utf8.ppd";
  job.ticket = Key("PrintTypeUserNameTicketKey", longText) +
               Key("DocumentNameTicketKey", longText) + Key("DelayPrintTicketKey", longText) +
               Key("PrintTypeMBNTicketKey", longText) +
               Key("PrintTypePasswordTicketKey", longText) +
               Key("PrintTypeMBNPasswordTicketKey", longText);
  PrepareHeaderModules(job);
  const PrintTypeOption& pt = zpjlOptionPrintType;
  EXPECT_EQ(pt.printType, -1);
  EXPECT_EQ(pt.documentNameType, -1);
  EXPECT_EQ(std::string(pt.userName).size(), 96u);
  EXPECT_EQ(std::string(pt.documentName).size(), 192u);
  EXPECT_EQ(std::string(pt.delayTime).size(), 16u);
  EXPECT_EQ(std::string(pt.mailboxNumber).size(), 4u);
  // Not base64: the password fields keep the ticket text, which the getter
  // reads through a 1024-byte work buffer.
  EXPECT_EQ(std::string(pt.password), longText.substr(0, 1023));
  EXPECT_EQ(std::string(pt.mailboxPassword), longText.substr(0, 1023));
}

// A user name of 97 bytes cannot be held whole: the field keeps 96 bytes,
// which pass the length test, so the job is still held.
TEST(PrintTypeOutput, UserNameOf97BytesIsCutTo96) {
  const std::string name97(97, 'n');
  HeaderJob job;
  job.ppd = "modules-utf8.ppd";
  job.ticket = Key("PrintTypeTicketKey", "2") + Key("PrintTypeUserNameTicketKey", name97);
  std::string out = RunPrintType(job);
  EXPECT_EQ(out, "@PJL SET HOLD=STORE\n@PJL SET USERNAME=\"" + std::string(96, 'n') + "\"\r\n")
      << ShowControlBytes(out);
}

// The passwords go to the printer sealed; the test key opens them.
TEST(PrintTypeOutput, SendsThePasswordsSealed) {
  const std::string hold = StoredPasswordText("1234");
  const std::string box = StoredPasswordText("0042");
  ASSERT_FALSE(hold.empty());
  ASSERT_FALSE(box.empty());
  const std::string secure = Key("PrintTypeTicketKey", "2") +
                             Key("PrintTypeUserNameTicketKey", "u1") +
                             Key("PrintTypePasswordTicketKey", hold) +
                             Key("DocumentNameTypeTicketKey", "1");
  const std::string secureLines =
      "@PJL SET HOLD=STORE\n"
      "@PJL SET HOLDTYPE=PRIVATE\n"
      "@PJL SET USERNAME=\"u1\"\r\n"
      "@PJL SET HOLDENCRYPTKEY=\"<sealed:1234>\"\r\n"
      "@PJL SET JOBNAME=\"report\"\r\n";
  const std::vector<OutputCase> cases = {
      {"secure print", "modules-utf8.ppd", secure, "report", secureLines},
      {"secure print, partial table", "modules-utf8-default04.ppd", secure, "report", secureLines},
      {"secure print on a legacy printer", "modules-legacy-default04.ppd", secure, "report",
       secureLines},
      {"mailbox with password", "modules-utf8.ppd",
       Key("PrintTypeTicketKey", "5") + Key("PrintTypeMBNTicketKey", "12") +
           Key("PrintTypeMBNPasswordTicketKey", box),
       "report",
       "@PJL SET HOLD=BOXSTORE\n"
       "@PJL SET HOLDTYPE=PRIVATE\n"
       "@PJL SET BOXNUMBER=12\r\n"
       "@PJL SET BOXENCRYPTKEY=\"<sealed:0042>\"\r\n"},
  };
  for (const OutputCase& c : cases) {
    HeaderJob job;
    job.ppd = c.ppd;
    job.ticket = c.ticket;
    job.printTypeDocumentName = c.printTypeDocumentName;
    std::string out = RunPrintType(job);
    EXPECT_EQ(WithOpenedFields(out), c.expected) << c.name << "\n" << ShowControlBytes(out);
  }
}

}  // namespace
