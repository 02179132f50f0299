#include "scan/measures/combing.h"

#include "scan/measures/blockChunks.h"

namespace {

// 1 where a is at least COMB_DEPTH above b.
uint8_t isFarAbove(uint8_t a, uint8_t b) {
  return a > b && static_cast<uint8_t>(a - b) >= COMB_DEPTH ? 1 : 0;
}

// Of up to CHUNK_BLOCKS blocks side by side; rows stand w samples apart.
MULTIVERSIONED
uint32_t countCombed(const uint8_t* rows, const uint8_t* before, uint64_t w, uint64_t blocks) {
  ChunkColumns places;
  for (uint64_t x = 0; x < blocks * SIDE; ++x) {  // vectorised
    const uint8_t a = rows[x];
    const uint8_t b = rows[w + x];
    const uint8_t c = rows[2 * w + x];
    const uint8_t d = rows[3 * w + x];
    const uint8_t lowEven = a < c ? a : c;
    const uint8_t highEven = a > c ? a : c;
    const uint8_t lowOdd = b < d ? b : d;
    const uint8_t highOdd = b > d ? b : d;
    const uint8_t second = absoluteDifference(b, before[w + x]);
    const uint8_t third = absoluteDifference(c, before[2 * w + x]);
    const uint8_t change = second > third ? second : third;
    const uint8_t isCombed = isFarAbove(lowEven, highOdd) | isFarAbove(lowOdd, highEven);
    places[x] = static_cast<uint8_t>(isCombed & (change >= COMB_DEPTH ? 1 : 0));
  }
  ChunkBlocks inBlock;
  sumEights<1>(places, blocks, inBlock);
  uint32_t count = 0;
  for (uint64_t k = 0; k < blocks; ++k) {  // vectorised
    count += inBlock[k] >= COMBED_COLUMNS ? 1 : 0;
  }
  return count;
}

}  // namespace

uint64_t combedBlocks(const Image& frame, const Image& previous) {
  uint64_t count = 0;
  forChunksOfBlocks(frame, [&](uint64_t place, uint64_t blocks) {
    count += countCombed(frame.data + place, previous.data + place, frame.w, blocks);
  });
  return count;
}
