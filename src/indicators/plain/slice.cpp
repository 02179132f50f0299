// Which samples of a whole image repeat, and the second name of slice's order.
#include "indicators/slice.h"

#include "definitions/kernels.h"

MULTIVERSIONED
void compareShifted(const Image* src, Image* dest, int32_t shift) {
  const uint64_t w = dest->w;
  for (uint64_t y = 0; y < dest->h; ++y) {
    const uint8_t* const row = src->data + y * src->w;
    const uint8_t* const shifted = row + shift;
    uint8_t* const out = dest->data + y * w;
    for (uint64_t x = 0; x < w; ++x) out[x] = row[x] == shifted[x] ? 1 : 0;  // vectorised
  }
}

int compare_Double_asc(const void* a, const void* b) {
  return compare(a, b);
}
