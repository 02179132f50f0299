// Blur: mean width of strong horizontal edges.
//
// Most frames here are 64 x 64 and the same in every row, so that rows 1 to 62 hold the same edges.
// A row with steps d1, d2, ... has the threshold 16 * 63 * (d1^2 + d2^2 + ...) / 4096, just below a
// quarter of the sum of squares.
//
// Whatever the deviation of a block, wrapped or not, the local threshold is below 0.31: the squares
// total at most 256 * 255^2, the wrapped term at most 2^31 / 256, hence
// sqrt((256 * 255^2 + 2^31 / 256) / 255) / 1024. A walk goes on over any step of its own sign.
#include "indicators/blur.h"

#include <gtest/gtest.h>

#include <cmath>
#include <utility>

#include "support/lumaFrames.h"
#include "support/specialValues.h"

namespace {

double blurOf(const LumaFrame& frame) {
  return measure(blur, frame, &FrameResults::blur);
}

LumaFrame step(int w, int h, int column) {
  return frameOf(w, h, [column](int x, int) { return x < column ? 0 : 200; });
}

// 0, then steps of `slope` into columns `first` to `last`.
LumaFrame ramp(int w, int h, int first, int last, int slope, int base = 0) {
  return frameOf(w, h, [=](int x, int) {
    return base + (x < first ? 0 : slope * ((x < last ? x : last) - first + 1));
  });
}

// A step of 140 into column `jump`, followed by steps of 5 up to column `last`.
LumaFrame jumpAndRamp(int w, int jump, int last) {
  return frameOf(
      w, 64, [=](int x, int) { return x < jump ? 0 : 140 + 5 * ((x < last ? x : last) - jump); });
}

// Steps of 5 into columns `first` to 12, followed by a step of 140 into column 13.
LumaFrame rampAndJump(int first) {
  return frameOf(64, 64, [=](int x, int) {
    return (x < first ? 0 : 5 * ((x < 12 ? x : 12) - first + 1)) + (x < 13 ? 0 : 140);
  });
}

}  // namespace

TEST(Blur, isZero_onFlatFrame) {
  for (int value : {0, 100, 200, 255}) EXPECT_EQ(blurOf(LumaFrame(64, 64, value)), 0.0);
}

TEST(Blur, isOne_onSharpStep) {
  // 200 at column 40: one edge of width 1 in every row.
  EXPECT_EQ(blurOf(step(64, 64, 40)), 1.0);
}

TEST(Blur, isOne_onSharpStepDown) {
  EXPECT_EQ(blurOf(frameOf(64, 64, [](int x, int) { return x < 40 ? 200 : 0; })), 1.0);
}

TEST(Blur, isFour_onRampOverFourColumns) {
  // Steps of 50 into columns 40 to 43, 2500 each against a threshold of 2461. Only column 43 is a
  // strict maximum against its right neighbour; the walk from there reaches column 39.
  EXPECT_EQ(blurOf(ramp(64, 64, 40, 43, 50)), 4.0);
}

TEST(Blur, isFour_onRampDown) {
  EXPECT_EQ(blurOf(ramp(64, 64, 40, 43, -50, 200)), 4.0);
}

TEST(Blur, followsStepsOfOneLevel_inBrightBlocks) {
  // Blocks of mean 236 and more have a wrapped deviation above 200, 1/1024 of which is still below
  // a step of 1. Squares of 1 against a threshold of 0.98.
  EXPECT_EQ(blurOf(ramp(64, 64, 40, 43, 1, 236)), 4.0);
}

TEST(Blur, isMeanOverEdges) {
  // A step of 70 into column 20 has width 1, two of 80 into columns 40 and 41 are one edge of width
  // 2. The threshold is 63 / 256 * (4900 + 6400 + 6400) = 4356.
  EXPECT_EQ(blurOf(frameOf(
                64, 64, [](int x, int) { return x < 20    ? 0
                                                : x < 40  ? 70
                                                : x == 40 ? 150
                                                          : 230; })),
            1.5);
}

