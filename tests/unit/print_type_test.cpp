#include "modules/print_type/print_type.h"

#include <gtest/gtest.h>

#include <string>

#include "header_modules_run.h"
#include "sealed_blob.h"

namespace {

// The lines written, through the table the PPD chooses: together the cases
// reach every row of the full and of the partial table, and the conditions
// that keep each row out. Passwords are sealed for the printer (opened here
// with the test key).
TEST(PrintTypeOutput, WritesTheChosenTablesLines) {
  const std::string hold = StoredPasswordText("1234");
  const std::string box = StoredPasswordText("0042");
  ASSERT_FALSE(hold.empty());
  ASSERT_FALSE(box.empty());
  const std::string user = Key("PrintTypeUserNameTicketKey", "u1");
  const std::string secure = Key("PrintTypeTicketKey", "2") + user +
                             Key("PrintTypePasswordTicketKey", hold) +
                             Key("DocumentNameTypeTicketKey", "1");
  const std::string secureLines =
      "@PJL SET HOLD=STORE\n@PJL SET HOLDTYPE=PRIVATE\n@PJL SET USERNAME=\"u1\"\r\n"
      "@PJL SET HOLDENCRYPTKEY=\"<sealed:1234>\"\r\n@PJL SET JOBNAME=\"report\"\r\n";
  const std::string mailbox = Key("PrintTypeTicketKey", "5") + Key("PrintTypeMBNTicketKey", "12");
  const std::string mailboxLines = "@PJL SET HOLD=BOXSTORE\n@PJL SET BOXNUMBER=12\r\n";
  const std::string delayed = Key("PrintTypeTicketKey", "4") + Key("DelayPrintTicketKey", "1230") +
                              Key("DocumentNameTypeTicketKey", "1");
  const std::string typedName =
      Key("DocumentNameTypeTicketKey", "2") + Key("DocumentNameTicketKey", "Quarterly");
  const std::string sample = Key("PrintTypeTicketKey", "3") + user + typedName;
  const std::string sampleLines =
      "@PJL SET HOLD=PROOF\n@PJL SET USERNAME=\"u1\"\r\n@PJL SET JOBNAME=\"Quarterly\"\r\n";
  const std::string kana = "\xE3\x82\xA2";  // KATAKANA LETTER A; Shift-JIS 83 41
  const std::string kanaTicket = Key("PrintTypeTicketKey", "3") +
                                 Key("PrintTypeUserNameTicketKey", kana) +
                                 Key("DocumentNameTypeTicketKey", "2") +
                                 Key("DocumentNameTicketKey", kana);
  const char* utf8 = "modules-utf8.ppd";
  const char* default04 = "modules-utf8-default04.ppd";
  const char* legacy04 = "modules-legacy-default04.ppd";
  // clang-format off
  const struct {
    const char* name;
    const char* ppd;
    std::string ticket, expected;
    const char* printTypeDocumentName;
  } cases[] = {
      {"no keys", utf8, "", "", "report"},
      {"secure print", utf8, secure, secureLines, "report"},
      {"secure print, partial table", default04, secure, secureLines, "report"},
      {"secure print without password", utf8, Key("PrintTypeTicketKey", "2") + user,
       "@PJL SET HOLD=STORE\n@PJL SET USERNAME=\"u1\"\r\n", "report"},
      {"secure print without user name", utf8,
       Key("PrintTypeTicketKey", "2") + Key("PrintTypePasswordTicketKey", hold), "", "report"},
      // A name of 97 bytes keeps 96 in its field, which pass the length test.
      {"secure print, user name of 97 bytes", utf8,
       Key("PrintTypeTicketKey", "2") + Key("PrintTypeUserNameTicketKey", std::string(97, 'n')),
       "@PJL SET HOLD=STORE\n@PJL SET USERNAME=\"" + std::string(96, 'n') + "\"\r\n", "report"},
      {"mailbox without password", utf8, mailbox, mailboxLines, "report"},
      {"mailbox with password, no user name line", utf8,
       mailbox + user + Key("PrintTypeMBNPasswordTicketKey", box),
       "@PJL SET HOLD=BOXSTORE\n@PJL SET HOLDTYPE=PRIVATE\n@PJL SET BOXNUMBER=12\r\n"
       "@PJL SET BOXENCRYPTKEY=\"<sealed:0042>\"\r\n", "report"},
      {"mailbox number cut to four bytes", utf8,
       Key("PrintTypeTicketKey", "5") + Key("PrintTypeMBNTicketKey", "123456"),
       "@PJL SET HOLD=BOXSTORE\n@PJL SET BOXNUMBER=1234\r\n", "report"},
      {"delayed print, job name from the document", utf8, delayed,
       "@PJL SET JOBNAME=\"report\"\r\n@PJL SET JOBATTR=\"@PRTM=1230\"\r\n", "report"},
      {"delayed print without time", utf8, Key("PrintTypeTicketKey", "4"), "", "report"},
      {"sample print, typed job name", utf8, sample, sampleLines, ""},
      {"document name chosen but emptied by validation", utf8,
       Key("PrintTypeTicketKey", "3") + Key("DocumentNameTypeTicketKey", "1"), "", ""},
      {"typed name chosen but none typed", utf8,
       Key("PrintTypeTicketKey", "3") + Key("DocumentNameTypeTicketKey", "2"), "", "report"},
      {"normal printing sends nothing", utf8, Key("PrintTypeTicketKey", "1") + user + typedName, "",
       "report"},
      {"no print type: user and typed name", utf8, user + typedName,
       "@PJL SET USERNAME=\"u1\"\r\n@PJL SET JOBNAME=\"Quarterly\"\r\n", ""},
      // The partial table has no mailbox and no delayed-print rows.
      {"partial table: mailbox", default04, mailbox, "", "report"},
      {"partial table: delayed print", default04, delayed, "@PJL SET JOBNAME=\"report\"\r\n",
       "report"},
      {"partial table: sample print", default04, sample, sampleLines, "report"},
      // Default04 counts only on a UTF-8 printer; without a PPD the full table applies.
      {"legacy printer listing Default04", legacy04, mailbox, mailboxLines, "report"},
      {"no PPD", "", mailbox, mailboxLines, "report"},
      // User and typed names in UTF-8 for a UTF-8 printer, else in Shift-JIS.
      {"names on a UTF-8 printer", utf8, kanaTicket,
       "@PJL SET HOLD=PROOF\n@PJL SET USERNAME=\"" + kana + "\"\r\n@PJL SET JOBNAME=\"" + kana +
       "\"\r\n", "report"},
      {"names on a legacy printer", legacy04, kanaTicket,
       "@PJL SET HOLD=PROOF\n@PJL SET USERNAME=\"\x83\x41\"\r\n@PJL SET JOBNAME=\"\x83\x41\"\r\n",
       "report"},
  };
  // clang-format on
  for (const auto& c : cases) {
    HeaderJob job;
    job.ppd = c.ppd;
    job.ticket = c.ticket;
    job.printTypeDocumentName = c.printTypeDocumentName;
    std::string out = RunPrintType(job);
    EXPECT_EQ(WithOpenedFields(out), c.expected) << c.name << "\n" << Visible(out);
  }
  ResetJobState();
}

}  // namespace
