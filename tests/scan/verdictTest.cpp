// Verdicts and their reasons.
#include "scan/events/verdict.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

using Reasons = std::vector<std::string>;

// An event at 25 frames per second.
Event eventOf(const std::string& type, Severity severity, int64_t first, int64_t last) {
  Event event;
  event.type = type;
  event.severity = severity;
  event.firstFrame = first;
  event.lastFrame = last;
  event.startTime = static_cast<double>(first) / 25;
  event.endTime = static_cast<double>(last + 1) / 25;
  return event;
}

constexpr double LONG_VIDEO = 1000.0;  // seconds

}  // namespace

TEST(Verdict, isPass_whenNothingIsToBeSaid) {
  const Judgement judgement = judge(Status::COMPLETE, "", {}, LONG_VIDEO);
  EXPECT_EQ(judgement.verdict, Verdict::PASS);
  EXPECT_TRUE(judgement.reasons.empty());
}

TEST(Verdict, isPass_whenEventsOnlyInform) {
  const Judgement judgement =
      judge(Status::COMPLETE, "", {eventOf("scene_cut", Severity::INFO, 5, 5)}, LONG_VIDEO);
  EXPECT_EQ(judgement.verdict, Verdict::PASS);
  EXPECT_TRUE(judgement.reasons.empty());
}

TEST(Verdict, isAttention_whenAnEventWarns) {
  const Judgement judgement =
      judge(Status::COMPLETE, "", {eventOf("blur", Severity::WARN, 75, 124)}, LONG_VIDEO);
  EXPECT_EQ(judgement.verdict, Verdict::ATTENTION);
  EXPECT_EQ(judgement.reasons, Reasons{"Blurred picture: once, 2.0 s, at 00:00:03.000"});
}

TEST(Verdict, isFail_whenAnEventFails) {
  const Judgement judgement =
      judge(Status::COMPLETE, "",
            {eventOf("blur", Severity::WARN, 0, 200), eventOf("freeze", Severity::FAIL, 75, 124)},
            LONG_VIDEO);
  EXPECT_EQ(judgement.verdict, Verdict::FAIL);
  // What fails comes first, though it is shorter.
  EXPECT_EQ(judgement.reasons, (Reasons{"Frozen picture: once, 2.0 s, at 00:00:03.000",
                                        "Blurred picture: once, 8.0 s, at 00:00:00.000"}));
}

TEST(Verdict, isIncomplete_whateverTheEventsSay) {
  const std::vector<Event> events = {eventOf("freeze", Severity::FAIL, 75, 124)};
  const Judgement partial = judge(Status::PARTIAL, "the file is cut off", events, LONG_VIDEO);
  EXPECT_EQ(partial.verdict, Verdict::INCOMPLETE);
  EXPECT_EQ(partial.reasons, (Reasons{"Only analysed in part: the file is cut off",
                                      "Frozen picture: once, 2.0 s, at 00:00:03.000"}));
  const Judgement failed = judge(Status::FAILED, "no video stream", {}, std::nan(""));
  EXPECT_EQ(failed.verdict, Verdict::INCOMPLETE);
  EXPECT_EQ(failed.reasons, Reasons{"Not analysed: no video stream"});
  EXPECT_EQ(judge(Status::FAILED, "", {}, LONG_VIDEO).reasons, Reasons{"Not analysed"});
}

TEST(Reasons, groupEventsOfOneType) {
  // 55 and 50 frames: 2.2 s and 2 s.
  const Judgement judgement = judge(
      Status::COMPLETE, "",
      {eventOf("freeze", Severity::FAIL, 75, 129), eventOf("freeze", Severity::FAIL, 200, 249)},
      LONG_VIDEO);
  EXPECT_EQ(judgement.reasons,
            Reasons{"Frozen picture: 2 times, 4.2 s in all, first at 00:00:03.000"});
}

TEST(Reasons, areOrderedByTheirFrames_withinASeverity) {
  const Judgement judgement =
      judge(Status::COMPLETE, "",
            {eventOf("blur", Severity::WARN, 0, 0), eventOf("noise", Severity::WARN, 25, 50),
             eventOf("combing", Severity::WARN, 75, 76)},
            LONG_VIDEO);
  EXPECT_EQ(judgement.reasons, (Reasons{"Noisy picture: once, 1.0 s, at 00:00:01.000",
                                        "Combed fields: once, 0.080 s, at 00:00:03.000",
                                        "Blurred picture: once, 0.040 s, at 00:00:00.000"}));
}

TEST(Reasons, areOrderedByAllFrames_ofSeveralEventsAndOfOne) {
  // Three frames against twice two.
  const Judgement judgement =
      judge(Status::COMPLETE, "",
            {eventOf("blur", Severity::WARN, 0, 2), eventOf("noise", Severity::WARN, 10, 11),
             eventOf("noise", Severity::WARN, 20, 21)},
            LONG_VIDEO);
  EXPECT_EQ(judgement.reasons,
            (Reasons{"Noisy picture: 2 times, 0.2 s in all, first at 00:00:00.400",
                     "Blurred picture: once, 0.1 s, at 00:00:00.000"}));
}

