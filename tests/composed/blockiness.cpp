// Compares, along every line of the 8 x 8 grid, the luma step across the line with the step between
// the two last samples before it.
//
// The sums of a pass run on from line to line and are added to the totals as they stand after each
// line: of K lines the k-th counts K - k + 1 times. Numerator and denominator are weighted alike,
// so that a uniform grid gives the plain ratio, while lines near the top and left weigh more. It is
// meant so; clearing the sums at each line would change every value.
#include "composed/composed.h"

#include <cmath>
#include <cstdlib>

#include "definitions/definitions.h"

namespace composed {

namespace {

struct Steps {
  int64_t inner;
  int64_t across;
};

// Grid lines across a direction in which `size` samples stand `step` apart, each line `length`
// samples long that stand `along` apart. The last line has at least a whole block behind it.
Steps gridSteps(const uint8_t* data, uint32_t size, uint32_t length, uint64_t step,
                uint64_t along) {
  Steps total = {0, 0};
  uint32_t inner = 0;
  uint32_t across = 0;
  for (uint32_t line = BLOCKSIZE; line + BLOCKSIZE <= size; line += BLOCKSIZE) {
    const uint8_t* behind = data + line * step;
    for (uint32_t i = 0; i < length; ++i, behind += along) {
      const int last = *(behind - step);
      inner += static_cast<uint32_t>(std::abs(last - *(behind - 2 * step)));
      across += static_cast<uint32_t>(std::abs(last - *behind));
    }
    // The running sums are 32-bit and count as signed from 2^31 on.
    total.inner += static_cast<int32_t>(inner);
    total.across += static_cast<int32_t>(across);
  }
  return total;
}

}  // namespace

void* blockiness(void* luma) {
  const Image* frame = static_cast<const Image*>(luma);
  const uint32_t w = static_cast<uint32_t>(frame->w);
  const uint32_t h = static_cast<uint32_t>(frame->h);

  const Steps rows = gridSteps(frame->data, h, w, w, 1);
  const Steps columns = gridSteps(frame->data, w, h, 1, w);
  const double inner = static_cast<double>(static_cast<uint64_t>(rows.inner + columns.inner));
  const double across = static_cast<double>(static_cast<uint64_t>(rows.across + columns.across));
  const double ratio = inner / across;
  Results.blockiness = std::isnan(ratio) ? 1.0 : ratio;
  return nullptr;
}

}  // namespace composed
