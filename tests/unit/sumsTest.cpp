// Totals, block totals and integral images.
#include <gtest/gtest.h>

#include <cstring>
#include <numeric>
#include <vector>

#include "definitions/definitions.h"
#include "support/frames.h"
#include "support/guardedBuffer.h"

static uint64_t total(const std::vector<uint8_t>& frame) {
  return std::accumulate(frame.begin(), frame.end(), uint64_t{0});
}

// A copy of the first `size` bytes of a frame that nothing can read beyond.
static GuardedBuffer guardedCopy(const std::vector<uint8_t>& frame, size_t size) {
  GuardedBuffer buffer = allocBeforeGuard(size);
  if (size > 0) memcpy(buffer.data, frame.data(), size);
  return buffer;
}

// ---- sumPixels32

TEST(SumPixels32, isMinusTheCount_ifAllAreMinusOne) {
  std::vector<int32_t> samples(35, -1);
  const Image32 image = imageOver(samples, 7, 5);
  EXPECT_EQ(-35, sumPixels32(&image));
}

TEST(SumPixels32, isZero_onEmptyImage) {
  const Image32 image = {0, 5, nullptr}, other = {5, 0, nullptr};
  EXPECT_EQ(0, sumPixels32(&image));
  EXPECT_EQ(0, sumPixels32(&other));
}

TEST(SumPixels32, doesNotWrap) {
  std::vector<int32_t> high(9, INT32_MAX), low(9, INT32_MIN);
  const Image32 a = imageOver(high, 3, 3), b = imageOver(low, 3, 3);
  EXPECT_EQ(9 * int64_t{INT32_MAX}, sumPixels32(&a));
  EXPECT_EQ(9 * int64_t{INT32_MIN}, sumPixels32(&b));
}

TEST(SumPixels32, isTheTotal_onNoiseUpToAGuardPage) {
  uint64_t state = seedRandom(1);
  for (auto [w, h] : oddSizes()) {
    GuardedBuffer buffer = allocBeforeGuard(w * h * 4);
    int32_t* samples = reinterpret_cast<int32_t*>(buffer.data);
    int64_t expected = 0;
    for (uint64_t i = w * h; i-- > 0;) {
      samples[i] = static_cast<int32_t>(nextRandom(&state));
      expected += samples[i];
    }
    const Image32 image = {w, h, samples};
    ASSERT_EQ(expected, sumPixels32(&image)) << w << "x" << h;
    freeGuardedBuffer(&buffer);
  }
}

// ---- sumPixels, sumH, sumV

TEST(SumPixels, agreesWithSumHAndSumV_onNoiseUpToAGuardPage) {
  for (auto [w, h] : oddSizes()) {
    const std::vector<uint8_t> frame = noiseFrame(w, h, 2);
    GuardedBuffer buffer = guardedCopy(frame, w * h);
    const Image image = {w, h, buffer.data};
    const uint32_t w32 = static_cast<uint32_t>(w), h32 = static_cast<uint32_t>(h);
    ASSERT_EQ(total(frame), sumPixels(&image)) << w << "x" << h;
    ASSERT_EQ(total(frame), sumH(buffer.data, w32, h32)) << w << "x" << h;
    ASSERT_EQ(total(frame), sumV(buffer.data, static_cast<int32_t>(w), static_cast<int32_t>(h)))
        << w << "x" << h;
    freeGuardedBuffer(&buffer);
  }
}

TEST(SumPixels, isZero_onEmptyImage) {
  const Image image = {0, 5, nullptr}, other = {5, 0, nullptr};
  EXPECT_EQ(0u, sumPixels(&image));
  EXPECT_EQ(0u, sumPixels(&other));
}

// 4105 * 4104 = 16,846,920 samples of 255 total 4,295,964,600, which is 2^32 + 997,304.
TEST(SumPixels, wraps_atTwoToTheThirtyTwo) {
  std::vector<uint8_t> frame = flatFrame(4105, 4104, 255);
  const Image image = imageOver(frame, 4105, 4104);
  EXPECT_EQ(997304u, sumPixels(&image));
  EXPECT_EQ(997304u, sumH(frame.data(), 4105, 4104));
  EXPECT_EQ(997304u, sumV(frame.data(), 4105, 4104));
}

