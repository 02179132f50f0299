// Goes inwards from the top and bottom rows at once while both are each of one value.
#include "indicators/letterbox.h"

#include <cstring>

#include "definitions/definitions.h"
#include "indicators/results.h"
#include "indicators/runTimeQuotient.h"

namespace {

// A row is of one value when it equals itself moved by one sample.
bool isUniform(const uint8_t* row, uint32_t w) {
  return w < 2 || std::memcmp(row, row + 1, w - 1) == 0;
}

}  // namespace

bool checkLetterBar(const uint8_t* data, uint32_t w, uint32_t h, int32_t i) {
  const uint32_t row = static_cast<uint32_t>(i);
  return isUniform(data + row * w, w) && isUniform(data + (h - 1 - row) * w, w);
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
