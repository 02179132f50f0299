// Root mean square difference of two frames.
#include "composed/composed.h"

#include <cmath>

#include "indicators/runTimeQuotient.h"

namespace composed {

double temporalAct(const Image* current, const Image* previous) {
  const uint64_t n = current->w * current->h;
  uint64_t squares = 0;
  for (uint64_t i = 0; i < n; ++i) {
    const int32_t difference = current->data[i] - previous->data[i];
    squares += static_cast<uint32_t>(difference * difference);
  }
  return std::sqrt(static_cast<double>(squares));
}

double temporalActivity(const Image* current, const Image* previous) {
  const double n = static_cast<double>(current->w * current->h);
  return runTimeQuotient(temporalAct(current, previous), std::sqrt(n));
}

}  // namespace composed