TEST(Blur, hasNoCentreInLastColumnOfWholeBlocks) {
  EXPECT_EQ(blurOf(step(64, 64, 62)), 1.0);
  EXPECT_EQ(blurOf(step(64, 64, 63)), 0.0);
}

TEST(Blur, hasNoCentreRightOfWholeBlocks) {
  EXPECT_EQ(blurOf(step(79, 64, 62)), 1.0);
  for (int column = 63; column < 79; ++column) {
    EXPECT_EQ(blurOf(step(79, 64, column)), 0.0) << column;
  }
}

TEST(Blur, hasNoCentreBelowWholeBlocks) {
  // A step in a single row, 70 rows high: rows 1 to 62 can hold it.
  for (int row : {1, 31, 62, 63, 64, 69}) {
    LumaFrame frame(64, 70);
    fill(frame, 40, row, 24, 1, 200);
    EXPECT_EQ(blurOf(frame), row <= 62 ? 1.0 : 0.0) << row;
  }
}

TEST(Blur, hasNoCentreInFirstRow) {
  LumaFrame frame(64, 64);
  fill(frame, 40, 0, 24, 1, 200);
  EXPECT_EQ(blurOf(frame), 0.0);
}

TEST(Blur, countsEdgesOfWidthZero_inColumn1) {
  // Column 1 is where the leftward walk ends, so a step there has no width, but it counts: 0 and 1.
  EXPECT_EQ(blurOf(frameOf(64, 64, [](int x, int) { return x < 1    ? 0
                                                           : x < 40 ? 100
                                                                    : 200; })),
            0.5);
}

TEST(Blur, isZero_whereAllWidthsAreZero) {
  EXPECT_EQ(blurOf(step(64, 64, 1)), 0.0);
}

TEST(Blur, isOne_onStepInColumn2) {
  EXPECT_EQ(blurOf(step(64, 64, 2)), 1.0);
}

TEST(Blur, walksToTheRight) {
  // From the step of 140 into column 50 over those of 5 into columns 51 to 55: right end 55, left
  // end 49.
  EXPECT_EQ(blurOf(jumpAndRamp(64, 50, 55)), 6.0);
}

TEST(Blur, stopsOneShort_atTheEndOfTheRow) {
  EXPECT_EQ(blurOf(jumpAndRamp(64, 50, 61)), 12.0);
  EXPECT_EQ(blurOf(jumpAndRamp(64, 50, 62)), 13.0);
  // Cut off by the row end: the last step of 5 does not count.
  EXPECT_EQ(blurOf(jumpAndRamp(64, 50, 63)), 13.0);
}

TEST(Blur, walksOverColumnsThatHoldNoCentre) {
  // Right end 67 in a frame of 70 columns, left end 59.
  EXPECT_EQ(blurOf(jumpAndRamp(70, 60, 67)), 8.0);
}

TEST(Blur, stopsAtColumn1_onTheWayLeft) {
  // From column 13: down to the column before the ramp, but not below 1.
  EXPECT_EQ(blurOf(rampAndJump(3)), 11.0);
  EXPECT_EQ(blurOf(rampAndJump(2)), 12.0);
  EXPECT_EQ(blurOf(rampAndJump(1)), 12.0);
}

TEST(Blur, walksDownwards_whereTheNextStepGoesDown) {
  // A step of 200 up into column 40, then 4 of 50 down. Only column 40 exceeds the threshold of
  // 12305, and because the step after it goes down the walk follows the descent: right end 44, and
  // no walk to the left of 40.
  EXPECT_EQ(blurOf(frameOf(64, 64,
                           [](int x, int) { return x < 40 || x > 43 ? 0 : 200 - 50 * (x - 40); })),
            4.0);
}

