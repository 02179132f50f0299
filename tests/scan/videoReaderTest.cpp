// Frames of files of many kinds against those that the ffmpeg program decodes from them.
#include "scan/video/videoReader.h"

#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <functional>
#include <iterator>
#include <optional>
#include <sstream>
#include <vector>

#include "clips.h"
#include "scan/video/luma.h"

extern "C" {
#include <libavutil/crc.h>
}

namespace {

struct Reading {
  std::string openError;
  std::string readError;
  std::string luma;  // of all frames, one after the other
  std::vector<double> times;
  int64_t decodeErrors = 0;
  int corrupt = 0;
};

Reading readAll(const std::string& path, int threads = 1) {
  av_log_set_level(AV_LOG_QUIET);
  Reading reading;
  VideoReader reader;
  reading.openError = openVideo({path, 0, 0, ""}, threads, &reader);
  if (!reading.openError.empty()) return reading;
  LumaConverter converter;
  const FfmpegOwner<AVFrame> frame(av_frame_alloc());
  const AVFrame& picture = *frame;
  while (readFrame(&reader, frame.get(), &reading.readError) == ReadResult::FRAME) {
    std::vector<uint8_t> luma(static_cast<size_t>(picture.width) *
                              static_cast<size_t>(picture.height));
    EXPECT_TRUE(convertToLuma(&picture, &converter, luma.data()));
    reading.luma.append(luma.begin(), luma.end());
    reading.times.push_back(presentationTime(reader, picture));
    reading.corrupt += isCorrupt(picture) ? 1 : 0;
  }
  reading.decodeErrors = reader.decodeErrors;
  return reading;
}

void expectFrames(const TemporaryDirectory& directory, const std::string& name, size_t frames,
                  size_t w = 128, size_t h = 80) {
  const std::string expected = lumaByProgram(directory, name, w, h);
  ASSERT_EQ(expected.size(), frames * w * h);
  for (const int threads : {1, 0}) {
    SCOPED_TRACE(threads);
    const Reading reading = readAll(directory.path + "/" + name, threads);
    EXPECT_EQ(reading.openError, "");
    EXPECT_EQ(reading.readError, "");
    EXPECT_EQ(reading.decodeErrors, 0);
    EXPECT_EQ(reading.corrupt, 0);
    ASSERT_EQ(reading.times.size(), frames);
    EXPECT_TRUE(reading.luma == expected);
  }
}

// What the ffprobe program says of a clip, a value in each line.
std::vector<double> numbersByProgram(const TemporaryDirectory& directory, const std::string& name,
                                     const std::string& entries) {
  const ProgramRun run = runProgram("/usr/bin/ffprobe",
                                    {"-v", "error", "-select_streams", "v:0", "-show_entries",
                                     entries, "-of", "default=noprint_wrappers=1:nokey=1", name},
                                    directory.path);
  EXPECT_EQ(run.status, 0) << run.err;
  std::istringstream lines(run.out);
  return {std::istream_iterator<double>(lines), {}};
}

// Expects times that begin with the file, as those of the ffprobe program do when its start is
// taken away. They are printed with six decimals.
void expectTimesFromTheStart(const TemporaryDirectory& directory, const std::string& name) {
  const std::vector<double> start = numbersByProgram(directory, name, "format=start_time");
  const std::vector<double> times = numbersByProgram(directory, name, "frame=pts_time");
  ASSERT_EQ(start.size(), 1u);
  ASSERT_EQ(times.size(), 25u);
  EXPECT_GT(start[0], 1.0);
  const Reading reading = readAll(directory.path + "/" + name);
  ASSERT_EQ(reading.times.size(), times.size());
  for (size_t k = 0; k < times.size(); ++k) {
    EXPECT_NEAR(reading.times[k], times[k] - start[0], 2e-6) << name << " " << k;
  }
}

std::string openError(const std::string& path) {
  return readAll(path).openError;
}

// Whether a file ends too early, once all of it is read; nothing when it cannot be opened.
std::optional<bool> truncationOf(const VideoSource& source) {
  av_log_set_level(AV_LOG_QUIET);
  VideoReader reader;
  if (!openVideo(source, 1, &reader).empty()) return std::nullopt;
  const FfmpegOwner<AVFrame> picture(av_frame_alloc());
  std::string error;
  while (readFrame(&reader, picture.get(), &error) == ReadResult::FRAME) {
  }
  EXPECT_EQ(error, "");
  return isTruncated(reader);
}

// Overwrites what some of the pictures in a file begin with. Returns how many pictures there are.
int spoil(const std::string& beginning, const std::function<bool(int)>& isSpoilt,
          std::string* bytes) {
  int pictures = 0;
  for (size_t at = 0; (at = bytes->find(beginning, at)) != std::string::npos; ++at) {
    if (isSpoilt(pictures++)) (*bytes)[at] = 'x';
  }
  return pictures;
}

const std::optional<bool> notTruncated = false;

void expectWhole(const TemporaryDirectory& directory, const std::string& name) {
  EXPECT_EQ(truncationOf({directory.path + "/" + name, 0, 0, ""}), notTruncated) << name;
}

// Copies streams into another container, in the form that it wants of H.264.
void copyInto(const TemporaryDirectory& directory, Arguments arguments, const std::string& name) {
  arguments.insert(arguments.end(), {"-c", "copy"});
  const auto isNamed = [&](const char* end) { return name.find(end) != std::string::npos; };
  if (isNamed(".avi")) arguments.insert(arguments.end(), {"-bsf:v", "h264_mp4toannexb"});
  if (isNamed("front.mp4")) arguments.insert(arguments.end(), {"-movflags", "+faststart"});
  arguments.push_back(name);
  ffmpeg(directory, arguments);
}

// Expects that a file is whole, and that all of its parts that can be opened, cut at each tenth,
// are not. There are at least `openable` of these.
void expectCutsToShow(const TemporaryDirectory& directory, const std::string& name, int openable) {
  SCOPED_TRACE(name);
  expectWhole(directory, name);
  const std::string bytes = readFile(directory.path + "/" + name);
  const std::string part = directory.path + "/part-" + name;
  int opened = 0;
  for (size_t tenth = 1; tenth < 10; ++tenth) {
    writeFile(part, bytes.substr(0, bytes.size() * tenth / 10));
    const std::optional<bool> truncation = truncationOf({part, 0, 0, ""});
    opened += truncation.has_value() ? 1 : 0;
    EXPECT_TRUE(truncation.value_or(true)) << tenth << " tenths";
  }
  EXPECT_GE(opened, openable);
}

}  // namespace

