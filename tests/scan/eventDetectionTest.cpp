// Events of small tables of frames, each a tenth of a second long.
#include "scan/events/eventDetection.h"

#include <gtest/gtest.h>

#include <cmath>
#include <map>

#include "support/sanitizers.h"
#include "tables.h"

namespace {

using Values = std::vector<double>;

const double NONE = std::nan("");
const StreamFindings WHOLE = {10.0, false, false};

// Levels that are easy to compute with; all other types are off.
Thresholds only(const std::string& type, double enter, double leave, double minSeconds) {
  Thresholds thresholds = DEFAULT_THRESHOLDS;
  for (Threshold& threshold : thresholds) threshold.isEnabled = false;
  Threshold& threshold = thresholds.at(eventTypeNamed(type));
  threshold.enter = enter;
  threshold.leave = leave;
  threshold.minSeconds = minSeconds;
  threshold.isEnabled = true;
  if (!std::isnan(threshold.mad)) threshold.mad = 0.0;
  threshold.alone = NONE;
  threshold.holdSeconds = NONE;
  return thresholds;
}

Thresholds only(const std::string& type) {
  Thresholds thresholds = only(type, 0.0, 0.0, 0.0);
  thresholds.at(eventTypeNamed(type)) = DEFAULT_THRESHOLDS.at(eventTypeNamed(type));
  return thresholds;
}

// "first-last" of every event.
std::string stretches(const std::vector<Event>& events) {
  std::string text;
  for (const Event& event : events) {
    if (!text.empty()) text += ' ';
    text += std::to_string(event.firstFrame) + '-' + std::to_string(event.lastFrame);
  }
  return text;
}

// Of blur, which is worse above, from 8 on and until below 6.
std::string blurStretches(const Values& values, double minSeconds) {
  return stretches(detectEvents(tableOf("blur", values), only("blur", 8, 6, minSeconds), WHOLE));
}

}  // namespace

TEST(Stretches, beginAtTheThreshold_andEndBelowTheOtherOne) {
  EXPECT_EQ(blurStretches({1, 7.9, 8, 6, 7, 5.9, 1}, 0), "2-4");
  EXPECT_EQ(blurStretches({1, 6, 7, 7.9, 1}, 0), "");
  EXPECT_EQ(blurStretches({8, 1, 9, 7, 1, 8}, 0), "0-0 2-3 5-5");
}

TEST(Stretches, ofLowValuesAreTheSameTheOtherWayRound) {
  const FrameTable table = tableOf("contrast", {60, 21, 20, 30, 29, 31, 60});
  EXPECT_EQ(stretches(detectEvents(table, only("low_contrast", 20, 30, 0), WHOLE)), "2-4");
}

TEST(Stretches, areEventsWhenTheThresholdIsHeldForLongEnough) {
  // Three frames take 0.3 s. What lies between the two levels does not help a run to begin.
  EXPECT_EQ(blurStretches({1, 8, 8, 8, 1}, 0.3), "1-3");
  EXPECT_EQ(blurStretches({1, 8, 8, 1}, 0.3), "");
  EXPECT_EQ(blurStretches({1, 8, 8, 7, 8, 8, 1}, 0.3), "");
  EXPECT_EQ(blurStretches({1, 8, 8, 7, 8, 8, 8, 7, 1}, 0.3), "4-7");
}

TEST(Stretches, ofOneFrameAreFound_whenNoTimeIsAsked) {
  EXPECT_EQ(blurStretches({1, 8, 1}, 0), "1-1");
  EXPECT_EQ(blurStretches({8}, 0), "0-0");
}

TEST(Stretches, endWithTheFile) {
  const std::vector<Event> events =
      detectEvents(tableOf("blur", {9, 9, 1, 9, 9}), only("blur", 8, 6, 0), WHOLE);
  ASSERT_EQ(stretches(events), "0-1 3-4");
  EXPECT_TRUE(events[0].isAtStart);
  EXPECT_FALSE(events[0].isAtEnd);
  EXPECT_FALSE(events[1].isAtStart);
  EXPECT_TRUE(events[1].isAtEnd);
}

TEST(Stretches, endWhereAValueIsUndefined) {
  EXPECT_EQ(blurStretches({9, 9, NONE, 9, NONE, NONE}, 0), "0-1 3-3");
  EXPECT_EQ(blurStretches({9, 9, NONE, 9, 9}, 0.4), "");
}

TEST(Stretches, knowTheirWorstFrame_theFirstOfEquals) {
  const std::vector<Event> high =
      detectEvents(tableOf("blur", {1, 8, 11, 9, 11, 1}), only("blur", 8, 6, 0), WHOLE);
  ASSERT_EQ(high.size(), 1u);
  EXPECT_EQ(high[0].peakFrame, 2);
  EXPECT_EQ(high[0].peakValue, 11.0);
  EXPECT_EQ(high[0].threshold, 8.0);
  const std::vector<Event> low =
      detectEvents(tableOf("contrast", {60, 9, 5, 7, 5}), only("low_contrast", 9, 9, 0), WHOLE);
  ASSERT_EQ(low.size(), 1u);
  EXPECT_EQ(low[0].peakFrame, 2);
  EXPECT_EQ(low[0].peakValue, 5.0);
}

TEST(Stretches, tellWhenTheyAreShown) {
  FrameTable table = tableOf("blur", {1, 9, 9, 1});
  table.firstFrame = 100;
  table.time = {20.0, 20.5, 20.6, 20.7};
  const Event event = detectEvents(table, only("blur", 8, 6, 0), WHOLE).at(0);
  EXPECT_EQ(event.id, 1);
  EXPECT_EQ(event.type, "blur");
  EXPECT_EQ(event.severity, Severity::WARN);
  EXPECT_EQ(event.firstFrame, 101);
  EXPECT_EQ(event.lastFrame, 102);
  EXPECT_EQ(event.peakFrame, 101);
  EXPECT_DOUBLE_EQ(event.startTime, 20.5);
  EXPECT_DOUBLE_EQ(event.endTime, 20.7);
}

TEST(Stretches, areMeasuredInPresentationTime_notInFrames) {
  // Two frames that stay for 0.5 s each.
  FrameTable table = tableOf("blur", {1, 9, 9, 1});
  table.time = {0.0, 0.1, 0.6, 1.1};
  table.duration = {0.1, 0.5, 0.5, 0.1};
  EXPECT_EQ(stretches(detectEvents(table, only("blur", 8, 6, 1.0), WHOLE)), "1-2");
  EXPECT_EQ(stretches(detectEvents(table, only("blur", 8, 6, 1.1), WHOLE)), "");
}

