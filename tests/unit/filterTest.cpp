// Correlation of regions with a kernel.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "definitions/definitions.h"
#include "support/frames.h"
#include "support/guardedBuffer.h"
#include "support/specialValues.h"

struct Kernel {
  uint64_t w;
  uint64_t h;
  std::vector<double> weights;
};

struct Regions {
  uint32_t count;
  uint32_t w;
  uint32_t h;
};

// No two weights are alike and none is a short binary fraction, so that order and orientation show.
static Kernel unevenKernel(uint64_t w, uint64_t h) {
  Kernel kernel = {w, h, {}};
  for (uint64_t i = 0; i < w * h; i++) kernel.weights.push_back(0.1 + static_cast<double>(i) / 7.0);
  return kernel;
}

static std::vector<double> filtered(std::vector<uint8_t> frame, uint64_t w, uint64_t h,
                                    Kernel kernel, Regions regions) {
  const Image src = imageOver(frame, w, h);
  const ImageDouble weights = imageOver(kernel.weights, kernel.w, kernel.h);
  std::vector<double> result(w * h, SENTINEL);
  ImageDouble dest = imageOver(result, w, h);
  EXPECT_EQ(0, filter(&src, &dest, &weights, regions.count, regions.w, regions.h));
  return result;
}

// Position by position of the whole destination: is it written, and with what.
static std::vector<double> expectedFilter(const std::vector<uint8_t>& frame, uint64_t w, uint64_t h,
                                          const Kernel& kernel, Regions regions) {
  const uint64_t half = kernel.w / 2;
  std::vector<double> result;
  for (uint64_t i = 0; i < w * h; i++) {
    const uint64_t x = i % w, y = i / w, column = x % regions.w;
    const bool written = x / regions.w < regions.count && column >= half &&
                         column + half < regions.w && y >= half && y + half < regions.h;
    double sum = 0.0;
    for (uint64_t j = 0; written && j < kernel.w * kernel.h; j++)
      sum += frame[(y - half + j / kernel.w) * w + x - half + j % kernel.w] * kernel.weights[j];
    result.push_back(written ? sum : SENTINEL);
  }
  return result;
}

// Three regions of 8 x 8: 1 in the middle of the kernel gives the samples themselves back.
TEST(Filter, writesTheInteriorOfEachRegion) {
  const std::vector<uint8_t> frame = noiseFrame(24, 8, 1);
  const std::vector<double> result =
      filtered(frame, 24, 8, {3, 3, {0, 0, 0, 0, 1, 0, 0, 0, 0}}, {3, 8, 8});
  EXPECT_EQ(24 * 8 - 3 * 6 * 6, std::count(result.begin(), result.end(), SENTINEL));
  for (size_t y = 0; y < 8; y++)
    for (size_t x = 0; x < 24; x++) {
      const bool border = y == 0 || y == 7 || x % 8 == 0 || x % 8 == 7;
      EXPECT_EQ(border ? SENTINEL : frame[y * 24 + x], result[y * 24 + x]) << x << "," << y;
    }
}

// The only interior sample of 3 x 3 ones to nine: 1 * 10^0 + 2 * 10^1 + ... + 9 * 10^8.
TEST(Filter, doesNotFlipTheKernel) {
  const std::vector<double> result =
      filtered({1, 2, 3, 4, 5, 6, 7, 8, 9}, 3, 3,
               {3, 3, {1, 1e1, 1e2, 1e3, 1e4, 1e5, 1e6, 1e7, 1e8}}, {1, 3, 3});
  EXPECT_EQ(987654321.0, result[4]);
}

// 2^53 + 1 is rounded back to 2^53, so ones that come after it are lost. The row of ones before it
// gives 2^53 + 3, rounded to the even 2^53 + 4; column by column all but one would come after it.
TEST(Filter, addsTheProductsRowByRow) {
  const double big = 9007199254740992.0;
  const std::vector<uint8_t> ones = flatFrame(3, 3, 1);
  EXPECT_EQ(big, filtered(ones, 3, 3, {3, 3, {big, 1, 1, 1, 0, 0, 0, 0, 0}}, {1, 3, 3})[4]);
  EXPECT_EQ(big + 4.0, filtered(ones, 3, 3, {3, 3, {1, 1, 1, big, 0, 0, 0, 0, 0}}, {1, 3, 3})[4]);
}