TEST(VideoReader, givesTheFramesOfMPEG4InAVI) {
  const TemporaryDirectory directory;
  makeClip(directory, "clip.avi", {"-c:v", "mpeg4", "-q:v", "5"});
  expectFrames(directory, "clip.avi", 25);
}

TEST(VideoReader, givesTheFramesOfH264InTheOrderOfTheirDisplay) {
  const TemporaryDirectory directory;
  makeClip(directory, "clip.mp4", {"-c:v", "libx264", "-bf", "3", "-pix_fmt", "yuv420p"});
  expectFrames(directory, "clip.mp4", 25);
  const Reading reading = readAll(directory.path + "/clip.mp4");
  for (size_t k = 0; k < reading.times.size(); ++k) {
    EXPECT_NEAR(reading.times[k], static_cast<double>(k) / 25.0, 1e-9);
  }
}

TEST(VideoReader, givesTheFramesOfVP9InWebM) {
  const TemporaryDirectory directory;
  makeClip(directory, "clip.webm", {"-c:v", "libvpx-vp9", "-deadline", "realtime", "-b:v", "300k"});
  expectFrames(directory, "clip.webm", 25);
}

TEST(VideoReader, givesLumaOfAnyChromaFormatAndOddSizes) {
  const TemporaryDirectory directory;
  for (const char* const format : {"yuv420p", "yuv422p", "yuv444p", "yuva420p"}) {
    SCOPED_TRACE(format);
    makeClip(directory, "clip.mkv", {"-c:v", "ffv1", "-pix_fmt", format},
             "testsrc=size=33x17:rate=25:duration=0.2");
    expectFrames(directory, "clip.mkv", 5, 33, 17);
  }
}