TEST(Stretches, areLongEnough_whenTimesAreRoundedToMilliseconds) {
  // Fifteen of thirty frames a second take half a second; 0.033 * 15 would not.
  FrameTable table = tableOf("blur", Values(15, 9.0));
  for (size_t i = 0; i < 15; ++i) {
    table.time.set(i, std::round(static_cast<double>(i) / 30 * 1000) / 1000);
    table.duration.set(i, 0.033);
  }
  EXPECT_EQ(stretches(detectEvents(table, only("blur", 8, 6, 0.5), WHOLE)), "0-14");
}

TEST(Stretches, endWhenTheirLastFrameGoes_thoughTheNextAppearsLater) {
  // Behind the second frame nothing is shown for 0.4 s.
  FrameTable table = tableOf("blur", {1, 9, 1, 1});
  table.time = {0.0, 0.1, 0.6, 0.7};
  const std::vector<Event> events = detectEvents(table, only("blur", 8, 6, 0.1), WHOLE);
  ASSERT_EQ(stretches(events), "1-1");
  EXPECT_DOUBLE_EQ(events[0].endTime, 0.2);
  EXPECT_EQ(stretches(detectEvents(table, only("blur", 8, 6, 0.2), WHOLE)), "");
  // Within a stretch such a time counts: 0.5 s to the second of two frames, and 0.1 s more.
  column(&table, "blur") = {1, 9, 9, 1};
  EXPECT_EQ(stretches(detectEvents(table, only("blur", 8, 6, 0.6), WHOLE)), "1-2");
  EXPECT_EQ(stretches(detectEvents(table, only("blur", 8, 6, 0.7), WHOLE)), "");
}

TEST(Stretches, lastUntilTheNextFrame_whereAFrameDoesNotSayHowLong) {
  FrameTable table = tableOf("blur", {1, 9, 1, 9});
  table.time = {0.0, 0.6, 1.1, 1.2};
  for (const double none : {NONE, 0.0}) {
    table.duration = Values(4, none);
    const std::vector<Event> events = detectEvents(table, only("blur", 8, 6, 0.5), WHOLE);
    ASSERT_EQ(stretches(events), "1-1 3-3");
    EXPECT_DOUBLE_EQ(events[0].endTime, 1.1);
    // Behind the last one comes nothing: it stays for the median of 0.6, 0.5 and 0.1 s.
    EXPECT_DOUBLE_EQ(events[1].endTime, 1.7);
    EXPECT_EQ(stretches(detectEvents(table, only("blur", 8, 6, 0.55), WHOLE)), "");
  }
}

TEST(Stretches, lastAsLongAsTheirFrames_howeverShortTheseAre) {
  FrameTable table = tableOf("blur", {1, 9, 1});
  table.duration = Values(3, 0.005);
  const std::vector<Event> events = detectEvents(table, only("blur", 8, 6, 0), WHOLE);
  ASSERT_EQ(stretches(events), "1-1");
  EXPECT_DOUBLE_EQ(events[0].endTime, 0.105);
}

TEST(Stretches, ofASingleFrameLastAsLongAsTheFrameRateSays) {
  FrameTable table = tableOf("blur", {9});
  table.duration = Values(1, NONE);
  const std::vector<Event> events = detectEvents(table, only("blur", 8, 6, 0), {4.0, false, false});
  ASSERT_EQ(stretches(events), "0-0");
  EXPECT_DOUBLE_EQ(events[0].endTime, 0.25);
}

TEST(Stretches, lastForATypicalStep_whichIsNoneBack) {
  // Steps of -0.2, 0.1 and -0.2 s.
  FrameTable table = tableOf("blur", {1, 1, 1, 9});
  table.time = {0.3, 0.1, 0.2, 0.0};
  table.duration = Values(4, NONE);
  const std::vector<Event> events = detectEvents(table, only("blur", 8, 6, 0), WHOLE);
  ASSERT_EQ(stretches(events), "3-3");
  EXPECT_DOUBLE_EQ(events[0].endTime, 0.1);
}

TEST(Stretches, areSpacedByTheFrameRate_whenTimesAreUnknown) {
  FrameTable table = tableOf("blur", {1, 9, 9, 1});
  table.time = Values(4, NONE);
  table.duration = Values(4, NONE);
  const std::vector<Event> events = detectEvents(table, only("blur", 8, 6, 0.5), {4, false, false});
  ASSERT_EQ(stretches(events), "1-2");
  EXPECT_EQ(events[0].startTime, 0.25);
  EXPECT_EQ(events[0].endTime, 0.75);
  table.firstFrame = 8;
  const Event later = detectEvents(table, only("blur", 8, 6, 0.5), {4, false, false}).at(0);
  EXPECT_EQ(later.startTime, 2.25);
  EXPECT_EQ(later.endTime, 2.75);
  table.firstFrame = 0;
  EXPECT_EQ(stretches(detectEvents(table, only("blur", 8, 6, 0.6), {4, false, false})), "");
}

TEST(Stretches, areAlwaysLongEnough_whenTimesAndRateAreUnknown) {
  FrameTable table = tableOf("blur", {1, 9, 9, 1});
  table.time = Values(4, NONE);
  table.duration = Values(4, NONE);
  const std::vector<Event> events = detectEvents(table, only("blur", 8, 6, 5.0), {0, false, false});
  ASSERT_EQ(stretches(events), "1-2");
  EXPECT_TRUE(std::isnan(events[0].startTime));
  EXPECT_TRUE(std::isnan(events[0].endTime));
}

TEST(Stretches, areNotShortened_byTimestampsThatJumpBack) {
  FrameTable table = tableOf("blur", {9, 9, 9, 9});
  table.time = {5.0, 5.1, 0.0, 0.1};
  EXPECT_EQ(stretches(detectEvents(table, only("blur", 8, 6, 0.4), WHOLE)), "0-3");
  EXPECT_EQ(stretches(detectEvents(table, only("blur", 8, 6, 0.5), WHOLE)), "");
}

