#include "frame/line_scanner.h"

#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

namespace {

const char* FindByte(const char* from, const char* end, char byte) {
  const void* found = std::memchr(from, byte, static_cast<size_t>(end - from));
  return found != nullptr ? static_cast<const char*>(found) : end;
}

}  // namespace

bool LineSink::Plain(const char*, size_t) { return false; }

void LineSink::Span(const char* bytes, size_t length) {
  const char* end = bytes + length;
  while (bytes < end) {
    const char* lf = FindByte(bytes, end, '\n');
    const char* eol = FindByte(bytes, lf, '\r');
    if (eol == end) return;  // not a whole line: nothing a span can hold
    Line(bytes, static_cast<size_t>(eol - bytes), *eol);
    bytes = eol + 1;
  }
}

const char* LineScanner::FindLineEnd(const char* from, const char* end) {
  // Each cached position is searched again only once it has been passed, so
  // a block is scanned once per terminator kind whatever its line ends are.
  if (nextCR_ == nullptr || nextCR_ < from) nextCR_ = FindByte(from, end, '\r');
  if (nextLF_ == nullptr || nextLF_ < from) nextLF_ = FindByte(from, end, '\n');
  return nextCR_ < nextLF_ ? nextCR_ : nextLF_;
}

void LineScanner::Append(const char* bytes, size_t length) {
  while (length > 0) {
    size_t room = kPSLineChunk - length_;
    size_t take = length < room ? length : room;
    std::memcpy(line_ + length_, bytes, take);
    length_ += take;
    bytes += take;
    length -= take;
    if (length_ == kPSLineChunk) {
      sink_.Chunk(line_, length_);
      length_ = 0;
    }
  }
}

void LineScanner::FlushSpan(const char* from, const char* to) {
  if (to > from) sink_.Span(from, static_cast<size_t>(to - from));
}

bool LineScanner::Feed(const char* bytes, size_t length) {
  const char* p = bytes;
  const char* end = bytes + length;
  const char* span = p;  // plain lines from here to p are not handed out yet
  nextCR_ = nullptr;
  nextLF_ = nullptr;
  while (p < end) {
    const char* eol = FindLineEnd(p, end);
    size_t segment = static_cast<size_t>(eol - p);
    if (eol == end) {
      FlushSpan(span, p);
      Append(p, segment);
      return true;
    }
    if (length_ == 0 && segment < kPSLineChunk) {
      // The whole line lies in this block: no copy needed.
      if (!sink_.Plain(p, segment)) {
        FlushSpan(span, p);
        if (!sink_.Line(p, segment, *eol)) return false;
        span = eol + 1;
      }
    } else {
      FlushSpan(span, p);
      Append(p, segment);
      if (!sink_.Line(line_, length_, *eol)) return false;
      length_ = 0;
      span = eol + 1;
    }
    p = eol + 1;
  }
  FlushSpan(span, p);
  return true;
}

void LineScanner::FinishInput() {
  if (length_ == kPSLineChunk - 1) {
    line_[length_] = static_cast<char>(0xFF);
    sink_.Chunk(line_, kPSLineChunk);
  }
  length_ = 0;
}

ScanResult ScanLines(int fd, LineSink& sink) {
  LineScanner scanner(sink);
  char block[1 << 16];
  for (;;) {
    ssize_t got = read(fd, block, sizeof block);
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) {
      fprintf(stderr, "DEBUG: Read error on the print job: %s\n", strerror(errno));
      break;
    }
    if (got == 0) break;
    if (!scanner.Feed(block, static_cast<size_t>(got))) return ScanResult::kStopped;
  }
  scanner.FinishInput();
  return ScanResult::kEndOfInput;
}
