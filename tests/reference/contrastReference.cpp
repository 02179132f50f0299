// Twin of the contrast: the sample standard deviation of the luma.
#include <cmath>

#include "reference.h"

namespace reference {

double contrast(const Luma& frame) {
  std::array<uint64_t, 256> histogram{};
  for (uint8_t sample : frame.samples) ++histogram[sample];

  uint64_t total = 0;
  uint64_t squares = 0;
  for (uint64_t value = 0; value < 256; ++value) {
    total += value * histogram[value];
    squares += value * value * histogram[value];
  }

  // The total is kept in 32 bits and read as signed: past 2^31 it wraps.
  const auto sum = static_cast<double>(static_cast<int32_t>(static_cast<uint32_t>(total)));
  const volatile double n = static_cast<int32_t>(frame.w * frame.h);
  const volatile double nLess1 = n - 1.0;
  // In this order: rounding shows in the last digits, and for some flat frames as a root of a
  // negative number.
  const double spread = (-1.0 / n) * sum * sum + static_cast<double>(squares);
  return std::sqrt((1.0 / nLess1) * spread);
}

}  // namespace reference
