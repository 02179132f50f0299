// Share of 4 x 4 blocks that are combed: in each of their columns the luma goes up, down and up
// again, or the other way round.
//
// Blocks start at every multiple of 4, also where only a part of them is left, while the divisor
// counts whole blocks. At the right edge such a block goes on at the start of the next row, as the
// positions do; one that would go on behind the frame's last sample is not combed.
#include "indicators/interlace.h"

#include <algorithm>
#include <cstring>

#include "definitions/definitions.h"
#include "definitions/kernels.h"
#include "indicators/results.h"
#include "indicators/runTimeQuotient.h"

namespace {

constexpr uint64_t INTERLACE_BLOCKSIZE = 4;
constexpr uint64_t BLOCKS_AT_ONCE = 256;
constexpr uint32_t ALL_COMBED = 0xffffffff;  // four columns, a byte each

// Number of combed ones among `n` blocks side by side, up to BLOCKS_AT_ONCE, whose lines stand w
// samples apart.
MULTIVERSIONED
uint32_t combedBlocks(const uint8_t* top, uint64_t w, uint64_t n) {
  uint8_t combed[BLOCKS_AT_ONCE * INTERLACE_BLOCKSIZE];
  const uint8_t* const second = top + w;
  const uint8_t* const third = second + w;
  const uint8_t* const bottom = third + w;
  for (uint64_t x = 0; x < n * INTERLACE_BLOCKSIZE; ++x) {  // vectorised
    const uint8_t a = top[x];
    const uint8_t b = second[x];
    const uint8_t c = third[x];
    const uint8_t d = bottom[x];
    const bool up = (a > b) & (c > b) & (c > d);
    const bool down = (a < b) & (c < b) & (c < d);
    combed[x] = (up | down) ? 0xff : 0;
  }
  uint32_t count = 0;
  for (uint64_t k = 0; k < n; ++k) {  // vectorised
    uint32_t columns;
    std::memcpy(&columns, combed + k * INTERLACE_BLOCKSIZE, sizeof columns);
    count += columns == ALL_COMBED ? 1 : 0;
  }
  return count;
}

}  // namespace

void* interlace(void* luma) {
  const Image* frame = static_cast<const Image*>(luma);
  const uint64_t w = static_cast<uint32_t>(frame->w);
  const uint64_t h = static_cast<uint32_t>(frame->h);
  const uint32_t wholeBlocks =
      static_cast<uint32_t>((h / INTERLACE_BLOCKSIZE) * (w / INTERLACE_BLOCKSIZE));
  const uint64_t columns = (w + INTERLACE_BLOCKSIZE - 1) / INTERLACE_BLOCKSIZE;

  uint32_t combed = 0;
  for (uint64_t y = 0; y + INTERLACE_BLOCKSIZE <= h; y += INTERLACE_BLOCKSIZE) {
    // From a block row's bottom line on, every four samples that the frame still has are the end of
    // a block.
    const uint64_t left = w * (h - y - INTERLACE_BLOCKSIZE + 1);
    const uint64_t n = std::min(columns, left / INTERLACE_BLOCKSIZE);
    for (uint64_t first = 0; first < n; first += BLOCKS_AT_ONCE) {
      const uint8_t* top = frame->data + y * w + first * INTERLACE_BLOCKSIZE;
      combed += combedBlocks(top, w, std::min(BLOCKS_AT_ONCE, n - first));
    }
  }
  Results.interlace = runTimeQuotient(combed, wholeBlocks);
  return nullptr;
}
