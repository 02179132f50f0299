// One pair of frames of flickering with its parameters open, every block's difference being summed.
#include "indicators/flickering.h"

#include <cstdlib>

int compareElements(const void* a, const void* b) {
  return *static_cast<const uint8_t*>(b) - *static_cast<const uint8_t*>(a);
}

uint32_t calculateFlickering(const Image* current, const Image* previous, Image* switches,
                             Image* states, ImageDouble* differences, int32_t size,
                             double threshold) {
  const uint64_t blocks = switches->w * switches->h;
  const int64_t stride = static_cast<int64_t>(current->w);
  for (uint64_t i = 0; i < blocks; ++i) {
    const int64_t left = static_cast<int64_t>(i % switches->w) * size;
    const int64_t top = static_cast<int64_t>(i / switches->w) * size;
    for (int64_t y = top; y < top + size; ++y) {
      for (int64_t x = left; x < left + size; ++x) {
        differences->data[i] +=
            std::abs(current->data[y * stride + x] - previous->data[y * stride + x]);
      }
    }
    differences->data[i] /= static_cast<double>(int64_t{size} * size);

    const bool goesOn = differences->data[i] >= threshold && states->data[i] == 0;
    const bool goesOff = differences->data[i] == 0.0 && states->data[i] == 1;
    if (goesOn || goesOff) {
      states->data[i] = goesOn;
      ++switches->data[i];  // 8-bit, wraps
    }
  }
  return static_cast<uint32_t>(blocks);
}
