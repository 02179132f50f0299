// Places in a video, as texts and among frames.
#include "scan/video/position.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

Position positionOf(const std::string& text) {
  Position position;
  EXPECT_TRUE(parsePosition(text, &position)) << text;
  EXPECT_EQ(position.text, text);
  return position;
}

double secondsOf(const std::string& text) {
  const Position position = positionOf(text);
  EXPECT_FALSE(position.isFrame) << text;
  EXPECT_EQ(position.frames, 0) << text;
  return position.seconds;
}

}  // namespace

TEST(Position, readsANumberOfSeconds) {
  EXPECT_EQ(secondsOf("0"), 0.0);
  EXPECT_EQ(secondsOf("12.5"), 12.5);
  EXPECT_EQ(secondsOf(".25"), 0.25);
  // Seconds alone may be more than a minute.
  EXPECT_EQ(secondsOf("7200"), 7200.0);
}

TEST(Position, readsMinutesAndHours) {
  EXPECT_EQ(secondsOf("02:03"), 123.0);
  EXPECT_EQ(secondsOf("1:2.5"), 62.5);
  EXPECT_EQ(secondsOf("01:02:03"), 3723.0);
  EXPECT_EQ(secondsOf("01:02:03.25"), 3723.25);
  // Only what stands first may be more than its next unit holds: 90 minutes, 100 hours.
  EXPECT_EQ(secondsOf("90:00"), 5400.0);
  EXPECT_EQ(secondsOf("100:00:00"), 360000.0);
}

TEST(Position, readsAFrameNumber) {
  const Position position = positionOf("f:300");
  EXPECT_TRUE(position.isFrame);
  EXPECT_EQ(position.frames, 300);
  EXPECT_EQ(position.seconds, 0.0);
}

TEST(Position, readsATimecode_countingItsLastPartInFrames) {
  const Position position = positionOf("01:02:03:04");
  EXPECT_FALSE(position.isFrame);
  EXPECT_EQ(position.seconds, 3723.0);
  EXPECT_EQ(position.frames, 4);
}

TEST(Position, readsADropFrameTimecode) {
  const Position position = positionOf("01:02:03;04");
  EXPECT_FALSE(position.isFrame);
  EXPECT_EQ(position.seconds, 3723.0);
  EXPECT_EQ(position.frames, 4);
  for (const char* const text :
       {"1;2", "01;02:03:04", "01:02;03", "01:02:03;", "1:2:3;4;5", "f;4"}) {
    Position other;
    EXPECT_FALSE(parsePosition(text, &other)) << text;
  }
}

TEST(Position, isMistaken_whereASecondHasFewerFrames) {
  EXPECT_EQ(mistakeAtRate(positionOf("0:0:1:24"), 25.0), "");
  EXPECT_EQ(mistakeAtRate(positionOf("0:0:1:25"), 25.0),
            "there is no frame 25 in a second of 25 frames: 0:0:1:25");
  // Of a broken rate the last frame of a second begins within it.
  EXPECT_EQ(mistakeAtRate(positionOf("0:0:1;29"), 30000.0 / 1001.0), "");
  EXPECT_EQ(mistakeAtRate(positionOf("0:0:1;30"), 30000.0 / 1001.0),
            "there is no frame 30 in a second of 29.97 frames: 0:0:1;30");
  EXPECT_EQ(mistakeAtRate(positionOf("0:0:1:00"), 0.04), "");
  for (const char* const text : {"f:99", "99.5", "99"}) {
    EXPECT_EQ(mistakeAtRate(positionOf(text), 25.0), "") << text;
  }
  EXPECT_EQ(mistakeAtRate(positionOf("0:0:1:99"), std::nan("")), "");
}

TEST(Position, forgetsWhatItWasBefore) {
  Position position = {"f:7", true, 3.0, 7};
  ASSERT_TRUE(parsePosition("2", &position));
  EXPECT_EQ(position.text, "2");
  EXPECT_FALSE(position.isFrame);
  EXPECT_EQ(position.seconds, 2.0);
  EXPECT_EQ(position.frames, 0);
}

