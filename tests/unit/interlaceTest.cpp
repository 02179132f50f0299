// Interlace: share of 4 x 4 blocks that zig-zag from line to line.
#include "indicators/interlace.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstddef>

#include "support/lumaFrames.h"
#include "support/specialValues.h"

namespace {

double interlaceOf(const LumaFrame& frame) {
  return measure(interlace, frame, &FrameResults::interlace);
}

LumaFrame combed(int w, int h) {
  return frameOf(w, h, [](int, int y) { return y % 2 * 255; });
}

using Lines = std::array<int, 4>;

// One block of four uniform lines.
LumaFrame block(const Lines& levels) {
  return frameOf(4, 4, [&levels](int, int y) { return levels[static_cast<size_t>(y)]; });
}

}  // namespace

TEST(Interlace, isOne_onAlternatingLines) {
  EXPECT_EQ(interlaceOf(combed(64, 48)), 1.0);
  EXPECT_EQ(interlaceOf(combed(4, 4)), 1.0);
}

TEST(Interlace, isZero_onFlatFrame) {
  EXPECT_EQ(interlaceOf(LumaFrame(64, 48, 128)), 0.0);
}

TEST(Interlace, isZero_onHorizontalGradient) {
  EXPECT_EQ(interlaceOf(frameOf(64, 48, [](int x, int) { return 4 * x; })), 0.0);
}

TEST(Interlace, isZero_onVerticalGradient) {
  EXPECT_EQ(interlaceOf(frameOf(64, 48, [](int, int y) { return 4 * y; })), 0.0);
}

TEST(Interlace, isZero_whereOneColumnOfTheBlockIsFlat) {
  for (int flat = 0; flat < 4; ++flat) {
    LumaFrame frame = combed(4, 4);
    fill(frame, flat, 0, 1, 4, 100);
    EXPECT_EQ(interlaceOf(frame), 0.0) << flat;
  }
}

TEST(Interlace, isShareOfCombedBlocks) {
  // One of the 2 x 3 blocks is flat, another has a flat column.
  LumaFrame frame = combed(8, 12);
  fill(frame, 4, 0, 4, 4, 50);
  fill(frame, 3, 8, 1, 4, 50);
  EXPECT_EQ(interlaceOf(frame), 4.0 / 6.0);
}

TEST(Interlace, blockIsCombed_byAnyZigZag) {
  // Steps of 1 suffice, the first and last level are free otherwise.
  const Lines zigZags[] = {{1, 0, 1, 0},     {0, 1, 0, 1},         {200, 0, 1, 0},
                           {1, 0, 255, 254}, {127, 128, 127, 128}, {128, 127, 128, 127},
                           {255, 0, 255, 0}, {0, 2, 1, 255}};
  for (const Lines& lines : zigZags) {
    EXPECT_EQ(interlaceOf(block(lines)), 1.0) << testing::PrintToString(lines);
  }
}

TEST(Interlace, blockIsNotCombed_whereTwoLinesAreEqualOrGoOn) {
  const Lines others[] = {{0, 0, 1, 0}, {1, 1, 0, 1}, {1, 0, 0, 1}, {0, 1, 1, 0},
                          {1, 0, 1, 1}, {0, 1, 0, 0}, {3, 2, 1, 0}, {1, 0, 1, 2},
                          {1, 2, 3, 2}, {5, 3, 3, 1}, {1, 3, 3, 5}};
  for (const Lines& lines : others) {
    EXPECT_EQ(interlaceOf(block(lines)), 0.0) << testing::PrintToString(lines);
  }
}

TEST(Interlace, columnsOfABlockMayZigZagEitherWay) {
  EXPECT_EQ(interlaceOf(frameOf(8, 8, [](int x, int y) { return (x + y) % 2; })), 1.0);
}

TEST(Interlace, blocksLieOnTheGrid) {
  // Four combed lines starting on line 2 belong to no block as a whole.
  LumaFrame frame(8, 8, 100);
  for (int y = 2; y < 6; ++y) fill(frame, 0, y, 8, 1, y % 2 * 255);
  EXPECT_EQ(interlaceOf(frame), 0.0);
}

TEST(Interlace, isNaN_onEmptyFrame) {
  EXPECT_TRUE(std::isnan(interlaceOf(LumaFrame(0, 8))));
  EXPECT_TRUE(std::isnan(interlaceOf(LumaFrame(8, 0))));
  EXPECT_TRUE(std::isnan(interlaceOf(LumaFrame(0, 0))));
}

TEST(Interlace, isNaN_onASideBelow4_withoutCombedBlock) {
  // 0 of 0 blocks.
  EXPECT_TRUE(std::isnan(interlaceOf(LumaFrame(3, 16, 9))));
  EXPECT_TRUE(std::isnan(interlaceOf(LumaFrame(16, 3, 9))));
  EXPECT_TRUE(std::isnan(interlaceOf(LumaFrame(1, 1, 9))));
}

TEST(Interlace, isInfinite_onASideBelow4_withCombedBlock) {
  // 3 x 5: the fourth column of the block at (0, 0) is column 0 of the lines below, up to sample 12
  // of 15. 1 of 0 blocks.
  EXPECT_EQ(interlaceOf(combed(3, 5)), INF);
}

TEST(Interlace, blockReachingPastTheFrameIsNotCombed) {
  // The block at (0, 0) of 3 x 4 would need sample 12 of 12; blocks that lack whole lines as well.
  EXPECT_TRUE(std::isnan(interlaceOf(combed(3, 4))));
  EXPECT_TRUE(std::isnan(interlaceOf(combed(8, 3))));
  for (int h : {5, 6, 7}) EXPECT_EQ(interlaceOf(combed(4, h)), 1.0) << h;
  // 6 x 4: the block at column 4 would need samples 24 and 25 of 24.
  EXPECT_EQ(interlaceOf(combed(6, 4)), 1.0);
}

TEST(Interlace, canExceedOne_whereWidthIsNoMultipleOf4) {
  // 6 x 8: blocks at columns 0 and 4; the lower one at column 4 reaches past the frame. 3 combed
  // blocks, but only 2 whole ones in the divisor.
  EXPECT_EQ(interlaceOf(combed(6, 8)), 3.0 / 2.0);
}

TEST(Interlace, partialBlockContinuesInTheNextLines) {
  // 6 x 8: the upper block at column 4 also reads columns 0 and 1 of lines 1 to 4. With line 4 as
  // bright as line 3 in one of these it is not combed, nor is the lower block at column 0.
  for (int x : {0, 1}) {
    LumaFrame frame = combed(6, 8);
    frame.at(x, 4) = 255;
    EXPECT_EQ(interlaceOf(frame), 1.0 / 2.0) << x;
  }
  // Columns 2 and 3 of that line belong to the lower block only.
  for (int x : {2, 3}) {
    LumaFrame frame = combed(6, 8);
    frame.at(x, 4) = 255;
    EXPECT_EQ(interlaceOf(frame), 2.0 / 2.0) << x;
  }
}

TEST(Interlace, writesOnlyItsField) {
  expectWritesOnly(interlace, combed(16, 16), &FrameResults::interlace);
}

TEST(Interlace, returnsNull) {
  EXPECT_TRUE(returnsNull(interlace, combed(16, 16)));
  EXPECT_TRUE(returnsNull(interlace, LumaFrame(0, 8)));
}
