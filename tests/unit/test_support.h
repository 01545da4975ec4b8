// Test support shared by the unit and the end-to-end tests: fixture paths,
// job tickets, the lines a print stream is expected to hold, and what code
// writes to standard output.
//
//   job.options = Key("PrintTypeTicketKey", "2");
//   EXPECT_TRUE(SameStream(Attr("PBRE=LEFT"), lines));
#pragma once

#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>
#include <vector>

// The start and the end of every print stream.
inline const std::string kUEL = "\x1b%-12345X";
inline const std::string kTrailer = kUEL + "@PJL EOJ\n";

// Absolute path of a file under tests/fixtures.
inline std::string Fixture(const std::string& relative) {
  return std::string(ZPJL_FIXTURES) + "/" + relative;
}

inline std::string Repeat(const std::string& piece, size_t times) {
  std::string text;
  for (size_t i = 0; i < times; ++i) text += piece;
  return text;
}

// One print-dialog setting of a job ticket, spaced off on both sides so it
// can stand anywhere in an option string.
inline std::string Key(const std::string& name, const std::string& value) {
  return " com.korvanel.qd.jtz.printsettings." + name + "=" + value + " ";
}

// Job attribute lines: "@PJL SET JOBATTR=\"@" item "\"" and LF or CR LF.
inline std::string Attr(const std::string& item) { return "@PJL SET JOBATTR=\"@" + item + "\"\n"; }
inline std::string AttrCRLF(const std::string& item) {
  return "@PJL SET JOBATTR=\"@" + item + "\"\r\n";
}
inline std::string Attrs(const std::vector<std::string>& items) {
  std::string lines;
  for (const std::string& item : items) lines += Attr(item);
  return lines;
}

// Job information comment lines, one per item.
inline std::string InfoLines(const std::vector<std::string>& items) {
  std::string lines;
  for (const std::string& item : items) lines += "@PJL COMMENT PRINTJOBINFO " + item + "\n";
  return lines;
}

// The bytes with control bytes visible: ESC as <ESC>, CR as \r, LF as \n
// followed by a real line break, other control bytes as <XX>.
inline std::string Visible(const std::string& bytes) {
  std::string visible;
  for (unsigned char c : bytes) {
    if (c == 0x1b) {
      visible += "<ESC>";
    } else if (c == '\r') {
      visible += "\\r";
    } else if (c == '\n') {
      visible += "\\n\n";
    } else if (c < 0x20 || c == 0x7f) {
      char hex[8];
      snprintf(hex, sizeof hex, "<%02X>", c);
      visible += hex;
    } else {
      visible += static_cast<char>(c);
    }
  }
  return visible;
}

// Sends file descriptor 1 to a memory file while it lives.
class StdoutCapture {
 public:
  StdoutCapture() : saved_(dup(STDOUT_FILENO)), fd_(memfd_create("stdout", 0)) {
    fflush(stdout);
    if (saved_ < 0 || fd_ < 0 || dup2(fd_, STDOUT_FILENO) < 0) abort();
  }
  ~StdoutCapture() {
    fflush(stdout);
    dup2(saved_, STDOUT_FILENO);
    close(saved_);
    close(fd_);
  }
  // Everything written since the last call; the file starts empty again.
  std::string Take() {
    fflush(stdout);
    struct stat status;
    if (fstat(fd_, &status) != 0) abort();
    std::string bytes(static_cast<size_t>(status.st_size), '\0');
    size_t done = 0;
    while (done < bytes.size()) {
      ssize_t got = pread(fd_, &bytes[done], bytes.size() - done, static_cast<off_t>(done));
      if (got <= 0) break;
      done += static_cast<size_t>(got);
    }
    bytes.resize(done);
    if (ftruncate(fd_, 0) != 0 || lseek(STDOUT_FILENO, 0, SEEK_SET) != 0) abort();
    return bytes;
  }

 private:
  int saved_;
  int fd_;
};

// What `write` writes to file descriptor 1.
inline std::string CaptureStdout(const std::function<void()>& write) {
  StdoutCapture capture;
  write();
  return capture.Take();
}
