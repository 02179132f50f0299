// Letterbox: pairs of uniform rows from the top and bottom edges inwards.
#include "indicators/letterbox.h"

#include <gtest/gtest.h>

#include <cmath>

#include "support/lumaFrames.h"

namespace {

double letterboxOf(const LumaFrame& frame) {
  return measure(letterbox, frame, &FrameResults::letterbox);
}

bool isBar(LumaFrame frame, int row) {
  return checkLetterBar(frame.samples.data(), static_cast<uint32_t>(frame.w),
                        static_cast<uint32_t>(frame.h), row);
}

}  // namespace

TEST(Letterbox, isOne_onFlatFrame) {
  EXPECT_EQ(letterboxOf(LumaFrame(64, 48, 128)), 1.0);
}

TEST(Letterbox, isDepthOfBars_whateverTheirLevels) {
  // 10 rows of 0 above, 10 rows of 16 below: 10 of 50 pairs.
  LumaFrame frame = texture(64, 100);
  fill(frame, 0, 0, 64, 10, 0);
  fill(frame, 0, 90, 64, 10, 16);
  EXPECT_EQ(letterboxOf(frame), 10.0 / 50.0);
}

TEST(Letterbox, isZero_whereLastRowHasDetail) {
  LumaFrame frame = texture(64, 100);
  fill(frame, 0, 0, 64, 10, 0);
  EXPECT_EQ(letterboxOf(frame), 0.0);
}

TEST(Letterbox, isZero_whereFirstRowHasDetail) {
  LumaFrame frame = texture(64, 100);
  fill(frame, 0, 90, 64, 10, 0);
  EXPECT_EQ(letterboxOf(frame), 0.0);
}

TEST(Letterbox, isDepthOfTheThinnerBar) {
  LumaFrame frame = texture(64, 100);
  fill(frame, 0, 0, 64, 10, 0);
  fill(frame, 0, 97, 64, 3, 0);
  EXPECT_EQ(letterboxOf(frame), 3.0 / 50.0);
}

TEST(Letterbox, isOne_onUniformRowsOfDifferentLevels) {
  EXPECT_EQ(letterboxOf(frameOf(64, 48, [](int, int y) { return 5 * y; })), 1.0);
}

TEST(Letterbox, stopsAtFirstRowWithDetail) {
  // Pair 1 has detail; the uniform pairs behind it do not count.
  LumaFrame frame(64, 8, 50);
  frame.at(30, 1) = 51;
  EXPECT_EQ(letterboxOf(frame), 1.0 / 4.0);
}

TEST(Letterbox, seesDetailInFirstAndLastColumn) {
  for (int x : {0, 15}) {
    for (int y : {0, 7}) {
      LumaFrame frame(16, 8, 50);
      frame.at(x, y) = 49;
      EXPECT_EQ(letterboxOf(frame), 0.0) << x << "," << y;
    }
  }
}

TEST(Letterbox, leavesOutMiddleRow_ofOddHeight) {
  LumaFrame frame(16, 5, 50);
  frame.at(3, 2) = 0;
  EXPECT_EQ(letterboxOf(frame), 1.0);
}

TEST(Letterbox, isOne_onSingleColumn) {
  EXPECT_EQ(letterboxOf(texture(1, 9)), 1.0);
}

TEST(Letterbox, isNaN_onSingleRow) {
  // Half the height is 0: 0 / 0.
  EXPECT_TRUE(std::isnan(letterboxOf(LumaFrame(16, 1, 50))));
  EXPECT_TRUE(std::isnan(letterboxOf(LumaFrame(1, 1, 50))));
}

TEST(Letterbox, writesOnlyItsField) {
  expectWritesOnly(letterbox, LumaFrame(16, 8, 50), &FrameResults::letterbox);
}

TEST(Letterbox, returnsNull) {
  EXPECT_TRUE(returnsNull(letterbox, LumaFrame(16, 8, 50)));
  EXPECT_TRUE(returnsNull(letterbox, LumaFrame(16, 1, 50)));
}

TEST(CheckLetterBar, testsRowAndItsMirror) {
  // Only row 5, the mirror of row 2 in 8 rows, has detail.
  LumaFrame frame = frameOf(16, 8, [](int, int y) { return 20 * y; });
  frame.at(15, 5) = 0;
  for (int row : {0, 1, 3, 4, 6, 7}) EXPECT_TRUE(isBar(frame, row)) << row;
  for (int row : {2, 5}) EXPECT_FALSE(isBar(frame, row)) << row;
}

TEST(CheckLetterBar, isTrue_onSingleColumn) {
  EXPECT_TRUE(isBar(texture(1, 8), 3));
}
