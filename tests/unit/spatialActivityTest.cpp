// Spatial activity: root mean square of the Sobel gradient.
#include "indicators/spatialActivity.h"

#include <gtest/gtest.h>

#include <cmath>
#include <utility>

#include "support/lumaFrames.h"

namespace {

double activityOf(const LumaFrame& frame) {
  return measure(spatialActivity, frame, &FrameResults::spatialActivity);
}

double actOf(LumaFrame frame) {
  const Image luma = frame.view();
  return spatialAct(&luma);
}

// 3 x 3 with left column 0 and right column 255.
LumaFrame smallStep(int middle) {
  return frameOf(3, 3, [middle](int x, int) { return x == 0 ? 0 : x == 1 ? middle : 255; });
}

}  // namespace

TEST(SpatialActivity, isZero_onFlatFrame) {
  for (int value : {0, 128, 255}) EXPECT_EQ(activityOf(LumaFrame(20, 10, value)), 0.0);
}

TEST(SpatialActivity, is340_on3x3Step) {
  // Gx = 255 * (1 + 2 + 1) = 1020, Gy = 0; 1020 / sqrt(9). The middle column has no weight.
  for (int middle : {0, 99, 255}) EXPECT_EQ(activityOf(smallStep(middle)), 340.0);
}

TEST(SpatialActivity, isZero_onSidesOf1Or2) {
  for (auto [w, h] : {std::pair{1, 1}, {2, 2}, {1, 9}, {9, 1}, {2, 9}, {9, 2}, {2, 3}, {3, 2}}) {
    EXPECT_EQ(activityOf(texture(w, h)), 0.0) << w << "x" << h;
    EXPECT_EQ(actOf(texture(w, h)), 0.0) << w << "x" << h;
  }
}

TEST(SpatialActivity, countsTwoColumnsPerRow_onVerticalStep) {
  // 10 x 8: columns 4 and 5 of the 6 inner rows see 1020, and all 80 samples divide.
  const LumaFrame frame = frameOf(10, 8, [](int x, int) { return x < 5 ? 0 : 255; });
  EXPECT_EQ(activityOf(frame), std::sqrt(2.0 * 6.0 * 1040400.0) / std::sqrt(80.0));
}

TEST(SpatialActivity, countsTwoRowsPerColumn_onHorizontalStep) {
  // 10 x 8: rows 3 and 4 of the 8 inner columns.
  const LumaFrame frame = frameOf(10, 8, [](int, int y) { return y < 4 ? 255 : 0; });
  EXPECT_EQ(activityOf(frame), std::sqrt(2.0 * 8.0 * 1040400.0) / std::sqrt(80.0));
}

TEST(SpatialActivity, writesOnlyItsField) {
  expectWritesOnly(spatialActivity, texture(20, 10), &FrameResults::spatialActivity);
}

TEST(SpatialActivity, returnsNull) {
  EXPECT_TRUE(returnsNull(spatialActivity, texture(20, 10)));
}

TEST(SpatialAct, is1020_on3x3Step) {
  EXPECT_EQ(actOf(smallStep(0)), 1020.0);
}

TEST(SpatialAct, weighsNeighboursOfASinglePoint) {
  // A point of 3 seen from its neighbours: the 4 diagonal ones have |Gx| = |Gy| = 3, the 4 direct
  // ones a single gradient of 6, the point itself none: 4 * 18 + 4 * 36 = 216.
  LumaFrame frame(5, 5, 10);
  frame.at(2, 2) = 13;
  EXPECT_EQ(actOf(frame), std::sqrt(216.0));
}

TEST(SpatialAct, usesBorderSamplesAsNeighboursOnly) {
  // A point of 3 in the corner is seen by (1, 1) alone: 9 + 9.
  LumaFrame frame(5, 5, 10);
  frame.at(0, 0) = 13;
  EXPECT_EQ(actOf(frame), std::sqrt(18.0));
}

TEST(SpatialAct, addsBothGradientsSquared) {
  // p = 10 x + 20 y: Gx = 4 * 20, Gy = 4 * 40 at each of the 2 inner samples.
  EXPECT_EQ(actOf(frameOf(4, 3, [](int x, int y) { return 10 * x + 20 * y; })),
            std::sqrt(2.0 * (6400.0 + 25600.0)));
}
