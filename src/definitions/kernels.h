// What the functions that go over whole planes share.
#ifndef LUMAPROBE_KERNELS_H
#define LUMAPROBE_KERNELS_H

#include <cstdint>

// In front of such a function: GCC compiles it twice, for every x86-64 processor and for those with
// AVX2, and the loader takes the one that fits. The results are the same: kernels compute in
// integers, or in one fixed order. Loops marked "vectorised" are checked to be so.
//
// Empty for other compilers, where the loader does not know the mechanism, and under the thread
// sanitizer, which is not ready yet when the loader asks.
#if defined(__GNUC__) && !defined(__clang__) && defined(__x86_64__) && defined(__gnu_linux__) && \
    !defined(__SANITIZE_THREAD__) && !defined(LUMAPROBE_PORTABLE)
#define MULTIVERSIONED __attribute__((target_clones("arch=x86-64-v3", "default")))
#else
#define MULTIVERSIONED
#endif

// |a - b| without leaving eight bits, so that a vector holds as many as can be. Written as largest
// minus smallest in the one form that the compiler turns into an instruction each.
inline uint8_t absoluteDifference(uint8_t a, uint8_t b) {
  return static_cast<uint8_t>((a > b ? a : b) - (a > b ? b : a));
}

#endif