TEST(Stretches, ofUniformFramesAreBlackOnes_andNothingElse) {
  FrameTable table = tableOf("letterbox", {0, 1, 1, 0.5, 0});
  column(&table, "blackout") = {0, 1, 1, 0, 0};
  Thresholds thresholds = only("letterbox", 0.1, 0.1, 0);
  thresholds.at(eventTypeNamed("black")).isEnabled = true;
  thresholds.at(eventTypeNamed("black")).minSeconds = 0.2;
  const std::vector<Event> events = detectEvents(table, thresholds, WHOLE);
  ASSERT_EQ(stretches(events), "1-2 3-3");
  EXPECT_EQ(events[0].type, "black");
  EXPECT_EQ(events[1].type, "letterbox");
}

TEST(RelativeLevels, followTheFilesOwnMedian) {
  // Median 3; deviations 0 0 0 1 1 1 4 4, whose median is 1.
  const Values values = {2, 3, 4, 7, 3, 2, 7, 3};
  Thresholds thresholds = only("blur", 0, 0, 0);
  thresholds.at(eventTypeNamed("blur")).mad = 3.0;
  thresholds.at(eventTypeNamed("blur")).least = 0.5;
  const std::vector<Event> events = detectEvents(tableOf("blur", values), thresholds, WHOLE);
  // Three of them above the median: from 6 on.
  ASSERT_EQ(stretches(events), "3-3 6-6");
  EXPECT_EQ(events[0].threshold, 6.0);
  thresholds.at(eventTypeNamed("blur")).mad = 4.5;  // from 7.5 on
  EXPECT_EQ(stretches(detectEvents(tableOf("blur", values), thresholds, WHOLE)), "");
}

TEST(RelativeLevels, leaveAtThreeQuartersOfTheWay) {
  // Median 1, all deviations 0: from 1 + 4 on, and down to 1 + 3.
  Thresholds thresholds = only("blur", 0, 0, 0);
  thresholds.at(eventTypeNamed("blur")).mad = 6.0;
  thresholds.at(eventTypeNamed("blur")).least = 4.0;
  const Values values = {1, 1, 1, 1, 1, 1, 1, 4.9, 5, 4, 3.9};
  EXPECT_EQ(stretches(detectEvents(tableOf("blur", values), thresholds, WHOLE)), "8-9");
}

TEST(RelativeLevels, countTogetherWithTheThresholdsOwn) {
  // Median 1, all deviations 0: from 1 + 2 on.
  const FrameTable table = tableOf("blur", {1, 1, 1, 1, 1, 1, 3, 4, 5});
  Thresholds thresholds = only("blur", 4, 3.5, 0);
  thresholds.at(eventTypeNamed("blur")).mad = 6.0;
  thresholds.at(eventTypeNamed("blur")).least = 2.0;
  const std::vector<Event> events = detectEvents(table, thresholds, WHOLE);
  ASSERT_EQ(stretches(events), "7-8");
  EXPECT_EQ(events[0].threshold, 4.0);
  thresholds.at(eventTypeNamed("blur")).enter = 2.0;
  thresholds.at(eventTypeNamed("blur")).leave = 2.0;
  EXPECT_EQ(stretches(detectEvents(table, thresholds, WHOLE)), "6-8");
  // A file that is blurred throughout has no other level to be held against.
  const FrameTable blurred = tableOf("blur", {9, 9, 9, 9, 9});
  EXPECT_EQ(stretches(detectEvents(blurred, thresholds, WHOLE)), "");
  thresholds.at(eventTypeNamed("blur")).mad = 0.0;
  EXPECT_EQ(stretches(detectEvents(blurred, thresholds, WHOLE)), "0-4");
}

TEST(RelativeLevels, lieBelowTheMedian_whereLowIsWorse) {
  // Median 1, all deviations 0: from 1 - 0.4 on, and up to 1 - 0.3.
  Thresholds thresholds = only("blockiness", 2, 2, 0);
  thresholds.at(eventTypeNamed("blockiness")).mad = 6.0;
  thresholds.at(eventTypeNamed("blockiness")).least = 0.4;
  const Values values = {1, 1, 1, 1, 1, 1, 0.65, 0.59, 0.69, 0.71};
  EXPECT_EQ(stretches(detectEvents(tableOf("blockiness", values), thresholds, WHOLE)), "7-8");
}

TEST(RelativeLevels, leaveOutUndefinedValues) {
  Thresholds thresholds = only("blur", 0, 0, 0);
  thresholds.at(eventTypeNamed("blur")).mad = 6.0;
  thresholds.at(eventTypeNamed("blur")).least = 4.0;
  const Values values = {NONE, NONE, NONE, NONE, 1, 1, 1, 5};
  EXPECT_EQ(stretches(detectEvents(tableOf("blur", values), thresholds, WHOLE)), "7-7");
  EXPECT_EQ(stretches(detectEvents(tableOf("blur", {NONE, NONE}), thresholds, WHOLE)), "");
}

TEST(RelativeLevels, areAMultipleOfTheMedian_whereARatioIsAsked) {
  // Median 4: five times that is 20, and the other level keeps its share of a half.
  Thresholds thresholds = only("slice", 10, 5, 0);
  thresholds.at(eventTypeNamed("slice")).ratio = 5.0;
  const std::vector<Event> events =
      detectEvents(tableOf("slice", {4, 4, 4, 4, 4, 4, 19, 20, 10, 9}), thresholds, WHOLE);
  ASSERT_EQ(stretches(events), "7-8");
  EXPECT_EQ(events[0].threshold, 20.0);
  // Median 1: the threshold's own levels are higher.
  EXPECT_EQ(
      stretches(detectEvents(tableOf("slice", {1, 1, 1, 1, 1, 9, 10, 5, 4}), thresholds, WHOLE)),
      "6-7");
  // All are alike: this is the file's own level.
  EXPECT_EQ(stretches(detectEvents(tableOf("slice", {99, 99, 99}), thresholds, WHOLE)), "");
  thresholds.at(eventTypeNamed("slice")).ratio = 0.0;
  EXPECT_EQ(stretches(detectEvents(tableOf("slice", {99, 99, 99}), thresholds, WHOLE)), "0-2");
}

