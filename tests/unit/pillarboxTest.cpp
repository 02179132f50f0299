// Pillarbox: columns from the left edge on that equal their right-hand neighbour.
#include "indicators/pillarbox.h"

#include <gtest/gtest.h>

#include <cmath>

#include "support/lumaFrames.h"

namespace {

double pillarboxOf(const LumaFrame& frame) {
  return measure(pillarbox, frame, &FrameResults::pillarbox);
}

int isPillar(LumaFrame frame, int column) {
  return checkPillarBar(frame.samples.data(), frame.w, static_cast<uint32_t>(frame.h),
                        static_cast<uint32_t>(column));
}

}  // namespace

TEST(Pillarbox, isOne_onFlatFrame) {
  EXPECT_EQ(pillarboxOf(LumaFrame(64, 48, 128)), 1.0);
}

TEST(Pillarbox, isOneColumnLessThanTheBar) {
  // The last of the 20 bar columns differs from the picture: 19 of 100.
  LumaFrame frame = texture(200, 60);
  fill(frame, 0, 0, 20, 60, 0);
  EXPECT_EQ(pillarboxOf(frame), 19.0 / 100.0);
}

TEST(Pillarbox, isZero_onBarAtTheRightOnly) {
  LumaFrame frame = texture(200, 60);
  fill(frame, 180, 0, 20, 60, 0);
  EXPECT_EQ(pillarboxOf(frame), 0.0);
}

TEST(Pillarbox, isZero_whereFirstTwoColumnsDifferInAnyRow) {
  for (int y = 0; y < 8; ++y) {
    for (int x : {0, 1}) {
      LumaFrame frame(16, 8, 50);
      frame.at(x, y) = 51;
      EXPECT_EQ(pillarboxOf(frame), 0.0) << x << "," << y;
    }
  }
}

TEST(Pillarbox, leavesOutMiddleRow_ofOddHeight) {
  LumaFrame frame(16, 9, 50);
  for (int x = 0; x < 16; x += 2) frame.at(x, 4) = 51;
  EXPECT_EQ(pillarboxOf(frame), 1.0);
  frame.at(0, 3) = 51;
  EXPECT_EQ(pillarboxOf(frame), 0.0);
}

TEST(Pillarbox, isOne_onUniformRowsOfDifferentLevels) {
  // Columns are compared with each other, not tested for a single value.
  EXPECT_EQ(pillarboxOf(frameOf(64, 48, [](int, int y) { return 5 * y; })), 1.0);
}

TEST(Pillarbox, stopsAtFirstColumnThatDiffers) {
  // Columns 0, 1 and 2 equal their neighbours, 3 differs from 4; 4 to 7 are alike again.
  EXPECT_EQ(pillarboxOf(frameOf(16, 8, [](int x, int) { return x < 4 ? 0 : 9; })), 3.0 / 8.0);
}

TEST(Pillarbox, readsNothingRightOfTheMiddle) {
  // Half of 8 or 9 is 4: column 3 is compared with 4, and 5 is the first that is never read.
  for (int w : {8, 9}) {
    LumaFrame frame = texture(w, 6);
    fill(frame, 0, 0, 5, 6, 0);
    EXPECT_EQ(pillarboxOf(frame), 1.0) << w;
    fill(frame, 4, 0, 1, 6, 1);
    EXPECT_EQ(pillarboxOf(frame), 3.0 / 4.0) << w;
  }
}

TEST(Pillarbox, isOne_onSingleRow) {
  EXPECT_EQ(pillarboxOf(texture(2, 1)), 1.0);
  EXPECT_EQ(pillarboxOf(texture(33, 1)), 1.0);
}

TEST(Pillarbox, isNaN_onSingleColumn) {
  // Half the width is 0: 0 / 0.
  EXPECT_TRUE(std::isnan(pillarboxOf(LumaFrame(1, 8, 50))));
  EXPECT_TRUE(std::isnan(pillarboxOf(LumaFrame(1, 1, 50))));
}

TEST(Pillarbox, writesOnlyItsField) {
  expectWritesOnly(pillarbox, LumaFrame(16, 8, 50), &FrameResults::pillarbox);
}

TEST(Pillarbox, returnsNull) {
  EXPECT_TRUE(returnsNull(pillarbox, LumaFrame(16, 8, 50)));
  EXPECT_TRUE(returnsNull(pillarbox, LumaFrame(1, 8, 50)));
}

TEST(CheckPillarBar, comparesColumnWithTheNext) {
  // The step lies between columns 9 and 10, in the last row only.
  LumaFrame frame = frameOf(16, 8, [](int, int y) { return 20 * y; });
  fill(frame, 10, 7, 6, 1, 0);
  for (int column = 0; column < 15; ++column) {
    EXPECT_EQ(isPillar(frame, column), column == 9 ? 0 : 1) << column;
  }
}

TEST(CheckPillarBar, looksAtEveryRowOfBothHalves) {
  for (int row = 0; row < 8; ++row) {
    LumaFrame frame = frameOf(16, 8, [](int, int y) { return 20 * y; });
    frame.at(5, row) = 255;
    for (int column = 0; column < 15; ++column) {
      EXPECT_EQ(isPillar(frame, column), column == 4 || column == 5 ? 0 : 1)
          << column << " " << row;
    }
  }
}

TEST(CheckPillarBar, leavesOutMiddleRow_ofOddHeight) {
  LumaFrame frame(4, 5, 50);
  frame.at(1, 2) = 0;
  EXPECT_EQ(isPillar(frame, 0), 1);
  frame.at(1, 3) = 0;
  EXPECT_EQ(isPillar(frame, 0), 0);
}

TEST(CheckPillarBar, isOne_onSingleRow) {
  EXPECT_EQ(isPillar(texture(16, 1), 3), 1);
}
