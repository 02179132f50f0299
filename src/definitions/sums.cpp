// Totals of images and of their blocks.
#include <algorithm>
#include <cstring>

#include "definitions/definitions.h"
#include "definitions/kernels.h"

namespace {

MULTIVERSIONED
uint32_t total(const uint8_t* data, uint64_t count) {
  uint32_t sum = 0;
  for (uint64_t i = 0; i < count; ++i) sum += data[i];  // vectorised
  return sum;
}

int32_t asSigned(uint32_t value) {
  return static_cast<int32_t>(value);
}

// The block size that indicators use has a way of its own: the samples of each two columns are
// added in 16 bits, and then four neighbours.
constexpr uint64_t SIDE = BLOCKSIZE;
constexpr uint64_t PAIRS = SIDE / 2;   // of columns in a block
constexpr uint64_t CHUNK_BLOCKS = 64;  // at a time, so that the column totals stay close

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

// Block totals as differences of the four corners; a corner left of or above the image counts 0.
template <typename T>
void cornerDifferences(const T* integral, uint64_t stride, Image32* dest, uint64_t blockW,
                       uint64_t blockH) {
  if (blockW == 0 || blockH == 0) return;
  for (uint64_t by = 0; by < dest->h; ++by) {
    for (uint64_t bx = 0; bx < dest->w; ++bx) {
      // The last sample of the block in column bx - 1 or bx, row by - 1 or by.
      const auto corner = [=](uint64_t right, uint64_t below) -> uint32_t {
        if (bx + right == 0 || by + below == 0) return 0;
        const uint64_t x = (bx + right) * blockW - 1;
        const uint64_t y = (by + below) * blockH - 1;
        return static_cast<uint32_t>(integral[y * stride + x]);
      };
      dest->data[by * dest->w + bx] =
          asSigned(corner(1, 1) - corner(0, 1) - corner(1, 0) + corner(0, 0));
    }
  }
}

}  // namespace

MULTIVERSIONED
int64_t sumPixels32(const Image32* image) {
  const uint64_t n = image->w * image->h;
  int64_t sum = 0;
  const int32_t* const data = image->data;
  for (uint64_t i = 0; i < n; ++i) sum += data[i];  // vectorised
  return sum;
}

uint32_t sumPixels(const Image* image) {
  return total(image->data, image->w * image->h);
}

uint32_t sumH(const uint8_t* data, uint32_t a, uint32_t b) {
  const int32_t count = std::max(asSigned(a * b), 0);
  return total(data, static_cast<uint64_t>(count));
}

uint32_t sumV(const uint8_t* data, int32_t w, int32_t h) {
  uint32_t sum = 0;
  for (int64_t x = 0; x < w; ++x) {
    for (int64_t y = 0; y < h; ++y) sum += data[y * w + x];
  }
  return sum;
}

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
        const uint32_t before = static_cast<uint32_t>(blockRow[bx]);
        blockRow[bx] = asSigned(before + total(row + bx * blockW, blockW));
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

void integrate(const Image* src, Image32* dest) {
  const uint64_t w = src->w;
  if (src->h == 0) return;
  // The first row stays without running total, unlike in a textbook integral image.
  for (uint64_t x = 0; x < w; ++x) dest->data[x] = src->data[x];
  for (uint64_t y = 1; y < src->h; ++y) {
    uint32_t rowTotal = 0;
    for (uint64_t x = 0; x < w; ++x) {
      rowTotal += src->data[y * w + x];
      dest->data[y * w + x] =
          asSigned(static_cast<uint32_t>(dest->data[(y - 1) * w + x]) + rowTotal);
    }
  }
}

void onlyCopy(const Image* src, Image* dest) {
  const uint64_t n = src->w * src->h;
  if (n != 0) std::memcpy(dest->data, src->data, n);
}

void blockSumsInteg(const Image32* integral, Image32* dest, uint64_t blockW, uint64_t blockH) {
  cornerDifferences(integral->data, integral->w, dest, blockW, blockH);
}

void blockSumsInteg2(const Image* integral, Image32* dest, uint64_t blockW, uint64_t blockH) {
  cornerDifferences(integral->data, integral->w, dest, blockW, blockH);
}
