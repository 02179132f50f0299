// Contrast: sample standard deviation of a frame.
#include "indicators/contrastRMS.h"

#include <gtest/gtest.h>

#include <cmath>

#include "support/lumaFrames.h"

namespace {

double contrastOf(const LumaFrame& frame) {
  return measure(contrastRMS, frame, &FrameResults::contrast);
}

}  // namespace

TEST(Contrast, isZero_onFlatFrame) {
  // Exact for sides that are powers of 2: -1 / n has no rounding.
  for (int value : {0, 16, 128, 235, 255}) EXPECT_EQ(contrastOf(LumaFrame(64, 64, value)), 0.0);
}

TEST(Contrast, isZero_whereRoundingLeavesNothing) {
  EXPECT_EQ(contrastOf(LumaFrame(720, 576, 255)), 0.0);
  EXPECT_EQ(contrastOf(LumaFrame(352, 288, 128)), 0.0);
}

TEST(Contrast, isNaN_whereRoundingLeavesANegativeVariance) {
  // n = 352 * 288 = 101376, S = 255 n, Q = 255^2 n = 6591974400. The double nearest to -1 / n lies
  // a little (49 / (n * 2^69)) below it; times S it rounds to -255 - 2^-45, times S again to
  // -6591974400 - 2^-20, and with Q there remains -2^-20. Likewise for 235.
  EXPECT_TRUE(std::isnan(contrastOf(LumaFrame(352, 288, 255))));
  EXPECT_TRUE(std::isnan(contrastOf(LumaFrame(352, 288, 235))));
}

TEST(Contrast, isAbout180_onBlackAndWhiteSample) {
  // (65025 - 255^2 / 2) / 1.
  LumaFrame frame(2, 1);
  frame.at(1, 0) = 255;
  EXPECT_EQ(contrastOf(frame), std::sqrt(32512.5));
  EXPECT_NEAR(contrastOf(frame), 180.31, 0.005);
}

TEST(Contrast, dividesByOneLessThanTheSamples) {
  // (130050 - 510^2 / 4) / 3, not / 4 as for 127.5.
  LumaFrame frame(2, 2);
  fill(frame, 0, 1, 2, 1, 255);
  EXPECT_EQ(contrastOf(frame), std::sqrt(1.0 / 3.0 * 65025.0));
  EXPECT_NEAR(contrastOf(frame), 147.22, 0.005);
}

TEST(Contrast, isAbout127point5_onHalfBlackHalfWhite) {
  // 127.5 * sqrt(n / (n - 1)), n = 4096.
  EXPECT_NEAR(contrastOf(frameOf(64, 64, [](int x, int) { return x < 32 ? 0 : 255; })),
              127.5 * std::sqrt(4096.0 / 4095.0), 1e-9);
}

TEST(Contrast, isNaN_onSingleSample) {
  // 1 / 0 times 0.
  EXPECT_TRUE(std::isnan(contrastOf(LumaFrame(1, 1, 0))));
  EXPECT_TRUE(std::isnan(contrastOf(LumaFrame(1, 1, 255))));
}

TEST(Contrast, wrapsTheSumAt32Bits) {
  // n = 2^24 white samples: S = 255 * 2^24 wraps to -2^24, Q = 65025 * 2^24.
  // Q - S^2 / n = 65024 * 2^24.
  EXPECT_EQ(contrastOf(LumaFrame(4096, 4096, 255)),
            std::sqrt(1.0 / 16777215.0 * (65024.0 * 16777216.0)));
}

TEST(Contrast, writesOnlyItsField) {
  expectWritesOnly(contrastRMS, texture(64, 48), &FrameResults::contrast);
}

TEST(Contrast, returnsNull) {
  EXPECT_TRUE(returnsNull(contrastRMS, texture(64, 48)));
}
