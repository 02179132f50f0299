// Slice: per strip of 16 lines, the share of pixels that equal the one 16 lines below over the
// share that equal the one 16 columns to the right; the reciprocal of the smallest such ratio.
#include <cstdlib>

#include "reference.h"

namespace reference {
namespace {

constexpr uint32_t STEP = 16;

// The share of pixels in the 16 lines from `top` on that equal the pixel `right` columns and `down`
// lines away, among the columns that have such a partner.
double equalShare(const Luma& frame, uint32_t top, uint32_t right, uint32_t down) {
  int32_t pairs = 0;
  int32_t equal = 0;
  for (uint32_t y = top; y < top + STEP; ++y) {
    for (uint32_t x = 0; x + right < frame.w; ++x) {
      const uint8_t here = frame.samples[uint64_t{y} * frame.w + x];
      const uint8_t there = frame.samples[uint64_t{y + down} * frame.w + x + right];
      ++pairs;
      if (here == there) ++equal;
    }
  }
  return static_cast<double>(equal) / static_cast<double>(pairs);
}

// Ascending order for qsort, in which NaN equals everything.
int ascending(const void* left, const void* right) {
  const double a = *static_cast<const double*>(left);
  const double b = *static_cast<const double*>(right);
  if (b > a) return -1;
  return a > b ? 1 : 0;
}

}  // namespace

double slice(const Luma& frame, double before) {
  if (frame.h < 3 * STEP || frame.w <= STEP) return before;

  // The last strip needs 16 more lines below it to compare with.
  std::vector<double> ratios;
  for (uint32_t top = 0; top + 2 * STEP <= frame.h; top += STEP) {
    ratios.push_back(equalShare(frame, top, 0, STEP) / equalShare(frame, top, STEP, 0));
  }
  std::qsort(ratios.data(), ratios.size(), sizeof(double), ascending);
  return 1.0 / ratios[0];
}

}  // namespace reference
