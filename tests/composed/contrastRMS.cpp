// Sample standard deviation of all samples of the frame.
#include "composed/composed.h"

#include <cmath>

#include "definitions/definitions.h"

namespace composed {

void* contrastRMS(void* luma) {
  const Image* frame = static_cast<const Image*>(luma);
  const int32_t n = static_cast<int32_t>(frame->w * frame->h);
  uint32_t levels = 0;
  int64_t squareSum = 0;
  for (int32_t i = 0; i < n; ++i) {
    const uint32_t level = frame->data[i];
    levels += level;
    squareSum += level * level;
  }
  const int32_t sum = static_cast<int32_t>(levels);

  // Q - S * S / n over n - 1, in just this order: every other one differs in the last digits, and
  // this one leaves a remainder below 0 for some flat frames.
  double t = (-1.0 / n) * sum;
  t = t * sum;
  t = t + static_cast<double>(squareSum);
  Results.contrast = std::sqrt((1.0 / (n - 1)) * t);
  return nullptr;
}

}  // namespace composed
