#include "printer_app/file_device.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <ctime>
#include <map>

namespace {

constexpr int kMaxNameTries = 10000;
constexpr int kRetrySeconds = 5;

struct DeviceUri {
  std::string scheme;
  std::string host;
  int port = 0;
  std::string resource;
};

bool ParseUri(const char* uri, DeviceUri& out) {
  char scheme[32], userpass[256], host[256], resource[1024];
  if (uri == nullptr ||
      httpSeparateURI(HTTP_URI_CODING_ALL, uri, scheme, sizeof scheme, userpass, sizeof userpass,
                      host, sizeof host, &out.port, resource, sizeof resource) < HTTP_URI_STATUS_OK)
    return false;
  out.scheme = scheme;
  out.host = host;
  out.resource = resource;
  return true;
}

bool IsDirectory(const std::string& path) {
  struct stat info;
  return !path.empty() && stat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode);
}

// A new file in the directory: the local time stamp, then a counter for
// jobs of the same second. O_EXCL makes sure nothing is overwritten.
int CreateJobFile(const std::string& directory, std::string& path) {
  char stamp[32];
  const time_t now = time(nullptr);
  struct tm local;
  localtime_r(&now, &local);
  strftime(stamp, sizeof stamp, "%Y%m%d-%H%M%S", &local);
  for (int n = 1; n <= kMaxNameTries; ++n) {
    path = directory + "/zpjl-" + stamp + "-" + std::to_string(n) + ".prn";
    const int fd = open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, 0640);
    if (fd >= 0 || errno != EEXIST) return fd;
  }
  return -1;
}

// AppSocket: one TCP connection per job, port 9100 when none is given.
int Connect(const DeviceUri& uri, int port) {
  http_addrlist_t* addresses = httpAddrGetList(uri.host.c_str(), AF_UNSPEC,
                                               std::to_string(port).c_str());
  int fd = -1;
  http_addrlist_t* connected =
      addresses != nullptr ? httpAddrConnect2(addresses, &fd, 30000, nullptr) : nullptr;
  httpAddrFreeList(addresses);
  return connected != nullptr ? fd : -1;
}

// The file or the connection a device URI names; the file's path in path.
int OpenTarget(const char* text, std::string& path, std::string& error) {
  DeviceUri uri;
  path.clear();
  if (!ParseUri(text, uri)) {
    error = "Bad device URI.";
    return -1;
  }
  if (uri.scheme == "socket") {
    const int port = uri.port > 0 ? uri.port : 9100;
    const int fd = Connect(uri, port);
    if (fd < 0) error = "Unable to connect to " + uri.host + ":" + std::to_string(port) + ".";
    return fd;
  }
  if (!IsDirectory(uri.resource)) {
    error = "\"" + uri.resource + "\" is not a directory.";
    return -1;
  }
  const int fd = CreateJobFile(uri.resource, path);
  if (fd < 0) error = "Unable to create a file in \"" + uri.resource + "\": " + strerror(errno);
  return fd;
}

bool WriteAll(int fd, const void* data, size_t length) {
  const char* bytes = static_cast<const char*>(data);
  while (length > 0) {
    const ssize_t n = write(fd, bytes, length);
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) return false;
    bytes += n;
    length -= static_cast<size_t>(n);
  }
  return true;
}

// A file that received nothing (cancelled, refused) does not stay behind.
void CloseTarget(int fd, const std::string& path, bool written) {
  if (fd < 0) return;
  close(fd);
  if (!written && !path.empty()) unlink(path.c_str());
}

// PAPPL's device of a printer: the URI, opened at the first write.
struct LazyDevice {
  std::string uri;
  int fd = -1;
  std::string path;
  bool written = false;
};

