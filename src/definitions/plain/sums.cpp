// Totals of whole images, and integral images with the totals of blocks that they give.
#include <algorithm>
#include <cstring>

#include "definitions/definitions.h"
#include "definitions/kernels.h"

namespace {

MULTIVERSIONED
uint32_t total(const uint8_t* data, uint64_t count) {
  uint32_t sum = 0;
  for (uint64_t i = 0; i < count; ++i) sum += data[i];  // vectorised
  return sum;
}

int32_t asSigned(uint32_t value) {
  return static_cast<int32_t>(value);
}

// Block totals as differences of the four corners; a corner left of or above the image counts 0.
template <typename T>
void cornerDifferences(const T* integral, uint64_t stride, Image32* dest, uint64_t blockW,
                       uint64_t blockH) {
  if (blockW == 0 || blockH == 0) return;
  for (uint64_t by = 0; by < dest->h; ++by) {
    for (uint64_t bx = 0; bx < dest->w; ++bx) {
      // The last sample of the block in column bx - 1 or bx, row by - 1 or by.
      const auto corner = [=](uint64_t right, uint64_t below) -> uint32_t {
        if (bx + right == 0 || by + below == 0) return 0;
        const uint64_t x = (bx + right) * blockW - 1;
        const uint64_t y = (by + below) * blockH - 1;
        return static_cast<uint32_t>(integral[y * stride + x]);
      };
      dest->data[by * dest->w + bx] =
          asSigned(corner(1, 1) - corner(0, 1) - corner(1, 0) + corner(0, 0));
    }
  }
}

}  // namespace

MULTIVERSIONED
int64_t sumPixels32(const Image32* image) {
  const uint64_t n = image->w * image->h;
  int64_t sum = 0;
  const int32_t* const data = image->data;
  for (uint64_t i = 0; i < n; ++i) sum += data[i];  // vectorised
  return sum;
}

uint32_t sumPixels(const Image* image) {
  return total(image->data, image->w * image->h);
}

uint32_t sumH(const uint8_t* data, uint32_t a, uint32_t b) {
  const int32_t count = std::max(asSigned(a * b), 0);
  return total(data, static_cast<uint64_t>(count));
}

uint32_t sumV(const uint8_t* data, int32_t w, int32_t h) {
  uint32_t sum = 0;
  for (int64_t x = 0; x < w; ++x) {
    for (int64_t y = 0; y < h; ++y) sum += data[y * w + x];
  }
  return sum;
}

void integrate(const Image* src, Image32* dest) {
  const uint64_t w = src->w;
  if (src->h == 0) return;
  // The first row stays without running total, unlike in a textbook integral image.
  for (uint64_t x = 0; x < w; ++x) dest->data[x] = src->data[x];
  for (uint64_t y = 1; y < src->h; ++y) {
    uint32_t rowTotal = 0;
    for (uint64_t x = 0; x < w; ++x) {
      rowTotal += src->data[y * w + x];
      dest->data[y * w + x] =
          asSigned(static_cast<uint32_t>(dest->data[(y - 1) * w + x]) + rowTotal);
    }
  }
}

void onlyCopy(const Image* src, Image* dest) {
  const uint64_t n = src->w * src->h;
  if (n != 0) std::memcpy(dest->data, src->data, static_cast<size_t>(n));
}

void blockSumsInteg(const Image32* integral, Image32* dest, uint64_t blockW, uint64_t blockH) {
  cornerDifferences(integral->data, integral->w, dest, blockW, blockH);
}

void blockSumsInteg2(const Image* integral, Image32* dest, uint64_t blockW, uint64_t blockH) {
  cornerDifferences(integral->data, integral->w, dest, blockW, blockH);
}
