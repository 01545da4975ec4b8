// From the IPP attributes of a job to the filter's arguments and ticket.
//
// The printer application knows a job by its IPP attributes; the filter
// knows it by the CUPS filter arguments (user, title, copies, options) and
// the print dialog's ticket keys among the options. One table turns the
// first into the second, so the README and the manual page can list it.
#pragma once

#include <string>
#include <utility>
#include <vector>

// What a printer offers, read from its PPD (only what the mapping needs).
struct PrinterProfile {
  bool colorDevice = false;
  bool hasColorModeOption = false;           // KRColorMode
  std::vector<std::string> stapleChoices;    // KRStaple
  std::vector<std::string> punchChoices;     // KRPunch
  std::vector<std::string> punchHoleChoices; // KRNumPunchHoles
  std::vector<std::string> signatureChoices; // KRSignature
};

// The IPP side of one job, already read out of the request.
struct JobRequest {
  std::string user;                 // the requesting user
  std::string jobName;              // job-name
  int copies = 1;                   // copies
  std::string sides;                // sides
  std::string colorMode;            // print-color-mode
  std::string pageSize;             // media / media-col as the PPD's PageSize name
  int pageWidthPoints = 0;          // that size, for the watermark's placement
  int pageLengthPoints = 0;
  int orientation = 0;              // orientation-requested (0: not given)
  std::vector<int> finishings;      // finishings (enum values)
  std::string accountId;            // job-account-id
  std::string accountingUserId;     // job-accounting-user-id
  std::string sealedPassword;       // job-password, already sealed for the printer
  std::string watermarkText;        // zpjl-watermark-text
  std::string watermarkPages;       // zpjl-watermark-pages: every-page or first-page
};

using TicketOptions = std::vector<std::pair<std::string, std::string>>;

// The filter's arguments 2 to 5, before the options are encoded.
struct FilterArguments {
  std::string user;
  std::string title;
  int copies = 1;
  TicketOptions options;        // everything, for pstozpjl
  TicketOptions layoutOptions;  // the standard and PPD options only, for pstops
};

// The filter arguments for a job, by the one mapping table.
FilterArguments MapJobToTicket(const JobRequest& job, const PrinterProfile& printer);

// The CUPS option string (argument 5) for the options, readable by
// cupsParseOptions whatever bytes the values hold.
std::string EncodeTicketOptions(const TicketOptions& options);
