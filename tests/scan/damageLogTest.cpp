// What decoders and containers say of damage, against what the ffmpeg program prints about the same
// file.
#include "scan/video/damageLog.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "clips.h"
#include "scan/analysis/measurement.h"

namespace {

constexpr size_t PACKET = 188;  // bytes of a transport stream's

Measurement measure(const TemporaryDirectory& directory, const std::string& name) {
  av_log_set_level(AV_LOG_QUIET);
  AnalysisOptions options;
  options.mask = EXPOSURE;
  return measureVideo({directory.path + "/" + name, 0, 0, ""}, options, 1, nullptr,
                      [](Stage, double, int64_t) {});
}

// How many lines the program prints at a level when it decodes the video on one thread.
int64_t linesOfProgram(const TemporaryDirectory& directory, const std::string& name,
                       const char* level = "error") {
  const ProgramRun run = runProgram("/usr/bin/ffmpeg",
                                    {"-nostdin", "-v", level, "-err_detect", "crccheck", "-threads",
                                     "1", "-i", name, "-map", "0:v:0", "-f", "null", "-"},
                                    directory.path);
  return std::count(run.err.begin(), run.err.end(), '\n');
}

void flipBit(const TemporaryDirectory& directory, const std::string& name, double place) {
  std::string bytes = readFile(directory.path + "/" + name);
  char& byte = bytes.at(static_cast<size_t>(static_cast<double>(bytes.size()) * place));
  byte = static_cast<char>(byte ^ 4);
  writeFile(directory.path + "/" + name, bytes);
}

int64_t sumOf(const Column<int64_t>& column) {
  int64_t sum = 0;
  for (const int64_t value : column) sum += value;
  return sum;
}

// Expects as many messages of the decoder as the program prints, all of them on frames.
Measurement expectAsManyAsTheProgramPrints(const TemporaryDirectory& directory,
                                           const std::string& name) {
  Measurement measured = measure(directory, name);
  EXPECT_EQ(measured.outcome.messages, linesOfProgram(directory, name)) << name;
  EXPECT_GT(measured.outcome.messages, 0) << name;
  EXPECT_EQ(sumOf(measured.frames.messages), measured.outcome.messages);
  EXPECT_EQ(measured.outcome.messagesBeforeKeyFrame, 0);
  return measured;
}

}  // namespace

TEST(DamageLog, hasChecksumsThatAreWrong) {
  const TemporaryDirectory directory;
  makeClip(directory, "clip.mkv", {"-c:v", "ffv1", "-level", "3", "-slicecrc", "1"});
  EXPECT_EQ(measure(directory, "clip.mkv").outcome.messages, 0);
  flipBit(directory, "clip.mkv", 0.5);
  const Measurement measured = expectAsManyAsTheProgramPrints(directory, "clip.mkv");
  const DamageMessage& message = measured.outcome.firstMessages.at(0);
  EXPECT_FALSE(message.isOfContainer);
  EXPECT_EQ(message.text.substr(0, 18), "slice CRC mismatch");
  EXPECT_NEAR(message.time, 0.5, 0.1);  // pictures of about the same size
  // The frame that is damaged has the message.
  const auto row = static_cast<size_t>(std::lround(message.time * 25.0));
  EXPECT_EQ(measured.frames.messages[row], 1);
}

TEST(DamageLog, hasPicturesThatAreNotWhatTheyWere) {
  const TemporaryDirectory directory;
  makeClip(directory, "clip.mkv",
           {"-c:v", "libx265", "-pix_fmt", "yuv420p", "-x265-params", "log-level=none:hash=1"});
  EXPECT_EQ(measure(directory, "clip.mkv").outcome.messages, 0);
  flipBit(directory, "clip.mkv", 0.6);
  expectAsManyAsTheProgramPrints(directory, "clip.mkv");
}

TEST(DamageLog, hasWhatTheDecoderCannotRead) {
  const TemporaryDirectory directory;
  makeClip(directory, "clip.mp4", {"-c:v", "libx264", "-g", "10", "-pix_fmt", "yuv420p"});
  for (const double place : {0.3, 0.5, 0.6, 0.7}) flipBit(directory, "clip.mp4", place);
  expectAsManyAsTheProgramPrints(directory, "clip.mp4");
}

TEST(DamageLog, keepsTheFirstTwentyMessages) {
  const TemporaryDirectory directory;
  makeClip(directory, "clip.avi", {"-c:v", "mjpeg", "-q:v", "2"},
           "testsrc2=size=320x240:duration=2");
  for (int i = 0; i < 80; ++i) flipBit(directory, "clip.avi", 0.1 + 0.01 * i);
  const Measurement measured = expectAsManyAsTheProgramPrints(directory, "clip.avi");
  EXPECT_GT(measured.outcome.messages, 20);
  EXPECT_EQ(measured.outcome.firstMessages.size(), 20u);
}

