// Share of 4 x 4 blocks that are combed: in each of their columns the luma goes up, down and up
// again, or the other way round.
//
// Blocks start at every multiple of 4, also where only a part of them is left, while the divisor
// counts whole blocks. At the right edge such a block goes on at the start of the next row, as the
// positions do.
#include "composed/composed.h"

#include "definitions/definitions.h"
#include "indicators/runTimeQuotient.h"

namespace composed {

namespace {

constexpr uint32_t INTERLACE_BLOCKSIZE = 4;

bool isColumnCombed(const uint8_t* top, uint32_t stride) {
  const uint8_t a = top[0];
  const uint8_t b = top[stride];
  const uint8_t c = top[2 * stride];
  const uint8_t d = top[3 * stride];
  return (a > b && c > b && c > d) || (a < b && c < b && c < d);
}

bool isBlockCombed(const uint8_t* block, uint32_t stride) {
  for (uint32_t x = 0; x < INTERLACE_BLOCKSIZE; ++x) {
    if (!isColumnCombed(block + x, stride)) return false;
  }
  return true;
}

}  // namespace

void* interlace(void* luma) {
  const Image* frame = static_cast<const Image*>(luma);
  const uint32_t w = static_cast<uint32_t>(frame->w);
  const uint32_t h = static_cast<uint32_t>(frame->h);
  const uint32_t blocks = (h / INTERLACE_BLOCKSIZE) * (w / INTERLACE_BLOCKSIZE);
  // From a block's first sample to its last one, in positions of the frame.
  const uint64_t reach = (INTERLACE_BLOCKSIZE - 1) * (uint64_t{w} + 1);

  double combed = 0.0;
  for (uint32_t y = 0; y < h; y += INTERLACE_BLOCKSIZE) {
    for (uint32_t x = 0; x < w; x += INTERLACE_BLOCKSIZE) {
      const uint64_t first = uint64_t{y} * w + x;
      const bool inFrame = first + reach < uint64_t{w} * h;
      if (inFrame && isBlockCombed(frame->data + first, w)) combed += 1.0;
    }
  }
  Results.interlace = runTimeQuotient(combed, blocks);
  return nullptr;
}

}  // namespace composed
