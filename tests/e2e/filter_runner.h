// Runs a built filter as CUPS would and captures what it writes.
//
//   FilterJob job;
//   job.ppd = Fixture("ppd/utf8-color.ppd");
//   job.options = "com.korvanel.qd.jtz.printsettings.X=1";
//   job.input = "%!PS\n...";
//   FilterRun run = RunFilter(job);
//   EXPECT_TRUE(SameStream(expected, run.out));
#pragma once

#include <sys/types.h>

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "test_support.h"

struct FilterJob {
  std::string filter = ZPJL_FILTER;  // a path, or a program found on PATH
  std::optional<std::string> ppd;  // no value: PPD is unset
  std::string jobId = "42";
  std::string user = "alice";
  std::string title = "report";
  std::string copies = "1";
  std::string options;
  std::string input;                 // fed on standard input
  std::optional<std::string> file;   // the optional sixth argument
  std::map<std::string, std::optional<std::string>> env;  // set, or unset when no value
  std::optional<std::vector<std::string>> argv;  // replaces the arguments after argv[0]
};

struct FilterRun {
  std::string out;
  std::string err;
  int status = -1;      // exit status, or -1 when killed by a signal
  int termSignal = 0;   // the signal that killed it
  long maxRssKb = 0;    // the filter's peak resident memory
};

// A started filter process, for tests that act while the job runs.
class FilterProcess {
 public:
  explicit FilterProcess(const FilterJob& job);
  ~FilterProcess();
  FilterProcess(const FilterProcess&) = delete;
  FilterProcess& operator=(const FilterProcess&) = delete;

  // Writes to the filter's standard input; false once it stopped reading.
  bool Write(const std::string& bytes);
  void CloseInput();
  // Stops reading the filter's standard output (its next write gets SIGPIPE).
  void CloseOutput();
  // Hands standard output to `sink` as it arrives instead of keeping it in
  // FilterRun::out (for jobs too big to hold).
  void StreamOutput(std::function<void(const char* bytes, size_t length)> sink);
  // Reads until `text` appears on stderr; false after `seconds`.
  bool WaitForError(const std::string& text, int seconds = 20);
  void Signal(int signalNumber);
  // Closes the input, reads everything and waits for the exit.
  FilterRun Finish();

 private:
  void Pump(int timeoutMs);

  pid_t pid_ = -1;
  int in_ = -1;
  int out_ = -1;
  int err_ = -1;
  FilterRun run_;
  std::function<void(const char*, size_t)> outputSink_;
};

FilterRun RunFilter(const FilterJob& job);

std::string ReadFile(const std::string& path);
// The names in a directory, without those that start with a dot.
std::vector<std::string> FilesIn(const std::string& dir);

// The host name a job from this computer carries in its "@CNAM" line: the
// local name, cut to 32 characters for a UTF-8 printer and to 96 bytes
// otherwise, or "UnknownHost" when the computer has none.
std::string ClientHostName(bool utf8Printer);

// Equal streams, or a failure that shows both visibly and the first difference.
::testing::AssertionResult SameStream(const std::string& expected, const std::string& actual);

// The three parts of a print stream in pass-through mode.
struct StreamParts {
  std::string header;   // through "@PJL ENTER LANGUAGE=POSTSCRIPT\n"
  std::string body;     // the PostScript, up to the trailer
  std::string trailer;  // ESC "%-12345X@PJL EOJ\n"
};
StreamParts SplitStream(const std::string& stream);
