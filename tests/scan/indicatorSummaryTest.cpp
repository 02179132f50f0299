// What is said of an indicator over a whole file, against means computed by hand.
#include "scan/analysis/indicatorSummary.h"

#include <gtest/gtest.h>

#include <cmath>

#include "scan/tables.h"
#include "support/specialValues.h"

namespace {

std::vector<double> overviewOfBlur(const std::vector<double>& values) {
  return summarise(tableOf("blur", values))[indicatorNamed("blur")].overview;
}

}  // namespace

TEST(IndicatorSummary, hasMeansOfSixtyFourStretchesThatMeet) {
  std::vector<double> values(130);
  for (size_t i = 0; i < values.size(); ++i) values[i] = static_cast<double>(i * i);
  const std::vector<double> overview = overviewOfBlur(values);
  ASSERT_EQ(overview.size(), 64);
  // 130 / 64 = 2.03: every stretch has two frames, but those in which a 32nd frame too many has
  // come together, which end with frames 64 and 129.
  EXPECT_EQ(overview[0], (0.0 + 1.0) / 2);
  EXPECT_EQ(overview[1], (4.0 + 9.0) / 2);
  EXPECT_EQ(overview[30], (60.0 * 60 + 61 * 61) / 2);
  EXPECT_EQ(overview[31], (62.0 * 62 + 63 * 63 + 64 * 64) / 3);
  EXPECT_EQ(overview[32], (65.0 * 65 + 66 * 66) / 2);
  EXPECT_EQ(overview[63], (127.0 * 127 + 128 * 128 + 129 * 129) / 3);
}

TEST(IndicatorSummary, hasTheValuesOfFewFrames_withoutThoseThatAreUndefined) {
  const std::vector<double> overview = overviewOfBlur({5.0, UNDEFINED, -7.0});
  ASSERT_EQ(overview.size(), 3);
  EXPECT_EQ(overview[0], 5.0);
  EXPECT_TRUE(std::isnan(overview[1]));
  EXPECT_EQ(overview[2], -7.0);

  std::vector<double> pairs(128, UNDEFINED);
  pairs[3] = 4.0;  // the second stretch's second
  const std::vector<double> ofPairs = overviewOfBlur(pairs);
  ASSERT_EQ(ofPairs.size(), 64);
  EXPECT_TRUE(std::isnan(ofPairs[0]));
  EXPECT_EQ(ofPairs[1], 4.0);
}

TEST(MeasureStatistics, areThoseOfEachColumn) {
  FrameTable table = emptyTable(4);
  for (size_t i = 0; i < MEASURES; ++i) {
    table.measures[i] = std::vector<double>(4, static_cast<double>(i));
  }
  // Mean 4, deviations -3, -1, 0 and 4: their squares are 26 in all.
  table.measures[HELD_LINES] = std::vector<double>{1.0, 8.0, 3.0, 4.0};
  table.measures[BRIGHTNESS] = std::vector<double>(4, UNDEFINED);
  table.measures[GRID_EDGES] = std::vector<double>{UNDEFINED, 0.5, UNDEFINED, 0.25};
  int steps = 0;
  const MeasureStatistics statistics = measureStatistics(table, [&] { ++steps; });
  EXPECT_EQ(steps, MEASURES);
  const Statistics& held = statistics[HELD_LINES];
  EXPECT_EQ(held.n, 4);
  EXPECT_EQ(held.min, 1.0);
  EXPECT_EQ(held.max, 8.0);
  EXPECT_EQ(held.mean, 4.0);
  EXPECT_EQ(held.stdev, std::sqrt(26.0 / 4));
  EXPECT_EQ(held.p50, 3.5);
  const Statistics& edges = statistics[GRID_EDGES];
  EXPECT_EQ(edges.n, 2);
  EXPECT_EQ(edges.mean, 0.375);
  for (const size_t i : {LOW_LEVEL, MIDDLE_LEVEL, BAR_RIGHT, UNCHANGED_BLOCKS, LINE_STEP}) {
    EXPECT_EQ(statistics[i].n, 4) << i;
    EXPECT_EQ(statistics[i].mean, i) << i;
  }
  // Without values there is nothing to say.
  EXPECT_EQ(statistics[BRIGHTNESS].n, 0);
  EXPECT_TRUE(std::isnan(statistics[BRIGHTNESS].mean));
}
