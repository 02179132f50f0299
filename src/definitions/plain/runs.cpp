// Runs of strong samples, counted block by block.
#include <algorithm>

#include "definitions/definitions.h"

int countSeqsH(const Image32* src, Image32* dest, uint64_t blockW, uint64_t blockH, uint32_t minLen,
               double threshold) {
  for (uint64_t y = 0; y < dest->h * blockH; ++y) {
    const int32_t* row = src->data + y * src->w;
    int32_t* counts = dest->data + y / blockH * dest->w;
    for (uint64_t bx = 0; bx < dest->w; ++bx) {
      uint32_t length = 0;
      for (uint64_t x = bx * blockW; x < (bx + 1) * blockW; ++x) {
        length = row[x] > threshold ? length + 1 : 0;
        if (length == minLen && length != 0) ++counts[bx];
      }
    }
  }
  return 0;
}

int countSeqsV(const Image32* src, Image32* dest, Image32* counters, uint64_t blockW,
               uint64_t blockH, uint32_t minLen, double threshold) {
  int32_t* lengths = counters->data;
  for (uint64_t y = 0; y < dest->h * blockH; ++y) {
    const int32_t* row = src->data + y * src->w;
    int32_t* counts = dest->data + y / blockH * dest->w;
    const bool lastOfBlock = y % blockH == blockH - 1;
    for (uint64_t x = 0; x < dest->w * blockW; ++x) {
      lengths[x] = row[x] > threshold ? lengths[x] + 1 : 0;
      if (lengths[x] != 0 && static_cast<uint32_t>(lengths[x]) == minLen) ++counts[x / blockW];
      if (lastOfBlock) lengths[x] = 0;
    }
  }
  return 0;
}

int32_t tempCountSeqsH(const Image32* src, int32_t, int32_t threshold, int32_t, int32_t,
                       int32_t minLen) {
  const uint64_t n = src->w * src->h;
  uint32_t count = 0;
  uint64_t next;
  for (uint64_t i = 0; i < n; i = next) {
    next = i + 1;
    if (src->data[i] <= threshold) continue;
    // The run is followed up to the row width, not up to the end of the sequence: it is meant so.
    uint64_t weak = i + 1;
    while (weak < src->w && src->data[weak] > threshold) ++weak;
    next = weak < src->w ? weak + 1 : std::max(src->w, i + 1);
    if (static_cast<int64_t>(next - i) >= minLen) ++count;
  }
  return static_cast<int32_t>(count);
}
