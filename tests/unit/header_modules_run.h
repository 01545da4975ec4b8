// Test support for the print type and accounting modules: runs their part
// of one job in-process and returns what they wrote to the print stream.
//
//   HeaderJob job;
//   job.ppd = "modules-utf8-default04.ppd";
//   job.ticket = Key("PrintTypeTicketKey", "2") + ...;
//   std::string lines = RunPrintType(job);
#pragma once

#include <string>
#include <vector>

#include "base/fixed_text.h"
#include "base/job_state.h"
#include "engine/condition.h"
#include "modules/accounting/accounting.h"
#include "modules/print_type/print_type.h"
#include "test_support.h"

// One job's PPD (a fixture name under ppd/, empty for none), ticket and
// identity buffers as the job flow leaves them (converted and validated).
struct HeaderJob {
  std::string ppd = "modules-utf8.ppd";
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
  UsePPD(job.ppd);
  CopyText(StdUserName, sizeof StdUserName, job.userName.c_str());
  CopyText(StdJBAUserName, sizeof StdJBAUserName, job.jbaUserName.c_str());
  CopyText(StdDocumentName, sizeof StdDocumentName, job.documentName.c_str());
  CopyText(PTStdDocumentName, sizeof PTStdDocumentName, job.printTypeDocumentName.c_str());
  CopyText(HostNameStr, sizeof HostNameStr, job.hostName.c_str());
  CopyText(IPAddressStr, sizeof IPAddressStr, job.ipAddress.c_str());
  PrintTypeInializeDescriptionTableFromFilter();
  JBAInializeDescriptionTableFromFilter();
  FilterArguments args(job.ticket);
  PrintTypeGetTicketFromPDE(args.argv);
  JBAGetTicketFromPDE(args.argv);
}

// What each module writes into the job header for `job`.
inline std::string RunPrintType(const HeaderJob& job) {
  PrepareHeaderModules(job);
  FilterArguments args("");
  return CaptureStdout([&] { PrintTypeOutputZPJLCommandFromFilter(args.argv); });
}
inline std::string RunAccounting(const HeaderJob& job) {
  PrepareHeaderModules(job);
  FilterArguments args("");
  return CaptureStdout([&] { JBAOutputZPJLCommandFromFilter(args.argv); });
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
