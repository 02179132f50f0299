// Mean width of horizontal edges: finds the samples at which the horizontal gradient is strong and
// at a local maximum, and walks from each along its row, to both sides, for as long as the gradient
// keeps its sign and stays above a small local threshold.
//
// The local threshold is the deviation of the sample's 16 x 16 block divided by 1024. A block's
// squares add up to less than 2^24 and the wrapped square of its sum to no less than -2^31, so that
// its variance stays below (2^24 + 2^31 / 256) / 255 < 98700 and the threshold below 315 / 1024: a
// gradient, which is an integer, is above it exactly when it is above 0. No deviation has to be
// computed.
//
// A strong gradient is one whose square exceeds sixteen times the frame's mean. At most one sample
// in sixteen can be, and in pictures they stand close together: most of the frame is passed over in
// cells of 16 x 4 samples that have none.
#include "indicators/blur.h"

#include <algorithm>
#include <cstdint>

#include "definitions/definitions.h"
#include "definitions/kernels.h"
#include "indicators/energy.h"
#include "indicators/results.h"

namespace {

constexpr int64_t BLUR_BLOCKSIZE = 16;  // samples; what is left beyond whole blocks has no edges
constexpr double GLOBAL_FACTOR = 16.0;  // edges, in mean squared gradients of the frame

int32_t squaredGradient(const uint8_t* p) {
  const int32_t difference = p[0] - p[-1];
  return difference * difference;
}

// Sum of the squared differences of n samples, from `first` on, from the ones before them, whatever
// row they are in.
MULTIVERSIONED
int64_t squaredGradients(const uint8_t* first, int64_t n) {
  int64_t sum = n % 2 == 0 ? 0 : squaredGradient(first + n - 1);
  for (int64_t begin = 0; begin < n; begin += ENERGY_CHUNK) {
    const int64_t pairs = std::min(ENERGY_CHUNK, n - begin) / 2;
    const uint8_t* const row = first + begin;
    int32_t squares[2] = {0, 0};
    for (int64_t k = 0; k < pairs; ++k) {  // vectorised
      const uint16_t before = pairAt(row + 2 * k - 1);
      const uint16_t here = pairAt(row + 2 * k);
      const int16_t gradient0 = static_cast<int16_t>(firstOf(here) - firstOf(before));
      const int16_t gradient1 = static_cast<int16_t>(secondOf(here) - firstOf(here));
      squares[0] += gradient0 * gradient0;
      squares[1] += gradient1 * gradient1;
    }
    sum += int64_t{squares[0]} + squares[1];
  }
  return sum;
}

// Smallest magnitude whose square exceeds the threshold; 256 when no sample can.
int32_t leastStrong(double threshold) {
  int32_t least = 0;
  while (least < 256 && !(least * least > threshold)) ++least;
  return least;
}

// Whether a strong gradient is the crest of an edge, by its magnitude, the step to the sample
// above, and the magnitudes of its four neighbours. The test along the column does not ask which
// direction the edge has: it is meant so. No part is left out, so that many samples can be looked
// at at once.
inline bool isCrest(uint8_t here, uint8_t step, uint8_t left, uint8_t right, uint8_t above,
                    uint8_t below) {
  const bool inRow = (here >= step) & (left <= here) & (here > right);
  const bool inColumn = (above <= here) & (here > below);
  return inRow | inColumn;
}

constexpr uint64_t HIGHEST_BITS = 0x8080808080808080;

// The highest bit of every byte in which `a` is not above `b`.
inline uint64_t notAbove(uint64_t a, uint64_t b) {
  const uint64_t lowBitsNotAbove = (b | HIGHEST_BITS) - (a & ~HIGHEST_BITS);
  return ((b & ~a) | (~(a ^ b) & lowBitsNotAbove)) & HIGHEST_BITS;
}

struct Edges {
  uint32_t width;  // summed; both are 32-bit
  uint32_t count;
};

// Adds the edge with its crest in column x, which goes on to both sides for as long as its levels
// fall, or rise: eight columns at a time. A walk to the right stops one short of the row's end, one
// to the left in column 1; what lies beyond is read, but does not count.
void addEdge(Edges* edges, const uint8_t* row, int64_t w, int64_t x) {
  // An edge falls when its crest does, or the gradient right of it. One that rises falls in levels
  // counted from white.
  const bool falls = (row[x] < row[x - 1]) | (row[x + 1] < row[x]);
  const uint64_t flip = falls ? 0 : ~uint64_t{0};
  uint64_t end;
  int64_t right = x;
  for (;; right += 8) {
    end = notAbove(eightAt(row + right) ^ flip, eightAt(row + right + 1) ^ flip);
    if (end != 0 || right >= w - 2) break;
  }
  if (end != 0) right += __builtin_ctzll(end) / 8;
  int64_t left = x;
  for (;; left -= 8) {
    end = notAbove(eightAt(row + left - 8) ^ flip, eightAt(row + left - 7) ^ flip);
    if (end != 0 || left <= 1) break;
  }
  if (end != 0) left -= __builtin_clzll(end) / 8;
  edges->width += static_cast<uint32_t>(std::min(right, w - 2) - std::max<int64_t>(left, 1));
  ++edges->count;
}

// Edges with their crest in columns `begin` to `end - 1` of row y, one by one. `least` is the
// smallest strong magnitude.
void addEdgesOneByOne(Edges* edges, const uint8_t* row, int64_t w, int64_t y, int64_t begin,
                      int64_t end, uint8_t least) {
  const auto magnitude = [](const uint8_t* p) { return absoluteDifference(p[0], p[-1]); };
  for (int64_t x = begin; x < end; ++x) {
    const uint8_t* const p = row + x;
    const uint8_t here = magnitude(p);
    // Column 0 and row 0 have no gradient.
    if (here >= least &&
        isCrest(here, absoluteDifference(p[0], p[-w]), x == 1 ? 0 : magnitude(p - 1),
                magnitude(p + 1), y == 1 ? 0 : magnitude(p - w), magnitude(p + w))) {
      addEdge(edges, row, w, x);
    }
  }
}

constexpr int64_t CELL_WIDTH = 16;
constexpr int64_t CELL_HEIGHT = 4;
// Columns at a time that are searched for strong samples.
constexpr int64_t CELLS_WIDTH = 64 * CELL_WIDTH;

// One bit for each of 16 flags, which are 0 or 1.
inline uint64_t bitsOf(const uint8_t* flags) {
  constexpr uint64_t GATHER = 0x0102040810204080;  // moves bit 0 of byte i to bit 56 + i
  return (eightAt(flags) * GATHER >> 56) | (eightAt(flags + 8) * GATHER >> 56 << 8);
}

// One bit for each of the CELL_WIDTH samples from `p` on that is a strong crest. None of them is in
// row 1 or column 1.
inline uint64_t crestsAt(const uint8_t* p, int64_t w, uint8_t least) {
  uint8_t crests[CELL_WIDTH];
  for (int64_t i = 0; i < CELL_WIDTH; ++i) {  // vectorised
    const uint8_t* const up = p - w;
    const uint8_t* const down = p + w;
    const uint8_t here = absoluteDifference(p[i], p[i - 1]);
    const bool crest =
        isCrest(here, absoluteDifference(p[i], up[i]), absoluteDifference(p[i - 1], p[i - 2]),
                absoluteDifference(p[i + 1], p[i]), absoluteDifference(up[i], up[i - 1]),
                absoluteDifference(down[i], down[i - 1]));
    crests[i] = (here >= least) & crest;
  }
  return bitsOf(crests);
}

// Edges with their crest in rows y to end - 1, CELL_HEIGHT of them at most, and n columns from
// `first` on, n being a multiple of CELL_WIDTH. CELL_HEIGHT rows from y on are read.
MULTIVERSIONED
void addEdgesOfCells(Edges* edges, const uint8_t* data, int64_t w, int64_t y, int64_t end,
                     int64_t first, int64_t n, uint8_t least) {
  for (int64_t begin = first; begin < first + n; begin += CELLS_WIDTH) {
    const int64_t columns = std::min(CELLS_WIDTH, first + n - begin);
    const uint8_t* const a = data + y * w + begin;
    const uint8_t* const b = a + w;
    const uint8_t* const c = b + w;
    const uint8_t* const d = c + w;
    uint8_t strong[CELLS_WIDTH];
    for (int64_t i = 0; i < columns; ++i) {  // vectorised
      const uint8_t ab =
          std::max(absoluteDifference(a[i], a[i - 1]), absoluteDifference(b[i], b[i - 1]));
      const uint8_t cd =
          std::max(absoluteDifference(c[i], c[i - 1]), absoluteDifference(d[i], d[i - 1]));
      strong[i] = std::max(ab, cd) >= least ? 1 : 0;
    }
    for (int64_t i = 0; i < columns; i += CELL_WIDTH) {
      if ((eightAt(strong + i) | eightAt(strong + i + 8)) == 0) continue;
      uint64_t crests = 0;
      for (int64_t r = y; r < end; ++r) {
        crests |= crestsAt(data + r * w + begin + i, w, least) << (r - y) * CELL_WIDTH;
      }
      for (; crests != 0; crests &= crests - 1) {
        const int64_t crest = __builtin_ctzll(crests);
        addEdge(edges, data + (y + crest / CELL_WIDTH) * w, w, begin + i + crest % CELL_WIDTH);
      }
    }
  }
}

}  // namespace

