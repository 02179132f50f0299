// Comparison, conversions and dumps of whole images.
#include <algorithm>
#include <cstdio>

#include "definitions/assertion.h"
#include "definitions/definitions.h"

namespace {

// Prints consecutive samples in the shape of a rectangle, each in `format`.
template <typename T>
void printSamples(const T* sample, const char* format, int32_t x0, int32_t x1, int32_t y0,
                  int32_t y1) {
  for (int64_t y = y0; y <= y1; ++y) {
    for (int64_t x = x0; x <= x1; ++x) std::printf(format, *sample++);
    std::putchar('\n');
  }
}

}  // namespace

int areEqual(const Image* a, const Image* b) {
  if (a->w != b->w || a->h != b->h) return 0;
  return a->data == b->data || std::equal(a->data, a->data + a->w * a->h, b->data);
}

void convU8toI32(const Image* src, Image32* dest) {
  const uint64_t n = src->w * src->h;
  ASSERT_AT(n == dest->w * dest->h, "src->w * src->h == dest->w *dest->h", "definitions", __LINE__);
  for (uint64_t i = 0; i < n; ++i) dest->data[i] = src->data[i];
}

void convI32toU8(const Image32* src, Image* dest) {
  const uint64_t n = src->w * src->h;
  ASSERT_AT(n == dest->w * dest->h, "src->w * src->h == dest->w *dest->h", "definitions", __LINE__);
  for (uint64_t i = 0; i < n; ++i) dest->data[i] = static_cast<uint8_t>(src->data[i]);
}

void printRange(const Image* image, int32_t x0, int32_t x1, int32_t y0, int32_t y1) {
  printSamples(image->data, "%03i ", x0, x1, y0, y1);
}

void printRange32(const Image32* image, int32_t x0, int32_t x1, int32_t y0, int32_t y1) {
  printSamples(image->data, "%i  ", x0, x1, y0, y1);
}
