// Searches over blocks of job bytes with the processor's vector unit: SSE2
// (the x86-64 baseline) everywhere, AVX2 where the processor has it, chosen
// once at run time; plain loops on other processors.
#pragma once

#include <cstddef>
#include <cstdint>

#if (defined(__x86_64__) || defined(__i386__)) && (defined(__GNUC__) || defined(__clang__))
#define ZPJL_SCAN_AVX2 1
// Whether this processor runs AVX2 code (asked once).
bool HasAvx2();
#else
#define ZPJL_SCAN_AVX2 0
#endif

// A four-byte sequence to look for.
struct BytePattern {
  char bytes[4];
};

// The offsets in bytes[0, length) at which `first` or `second` begins, in
// increasing order. Stores at most `capacity` of them; returns how many it
// found, or capacity + 1 as soon as there are more.
size_t FindPatterns(const char* bytes, size_t length, BytePattern first, BytePattern second,
                    uint32_t* offsets, size_t capacity);

// The ways FindPatterns may take, which must all agree: plain compares,
// SSE2 and AVX2 (only where HasAvx2()).
size_t FindPatternsScalar(const char* bytes, size_t length, BytePattern first, BytePattern second,
                          uint32_t* offsets, size_t capacity);
#if defined(__SSE2__)
size_t FindPatternsSse2(const char* bytes, size_t length, BytePattern first, BytePattern second,
                        uint32_t* offsets, size_t capacity);
#endif
#if ZPJL_SCAN_AVX2
size_t FindPatternsAvx2(const char* bytes, size_t length, BytePattern first, BytePattern second,
                        uint32_t* offsets, size_t capacity);
#endif
