// Block standard deviations of 8-bit and of double images.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <vector>

#include "definitions/definitions.h"
#include "support/frames.h"
#include "support/guardedBuffer.h"
#include "support/specialValues.h"

// The three outputs of one call, over one block grid.
struct Deviations {
  std::vector<int32_t> sums;
  std::vector<int32_t> squareSums;
  std::vector<double> stdDevs;
};

struct DoubleDeviations {
  std::vector<double> sums;
  std::vector<double> squareSums;
  std::vector<double> stdDevs;
};

static Deviations cleared(uint64_t blocks) {
  return {std::vector<int32_t>(blocks), std::vector<int32_t>(blocks),
          std::vector<double>(blocks, SENTINEL)};
}

static DoubleDeviations clearedDouble(uint64_t blocks) {
  return {std::vector<double>(blocks), std::vector<double>(blocks),
          std::vector<double>(blocks, SENTINEL)};
}

static void addDeviations(const Image& src, uint64_t blocksX, uint64_t blocksY, uint64_t blockW,
                          uint64_t blockH, Deviations* result) {
  Image32 sums = imageOver(result->sums, blocksX, blocksY);
  Image32 squareSums = imageOver(result->squareSums, blocksX, blocksY);
  ImageDouble stdDevs = imageOver(result->stdDevs, blocksX, blocksY);
  calculateStdDevs(&src, &sums, &squareSums, &stdDevs, blockW, blockH);
}

static void addDoubleDeviations(const ImageDouble& src, uint64_t kernelSide, uint64_t blocksX,
                                uint64_t blocksY, uint64_t blockW, uint64_t blockH,
                                DoubleDeviations* result) {
  const ImageDouble kernel = {kernelSide, kernelSide, nullptr};
  ImageDouble sums = imageOver(result->sums, blocksX, blocksY);
  ImageDouble squareSums = imageOver(result->squareSums, blocksX, blocksY);
  ImageDouble stdDevs = imageOver(result->stdDevs, blocksX, blocksY);
  calculateStdDevsDouble_ommitZeros(&src, &sums, &squareSums, &stdDevs, &kernel, blockW, blockH);
}

// The deviations of a frame that is one block.
static Deviations ofOneBlock(std::vector<uint8_t> frame, uint64_t w, uint64_t h) {
  Deviations result = cleared(1);
  addDeviations(imageOver(frame, w, h), 1, 1, w, h, &result);
  return result;
}

// Equal to the last bit, a NaN being as good as another.
static testing::AssertionResult same(const std::vector<double>& expected,
                                     const std::vector<double>& actual) {
  if (expected.size() != actual.size()) return testing::AssertionFailure() << "other size";
  for (size_t i = 0; i < expected.size(); i++)
    if (expected[i] != actual[i] && !(std::isnan(expected[i]) && std::isnan(actual[i])))
      return testing::AssertionFailure()
             << "element " << i << ": " << expected[i] << " became " << actual[i];
  return testing::AssertionSuccess();
}

// ---- calculateStdDevs

TEST(CalculateStdDevs, isZero_onFlatBlockOfEight) {
  for (int level = 0; level < 256; level++) {
    const Deviations result = ofOneBlock(flatFrame(8, 8, static_cast<uint8_t>(level)), 8, 8);
    EXPECT_EQ(64 * level, result.sums[0]);
    EXPECT_EQ(64 * level * level, result.squareSums[0]);
    EXPECT_EQ(0.0, result.stdDevs[0]) << level;
  }
}

// S = 256 * 181 = 46336 is the last whose square fits 31 bits.
TEST(CalculateStdDevs, isZero_onFlatBlockOfSixteen_upToLevel181) {
  for (int level = 0; level <= 181; level++)
    EXPECT_EQ(0.0, ofOneBlock(flatFrame(16, 16, static_cast<uint8_t>(level)), 16, 16).stdDevs[0])
        << level;
}

// S = 51200, S^2 = 2621440000 is read as S^2 - 2^32; Q - S^2 / 256 is 0 without the wrap, so it
// becomes 2^32 / 256 = 16777216.
TEST(CalculateStdDevs, isLarge_onFlatBlockOfSixteen_atLevel200) {
  const Deviations result = ofOneBlock(flatFrame(16, 16, 200), 16, 16);
  EXPECT_EQ(51200, result.sums[0]);
  EXPECT_EQ(10240000, result.squareSums[0]);
  EXPECT_EQ(std::sqrt(16777216.0 / 255.0), result.stdDevs[0]);
  EXPECT_NEAR(256.5015, result.stdDevs[0], 0.00005);
}

