// What files say about themselves, in clips made to say it.
#include "scan/video/streamFacts.h"

#include <gtest/gtest.h>

#include <cmath>

#include "clips.h"
#include "scan/files/json.h"
#include "scan/record/resultJson.h"

namespace {

using Warnings = std::vector<std::string>;

const char* const fullRange = "full-range video: levels are measured as they are, 0 to 255";
const char* const highDynamicRange =
    "high dynamic range: levels are measured as they are, without tone mapping";
const char* const interlaced =
    "interlaced video: frames are measured as they are, without deinterlacing";
const char* const turned = "players turn this video: it is measured as it is stored";
const char* const converted =
    "the pixel format has no luma of its own: it is converted to luma of video range";
const char* const unknownRate = "the frame rate is not known: 25 is assumed for freezing";
const char* const unknownLength =
    "the container does not say how long it is: a missing end may not be seen";
const char* const furtherVideos =
    "there are further video streams, which are not measured: --stream takes 1";

struct Said {
  StreamFacts facts;
  Warnings warnings;
};

Said saidBy(const VideoSource& source) {
  av_log_set_level(AV_LOG_QUIET);
  VideoReader reader;
  EXPECT_EQ(openVideo(source, 1, &reader), "");
  if (reader.decoder == nullptr) return {};
  return {streamFacts(reader), streamWarnings(reader)};
}

// Of a second of the test picture.
Said saidByClip(const std::string& name, const Arguments& encoding) {
  const TemporaryDirectory directory;
  makeClip(directory, name, encoding);
  return saidBy({directory.path + "/" + name, 0, 0, ""});
}

const Arguments plainH264 = {"-c:v", "libx264", "-pix_fmt", "yuv420p"};

Arguments h264With(const Arguments& further) {
  Arguments all = plainH264;
  all.insert(all.end(), further.begin(), further.end());
  return all;
}

// A number that the ffprobe program finds.
int64_t probed(const TemporaryDirectory& directory, const std::string& name,
               const std::string& entry) {
  const ProgramRun run = runProgram(
      "/usr/bin/ffprobe", {"-v", "error", "-show_entries", entry, "-of", "default=nw=1:nk=1", name},
      directory.path);
  EXPECT_EQ(run.status, 0);
  return std::atoll(run.out.c_str());
}

// Three seconds of the test picture with a tone of so many seconds.
Said saidByLoudClip(const std::string& name, const std::string& tone, const std::string& codec,
                    const Arguments& further = {}) {
  const TemporaryDirectory directory;
  Arguments encoding = {"-f",   "lavfi",      "-i",   "sine=sample_rate=32000:duration=" + tone,
                        "-c:v", "mpeg2video", "-c:a", codec};
  encoding.insert(encoding.end(), further.begin(), further.end());
  makeClip(directory, name, encoding, "testsrc2=size=128x80:rate=25:duration=3");
  return saidBy({directory.path + "/" + name, 0, 0, ""});
}

}  // namespace

TEST(StreamFacts, ofAnOrdinaryClip) {
  const TemporaryDirectory directory;
  makeClip(directory, "clip.mp4",
           h264With({"-colorspace", "bt709", "-color_primaries", "bt709", "-color_trc", "bt709",
                     "-color_range", "tv", "-profile:v", "main"}));
  const Said said = saidBy({directory.path + "/clip.mp4", 0, 0, ""});
  // MP4 counts in as many units as make the frame rate's multiple of at least 10000: 512 * 25.
  const Json expected = {{"container", "mov,mp4,m4a,3gp,3g2,mj2"},
                         {"codec", "h264"},
                         {"profile", "Main"},
                         {"pixel_format", "yuv420p"},
                         {"width", 128},
                         {"height", 80},
                         {"frame_rate", 25.0},
                         {"frame_rate_fraction", "25/1"},
                         {"time_base", "1/12800"},
                         {"declared_duration_s", 1.0},
                         {"declared_frames", 25},
                         {"field_order", "progressive"},
                         {"color_range", "tv"},
                         {"color_transfer", "bt709"},
                         {"rotation", 0.0},
                         {"sample_aspect_ratio", "1:1"},
                         {"bit_rate", probed(directory, "clip.mp4", "stream=bit_rate")},
                         {"container_bit_rate", probed(directory, "clip.mp4", "format=bit_rate")},
                         {"start_timecode", nullptr},
                         {"audio", Json::array()}};
  EXPECT_EQ(streamJson(said.facts).dump(), expected.dump());
  EXPECT_EQ(said.warnings, Warnings());
}

