// Correlation of small regions with a small kernel.
#include <cstdio>

#include "definitions/definitions.h"

int32_t filter(const Image* src, ImageDouble* dest, const ImageDouble* kernel, uint32_t nRegions,
               uint32_t regionW, uint32_t regionH) {
  if (src->w != dest->w || src->h != dest->h) {
    std::puts("Source and destination images do not match with their size!");
    return -1;
  }
  if (kernel->h > src->h) {
    std::puts("Source image is to small for that kernel!");
    return -1;
  }
  // Signed, so that a kernel too large for a region leaves no sample to write.
  const int64_t half = static_cast<uint32_t>(kernel->w / 2);
  const int64_t endY = regionH - half;
  const int64_t endX = regionW - half;
  const int64_t kernelW = static_cast<int64_t>(kernel->w);
  const int64_t kernelH = static_cast<int64_t>(kernel->h);
  const int64_t stride = static_cast<int64_t>(src->w);
  for (uint32_t n = 0; n < nRegions; ++n) {
    for (int64_t y = half; y < endY; ++y) {
      for (int64_t x = half; x < endX; ++x) {
        const int64_t column = int64_t{n} * regionW + x;
        double value = 0.0;
        for (int64_t r = 0; r < kernelH; ++r) {
          const uint8_t* samples = src->data + (y - half + r) * stride + column - half;
          const double* coefficients = kernel->data + r * kernelW;
          for (int64_t c = 0; c < kernelW; ++c) value += samples[c] * coefficients[c];
        }
        dest->data[y * stride + column] = value;
      }
    }
  }
  return 0;
}