TEST(SumH, readsTheFirstProductOfBytes) {
  const std::vector<uint8_t> frame = {1, 2, 4, 8, 16, 32, 64, 128};
  EXPECT_EQ(63u, sumH(frame.data(), 2, 3));  // 1 + 2 + 4 + 8 + 16 + 32
  EXPECT_EQ(63u, sumH(frame.data(), 6, 1));
  EXPECT_EQ(1u, sumH(frame.data(), 1, 1));
}

TEST(SumH, isZero_ifTheProductIsBelowOne) {
  EXPECT_EQ(0u, sumH(nullptr, 0, 7));
  EXPECT_EQ(0u, sumH(nullptr, 7, 0));
  EXPECT_EQ(0u, sumH(nullptr, 65536, 65536));  // 2^32 wraps to 0
  EXPECT_EQ(0u, sumH(nullptr, 65536, 32768));  // 2^31 is negative
  EXPECT_EQ(0u, sumH(nullptr, UINT32_MAX, 1));
}

// (2^31 + 2) * 2 = 2^32 + 4, which wraps to a count of 4.
TEST(SumH, countsWithTheWrappedProduct) {
  const std::vector<uint8_t> frame = {1, 2, 4, 8, 16};
  EXPECT_EQ(15u, sumH(frame.data(), 0x80000002u, 2));
}

TEST(SumV, isZero_ifASideIsBelowOne) {
  EXPECT_EQ(0u, sumV(nullptr, 0, 7));
  EXPECT_EQ(0u, sumV(nullptr, 7, 0));
  EXPECT_EQ(0u, sumV(nullptr, -1, 7));
  EXPECT_EQ(0u, sumV(nullptr, 7, -1));
  EXPECT_EQ(0u, sumV(nullptr, -7, -1));
}

// ---- blockSums

static std::vector<int32_t> callBlockSums(const std::vector<uint8_t>& frame, uint64_t w, uint64_t h,
                                          uint64_t blockW, uint64_t blockH,
                                          std::vector<int32_t> sums, uint64_t blocksX,
                                          uint64_t blocksY) {
  std::vector<uint8_t> copy = frame;
  const Image src = imageOver(copy, w, h);
  Image32 dest = imageOver(sums, blocksX, blocksY);
  blockSums(&src, &dest, blockW, blockH);
  return sums;
}

TEST(BlockSums, ignoresWhatDoesNotFillABlock) {
  // Blocks of 1, 2, 3 and 4, the remainder of columns and rows 16..19 of 255: each block counts 64
  // times its value.
  std::vector<uint8_t> frame = flatFrame(20, 20, 255);
  for (size_t y = 0; y < 16; y++)
    for (size_t x = 0; x < 16; x++)
      frame[y * 20 + x] = static_cast<uint8_t>(1 + x / 8 + 2 * (y / 8));
  EXPECT_EQ((std::vector<int32_t>{64, 128, 192, 256}),
            callBlockSums(frame, 20, 20, 8, 8, std::vector<int32_t>(4), 2, 2));
}

TEST(BlockSums, doubles_whenCalledTwice) {
  std::vector<uint8_t> frame = flatFrame(20, 20, 3);
  const Image src = imageOver(frame, 20, 20);
  std::vector<int32_t> sums(4);
  Image32 dest = imageOver(sums, 2, 2);
  blockSums(&src, &dest, 8, 8);
  EXPECT_EQ(std::vector<int32_t>(4, 192), sums);  // 64 * 3
  blockSums(&src, &dest, 8, 8);
  EXPECT_EQ(std::vector<int32_t>(4, 384), sums);
}

TEST(BlockSums, addsOntoWhatTheOutputHolds_wrapping) {
  // INT32_MAX + 4 = 2^31 + 3, read as -2^31 + 3; -5 + 4 = -1.
  EXPECT_EQ((std::vector<int32_t>{INT32_MIN + 3, -1}),
            callBlockSums(flatFrame(4, 2, 1), 4, 2, 2, 2, {INT32_MAX, -5}, 2, 1));
}

TEST(BlockSums, leavesTheOutput_ifItOrABlockIsEmpty) {
  const std::vector<uint8_t> frame = flatFrame(8, 8, 1);
  const std::vector<int32_t> sentinel = {-7, -7, -7, -7};
  EXPECT_EQ(sentinel, callBlockSums(frame, 8, 8, 4, 4, sentinel, 0, 2));
  EXPECT_EQ(sentinel, callBlockSums(frame, 8, 8, 4, 4, sentinel, 2, 0));
  EXPECT_EQ(sentinel, callBlockSums(frame, 8, 8, 0, 4, sentinel, 2, 2));
  EXPECT_EQ(sentinel, callBlockSums(frame, 8, 8, 4, 0, sentinel, 2, 2));
}

