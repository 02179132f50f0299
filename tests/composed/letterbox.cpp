// Goes inwards from the top and bottom rows at once while both are each of one value.
#include "composed/composed.h"

#include "definitions/definitions.h"
#include "indicators/runTimeQuotient.h"

namespace composed {

bool checkLetterBar(const uint8_t* data, uint32_t w, uint32_t h, int32_t i) {
  const uint32_t row = static_cast<uint32_t>(i);
  const uint8_t* top = data + row * w;
  const uint8_t* bottom = data + (h - 1 - row) * w;
  for (uint32_t x = 1; x < w; ++x) {
    if (top[x - 1] != top[x] || bottom[x - 1] != bottom[x]) return false;
  }
  return true;
}

void* letterbox(void* luma) {
  const Image* frame = static_cast<const Image*>(luma);
  const uint32_t w = static_cast<uint32_t>(frame->w);
  const uint32_t h = static_cast<uint32_t>(frame->h);
  const int32_t halfH = static_cast<int32_t>(h / 2);
  int32_t bars = 0;
  while (bars < halfH && checkLetterBar(frame->data, w, h, bars)) ++bars;
  Results.letterbox = runTimeQuotient(bars, halfH);
  return nullptr;
}

}  // namespace composed
