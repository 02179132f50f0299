// Combed blocks: moving parts whose lines come from two moments.
#ifndef LUMASCAN_COMBING_H
#define LUMASCAN_COMBING_H

#include "definitions/definitions.h"

// Number of 8 x 8 blocks in which at least COMBED_COLUMNS of eight columns are combed, in the
// block's first four lines: both even samples lie at least COMB_DEPTH above both odd ones, or below
// them, and the second or the third one has changed by at least as much since the frame before.
// Fine lines that stand still are part of the picture.
constexpr int COMB_DEPTH = 8;  // levels
constexpr int COMBED_COLUMNS = 2;

uint64_t combedBlocks(const Image& frame, const Image& previous);

#endif
