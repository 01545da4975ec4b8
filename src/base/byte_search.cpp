#include "base/byte_search.h"

#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif
#if ZPJL_SCAN_AVX2
#include <immintrin.h>
#endif

#if ZPJL_SCAN_AVX2
bool HasAvx2() {
  static const bool avx2 = __builtin_cpu_supports("avx2");
  return avx2;
}
#endif

namespace {

constexpr size_t kPatternLength = sizeof(BytePattern::bytes);

// Records the offsets of the set bits of `hits` (bit i: offset base + i).
// False once more than `capacity` are found.
bool Record(uint64_t hits, size_t base, uint32_t* offsets, size_t capacity, size_t* count) {
  for (; hits != 0; hits &= hits - 1) {
    if (*count == capacity) {
      ++*count;
      return false;
    }
    offsets[(*count)++] = static_cast<uint32_t>(base + static_cast<size_t>(__builtin_ctzll(hits)));
  }
  return true;
}

// The plain search from `from` on, continuing a count.
size_t FinishScalar(const char* bytes, size_t from, size_t length, BytePattern first,
                    BytePattern second, uint32_t* offsets, size_t capacity, size_t count) {
  for (size_t i = from; i + kPatternLength <= length; ++i) {
    if (std::memcmp(bytes + i, first.bytes, kPatternLength) != 0 &&
        std::memcmp(bytes + i, second.bytes, kPatternLength) != 0)
      continue;
    if (count == capacity) return capacity + 1;
    offsets[count++] = static_cast<uint32_t>(i);
  }
  return count;
}

}  // namespace

size_t FindPatternsScalar(const char* bytes, size_t length, BytePattern first, BytePattern second,
                          uint32_t* offsets, size_t capacity) {
  return FinishScalar(bytes, 0, length, first, second, offsets, capacity, 0);
}

// Both vector versions compare a vector of bytes at i, i + 1, i + 2 and i + 3
// with the pattern bytes; a lane where all four match starts a pattern.
#if defined(__SSE2__)
size_t FindPatternsSse2(const char* bytes, size_t length, BytePattern first, BytePattern second,
                        uint32_t* offsets, size_t capacity) {
  __m128i a[kPatternLength];
  __m128i b[kPatternLength];
  for (size_t k = 0; k < kPatternLength; ++k) {
    a[k] = _mm_set1_epi8(first.bytes[k]);
    b[k] = _mm_set1_epi8(second.bytes[k]);
  }
  size_t count = 0;
  size_t i = 0;
  for (; i + 16 + kPatternLength - 1 <= length; i += 16) {
    __m128i hitA = _mm_set1_epi8(-1);
    __m128i hitB = hitA;
    for (size_t k = 0; k < kPatternLength; ++k) {
      const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes + i + k));
      hitA = _mm_and_si128(hitA, _mm_cmpeq_epi8(v, a[k]));
      hitB = _mm_and_si128(hitB, _mm_cmpeq_epi8(v, b[k]));
    }
    const uint64_t hits = static_cast<uint16_t>(_mm_movemask_epi8(_mm_or_si128(hitA, hitB)));
    if (hits != 0 && !Record(hits, i, offsets, capacity, &count)) return count;
  }
  return FinishScalar(bytes, i, length, first, second, offsets, capacity, count);
}
#endif

#if ZPJL_SCAN_AVX2
__attribute__((target("avx2"))) size_t FindPatternsAvx2(const char* bytes, size_t length,
                                                        BytePattern first, BytePattern second,
                                                        uint32_t* offsets, size_t capacity) {
  __m256i a[kPatternLength];
  __m256i b[kPatternLength];
  for (size_t k = 0; k < kPatternLength; ++k) {
    a[k] = _mm256_set1_epi8(first.bytes[k]);
    b[k] = _mm256_set1_epi8(second.bytes[k]);
  }
  size_t count = 0;
  size_t i = 0;
  for (; i + 32 + kPatternLength - 1 <= length; i += 32) {
    __m256i hitA = _mm256_set1_epi8(-1);
    __m256i hitB = hitA;
    for (size_t k = 0; k < kPatternLength; ++k) {
      const __m256i v = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(bytes + i + k));
      hitA = _mm256_and_si256(hitA, _mm256_cmpeq_epi8(v, a[k]));
      hitB = _mm256_and_si256(hitB, _mm256_cmpeq_epi8(v, b[k]));
    }
    const uint64_t hits = static_cast<uint32_t>(_mm256_movemask_epi8(_mm256_or_si256(hitA, hitB)));
    if (hits != 0 && !Record(hits, i, offsets, capacity, &count)) return count;
  }
  return FinishScalar(bytes, i, length, first, second, offsets, capacity, count);
}
#endif

size_t FindPatterns(const char* bytes, size_t length, BytePattern first, BytePattern second,
                    uint32_t* offsets, size_t capacity) {
#if ZPJL_SCAN_AVX2
  if (HasAvx2()) return FindPatternsAvx2(bytes, length, first, second, offsets, capacity);
#endif
#if defined(__SSE2__)
  return FindPatternsSse2(bytes, length, first, second, offsets, capacity);
#else
  return FindPatternsScalar(bytes, length, first, second, offsets, capacity);
#endif
}
