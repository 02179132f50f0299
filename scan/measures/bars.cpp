#include "scan/measures/bars.h"

#include <algorithm>

#include "definitions/kernels.h"
#include "scan/measures/blocks.h"

namespace {

constexpr int BAR_NOISE = 10;           // levels to either side of the bar's own
constexpr uint64_t TENTHS = 7;          // of a line's samples
constexpr uint64_t STRIP = 32;          // columns that are counted together
constexpr uint64_t COUNTED_ROWS = 255;  // at a time: counts fit a byte

// What lies within it belongs to a bar.
struct Levels8 {
  uint8_t lowest;
  uint8_t span;
};

bool isBar(uint64_t inside, uint64_t samples) {
  return inside * 10 >= samples * TENTHS;
}

MULTIVERSIONED
uint64_t total(const uint8_t* samples, uint64_t n) {
  uint64_t sum = 0;
  for (uint64_t i = 0; i < n; ++i) sum += samples[i];  // vectorised
  return sum;
}

MULTIVERSIONED
uint64_t countInside(const uint8_t* samples, uint64_t n, Levels8 levels) {
  uint64_t count = 0;
  for (uint64_t i = 0; i < n; ++i) {  // vectorised
    count += static_cast<uint8_t>(samples[i] - levels.lowest) <= levels.span ? 1 : 0;
  }
  return count;
}

// Adds to each of up to STRIP columns how many of its samples lie inside.
MULTIVERSIONED
void countColumns(const uint8_t* first, uint64_t w, uint64_t h, uint64_t columns, Levels8 levels,
                  uint64_t* counts) {
  for (uint64_t begin = 0; begin < h; begin += COUNTED_ROWS) {
    const uint64_t end = std::min(begin + COUNTED_ROWS, h);
    uint8_t some[STRIP] = {};
    for (uint64_t y = begin; y < end; ++y) {
      const uint8_t* const row = first + y * w;
      for (uint64_t x = 0; x < columns; ++x) {  // vectorised
        const bool isInside = static_cast<uint8_t>(row[x] - levels.lowest) <= levels.span;
        some[x] = static_cast<uint8_t>(some[x] + (isInside ? 1 : 0));
      }
    }
    for (uint64_t x = 0; x < columns; ++x) counts[x] += some[x];
  }
}

// False when the level at the edge is that of no bar.
bool findLevels(uint64_t sum, uint64_t samples, LumaRange range, Levels8* levels) {
  const auto level = static_cast<int>(sum / samples);
  if (level > range.black + DARK_ABOVE_BLACK) return false;
  const int lowest = std::max(level - BAR_NOISE, 0);
  *levels = {static_cast<uint8_t>(lowest), static_cast<uint8_t>(level + BAR_NOISE - lowest)};
  return true;
}

// From the top on, or from the bottom.
uint64_t barAcross(const Image& frame, LumaRange range, bool isTop) {
  const auto line = [&](uint64_t k) {
    return frame.data + (isTop ? k : frame.h - 1 - k) * frame.w;
  };
  Levels8 levels;
  const uint64_t sum = total(line(0), frame.w) + total(line(1), frame.w);
  if (!findLevels(sum, 2 * frame.w, range, &levels)) return 0;
  uint64_t k = 0;
  while (k < frame.h / 2 && isBar(countInside(line(k), frame.w, levels), frame.w)) ++k;
  return k;
}

// From the left on, or from the right.
uint64_t barAlong(const Image& frame, LumaRange range, bool isLeft) {
  const uint8_t* const edge = frame.data + (isLeft ? 0 : frame.w - 2);
  uint64_t sum = 0;
  for (uint64_t y = 0; y < frame.h; ++y) sum += edge[y * frame.w] + edge[y * frame.w + 1];
  Levels8 levels;
  if (!findLevels(sum, 2 * frame.h, range, &levels)) return 0;
  for (uint64_t k = 0; k < frame.w / 2; k += STRIP) {
    const uint64_t n = std::min(STRIP, frame.w / 2 - k);
    uint64_t counts[STRIP] = {};
    countColumns(frame.data + (isLeft ? k : frame.w - k - n), frame.w, frame.h, n, levels, counts);
    for (uint64_t i = 0; i < n; ++i) {
      if (!isBar(counts[isLeft ? i : n - 1 - i], frame.h)) return k + i;
    }
  }
  return frame.w / 2;
}

}  // namespace

Bars barsOf(const Image& frame, LumaRange range) {
  return {barAcross(frame, range, true), barAcross(frame, range, false),
          barAlong(frame, range, true), barAlong(frame, range, false)};
}