// Up to S = 65280 the square stays below 2^32, so every brighter level wraps by the same amount.
TEST(CalculateStdDevs, isLarge_onFlatBlockOfSixteen_fromLevel182) {
  for (int level = 182; level <= 255; level++)
    EXPECT_EQ(std::sqrt(16777216.0 / 255.0),
              ofOneBlock(flatFrame(16, 16, static_cast<uint8_t>(level)), 16, 16).stdDevs[0])
        << level;
}

// 32 samples of 255: S = 8160, Q = 32 * 65025 = 2080800, S^2 / 64 = 1040400.
TEST(CalculateStdDevs, ofAlternatingSamples) {
  const Deviations result = ofOneBlock(checkerboard(8, 8, 1), 8, 8);
  EXPECT_EQ(8160, result.sums[0]);
  EXPECT_EQ(2080800, result.squareSums[0]);
  EXPECT_EQ(std::sqrt((2080800.0 - 1040400.0) / 63.0), result.stdDevs[0]);
  EXPECT_NEAR(128.51, result.stdDevs[0], 0.005);
}

// The doubled S = 16320 and Q = 4161600: S^2 / 64 = 266342400 / 64 = 4161600, so 0 remains.
TEST(CalculateStdDevs, addsOntoTheSums_whenCalledTwice) {
  std::vector<uint8_t> frame = checkerboard(8, 8, 1);
  Deviations result = cleared(1);
  addDeviations(imageOver(frame, 8, 8), 1, 1, 8, 8, &result);
  addDeviations(imageOver(frame, 8, 8), 1, 1, 8, 8, &result);
  EXPECT_EQ(16320, result.sums[0]);
  EXPECT_EQ(4161600, result.squareSums[0]);
  EXPECT_EQ(0.0, result.stdDevs[0]);
}

// Total 10, total of squares 1 + 4 + 9 + 16 = 30: sqrt((30 - 100 / 4) / 3) = sqrt(5 / 3).
TEST(CalculateStdDevs, dividesByOneLessThanTheCount) {
  EXPECT_EQ(std::sqrt(5.0 / 3.0), ofOneBlock({1, 2, 3, 4}, 2, 2).stdDevs[0]);
}

// Q = p^2 and S^2 / 1 = p^2 leave 0, which is divided by 0.
TEST(CalculateStdDevs, isNaN_onBlocksOfOneSample) {
  const Deviations result = ofOneBlock({9}, 1, 1);
  EXPECT_EQ(9, result.sums[0]);
  EXPECT_EQ(81, result.squareSums[0]);
  EXPECT_TRUE(std::isnan(result.stdDevs[0]));
}

// With other values in the sums: Q = 19 + 81, S = 9, so (100 - 81) / 0.
TEST(CalculateStdDevs, isInfinite_onBlocksOfOneSample_ifSquaresArePresent) {
  std::vector<uint8_t> frame = {9};
  Deviations result = cleared(1);
  result.squareSums[0] = 19;
  addDeviations(imageOver(frame, 1, 1), 1, 1, 1, 1, &result);
  EXPECT_EQ(INFINITY, result.stdDevs[0]);
}

// 65536 samples of 128: S = 2^23, so S^2 = 2^46 wraps to 0 and Q = 2^30 alone remains.
TEST(CalculateStdDevs, losesTheSquareOfTheSum_ifItIsAMultipleOfTwoToTheThirtyTwo) {
  const Deviations result = ofOneBlock(flatFrame(256, 256, 128), 256, 256);
  EXPECT_EQ(8388608, result.sums[0]);
  EXPECT_EQ(1073741824, result.squareSums[0]);
  EXPECT_EQ(std::sqrt(1073741824.0 / 65535.0), result.stdDevs[0]);
}

// 65536 samples of 192: S = 3 * 2^22, S^2 = 9 * 2^44 wraps to 0; Q = 9 * 2^28 = 2415919104 is read
// as -1879048192, of which there is no root.
TEST(CalculateStdDevs, isNaN_ifTheTotalOfSquaresWrapsToNegative) {
  const Deviations result = ofOneBlock(flatFrame(256, 256, 192), 256, 256);
  EXPECT_EQ(12582912, result.sums[0]);
  EXPECT_EQ(-1879048192, result.squareSums[0]);
  EXPECT_TRUE(std::isnan(result.stdDevs[0]));
}