TEST(Reasons, haveNoLength_whereOneMomentIsMeant) {
  const Judgement judgement = judge(Status::COMPLETE, "",
                                    {eventOf("timestamp_gap", Severity::WARN, 25, 25),
                                     eventOf("timestamp_gap", Severity::WARN, 50, 50),
                                     eventOf("truncation", Severity::FAIL, 99, 99)},
                                    LONG_VIDEO);
  EXPECT_EQ(judgement.reasons, (Reasons{"File cut off: once, at 00:00:03.960",
                                        "Gap between timestamps: 2 times, first at 00:00:01.000"}));
}

TEST(Reasons, sayHowManyFramesAreMissing) {
  Event hole = eventOf("missing_frames", Severity::WARN, 25, 25);
  hole.peakValue = 3.0;
  EXPECT_EQ(judge(Status::COMPLETE, "", {hole}, LONG_VIDEO).reasons,
            Reasons{"Missing frames: 3, at 00:00:01.000"});
  Event other = eventOf("missing_frames", Severity::WARN, 50, 50);
  other.peakValue = 7.0;
  EXPECT_EQ(judge(Status::COMPLETE, "", {hole, other}, LONG_VIDEO).reasons,
            Reasons{"Missing frames: 10 in 2 places, first at 00:00:01.000"});
}

TEST(Reasons, sayWhatLastsThroughout) {
  const std::vector<Event> events = {eventOf("blur", Severity::WARN, 0, 249)};  // 10 s
  EXPECT_EQ(judge(Status::COMPLETE, "", events, 10.0).reasons,
            Reasons{"Blurred picture: throughout"});
  EXPECT_EQ(judge(Status::COMPLETE, "", events, 10.1).reasons,
            Reasons{"Blurred picture: once, 10.0 s, at 00:00:00.000"});
  EXPECT_EQ(judge(Status::COMPLETE, "", events, std::nan("")).reasons,
            Reasons{"Blurred picture: once, 10.0 s, at 00:00:00.000"});
}

TEST(Reasons, sayThroughout_fromAThousandthOn) {
  const std::vector<Event> events = {eventOf("blur", Severity::WARN, 0, 249)};  // 10 s
  EXPECT_EQ(judge(Status::COMPLETE, "", events, 10.009).reasons,
            Reasons{"Blurred picture: throughout"});
  EXPECT_EQ(judge(Status::COMPLETE, "", events, 10.011).reasons,
            Reasons{"Blurred picture: once, 10.0 s, at 00:00:00.000"});
}

TEST(Reasons, sayThroughout_ofOneEventWithALengthAlone) {
  // Two halves of 10 s.
  EXPECT_EQ(
      judge(Status::COMPLETE, "",
            {eventOf("blur", Severity::WARN, 0, 124), eventOf("blur", Severity::WARN, 125, 249)},
            10.0)
          .reasons,
      Reasons{"Blurred picture: 2 times, 10.0 s in all, first at 00:00:00.000"});
  // A video of one frame.
  EXPECT_EQ(
      judge(Status::COMPLETE, "", {eventOf("truncation", Severity::FAIL, 0, 0)}, 0.04).reasons,
      Reasons{"File cut off: once, at 00:00:00.000"});
}

TEST(Reasons, leaveOutTimesThatAreUnknown) {
  Event event = eventOf("blur", Severity::WARN, 0, 249);
  event.startTime = std::nan("");
  event.endTime = std::nan("");
  EXPECT_EQ(judge(Status::COMPLETE, "", {event}, LONG_VIDEO).reasons,
            Reasons{"Blurred picture: once"});
}

TEST(Reasons, cutMilliseconds_andKnowHours) {
  Event event = eventOf("blur", Severity::WARN, 0, 0);
  const auto reasonAt = [&](double start) {
    event.startTime = start;
    event.endTime = start + 2.0;
    return judge(Status::COMPLETE, "", {event}, LONG_VIDEO * LONG_VIDEO).reasons.at(0);
  };
  EXPECT_EQ(reasonAt(0.3), "Blurred picture: once, 2.0 s, at 00:00:00.300");
  EXPECT_EQ(reasonAt(59.9999), "Blurred picture: once, 2.0 s, at 00:00:59.999");
  EXPECT_EQ(reasonAt(3600.0 * 123 + 60 * 45 + 6.75),
            "Blurred picture: once, 2.0 s, at 123:45:06.750");
  EXPECT_EQ(reasonAt(-1.5), "Blurred picture: once, 2.0 s, at -00:00:01.500");
  EXPECT_EQ(reasonAt(1e300), "Blurred picture: once, 0.000 s, at 1e+300 s");
}

TEST(Reasons, takeTheHighestSeverityOfAType) {
  const Judgement judgement = judge(
      Status::COMPLETE, "",
      {eventOf("blur", Severity::WARN, 0, 1), eventOf("blur", Severity::FAIL, 5, 6)}, LONG_VIDEO);
  EXPECT_EQ(judgement.verdict, Verdict::FAIL);
}
