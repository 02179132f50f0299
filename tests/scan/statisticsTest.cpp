// Statistics of small columns, computed by hand.
#include "scan/numbers/statistics.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numeric>

#include "support/specialValues.h"

TEST(Statistics, ofTheNumbersUpToAHundred) {
  std::vector<double> values(101);
  std::iota(values.rbegin(), values.rend(), 0.0);
  const Statistics statistics = statisticsOf(values);
  EXPECT_EQ(statistics.n, 101);
  EXPECT_EQ(statistics.min, 0.0);
  EXPECT_EQ(statistics.max, 100.0);
  EXPECT_EQ(statistics.mean, 50.0);
  // The mean of k^2 for k from 1 to 50, twice, over 101: 2 * 42925 / 101 = 850.
  EXPECT_DOUBLE_EQ(statistics.stdev, std::sqrt(850.0));
  EXPECT_EQ(statistics.p1, 1.0);
  EXPECT_EQ(statistics.p5, 5.0);
  EXPECT_EQ(statistics.p50, 50.0);
  EXPECT_EQ(statistics.p95, 95.0);
  EXPECT_EQ(statistics.p99, 99.0);
}

TEST(Statistics, percentilesLieBetweenValuesInProportion) {
  const Statistics statistics = statisticsOf({10.0, 20.0});
  EXPECT_DOUBLE_EQ(statistics.p1, 10.1);
  EXPECT_DOUBLE_EQ(statistics.p5, 10.5);
  EXPECT_DOUBLE_EQ(statistics.p50, 15.0);
  EXPECT_DOUBLE_EQ(statistics.p95, 19.5);
  EXPECT_DOUBLE_EQ(statistics.p99, 19.9);
  EXPECT_DOUBLE_EQ(statistics.stdev, 5.0);
}

TEST(Statistics, ofOneValueAreThatValue) {
  const Statistics statistics = statisticsOf({-3.5});
  EXPECT_EQ(statistics.n, 1);
  for (const double value : {statistics.min, statistics.max, statistics.mean, statistics.p1,
                             statistics.p50, statistics.p99}) {
    EXPECT_EQ(value, -3.5);
  }
  EXPECT_EQ(statistics.stdev, 0.0);
}

TEST(Statistics, leaveOutWhatIsNotFinite) {
  const Statistics statistics = statisticsOf({std::nan(""), 1.0, INF, 3.0, -INF, -std::nan("")});
  EXPECT_EQ(statistics.n, 2);
  EXPECT_EQ(statistics.min, 1.0);
  EXPECT_EQ(statistics.max, 3.0);
  EXPECT_EQ(statistics.mean, 2.0);
}

TEST(Statistics, areUnknownOfNoValues) {
  for (const Statistics& statistics : {statisticsOf({}), statisticsOf({std::nan("")})}) {
    EXPECT_EQ(statistics.n, 0);
    for (const double value :
         {statistics.min, statistics.max, statistics.mean, statistics.stdev, statistics.p1,
          statistics.p5, statistics.p50, statistics.p95, statistics.p99}) {
      EXPECT_TRUE(std::isnan(value));
    }
  }
}
