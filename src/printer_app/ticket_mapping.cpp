#include "printer_app/ticket_mapping.h"

#include <algorithm>
#include <cctype>

namespace {

const std::string kDialogPrefix = "com.korvanel.qd.jtz.printsettings.";

void SetKey(FilterArguments& out, const std::string& suffix, const std::string& value) {
  out.options.emplace_back(kDialogPrefix + suffix, value);
}

// A PPD option: the filter reads it from the ticket and pstops writes its
// code into the PostScript, as under a CUPS queue.
void SetPPDOption(FilterArguments& out, const std::string& name, const std::string& value) {
  out.options.emplace_back(name, value);
  out.layoutOptions.emplace_back(name, value);
}

bool Offers(const std::vector<std::string>& choices, const std::string& choice) {
  return std::find(choices.begin(), choices.end(), choice) != choices.end();
}

void ApplyUser(const JobRequest& job, const PrinterProfile&, FilterArguments& out) {
  out.user = job.user;
}

void ApplyJobName(const JobRequest& job, const PrinterProfile&, FilterArguments& out) {
  out.title = job.jobName;
}

void ApplyCopies(const JobRequest& job, const PrinterProfile&, FilterArguments& out) {
  out.copies = job.copies > 0 ? job.copies : 1;
  if (out.copies > 1) {
    out.options.emplace_back("com.apple.print.PrintSettings.PMCopies..n.",
                             std::to_string(out.copies));
    out.options.emplace_back("collate", "true");
  }
}

void ApplySides(const JobRequest& job, const PrinterProfile&, FilterArguments& out) {
  if (job.sides.empty()) return;
  SetPPDOption(out, "sides", job.sides);
}

void ApplyColorMode(const JobRequest& job, const PrinterProfile& printer, FilterArguments& out) {
  if (job.colorMode.empty() || !printer.hasColorModeOption) return;
  const bool color = printer.colorDevice && job.colorMode == "color";
  SetPPDOption(out, "KRColorMode", color ? "Color" : "Black");
}

void ApplyMedia(const JobRequest& job, const PrinterProfile&, FilterArguments& out) {
  if (!job.pageSize.empty()) SetPPDOption(out, "media", job.pageSize);
}

void ApplyOrientation(const JobRequest& job, const PrinterProfile&, FilterArguments& out) {
  if (job.orientation >= 3 && job.orientation <= 6)
    SetPPDOption(out, "orientation-requested", std::to_string(job.orientation));
}

// IPP "finishings" values and the PPD choices they select; a value takes
// effect only when the printer's PPD offers its choice.
struct FinishingRow {
  int ipp;
  const char* option;
  const char* choice;
  const char* holes;  // KRNumPunchHoles for the punch rows, else nullptr
};

const FinishingRow kFinishingRows[] = {
    {4, "KRStaple", "UpperLeftSingle", nullptr},      // staple
    {20, "KRStaple", "UpperLeftSingle", nullptr},     // staple-top-left
    {22, "KRStaple", "UpperRightSingle", nullptr},    // staple-top-right
    {28, "KRStaple", "LeftDouble", nullptr},          // staple-dual-left
    {29, "KRStaple", "TopDouble", nullptr},           // staple-dual-top
    {30, "KRStaple", "RightDouble", nullptr},         // staple-dual-right
    {8, "KRStaple", "SaddleStaple", nullptr},         // saddle-stitch
    {5, "KRPunch", "Left", nullptr},                  // punch
    {74, "KRPunch", "Left", "2Holes"},                // punch-dual-left
    {75, "KRPunch", "Top", "2Holes"},                 // punch-dual-top
    {76, "KRPunch", "Right", "2Holes"},               // punch-dual-right
    {78, "KRPunch", "Left", "3Holes"},                // punch-triple-left
    {79, "KRPunch", "Top", "3Holes"},                 // punch-triple-top
    {80, "KRPunch", "Right", "3Holes"},               // punch-triple-right
    {82, "KRPunch", "Left", "4Holes"},                // punch-quad-left
    {83, "KRPunch", "Top", "4Holes"},                 // punch-quad-top
    {84, "KRPunch", "Right", "4Holes"},               // punch-quad-right
    {13, "KRSignature", "LeftSigCenterStaple", nullptr},  // booklet-maker
    {10, "KRSignature", "LeftSigFold", nullptr},          // fold
    {93, "KRSignature", "LeftSigFold", nullptr},          // fold-half
};

const std::vector<std::string>& ChoicesOf(const PrinterProfile& printer, const std::string& option) {
  if (option == "KRStaple") return printer.stapleChoices;
  if (option == "KRPunch") return printer.punchChoices;
  return printer.signatureChoices;
}

void ApplyFinishings(const JobRequest& job, const PrinterProfile& printer, FilterArguments& out) {
  for (int value : job.finishings) {
    for (const FinishingRow& row : kFinishingRows) {
      if (row.ipp != value || !Offers(ChoicesOf(printer, row.option), row.choice)) continue;
      SetPPDOption(out, row.option, row.choice);
      if (row.holes != nullptr && Offers(printer.punchHoleChoices, row.holes))
        SetPPDOption(out, "KRNumPunchHoles", row.holes);
    }
  }
}

// Accounting on the user's own settings: the account, and the accounting
// user when it differs from the login user. The user-ID key is always
// present, so the accounting module sends one owner line.
void ApplyAccounting(const JobRequest& job, const PrinterProfile&, FilterArguments& out) {
  if (job.accountId.empty() && job.accountingUserId.empty()) return;
  SetKey(out, "JBAManageTypeListTicketKey", "2");
  SetKey(out, "JBAUserSettingRadioBtnTicket", "1");
  SetKey(out, "JBAInfoListTicketKey", "0");
  SetKey(out, "JBAUserIDListCtrlTicket", job.accountingUserId.empty() ? "1" : "2");
  SetKey(out, "JBAUserIDTextEditTicket", job.accountingUserId);
  if (!job.accountId.empty()) SetKey(out, "JBAAccountIDTextEditTicket", job.accountId);
}

// Secure print: the printer holds the job until its owner enters the
// password. The password arrives already sealed for the printer; the
// filter passes a sealed field on as it is.
void ApplySecurePrint(const JobRequest& job, const PrinterProfile&, FilterArguments& out) {
  if (job.sealedPassword.empty()) return;
  SetKey(out, "PrintTypeTicketKey", "2");
  SetKey(out, "PrintTypeUserNameTicketKey", job.user);
  SetKey(out, "PrintTypePasswordTicketKey", job.sealedPassword);
  SetKey(out, "DocumentNameTypeTicketKey", "1");
}

// The watermark's line of text, centred on the page at 45 degrees in
// grey; its width is estimated from the font's average glyph width.
constexpr int kWatermarkFontSize = 48;
constexpr size_t kWatermarkTextMax = 60;  // the filter draws it in a 100-byte line

void ApplyWatermark(const JobRequest& job, const PrinterProfile&, FilterArguments& out) {
  if (job.watermarkText.empty()) return;
  // The filter makes a PostScript string of a bracketed text, escaping
  // what the text holds.
  const std::string token = "(" + job.watermarkText.substr(0, kWatermarkTextMax) + ")";
  const int width = static_cast<int>(job.watermarkText.size()) * kWatermarkFontSize * 55 / 100;
  SetKey(out, "WMARKNameTicket", "ipp-watermark");
  SetKey(out, "WMARKTypeTicket", "0");
  SetKey(out, "WMARKOnlyFirstTicket", job.watermarkPages == "first-page" ? "1" : "0");
  SetKey(out, "WMARKTextTicket", token);
  SetKey(out, "WMARKOrientationTicket", "1");
  SetKey(out, "WMARKPaperWidthTicket", std::to_string(job.pageWidthPoints));
  SetKey(out, "WMARKPaperHeightTicket", std::to_string(job.pageLengthPoints));
  SetKey(out, "WMARKFontTicket", "Helvetica-Bold");
  SetKey(out, "WMARKFontSizeTicket", std::to_string(kWatermarkFontSize));
  SetKey(out, "WMARKColorRTicket", "0.5");
  SetKey(out, "WMARKColorGTicket", "0.5");
  SetKey(out, "WMARKColorBTicket", "0.5");
  SetKey(out, "WMARKAngleTicket", "45");
  SetKey(out, "WMARKDensityTicket", "100");
  SetKey(out, "WMARKWidthTicket", std::to_string(width));
  SetKey(out, "WMARKHeightTicket", std::to_string(kWatermarkFontSize));
  SetKey(out, "WMARKhOffsetTicket", "0");
  SetKey(out, "WMARKvOffsetTicket", "0");
}

// One row of the mapping: an IPP attribute, the ticket keys it sets (as the
// README and the manual page list them) and how.
struct TicketRule {
  const char* ippAttribute;
  const char* ticketKeys;
  void (*apply)(const JobRequest& job, const PrinterProfile& printer, FilterArguments& out);
};

const std::vector<TicketRule> kTicketRules = {
    {"requesting-user-name", "argument 2 (user)", ApplyUser},
    {"job-name", "argument 3 (title)", ApplyJobName},
    {"copies", "argument 4, PMCopies, collate", ApplyCopies},
    {"sides", "sides", ApplySides},
    {"print-color-mode", "KRColorMode", ApplyColorMode},
    {"media, media-col", "media (the PPD's PageSize)", ApplyMedia},
    {"orientation-requested", "orientation-requested", ApplyOrientation},
    {"finishings", "KRStaple, KRPunch, KRNumPunchHoles, KRSignature", ApplyFinishings},
    {"job-account-id, job-accounting-user-id", "JBA... (accounting)", ApplyAccounting},
    {"job-password", "PrintType... (secure print)", ApplySecurePrint},
    {"zpjl-watermark-text, zpjl-watermark-pages", "WMARK... (watermark)", ApplyWatermark},
};

}  // namespace

FilterArguments MapJobToTicket(const JobRequest& job, const PrinterProfile& printer) {
  FilterArguments out;
  for (const TicketRule& rule : kTicketRules) rule.apply(job, printer, out);
  return out;
}

std::string EncodeTicketOptions(const TicketOptions& options) {
  std::string text;
  for (const auto& [name, value] : options) {
    if (!text.empty()) text += ' ';
    text += name;
    text += '=';
    // cupsParseOptions drops a backslash and keeps the byte after it, so
    // every byte that could end or split a value goes escaped.
    for (unsigned char c : value) {
      if (c < 0x80 && !std::isalnum(c)) text += '\\';
      text += static_cast<char>(c);
    }
  }
  return text;
}
