// Freezing: runs of still frames.
#include "indicators/freezing.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "support/specialValues.h"

namespace {

// Flags of a stream of frames without blackout, after a run of length 0.
std::vector<bool> flagsOf(const std::vector<double>& activities, double fps) {
  freezing(1, 0.0, 25.0);
  std::vector<bool> flags;
  flags.reserve(activities.size());
  for (const double activity : activities) flags.push_back(freezing(0, activity, fps));
  return flags;
}

using Flags = std::vector<bool>;

}  // namespace

TEST(Freezing, startsWithTheThirdStillFrame_at25Fps) {
  // 3 >= 2.5. It lasts until a frame moves, and the run starts anew after it.
  EXPECT_EQ(flagsOf({0.5, 0.5, 0.5, 0.5, 2.0, 0.0}, 25.0),
            (Flags{false, false, true, true, false, false}));
  EXPECT_EQ(flagsOf({0.0, 0.0, 2.0, 0.0, 0.0, 0.0}, 25.0),
            (Flags{false, false, false, false, false, true}));
}

TEST(Freezing, needsATenthOfASecond) {
  // Thresholds 3 (met exactly), 5 (met exactly), 1, 2.4, 6 and 0.5.
  EXPECT_EQ(flagsOf({0, 0, 0, 0}, 30.0), (Flags{false, false, true, true}));
  EXPECT_EQ(flagsOf({0, 0, 0, 0, 0, 0}, 50.0), (Flags{false, false, false, false, true, true}));
  EXPECT_EQ(flagsOf({0, 2, 0}, 10.0), (Flags{true, false, true}));
  EXPECT_EQ(flagsOf({0, 0, 0}, 24.0), (Flags{false, false, true}));
  EXPECT_EQ(flagsOf({0, 0, 0, 0, 0, 0}, 60.0), (Flags{false, false, false, false, false, true}));
  EXPECT_EQ(flagsOf({2, 0}, 5.0), (Flags{false, true}));
}

TEST(Freezing, countsActivityOfExactlyOneAsStill) {
  EXPECT_EQ(flagsOf({1.0, 1.0, 1.0}, 25.0), (Flags{false, false, true}));
}

TEST(Freezing, countsActivityJustAboveOneAsMotion) {
  EXPECT_EQ(flagsOf({0.0, 0.0, std::nextafter(1.0, 2.0)}, 25.0), (Flags{false, false, false}));
}

TEST(Freezing, startsAnewAfterABlackout) {
  // Whatever the flag's value, and though nothing moves.
  for (int32_t flag : {1, 2, -1, std::numeric_limits<int32_t>::min()}) {
    flagsOf({0.0, 0.0, 0.0}, 25.0);
    EXPECT_FALSE(freezing(flag, 0.0, 25.0)) << flag;
    EXPECT_FALSE(freezing(0, 0.0, 25.0)) << flag;
    EXPECT_FALSE(freezing(0, 0.0, 25.0)) << flag;
    EXPECT_TRUE(freezing(0, 0.0, 25.0)) << flag;
  }
}

TEST(Freezing, startsAnewAfterNaNActivity) {
  EXPECT_EQ(flagsOf({0.0, 0.0, 0.0, std::nan(""), 0.0, 0.0, 0.0}, 25.0),
            (Flags{false, false, true, false, false, false, true}));
}

TEST(Freezing, startsAnewAfterInfiniteActivity) {
  EXPECT_EQ(flagsOf({0.0, 0.0, INF, 0.0}, 25.0), (Flags{false, false, false, false}));
}

TEST(Freezing, isAlwaysSet_atFpsOfZeroOrBelow) {
  // 0 >= 0 right after a reset.
  for (const double fps : {0.0, -0.0, -25.0, -INF}) {
    EXPECT_EQ(flagsOf({0.0, 2.0, std::nan(""), 0.0}, fps), (Flags{true, true, true, true})) << fps;
    EXPECT_TRUE(freezing(1, 0.0, fps)) << fps;
  }
}

TEST(Freezing, isNeverSet_atFpsNaNOrInfinite) {
  for (const double fps : {std::nan(""), INF}) {
    EXPECT_EQ(flagsOf({0.0, 0.0, 0.0, 0.0}, fps), (Flags{false, false, false, false})) << fps;
  }
}

TEST(Freezing, countsTheRunWhateverTheFps) {
  // Two still frames seen at other rates, the third completes the run at 25.
  freezing(1, 0.0, 25.0);
  EXPECT_FALSE(freezing(0, 0.0, 1000.0));
  EXPECT_TRUE(freezing(0, 0.0, 0.0));
  EXPECT_TRUE(freezing(0, 0.0, 25.0));
}
