// Noise: what a Gaussian smoothing takes away from the blocks of the most typical level of detail,
// as the mean standard deviation of that residual.
#include <cmath>

#include "reference.h"

namespace reference {
namespace {

constexpr uint32_t SIDE = 8;
constexpr uint64_t MOST_BLOCKS = 1000;

struct Block {
  std::array<std::array<uint8_t, SIDE>, SIDE> rows;
  double deviation;
};

// Conversion to 32 bits, where NaN becomes the smallest number.
int32_t toInt(double value) {
  return std::isnan(value) ? INT32_MIN : static_cast<int32_t>(value);
}

int32_t rounded(double value) {
  return toInt(value + std::copysign(0.49999999999999994, value));
}

int32_t floored(double value) {
  return toInt(std::floor(value));
}

Block blockAt(const Luma& frame, uint32_t left, uint32_t top) {
  Block block;
  int32_t total = 0;
  int32_t squares = 0;
  for (uint32_t y = 0; y < SIDE; ++y) {
    for (uint32_t x = 0; x < SIDE; ++x) {
      const uint8_t value = frame.samples[uint64_t{top + y} * frame.w + left + x];
      block.rows[y][x] = value;
      total += value;
      squares += value * value;
    }
  }
  block.deviation = std::sqrt((squares - total * total / 64.0) / 63.0);
  return block;
}

// The whole blocks of the frame, row by row.
std::vector<Block> blocksOf(const Luma& frame) {
  std::vector<Block> blocks;
  for (uint32_t by = 0; by < frame.h / SIDE; ++by) {
    for (uint32_t bx = 0; bx < frame.w / SIDE; ++bx) {
      blocks.push_back(blockAt(frame, bx * SIDE, by * SIDE));
    }
  }
  return blocks;
}

// The mean of the most frequent rounded deviation and its two neighbours, weighted with their
// 16-bit counts. Of equally frequent ones, the first to get there leads. Rounded deviations end at
// 127, so 128 is never counted. NaN if there is nothing to count.
double typicalDeviation(const std::vector<Block>& blocks) {
  std::array<uint16_t, 129> counts{};
  uint32_t mode = 0;
  for (const Block& block : blocks) {
    const int32_t level = rounded(block.deviation);
    const uint32_t bin = level < 1 ? 0 : level >= 127 ? 127 : static_cast<uint32_t>(level);
    ++counts[bin];
    if (counts[bin] > counts[mode]) mode = bin;
  }

  const uint32_t low = mode == 0 ? 0 : mode - 1;
  uint32_t weighted = 0;
  uint32_t counted = 0;
  for (uint32_t bin = low; bin <= low + 2; ++bin) {
    weighted += bin * counts[bin];
    counted += counts[bin];
  }
  volatile double denominator = counted;
  return weighted / denominator;
}

bool typical(const Block& block, double deviation) {
  if (floored(deviation) != rounded(deviation)) {
    return rounded(block.deviation) == rounded(deviation);
  }
  return floored(block.deviation) == floored(deviation);
}

// The standard deviation, over the 36 inner pixels, of the block minus the smoothed block. The
// kernel's coefficients are listed by squared distance from the centre: centre, edges, corners.
double residualDeviation(const Block& block, double sigma) {
  const double s = 2.0 * (sigma * sigma);
  const double norm = 1.0 / (sigma * sigma * 6.28);
  const std::array<double, 3> kernel = {norm, norm * std::exp(-1.0 / s), norm * std::exp(-2.0 / s)};

  double total = 0.0;
  double squares = 0.0;
  for (uint32_t y = 1; y <= 6; ++y) {
    for (uint32_t x = 1; x <= 6; ++x) {
      double smooth = 0.0;
      for (uint32_t row = y - 1; row <= y + 1; ++row) {
        for (uint32_t column = x - 1; column <= x + 1; ++column) {
          smooth += block.rows[row][column] * kernel[(row != y) + (column != x)];
        }
      }
      const double residual = block.rows[y][x] - smooth;
      total += residual;
      squares += residual * residual;
    }
  }
  return std::sqrt((squares - total * total / 36.0) / 35.0);
}

}  // namespace

double noise(const Luma& frame) {
  const std::vector<Block> blocks = blocksOf(frame);
  const double deviation = typicalDeviation(blocks);
  if (rounded(deviation) == 0) return 0.0;

  std::vector<Block> selected;
  for (const Block& block : blocks) {
    if (selected.size() < MOST_BLOCKS && typical(block, deviation)) selected.push_back(block);
  }

  double total = 0.0;
  for (const Block& block : selected) total += residualDeviation(block, rounded(deviation));
  volatile double denominator = static_cast<double>(selected.size());
  return total / denominator;
}

}  // namespace reference
