#include "base/job_state.h"

#include "base/fixed_text.h"

char StdUserName[kStdUserNameSize];
char StdJBAUserName[kStdJBAUserNameSize];
char StdDocumentName[kStdDocumentNameSize];
char PTStdDocumentName[kStdDocumentNameSize];

char StdNUpInfo[kLayoutInfoSize];
char StdLayoutInfo[kLayoutInfoSize];
char StdLayoutDirectionInfo[kLayoutInfoSize];
char StdLayoutRowInfo[kLayoutInfoSize];
char StdLayoutColumnInfo[kLayoutInfoSize];
char StdPaperInfoRectOriginXKey[kLayoutInfoSize];
char StdPaperInfoRectOriginYKey[kLayoutInfoSize];
char StdPaperInfoRectHeightKey[kLayoutInfoSize];
char StdPaperInfoRectWidthKey[kLayoutInfoSize];
char StdAdobePaperInfoRectOriginXKey[kLayoutInfoSize];
char StdAdobePaperInfoRectOriginYKey[kLayoutInfoSize];
char StdAdobePaperInfoRectHeightKey[kLayoutInfoSize];
char StdAdobePaperInfoRectWidthKey[kLayoutInfoSize];

char HostNameStr[kHostNameStrSize];
char IPAddressStr[kIPAddressStrSize];

volatile sig_atomic_t CancelJob = 0;
volatile sig_atomic_t CancelJobForPipe = 0;

FILE* gJobFilefp = nullptr;

void ZeroLayoutInfo() {
  char* const buffers[] = {
      StdNUpInfo,
      StdLayoutInfo,
      StdLayoutDirectionInfo,
      StdLayoutRowInfo,
      StdLayoutColumnInfo,
      StdPaperInfoRectOriginXKey,
      StdPaperInfoRectOriginYKey,
      StdPaperInfoRectHeightKey,
      StdPaperInfoRectWidthKey,
      StdAdobePaperInfoRectOriginXKey,
      StdAdobePaperInfoRectOriginYKey,
      StdAdobePaperInfoRectHeightKey,
      StdAdobePaperInfoRectWidthKey,
  };
  for (char* buffer : buffers) ZeroText(buffer, kLayoutInfoSize);
}

void ResetJobState() {
  ZeroText(StdUserName, sizeof StdUserName);
  ZeroText(StdJBAUserName, sizeof StdJBAUserName);
  ZeroText(StdDocumentName, sizeof StdDocumentName);
  ZeroText(PTStdDocumentName, sizeof PTStdDocumentName);
  ZeroLayoutInfo();
  ZeroText(HostNameStr, sizeof HostNameStr);
  ZeroText(IPAddressStr, sizeof IPAddressStr);
  CancelJob = 0;
  CancelJobForPipe = 0;
}
