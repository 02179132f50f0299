// Blur: the mean width, in pixels, of the strong edges met along the rows of a frame, and its
// mapping to an opinion score.
#include <cmath>
#include <cstdlib>

#include "reference.h"

namespace reference {
namespace {

constexpr uint32_t BLOCK = 16;

int32_t sample(const Luma& frame, uint32_t x, uint32_t y) {
  return frame.samples[uint64_t{y} * frame.w + x];
}

// The change from the left neighbour; row 0 and column 0 have none.
int32_t changeX(const Luma& frame, uint32_t x, uint32_t y) {
  return x == 0 || y == 0 ? 0 : sample(frame, x, y) - sample(frame, x - 1, y);
}

// The change from the upper neighbour; row 0 and column 0 have none.
int32_t changeY(const Luma& frame, uint32_t x, uint32_t y) {
  return x == 0 || y == 0 ? 0 : sample(frame, x, y) - sample(frame, x, y - 1);
}

int32_t gradient(const Luma& frame, uint32_t x, uint32_t y) {
  return changeX(frame, x, y) * changeX(frame, x, y);
}

// Sixteen times the mean strength of the whole frame.
double edgeAbove(const Luma& frame) {
  int64_t total = 0;
  for (uint32_t y = 0; y < frame.h; ++y) {
    for (uint32_t x = 0; x < frame.w; ++x) total += gradient(frame, x, y);
  }
  const double pixels = static_cast<double>(frame.h) * static_cast<double>(frame.w);
  return static_cast<double>(total) / pixels * 16.0;
}

bool edge(const Luma& frame, uint32_t x, uint32_t y, double threshold) {
  const int32_t here = gradient(frame, x, y);
  if (!(here > threshold)) return false;

  const bool mostlyHorizontal = std::abs(changeX(frame, x, y)) >= std::abs(changeY(frame, x, y));
  const bool peakInRow = gradient(frame, x - 1, y) <= here && here > gradient(frame, x + 1, y);
  const bool peakInColumn = gradient(frame, x, y - 1) <= here && here > gradient(frame, x, y + 1);
  return (mostlyHorizontal && peakInRow) || peakInColumn;
}

// The sample standard deviation of the block that holds a pixel. The square of the total is a
// 32-bit number, negative for bright blocks, which makes their deviation large.
double deviationAround(const Luma& frame, uint32_t x, uint32_t y) {
  uint32_t total = 0;
  int32_t squares = 0;
  for (uint32_t row = y / BLOCK * BLOCK; row < (y / BLOCK + 1) * BLOCK; ++row) {
    for (uint32_t column = x / BLOCK * BLOCK; column < (x / BLOCK + 1) * BLOCK; ++column) {
      const int32_t value = sample(frame, column, row);
      total += static_cast<uint32_t>(value);
      squares += value * value;
    }
  }
  const int32_t squareOfTotal = static_cast<int32_t>(total * total);
  return std::sqrt((squares - squareOfTotal / 256.0) / 255.0);
}

// How many pixels the change at an edge pixel goes on, right and left, in its own direction. A fall
// here or at the right neighbour makes it a falling edge. An edge pixel has some change, so its
// direction is never open. The walk right keeps off the last column, the walk left ends in column 1
// at the latest.
uint32_t width(const Luma& frame, uint32_t x, uint32_t y) {
  const double threshold = deviationAround(frame, x, y) * 0.0009765625;
  const bool falling = changeX(frame, x, y) < 0 || changeX(frame, x + 1, y) < 0;
  const auto goesOn = [&](uint32_t column) {
    const int32_t change = changeX(frame, column, y);
    return (falling ? -change : change) > threshold;
  };

  uint32_t right = x;
  while (right < frame.w - 2 && goesOn(right + 1)) ++right;
  uint32_t left = x;
  while (left > 1 && goesOn(left)) --left;
  return right - left;
}

}  // namespace

double blur(const Luma& frame) {
  if (frame.w < BLOCK || frame.h < BLOCK) return 0.0;

  const double threshold = edgeAbove(frame);
  uint32_t widths = 0;
  uint32_t edges = 0;
  for (uint32_t y = 1; y < frame.h / BLOCK * BLOCK - 1; ++y) {
    for (uint32_t x = 1; x < frame.w / BLOCK * BLOCK - 1; ++x) {
      if (!edge(frame, x, y, threshold)) continue;
      widths += width(frame, x, y);
      ++edges;
    }
  }
  if (widths == 0) return 0.0;
  return static_cast<double>(static_cast<int32_t>(widths)) / static_cast<int32_t>(edges);
}

double blurToMOS(double blur) {
  const double e = std::exp(-1.5 * blur + 2.87);
  const double score = 5.0 * std::pow(e / (1.0 + e), 0.14);
  return score > 0 ? score : 0.0;
}

}  // namespace reference