TEST(VideoReader, givesLumaOfRGBAndGreyAsTheProgramConvertsIt) {
  const TemporaryDirectory directory;
  for (const char* const format : {"bgr0", "gray"}) {
    SCOPED_TRACE(format);
    makeClip(directory, "clip.mkv", {"-c:v", "ffv1", "-pix_fmt", format});
    ffmpeg(directory, {"-i", "clip.mkv", "-sws_flags", "bicubic+accurate_rnd+bitexact",
                       "-sws_dither", "none", "-pix_fmt", "yuv420p", "-c:v", "ffv1", "same.mkv"});
    const Reading reading = readAll(directory.path + "/clip.mkv");
    EXPECT_EQ(reading.times.size(), 25u);
    EXPECT_TRUE(reading.luma == lumaByProgram(directory, "same.mkv", 128, 80));
  }
}

TEST(VideoReader, takesTheTimesOfVariableFrameRate) {
  const TemporaryDirectory directory;
  // Every frame is shown for as many fortieths of a second as its number says, starting with one.
  makeClip(directory, "clip.mkv",
           {"-vf", "settb=1/1000,setpts=25*N*(N+1)/2", "-fps_mode", "passthrough", "-enc_time_base",
            "1:1000", "-c:v", "ffv1"},
           "testsrc2=size=64x64:rate=25:duration=0.4");
  const Reading reading = readAll(directory.path + "/clip.mkv");
  ASSERT_EQ(reading.times.size(), 10u);
  for (int k = 0; k < 10; ++k) {
    EXPECT_NEAR(reading.times[static_cast<size_t>(k)], k * (k + 1) / 80.0, 0.0011) << k;
  }
}

TEST(VideoReader, takesTimesFromTheStartOfTheFile_whateverTheirZeroIs) {
  const TemporaryDirectory directory;
  makeClip(directory, "clip.ts", {"-c:v", "libx264", "-bf", "2", "-pix_fmt", "yuv420p"});
  expectTimesFromTheStart(directory, "clip.ts");
  EXPECT_NEAR(readAll(directory.path + "/clip.ts").times[10], 10 / 25.0, 1e-5);
  // The file begins with its sound, half a second before its pictures.
  ffmpeg(directory, {"-f", "lavfi", "-i", "sine=duration=1", "-itsoffset", "0.5", "-i", "clip.ts",
                     "-c:v", "copy", "-c:a", "mp2", "sound.ts"});
  expectTimesFromTheStart(directory, "sound.ts");
  EXPECT_NEAR(readAll(directory.path + "/sound.ts").times[0], 0.5, 0.1);
}

TEST(VideoReader, beginsAtZero_whereTheStartIsNoWholeMicrosecond) {
  const TemporaryDirectory directory;
  // The first frame at a thirtieth of a second, which is no whole microsecond.
  ffmpeg(directory, {"-f", "lavfi", "-i", "testsrc2=size=64x64:rate=30:duration=1", "-vf",
                     "setpts=PTS+1", "-c:v", "ffv1", "clip.nut"});
  const Reading reading = readAll(directory.path + "/clip.nut");
  ASSERT_EQ(reading.times.size(), 30u);
  EXPECT_EQ(reading.times[0], 0.0);
  EXPECT_NEAR(reading.times[29], 29.0 / 30.0, 1e-12);
}

TEST(VideoReader, knowsTheAverageFrameRate) {
  const TemporaryDirectory directory;
  makeClip(directory, "clip.mkv", {"-c:v", "ffv1"},
           "testsrc2=size=64x64:rate=30000/1001:duration=1");
  VideoReader reader;
  ASSERT_EQ(openVideo({directory.path + "/clip.mkv", 0, 0, ""}, 1, &reader), "");
  EXPECT_NEAR(averageFrameRate(reader), 30000.0 / 1001.0, 1e-6);
}

