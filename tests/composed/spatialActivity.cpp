// Root mean square of the 3 x 3 Sobel gradient magnitude.
#include "composed/composed.h"

#include <cmath>

namespace composed {

double spatialAct(const Image* luma) {
  const uint64_t w = luma->w;
  const uint64_t h = luma->h;
  if (w < 3 || h < 3) return 0.0;
  double energy = 0.0;
  for (uint64_t y = 1; y + 1 < h; ++y) {
    const uint8_t* row = luma->data + y * w;
    const uint8_t* up = row - w;
    const uint8_t* down = row + w;
    for (uint64_t x = 1; x + 1 < w; ++x) {
      const int32_t gx =
          (up[x + 1] + 2 * row[x + 1] + down[x + 1]) - (up[x - 1] + 2 * row[x - 1] + down[x - 1]);
      const int32_t gy =
          (down[x - 1] + 2 * down[x] + down[x + 1]) - (up[x - 1] + 2 * up[x] + up[x + 1]);
      energy += gx * gx + gy * gy;
    }
  }
  return std::sqrt(energy);
}

void* spatialActivity(void* luma) {
  const Image* frame = static_cast<const Image*>(luma);
  // The border has no gradient but counts in the mean.
  Results.spatialActivity = spatialAct(frame) / std::sqrt(static_cast<double>(frame->w * frame->h));
  return nullptr;
}

}  // namespace composed
