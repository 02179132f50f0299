// Edges along the lines of the 16 x 16 grid on which most codecs code, where the picture has none
// of its own: lost blocks, and what was put in their place, begin and end there.
#ifndef LUMASCAN_GRID_EDGES_H
#define LUMASCAN_GRID_EDGES_H

#include <vector>

#include "definitions/definitions.h"

constexpr uint64_t GRID = 16;

// For each whole block of the grid but those of the first row: by how much the absolute differences
// between its first line and the line above exceed those of the step before and of the step behind,
// whichever is more. Negative where they do not. Summed over the block's first eight columns, up to
// 31 levels each.
std::vector<int16_t> gridEdgesOf(const Image& frame);

// Edges that are at least NEW_EDGE, and at least twice what they were in the frame before.
constexpr int16_t NEW_EDGE = 8 * 8;  // eight levels a sample

uint64_t newGridEdges(const std::vector<int16_t>& edges, const std::vector<int16_t>& before);

#endif