TEST(BlockSums, writesOneElementPerBlock) {
  const std::vector<uint8_t> frame = flatFrame(9, 5, 1);
  // A grid of 2 x 1 in an image with room for 2 x 2: the second row keeps its sentinel.
  EXPECT_EQ((std::vector<int32_t>{16, 16, -7, -7}),
            callBlockSums(frame, 9, 5, 4, 4, {0, 0, -7, -7}, 2, 1));
}

TEST(BlockSums, totalsStrips_ifABlockIsAsWideAsTheSource) {
  // Row y holds y: rows 0..15 total 120 per column, rows 16..31 120 + 16 * 16 = 376.
  EXPECT_EQ((std::vector<int32_t>{5 * 120, 5 * 376}),
            callBlockSums(verticalRamp(5, 35), 5, 35, 5, 16, {0, 0}, 1, 2));
}

// Every block by itself, on copies that end with the last sample of the last block.
TEST(BlockSums, isTheTotalOfEachBlock_andReadsNothingBeyondTheLast) {
  const FrameSize blocks[] = {{1, 1}, {3, 2}, {2, 5}, {8, 8}, {16, 16},
                              {7, 1}, {1, 9}, {8, 5}, {5, 8}};
  for (auto [w, h] : oddSizes()) {
    for (auto [blockW, blockH] : blocks) {
      const uint64_t blocksX = w / blockW, blocksY = h / blockH;
      if (blocksX * blocksY == 0) continue;
      const std::vector<uint8_t> frame = noiseFrame(w, h, 3);
      std::vector<int32_t> expected;
      for (uint64_t block = 0; block < blocksX * blocksY; block++) {
        int32_t sum = 0;
        for (uint64_t x = 0; x < blockW; x++)
          for (uint64_t y = 0; y < blockH; y++)
            sum += frame[(block / blocksX * blockH + y) * w + block % blocksX * blockW + x];
        expected.push_back(sum);
      }
      GuardedBuffer buffer = guardedCopy(frame, (blocksY * blockH - 1) * w + blocksX * blockW);
      const Image src = {w, h, buffer.data};
      std::vector<int32_t> sums(blocksX * blocksY);
      Image32 dest = imageOver(sums, blocksX, blocksY);
      blockSums(&src, &dest, blockW, blockH);
      ASSERT_EQ(expected, sums) << w << "x" << h << " by " << blockW << "x" << blockH;
      freeGuardedBuffer(&buffer);
    }
  }
}

// ---- sumAndSquareSum

TEST(SumAndSquareSum, isZero_onEmptyImage) {
  const Image images[] = {{0, 5, nullptr}, {5, 0, nullptr}, {0, 0, nullptr}};
  for (const Image& image : images) {
    int32_t sum = -7;
    int64_t squareSum = -7;
    sumAndSquareSum(&image, &sum, &squareSum);
    EXPECT_EQ(0, sum);
    EXPECT_EQ(0, squareSum);
  }
}

TEST(SumAndSquareSum, ofFourWhiteSamples) {
  std::vector<uint8_t> frame = flatFrame(2, 2, 255);
  const Image image = imageOver(frame, 2, 2);
  int32_t sum = -7;
  int64_t squareSum = -7;
  sumAndSquareSum(&image, &sum, &squareSum);
  EXPECT_EQ(1020, sum);
  EXPECT_EQ(260100, squareSum);  // 4 * 65025
}

TEST(SumAndSquareSum, isBothTotals_onNoiseUpToAGuardPage) {
  for (auto [w, h] : oddSizes()) {
    const std::vector<uint8_t> frame = noiseFrame(w, h, 4);
    GuardedBuffer buffer = guardedCopy(frame, w * h);
    const Image image = {w, h, buffer.data};
    int32_t sum = -7;
    int64_t squareSum = -7;
    sumAndSquareSum(&image, &sum, &squareSum);
    ASSERT_EQ(static_cast<int32_t>(total(frame)), sum) << w << "x" << h;
    ASSERT_EQ(std::inner_product(frame.begin(), frame.end(), frame.begin(), int64_t{0}), squareSum)
        << w << "x" << h;
    freeGuardedBuffer(&buffer);
  }
}

