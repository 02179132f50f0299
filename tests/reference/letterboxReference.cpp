// Twin of the letterbox: how deep the bands of one-valued rows at the top and bottom reach, as a
// fraction of half the height.
#include <algorithm>

#include "reference.h"

namespace reference {
namespace {

bool isOneValued(const Luma& frame, uint32_t y) {
  const auto row = frame.samples.begin() + static_cast<int64_t>(uint64_t{y} * frame.w);
  return std::all_of(row, row + frame.w, [&](uint8_t sample) { return sample == *row; });
}

}  // namespace

double letterbox(const Luma& frame) {
  const uint32_t half = frame.h / 2;
  uint32_t depth = 0;
  while (depth < half && isOneValued(frame, depth) && isOneValued(frame, frame.h - 1 - depth)) {
    ++depth;
  }
  const volatile double divisor = half;  // 0 / 0 for a single row, divided at run time
  return depth / divisor;
}

}  // namespace reference
