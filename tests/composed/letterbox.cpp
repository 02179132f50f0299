// How far the detail that is nearest to the top or bottom edge lies from it, in half heights.
#include <algorithm>
#include <initializer_list>

#include "composed/composed.h"
#include "definitions/definitions.h"
#include "indicators/runTimeQuotient.h"

namespace composed {

void* letterbox(void* luma) {
  const Image* frame = static_cast<const Image*>(luma);
  Image32 differences = leftDifferences(frame);
  Image32 runs = callocImage32(1, frame->h);
  countSeqsH(&differences, &runs, frame->w, 1, 1, 0.0);  // no run: a row of one value
  const uint64_t halfH = frame->h / 2;
  uint64_t depth = halfH;
  for (uint64_t y = 0; y < frame->h; ++y) {
    if (runs.data[y] != 0) depth = std::min({depth, y, frame->h - 1 - y});
  }
  freeImage32(&differences);
  freeImage32(&runs);
  Results.letterbox = runTimeQuotient(static_cast<double>(depth), static_cast<double>(halfH));
  return nullptr;
}

}  // namespace composed
