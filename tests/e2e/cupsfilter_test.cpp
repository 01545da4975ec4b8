// The filter in a real CUPS filter chain, started by cupsfilter from a PPD
// whose *cupsFilter2 line names it.
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>

#include "filter_runner.h"

namespace {

const char kCupsFilter[] = "/usr/sbin/cupsfilter";

// CUPS runs only filters that are owned by root, not writable by others, in a
// directory of the same kind: copy the built filter into such a place.
std::string InstallFilterCopy(const std::string& dir) {
  std::string path = dir + "/pstozpjl";
  std::ofstream(path, std::ios::binary) << ReadFile(ZPJL_FILTER);
  chmod(path.c_str(), 0755);
  chmod(dir.c_str(), 0755);
  return path;
}

std::string RunCommand(const std::string& command, int* status) {
  std::string output;
  FILE* pipe = popen(command.c_str(), "r");
  if (pipe == nullptr) return output;
  char buffer[65536];
  size_t got;
  while ((got = fread(buffer, 1, sizeof buffer, pipe)) > 0) output.append(buffer, got);
  *status = pclose(pipe);
  return output;
}

TEST(CupsFilter, RunsInTheFilterChain) {
  ASSERT_EQ(access(kCupsFilter, X_OK), 0) << "cupsfilter is missing: run scripts/install-deps";
  char pattern[] = "/tmp/pstozpjl-cups-XXXXXX";
  std::string dir = mkdtemp(pattern);
  std::string filter = InstallFilterCopy(dir);
  std::string ppd = dir + "/queue.ppd";
  std::ofstream(ppd) << ReadFile(Fixture("ppd/utf8-color.ppd"))
                     << "*cupsFilter2: \"application/vnd.cups-postscript application/vnd.zpjl 0 "
                     << filter << "\"\n";

  int status = -1;
  std::string stream = RunCommand(std::string(kCupsFilter) + " -p " + ppd +
                                      " -e -m printer/zpjl -t 'Chain test' " +
                                      Fixture("ps/simple.ps") + " 2>" + dir + "/log",
                                  &status);
  std::string log = ReadFile(dir + "/log");
  EXPECT_EQ(status, 0) << log;
  EXPECT_NE(log.find("pstozpjl (PID"), std::string::npos) << log;
  EXPECT_NE(log.find("PAGE:2 1"), std::string::npos) << log;

  ASSERT_GT(stream.size(), kUEL.size());
  EXPECT_EQ(stream.compare(0, kUEL.size() + 4, kUEL + "@PJL"), 0) << Visible(stream.substr(0, 80));
  StreamParts parts = SplitStream(stream);
  EXPECT_NE(parts.header.find("@PJL SET STRINGCODESET=UTF8\n@PJL JOB MODE=PRINTER\r\n"),
            std::string::npos)
      << Visible(parts.header);
  EXPECT_NE(parts.body.find("(Page two) show"), std::string::npos) << Visible(parts.body);
  EXPECT_EQ(parts.body.back(), '\x04');
  EXPECT_TRUE(SameStream(kTrailer, parts.trailer));

  for (const char* name : {"/pstozpjl", "/queue.ppd", "/log"}) unlink((dir + name).c_str());
  rmdir(dir.c_str());
}

}  // namespace
