// How kernels go over the 8 x 8 blocks of a frame.
#ifndef LUMASCAN_BLOCK_CHUNKS_H
#define LUMASCAN_BLOCK_CHUNKS_H

#include <algorithm>

#include "definitions/kernels.h"
#include "definitions/smallBlocks.h"

using ChunkColumns = uint8_t[CHUNK_BLOCKS * SIDE];  // something of each column of a chunk
using ChunkBlocks = uint8_t[CHUNK_BLOCKS];          // of each block

// Calls a kernel for all blocks, a chunk of up to CHUNK_BLOCKS side by side at a time: with the
// place of their first sample and their number.
template <typename Kernel>
void forChunksOfBlocks(const Image& frame, const Kernel& kernel) {
  const uint64_t columns = frame.w / SIDE;
  for (uint64_t row = 0; row < frame.h / SIDE; ++row) {
    for (uint64_t first = 0; first < columns; first += CHUNK_BLOCKS) {
      kernel(row * SIDE * frame.w + first * SIDE, std::min(CHUNK_BLOCKS, columns - first));
    }
  }
}

// Totals, below 2^8, of the eight columns of every STRIDE-th block, `n` of them.
template <uint64_t STRIDE>
void sumEights(const uint8_t* columns, uint64_t n, uint8_t* totals) {
  for (uint64_t k = 0; k < n; ++k)
    totals[k] =
        static_cast<uint8_t>(eightAt(columns + k * STRIDE * SIDE) * 0x0101010101010101 >> 56);
}

#endif