TEST(DamageLog, hasPacketsThatATransportStreamHasLost) {
  const TemporaryDirectory directory;
  makeClip(directory, "whole.ts",
           {"-c:v", "libx265", "-pix_fmt", "yuv420p", "-x265-params", "log-level=none"});
  EXPECT_EQ(measure(directory, "whole.ts").outcome.messages, 0);
  const std::string whole = readFile(directory.path + "/whole.ts");
  // A packet of the video, whose PID is 256, with a part of a picture that began before.
  constexpr char CONTINUED_VIDEO[] = "\x47\x01\x00";
  size_t lost = whole.size() / 2 / PACKET * PACKET;
  while (whole.compare(lost, 3, CONTINUED_VIDEO, 3) != 0) lost += PACKET;
  writeFile(directory.path + "/lost.ts", whole.substr(0, lost) + whole.substr(lost + PACKET));
  const Measurement measured = measure(directory, "lost.ts");
  const std::vector<DamageMessage>& messages = measured.outcome.firstMessages;
  const auto isLoss = [](const DamageMessage& message) {
    return message.isOfContainer && message.text == "packets of the transport stream are missing";
  };
  EXPECT_EQ(std::count_if(messages.begin(), messages.end(), isLoss), 1);
  EXPECT_GT(linesOfProgram(directory, "lost.ts", "warning"), 0);
  EXPECT_EQ(sumOf(measured.frames.messages), measured.outcome.messages);
}

TEST(DamageLog, hasWhatDemuxersSayWithoutNamingTheContainer) {
  const TemporaryDirectory directory;
  makeClip(directory, "clip.obu", {"-c:v", "libsvtav1", "-preset", "12", "-pix_fmt", "yuv420p"});
  EXPECT_EQ(measure(directory, "clip.obu").outcome.messages, 0);
  const std::string whole = readFile(directory.path + "/clip.obu");
  writeFile(directory.path + "/cut.obu", whole.substr(0, whole.size() / 2));
  const Measurement measured = expectAsManyAsTheProgramPrints(directory, "cut.obu");
  EXPECT_TRUE(measured.outcome.firstMessages.at(0).isOfContainer);
}

TEST(DamageLog, hasPicturesThatAParserMisses) {
  const TemporaryDirectory directory;
  makeClip(directory, "clip.hevc",
           {"-c:v", "libx265", "-preset", "ultrafast", "-x265-params", "log-level=none:bframes=0"});
  EXPECT_EQ(measure(directory, "clip.hevc").outcome.messages, 0);
  // What announces a picture, and none.
  writeFile(directory.path + "/cut.hevc",
            readFile(directory.path + "/clip.hevc") + std::string("\0\0\0\1\x46\1\x50", 7));
  expectAsManyAsTheProgramPrints(directory, "cut.hevc");
}

TEST(DamageLog, takesABeginningBetweenKeyFramesForNoDamage) {
  const TemporaryDirectory directory;
  for (const char* const codec : {"libx264", "libx265", "mpeg2video"}) {
    SCOPED_TRACE(codec);
    makeClip(directory, "whole.ts", {"-c:v", codec, "-g", "12", "-bf", "2", "-pix_fmt", "yuv420p"},
             "testsrc2=size=128x80:rate=25:duration=2");
    const std::string whole = readFile(directory.path + "/whole.ts");
    writeFile(directory.path + "/part.ts", whole.substr(whole.size() / 3 / PACKET * PACKET));
    const Measurement measured = measure(directory, "part.ts");
    EXPECT_GT(linesOfProgram(directory, "part.ts"), 0);
    EXPECT_EQ(measured.outcome.messages, 0);
    EXPECT_EQ(measured.outcome.decodeErrors, 0);
    EXPECT_GT(measured.outcome.frames, 20);
  }
}

TEST(DamageLog, goesOnBehindAStretchOfZeros) {
  const TemporaryDirectory directory;
  makeClip(directory, "clip.ts", {"-c:v", "mpeg2video", "-b:v", "4M", "-g", "5"},
           "testsrc2=size=352x288:rate=25:duration=4");
  std::string bytes = readFile(directory.path + "/clip.ts");
  constexpr size_t ZEROS = 200'000;  // more than the demuxer looks at in one attempt
  ASSERT_GT(bytes.size(), 5 * ZEROS);
  bytes.replace(bytes.size() / 2, ZEROS, ZEROS, '\0');
  writeFile(directory.path + "/clip.ts", bytes);
  const Measurement measured = measure(directory, "clip.ts");
  EXPECT_EQ(measured.outcome.end, AnalysisEnd::COMPLETE);
  EXPECT_GT(measured.outcome.messages, 0);
  EXPECT_GT(measured.frames.time.back(), 3.9);
}

TEST(Measurement, warnsWhereFramesComeAtAnotherRateThanIsDeclared) {
  const TemporaryDirectory directory;
  const auto warnings = [&](const char* unit) {
    makeClip(directory, "clip.avi",
             {"-fps_mode", "passthrough", "-enc_time_base", unit, "-c:v", "mpeg4", "-bf", "2"});
    return measure(directory, "clip.avi").warnings;
  };
  // The rate of AVI is that of its times' unit; 25 frames come in a second.
  EXPECT_EQ(warnings("1:50"),
            std::vector<std::string>{
                "50 frames per second are declared, but most come at 25 per second"});
  EXPECT_EQ(warnings("1:25"), std::vector<std::string>{});
}
