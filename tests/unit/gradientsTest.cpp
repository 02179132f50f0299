// Gradient operators.
#include <gtest/gtest.h>

#include <cmath>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "definitions/definitions.h"
#include "support/frames.h"
#include "support/guardedBuffer.h"

static const int32_t UNTOUCHED = -7777;

// The two outputs of one call, or what they should be.
struct Gradients {
  std::vector<int32_t> x;
  std::vector<int32_t> y;
};

static Gradients filled(uint64_t count) {
  return {std::vector<int32_t>(count, UNTOUCHED), std::vector<int32_t>(count, UNTOUCHED)};
}

template <typename Operator>
static Gradients gradientsOf(Operator op, std::vector<uint8_t> frame, uint64_t w, uint64_t h) {
  const Image src = imageOver(frame, w, h);
  Gradients result = filled(w * h);
  Image32 destX = imageOver(result.x, w, h), destY = imageOver(result.y, w, h);
  op(&src, &destX, &destY);
  return result;
}

// The same on a copy beside an unreadable page, where `alloc` puts it; the outputs end before one.
template <typename Operator>
static Gradients guardedGradientsOf(Operator op, GuardedBuffer (*alloc)(size_t),
                                    const std::vector<uint8_t>& frame, uint64_t w, uint64_t h) {
  GuardedBuffer input = alloc(w * h);
  GuardedBuffer outputX = allocBeforeGuard(w * h * 4), outputY = allocBeforeGuard(w * h * 4);
  memcpy(input.data, frame.data(), w * h);
  memset(outputX.data, 0x55, w * h * 4);
  memset(outputY.data, 0x55, w * h * 4);
  const Image src = {w, h, input.data};
  Image32 destX = {w, h, reinterpret_cast<int32_t*>(outputX.data)};
  Image32 destY = {w, h, reinterpret_cast<int32_t*>(outputY.data)};
  op(&src, &destX, &destY);
  Gradients result = {std::vector<int32_t>(destX.data, destX.data + w * h),
                      std::vector<int32_t>(destY.data, destY.data + w * h)};
  freeGuardedBuffer(&input);
  freeGuardedBuffer(&outputX);
  freeGuardedBuffer(&outputY);
  return result;
}

// Zeros, and formula(x, y) of the samples with a left and an upper neighbour, column by column.
template <typename Formula>
static std::vector<int32_t> inner(uint64_t w, uint64_t h, Formula formula) {
  std::vector<int32_t> result(w * h);
  for (uint64_t x = 1; x < w; x++)
    for (uint64_t y = 1; y < h; y++) result[y * w + x] = formula(x, y);
  return result;
}

template <typename Operator, typename FormulaX, typename FormulaY>
static void expectFormulas(Operator op, FormulaX formulaX, FormulaY formulaY) {
  for (auto [w, h] : oddSizes()) {
    const uint64_t width = w;
    for (const auto& frame : {noiseFrame(w, h, 1), extremeNoise(w, h, 2)}) {
      auto at = [&](uint64_t x, uint64_t y) { return int32_t{frame[y * width + x]}; };
      const auto expectedX =
          inner(w, h, [&](uint64_t x, uint64_t y) { return formulaX(at, x, y); });
      const auto expectedY =
          inner(w, h, [&](uint64_t x, uint64_t y) { return formulaY(at, x, y); });
      for (auto alloc : {allocBeforeGuard, allocAfterGuard}) {
        const Gradients result = guardedGradientsOf(op, alloc, frame, w, h);
        ASSERT_EQ(expectedX, result.x) << w << "x" << h;
        ASSERT_EQ(expectedY, result.y) << w << "x" << h;
      }
    }
  }
}

TEST(Gradient, isTheBackwardDifference) {
  expectFormulas(
      gradient, [](auto at, uint64_t x, uint64_t y) { return at(x, y) - at(x - 1, y); },
      [](auto at, uint64_t x, uint64_t y) { return at(x, y) - at(x, y - 1); });
}