bool OpenLazy(pappl_device_t* device, const char* uri, const char*) {
  DeviceUri parsed;
  if (!ParseUri(uri, parsed) || (parsed.scheme == "file" && !IsDirectory(parsed.resource))) {
    papplDeviceError(device, "Unusable device URI \"%s\".", uri);
    return false;
  }
  auto* lazy = new LazyDevice;
  lazy->uri = uri;
  papplDeviceSetData(device, lazy);
  return true;
}

void CloseLazy(pappl_device_t* device) {
  auto* lazy = static_cast<LazyDevice*>(papplDeviceGetData(device));
  if (lazy == nullptr) return;
  CloseTarget(lazy->fd, lazy->path, lazy->written);
  delete lazy;
  papplDeviceSetData(device, nullptr);
}

ssize_t ReadLazy(pappl_device_t*, void*, size_t) { return -1; }

ssize_t WriteLazy(pappl_device_t* device, const void* buffer, size_t bytes) {
  auto* lazy = static_cast<LazyDevice*>(papplDeviceGetData(device));
  if (lazy == nullptr) return -1;
  std::string error;
  if (lazy->fd < 0 && (lazy->fd = OpenTarget(lazy->uri.c_str(), lazy->path, error)) < 0) {
    papplDeviceError(device, "%s", error.c_str());
    return -1;
  }
  if (!WriteAll(lazy->fd, buffer, bytes)) return -1;
  lazy->written = true;
  return static_cast<ssize_t>(bytes);
}

pappl_preason_t LazyStatus(pappl_device_t*) { return PAPPL_PREASON_NONE; }

// The printer's turn, not yet taken: waiting for it under mapMutex would
// hold up every other printer's jobs.
std::unique_lock<std::mutex> PrinterTurn(int printerId) {
  static std::mutex mapMutex;
  static std::map<int, std::mutex> turns;
  std::lock_guard<std::mutex> lock(mapMutex);
  return std::unique_lock<std::mutex>(turns[printerId], std::defer_lock);
}

}  // namespace

void RegisterFileDevice() {
  // The first scheme added keeps PAPPL from adding its own, whose file:
  // device names the output after the job and overwrites it; so socket:
  // comes from here too.
  for (const char* scheme : {"file", "socket"})
    papplDeviceAddScheme(scheme, strcmp(scheme, "file") == 0 ? PAPPL_DEVTYPE_FILE
                                                             : PAPPL_DEVTYPE_SOCKET,
                         nullptr, OpenLazy, CloseLazy, ReadLazy, WriteLazy, LazyStatus, nullptr);
}

std::unique_ptr<JobOutput> JobOutput::Open(pappl_job_t* job) {
  pappl_printer_t* printer = papplJobGetPrinter(job);
  std::unique_lock<std::mutex> turn = PrinterTurn(papplPrinterGetID(printer));
  turn.lock();
  const char* deviceUri = papplPrinterGetDeviceURI(printer);
  const std::string uri = deviceUri != nullptr ? deviceUri : "";
  pappl_system_t* system = papplPrinterGetSystem(printer);
  for (bool logged = false; !papplJobIsCanceled(job) && papplSystemIsRunning(system);) {
    std::string path, error;
    const int fd = OpenTarget(uri.c_str(), path, error);
    if (fd >= 0) return std::unique_ptr<JobOutput>(new JobOutput(std::move(turn), fd, path));
    if (!logged) papplLogJob(job, PAPPL_LOGLEVEL_ERROR, "%s Trying again.", error.c_str());
    logged = true;
    for (int i = 0; i < kRetrySeconds && !papplJobIsCanceled(job); ++i) sleep(1);
  }
  return nullptr;
}

JobOutput::JobOutput(std::unique_lock<std::mutex> turn, int fd, std::string path)
    : turn_(std::move(turn)), fd_(fd), path_(std::move(path)) {}

JobOutput::~JobOutput() { CloseTarget(fd_, path_, written_); }

bool JobOutput::Write(const void* data, size_t length) {
  if (!WriteAll(fd_, data, length)) return false;
  written_ = true;
  return true;
}
