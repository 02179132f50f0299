// Sample by sample arithmetic.
#include <gtest/gtest.h>

#include <cmath>
#include <csignal>
#include <cstring>
#include <vector>

#include "definitions/definitions.h"
#include "support/frames.h"
#include "support/guardedBuffer.h"

// Images whose count wraps to something below 1, and one whose count wraps to 3. None but the last
// has data, so that touching a sample is fatal.
static const FrameSize EMPTY_SIZES[] = {
    {0, 5}, {5, 0}, {65536, 65536}, {65536, 32768}, {UINT32_MAX, 1}};
static const FrameSize WRAPS_TO_THREE = {(uint64_t{1} << 32) + 3, 1};

static std::vector<int32_t> random32(uint64_t count, uint32_t seed) {
  uint64_t state = seedRandom(seed);
  std::vector<int32_t> samples(count);
  for (int32_t& sample : samples) sample = static_cast<int32_t>(nextRandom(&state));
  return samples;
}

static std::vector<double> randomDouble(uint64_t count, uint32_t seed) {
  uint64_t state = seedRandom(seed);
  std::vector<double> samples(count);
  for (double& sample : samples) sample = nextRandom(&state) / 1e5 - 20000.0;
  return samples;
}

// What remains of an exact 64-bit result in 32 bits.
static int32_t low32(int64_t value) {
  return static_cast<int32_t>(static_cast<uint32_t>(static_cast<uint64_t>(value)));
}

// ---- addSquares32, multiply

using Operation32 = void (*)(const Image32*, const Image32*, Image32*);

// The result on images of one row, with a sentinel behind the output's samples.
static std::vector<int32_t> call32(Operation32 operation, std::vector<int32_t> first,
                                   std::vector<int32_t> second) {
  const uint64_t count = first.size();
  std::vector<int32_t> result(count + 1, -77);
  const Image32 a = imageOver(first, count, 1), b = imageOver(second, count, 1);
  Image32 out = imageOver(result, count, 1);
  operation(&a, &b, &out);
  EXPECT_EQ(-77, result.back());
  result.pop_back();
  return result;
}

TEST(AddSquares32, addsTheSquares) {
  EXPECT_EQ((std::vector<int32_t>{25, 25}), call32(addSquares32, {3, -4}, {4, 3}));
}

// 46341^2 = 2147488281 = 2^31 + 4633; 65536^2 = 2^32; (2^31)^2 = 2^62; 65535^2 + 65535^2 =
// 2 * (2^32 - 131071) keeps -262142.
TEST(AddSquares32, wraps) {
  EXPECT_EQ((std::vector<int32_t>{INT32_MIN + 4633, 1, 4, -262142}),
            call32(addSquares32, {46341, 65536, INT32_MIN, 65535}, {0, -1, 2, -65535}));
}

// 65536^2 = 2^32; 65536 * -32768 = -2^31; 2^31 - 1 squared = 2^62 - 2^32 + 1; -2^31 * -1 = 2^31.
TEST(Multiply, wraps) {
  EXPECT_EQ((std::vector<int32_t>{0}), call32(multiply, {65536}, {65536}));
  EXPECT_EQ((std::vector<int32_t>{INT32_MIN, 1, INT32_MIN, -12}),
            call32(multiply, {65536, INT32_MAX, INT32_MIN, 3}, {-32768, INT32_MAX, -1, -4}));
}

TEST(Arithmetic32, isTheWrappedExactResult_onNoiseUpToAGuardPage) {
  for (auto [w, h] : oddSizes()) {
    const uint64_t count = w * h;
    const std::vector<int32_t> first = random32(count, 1), second = random32(count, 2);
    std::vector<int32_t> squares(count), products(count);
    for (uint64_t i = count; i-- > 0;) {
      const int64_t x = first[i], y = second[i];
      // Halves of the range keep the exact total of the squares within 64 bits.
      squares[i] = low32((x / 2) * (x / 2) + (y / 2) * (y / 2));
      products[i] = low32(x * y);
    }
    GuardedBuffer bufferA = allocBeforeGuard(count * 4), bufferB = allocBeforeGuard(count * 4);
    GuardedBuffer bufferOut = allocBeforeGuard(count * 4);
    const Image32 a = {w, h, reinterpret_cast<int32_t*>(bufferA.data)};
    const Image32 b = {w, h, reinterpret_cast<int32_t*>(bufferB.data)};
    Image32 out = {w, h, reinterpret_cast<int32_t*>(bufferOut.data)};
    memcpy(a.data, first.data(), count * 4);
    memcpy(b.data, second.data(), count * 4);
    multiply(&a, &b, &out);
    ASSERT_EQ(products, std::vector<int32_t>(out.data, out.data + count)) << w << "x" << h;
    for (uint64_t i = 0; i < count; i++) {
      a.data[i] /= 2;
      b.data[i] /= 2;
    }
    addSquares32(&a, &b, &out);
    ASSERT_EQ(squares, std::vector<int32_t>(out.data, out.data + count)) << w << "x" << h;
    freeGuardedBuffer(&bufferA);
    freeGuardedBuffer(&bufferB);
    freeGuardedBuffer(&bufferOut);
  }
}