TEST(VideoReader, knowsTheFrameRateOfPackets_whereTheStreamDoesNotSay) {
  const TemporaryDirectory directory;
  const auto rateOf = [&](const std::string& name) {
    VideoReader reader;
    EXPECT_EQ(openVideo({directory.path + "/" + name, 0, 0, ""}, 1, &reader), "");
    return averageFrameRate(reader);
  };
  for (const auto& [text, rate] :
       {std::pair("50", 50.0), {"30000/1001", 30000.0 / 1001.0}, {"12", 12.0}}) {
    const std::string source = "testsrc2=size=64x64:duration=2:rate=" + std::string(text);
    makeClip(directory, "clip.ogv", {"-c:v", "libtheora"}, source);
    makeClip(directory, "clip.ivf", {"-c:v", "libvpx", "-deadline", "realtime"}, source);
    EXPECT_NEAR(rateOf("clip.ogv"), rate, 1e-9);
    EXPECT_NEAR(rateOf("clip.ivf"), rate, 1e-9);
    // What was read to see the rate is decoded all the same.
    expectFrames(directory, "clip.ogv", static_cast<size_t>(std::lround(2 * rate)), 64, 64);
  }
}

TEST(VideoReader, choosesTheVideoAmongOtherStreams) {
  const TemporaryDirectory directory;
  makeClip(directory, "cover.png", {"-frames:v", "1"}, "testsrc2=size=640x480");
  makeClip(directory, "clip.mp4",
           {"-f",
            "lavfi",
            "-i",
            "sine=duration=1",
            "-i",
            "cover.png",
            "-map",
            "2",
            "-map",
            "1",
            "-map",
            "0",
            "-c:v:0",
            "png",
            "-disposition:v:0",
            "attached_pic",
            "-c:v:1",
            "mpeg4",
            "-c:a",
            "aac"});
  const Reading reading = readAll(directory.path + "/clip.mp4");
  EXPECT_EQ(reading.openError, "");
  EXPECT_EQ(reading.times.size(), 25u);
  EXPECT_EQ(reading.luma.size(), 25u * 128 * 80);
}

TEST(VideoReader, takesTheStreamThatIsNamed) {
  const TemporaryDirectory directory;
  makeClip(directory, "large.mp4", {"-c:v", "mpeg4"});
  makeClip(directory, "small.mp4", {"-c:v", "mpeg4"}, "testsrc2=size=64x48:rate=25:duration=1");
  ffmpeg(directory, {"-f", "lavfi", "-i", "sine=duration=1", "-i", "large.mp4", "-i", "small.mp4",
                     "-map", "0", "-map", "1", "-map", "2", "-c:v", "copy", "both.mp4"});
  const std::string path = directory.path + "/both.mp4";
  const auto widthOf = [&](int stream) {
    VideoReader reader;
    EXPECT_EQ(openVideo({path, 0, 0, "", stream}, 1, &reader), "");
    return videoStream(reader).codecpar->width;
  };
  EXPECT_EQ(widthOf(-1), 128);
  EXPECT_EQ(widthOf(1), 128);
  EXPECT_EQ(widthOf(2), 64);
  for (const int other : {0, 3}) {
    VideoReader reader;
    EXPECT_EQ(openVideo({path, 0, 0, "", other}, 1, &reader),
              "stream " + std::to_string(other) + " of it is no video");
  }
}

// FFmpeg's own choice is the cover: streams for the visually impaired come last there.
TEST(VideoReader, choosesTheVideo_whateverItIsFor) {
  const TemporaryDirectory directory;
  makeClip(directory, "cover.png", {"-frames:v", "1"});
  makeClip(directory, "clip.mkv",
           {"-attach", "cover.png", "-metadata:s:t", "mimetype=image/png", "-c:v", "ffv1",
            "-disposition:v:0", "visual_impaired"});
  expectFrames(directory, "clip.mkv", 25);
}

