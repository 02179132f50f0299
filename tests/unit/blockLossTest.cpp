// Block loss: long strong edges on the 16 x 16 grid.
//
// A rectangle of 200 on black gives a Roberts strength of 80000 along its sides and of 40000 at
// their ends. A horizontal side from column x0 to x1 is strong in columns x0 to x1 + 1 of the row
// below the change, a vertical one likewise, so that a side of n samples is a run of n + 1.
#include "indicators/blockLoss.h"

#include <gtest/gtest.h>

#include "support/lumaFrames.h"

namespace {

double blockLossOf(const LumaFrame& frame) {
  return measure(blockLoss, frame, &FrameResults::blockLoss);
}

// One rectangle of 200 on black.
LumaFrame rectangle(int w, int h, int x0, int y0, int width, int height) {
  LumaFrame frame(w, h);
  fill(frame, x0, y0, width, height, 200);
  return frame;
}

// 765 x 256, alternating between 0 and 30 in columns 0 to `steps`: as many columns of strength
// 1800, in all rows but the first.
LumaFrame stripes(int steps) {
  return frameOf(765, 256,
                 [steps](int x, int) { return (x < steps ? x : steps) % 2 == 0 ? 0 : 30; });
}

}  // namespace

TEST(BlockLoss, givesUp_onASideBelow256) {
  for (const LumaFrame& frame :
       {texture(255, 480), texture(480, 255), texture(255, 255), texture(1, 1)}) {
    EXPECT_EQ(blockLossOf(frame), -1.0) << frame.w << "x" << frame.h;
    EXPECT_EQ(statusOf(blockLoss, frame), -1) << frame.w << "x" << frame.h;
  }
}

TEST(BlockLoss, returnsNull_from256On) {
  EXPECT_TRUE(returnsNull(blockLoss, LumaFrame(256, 256, 9)));
}

TEST(BlockLoss, isZero_onFlatFrame) {
  // The threshold is 0 too, and nothing exceeds it.
  EXPECT_EQ(blockLossOf(LumaFrame(512, 512, 128)), 0.0);
}

TEST(BlockLoss, isFour_onSquareOnTheGrid) {
  // Sides on rows 64 and 128 and columns 64 and 128: 2 runs each way. The mean strength of 254
  // samples of 80000 among 65536 is 310, the threshold 1860.
  EXPECT_EQ(blockLossOf(rectangle(256, 256, 64, 64, 64, 64)), 4.0);
}

TEST(BlockLoss, isZero_onSquareBesideTheGrid) {
  EXPECT_EQ(blockLossOf(rectangle(256, 256, 65, 65, 64, 64)), 0.0);
  EXPECT_EQ(blockLossOf(rectangle(256, 256, 63, 63, 64, 64)), 0.0);
}

TEST(BlockLoss, isZero_withRunsInOneDirectionOnly) {
  // Beside the grid's columns but on its rows, and the other way round.
  EXPECT_EQ(blockLossOf(rectangle(256, 256, 65, 64, 64, 64)), 0.0);
  EXPECT_EQ(blockLossOf(rectangle(256, 256, 64, 65, 64, 64)), 0.0);
}

TEST(BlockLoss, multipliesRunsOfBothDirections) {
  // Top and left side on the grid, bottom and right side beside it.
  EXPECT_EQ(blockLossOf(rectangle(256, 256, 64, 64, 40, 40)), 1.0);
  // A second such rectangle, off the first one's lines: 2 * 2.
  LumaFrame frame = rectangle(256, 256, 64, 64, 40, 40);
  fill(frame, 160, 160, 40, 40, 200);
  EXPECT_EQ(blockLossOf(frame), 4.0);
}

TEST(BlockLoss, countsSidesOf11ButNotOf10) {
  // Top and bottom on the grid and the left side: 2 * 1, if the short sides give runs of 12.
  EXPECT_EQ(blockLossOf(rectangle(256, 256, 64, 64, 11, 64)), 2.0);
  EXPECT_EQ(blockLossOf(rectangle(256, 256, 64, 64, 10, 64)), 0.0);
  EXPECT_EQ(blockLossOf(rectangle(256, 256, 64, 64, 64, 11)), 2.0);
  EXPECT_EQ(blockLossOf(rectangle(256, 256, 64, 64, 64, 10)), 0.0);
}

