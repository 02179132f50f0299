// Twin of the spatial activity: the root mean square of the Sobel gradient, with the border counted
// as flat.
#include <cmath>

#include "reference.h"

namespace reference {
namespace {

constexpr int horizontalKernel[3][3] = {{-1, 0, 1}, {-2, 0, 2}, {-1, 0, 1}};
constexpr int verticalKernel[3][3] = {{-1, -2, -1}, {0, 0, 0}, {1, 2, 1}};

int levelAt(const Luma& frame, uint32_t x, uint32_t y) {
  return frame.samples[uint64_t{y} * frame.w + x];
}

int correlate(const int (&kernel)[3][3], const Luma& frame, uint32_t x, uint32_t y) {
  int sum = 0;
  for (uint32_t row = 0; row < 3; ++row) {
    for (uint32_t column = 0; column < 3; ++column) {
      sum += kernel[row][column] * levelAt(frame, x - 1 + column, y - 1 + row);
    }
  }
  return sum;
}

}  // namespace

double spatialActivity(const Luma& frame) {
  // Whole numbers below 2^53, so summing them as integers loses nothing against doubles.
  int64_t squares = 0;
  for (uint32_t y = 1; y + 1 < frame.h; ++y) {
    for (uint32_t x = 1; x + 1 < frame.w; ++x) {
      const int gx = correlate(horizontalKernel, frame, x, y);
      const int gy = correlate(verticalKernel, frame, x, y);
      squares += gx * gx + gy * gy;
    }
  }
  const volatile double samples = static_cast<double>(uint64_t{frame.w} * frame.h);
  return std::sqrt(static_cast<double>(squares)) / std::sqrt(samples);
}

}  // namespace reference
