#include "base/fixed_text.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>

void ZeroText(char* buffer, size_t size) {
  if (size > 0) std::memset(buffer, 0, size);
}

size_t CopyTextPrefix(char* buffer, size_t size, const char* source, size_t count) {
  if (size == 0) return 0;
  size_t length = strnlen(source, count);
  if (length > size - 1) length = size - 1;
  std::memcpy(buffer, source, length);
  buffer[length] = '\0';
  return length;
}

size_t CopyText(char* buffer, size_t size, const char* source) {
  return CopyTextPrefix(buffer, size, source, static_cast<size_t>(-1));
}

size_t AppendTextPrefix(char* buffer, size_t size, const char* source, size_t count) {
  if (size == 0) return 0;
  size_t used = strnlen(buffer, size - 1);
  return used + CopyTextPrefix(buffer + used, size - used, source, count);
}

size_t AppendText(char* buffer, size_t size, const char* source) {
  return AppendTextPrefix(buffer, size, source, static_cast<size_t>(-1));
}

size_t FormatText(char* buffer, size_t size, const char* format, ...) {
  if (size == 0) return 0;
  va_list args;
  va_start(args, format);
  int written = std::vsnprintf(buffer, size, format, args);
  va_end(args);
  if (written < 0) {
    buffer[0] = '\0';
    return 0;
  }
  return static_cast<size_t>(written) < size ? static_cast<size_t>(written) : size - 1;
}
