// Pictures of frames: which, and that they really are of these frames.
#include "scan/results/thumbnails.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numeric>

#include "clips.h"
#include "scan/analysis/videoAnalysis.h"
#include "tables.h"

namespace {

using Frames = std::vector<int64_t>;

Event eventOf(Severity severity, int64_t first, int64_t peak, int64_t last) {
  Event event;
  event.severity = severity;
  event.firstFrame = first;
  event.peakFrame = peak;
  event.lastFrame = last;
  return event;
}

// Frames 0 to 49, each of one luma level: that of frame k is 16 + 4 * k, which differs from its
// neighbours' by more than lossy encoding changes.
constexpr const char* LEVELS =
    "nullsrc=size=64x48:rate=25:duration=2,format=yuv420p,geq=lum=16+4*N:cb=128:cr=128";
constexpr int FRAMES = 50;

// What a scan stores of the frames, with numbers that count from the file's first frame.
FrameTable framesOf(const VideoSource& source, const std::string& start = "", int threads = 1) {
  av_log_set_level(AV_LOG_QUIET);
  VideoReader reader;
  EXPECT_EQ(openVideo(source, threads, &reader), "");
  AnalysisOptions options;
  options.mask = EXPOSURE;
  EXPECT_TRUE(start.empty() || parsePosition(start, &options.start));
  FrameTable table;
  analyseVideo(options, &reader, [&](const FrameRecord& record) {
    if (table.rows() == 0) table.firstFrame = record.frame;
    appendRow(record.row, &table);
  });
  return table;
}

// A JPEG picture's size and mean luma, brought back to video range.
struct Decoded {
  int w = 0;
  int h = 0;
  double luma = 0.0;
};

Decoded decode(const std::string& jpeg) {
  const TemporaryDirectory directory;
  writeFile(directory.path + "/picture.jpg", jpeg);
  VideoReader reader;
  EXPECT_EQ(openVideo({directory.path + "/picture.jpg", 0, 0, ""}, 1, &reader), "");
  const FfmpegOwner<AVFrame> picture(av_frame_alloc());
  std::string error;
  if (readFrame(&reader, picture.get(), &error) != ReadResult::FRAME) return {};
  double sum = 0.0;
  for (int y = 0; y < picture->height; ++y) {
    const uint8_t* const row = picture->data[0] + static_cast<ptrdiff_t>(y) * picture->linesize[0];
    sum = std::accumulate(row, row + picture->width, sum);
  }
  return {picture->width, picture->height, sum / picture->width / picture->height};
}

// The frame that a picture of LEVELS shows: JPEG has full range, 219 levels are 255.
int64_t frameShown(const std::string& jpeg) {
  return std::llround(decode(jpeg).luma * 219.0 / 255.0 / 4.0);
}

// Expects pictures of all these frames, each of the right one.
void expectPictures(const VideoSource& source, const FrameTable& table, const Frames& wanted) {
  const Thumbnails thumbnails = makeThumbnails(source, table, wanted);
  Frames made;
  for (const auto& [frame, jpeg] : thumbnails) {
    made.push_back(frame);
    EXPECT_EQ(frameShown(jpeg), frame);
  }
  EXPECT_EQ(made, wanted);
}

Frames everyFrame(int64_t first = 0, int64_t step = 1) {
  Frames frames;
  for (int64_t frame = first; frame < FRAMES; frame += step) frames.push_back(frame);
  return frames;
}

// All frames of a clip at once, and single ones, which are sought.
void expectAnyPictures(const VideoSource& source, const FrameTable& table) {
  ASSERT_EQ(table.firstFrame + table.rows(), FRAMES);
  expectPictures(source, table, everyFrame(table.firstFrame));
  for (const int64_t frame : everyFrame(table.firstFrame, 7)) {
    SCOPED_TRACE(frame);
    expectPictures(source, table, {frame});
  }
  expectPictures(source, table, {table.firstFrame + 1, 33, 34, 49});
}

void expectAnyPicturesOfClip(const std::string& name, const Arguments& encoding) {
  const TemporaryDirectory directory;
  makeClip(directory, name, encoding, LEVELS);
  const VideoSource source = {directory.path + "/" + name, 0, 0, ""};
  for (const int threads : {1, 3}) {
    SCOPED_TRACE(threads);
    expectAnyPictures(source, framesOf(source, "", threads));
  }
  SCOPED_TRACE("a cut start");
  expectAnyPictures(source, framesOf(source, "f:17"));
}

}  // namespace