TEST(RelativeLevels, leaveWhereTheyEnter_whenThereIsNoShareOfThem) {
  // Nothing is a share of 0.
  Thresholds thresholds = only("block_loss", 0, 0, 0);
  thresholds.at(eventTypeNamed("block_loss")).ratio = 4.0;
  thresholds.at(eventTypeNamed("block_loss")).holdSeconds = 0.3;
  EXPECT_EQ(stretches(detectEvents(tableOf("block_loss", {1, 1, 1, 1, 5, 4, 3, 1, 1, 1, 1}),
                                   thresholds, WHOLE)),
            "4-5");
  // Twice a number below 0 lies below it, twice one above 0 above: median 4, and 20 and 40.
  thresholds = only("slice", -10, -20, 0);
  thresholds.at(eventTypeNamed("slice")).ratio = 5.0;
  EXPECT_EQ(stretches(detectEvents(tableOf("slice", {4, 4, 4, 4, 4, 4, 19, 20, 30, 10}), thresholds,
                                   WHOLE)),
            "7-8");
}

TEST(RelativeLevels, areNotAskedOfWhatCountsAlone) {
  Thresholds thresholds = only("over_exposure", 150, 140, 0);
  Threshold& bright = thresholds.at(eventTypeNamed("over_exposure"));
  bright.mad = 3.0;
  bright.least = 30.0;
  const auto brightOnes = [&](const Values& values) {
    return detectEvents(tableOf("exposure", values), thresholds, WHOLE);
  };
  // Median 160, no deviations: from 190 on.
  const Values pale = {160, 160, 160, 160, 160, 189, 190, 185, 160};
  EXPECT_EQ(stretches(brightOnes(pale)), "6-7");
  bright.alone = 180.0;  // and, as between the threshold's own levels, down to 10 less
  const std::vector<Event> events = brightOnes(pale);
  ASSERT_EQ(stretches(events), "5-7");
  EXPECT_EQ(events[0].threshold, 180.0);
  EXPECT_EQ(stretches(brightOnes({160, 160, 160, 160, 179, 180, 170, 169})), "5-6");
  EXPECT_EQ(stretches(brightOnes({180, 180, 180})), "0-2");
  EXPECT_EQ(stretches(brightOnes({179, 179, 179})), "");
  // What lies nearer to the median than that is found as before.
  EXPECT_EQ(stretches(brightOnes({120, 120, 120, 120, 150})), "4-4");
  bright.alone = 100.0;  // the threshold's own level is asked of all
  EXPECT_EQ(stretches(brightOnes({149, 149, 149})), "");
}

TEST(RelativeLevels, areNotAskedOfWhatCountsAlone_whereLowIsWorse) {
  Thresholds thresholds = only("low_contrast", 20, 22, 0);
  Threshold& flat = thresholds.at(eventTypeNamed("low_contrast"));
  flat.mad = 3.0;
  flat.least = 30.0;
  flat.alone = 10.0;
  const auto flatOnes = [&](const Values& values) {
    return stretches(detectEvents(tableOf("contrast", values), thresholds, WHOLE));
  };
  EXPECT_EQ(flatOnes({15, 15, 15, 11, 10, 12, 12.1}), "4-5");
  EXPECT_EQ(flatOnes({60, 60, 60, 60, 20}), "4-4");
  flat.alone = NONE;
  EXPECT_EQ(flatOnes({10, 10, 10}), "");
}

TEST(HeldValues, areTheWorstOfTheLastSeconds) {
  // Three frames take 0.3 s.
  Thresholds thresholds = only("blockiness", 0.5, 0.6, 0);
  Threshold& blocky = thresholds.at(eventTypeNamed("blockiness"));
  blocky.holdSeconds = 0.3;
  const auto blockyOnes = [&](const Values& values) {
    return detectEvents(tableOf("blockiness", values), thresholds, WHOLE);
  };
  EXPECT_EQ(stretches(blockyOnes({1, 0.4, 1, 1, 0.4, 1})), "1-4");
  EXPECT_EQ(stretches(blockyOnes({1, 0.4, 1, 1, 1, 0.4, 1})), "1-1 5-5");
  EXPECT_EQ(stretches(blockyOnes({1, 0.4, 0.45, 1, 1, 0.55, 1, 1, 1})), "1-5");
  EXPECT_EQ(stretches(blockyOnes({1, 0.4, 0.45, 1, 1, 1, 0.55, 1, 1})), "1-2");
  const std::vector<Event> events = blockyOnes({1, 0.4, 1, 1, 0.3, 1, 1, 1});
  ASSERT_EQ(stretches(events), "1-4");
  EXPECT_EQ(events[0].peakFrame, 4);
  EXPECT_EQ(events[0].peakValue, 0.3);
  // One value holds for 0.3 s, two that are three frames apart for twice as long.
  blocky.minSeconds = 0.4;
  EXPECT_EQ(stretches(blockyOnes({1, 0.4, 1, 1, 1, 1, 0.4, 1, 1, 0.4, 1, 1, 1})), "6-9");
}

TEST(HeldValues, areTheHighest_whereHighIsWorse) {
  Thresholds thresholds = only("block_loss", 20, 10, 0);
  Threshold& lost = thresholds.at(eventTypeNamed("block_loss"));
  lost.ratio = 0.0;
  lost.holdSeconds = 0.2;
  const auto lostOnes = [&](const Values& values) {
    return stretches(detectEvents(tableOf("block_loss", values), thresholds, WHOLE));
  };
  EXPECT_EQ(lostOnes({0, 30, 0, 19, 0, 0}), "1-3");
  EXPECT_EQ(lostOnes({0, 30, 0, 0, 19, 0}), "1-1");
}

TEST(HeldValues, goByTime_andEndWithUndefinedOnes) {
  Thresholds thresholds = only("blockiness", 0.5, 0.6, 0);
  thresholds.at(eventTypeNamed("blockiness")).holdSeconds = 0.3;
  FrameTable table = tableOf("blockiness", {1, 0.4, NONE, 1, 1});
  EXPECT_EQ(stretches(detectEvents(table, thresholds, WHOLE)), "1-1");
  table = tableOf("blockiness", {1, 0.4, 1, 0.4, 1});
  EXPECT_EQ(stretches(detectEvents(table, thresholds, WHOLE)), "1-3");
  table.time = {0.0, 0.1, 0.45, 0.55, 0.65};
  EXPECT_EQ(stretches(detectEvents(table, thresholds, WHOLE)), "1-1 3-3");
  // A dip of each third frame is this file's own level.
  thresholds.at(eventTypeNamed("blockiness")).mad = 6.0;
  thresholds.at(eventTypeNamed("blockiness")).least = 0.25;
  thresholds.at(eventTypeNamed("blockiness")).enter = 0.7;
  thresholds.at(eventTypeNamed("blockiness")).leave = 0.7;
  const FrameTable regular = tableOf("blockiness", {0.6, 1, 1, 0.6, 1, 1, 0.6, 1, 1});
  EXPECT_EQ(stretches(detectEvents(regular, thresholds, WHOLE)), "");
  thresholds.at(eventTypeNamed("blockiness")).holdSeconds = 0.0;
  EXPECT_EQ(stretches(detectEvents(regular, thresholds, WHOLE)), "0-0 3-3 6-6");
}