TEST(Arithmetic32, mayWriteToAnInput) {
  for (Operation32 operation : {addSquares32, multiply}) {
    const std::vector<int32_t> first = random32(100, 3), second = random32(100, 4);
    const std::vector<int32_t> expected = call32(operation, first, second);
    std::vector<int32_t> x = first, y = second;
    Image32 a = imageOver(x, 10, 10), b = imageOver(y, 10, 10);
    operation(&a, &b, &a);
    EXPECT_EQ(expected, x);
    x = first;
    operation(&a, &b, &b);
    EXPECT_EQ(expected, y);
    x = first;
    operation(&a, &a, &a);
    EXPECT_EQ(call32(operation, first, first), x);
  }
}

TEST(Arithmetic32, doesNothing_ifTheCountIsBelowOne) {
  Image32 none = {1, 1, nullptr};
  for (auto [w, h] : EMPTY_SIZES) {
    const Image32 a = {w, h, nullptr};
    addSquares32(&a, &none, &none);
    multiply(&a, &none, &none);
  }
  SUCCEED() << "an access would have been one through a null pointer";
}

// The first image alone counts: its 2^32 + 3 samples are 3 in 32 bits.
TEST(Arithmetic32, takesTheCountFromTheFirstImage_inThirtyTwoBits) {
  for (Operation32 operation : {addSquares32, multiply}) {
    std::vector<int32_t> first = {2, 3, 4, 5}, second = {2, 3, 4, 5}, result(4, -77);
    const Image32 a = imageOver(first, WRAPS_TO_THREE.w, WRAPS_TO_THREE.h);
    const Image32 b = imageOver(second, 1, 1);
    Image32 out = imageOver(result, 0, 0);
    operation(&a, &b, &out);
    const int32_t factor = operation == multiply ? 1 : 2;
    EXPECT_EQ((std::vector<int32_t>{4 * factor, 9 * factor, 16 * factor, -77}), result);
  }
}

// ---- addSquares

TEST(AddSquares, widensBeforeSquaring) {
  std::vector<uint8_t> first = {3, 255, 0, 200}, second = {4, 255, 16, 0};
  std::vector<int32_t> result(5, -77);
  const Image a = imageOver(first, 2, 2), b = imageOver(second, 2, 2);
  Image32 out = imageOver(result, 2, 2);
  addSquares(&a, &b, &out);
  // 9 + 16, 2 * 65025, 256, 40000.
  EXPECT_EQ((std::vector<int32_t>{25, 130050, 256, 40000, -77}), result);
}

TEST(AddSquares, addsTheSquares_onNoiseUpToAGuardPage) {
  for (auto [w, h] : oddSizes()) {
    const uint64_t count = w * h;
    const std::vector<uint8_t> first = noiseFrame(w, h, 5), second = noiseFrame(w, h, 6);
    GuardedBuffer bufferA = allocBeforeGuard(count), bufferB = allocBeforeGuard(count);
    GuardedBuffer bufferOut = allocBeforeGuard(count * 4);
    memcpy(bufferA.data, first.data(), count);
    memcpy(bufferB.data, second.data(), count);
    const Image a = {w, h, bufferA.data}, b = {w, h, bufferB.data};
    Image32 out = {w, h, reinterpret_cast<int32_t*>(bufferOut.data)};
    addSquares(&a, &b, &out);
    for (uint64_t i = count; i-- > 0;)
      ASSERT_EQ(first[i] * first[i] + second[i] * second[i], out.data[i]) << w << "x" << h;
    freeGuardedBuffer(&bufferA);
    freeGuardedBuffer(&bufferB);
    freeGuardedBuffer(&bufferOut);
  }
}

TEST(AddSquares, doesNothing_onEmptyImage) {
  const Image a = {0, 5, nullptr}, b = {5, 0, nullptr};
  Image32 out = {1, 1, nullptr};
  addSquares(&a, &b, &out);
  addSquares(&b, &a, &out);
  SUCCEED() << "an access would have been one through a null pointer";
}

// ---- divideDouble, divide