TEST(AbsGradient, isTheBackwardDifferenceWithoutSign) {
  expectFormulas(
      absGradient, [](auto at, uint64_t x, uint64_t y) { return abs(at(x, y) - at(x - 1, y)); },
      [](auto at, uint64_t x, uint64_t y) { return abs(at(x, y) - at(x, y - 1)); });
}

TEST(Roberts, isTheUpperMinusTheLowerDiagonalSample) {
  expectFormulas(
      roberts, [](auto at, uint64_t x, uint64_t y) { return at(x - 1, y - 1) - at(x, y); },
      [](auto at, uint64_t x, uint64_t y) { return at(x, y - 1) - at(x - 1, y); });
}

// 0 10 / 30 60 and the differences written out.
TEST(GradientOperators, haveTheirSigns) {
  const std::vector<uint8_t> frame = {0, 10, 30, 60};
  const Gradients backward = gradientsOf(gradient, frame, 2, 2);
  EXPECT_EQ((std::vector<int32_t>{0, 0, 0, 30}), backward.x);  // 60 - 30
  EXPECT_EQ((std::vector<int32_t>{0, 0, 0, 50}), backward.y);  // 60 - 10
  const Gradients cross = gradientsOf(roberts, frame, 2, 2);
  EXPECT_EQ((std::vector<int32_t>{0, 0, 0, -60}), cross.x);  // 0 - 60
  EXPECT_EQ((std::vector<int32_t>{0, 0, 0, -20}), cross.y);  // 10 - 30
  const std::vector<uint8_t> falling = {60, 30, 10, 0};
  EXPECT_EQ((std::vector<int32_t>{0, 0, 0, -10}), gradientsOf(gradient, falling, 2, 2).x);
  EXPECT_EQ((std::vector<int32_t>{0, 0, 0, 10}), gradientsOf(absGradient, falling, 2, 2).x);
  EXPECT_EQ((std::vector<int32_t>{0, 0, 0, 30}), gradientsOf(absGradient, falling, 2, 2).y);
}

// robertsSkip at every sample, and sobel without its result.
static void robertsSkipOne(const Image* src, Image32* destX, Image32* destY) {
  robertsSkip(src, destX, destY, 1, 1);
}
static void sobelOnly(const Image* src, Image32* destX, Image32* destY) {
  sobel(src, destX, destY);
}
// Outputs of 8 bits, widened. They start as 0, because some samples stay as they are.
static void sobel2Widened(const Image* src, Image32* destX, Image32* destY) {
  Image x = callocImage(src->w, src->h), y = callocImage(src->w, src->h);
  sobel2(src, &x, &y);
  convU8toI32(&x, destX);
  convU8toI32(&y, destY);
  freeImage(&x);
  freeImage(&y);
}

using Operator32 = void (*)(const Image*, Image32*, Image32*);
static const Operator32 OPERATORS[] = {
    [](const Image* src, Image32* x, Image32* y) { gradient(src, x, y); },
    [](const Image* src, Image32* x, Image32* y) { absGradient(src, x, y); },
    [](const Image* src, Image32* x, Image32* y) { roberts(src, x, y); },
    robertsSkipOne,
    sobelOnly,
    sobel2Widened};

TEST(GradientOperators, giveASingleZero_onOneSample) {
  for (auto op : OPERATORS) {
    const Gradients result = gradientsOf(op, {200}, 1, 1);
    EXPECT_EQ(std::vector<int32_t>{0}, result.x);
    EXPECT_EQ(std::vector<int32_t>{0}, result.y);
  }
}

TEST(GradientOperators, areZero_onSourceOfWidthOrHeightOne) {
  const std::vector<uint8_t> frame = extremeNoise(33, 1, 3);
  for (auto op : OPERATORS) {
    const Gradients row = gradientsOf(op, frame, 33, 1), column = gradientsOf(op, frame, 1, 33);
    EXPECT_EQ(std::vector<int32_t>(33), row.x);
    EXPECT_EQ(std::vector<int32_t>(33), row.y);
    EXPECT_EQ(std::vector<int32_t>(33), column.x);
    EXPECT_EQ(std::vector<int32_t>(33), column.y);
  }
}

