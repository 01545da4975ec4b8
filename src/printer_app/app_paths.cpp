#include "printer_app/app_paths.h"

#include <unistd.h>

#include <climits>
#include <cstdlib>
#include <string_view>
#include <sys/stat.h>

namespace {

std::string ExecutableDirectory() {
  char path[PATH_MAX];
  const ssize_t length = readlink("/proc/self/exe", path, sizeof path - 1);
  if (length <= 0) return "";
  std::string text(path, static_cast<size_t>(length));
  return text.substr(0, text.rfind('/'));
}

bool RunFromBuildTree() { return ExecutableDirectory() == ZPJL_APP_BUILD_DIR; }

bool IsExecutable(const std::string& path) { return access(path.c_str(), X_OK) == 0; }

std::string FirstOnPath(const char* program) {
  const char* path = getenv("PATH");
  std::string_view rest = path != nullptr ? path : "/usr/bin:/bin";
  while (!rest.empty()) {
    const size_t colon = rest.find(':');
    const std::string candidate = std::string(rest.substr(0, colon)) + "/" + program;
    if (colon != 0 && IsExecutable(candidate)) return candidate;
    if (colon == std::string_view::npos) break;
    rest.remove_prefix(colon + 1);
  }
  return "";
}

}  // namespace

std::string SamplePpdDirectory() {
  return RunFromBuildTree() ? ZPJL_APP_SOURCE_PPD_DIR : ZPJL_APP_INSTALLED_PPD_DIR;
}

std::string FilterProgram() {
  if (!RunFromBuildTree()) return ZPJL_APP_INSTALLED_FILTER;
  const std::string beside = ExecutableDirectory() + "/pstozpjl";
  if (IsExecutable(beside)) return beside;
  return FirstOnPath("pstozpjl");
}

std::string PstopsProgram() { return ZPJL_APP_PSTOPS; }

std::string PdfToPsProgram() {
  const std::string found = FirstOnPath("pdftops");
  return found.empty() ? "/usr/bin/pdftops" : found;
}