// Rows of 10, 20, 30, ..: the output row y is 3 times source row y - 1, thus 30 * y.
TEST(Filter, readsTheRowAbove_forKernelOfOneRow) {
  std::vector<uint8_t> frame = verticalRamp(8, 8, 10);
  for (uint8_t& sample : frame) sample = static_cast<uint8_t>(sample + 10);
  const std::vector<double> result = filtered(frame, 8, 8, {3, 1, {1, 1, 1}}, {1, 8, 8});
  for (size_t y = 0; y < 8; y++)
    for (size_t x = 0; x < 8; x++) {
      const bool border = y == 0 || y == 7 || x == 0 || x == 7;
      EXPECT_EQ(border ? SENTINEL : 30.0 * static_cast<double>(y), result[y * 8 + x]);
    }
}

TEST(Filter, writesZero_forKernelWithoutRows) {
  const std::vector<double> result = filtered(flatFrame(5, 5, 9), 5, 5, {3, 0, {}}, {1, 5, 5});
  EXPECT_EQ(9, std::count(result.begin(), result.end(), 0.0));
  EXPECT_EQ(16, std::count(result.begin(), result.end(), SENTINEL));
  EXPECT_EQ(0.0, result[6]);
  EXPECT_EQ(0.0, result[18]);
}

// Without columns half a kernel is 0, and the interior is the whole region.
TEST(Filter, writesZeroEverywhere_forKernelWithoutColumns) {
  EXPECT_EQ(std::vector<double>(25), filtered(flatFrame(5, 5, 9), 5, 5, {0, 3, {}}, {1, 5, 5}));
}

// Regions of 7 x 5 in an image of 16 x 6: the last two columns and the last row belong to none.
TEST(Filter, leavesWhatBelongsToNoRegion) {
  const std::vector<uint8_t> frame = noiseFrame(16, 6, 2);
  const std::vector<double> result = filtered(frame, 16, 6, unevenKernel(3, 3), {2, 7, 5});
  for (size_t y = 0; y < 6; y++)
    for (size_t x = 0; x < 16; x++)
      if (x >= 14 || y >= 5) {
        EXPECT_EQ(SENTINEL, result[y * 16 + x]) << x << "," << y;
      }
  EXPECT_EQ(2 * 5 * 3, 16 * 6 - std::count(result.begin(), result.end(), SENTINEL));
}

TEST(Filter, neverReachesAcrossARegionsBorder) {
  std::vector<uint8_t> frame = noiseFrame(24, 8, 3);
  const std::vector<double> before = filtered(frame, 24, 8, unevenKernel(3, 3), {3, 8, 8});
  for (size_t y = 0; y < 8; y++)
    for (size_t x = 8; x < 16; x++) frame[y * 24 + x] = static_cast<uint8_t>(~frame[y * 24 + x]);
  const std::vector<double> after = filtered(frame, 24, 8, unevenKernel(3, 3), {3, 8, 8});
  for (size_t y = 1; y < 7; y++)
    for (size_t x = 0; x < 24; x++) {
      if (x < 8 || x >= 16) {
        EXPECT_EQ(before[y * 24 + x], after[y * 24 + x]) << x << "," << y;
      } else if (x > 8 && x < 15) {
        EXPECT_NE(before[y * 24 + x], after[y * 24 + x]) << x << "," << y;
      }
    }
}

TEST(Filter, writesNothing_ifTheRegionHasNoInterior) {
  const std::vector<double> untouched(64, SENTINEL);
  const std::vector<uint8_t> frame = flatFrame(8, 8, 9);
  EXPECT_EQ(untouched, filtered(frame, 8, 8, unevenKernel(3, 3), {4, 2, 8}));
  EXPECT_EQ(untouched, filtered(frame, 8, 8, unevenKernel(3, 3), {1, 8, 2}));
  EXPECT_EQ(untouched, filtered(frame, 8, 8, unevenKernel(5, 5), {2, 4, 4}));
  EXPECT_EQ(untouched, filtered(frame, 8, 8, unevenKernel(8, 8), {1, 8, 8}));
}

// ---- messages and returns

// Images without data: whatever is returned, no sample has been touched.
static int32_t filterWithoutData(FrameSize srcSize, FrameSize destSize, FrameSize kernelSize,
                                 uint32_t regions, std::string* printed) {
  const Image src = {srcSize.w, srcSize.h, nullptr};
  ImageDouble dest = {destSize.w, destSize.h, nullptr};
  const ImageDouble kernel = {kernelSize.w, kernelSize.h, nullptr};
  testing::internal::CaptureStdout();
  const int32_t result = filter(&src, &dest, &kernel, regions, 8, 8);
  *printed = testing::internal::GetCapturedStdout();
  return result;
}