TEST(CalculateStdDevs, touchesNothing_onEmptyGrid) {
  const Image src = {8, 8, nullptr};
  Deviations result = cleared(2);
  addDeviations(src, 0, 2, 8, 8, &result);
  addDeviations(src, 2, 0, 8, 8, &result);
  EXPECT_EQ(std::vector<int32_t>(2), result.sums);
  EXPECT_EQ(std::vector<int32_t>(2), result.squareSums);
  EXPECT_EQ(std::vector<double>(2, SENTINEL), result.stdDevs);
}

// N = 0 and D = -1: S = 3 and Q = 5 stay, 5 - 9 / 0 is -infinity, divided by -1 +infinity; with
// cleared sums 0 - 0 / 0 is NaN.
TEST(CalculateStdDevs, addsNothing_ifBlocksHaveNoColumns) {
  std::vector<uint8_t> frame = flatFrame(4, 4, 200);
  Deviations result = cleared(2);
  result.sums[0] = 3;
  result.squareSums[0] = 5;
  addDeviations(imageOver(frame, 4, 4), 2, 1, 0, 4, &result);
  EXPECT_EQ((std::vector<int32_t>{3, 0}), result.sums);
  EXPECT_EQ((std::vector<int32_t>{5, 0}), result.squareSums);
  EXPECT_TRUE(same({INFINITY, NAN}, result.stdDevs));
}

// Exact totals of one block, cut to 32 bits afterwards.
static void expectBlock(const std::vector<uint8_t>& frame, uint64_t w, uint64_t left, uint64_t top,
                        uint64_t blockW, uint64_t blockH, Deviations* expected) {
  uint64_t sum = 0, squareSum = 0;
  for (uint64_t x = left; x < left + blockW; x++)
    for (uint64_t y = top; y < top + blockH; y++) {
      const uint64_t sample = frame[y * w + x];
      sum += sample;
      squareSum += sample * sample;
    }
  const double n = static_cast<double>(blockW * blockH);
  const int32_t squareOfSum = static_cast<int32_t>(static_cast<uint32_t>(sum * sum));
  const int32_t q = static_cast<int32_t>(static_cast<uint32_t>(squareSum));
  expected->sums.push_back(static_cast<int32_t>(static_cast<uint32_t>(sum)));
  expected->squareSums.push_back(q);
  expected->stdDevs.push_back(std::sqrt((q - squareOfSum / n) / (n - 1.0)));
}

TEST(CalculateStdDevs, agreesWithEachBlockByItself_andReadsNothingBeyondTheLast) {
  const FrameSize blocks[] = {{16, 16}, {8, 8},  {1, 1}, {2, 1}, {3, 5},
                              {40, 40}, {33, 7}, {8, 5}, {5, 8}};
  for (auto [w, h] : oddSizes()) {
    for (auto [blockW, blockH] : blocks) {
      const uint64_t blocksX = w / blockW, blocksY = h / blockH;
      if (blocksX * blocksY == 0) continue;
      for (const auto& frame : {noiseFrame(w, h, 1), extremeNoise(w, h, 2),
                                narrowNoise(w, h, 200, 60, 3), flatFrame(w, h, 255)}) {
        Deviations expected;
        for (uint64_t block = 0; block < blocksX * blocksY; block++)
          expectBlock(frame, w, block % blocksX * blockW, block / blocksX * blockH, blockW, blockH,
                      &expected);
        const uint64_t read = (blocksY * blockH - 1) * w + blocksX * blockW;
        GuardedBuffer buffer = allocBeforeGuard(read);
        memcpy(buffer.data, frame.data(), read);
        Deviations result = cleared(blocksX * blocksY);
        addDeviations({w, h, buffer.data}, blocksX, blocksY, blockW, blockH, &result);
        ASSERT_EQ(expected.sums, result.sums) << w << "x" << h << " by " << blockW << "x" << blockH;
        ASSERT_EQ(expected.squareSums, result.squareSums)
            << w << "x" << h << " by " << blockW << "x" << blockH;
        ASSERT_TRUE(same(expected.stdDevs, result.stdDevs))
            << w << "x" << h << " by " << blockW << "x" << blockH;
        freeGuardedBuffer(&buffer);
      }
    }
  }
}

// ---- calculateStdDevsDouble_ommitZeros

