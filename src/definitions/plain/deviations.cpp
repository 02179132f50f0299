// Sample standard deviations of blocks of doubles, without the margins that a filter leaves.
#include <cmath>
#include <cstdio>

#include "definitions/definitions.h"

void calculateStdDevsDouble_ommitZeros(const ImageDouble* src, ImageDouble* sums,
                                       ImageDouble* squareSums, ImageDouble* stdDevs,
                                       const ImageDouble* kernel, uint64_t blockW,
                                       uint64_t blockH) {
  if (kernel->w != kernel->h) {
    std::printf("Provided kernel is not symmetric!");
    return;
  }
  const uint64_t blocksW = sums->w;
  const uint32_t half = static_cast<uint32_t>(kernel->w / 2);
  const uint64_t innerW = blockW - 2 * uint64_t{half};
  const uint64_t innerH = blockH - 2 * uint64_t{half};
  const double n = static_cast<double>(innerW * innerH);
  const double d = n - 1.0;

  for (uint64_t by = 0; by < sums->h; ++by) {
    double* sumRow = sums->data + by * blocksW;
    double* squareRow = squareSums->data + by * blocksW;
    for (uint64_t y = 0; y < innerH; ++y) {
      const double* row = src->data + (by * blockH + half + y) * src->w;
      for (uint64_t bx = 0; bx < blocksW; ++bx) {
        const double* inner = row + bx * blockW + half;
        for (uint64_t x = 0; x < innerW; ++x) {
          const double v = inner[x];
          sumRow[bx] += v;
          squareRow[bx] += v * v;
        }
      }
    }
    for (uint64_t bx = 0; bx < blocksW; ++bx) {
      const double s = sumRow[bx];
      stdDevs->data[by * blocksW + bx] = std::sqrt((squareRow[bx] - s * s / n) / d);
    }
  }
}
