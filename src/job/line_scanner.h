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
#include <cstdint>

#include "base/byte_search.h"
#include "job/ps_stream.h"

// The line ends (CR or LF) among the first min(length, 64) bytes, as bits:
// bit i is set when bytes[i] ends a line. The scanner finds them 64 bytes at
// a time, with vector compares where the processor has them.
constexpr size_t kLineEndWindow = 64;
uint64_t WindowLineEnds(const char* bytes);  // 64 bytes, baseline vector unit
#if ZPJL_SCAN_AVX2
uint64_t WindowLineEndsAvx2(const char* bytes);  // 64 bytes; only where HasAvx2()
#endif
uint64_t LineEndMask(const char* bytes, size_t length);

// A quick pre-test of the lines a sink has to look at: a line may be other
// than plain only when its length is admitted for its first byte (all
// lengths of 63 bytes and more count as one). By default every line is.
class LineCandidates {
 public:
  LineCandidates();
  static LineCandidates None();
  // Admits lines of this one's length and first byte.
  void Add(const char* line, size_t length);
  // Admits lines of this one's first byte and any length from `length` on.
  void AddLengthsFrom(const char* line, size_t length);
  bool Admit(const char* line, size_t length) const {
    // The first byte turns most lines away; the length is looked at after.
    unsigned char first = static_cast<unsigned char>(line[0]);
    if (!firsts_[first]) return false;
    size_t bit = length < 63 ? length : 63;
    return ((lengths_[first] >> bit) & 1) != 0;
  }

 private:
  bool firsts_[256];       // some length is admitted
  uint64_t lengths_[256];  // by first byte, one bit per length
};

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
  virtual void Span(const char* bytes, size_t length) = 0;
  // Each block of input before its lines: Plain() is asked only about lines
  // that lie wholly in the last block shown here, and candidates() is read
  // after this call.
  virtual void Block(const char* bytes, size_t length);
  // Lines outside these are plain without asking Plain().
  const LineCandidates& candidates() const { return candidates_; }

 protected:
  LineCandidates candidates_;
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
  // A line ending at `eol` that may be more than plain, or that is long or
  // carried over from earlier blocks. Returns where the plain lines not yet
  // handed out now start, or nullptr when the sink stopped the scan.
  const char* NotPlainLine(const char* line, const char* eol, const char* span, bool carried);
  template <uint64_t (*Ends)(const char*)>
  bool FeedWith(const char* bytes, size_t length);
#if ZPJL_SCAN_AVX2
  bool FeedAvx2(const char* bytes, size_t length);
#endif
  void Append(const char* bytes, size_t length);
  void FlushSpan(const char* from, const char* to);

  LineSink& sink_;
  char line_[kPSLineBufferSize];
  size_t length_ = 0;
};

// Bytes asked of each read of the job. Larger reads mean fewer system calls,
// but the block lives on the stack and every byte of it a read fills stays
// resident: 32 KB keeps 96 KB less than 128 KB did once a job is that large
// (36 KB less for a 56 KB page), for about 0.1% more instructions.
constexpr size_t kReadBlockSize = 32 * 1024;

enum class ScanResult { kEndOfInput, kStopped };

// Reads `fd` to its end, taking whatever each read returns (so a cancel is
// seen while a job is still arriving), and feeds a LineScanner. A read error
// ends the input, with a DEBUG line on stderr.
ScanResult ScanLines(int fd, LineSink& sink);