TEST(Freeze, beginsWhereThePictureStopped) {
  // At 25 frames per second the flag rises with the third still frame.
  FrameTable table = tableOf("freezing", {NONE, 0, 0, 0, 0, 1, 1, 0});
  column(&table, "temporal_activity") = {NONE, 9, 9, 1, 0, 0, 0, 9};
  const std::vector<Event> events = detectEvents(table, only("freeze", 1, 1, 0), WHOLE);
  ASSERT_EQ(stretches(events), "3-6");
  EXPECT_EQ(events[0].peakFrame, 5);  // the first one whose own value is the peak's
  EXPECT_EQ(events[0].peakValue, 1.0);
}

TEST(Freeze, goesBackToTheFirstComparisonOrToABlackPicture) {
  FrameTable table = tableOf("freezing", {NONE, 0, 0, 1, 1});
  column(&table, "temporal_activity") = {NONE, 0, 0, 0, 0};
  EXPECT_EQ(stretches(detectEvents(table, only("freeze", 1, 1, 0), WHOLE)), "1-4");
  // Still frames count from the second one behind a black one on: frame 1 is compared with black.
  column(&table, "blackout") = {1, 0, 0, 0, 0};
  EXPECT_EQ(stretches(detectEvents(table, only("freeze", 1, 1, 0), WHOLE)), "2-4");
}

TEST(Freeze, isMeasuredFromItsTrueStart) {
  FrameTable table = tableOf("freezing", {NONE, 0, 0, 0, 1, 0});
  column(&table, "temporal_activity") = {NONE, 9, 0, 0, 0, 9};
  EXPECT_EQ(stretches(detectEvents(table, only("freeze", 1, 1, 0.3), WHOLE)), "2-4");
  EXPECT_EQ(stretches(detectEvents(table, only("freeze", 1, 1, 0.4), WHOLE)), "");
}

TEST(Flicker, coversTheComparisonsThatItIsTheMeanOf) {
  // Spoken with frames 8, 16 and 24; the last value holds until the end.
  Values values(28, NONE);
  values[8] = 0.0;
  values[16] = 0.9;
  values[24] = 0.0;
  EXPECT_EQ(
      stretches(detectEvents(tableOf("flickering", values), only("flicker", 0.5, 0.4, 0), WHOLE)),
      "9-16");
  values[24] = 0.8;
  EXPECT_EQ(
      stretches(detectEvents(tableOf("flickering", values), only("flicker", 0.5, 0.4, 0), WHOLE)),
      "9-27");
  values[8] = 0.9;
  // Frame 0 has nothing to be compared with.
  EXPECT_EQ(
      stretches(detectEvents(tableOf("flickering", values), only("flicker", 0.5, 0.4, 0), WHOLE)),
      "1-27");
}

TEST(Flicker, hasItsPeakWhereItIsSpoken) {
  Values values(28, NONE);
  values[8] = 0.0;
  values[16] = 0.6;
  values[24] = 0.9;
  const std::vector<Event> events =
      detectEvents(tableOf("flickering", values), only("flicker", 0.5, 0.4, 0), WHOLE);
  ASSERT_EQ(stretches(events), "9-27");
  EXPECT_EQ(events[0].peakFrame, 24);
  EXPECT_EQ(events[0].peakValue, 0.9);
}

TEST(Flicker, isNothing_whenNoPeriodEnds) {
  EXPECT_EQ(stretches(detectEvents(tableOf("flickering", Values(8, NONE)),
                                   only("flicker", 0.5, 0.4, 0), WHOLE)),
            "");
}

TEST(SceneCut, isOneFrameThatStandsOut) {
  // The median of its neighbours is 5; three times that is 15, less than 20.
  Thresholds thresholds = only("scene_cut");
  thresholds.at(eventTypeNamed("scene_cut")).enter = 20.0;
  thresholds.at(eventTypeNamed("scene_cut")).ratio = 3.0;
  const std::vector<Event> events = detectEvents(
      tableOf("temporal_activity", {NONE, 5, 5, 5, 20, 5, 5, 5, 19.9, 5}), thresholds, WHOLE);
  ASSERT_EQ(stretches(events), "4-4");
  EXPECT_EQ(events[0].severity, Severity::INFO);
  EXPECT_EQ(events[0].peakValue, 20.0);
  EXPECT_EQ(events[0].threshold, 20.0);
}

TEST(SceneCut, needsAMultipleOfItsNeighbours) {
  Thresholds thresholds = only("scene_cut");
  thresholds.at(eventTypeNamed("scene_cut")).enter = 20.0;
  thresholds.at(eventTypeNamed("scene_cut")).ratio = 3.0;
  // Neighbours at 10: from 30 on.
  const auto cutsOf = [&](double value) {
    return detectEvents(tableOf("temporal_activity", {NONE, 10, 10, 10, value, 10, 10, 10, 10}),
                        thresholds, WHOLE);
  };
  EXPECT_EQ(stretches(cutsOf(29.9)), "");
  ASSERT_EQ(stretches(cutsOf(30.0)), "4-4");
  EXPECT_EQ(cutsOf(30.0)[0].threshold, 30.0);
}

TEST(SceneCut, isHeldAgainstFourNeighboursToEitherSide_andNotAgainstItself) {
  Thresholds thresholds = only("scene_cut");
  thresholds.at(eventTypeNamed("scene_cut")).enter = 10.0;
  thresholds.at(eventTypeNamed("scene_cut")).ratio = 3.0;
  // The neighbours of frame 6 are four of 4 and four of 8: three times their median is 18. With
  // itself among them the median is 8, of three to either side or of five it is 4.
  const std::vector<Event> events = detectEvents(
      tableOf("temporal_activity", {NONE, 1, 8, 4, 4, 4, 30, 8, 8, 4, 8, 1}), thresholds, WHOLE);
  ASSERT_EQ(stretches(events), "6-6");
  EXPECT_EQ(events[0].threshold, 18.0);
}