TEST(GradientOperators, writeNothing_whenASideIsZero) {
  for (const auto op : {gradient, absGradient, roberts}) {
    for (const FrameSize& size : {FrameSize{0, 5}, FrameSize{5, 0}, FrameSize{0, 0}}) {
      std::vector<int32_t> x(5, UNTOUCHED);
      std::vector<int32_t> y(5, UNTOUCHED);
      const Image src = {size.w, size.h, nullptr};
      Image32 destX = imageOver(x, size.w, size.h);
      Image32 destY = imageOver(y, size.w, size.h);
      op(&src, &destX, &destY);
      EXPECT_EQ(x, std::vector<int32_t>(5, UNTOUCHED)) << size.w << " x " << size.h;
      EXPECT_EQ(y, x) << size.w << " x " << size.h;
    }
  }
}

TEST(GradientOperators, areZero_onFlatFrame) {
  for (auto [w, h] : oddSizes()) {
    for (auto op : OPERATORS) {
      const Gradients result = gradientsOf(op, flatFrame(w, h, 200), w, h);
      ASSERT_EQ(std::vector<int32_t>(w * h), result.x) << w << "x" << h;
      ASSERT_EQ(std::vector<int32_t>(w * h), result.y) << w << "x" << h;
    }
  }
}

TEST(GradientOperators, ofAFrameThatRisesByOnePerColumn) {
  const auto constant = [](int32_t value) {
    return inner(40, 17, [=](uint64_t, uint64_t) { return value; });
  };
  const std::vector<uint8_t> frame = horizontalRamp(40, 17);
  const Gradients backward = gradientsOf(gradient, frame, 40, 17);
  EXPECT_EQ(constant(1), backward.x);
  EXPECT_EQ(constant(0), backward.y);
  const Gradients cross = gradientsOf(roberts, frame, 40, 17);
  EXPECT_EQ(constant(-1), cross.x);
  EXPECT_EQ(constant(1), cross.y);
}

// ---- robertsSkip

TEST(RobertsSkip, isRoberts_atEverySample) {
  for (auto [w, h] : oddSizes()) {
    const std::vector<uint8_t> frame = noiseFrame(w, h, 4);
    const Gradients every = gradientsOf(robertsSkipOne, frame, w, h);
    const Gradients whole = gradientsOf(roberts, frame, w, h);
    ASSERT_EQ(whole.x, every.x) << w << "x" << h;
    ASSERT_EQ(whole.y, every.y) << w << "x" << h;
  }
}

// Copies that end with the last lattice sample; outputs with a sentinel behind the points.
TEST(RobertsSkip, isRobertsAtTheLatticePoints_andReadsNothingBeyondTheLast) {
  const FrameSize steps[] = {{1, 16}, {16, 1}, {1, 1}, {2, 3}, {7, 5}, {40, 40}};
  for (auto [w, h] : oddSizes()) {
    const std::vector<uint8_t> frame = noiseFrame(w, h, 5);
    const Gradients whole = gradientsOf(roberts, frame, w, h);
    for (auto [skipX, skipY] : steps) {
      const uint64_t pointsX = (w + skipX - 1) / skipX, pointsY = (h + skipY - 1) / skipY;
      Gradients expected;
      for (uint64_t y = 0; y < pointsY; y++)
        for (uint64_t x = 0; x < pointsX; x++) {
          expected.x.push_back(whole.x[y * skipY * w + x * skipX]);
          expected.y.push_back(whole.y[y * skipY * w + x * skipX]);
        }
      expected.x.push_back(UNTOUCHED);
      expected.y.push_back(UNTOUCHED);

      const uint64_t read = (pointsY - 1) * skipY * w + (pointsX - 1) * skipX + 1;
      GuardedBuffer buffer = allocBeforeGuard(read);
      memcpy(buffer.data, frame.data(), read);
      const Image src = {w, h, buffer.data};
      Gradients result = filled(pointsX * pointsY + 1);
      Image32 destX = imageOver(result.x, pointsX, pointsY);
      Image32 destY = imageOver(result.y, pointsX, pointsY);
      robertsSkip(&src, &destX, &destY, static_cast<int32_t>(skipX), static_cast<uint32_t>(skipY));
      ASSERT_EQ(expected.x, result.x) << w << "x" << h << " by " << skipX << "," << skipY;
      ASSERT_EQ(expected.y, result.y) << w << "x" << h << " by " << skipX << "," << skipY;
      freeGuardedBuffer(&buffer);
    }
  }
}

