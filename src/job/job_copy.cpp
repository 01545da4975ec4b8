#include "job/job_copy.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>

#include "base/fixed_text.h"
#include "base/job_state.h"
#include "base/ppd_queries.h"
#include "platform/build_config.h"

namespace {

constexpr int32_t kTmpDirSystemVersion = 4255;  // newer than 10.9
constexpr char kTmpDirSuffix[] = "/kr%s.job";
constexpr mode_t kJobCopyMode = 0676;  // group execute bit is deliberate

}  // namespace

bool ExpandJobCopyPattern(const char* pattern, const char* stamp, char* out, size_t size) {
  int stamps = 0;
  for (const char* p = pattern; *p != '\0'; ++p) {
    if (*p != '%') continue;
    if (p[1] == 's') {
      ++stamps;
    } else if (p[1] != '%') {
      return false;
    }
    ++p;
  }
  if (stamps != 1) return false;

  ZeroText(out, size);
  for (const char* p = pattern; *p != '\0'; ++p) {
    if (*p != '%') {
      AppendTextPrefix(out, size, p, 1);
      continue;
    }
    ++p;
    AppendText(out, size, *p == 's' ? stamp : "%");
  }
  return true;
}

bool MakeJobCopyPath(time_t now, char* path, size_t size) {
  char stamp[64];
  ZeroText(stamp, sizeof stamp);
  struct tm local;
  if (localtime_r(&now, &local) != nullptr) strftime(stamp, sizeof stamp, "%Y%m%d%H%M%S", &local);

  int32_t version = 0;
  Gestalt_ALT(kGestaltSystemVersion, &version);
  const char* tmpdir = std::getenv("TMPDIR");
  if (version > kTmpDirSystemVersion && tmpdir != nullptr) {
    char pattern[kJobCopyPathSize];
    CopyText(pattern, sizeof pattern, tmpdir);
    AppendText(pattern, sizeof pattern, kTmpDirSuffix);
    if (ExpandJobCopyPattern(pattern, stamp, path, size)) return true;
  }
  return ExpandJobCopyPattern(LegacyJobCopyPattern(), stamp, path, size);
}

void OpenJobCopy(char* path, size_t size) {
  ZeroText(path, size);
  gJobFilefp = nullptr;
  if (access(JobCopyFlagPath(), F_OK) != 0) return;
  if (!MakeJobCopyPath(time(nullptr), path, size)) {
    fprintf(stderr, "DEBUG: No usable name for the debug job copy\n");
    return;
  }
  gJobFilefp = fopen(path, "wb");
}

void CloseJobCopy(const char* path) {
  if (gJobFilefp == nullptr) return;
  fclose(gJobFilefp);
  gJobFilefp = nullptr;
  chmod(path, kJobCopyMode);
}
