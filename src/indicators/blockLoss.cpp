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
#include "indicators/energy.h"
#include "indicators/results.h"

namespace {

constexpr int64_t GRID = 16;     // samples between grid lines
constexpr int64_t REGION = 256;  // samples; edge of the square in which runs are multiplied
constexpr int64_t REGION_LINES = REGION / GRID;
constexpr uint32_t MIN_RUN = 12;         // samples; most of one block's edge
constexpr double STRENGTH_FACTOR = 6.0;  // strong edges, in mean energies of the frame

// Squares of both diagonal differences of a sample; rows stand w samples apart.
int32_t robertsSquare(const uint8_t* p, int64_t w) {
  const uint8_t* const up = p - w;
  const int32_t a = up[-1] - p[0];
  const int32_t b = up[0] - p[-1];
  return a * a + b * b;
}

// Their sum over n samples from `first` on, whatever row they are in.
MULTIVERSIONED
int64_t robertsSquares(const uint8_t* first, int64_t w, int64_t n) {
  int64_t squares = n % 2 == 0 ? 0 : robertsSquare(first + n - 1, w);
  for (int64_t begin = 0; begin < n; begin += ENERGY_CHUNK) {
    const int64_t pairs = std::min(ENERGY_CHUNK, n - begin) / 2;
    const uint8_t* const row = first + begin;
    const uint8_t* const up = row - w;
    int32_t main[2] = {0, 0};
    int32_t anti[2] = {0, 0};
    for (int64_t k = 0; k < pairs; ++k) {  // vectorised
      const uint16_t left = pairAt(row + 2 * k - 1);
      const uint16_t here = pairAt(row + 2 * k);
      const uint16_t upLeft = pairAt(up + 2 * k - 1);
      const uint16_t above = pairAt(up + 2 * k);
      const int16_t main0 = static_cast<int16_t>(firstOf(upLeft) - firstOf(here));
      const int16_t main1 = static_cast<int16_t>(firstOf(above) - secondOf(here));
      const int16_t anti0 = static_cast<int16_t>(firstOf(above) - firstOf(left));
      const int16_t anti1 = static_cast<int16_t>(secondOf(above) - firstOf(here));
      main[0] += main0 * main0;
      main[1] += main1 * main1;
      anti[0] += anti0 * anti0;
      anti[1] += anti1 * anti1;
    }
    squares += int64_t{main[0]} + main[1] + anti[0] + anti[1];
  }
  return squares;
}

int64_t robertsEnergy(const uint8_t* data, int64_t w, int64_t h) {
  return energyOf(
      data, w, h, [w](const uint8_t* p) { return robertsSquare(p, w); },
      [w](const uint8_t* first, int64_t n) { return robertsSquares(first, w, n); });
}

// Number of runs along the grid rows of the region at column x0, row y0 of the frame. A sample is
// strong when its energy exceeds `limit`.
MULTIVERSIONED
uint32_t runsAlongRows(const uint8_t* data, int64_t w, int64_t x0, int64_t y0, int32_t limit) {
  uint32_t runs = 0;
  for (int64_t y = std::max(y0, GRID); y < y0 + REGION; y += GRID) {
    const uint8_t* const row = data + y * w + x0;
    const uint8_t* const up = row - w;
    const int64_t begin = x0 == 0 ? 1 : 0;  // column 0 of the frame has no energy
    uint8_t strong[REGION];
    uint32_t count = 0;
    strong[0] = 0;
    for (int64_t x = begin; x < REGION; ++x) {  // vectorised
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
uint32_t runsAlongColumns(const uint8_t* data, int64_t w, int64_t x0, int64_t y0, int32_t limit) {
  int16_t upLeft[REGION_LINES];
  int16_t up[REGION_LINES];
  int16_t left[REGION_LINES];
  int16_t here[REGION_LINES];
  uint16_t lengths[REGION_LINES] = {};
  uint16_t runs[REGION_LINES] = {};
  // Fetches the samples of a row that lie on the grid columns and left of them. Column 0 of the
  // frame has none to its left and no energy; whatever stands in for it is not counted.
  const auto fetch = [&](int64_t y) {
    const uint8_t* const row = data + y * w + x0;
    for (int64_t q = 0; q < REGION_LINES; ++q) {
      const int64_t x = x0 + q == 0 ? 1 : q * GRID;
      left[q] = (row + x)[-1];
      here[q] = row[x];
    }
  };

  const int64_t first = std::max<int64_t>(y0, 1);
  fetch(first - 1);
  for (int64_t y = first; y < y0 + REGION; ++y) {
    std::copy_n(left, REGION_LINES, upLeft);
    std::copy_n(here, REGION_LINES, up);
    fetch(y);
    for (int64_t q = 0; q < REGION_LINES; ++q) {  // vectorised
      const int32_t a = upLeft[q] - here[q];
      const int32_t b = up[q] - left[q];
      const bool isStrong = a * a + b * b > limit;
      lengths[q] = static_cast<uint16_t>(isStrong ? lengths[q] + 1 : 0);
      runs[q] = static_cast<uint16_t>(runs[q] + (lengths[q] == MIN_RUN ? 1 : 0));
    }
  }
  uint32_t total = 0;
  for (int64_t q = x0 == 0 ? 1 : 0; q < REGION_LINES; ++q) total += runs[q];
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
  for (int64_t y = 0; y + REGION <= h; y += REGION) {
    for (int64_t x = 0; x + REGION <= w; x += REGION) {
      const uint32_t alongRows = runsAlongRows(frame->data, w, x, y, limit);
      if (alongRows == 0) continue;
      scores += int64_t{alongRows} * runsAlongColumns(frame->data, w, x, y, limit);
    }
  }
  const int64_t regions = (w / REGION) * (h / REGION);
  Results.blockLoss = static_cast<double>(scores) / static_cast<double>(regions);
  return nullptr;
}
