// Temporal activity: root mean square difference of two frames.
#include "indicators/temporalActivity.h"

#include <gtest/gtest.h>

#include <cmath>
#include <utility>

#include "support/lumaFrames.h"

namespace {

double actOf(LumaFrame current, LumaFrame previous) {
  const Image now = current.view();
  const Image before = previous.view();
  return temporalAct(&now, &before);
}

double activityOf(LumaFrame current, LumaFrame previous) {
  const Image now = current.view();
  const Image before = previous.view();
  return temporalActivity(&now, &before);
}

}  // namespace

TEST(TemporalActivity, isZero_onEqualFrames) {
  EXPECT_EQ(activityOf(texture(64, 48), texture(64, 48)), 0.0);
}

TEST(TemporalActivity, isTheStep_ofUniformFrames) {
  // 256 samples: sqrt(256 * 9) / sqrt(256) = 48 / 16, in either direction.
  EXPECT_EQ(activityOf(LumaFrame(16, 16, 10), LumaFrame(16, 16, 13)), 3.0);
  EXPECT_EQ(activityOf(LumaFrame(16, 16, 13), LumaFrame(16, 16, 10)), 3.0);
}

TEST(TemporalActivity, isRootMeanSquare_onOneChangedSample) {
  // sqrt(16) / 2.
  LumaFrame previous(2, 2, 10);
  previous.at(1, 1) = 14;
  EXPECT_EQ(activityOf(LumaFrame(2, 2, 10), previous), 2.0);
}

TEST(TemporalActivity, is255_fromBlackToWhite) {
  // 2^18 squares of 65025 exceed 32 bits: sqrt is 255 * 512.
  EXPECT_EQ(activityOf(LumaFrame(512, 512, 255), LumaFrame(512, 512, 0)), 255.0);
  EXPECT_EQ(activityOf(LumaFrame(512, 512, 0), LumaFrame(512, 512, 255)), 255.0);
}

TEST(TemporalActivity, isNaN_onEmptyFrames) {
  // 0 / 0.
  for (auto [w, h] : {std::pair{0, 0}, {0, 5}, {5, 0}}) {
    EXPECT_TRUE(std::isnan(activityOf(LumaFrame(w, h), LumaFrame(w, h)))) << w << "x" << h;
  }
}

TEST(TemporalActivity, leavesFramesAlone) {
  LumaFrame current = texture(8, 6);
  LumaFrame previous(8, 6, 50);
  const Image now = current.view();
  const Image before = previous.view();
  temporalActivity(&now, &before);
  EXPECT_EQ(current.samples, texture(8, 6).samples);
  EXPECT_EQ(previous.samples, LumaFrame(8, 6, 50).samples);
}

TEST(TemporalAct, isRootOfSummedSquares) {
  // Differences 3, -4 and 12.
  LumaFrame current(4, 1, 100);
  LumaFrame previous(4, 1, 100);
  current.samples = {103, 96, 100, 112};
  EXPECT_EQ(actOf(current, previous), 13.0);
}

TEST(TemporalAct, isZero_onEmptyFrames) {
  EXPECT_EQ(actOf(LumaFrame(0, 0), LumaFrame(0, 0)), 0.0);
  EXPECT_EQ(actOf(LumaFrame(0, 5), LumaFrame(0, 5)), 0.0);
}

TEST(TemporalAct, takesTheSizeOfTheCurrentFrame) {
  // All four samples are compared, whatever the shape of the previous record.
  LumaFrame current(2, 2, 10);
  LumaFrame previous(2, 2, 13);
  const Image now = current.view();
  for (auto [w, h] : {std::pair{1, 1}, {4, 1}, {0, 0}}) {
    const Image before{static_cast<uint64_t>(w), static_cast<uint64_t>(h), previous.samples.data()};
    EXPECT_EQ(temporalAct(&now, &before), 6.0) << w << "x" << h;
    EXPECT_EQ(temporalActivity(&now, &before), 3.0) << w << "x" << h;
  }
}
