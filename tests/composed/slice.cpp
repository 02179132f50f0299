// In every strip of 16 rows, compares how often a sample equals the one 16 rows below with how
// often it equals the one 16 columns to its right. Lost slices are filled by repetition, which
// upsets the balance that a natural picture keeps.
#include "indicators/slice.h"

#include <cstdlib>
#include <initializer_list>

#include "composed/composed.h"

namespace composed {

namespace {

constexpr uint32_t SLICE_BLOCKSIZE = 16;  // samples: height of a strip, and the distance compared
constexpr uint64_t MIN_ROWS = 48;  // two strips of pairs, and the rows they are compared with

// Share of set samples in every whole strip of `map`, which holds 0 and 1.
ImageDouble stripShares(const Image& map) {
  const uint64_t strips = map.h / SLICE_BLOCKSIZE;
  Image32 counts = callocImage32(1, strips);
  blockSums(&map, &counts, map.w, SLICE_BLOCKSIZE);
  const double samples = static_cast<int32_t>(static_cast<uint32_t>(map.w) * SLICE_BLOCKSIZE);
  ImageDouble shares = callocImageDouble(1, strips);
  for (uint64_t i = 0; i < strips; ++i) shares.data[i] = counts.data[i] / samples;
  freeImage32(&counts);
  return shares;
}

}  // namespace

void* slice(void* luma) {
  const Image* frame = static_cast<const Image*>(luma);
  if (frame->h < MIN_ROWS || frame->w <= SLICE_BLOCKSIZE) return gaveUp();

  Image vertical = callocImage(frame->w, frame->h - SLICE_BLOCKSIZE);
  Image horizontal = callocImage(frame->w - SLICE_BLOCKSIZE, frame->h);
  const uint32_t rowsBelow = SLICE_BLOCKSIZE * static_cast<uint32_t>(frame->w);
  compareShifted(frame, &vertical, static_cast<int32_t>(rowsBelow));
  compareShifted(frame, &horizontal, SLICE_BLOCKSIZE);

  ImageDouble verticalShares = stripShares(vertical);
  ImageDouble horizontalShares = stripShares(horizontal);
  ImageDouble ratios = callocImageDouble(1, verticalShares.h);
  divideDouble(&verticalShares, &horizontalShares, &ratios);
  // NaN ratios compare as equal to all others; where they end up is the sort routine's affair.
  std::qsort(ratios.data, static_cast<uint32_t>(ratios.h), sizeof(double), compare);
  const double smallest = ratios.data[0];

  freeImage(&vertical);
  freeImage(&horizontal);
  for (ImageDouble* scratch : {&verticalShares, &horizontalShares, &ratios}) {
    freeImageDouble(scratch);
  }
  Results.slice = 1.0 / smallest;
  return nullptr;
}

}  // namespace composed
