// Arithmetic on images, sample by sample.
#include <cmath>

#include "definitions/assertion.h"
#include "definitions/definitions.h"
#include "definitions/kernels.h"

namespace {

// Number of samples cut to a signed 32-bit number, 0 when that is negative: what the callers get
// for images of 2^31 samples and more is part of the results.
template <typename AnyImage>
uint64_t sampleCount32(const AnyImage* image) {
  const int32_t n = static_cast<int32_t>(static_cast<uint32_t>(image->w * image->h));
  return n > 0 ? static_cast<uint64_t>(n) : 0;
}

}  // namespace

MULTIVERSIONED
void addSquares32(const Image32* a, const Image32* b, Image32* out) {
  const uint64_t n = sampleCount32(a);
  for (uint64_t i = 0; i < n; ++i) {  // vectorised
    const uint32_t p = static_cast<uint32_t>(a->data[i]);
    const uint32_t q = static_cast<uint32_t>(b->data[i]);
    out->data[i] = static_cast<int32_t>(p * p + q * q);
  }
}

MULTIVERSIONED
void multiply(const Image32* a, const Image32* b, Image32* out) {
  const uint64_t n = sampleCount32(a);
  for (uint64_t i = 0; i < n; ++i) {  // vectorised
    const uint32_t p = static_cast<uint32_t>(a->data[i]);
    const uint32_t q = static_cast<uint32_t>(b->data[i]);
    out->data[i] = static_cast<int32_t>(p * q);
  }
}

MULTIVERSIONED
void divideDouble(const ImageDouble* num, const ImageDouble* den, ImageDouble* out) {
  const uint64_t n = sampleCount32(num);
  for (uint64_t i = 0; i < n; ++i) out->data[i] = num->data[i] / den->data[i];  // vectorised
}

MULTIVERSIONED
void divide(const Image32* num, const Image32* den, ImageDouble* out) {
  const uint64_t n = sampleCount32(num);
  for (uint64_t i = 0; i < n; ++i) {  // vectorised
    out->data[i] = static_cast<double>(num->data[i]) / static_cast<double>(den->data[i]);
  }
}

MULTIVERSIONED
void addSquares(const Image* a, const Image* b, Image32* out) {
  const uint64_t n = a->w * a->h;
  for (uint64_t i = 0; i < n; ++i) {  // vectorised
    out->data[i] = a->data[i] * a->data[i] + b->data[i] * b->data[i];
  }
}

MULTIVERSIONED
void imageSqrt(const ImageDouble* src, ImageDouble* dest) {
  const uint64_t n = src->w * src->h;
  ASSERT_AT(n == dest->w * dest->h, "src->w * src->h == dest->w *dest->h", "definitions", 1292);
  for (uint64_t i = 0; i < n; ++i) dest->data[i] = std::sqrt(src->data[i]);  // vectorised
}
