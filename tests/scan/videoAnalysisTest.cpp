// The indicators' values of whole videos against those that lumaprobe has of the decoded frames.
#include "scan/analysis/videoAnalysis.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "clips.h"
#include "driver/reportOutput.h"
#include "support/startAnew.h"

namespace {

struct Analysis {
  AnalysisOutcome outcome;
  std::vector<FrameRecord> frames;
};

// From a fresh start, as in a new process.
Analysis analyse(const std::string& path, const AnalysisOptions& options = {}) {
  av_log_set_level(AV_LOG_QUIET);
  Results = {};
  restartTemporalIndicators();
  VideoReader reader;
  EXPECT_EQ(openVideo({path, 0, 0, ""}, 1, &reader), "");
  std::vector<FrameRecord> frames;
  AnalysisOutcome outcome =
      analyseVideo(options, &reader, [&](const FrameRecord& record) { frames.push_back(record); });
  EXPECT_EQ(outcome.frames, static_cast<int64_t>(frames.size()));
  for (size_t k = 0; k < frames.size(); ++k) {
    EXPECT_EQ(frames[k].frame, static_cast<int64_t>(k));
  }
  return {outcome, frames};
}

std::string reportOf(const TemporaryDirectory& directory, const std::vector<FrameRecord>& frames) {
  const std::string path = directory.path + "/rows.tsv";
  FILE* const report = std::fopen(path.c_str(), "w");
  printReportHeader(report);
  for (const FrameRecord& record : frames) {
    printReportRow(report, static_cast<int32_t>(record.frame), record.spatial, record.temporal);
  }
  std::fclose(report);
  return readFile(path);
}

// lumaprobe's report on the frames that the ffmpeg program decodes from a clip.
std::string lumaprobeReport(const TemporaryDirectory& directory, const std::string& clip,
                            const Arguments& options) {
  decodeByProgram(directory, clip, "decoded.yuv");
  Arguments arguments = {"decoded.yuv"};
  arguments.insert(arguments.end(), options.begin(), options.end());
  const ProgramRun run = runProgram(LUMAPROBE_BINARY, arguments, directory.path);
  EXPECT_EQ(run.status, 0);
  return readFile(directory.path + "/metricsResultsCSV.csv");
}

// Movement, stillness for two seconds and movement again, of 320 x 272 at 10 frames per second:
// every indicator has something to say.
constexpr const char* LIVELY_PICTURE = "testsrc2=size=320x272:rate=10:duration=5";
constexpr const char* STILL_FOR_A_WHILE = "noise=alls=10,loop=loop=20:size=1:start=15";

}  // namespace

TEST(VideoAnalysis, hasTheRowsOfLumaprobe) {
  const TemporaryDirectory directory;
  makeClip(directory, "clip.mp4",
           {"-vf", STILL_FOR_A_WHILE, "-frames:v", "50", "-c:v", "libx264", "-pix_fmt", "yuv420p"},
           LIVELY_PICTURE);
  const std::string expected =
      lumaprobeReport(directory, "clip.mp4", {"320", "272", "0x7fff", "10"});
  for (const bool isThreaded : {false, true}) {
    AnalysisOptions options;
    options.isThreaded = isThreaded;
    const Analysis analysis = analyse(directory.path + "/clip.mp4", options);
    EXPECT_EQ(analysis.outcome.end, AnalysisEnd::COMPLETE);
    EXPECT_EQ(analysis.outcome.error, "");
    ASSERT_EQ(analysis.frames.size(), 50u);
    EXPECT_EQ(reportOf(directory, analysis.frames), expected);
    EXPECT_TRUE(analysis.frames[30].temporal.freezing);
  }
}

TEST(VideoAnalysis, computesWhatIsRequested_withTheFrameRateThatIsGiven) {
  const TemporaryDirectory directory;
  makeClip(directory, "clip.avi", {"-vf", STILL_FOR_A_WHILE, "-c:v", "mpeg4"}, LIVELY_PICTURE);
  AnalysisOptions options;
  options.mask = BLUR | TEMPORAL_ACTIVITY | FREEZING;
  options.fps = 100.0;
  EXPECT_EQ(reportOf(directory, analyse(directory.path + "/clip.avi", options).frames),
            lumaprobeReport(directory, "clip.avi", {"320", "272", "0x160", "100"}));
}

TEST(VideoAnalysis, knowsWhenAFrameIsShownAndHow) {
  const TemporaryDirectory directory;
  makeClip(directory, "clip.mp4",
           {"-c:v", "libx264", "-g", "10", "-bf", "2", "-pix_fmt", "yuv420p"});
  const Analysis analysis = analyse(directory.path + "/clip.mp4");
  ASSERT_EQ(analysis.frames.size(), 25u);
  for (const FrameRecord& record : analysis.frames) {
    EXPECT_NEAR(record.row.time, static_cast<double>(record.frame) / 25.0, 1e-9);
    EXPECT_NEAR(record.row.duration, 1 / 25.0, 1e-9);
    EXPECT_EQ(record.row.isKey, record.frame % 10 == 0) << record.frame;
    EXPECT_FALSE(record.row.isCorrupt);
  }
}

TEST(VideoAnalysis, countsDamagedFramesAndErrors) {
  const TemporaryDirectory directory;
  makeClipWithoutItsStart(directory, "cut.ts");
  const Analysis analysis = analyse(directory.path + "/cut.ts");
  EXPECT_EQ(analysis.outcome.end, AnalysisEnd::COMPLETE);
  EXPECT_EQ(analysis.outcome.corruptFrames, 7);
  EXPECT_TRUE(analysis.frames[6].row.isCorrupt);
  EXPECT_FALSE(analysis.frames[7].row.isCorrupt);
}

TEST(VideoAnalysis, endsWhereTheSizeChanges) {
  const TemporaryDirectory directory;
  makeClip(directory, "small.ts", {"-c:v", "libx264", "-pix_fmt", "yuv420p"});
  makeClip(directory, "large.ts", {"-c:v", "libx264", "-pix_fmt", "yuv420p"},
           "testsrc2=size=160x96:duration=1");
  writeFile(directory.path + "/both.ts",
            readFile(directory.path + "/small.ts") + readFile(directory.path + "/large.ts"));
  const Analysis analysis = analyse(directory.path + "/both.ts");
  EXPECT_EQ(analysis.outcome.end, AnalysisEnd::SIZE_CHANGE);
  EXPECT_EQ(analysis.frames.size(), 25u);
}

TEST(VideoAnalysis, leavesBlackoutOut_whereNoBlockFits) {
  const TemporaryDirectory directory;
  makeClip(directory, "clip.mkv", {"-c:v", "ffv1"}, "testsrc=size=20x6:duration=0.4");
  const Analysis analysis = analyse(directory.path + "/clip.mkv");
  EXPECT_EQ(analysis.outcome.end, AnalysisEnd::COMPLETE);
  ASSERT_EQ(analysis.frames.size(), 10u);
  EXPECT_EQ(analysis.frames[9].spatial.blackout, 0);
  EXPECT_TRUE(std::isnan(analysis.frames[9].row.values[7]));
}
