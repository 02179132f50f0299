// What the functions that go over whole planes share.
#ifndef LUMAPROBE_KERNELS_H
#define LUMAPROBE_KERNELS_H

#include <cstdint>
#include <cstring>

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

// Two neighbouring samples in one 16-bit number, and each of the two by itself. Kernels that need
// 16 bits per sample read bytes this way: a mask and a shift then spread a vector over two, for
// even and for odd columns, where widening bytes in their order takes instructions of which the
// processor does a third as many at a time.
inline uint16_t pairAt(const uint8_t* samples) {
  uint16_t pair;
  std::memcpy(&pair, samples, sizeof pair);
  return pair;
}

#if __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__
inline int16_t firstOf(uint16_t pair) {
  return static_cast<int16_t>(pair & 0xff);
}
inline int16_t secondOf(uint16_t pair) {
  return static_cast<int16_t>(pair >> 8);
}
#else
inline int16_t firstOf(uint16_t pair) {
  return static_cast<int16_t>(pair >> 8);
}
inline int16_t secondOf(uint16_t pair) {
  return static_cast<int16_t>(pair & 0xff);
}
#endif

// Eight neighbouring samples in one 64-bit number, the first in its lowest byte on every machine.
inline uint64_t eightAt(const uint8_t* samples) {
  uint64_t eight;
  std::memcpy(&eight, samples, sizeof eight);
#if __BYTE_ORDER__ == __ORDER_BIG_ENDIAN__
  eight = __builtin_bswap64(eight);
#endif
  return eight;
}

// Total, below 2^16, of four 16-bit numbers: a product gathers them in its highest 16 bits.
inline uint32_t sumOfFour(const uint16_t* numbers) {
  uint64_t four;
  std::memcpy(&four, numbers, sizeof four);
  return static_cast<uint32_t>(four * 0x0001000100010001 >> 48);
}

#endif