TEST(FramesToShow, areStartPeakAndEndOfEvents_eachOnce) {
  const std::vector<Event> events = {eventOf(Severity::FAIL, 40, 41, 49),
                                     eventOf(Severity::WARN, 3, 3, 3),
                                     eventOf(Severity::INFO, 3, 5, 41)};
  EXPECT_EQ(framesToShow(events, Thumbs::EVENTS, emptyTable(50)), Frames({3, 5, 40, 41, 49}));
}

TEST(FramesToShow, areNone_whenNoneAreWantedOrThereIsNothing) {
  const std::vector<Event> events = {eventOf(Severity::FAIL, 1, 2, 3)};
  EXPECT_EQ(framesToShow(events, Thumbs::NONE, emptyTable(50)), Frames());
  EXPECT_EQ(framesToShow({}, Thumbs::EVENTS, emptyTable(50)), Frames());
  EXPECT_EQ(framesToShow({}, Thumbs::ALL, emptyTable(0)), Frames());
  EXPECT_EQ(framesToShow({eventOf(Severity::FAIL, 0, 0, 0)}, Thumbs::EVENTS, emptyTable(1)),
            Frames({0}));
}

TEST(FramesToShow, areThoseOfTheFortyGravestEvents) {
  // 30 of each severity, the gravest last: all that fail, and the first ten that warn.
  std::vector<Event> events;
  Frames expected;
  for (int64_t i = 0; i < 90; ++i) {
    events.push_back(eventOf(static_cast<Severity>(i / 30), i, i, i));
    if ((i >= 30 && i < 40) || i >= 60) expected.push_back(i);
  }
  EXPECT_EQ(framesToShow(events, Thumbs::EVENTS, emptyTable(90)), expected);
}

TEST(FramesToShow, leaveOutWhatTakesTooMuchDecoding_andNothingElse) {
  // Of 1000 frames 300 may be decoded once more, from the key frames 0 and 500 on.
  FrameTable table = emptyTable(1000);
  table.isKey.set(0, true);
  table.isKey.set(500, true);
  const std::vector<Event> events = {
      eventOf(Severity::FAIL, 455, 455, 455),  // 456 frames: too many
      eventOf(Severity::WARN, 100, 199, 455),  // 200 for the peak, which the first one is among
      eventOf(Severity::WARN, 598, 601, 599),  // 102 are too many; 99 are not, nor is one more
      eventOf(Severity::INFO, 0, 201, 0)};     // two more are too many
  EXPECT_EQ(framesToShow(events, Thumbs::EVENTS, table), Frames({0, 100, 199, 598, 599}));
  const Frames all = framesToShow(events, Thumbs::ALL, table);
  for (const int64_t frame : {455, 601, 201}) {
    EXPECT_EQ(std::count(all.begin(), all.end(), frame), 1) << frame;
  }
}

TEST(FramesToShow, areHadByDecodingOneFrameIn25_ofALongVideo) {
  // 400 of 10,000, from the only key frame on.
  FrameTable table = emptyTable(10000);
  table.isKey.set(0, true);
  EXPECT_EQ(framesToShow({eventOf(Severity::FAIL, 399, 399, 399)}, Thumbs::EVENTS, table),
            Frames({399}));
  EXPECT_EQ(framesToShow({eventOf(Severity::FAIL, 400, 400, 400)}, Thumbs::EVENTS, table),
            Frames());
}

