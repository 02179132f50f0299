// Twin of the temporal activity: the root mean square of the change from one frame to the next.
#include <cmath>

#include "reference.h"

namespace reference {

double temporalActivity(const Luma& current, const Luma& previous) {
  uint64_t squares = 0;
  for (uint64_t i = 0; i < current.samples.size(); ++i) {
    const int change = current.samples[i] - previous.samples[i];
    squares += static_cast<uint64_t>(change * change);
  }
  const volatile double samples = static_cast<double>(current.samples.size());  // may be 0
  return std::sqrt(static_cast<double>(squares)) / std::sqrt(samples);
}

}  // namespace reference