TEST(SceneCut, isNotSeenInTheFirstTwoComparisons) {
  Thresholds thresholds = only("scene_cut");
  thresholds.at(eventTypeNamed("scene_cut")).enter = 20.0;
  const auto cutsOf = [&](const Values& activities) {
    return stretches(detectEvents(tableOf("temporal_activity", activities), thresholds, WHOLE));
  };
  EXPECT_EQ(cutsOf({NONE, 90, 5, 5, 5, 5}), "");
  EXPECT_EQ(cutsOf({NONE, 5, 90, 5, 5, 5}), "");
  EXPECT_EQ(cutsOf({NONE, 5, 5, 90, 5, 5, 5, 90}), "3-3 7-7");
}

TEST(SceneCut, isNoStepToOrFromBlack) {
  Thresholds thresholds = only("scene_cut");
  thresholds.at(eventTypeNamed("scene_cut")).enter = 20.0;
  FrameTable table = tableOf("temporal_activity", {NONE, 5, 5, 90, 0, 90, 5, 5, 5, 90});
  column(&table, "blackout") = {0, 0, 0, 1, 1, 0, 0, 0, 0, 0};
  EXPECT_EQ(stretches(detectEvents(table, thresholds, WHOLE)), "9-9");
}

// A flash changes the picture twice, what scrolls at every step.
TEST(SceneCut, isNothingThatAnotherFrameWithinThreeComesNear) {
  Thresholds thresholds = only("scene_cut");
  Threshold& threshold = thresholds.at(eventTypeNamed("scene_cut"));
  threshold.enter = 20.0;
  threshold.lone = 0.5;
  const auto cutsOf = [&](const Values& activities) {
    return stretches(detectEvents(tableOf("temporal_activity", activities), thresholds, WHOLE));
  };
  EXPECT_EQ(cutsOf({NONE, 1, 1, 1, 80, 1, 1, 40, 1, 1, 1, 1}), "");
  EXPECT_EQ(cutsOf({NONE, 1, 1, 1, 80, 1, 1, 39.9, 1, 1, 1, 1}), "4-4");
  EXPECT_EQ(cutsOf({NONE, 1, 1, 1, 80, 1, 1, 1, 80, 1, 1, 1}), "4-4 8-8");
  EXPECT_EQ(cutsOf({NONE, 1, 1, 1, 40, 1, 1, 80, 1, 1, 1, 1}), "");
  // An undefined frame is not near.
  EXPECT_EQ(cutsOf({NONE, 1, 1, 1, 80, NONE, 1, 1}), "4-4");
  threshold.lone = 0.0;
  EXPECT_EQ(cutsOf({NONE, 1, 1, 1, 80, 1, 1, 80, 1, 1, 1, 1}), "4-4 7-7");
}

TEST(Stretches, mayBeShorterByWhatContainersRound) {
  for (const double step : {0.0399, 0.0397}) {
    FrameTable table = tableOf("blackout", {1, 1, 1, 1, 1, 0});
    for (size_t i = 0; i < 6; ++i) {
      table.time.set(i, static_cast<double>(i) * step);
      table.duration.set(i, step);
    }
    // Five frames last 0.1995 or 0.1985 s; a millisecond is what is rounded.
    EXPECT_EQ(stretches(detectEvents(table, only("black", 1.0, 1.0, 0.2), WHOLE)),
              step == 0.0399 ? "0-4" : "");
  }
}

TEST(DecodeErrors, areRunsOfDamagedFrames) {
  FrameTable table = emptyTable(6);
  table.isKey = {true, true, true, true, true, true};
  table.isCorrupt = {true, false, true, true, false, true};
  const std::vector<Event> events = detectEvents(table, only("decode_error"), WHOLE);
  ASSERT_EQ(stretches(events), "0-0 2-3 5-5");
  EXPECT_EQ(events[1].severity, Severity::FAIL);
  EXPECT_EQ(events[1].peakFrame, 2);
  EXPECT_TRUE(std::isnan(events[1].peakValue));
  EXPECT_TRUE(std::isnan(events[1].threshold));
}

TEST(DecodeErrors, lastToTheNextKeyFrameThatIsWhole) {
  FrameTable table = emptyTable(9);
  table.isCorrupt = {false, true, false, false, true, false, false, false, false};
  table.isKey = {true, false, false, false, true, false, false, true, false};
  EXPECT_EQ(stretches(detectEvents(table, only("decode_error"), WHOLE)), "1-6");
  // What comes before the first key frame is no damage, and does not last.
  StreamFindings stream = WHOLE;
  stream.startsMidstream = true;
  table.isKey = {false, false, true, false, false, false, false, true, false};
  EXPECT_EQ(stretches(detectEvents(table, only("decode_error"), stream)), "4-6");
}

TEST(DecodeErrors, lastForTenSecondsAtMost) {
  // Frames of a tenth of a second: the damage of frame 1 to frame 100, that of 60 to 159.
  FrameTable table = emptyTable(200);
  table.isCorrupt.set(1, true);
  EXPECT_EQ(stretches(detectEvents(table, only("decode_error"), WHOLE)), "1-100");
  table.isCorrupt.set(60, true);
  EXPECT_EQ(stretches(detectEvents(table, only("decode_error"), WHOLE)), "1-159");
}

TEST(StreamErrors, lastToTheNextKeyFrame_andAreNotToldOfDamagedFrames) {
  FrameTable table = emptyTable(9);
  table.isKey = {true, false, false, true, false, false, true, false, false};
  table.isCorrupt.set(4, true);
  table.messages = {0, 1, 0, 0, 2, 1, 0, 0, 1};
  EXPECT_EQ(stretches(detectEvents(table, only("stream_error"), WHOLE)), "1-2 4-5 8-8");
  Thresholds both = only("stream_error");
  both.at(eventTypeNamed("decode_error")).isEnabled = true;
  const std::vector<Event> events = detectEvents(table, both, WHOLE);
  ASSERT_EQ(stretches(events), "1-2 4-5 8-8");
  EXPECT_EQ(events[0].type, "stream_error");
  EXPECT_EQ(events[1].type, "decode_error");
  EXPECT_EQ(events[2].type, "stream_error");
}

TEST(StreamErrors, areRunsOfFramesThatSomethingIsSaidAbout) {
  FrameTable table = emptyTable(6);
  table.isKey = {true, true, true, true, true, true};
  table.messages = {0, 1, 70, 0, 0, 1};
  const std::vector<Event> events = detectEvents(table, only("stream_error"), WHOLE);
  ASSERT_EQ(stretches(events), "1-2 5-5");
  EXPECT_EQ(events[0].severity, Severity::WARN);
  EXPECT_TRUE(std::isnan(events[0].peakValue));
}