TEST(FramesToShow, areHadByDecodingFromTheFirstOne_withoutAKeyFrame) {
  const FrameTable table = emptyTable(1000);  // of which 300 may be decoded
  for (const int64_t frame : {299, 300}) {
    const Frames shown =
        framesToShow({eventOf(Severity::FAIL, frame, frame, frame)}, Thumbs::EVENTS, table);
    EXPECT_EQ(shown.size(), frame == 299 ? 1u : 0u);
  }
}

TEST(FramesToShow, areAHundredAtEqualDistancesMore_whenAllAreWanted) {
  FrameTable table = emptyTable(1000);
  table.firstFrame = 5;
  Frames expected;
  for (int64_t k = 0; k < 100; ++k) expected.push_back(5 + 10 * k);
  EXPECT_EQ(framesToShow({}, Thumbs::ALL, table), expected);
  const std::vector<Event> events = {eventOf(Severity::INFO, 6, 15, 1004)};
  expected.insert(expected.begin() + 1, 6);
  expected.push_back(1004);
  EXPECT_EQ(framesToShow(events, Thumbs::ALL, table), expected);
}

TEST(FramesToShow, areAllFramesOfAShortVideo_whenAllAreWanted) {
  FrameTable table = emptyTable(3);
  table.firstFrame = 7;
  EXPECT_EQ(framesToShow({}, Thumbs::ALL, table), Frames({7, 8, 9}));
}

TEST(Thumbnails, areOfTheirFrames_inH264WithLongGroupsAndBFrames) {
  const Arguments encoding = {"-c:v", "libx264", "-qp",           "4", "-g",          "20",
                              "-bf",  "3",       "-sc_threshold", "0", "-b_strategy", "0"};
  for (const char* const name : {"clip.mp4", "clip.mkv", "clip.flv", "clip.ts", "clip.avi"}) {
    SCOPED_TRACE(name);
    expectAnyPicturesOfClip(name, encoding);
  }
}

TEST(Thumbnails, areOfTheirFrames_inH264WithOpenAndShortGroups) {
  for (const char* const keys : {"2", "4"}) {
    SCOPED_TRACE(keys);
    expectAnyPicturesOfClip("clip.mp4", {"-c:v", "libx264", "-qp", "4", "-g", keys, "-bf", "3",
                                         "-x264opts", "open-gop=1", "-b_strategy", "0"});
  }
}

TEST(Thumbnails, areOfTheirFrames_inH264OfOneGroup) {
  expectAnyPicturesOfClip("clip.mp4", {"-c:v", "libx264", "-qp", "4", "-g", "1000"});
}

TEST(Thumbnails, areOfTheirFrames_inAVI) {
  expectAnyPicturesOfClip("clip.avi", {"-c:v", "mpeg4", "-q:v", "2", "-g", "12"});
  expectAnyPicturesOfClip("clip.avi", {"-c:v", "mpeg4", "-q:v", "2", "-g", "12", "-bf", "2"});
}

TEST(Thumbnails, areOfTheirFrames_inMPEGStreams) {
  expectAnyPicturesOfClip("clip.ts", {"-c:v", "mpeg2video", "-q:v", "2", "-g", "12", "-bf", "2"});
  expectAnyPicturesOfClip("clip.mpg", {"-c:v", "mpeg2video", "-q:v", "2", "-g", "12", "-bf", "2"});
}

TEST(Thumbnails, areOfTheirFrames_inAStreamWithoutTimes) {
  expectAnyPicturesOfClip("clip.h264", {"-c:v", "libx264", "-qp", "4", "-g", "10", "-bf", "3"});
}

TEST(Thumbnails, areOfTheirFrames_whereRecordingsAreJoined) {
  const TemporaryDirectory directory;
  // Both halves have the same timestamps.
  for (const char* const half : {"0", "25"}) {
    makeClip(directory, std::string(half) + ".ts",
             {"-vf", std::string("trim=start_frame=") + half + ",setpts=PTS-STARTPTS", "-frames:v",
              "25", "-c:v", "mpeg2video", "-q:v", "2", "-g", "5"},
             LEVELS);
  }
  const std::string path = directory.path + "/joined.ts";
  writeFile(path, readFile(directory.path + "/0.ts") + readFile(directory.path + "/25.ts"));
  const VideoSource source = {path, 0, 0, ""};
  expectAnyPictures(source, framesOf(source));
}

