// Twin of the blockiness: the steps just inside the 8 x 8 blocks over those across their borders.
#include <cstdlib>

#include "reference.h"

namespace reference {
namespace {

uint8_t at(const Luma& frame, uint32_t x, uint32_t y) {
  return frame.samples[uint64_t{y} * frame.w + x];
}

Luma transposed(const Luma& frame) {
  Luma result{frame.h, frame.w, {}};
  for (uint32_t x = 0; x < frame.w; ++x) {
    for (uint32_t y = 0; y < frame.h; ++y) result.samples.push_back(at(frame, x, y));
  }
  return result;
}

// The sum of the steps from row y to the row `other`, modulo 2^32.
uint32_t rowStep(const Luma& frame, uint32_t y, uint32_t other) {
  uint32_t sum = 0;
  for (uint32_t x = 0; x < frame.w; ++x) {
    sum += static_cast<uint32_t>(std::abs(at(frame, x, y) - at(frame, x, other)));
  }
  return sum;
}

// The total of the running sums, so that the first line counts most. The running sums are kept in
// 32 bits and read as signed.
uint64_t totalOfRunningSums(const std::vector<uint32_t>& lines) {
  uint32_t running = 0;
  int64_t total = 0;
  for (uint32_t line : lines) {
    running += line;
    total += static_cast<int32_t>(running);
  }
  return static_cast<uint64_t>(total);
}

struct Steps {
  uint64_t inner;
  uint64_t across;
};

// Borders end at least one whole block above the last row.
Steps stepsAtRowBorders(const Luma& frame) {
  std::vector<uint32_t> inner;
  std::vector<uint32_t> across;
  for (uint32_t y = 8; y + 8 <= frame.h; y += 8) {
    inner.push_back(rowStep(frame, y - 1, y - 2));
    across.push_back(rowStep(frame, y - 1, y));
  }
  return {totalOfRunningSums(inner), totalOfRunningSums(across)};
}

}  // namespace

double blockiness(const Luma& frame) {
  const Steps rows = stepsAtRowBorders(frame);
  const Steps columns = stepsAtRowBorders(transposed(frame));
  const auto inner = static_cast<double>(rows.inner + columns.inner);
  const auto across = static_cast<double>(rows.across + columns.across);
  if (inner == 0.0 && across == 0.0) return 1.0;
  return inner / across;
}

double blockToMOS(double blockiness) {
  const double score = (blockiness * 17.86 - 10.38) * 0.5;
  return score > 0.0 ? score : 0.0;
}

}  // namespace reference