TEST(Beginning, isWhatComesBeforeTheFirstKeyFrame) {
  FrameTable table = emptyTable(6);
  table.isKey = {false, false, true, false, true, false};
  table.isCorrupt = {true, true, false, false, false, true};
  StreamFindings stream = WHOLE;
  EXPECT_EQ(stretches(detectEvents(table, only("starts_midstream"), stream)), "");
  EXPECT_EQ(stretches(detectEvents(table, only("decode_error"), stream)), "0-1 5-5");
  stream.startsMidstream = true;
  const std::vector<Event> events = detectEvents(table, only("starts_midstream"), stream);
  EXPECT_EQ(stretches(events), "0-1");
  EXPECT_EQ(events[0].severity, Severity::INFO);
  EXPECT_EQ(stretches(detectEvents(table, only("decode_error"), stream)), "5-5");
  // A decoder may leave these frames out.
  table.isKey.set(0, true);
  EXPECT_EQ(stretches(detectEvents(table, only("starts_midstream"), stream)), "0-0");
  // A range of frames has a beginning of its own.
  table.firstFrame = 1;
  EXPECT_EQ(stretches(detectEvents(table, only("starts_midstream"), stream)), "");
}

TEST(TruncationAndSizeChange, areAtTheLastFrame) {
  const FrameTable table = emptyTable(6);
  const std::vector<Event> events = detectEvents(table, DEFAULT_THRESHOLDS, {10.0, true, true});
  ASSERT_EQ(stretches(events), "5-5 5-5");
  EXPECT_EQ(events[0].type, "size_change");
  EXPECT_EQ(events[1].type, "truncation");
  EXPECT_EQ(events[0].id, 1);
  EXPECT_EQ(events[1].id, 2);
  EXPECT_TRUE(events[0].isAtEnd);
  EXPECT_EQ(stretches(detectEvents(table, DEFAULT_THRESHOLDS, WHOLE)), "");
}

TEST(TimestampGaps, areLongStepsAndStepsBack) {
  FrameTable table = emptyTable(8);
  table.time = {0.0, 0.1, 0.2, 0.7, 1.3, 1.4, 1.3, 1.4};
  Thresholds thresholds = only("timestamp_gap");
  thresholds.at(eventTypeNamed("timestamp_gap")).enter = 0.55;
  thresholds.at(eventTypeNamed("timestamp_gap")).ratio = 3.0;
  // The typical step is 0.1: longer than 0.3 and longer than 0.55.
  const std::vector<Event> events = detectEvents(table, thresholds, WHOLE);
  ASSERT_EQ(stretches(events), "4-4 6-6");
  EXPECT_NEAR(events[0].peakValue, 0.6, 1e-9);
  EXPECT_EQ(events[0].threshold, 0.55);
  EXPECT_NEAR(events[1].peakValue, -0.1, 1e-9);
  EXPECT_EQ(events[1].threshold, 0.0);
}

TEST(TimestampGaps, areNoneInSlowVideo) {
  // One frame a second; 2.5 is less than three times that.
  FrameTable table = emptyTable(6);
  table.time = {0.0, 1.0, 2.0, 4.5, 5.5, 6.5};
  EXPECT_EQ(stretches(detectEvents(table, only("timestamp_gap"), WHOLE)), "");
  table.time = {0.0, 1.0, 2.0, 5.1, 6.1, 7.1};
  EXPECT_EQ(stretches(detectEvents(table, only("timestamp_gap"), WHOLE)), "3-3");
}

TEST(TimestampGaps, areHeldAgainstTheMedianOfAllSteps) {
  // Most steps are of 0.1 s: gaps are longer than 0.5 s. Three times the first step, the last one
  // or the mean of 0.41 s would be more than any of them.
  FrameTable table = emptyTable(8);
  table.time = {0.0, 0.9, 1.0, 1.1, 1.2, 1.9, 2.0, 2.9};
  const std::vector<Event> events = detectEvents(table, only("timestamp_gap"), WHOLE);
  ASSERT_EQ(stretches(events), "1-1 5-5 7-7");
  EXPECT_EQ(events[0].threshold, 0.5);
}

TEST(TimestampGaps, areLongerThanTheLongestStepThatIsNone) {
  Thresholds thresholds = only("timestamp_gap");
  thresholds.at(eventTypeNamed("timestamp_gap")).enter = 1.0;
  thresholds.at(eventTypeNamed("timestamp_gap")).ratio = 3.0;
  FrameTable table = emptyTable(6);
  table.time = {0.0, 0.25, 0.5, 1.5, 1.75, 3.0};
  EXPECT_EQ(stretches(detectEvents(table, thresholds, WHOLE)), "5-5");
}

TEST(TimestampGaps, areWhereRecordingsWereJoined) {
  StreamFindings stream = WHOLE;
  stream.joins = {{5, -1.9, 0.5}, {7, 4000.0, -4000.0}, {8, -1.0, 0.0}};
  FrameTable table = emptyTable(8);
  const std::vector<Event> events = detectEvents(table, only("timestamp_gap"), stream);
  ASSERT_EQ(stretches(events), "5-5 7-7");
  EXPECT_EQ(events[0].peakValue, -1.9);
  EXPECT_EQ(events[0].threshold, 0.0);
  EXPECT_EQ(events[1].peakValue, 4000.0);
  EXPECT_EQ(events[1].threshold, 0.5);
  // Joins before the analysed frames, and at the first of them, are not within these.
  table.firstFrame = 5;
  EXPECT_EQ(stretches(detectEvents(table, only("timestamp_gap"), stream)), "7-7 8-8");
}

TEST(TimestampGaps, areNotSeen_whereTimesAreUnknownOrEqual) {
  FrameTable table = emptyTable(5);
  table.time = {0.0, 0.1, NONE, 5.0, 5.0};
  EXPECT_EQ(stretches(detectEvents(table, only("timestamp_gap"), WHOLE)), "");
}

