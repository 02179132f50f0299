// Sample standard deviation of all samples of the frame.
#include "composed/composed.h"

#include <cmath>

#include "definitions/definitions.h"

namespace composed {

void* contrastRMS(void* luma) {
  const Image* frame = static_cast<const Image*>(luma);
  int32_t sum;
  int64_t squareSum;
  sumAndSquareSum(frame, &sum, &squareSum);
  const int32_t n =
      static_cast<int32_t>(static_cast<uint32_t>(frame->w) * static_cast<uint32_t>(frame->h));

  // Q - S * S / n over n - 1, in just this order: every other one differs in the last digits, and
  // this one leaves a remainder below 0 for some flat frames.
  double t = (-1.0 / n) * sum;
  t = t * sum;
  t = t + static_cast<double>(squareSum);
  Results.contrast = std::sqrt((1.0 / (n - 1)) * t);
  return nullptr;
}

}  // namespace composed
