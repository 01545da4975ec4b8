// Helpers for module tests: collect what a module writes, to a stream it is
// given or to standard output, as a string.
#pragma once

#include <unistd.h>

#include <cstdio>
#include <functional>
#include <string>

// Runs `write` with a memory stream and returns what it wrote.
inline std::string CaptureStream(const std::function<void(FILE*)>& write) {
  char* data = nullptr;
  size_t size = 0;
  FILE* stream = open_memstream(&data, &size);
  write(stream);
  fclose(stream);
  std::string text(data, size);
  free(data);
  return text;
}

// Runs `write` with standard output sent to a temporary file and returns
// what reached it.
inline std::string CaptureStdout(const std::function<void()>& write) {
  fflush(stdout);
  FILE* sink = tmpfile();
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

// A filter argument vector with `ticket` as the option string (argument 5).
struct FilterArguments {
  explicit FilterArguments(std::string ticket) : options(std::move(ticket)) {
    argv[5] = &options[0];
  }
  FilterArguments(const FilterArguments&) = delete;
  FilterArguments& operator=(const FilterArguments&) = delete;
  std::string job = "1", user = "tester", title = "job", copies = "1", options;
  char* argv[7] = {
      const_cast<char*>("pstozpjl"), &job[0], &user[0], &title[0], &copies[0], nullptr, nullptr};
};
