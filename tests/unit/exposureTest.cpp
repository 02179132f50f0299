// Exposure: mean of the 4 darkest and the 4 brightest 8 x 8 blocks.
#include "indicators/exposure.h"

#include <gtest/gtest.h>

#include <utility>

#include "support/lumaFrames.h"

namespace {

double exposureOf(const LumaFrame& frame) {
  return measure(exposure, frame, &FrameResults::exposure);
}

}  // namespace

TEST(Exposure, is127point5_onASideOf8) {
  // No block is visited: (4 * 16320 + 4 * 0) / 512.
  for (auto [w, h] : {std::pair{8, 8}, {8, 64}, {64, 8}}) {
    EXPECT_EQ(exposureOf(texture(w, h)), 127.5) << w << "x" << h;
  }
}

TEST(Exposure, is127point5_onASideBelow8) {
  for (auto [w, h] : {std::pair{7, 7}, {7, 64}, {64, 7}, {1, 1}, {8, 1}}) {
    EXPECT_EQ(exposureOf(texture(w, h)), 127.5) << w << "x" << h;
  }
}

TEST(Exposure, is95point625_onBlack16x16) {
  // One block, of sum 0, in both lists: (0 + 3 * 16320 + 0) / 512.
  EXPECT_EQ(exposureOf(LumaFrame(16, 16)), 95.625);
}

TEST(Exposure, keepsUnfilledEntries_withOneBlock) {
  // (S + 3 * 16320 + S) / 512, whatever lies right of the block and below it.
  for (auto [value, sum] : {std::pair{10, 640.0}, {200, 12800.0}, {255, 16320.0}}) {
    LumaFrame frame = texture(16, 16);
    fill(frame, 0, 0, 8, 8, value);
    EXPECT_EQ(exposureOf(frame), (sum + 48960.0 + sum) / 512.0) << value;
  }
}

TEST(Exposure, addsAllSamplesOfABlock) {
  // Sums 0 but for one sample of 1, at each of the 64 places: (1 + 48960 + 1) / 512.
  for (int position = 0; position < 64; ++position) {
    LumaFrame frame(16, 16);
    frame.at(position % 8, position / 8) = 1;
    EXPECT_EQ(exposureOf(frame), 48962.0 / 512.0) << position;
  }
}

TEST(Exposure, keepsUnfilledEntries_withThreeBlocks) {
  // 16 x 32 has blocks of 10, 20 and 30, sums 640 + 1280 + 1920: (3840 + 3840 + 16320) / 512.
  EXPECT_EQ(exposureOf(frameOf(16, 32, [](int, int y) { return 10 * (y / 8 + 1); })), 46.875);
}

TEST(Exposure, isMeanOfAllFourBlocks_in24x24) {
  // 10, 20, 30 and 40, each in both lists.
  EXPECT_EQ(exposureOf(frameOf(24, 24, [](int x, int y) { return 10 * (x / 8 + y / 8 * 2 + 1); })),
            25.0);
}

TEST(Exposure, isTheLevel_ofUniformFrame) {
  for (int value : {0, 1, 100, 254, 255}) {
    EXPECT_EQ(exposureOf(LumaFrame(24, 24, value)), value);
    EXPECT_EQ(exposureOf(LumaFrame(100, 60, value)), value);
  }
}

TEST(Exposure, leavesOutLastBlockColumnAndRow) {
  LumaFrame frame(40, 48, 60);
  fill(frame, 32, 0, 8, 48, 255);
  fill(frame, 0, 40, 40, 8, 0);
  EXPECT_EQ(exposureOf(frame), 60.0);
}

TEST(Exposure, visitsLastWholeBlock_whereSamplesFollowIt) {
  // 25 columns or rows: the third block ends one before the border. Blocks of 10, 20 and 30 and
  // one unfilled entry each.
  EXPECT_EQ(exposureOf(frameOf(25, 16, [](int x, int) { return 10 * (x / 8 + 1); })), 46.875);
  EXPECT_EQ(exposureOf(frameOf(16, 25, [](int, int y) { return 10 * (y / 8 + 1); })), 46.875);
  // 24: only two, 640 + 1280 in each list: (1920 + 1920 + 2 * 16320) / 512.
  EXPECT_EQ(exposureOf(frameOf(24, 16, [](int x, int) { return 10 * (x / 8 + 1); })), 71.25);
}

TEST(Exposure, leavesOutPartialBlocks) {
  LumaFrame frame(47, 31, 60);
  fill(frame, 40, 0, 7, 31, 255);
  fill(frame, 0, 24, 47, 7, 0);
  EXPECT_EQ(exposureOf(frame), 60.0);
}

TEST(Exposure, takesFourDarkestAndFourBrightest_ofMany) {
  // 7 x 2 visited blocks hold 0, 10, ... 130 once each, in mixed order: 0 to 30 and 100 to 130 have
  // the mean (60 + 460) / 8.
  for (int stride : {1, 3, 5, 9, 11, 13}) {
    const LumaFrame frame =
        frameOf(64, 24, [stride](int x, int y) { return (x / 8 + y / 8 * 7) * stride % 14 * 10; });
    EXPECT_EQ(exposureOf(frame), 65.0) << stride;
  }
}

TEST(Exposure, countsEqualBlocksEachForItself) {
  // Of 14 blocks, 3 hold 20 and 4 hold 200, the others 90: darkest 20, 20, 20, 90; brightest 200
  // four times: (150 + 800) / 8.
  const LumaFrame frame = frameOf(64, 24, [](int x, int y) {
    const int block = x / 8 + y / 8 * 7;
    return block % 5 == 1 ? 20 : block % 3 == 0 ? 200 : 90;
  });
  EXPECT_EQ(exposureOf(frame), 118.75);
}

TEST(Exposure, writesOnlyItsField) {
  expectWritesOnly(exposure, texture(40, 32), &FrameResults::exposure);
}

TEST(Exposure, returnsNull) {
  EXPECT_TRUE(returnsNull(exposure, texture(40, 32)));
  EXPECT_TRUE(returnsNull(exposure, texture(8, 8)));
}
