// Block loss: in each whole 256 x 256 region, the number of long strong edges along the horizontal
// lines of the 16-pixel grid times the number along its vertical lines; the mean over the regions.
#include "reference.h"

namespace reference {
namespace {

constexpr uint32_t REGION = 256;
constexpr uint32_t GRID = 16;
constexpr uint32_t LONG_RUN = 12;

// The squared Roberts cross of a pixel with its upper and left neighbours, 0 where it has none.
int32_t strength(const Luma& frame, uint32_t x, uint32_t y) {
  if (x == 0 || y == 0) return 0;
  const uint8_t* here = &frame.samples[uint64_t{y} * frame.w + x];
  const uint8_t* above = here - frame.w;
  const int32_t mainDiagonal = above[-1] - here[0];
  const int32_t antiDiagonal = above[0] - here[-1];
  return mainDiagonal * mainDiagonal + antiDiagonal * antiDiagonal;
}

// Six times the mean strength of the whole frame, whose pixels are counted in 32 bits.
double strongAbove(const Luma& frame) {
  int64_t total = 0;
  for (uint32_t y = 0; y < frame.h; ++y) {
    for (uint32_t x = 0; x < frame.w; ++x) total += strength(frame, x, y);
  }
  const uint32_t pixels = frame.h * frame.w;
  return static_cast<double>(total) / static_cast<double>(pixels) * 6.0;
}

// Maximal runs of strong pixels, 12 or longer, on the 256 pixels that start at (x, y) and go right
// (dx = 1, dy = 0) or down (dx = 0, dy = 1).
int64_t longRuns(const Luma& frame, uint32_t x, uint32_t y, uint32_t dx, uint32_t dy,
                 double threshold) {
  int64_t runs = 0;
  for (uint32_t begin = 0, end; begin < REGION; begin = end + 1) {
    end = begin;
    while (end < REGION && strength(frame, x + dx * end, y + dy * end) > threshold) ++end;
    if (end - begin >= LONG_RUN) ++runs;
  }
  return runs;
}

}  // namespace

double blockLoss(const Luma& frame) {
  if (frame.w < REGION || frame.h < REGION) return -1.0;

  const double threshold = strongAbove(frame);
  int64_t products = 0;
  int64_t regions = 0;
  for (uint32_t top = 0; top + REGION <= frame.h; top += REGION) {
    for (uint32_t left = 0; left + REGION <= frame.w; left += REGION) {
      int64_t horizontal = 0;
      int64_t vertical = 0;
      for (uint32_t line = 0; line < REGION; line += GRID) {
        horizontal += longRuns(frame, left, top + line, 1, 0, threshold);
        vertical += longRuns(frame, left + line, top, 0, 1, threshold);
      }
      products += horizontal * vertical;
      ++regions;
    }
  }
  return static_cast<double>(products) / static_cast<double>(regions);
}

}  // namespace reference
