#include "frame/byte_search.h"

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

bool StartsAt(const char* at, ByteTriple triple) {
  return at[0] == triple.bytes[0] && at[1] == triple.bytes[1] && at[2] == triple.bytes[2];
}

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

// The scalar search from `from` on, continuing a count.
size_t FinishScalar(const char* bytes, size_t from, size_t length, ByteTriple first,
                    ByteTriple second, uint32_t* offsets, size_t capacity, size_t count) {
  for (size_t i = from; i + 3 <= length; ++i) {
    if (!StartsAt(bytes + i, first) && !StartsAt(bytes + i, second)) continue;
    if (count == capacity) return capacity + 1;
    offsets[count++] = static_cast<uint32_t>(i);
  }
  return count;
}

}  // namespace

#if defined(__SSE2__)
size_t FindTriplesSse2(const char* bytes, size_t length, ByteTriple first, ByteTriple second,
                       uint32_t* offsets, size_t capacity) {
  const __m128i a0 = _mm_set1_epi8(first.bytes[0]), a1 = _mm_set1_epi8(first.bytes[1]),
                a2 = _mm_set1_epi8(first.bytes[2]);
  const __m128i b0 = _mm_set1_epi8(second.bytes[0]), b1 = _mm_set1_epi8(second.bytes[1]),
                b2 = _mm_set1_epi8(second.bytes[2]);
  size_t count = 0;
  size_t i = 0;
  // Each step reads 16 bytes at i, i + 1 and i + 2.
  for (; i + 18 <= length; i += 16) {
    const __m128i v0 = _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes + i));
    const __m128i v1 = _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes + i + 1));
    const __m128i v2 = _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes + i + 2));
    const __m128i hitA = _mm_and_si128(_mm_and_si128(_mm_cmpeq_epi8(v0, a0), _mm_cmpeq_epi8(v1, a1)),
                                       _mm_cmpeq_epi8(v2, a2));
    const __m128i hitB = _mm_and_si128(_mm_and_si128(_mm_cmpeq_epi8(v0, b0), _mm_cmpeq_epi8(v1, b1)),
                                       _mm_cmpeq_epi8(v2, b2));
    const uint64_t hits = static_cast<uint16_t>(_mm_movemask_epi8(_mm_or_si128(hitA, hitB)));
    if (hits != 0 && !Record(hits, i, offsets, capacity, &count)) return count;
  }
  return FinishScalar(bytes, i, length, first, second, offsets, capacity, count);
}
#endif

#if ZPJL_SCAN_AVX2
__attribute__((target("avx2"))) size_t FindTriplesAvx2(const char* bytes, size_t length,
                                                       ByteTriple first, ByteTriple second,
                                                       uint32_t* offsets, size_t capacity) {
  const __m256i a0 = _mm256_set1_epi8(first.bytes[0]), a1 = _mm256_set1_epi8(first.bytes[1]),
                a2 = _mm256_set1_epi8(first.bytes[2]);
  const __m256i b0 = _mm256_set1_epi8(second.bytes[0]), b1 = _mm256_set1_epi8(second.bytes[1]),
                b2 = _mm256_set1_epi8(second.bytes[2]);
  size_t count = 0;
  size_t i = 0;
  // Each step reads 32 bytes at i, i + 1 and i + 2.
  for (; i + 34 <= length; i += 32) {
    const __m256i v0 = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(bytes + i));
    const __m256i v1 = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(bytes + i + 1));
    const __m256i v2 = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(bytes + i + 2));
    const __m256i hitA = _mm256_and_si256(
        _mm256_and_si256(_mm256_cmpeq_epi8(v0, a0), _mm256_cmpeq_epi8(v1, a1)), _mm256_cmpeq_epi8(v2, a2));
    const __m256i hitB = _mm256_and_si256(
        _mm256_and_si256(_mm256_cmpeq_epi8(v0, b0), _mm256_cmpeq_epi8(v1, b1)), _mm256_cmpeq_epi8(v2, b2));
    const uint64_t hits = static_cast<uint32_t>(_mm256_movemask_epi8(_mm256_or_si256(hitA, hitB)));
    if (hits != 0 && !Record(hits, i, offsets, capacity, &count)) return count;
  }
  return FinishScalar(bytes, i, length, first, second, offsets, capacity, count);
}
#endif

size_t FindTriplesScalar(const char* bytes, size_t length, ByteTriple first, ByteTriple second,
                         uint32_t* offsets, size_t capacity) {
  return FinishScalar(bytes, 0, length, first, second, offsets, capacity, 0);
}

size_t FindTriples(const char* bytes, size_t length, ByteTriple first, ByteTriple second,
                   uint32_t* offsets, size_t capacity) {
#if ZPJL_SCAN_AVX2
  if (HasAvx2()) return FindTriplesAvx2(bytes, length, first, second, offsets, capacity);
#endif
#if defined(__SSE2__)
  return FindTriplesSse2(bytes, length, first, second, offsets, capacity);
#else
  return FindTriplesScalar(bytes, length, first, second, offsets, capacity);
#endif
}