TEST(StreamFacts, haveTheDepthOfDeepVideo_whichIsNothingToWarnOf) {
  const Said said = saidByClip("clip.mkv", {"-c:v", "ffv1", "-pix_fmt", "yuv422p10le"});
  EXPECT_EQ(said.facts.pixelFormat, "yuv422p10le");
  EXPECT_EQ(said.warnings, Warnings());
}

TEST(StreamFacts, haveTheRange_andWarnOfTheFullOne) {
  const Said h264 = saidByClip("clip.mp4", h264With({"-color_range", "pc"}));
  EXPECT_EQ(h264.facts.colorRange, "pc");
  EXPECT_EQ(h264.warnings, Warnings({fullRange}));
  // The older way to say it is the name of the pixel format.
  const Said jpeg = saidByClip("clip.avi", {"-c:v", "mjpeg", "-pix_fmt", "yuvj420p"});
  EXPECT_EQ(jpeg.facts.pixelFormat, "yuvj420p");
  EXPECT_EQ(jpeg.warnings, Warnings({fullRange}));
}

TEST(StreamFacts, haveTheTransfer_andWarnOfHighDynamicRange) {
  for (const char* const transfer : {"smpte2084", "arib-std-b67"}) {
    const Said said = saidByClip("clip.mp4", h264With({"-color_trc", transfer}));
    EXPECT_EQ(said.facts.colorTransfer, transfer);
    EXPECT_EQ(said.warnings, Warnings({highDynamicRange}));
  }
  EXPECT_EQ(saidByClip("clip.mp4", h264With({"-color_trc", "bt2020-10"})).warnings, Warnings());
}

TEST(StreamFacts, haveTheOrderOfFields_andWarnOfInterlacedVideo) {
  const Said top = saidByClip("clip.mp4", h264With({"-x264opts", "tff=1", "-flags", "+ildct"}));
  EXPECT_EQ(top.facts.fieldOrder, "tt");
  EXPECT_EQ(top.warnings, Warnings({interlaced}));
  const Said bottom = saidByClip("clip.mp4", h264With({"-x264opts", "bff=1", "-flags", "+ildct"}));
  EXPECT_EQ(bottom.facts.fieldOrder, "bb");
  EXPECT_EQ(bottom.warnings, Warnings({interlaced}));
}

TEST(StreamFacts, doNotKnowTheOrderOfFields_whereTheCodecDoesNotSay) {
  const Said said = saidByClip("clip.avi", {"-c:v", "mpeg4"});
  EXPECT_EQ(said.facts.fieldOrder, "unknown");
  EXPECT_EQ(said.facts.colorRange, "unknown");
  EXPECT_EQ(said.facts.colorTransfer, "unknown");
  EXPECT_EQ(said.warnings, Warnings());
}

TEST(StreamFacts, haveTheTurnInDegreesClockwise_andWarnOfIt) {
  const TemporaryDirectory directory;
  constexpr size_t WIDTH = 64;
  makeClip(directory, "clip.mp4", plainH264,
           "color=black:size=64x64:duration=0.2,drawbox=0:0:32:32:white:fill");
  for (const char* const turn : {"90", "180", "270"}) {
    ffmpeg(directory, {"-i", "clip.mp4", "-c", "copy", "-metadata:s:v:0",
                       std::string("rotate=") + turn, "turned.mp4"});
    // Where a player, the ffmpeg program, shows the corner that was on the upper left.
    ffmpeg(directory, {"-i", "turned.mp4", "-pix_fmt", "gray", "-f", "rawvideo", "turned.gray"});
    const std::string shown = readFile(directory.path + "/turned.gray");
    const auto isWhite = [&](size_t x, size_t y) { return shown[y * WIDTH + x] < 0; };
    const double expected = isWhite(48, 16) ? 90 : isWhite(48, 48) ? 180 : 270;
    ASSERT_EQ(isWhite(16, 48), expected == 270);
    const Said said = saidBy({directory.path + "/turned.mp4", 0, 0, ""});
    // Three quarters clockwise are one quarter back.
    const double degrees = said.facts.rotation;
    EXPECT_EQ(degrees < 0 ? degrees + 360 : degrees, expected);
    EXPECT_EQ(said.warnings, Warnings({turned}));
  }
}

TEST(StreamFacts, haveTheShapeOfSamples) {
  const Said said = saidByClip("clip.mp4", h264With({"-vf", "setsar=16/11"}));
  EXPECT_EQ(said.facts.sampleAspectRatio, "16:11");
  EXPECT_EQ(said.warnings, Warnings());
}

