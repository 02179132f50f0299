#include "scan/measures/frameMeasures.h"

#include <algorithm>
#include <numeric>
#include <utility>

#include "scan/measures/bars.h"
#include "scan/measures/blocks.h"
#include "scan/measures/combing.h"
#include "scan/numbers/unknown.h"

namespace {

constexpr int32_t BLOCK_SAMPLES = 64;
constexpr int32_t PER_LEVEL = 4;  // block means are told apart by quarters of a level
constexpr int32_t STEPS = 255 * PER_LEVEL + 1;

double shareOf(uint64_t part, uint64_t whole) {
  return whole == 0 ? UNKNOWN : static_cast<double>(part) / static_cast<double>(whole);
}

// Of every second block, in the order of reading: the mean that so many hundredths of them do not
// exceed.
class BlockMeans {
 public:
  explicit BlockMeans(const std::vector<int32_t>& sums) : blocks_((sums.size() + 1) / 2) {
    for (size_t i = 0; i < sums.size(); i += 2)
      ++counts_[static_cast<size_t>(sums[i] / (BLOCK_SAMPLES / PER_LEVEL))];
  }

  double percentile(uint64_t hundredths) const {
    uint64_t below = 0;
    size_t step = 0;
    while ((below += counts_[step]) * 100 < hundredths * blocks_) ++step;
    return static_cast<double>(step) / PER_LEVEL;
  }

 private:
  std::array<uint64_t, STEPS> counts_{};
  uint64_t blocks_;
};

void measureLevels(const Image& frame, LumaRange range, const std::vector<int32_t>& sums,
                   MeasureValues* values) {
  if (sums.empty()) return;
  const uint64_t total = std::accumulate(sums.begin(), sums.end(), uint64_t{0});
  const BlockMeans means(sums);
  const LevelCounts counts = countLevels(frame, range);
  (*values)[BRIGHTNESS] = shareOf(total, sums.size() * BLOCK_SAMPLES);
  (*values)[LOW_LEVEL] = means.percentile(5);
  (*values)[MIDDLE_LEVEL] = means.percentile(50);
  (*values)[HIGH_LEVEL] = means.percentile(95);
  (*values)[DARK_SHARE] = shareOf(counts.dark, sums.size() * COUNTED_FOR_DARK);
  (*values)[DARK_BLOCKS] = shareOf(counts.darkBlocks, sums.size());
  (*values)[BRIGHT_SHARE] = shareOf(counts.bright, sums.size() * COUNTED_FOR_BRIGHT);
}

void measureBars(const Image& frame, LumaRange range, MeasureValues* values) {
  if (frame.w < 2 || frame.h < 2) return;
  const Bars bars = barsOf(frame, range);
  (*values)[BAR_TOP] = shareOf(bars.top, frame.h);
  (*values)[BAR_BOTTOM] = shareOf(bars.bottom, frame.h);
  (*values)[BAR_LEFT] = shareOf(bars.left, frame.w);
  (*values)[BAR_RIGHT] = shareOf(bars.right, frame.w);
}

void measureChanges(const Image& frame, const Image& previous, const std::vector<int32_t>& sums,
                    const std::vector<int32_t>& sumsBefore, MeasureValues* values) {
  const uint64_t blocks = sums.size();
  const ChangeCounts changes = countChanges(frame, previous);
  const ShiftCounts shifts = countShifts(sums, sumsBefore);
  (*values)[UNCHANGED_BLOCKS] = shareOf(changes.unchanged, blocks);
  (*values)[CHANGED_BLOCKS] = shareOf(changes.changed, blocks);
  (*values)[BRIGHTER_BLOCKS] = shareOf(shifts.brighter, blocks);
  (*values)[DARKER_BLOCKS] = shareOf(shifts.darker, blocks);
  (*values)[COMBED_BLOCKS] = shareOf(combedBlocks(frame, previous), blocks);
}

}  // namespace

MeasureValues FrameMeasures::of(const Image& frame, const Image* previous, LumaRange range) {
  MeasureValues values = NO_MEASURES;
  std::swap(now_, before_);
  LineSums lines = sumLines(frame);
  now_.blockSums = sumsOfBlocks(frame);
  now_.gridEdges = gridEdgesOf(frame);
  measureLevels(frame, range, now_.blockSums, &values);
  measureBars(frame, range, &values);
  values[HELD_LINES] = shareOf(lines.held, frame.h);
  if (previous != nullptr) {
    measureChanges(frame, *previous, now_.blockSums, before_.blockSums, &values);
    values[LINE_STEP] = newStep(lines, before_.lineSteps);
    values[GRID_EDGES] =
        shareOf(newGridEdges(now_.gridEdges, before_.gridEdges), now_.gridEdges.size());
  }
  now_.lineSteps = std::move(lines.steps);
  return values;
}
