// Still pictures of tracks, whose points are computed by hand.
#include "scan/report/trackSvg.h"

#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>
#include <numeric>

#include "support/specialValues.h"

namespace {

// One frame per column: column k at time k.
std::string pathOf(const std::vector<double>& values, bool isBridged = false) {
  std::vector<double> times(values.size());
  std::iota(times.begin(), times.end(), 0.0);
  return envelopePath(times, values, {0.0, SVG_COLUMNS - 1}, {0.0, 1.0}, isBridged);
}

void expectRange(const ValueRange& range, double low, double high) {
  EXPECT_EQ(range.low, low);
  EXPECT_EQ(range.high, high);
}

}  // namespace

TEST(EnvelopePath, goesFromFrameToFrame) {
  EXPECT_EQ(pathOf({0.0, 1.0, 0.25}), "M0 100.0h1L1 0.0L2 75.0");
  EXPECT_EQ(pathOf({}), "");
}

TEST(EnvelopePath, isInterruptedWhereValuesAreUndefined) {
  EXPECT_EQ(pathOf({UNDEFINED, 1.0, UNDEFINED, 0.5}), "M1 0.0h1M3 50.0h1");
  EXPECT_EQ(pathOf({UNDEFINED, 1.0, UNDEFINED, 0.5}, true), "M1 0.0h1L3 50.0");
  EXPECT_EQ(pathOf({UNDEFINED, UNDEFINED}), "");
}

TEST(EnvelopePath, touchesBothExtremesOfAColumn) {
  // Six frames in column 0, whose highest comes before the lowest; then one in the last column.
  const std::vector<double> times = {0.0, 0.1, 0.2, 0.3, 0.4, 0.45, 599.0};
  EXPECT_EQ(
      envelopePath(times, {0.5, 0.9, 0.6, 0.1, 0.2, 0.3, 1.0}, {0.0, 599.0}, {0.0, 1.0}, false),
      "M0 10.0L0 90.0L599 0.0");
  // And the other way round.
  EXPECT_EQ(
      envelopePath(times, {0.5, 0.1, 0.6, 0.9, 0.2, 0.3, 1.0}, {0.0, 599.0}, {0.0, 1.0}, false),
      "M0 90.0L0 10.0L599 0.0");
}

TEST(EnvelopePath, staysShortHoweverManyFramesThereAre) {
  std::vector<double> values(100000);
  for (size_t i = 0; i < values.size(); ++i) values[i] = i % 7 == 0 ? 0.0 : 1.0;
  std::vector<double> times(values.size());
  std::iota(times.begin(), times.end(), 0.0);
  const std::string path = envelopePath(times, values, {0.0, 1e5}, {0.0, 1.0}, false);
  EXPECT_EQ(std::count(path.begin(), path.end(), 'L'), 2 * SVG_COLUMNS - 1);
}

TEST(ShownRange, isThatOfTheValues) {
  expectRange(shownRange(2.0, 5.0, {}), 2.0, 5.0);
  expectRange(shownRange(UNDEFINED, UNDEFINED, {3.0}), 0.0, 1.0);
}

TEST(ShownRange, reachesToThresholdsThatAreNear) {
  expectRange(shownRange(2.0, 5.0, {17.0}), 2.0, 17.0);  // 5 + 4 * 3
  expectRange(shownRange(2.0, 5.0, {17.1}), 2.0, 5.0);
  expectRange(shownRange(2.0, 5.0, {-10.0}), -10.0, 5.0);
  expectRange(shownRange(2.0, 5.0, {-10.1, UNDEFINED}), 2.0, 5.0);
}

TEST(ShownRange, isNeverEmpty) {
  expectRange(shownRange(0.0, 0.0, {}), 0.0, 1.0);
  expectRange(shownRange(4.0, 4.0, {}), 2.0, 6.0);
  expectRange(shownRange(-4.0, -4.0, {}), -6.0, -2.0);
}

TEST(SvgHeight, isWithinThePicture) {
  EXPECT_EQ(svgHeightOf(0.0, {0.0, 4.0}), SVG_HEIGHT);
  EXPECT_EQ(svgHeightOf(1.0, {0.0, 4.0}), 0.75 * SVG_HEIGHT);
  EXPECT_EQ(svgHeightOf(5.0, {0.0, 4.0}), 0.0);
  EXPECT_EQ(svgHeightOf(0.0, {-DBL_MAX, DBL_MAX}), 0.5 * SVG_HEIGHT);
}
