// Numbers as decimals.
#include "scan/numbers/decimals.h"

#include <gtest/gtest.h>

#include <cmath>

#include "support/specialValues.h"

TEST(ShortestText, hasNoMoreDigitsThanItTakes) {
  EXPECT_EQ(shortestText(0.1), "0.1");
  EXPECT_EQ(shortestText(0.04), "0.04");
  EXPECT_EQ(shortestText(25.0), "25");
  EXPECT_EQ(shortestText(-1.5), "-1.5");
  EXPECT_EQ(shortestText(0.0), "0");
  // The next number above 0.3, and a third, take all of their digits.
  EXPECT_EQ(shortestText(0.1 + 0.2), "0.30000000000000004");
  EXPECT_EQ(shortestText(1.0 / 3.0), "0.3333333333333333");
  EXPECT_EQ(shortestText(1e300), "1e+300");
}

TEST(ShortestText, isEmptyOfNaNAlone) {
  EXPECT_EQ(shortestText(std::nan("")), "");
  EXPECT_EQ(shortestText(-std::nan("")), "");
  EXPECT_EQ(shortestText(INF), "inf");
}

TEST(WholeNanoseconds, takeAwayWhatFloatingPointAdds) {
  EXPECT_EQ(wholeNanoseconds(0.1 + 0.2), 0.3);
  EXPECT_EQ(wholeNanoseconds(3.3 - 3.0), 0.3);
  EXPECT_EQ(wholeNanoseconds(-0.3 + 0.1), -0.2);
  EXPECT_EQ(wholeNanoseconds(1.0 / 3.0), 0.333333333);
  EXPECT_EQ(wholeNanoseconds(4e-10), 0.0);
  EXPECT_TRUE(std::isnan(wholeNanoseconds(std::nan(""))));
}
