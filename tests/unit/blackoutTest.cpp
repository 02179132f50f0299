// Blackout: frames of blocks with nearly equal means.
#include "indicators/blackout.h"

#include <gtest/gtest.h>

#include <csignal>
#include <limits>
#include <utility>
#include <vector>

#include "support/lumaFrames.h"

namespace {

int blackoutOf(const LumaFrame& frame) {
  return measure(blackout, frame, &FrameResults::blackout);
}

std::pair<int32_t, int32_t> minmaxOf(const std::vector<int32_t>& values) {
  int32_t min = -77;
  int32_t max = -77;
  minmax(values.data(), values.size(), &min, &max);
  return {min, max};
}

using MinMax = std::pair<int32_t, int32_t>;

}  // namespace

TEST(Blackout, isSet_onFlatFrame) {
  for (int value : {0, 1, 128, 255}) EXPECT_EQ(blackoutOf(LumaFrame(64, 48, value)), 1) << value;
}

TEST(Blackout, isClear_withOneBlock4LevelsBrighter) {
  // Spread 4.0, not below it.
  LumaFrame frame(64, 48, 100);
  fill(frame, 24, 16, 8, 8, 104);
  EXPECT_EQ(blackoutOf(frame), 0);
}

TEST(Blackout, isSet_withOneBlock3LevelsBrighter) {
  LumaFrame frame(64, 48, 100);
  fill(frame, 24, 16, 8, 8, 103);
  EXPECT_EQ(blackoutOf(frame), 1);
}

TEST(Blackout, isSet_upToATotalDifferenceOf255) {
  // 63 samples 4 brighter and one 3: spread 255 / 64 = 3.984375.
  for (int sign : {1, -1}) {
    LumaFrame frame(64, 48, 100);
    fill(frame, 56, 40, 8, 8, 100 + 4 * sign);
    EXPECT_EQ(blackoutOf(frame), 0) << sign;
    frame.at(63, 47) = static_cast<uint8_t>(100 + 3 * sign);
    EXPECT_EQ(blackoutOf(frame), 1) << sign;
  }
}

TEST(Blackout, comparesBrightestWithDarkestBlock) {
  // Levels 100, 102 and 104: neighbours differ by 2, the outer ones by 4.
  EXPECT_EQ(blackoutOf(frameOf(24, 8, [](int x, int) { return 100 + x / 8 * 2; })), 0);
  EXPECT_EQ(blackoutOf(frameOf(24, 8, [](int x, int) { return 104 - x / 8 * 2; })), 0);
  EXPECT_EQ(blackoutOf(frameOf(16, 8, [](int x, int) { return 100 + x / 8 * 2; })), 1);
}

TEST(Blackout, isSet_onDetailThatEveryBlockHas) {
  EXPECT_EQ(blackoutOf(frameOf(64, 48, [](int x, int y) { return (x + y) % 2 * 255; })), 1);
}

TEST(Blackout, isSet_onASingleBlock) {
  EXPECT_EQ(blackoutOf(texture(15, 15)), 1);
}

TEST(Blackout, doesNotSeePartialBlocks) {
  LumaFrame right(71, 48);
  fill(right, 64, 0, 7, 48, 255);
  EXPECT_EQ(blackoutOf(right), 1);
  LumaFrame bottom(64, 55);
  fill(bottom, 0, 48, 64, 7, 255);
  EXPECT_EQ(blackoutOf(bottom), 1);
}

TEST(Blackout, seesLastWholeBlocks) {
  LumaFrame frame(71, 55);
  fill(frame, 56, 40, 8, 8, 255);
  EXPECT_EQ(blackoutOf(frame), 0);
}

TEST(Blackout, writesOnlyItsField) {
  expectWritesOnly(blackout, texture(64, 48), &FrameResults::blackout);
}

TEST(Blackout, returnsNull) {
  EXPECT_TRUE(returnsNull(blackout, texture(64, 48)));
}

TEST(BlackoutDeathTest, aborts_withoutAWholeBlock) {
  testing::GTEST_FLAG(death_test_style) = "threadsafe";
  const char* report = "blackout:49: minmax: Assertion `size > 0' failed\\.\n";
  for (auto [w, h] : {std::pair{4, 64}, {64, 7}, {7, 7}}) {
    Image luma{static_cast<uint64_t>(w), static_cast<uint64_t>(h), nullptr};
    LumaFrame frame(w, h);
    luma.data = frame.samples.data();
    EXPECT_EXIT(blackout(&luma), testing::KilledBySignal(SIGABRT), report);
  }
}

TEST(MinMaxDeathTest, aborts_withoutValues) {
  testing::GTEST_FLAG(death_test_style) = "threadsafe";
  EXPECT_EXIT(minmaxOf({}), testing::KilledBySignal(SIGABRT),
              "blackout:49: minmax: Assertion `size > 0' failed\\.\n");
}

TEST(MinMax, isTheValue_onOneValue) {
  EXPECT_EQ(minmaxOf({-5}), MinMax(-5, -5));
}

TEST(MinMax, findsExtremes_whereverTheyAre) {
  EXPECT_EQ(minmaxOf({1, 2, 3}), MinMax(1, 3));
  EXPECT_EQ(minmaxOf({3, 2, 1}), MinMax(1, 3));
  EXPECT_EQ(minmaxOf({2, 3, 1}), MinMax(1, 3));
  EXPECT_EQ(minmaxOf({2, 1, 3}), MinMax(1, 3));
  EXPECT_EQ(minmaxOf({4, 4, 4}), MinMax(4, 4));
}

TEST(MinMax, comparesSigned) {
  const int32_t lowest = std::numeric_limits<int32_t>::min();
  const int32_t highest = std::numeric_limits<int32_t>::max();
  EXPECT_EQ(minmaxOf({0, lowest, -1, highest, 1}), MinMax(lowest, highest));
}

TEST(MinMax, readsAsManyValuesAsToldTo) {
  const std::vector<int32_t> values{5, 6, -100, 100};
  int32_t min = 0;
  int32_t max = 0;
  minmax(values.data(), 2, &min, &max);
  EXPECT_EQ(min, 5);
  EXPECT_EQ(max, 6);
}
