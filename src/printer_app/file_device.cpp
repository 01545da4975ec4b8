#include "printer_app/file_device.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <ctime>
#include <string>

#include <pappl/pappl.h>

namespace {

constexpr int kMaxNameTries = 10000;

struct JobFile {
  int fd;
  std::string path;
  bool written;
};

std::string DirectoryOf(const char* uri) {
  char scheme[32], userpass[256], host[256], resource[1024];
  int port = 0;
  if (httpSeparateURI(HTTP_URI_CODING_ALL, uri, scheme, sizeof scheme, userpass, sizeof userpass,
                      host, sizeof host, &port, resource, sizeof resource) < HTTP_URI_STATUS_OK)
    return "";
  return resource;
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

bool OpenFile(pappl_device_t* device, const char* uri, const char*) {
  const std::string directory = DirectoryOf(uri);
  struct stat info;
  if (directory.empty() || stat(directory.c_str(), &info) != 0 || !S_ISDIR(info.st_mode)) {
    papplDeviceError(device, "\"%s\" is not a directory.", directory.c_str());
    return false;
  }
  std::string path;
  const int fd = CreateJobFile(directory, path);
  if (fd < 0) {
    papplDeviceError(device, "Unable to create a file in \"%s\": %s", directory.c_str(),
                     strerror(errno));
    return false;
  }
  papplDeviceSetData(device, new JobFile{fd, path, false});
  return true;
}

// A job that wrote nothing (cancelled, refused) leaves no empty file.
void CloseFile(pappl_device_t* device) {
  auto* file = static_cast<JobFile*>(papplDeviceGetData(device));
  if (file == nullptr) return;
  close(file->fd);
  if (!file->written) unlink(file->path.c_str());
  delete file;
  papplDeviceSetData(device, nullptr);
}

ssize_t ReadFile(pappl_device_t*, void*, size_t) { return -1; }

ssize_t WriteFile(pappl_device_t* device, const void* buffer, size_t bytes) {
  auto* file = static_cast<JobFile*>(papplDeviceGetData(device));
  if (file == nullptr) return -1;
  const char* data = static_cast<const char*>(buffer);
  size_t done = 0;
  while (done < bytes) {
    const ssize_t n = write(file->fd, data + done, bytes - done);
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) return -1;
    done += static_cast<size_t>(n);
    file->written = true;
  }
  return static_cast<ssize_t>(done);
}

pappl_preason_t FileStatus(pappl_device_t*) { return PAPPL_PREASON_NONE; }

// socket://host:port, AppSocket: the stream over one TCP connection per
// job (port 9100 when none is given).
bool OpenSocket(pappl_device_t* device, const char* uri, const char*) {
  char scheme[32], userpass[256], host[256], resource[1024];
  int port = 0;
  if (httpSeparateURI(HTTP_URI_CODING_ALL, uri, scheme, sizeof scheme, userpass, sizeof userpass,
                      host, sizeof host, &port, resource, sizeof resource) < HTTP_URI_STATUS_OK) {
    papplDeviceError(device, "Bad device URI \"%s\".", uri);
    return false;
  }
  http_addrlist_t* addresses =
      httpAddrGetList(host, AF_UNSPEC, std::to_string(port > 0 ? port : 9100).c_str());
  int fd = -1;
  http_addrlist_t* connected =
      addresses != nullptr ? httpAddrConnect2(addresses, &fd, 30000, nullptr) : nullptr;
  httpAddrFreeList(addresses);
  if (connected == nullptr || fd < 0) {
    papplDeviceError(device, "Unable to connect to %s:%d.", host, port);
    return false;
  }
  papplDeviceSetData(device, new JobFile{fd, "", true});
  return true;
}

}  // namespace

void RegisterFileDevice() {
  // The first scheme added keeps PAPPL from adding its own, whose file:
  // device names the output after the job and overwrites it; so socket:
  // comes from here too.
  papplDeviceAddScheme("file", PAPPL_DEVTYPE_FILE, nullptr, OpenFile, CloseFile, ReadFile,
                       WriteFile, FileStatus, nullptr);
  papplDeviceAddScheme("socket", PAPPL_DEVTYPE_SOCKET, nullptr, OpenSocket, CloseFile, ReadFile,
                       WriteFile, FileStatus, nullptr);
}
