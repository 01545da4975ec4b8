// The job identity as the header shows it: the print type job name, the
// user name (@LUNA), the accounting name (@JOAU) and the document name
// (@ACNA), converted to the printer's encoding and validated, for plain and
// for hostile user names and titles.
#include <string>

#include "filter_runner.h"

namespace {

// The header lines that carry the identity.
std::string IdentityLines(const std::string& header) {
  std::string lines;
  for (size_t at = 0, end; at < header.size(); at = end + 1) {
    end = std::min(header.find('\n', at), header.size());
    const std::string line = header.substr(at, end + 1 - at);
    for (const char* part : {"@PJL SET JOBNAME=", "@LUNA=", "@JOAU=", "@ACNA="}) {
      if (line.find(part) != std::string::npos) {
        lines += line;
        break;
      }
    }
  }
  return lines;
}

// The identity lines for these values; an empty job or document name
// leaves its line out, an empty accounting name cuts its line after the
// opening quote.
std::string Identity(const std::string& jobName, const std::string& user, const std::string& owner,
                     const std::string& document) {
  return (jobName.empty() ? "" : "@PJL SET JOBNAME=\"" + jobName + "\"\r\n") +
         Attr("LUNA=" + user) +
         (owner.empty() ? "@PJL SET JOBATTR=\"" : AttrCRLF("JOAU=" + owner)) +
         (document.empty() ? "" : AttrCRLF("ACNA=" + document));
}

TEST(JobIdentity, NamesConvertedAndValidated) {
  const char* utf8 = "ppd/text-utf8.ppd";
  const char* sjis = "ppd/text-shiftjis.ppd";
  const std::string kana = "\xE3\x81\x82", sjisKana = "\x82\xA0", emoji = "\xF0\x9F\x98\x80";
  const std::string unknown = "UnknownUser";
  const struct {
    const char* name;
    const char* ppd;
    std::string user, title, productType, expected;
  } cases[] = {
      {"UTF-8 plain", utf8, "alice", "report", "", Identity("report", "alice", "alice", "report")},
      {"UTF-8 long user: accounting name 32 units", utf8, Repeat(kana, 40), "t", "",
       Identity("t", Repeat(kana, 40), Repeat(kana, 32), "t")},
      {"UTF-8 emoji-only user is unknown", utf8, emoji, "t", "",
       Identity("t", unknown, unknown, "t")},
      {"UTF-8 product type 3: 64 units", utf8, "u", Repeat(kana, 80), "3",
       Identity(Repeat(kana, 64), "u", "u", Repeat(kana, 64))},
      {"UTF-8 product type 2: a tab empties the job name", utf8, "u", "a\tb", "2",
       Identity("", "u", "u", "a\tb")},
      {"UTF-8 title with a carriage return", utf8, "u", "two\rlines", "",
       Identity("", "u", "u", "")},
      {"UTF-8 invalid", utf8, "\xFF\xFE", "\xC0\x80", "", Identity("", unknown, unknown, "")},
      {"UTF-8 format conversions", utf8, "%s%n%x", "%s%n%x", "",
       Identity("%s%n%x", "%s%n%x", "%s%n%x", "%s%n%x")},
      {"UTF-8 empty", utf8, "", "", "", Identity("", unknown, unknown, "")},
      {"UTF-8 spaces are unknown", utf8, "   ", "t", "",
       Identity("t", unknown, unknown, "t")},
      {"Shift-JIS user converted", sjis, "\xE3\x83\xA6\xE3\x83\xBC\xE3\x82\xB6", "t", "",
       Identity("", "\x83\x86\x81\x5B\x83\x55", "\x83\x86\x81\x5B\x83\x55", "t")},
      {"Shift-JIS spaces: unknown, accounting name raw", sjis, "   ", "t", "",
       Identity("", unknown, "   ", "t")},
      {"Shift-JIS invalid UTF-8 user is unknown", sjis, "\xFF", "t", "",
       Identity("", unknown, "", "t")},
      {"Shift-JIS 200-byte user: accounting name 32", sjis, std::string(200, 'u'), "t", "",
       Identity("", std::string(200, 'u'), std::string(32, 'u'), "t")},
      {"Shift-JIS product type 2: cut to 12", sjis, "u", std::string(20, 'd'), "2",
       Identity(std::string(12, 'd'), "u", "u", std::string(12, 'd'))},
      {"Shift-JIS product type 2: kana emptied for the job name", sjis, "u", kana + kana, "2",
       Identity("", "u", "u", sjisKana + sjisKana)},
      {"Shift-JIS product type 3: kana kept", sjis, "u", kana, "3",
       Identity(sjisKana, "u", "u", sjisKana)},
      {"Shift-JIS very long", sjis, std::string(5000, 'u'), std::string(5000, 't'), "",
       Identity("", std::string(254, 'u'), std::string(32, 'u'), std::string(254, 't'))},
      {"Shift-JIS long multi-byte", sjis, Repeat(kana, 1000), Repeat("\xE6\xBC\xA2", 1000), "",
       Identity("", Repeat(sjisKana, 127), Repeat(sjisKana, 16), Repeat("\x8A\xBF", 127))},
  };
  for (const auto& c : cases) {
    FilterJob job;
    job.ppd = Fixture(c.ppd);
    job.user = c.user;
    job.title = c.title;
    // A sample print sends the print type job name from the document name.
    job.options =
        Key("PrintTypeTicketKey", "3") + Key("PrintTypeUserNameTicketKey", "u") +
        Key("DocumentNameTypeTicketKey", "1") +
        (c.productType.empty() ? "" : Key("PrintTypeProductTypeTicketKey", c.productType));
    job.input = "%!PS\nshowpage\n";
    FilterRun run = RunFilter(job);
    EXPECT_EQ(run.status, 0) << c.name << "\n" << run.err;
    EXPECT_EQ(run.err.find("ERROR"), std::string::npos) << c.name << "\n" << run.err;
    EXPECT_EQ(run.out.substr(run.out.size() - std::min(run.out.size(), kTrailer.size())), kTrailer)
        << c.name;
    EXPECT_TRUE(SameStream(c.expected, IdentityLines(SplitStream(run.out).header))) << c.name;
  }
}

}  // namespace