// Rows 0 .. 31 of 10, row 32 of 30, the samples being 0, 1, .. and 30, 31, ..: the only rows read
// are 15, 16 and 31, 32. With one output row per 16, X = (10 + x - 1) - (30 + x) = -21 and
// Y = (10 + x) - (30 + x - 1) = -19 in row 2, X = -1 and Y = 1 in row 1.
TEST(RobertsSkip, differencesAcrossTheBlockBorder_inEverySixteenthRow) {
  const uint64_t w = 20, h = 48;
  std::vector<uint8_t> frame = horizontalRamp(w, h);
  for (uint64_t y = 0; y < h; y++)
    for (uint64_t x = 0; x < w; x++)
      frame[y * w + x] = static_cast<uint8_t>(frame[y * w + x] + (y >= 32 ? 30 : 10));
  const Image src = imageOver(frame, w, h);
  Gradients result = filled(w * 3);
  Image32 destX = imageOver(result.x, w, 3), destY = imageOver(result.y, w, 3);
  robertsSkip(&src, &destX, &destY, 1, 16);
  EXPECT_EQ(inner(w, 3, [](uint64_t, uint64_t y) { return y == 1 ? -1 : -21; }), result.x);
  EXPECT_EQ(inner(w, 3, [](uint64_t, uint64_t y) { return y == 1 ? 1 : -19; }), result.y);
}

// Overwriting every sample that is neither a lattice sample nor a neighbour of one changes nothing.
TEST(RobertsSkip, readsOnlyTheLatticeAndItsNeighbours) {
  const uint64_t w = 40, h = 33, skipX = 7, skipY = 5, pointsX = 6, pointsY = 7;
  auto frames = {noiseFrame(w, h, 6), noiseFrame(w, h, 6)};
  Gradients results[2] = {filled(pointsX * pointsY), filled(pointsX * pointsY)};
  size_t run = 0;
  for (std::vector<uint8_t> frame : frames) {
    for (uint64_t y = 0; y < h; y++)
      for (uint64_t x = 0; x < w; x++)
        if (run == 1 && !((x % skipX == 0 || x % skipX == skipX - 1) &&
                          (y % skipY == 0 || y % skipY == skipY - 1)))
          frame[y * w + x] = static_cast<uint8_t>(~frame[y * w + x]);
    const Image src = imageOver(frame, w, h);
    Image32 destX = imageOver(results[run].x, pointsX, pointsY);
    Image32 destY = imageOver(results[run].y, pointsX, pointsY);
    robertsSkip(&src, &destX, &destY, skipX, skipY);
    run++;
  }
  EXPECT_EQ(results[0].x, results[1].x);
  EXPECT_EQ(results[0].y, results[1].y);
}

// ---- sobel, sobel2

// X adds the right column and subtracts the left one, Y the lower row and the upper one, with
// weights 1 2 1; zeros on the border.
static Gradients sobelOf(const std::vector<uint8_t>& frame, uint64_t w, uint64_t h) {
  Gradients result = {std::vector<int32_t>(w * h), std::vector<int32_t>(w * h)};
  for (uint64_t x = 1; x + 1 < w; x++)
    for (uint64_t y = 1; y + 1 < h; y++)
      for (int dy = -1; dy <= 1; dy++)
        for (int dx = -1; dx <= 1; dx++) {
          const uint64_t column = x + static_cast<uint64_t>(dx),
                         row = y + static_cast<uint64_t>(dy);
          const int32_t sample = frame[row * w + column];
          result.x[y * w + x] += sample * dx * (2 - abs(dy));
          result.y[y * w + x] += sample * dy * (2 - abs(dx));
        }
  return result;
}

