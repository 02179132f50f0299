// Follows every 8 x 8 block over periods of eight pairs of frames. A block goes on when it changes
// and off when it stands perfectly still; one that keeps doing both flickers.
#include "indicators/flickering.h"

#include <algorithm>
#include <cstdlib>

#include "composed/composed.h"
#include "indicators/runTimeQuotient.h"

namespace composed {

namespace {

constexpr uint32_t framePeriod = 8;         // pairs of frames
constexpr int32_t blockSize = 8;            // samples
constexpr double ON_THRESHOLD = 0.0111;     // mean absolute difference, in luma levels
constexpr double MOST_ACTIVE_SHARE = 0.03;  // of the blocks
constexpr double NOT_YET = -1.0;            // while a period runs

uint32_t frameCount = 0;  // calls since the last period ended

}  // namespace

double flickering(const Image* current, const Image* previous, Image* switches, Image* states) {
  ImageDouble differences = callocImageDouble(current->w / blockSize, current->h / blockSize);
  calculateFlickering(current, previous, switches, states, &differences, blockSize, ON_THRESHOLD);
  freeImageDouble(&differences);
  if (++frameCount != framePeriod) return NOT_YET;

  const uint32_t blocks = static_cast<uint32_t>(switches->w * switches->h);
  const uint32_t mostActive = static_cast<uint32_t>(blocks * MOST_ACTIVE_SHARE);
  std::qsort(switches->data, blocks, sizeof(uint8_t), compareElements);
  uint32_t total = 0;
  for (uint32_t i = 0; i < mostActive; ++i) total += switches->data[i];
  const double rate = runTimeQuotient(total, mostActive * framePeriod);

  frameCount = 0;
  std::fill_n(switches->data, blocks, uint8_t{0});
  std::fill_n(states->data, blocks, uint8_t{0});
  return rate;
}

}  // namespace composed