// Infinities by sign, NaN for 0 / 0; a divisor of -0 turns the sign.
TEST(DivideDouble, followsTheRulesOfZeroDivisors) {
  std::vector<double> nums = {1.5, -1.5, 0.0, 1.5, 7.0}, dens = {0.0, 0.0, 0.0, -0.0, 2.0};
  std::vector<double> result(5, -77.0);
  const ImageDouble num = imageOver(nums, 5, 1), den = imageOver(dens, 5, 1);
  ImageDouble out = imageOver(result, 5, 1);
  divideDouble(&num, &den, &out);
  EXPECT_EQ(INFINITY, result[0]);
  EXPECT_EQ(-INFINITY, result[1]);
  EXPECT_TRUE(std::isnan(result[2]));
  EXPECT_EQ(-INFINITY, result[3]);
  EXPECT_EQ(3.5, result[4]);
}

TEST(DivideDouble, leavesTheOutput_onEmptyNumerator) {
  std::vector<double> dens = {1.0, 0.0}, result(2, -77.0);
  const ImageDouble num = {0, 5, nullptr}, den = imageOver(dens, 2, 1);
  ImageDouble out = imageOver(result, 2, 1);
  divideDouble(&num, &den, &out);
  EXPECT_EQ(std::vector<double>(2, -77.0), result);
}

// INT32_MIN / -1 has no 32-bit quotient; 1 / 3 has no whole one.
TEST(Divide, dividesAsDoubles) {
  std::vector<int32_t> nums = {7, -7, 0, 1, INT32_MIN}, dens = {0, 0, 0, 3, -1};
  std::vector<double> result(6, -77.0);
  const Image32 num = imageOver(nums, 5, 1), den = imageOver(dens, 5, 1);
  ImageDouble out = imageOver(result, 5, 1);
  divide(&num, &den, &out);
  EXPECT_EQ(INFINITY, result[0]);
  EXPECT_EQ(-INFINITY, result[1]);
  EXPECT_TRUE(std::isnan(result[2]));
  EXPECT_EQ(1.0 / 3.0, result[3]);
  EXPECT_EQ(2147483648.0, result[4]);
  EXPECT_EQ(-77.0, result[5]);
}

TEST(Division, isTheQuotient_onNoiseUpToAGuardPage) {
  for (auto [w, h] : oddSizes()) {
    const uint64_t count = w * h;
    const std::vector<double> nums = randomDouble(count, 7), dens = randomDouble(count, 8);
    const std::vector<int32_t> nums32 = random32(count, 9), dens32 = random32(count, 10);
    GuardedBuffer a = allocBeforeGuard(count * 8), b = allocBeforeGuard(count * 8);
    GuardedBuffer a32 = allocBeforeGuard(count * 4), b32 = allocBeforeGuard(count * 4);
    GuardedBuffer result = allocBeforeGuard(count * 8);
    memcpy(a.data, nums.data(), count * 8);
    memcpy(b.data, dens.data(), count * 8);
    memcpy(a32.data, nums32.data(), count * 4);
    memcpy(b32.data, dens32.data(), count * 4);
    const ImageDouble num = {w, h, reinterpret_cast<double*>(a.data)};
    const ImageDouble den = {w, h, reinterpret_cast<double*>(b.data)};
    const Image32 num32 = {w, h, reinterpret_cast<int32_t*>(a32.data)};
    const Image32 den32 = {w, h, reinterpret_cast<int32_t*>(b32.data)};
    ImageDouble out = {w, h, reinterpret_cast<double*>(result.data)};
    divideDouble(&num, &den, &out);
    for (uint64_t i = count; i-- > 0;)
      ASSERT_EQ(nums[i] / dens[i], out.data[i]) << w << "x" << h << " at " << i;
    divide(&num32, &den32, &out);
    for (uint64_t i = count; i-- > 0;)
      ASSERT_EQ(static_cast<double>(nums32[i]) / static_cast<double>(dens32[i]), out.data[i])
          << w << "x" << h << " at " << i;
    for (GuardedBuffer* buffer : {&a, &b, &a32, &b32, &result}) freeGuardedBuffer(buffer);
  }
}

TEST(DivideDouble, mayWriteToAnInput) {
  std::vector<double> nums = {8.0, 9.0}, dens = {2.0, 3.0};
  ImageDouble num = imageOver(nums, 2, 1), den = imageOver(dens, 2, 1);
  divideDouble(&num, &den, &den);
  EXPECT_EQ((std::vector<double>{4.0, 3.0}), dens);
  divideDouble(&num, &den, &num);
  EXPECT_EQ((std::vector<double>{2.0, 3.0}), nums);  // 8 / 4, 9 / 3
}

