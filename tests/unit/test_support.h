// Test support shared by the unit and the end-to-end tests: fixture paths,
// job tickets, the lines a print stream is expected to hold, and what code
// writes to standard output.
//
//   job.options = Key("PrintTypeTicketKey", "2");
//   EXPECT_TRUE(SameStream(Attr("PBRE=LEFT"), lines));
#pragma once

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>
#include <vector>

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

// Runs `write` with file descriptor 1 sent to a temporary file and returns
// what reached it.
inline std::string CaptureStdout(const std::function<void()>& write) {
  fflush(stdout);
  FILE* sink = tmpfile();
  if (sink == nullptr) return "<no temporary file>";
  int saved = dup(STDOUT_FILENO);
  dup2(fileno(sink), STDOUT_FILENO);
  write();
  fflush(stdout);
  dup2(saved, STDOUT_FILENO);
  close(saved);
  std::string text;
  rewind(sink);
  char buffer[4096];
  size_t n;
  while ((n = fread(buffer, 1, sizeof buffer, sink)) > 0) text.append(buffer, n);
  fclose(sink);
  return text;
}
