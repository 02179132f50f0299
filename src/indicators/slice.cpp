// In every strip of 16 rows, compares how often a sample equals the one 16 rows below with how
// often it equals the one 16 columns to its right. Lost slices are filled by repetition, which
// upsets the balance that a natural picture keeps.
#include "indicators/slice.h"

#include <algorithm>
#include <cstdlib>

#include "definitions/kernels.h"
#include "indicators/results.h"

namespace {

constexpr uint64_t SLICE_BLOCKSIZE = 16;  // samples: height of a strip, and the distance compared
constexpr uint64_t MIN_ROWS = 48;  // two strips of pairs, and the rows they are compared with
constexpr uint64_t COLUMNS_AT_ONCE = 1024;

// Number of samples in columns 0 to w - 1 of the strip at `rows` that equal the one `shift`
// positions further; rows stand `stride` samples apart.
MULTIVERSIONED
int32_t equalPairs(const uint8_t* rows, uint64_t stride, uint64_t w, uint64_t shift) {
  uint32_t pairs = 0;
  for (uint64_t left = 0; left < w; left += COLUMNS_AT_ONCE) {
    const uint64_t n = std::min(COLUMNS_AT_ONCE, w - left);
    uint8_t perColumn[COLUMNS_AT_ONCE] = {};  // up to 16, one for each row
    for (uint64_t y = 0; y < SLICE_BLOCKSIZE; y += 4) {
      const uint8_t* const a = rows + y * stride + left;
      const uint8_t* const b = a + stride;
      const uint8_t* const c = b + stride;
      const uint8_t* const d = c + stride;
      for (uint64_t x = 0; x < n; ++x) {  // vectorised
        perColumn[x] = static_cast<uint8_t>(
            perColumn[x] + (a[x] == a[x + shift] ? 1 : 0) + (b[x] == b[x + shift] ? 1 : 0) +
            (c[x] == c[x + shift] ? 1 : 0) + (d[x] == d[x + shift] ? 1 : 0));
      }
    }
    for (uint64_t x = 0; x < n; ++x) pairs += perColumn[x];  // vectorised
  }
  return static_cast<int32_t>(pairs);
}

// Their share in a strip of w columns.
double equalShare(const uint8_t* rows, uint64_t stride, uint64_t w, uint64_t shift) {
  const double samples = static_cast<int32_t>(static_cast<uint32_t>(w) * SLICE_BLOCKSIZE);
  return equalPairs(rows, stride, w, shift) / samples;
}

}  // namespace

int compare(const void* a, const void* b) {
  const double first = *static_cast<const double*>(a);
  const double second = *static_cast<const double*>(b);
  return (first > second) - (second > first);
}

void* slice(void* luma) {
  const Image* frame = static_cast<const Image*>(luma);
  const uint64_t w = frame->w;
  if (frame->h < MIN_ROWS || w <= SLICE_BLOCKSIZE) return gaveUp();

  // The last strip has 16 rows below it to be compared with.
  const uint64_t strips = frame->h / SLICE_BLOCKSIZE - 1;
  ImageDouble ratios = callocImageDouble(1, strips);
  for (uint64_t i = 0; i < strips; ++i) {
    const uint8_t* rows = frame->data + i * SLICE_BLOCKSIZE * w;
    ratios.data[i] = equalShare(rows, w, w, SLICE_BLOCKSIZE * w) /
                     equalShare(rows, w, w - SLICE_BLOCKSIZE, SLICE_BLOCKSIZE);
  }
  // NaN ratios compare as equal to all others; where they end up is the C library's affair.
  std::qsort(ratios.data, static_cast<size_t>(strips), sizeof(double), compare);
  Results.slice = 1.0 / ratios.data[0];
  freeImageDouble(&ratios);
  return nullptr;
}
