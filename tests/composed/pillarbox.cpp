// How many columns lie left of the first one that differs from its left neighbour, in half widths.
// Columns are compared over the upper and the lower half of the rows: the middle row of an odd
// height has no say.
#include <algorithm>

#include "composed/composed.h"
#include "definitions/definitions.h"
#include "indicators/runTimeQuotient.h"

namespace composed {

void* pillarbox(void* luma) {
  const Image* frame = static_cast<const Image*>(luma);
  const uint64_t w = frame->w;
  const uint64_t halfW = w / 2;
  const uint64_t halfH = frame->h / 2;
  Image32 differences = leftDifferences(frame);
  const Image32 upper = makeImage32(w, halfH, differences.data);
  const Image32 lower = makeImage32(w, halfH, differences.data + (frame->h - halfH) * w);
  Image32 runs = callocImage32(w, 1);  // of both halves; none: the column equals its left neighbour
  Image32 counters = callocImage32(w, 1);
  countSeqsV(&upper, &runs, &counters, 1, halfH, 1, 0.0);
  countSeqsV(&lower, &runs, &counters, 1, halfH, 1, 0.0);
  int32_t* const end = runs.data + w;
  int32_t* const first = std::find_if(runs.data, end, [](int32_t count) { return count != 0; });
  // The column before the first different one is the last of the bar, and has no equal neighbour.
  const uint64_t columns =
      first == end ? halfW : std::min(halfW, static_cast<uint64_t>(first - runs.data) - 1);
  freeImage32(&differences);
  freeImage32(&runs);
  freeImage32(&counters);
  Results.pillarbox = runTimeQuotient(static_cast<double>(columns), static_cast<double>(halfW));
  return nullptr;
}

}  // namespace composed