// An image of two blocks of 8 x 8 and two columns more: 1 and 3 in turn inside the blocks, a value
// on their margins and beyond them that would spoil any total.
static std::vector<double> twoBlocksWithMargins() {
  std::vector<double> samples(18 * 8, 1e9);
  for (size_t y = 1; y <= 6; y++)
    for (size_t x = 0; x < 16; x++)
      if (x % 8 >= 1 && x % 8 <= 6) samples[y * 18 + x] = x % 2 == 0 ? 1.0 : 3.0;
  return samples;
}

// 18 samples of 1 and 18 of 3: S = 72, Q = 18 + 162 = 180, S * S / 36 = 144, D = 35.
TEST(CalculateStdDevsDouble, sumsTheInnerThirtySix_forKernelOfThreeAndBlocksOfEight) {
  std::vector<double> samples = twoBlocksWithMargins();
  DoubleDeviations result = clearedDouble(2);
  addDoubleDeviations(imageOver(samples, 18, 8), 3, 2, 1, 8, 8, &result);
  EXPECT_EQ(std::vector<double>(2, 72.0), result.sums);
  EXPECT_EQ(std::vector<double>(2, 180.0), result.squareSums);
  EXPECT_EQ(std::vector<double>(2, std::sqrt(36.0 / 35.0)), result.stdDevs);
}

// A kernel of 2 has the same margin of 1, so the same 36 samples and N = 36.
TEST(CalculateStdDevsDouble, takesTheMarginOfTheNextOddKernel_forEvenKernel) {
  std::vector<double> samples = twoBlocksWithMargins();
  DoubleDeviations result = clearedDouble(2);
  addDoubleDeviations(imageOver(samples, 18, 8), 2, 2, 1, 8, 8, &result);
  EXPECT_EQ(std::vector<double>(2, 72.0), result.sums);
  EXPECT_EQ(std::vector<double>(2, std::sqrt(36.0 / 35.0)), result.stdDevs);
}

// Zeros inside the block count like any other value: S = 36, Q = 18 * 4 = 72, (72 - 36) / 35.
TEST(CalculateStdDevsDouble, countsZerosInsideTheBlock) {
  std::vector<double> samples(64);
  for (size_t i = 0; i < 64; i += 2) samples[i] = 2.0;
  DoubleDeviations result = clearedDouble(1);
  addDoubleDeviations(imageOver(samples, 8, 8), 3, 1, 1, 8, 8, &result);
  EXPECT_EQ(36.0, result.sums[0]);
  EXPECT_EQ(72.0, result.squareSums[0]);
  EXPECT_EQ(std::sqrt(36.0 / 35.0), result.stdDevs[0]);
}

// Twice S = 72 and Q = 180 are 144 and 360: (360 - 144 * 144 / 36) is negative, of which there is
// no root.
TEST(CalculateStdDevsDouble, addsOntoTheSums_whenCalledTwice) {
  std::vector<double> samples = twoBlocksWithMargins();
  DoubleDeviations result = clearedDouble(2);
  addDoubleDeviations(imageOver(samples, 18, 8), 3, 2, 1, 8, 8, &result);
  addDoubleDeviations(imageOver(samples, 18, 8), 3, 2, 1, 8, 8, &result);
  EXPECT_EQ(std::vector<double>(2, 144.0), result.sums);
  EXPECT_EQ(std::vector<double>(2, 360.0), result.squareSums);
  EXPECT_TRUE(same({NAN, NAN}, result.stdDevs));
}

// Nothing but the kernel's sides can be read here.
TEST(CalculateStdDevsDouble, printsAndLeavesItsOutputs_ifTheKernelIsNotSquare) {
  std::vector<double> samples = twoBlocksWithMargins();
  const ImageDouble src = imageOver(samples, 18, 8);
  DoubleDeviations result = clearedDouble(2);
  ImageDouble sums = imageOver(result.sums, 2, 1), squareSums = imageOver(result.squareSums, 2, 1);
  ImageDouble stdDevs = imageOver(result.stdDevs, 2, 1);
  const FrameSize kernels[] = {{3, 5}, {5, 3}, {2, 3}};
  for (auto [w, h] : kernels) {
    const ImageDouble kernel = {w, h, nullptr};
    testing::internal::CaptureStdout();
    calculateStdDevsDouble_ommitZeros(&src, &sums, &squareSums, &stdDevs, &kernel, 8, 8);
    EXPECT_EQ("Provided kernel is not symmetric!", testing::internal::GetCapturedStdout());
    EXPECT_EQ(std::vector<double>(2), result.sums);
    EXPECT_EQ(std::vector<double>(2), result.squareSums);
    EXPECT_EQ(std::vector<double>(2, SENTINEL), result.stdDevs);
  }
}