TEST(StreamFacts, haveTheContainersShapeOfSamples_andTheCodecsWhereItSaysNone) {
  const TemporaryDirectory directory;
  const auto shapeOf = [&](const std::string& name) {
    return saidBy({directory.path + "/" + name, 0, 0, ""}).facts.sampleAspectRatio;
  };
  makeClip(directory, "clip.mp4", h264With({"-vf", "setsar=16/11"}));
  for (const char* const name : {"shown.mp4", "shown.mkv"}) {
    // Shown at 4:3, samples of 128 x 80 are (4 / 3) / (128 / 80) = 5 / 6 as wide as high. The codec
    // goes on to say 16:11.
    ffmpeg(directory, {"-i", "clip.mp4", "-c", "copy", "-aspect", "4:3", name});
    EXPECT_EQ(shapeOf(name), "5:6") << name;
  }
  ffmpeg(directory, {"-i", "shown.mp4", "-c", "copy", "clip.h264"});
  EXPECT_EQ(shapeOf("clip.h264"), "16:11");
}

TEST(StreamFacts, warnOfFormatsWithoutLuma) {
  for (const char* const format : {"bgr0", "gray"}) {
    const Said said = saidByClip("clip.mkv", {"-c:v", "ffv1", "-pix_fmt", format});
    EXPECT_EQ(said.facts.pixelFormat, format);
    EXPECT_EQ(said.warnings, Warnings({converted}));
  }
}

TEST(StreamFacts, haveTheDeclaredLength_andWarnWhereThereIsNone) {
  const Arguments encoding = h264With({"-frames:v", "20"});
  const Said mp4 = saidByClip("clip.mp4", encoding);
  EXPECT_EQ(mp4.facts.declaredDuration, 0.8);
  EXPECT_EQ(mp4.facts.declaredFrames, 20);
  // Matroska says how long it is, but not how many frames.
  const Said mkv = saidByClip("clip.mkv", encoding);
  EXPECT_EQ(mkv.facts.declaredDuration, 0.8);
  EXPECT_EQ(mkv.facts.declaredFrames, 0);
  EXPECT_EQ(mkv.warnings, Warnings());
  for (const char* const name : {"clip.ts", "clip.h264"}) {
    const Said said = saidByClip(name, encoding);
    EXPECT_TRUE(std::isnan(said.facts.declaredDuration)) << name;
    EXPECT_EQ(said.facts.declaredFrames, 0) << name;
    EXPECT_EQ(said.warnings, Warnings({unknownLength})) << name;
  }
}

TEST(StreamFacts, haveTheRateAsAFraction) {
  const TemporaryDirectory directory;
  makeClip(directory, "clip.mp4", plainH264, "testsrc2=size=64x64:rate=30000/1001:duration=1");
  const Said said = saidBy({directory.path + "/clip.mp4", 0, 0, ""});
  EXPECT_DOUBLE_EQ(said.facts.frameRate, 30000.0 / 1001.0);
  EXPECT_EQ(said.facts.frameRateFraction, "30000/1001");
  EXPECT_EQ(said.facts.timeBase, "1/30000");
}

TEST(StreamFacts, doNotHaveARate_whereThereIsOnePicture) {
  // These containers have times alone, and one is no distance.
  for (const char* const name : {"clip.nut", "clip.flv"}) {
    const Said said =
        saidByClip(name, {"-c:v", "flv1", "-frames:v", "1", "-flvflags", "no_metadata"});
    EXPECT_TRUE(std::isnan(said.facts.frameRate)) << name;
    EXPECT_EQ(said.facts.frameRateFraction, "") << name;
    EXPECT_EQ(said.warnings, Warnings({unknownRate, unknownLength})) << name;
  }
}

TEST(StreamFacts, haveTheTimecodeOfTheFirstFrame) {
  // Of QuickTime it is in a stream of its own, of MXF in the container.
  for (const char* const name : {"clip.mov", "clip.mxf"}) {
    const Said said = saidByClip(name, {"-c:v", "mpeg2video", "-timecode", "10:11:12:13"});
    EXPECT_EQ(said.facts.startTimecode, "10:11:12:13") << name;
    EXPECT_EQ(said.facts.audio.size(), 0u) << name;
  }
  EXPECT_EQ(saidByClip("clip.mov", plainH264).facts.startTimecode, "");
}

