// Block loss: long strong edges on the 16 x 16 grid.
//
// A rectangle of 200 on black gives a Roberts strength of 80000 along its sides and of 40000 at
// their ends. A horizontal side from column x0 to x1 is strong in columns x0 to x1 + 1 of the row
// below the change, a vertical one likewise, so that a side of n samples is a run of n + 1.
#include "indicators/blockLoss.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <utility>

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

int64_t energyOf(LumaFrame frame) {
  const auto square = [](int difference) { return int64_t{difference} * difference; };
  int64_t energy = 0;
  for (int y = 1; y < frame.h; ++y) {
    for (int x = 1; x < frame.w; ++x) {
      energy += square(frame.at(x - 1, y - 1) - frame.at(x, y)) +
                square(frame.at(x, y - 1) - frame.at(x - 1, y));
    }
  }
  return energy;
}

// A frame of 256 x 256, flat at its right end, below its top and in its upper corners, with samples
// raised there until the squares of all its diagonal differences add up to `energy`. A sample has
// four differences, one in the top row two and one in a corner one.
LumaFrame withEnergy(LumaFrame frame, int64_t energy) {
  int64_t missing = energy - energyOf(frame);
  const auto raise = [&](int x, int y, int differences) {
    int step = 0;
    while (step < 100 && differences * (step + 1) * (step + 1) <= missing) ++step;
    frame.at(x, y) = static_cast<uint8_t>(frame.at(x, y) + step);
    missing -= int64_t{differences} * step * step;
  };
  for (int y = 34; y < 256 && missing >= 4; y += 4) {
    for (int x = 194; x < 256 && missing >= 4; x += 4) raise(x, y, 4);
  }
  raise(8, 0, 2);
  raise(0, 0, 1);
  EXPECT_EQ(energyOf(frame), energy);
  return frame;
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

TEST(BlockLoss, addsUpFourRegions_eachWithRunsOfItsOwn) {
  // Squares of 2 * 2 runs in three regions, and in the lower right one a rectangle whose top and
  // left sides, 1 * 1, begin at its very first row and column. 600 x 530 holds as many whole
  // regions.
  for (const auto& [w, h] : {std::pair{512, 512}, std::pair{600, 530}}) {
    LumaFrame frame(w, h);
    for (const auto& [x, y] : {std::pair{64, 64}, std::pair{320, 64}, std::pair{64, 320}}) {
      fill(frame, x, y, 32, 32, 200);
    }
    EXPECT_EQ(blockLossOf(frame), (4.0 + 4.0 + 4.0) / 4.0) << w << "x" << h;
    fill(frame, 256, 256, 40, 40, 200);
    EXPECT_EQ(blockLossOf(frame), (4.0 + 4.0 + 4.0 + 1.0) / 4.0) << w << "x" << h;
  }
}

TEST(BlockLoss, comparesTheFirstColumnOfARightRegionWithTheOneLeftOfIt) {
  // The side along row 272 is strong in columns 256 to 267, a run of 12; the one along column 256
  // is a run of 13.
  LumaFrame frame(512, 512);
  fill(frame, 256, 272, 11, 12, 200);
  EXPECT_EQ(blockLossOf(frame), 1.0 / 4.0);
  // Column 256 no longer differs from what lies left of it and above: 11 are left of row 272's run.
  fill(frame, 255, 271, 1, 13, 200);
  fill(frame, 256, 271, 1, 1, 200);
  EXPECT_EQ(blockLossOf(frame), 0.0);
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

TEST(BlockLoss, countsARunThatBeginsInRowOne_onlyIfRowZeroHasTheEdgeToo) {
  // A threshold of 6, of strengths 8 along a side and 4 at its ends. A rectangle from row 1 on has
  // a side of one row less than its height above the end of 4, and its top end in row 1.
  const auto fromRowOne = [](int height) {
    LumaFrame frame(256, 256, 100);
    fill(frame, 64, 1, 20, height, 102);
    fill(frame, 129, 64, 20, 5, 110);  // a run along row 64
    return withEnergy(frame, 65536);
  };
  EXPECT_EQ(blockLossOf(fromRowOne(12)), 0.0);
  EXPECT_EQ(blockLossOf(fromRowOne(13)), 1.0);
}

TEST(BlockLoss, comparesStrengthWithTheThresholdExactly) {
  // Strengths of 2 and 8, one of them along grid rows and the other along grid columns. 21845
  // make a threshold of 6 * 21845 / 65536, just below 2, and 21846 one just above.
  const auto edges = [](int alongRows, int alongColumns, int64_t energy) {
    LumaFrame frame(256, 256, 100);
    fill(frame, 65, 64, 20, 5, 100 + alongRows);
    fill(frame, 128, 129, 5, 20, 100 + alongColumns);
    return withEnergy(frame, energy);
  };
  for (auto [alongRows, alongColumns] : {std::pair{1, 1}, std::pair{1, 2}, std::pair{2, 1}}) {
    EXPECT_EQ(blockLossOf(edges(alongRows, alongColumns, 21845)), 1.0);
    EXPECT_EQ(blockLossOf(edges(alongRows, alongColumns, 21846)), 0.0);
  }
  EXPECT_EQ(blockLossOf(edges(2, 2, 21846)), 1.0);
}

TEST(BlockLoss, takesMeanOverWholeRows_howeverWide) {
  // A square of strength 800 in the left region of 128, and 50 lines of 130050 behind column 32768:
  // more than 100 * 254 of them among 32868 * 256 make a threshold above 6 * 390.
  LumaFrame frame = rectangle(32868, 256, 64, 64, 64, 64);
  for (uint8_t& sample : frame.samples) sample = sample == 0 ? 0 : 20;
  EXPECT_EQ(blockLossOf(frame), 4.0 / 128.0);
  for (int x = 32769; x < 32868; x += 2) fill(frame, x, 0, 1, 256, 255);
  EXPECT_EQ(blockLossOf(frame), 0.0);
}

TEST(BlockLoss, isZero_onWideFrameOfLines) {
  // 33200 squares of 255 in each direction are more than fit 31 bits.
  EXPECT_EQ(blockLossOf(frameOf(33201, 256, [](int x, int) { return x % 2 == 0 ? 0 : 255; })), 0.0);
}
