// Root mean square of the 3 x 3 Sobel gradient magnitude.
//
// The operator is taken apart: vertically, each column's smoothed level and its change go into
// short rows of 16-bit numbers, even and odd columns apart; horizontally, differences of the former
// and sums of the latter give both gradients. Their squares are summed as integers, which double
// could hold exactly at any frame size, so that the order of addition does not matter.
#include "indicators/spatialActivity.h"

#include <algorithm>
#include <cmath>

#include "definitions/kernels.h"
#include "indicators/results.h"

namespace {

// Samples at a time: the squares of up to 1020 of every second one fit 31 bits, and the short rows
// the first cache level.
constexpr int64_t CHUNK = 2048;
// Rows that are summed as one sequence, so that there is a rest of less than a vector only once.
constexpr int64_t STRIP = 16;

// Square of the gradient at a sample; rows stand w samples apart.
uint32_t sobelSquare(const uint8_t* p, int64_t w) {
  const auto smooth = [=](int64_t x) { return p[x - w] + 2 * p[x] + p[x + w]; };
  const auto change = [=](int64_t x) { return p[x + w] - p[x - w]; };
  const int32_t gx = smooth(1) - smooth(-1);
  const int32_t gy = change(-1) + 2 * change(0) + change(1);
  return static_cast<uint32_t>(gx * gx + gy * gy);
}

// Sum of the squares of n samples from `first` on, whatever row they are in.
MULTIVERSIONED
uint64_t sobelSquares(const uint8_t* first, int64_t w, int64_t n) {
  constexpr int64_t PAIRS = CHUNK / 2 + 1;
  int16_t smooth0[PAIRS];
  int16_t smooth1[PAIRS];
  int16_t change0[PAIRS];
  int16_t change1[PAIRS];
  int16_t changes[PAIRS];  // of both
  uint64_t squares = n % 2 == 0 ? 0 : sobelSquare(first + n - 1, w);
  for (int64_t begin = 0; begin < n - 1; begin += CHUNK) {
    const int64_t pairs = std::min(CHUNK, n - begin) / 2;
    const uint8_t* const left = first + begin - 1;
    for (int64_t k = 0; k < pairs + 1; ++k) {  // vectorised
      const uint16_t up = pairAt(left - w + 2 * k);
      const uint16_t here = pairAt(left + 2 * k);
      const uint16_t down = pairAt(left + w + 2 * k);
      smooth0[k] = static_cast<int16_t>(firstOf(up) + 2 * firstOf(here) + firstOf(down));
      smooth1[k] = static_cast<int16_t>(secondOf(up) + 2 * secondOf(here) + secondOf(down));
      change0[k] = static_cast<int16_t>(firstOf(down) - firstOf(up));
      change1[k] = static_cast<int16_t>(secondOf(down) - secondOf(up));
      changes[k] = static_cast<int16_t>(change0[k] + change1[k]);
    }
    int32_t squaresX[2] = {0, 0};
    int32_t squaresY[2] = {0, 0};
    for (int64_t k = 0; k < pairs; ++k) {  // vectorised
      const int16_t gx0 = static_cast<int16_t>(smooth0[k + 1] - smooth0[k]);
      const int16_t gx1 = static_cast<int16_t>(smooth1[k + 1] - smooth1[k]);
      const int16_t between = static_cast<int16_t>(change1[k] + change0[k + 1]);
      const int16_t gy0 = static_cast<int16_t>(changes[k] + between);
      const int16_t gy1 = static_cast<int16_t>(between + changes[k + 1]);
      squaresX[0] += gx0 * gx0;
      squaresX[1] += gx1 * gx1;
      squaresY[0] += gy0 * gy0;
      squaresY[1] += gy1 * gy1;
    }
    squares += static_cast<uint64_t>(squaresX[0]) + static_cast<uint64_t>(squaresX[1]) +
               static_cast<uint64_t>(squaresY[0]) + static_cast<uint64_t>(squaresY[1]);
  }
  return squares;
}

// Sum of the squares of all samples; the border has no gradient. Where a strip goes on from row to
// row, what the two samples of the border have added is taken away again.
uint64_t sobelEnergy(const uint8_t* data, int64_t w, int64_t h) {
  if (w < 3) return 0;
  uint64_t energy = 0;
  for (int64_t y = 1; y < h - 1; y += STRIP) {
    const uint8_t* const strip = data + y * w;
    const int64_t rows = std::min(STRIP, h - 1 - y);
    energy += sobelSquares(strip + 1, w, rows * w - 2);
    for (int64_t r = 1; r < rows; ++r) {
      energy -= sobelSquare(strip + r * w - 1, w) + sobelSquare(strip + r * w, w);
    }
  }
  return energy;
}

}  // namespace

double spatialAct(const Image* luma) {
  return std::sqrt(static_cast<double>(
      sobelEnergy(luma->data, static_cast<int64_t>(luma->w), static_cast<int64_t>(luma->h))));
}

void* spatialActivity(void* luma) {
  const Image* frame = static_cast<const Image*>(luma);
  // The border has no gradient but counts in the mean.
  Results.spatialActivity = spatialAct(frame) / std::sqrt(static_cast<double>(frame->w * frame->h));
  return nullptr;
}
