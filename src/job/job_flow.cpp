#include "job/job_flow.h"

#include <csignal>
#include <cstdio>
#include <cstring>

#include "base/fixed_text.h"
#include "base/job_state.h"
#include "base/ppd_queries.h"
#include "identity/host_identity.h"
#include "job/feature_insertion.h"
#include "job/job_copy.h"
#include "job/job_header.h"
#include "job/module_dispatch.h"
#include "job/ps_stream.h"
#include "platform/job_ppd.h"
#include "ticket/name_validation.h"
#include "ticket/text_encoding.h"

void ResetProcessState() {
  ForgetJobPPD();
  ResetJobState();
  ResetModuleState();
}

void SignalHandler(int) { CancelJob = 1; }

void SignalPipeHandler(int) { CancelJobForPipe = 1; }

namespace {

// Fills StdUserName and StdJBAUserName from argument 2, converted to the
// printer's encoding; returns UTF-8 mode.
bool ReadUserName(const char* user) {
  bool utf8 = IsUTF8PrinterEncoding();
  size_t nameSize = utf8 ? kStdUserNameSize : kStdUserNameLegacySize;
  size_t jbaSize = utf8 ? kStdJBAUserNameSize : kStdJBAUserNameLegacySize;
  ZeroText(StdUserName, nameSize);
  if (utf8) {
    ConvertUTF8ToEncodingForUTF8(user, StdUserName, static_cast<int32_t>(nameSize));
  } else {
    ConvertUTF8ToEncoding(user, StdUserName, static_cast<int32_t>(nameSize));
  }
  ZeroText(StdJBAUserName, jbaSize);
  CopyTextPrefix(StdJBAUserName, jbaSize, StdUserName, jbaSize - 1);
  return utf8;
}

// Converts and checks the title (argument 3). A title holding a line break
// leaves both document names empty.
void ReadDocumentName(char* argv[], bool utf8) {
  ZeroText(StdDocumentName, sizeof StdDocumentName);
  ZeroText(PTStdDocumentName, sizeof PTStdDocumentName);
  const char* title = argv[3];
  if (std::strchr(title, '\r') != nullptr || std::strchr(title, '\n') != nullptr) return;
  const int32_t size = static_cast<int32_t>(kStdDocumentNameSize);
  if (utf8) {
    ConvertUTF8ToEncodingForUTF8(title, StdDocumentName, size);
    ConvertUTF8ToEncodingForUTF8(title, PTStdDocumentName, size);
    InvalidateStdDocumentNameForProductType(argv);
    InvalidatePrintTypeDocumentNameForProductType(argv);
  } else {
    ConvertUTF8ToEncoding(title, StdDocumentName, size);
    InvalidateStdDocumentNameForProductType(argv);
  }
}

bool UsesFeatureInsertionMode() {
  return PPDAttrEquals(JobPPD(), "KRPSDecompMode", "1");
}

}  // namespace

int FilterMain(int argc, char* argv[]) {
  if (argc < 6 || argc > 7) {
    fputs("Usage: pstozpjl job-id user title copies options [file]\n", stderr);
    return 1;
  }
  // One buffer for the whole print stream. The job's own lines arrive in
  // runs of many kilobytes, which the stream writes past the buffer in whole
  // buffer lengths, so a small buffer copies little and costs little memory.
  setvbuf(stdout, nullptr, _IOFBF, 16 * 1024);

  bool utf8 = ReadUserName(argv[2]);
  ZeroLayoutInfo();
  signal(SIGTERM, SignalHandler);
  signal(SIGPIPE, SignalPipeHandler);
  InvalidateStdUserName();
  ReadDocumentName(argv, utf8);
  InializeDescriptionTable();

  char jobCopyPath[kJobCopyPathSize];
  OpenJobCopy(jobCopyPath, sizeof jobCopyPath);

  ZeroText(HostNameStr, sizeof HostNameStr);
  ZeroText(IPAddressStr, sizeof IPAddressStr);
  getHostName(HostNameStr);
  setbuf(stderr, nullptr);

  if (GetTicketFromPDE(argv) == 1) OutputZPJLCommand(argv);
  if (UsesFeatureInsertionMode()) {
    OutputPSStreamtoFileandInsertPJLforFeaturePDE(argc, argv);
  } else {
    OutputPSStream(argc, argv);
  }
  OutputZPJLCommandFromArray(argv, prtFmtTableZPJLTrailer, numFmtTableZPJLTrailer);
  fflush(stdout);
  CloseJobCopy(jobCopyPath);
  return CancelJobForPipe == 1 ? 1 : 0;
}
