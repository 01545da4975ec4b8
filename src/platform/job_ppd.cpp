#include "platform/job_ppd.h"

#include <cstdlib>
#include <string>

namespace {

// One cache entry: the path it was parsed from and the result (which may be
// nullptr when the file could not be parsed, so a bad PPD is read only once).
struct CachedPPD {
  bool valid = false;
  std::string path;
  ppd_file_t* ppd = nullptr;
};

CachedPPD& Cache() {
  static CachedPPD cache;
  return cache;
}

}  // namespace

ppd_file_t* JobPPD() {
  const char* path = std::getenv("PPD");
  if (path == nullptr) return nullptr;
  CachedPPD& cache = Cache();
  if (cache.valid && cache.path == path) return cache.ppd;
  if (cache.ppd != nullptr) ppdClose(cache.ppd);
  cache.ppd = ppdOpenFile(path);
  cache.path = path;
  cache.valid = true;
  return cache.ppd;
}

void ForgetJobPPD() {
  CachedPPD& cache = Cache();
  if (cache.ppd != nullptr) ppdClose(cache.ppd);
  cache = CachedPPD();
}
