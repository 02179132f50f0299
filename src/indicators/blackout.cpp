// A frame has no picture when the means of all its 8 x 8 blocks are nearly the same. The level does
// not matter: a white or grey frame counts as well as a black one.
#include "indicators/blackout.h"

#include <algorithm>

#include "definitions/assertion.h"
#include "definitions/definitions.h"
#include "definitions/kernels.h"
#include "indicators/results.h"

namespace {

constexpr double THRESHOLD_BLACKOUT = 4.0;  // luma levels between darkest and brightest block mean

}  // namespace

MULTIVERSIONED
void minmax(const int32_t* values, uint64_t size, int32_t* min, int32_t* max) {
  ASSERT_AT(size > 0, "size > 0", "blackout", 49);
  int32_t smallest = values[0];
  int32_t largest = values[0];
  for (uint64_t i = 1; i < size; ++i) {  // vectorised
    smallest = std::min(smallest, values[i]);
    largest = std::max(largest, values[i]);
  }
  *min = smallest;
  *max = largest;
}

void* blackout(void* luma) {
  const Image* frame = static_cast<const Image*>(luma);
  const uint64_t w = frame->w;
  const uint32_t blocksW = static_cast<uint32_t>(w) / BLOCKSIZE;
  const uint32_t blocksH = static_cast<uint32_t>(frame->h) / BLOCKSIZE;

  // The totals of one row of blocks at a time; of none when the frame has none, which minmax
  // refuses.
  Image32 totals = callocImage32(blocksW, std::min(blocksH, 1u));
  int32_t darkest = INT32_MAX;
  int32_t brightest = INT32_MIN;
  uint64_t y = 0;
  do {
    const Image rows = makeImage(w, BLOCKSIZE, frame->data + y * BLOCKSIZE * w);
    std::fill_n(totals.data, totals.w * totals.h, 0);
    blockSums(&rows, &totals, BLOCKSIZE, BLOCKSIZE);
    int32_t low;
    int32_t high;
    minmax(totals.data, totals.w * totals.h, &low, &high);
    darkest = std::min(darkest, low);
    brightest = std::max(brightest, high);
  } while (++y < blocksH);
  freeImage32(&totals);

  const double spread = static_cast<double>(brightest - darkest) / (BLOCKSIZE * BLOCKSIZE);
  Results.blackout = THRESHOLD_BLACKOUT > spread;
  return nullptr;
}
