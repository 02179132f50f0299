#include "scan/measures/gridEdges.h"

#include "scan/measures/blockChunks.h"

namespace {

constexpr uint64_t CHUNK_EDGES = CHUNK_BLOCKS / 2;

// Of a step: eight of them fit a byte.
uint8_t countedStep(uint8_t a, uint8_t b) {
  constexpr uint8_t MOST = 31;
  const uint8_t step = absoluteDifference(a, b);
  return step < MOST ? step : MOST;
}

// Of `n` blocks of the grid side by side, up to half a chunk; `line` is their first one, w samples
// below the one above.
MULTIVERSIONED
void findEdges(const uint8_t* line, uint64_t w, uint64_t n, int16_t* edges) {
  ChunkColumns across;
  ChunkColumns above;
  ChunkColumns below;
  const uint8_t* const up = line - w;
  const uint8_t* const farUp = up - w;
  for (uint64_t x = 0; x < n * GRID; ++x) {  // vectorised
    across[x] = countedStep(line[x], up[x]);
    above[x] = countedStep(up[x], farUp[x]);
    below[x] = countedStep(line[x + w], line[x]);
  }
  ChunkBlocks stepsAcross;
  ChunkBlocks stepsAbove;
  ChunkBlocks stepsBelow;
  sumEights<2>(across, n, stepsAcross);
  sumEights<2>(above, n, stepsAbove);
  sumEights<2>(below, n, stepsBelow);
  for (uint64_t k = 0; k < n; ++k) {  // vectorised
    const uint8_t usual = stepsAbove[k] > stepsBelow[k] ? stepsAbove[k] : stepsBelow[k];
    edges[k] = static_cast<int16_t>(stepsAcross[k] - usual);
  }
}

}  // namespace

std::vector<int16_t> gridEdgesOf(const Image& frame) {
  const uint64_t columns = frame.w / GRID;
  const uint64_t rows = frame.h / GRID;
  if (columns == 0 || rows == 0) return {};
  std::vector<int16_t> edges(columns * (rows - 1));
  for (uint64_t row = 1; row < rows; ++row) {
    for (uint64_t first = 0; first < columns; first += CHUNK_EDGES) {
      findEdges(frame.data + row * GRID * frame.w + first * GRID, frame.w,
                std::min(CHUNK_EDGES, columns - first), &edges[(row - 1) * columns + first]);
    }
  }
  return edges;
}

MULTIVERSIONED
uint64_t newGridEdges(const std::vector<int16_t>& edges, const std::vector<int16_t>& before) {
  const int16_t* const now = edges.data();
  const int16_t* const then = before.data();
  uint32_t count = 0;
  for (size_t i = 0; i < edges.size(); ++i) {  // vectorised
    const bool isNew = (now[i] >= NEW_EDGE) & (now[i] >= 2 * then[i]);
    count += isNew ? 1 : 0;
  }
  return count;
}
