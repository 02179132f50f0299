// Bars at the frame's edges: lines and columns most of whose samples lie near one dark level.
#ifndef LUMASCAN_BARS_H
#define LUMASCAN_BARS_H

#include "definitions/definitions.h"
#include "scan/measures/lumaRange.h"

// Samples from each edge on, at most half of the height or width.
struct Bars {
  uint64_t top;
  uint64_t bottom;
  uint64_t left;
  uint64_t right;
};

// A bar's level is the mean of the two lines, or columns, at the edge, rounded down; above
// DARK_ABOVE_BLACK over black there is no bar. It goes on while seven tenths of the samples of a
// line lie within BAR_NOISE of the level: logos and subtitles may stand in it. Of frames of at
// least 2 x 2.
Bars barsOf(const Image& frame, LumaRange range);

#endif
