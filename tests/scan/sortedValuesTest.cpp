// Places of sorted columns, held against columns that are really sorted.
#include "scan/numbers/sortedValues.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <random>

#include "support/specialValues.h"

namespace {

constexpr size_t LONG = 100'000;  // more than are sorted at once
constexpr int64_t STEP = 9'973;   // between places of a long column that are looked at

void expectAllPlaces(const std::vector<double>& values, int64_t step) {
  std::vector<double> sorted;
  for (const double value : values) {
    if (std::isfinite(value)) sorted.push_back(value);
  }
  std::sort(sorted.begin(), sorted.end());
  const Column<double> column = values;
  SortedValues found = sortedValues(column);
  ASSERT_EQ(found.count, static_cast<int64_t>(sorted.size()));
  for (int64_t place = 0; place < found.count; place += step) {
    ASSERT_EQ(valueAt(place, &found), sorted[static_cast<size_t>(place)]) << place;
  }
  // Downwards, and the very last ones.
  for (int64_t place = found.count - 1; place >= 0; place -= step) {
    ASSERT_EQ(valueAt(place, &found), sorted[static_cast<size_t>(place)]) << place;
  }
}

template <typename Next>
std::vector<double> longColumn(const Next& next) {
  std::vector<double> values(LONG);
  std::generate(values.begin(), values.end(), next);
  return values;
}

}  // namespace

TEST(SortedValues, ofAShortColumn) {
  expectAllPlaces({3.0, -1.0, UNDEFINED, 2.0, INF, -INF, 2.0, -0.5, DBL_MAX, -DBL_MAX}, 1);
}

TEST(SortedValues, ofALongColumn) {
  std::mt19937 random(1);
  std::normal_distribution<double> normal(0.0, 100.0);  // of both signs
  expectAllPlaces(longColumn([&] { return normal(random); }), STEP);
}

TEST(SortedValues, ofALongColumnOfFewValues) {
  // More than are sorted at once are the same.
  std::mt19937 random(2);
  expectAllPlaces(longColumn([&] { return static_cast<double>(random() % 2); }), STEP);
  expectAllPlaces(longColumn([] { return 0.1; }), STEP);
  expectAllPlaces(longColumn([&] { return random() % 50 == 0 ? -1e-300 : 7.0; }), STEP);
}

TEST(SortedValues, changeWhereOneValueEndsAndTheNextBegins) {
  Column<double> column;
  for (size_t row = 0; row < LONG; ++row) column.push_back(row < LONG / 2 ? 1.0 : 2.0);
  SortedValues found = sortedValues(column);
  EXPECT_EQ(valueAt(LONG / 2, &found), 2.0);
  EXPECT_EQ(valueAt(LONG / 2 - 1, &found), 1.0);
  EXPECT_EQ(valueAt(LONG / 2, &found), 2.0);
}

TEST(SortedValues, ofALongColumnOfNeighbours) {
  // Numbers that differ in the last bits of their representation only.
  std::mt19937_64 random(3);
  expectAllPlaces(
      longColumn([&] { return 1.0 + DBL_EPSILON * static_cast<double>(random() % 100'000); }),
      STEP);
}

TEST(SortedValues, leaveOutWhatIsNotFiniteOfALongColumn) {
  std::mt19937 random(4);
  expectAllPlaces(longColumn([&] {
                    const auto value = static_cast<double>(random() % 1000);
                    return value < 100.0 ? UNDEFINED : value < 200.0 ? -INF : value;
                  }),
                  STEP);
}

TEST(MedianOf, isTheMiddleOrTheMeanOfBothMiddleOnes) {
  EXPECT_EQ(medianOf({5.0, 1.0, 2.0}), 2.0);
  EXPECT_EQ(medianOf({5.0, UNDEFINED, 1.0, 2.0, 4.0}), 3.0);
  EXPECT_EQ(medianOf({-7.0}), -7.0);
  EXPECT_TRUE(std::isnan(medianOf({})));
  EXPECT_TRUE(std::isnan(medianOf({UNDEFINED, INF})));
}

TEST(MedianOf, aLongColumn) {
  std::vector<double> values(LONG);
  for (size_t row = 0; row < LONG; ++row) values[row] = static_cast<double>(row * 7919 % LONG);
  EXPECT_EQ(medianOf(values), (LONG - 1) / 2.0);  // LONG and 7919 have no common factor
}

TEST(MedianStep, isThatOfStepsUpwards) {
  Column<double> values;
  EXPECT_TRUE(std::isnan(medianStep(values)));
  values.push_back(3.0);
  EXPECT_TRUE(std::isnan(medianStep(values)));
  // Steps of 1, 0, -2, 4 and 2, of which three lead upwards.
  for (const double value : {4.0, 4.0, 2.0, 6.0, 8.0}) values.push_back(value);
  EXPECT_EQ(medianStep(values), 2.0);
}