// The kernel's shape is looked at before the grid is.
TEST(CalculateStdDevsDouble, prints_onEmptyGrid_ifTheKernelIsNotSquare) {
  const ImageDouble src = {8, 8, nullptr}, kernel = {3, 5, nullptr};
  ImageDouble none = {1, 0, nullptr};
  testing::internal::CaptureStdout();
  calculateStdDevsDouble_ommitZeros(&src, &none, &none, &none, &kernel, 8, 8);
  EXPECT_EQ("Provided kernel is not symmetric!", testing::internal::GetCapturedStdout());
}

TEST(CalculateStdDevsDouble, doesNothing_onEmptyGrid) {
  const ImageDouble src = {8, 8, nullptr};
  DoubleDeviations result = clearedDouble(2);
  testing::internal::CaptureStdout();
  addDoubleDeviations(src, 3, 2, 0, 8, 8, &result);
  EXPECT_EQ("", testing::internal::GetCapturedStdout());
  EXPECT_EQ(std::vector<double>(2), result.sums);
  EXPECT_EQ(std::vector<double>(2, SENTINEL), result.stdDevs);
}

// A block of 3 x 3 with a margin of 1 leaves one value: 4 - 2 * 2 / 1 = 0, divided by 0; 6 more in
// the total of squares make that infinite.
TEST(CalculateStdDevsDouble, isNaNOrInfinite_ifTheMarginLeavesOneValue) {
  std::vector<double> samples(18, 2.0);
  DoubleDeviations result = clearedDouble(2);
  result.squareSums[1] = 6.0;
  addDoubleDeviations(imageOver(samples, 6, 3), 3, 2, 1, 3, 3, &result);
  EXPECT_EQ(std::vector<double>(2, 2.0), result.sums);
  EXPECT_TRUE(same({NAN, INFINITY}, result.stdDevs));
}

TEST(CalculateStdDevsDouble, agreesWithEachBlockByItself_andReadsNothingBeyondTheLast) {
  uint64_t state = seedRandom(4);
  const FrameSize blocks[] = {{8, 8}, {16, 16}, {7, 9}, {9, 7}, {12, 15}};
  for (auto [w, h] : oddSizes()) {
    for (auto [blockW, blockH] : blocks) {
      const uint64_t blocksX = w / blockW, blocksY = h / blockH;
      if (blocksX * blocksY == 0) continue;
      const uint64_t read = (blocksY * blockH - 1) * w + blocksX * blockW;
      GuardedBuffer buffer = allocBeforeGuard(read * sizeof(double));
      double* samples = reinterpret_cast<double*>(buffer.data);
      for (uint64_t i = 0; i < read; i++) samples[i] = nextRandom(&state) / 1e7 - 200.0;
      for (uint64_t kernelSide = 0; kernelSide <= 7; kernelSide++) {
        const uint64_t margin = kernelSide / 2;
        if (blockW <= 2 * margin || blockH <= 2 * margin) continue;
        const double n = static_cast<double>((blockW - 2 * margin) * (blockH - 2 * margin));
        DoubleDeviations expected;
        for (uint64_t block = 0; block < blocksX * blocksY; block++) {
          const double* corner = samples + block / blocksX * blockH * w + block % blocksX * blockW;
          double sum = 0.0, squareSum = 0.0;
          for (uint64_t i = 0; i < blockW * blockH; i++) {
            const uint64_t x = i % blockW, y = i / blockW;
            if (x < margin || x >= blockW - margin || y < margin || y >= blockH - margin) continue;
            const double sample = corner[y * w + x];
            sum += sample;
            squareSum += sample * sample;
          }
          expected.sums.push_back(sum);
          expected.squareSums.push_back(squareSum);
          expected.stdDevs.push_back(std::sqrt((squareSum - sum * sum / n) / (n - 1.0)));
        }
        DoubleDeviations result = clearedDouble(blocksX * blocksY);
        addDoubleDeviations({w, h, samples}, kernelSide, blocksX, blocksY, blockW, blockH, &result);
        ASSERT_EQ(expected.sums, result.sums) << w << "x" << h << ", kernel " << kernelSide;
        ASSERT_EQ(expected.squareSums, result.squareSums)
            << w << "x" << h << ", kernel " << kernelSide;
        ASSERT_TRUE(same(expected.stdDevs, result.stdDevs))
            << w << "x" << h << ", kernel " << kernelSide;
      }
      freeGuardedBuffer(&buffer);
    }
  }
}