TEST(Blur, choosesTheWalkByTheNextStepOnly) {
  // Steps of 20 into columns 37 to 39, 140 into column 40 and one of 20 down. Only column 40
  // exceeds the threshold of 5217.
  const auto hill = [](int descent) {
    return frameOf(64, 64, [descent](int x, int) {
      return x < 37 ? 0 : x < 40 ? 20 * (x - 36) : x < descent ? 200 : 180;
    });
  };
  // Down in column 41: right end 41, no walk to the left of 40.
  EXPECT_EQ(blurOf(hill(41)), 1.0);
  // Down in column 42: right end 40, left end 36.
  EXPECT_EQ(blurOf(hill(42)), 4.0);
}

TEST(Blur, takesVerticalMaximum_whateverTheDirection) {
  // Row 30 alone rises by 50 into columns 40 to 43. Each of the four is a maximum against the rows
  // above and below, although its change from the row above is as large or larger and its right
  // neighbour as strong; each has width 4. A step of 200 in row 50 alone has width 1. Threshold:
  // 16 * (4 * 2500 + 40000) / 4096 = 195.
  LumaFrame frame(64, 64);
  for (int x = 40; x < 64; ++x)
    frame.at(x, 30) = static_cast<uint8_t>(x < 43 ? 50 * (x - 39) : 200);
  fill(frame, 40, 50, 24, 1, 200);
  EXPECT_EQ(blurOf(frame), (4.0 * 4.0 + 1.0) / 5.0);
}

TEST(Blur, takesVerticalMaximum_belowAnEquallyStrongRow) {
  // Rows 30 and 31 both rise by 50 into columns 40 to 43: the four samples of row 31, equal to
  // those above and above those below, are edges of width 4, those of row 30 none. A step of 200 in
  // row 50 alone has width 1.
  LumaFrame frame(64, 64);
  for (int y : {30, 31}) {
    for (int x = 40; x < 64; ++x) {
      frame.at(x, y) = static_cast<uint8_t>(x < 43 ? 50 * (x - 39) : 200);
    }
  }
  fill(frame, 40, 50, 24, 1, 200);
  EXPECT_EQ(blurOf(frame), (4.0 * 4.0 + 1.0) / 5.0);
}

TEST(Blur, ignoresHorizontalMaximum_ofAMostlyVerticalChange) {
  // Steps of 50 into column 40, the same in all rows and so no vertical maximum. With rows that
  // alternate by 51 the vertical change is the larger one, with 50 they are equal.
  const auto rows = [](int change) {
    return frameOf(64, 64, [change](int x, int y) { return (x < 40 ? 0 : 50) + y % 2 * change; });
  };
  EXPECT_EQ(blurOf(rows(50)), 1.0);
  EXPECT_EQ(blurOf(rows(51)), 0.0);
}

TEST(Blur, isZero_whereSquaresEqualThreshold) {
  // 256 x 17 with steps of 10 into columns 8, 16, ...: 17 of them in 16 rows make the threshold
  // 16 * 17 * 16 * 100 / (256 * 17) = 100, met but not exceeded. With 16 of them it is 94.
  const auto stripes = [](int steps) {
    return frameOf(256, 17,
                   [steps](int x, int) { return (x / 8 < steps ? x / 8 : steps) % 2 * 10; });
  };
  EXPECT_EQ(blurOf(stripes(17)), 0.0);
  EXPECT_EQ(blurOf(stripes(16)), 1.0);
}

TEST(Blur, isMeasured_on16x16) {
  EXPECT_EQ(blurOf(step(16, 16, 8)), 1.0);
}

TEST(Blur, isZero_onSidesBelow16) {
  for (auto [w, h] : {std::pair{15, 64}, {64, 15}, {15, 15}, {8, 8}, {1, 1}, {1, 64}, {64, 1}}) {
    EXPECT_EQ(blurOf(step(w, h, w / 2)), 0.0) << w << "x" << h;
  }
}

TEST(Blur, writesOnlyItsField) {
  expectWritesOnly(blur, step(64, 64, 40), &FrameResults::blur);
  expectWritesOnly(blur, step(15, 15, 8), &FrameResults::blur);
}

