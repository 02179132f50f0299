// The indicators' values of whole videos against those that lumaprobe has of the decoded frames.
#include "scan/analysis/videoAnalysis.h"

#include <gtest/gtest.h>

#include <cmath>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "clips.h"
#include "driver/reportOutput.h"
#include "scan/numbers/decimals.h"
#include "support/startAnew.h"

namespace {

struct Analysis {
  AnalysisOutcome outcome;
  std::vector<FrameRecord> frames;
};

// From a fresh start, as in a new process. The first frame that is analysed is to be frame `first`.
Analysis analyse(const std::string& path, const AnalysisOptions& options = {}, int64_t first = 0) {
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
    EXPECT_EQ(frames[k].frame, first + static_cast<int64_t>(k));
  }
  return {outcome, frames};
}

AnalysisOptions between(const std::string& start, const std::string& end) {
  AnalysisOptions options;
  EXPECT_TRUE(start.empty() || parsePosition(start, &options.start)) << start;
  EXPECT_TRUE(end.empty() || parsePosition(end, &options.end)) << end;
  return options;
}

double valueOf(const FrameRecord& record, const char* indicator) {
  return record.row.values.at(indicatorNamed(indicator));
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
// Where the bytes of each packet are, as the ffprobe program has it.
std::vector<size_t> placesOfPackets(const TemporaryDirectory& directory, const std::string& name) {
  const ProgramRun run =
      runProgram("/usr/bin/ffprobe",
                 {"-v", "error", "-show_entries", "packet=pos", "-of", "default=nw=1:nk=1", name},
                 directory.path);
  std::istringstream lines(run.out);
  std::vector<size_t> places;
  for (size_t place = 0; lines >> place;) places.push_back(place);
  return places;
}

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

TEST(VideoAnalysis, refusesATimecodeThatTheFilesRateDoesNotHave) {
  const TemporaryDirectory directory;
  makeClip(directory, "clip.avi", {"-c:v", "mpeg4"}, LIVELY_PICTURE);
  for (const auto& [start, end] : {std::pair("0:0:1:10", ""), {"", "0:0:1:10"}}) {
    const AnalysisOutcome outcome =
        analyse(directory.path + "/clip.avi", between(start, end)).outcome;
    EXPECT_EQ(outcome.end, AnalysisEnd::UNSUPPORTED);
    EXPECT_EQ(outcome.error, "there is no frame 10 in a second of 10 frames: 0:0:1:10");
    EXPECT_EQ(outcome.frames, 0);
  }
  EXPECT_EQ(analyse(directory.path + "/clip.avi", between("0:0:1:09", "f:20"), 19).frames.size(),
            1u);
}

TEST(VideoAnalysis, computesWhatIsRequested_withTheFrameRateThatIsGiven) {
  const TemporaryDirectory directory;
  makeClip(directory, "clip.avi", {"-vf", STILL_FOR_A_WHILE, "-c:v", "mpeg4"}, LIVELY_PICTURE);
  AnalysisOptions options;
  options.mask = BLUR | FREEZING;
  options.fps = 100.0;
  // Freezing rests on temporal activity (0x40) and blackout (0x80).
  EXPECT_EQ(reportOf(directory, analyse(directory.path + "/clip.avi", options).frames),
            lumaprobeReport(directory, "clip.avi", {"320", "272", "0x1e0", "100"}));
  options.mask = BLUR;
  EXPECT_EQ(reportOf(directory, analyse(directory.path + "/clip.avi", options).frames),
            lumaprobeReport(directory, "clip.avi", {"320", "272", "0x20", "100"}));
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

TEST(VideoAnalysis, placesFramesWithoutTimesByTheirRate) {
  const TemporaryDirectory directory;
  // A bare stream of H.264 holds no times; of 50 frames a second it says so itself.
  makeClip(directory, "clip.h264", {"-c:v", "libx264", "-bf", "2", "-pix_fmt", "yuv420p"},
           "testsrc2=size=128x80:rate=50:duration=0.5");
  const std::string path = directory.path + "/clip.h264";
  for (const auto& [start, first] :
       std::vector<std::pair<std::string, int64_t>>{{"", 0}, {"f:10", 10}, {"0.3", 15}}) {
    SCOPED_TRACE(start);
    const Analysis analysis = analyse(path, between(start, ""), first);
    ASSERT_EQ(analysis.frames.size(), static_cast<size_t>(25 - first));
    for (const FrameRecord& record : analysis.frames) {
      EXPECT_EQ(record.row.pts, NO_TIMESTAMP);
      EXPECT_NEAR(record.row.time, static_cast<double>(record.frame) / 50.0, 1e-9);
    }
  }
}

TEST(VideoAnalysis, comparesNothingWithWhatLiesBeforeItsRange) {
  const TemporaryDirectory directory;
  makeClip(directory, "clip.avi", {"-vf", "noise=alls=10", "-c:v", "mpeg4"}, LIVELY_PICTURE);
  const std::string path = directory.path + "/clip.avi";
  const Analysis all = analyse(path);
  const Analysis part = analyse(path, between("f:5", "f:8"), 5);
  ASSERT_EQ(part.frames.size(), 3u);
  for (const char* const temporal : {"temporal_activity", "freezing", "flickering"}) {
    EXPECT_TRUE(std::isnan(valueOf(part.frames[0], temporal))) << temporal;
    EXPECT_TRUE(std::isnan(valueOf(all.frames[0], temporal))) << temporal;
  }
  EXPECT_EQ(part.frames[0].temporal.temporalActivity, 0.0);
  EXPECT_GT(valueOf(part.frames[1], "temporal_activity"), 0.0);
  EXPECT_EQ(valueOf(part.frames[1], "temporal_activity"),
            valueOf(all.frames[6], "temporal_activity"));
  EXPECT_EQ(valueOf(part.frames[1], "freezing"), 0.0);
}

TEST(VideoAnalysis, countsTimecodesInTheFrameRateThatIsGiven) {
  const TemporaryDirectory directory;
  makeClip(directory, "clip.avi", {"-c:v", "mpeg4"});
  // At ten frames a second the third is at 0.3 s and the seventh at 0.7 s. Of the clip's own 25 a
  // second, frame 8 (0.32 s) is the first behind the one, frame 18 (0.72 s) that behind the other.
  AnalysisOptions options = between("00:00:00:03", "00:00:00:07");
  options.fps = 10.0;
  EXPECT_EQ(analyse(directory.path + "/clip.avi", options, 8).frames.size(), 10u);
  // In the clip's own rate they are frames 3 and 7.
  options.fps = 0.0;
  EXPECT_EQ(analyse(directory.path + "/clip.avi", options, 3).frames.size(), 4u);
}

TEST(VideoAnalysis, asksForTheEndOfTheFile_whereItIsReached) {
  const TemporaryDirectory directory;
  makeClip(directory, "clip.avi", {"-c:v", "mpeg4"});
  const std::string bytes = readFile(directory.path + "/clip.avi");
  writeFile(directory.path + "/cut.avi", bytes.substr(0, bytes.size() * 7 / 10));
  const auto isCut = [&](const char* name, const std::string& start, const std::string& end) {
    const int64_t first = start.empty() ? 0 : 5;
    return analyse(directory.path + "/" + name, between(start, end), first).outcome.isTruncated;
  };
  EXPECT_TRUE(isCut("cut.avi", "", ""));
  EXPECT_TRUE(isCut("cut.avi", "f:5", ""));
  EXPECT_TRUE(isCut("cut.avi", "0.2", "f:100"));
  EXPECT_FALSE(isCut("cut.avi", "f:5", "f:7"));
  EXPECT_FALSE(isCut("clip.avi", "f:5", ""));
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

TEST(VideoAnalysis, countsFramesThatAVIHasCounted) {
  const TemporaryDirectory directory;
  makeClip(directory, "clip.avi", {"-c:v", "mjpeg"});
  EXPECT_EQ(analyse(directory.path + "/clip.avi").outcome.missingAtEnd, 0);
  std::string bytes = readFile(directory.path + "/clip.avi");
  const std::vector<size_t> places = placesOfPackets(directory, "clip.avi");
  ASSERT_EQ(places.size(), 25u);
  // Nothing is left of two packets and of the headers of their chunks.
  constexpr size_t HEADER = 8;
  std::fill(bytes.begin() + static_cast<ptrdiff_t>(places[10] - HEADER),
            bytes.begin() + static_cast<ptrdiff_t>(places[12] - HEADER), '\0');
  writeFile(directory.path + "/damaged.avi", bytes);
  EXPECT_EQ(placesOfPackets(directory, "damaged.avi").size(), 23u);
  const AnalysisOutcome outcome = analyse(directory.path + "/damaged.avi").outcome;
  EXPECT_EQ(outcome.frames, 23);
  EXPECT_FALSE(outcome.isTruncated);
  EXPECT_EQ(outcome.missingAtEnd, 2);
}

TEST(VideoAnalysis, countsFramesWhosePacketsCame) {
  const TemporaryDirectory directory;
  makeClip(directory, "clip.mp4",
           {"-c:v", "libx264", "-bf", "0", "-pix_fmt", "yuv420p", "-x264-params", "slices=1"});
  EXPECT_EQ(analyse(directory.path + "/clip.mp4").outcome.missingAtEnd, 0);
  std::string bytes = readFile(directory.path + "/clip.mp4");
  const std::vector<size_t> places = placesOfPackets(directory, "clip.mp4");
  ASSERT_EQ(places.size(), 25u);
  // Behind its length of four bytes the data of a picture becomes data of no use.
  constexpr char FILLER = 12;
  for (const size_t packet : {22U, 23U, 24U}) bytes.at(places[packet] + 4) = FILLER;
  writeFile(directory.path + "/damaged.mp4", bytes);
  const AnalysisOutcome outcome = analyse(directory.path + "/damaged.mp4").outcome;
  EXPECT_EQ(outcome.frames, 22);
  EXPECT_EQ(outcome.missingAtEnd, 3);
  // Where the file's end is not reached nothing is known of it.
  EXPECT_EQ(analyse(directory.path + "/damaged.mp4", between("", "f:10")).outcome.missingAtEnd, 0);
}

TEST(VideoAnalysis, goesOnWhereRecordingsAreJoined) {
  const TemporaryDirectory directory;
  makeClip(directory, "clip.ts", {"-c:v", "mpeg2video"});
  const std::string clip = readFile(directory.path + "/clip.ts");
  writeFile(directory.path + "/joined.ts", clip + clip);
  const Analysis analysis = analyse(directory.path + "/joined.ts");
  ASSERT_EQ(analysis.frames.size(), 50u);
  for (size_t k = 0; k < 50; ++k)
    EXPECT_NEAR(analysis.frames[k].row.time, 0.04 * static_cast<double>(k), 1e-9) << k;
  ASSERT_EQ(analysis.outcome.joins.size(), 1u);
  EXPECT_EQ(analysis.outcome.joins[0].frame, 25);
  EXPECT_NEAR(analysis.outcome.joins[0].step, -0.96, 1e-9);
  EXPECT_NEAR(analysis.outcome.joins[0].offset, 1.0, 1e-9);
  EXPECT_EQ(analysis.outcome.missingAtEnd, 0);
  // What is said of the second one has its times.
  for (const DamageMessage& message : analysis.outcome.firstMessages) {
    EXPECT_GE(message.time, 1.0);
    EXPECT_EQ(shortestText(message.time), shortestText(wholeNanoseconds(message.time)));
  }
}

TEST(VideoAnalysis, passesOverNoFrameWhereTimesFallBack) {
  const TemporaryDirectory directory;
  makeClip(directory, "clip.ts", {"-c:v", "mpeg2video"});
  makeClip(directory, "later.ts",
           {"-c:v", "mpeg2video", "-frames:v", "5", "-output_ts_offset", "0.24"});
  writeFile(directory.path + "/both.ts",
            readFile(directory.path + "/later.ts") + readFile(directory.path + "/clip.ts"));
  const Analysis analysis = analyse(directory.path + "/both.ts");
  ASSERT_EQ(analysis.frames.size(), 30u);
  EXPECT_NEAR(analysis.frames[5].row.time, -0.2, 1e-9);
  const Analysis rest = analyse(directory.path + "/both.ts", between("0.1", ""), 3);
  EXPECT_EQ(rest.frames.size(), 27u);
}

TEST(VideoAnalysis, endsWhereTheSizeChanges) {
  const TemporaryDirectory directory;
  const Arguments encoding = {"-c:v", "libx264", "-pix_fmt", "yuv420p"};
  makeClip(directory, "first.ts", encoding);
  for (const char* const size : {"160x96", "128x64", "128x96", "112x80", "144x80"}) {
    SCOPED_TRACE(size);
    makeClip(directory, "second.ts", encoding, std::string("testsrc2=duration=0.2:size=") + size);
    writeFile(directory.path + "/both.ts",
              readFile(directory.path + "/first.ts") + readFile(directory.path + "/second.ts"));
    const Analysis analysis = analyse(directory.path + "/both.ts");
    EXPECT_EQ(analysis.outcome.end, AnalysisEnd::SIZE_CHANGE);
    EXPECT_EQ(analysis.frames.size(), 25u);
  }
}

TEST(VideoAnalysis, countsWhatWasRefused_whereverItEnds) {
  const TemporaryDirectory directory;
  // Pictures that do not need each other: 25, and 5 of another size.
  makeClip(directory, "first.mkv", {"-c:v", "png"});
  makeClip(directory, "second.mkv", {"-c:v", "png"}, "testsrc2=size=160x96:rate=25:duration=0.2");
  writeFile(directory.path + "/list", "file first.mkv\nfile second.mkv\n");
  ffmpeg(directory, {"-f", "concat", "-i", "list", "-c", "copy", "both.mkv"});
  std::string bytes = readFile(directory.path + "/both.mkv");
  // Without its header chunk a picture is refused: 4 and 8 of the first size, 27 of the second.
  int picture = 0;
  for (size_t at = 0; (at = bytes.find("IHDR", at)) != std::string::npos; ++at, ++picture) {
    if (picture == 4 || picture == 8 || picture == 27) bytes[at] = 'x';
  }
  ASSERT_EQ(picture, 30);
  writeFile(directory.path + "/both.mkv", bytes);
  for (const bool isThreaded : {false, true}) {
    SCOPED_TRACE(isThreaded);
    AnalysisOptions options;
    options.isThreaded = isThreaded;
    const AnalysisOutcome all = analyse(directory.path + "/both.mkv", options).outcome;
    EXPECT_EQ(all.end, AnalysisEnd::SIZE_CHANGE);
    EXPECT_EQ(all.frames, 23);
    EXPECT_EQ(all.decodeErrors, 2);
    // Frame 6 is picture 7: that the one behind it is refused is not to be known, however far ahead
    // the decoder is.
    options.end = between("", "f:6").end;
    const AnalysisOutcome some = analyse(directory.path + "/both.mkv", options).outcome;
    EXPECT_EQ(some.end, AnalysisEnd::COMPLETE);
    EXPECT_EQ(some.frames, 6);
    EXPECT_EQ(some.decodeErrors, 1);
  }
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

TEST(VideoAnalysis, endsWhereItIsAskedTo_ofAVideoWithoutAnEnd) {
  VideoReader reader;
  ASSERT_EQ(openVideo({"/dev/zero", 16, 16, "25"}, 1, &reader), "");
  AnalysisOptions options = between("", "f:3");
  options.isThreaded = true;
  int frames = 0;
  analyseVideo(options, &reader, [&](const FrameRecord&) { ++frames; });
  EXPECT_EQ(frames, 3);
}
