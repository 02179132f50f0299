// Lines and their neighbours: lines that repeat the one above, and lines from which on the picture
// is another one.
#ifndef LUMASCAN_LINES_H
#define LUMASCAN_LINES_H

#include <vector>

#include "definitions/definitions.h"

// Sums are over some columns, since what is looked for crosses the whole frame: groups of
// LINE_GROUP columns, LINE_SPACING apart from the first one on, which begins half of that from the
// left edge, in narrower frames at the edge. A group ends before the last column.
constexpr uint64_t LINE_GROUP = 32;
constexpr uint64_t LINE_SPACING = 128;

struct LineSums {
  uint64_t columns;             // that were summed; 0: the frame is too narrow, and all is 0
  std::vector<uint32_t> steps;  // absolute differences to the line above; 0 for the first line
  // The most lines in succession each of which repeats the one above: its steps come to one level a
  // sample at most, and to an eighth at most of the differences to the next sample, which come to
  // two levels a sample at least.
  uint64_t held;
};

LineSums sumLines(const Image& frame);

// How far, in levels a sample, the steps of one line exceed those of the three lines to either
// side, and those of the same line and its neighbours in the frame before. Of the line with most of
// it; 0 where there is none.
double newStep(const LineSums& sums, const std::vector<uint32_t>& stepsBefore);

#endif
