// The job identity buffers as FilterMain leaves them: the user name and
// title converted to the printer's encoding and validated, the host name
// filled. Each job runs in a child process (FilterMain installs signal
// handlers and takes over stdout); the child sends the buffers back.
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "frame/job_flow.h"
#include "frame/job_state.h"
#include "identity/host_identity.h"

namespace {

struct Identity {
  std::string user, jbaUser, document, ptDocument, host;
};

void WriteField(int fd, const char* text) {
  uint32_t length = static_cast<uint32_t>(std::strlen(text));
  if (write(fd, &length, sizeof length) != sizeof length) _exit(3);
  if (write(fd, text, length) != static_cast<ssize_t>(length)) _exit(3);
}

bool ReadExact(int fd, void* buffer, size_t size) {
  char* p = static_cast<char*>(buffer);
  while (size > 0) {
    ssize_t n = read(fd, p, size);
    if (n <= 0) return false;
    p += n;
    size -= static_cast<size_t>(n);
  }
  return true;
}

bool ReadField(int fd, std::string* text) {
  uint32_t length = 0;
  if (!ReadExact(fd, &length, sizeof length)) return false;
  text->assign(length, '\0');
  return length == 0 || ReadExact(fd, &(*text)[0], length);
}

// Runs FilterMain on an empty PostScript file and returns its buffers.
bool RunJob(const std::string& ppd, const std::string& user, const std::string& title,
            const std::string& options, Identity* identity) {
  int channel[2];
  if (pipe(channel) != 0) return false;
  std::fflush(nullptr);
  pid_t pid = fork();
  if (pid < 0) return false;
  if (pid == 0) {
    close(channel[0]);
    int devNull = open("/dev/null", O_WRONLY);
    dup2(devNull, STDOUT_FILENO);
    dup2(devNull, STDERR_FILENO);
    setenv("PPD", ppd.c_str(), 1);
    ResetJobState();
    std::vector<std::string> args = {"pstozpjl", "7", user, title, "1", options, "/dev/null"};
    std::vector<char*> argv;
    for (std::string& arg : args) argv.push_back(&arg[0]);
    argv.push_back(nullptr);
    int status = FilterMain(7, argv.data());
    WriteField(channel[1], StdUserName);
    WriteField(channel[1], StdJBAUserName);
    WriteField(channel[1], StdDocumentName);
    WriteField(channel[1], PTStdDocumentName);
    WriteField(channel[1], HostNameStr);
    _exit(status);
  }
  close(channel[1]);
  bool ok = ReadField(channel[0], &identity->user) && ReadField(channel[0], &identity->jbaUser) &&
            ReadField(channel[0], &identity->document) &&
            ReadField(channel[0], &identity->ptDocument) && ReadField(channel[0], &identity->host);
  close(channel[0]);
  int status = 0;
  waitpid(pid, &status, 0);
  return ok && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

std::string Repeat(const std::string& piece, size_t times) {
  std::string out;
  for (size_t i = 0; i < times; ++i) out += piece;
  return out;
}

const std::string kUTF8PPD = std::string(ZPJL_FIXTURES) + "/ppd/text-utf8.ppd";
const std::string kShiftJISPPD = std::string(ZPJL_FIXTURES) + "/ppd/text-shiftjis.ppd";
const std::string kProductType = "com.korvanel.qd.jtz.printsettings.PrintTypeProductTypeTicketKey=";
const std::string kKana = "\xE3\x81\x82";
const std::string kSJISKana = "\x82\xA0";

}  // namespace

TEST(JobIdentity, NamesConvertedAndValidated) {
  struct Case {
    const char* name;
    const std::string& ppd;
    std::string user, title, options;
    Identity expected;  // host: filled in below
  };
  const Case cases[] = {
      {"UTF-8 plain", kUTF8PPD, "alice", "report", "", {"alice", "alice", "report", "report", ""}},
      {"UTF-8 long user: accounting name 32 units", kUTF8PPD, Repeat(kKana, 40), "t", "",
       {Repeat(kKana, 40), Repeat(kKana, 32), "t", "t", ""}},
      {"UTF-8 emoji-only user is unknown", kUTF8PPD, "\xF0\x9F\x98\x80", "t", "",
       {"UnknownUser", "UnknownUser", "t", "t", ""}},
      {"UTF-8 emoji dropped from the title", kUTF8PPD, "u", "a\xF0\x9F\x98\x80" "b", "",
       {"u", "u", "ab", "ab", ""}},
      {"UTF-8 long title cut by the buffer", kUTF8PPD, "u", std::string(300, 'd'), "",
       {"u", "u", std::string(254, 'd'), std::string(254, 'd'), ""}},
      {"UTF-8 product type 3: 64 units", kUTF8PPD, "u", Repeat(kKana, 80), kProductType + "3",
       {"u", "u", Repeat(kKana, 64), Repeat(kKana, 64), ""}},
      {"UTF-8 product type 2: tab empties the print type name", kUTF8PPD, "u", "a\tb",
       kProductType + "2", {"u", "u", "a\tb", "", ""}},
      {"Shift-JIS user converted", kShiftJISPPD, "\xE3\x83\xA6\xE3\x83\xBC\xE3\x82\xB6", "t", "",
       {"\x83\x86\x81\x5B\x83\x55", "\x83\x86\x81\x5B\x83\x55", "t", "", ""}},
      {"Shift-JIS spaces: unknown, accounting name raw", kShiftJISPPD, "   ", "t", "",
       {"UnknownUser", "   ", "t", "", ""}},
      {"Shift-JIS invalid UTF-8 user is unknown", kShiftJISPPD, "\xFF", "t", "",
       {"UnknownUser", "", "t", "", ""}},
      {"Shift-JIS 200-byte user: accounting name 32", kShiftJISPPD, std::string(200, 'u'), "t", "",
       {std::string(200, 'u'), std::string(32, 'u'), "t", "", ""}},
      {"Shift-JIS backslash and tilde", kShiftJISPPD, "u", "a\\b~c", "",
       {"u", "u", "a\\b~c", "", ""}},
      {"Shift-JIS title with a line feed", kShiftJISPPD, "u", "two\nlines", "",
       {"u", "u", "", "", ""}},
      {"UTF-8 title with a carriage return", kUTF8PPD, "u", "two\rlines", "",
       {"u", "u", "", "", ""}},
      {"Shift-JIS product type 2: cut to 12", kShiftJISPPD, "u", std::string(20, 'd'),
       kProductType + "2", {"u", "u", std::string(12, 'd'), std::string(12, 'd'), ""}},
      {"Shift-JIS product type 2: kana emptied for print type", kShiftJISPPD, "u", kKana + kKana,
       kProductType + "2", {"u", "u", kSJISKana + kSJISKana, "", ""}},
      {"Shift-JIS product type 3: kana kept", kShiftJISPPD, "u", kKana, kProductType + "3",
       {"u", "u", kSJISKana, kSJISKana, ""}},
  };
  char system[256] = {};
  ASSERT_EQ(gethostname(system, sizeof system - 1), 0);
  for (const Case& c : cases) {
    Identity identity;
    ASSERT_TRUE(RunJob(c.ppd, c.user, c.title, c.options, &identity)) << c.name;
    EXPECT_EQ(identity.user, c.expected.user) << c.name;
    EXPECT_EQ(identity.jbaUser, c.expected.jbaUser) << c.name;
    EXPECT_EQ(identity.document, c.expected.document) << c.name;
    EXPECT_EQ(identity.ptDocument, c.expected.ptDocument) << c.name;
    char host[kHostNameStrSize];
    CopyHostNameForPrinter(system, c.ppd == kUTF8PPD, host);
    EXPECT_EQ(identity.host, host) << c.name;
    EXPECT_FALSE(identity.host.empty()) << c.name;
  }
}
