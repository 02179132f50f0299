// Times of frames, and how they are written.
#include "scan/report/timeline.h"

#include <gtest/gtest.h>

#include <cmath>

#include "support/specialValues.h"

namespace {

FrameTable tableOf(int64_t firstFrame, const std::vector<double>& times, double duration) {
  FrameTable table;
  table.firstFrame = firstFrame;
  for (const double time : times) appendRow({0, time, duration, false, false, {}}, &table);
  return table;
}

}  // namespace

TEST(AxisTimes, areTheFramesOwn) {
  EXPECT_EQ(axisTimes(tableOf(0, {0.5, 0.75, 2.0}, 0.25), 25.0), (Column<double>{0.5, 0.75, 2.0}));
}

TEST(AxisTimes, followTheFrameRateWhereUnknown) {
  EXPECT_EQ(axisTimes(tableOf(50, {UNDEFINED, 2.04, UNDEFINED}, 0.04), 25.0),
            (Column<double>{2.0, 2.04, 52 / 25.0}));
}

TEST(AxisTimes, neverFall) {
  EXPECT_EQ(axisTimes(tableOf(0, {1.0, 0.5, 1.5}, 0.04), 25.0), (Column<double>{1.0, 1.0, 1.5}));
}

TEST(AxisSpan, endsWithTheLastFrame) {
  const FrameTable table = tableOf(0, {1.0, 2.0}, 0.5);
  EXPECT_EQ(axisSpan(table, axisTimes(table, 25.0), 25.0).start, 1.0);
  EXPECT_EQ(axisSpan(table, axisTimes(table, 25.0), 25.0).end, 2.5);
  // Without a duration it is one frame long.
  for (const double duration : {UNDEFINED, 0.0}) {
    const FrameTable other = tableOf(0, {1.0}, duration);
    EXPECT_EQ(axisSpan(other, axisTimes(other, 4.0), 4.0).end, 1.25);
  }
  EXPECT_EQ(axisSpan({}, {}, 25.0).end, 0.0);
}

TEST(UsableRate, isTheGivenOneWhenItIsARate) {
  EXPECT_EQ(usableRate(50.0), 50.0);
  for (const double none : {0.0, -1.0, UNDEFINED, INF}) {
    EXPECT_EQ(usableRate(none), 25.0);
  }
}

TEST(Timecode, countsFrames) {
  EXPECT_EQ(timecode(0, 25.0), "00:00:00:00");
  EXPECT_EQ(timecode(24, 25.0), "00:00:00:24");
  EXPECT_EQ(timecode(25, 25.0), "00:00:01:00");
  // 1 h 2 min 3 s and 4 frames at 30 a second: 3723 * 30 + 4.
  EXPECT_EQ(timecode(111694, 30000.0 / 1001.0), "01:02:03:04");
  EXPECT_EQ(timecode(5, 0.2), "00:00:05:00");  // at least one a second
}

TEST(DurationText, hasHoursAndMilliseconds) {
  EXPECT_EQ(durationText(0.0), "0:00:00.000");
  EXPECT_EQ(durationText(3661.0625), "1:01:01.063");
  EXPECT_EQ(durationText(59.9996), "0:01:00.000");
  EXPECT_EQ(durationText(-1.5), "-0:00:01.500");
  EXPECT_EQ(durationText(UNDEFINED), "\xe2\x80\x93");
  EXPECT_EQ(durationText(1e300), "\xe2\x80\x93");
}

TEST(AxisMarks, areARoundStepApart) {
  EXPECT_EQ(axisMarks({0.0, 30.0}, 8), (Column<double>{0.0, 5.0, 10.0, 15.0, 20.0, 25.0, 30.0}));
  EXPECT_EQ(axisMarks({7.0, 9.5}, 5), (Column<double>{7.0, 7.5, 8.0, 8.5, 9.0, 9.5}));
  EXPECT_LE(axisMarks({0.0, 1e9}, 8).size(), 9U);
  EXPECT_LE(axisMarks({1e300, 1.1e300}, 8).size(), 9U);
}

TEST(AxisMarks, areAsFarApartAsClocksAreRead) {
  // Ten marks at most: hundredths and tenths of a second, seconds, minutes, hours.
  for (const double step :
       {0.01, 0.02, 0.05,  0.1,   0.2,   0.5,    1.0,    2.0,    5.0,    10.0,   15.0,
        30.0, 60.0, 120.0, 300.0, 600.0, 1200.0, 1800.0, 3600.0, 7200.0, 10800.0}) {
    const std::vector<double> marks = axisMarks({0.0, 9.99 * step}, 10);
    ASSERT_EQ(marks.size(), 10U) << step;
    EXPECT_EQ(marks[1], step);
    // A little longer, and the marks are further apart.
    EXPECT_GT(axisMarks({0.0, 10.01 * step}, 10)[1], 1.3 * step);
  }
}

TEST(MarkText, hasWhatItsStepNeeds) {
  EXPECT_EQ(markText(65.0, 5.0), "1:05");
  EXPECT_EQ(markText(3605.0, 5.0), "1:00:05");
  EXPECT_EQ(markText(0.5, 0.5), "0:00.50");
  EXPECT_EQ(markText(3 * 0.1, 0.1), "0:00.30");
  EXPECT_EQ(markText(-1.0, 1.0), "");
}
