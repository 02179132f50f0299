// Noise: what a Gaussian smoothing removes from the blocks of the most frequent deviation.
//
// Blocks of 8 x 8 with two levels 2 a apart, 32 samples each, have the deviation
// sqrt(64 a^2 / 63) = 1.0079 a: 5.04 for a = 5, which is in bin 5.
#include "indicators/noise.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <vector>

#include "support/lumaFrames.h"

namespace {

double noiseOf(const LumaFrame& frame) {
  return measure(noise, frame, &FrameResults::noise);
}

// Level of the sample (x, y) of a frame, as seen by the block around it.
using Block = std::function<int(int, int)>;

const Block flat = [](int, int) { return 128; };

Block checkerboard(int low, int high) {
  return [=](int x, int y) { return (x + y) % 2 == 0 ? low : high; };
}

Block stripes(int low, int high) {
  return [=](int x, int) { return x % 2 == 0 ? low : high; };
}

// `count` of the 64 samples are `step` brighter: variance step^2 * count * (64 - count) / 64 / 63.
Block patch(int step, int count) {
  return [=](int x, int y) { return y % 8 * 8 + x % 8 < count ? step : 0; };
}

// The blocks side by side.
LumaFrame rowOf(const std::vector<Block>& blocks) {
  return frameOf(static_cast<int>(blocks.size()) * 8, 8,
                 [&blocks](int x, int y) { return blocks[static_cast<size_t>(x / 8)](x, y); });
}

// `w` x `h` of one pattern.
LumaFrame filled(int w, int h, const Block& block) {
  return frameOf(w, h, block);
}

// Deviation of the residual of two-level blocks. The smoothing turns the offset +-a of a sample
// from the mean into the kernel's coefficients with the signs of the offsets around it, and the
// residual alternates by that much around a constant. 36 inner samples, half of each sign: sqrt(36
// / 35).
double residual(double a, double sigma, double edgeSigns, double cornerSigns) {
  const double s = 2.0 * sigma * sigma;
  const double centre = 1.0 / (sigma * sigma * 6.28);
  const double edge = centre * std::exp(-1.0 / s);
  const double corner = centre * std::exp(-2.0 / s);
  return a * std::abs(1.0 - centre - edgeSigns * edge - cornerSigns * corner) *
         std::sqrt(36.0 / 35.0);
}

// The 4 direct neighbours have the opposite sign, the 4 diagonal ones the same.
double checkerboardResidual(double a, double sigma) {
  return residual(a, sigma, -4.0, 4.0);
}

// Those above and below have the same sign, those left and right and the diagonal ones the
// opposite.
double stripesResidual(double a, double sigma) {
  return residual(a, sigma, 0.0, -4.0);
}

constexpr double ROUNDING = 1e-9;

}  // namespace

TEST(Noise, isZeroAndGivesUp_onFlatFrame) {
  for (int value : {0, 128, 255}) {
    EXPECT_EQ(noiseOf(LumaFrame(64, 48, value)), 0.0);
    EXPECT_EQ(statusOf(noise, LumaFrame(64, 48, value)), -1);
  }
}

TEST(Noise, isResidualOfTheBlocks_onOnePattern) {
  // Mode 5, weighted mode 5, sigma 5.
  EXPECT_NEAR(noiseOf(filled(64, 48, checkerboard(123, 133))), checkerboardResidual(5, 5),
              ROUNDING);
  EXPECT_NEAR(noiseOf(filled(64, 48, stripes(123, 133))), stripesResidual(5, 5), ROUNDING);
  EXPECT_NEAR(noiseOf(filled(64, 48, checkerboard(108, 148))), checkerboardResidual(20, 20),
              ROUNDING);
}

TEST(Noise, isMeanOverBlocks) {
  const Block board = checkerboard(123, 133);
  EXPECT_NEAR(noiseOf(rowOf({board, stripes(123, 133), board, board})),
              (3.0 * checkerboardResidual(5, 5) + stripesResidual(5, 5)) / 4.0, ROUNDING);
}

