// When frames appear, by timestamps that begin anew, leap, fall back or are missing.
#include "scan/analysis/joinedTimes.h"

#include <gtest/gtest.h>

namespace {

using Values = std::vector<double>;

// Of frames of a quarter of a second, from frame 0 on.
Values timesOf(const Values& stamps, JoinedTimes* times) {
  Values all;
  for (size_t i = 0; i < stamps.size(); ++i)
    all.push_back(timeOfFrame(static_cast<int64_t>(i), stamps[i], 0.25, times));
  return all;
}

Values timesOf(const Values& stamps) {
  JoinedTimes times;
  return timesOf(stamps, &times);
}

}  // namespace

TEST(JoinedTimes, areTheTimestamps_whereTheseGoOn) {
  const Values stamps = {-0.5, -0.25, 0.0, 0.25, 0.75, 1.0, 100.0, 100.25, 3700.0};
  JoinedTimes times;
  EXPECT_EQ(timesOf(stamps, &times), stamps);
  EXPECT_TRUE(times.joins.empty());
  // A little back is jitter.
  EXPECT_EQ(timesOf({0.0, 0.25, 0.0, 0.25}), (Values{0.0, 0.25, 0.0, 0.25}));
}

TEST(JoinedTimes, joinInWholeNanoseconds_asResultsAreStored) {
  JoinedTimes times;
  timesOf({1.0 / 3.0, 8.0, 0.1234567894}, &times);
  ASSERT_EQ(times.joins.size(), 1u);
  EXPECT_EQ(times.joins[0].step, -7.876543211);
  EXPECT_EQ(times.joins[0].offset, 8.126543211);
}

TEST(JoinedTimes, goOn_whereTimestampsBeginAnew) {
  JoinedTimes times;
  EXPECT_EQ(timesOf({8.0, 8.25, 8.5, 0.0, 0.25, 0.5, 0.75, 0.0, 0.25}, &times),
            (Values{8.0, 8.25, 8.5, 8.75, 9.0, 9.25, 9.5, 9.75, 10.0}));
  ASSERT_EQ(times.joins.size(), 2u);
  EXPECT_EQ(times.joins[0].frame, 3);
  EXPECT_EQ(times.joins[0].step, -8.5);
  EXPECT_EQ(times.joins[0].offset, 8.75);
  EXPECT_EQ(times.joins[1].frame, 7);
  EXPECT_EQ(times.joins[1].step, -0.75);
  EXPECT_EQ(times.joins[1].offset, 9.75);
}

TEST(JoinedTimes, areTheTimestamps_whateverTheFileSaysOfDurations) {
  JoinedTimes times;
  const Values stamps = {0.0, 0.25, 0.5, 0.25, 0.75};
  for (size_t i = 0; i < stamps.size(); ++i) {
    EXPECT_EQ(timeOfFrame(static_cast<int64_t>(i), stamps[i], 60.0, &times), stamps[i]);
  }
  EXPECT_TRUE(times.joins.empty());
}

TEST(JoinedTimes, goOn_whereTimestampsLeapByMoreThanAnHour) {
  // Expected is 0.5: an hour behind that is a gap still.
  EXPECT_EQ(timesOf({0.0, 0.25, 3600.5, 3600.75}), (Values{0.0, 0.25, 3600.5, 3600.75}));
  EXPECT_EQ(timesOf({0.0, 0.25, 3600.75, 3601.0}), (Values{0.0, 0.25, 0.5, 0.75}));
}

TEST(JoinedTimes, comeBackFromASingleWrongTimestamp) {
  EXPECT_EQ(timesOf({10.0, 10.25, 2.0, 10.75, 11.0}), (Values{10.0, 10.25, 10.5, 10.75, 11.0}));
  EXPECT_EQ(timesOf({10.0, 10.25, 95000.0, 10.75, 11.0}), (Values{10.0, 10.25, 10.5, 10.75, 11.0}));
  // A leap that may be a gap is believed, and falls back.
  JoinedTimes times;
  EXPECT_EQ(timesOf({10.0, 10.25, 90.0, 10.75, 11.0}, &times),
            (Values{10.0, 10.25, 90.0, 10.75, 11.0}));
  EXPECT_TRUE(times.joins.empty());
}

TEST(JoinedTimes, goBackToTheFirstRecording) {
  // 2 s of it lie in the middle of another one.
  EXPECT_EQ(timesOf({10.0, 10.25, 2.0, 2.25, 11.0, 11.25}),
            (Values{10.0, 10.25, 10.5, 10.75, 11.0, 11.25}));
}

TEST(JoinedTimes, ofFramesWithoutTimestampsFollowThoseBefore) {
  EXPECT_EQ(timesOf({UNKNOWN, UNKNOWN, UNKNOWN}), (Values{0.0, 0.25, 0.5}));
  EXPECT_EQ(timesOf({3.0, UNKNOWN, UNKNOWN}), (Values{3.0, 3.25, 3.5}));
  // What was seen counts more than what is declared.
  EXPECT_EQ(timesOf({3.0, 3.5, 4.0, UNKNOWN, UNKNOWN}), (Values{3.0, 3.5, 4.0, 4.5, 5.0}));
  EXPECT_EQ(timesOf({3.0, 3.125, UNKNOWN, UNKNOWN, 3.5}), (Values{3.0, 3.125, 3.25, 3.375, 3.5}));
}

TEST(JoinedTimes, rememberAThousandJoins) {
  JoinedTimes times;
  Values stamps;
  for (int i = 0; i < 1500; ++i) stamps.insert(stamps.end(), {0.0, 0.25, 0.5, 0.75});
  const Values all = timesOf(stamps, &times);
  EXPECT_EQ(times.joins.size(), MOST_JOINS);
  EXPECT_EQ(all.back(), 1499.75);
}
