// Fixed-size, NUL-terminated text buffers.
//
// Every `size` is the whole buffer, terminator included: no helper writes
// more than size - 1 bytes of text, and each leaves the buffer terminated.
// A size of 0 writes nothing. These are the only routines that copy text
// into job buffers.
#pragma once

#include <cstddef>
#include <cstring>

// Fills all `size` bytes with NUL.
void ZeroText(char* buffer, size_t size);

// Copies `source` into `buffer`, cut at size - 1 bytes. Returns the length copied.
size_t CopyText(char* buffer, size_t size, const char* source);

// Copies at most `count` bytes of `source` (fewer at its NUL), cut at
// size - 1 bytes. Returns the length copied.
size_t CopyTextPrefix(char* buffer, size_t size, const char* source, size_t count);

// Appends `source` to the text in `buffer`, cut at size - 1 bytes in total
// (a multi-byte character may be cut). Returns the new length.
size_t AppendText(char* buffer, size_t size, const char* source);

// Appends at most `count` bytes of `source` (fewer at its NUL).
size_t AppendTextPrefix(char* buffer, size_t size, const char* source, size_t count);

// snprintf into `buffer` with a format that must be a literal of the caller.
// Returns the length written (after cutting).
size_t FormatText(char* buffer, size_t size, const char* format, ...)
    __attribute__((format(printf, 3, 4)));

// True when the NUL-terminated `text` equals `word`, or begins with `prefix`.
inline bool Equals(const char* text, const char* word) { return std::strcmp(text, word) == 0; }
inline bool StartsWith(const char* text, const char* prefix) {
  return std::strncmp(text, prefix, std::strlen(prefix)) == 0;
}
