// Conversion of any double to a 32-bit integer.
#include "indicators/truncateToInt32.h"

#include <gtest/gtest.h>

#include <cmath>

TEST(TruncateToInt32, goesTowardsZero) {
  EXPECT_EQ(truncateToInt32(0.0), 0);
  EXPECT_EQ(truncateToInt32(-0.99), 0);
  EXPECT_EQ(truncateToInt32(2.99), 2);
  EXPECT_EQ(truncateToInt32(-2.99), -2);
}

TEST(TruncateToInt32, keepsAllThatFits) {
  EXPECT_EQ(truncateToInt32(2147483647.0), INT32_MAX);
  EXPECT_EQ(truncateToInt32(std::nextafter(2147483648.0, 0.0)), INT32_MAX);
  EXPECT_EQ(truncateToInt32(-2147483648.0), INT32_MIN);
  EXPECT_EQ(truncateToInt32(std::nextafter(-2147483649.0, 0.0)), INT32_MIN);
}

TEST(TruncateToInt32, isTheSmallestInteger_ofAllElse) {
  const double outside[] = {2147483648.0,  2160000000.0,  1e300,  INFINITY,  NAN,
                            -2147483649.0, -2160000000.0, -1e300, -INFINITY, -NAN};
  for (const double value : outside) EXPECT_EQ(truncateToInt32(value), INT32_MIN) << value;
}
