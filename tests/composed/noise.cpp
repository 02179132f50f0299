// Noise is measured where the picture itself has least to say: at the most frequent level of
// detail. The mode of the 8 x 8 blocks' deviations gives the level, up to 1000 blocks of that level
// are smoothed by a 3 x 3 Gaussian whose sigma is the level, and what the smoothing took away is
// the noise.
#include "composed/composed.h"

#include <cmath>
#include <cstdio>
#include <cstring>
#include <initializer_list>

#include "definitions/definitions.h"
#include "indicators/runTimeQuotient.h"
#include "indicators/truncateToInt32.h"

namespace composed {

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

// The mean level of the histogram's mode and its two neighbours, weighted with their counts. NaN
// when all three are empty. Counts are 16-bit and wrap.
double typicalLevel(const ImageDouble& stdDevs) {
  uint16_t count[HISTOGRAM_ENTRIES + 1] = {};  // the last stays 0: above the highest level is none
  int32_t mode = 0;
  for (uint64_t i = 0; i < stdDevs.w * stdDevs.h; ++i) {
    int32_t level = roundHalfAway(stdDevs.data[i]);
    if (level < 1) level = 0;
    if (level > HISTOGRAM_ENTRIES - 1) level = HISTOGRAM_ENTRIES - 1;
    ++count[level];
    if (count[level] > count[mode]) mode = level;
  }
  const int32_t low = mode >= 1 ? mode - 1 : 0;
  const int32_t mid = low + 1;
  const int32_t high = low + 2;
  const int32_t weighted = high * count[high] + mid * count[mid] + low * count[low];
  return runTimeQuotient(weighted, count[mid] + count[high] + count[low]);
}

// 3 x 3 Gaussian of the given sigma. Its coefficients do not add up to 1, and are not meant to.
void fillGaussian(ImageDouble* kernel, double sigma) {
  const double s = 2.0 * (sigma * sigma);
  const double norm = 1.0 / (sigma * sigma * TWO_PI);
  const double corner = norm * std::exp(-2.0 / s);
  const double edge = norm * std::exp(-1.0 / s);
  const double coefficients[] = {corner, edge, corner, edge, norm, edge, corner, edge, corner};
  std::memcpy(kernel->data, coefficients, sizeof coefficients);
}

// Copies the frame's blocks of the typical level side by side into `container`, as many as it
// holds, and returns how many there are. A level in the upper half of its integer is matched by
// rounding, one in the lower half by truncation.
uint16_t collectBlocks(const Image* frame, const ImageDouble& stdDevs, double typical,
                       Image* container) {
  const int32_t rounded = roundHalfAway(typical);
  const int32_t floored = floorToInt(typical);
  uint16_t taken = 0;
  for (uint64_t i = 0; i < stdDevs.w * stdDevs.h && taken < MAX_CONTAINER_WIDTH; ++i) {
    const double stdDev = stdDevs.data[i];
    const bool matches =
        floored != rounded ? roundHalfAway(stdDev) == rounded : floorToInt(stdDev) == floored;
    if (!matches) continue;
    const uint8_t* block =
        frame->data + i / stdDevs.w * BLOCKSIZE * frame->w + i % stdDevs.w * BLOCKSIZE;
    uint8_t* place = container->data + taken * BLOCKSIZE;
    for (uint64_t y = 0; y < BLOCKSIZE; ++y) {
      std::memcpy(place + y * container->w, block + y * frame->w, BLOCKSIZE);
    }
    ++taken;
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
  const double typical = typicalLevel(stdDevs);
  const int32_t sigma = roundHalfAway(typical);
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

  freeImage32(&sums);
  freeImage32(&squareSums);
  freeImage(&container);
  for (ImageDouble* scratch : {&stdDevs, &filtered, &kernel}) freeImageDouble(scratch);
  Results.noise = result;
  return measured ? nullptr : gaveUp();
}

}  // namespace composed
