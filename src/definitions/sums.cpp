// Totals of the blocks of an image, and of all its samples and their squares.
#include <algorithm>
#include <numeric>

#include "definitions/definitions.h"
#include "definitions/kernels.h"
#include "definitions/smallBlocks.h"

namespace {

int32_t asSigned(uint32_t value) {
  return static_cast<int32_t>(value);
}

// Adds the totals of `blocks` blocks of SIDE x SIDE onto `dest`; rows stand w samples apart.
MULTIVERSIONED
void addSmallBlocks(const uint8_t* rows, uint64_t w, uint64_t blocks, int32_t* dest) {
  for (uint64_t first = 0; first < blocks; first += CHUNK_BLOCKS) {
    const uint64_t n = std::min(CHUNK_BLOCKS, blocks - first);
    const uint8_t* const row = rows + first * SIDE;
    uint16_t columns[CHUNK_BLOCKS * PAIRS];
    for (uint64_t k = 0; k < n * PAIRS; ++k) {  // vectorised
      const auto both = [=](uint64_t y) {
        const uint16_t pair = pairAt(row + y * w + 2 * k);
        return firstOf(pair) + secondOf(pair);
      };
      columns[k] = static_cast<uint16_t>(both(0) + both(1) + both(2) + both(3) + both(4) + both(5) +
                                         both(6) + both(7));
    }
    for (uint64_t k = 0; k < n; ++k) {
      const uint32_t sum = static_cast<uint32_t>(dest[first + k]);
      dest[first + k] = asSigned(sum + sumOfFour(columns + k * PAIRS));
    }
  }
}

}  // namespace

void blockSums(const Image* src, Image32* dest, uint64_t blockW, uint64_t blockH) {
  const uint8_t* row = src->data;
  int32_t* blockRow = dest->data;
  if (blockW == SIDE && blockH == SIDE) {
    for (uint64_t by = 0; by < dest->h; ++by, row += SIDE * src->w, blockRow += dest->w) {
      addSmallBlocks(row, src->w, dest->w, blockRow);
    }
    return;
  }
  for (uint64_t by = 0; by < dest->h; ++by, blockRow += dest->w) {
    for (uint64_t y = 0; y < blockH; ++y, row += src->w) {
      for (uint64_t bx = 0; bx < dest->w; ++bx) {
        const uint8_t* const block = row + bx * blockW;
        blockRow[bx] =
            asSigned(std::accumulate(block, block + blockW, static_cast<uint32_t>(blockRow[bx])));
      }
    }
  }
}

// With v = level - 128, the sums of v^2 and of (v + 1)^2 say all: their difference is 2v + 1, and
// level^2 = v^2 + 256 level - 128^2. Sums of signed squares are what the processor is fastest at.
MULTIVERSIONED
void sumAndSquareSum(const Image* image, int32_t* sum, int64_t* squareSum) {
  constexpr int32_t CHUNK = 65536;  // samples whose v^2, 128 * 128 at most, are summed in 31 bits
  const uint8_t* const data = image->data;
  const int32_t n = asSigned(static_cast<uint32_t>(image->w) * static_cast<uint32_t>(image->h));
  int64_t levels = 0;
  int64_t squares = 0;
  for (int64_t begin = 0; begin < n; begin += CHUNK) {
    const int64_t end = std::min<int64_t>(begin + CHUNK, n);
    int32_t here = 0;
    int32_t above = 0;
    for (int64_t i = begin; i < end; ++i) {  // vectorised
      const int16_t v = static_cast<int16_t>(data[i] - 128);
      const int16_t u = static_cast<int16_t>(data[i] - 127);
      here += v * v;
      above += u * u;
    }
    const int64_t samples = end - begin;
    const int64_t chunkLevels = (int64_t{above} - here - samples) / 2 + 128 * samples;
    levels += chunkLevels;
    squares += here + 256 * chunkLevels - 128 * 128 * samples;
  }
  *sum = asSigned(static_cast<uint32_t>(levels));
  *squareSum = squares;
}