// 8,421,504 samples of 255 total 2^31 - 128; one more makes 2^31 + 127, read as -2^31 + 127. The
// squares do not wrap.
TEST(SumAndSquareSum, wrapsTheSumOnly) {
  std::vector<uint8_t> frame = flatFrame(8421505, 1, 255);
  int32_t sum = 0;
  int64_t squareSum = 0;
  const Image largest = imageOver(frame, 8421504, 1);
  sumAndSquareSum(&largest, &sum, &squareSum);
  EXPECT_EQ(2147483520, sum);
  EXPECT_EQ(8421504 * int64_t{65025}, squareSum);
  const Image tooLarge = imageOver(frame, 1, 8421505);
  sumAndSquareSum(&tooLarge, &sum, &squareSum);
  EXPECT_EQ(INT32_MIN + 127, sum);
  EXPECT_EQ(8421505 * int64_t{65025}, squareSum);
}

TEST(SumAndSquareSum, isZero_ifTheThirtyTwoBitCountIsNotPositive) {
  const Image images[] = {
      {65536, 65536, nullptr}, {65536, 32768, nullptr}, {UINT32_MAX, 1, nullptr}};
  for (const Image& image : images) {
    int32_t sum = -7;
    int64_t squareSum = -7;
    sumAndSquareSum(&image, &sum, &squareSum);
    EXPECT_EQ(0, sum);
    EXPECT_EQ(0, squareSum);
  }
}

// Width 2^32 + 3 has the low half 3.
TEST(SumAndSquareSum, readsTheLowHalvesOfTheSides) {
  std::vector<uint8_t> frame = {1, 2, 3, 99};
  const Image image = {(uint64_t{1} << 32) + 3, 1, frame.data()};
  int32_t sum = 0;
  int64_t squareSum = 0;
  sumAndSquareSum(&image, &sum, &squareSum);
  EXPECT_EQ(6, sum);
  EXPECT_EQ(14, squareSum);
}

// ---- integrate

// The definition as a sum over the rectangle: the first row counts only straight above.
static std::vector<int32_t> integralOf(const std::vector<uint8_t>& frame, uint64_t w, uint64_t h) {
  std::vector<int32_t> integral;
  for (uint64_t y = 0; y < h; y++)
    for (uint64_t x = 0; x < w; x++) {
      int32_t sum = frame[x];
      for (uint64_t i = 0; i <= x; i++)
        for (uint64_t j = 1; j <= y; j++) sum += frame[j * w + i];
      integral.push_back(sum);
    }
  return integral;
}

TEST(Integrate, copiesTheFirstRow_andSumsBelowIt) {
  std::vector<uint8_t> frame = {1, 2, 3, 10, 20, 30, 100, 200, 255};
  std::vector<int32_t> integral(9, -7);
  const Image src = imageOver(frame, 3, 3);
  Image32 dest = imageOver(integral, 3, 3);
  integrate(&src, &dest);
  // Row totals 10 30 60 and 100 300 555, each added to the element above.
  EXPECT_EQ((std::vector<int32_t>{1, 2, 3, 11, 32, 63, 111, 332, 618}), integral);
}

TEST(Integrate, isTheRectangleTotal_onNoiseUpToAGuardPage) {
  for (auto [w, h] : oddSizes()) {
    const std::vector<uint8_t> frame = noiseFrame(w, h, 5);
    GuardedBuffer input = guardedCopy(frame, w * h), output = allocBeforeGuard(w * h * 4);
    const Image src = {w, h, input.data};
    Image32 dest = {w, h, reinterpret_cast<int32_t*>(output.data)};
    integrate(&src, &dest);
    ASSERT_EQ(integralOf(frame, w, h), std::vector<int32_t>(dest.data, dest.data + w * h))
        << w << "x" << h;
    freeGuardedBuffer(&input);
    freeGuardedBuffer(&output);
  }
}

TEST(Integrate, doesNothing_withoutColumns) {
  const Image src = {0, 5, nullptr};
  Image32 dest = {0, 5, nullptr};
  integrate(&src, &dest);
  SUCCEED() << "an access would have been one through a null pointer";
}

TEST(Integrate, doesNothing_withoutRows) {
  std::vector<int32_t> integral(2, -7);
  const Image src = {2, 0, nullptr};
  Image32 dest = imageOver(integral, 2, 0);
  integrate(&src, &dest);
  EXPECT_EQ((std::vector<int32_t>{-7, -7}), integral);
}

