// Runs a fuzz target on the files named on the command line (a directory
// stands for the files in it), for builds without libFuzzer: the seed
// corpora under ctest and Valgrind, and any saved input by hand.
#include <dirent.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace {

void CollectFiles(const std::string& path, std::vector<std::string>* files) {
  struct stat status;
  if (stat(path.c_str(), &status) != 0) {
    fprintf(stderr, "replay: cannot read %s\n", path.c_str());
    return;
  }
  if (!S_ISDIR(status.st_mode)) {
    files->push_back(path);
    return;
  }
  DIR* dir = opendir(path.c_str());
  if (dir == nullptr) return;
  std::vector<std::string> names;
  while (dirent* entry = readdir(dir)) {
    if (entry->d_name[0] != '.') names.push_back(entry->d_name);
  }
  closedir(dir);
  std::sort(names.begin(), names.end());
  for (const std::string& name : names) CollectFiles(path + "/" + name, files);
}

}  // namespace

int main(int argc, char* argv[]) {
  std::vector<std::string> files;
  for (int i = 1; i < argc; ++i) CollectFiles(argv[i], &files);
  if (files.empty()) {
    fprintf(stderr, "usage: %s file-or-directory...\n", argv[0]);
    return 2;
  }
  for (const std::string& file : files) {
    std::ifstream in(file, std::ios::binary);
    std::vector<uint8_t> bytes((std::istreambuf_iterator<char>(in)),
                               std::istreambuf_iterator<char>());
    LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
  }
  fprintf(stderr, "replayed %zu inputs\n", files.size());
  return 0;
}
