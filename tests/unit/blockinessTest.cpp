// Blockiness: steps inside the 8 x 8 grid against steps across it.
#include "indicators/blockiness.h"

#include <gtest/gtest.h>

#include <cmath>

#include "support/lumaFrames.h"
#include "support/specialValues.h"

namespace {

double blockinessOf(const LumaFrame& frame) {
  return measure(blockiness, frame, &FrameResults::blockiness);
}

// Black above row `step`, 10 from there on.
LumaFrame rowStep(int w, int h, int step) {
  return frameOf(w, h, [step](int, int y) { return y < step ? 0 : 10; });
}

LumaFrame columnStep(int w, int h, int step) {
  return frameOf(w, h, [step](int x, int) { return x < step ? 0 : 10; });
}

}  // namespace

TEST(Blockiness, isOne_onFlatFrame) {
  // No step anywhere: 0 / 0 counts as 1.
  for (int value : {0, 128, 255}) EXPECT_EQ(blockinessOf(LumaFrame(64, 64, value)), 1.0);
}

TEST(Blockiness, isZero_onCheckerboardOfFlatBlocks) {
  // Steps across the borders only: 0 / something.
  EXPECT_EQ(blockinessOf(frameOf(64, 48, [](int x, int y) { return (x / 8 + y / 8) % 2 * 100; })),
            0.0);
}

TEST(Blockiness, isOne_onHorizontalRamp) {
  // Inner and across steps of all columns are 1, those of all rows 0.
  EXPECT_EQ(blockinessOf(frameOf(256, 32, [](int x, int) { return x; })), 1.0);
}

TEST(Blockiness, isInfinite_onStepsInsideOnly) {
  EXPECT_EQ(blockinessOf(rowStep(16, 16, 7)), INF);
  EXPECT_EQ(blockinessOf(columnStep(16, 16, 7)), INF);
}

TEST(Blockiness, seesOneBorderEachWay_in16x16) {
  // A step above row 7 is the inner one of border 8, a step above row 8 the one across it; no other
  // row or column is compared, which leaves 0 / 0, that is 1.
  for (int step = 1; step < 16; ++step) {
    const double expected = step == 7 ? INF : step == 8 ? 0.0 : 1.0;
    EXPECT_EQ(blockinessOf(rowStep(16, 16, step)), expected) << step;
    EXPECT_EQ(blockinessOf(columnStep(16, 16, step)), expected) << step;
  }
}

TEST(Blockiness, dividesInnerByAcross_ofBothDirections) {
  // Rows step by 3 into row 7 and by 5 into row 8, columns by 2 and 7; 16 samples along each:
  // (3 + 2) * 16 / ((5 + 7) * 16).
  const LumaFrame frame = frameOf(16, 16, [](int x, int y) {
    return (y < 7 ? 0 : y == 7 ? 3 : 8) + (x < 7 ? 0 : x == 7 ? 2 : 9);
  });
  EXPECT_EQ(blockinessOf(frame), 80.0 / 192.0);
}

TEST(Blockiness, takesStepsWithoutSign) {
  // Each inner step is 3 up, each across step 6 down: 3 / 6.
  EXPECT_EQ(blockinessOf(frameOf(16, 16, [](int, int y) { return y < 7    ? 50
                                                                 : y == 7 ? 53
                                                                          : 47; })),
            0.5);
}

TEST(Blockiness, hasNoHorizontalBorder_in15Rows) {
  EXPECT_EQ(blockinessOf(rowStep(16, 15, 8)), 1.0);
  EXPECT_EQ(blockinessOf(rowStep(16, 15, 7)), 1.0);
}

TEST(Blockiness, hasNoVerticalBorder_in15Columns) {
  EXPECT_EQ(blockinessOf(columnStep(15, 16, 8)), 1.0);
  EXPECT_EQ(blockinessOf(columnStep(15, 16, 7)), 1.0);
}

TEST(Blockiness, isOne_whereBothPassesAreSkipped) {
  EXPECT_EQ(blockinessOf(texture(15, 15)), 1.0);
  EXPECT_EQ(blockinessOf(texture(8, 8)), 1.0);
}

TEST(Blockiness, seesBorder16_onlyWithAWholeBlockBehindIt) {
  EXPECT_EQ(blockinessOf(rowStep(8, 24, 16)), 0.0);
  EXPECT_EQ(blockinessOf(rowStep(8, 23, 16)), 1.0);
  EXPECT_EQ(blockinessOf(columnStep(24, 8, 16)), 0.0);
  EXPECT_EQ(blockinessOf(columnStep(23, 8, 16)), 1.0);
}

