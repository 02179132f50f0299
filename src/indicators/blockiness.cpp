// Compares, along every line of the 8 x 8 grid, the luma step across the line with the step between
// the two last samples before it.
//
// The sums of a pass run on from line to line and are added to the totals as they stand after each
// line: of K lines the k-th counts K - k + 1 times. Numerator and denominator are weighted alike,
// so that a uniform grid gives the plain ratio, while lines near the top and left weigh more. It is
// meant so; clearing the sums at each line would change every value.
//
// What a line adds does not depend on the lines before it. So horizontal lines are summed one by
// one, and vertical ones all together, row by row, each in its own pair of sums.
#include "indicators/blockiness.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>

#include "definitions/definitions.h"
#include "definitions/kernels.h"
#include "indicators/results.h"

namespace {

// Steps of one line; 32-bit sums that wrap.
struct Steps {
  uint32_t inner;
  uint32_t across;
};

struct Totals {
  int64_t inner;
  int64_t across;
};

// Lets the sums run over the lines in their order and adds up how they stand after each. They are
// 32-bit and count as signed from 2^31 on.
struct RunningTotals {
  Steps running;
  Totals total;
};

void addLine(RunningTotals* totals, Steps line) {
  totals->running.inner += line.inner;
  totals->running.across += line.across;
  totals->total.inner += static_cast<int32_t>(totals->running.inner);
  totals->total.across += static_cast<int32_t>(totals->running.across);
}

// Number of grid lines across a side: those with a whole block behind them.
uint32_t gridLines(uint32_t side) {
  return std::max(side / BLOCKSIZE, 1u) - 1;
}

MULTIVERSIONED
Totals horizontalLines(const uint8_t* data, uint32_t w, uint32_t h) {
  RunningTotals totals = {};
  for (uint64_t line = 1; line <= gridLines(h); ++line) {
    const uint8_t* const behind = data + line * BLOCKSIZE * w;
    const uint8_t* const last = behind - w;
    const uint8_t* const beforeLast = last - w;
    Steps steps = {0, 0};
    for (uint32_t x = 0; x < w; ++x) {  // vectorised
      steps.inner += static_cast<uint32_t>(std::abs(last[x] - beforeLast[x]));
      steps.across += static_cast<uint32_t>(std::abs(last[x] - behind[x]));
    }
    addLine(&totals, steps);
  }
  return totals.total;
}

// Grid lines summed at a time, in sums that stay in the first cache level.
constexpr uint32_t LINES = 128;

static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__, "the last of eight bytes is the highest");

// Sums of `lines` vertical lines over all rows, the first between columns 7 and 8 of `data`.
MULTIVERSIONED
void verticalLines(const uint8_t* data, uint64_t w, uint64_t h, uint64_t lines, uint64_t* inner,
                   uint64_t* across) {
  uint8_t steps[LINES * BLOCKSIZE];
  for (uint64_t y = 0; y < h; ++y) {
    const uint8_t* const row = data + y * w;
    const uint64_t n = lines * BLOCKSIZE;
    for (uint64_t x = 0; x < n; ++x) {  // vectorised
      steps[x] = absoluteDifference(row[x], row[x + 1]);
    }
    // Of a block's eight steps the last leads across the line, the one before it is the inner one.
    for (uint64_t k = 0; k < lines; ++k) {  // vectorised
      uint64_t eight;
      std::memcpy(&eight, steps + k * BLOCKSIZE, sizeof eight);
      inner[k] += eight >> 48 & 0xff;
      across[k] += eight >> 56;
    }
  }
}

Totals allVerticalLines(const uint8_t* data, uint32_t w, uint32_t h) {
  RunningTotals totals = {};
  const uint32_t lines = gridLines(w);
  for (uint32_t first = 0; first < lines; first += LINES) {
    const uint32_t n = std::min(LINES, lines - first);
    uint64_t inner[LINES] = {};
    uint64_t across[LINES] = {};
    verticalLines(data + first * BLOCKSIZE, w, h, n, inner, across);
    for (uint32_t k = 0; k < n; ++k) {
      addLine(&totals, {static_cast<uint32_t>(inner[k]), static_cast<uint32_t>(across[k])});
    }
  }
  return totals.total;
}

}  // namespace

void* blockiness(void* luma) {
  const Image* frame = static_cast<const Image*>(luma);
  const uint32_t w = static_cast<uint32_t>(frame->w);
  const uint32_t h = static_cast<uint32_t>(frame->h);

  const Totals rows = horizontalLines(frame->data, w, h);
  const Totals columns = allVerticalLines(frame->data, w, h);
  const double inner = static_cast<double>(static_cast<uint64_t>(rows.inner + columns.inner));
  const double across = static_cast<double>(static_cast<uint64_t>(rows.across + columns.across));
  const double ratio = inner / across;
  Results.blockiness = std::isnan(ratio) ? 1.0 : ratio;
  return nullptr;
}

double blockToMOS(double blockiness) {
  return std::max(0.0, (blockiness * 17.86 + -10.38) * 0.5);  // 0 of NaN, too
}
