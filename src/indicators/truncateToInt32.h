// Conversion of any double to a 32-bit integer.
#ifndef LUMAPROBE_TRUNCATE_TO_INT32_H
#define LUMAPROBE_TRUNCATE_TO_INT32_H

#include <cstdint>
#include <limits>

// Towards zero. Values out of range and NaN, which C++ leaves undefined, give the smallest integer,
// as x86-64 does.
inline int32_t truncateToInt32(double value) {
  const bool inRange = value > -2147483649.0 && value < 2147483648.0;
  return inRange ? static_cast<int32_t>(value) : std::numeric_limits<int32_t>::min();
}

#endif