TEST(VideoReader, saysWhyThereIsNothingToRead) {
  const TemporaryDirectory directory;
  EXPECT_EQ(openError(directory.path + "/missing.mp4"), "No such file or directory");
  writeFile(directory.path + "/notes.mp4", "no video at all, whatever its name says\n");
  EXPECT_EQ(openError(directory.path + "/notes.mp4"), "Invalid data found when processing input");
  writeFile(directory.path + "/empty.mp4", "");
  EXPECT_EQ(openError(directory.path + "/empty.mp4"), "Invalid data found when processing input");
  ffmpeg(directory, {"-f", "lavfi", "-i", "sine=duration=1", "sound.wav"});
  EXPECT_EQ(openError(directory.path + "/sound.wav"),
            "there is no video in it, but what FFmpeg calls \"wav\"");
  makeClip(directory, "cover.png", {"-frames:v", "1"});
  ffmpeg(directory, {"-i", "sound.wav", "-i", "cover.png", "-map", "0", "-map", "1", "-c:v", "copy",
                     "cover.mp3"});
  EXPECT_EQ(openError(directory.path + "/cover.mp3"),
            "there is no video in it, but what FFmpeg calls \"mp3\"");
  ffmpeg(directory,
         {"-i", "cover.png", "-c", "copy", "-disposition:v", "attached_pic", "cover.m4a"});
  EXPECT_EQ(openError(directory.path + "/cover.m4a"), "there is no video in it");
}

TEST(VideoReader, saysWhatToDo_whereRawVideoHasNoSize) {
  const TemporaryDirectory directory;
  writeFile(directory.path + "/film.yuv", std::string(38016, 'x'));
  VideoReader reader;
  EXPECT_EQ(openVideo({directory.path + "/film.yuv", 0, 0, ""}, 1, &reader),
            "raw video says nothing about itself: give --raw WIDTHxHEIGHT@FPS");
  EXPECT_EQ(openVideo({directory.path + "/film.yuv", 176, 144, "25"}, 1, &reader), "");
}

TEST(VideoReader, takesNamesThatLookLikeAddresses) {
  const TemporaryDirectory directory;
  makeClip(directory, "clip.avi", {"-c:v", "mpeg4"});
  std::filesystem::current_path(directory.path);
  for (const char* const name : {"http:clip,%d \"1\"\n.avi", "./-", "pipe:0", "concat:a|b"}) {
    std::filesystem::rename("clip.avi", name);
    EXPECT_EQ(readAll(name).times.size(), 25u) << name;
    std::filesystem::rename(name, "clip.avi");
  }
  std::filesystem::current_path("/");
}

TEST(VideoReader, givesWhatIsLeftOfATruncatedFile) {
  const TemporaryDirectory directory;
  makeClip(directory, "clip.avi", {"-c:v", "mpeg4", "-g", "5"});
  const std::string whole = readFile(directory.path + "/clip.avi");
  size_t frames = 0;
  for (size_t tenth = 1; tenth <= 10; ++tenth) {
    writeFile(directory.path + "/part.avi", whole.substr(0, whole.size() * tenth / 10));
    const Reading reading = readAll(directory.path + "/part.avi");
    EXPECT_GE(reading.times.size(), frames) << tenth;
    frames = reading.times.size();
  }
  EXPECT_EQ(frames, 25u);
}

TEST(VideoReader, fails_whereTheContainerCannotBeReadAnyFurther) {
  const TemporaryDirectory directory;
  makeClip(directory, "clip.y4m", {"-pix_fmt", "yuv420p"});
  std::string bytes = readFile(directory.path + "/clip.y4m");
  size_t at = 0;
  for (int frame = 0; frame <= 10; ++frame) at = bytes.find("FRAME\n", at + 1);
  bytes.replace(at, 5, "frame");
  writeFile(directory.path + "/clip.y4m", bytes);
  const Reading reading = readAll(directory.path + "/clip.y4m");
  EXPECT_EQ(reading.times.size(), 10u);
  EXPECT_EQ(reading.readError, "Invalid data found when processing input");
}

