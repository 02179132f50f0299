// What there is to say about one video: how far it was measured, and its judgement.
#include "scan/record/videoResult.h"

#include <gtest/gtest.h>

#include "clips.h"
#include "tables.h"

namespace {

using Sentences = std::vector<std::string>;

// Two seconds of a longer video of 25 frames a second, from its tenth second on. All is black, and
// frames do not say how long they are shown.
VideoResult blackRange() {
  constexpr size_t ROWS = 50;
  constexpr double RATE = 25.0;
  constexpr double START = 10.0;  // seconds
  VideoResult result;
  result.frames = emptyTable(ROWS);
  result.frames.firstFrame = 250;
  for (size_t row = 0; row < ROWS; ++row) {
    result.frames.time.set(row, START + static_cast<double>(row) / RATE);
    result.frames.duration.set(row, UNKNOWN);
    column(&result.frames, "blackout").set(row, 1.0);
  }
  result.record.status = Status::COMPLETE;
  result.record.input.stream = StreamFacts{};
  result.record.input.stream->frameRate = RATE;
  result.record.analysis = AnalysisFacts{};
  result.record.analysis->fps = RATE;
  return result;
}

Sentences reasonsOf(VideoResult result) {
  judgeResult(DEFAULT_THRESHOLDS, &result);
  return result.record.judgement.reasons;
}

}  // namespace

TEST(JudgeResult, saysThroughout_ofAllThatWasAnalysed) {
  EXPECT_EQ(reasonsOf(blackRange()), Sentences{"Black or uniform picture: throughout"});
}

TEST(JudgeResult, saysNotThroughout_whereAFrameIsNot) {
  VideoResult result = blackRange();
  column(&result.frames, "blackout").set(49, 0.0);
  EXPECT_EQ(reasonsOf(result), Sentences{"Black or uniform picture: once, 2.0 s, at 00:00:10.000"});
}

// The rate that is given for the indicators is no rate of the video: its frames stay for 0.04 s.
TEST(JudgeResult, goesByTheRateOfTheVideo_notByTheOneThatIsGiven) {
  VideoResult result = blackRange();
  result.record.analysis->fps = 5.0;
  EXPECT_EQ(reasonsOf(result), Sentences{"Black or uniform picture: throughout"});
  result.record.analysis->fps = 25.0;
  result.record.input.stream->frameRate = UNKNOWN;
  EXPECT_EQ(reasonsOf(result), Sentences{"Black or uniform picture: throughout"});
}

TEST(AnalyseSource, isPartial_whereTheSizeChanges) {
  const TemporaryDirectory directory;
  av_log_set_level(AV_LOG_QUIET);
  makeClip(directory, "small.ts", {"-c:v", "libx264", "-pix_fmt", "yuv420p"});
  makeClip(directory, "large.ts", {"-c:v", "libx264", "-pix_fmt", "yuv420p"},
           "testsrc2=size=160x96:duration=1");
  writeFile(directory.path + "/both.ts",
            readFile(directory.path + "/small.ts") + readFile(directory.path + "/large.ts"));
  AnalysisOptions options;
  options.mask = EXPOSURE;
  VideoResult result = analyseSource({directory.path + "/both.ts", 0, 0, ""}, options, 1, nullptr,
                                     [](Stage, double, int64_t) {});
  const std::string error = "the picture size changes: analysed up to there";
  EXPECT_EQ(result.record.status, Status::PARTIAL);
  EXPECT_EQ(result.record.error, error);
  EXPECT_FALSE(result.record.isTruncated);
  EXPECT_EQ(result.record.analysis->endedBy, AnalysisEnd::SIZE_CHANGE);
  EXPECT_EQ(result.record.analysis->frames, 25);
  judgeResult(DEFAULT_THRESHOLDS, &result);
  EXPECT_EQ(result.record.judgement.verdict, Verdict::INCOMPLETE);
  EXPECT_EQ(result.record.judgement.reasons.at(0), "Only analysed in part: " + error);
  const Event& last = result.events.back();
  EXPECT_EQ(last.type, "size_change");
  EXPECT_EQ(last.firstFrame, 24);
}

