// Root mean square difference of two frames.
#include "indicators/temporalActivity.h"

#include <algorithm>
#include <cmath>

#include "definitions/kernels.h"
#include "indicators/runTimeQuotient.h"

namespace {

// Samples whose squared differences, 65025 at most each, are summed in 31 bits.
constexpr uint64_t SAMPLES_AT_ONCE = 32768;

MULTIVERSIONED
uint64_t squaredDifferences(const uint8_t* current, const uint8_t* previous, uint64_t n) {
  uint64_t squares = 0;
  for (uint64_t begin = 0; begin < n; begin += SAMPLES_AT_ONCE) {
    const uint64_t end = std::min(begin + SAMPLES_AT_ONCE, n);
    int32_t chunk = 0;
    for (uint64_t i = begin; i < end; ++i) {  // vectorised
      const int16_t difference = static_cast<int16_t>(current[i] - previous[i]);
      chunk += difference * difference;
    }
    squares += static_cast<uint32_t>(chunk);
  }
  return squares;
}

}  // namespace

double temporalAct(const Image* current, const Image* previous) {
  const uint64_t n = current->w * current->h;
  return std::sqrt(static_cast<double>(squaredDifferences(current->data, previous->data, n)));
}

double temporalActivity(const Image* current, const Image* previous) {
  const double n = static_cast<double>(current->w * current->h);
  return runTimeQuotient(temporalAct(current, previous), std::sqrt(n));
}
