#include "printer_app/app_system.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>

#include "platform/crypto.h"
#include "printer_app/file_device.h"
#include "printer_app/print_job.h"
#include "printer_app/printer_drivers.h"
#include "printer_app/sealed_password.h"

const char kFooterHtml[] =
    "zpjl-printer-app " ZPJL_VERSION ": IPP Everywhere printing through pstozpjl.";

namespace {

constexpr char kAppName[] = "zpjl-printer-app";
constexpr char kSpoolOption[] = "spool-directory=";

std::string DefaultSpoolDirectory() {
  if (getuid() == 0) return std::string("/var/spool/") + kAppName;
  const char* state = getenv("XDG_STATE_HOME");
  if (state != nullptr && *state == '/') return std::string(state) + "/" + kAppName;
  const char* home = getenv("HOME");
  if (home != nullptr && *home == '/') return std::string(home) + "/.local/state/" + kAppName;
  return "/tmp/" + std::string(kAppName) + "-" + std::to_string(getuid());
}

bool MakeDirectories(const std::string& path) {
  for (size_t slash = path.find('/', 1);; slash = path.find('/', slash + 1)) {
    const std::string part = path.substr(0, slash);
    if (mkdir(part.c_str(), 0700) != 0 && errno != EEXIST) return false;
    if (slash == std::string::npos) return true;
  }
}

std::string& SpoolDirectory() {
  static std::string directory;
  return directory;
}

// Set for the server itself; the client subcommands create a system only
// to ask it for its drivers.
bool& ServerMode() {
  static bool server = false;
  return server;
}

// The sealed password of the request this client thread is working on,
// until PAPPL creates its job.
std::string& PendingPassword() {
  thread_local std::string pending;
  return pending;
}

std::string& StateFile() {
  static std::string file;
  return file;
}

void Wipe(ipp_attribute_t* attr) {
  int length = 0;
  const void* data = ippGetOctetString(attr, 0, &length);
  if (ippGetValueTag(attr) != IPP_TAG_STRING) {
    data = ippGetString(attr, 0, nullptr);
    length = data != nullptr ? static_cast<int>(strlen(static_cast<const char*>(data))) : 0;
  }
  if (data != nullptr && length > 0)
    CryptoCleanse(const_cast<void*>(data), static_cast<size_t>(length));
}

}  // namespace

std::string SpoolDirectoryOf(const std::vector<std::string>& args) {
  for (size_t i = 0; i + 1 < args.size(); ++i) {
    if (args[i] == "-o" && args[i + 1].rfind(kSpoolOption, 0) == 0)
      return args[i + 1].substr(std::strlen(kSpoolOption));
  }
  // A server that a client subcommand starts gets no options, only the
  // client's environment, which names the client's spool directory.
  const char* inherited = getenv("SNAP_COMMON");
  if (inherited != nullptr && *inherited == '/') return inherited;
  return DefaultSpoolDirectory();
}

std::vector<std::string> PrepareMainloop(const std::vector<std::string>& args) {
  std::string spool = SpoolDirectoryOf(args);
  if (!spool.empty() && spool[0] != '/') {
    char cwd[4096];
    if (getcwd(cwd, sizeof cwd) == nullptr) return {};
    spool = std::string(cwd) + "/" + spool;
  }
  if (spool.empty() || !MakeDirectories(spool)) return {};
  SpoolDirectory() = spool;
  // PAPPL puts its control socket into SNAP_COMMON when that is set; the
  // server and the client subcommands then meet inside the spool directory.
  setenv("SNAP_COMMON", spool.c_str(), 1);
  const bool server = args.size() < 2 || args[1] == "server" || args[1][0] == '-';
  ServerMode() = server;
  std::vector<std::string> passed;
  for (size_t i = 0; i < args.size(); ++i) {
    if (!server && args[i] == "-o" && i + 1 < args.size() &&
        args[i + 1].rfind(kSpoolOption, 0) == 0) {
      ++i;
      continue;
    }
    passed.push_back(args[i]);
  }
  return passed;
}

pappl_loglevel_t LogLevelOf(const char* value, bool* loweredFromDebug) {
  *loweredFromDebug = false;
  if (value == nullptr) return PAPPL_LOGLEVEL_INFO;
  if (!strcmp(value, "fatal")) return PAPPL_LOGLEVEL_FATAL;
  if (!strcmp(value, "error")) return PAPPL_LOGLEVEL_ERROR;
  if (!strcmp(value, "warn")) return PAPPL_LOGLEVEL_WARN;
  *loweredFromDebug = !strcmp(value, "debug");
  return PAPPL_LOGLEVEL_INFO;
}

