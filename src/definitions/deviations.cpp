// Sample standard deviations of blocks: sqrt((Q - S * S / N) / (N - 1)), with S the total of a
// block's N samples and Q the total of their squares.
#include <cmath>
#include <cstdio>

#include "definitions/definitions.h"

void calculateStdDevs(const Image* src, Image32* sums, Image32* squareSums, ImageDouble* stdDevs,
                      uint64_t blockW, uint64_t blockH) {
  const uint64_t blocksW = sums->w;
  if (sums->h == 0 || blocksW == 0) return;
  const double n = static_cast<double>(blockW * blockH);
  const double d = n - 1.0;

  const uint8_t* row = src->data;
  for (uint64_t by = 0; by < sums->h; ++by) {
    int32_t* sumRow = sums->data + by * blocksW;
    int32_t* squareRow = squareSums->data + by * blocksW;
    for (uint64_t y = 0; y < blockH; ++y, row += src->w) {
      for (uint64_t bx = 0; bx < blocksW; ++bx) {
        uint32_t sum = static_cast<uint32_t>(sumRow[bx]);
        uint32_t squareSum = static_cast<uint32_t>(squareRow[bx]);
        for (uint64_t x = bx * blockW; x < (bx + 1) * blockW; ++x) {
          const uint32_t p = row[x];
          sum += p;
          squareSum += p * p;
        }
        sumRow[bx] = static_cast<int32_t>(sum);
        squareRow[bx] = static_cast<int32_t>(squareSum);
      }
    }
    for (uint64_t bx = 0; bx < blocksW; ++bx) {
      // The square wraps from a total of 46341 on; blur's values for bright blocks rest on it.
      const uint32_t sum = static_cast<uint32_t>(sumRow[bx]);
      const double squaredSum = static_cast<int32_t>(sum * sum);
      stdDevs->data[by * blocksW + bx] = std::sqrt((squareRow[bx] - squaredSum / n) / d);
    }
  }
}

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
