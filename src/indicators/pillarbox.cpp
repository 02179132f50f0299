// Counts the columns, from the left edge on, that equal their right neighbour.
//
// This is not letterbox turned by 90 degrees, and is not meant to be: a column need not be of one
// value, and the right edge is not looked at.
//
// Rows are gone through once, each as far as all rows before it were equal to themselves moved by
// one sample: the first column that fails is the least one at which any row does.
#include "indicators/pillarbox.h"

#include <algorithm>
#include <cstring>

#include "definitions/definitions.h"
#include "indicators/results.h"
#include "indicators/runTimeQuotient.h"

namespace {

// Number of samples, up to `limit`, that equal their right neighbour before the first that does
// not.
uint32_t equalNeighbours(const uint8_t* row, uint32_t limit) {
  if (std::memcmp(row, row + 1, limit) == 0) return limit;
  return static_cast<uint32_t>(std::mismatch(row, row + limit, row + 1).first - row);
}

}  // namespace

void* pillarbox(void* luma) {
  const Image* frame = static_cast<const Image*>(luma);
  const uint32_t w = static_cast<uint32_t>(frame->w);
  const uint32_t h = static_cast<uint32_t>(frame->h);
  const uint32_t halfW = w / 2;
  uint32_t bars = halfW;
  for (uint32_t row = 0; row < h / 2 && bars > 0; ++row) {
    bars = equalNeighbours(frame->data + row * w, bars);
    bars = equalNeighbours(frame->data + (h - 1 - row) * w, bars);
  }
  Results.pillarbox = runTimeQuotient(bars, halfW);
  return nullptr;
}