TEST(Blur, returnsNull) {
  EXPECT_TRUE(returnsNull(blur, step(64, 64, 40)));
  EXPECT_TRUE(returnsNull(blur, LumaFrame(64, 64)));
}

TEST(BlurToMOS, isAbout4point96_onNoBlur) {
  // e^2.87 = 17.63702; 17.63702 / 18.63702 = 0.946343; 5 * 0.946343^0.14 = 4.961541.
  EXPECT_NEAR(blurToMOS(0.0), 4.961541, 1e-5);
}

TEST(BlurToMOS, isAbout4point54_whereTheExponentIsZero) {
  // e^0 / (1 + e^0) = 1 / 2 at 2.87 / 1.5; 2^-0.14 = 0.907519.
  EXPECT_NEAR(blurToMOS(2.87 / 1.5), 5.0 * std::exp2(-0.14), 1e-12);
}

TEST(BlurToMOS, isAbout0point915_onBlurOf10) {
  // e^-12.13 / (1 + e^-12.13) is e^-12.130005; to the power of 0.14 it is e^-1.698201.
  EXPECT_NEAR(blurToMOS(10.0), 5.0 * std::exp(-1.698201), 1e-5);
}

TEST(BlurToMOS, isZero_onVeryLargeBlur) {
  // e^(-1500 + 2.87) is 0 in double precision.
  EXPECT_EQ(blurToMOS(1000.0), 0.0);
  EXPECT_EQ(blurToMOS(INF), 0.0);
}

TEST(BlurToMOS, isZero_whereTheScoreIsNaN) {
  // e^1503 is infinite, and infinity / infinity NaN.
  EXPECT_EQ(blurToMOS(-1000.0), 0.0);
  EXPECT_EQ(blurToMOS(std::nan("")), 0.0);
}

TEST(Blur, findsCrestInRowOne_belowAStrongerStepInRowZero) {
  // Row 1 steps by 100 into column 8, where row 0 is 155 brighter: no crest along the row. Row 0
  // has no gradient and row 2 none at this place, so that it is one along the column. Threshold 16
  // * 100^2 / 1024, below 100^2.
  LumaFrame frame(32, 32);
  fill(frame, 8, 0, 24, 1, 255);
  fill(frame, 8, 1, 24, 1, 100);
  EXPECT_EQ(blurOf(frame), 1.0);
}

TEST(Blur, countsStepsWhoseSquareIsAboveTheThreshold_butNotThoseAtIt) {
  // 16 x 16: the threshold is a sixteenth of the sum of squares. Steps of 2 in 15 rows make 60, and
  // as many of 1 at the right end as there are `odd` rows.
  const auto stepsOfTwo = [](int odd) {
    return frameOf(16, 16, [odd](int x, int y) {
      return 100 + (y > 0 && x >= 8 ? 2 : 0) + (y > 0 && y <= odd && x == 15 ? 1 : 0);
    });
  };
  EXPECT_EQ(blurOf(stepsOfTwo(3)), 1.0);  // 4 > 63 / 16
  EXPECT_EQ(blurOf(stepsOfTwo(4)), 0.0);  // 4 = 64 / 16
}

TEST(Blur, countsStepsOf255_whenNothingLessIsStrong) {
  // 15 squares of 255 and one of 240 make a threshold of 64560.9, above the square of 254.
  EXPECT_EQ(blurOf(frameOf(16, 16,
                           [](int x, int y) {
                             return y == 0 || x < 8 ? 0 : y == 15 && x == 15 ? 15 : 255;
                           })),
            1.0);
}

TEST(Blur, isZero_onFramesWithoutABlock) {
  for (const LumaFrame& frame :
       {step(15, 64, 8), step(64, 15, 8), step(15, 15, 8), step(1, 1, 0)}) {
    EXPECT_EQ(blurOf(frame), 0.0) << frame.w << " x " << frame.h;
    EXPECT_TRUE(returnsNull(blur, frame));
  }
}