TEST(StreamFacts, haveTheSound) {
  const auto expectSound = [](const std::string& name, const std::string& codec, double tolerance) {
    const Said said = saidByLoudClip(name, "3", codec, {"-metadata:s:a", "language=fin"});
    ASSERT_EQ(said.facts.audio.size(), 1u) << name;
    const AudioFacts& audio = said.facts.audio[0];
    EXPECT_EQ(audio.stream, 1) << name;
    EXPECT_EQ(audio.codec, codec) << name;
    EXPECT_EQ(audio.channels, 1) << name;
    EXPECT_EQ(audio.sampleRate, 32000) << name;
    EXPECT_EQ(audio.language, name == "clip.avi" ? "" : "fin") << name;
    EXPECT_NEAR(audio.duration, 3.0, tolerance) << name;
  };
  for (const char* const name : {"clip.mov", "clip.mkv", "clip.avi"}) {
    expectSound(name, "pcm_s16le", 1e-9);
  }
  // The last packet of 1152 samples may end behind the third second.
  expectSound("clip.ts", "mp2", 1152.0 / 32000.0);
  EXPECT_EQ(saidByClip("clip.m2v", {"-c:v", "mpeg2video"}).facts.audio.size(), 0u);
}

TEST(StreamWarnings, tellSoundThatIsASecondShorterOrLongerThanThePicture) {
  const auto warnings = [](const char* name, const char* tone) {
    return saidByLoudClip(name, tone, "pcm_s16le").warnings;
  };
  for (const char* const name : {"clip.mov", "clip.mkv", "clip.avi"}) {
    EXPECT_EQ(warnings(name, "2.1"), Warnings()) << name;
    EXPECT_EQ(warnings(name, "3.9"), Warnings()) << name;
    EXPECT_EQ(warnings(name, "1.5"),
              Warnings({"the sound of stream 1 is 1.5 s shorter than the picture"}))
        << name;
    EXPECT_EQ(warnings(name, "5.5"),
              Warnings({"the sound of stream 1 is 2.5 s longer than the picture"}))
        << name;
  }
}

TEST(StreamFacts, ofRawVideoAreWhatWasSaidAboutIt) {
  const TemporaryDirectory directory;
  writeFile(directory.path + "/clip.yuv", std::string(32 * 16 * 3 / 2 * 5, 'x'));
  const Said said = saidBy({directory.path + "/clip.yuv", 32, 16, "12.5"});
  EXPECT_EQ(said.facts.container, "rawvideo");
  EXPECT_EQ(said.facts.pixelFormat, "yuv420p");
  EXPECT_EQ(said.facts.width, 32);
  EXPECT_EQ(said.facts.height, 16);
  EXPECT_EQ(said.facts.frameRate, 12.5);
  // What is missing of the last frame shows all the same.
  EXPECT_EQ(said.warnings, Warnings());
}

TEST(StreamWarnings, countVideosButNoCovers) {
  const TemporaryDirectory directory;
  makeClip(directory, "clip.mp4", plainH264);
  makeClip(directory, "cover.png", {"-frames:v", "1"});
  ffmpeg(directory,
         {"-i", "clip.mp4", "-i", "clip.mp4", "-map", "0", "-map", "1", "-c", "copy", "two.mp4"});
  ffmpeg(directory, {"-i", "clip.mp4", "-i", "cover.png", "-map", "0", "-map", "1", "-c", "copy",
                     "-disposition:v:1", "attached_pic", "covered.mp4"});
  ffmpeg(directory,
         {"-f", "lavfi", "-i", "sine=duration=1", "-i", "clip.mp4", "-c:v", "copy", "loud.mp4"});
  EXPECT_EQ(saidBy({directory.path + "/two.mp4", 0, 0, ""}).warnings, Warnings({furtherVideos}));
  EXPECT_EQ(
      saidBy({directory.path + "/two.mp4", 0, 0, "", 1}).warnings,
      Warnings({"there are further video streams, which are not measured: --stream takes 0"}));
  EXPECT_EQ(saidBy({directory.path + "/covered.mp4", 0, 0, ""}).warnings, Warnings());
  EXPECT_EQ(saidBy({directory.path + "/loud.mp4", 0, 0, ""}).warnings, Warnings());
}

TEST(StreamWarnings, areAllSaid_whereSeveralApply) {
  const TemporaryDirectory directory;
  makeClip(directory, "clip.ts",
           h264With({"-color_range", "pc", "-color_trc", "smpte2084", "-x264opts", "tff=1",
                     "-flags", "+ildct"}));
  EXPECT_EQ(saidBy({directory.path + "/clip.ts", 0, 0, ""}).warnings,
            Warnings({fullRange, highDynamicRange, interlaced, unknownLength}));
}
