// A frame has no picture when the means of all its 8 x 8 blocks are nearly the same. The level does
// not matter: a white or grey frame counts as well as a black one.
#include "composed/composed.h"

#include "definitions/assertion.h"
#include "definitions/definitions.h"

namespace composed {

namespace {

constexpr double THRESHOLD_BLACKOUT = 4.0;  // luma levels between darkest and brightest block mean

}  // namespace

void minmax(const int32_t* values, uint64_t size, int32_t* min, int32_t* max) {
  ASSERT_AT(size > 0, "size > 0", "blackout", 49);
  int32_t smallest = values[0];
  int32_t largest = values[0];
  for (uint64_t i = 1; i < size; ++i) {
    if (values[i] < smallest) smallest = values[i];
    if (values[i] > largest) largest = values[i];
  }
  *min = smallest;
  *max = largest;
}

void* blackout(void* luma) {
  const Image* frame = static_cast<const Image*>(luma);
  const uint32_t blocksW = static_cast<uint32_t>(frame->w) / BLOCKSIZE;
  const uint32_t blocksH = static_cast<uint32_t>(frame->h) / BLOCKSIZE;
  Image32 totals = callocImage32(blocksW, blocksH);
  blockSums(frame, &totals, BLOCKSIZE, BLOCKSIZE);
  int32_t darkest;
  int32_t brightest;
  minmax(totals.data, totals.w * totals.h, &darkest, &brightest);
  freeImage32(&totals);

  const double spread = static_cast<double>(brightest - darkest) / (BLOCKSIZE * BLOCKSIZE);
  Results.blackout = THRESHOLD_BLACKOUT > spread;
  return nullptr;
}

}  // namespace composed
