// Test support for the print type and accounting modules: runs their part
// of one job in-process and returns what they wrote to the print stream.
//
//   HeaderJob job;
//   job.ppd = "modules-utf8-default04.ppd";
//   job.ticket = "com.korvanel.qd.jtz.printsettings.PrintTypeTicketKey=2 ...";
//   std::string lines = RunPrintType(job);
#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>
#include <vector>

#include "engine/condition.h"
#include "frame/fixed_text.h"
#include "frame/job_state.h"
#include "modules/accounting/accounting.h"
#include "modules/print_type/print_type.h"

namespace modrun {

inline std::string FixturePath(const std::string& relative) {
  const char* root = std::getenv("ZPJL_FIXTURES");
  return std::string(root != nullptr ? root : ZPJL_FIXTURES) + "/" + relative;
}

// Runs `body` with file descriptor 1 sent to a temporary file; returns the
// bytes written to stdout meanwhile.
inline std::string CaptureStdout(const std::function<void()>& body) {
  std::fflush(stdout);
  FILE* sink = std::tmpfile();
  if (sink == nullptr) return "<no temporary file>";
  int saved = dup(STDOUT_FILENO);
  dup2(fileno(sink), STDOUT_FILENO);
  body();
  std::fflush(stdout);
  dup2(saved, STDOUT_FILENO);
  close(saved);
  std::string bytes;
  std::rewind(sink);
  char chunk[4096];
  size_t n;
  while ((n = std::fread(chunk, 1, sizeof chunk, sink)) > 0) bytes.append(chunk, n);
  std::fclose(sink);
  return bytes;
}

// One job's identity and ticket. The identity buffers are set as the job
// flow leaves them (after conversion and validation).
struct HeaderJob {
  std::string ppd;  // fixture name under ppd/, empty for no PPD
  std::string ticket;
  std::string userName = "bob";
  std::string jbaUserName = "bob";
  std::string documentName = "report";
  std::string printTypeDocumentName = "report";
  std::string hostName = "mac1";
  std::string ipAddress;  // IPAddressStr, which the job flow leaves empty
};

// Sets up the job state for `job`, binds both modules' tables and reads the
// ticket into their records.
inline void PrepareHeaderModules(const HeaderJob& job) {
  ResetJobState();
  if (job.ppd.empty()) {
    unsetenv("PPD");
  } else {
    setenv("PPD", FixturePath("ppd/" + job.ppd).c_str(), 1);
  }
  CopyText(StdUserName, sizeof StdUserName, job.userName.c_str());
  CopyText(StdJBAUserName, sizeof StdJBAUserName, job.jbaUserName.c_str());
  CopyText(StdDocumentName, sizeof StdDocumentName, job.documentName.c_str());
  CopyText(PTStdDocumentName, sizeof PTStdDocumentName, job.printTypeDocumentName.c_str());
  CopyText(HostNameStr, sizeof HostNameStr, job.hostName.c_str());
  CopyText(IPAddressStr, sizeof IPAddressStr, job.ipAddress.c_str());
  PrintTypeInializeDescriptionTableFromFilter();
  JBAInializeDescriptionTableFromFilter();
  static char name[] = "pstozpjl", id[] = "1", user[] = "bob", title[] = "report", copies[] = "1";
  std::string ticket = job.ticket;
  char* argv[] = {name, id, user, title, copies, ticket.data(), nullptr};
  PrintTypeGetTicketFromPDE(argv);
  JBAGetTicketFromPDE(argv);
}

// What each module writes into the job header for `job`.
inline std::string RunPrintType(const HeaderJob& job) {
  PrepareHeaderModules(job);
  static char name[] = "pstozpjl";
  char* argv[] = {name, nullptr};
  return CaptureStdout([&] { PrintTypeOutputZPJLCommandFromFilter(argv); });
}

inline std::string RunAccounting(const HeaderJob& job) {
  PrepareHeaderModules(job);
  static char name[] = "pstozpjl";
  char* argv[] = {name, nullptr};
  return CaptureStdout([&] { JBAOutputZPJLCommandFromFilter(argv); });
}

// Indexes of the rows of `table` whose conditions hold now.
inline std::vector<int> FiringRows(const FormatEntry* table, int32_t count) {
  std::vector<int> rows;
  for (int32_t i = 0; i < count; ++i) {
    if (table[i].conditions == nullptr || ConditionCompare(table[i].conditions) == 1) {
      rows.push_back(i);
    }
  }
  return rows;
}

// Control bytes made visible, for failure messages.
inline std::string ShowControlBytes(const std::string& bytes) {
  std::string out;
  for (unsigned char c : bytes) {
    if (c == '\r') {
      out += "\\r";
    } else if (c == '\n') {
      out += "\\n\n";
    } else if (c == 27) {
      out += "<ESC>";
    } else {
      out += static_cast<char>(c);
    }
  }
  return out;
}

}  // namespace modrun