TEST(Position, refusesWhatIsNoNumber) {
  Position position;
  for (const char* const text : {"", " ", "x", "1x", "1 ", " 1", "-1", "+1", "1,5", ".", "1.2.3",
                                 "1e3", "0x10", "nan", "inf", "1s"}) {
    EXPECT_FALSE(parsePosition(text, &position)) << text;
  }
}

TEST(Position, refusesTimesWithMissingOrSurplusParts) {
  Position position;
  for (const char* const text : {":", "1:", ":1", "1::1", "1:2:3:", "1:2:3:4:5", "0:0:0:0:0"}) {
    EXPECT_FALSE(parsePosition(text, &position)) << text;
  }
}

TEST(Position, refusesPartsThatTheirUnitDoesNotHave) {
  Position position;
  for (const char* const text : {"0:60", "0:99.5", "0:60:00", "0:00:60", "0:00:60:00"}) {
    EXPECT_FALSE(parsePosition(text, &position)) << text;
  }
}

TEST(Position, refusesDecimalsInAllButTheSecondsOfATime) {
  Position position;
  for (const char* const text : {"1.5:00", "1.5:00:00", "0:1.5:00", "0:0:0:1.5", "0:0:1.5:0"}) {
    EXPECT_FALSE(parsePosition(text, &position)) << text;
  }
}

TEST(Position, refusesFramesThatAreNoCount) {
  Position position;
  // The last one is 2^63, one more than there can be.
  for (const char* const text :
       {"f:", "f:-1", "f:+1", "f:1.5", "f:x", "f:1:2", "F:1", "f1", "f", "f:9223372036854775808"}) {
    EXPECT_FALSE(parsePosition(text, &position)) << text;
  }
}

TEST(Position, refusesNumbersThatNothingHolds) {
  Position position;
  EXPECT_FALSE(parsePosition(std::string(400, '9'), &position));
  EXPECT_FALSE(parsePosition("0:0:0:" + std::string(20, '9'), &position));
}

TEST(IsAtOrBehind, countsFrames_whateverTheirTime) {
  const Position position = positionOf("f:10");
  EXPECT_FALSE(isAtOrBehind(9, 1000.0, 25.0, position));
  EXPECT_TRUE(isAtOrBehind(10, 0.0, 25.0, position));
  EXPECT_TRUE(isAtOrBehind(11, std::nan(""), 25.0, position));
}

TEST(IsAtOrBehind, comparesTimes_whateverTheFrame) {
  const Position position = positionOf("2");
  EXPECT_FALSE(isAtOrBehind(1000, 1.96, 25.0, position));
  EXPECT_TRUE(isAtOrBehind(0, 2.0, 25.0, position));
  EXPECT_TRUE(isAtOrBehind(0, 2.04, 25.0, position));
}

TEST(IsAtOrBehind, toleratesTheRoundingOfATimestamp) {
  const Position position = positionOf("0.3");
  // A third decimal is more than rounding.
  EXPECT_TRUE(isAtOrBehind(0, 0.3 - 1e-9, 25.0, position));
  EXPECT_FALSE(isAtOrBehind(0, 0.299, 25.0, position));
}

TEST(IsAtOrBehind, addsTheFramesOfATimecode) {
  // One second and five frames of 25 a second: 1.2 s; of 50 a second: 1.1 s.
  const Position position = positionOf("00:00:01:05");
  EXPECT_FALSE(isAtOrBehind(0, 1.16, 25.0, position));
  EXPECT_TRUE(isAtOrBehind(0, 1.2, 25.0, position));
  EXPECT_TRUE(isAtOrBehind(0, 1.1, 50.0, position));
}

TEST(IsAtOrBehind, placesAFrameWithoutTimeByItsNumber) {
  // Frame 50 of 25 a second appears at 2 s.
  const Position position = positionOf("2");
  EXPECT_FALSE(isAtOrBehind(49, std::nan(""), 25.0, position));
  EXPECT_TRUE(isAtOrBehind(50, std::nan(""), 25.0, position));
}
