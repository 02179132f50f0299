// Mean of the darkest and the brightest 8 x 8 blocks of the frame.
#include "indicators/exposure.h"

#include <algorithm>
#include <cstring>
#include <functional>
#include <numeric>

#include "definitions/definitions.h"
#include "indicators/results.h"

namespace {

constexpr int nBlSum = 4;  // blocks kept at each end
constexpr int32_t BLOCK_SAMPLES = BLOCKSIZE * BLOCKSIZE;

// Puts `sum` in the place of the last of nBlSum entries, which it comes before, and moves it up to
// where it belongs.
template <typename Order>
void rank(int32_t* list, int32_t sum, Order before) {
  int place = nBlSum - 1;
  for (; place > 0 && before(sum, list[place - 1]); --place) list[place] = list[place - 1];
  list[place] = sum;
}

}  // namespace

void* exposure(void* luma) {
  const Image* frame = static_cast<const Image*>(luma);
  const uint32_t w = static_cast<uint32_t>(frame->w);
  const uint32_t h = static_cast<uint32_t>(frame->h);

  // Entries that no block replaces stay in the mean.
  int32_t darkest[nBlSum];
  int32_t brightest[nBlSum];
  std::fill_n(darkest, nBlSum, BLOCK_SAMPLES * 255);
  std::fill_n(brightest, nBlSum, 0);

  // A block that ends at the frame's edge is never looked at. It is meant so.
  const uint32_t blocksW = w > BLOCKSIZE ? (w - 1) / BLOCKSIZE : 0;
  Image32 totals = callocImage32(blocksW, 1);
  for (uint64_t y = 0; y + BLOCKSIZE < h; y += BLOCKSIZE) {
    const Image rows = makeImage(w, BLOCKSIZE, frame->data + y * w);
    std::memset(totals.data, 0, blocksW * sizeof *totals.data);
    blockSums(&rows, &totals, BLOCKSIZE, BLOCKSIZE);
    for (uint32_t x = 0; x < blocksW; ++x) {
      const int32_t total = totals.data[x];
      if (total < darkest[nBlSum - 1]) rank(darkest, total, std::less<>());
      if (total > brightest[nBlSum - 1]) rank(brightest, total, std::greater<>());
    }
  }
  freeImage32(&totals);

  const double bright = std::accumulate(brightest, brightest + nBlSum, 0);
  const double dark = std::accumulate(darkest, darkest + nBlSum, 0);
  Results.exposure = (bright + dark) / (BLOCK_SAMPLES * 2 * nBlSum);
  return nullptr;
}
