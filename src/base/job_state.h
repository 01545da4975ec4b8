// Job identity buffers and job-wide flags, filled once before any output.
//
// Sizes include the terminating NUL. Modules read these; only the job flow,
// the name validation and the host-name lookup write them.
#pragma once

#include <csignal>
#include <cstdio>

constexpr size_t kStdUserNameSize = 766;        // 255 used in legacy mode
constexpr size_t kStdUserNameLegacySize = 255;
constexpr size_t kStdJBAUserNameSize = 97;      // 33 used in legacy mode
constexpr size_t kStdJBAUserNameLegacySize = 33;
constexpr size_t kStdDocumentNameSize = 255;
constexpr size_t kLayoutInfoSize = 255;
constexpr size_t kHostNameStrSize = 97;
constexpr size_t kIPAddressStrSize = 40;

extern char StdUserName[kStdUserNameSize];
extern char StdJBAUserName[kStdJBAUserNameSize];
extern char StdDocumentName[kStdDocumentNameSize];
extern char PTStdDocumentName[kStdDocumentNameSize];

extern char StdNUpInfo[kLayoutInfoSize];
extern char StdLayoutInfo[kLayoutInfoSize];
extern char StdLayoutDirectionInfo[kLayoutInfoSize];
extern char StdLayoutRowInfo[kLayoutInfoSize];
extern char StdLayoutColumnInfo[kLayoutInfoSize];
extern char StdPaperInfoRectOriginXKey[kLayoutInfoSize];
extern char StdPaperInfoRectOriginYKey[kLayoutInfoSize];
extern char StdPaperInfoRectHeightKey[kLayoutInfoSize];
extern char StdPaperInfoRectWidthKey[kLayoutInfoSize];
extern char StdAdobePaperInfoRectOriginXKey[kLayoutInfoSize];
extern char StdAdobePaperInfoRectOriginYKey[kLayoutInfoSize];
extern char StdAdobePaperInfoRectHeightKey[kLayoutInfoSize];
extern char StdAdobePaperInfoRectWidthKey[kLayoutInfoSize];

extern char HostNameStr[kHostNameStrSize];
extern char IPAddressStr[kIPAddressStrSize];

// Set by the signal handlers; sig_atomic_t is the signal-safe integer.
extern volatile sig_atomic_t CancelJob;         // SIGTERM seen
extern volatile sig_atomic_t CancelJobForPipe;  // SIGPIPE seen

// The open debug job copy, or nullptr.
extern FILE* gJobFilefp;

// Zeroes the layout and paper-rectangle buffers, in their fixed order.
void ZeroLayoutInfo();

// Puts every buffer and flag above back to its start value (tests run many
// jobs in one process). Does not close gJobFilefp.
void ResetJobState();
