// Root mean square of the 3 x 3 Sobel gradient magnitude.
//
// The operator is taken apart: vertically, each column's smoothed level and its change go into two
// short rows of 16-bit numbers; horizontally, differences of the former and sums of the latter give
// both gradients. Their squares are summed as integers, which double could hold exactly at any
// frame size, so that the order of addition does not matter.
#include "indicators/spatialActivity.h"

#include <algorithm>
#include <cmath>

#include "definitions/kernels.h"
#include "indicators/results.h"

namespace {

// Columns at a time: 1024 squares of up to 1020 fit 31 bits, and the two rows the first cache
// level.
constexpr int64_t CHUNK = 1024;

MULTIVERSIONED
uint64_t sobelEnergy(const uint8_t* data, int64_t w, int64_t h) {
  int16_t smooth[CHUNK + 2];
  int16_t change[CHUNK + 2];
  uint64_t energy = 0;
  for (int64_t y = 1; y + 1 < h; ++y) {
    for (int64_t left = 0; left + 2 < w; left += CHUNK) {
      const uint8_t* const row = data + y * w + left;
      const uint8_t* const up = row - w;
      const uint8_t* const down = row + w;
      const int64_t n = std::min(CHUNK, w - 2 - left);
      for (int64_t x = 0; x < n + 2; ++x) {  // vectorised
        smooth[x] = static_cast<int16_t>(up[x] + 2 * row[x] + down[x]);
        change[x] = static_cast<int16_t>(down[x] - up[x]);
      }
      int32_t squaresX = 0;
      int32_t squaresY = 0;
      for (int64_t x = 0; x < n; ++x) {  // vectorised
        const int16_t gx = static_cast<int16_t>(smooth[x + 2] - smooth[x]);
        const int16_t gy = static_cast<int16_t>(change[x] + 2 * change[x + 1] + change[x + 2]);
        squaresX += gx * gx;
        squaresY += gy * gy;
      }
      energy += static_cast<uint32_t>(squaresX) + static_cast<uint32_t>(squaresY);
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
