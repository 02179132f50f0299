#include "scan/measures/lines.h"

#include <algorithm>
#include <cstdlib>

#include "definitions/kernels.h"

namespace {

constexpr uint64_t NEIGHBOUR_LINES = 3;  // to either side
constexpr uint32_t HELD = 8;             // details are at least so many times the steps
constexpr uint64_t LEAST_DETAIL = 2;     // levels a sample
constexpr uint64_t MOST_STEP = 1;

uint32_t differences(const uint8_t* a, const uint8_t* b) {
  uint32_t sum = 0;
  for (uint64_t i = 0; i < LINE_GROUP; ++i) {  // vectorised
    sum += static_cast<uint32_t>(std::abs(a[i] - b[i]));
  }
  return sum;
}

// Absolute differences over the groups of two lines.
MULTIVERSIONED
uint32_t sumOfGroups(const uint8_t* row, const uint8_t* other, uint64_t groups) {
  uint32_t sum = 0;
  for (uint64_t k = 0; k < groups; ++k)
    sum += differences(row + k * LINE_SPACING, other + k * LINE_SPACING);
  return sum;
}

uint32_t most(const std::vector<uint32_t>& numbers, uint64_t first, uint64_t last) {
  return *std::max_element(&numbers[first], &numbers[last] + 1);
}

}  // namespace

LineSums sumLines(const Image& frame) {
  const uint64_t start = frame.w < LINE_SPACING ? 0 : LINE_SPACING / 2;
  const uint64_t end = frame.w - 1;  // the last sample has none beside it
  const uint64_t room = end < start + LINE_GROUP ? 0 : end - start - LINE_GROUP + LINE_SPACING;
  const uint64_t groups = room / LINE_SPACING;
  LineSums sums = {groups * LINE_GROUP, std::vector<uint32_t>(frame.h), 0};
  uint64_t run = 0;
  for (uint64_t y = 1; y < frame.h; ++y) {
    const uint8_t* const row = frame.data + y * frame.w + start;
    const uint32_t steps = sums.steps[y] = sumOfGroups(row, row - frame.w, groups);
    // What changes more repeats nothing: its details need not be known.
    const bool isNear = groups > 0 && steps <= MOST_STEP * sums.columns;
    const uint32_t details = isNear ? sumOfGroups(row, row + 1, groups) : 0;
    const bool isHeld = isNear && details >= LEAST_DETAIL * sums.columns && steps <= details / HELD;
    run = isHeld ? run + 1 : 0;
    sums.held = std::max(sums.held, run);
  }
  return sums;
}

double newStep(const LineSums& sums, const std::vector<uint32_t>& stepsBefore) {
  const std::vector<uint32_t>& steps = sums.steps;
  uint32_t highest = 0;
  for (uint64_t y = NEIGHBOUR_LINES + 1; y + NEIGHBOUR_LINES < steps.size(); ++y) {
    if (steps[y] <= highest) continue;
    const uint32_t usual =
        std::max({most(steps, y - NEIGHBOUR_LINES, y - 1), most(steps, y + 1, y + NEIGHBOUR_LINES),
                  most(stepsBefore, y - 1, y + 1)});
    if (steps[y] > usual) highest = std::max(highest, steps[y] - usual);
  }
  return sums.columns == 0 ? 0.0 : static_cast<double>(highest) / static_cast<double>(sums.columns);
}