TEST(Noise, measuresOneBlock_in15x15) {
  // The samples beyond the only whole block do not matter.
  LumaFrame frame = texture(15, 15);
  for (int y = 0; y < 8; ++y) {
    for (int x = 0; x < 8; ++x) frame.at(x, y) = (x + y) % 2 == 0 ? 123 : 133;
  }
  EXPECT_NEAR(noiseOf(frame), checkerboardResidual(5, 5), ROUNDING);
}

TEST(Noise, isNaN_withoutAWholeBlock) {
  // The sum of no deviations over 0.
  for (const LumaFrame& frame : {texture(7, 7), texture(7, 64), texture(64, 7)}) {
    EXPECT_TRUE(std::isnan(noiseOf(frame))) << frame.w << "x" << frame.h;
    EXPECT_TRUE(returnsNull(noise, frame)) << frame.w << "x" << frame.h;
  }
}

TEST(Noise, usesFirst1000BlocksOnly) {
  // 40 x 26 blocks of the same deviation; those from number `first` on have another residual.
  const auto frame = [](int first) {
    const Block board = checkerboard(123, 133);
    const Block other = stripes(123, 133);
    return frameOf(320, 208, [=](int x, int y) {
      return x / 8 + y / 8 * 40 < first ? board(x, y) : other(x, y);
    });
  };
  EXPECT_NEAR(noiseOf(frame(1000)), checkerboardResidual(5, 5), ROUNDING);
  EXPECT_EQ(noiseOf(frame(1000)), noiseOf(frame(1040)));
  EXPECT_NEAR(noiseOf(frame(999)),
              (999.0 * checkerboardResidual(5, 5) + stripesResidual(5, 5)) / 1000.0, ROUNDING);
}

TEST(Noise, keepsTheModeThatReachedItsCountFirst) {
  // Bins 5 and 20 hold two blocks each.
  const Block weak = checkerboard(123, 133);
  const Block strong = checkerboard(108, 148);
  EXPECT_NEAR(noiseOf(rowOf({weak, strong, strong, weak})), checkerboardResidual(20, 20), ROUNDING);
  EXPECT_NEAR(noiseOf(rowOf({strong, weak, weak, strong})), checkerboardResidual(5, 5), ROUNDING);
  // Three against two, whatever the order.
  EXPECT_NEAR(noiseOf(rowOf({strong, strong, weak, weak, weak})), checkerboardResidual(5, 5),
              ROUNDING);
}

TEST(Noise, visitsBlocksRowByRow) {
  // weak, strong, weak / flat, strong, flat: row by row weak is the first to reach 2, column by
  // column it would be strong.
  const Block weak = checkerboard(123, 133);
  const Block strong = checkerboard(108, 148);
  EXPECT_NEAR(noiseOf(frameOf(24, 16,
                              [=](int x, int y) {
                                if (x / 8 == 1) return strong(x, y);
                                return y / 8 == 0 ? weak(x, y) : flat(x, y);
                              })),
              checkerboardResidual(5, 5), ROUNDING);
}

TEST(Noise, takesBlocksByFloor_whereTheFractionIsBelowOneHalf) {
  // Three blocks of deviation 4.88 are in bin 5, one of 5.54 is in bin 6: weighted mode
  // (6 + 3 * 5) / 4 = 5.25. Of these only the last lies in [5, 6).
  const Block below = patch(10, 24);
  EXPECT_NEAR(noiseOf(rowOf({below, below, below, checkerboard(128, 139)})),
              checkerboardResidual(5.5, 5), ROUNDING);
}

TEST(Noise, takesBlocksByRounding_fromAFractionOfOneHalfOn) {
  // Two blocks in bin 5, then two in bin 6 (deviations 5.54 and 6.05): weighted mode 5.5,
  // rounded 6.
  const Block weak = checkerboard(123, 133);
  EXPECT_NEAR(noiseOf(rowOf({weak, weak, checkerboard(128, 139), checkerboard(122, 134)})),
              (checkerboardResidual(5.5, 6) + checkerboardResidual(6, 6)) / 2.0, ROUNDING);
  // Three in bin 5 and one, of 4.03, in bin 4: weighted mode 4.75, rounded 5.
  EXPECT_NEAR(noiseOf(rowOf({weak, weak, weak, checkerboard(124, 132)})),
              checkerboardResidual(5, 5), ROUNDING);
}