TEST(Integrate, writesTheFirstRowOnly_ifThatIsAll) {
  std::vector<uint8_t> frame = {4, 5, 6, 7};
  std::vector<int32_t> integral(4, -7);
  const Image src = imageOver(frame, 2, 1);
  Image32 dest = imageOver(integral, 2, 1);
  integrate(&src, &dest);
  EXPECT_EQ((std::vector<int32_t>{4, 5, -7, -7}), integral);
}

// ---- onlyCopy

TEST(OnlyCopy, copiesAllSamplesAndNoMore) {
  for (auto [w, h] : oddSizes()) {
    const std::vector<uint8_t> frame = noiseFrame(w, h, 6);
    GuardedBuffer input = guardedCopy(frame, w * h), output = allocBeforeGuard(w * h);
    const Image src = {w, h, input.data};
    Image dest = {w, h, output.data};
    onlyCopy(&src, &dest);
    ASSERT_EQ(0, memcmp(frame.data(), output.data, w * h)) << w << "x" << h;
    freeGuardedBuffer(&input);
    freeGuardedBuffer(&output);
  }
}

// The rows follow one another in the destination, however wide that is, and leave the rest of it.
TEST(OnlyCopy, takesTheSizeOfTheSource) {
  std::vector<uint8_t> frame = {1, 2, 3, 4}, copy(9, 77);
  const Image src = imageOver(frame, 2, 2);
  Image dest = imageOver(copy, 3, 3);
  onlyCopy(&src, &dest);
  EXPECT_EQ((std::vector<uint8_t>{1, 2, 3, 4, 77, 77, 77, 77, 77}), copy);
}

TEST(OnlyCopy, doesNothing_onEmptySource) {
  std::vector<uint8_t> copy(4, 77);
  const Image sources[] = {{0, 2, nullptr}, {2, 0, nullptr}};
  Image dest = imageOver(copy, 2, 2);
  for (const Image& src : sources) onlyCopy(&src, &dest);
  EXPECT_EQ(std::vector<uint8_t>(4, 77), copy);
}

// ---- blockSumsInteg, blockSumsInteg2

// Each block by itself: a corner left of or above the image counts 0.
template <typename Sample>
static std::vector<int32_t> cornerSums(const std::vector<Sample>& integral, uint64_t w,
                                       uint64_t blocksX, uint64_t blocksY, uint64_t blockW,
                                       uint64_t blockH) {
  std::vector<int32_t> sums;
  auto corner = [&](uint64_t right, uint64_t below) {
    return right == 0 || below == 0 ? 0u
                                    : static_cast<uint32_t>(integral[(below - 1) * w + right - 1]);
  };
  for (uint64_t block = 0; block < blocksX * blocksY; block++) {
    const uint64_t left = block % blocksX * blockW, top = block / blocksX * blockH;
    const uint64_t right = left + blockW, below = top + blockH;
    sums.push_back(static_cast<int32_t>(corner(right, below) - corner(left, below) -
                                        corner(right, top) + corner(left, top)));
  }
  return sums;
}

TEST(BlockSumsInteg, isTheDifferenceOfCorners) {
  std::vector<int32_t> integral = {1, 2, 4, 8, 16, 32, 64, 128, 256, 512, 1024, 2048};
  std::vector<int32_t> sums(4, -7);
  const Image32 src = imageOver(integral, 3, 4);
  Image32 dest = imageOver(sums, 3, 1);
  // Blocks of 1 x 2 use the second row: 8, 16 - 8, 32 - 16. Written, not added.
  blockSumsInteg(&src, &dest, 1, 2);
  EXPECT_EQ((std::vector<int32_t>{8, 8, 16, -7}), sums);
  // Blocks of 1 x 2 in a second row: 512 - 8; 1024 - 512 - 16 + 8; the columns count from 0.
  std::vector<int32_t> grid(4, -7);
  Image32 destGrid = imageOver(grid, 2, 2);
  blockSumsInteg(&src, &destGrid, 1, 2);
  EXPECT_EQ((std::vector<int32_t>{8, 8, 504, 504}), grid);
}

