// Mean of the darkest and the brightest 8 x 8 blocks of the frame.
#include "composed/composed.h"

#include <algorithm>
#include <numeric>

#include "definitions/definitions.h"

namespace composed {

namespace {

constexpr int nBlSum = 4;  // blocks kept at each end
constexpr double BLOCK_SAMPLES = BLOCKSIZE * BLOCKSIZE;

double blockTotal(const uint8_t* block, uint32_t stride) {
  uint32_t sum = 0;
  for (uint32_t y = 0; y < BLOCKSIZE; ++y) {
    for (uint32_t x = 0; x < BLOCKSIZE; ++x) sum += block[y * stride + x];
  }
  return sum;
}

// Puts `sum` at its place among the nBlSum entries ordered by `before` and drops the last one; when
// none comes after it, nothing changes.
template <typename Order>
void rank(double* list, double sum, Order before) {
  double* end = list + nBlSum;
  double* place = std::find_if(list, end, [&](double entry) { return !before(entry, sum); });
  if (place == end) return;
  std::copy_backward(place, end - 1, end);
  *place = sum;
}

}  // namespace

void* exposure(void* luma) {
  const Image* frame = static_cast<const Image*>(luma);
  const uint32_t w = static_cast<uint32_t>(frame->w);
  const uint32_t h = static_cast<uint32_t>(frame->h);

  // Entries that no block replaces stay in the mean.
  double darkest[nBlSum];
  double brightest[nBlSum];
  std::fill_n(darkest, nBlSum, BLOCK_SAMPLES * 255.0);
  std::fill_n(brightest, nBlSum, 0.0);

  // Strictly below: a block that ends at the frame's edge is never looked at. It is meant so.
  for (uint32_t x = 0; x + BLOCKSIZE < w; x += BLOCKSIZE) {
    for (uint32_t y = 0; y + BLOCKSIZE < h; y += BLOCKSIZE) {
      const double sum = blockTotal(frame->data + y * w + x, w);
      rank(darkest, sum, [](double a, double b) { return a < b; });
      rank(brightest, sum, [](double a, double b) { return a > b; });
    }
  }

  const double bright = std::accumulate(brightest, brightest + nBlSum, 0.0);
  const double dark = std::accumulate(darkest, darkest + nBlSum, 0.0);
  Results.exposure = (bright + dark) / (BLOCK_SAMPLES * 2 * nBlSum);
  return nullptr;
}

}  // namespace composed