TEST(VideoReader, goesOnBehindDamage) {
  const TemporaryDirectory directory;
  makeClip(directory, "clip.avi", {"-c:v", "mpeg4", "-g", "5"});
  std::string bytes = readFile(directory.path + "/clip.avi");
  for (size_t at = bytes.size() / 3; at < bytes.size() / 2; at += 97) bytes[at] = 'x';
  writeFile(directory.path + "/damaged.avi", bytes);
  const Reading reading = readAll(directory.path + "/damaged.avi");
  EXPECT_EQ(reading.openError, "");
  EXPECT_GT(reading.times.size(), 15u);
  EXPECT_GT(reading.corrupt + reading.decodeErrors, 0);
}

TEST(VideoReader, passesOverPicturesThatTheDecoderRefuses) {
  const TemporaryDirectory directory;
  makeClip(directory, "clip.avi", {"-c:v", "png"});
  std::string bytes = readFile(directory.path + "/clip.avi");
  ASSERT_EQ(spoil(
                "\x89PNG", [](int picture) { return picture % 5 == 2; }, &bytes),
            25);
  writeFile(directory.path + "/damaged.avi", bytes);
  for (const int threads : {1, 0}) {
    const Reading reading = readAll(directory.path + "/damaged.avi", threads);
    // A picture without its first byte takes the one behind it along.
    EXPECT_EQ(reading.times.size(), 15u);
    EXPECT_EQ(reading.decodeErrors, 5);
    EXPECT_EQ(reading.readError, "");
  }
}

TEST(VideoReader, countsEachRefusedPictureOnce_atTheEndToo) {
  const TemporaryDirectory directory;
  makeClip(directory, "clip.mkv", {"-c:v", "png"});
  std::string bytes = readFile(directory.path + "/clip.mkv");
  ASSERT_EQ(spoil(
                "IHDR", [](int picture) { return picture >= 23; }, &bytes),
            25);
  writeFile(directory.path + "/clip.mkv", bytes);
  // Several threads tell of the last ones when there is nothing more to decode.
  for (const int threads : {1, 4}) {
    const Reading reading = readAll(directory.path + "/clip.mkv", threads);
    EXPECT_EQ(reading.times.size(), 23u);
    EXPECT_EQ(reading.decodeErrors, 2);
  }
}

TEST(VideoReader, givesAndMarksFramesWhoseReferencesAreMissing) {
  const TemporaryDirectory directory;
  makeClipWithoutItsStart(directory, "cut.ts");
  const Reading reading = readAll(directory.path + "/cut.ts");
  EXPECT_EQ(reading.times.size(), 22u);
  EXPECT_EQ(reading.corrupt, 7);
  EXPECT_TRUE(reading.luma == lumaByProgram(directory, "cut.ts", 128, 80));
}

TEST(IsTruncated, saysSoOfEveryCutPart) {
  const TemporaryDirectory directory;
  // Four seconds: a tenth is more than a file may end early.
  const auto make = [&](const char* name, const Arguments& encoding) {
    makeClip(directory, name, encoding, "testsrc2=size=128x80:rate=25:duration=4");
    expectCutsToShow(directory, name, 7);
  };
  const Arguments h264 = {"-c:v", "libx264", "-g", "10", "-pix_fmt", "yuv420p"};
  for (const char* const name : {"clip.mkv", "clip.avi", "clip.flv"}) make(name, h264);
  make("front.mp4",
       {"-c:v", "libx264", "-g", "10", "-pix_fmt", "yuv420p", "-movflags", "+faststart"});
  make("mpeg4.avi", {"-c:v", "mpeg4", "-q:v", "5"});
  make("clip.webm", {"-c:v", "libvpx-vp9", "-deadline", "realtime", "-b:v", "300k"});
}

TEST(IsTruncated, saysSoOfEveryCutPartWithSound) {
  const TemporaryDirectory directory;
  makeClip(directory, "video.mkv", {"-c:v", "libx264", "-g", "10", "-pix_fmt", "yuv420p"},
           "testsrc2=size=128x80:rate=25:duration=4");
  ffmpeg(directory, {"-f", "lavfi", "-i", "sine=duration=4", "-c:a", "aac", "sound.m4a"});
  for (const char* const name : {"front.mp4", "clip.mkv", "clip.avi", "clip.flv"}) {
    copyInto(directory, {"-i", "video.mkv", "-i", "sound.m4a"}, name);
    expectCutsToShow(directory, name, 7);
  }
}

