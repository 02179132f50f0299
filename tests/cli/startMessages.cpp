// The messages ahead of the table, literally, and the number of frames that they state.
#include <gtest/gtest.h>

#include <filesystem>
#include <utility>

#include "analysis.h"

TEST(StartMessages, standAheadOfTheHeaderAndTheClosingLine_whenThereIsNoFrame) {
  const TemporaryDirectory directory;
  writeFile(directory.path + "/clip.yuv", "");
  const ProgramRun run = analyse(directory, {"clip.yuv", "7", "5"});
  EXPECT_EQ(run.out,
            "Video file clip.yuv opened successfully!\n"
            "\n"
            "Width = 7, Height = 5, FPS = 25.00, Number of Frames = 0, Start Frame = 0\n"
            "\n"
            "Frame: \tBlockiness: \tSpatial Activity: \tLetterbox: \tPillarbox: \tBlockloss: "
            "\tBlur: \t\tTemporalAct: \tBlackout: \tFreezing: \tExposure(bri): \tContrast: "
            "\tInterlace: \tNoise: \t\tSlice: \t\tFlickering:\n"
            "\n"
            "File stream closed\n"
            "\n");
  EXPECT_EQ(run.err, "");
  EXPECT_EQ(run.status, 0);
}

TEST(StartMessages, stateTenFrames_forCifClipsOf1520640And1600000Bytes) {
  for (const uintmax_t bytes : {1520640u, 1600000u}) {  // 10 * 152064, and half a frame more
    SCOPED_TRACE(bytes);
    const TemporaryDirectory directory;
    writeFile(directory.path + "/a.yuv", "");
    std::filesystem::resize_file(directory.path + "/a.yuv", bytes);
    expectAnalysis(directory, {"a.yuv", "352", "288", "0"},
                   startMessages("a.yuv", 352, 288, "25.00", 10, 0), zeroRows(0, 10));
  }
}

TEST(StartMessages, stateOneFrameLess_whenTheLastByteIsMissing) {
  const TemporaryDirectory directory;
  writeFile(directory.path + "/a.yuv", "");
  std::filesystem::resize_file(directory.path + "/a.yuv", 1520639);
  expectAnalysis(directory, {"a.yuv", "352", "288", "0"},
                 startMessages("a.yuv", 352, 288, "25.00", 9, 0), zeroRows(0, 9));
}

TEST(StartMessages, countFramesOf52Bytes_whenTheyAre7x5) {
  // 35 luma samples; 105 / 2 is 52.
  const std::vector<std::pair<size_t, int>> clips = {{51, 0}, {52, 1}, {103, 1}, {104, 2}};
  for (const auto& [bytes, frames] : clips) {
    SCOPED_TRACE(bytes);
    const TemporaryDirectory directory;
    writeFile(directory.path + "/clip.yuv", std::string(bytes, '\0'));
    expectAnalysis(directory, {"clip.yuv", "7", "5", "0"},
                   startMessages("clip.yuv", 7, 5, "25.00", frames, 0), zeroRows(0, frames));
  }
}

TEST(StartMessages, areTheSame_whateverTheIndicators) {
  const TemporaryDirectory directory;
  writeFlatClip(directory, {});
  for (const std::string mask : {"0", "1", "0x7fff", "0xffffffff"})
    expectAnalysis(directory, {"clip.yuv", "32", "32", mask},
                   startMessages("clip.yuv", 32, 32, "25.00", 0, 0), {});
}