TEST(Filter, returnsMinusOne_ifTheSizesDiffer) {
  const FrameSize others[] = {{9, 8}, {7, 8}, {8, 9}, {8, 7}, {4, 16}};
  for (FrameSize size : others) {
    std::string printed;
    EXPECT_EQ(-1, filterWithoutData({8, 8}, size, {3, 3}, 1, &printed));
    EXPECT_EQ("Source and destination images do not match with their size!\n", printed);
  }
}

TEST(Filter, returnsMinusOne_ifTheKernelIsHigherThanTheSource) {
  std::string printed;
  EXPECT_EQ(-1, filterWithoutData({16, 8}, {16, 8}, {3, 9}, 2, &printed));
  EXPECT_EQ("Source image is to small for that kernel!\n", printed);
}

TEST(Filter, namesTheDifferingSizes_beforeTheKernel) {
  std::string printed;
  EXPECT_EQ(-1, filterWithoutData({16, 8}, {8, 16}, {3, 9}, 0, &printed));
  EXPECT_EQ("Source and destination images do not match with their size!\n", printed);
}

// The number of regions is looked at before half the kernel's width is, but after its height.
TEST(Filter, returnsZero_withoutRegions) {
  const FrameSize kernels[] = {{3, 3}, {0, 0}, {1, 1}, {1000, 8}};
  for (FrameSize kernel : kernels) {
    std::string printed = "unset";
    EXPECT_EQ(0, filterWithoutData({8, 8}, {8, 8}, kernel, 0, &printed));
    EXPECT_EQ("", printed);
  }
  std::string printed;
  EXPECT_EQ(-1, filterWithoutData({8, 8}, {8, 8}, {3, 9}, 0, &printed));
  EXPECT_EQ("Source image is to small for that kernel!\n", printed);
}

// Half of 10 is 5, and 8 - 5 = 3 is not above 5. The width of the kernel is not compared.
TEST(Filter, returnsZeroSilently_ifTheKernelIsTooWideForTheRegion) {
  std::string printed = "unset";
  EXPECT_EQ(0, filterWithoutData({8, 8}, {8, 8}, {10, 3}, 1, &printed));
  EXPECT_EQ("", printed);
}

// ---- against the definition

TEST(Filter, isTheCorrelation_onNoiseUpToAGuardPage) {
  const FrameSize kernelSizes[] = {{3, 3}, {2, 2}, {4, 4}, {5, 5}, {3, 1}, {3, 2}, {5, 3}, {7, 7}};
  const FrameSize regionSizes[] = {{8, 8}, {3, 3}, {5, 9}, {16, 7}, {33, 15}};
  for (auto [w, h] : oddSizes()) {
    const std::vector<uint8_t> frame = noiseFrame(w, h, 4);
    GuardedBuffer input = allocBeforeGuard(w * h);
    memcpy(input.data, frame.data(), w * h);
    const Image src = {w, h, input.data};
    for (auto [kernelW, kernelH] : kernelSizes) {
      for (auto [regionW, regionH] : regionSizes) {
        const uint64_t half = kernelW / 2;
        if (kernelH > h || regionH > h || regionW > w || regionH < half || regionW < half) continue;
        Kernel kernel = unevenKernel(kernelW, kernelH);
        const Regions regions = {static_cast<uint32_t>(w / regionW), static_cast<uint32_t>(regionW),
                                 static_cast<uint32_t>(regionH)};
        const ImageDouble weights = imageOver(kernel.weights, kernelW, kernelH);
        std::vector<double> result(w * h, SENTINEL);
        ImageDouble dest = imageOver(result, w, h);
        ASSERT_EQ(0, filter(&src, &dest, &weights, regions.count, regions.w, regions.h));
        ASSERT_EQ(expectedFilter(frame, w, h, kernel, regions), result)
            << w << "x" << h << ", kernel " << kernelW << "x" << kernelH << ", regions of "
            << regionW << "x" << regionH;
      }
    }
    freeGuardedBuffer(&input);
  }
}

// A kernel higher than wide reaches below its region: rows y - 1 .. y + 3, here down to row 9.
TEST(Filter, readsBelowTheRegion_forKernelHigherThanWide) {
  const std::vector<uint8_t> frame = noiseFrame(16, 10, 5);
  const Kernel kernel = unevenKernel(3, 5);
  EXPECT_EQ(expectedFilter(frame, 16, 10, kernel, {2, 8, 8}),
            filtered(frame, 16, 10, kernel, {2, 8, 8}));
}