TEST(Division, doesNothing_ifTheCountIsBelowOne) {
  const Image32 den32 = {1, 1, nullptr};
  const ImageDouble den = {1, 1, nullptr};
  ImageDouble out = {1, 1, nullptr};
  for (auto [w, h] : EMPTY_SIZES) {
    const Image32 num32 = {w, h, nullptr};
    const ImageDouble num = {w, h, nullptr};
    divide(&num32, &den32, &out);
    divideDouble(&num, &den, &out);
  }
  SUCCEED() << "an access would have been one through a null pointer";
}

TEST(Division, takesTheCountFromTheNumerator_inThirtyTwoBits) {
  std::vector<int32_t> nums32 = {2, 6, 12, 20}, dens32 = {2, 3, 4, 5};
  std::vector<double> nums = {2.0, 6.0, 12.0, 20.0}, dens = {2.0, 3.0, 4.0, 5.0};
  std::vector<double> result32(4, -77.0), result(4, -77.0);
  const Image32 num32 = imageOver(nums32, WRAPS_TO_THREE.w, WRAPS_TO_THREE.h);
  const Image32 den32 = imageOver(dens32, 1, 1);
  const ImageDouble num = imageOver(nums, WRAPS_TO_THREE.w, WRAPS_TO_THREE.h);
  const ImageDouble den = imageOver(dens, 1, 1);
  ImageDouble out32 = imageOver(result32, 0, 0), out = imageOver(result, 0, 0);
  divide(&num32, &den32, &out32);
  divideDouble(&num, &den, &out);
  EXPECT_EQ((std::vector<double>{1.0, 2.0, 3.0, -77.0}), result32);
  EXPECT_EQ((std::vector<double>{1.0, 2.0, 3.0, -77.0}), result);
}

// ---- imageSqrt

TEST(ImageSqrt, acceptsAnotherShapeOfTheSameCount) {
  std::vector<double> squares = {0.0, 1.0, 4.0, 2.25, 1e300, INFINITY}, roots(7, -77.0);
  const ImageDouble src = imageOver(squares, 2, 3);
  ImageDouble dest = imageOver(roots, 3, 2);
  imageSqrt(&src, &dest);
  EXPECT_EQ((std::vector<double>{0.0, 1.0, 2.0, 1.5, std::sqrt(1e300), INFINITY, -77.0}), roots);
}

TEST(ImageSqrt, isNaN_onNegativeSample) {
  std::vector<double> squares = {-4.0};
  ImageDouble image = imageOver(squares, 1, 1);
  imageSqrt(&image, &image);
  EXPECT_TRUE(std::isnan(squares[0]));
}

TEST(ImageSqrt, isTheRoot_onNoiseUpToAGuardPage) {
  for (auto [w, h] : oddSizes()) {
    const uint64_t count = w * h;
    std::vector<double> samples = randomDouble(count, 11);
    for (double& sample : samples) sample = std::fabs(sample);
    GuardedBuffer buffer = allocBeforeGuard(count * 8), result = allocBeforeGuard(count * 8);
    memcpy(buffer.data, samples.data(), count * 8);
    const ImageDouble src = {w, h, reinterpret_cast<double*>(buffer.data)};
    ImageDouble dest = {w, h, reinterpret_cast<double*>(result.data)};
    imageSqrt(&src, &dest);
    for (uint64_t i = count; i-- > 0;)
      ASSERT_EQ(std::sqrt(samples[i]), dest.data[i]) << w << "x" << h;
    freeGuardedBuffer(&buffer);
    freeGuardedBuffer(&result);
  }
}

TEST(ImageSqrt, doesNothing_onEmptyImagesOfAnyShape) {
  const ImageDouble src = {0, 5, nullptr};
  ImageDouble dest = {3, 0, nullptr};
  imageSqrt(&src, &dest);
  SUCCEED() << "an access would have been one through a null pointer";
}

// The images without data show that nothing is touched before the assertion.
TEST(ImageSqrtDeathTest, stops_ifTheCountsDisagree) {
  const ImageDouble src = {2, 3, nullptr}, empty = {0, 5, nullptr};
  const ImageDouble huge = {(uint64_t{1} << 32) + 4, 1, nullptr};  // 4 in 32 bits
  ImageDouble dest = {2, 2, nullptr};
  const char* message =
      "[^ ]: definitions:1292: imageSqrt: Assertion "
      "`src->w \\* src->h == dest->w \\*dest->h' failed\\.";
  EXPECT_EXIT(imageSqrt(&src, &dest), testing::KilledBySignal(SIGABRT), message);
  EXPECT_EXIT(imageSqrt(&empty, &dest), testing::KilledBySignal(SIGABRT), message);
  EXPECT_EXIT(imageSqrt(&huge, &dest), testing::KilledBySignal(SIGABRT), message);
}