TEST(Blockiness, lastBorderIsRow1072_of1080Rows) {
  EXPECT_EQ(blockinessOf(rowStep(8, 1080, 1072)), 0.0);
  EXPECT_EQ(blockinessOf(rowStep(8, 1080, 1064)), 0.0);
  EXPECT_EQ(blockinessOf(rowStep(8, 1080, 1071)), INF);
}

TEST(Blockiness, weighsFirstOfThreeBordersThreeTimes) {
  // The only inner step lies at border 8, the only across step at border 24. The running sums go
  // into the totals after each of the three lines, so the first counts three times, the last once.
  const auto level = [](int position) { return position < 7 ? 0 : position < 24 ? 1 : 2; };
  EXPECT_EQ(blockinessOf(frameOf(8, 32, [level](int, int y) { return level(y); })), 3.0);
  EXPECT_EQ(blockinessOf(frameOf(32, 8, [level](int x, int) { return level(x); })), 3.0);
}

TEST(Blockiness, startsVerticalBordersFromZero) {
  // Either pass gives 3 * 32 inside and 1 * 32 across. Running sums left over from the first pass
  // would add to every line of the second and pull the ratio away from 3.
  const auto level = [](int position) { return position < 7 ? 0 : position < 24 ? 1 : 2; };
  EXPECT_EQ(blockinessOf(frameOf(32, 32, [level](int x, int y) { return level(x) + level(y); })),
            192.0 / 64.0);
}

TEST(Blockiness, skipsBordersAcrossASideBelow8) {
  // The other side is measured all the same.
  EXPECT_EQ(blockinessOf(rowStep(7, 16, 8)), 0.0);
  EXPECT_EQ(blockinessOf(columnStep(16, 7, 8)), 0.0);
  EXPECT_EQ(blockinessOf(texture(7, 15)), 1.0);
  EXPECT_EQ(blockinessOf(texture(7, 7)), 1.0);
  EXPECT_EQ(blockinessOf(texture(1, 1)), 1.0);
}

TEST(Blockiness, readsRunningSumAsSigned32Bit) {
  // 8421505 across steps of 255 total 2^31 + 127, as a signed number -(2^31 - 127), and as the
  // unsigned 64-bit total 2^64 - 2^31 + 127. The inner steps of 1 total 8421505.
  const int w = 8421505;
  LumaFrame frame(w, 16, 1);
  fill(frame, 0, 7, w, 1, 0);
  fill(frame, 0, 8, w, 8, 255);
  const uint64_t across = uint64_t{0} - ((uint64_t{1} << 31) - 127);
  EXPECT_EQ(blockinessOf(frame), 8421505.0 / static_cast<double>(across));
}

TEST(Blockiness, writesOnlyItsField) {
  expectWritesOnly(blockiness, texture(32, 24), &FrameResults::blockiness);
}

TEST(Blockiness, returnsNull) {
  EXPECT_TRUE(returnsNull(blockiness, texture(32, 24)));
}

TEST(BlockToMOS, isAbout3point74_atOne) {
  // (17.86 - 10.38) / 2.
  EXPECT_DOUBLE_EQ(blockToMOS(1.0), 3.74);
}

TEST(BlockToMOS, isAbout12point67_atTwo) {
  // (35.72 - 10.38) / 2: no upper bound.
  EXPECT_DOUBLE_EQ(blockToMOS(2.0), 12.67);
}

TEST(BlockToMOS, isZero_upToItsRoot) {
  // 10.38 / 17.86 = 0.58118...
  for (double x : {-INF, -1.0, 0.0, 0.5, 0.5811}) EXPECT_EQ(blockToMOS(x), 0.0) << x;
  // (0.5812 * 17.86 - 10.38) / 2 = (10.380232 - 10.38) / 2.
  EXPECT_NEAR(blockToMOS(0.5812), 0.000116, 1e-12);
}

TEST(BlockToMOS, isZero_onNaN) {
  EXPECT_EQ(blockToMOS(std::nan("")), 0.0);
}

TEST(BlockToMOS, isInfinite_onInfinity) {
  EXPECT_EQ(blockToMOS(INF), INF);
}
