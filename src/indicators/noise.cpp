// Noise is measured where the picture itself has least to say: at the most frequent level of
// detail. The mode of the 8 x 8 blocks' deviations gives the level, up to 1000 blocks of that level
// are smoothed by a 3 x 3 Gaussian whose sigma is the level, and what the smoothing took away is
// the noise.
//
// Of a block's deviation only its two whole levels are kept: mode and selection ask for no more.
#include "indicators/noise.h"

#include <algorithm>
#include <cmath>

#include "definitions/definitions.h"
#include "definitions/kernels.h"
#include "indicators/results.h"
#include "indicators/runTimeQuotient.h"
#include "indicators/truncateToInt32.h"

namespace {

constexpr int32_t HISTOGRAM_ENTRIES = 128;          // levels of detail, one luma level each
constexpr uint64_t MAX_CONTAINER_WIDTH = 1000;      // blocks
constexpr uint64_t GAUSSIAN_MASK_SIZE = 3;          // samples
constexpr double TWO_PI = 6.28;                     // as short as this: the results rest on it
constexpr double BELOW_HALF = 0.49999999999999994;  // largest double below 0.5

int32_t roundHalfAway(double x) {
  return truncateToInt32(x + std::copysign(BELOW_HALF, x));
}

int32_t floorToInt(double x) {
  return truncateToInt32(std::floor(x));
}

// The blocks' deviations as whole levels, one sample per block: a deviation of 8 x 8 bytes is
// between 0 and 129, and so fits a byte.
struct Levels {
  Image rounded;
  Image truncated;
};

Levels makeLevels(uint64_t blocksW, uint64_t blocksH) {
  return {allocImage(blocksW, blocksH), allocImage(blocksW, blocksH)};
}

void freeLevels(Levels* levels) {
  freeImage(&levels->rounded);
  freeImage(&levels->truncated);
}

// Both whole levels of n deviations.
MULTIVERSIONED
void roundAndTruncate(const double* stdDevs, uint64_t n, uint8_t* rounded, uint8_t* truncated) {
  for (uint64_t i = 0; i < n; ++i) {  // vectorised
    rounded[i] = static_cast<uint8_t>(static_cast<int32_t>(stdDevs[i] + BELOW_HALF));
  }
  for (uint64_t i = 0; i < n; ++i) {  // vectorised
    truncated[i] = static_cast<uint8_t>(static_cast<int32_t>(stdDevs[i]));
  }
}

void measureLevels(const Image* frame, Levels* levels) {
  const uint64_t w = levels->rounded.w;
  Image32 sums = allocImage32(w, 1);
  Image32 squareSums = allocImage32(w, 1);
  ImageDouble stdDevs = allocImageDouble(w, 1);
  for (uint64_t by = 0; by < levels->rounded.h; ++by) {
    const Image rows = makeImage(frame->w, BLOCKSIZE, frame->data + by * BLOCKSIZE * frame->w);
    std::fill_n(sums.data, w, 0);
    std::fill_n(squareSums.data, w, 0);
    calculateStdDevs(&rows, &sums, &squareSums, &stdDevs, BLOCKSIZE, BLOCKSIZE);
    roundAndTruncate(stdDevs.data, w, levels->rounded.data + by * w,
                     levels->truncated.data + by * w);
  }
  freeImage32(&sums);
  freeImage32(&squareSums);
  freeImageDouble(&stdDevs);
}

// The mean level of the histogram's mode and its two neighbours, weighted with their counts. NaN
// when all three are empty. Counts are 16-bit and wrap.
double typicalLevel(const Image* rounded) {
  uint16_t count[HISTOGRAM_ENTRIES + 1] = {};  // the last stays 0: above the highest level is none
  int32_t mode = 0;
  for (uint64_t i = 0; i < rounded->w * rounded->h; ++i) {
    const int32_t level = std::min(int32_t{rounded->data[i]}, HISTOGRAM_ENTRIES - 1);
    ++count[level];
    // Seldom so. Without being told, the compiler makes every block wait for the one before it.
    if (__builtin_expect(count[level] > count[mode], 0)) mode = level;
  }
  const int32_t low = mode >= 1 ? mode - 1 : 0;
  const int32_t mid = low + 1;
  const int32_t high = low + 2;
  const int32_t weighted = high * count[high] + mid * count[mid] + low * count[low];
  return runTimeQuotient(weighted, count[mid] + count[high] + count[low]);
}

// Collects the first blocks of the typical level, up to MAX_CONTAINER_WIDTH, and returns how many
// there are. A level in the upper half of its integer is matched by rounding, one in the lower half
// by truncation.
uint64_t collectBlocks(const Image* frame, const Levels& levels, double typical,
                       const uint8_t** blocks) {
  const int32_t wanted = roundHalfAway(typical);
  const bool isUpperHalf = floorToInt(typical) != wanted;
  const Image& grid = isUpperHalf ? levels.rounded : levels.truncated;
  uint64_t taken = 0;
  for (uint64_t by = 0; by < grid.h && taken < MAX_CONTAINER_WIDTH; ++by) {
    const uint8_t* const row = frame->data + by * BLOCKSIZE * frame->w;
    const uint8_t* const levelsOfRow = grid.data + by * grid.w;
    for (uint64_t bx = 0; bx < grid.w && taken < MAX_CONTAINER_WIDTH; ++bx) {
      // Written in any case, and kept by counting it: processors cannot foresee what matches.
      blocks[taken] = row + bx * BLOCKSIZE;
      taken += levelsOfRow[bx] == wanted ? 1 : 0;
    }
  }
  return taken;
}

// 3 x 3 Gaussian of the given sigma. Its coefficients do not add up to 1, and are not meant to.
struct Kernel {
  double coefficients[GAUSSIAN_MASK_SIZE * GAUSSIAN_MASK_SIZE];
};

Kernel makeGaussian(double sigma) {
  const double s = 2.0 * (sigma * sigma);
  const double norm = 1.0 / (sigma * sigma * TWO_PI);
  const double corner = norm * std::exp(-2.0 / s);
  const double edge = norm * std::exp(-1.0 / s);
  return {{corner, edge, corner, edge, norm, edge, corner, edge, corner}};
}

// Blocks that are smoothed side by side, each in a lane of its own and in its own order of
// additions: the last digits depend on it.
constexpr uint64_t LANES = 8;

// Deviations of what the kernel takes away from the inner 6 x 6 samples of LANES blocks, whose rows
// stand w samples apart.
MULTIVERSIONED
void residualDeviations(const uint8_t* const* blocks, uint64_t w, const Kernel& kernel,
                        double* deviations) {
  constexpr uint64_t SIDE = BLOCKSIZE;
  constexpr uint64_t INNER = SIDE - 2;
  constexpr double N = INNER * INNER;
  double samples[SIDE * SIDE][LANES];
  for (uint64_t i = 0; i < SIDE * SIDE; ++i) {
    for (uint64_t lane = 0; lane < LANES; ++lane) {
      // NOLINTNEXTLINE(bugprone-integer-division): the row, not a level
      samples[i][lane] = blocks[lane][i / SIDE * w + i % SIDE];
    }
  }
  double sums[LANES] = {};
  double squareSums[LANES] = {};
  for (uint64_t i = 0; i < INNER * INNER; ++i) {
    const uint64_t corner = i / INNER * SIDE + i % INNER;  // of the 3 x 3 samples around the i-th
    double smooth[LANES] = {};
    for (uint64_t k = 0; k < GAUSSIAN_MASK_SIZE * GAUSSIAN_MASK_SIZE; ++k) {
      const double* const sample =
          samples[corner + k / GAUSSIAN_MASK_SIZE * SIDE + k % GAUSSIAN_MASK_SIZE];
      for (uint64_t lane = 0; lane < LANES; ++lane) {
        smooth[lane] += sample[lane] * kernel.coefficients[k];
      }
    }
    const double* const centre = samples[corner + SIDE + 1];
    for (uint64_t lane = 0; lane < LANES; ++lane) {
      const double residual = centre[lane] - smooth[lane];
      sums[lane] += residual;
      squareSums[lane] += residual * residual;
    }
  }
  for (uint64_t lane = 0; lane < LANES; ++lane) {  // vectorised
    deviations[lane] = std::sqrt((squareSums[lane] - sums[lane] * sums[lane] / N) / (N - 1.0));
  }
}

}  // namespace

void* noise(void* luma) {
  const Image* frame = static_cast<const Image*>(luma);
  Levels levels = makeLevels(frame->w / BLOCKSIZE, frame->h / BLOCKSIZE);
  measureLevels(frame, &levels);
  const double typical = typicalLevel(&levels.rounded);
  const int32_t sigma = roundHalfAway(typical);
  if (sigma == 0) {
    freeLevels(&levels);
    Results.noise = 0.0;
    return gaveUp();
  }

  const uint8_t* blocks[MAX_CONTAINER_WIDTH + LANES];
  const uint64_t n = collectBlocks(frame, levels, typical, blocks);
  freeLevels(&levels);
  // The last batch is filled up with blocks whose deviations are not used.
  std::fill_n(blocks + n, LANES, frame->data);
  const Kernel kernel = makeGaussian(sigma);
  double total = 0.0;
  for (uint64_t first = 0; first < n; first += LANES) {
    double deviations[LANES];
    residualDeviations(blocks + first, frame->w, kernel, deviations);
    for (uint64_t i = first; i < std::min(first + LANES, n); ++i) total += deviations[i - first];
  }
  Results.noise = runTimeQuotient(total, static_cast<double>(n));
  return nullptr;
}