TEST(IsTruncated, cannotBeSaidOfAnMP4WithItsTableBehind_whichDoesNotOpen) {
  const TemporaryDirectory directory;
  makeClip(directory, "clip.mp4", {"-c:v", "libx264", "-pix_fmt", "yuv420p"});
  expectWhole(directory, "clip.mp4");
  const std::string bytes = readFile(directory.path + "/clip.mp4");
  writeFile(directory.path + "/part.mp4", bytes.substr(0, bytes.size() / 2));
  EXPECT_EQ(truncationOf({directory.path + "/part.mp4", 0, 0, ""}), std::nullopt);
}

TEST(IsTruncated, isFalseOfWholeFiles_whoseSoundIsLongerOrShorter) {
  const TemporaryDirectory directory;
  makeClip(directory, "video.mkv", {"-c:v", "libx264", "-pix_fmt", "yuv420p"},
           "testsrc2=size=128x80:rate=25:duration=2");
  for (const char* const seconds : {"1", "1.9", "2.1", "3"}) {
    SCOPED_TRACE(seconds);
    ffmpeg(directory, {"-f", "lavfi", "-i", std::string("sine=duration=") + seconds, "-c:a", "aac",
                       "sound.m4a"});
    for (const char* const name : {"clip.mp4", "clip.mkv", "clip.avi", "clip.flv", "clip.ts"}) {
      copyInto(directory, {"-i", "video.mkv", "-i", "sound.m4a"}, name);
      expectWhole(directory, name);
    }
  }
}

TEST(IsTruncated, isFalseOfWholeFiles_thatBeginWithinTheirVideo) {
  const TemporaryDirectory directory;
  makeClip(directory, "video.mp4",
           {"-c:v", "libx264", "-g", "25", "-bf", "3", "-pix_fmt", "yuv420p"},
           "testsrc2=size=128x80:rate=25:duration=4");
  ffmpeg(directory, {"-f", "lavfi", "-i", "sine=duration=4", "-i", "video.mp4", "-c:v", "copy",
                     "-c:a", "aac", "both.mp4"});
  // Copied from within a group: an edit list leaves out what comes before, other containers begin
  // with negative times.
  for (const char* const from : {"video.mp4", "both.mp4"}) {
    for (const char* const name : {"cut.mp4", "cut.mkv", "cut.avi", "cut.flv"}) {
      SCOPED_TRACE(from);
      copyInto(directory, {"-ss", "1.5", "-i", from}, name);
      expectWhole(directory, name);
    }
  }
  // And one whose times begin late.
  for (const char* const name : {"late.mp4", "late.mkv", "late.flv"}) {
    copyInto(directory, {"-itsoffset", "5", "-i", "both.mp4"}, name);
    expectWhole(directory, name);
  }
}

TEST(IsTruncated, isFalseOfWholeFiles_whoseFrameRateVaries) {
  const TemporaryDirectory directory;
  // Frame N is shown for (N + 1) / 40 s.
  for (const char* const name : {"clip.mp4", "clip.mkv", "clip.flv"}) {
    makeClip(directory, name,
             {"-vf", "settb=1/1000,setpts=25*N*(N+1)/2", "-fps_mode", "passthrough",
              "-enc_time_base", "1:1000", "-c:v", "libx264", "-bf", "2", "-pix_fmt", "yuv420p"},
             "testsrc2=size=64x64:rate=25:duration=1");
    expectWhole(directory, name);
  }
}

