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
// in sixteen can be; they are found many at a time, by the magnitude alone, and looked at one by
// one.
#include "indicators/blur.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <functional>

#include "definitions/definitions.h"
#include "definitions/kernels.h"
#include "indicators/results.h"

namespace {

constexpr int64_t BLUR_BLOCKSIZE = 16;  // samples; what is left beyond whole blocks has no edges
constexpr double GLOBAL_FACTOR = 16.0;  // edges, in mean squared gradients of the frame
constexpr int64_t CHUNK = 1024;         // columns at a time whose strong samples are marked

// Samples whose squared differences, 65025 at most each, are summed in 31 bits.
constexpr int64_t SQUARES_CHUNK = 32768;

// Sum of the squared horizontal differences; row 0 and column 0 have none.
MULTIVERSIONED
int64_t gradientEnergy(const uint8_t* data, int64_t w, int64_t h) {
  int64_t energy = 0;
  for (int64_t y = 1; y < h; ++y) {
    const uint8_t* const row = data + y * w;
    for (int64_t begin = 1; begin < w; begin += SQUARES_CHUNK) {
      const int64_t end = std::min(begin + SQUARES_CHUNK, w);
      int32_t squares = 0;
      for (int64_t x = begin; x < end; ++x) {  // vectorised
        const int16_t difference = static_cast<int16_t>(row[x] - row[x - 1]);
        squares += difference * difference;
      }
      energy += squares;
    }
  }
  return energy;
}

// Smallest magnitude whose square exceeds the threshold; 256 when no sample can.
int32_t leastStrong(double threshold) {
  int32_t least = 0;
  while (least < 256 && !(least * least > threshold)) ++least;
  return least;
}

// Magnitude of the horizontal gradient in column x; column 0 has none.
uint8_t magnitude(const uint8_t* row, int64_t x) {
  return x == 0 ? 0 : absoluteDifference(row[x], row[x - 1]);
}

// Whether a strong gradient, in column x of row y, is the crest of an edge. The test along the
// column does not ask which direction the edge has: it is meant so.
bool isCrest(const uint8_t* row, int64_t w, int64_t x, int64_t y) {
  const uint8_t* const up = row - w;
  const uint8_t* const down = row + w;
  const uint8_t here = magnitude(row, x);
  const bool inRow = here >= absoluteDifference(row[x], up[x]) && magnitude(row, x - 1) <= here &&
                     here > magnitude(row, x + 1);
  if (inRow) return true;
  const uint8_t above = y == 1 ? 0 : magnitude(up, x);  // row 0 has no gradient
  return above <= here && here > magnitude(down, x);
}

// Samples over which the edge with its crest in column x goes on. A walk to the right stops one
// short of the row's end, one to the left in column 1.
template <typename Order>
int64_t edgeWidth(const uint8_t* row, int64_t w, int64_t x, Order goesOn) {
  int64_t right = x;
  while (right < w - 2 && goesOn(row[right], row[right + 1])) ++right;
  int64_t left = x;
  while (left > 1 && goesOn(row[left - 1], row[left])) --left;
  return right - left;
}

struct Edges {
  uint32_t width;  // summed; both are 32-bit
  uint32_t count;
};

void addEdge(Edges* edges, const uint8_t* row, int64_t w, int64_t x) {
  // An edge falls when its crest does, or the gradient right of it.
  const bool falls = row[x] < row[x - 1] || row[x + 1] < row[x];
  const int64_t width =
      falls ? edgeWidth(row, w, x, std::greater<>()) : edgeWidth(row, w, x, std::less<>());
  edges->width += static_cast<uint32_t>(width);
  ++edges->count;
}

// Index, from `from` on, of the next mark; n when there is none.
int64_t nextStrong(const uint8_t* strong, int64_t from, int64_t n) {
  const void* next = std::memchr(strong + from, 1, static_cast<size_t>(n - from));
  return next == nullptr ? n : static_cast<const uint8_t*>(next) - strong;
}

// Edges with their crest in columns 1 to end - 1 of row y. `least` is the smallest strong
// magnitude.
MULTIVERSIONED
void addEdgesOfRow(Edges* edges, const uint8_t* row, int64_t w, int64_t y, int64_t end,
                   uint8_t least) {
  for (int64_t begin = 1; begin < end; begin += CHUNK) {
    const int64_t n = std::min(CHUNK, end - begin);
    const uint8_t* const chunk = row + begin;
    uint8_t strong[CHUNK];
    for (int64_t i = 0; i < n; ++i) {  // vectorised
      strong[i] = absoluteDifference(chunk[i], chunk[i - 1]) >= least ? 1 : 0;
    }
    for (int64_t i = nextStrong(strong, 0, n); i < n; i = nextStrong(strong, i + 1, n)) {
      if (isCrest(row, w, begin + i, y)) addEdge(edges, row, w, begin + i);
    }
  }
}

}  // namespace

void* blur(void* luma) {
  const Image* frame = static_cast<const Image*>(luma);
  const int64_t w = static_cast<int64_t>(frame->w);
  const int64_t h = static_cast<int64_t>(frame->h);
  const double meanSquare = static_cast<double>(gradientEnergy(frame->data, w, h)) /
                            (static_cast<double>(h) * static_cast<double>(w));
  const int32_t least = leastStrong(meanSquare * GLOBAL_FACTOR);
  Edges edges = {0, 0};
  if (least < 256) {
    // The last row and column of the last whole blocks have no crests; without blocks there are
    // none.
    const int64_t endY = h / BLUR_BLOCKSIZE * BLUR_BLOCKSIZE - 1;
    const int64_t endX = w / BLUR_BLOCKSIZE * BLUR_BLOCKSIZE - 1;
    for (int64_t y = 1; y < endY; ++y) {
      addEdgesOfRow(&edges, frame->data + y * w, w, y, endX, static_cast<uint8_t>(least));
    }
  }
  Results.blur = edges.width == 0 ? 0.0
                                  : static_cast<double>(static_cast<int32_t>(edges.width)) /
                                        static_cast<double>(static_cast<int32_t>(edges.count));
  return nullptr;
}

double blurToMOS(double blur) {
  const double e = std::exp(-1.5 * blur + 2.87);
  return std::max(0.0, 5.0 * std::pow(e / (1.0 + e), 0.14));  // 0 of NaN, too
}
