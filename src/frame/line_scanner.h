// Splits a byte stream into PostScript lines the way a byte-wise reader with
// an 8192-byte line buffer does, but reads and scans in blocks.
//
// A line ends at CR or at LF (so CR LF is a line and an empty line). A line
// reaching kPSLineChunk bytes is handed out as a chunk and starts afresh.
//
// Most lines of a job are only copied. A sink that says so for a line
// (Plain) gets runs of such lines as one span of input bytes (Span), so a
// copy costs one write per run instead of one per line.
#pragma once

#include <cstddef>

#include "frame/ps_stream.h"

class LineSink {
 public:
  virtual ~LineSink() = default;
  // A kPSLineChunk-byte piece of an over-long line.
  virtual void Chunk(const char* bytes, size_t length) = 0;
  // A complete line without its terminator. Returns false to stop the scan.
  virtual bool Line(const char* line, size_t length, char terminator) = 0;
  // Whether Line() would do nothing for this line but write it and its
  // terminator. Must not change the sink's state.
  virtual bool Plain(const char* line, size_t length);
  // Consecutive plain lines, each with its terminator, as they were input.
  // By default handed to Line() one by one.
  virtual void Span(const char* bytes, size_t length);
};

class LineScanner {
 public:
  explicit LineScanner(LineSink& sink) : sink_(sink) {}

  // Scans `length` more bytes. Returns false once the sink asked to stop.
  bool Feed(const char* bytes, size_t length);

  // The end of the input: an unterminated last line is dropped, as the
  // byte-wise reader drops it. That reader also stores its end-of-file value
  // (byte 0xFF) as one more line byte; when that byte fills a chunk, the
  // chunk is written with it, and so it is here.
  void FinishInput();

  // The unterminated text seen since the last line end.
  const char* pending() const { return line_; }
  size_t pendingLength() const { return length_; }

 private:
  const char* FindLineEnd(const char* from, const char* end);
  void Append(const char* bytes, size_t length);
  void FlushSpan(const char* from, const char* to);

  LineSink& sink_;
  char line_[kPSLineBufferSize];
  size_t length_ = 0;
  // Next CR and LF found in the block being scanned (nullptr: not searched yet).
  const char* nextCR_ = nullptr;
  const char* nextLF_ = nullptr;
};

enum class ScanResult { kEndOfInput, kStopped };

// Reads `fd` to its end, taking whatever each read returns (so a cancel is
// seen while a job is still arriving), and feeds a LineScanner. A read error
// ends the input, with a DEBUG line on stderr.
ScanResult ScanLines(int fd, LineSink& sink);