pappl_system_t* CreateAppSystem(int numOptions, cups_option_t* options, void*) {
  const char* port = cupsGetOption("server-port", numOptions, options);
  const char* hostname = cupsGetOption("server-hostname", numOptions, options);
  const char* listen = cupsGetOption("listen-hostname", numOptions, options);
  const char* logFile = cupsGetOption("log-file", numOptions, options);
  bool lowered = false;
  const pappl_loglevel_t level =
      LogLevelOf(cupsGetOption("log-level", numOptions, options), &lowered);
  const std::string& spool = SpoolDirectory();
  const std::string temp = spool + "/tmp";
  mkdir(temp.c_str(), 0700);
  SetJobTempDirectory(temp);

  pappl_system_t* system = papplSystemCreate(
      PAPPL_SOPTIONS_MULTI_QUEUE | PAPPL_SOPTIONS_WEB_INTERFACE | PAPPL_SOPTIONS_NO_TLS,
      kAppName, port != nullptr ? atoi(port) : 0, "_print,_universal", spool.c_str(),
      logFile != nullptr ? logFile : "-", level, nullptr, false);
  if (system == nullptr || !ServerMode()) return system;
  if (lowered)
    papplLog(system, PAPPL_LOGLEVEL_WARN,
             "Logging at info: the debug level would record job passwords.");
  if (hostname != nullptr) papplSystemSetHostName(system, hostname);
  papplSystemAddListeners(system, listen);
  papplSystemSetFooterHTML(system, kFooterHtml);
  papplSystemSetPrinterDrivers(system, kPrinterDriverCount, kPrinterDrivers, nullptr,
                               ReportSupplies, ConfigurePrinterDriver, nullptr);
  // PAPPL drops job-password, an operation attribute, before any driver
  // sees the job; the authentication callback, which PAPPL calls for
  // every request once it is read, takes it out first.
  papplSystemSetAuthCallback(system, "Basic", AuthorizeRequest, nullptr);
  papplSystemSetEventCallback(system, HandleEvent, nullptr);
  papplSystemAddMIMEFilter(system, "application/pdf", "application/postscript", PrintPdfFile,
                           nullptr);
  RegisterFileDevice();
  StateFile() = spool + "/" + kAppName + ".state";
  papplSystemLoadState(system, StateFile().c_str());
  papplSystemSetSaveCallback(system, reinterpret_cast<pappl_save_cb_t>(papplSystemSaveState),
                             const_cast<char*>(StateFile().c_str()));
  return system;
}

http_status_t AuthorizeRequest(pappl_client_t* client, const char* group, gid_t, void*) {
  if (group != nullptr) {
    // An administrative group: only local clients, as without a callback.
    http_t* http = papplClientGetHTTP(client);
    return http != nullptr && httpAddrLocalhost(httpGetAddress(http)) ? HTTP_STATUS_CONTINUE
                                                                       : HTTP_STATUS_FORBIDDEN;
  }
  return CaptureJobPassword(papplClientGetRequest(client), PendingPassword())
             ? HTTP_STATUS_CONTINUE
             : HTTP_STATUS_FORBIDDEN;
}

void HandleEvent(pappl_system_t*, pappl_printer_t* printer, pappl_job_t* job,
                 pappl_event_t event, void*) {
  if (job == nullptr || printer == nullptr) return;
  const std::string key = JobKey(papplPrinterGetID(printer), papplJobGetID(job));
  if (event & PAPPL_EVENT_JOB_CREATED) {
    // The job of the request this thread has just read.
    std::string& pending = PendingPassword();
    if (!pending.empty()) DepositSealedPassword(key, pending);
    pending.clear();
  }
  if (event & PAPPL_EVENT_JOB_COMPLETED) WithdrawSealedPassword(key);
}

bool CaptureJobPassword(ipp_t* request, std::string& sealed) {
  sealed.clear();
  ipp_attribute_t* password =
      request != nullptr ? ippFindAttribute(request, "job-password", IPP_TAG_ZERO) : nullptr;
  if (password == nullptr) return true;
  ipp_attribute_t* encryption = ippFindAttribute(request, "job-password-encryption", IPP_TAG_ZERO);
  const char* method = encryption != nullptr ? ippGetString(encryption, 0, nullptr) : nullptr;
  // octetString in IPP; text where a client's command line encoded it.
  int length = 0;
  const void* bytes = ippGetOctetString(password, 0, &length);
  if (ippGetValueTag(password) != IPP_TAG_STRING) {
    bytes = ippGetString(password, 0, nullptr);
    length = bytes != nullptr ? static_cast<int>(strlen(static_cast<const char*>(bytes))) : 0;
  }
  const bool usable = method != nullptr && !strcmp(method, "none") && bytes != nullptr &&
                      length > 0 && static_cast<size_t>(length) <= kMaxJobPasswordLength;
  if (usable)
    sealed = SealJobPassword(static_cast<const uint8_t*>(bytes), static_cast<size_t>(length));
  Wipe(password);
  ippDeleteAttribute(request, password);
  // A password that cannot be used refuses the job: printed without it,
  // the document would come out for anyone to take.
  return !sealed.empty();
}
