// Goes from the left edge to the right while columns equal their right neighbour.
//
// This is not letterbox turned by 90 degrees, and is not meant to be: a column need not be of one
// value, and the right edge is not looked at.
#include "composed/composed.h"

#include "definitions/definitions.h"
#include "indicators/runTimeQuotient.h"

namespace composed {

int checkPillarBar(const uint8_t* data, int32_t w, uint32_t h, uint32_t c) {
  const uint32_t width = static_cast<uint32_t>(w);
  for (uint32_t row = 0; row < h / 2; ++row) {
    const uint8_t* top = data + (row * width + c);
    const uint8_t* bottom = data + ((h - 1 - row) * width + c);
    if (top[0] != top[1] || bottom[0] != bottom[1]) return 0;
  }
  return 1;
}

void* pillarbox(void* luma) {
  const Image* frame = static_cast<const Image*>(luma);
  const uint32_t w = static_cast<uint32_t>(frame->w);
  const uint32_t h = static_cast<uint32_t>(frame->h);
  const uint32_t halfW = w / 2;
  uint32_t bars = 0;
  while (bars < halfW && checkPillarBar(frame->data, static_cast<int32_t>(w), h, bars)) ++bars;
  Results.pillarbox = runTimeQuotient(bars, halfW);
  return nullptr;
}

}  // namespace composed