TEST(IsTruncated, isFalseOfWholeFiles_whichEndWithASubtitle) {
  const TemporaryDirectory directory;
  makeClip(directory, "video.mkv", {"-c:v", "libx264", "-pix_fmt", "yuv420p"});
  // Shown from 5 to 8 s, four seconds behind the last picture, and a moment without a duration.
  writeFile(directory.path + "/late.srt", "1\n00:00:05,000 --> 00:00:08,000\nlate\n");
  ffmpeg(directory, {"-i", "video.mkv", "-i", "late.srt", "-c", "copy", "long.mkv"});
  ffmpeg(directory, {"-i", "video.mkv", "-i", "late.srt", "-c", "copy", "-bsf:s",
                     "setts=duration=0", "moment.mkv"});
  EXPECT_EQ(numbersByProgram(directory, "long.mkv", "format=duration"), std::vector<double>{8.0});
  EXPECT_EQ(numbersByProgram(directory, "moment.mkv", "format=duration"), std::vector<double>{5.0});
  expectWhole(directory, "long.mkv");
  expectWhole(directory, "moment.mkv");
}

TEST(IsTruncated, isFalseOfTheora_whoseLastPictureIsHeld) {
  const TemporaryDirectory directory;
  makeClip(directory, "clip.ogv", {"-c:v", "libtheora", "-g", "12"});
  std::string bytes = readFile(directory.path + "/clip.ogv");
  // Of the last page (RFC 3533) the time at which it ends, in frames since the last key frame, and
  // the checksum.
  const size_t page = bytes.rfind("OggS");
  constexpr size_t TIME = 6;
  constexpr size_t CHECKSUM = 22;
  bytes.at(page + TIME) = static_cast<char>(bytes.at(page + TIME) + 20);
  std::fill_n(bytes.begin() + static_cast<ptrdiff_t>(page + CHECKSUM), 4, '\0');
  const uint32_t checksum =
      av_crc(av_crc_get_table(AV_CRC_32_IEEE), 0, reinterpret_cast<const uint8_t*>(&bytes[page]),
             bytes.size() - page);
  for (size_t i = 0; i < 4; ++i) {
    bytes.at(page + CHECKSUM + i) = static_cast<char>(checksum >> (24 - 8 * i));
  }
  writeFile(directory.path + "/held.ogv", bytes);
  const std::vector<double> duration = numbersByProgram(directory, "held.ogv", "format=duration");
  EXPECT_EQ(duration, std::vector<double>{1.8});  // 25 frames and 20
  expectWhole(directory, "held.ogv");
}

TEST(IsTruncated, isTrue_whereTheLastPacketIsNotWhole) {
  const TemporaryDirectory directory;
  makeClip(directory, "clip.yuv", {"-f", "rawvideo", "-pix_fmt", "yuv420p"});
  // Frames of 128 * 80 * 3 / 2 bytes, without anything else that says where the file ends.
  constexpr size_t FRAME_BYTES = 15360;
  const std::string bytes = readFile(directory.path + "/clip.yuv");
  ASSERT_EQ(bytes.size(), 25 * FRAME_BYTES);
  for (const size_t last : {size_t{1}, FRAME_BYTES - 1, FRAME_BYTES}) {
    writeFile(directory.path + "/part.yuv", bytes.substr(0, 10 * FRAME_BYTES + last));
    EXPECT_EQ(truncationOf({directory.path + "/part.yuv", 128, 80, "25"}), last < FRAME_BYTES);
  }
}

TEST(IsTruncated, isTrue_whereTheFileLacksWhatClosesIt) {
  const TemporaryDirectory directory;
  makeClip(directory, "clip.gif", {});
  const std::string bytes = readFile(directory.path + "/clip.gif");
  expectWhole(directory, "clip.gif");
  // The last byte says that nothing follows; all pictures are there.
  writeFile(directory.path + "/part.gif", bytes.substr(0, bytes.size() - 1));
  EXPECT_EQ(truncationOf({directory.path + "/part.gif", 0, 0, ""}), true);
}

TEST(IsTruncated, isFalse_whereTheContainerDoesNotDeclareItsLength) {
  const TemporaryDirectory directory;
  makeClip(directory, "clip.ts", {"-c:v", "libx264", "-pix_fmt", "yuv420p"});
  makeClip(directory, "clip.yuv", {"-f", "rawvideo", "-pix_fmt", "yuv420p"});
  expectWhole(directory, "clip.ts");
  EXPECT_EQ(truncationOf({directory.path + "/clip.yuv", 128, 80, "25"}), notTruncated);
}