TEST(BlockSumsInteg, isTheDifferenceOfCorners_onNoise) {
  uint64_t state = seedRandom(7);
  const FrameSize blocks[] = {{1, 1}, {3, 2}, {2, 5}, {8, 8}, {7, 1}};
  for (auto [w, h] : oddSizes()) {
    for (auto [blockW, blockH] : blocks) {
      const uint64_t blocksX = w / blockW, blocksY = h / blockH;
      if (blocksX * blocksY == 0) continue;
      // Any 32-bit values: the differences wrap.
      std::vector<int32_t> wide(w * h);
      for (int32_t& sample : wide) sample = static_cast<int32_t>(nextRandom(&state));
      std::vector<uint8_t> bytes = noiseFrame(w, h, 8);
      // No corner lies beyond the last block.
      const uint64_t read = (blocksY * blockH - 1) * w + blocksX * blockW;
      GuardedBuffer wideInput = allocBeforeGuard(read * 4), byteInput = guardedCopy(bytes, read);
      memcpy(wideInput.data, wide.data(), read * 4);
      const Image32 src = {w, h, reinterpret_cast<int32_t*>(wideInput.data)};
      const Image src2 = {w, h, byteInput.data};
      std::vector<int32_t> sums(blocksX * blocksY, -7), sums2(blocksX * blocksY, -7);
      Image32 dest = imageOver(sums, blocksX, blocksY);
      Image32 dest2 = imageOver(sums2, blocksX, blocksY);
      blockSumsInteg(&src, &dest, blockW, blockH);
      blockSumsInteg2(&src2, &dest2, blockW, blockH);
      ASSERT_EQ(cornerSums(wide, w, blocksX, blocksY, blockW, blockH), sums)
          << w << "x" << h << " by " << blockW << "x" << blockH;
      ASSERT_EQ(cornerSums(bytes, w, blocksX, blocksY, blockW, blockH), sums2)
          << w << "x" << h << " by " << blockW << "x" << blockH;
      freeGuardedBuffer(&wideInput);
      freeGuardedBuffer(&byteInput);
    }
  }
}

// The first row is no running total, so what its left part adds is missing: all ones, in blocks of
// 2 x 2, give I = 1 1 1 1 / 2 3 4 5 and so 3 and 5 - 3 = 2, where the block totals are 4 and 4.
TEST(BlockSumsInteg, differsFromBlockSums_inTheFirstRow) {
  std::vector<uint8_t> frame = flatFrame(4, 2, 1);
  std::vector<int32_t> integral(8), sums(2);
  const Image src = imageOver(frame, 4, 2);
  Image32 between = imageOver(integral, 4, 2), dest = imageOver(sums, 2, 1);
  integrate(&src, &between);
  blockSumsInteg(&between, &dest, 2, 2);
  EXPECT_EQ((std::vector<int32_t>{3, 2}), sums);
}

TEST(BlockSumsInteg2, keepsNegativeDifferences) {
  std::vector<uint8_t> bytes = {200, 10};
  std::vector<int32_t> sums(2, -7);
  const Image src = imageOver(bytes, 2, 1);
  Image32 dest = imageOver(sums, 2, 1);
  blockSumsInteg2(&src, &dest, 1, 1);
  EXPECT_EQ((std::vector<int32_t>{200, -190}), sums);
}

TEST(BlockSumsInteg, leavesTheOutput_ifThatIsEmpty) {
  const Image32 src = {4, 4, nullptr};
  const Image src2 = {4, 4, nullptr};
  Image32 noColumns = {0, 2, nullptr}, noRows = {2, 0, nullptr};
  blockSumsInteg(&src, &noColumns, 2, 2);
  blockSumsInteg(&src, &noRows, 2, 2);
  blockSumsInteg2(&src2, &noColumns, 2, 2);
  blockSumsInteg2(&src2, &noRows, 2, 2);
  SUCCEED() << "an access would have been one through a null pointer";
}

TEST(BlockSumsInteg, leavesTheOutput_ifBlocksAreEmpty) {
  const Image32 src = {4, 4, nullptr};
  const Image src2 = {4, 4, nullptr};
  std::vector<int32_t> sums(4, -7);
  Image32 dest = imageOver(sums, 2, 2);
  for (auto [blockW, blockH] : {FrameSize{0, 2}, FrameSize{2, 0}, FrameSize{0, 0}}) {
    blockSumsInteg(&src, &dest, blockW, blockH);
    blockSumsInteg2(&src2, &dest, blockW, blockH);
    EXPECT_EQ(std::vector<int32_t>(4, -7), sums) << blockW << " x " << blockH;
  }
}
