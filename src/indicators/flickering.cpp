// Follows every 8 x 8 block over periods of eight pairs of frames. A block goes on when it changes
// and off when it stands perfectly still; one that keeps doing both flickers.
//
// The mean difference of a block of 64 samples is either 0 or at least 1/64, which is above the
// 0.0111 from which it goes on. So a block is on exactly when it differs at all, and no difference
// has to be summed.
#include "indicators/flickering.h"

#include <algorithm>
#include <cstring>
#include <functional>
#include <numeric>

#include "definitions/kernels.h"
#include "indicators/runTimeQuotient.h"

namespace {

constexpr uint32_t framePeriod = 8;         // pairs of frames
constexpr int32_t blockSize = 8;            // samples
constexpr double MOST_ACTIVE_SHARE = 0.03;  // of the blocks
constexpr double NOT_YET = -1.0;            // while a period runs

uint32_t frameCount = 0;  // calls since the last period ended

constexpr uint64_t BLOCKS = 128;  // at a time

// Follows a row of blocks through one pair of frames, whose rows stand w samples apart.
MULTIVERSIONED
void followBlockRow(const uint8_t* current, const uint8_t* previous, uint64_t w, uint64_t blocks,
                    uint8_t* switches, uint8_t* states) {
  for (uint64_t first = 0; first < blocks; first += BLOCKS) {
    const uint64_t n = std::min(BLOCKS, blocks - first);
    uint8_t differs[BLOCKS * blockSize] = {};
    for (uint64_t y = 0; y < blockSize; ++y) {
      const uint8_t* const a = current + y * w + first * blockSize;
      const uint8_t* const b = previous + y * w + first * blockSize;
      for (uint64_t x = 0; x < n * blockSize; ++x) {  // vectorised
        differs[x] = static_cast<uint8_t>(differs[x] | (a[x] ^ b[x]));
      }
    }
    for (uint64_t k = 0; k < n; ++k) {
      uint64_t eight;
      std::memcpy(&eight, differs + k * blockSize, sizeof eight);
      const uint8_t isOn = eight != 0;
      uint8_t* const state = states + first + k;
      switches[first + k] = static_cast<uint8_t>(switches[first + k] + (isOn ^ *state));
      *state = isOn;
    }
  }
}

}  // namespace

double flickering(const Image* current, const Image* previous, Image* switches, Image* states) {
  for (uint64_t y = 0; y < switches->h; ++y) {
    followBlockRow(current->data + y * blockSize * current->w,
                   previous->data + y * blockSize * current->w, current->w, switches->w,
                   switches->data + y * switches->w, states->data + y * switches->w);
  }
  if (++frameCount != framePeriod) return NOT_YET;

  const uint32_t blocks = static_cast<uint32_t>(switches->w * switches->h);
  const uint32_t mostActive = static_cast<uint32_t>(blocks * MOST_ACTIVE_SHARE);
  std::nth_element(switches->data, switches->data + mostActive, switches->data + blocks,
                   std::greater<>());
  const uint32_t total = std::accumulate(switches->data, switches->data + mostActive, 0u);
  const double rate = runTimeQuotient(total, mostActive * framePeriod);

  frameCount = 0;
  std::fill_n(switches->data, blocks, uint8_t{0});
  std::fill_n(states->data, blocks, uint8_t{0});
  return rate;
}
