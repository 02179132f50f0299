// Twin of the pillarbox: how many columns from the left edge on equal their right neighbour, as a
// fraction of half the width.
#include "reference.h"

namespace reference {
namespace {

uint8_t sampleAt(const Luma& frame, uint32_t x, uint32_t y) {
  return frame.samples[uint64_t{y} * frame.w + x];
}

// The middle row of an odd height has no say.
bool equalsRightNeighbour(const Luma& frame, uint32_t x) {
  for (uint32_t y = 0; y < frame.h; ++y) {
    const bool isMiddle = y == frame.h - 1 - y;
    if (!isMiddle && sampleAt(frame, x, y) != sampleAt(frame, x + 1, y)) return false;
  }
  return true;
}

}  // namespace

double pillarbox(const Luma& frame) {
  const uint32_t half = frame.w / 2;
  uint32_t columns = 0;
  while (columns < half && equalsRightNeighbour(frame, columns)) ++columns;
  const volatile double divisor = half;  // 0 / 0 for a single column, divided at run time
  return columns / divisor;
}

}  // namespace reference