TEST(BlockLoss, countsWholeRegionsOnly) {
  // 300 x 300 is one region; the second square lies right of and below it.
  LumaFrame frame = rectangle(300, 300, 64, 64, 64, 64);
  fill(frame, 272, 272, 16, 16, 200);
  EXPECT_EQ(blockLossOf(frame), 4.0);
  EXPECT_EQ(blockLossOf(rectangle(300, 300, 272, 272, 16, 16)), 0.0);
}

TEST(BlockLoss, isMeanOverRegions) {
  EXPECT_EQ(blockLossOf(rectangle(512, 256, 64, 64, 64, 64)), 4.0 / 2.0);
  EXPECT_EQ(blockLossOf(rectangle(256, 512, 64, 320, 64, 64)), 4.0 / 2.0);
  EXPECT_EQ(blockLossOf(rectangle(512, 512, 320, 64, 64, 64)), 4.0 / 4.0);
}

TEST(BlockLoss, doesNotMultiplyRunsOfDifferentRegions) {
  // Runs along rows in the left region, along columns in the right one.
  LumaFrame frame = rectangle(512, 256, 65, 64, 64, 64);
  fill(frame, 320, 65, 64, 64, 200);
  EXPECT_EQ(blockLossOf(frame), 0.0);
}

TEST(BlockLoss, startsRunsAnewInEveryRegion) {
  // The top and bottom sides run from column 246 to 266, 10 columns in the left region and 11 in
  // the right one: no run, although the rectangle at column 32 has one along its left side.
  LumaFrame frame = rectangle(512, 256, 246, 64, 20, 64);
  fill(frame, 32, 70, 5, 40, 200);
  EXPECT_EQ(blockLossOf(frame), 0.0);
  // With sides from column 243 the left region holds 13 of each: 2 * 1, over two regions.
  fill(frame, 243, 64, 3, 64, 200);
  EXPECT_EQ(blockLossOf(frame), 2.0 / 2.0);
}

TEST(BlockLoss, ignoresFrameBorder) {
  // The first grid lines are those of rows and columns 16; a frame has no edge at its own border.
  EXPECT_EQ(blockLossOf(rectangle(256, 256, 0, 0, 64, 64)), 1.0);
}

TEST(BlockLoss, isZero_whereStrengthEqualsThreshold) {
  // 128 * 255 samples of 1800 among 765 * 256: mean 300, threshold 6 * 300 = 1800, met but not
  // exceeded.
  EXPECT_EQ(blockLossOf(stripes(128)), 0.0);
}

TEST(BlockLoss, countsStrengthJustAboveThreshold) {
  // 127 columns: threshold 1800 * 127 / 128. In the first of the two regions each of the 15 grid
  // rows below row 0 has one run, and so have grid columns 16 to 112: 15 * 7.
  EXPECT_EQ(blockLossOf(stripes(127)), 105.0 / 2.0);
}

TEST(BlockLoss, isZero_whereMostOfTheFrameIsStrong) {
  // Lines of 0 and 255 below row 140: at least 115 * 255 samples of strength 130050 make a
  // threshold above 6 * 58000, more than any strength.
  LumaFrame frame = rectangle(256, 256, 64, 64, 64, 64);
  for (int x = 1; x < 256; x += 2) fill(frame, x, 140, 1, 116, 255);
  EXPECT_EQ(blockLossOf(frame), 0.0);
}

TEST(BlockLoss, takesMeanOverWholeFrame) {
  // Lines right of the only region raise the threshold as well: 254 * 255 samples of 130050
  // among 511 * 256 make it 6 * 64391.
  LumaFrame frame = rectangle(511, 256, 64, 64, 64, 64);
  for (int x = 257; x < 511; x += 2) fill(frame, x, 0, 1, 256, 255);
  EXPECT_EQ(blockLossOf(frame), 0.0);
}

TEST(BlockLoss, writesOnlyItsField) {
  expectWritesOnly(blockLoss, rectangle(256, 256, 64, 64, 64, 64), &FrameResults::blockLoss);
  expectWritesOnly(blockLoss, texture(64, 64), &FrameResults::blockLoss);
}

TEST(BlockLoss, countsRunFromFirstRowOfALowerRegion) {
  // Column 64 is strong from row 256 to 267, 12 samples below a line of 11, and row 272 along a
  // line of 20: one run each way in the lower of two regions.
  LumaFrame frame(256, 512);
  fill(frame, 64, 256, 1, 11, 200);
  fill(frame, 128, 272, 20, 1, 200);
  EXPECT_EQ(blockLossOf(frame), 0.5);
}
