#include "job/line_scanner.h"

#include <unistd.h>

#include <algorithm>
#include <iterator>
#include <string_view>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif
#if ZPJL_SCAN_AVX2
#include <immintrin.h>
#endif

LineCandidates::LineCandidates() {
  std::fill(std::begin(firsts_), std::end(firsts_), true);
  std::fill(std::begin(lengths_), std::end(lengths_), ~uint64_t{0});
}

LineCandidates LineCandidates::None() {
  LineCandidates none;
  std::fill(std::begin(none.firsts_), std::end(none.firsts_), false);
  std::fill(std::begin(none.lengths_), std::end(none.lengths_), uint64_t{0});
  return none;
}

void LineCandidates::Add(const char* line, size_t length) {
  uint64_t bit = uint64_t{1} << (length < 63 ? length : 63);
  // An empty line starts with its terminator.
  for (char first : length == 0 ? std::string_view("\r\n") : std::string_view(line, 1)) {
    firsts_[static_cast<unsigned char>(first)] = true;
    lengths_[static_cast<unsigned char>(first)] |= bit;
  }
}

void LineCandidates::AddLengthsFrom(const char* line, size_t length) {
  unsigned char first = static_cast<unsigned char>(line[0]);
  firsts_[first] = true;
  for (size_t bit = length < 63 ? length : 63; bit < 64; ++bit) {
    lengths_[first] |= uint64_t{1} << bit;
  }
}

bool LineSink::Plain(const char*, size_t) { return false; }

void LineSink::Block(const char*, size_t) {}

uint64_t LineEndMask(const char* bytes, size_t length) {
  uint64_t mask = 0;
  for (size_t i = 0; i < length && i < kLineEndWindow; ++i) {
    if (bytes[i] == '\r' || bytes[i] == '\n') mask |= uint64_t{1} << i;
  }
  return mask;
}

#if defined(__SSE2__)
uint64_t WindowLineEnds(const char* bytes) {
  const __m128i lf = _mm_set1_epi8('\n');
  const __m128i cr = _mm_set1_epi8('\r');
  uint64_t mask = 0;
  for (int i = 0; i < 4; ++i) {
    __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes + 16 * i));
    __m128i hit = _mm_or_si128(_mm_cmpeq_epi8(v, lf), _mm_cmpeq_epi8(v, cr));
    mask |= static_cast<uint64_t>(static_cast<uint16_t>(_mm_movemask_epi8(hit))) << (16 * i);
  }
  return mask;
}
#else
uint64_t WindowLineEnds(const char* bytes) { return LineEndMask(bytes, kLineEndWindow); }
#endif

#if ZPJL_SCAN_AVX2
__attribute__((target("avx2"))) uint64_t WindowLineEndsAvx2(const char* bytes) {
  const __m256i lf = _mm256_set1_epi8('\n');
  const __m256i cr = _mm256_set1_epi8('\r');
  __m256i low = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(bytes));
  __m256i high = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(bytes + 32));
  uint32_t lowHits = static_cast<uint32_t>(_mm256_movemask_epi8(
      _mm256_or_si256(_mm256_cmpeq_epi8(low, lf), _mm256_cmpeq_epi8(low, cr))));
  uint32_t highHits = static_cast<uint32_t>(_mm256_movemask_epi8(
      _mm256_or_si256(_mm256_cmpeq_epi8(high, lf), _mm256_cmpeq_epi8(high, cr))));
  return static_cast<uint64_t>(highHits) << 32 | lowHits;
}
#endif

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

// Kept out of line: the loop that skips plain lines then keeps its state in registers.
__attribute__((noinline)) const char* LineScanner::NotPlainLine(const char* line,
                                                                const char* eol,
                                                                const char* span, bool carried) {
  size_t segment = static_cast<size_t>(eol - line);
  if (segment < kPSLineChunk && !carried) {
    // The whole line lies in this block: no copy needed.
    if (sink_.Plain(line, segment)) return span;
    FlushSpan(span, line);
    return sink_.Line(line, segment, *eol) ? eol + 1 : nullptr;
  }
  FlushSpan(span, line);
  Append(line, segment);
  bool going = sink_.Line(line_, length_, *eol);
  length_ = 0;
  return going ? eol + 1 : nullptr;
}

template <uint64_t (*Ends)(const char*)>
inline bool LineScanner::FeedWith(const char* bytes, size_t length) {
  const char* end = bytes + length;
  sink_.Block(bytes, length);
  // Sinks change their candidates only in Block().
  const LineCandidates& candidates = sink_.candidates();
  const char* line = bytes;  // start of the line being scanned
  const char* span = bytes;  // plain lines from here to `line` are not handed out yet
  bool carried = length_ > 0;  // the line continues text of earlier blocks
  for (const char* window = bytes; window < end; window += kLineEndWindow) {
    size_t size = static_cast<size_t>(end - window);
    uint64_t ends = size >= kLineEndWindow ? Ends(window) : LineEndMask(window, size);
    for (; ends != 0; ends &= ends - 1) {
      const char* eol = window + __builtin_ctzll(ends);
      size_t segment = static_cast<size_t>(eol - line);
      if (__builtin_expect(segment >= kPSLineChunk || carried || candidates.Admit(line, segment), 0)) {
        span = NotPlainLine(line, eol, span, carried);
        if (span == nullptr) return false;
        carried = false;
      }
      line = eol + 1;
    }
  }
  FlushSpan(span, line);
  Append(line, static_cast<size_t>(end - line));
  return true;
}

#if ZPJL_SCAN_AVX2
__attribute__((target("avx2"), flatten)) bool LineScanner::FeedAvx2(const char* bytes, size_t length) {
  return FeedWith<WindowLineEndsAvx2>(bytes, length);
}
#endif

bool LineScanner::Feed(const char* bytes, size_t length) {
#if ZPJL_SCAN_AVX2
  if (HasAvx2()) return FeedAvx2(bytes, length);
#endif
  return FeedWith<WindowLineEnds>(bytes, length);
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
  char block[kReadBlockSize];
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
