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
TEST(PrintTypeTables, RowsHoldExactlyForTheirSettings) {
  const std::string secure =
      Key("PrintTypeTicketKey", "2") + Key("PrintTypeUserNameTicketKey", "u1");
  const std::string typedName =
      Key("DocumentNameTypeTicketKey", "2") + Key("DocumentNameTicketKey", "typed");
  // clang-format off
  struct Case {
    const char* name;
    std::string ticket;
    std::string printTypeDocumentName;
    std::vector<int> full, partial;
  } cases[] = {
      {"no keys", "", "report", {}, {}},
      {"secure print with password and document name",
       secure + Key("PrintTypePasswordTicketKey", "pw") + Key("DocumentNameTypeTicketKey", "1"),
       "report", {0, 1, 7, 8, 9}, {0, 1, 3, 4, 5}},
      {"secure print without password", secure, "report", {0, 7}, {0, 3}},
      {"secure print without user name",
       Key("PrintTypeTicketKey", "2") + Key("PrintTypePasswordTicketKey", "pw"), "", {}, {}},
      {"sample print", Key("PrintTypeTicketKey", "3") + Key("PrintTypeUserNameTicketKey", "u1"),
       "", {2, 7}, {2, 3}},
      {"delayed print", Key("PrintTypeTicketKey", "4") + Key("DelayPrintTicketKey", "1230") +
                            Key("PrintTypeUserNameTicketKey", "u1") + typedName,
       "", {10, 11}, {6}},
      {"delayed print without time", Key("PrintTypeTicketKey", "4"), "", {}, {}},
      {"mailbox with password",
       Key("PrintTypeTicketKey", "5") + Key("PrintTypeMBNTicketKey", "12") +
           Key("PrintTypeMBNPasswordTicketKey", "bp") + Key("PrintTypeUserNameTicketKey", "u1"),
       "", {3, 4, 5, 6}, {}},
      {"mailbox without password",
       Key("PrintTypeTicketKey", "5") + Key("PrintTypeMBNTicketKey", "12"), "", {3, 5}, {}},
      {"document name chosen but emptied by validation",
       Key("PrintTypeTicketKey", "3") + Key("DocumentNameTypeTicketKey", "1"), "", {}, {}},
      {"typed name chosen but none typed",
       Key("PrintTypeTicketKey", "3") + Key("DocumentNameTypeTicketKey", "2"), "report", {}, {}},
      {"normal printing sends nothing",
       Key("PrintTypeTicketKey", "1") + Key("PrintTypeUserNameTicketKey", "u1") + typedName,
       "report", {}, {}},
      {"no print type, user name and typed name",
       Key("PrintTypeUserNameTicketKey", "u1") + typedName, "", {7, 10}, {3, 6}},
  };
  // clang-format on
  std::vector<bool> seenFull(PrintTypeFmtTableNum), seenPartial(PrintTypeFmtPartTableNum);
  for (const Case& c : cases) {
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
  // The cases reach every row of both tables.
  for (int32_t i = 0; i < PrintTypeFmtTableNum; ++i) EXPECT_TRUE(seenFull[i]) << "full row " << i;
  for (int32_t i = 0; i < PrintTypeFmtPartTableNum; ++i) {
    EXPECT_TRUE(seenPartial[i]) << "partial row " << i;
  }
}

// The lines written, through the table the PPD chooses; passwords sealed
// for the printer (opened here with the test key).
TEST(PrintTypeOutput, WritesTheChosenTablesLines) {
  const std::string hold = StoredPasswordText("1234");
  const std::string box = StoredPasswordText("0042");
  ASSERT_FALSE(hold.empty());
  ASSERT_FALSE(box.empty());
  const std::string secure =
      Key("PrintTypeTicketKey", "2") + Key("PrintTypeUserNameTicketKey", "u1") +
      Key("PrintTypePasswordTicketKey", hold) + Key("DocumentNameTypeTicketKey", "1");
  const std::string secureLines =
      "@PJL SET HOLD=STORE\n"
      "@PJL SET HOLDTYPE=PRIVATE\n"
      "@PJL SET USERNAME=\"u1\"\r\n"
      "@PJL SET HOLDENCRYPTKEY=\"<sealed:1234>\"\r\n"
      "@PJL SET JOBNAME=\"report\"\r\n";
  const std::string mailbox = Key("PrintTypeTicketKey", "5") + Key("PrintTypeMBNTicketKey", "12");
  const std::string mailboxLines = "@PJL SET HOLD=BOXSTORE\n@PJL SET BOXNUMBER=12\r\n";
  const std::string delayed = Key("PrintTypeTicketKey", "4") + Key("DelayPrintTicketKey", "1230") +
                              Key("DocumentNameTypeTicketKey", "1");
  const std::string sample =
      Key("PrintTypeTicketKey", "3") + Key("PrintTypeUserNameTicketKey", "u1") +
      Key("DocumentNameTypeTicketKey", "2") + Key("DocumentNameTicketKey", "Quarterly");
  const std::string sampleLines =
      "@PJL SET HOLD=PROOF\n@PJL SET USERNAME=\"u1\"\r\n@PJL SET JOBNAME=\"Quarterly\"\r\n";
  const char* utf8 = "modules-utf8.ppd";
  const char* default04 = "modules-utf8-default04.ppd";
  const char* legacy04 = "modules-legacy-default04.ppd";
  // clang-format off
  struct Case {
    const char* name;
    const char* ppd;
    std::string ticket, expected;
  } cases[] = {
      {"secure print", utf8, secure, secureLines},
      {"secure print, partial table", default04, secure, secureLines},
      // A name of 97 bytes keeps 96 in its field, which pass the length test.
      {"secure print, user name of 97 bytes", utf8,
       Key("PrintTypeTicketKey", "2") + Key("PrintTypeUserNameTicketKey", std::string(97, 'n')),
       "@PJL SET HOLD=STORE\n@PJL SET USERNAME=\"" + std::string(96, 'n') + "\"\r\n"},
      {"mailbox without password", utf8, mailbox, mailboxLines},
      {"mailbox with password", utf8, mailbox + Key("PrintTypeMBNPasswordTicketKey", box),
       "@PJL SET HOLD=BOXSTORE\n@PJL SET HOLDTYPE=PRIVATE\n@PJL SET BOXNUMBER=12\r\n"
       "@PJL SET BOXENCRYPTKEY=\"<sealed:0042>\"\r\n"},
      {"mailbox number cut to four bytes", utf8,
       Key("PrintTypeTicketKey", "5") + Key("PrintTypeMBNTicketKey", "123456"),
       "@PJL SET HOLD=BOXSTORE\n@PJL SET BOXNUMBER=1234\r\n"},
      {"delayed print, job name from the document", utf8, delayed,
       "@PJL SET JOBNAME=\"report\"\r\n@PJL SET JOBATTR=\"@PRTM=1230\"\r\n"},
      {"sample print, typed job name", utf8, sample, sampleLines},
      // The partial table has no mailbox and no delayed-print rows.
      {"partial table: mailbox", default04, mailbox, ""},
      {"partial table: delayed print", default04, delayed, "@PJL SET JOBNAME=\"report\"\r\n"},
      {"partial table: sample print", default04, sample, sampleLines},
      // Default04 counts only on a UTF-8 printer; without a PPD the full table applies.
      {"legacy printer listing Default04", legacy04, mailbox, mailboxLines},
      {"no PPD", "", mailbox, mailboxLines},
  };
  // clang-format on
  for (const Case& c : cases) {
    HeaderJob job;
    job.ppd = c.ppd;
    job.ticket = c.ticket;
    std::string out = RunPrintType(job);
    EXPECT_EQ(WithOpenedFields(out), c.expected) << c.name << "\n" << ShowControlBytes(out);
  }
}

// Each text arrives cut to its field's size; a UTF-8 printer gets the user
// name and the typed name in UTF-8, the other texts in the Shift-JIS form.
TEST(PrintTypeTicket, ReadsEachTextIntoItsFieldAndSize) {
  const std::string kana = "\xE3\x82\xA2", sjis = "\x83\x41";  // KATAKANA LETTER A
  const PrintTypeOption& pt = zpjlOptionPrintType;
  struct Field {
    const char* key;
    const char* text;
    size_t size;
    bool utf8OnUTF8Printer;
  } fields[] = {
      {"PrintTypeUserNameTicketKey", pt.userName, 97, true},
      {"DocumentNameTicketKey", pt.documentName, 193, true},
      {"DelayPrintTicketKey", pt.delayTime, 17, false},
      {"PrintTypeMBNTicketKey", pt.mailboxNumber, 5, false},
  };
  std::string ticket;
  char letter = 'a';
  for (const Field& f : fields) ticket += Key(f.key, kana + std::string(300, letter++));
  // Not base64: the password fields keep the ticket text, which the getter
  // reads through a 1024-byte work buffer.
  const std::string longText(3000, 'x');
  ticket +=
      Key("PrintTypePasswordTicketKey", longText) + Key("PrintTypeMBNPasswordTicketKey", longText);
  for (bool utf8 : {true, false}) {
    HeaderJob job;
    job.ppd = utf8 ? "modules-utf8.ppd" : "modules-legacy-default04.ppd";
    job.ticket = ticket;
    PrepareHeaderModules(job);
    letter = 'a';
    for (const Field& f : fields) {
      const std::string start = utf8 && f.utf8OnUTF8Printer ? kana : sjis;
      EXPECT_EQ(f.text, start + std::string(f.size - 1 - start.size(), letter++))
          << f.key << (utf8 ? " UTF-8" : " legacy");
    }
    EXPECT_EQ(pt.printType, -1);
    EXPECT_EQ(pt.documentNameType, -1);
    EXPECT_EQ(pt.password, longText.substr(0, 1023));
    EXPECT_EQ(pt.mailboxPassword, longText.substr(0, 1023));
  }
}

}  // namespace
