// Sample standard deviations of blocks: sqrt((Q - S * S / N) / (N - 1)), with S the total of a
// block's N samples and Q the total of their squares.
#include <algorithm>
#include <cmath>

#include "definitions/definitions.h"
#include "definitions/kernels.h"
#include "definitions/smallBlocks.h"

namespace {

// Adds the totals and the totals of squares of a row of blocks onto `sums` and `squareSums`.
void addBlocks(const uint8_t* row, uint64_t w, uint64_t blocks, uint64_t blockW, uint64_t blockH,
               int32_t* sums, int32_t* squareSums) {
  for (uint64_t y = 0; y < blockH; ++y, row += w) {
    for (uint64_t bx = 0; bx < blocks; ++bx) {
      uint32_t sum = static_cast<uint32_t>(sums[bx]);
      uint32_t squareSum = static_cast<uint32_t>(squareSums[bx]);
      for (uint64_t x = bx * blockW; x < (bx + 1) * blockW; ++x) {
        const uint32_t p = row[x];
        sum += p;
        squareSum += p * p;
      }
      sums[bx] = static_cast<int32_t>(sum);
      squareSums[bx] = static_cast<int32_t>(squareSum);
    }
  }
}

// In place of a square, blocks of the size of noise add level * (255 - level), of which four fit 16
// bits together, and make up for it in the block's total: the square is the rest of 255 * level.

inline int32_t restOfSquare(int16_t level) {
  const int16_t rest = static_cast<int16_t>(255 - level);
  return level * rest;  // 127 * 128 at most
}

MULTIVERSIONED
void addSmallBlocks(const uint8_t* rows, uint64_t w, uint64_t blocks, int32_t* sums,
                    int32_t* squareSums) {
  for (uint64_t first = 0; first < blocks; first += CHUNK_BLOCKS) {
    const uint64_t n = std::min(CHUNK_BLOCKS, blocks - first);
    const uint8_t* const row = rows + first * SIDE;
    uint16_t levels[CHUNK_BLOCKS * PAIRS];
    uint16_t restsLow[CHUNK_BLOCKS * PAIRS];
    uint16_t restsHigh[CHUNK_BLOCKS * PAIRS];
    for (uint64_t k = 0; k < n * PAIRS; ++k) {  // vectorised
      uint16_t sum = 0;
      uint16_t low = 0;
      uint16_t high = 0;
      const auto addRows = [&](uint64_t y) {
        const uint16_t a = pairAt(row + y * w + 2 * k);
        const uint16_t b = pairAt(row + (y + 1) * w + 2 * k);
        const uint16_t rests =
            static_cast<uint16_t>(restOfSquare(firstOf(a)) + restOfSquare(secondOf(a)) +
                                  restOfSquare(firstOf(b)) + restOfSquare(secondOf(b)));
        sum = static_cast<uint16_t>(sum + firstOf(a) + secondOf(a) + firstOf(b) + secondOf(b));
        low = static_cast<uint16_t>(low + (rests & 0xff));
        high = static_cast<uint16_t>(high + (rests >> 8));
      };
      addRows(0);
      addRows(2);
      addRows(4);
      addRows(6);
      levels[k] = sum;
      restsLow[k] = low;
      restsHigh[k] = high;
    }
    for (uint64_t k = 0; k < n; ++k) {
      const uint32_t sum = sumOfFour(levels + k * PAIRS);
      const uint32_t rests =
          sumOfFour(restsLow + k * PAIRS) + 256 * sumOfFour(restsHigh + k * PAIRS);
      const uint32_t squareSum = 255 * sum - rests;
      sums[first + k] = static_cast<int32_t>(static_cast<uint32_t>(sums[first + k]) + sum);
      squareSums[first + k] =
          static_cast<int32_t>(static_cast<uint32_t>(squareSums[first + k]) + squareSum);
    }
  }
}

// Deviations of a row of blocks of n samples each. Where n is known when this is compiled, and a
// power of two, the processor need not divide by it.
inline void deviationsOf(const int32_t* sums, const int32_t* squareSums, uint64_t blocks, double n,
                         double* stdDevs) {
  const double d = n - 1.0;
  for (uint64_t bx = 0; bx < blocks; ++bx) {  // vectorised
    // The square wraps from a total of 46341 on; blur's values for bright blocks rest on it.
    const uint32_t sum = static_cast<uint32_t>(sums[bx]);
    const double squaredSum = static_cast<int32_t>(sum * sum);
    stdDevs[bx] = std::sqrt((squareSums[bx] - squaredSum / n) / d);
  }
}

MULTIVERSIONED
void deviationsOfSmallBlocks(const int32_t* sums, const int32_t* squareSums, uint64_t blocks,
                             double* stdDevs) {
  deviationsOf(sums, squareSums, blocks, SIDE * SIDE, stdDevs);
}

}  // namespace

void calculateStdDevs(const Image* src, Image32* sums, Image32* squareSums, ImageDouble* stdDevs,
                      uint64_t blockW, uint64_t blockH) {
  const uint64_t blocks = sums->w;
  if (blocks == 0) return;
  const bool isSmall = blockW == SIDE && blockH == SIDE;
  for (uint64_t by = 0; by < sums->h; ++by) {
    const uint8_t* rows = src->data + by * blockH * src->w;
    int32_t* sumRow = sums->data + by * blocks;
    int32_t* squareRow = squareSums->data + by * blocks;
    double* stdDevRow = stdDevs->data + by * blocks;
    if (isSmall) {
      addSmallBlocks(rows, src->w, blocks, sumRow, squareRow);
      deviationsOfSmallBlocks(sumRow, squareRow, blocks, stdDevRow);
    } else {
      addBlocks(rows, src->w, blocks, blockW, blockH, sumRow, squareRow);
      deviationsOf(sumRow, squareRow, blocks, static_cast<double>(blockW * blockH), stdDevRow);
    }
  }
}
