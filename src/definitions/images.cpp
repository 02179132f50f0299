// Constructors and destructors of the image records.
#include <algorithm>
#include <cstdint>
#include <cstdlib>

#include "definitions/definitions.h"

namespace {

// A size as the C library takes it: more than all memory where its integers are too narrow.
size_t asSize(uint64_t n) {
  return static_cast<size_t>(std::min<uint64_t>(n, SIZE_MAX));
}

template <typename T>
T* allocate(uint64_t w, uint64_t h) {
  return static_cast<T*>(std::malloc(asSize(w * h * sizeof(T))));
}

template <typename T>
T* allocateCleared(uint64_t w, uint64_t h) {
  return static_cast<T*>(std::calloc(asSize(w * h), sizeof(T)));
}

}  // namespace

Image makeImage(uint64_t w, uint64_t h, uint8_t* data) {
  return {w, h, data};
}
Image allocImage(uint64_t w, uint64_t h) {
  return {w, h, allocate<uint8_t>(w, h)};
}
Image callocImage(uint64_t w, uint64_t h) {
  return {w, h, allocateCleared<uint8_t>(w, h)};
}
void freeImage(Image* image) {
  std::free(image->data);
}

Image32 makeImage32(uint64_t w, uint64_t h, int32_t* data) {
  return {w, h, data};
}
Image32 allocImage32(uint64_t w, uint64_t h) {
  return {w, h, allocate<int32_t>(w, h)};
}
Image32 callocImage32(uint64_t w, uint64_t h) {
  return {w, h, allocateCleared<int32_t>(w, h)};
}
void freeImage32(Image32* image) {
  std::free(image->data);
}

ImageDouble makeImageDouble(uint64_t w, uint64_t h, double* data) {
  return {w, h, data};
}
ImageDouble allocImageDouble(uint64_t w, uint64_t h) {
  return {w, h, allocate<double>(w, h)};
}
ImageDouble callocImageDouble(uint64_t w, uint64_t h) {
  return {w, h, allocateCleared<double>(w, h)};
}
void freeImageDouble(ImageDouble* image) {
  std::free(image->data);
}
