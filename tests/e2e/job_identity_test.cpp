// Hostile user names and titles through the built filter: every one ends in
// a whole print stream and exit status 0. (No header line shows the names
// yet; their converted and validated values are checked in
// tests/unit/job_identity_test.cpp.)
#include "filter_runner.h"

namespace {

std::string Repeat(const std::string& piece, size_t times) {
  std::string out;
  for (size_t i = 0; i < times; ++i) out += piece;
  return out;
}

TEST(JobIdentityNames, HostileNamesStillGiveAWholeStream) {
  struct Case {
    const char* name;
    std::string user;
    std::string title;
  };
  const Case cases[] = {
      {"invalid UTF-8", "\xFF\xFE", "\xC0\x80"},
      {"cut UTF-8", "user\xE3\x81", "title\xE3"},
      {"emoji only", "\xF0\x9F\x98\x80", "\xF0\x9F\x98\x80"},
      {"very long", std::string(5000, 'u'), std::string(5000, 't')},
      // Two-byte Shift-JIS and three-byte UTF-8 characters cut at the
      // end of full buffers.
      {"long multi-byte", Repeat("\xE3\x81\x82", 1000), Repeat("\xE6\xBC\xA2", 1000)},
      {"control bytes", "\x01\x02\t", "\x1B%-12345X"},
      {"format conversions", "%s%n%x", "%s%n%x"},
      {"empty", "", ""},
      {"line breaks", "a\nb", "c\r\nd"},
  };
  for (const char* ppd : {"ppd/text-utf8.ppd", "ppd/text-shiftjis.ppd"}) {
    for (const Case& c : cases) {
      FilterJob job;
      job.ppd = Fixture(ppd);
      job.user = c.user;
      job.title = c.title;
      job.options = "com.korvanel.qd.jtz.printsettings.PrintTypeProductTypeTicketKey=2";
      job.input = "%!PS\nshowpage\n";
      FilterRun run = RunFilter(job);
      EXPECT_EQ(run.status, 0) << ppd << ": " << c.name << "\n" << run.err;
      EXPECT_EQ(run.out.compare(0, kUEL.size(), kUEL), 0) << ppd << ": " << c.name;
      ASSERT_GE(run.out.size(), kTrailer.size()) << ppd << ": " << c.name;
      EXPECT_EQ(run.out.substr(run.out.size() - kTrailer.size()), kTrailer)
          << ppd << ": " << c.name;
      EXPECT_EQ(run.err.find("ERROR"), std::string::npos) << ppd << ": " << c.name;
    }
  }
}

}  // namespace
