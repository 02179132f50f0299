// One column of pillarbox at a time.
#include "indicators/pillarbox.h"

int checkPillarBar(const uint8_t* data, int32_t w, uint32_t h, uint32_t c) {
  const uint32_t width = static_cast<uint32_t>(w);
  for (uint32_t row = 0; row < h / 2; ++row) {
    const uint8_t* top = data + (row * width + c);
    const uint8_t* bottom = data + ((h - 1 - row) * width + c);
    if (top[0] != top[1] || bottom[0] != bottom[1]) return 0;
  }
  return 1;
}
