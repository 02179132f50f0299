// Blocks of 8 x 8 samples: how many samples in each are dark or bright, and how far each has moved
// away from the frame before. What is left at the right and below is no block.
#ifndef LUMASCAN_BLOCKS_H
#define LUMASCAN_BLOCKS_H

#include <vector>

#include "definitions/definitions.h"
#include "scan/measures/lumaRange.h"

constexpr int DARK_ABOVE_BLACK = 24;   // levels: nearer to black are bars and black with noise
constexpr int BRIGHT_BELOW_WHITE = 5;  // levels: clipped parts stay this near to white when coded

// The totals of all blocks, row by row.
std::vector<int32_t> sumsOfBlocks(const Image& frame);

// Dark samples of a block's first, third, fifth and seventh line, bright ones of its first and
// fifth.
struct LevelCounts {
  uint64_t dark = 0;        // samples at black + DARK_ABOVE_BLACK or below
  uint64_t bright = 0;      // samples at white - BRIGHT_BELOW_WHITE or above
  uint64_t darkBlocks = 0;  // blocks with at most one sample that is not dark
};

constexpr uint32_t COUNTED_FOR_DARK = 32;  // samples of a block
constexpr uint32_t COUNTED_FOR_BRIGHT = 16;

LevelCounts countLevels(const Image& frame, LumaRange range);

// By the sum of the absolute differences in a block's first, third, fifth and seventh line, of
// which each counts for seven levels at most.
struct ChangeCounts {
  uint64_t unchanged = 0;  // blocks with less than 8, a quarter of a level a sample
  uint64_t changed = 0;    // blocks with at least 32, one level a sample
};

ChangeCounts countChanges(const Image& frame, const Image& previous);

// Blocks whose mean rises, or falls, by a level at least. Of the blocks' totals.
struct ShiftCounts {
  uint64_t brighter;
  uint64_t darker;
};

ShiftCounts countShifts(const std::vector<int32_t>& sums, const std::vector<int32_t>& before);

#endif
