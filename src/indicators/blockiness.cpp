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

// Grid lines at a time: 16 KiB of sums, which stay in the first cache level.
constexpr uint64_t LINES = 1024;
// Rows at a time: their steps, 255 at most each, fit 16 bits.
constexpr uint64_t ROWS = 256;

// Adds the steps of up to LINES vertical lines in up to ROWS rows onto `steps`, one element a line;
// the first line is between columns 7 and 8 of `data`.
MULTIVERSIONED
void addVerticalLines(const uint8_t* data, uint64_t w, uint64_t rows, uint64_t lines,
                      Steps* steps) {
  const uint64_t n = lines * BLOCKSIZE;
  uint16_t columns[LINES * BLOCKSIZE];  // steps from each column to the next
  std::fill_n(columns, n, uint16_t{0});
  uint64_t y = 0;
  for (; y + 4 <= rows; y += 4) {
    const uint8_t* const a = data + y * w;
    const uint8_t* const b = a + w;
    const uint8_t* const c = b + w;
    const uint8_t* const d = c + w;
    for (uint64_t x = 0; x < n; ++x) {  // vectorised
      columns[x] = static_cast<uint16_t>(
          columns[x] + absoluteDifference(a[x], a[x + 1]) + absoluteDifference(b[x], b[x + 1]) +
          absoluteDifference(c[x], c[x + 1]) + absoluteDifference(d[x], d[x + 1]));
    }
  }
  for (; y < rows; ++y) {
    const uint8_t* const row = data + y * w;
    for (uint64_t x = 0; x < n; ++x) {  // vectorised
      columns[x] = static_cast<uint16_t>(columns[x] + absoluteDifference(row[x], row[x + 1]));
    }
  }
  // Of a block's eight steps the last leads across the line, the one before it is the inner one.
  for (uint64_t k = 0; k < lines; ++k) {
    steps[k].inner += columns[k * BLOCKSIZE + BLOCKSIZE - 2];
    steps[k].across += columns[k * BLOCKSIZE + BLOCKSIZE - 1];
  }
}

Totals verticalLines(const uint8_t* data, uint32_t w, uint32_t h) {
  RunningTotals totals = {};
  const uint64_t lines = gridLines(w);
  for (uint64_t first = 0; first < lines; first += LINES) {
    const uint64_t n = std::min(LINES, lines - first);
    Steps steps[LINES] = {};
    for (uint64_t y = 0; y < h; y += ROWS) {
      addVerticalLines(data + y * w + first * BLOCKSIZE, w, std::min<uint64_t>(ROWS, h - y), n,
                       steps);
    }
    for (uint64_t k = 0; k < n; ++k) addLine(&totals, steps[k]);
  }
  return totals.total;
}

}  // namespace

void* blockiness(void* luma) {
  const Image* frame = static_cast<const Image*>(luma);
  const uint32_t w = static_cast<uint32_t>(frame->w);
  const uint32_t h = static_cast<uint32_t>(frame->h);

  const Totals rows = horizontalLines(frame->data, w, h);
  const Totals columns = verticalLines(frame->data, w, h);
  const double inner = static_cast<double>(static_cast<uint64_t>(rows.inner + columns.inner));
  const double across = static_cast<double>(static_cast<uint64_t>(rows.across + columns.across));
  const double ratio = inner / across;
  Results.blockiness = std::isnan(ratio) ? 1.0 : ratio;
  return nullptr;
}
