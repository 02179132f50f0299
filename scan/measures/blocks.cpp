#include "scan/measures/blocks.h"

#include "scan/measures/blockChunks.h"

namespace {

constexpr uint8_t MOST_NOT_DARK = 1;  // of a dark block's counted samples
// Of a block's differences, 32 of which are counted.
constexpr uint8_t MOST_COUNTED = 7;     // levels: so all of them fit a byte together
constexpr uint8_t SLIGHT = 8;           // a quarter of a level a sample
constexpr uint8_t CLEAR = 32;           // a level
constexpr int32_t LEVEL = SIDE * SIDE;  // of a block's sum, in all samples

// Adds what up to CHUNK_BLOCKS blocks side by side count; rows stand w samples apart.
MULTIVERSIONED
void addLevels(const uint8_t* rows, uint64_t w, uint64_t blocks, uint8_t dark, uint8_t bright,
               LevelCounts* counts) {
  ChunkColumns darkOnes;
  ChunkColumns brightOnes;
  for (uint64_t x = 0; x < blocks * SIDE; ++x) {  // vectorised
    uint8_t inDark = 0;
    uint8_t inBright = 0;
    for (uint64_t y = 0; y < SIDE; y += 2)
      inDark = static_cast<uint8_t>(inDark + (rows[y * w + x] <= dark ? 1 : 0));
    for (uint64_t y = 0; y < SIDE; y += 4)
      inBright = static_cast<uint8_t>(inBright + (rows[y * w + x] >= bright ? 1 : 0));
    darkOnes[x] = inDark;
    brightOnes[x] = inBright;
  }
  uint32_t inBright = 0;
  for (uint64_t x = 0; x < blocks * SIDE; ++x) inBright += brightOnes[x];  // vectorised
  ChunkBlocks darkInBlock;
  sumEights<1>(darkOnes, blocks, darkInBlock);
  uint32_t inDark = 0;
  uint32_t darkBlocks = 0;
  for (uint64_t k = 0; k < blocks; ++k) {  // vectorised
    inDark += darkInBlock[k];
    darkBlocks += darkInBlock[k] >= COUNTED_FOR_DARK - MOST_NOT_DARK ? 1 : 0;
  }
  counts->dark += inDark;
  counts->bright += inBright;
  counts->darkBlocks += darkBlocks;
}

MULTIVERSIONED
void addChanges(const uint8_t* rows, const uint8_t* before, uint64_t w, uint64_t blocks,
                ChangeCounts* counts) {
  ChunkColumns columns;
  for (uint64_t x = 0; x < blocks * SIDE; ++x) {  // vectorised
    uint8_t sum = 0;
    for (uint64_t y = 0; y < SIDE; y += 2) {
      const uint8_t difference = absoluteDifference(rows[y * w + x], before[y * w + x]);
      sum = static_cast<uint8_t>(sum + (difference < MOST_COUNTED ? difference : MOST_COUNTED));
    }
    columns[x] = sum;
  }
  ChunkBlocks sums;
  sumEights<1>(columns, blocks, sums);
  uint32_t unchanged = 0;
  uint32_t changed = 0;
  for (uint64_t k = 0; k < blocks; ++k) {  // vectorised
    unchanged += sums[k] < SLIGHT ? 1 : 0;
    changed += sums[k] >= CLEAR ? 1 : 0;
  }
  counts->unchanged += unchanged;
  counts->changed += changed;
}

}  // namespace

std::vector<int32_t> sumsOfBlocks(const Image& frame) {
  const uint64_t columns = frame.w / SIDE;
  const uint64_t rows = frame.h / SIDE;
  std::vector<int32_t> sums(columns * rows);
  Image32 totals = makeImage32(columns, rows, sums.data());
  blockSums(&frame, &totals, SIDE, SIDE);
  return sums;
}

LevelCounts countLevels(const Image& frame, LumaRange range) {
  LevelCounts counts;
  const auto dark = static_cast<uint8_t>(range.black + DARK_ABOVE_BLACK);
  const auto bright = static_cast<uint8_t>(range.white - BRIGHT_BELOW_WHITE);
  forChunksOfBlocks(frame, [&](uint64_t place, uint64_t blocks) {
    addLevels(frame.data + place, frame.w, blocks, dark, bright, &counts);
  });
  return counts;
}

ChangeCounts countChanges(const Image& frame, const Image& previous) {
  ChangeCounts counts;
  forChunksOfBlocks(frame, [&](uint64_t place, uint64_t blocks) {
    addChanges(frame.data + place, previous.data + place, frame.w, blocks, &counts);
  });
  return counts;
}

MULTIVERSIONED
ShiftCounts countShifts(const std::vector<int32_t>& sums, const std::vector<int32_t>& before) {
  const int32_t* const now = sums.data();
  const int32_t* const then = before.data();
  uint32_t brighter = 0;
  uint32_t darker = 0;
  for (size_t i = 0; i < sums.size(); ++i) {  // vectorised
    const int32_t rise = now[i] - then[i];
    brighter += rise >= LEVEL ? 1 : 0;
    darker += rise <= -LEVEL ? 1 : 0;
  }
  return {brighter, darker};
}
