// Root mean square of the 3 x 3 Sobel gradient magnitude.
//
// The operator is taken apart: along its row, each sample gets a smoothed level and the step
// between its two neighbours; down the columns, differences of the former and smoothed sums of the
// latter give both gradients. So every row is read once, and what it leaves for the next two is
// kept in short rows of 16-bit numbers, even and odd columns apart. The squares are summed as
// integers, which double could hold exactly at any frame size, so that the order of addition does
// not matter.
#include "indicators/spatialActivity.h"

#include <algorithm>
#include <cmath>

#include "definitions/kernels.h"
#include "indicators/results.h"

namespace {

// Pairs of columns at a time: their squares, of gradients up to 1020, fit 31 bits for the first and
// for the second column, and what is kept fits the first cache level.
constexpr int64_t PAIRS = 1024;

// What the rows above leave behind, for the first and for the second column of each pair.
struct Above {
  int16_t levels[2][2][PAIRS];  // smoothed along the row, four-fold; of even rows and of odd ones
  int16_t steps[2][PAIRS];      // right neighbour less the left one
  int16_t sums[2][PAIRS];       // of the steps of two rows
};

// Takes in a row, of whose columns the pairs begin right of `row`, and returns the sum of the
// squared gradients of the row above it. `levels` are those of two rows above.
MULTIVERSIONED
uint64_t addRow(const uint8_t* __restrict row, int64_t pairs, int16_t (*__restrict levels)[PAIRS],
                Above* __restrict above) {
  int16_t* const steps0 = above->steps[0];
  int16_t* const steps1 = above->steps[1];
  int16_t* const sums0 = above->sums[0];
  int16_t* const sums1 = above->sums[1];
  int32_t squaresX[2] = {0, 0};
  int32_t squaresY[2] = {0, 0};
  for (int64_t k = 0; k < pairs; ++k) {  // vectorised
    const uint16_t left = pairAt(row + 2 * k);
    const uint16_t right = pairAt(row + 2 * k + 2);
    const int16_t between = static_cast<int16_t>(secondOf(left) + firstOf(right));
    const int16_t level0 = static_cast<int16_t>(firstOf(left) + secondOf(left) + between);
    const int16_t level1 = static_cast<int16_t>(between + firstOf(right) + secondOf(right));
    const int16_t step0 = static_cast<int16_t>(firstOf(right) - firstOf(left));
    const int16_t step1 = static_cast<int16_t>(secondOf(right) - secondOf(left));
    const int16_t sum0 = static_cast<int16_t>(steps0[k] + step0);
    const int16_t sum1 = static_cast<int16_t>(steps1[k] + step1);
    const int16_t gx0 = static_cast<int16_t>(sums0[k] + sum0);
    const int16_t gx1 = static_cast<int16_t>(sums1[k] + sum1);
    const int16_t gy0 = static_cast<int16_t>(level0 - levels[0][k]);
    const int16_t gy1 = static_cast<int16_t>(level1 - levels[1][k]);
    levels[0][k] = level0;
    levels[1][k] = level1;
    steps0[k] = step0;
    steps1[k] = step1;
    sums0[k] = sum0;
    sums1[k] = sum1;
    squaresX[0] += gx0 * gx0;
    squaresX[1] += gx1 * gx1;
    squaresY[0] += gy0 * gy0;
    squaresY[1] += gy1 * gy1;
  }
  return static_cast<uint64_t>(squaresX[0]) + static_cast<uint64_t>(squaresX[1]) +
         static_cast<uint64_t>(squaresY[0]) + static_cast<uint64_t>(squaresY[1]);
}

// Square of the gradient at a sample; rows stand w samples apart.
uint64_t sobelSquare(const uint8_t* p, int64_t w) {
  const auto smooth = [=](int64_t x) { return p[x - w] + 2 * p[x] + p[x + w]; };
  const auto change = [=](int64_t x) { return p[x + w] - p[x - w]; };
  const int32_t gx = smooth(1) - smooth(-1);
  const int32_t gy = change(-1) + 2 * change(0) + change(1);
  return static_cast<uint32_t>(gx * gx + gy * gy);
}

// Sum of the squared gradients of up to 2 * PAIRS columns right of `left`; the border has none.
uint64_t bandEnergy(const uint8_t* data, int64_t w, int64_t h, int64_t left) {
  Above above = {};
  const int64_t last = std::min(left + 2 * PAIRS, w - 2);
  uint64_t energy = 0;
  for (int64_t y = 0; y < h; ++y) {
    // At the right edge rows are taken in as though they went on into the next: their lengths are
    // mostly multiples of a vector's, those without the border are not.
    const int64_t reach = last == w - 2 && y + 1 < h ? w : last;
    const int64_t pairs = std::min(PAIRS, (reach - left) / 2);
    const uint64_t squares = addRow(data + y * w + left, pairs, above.levels[y % 2], &above);
    if (y < 2) continue;
    energy += squares;
    const uint8_t* const centre = data + (y - 1) * w;
    const int64_t end = left + 2 * pairs;
    for (int64_t x = end + 1; x <= last; ++x) energy += sobelSquare(centre + x, w);
    for (int64_t x = last + 1; x <= end; ++x) energy -= sobelSquare(centre + x, w);
  }
  return energy;
}

uint64_t sobelEnergy(const uint8_t* data, int64_t w, int64_t h) {
  uint64_t energy = 0;
  for (int64_t left = 0; left < w - 2; left += 2 * PAIRS) energy += bandEnergy(data, w, h, left);
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