void* blur(void* luma) {
  const Image* frame = static_cast<const Image*>(luma);
  const int64_t w = static_cast<int64_t>(frame->w);
  const int64_t h = static_cast<int64_t>(frame->h);
  const double meanSquare =
      static_cast<double>(energyOf(frame->data, w, h, squaredGradient, squaredGradients)) /
      (static_cast<double>(h) * static_cast<double>(w));
  const int32_t least = leastStrong(meanSquare * GLOBAL_FACTOR);
  Edges edges = {0, 0};
  // The last row and column of the last whole blocks have no crests; without blocks there are none.
  const int64_t endY = h / BLUR_BLOCKSIZE * BLUR_BLOCKSIZE - 1;
  const int64_t endX = w / BLUR_BLOCKSIZE * BLUR_BLOCKSIZE - 1;
  if (least < 256 && endY > 0 && endX > 0) {
    const uint8_t leastStrong = static_cast<uint8_t>(least);
    // Row 1 and the columns that are left beside whole cells are looked at one by one.
    constexpr int64_t FIRST = CELL_WIDTH - 1;
    addEdgesOneByOne(&edges, frame->data + w, w, 1, 1, endX, leastStrong);
    for (int64_t y = 2; y < endY; ++y) {
      addEdgesOneByOne(&edges, frame->data + y * w, w, y, 1, FIRST, leastStrong);
    }
    // From bottom to top: the rows that the mean was taken of last are still in a near cache.
    for (int64_t end = endY; end > 2; end -= CELL_HEIGHT) {
      const int64_t y = std::max<int64_t>(end - CELL_HEIGHT, 2);
      addEdgesOfCells(&edges, frame->data, w, y, end, FIRST, endX - FIRST, leastStrong);
    }
  }
  Results.blur = edges.width == 0 ? 0.0
                                  : static_cast<double>(static_cast<int32_t>(edges.width)) /
                                        static_cast<double>(static_cast<int32_t>(edges.count));
  return nullptr;
}
