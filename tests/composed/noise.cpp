// Noise is measured where the picture itself has least to say: at the most frequent level of
// detail. The mode of the 8 x 8 blocks' deviations gives the level, up to 1000 blocks of that level
// are smoothed by a 3 x 3 Gaussian whose sigma is the level, and what the smoothing took away is
// the noise.
#include "composed/composed.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <initializer_list>
#include <map>

#include "definitions/definitions.h"
#include "indicators/runTimeQuotient.h"
#include "indicators/truncateToInt32.h"

namespace composed {

namespace {

constexpr int32_t HISTOGRAM_ENTRIES = 128;      // levels of detail, one luma level each
constexpr uint64_t MAX_CONTAINER_WIDTH = 1000;  // blocks
constexpr uint64_t GAUSSIAN_MASK_SIZE = 3;      // samples
constexpr double TWO_PI = 6.28;                 // as short as this: the results rest on it

int32_t rounded(double value) {
  return truncateToInt32(std::round(value));
}

// Rounded deviations of all blocks, as places in the histogram.
Image32 levelsOf(const ImageDouble& stdDevs) {
  Image32 levels = callocImage32(stdDevs.w, stdDevs.h);
  std::transform(stdDevs.data, stdDevs.data + stdDevs.w * stdDevs.h, levels.data,
                 [](double stdDev) { return std::min(rounded(stdDev), HISTOGRAM_ENTRIES - 1); });
  return levels;
}

// A number of blocks is kept in 16 bits and wraps.
uint16_t blocksOfLevel(const Image32& levels, int32_t level) {
  return static_cast<uint16_t>(std::count(levels.data, levels.data + levels.w * levels.h, level));
}

// The level that leads when all blocks have been counted. The lead goes to another level when that
// has more blocks so far than the leader; levels of as many leave it where it is.
int32_t leadingLevel(const Image32& levels) {
  std::map<int32_t, uint16_t> blocks;
  int32_t leader = 0;
  uint16_t most = 0;
  for (uint64_t i = 0; i < levels.w * levels.h; ++i) {
    const int32_t level = levels.data[i];
    const uint16_t count = ++blocks[level];
    if (level == leader || count > most) {
      leader = level;
      most = count;
    }
  }
  return leader;
}

// The mean level of the blocks whose level is one of three: the leading one and its neighbours, or
// 0 to 2. NaN when there are none.
double typicalLevel(const Image32& levels) {
  const int32_t middle = std::max(leadingLevel(levels), 1);
  int32_t total = 0;
  int32_t count = 0;
  for (const int32_t level : {middle - 1, middle, middle + 1}) {
    total += level * blocksOfLevel(levels, level);
    count += blocksOfLevel(levels, level);
  }
  return runTimeQuotient(total, count);
}

// 3 x 3 Gaussian of the given sigma. Its coefficients do not add up to 1, and are not meant to.
void fillGaussian(ImageDouble* kernel, double sigma) {
  const double s = 2.0 * (sigma * sigma);
  const double norm = 1.0 / (sigma * sigma * TWO_PI);
  for (int y = -1; y <= 1; ++y) {
    for (int x = -1; x <= 1; ++x) {
      const double squaredDistance = x * x + y * y;
      kernel->data[3 * (y + 1) + x + 1] = norm * std::exp(-squaredDistance / s);
    }
  }
}

// Copies the frame's blocks of the typical level side by side into `container`, as many as it
// holds, and returns how many there are. They are those whose deviation rounds to the same as a
// typical level in the upper half of its integer, and those with the same integer part as one in
// the lower half: in both cases a stretch of length 1.
uint16_t collectBlocks(const Image* frame, const ImageDouble& stdDevs, double typical,
                       Image* container) {
  const double lower = std::floor(typical);
  const double least = std::round(typical) > lower ? lower + 0.5 : lower;
  uint16_t taken = 0;
  for (uint64_t y = 0; y < stdDevs.h; ++y) {
    for (uint64_t x = 0; x < stdDevs.w; ++x) {
      const double stdDev = stdDevs.data[y * stdDevs.w + x];
      if (taken == MAX_CONTAINER_WIDTH || !(least <= stdDev && stdDev < least + 1.0)) continue;
      for (uint64_t line = 0; line < BLOCKSIZE; ++line) {
        std::copy_n(frame->data + (y * BLOCKSIZE + line) * frame->w + x * BLOCKSIZE, BLOCKSIZE,
                    container->data + line * container->w + taken * BLOCKSIZE);
      }
      ++taken;
    }
  }
  return taken;
}

// Mean over the first n blocks of the deviation of container minus filtered; 0 / 0 without blocks.
double meanResidualDeviation(const Image& container, const ImageDouble& filtered,
                             const ImageDouble& kernel, uint16_t n) {
  ImageDouble residual = callocImageDouble(uint64_t{n} * BLOCKSIZE, BLOCKSIZE);
  ImageDouble sums = callocImageDouble(n, 1);
  ImageDouble squareSums = callocImageDouble(n, 1);
  ImageDouble stdDevs = callocImageDouble(n, 1);
  for (uint64_t y = 0; y < residual.h; ++y) {
    for (uint64_t x = 0; x < residual.w; ++x) {
      residual.data[y * residual.w + x] =
          container.data[y * container.w + x] - filtered.data[y * filtered.w + x];
    }
  }
  calculateStdDevsDouble_ommitZeros(&residual, &sums, &squareSums, &stdDevs, &kernel, BLOCKSIZE,
                                    BLOCKSIZE);
  double total = 0.0;
  for (uint64_t i = 0; i < n; ++i) total += stdDevs.data[i];
  for (ImageDouble* scratch : {&residual, &sums, &squareSums, &stdDevs}) freeImageDouble(scratch);
  return runTimeQuotient(total, n);
}

}  // namespace

void* noise(void* luma) {
  const Image* frame = static_cast<const Image*>(luma);
  const uint64_t blocksW = frame->w / BLOCKSIZE;
  const uint64_t blocksH = frame->h / BLOCKSIZE;

  Image32 sums = callocImage32(blocksW, blocksH);
  Image32 squareSums = callocImage32(blocksW, blocksH);
  ImageDouble stdDevs = callocImageDouble(blocksW, blocksH);
  Image container = callocImage(MAX_CONTAINER_WIDTH * BLOCKSIZE, BLOCKSIZE);
  ImageDouble filtered = callocImageDouble(MAX_CONTAINER_WIDTH * BLOCKSIZE, BLOCKSIZE);
  ImageDouble kernel = callocImageDouble(GAUSSIAN_MASK_SIZE, GAUSSIAN_MASK_SIZE);

  calculateStdDevs(frame, &sums, &squareSums, &stdDevs, BLOCKSIZE, BLOCKSIZE);
  Image32 levels = levelsOf(stdDevs);
  const double typical = typicalLevel(levels);
  const int32_t sigma = rounded(typical);
  double result = 0.0;
  bool measured = false;
  if (sigma != 0) {
    const uint16_t n = collectBlocks(frame, stdDevs, typical, &container);
    fillGaussian(&kernel, sigma);
    measured = filter(&container, &filtered, &kernel, n, BLOCKSIZE, BLOCKSIZE) == 0;
    if (measured) {
      result = meanResidualDeviation(container, filtered, kernel, n);
    } else {
      std::printf("Cannot filter the selected blocks! ");
      std::puts("Check the string above to see what is the problem.");
    }
  }

  for (Image32* scratch : {&sums, &squareSums, &levels}) freeImage32(scratch);
  freeImage(&container);
  for (ImageDouble* scratch : {&stdDevs, &filtered, &kernel}) freeImageDouble(scratch);
  Results.noise = result;
  return measured ? nullptr : gaveUp();
}

}  // namespace composed
