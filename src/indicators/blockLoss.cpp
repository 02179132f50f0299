// Lost blocks leave long, straight, strong edges exactly on the 16 x 16 grid, in both directions.
//
// An edge sample is strong when its Roberts energy exceeds six times the mean of the frame. Runs of
// 12 strong samples are counted along grid rows and along grid columns, in every whole 256 x 256
// region, and a region scores the product: damage has both, a horizon or a door frame has not.
//
// One pass over the frame gives the mean. After that only the grid lines are looked at, 1 sample in
// 8, and the columns of a region only when its rows have runs at all.
#include "indicators/blockLoss.h"

#include <algorithm>
#include <cstdint>

#include "definitions/definitions.h"
#include "definitions/kernels.h"
#include "indicators/results.h"

namespace {

constexpr uint64_t GRID = 16;     // samples between grid lines
constexpr uint64_t REGION = 256;  // samples; edge of the square in which runs are multiplied
constexpr uint64_t REGION_LINES = REGION / GRID;
constexpr uint32_t MIN_RUN = 12;         // samples; most of one block's edge
constexpr double STRENGTH_FACTOR = 6.0;  // strong edges, in mean energies of the frame

// Samples of a row whose squared differences, 65025 at most each, are summed in 31 bits.
constexpr uint64_t CHUNK = 32768;

// Sum of the squares of both diagonal differences over the frame; row 0 and column 0 have none.
MULTIVERSIONED
int64_t robertsEnergy(const uint8_t* data, uint64_t w, uint64_t h) {
  int64_t energy = 0;
  for (uint64_t y = 1; y < h; ++y) {
    const uint8_t* const row = data + y * w;
    const uint8_t* const up = row - w;
    for (uint64_t begin = 1; begin < w; begin += CHUNK) {
      const uint64_t end = std::min(begin + CHUNK, w);
      int32_t main = 0;
      int32_t anti = 0;
      for (uint64_t x = begin; x < end; ++x) {  // vectorised
        const int16_t a = static_cast<int16_t>(up[x - 1] - row[x]);
        const int16_t b = static_cast<int16_t>(up[x] - row[x - 1]);
        main += a * a;
        anti += b * b;
      }
      energy += int64_t{main} + anti;
    }
  }
  return energy;
}

// Number of runs along the grid rows of the region at column x0, row y0 of the frame. A sample is
// strong when its energy exceeds `limit`.
MULTIVERSIONED
uint32_t runsAlongRows(const uint8_t* data, uint64_t w, uint64_t x0, uint64_t y0, int32_t limit) {
  uint32_t runs = 0;
  for (uint64_t y = std::max(y0, GRID); y < y0 + REGION; y += GRID) {
    const uint8_t* const row = data + y * w + x0;
    const uint8_t* const up = row - w;
    uint8_t strong[REGION];
    uint32_t count = 0;
    strong[0] = 0;
    for (uint64_t x = x0 == 0 ? 1 : 0; x < REGION; ++x) {  // vectorised
      const int32_t a = up[x - 1] - row[x];
      const int32_t b = up[x] - row[x - 1];
      strong[x] = a * a + b * b > limit ? 1 : 0;
      count += strong[x];
    }
    if (count < MIN_RUN) continue;
    uint32_t length = 0;
    for (const uint8_t isStrong : strong) {
      length = isStrong ? length + 1 : 0;
      if (length == MIN_RUN) ++runs;
    }
  }
  return runs;
}

// The same along its grid columns, all of which are followed side by side.
MULTIVERSIONED
uint32_t runsAlongColumns(const uint8_t* data, uint64_t w, uint64_t x0, uint64_t y0,
                          int32_t limit) {
  int16_t upLeft[REGION_LINES];
  int16_t up[REGION_LINES];
  int16_t left[REGION_LINES];
  int16_t here[REGION_LINES];
  uint16_t lengths[REGION_LINES] = {};
  uint16_t runs[REGION_LINES] = {};
  // Fetches the samples of a row that lie on the grid columns and left of them. Column 0 of the
  // frame has none to its left and no energy; whatever stands in for it is not counted.
  const auto fetch = [&](uint64_t y) {
    const uint8_t* const row = data + y * w + x0;
    for (uint64_t q = 0; q < REGION_LINES; ++q) {
      const uint64_t x = x0 + q == 0 ? 1 : q * GRID;
      left[q] = (row + x)[-1];
      here[q] = row[x];
    }
  };

  const uint64_t first = std::max<uint64_t>(y0, 1);
  fetch(first - 1);
  for (uint64_t y = first; y < y0 + REGION; ++y) {
    std::copy_n(left, REGION_LINES, upLeft);
    std::copy_n(here, REGION_LINES, up);
    fetch(y);
    for (uint64_t q = 0; q < REGION_LINES; ++q) {  // vectorised
      const int32_t a = upLeft[q] - here[q];
      const int32_t b = up[q] - left[q];
      const bool isStrong = a * a + b * b > limit;
      lengths[q] = static_cast<uint16_t>(isStrong ? lengths[q] + 1 : 0);
      runs[q] = static_cast<uint16_t>(runs[q] + (lengths[q] == MIN_RUN ? 1 : 0));
    }
  }
  uint32_t total = 0;
  for (uint64_t q = x0 == 0 ? 1 : 0; q < REGION_LINES; ++q) total += runs[q];
  return total;
}

}  // namespace

void* blockLoss(void* luma) {
  const Image* frame = static_cast<const Image*>(luma);
  const uint32_t w = static_cast<uint32_t>(frame->w);
  const uint32_t h = static_cast<uint32_t>(frame->h);
  if (w < REGION || h < REGION) {
    Results.blockLoss = -1.0;
    return gaveUp();
  }

  const double samples = h * w;
  const double threshold =
      static_cast<double>(robertsEnergy(frame->data, w, h)) / samples * STRENGTH_FACTOR;
  // An integer is above the threshold when it is above its whole part, which is 6 * 130050 at most.
  const int32_t limit = static_cast<int32_t>(threshold);
  int64_t scores = 0;
  for (uint64_t y = 0; y + REGION <= h; y += REGION) {
    for (uint64_t x = 0; x + REGION <= w; x += REGION) {
      const uint32_t alongRows = runsAlongRows(frame->data, w, x, y, limit);
      if (alongRows == 0) continue;
      scores += int64_t{alongRows} * runsAlongColumns(frame->data, w, x, y, limit);
    }
  }
  const uint64_t regions = (w / REGION) * (h / REGION);
  Results.blockLoss = static_cast<double>(scores) / static_cast<double>(regions);
  return nullptr;
}