TEST(Noise, isNaN_whereNoBlockMatches) {
  // All deviations are 4.88: weighted mode 5, but none in [5, 6).
  const LumaFrame frame = filled(64, 48, patch(10, 24));
  EXPECT_TRUE(std::isnan(noiseOf(frame)));
  EXPECT_TRUE(returnsNull(noise, frame));
}

TEST(Noise, isZeroAndGivesUp_whereTheWeightedModeIsBelowOneHalf) {
  // Three blocks in bin 0, one of 1.008 in bin 1: 1 / 4.
  const LumaFrame frame = rowOf({flat, flat, flat, checkerboard(127, 129)});
  EXPECT_EQ(noiseOf(frame), 0.0);
  EXPECT_EQ(statusOf(noise, frame), -1);
}

TEST(Noise, weighsBins0To2_whereTheModeIs0) {
  // Four blocks in bin 0, two in bin 1, one in bin 2: (2 + 2) / 7 = 0.57, rounded 1.
  const Block one = checkerboard(127, 129);
  EXPECT_NEAR(noiseOf(rowOf({flat, flat, flat, flat, one, one, checkerboard(126, 130)})),
              checkerboardResidual(1, 1), ROUNDING);
  // Two in bin 0 and two in bin 2: (2 * 2) / 4 = 1, where no block is.
  const Block two = checkerboard(126, 130);
  EXPECT_TRUE(std::isnan(noiseOf(rowOf({flat, flat, two, two}))));
}

TEST(Noise, roundsDeviations_halvesUpwards) {
  // 28 of 64 samples 1 brighter: variance 28 * 36 / 64 / 63 = 1 / 4, deviation 0.5, bin 1. The
  // weighted mode is 1, but no deviation is in [1, 2).
  EXPECT_TRUE(std::isnan(noiseOf(filled(64, 48, patch(1, 28)))));
  EXPECT_TRUE(returnsNull(noise, filled(64, 48, patch(1, 28))));
  // 27 of 64: 0.498, bin 0.
  EXPECT_EQ(noiseOf(filled(64, 48, patch(1, 27))), 0.0);
  EXPECT_EQ(statusOf(noise, filled(64, 48, patch(1, 27))), -1);
}

TEST(Noise, putsDeviationsAbove127InTheLastBin) {
  // 126.5 * 1.0079 = 127.5 is rounded to 128, counted in bin 127 and taken: its floor is 127.
  EXPECT_NEAR(noiseOf(filled(64, 48, checkerboard(0, 253))), checkerboardResidual(126.5, 127),
              ROUNDING);
  // 128.5 is counted there as well, but its floor is 128: no block is taken.
  EXPECT_TRUE(std::isnan(noiseOf(filled(64, 48, checkerboard(0, 255)))));
  // So it makes the mode that the other block is taken by.
  EXPECT_NEAR(noiseOf(rowOf({checkerboard(0, 255), checkerboard(0, 255), checkerboard(0, 253)})),
              checkerboardResidual(126.5, 127), ROUNDING);
}

TEST(Noise, countsBlocksIn16Bits) {
  // 65536 blocks in one bin count 0: the weighted mode is 0 / 0 and no block is taken.
  const LumaFrame wrapped = filled(2048, 2048, checkerboard(123, 133));
  EXPECT_TRUE(std::isnan(noiseOf(wrapped)));
  EXPECT_TRUE(returnsNull(noise, wrapped));
  // 256 more count 256.
  EXPECT_NEAR(noiseOf(filled(2048, 2056, checkerboard(123, 133))), checkerboardResidual(5, 5),
              ROUNDING);
}

TEST(Noise, writesOnlyItsField) {
  expectWritesOnly(noise, filled(64, 48, checkerboard(123, 133)), &FrameResults::noise);
  expectWritesOnly(noise, LumaFrame(64, 48), &FrameResults::noise);
}

TEST(Noise, returnsNull) {
  EXPECT_TRUE(returnsNull(noise, filled(64, 48, checkerboard(123, 133))));
}