TEST(Sobel, isTheWeightedDifference) {
  for (auto [w, h] : oddSizes()) {
    for (const auto& frame : {noiseFrame(w, h, 7), extremeNoise(w, h, 8)}) {
      const Gradients expected = sobelOf(frame, w, h);
      for (auto alloc : {allocBeforeGuard, allocAfterGuard}) {
        const Gradients result = guardedGradientsOf(sobel, alloc, frame, w, h);
        ASSERT_EQ(expected.x, result.x) << w << "x" << h;
        ASSERT_EQ(expected.y, result.y) << w << "x" << h;
      }
    }
  }
}

// All squares are whole numbers, so their total is exact in every order.
TEST(Sobel, returnsTheRootOfAllSquares) {
  for (auto [w, h] : oddSizes()) {
    std::vector<uint8_t> frame = noiseFrame(w, h, 9);
    const Gradients gradients = sobelOf(frame, w, h);
    int64_t squares = 0;
    for (int32_t value : gradients.x) squares += int64_t{value} * value;
    for (int32_t value : gradients.y) squares += int64_t{value} * value;
    const Image src = imageOver(frame, w, h);
    Gradients result = filled(w * h);
    Image32 destX = imageOver(result.x, w, h), destY = imageOver(result.y, w, h);
    ASSERT_EQ(std::sqrt(static_cast<double>(squares)), sobel(&src, &destX, &destY))
        << w << "x" << h;
  }
}

// 0 0 255 in all three rows: X = 255 + 2 * 255 + 255 = 1020 in the middle, Y = 0.
TEST(Sobel, ofAVerticalEdge) {
  std::vector<uint8_t> frame = {0, 0, 255, 0, 0, 255, 0, 0, 255};
  const Image src = imageOver(frame, 3, 3);
  Gradients result = filled(9);
  Image32 destX = imageOver(result.x, 3, 3), destY = imageOver(result.y, 3, 3);
  EXPECT_EQ(1020.0, sobel(&src, &destX, &destY));
  EXPECT_EQ((std::vector<int32_t>{0, 0, 0, 0, 1020, 0, 0, 0, 0}), result.x);
  EXPECT_EQ(std::vector<int32_t>(9), result.y);
}

// The same edge, falling in the other direction: 1020 = 3 * 256 + 252; -1020 keeps 4. Row 0 and
// column 0 are cleared, the last row and column are not touched.
TEST(Sobel2, keepsTheLowByte_andTheLastRowAndColumn) {
  std::vector<uint8_t> rising = {0, 0, 255, 0, 0, 255, 0, 0, 255};
  std::vector<uint8_t> falling = {255, 255, 255, 0, 0, 0, 0, 0, 0};
  std::vector<uint8_t> x(9, 77), y(9, 77);
  Image destX = imageOver(x, 3, 3), destY = imageOver(y, 3, 3);
  const Image edge = imageOver(rising, 3, 3), otherEdge = imageOver(falling, 3, 3);
  sobel2(&edge, &destX, &destY);
  EXPECT_EQ((std::vector<uint8_t>{0, 0, 0, 0, 252, 77, 0, 77, 77}), x);
  EXPECT_EQ((std::vector<uint8_t>{0, 0, 0, 0, 0, 77, 0, 77, 77}), y);
  sobel2(&otherEdge, &destX, &destY);
  EXPECT_EQ((std::vector<uint8_t>{0, 0, 0, 0, 0, 77, 0, 77, 77}), x);
  EXPECT_EQ((std::vector<uint8_t>{0, 0, 0, 0, 4, 77, 0, 77, 77}), y);
}

