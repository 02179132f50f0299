// Blocks of the size that indicators use have a way of their own: the samples of each two columns
// are added in 16 bits, and then four neighbours.
#ifndef LUMAPROBE_SMALLBLOCKS_H
#define LUMAPROBE_SMALLBLOCKS_H

#include <cstdint>

#include "definitions/definitions.h"

constexpr uint64_t SIDE = BLOCKSIZE;
constexpr uint64_t PAIRS = SIDE / 2;   // of columns in a block
constexpr uint64_t CHUNK_BLOCKS = 64;  // at a time, so that the column totals stay close

#endif