TEST(AnalyseSource, warnsOfWhatValuesMayNotMean) {
  const TemporaryDirectory directory;
  av_log_set_level(AV_LOG_QUIET);
  makeClip(directory, "clip.mov", {"-c:v", "png", "-pix_fmt", "rgb24", "-frames:v", "1"});
  AnalysisOptions options;
  options.mask = EXPOSURE;
  const VideoResult result = analyseSource({directory.path + "/clip.mov", 0, 0, ""}, options, 1,
                                           nullptr, [](Stage, double, int64_t) {});
  EXPECT_EQ(result.record.status, Status::COMPLETE);
  EXPECT_EQ(result.record.warnings,
            Sentences{"the pixel format has no luma of its own: it is converted to luma of video "
                      "range"});
}

TEST(AnalyseSource, saysWhatWasAskedAndWhatWasAnalysed) {
  const TemporaryDirectory directory;
  av_log_set_level(AV_LOG_QUIET);
  makeClip(directory, "clip.mkv", {"-c:v", "ffv1"});  // 25 frames of 0.04 s
  AnalysisOptions options;
  options.mask = EXPOSURE;
  options.fps = 50.0;
  ASSERT_TRUE(parsePosition("f:5", &options.start));
  ASSERT_TRUE(parsePosition("f:15", &options.end));
  const auto analysed = [&] {
    return analyseSource({directory.path + "/clip.mkv", 0, 0, ""}, options, 1, nullptr,
                         [](Stage, double, int64_t) {});
  };
  const ResultRecord record = analysed().record;
  EXPECT_EQ(record.status, Status::COMPLETE);
  EXPECT_EQ(record.error, "");
  EXPECT_EQ(record.options.fps, 50.0);
  EXPECT_EQ(record.options.start, "f:5");
  EXPECT_EQ(record.options.end, "f:15");
  EXPECT_EQ(record.options.raw, "");
  EXPECT_EQ(record.input.stream->frameRate, 25.0);
  EXPECT_EQ(record.analysis->fps, 50.0);
  EXPECT_EQ(record.analysis->indicators, EXPOSURE);
  EXPECT_EQ(record.analysis->firstFrame, 5);
  EXPECT_EQ(record.analysis->frames, 10);
  EXPECT_NEAR(record.analysis->start, 0.2, 1e-9);
  EXPECT_NEAR(record.analysis->end, 0.6, 1e-9);
  // Behind the last frame there is none.
  options.end = {};
  ASSERT_TRUE(parsePosition("f:25", &options.start));
  VideoResult nothing = analysed();
  EXPECT_EQ(nothing.record.status, Status::FAILED);
  EXPECT_EQ(nothing.record.error, "there is no frame to analyse");
  judgeResult(DEFAULT_THRESHOLDS, &nothing);
  EXPECT_EQ(nothing.record.judgement.verdict, Verdict::INCOMPLETE);
  EXPECT_EQ(nothing.record.judgement.reasons,
            Sentences{"Not analysed: there is no frame to analyse"});
}

TEST(AnalyseSource, isPartial_wherePacketsAreRefused) {
  const TemporaryDirectory directory;
  av_log_set_level(AV_LOG_QUIET);
  makeClip(directory, "clip.mkv", {"-c:v", "png"});
  std::string bytes = readFile(directory.path + "/clip.mkv");
  AnalysisOptions options;
  options.mask = EXPOSURE;
  const auto errorWithout = [&](size_t after) {
    const size_t header = bytes.find("IHDR", after);  // without it a picture is refused
    bytes.at(header) = 'x';
    writeFile(directory.path + "/clip.mkv", bytes);
    const VideoResult result = analyseSource({directory.path + "/clip.mkv", 0, 0, ""}, options, 1,
                                             nullptr, [](Stage, double, int64_t) {});
    EXPECT_EQ(result.record.status, Status::PARTIAL);
    return result.record.error;
  };
  EXPECT_EQ(errorWithout(0), "a packet could not be decoded: its picture is missing");
  EXPECT_EQ(errorWithout(bytes.size() / 2),
            "2 packets could not be decoded: their pictures are missing");
}

TEST(AskedOptions, nameRawVideo_downToASampleWide) {
  EXPECT_EQ(askedOptions({"a.yuv", 1, 2, "12.5"}, {}).raw, "1x2@12.5");
  EXPECT_EQ(askedOptions({"a.mp4", 0, 0, ""}, {}).raw, "");
}