TEST(Sobel2, isTheLowByteOfSobel_onNoiseBetweenGuardPages) {
  for (auto [w, h] : oddSizes()) {
    const std::vector<uint8_t> frame = noiseFrame(w, h, 10);
    const Gradients whole = sobelOf(frame, w, h);
    std::vector<uint8_t> expectedX, expectedY;
    for (uint64_t i = 0; i < w * h; i++) {
      const bool cleared = i < w || i % w == 0, last = i % w == w - 1 || i / w == h - 1;
      expectedX.push_back(!cleared && last ? 77 : static_cast<uint8_t>(whole.x[i]));
      expectedY.push_back(!cleared && last ? 77 : static_cast<uint8_t>(whole.y[i]));
    }
    for (auto alloc : {allocBeforeGuard, allocAfterGuard}) {
      GuardedBuffer input = alloc(w * h), x = alloc(w * h), y = alloc(w * h);
      memcpy(input.data, frame.data(), w * h);
      memset(x.data, 77, w * h);
      memset(y.data, 77, w * h);
      const Image src = {w, h, input.data};
      Image destX = {w, h, x.data}, destY = {w, h, y.data};
      sobel2(&src, &destX, &destY);
      ASSERT_EQ(expectedX, std::vector<uint8_t>(x.data, x.data + w * h)) << w << "x" << h;
      ASSERT_EQ(expectedY, std::vector<uint8_t>(y.data, y.data + w * h)) << w << "x" << h;
      freeGuardedBuffer(&input);
      freeGuardedBuffer(&x);
      freeGuardedBuffer(&y);
    }
  }
}

// ---- assertions on the sizes

// The outputs have no data, so anything written before the assertion would end in another signal.
template <typename Output, typename Operator>
static void expectDeath(Operator op, FrameSize sizeX, FrameSize sizeY, const std::string& message) {
  const Image src = {4, 3, nullptr};
  Output destX = {sizeX.w, sizeX.h, nullptr}, destY = {sizeY.w, sizeY.h, nullptr};
  EXPECT_EXIT(op(&src, &destX, &destY), testing::KilledBySignal(SIGABRT), message);
}

// The assertion on destX stands in `line`, that on destY in the next one.
template <typename Output, typename Operator>
static void expectSizeAssertions(Operator op, const std::string& name, int line) {
  const std::string tail = ": " + name + ": Assertion `src->h == dest";
  const std::string onX =
      "[^ ]: definitions:" + std::to_string(line) + tail + "X->h && src->w == destX->w' failed\\.";
  const std::string onY = "[^ ]: definitions:" + std::to_string(line + 1) + tail +
                          "Y->h && src->w == destY->w' failed\\.";
  const FrameSize right = {4, 3}, narrow = {3, 3}, flat = {4, 2}, turned = {3, 4};
  for (FrameSize wrong : {narrow, flat, turned}) {
    expectDeath<Output>(op, wrong, right, onX);
    expectDeath<Output>(op, right, wrong, onY);
  }
  expectDeath<Output>(op, flat, flat, onX);
}

TEST(GradientOperatorsDeathTest, gradientStops_ifAnOutputHasAnotherSize) {
  expectSizeAssertions<Image32>(gradient, "gradient", 648);
}

TEST(GradientOperatorsDeathTest, absGradientStops_ifAnOutputHasAnotherSize) {
  expectSizeAssertions<Image32>(absGradient, "absGradient", 785);
}

TEST(GradientOperatorsDeathTest, robertsStops_ifAnOutputHasAnotherSize) {
  expectSizeAssertions<Image32>(roberts, "roberts", 1151);
}

TEST(GradientOperatorsDeathTest, sobelStops_ifAnOutputHasAnotherSize) {
  expectSizeAssertions<Image32>(sobel, "sobel", 310);
}

TEST(GradientOperatorsDeathTest, sobel2Stops_ifAnOutputHasAnotherSize) {
  expectSizeAssertions<Image>(sobel2, "sobel2", 429);
}