TEST(Thumbnails, areOfTheirFrames_whereEveryFrameIsAKey) {
  expectAnyPicturesOfClip("clip.mkv", {"-c:v", "ffv1"});
}

TEST(Thumbnails, areOfTheirFrames_inRawVideo) {
  const TemporaryDirectory directory;
  makeClip(directory, "clip.yuv", {"-f", "rawvideo"}, LEVELS);
  const VideoSource source = {directory.path + "/clip.yuv", 64, 48, "25"};
  expectAnyPictures(source, framesOf(source));
  expectAnyPictures(source, framesOf(source, "f:17"));
}

TEST(Thumbnails, haveAtMost240Columns_andSquareSamples) {
  const TemporaryDirectory directory;
  const auto sizeOf = [&](const std::string& size, const std::string& shape) {
    makeClip(directory, "clip.mkv", {"-c:v", "ffv1", "-frames:v", "1", "-vf", "setsar=" + shape},
             "testsrc2=duration=1:size=" + size);
    const VideoSource source = {directory.path + "/clip.mkv", 0, 0, ""};
    const Decoded picture = decode(makeThumbnails(source, framesOf(source), {0})[0]);
    return std::to_string(picture.w) + "x" + std::to_string(picture.h);
  };
  EXPECT_EQ(sizeOf("100x60", "1/1"), "100x60");
  EXPECT_EQ(sizeOf("480x270", "1/1"), "240x135");
  // 360 x 288 samples of 4:3 are shown as wide as 480: half of both sides.
  EXPECT_EQ(sizeOf("360x288", "4/3"), "240x144");
  // Of samples whose shape is not known nothing else can be assumed.
  EXPECT_EQ(sizeOf("100x60", "0/1"), "100x60");
}

TEST(Thumbnails, areOfQualityFive) {
  const TemporaryDirectory directory;
  makeClip(directory, "clip.mkv", {"-c:v", "ffv1"});
  const VideoSource source = {directory.path + "/clip.mkv", 0, 0, ""};
  const std::string jpeg = makeThumbnails(source, framesOf(source), {0})[0];
  // Marker, length and number of a table of quantisers, of which the second is that of MPEG-1, 16,
  // times five eighths.
  const size_t table = jpeg.find("\xff\xdb");
  ASSERT_NE(table, std::string::npos);
  EXPECT_EQ(jpeg.at(table + 6), 10);
}

TEST(Thumbnails, areNone_whenNoneAreWantedOrTheFileIsGone) {
  const TemporaryDirectory directory;
  makeClip(directory, "clip.mkv", {"-c:v", "ffv1"});
  const VideoSource source = {directory.path + "/clip.mkv", 0, 0, ""};
  const FrameTable table = framesOf(source);
  EXPECT_TRUE(makeThumbnails(source, table, {}).empty());
  EXPECT_TRUE(makeThumbnails({directory.path + "/gone.mkv", 0, 0, ""}, table, {0}).empty());
}

TEST(Thumbnails, leaveOutFramesThatAreNotFoundAgain) {
  const TemporaryDirectory directory;
  makeClip(directory, "clip.mkv", {"-c:v", "ffv1"}, LEVELS);
  const VideoSource source = {directory.path + "/clip.mkv", 0, 0, ""};
  FrameTable table = framesOf(source);
  // A timestamp that no frame has any more.
  table.pts.set(20, table.pts[20] + 1);
  const Thumbnails thumbnails = makeThumbnails(source, table, {10, 20, 30, 31});
  ASSERT_EQ(thumbnails.size(), 3u);
  for (const auto& [frame, jpeg] : thumbnails) EXPECT_EQ(frameShown(jpeg), frame);
  EXPECT_EQ(thumbnails.count(20), 0u);
}
