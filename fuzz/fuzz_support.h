// Shared pieces of the fuzz targets: structured values taken from the
// fuzzer's bytes, in-memory files that have a path, stdout captured in
// memory, and the check that stops a run when an oracle fails.
//
// Every target is built twice: as a libFuzzer binary (ZPJL_FUZZ=ON) and as a
// plain replay program that runs the files named on its command line (the
// seed corpora under ctest and Valgrind).
#pragma once

#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "job/job_flow.h"
#include "test_support.h"

namespace fuzz {

// Reads the fuzzer's bytes front to back; past the end every value is zero
// or empty, so any input is a valid one.
class Input {
 public:
  Input(const uint8_t* data, size_t size) : data_(data), size_(size) {}

  bool empty() const { return at_ >= size_; }
  uint8_t Byte() { return at_ < size_ ? data_[at_++] : 0; }
  uint32_t Number(uint32_t bound) {  // 0 .. bound - 1 (bound > 0)
    uint32_t value = Byte();
    value = value << 8 | Byte();
    return value % bound;
  }
  // Up to the next NUL byte (dropped), or the rest of the input.
  std::string UntilNul() {
    std::string text;
    while (at_ < size_ && data_[at_] != 0) text += static_cast<char>(data_[at_++]);
    if (at_ < size_) ++at_;
    return text;
  }
  std::string Take(size_t count) {
    size_t n = count < size_ - at_ ? count : size_ - at_;
    std::string bytes(reinterpret_cast<const char*>(data_ + at_), n);
    at_ += n;
    return bytes;
  }
  std::string Rest() { return Take(size_ - at_); }

 private:
  const uint8_t* data_;
  size_t size_;
  size_t at_ = 0;
};

// A file in memory with a path that open() and fopen() accept.
class MemoryFile {
 public:
  explicit MemoryFile(const char* name)
      : fd_(memfd_create(name, 0)), path_("/proc/self/fd/" + std::to_string(fd_)) {}
  ~MemoryFile() { close(fd_); }
  MemoryFile(const MemoryFile&) = delete;
  MemoryFile& operator=(const MemoryFile&) = delete;

  const std::string& path() const { return path_; }
  void Set(const std::string& bytes) {
    if (ftruncate(fd_, 0) != 0) abort();
    size_t done = 0;
    while (done < bytes.size()) {
      ssize_t put = pwrite(fd_, bytes.data() + done, bytes.size() - done, static_cast<off_t>(done));
      if (put <= 0) abort();
      done += static_cast<size_t>(put);
    }
  }

 private:
  int fd_;
  std::string path_;
};

// The bytes with control bytes visible, cut for failure messages.
inline std::string Visible(const std::string& bytes, size_t limit = 400) {
  return ::Visible(bytes.substr(0, limit)) + (bytes.size() > limit ? "..." : "");
}

// An oracle failed: say what and stop, so the fuzzer keeps the input.
[[noreturn]] inline void Fail(const char* what, const std::string& detail = "") {
  fprintf(stderr, "fuzz check failed: %s\n%s\n", what, detail.c_str());
  abort();
}

inline void Check(bool holds, const char* what, const std::string& detail = "") {
  if (!holds) Fail(what, detail);
}

// The credential layer reports failures with plain writes to stdout, on
// purpose (they stay out of the debug copy). A password that cannot be
// opened is met while the ticket is read, before the header, so its lines
// come first. Returns the stream after them.
inline std::string AfterCryptoMessages(const std::string& stream) {
  static const char* const kStarts[] = {"AES Error", "ERROR[", "RSA Error",
                                        "Generate Random Error"};
  size_t at = 0;
  for (;;) {
    bool message = false;
    for (const char* start : kStarts)
      message = message || stream.compare(at, strlen(start), start) == 0;
    size_t end = stream.find('\n', at);
    if (!message || end == std::string::npos) return stream.substr(at);
    at = end + 1;
  }
}
inline bool EndsWith(const std::string& text, const std::string& end) {
  return text.size() >= end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
}

// One job through FilterMain as CUPS starts the filter, the PostScript read
// from a memory file: `ppd` a path, or empty for none. Every stream must
// start with the universal exit language and a PJL line and end with the
// trailer; returns the stream after any crypto messages.
struct Job {
  std::string ppd;
  std::string ticket;
  std::string user = "alice";
  std::string title = "report";
  std::string postscript;
};

inline std::string RunJob(const Job& job) {
  static StdoutCapture capture;  // for the rest of the process
  static MemoryFile jobFile("job");
  static const int ready = setenv("TMPDIR", "/dev/shm", 0);  // the insertion mode's spool
  (void)ready;
  jobFile.Set(job.postscript);
  if (job.ppd.empty()) {
    unsetenv("PPD");
  } else {
    setenv("PPD", job.ppd.c_str(), 1);
  }
  ResetProcessState();
  std::string ticket = job.ticket, user = job.user, title = job.title, file = jobFile.path();
  char name[] = "pstozpjl", id[] = "1", copies[] = "1";
  char* argv[] = {name, id, user.data(), title.data(), copies, ticket.data(), file.data(), nullptr};
  int status = FilterMain(7, argv);
  std::string stream = AfterCryptoMessages(capture.Take());
  Check(status == 0, "exit status 0");
  Check(stream.rfind(kUEL + "@PJL", 0) == 0,
        "the stream starts with the universal exit language", Visible(stream));
  Check(EndsWith(stream, kTrailer), "the stream ends with the trailer",
        Visible(stream.substr(stream.size() > 200 ? stream.size() - 200 : 0)));
  return stream;
}

}  // namespace fuzz