namespace {

// Times of so many frames, each a tenth of a second behind the last; but some follow so many steps.
FrameTable framesWithSteps(size_t frames, const std::map<size_t, double>& steps) {
  FrameTable table = emptyTable(frames);
  double time = 0.0;
  for (size_t i = 0; i < frames; ++i) {
    const auto step = steps.find(i);
    if (i > 0) time += step == steps.end() ? 0.1 : step->second * 0.1;
    table.time.set(i, time);
  }
  return table;
}

std::string missingFrames(const FrameTable& table, const StreamFindings& stream = WHOLE) {
  std::string text;
  for (const Event& event : detectEvents(table, only("missing_frames"), stream)) {
    text += std::to_string(event.firstFrame) + ": " + std::to_string(event.peakValue) + ' ';
  }
  return text;
}

}  // namespace

TEST(MissingFrames, areWhereAStepIsTwoOrMoreOfTheOthers) {
  EXPECT_EQ(missingFrames(framesWithSteps(101, {})), "");
  EXPECT_EQ(missingFrames(framesWithSteps(101, {{2, 2.0}, {50, 11.0}, {100, 4.2}})),
            "2: 1.000000 50: 10.000000 100: 3.000000 ");
  // Containers round: a quarter of a step more or less is the same.
  EXPECT_EQ(missingFrames(framesWithSteps(101, {{50, 1.74}})), "");
  EXPECT_EQ(missingFrames(framesWithSteps(101, {{50, 1.76}})), "50: 1.000000 ");
  const std::vector<Event> events =
      detectEvents(framesWithSteps(101, {{50, 2.0}}), only("missing_frames"), WHOLE);
  ASSERT_EQ(stretches(events), "50-50");
  EXPECT_EQ(events[0].severity, Severity::WARN);
  EXPECT_TRUE(std::isnan(events[0].threshold));
}

TEST(MissingFrames, areNotAskedFor_whereStepsVary) {
  // Of 100 steps five are longer, then six.
  std::map<size_t, double> steps = {{10, 2.0}, {20, 2.0}, {30, 2.0}, {40, 2.0}, {50, 2.0}};
  EXPECT_NE(missingFrames(framesWithSteps(101, steps)), "");
  steps[60] = 2.0;
  EXPECT_EQ(missingFrames(framesWithSteps(101, steps)), "");
  // Shorter ones are others, too; up to a quarter is not.
  EXPECT_NE(missingFrames(framesWithSteps(21, {{10, 2.0}, {11, 1.24}, {12, 0.76}})), "");
  EXPECT_EQ(missingFrames(framesWithSteps(21, {{10, 2.0}, {11, 0.74}})), "");
  // A single frame has no steps.
  EXPECT_EQ(missingFrames(emptyTable(1)), "");
}

TEST(MissingFrames, areNoneInABeginningBetweenKeyFrames) {
  FrameTable table = framesWithSteps(101, {{2, 2.0}, {4, 2.0}, {5, 2.0}});
  for (size_t i = 0; i < 101; ++i) table.isKey.set(i, i == 4);
  EXPECT_EQ(missingFrames(table), "2: 1.000000 4: 1.000000 5: 1.000000 ");
  StreamFindings stream = WHOLE;
  stream.startsMidstream = true;
  EXPECT_EQ(missingFrames(table, stream), "5: 1.000000 ");
}

TEST(MissingFrames, areNoneBehindTheFirstFrameOfAVideo) {
  FrameTable table = framesWithSteps(101, {{1, 6.0}});
  EXPECT_EQ(missingFrames(table), "");
  table.firstFrame = 1;
  EXPECT_EQ(missingFrames(table), "2: 5.000000 ");
}

TEST(MissingFrames, areNone_whereSomebodyChoseHowLongEachIsShown) {
  StreamFindings stream = WHOLE;
  stream.hasOwnDurations = true;
  EXPECT_EQ(missingFrames(framesWithSteps(101, {{50, 11.0}}), stream), "");
}

TEST(MissingFrames, thatShouldHaveComeBehindTheLastOneAreToldThere) {
  StreamFindings stream = WHOLE;
  stream.missingAtEnd = 4;
  EXPECT_EQ(missingFrames(framesWithSteps(30, {}), stream), "29: 4.000000 ");
  EXPECT_EQ(missingFrames(framesWithSteps(30, {{29, 3.0}}), stream), "29: 2.000000 29: 4.000000 ");
}

TEST(Events, areSortedByFirstFrame_thenByType) {
  FrameTable table = tableOf("noise", {0, 99, 99, 0});
  column(&table, "blur") = {0, 0, 99, 99};
  column(&table, "interlace") = {0, 1, 1, 1};
  Thresholds thresholds = only("noise", 50, 50, 0);
  for (const char* type : {"blur", "combing"}) {
    Threshold& threshold = thresholds.at(eventTypeNamed(type));
    threshold.isEnabled = true;
    threshold.minSeconds = 0.0;
    if (!std::isnan(threshold.mad)) threshold.mad = 0.0;
  }
  const std::vector<Event> events = detectEvents(table, thresholds, WHOLE);
  ASSERT_EQ(stretches(events), "1-3 1-2 2-3");
  EXPECT_EQ(events[0].type, "combing");
  EXPECT_EQ(events[1].type, "noise");
  EXPECT_EQ(events[2].type, "blur");
  EXPECT_EQ(events[2].id, 3);
}

TEST(Events, areNone_ofNoFramesOrWhenAllAreOff) {
  EXPECT_TRUE(detectEvents(emptyTable(0), DEFAULT_THRESHOLDS, {25.0, true, true}).empty());
  Thresholds off = DEFAULT_THRESHOLDS;
  for (Threshold& threshold : off) threshold.isEnabled = false;
  FrameTable table = tableOf("blur", {99, 99});
  table.isCorrupt = {true, true};
  EXPECT_TRUE(detectEvents(table, off, {10.0, true, true}).empty());
}

TEST(Events, ofALongVideoAreFound_beforeTheTestIsGivenUp) {
  // Alternating values are the worst case for runs, a freeze up to the end for going back. Where a
  // run cost time with every frame of it, these would take minutes, which the test does not have.
  constexpr size_t ROWS = isAddressSanitized ? 50'000 : 500'000;
  FrameTable table = emptyTable(ROWS);
  for (Column<double>& values : table.values) {
    for (size_t i = 0; i < ROWS; ++i) values.set(i, i % 2 == 0 ? 0.0 : 500.0);
  }
  column(&table, "blackout") = Values(ROWS, 0.0);
  column(&table, "temporal_activity") = Values(ROWS, 0.0);
  column(&table, "freezing") = Values(ROWS, 1.0);
  EXPECT_FALSE(detectEvents(table, DEFAULT_THRESHOLDS, WHOLE).empty());
}
