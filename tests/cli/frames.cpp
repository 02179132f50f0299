// Which frames are read and from where: the range, frames that the file does not hold in full,
// inputs that cannot seek, and what the temporal indicators compare.
#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>

#include "analysis.h"

namespace {

void expectLevels(const TemporaryDirectory& directory, const std::string& count,
                  const std::string& start, const std::vector<Row>& rows) {
  SCOPED_TRACE(count + " frames from " + start);
  expectAnalysis(
      directory, {"clip.yuv", "32", "32", levelAndStep, count, start, "unread"},
      startMessages("clip.yuv", 32, 32, count + ".00", std::stoll(count), std::stoll(start)), rows);
}

// The reading end of a pipe that holds `bytes` (less than a pipe takes at once) and then ends.
struct Pipe {
  explicit Pipe(const std::string& bytes) {
    int ends[2];
    EXPECT_EQ(pipe(ends), 0);
    EXPECT_EQ(write(ends[1], bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
    close(ends[1]);
    end = ends[0];
  }
  ~Pipe() { close(end); }
  Pipe(const Pipe&) = delete;
  Pipe& operator=(const Pipe&) = delete;

  std::string path() const { return "/dev/fd/" + std::to_string(end); }

  int end;
};

// 512 luma bytes per frame of 32x16, without chroma between them: an input that cannot seek is read
// without gaps.
std::string lumaOnly(const std::vector<int>& levels) {
  std::string bytes;
  for (int level : levels) bytes += std::string(512, static_cast<char>(level));
  return bytes;
}

// Frames of 32x16 have three blocks inside the border, each in the list of the four darkest and in
// that of the four brightest; the fourth dark entry is a white block, the fourth bright one black:
// (6 * level + 255) / 8.
Row lowLevelRow(int64_t frame, int level, const std::string& step = "0.00000") {
  return levelRow(frame, (6 * level + 255) / 8, step);
}

}  // namespace

TEST(Frames, areNoneAndTheRunEndsWell_whenTheCountIsZeroOrLess) {
  const TemporaryDirectory directory;
  writeFlatClip(directory, {10, 20});
  expectLevels(directory, "0", "0", {});
  expectLevels(directory, "-1", "0", {});
  expectLevels(directory, "-2147483648", "1", {});
}

TEST(Frames, areNumberedByTheirPlaceInTheFile) {
  const TemporaryDirectory directory;
  writeFlatClip(directory, {10, 20, 40, 80, 160});
  expectLevels(directory, "1", "0", {levelRow(0, 10)});
  expectLevels(directory, "1", "4", {levelRow(4, 160)});
  expectLevels(directory, "3", "1",
               {levelRow(1, 20), levelRow(2, 40, "20.00000"), levelRow(3, 80, "40.00000")});
}

TEST(Frames, compareWithTheirPredecessorFromTheSecondOn_whenTheStartIsFive) {
  const TemporaryDirectory directory;
  writeFlatClip(directory, {0, 1, 4, 9, 16, 25, 36, 49});
  std::vector<Row> rows = zeroRows(5, 3);
  rows[1].temporalActivity = "11.00000";  // 36 - 25
  rows[2].temporalActivity = "13.00000";  // 49 - 36
  expectAnalysis(directory, {"clip.yuv", "32", "32", "0x40", "3", "5", "0"},
                 startMessages("clip.yuv", 32, 32, "3.00", 3, 5), rows);
}

TEST(Frames, areBlack_whenTheInputIsEmpty) {
  const TemporaryDirectory directory;
  // Has the C library fill the memory it hands out, so that samples nobody set would show.
  setenv("MALLOC_PERTURB_", "85", 1);
  writeFile(directory.path + "/clip.yuv", "");
  expectLevels(directory, "3", "0", {levelRow(0, 0), levelRow(1, 0), levelRow(2, 0)});
  unsetenv("MALLOC_PERTURB_");
}

TEST(Frames, haveAllIndicatorsOfABlackFrame_whenTheInputIsEmpty) {
  const TemporaryDirectory directory;
  writeFile(directory.path + "/clip.yuv", "");
  expectAnalysis(directory, {"clip.yuv", "32", "32", "0xffff", "2", "0"},
                 startMessages("clip.yuv", 32, 32, "2.00", 2, 0),
                 {flatRow(0, 0), flatRow(1, 0, "0.00000")});
}

TEST(Frames, keepTheSamplesOfTwoFramesEarlier_whenTheyLiePastTheEnd) {
  const TemporaryDirectory directory;
  writeFlatClip(directory, {10, 50, 120});
  // Frames 0 and 2 share one buffer, 1 and 3 the other.
  expectLevels(
      directory, "6", "0",
      {levelRow(0, 10), levelRow(1, 50, "40.00000"), levelRow(2, 120, "70.00000"),
       levelRow(3, 50, "70.00000"), levelRow(4, 120, "70.00000"), levelRow(5, 50, "70.00000")});
}

TEST(Frames, alternateWithTheBlackBuffer_whenOnlyTheFirstLiesInTheFile) {
  const TemporaryDirectory directory;
  writeFlatClip(directory, {10, 20, 30});
  expectLevels(directory, "4", "2",
               {levelRow(2, 30), levelRow(3, 0, "30.00000"), levelRow(4, 30, "30.00000"),
                levelRow(5, 0, "30.00000")});
}

TEST(Frames, areNotCounted_whenTheLastIsOnlyAPart) {
  const TemporaryDirectory directory;
  writeFile(directory.path + "/clip.yuv",
            flatFrame(32, 32, 10) + flatFrame(32, 32, 20) + flatFrame(32, 32, 30).substr(0, 1535));
  expectAnalysis(directory, {"clip.yuv", "32", "32", levelAndStep},
                 startMessages("clip.yuv", 32, 32, "25.00", 2, 0),
                 {levelRow(0, 10), levelRow(1, 20, "10.00000")});
}

TEST(Frames, areReadInFull_whenOnlyChromaIsMissing) {
  const TemporaryDirectory directory;
  writeFile(directory.path + "/clip.yuv",
            flatFrame(32, 32, 10) + flatFrame(32, 32, 20).substr(0, 1024));
  expectLevels(directory, "2", "0", {levelRow(0, 10), levelRow(1, 20, "10.00000")});
}

TEST(Frames, keepTheRestOfTwoFramesEarlier_whenTheirLumaIsCutOff) {
  const TemporaryDirectory directory;
  // Twelve lines of the third frame: 12 * 32 = 384 bytes.
  writeFile(directory.path + "/clip.yuv",
            flatFrame(32, 32, 100) + flatFrame(32, 32, 200) + flatFrame(32, 32, 40).substr(0, 384));
  // The blocks of lines 0 to 7 are 40, those of lines 8 to 15 half 40 and half 100, those of lines
  // 16 to 23 are 100. Each block row inside the border has three blocks: the four darkest are
  // 40, 40, 40, 70 and the four brightest 100, 100, 100, 70; the mean of the eight is 70.
  // The step from 200 is 160 in 384 samples and 100 in 640:
  // sqrt((384 * 25600 + 640 * 10000) / 1024) = sqrt(15850) = 125.89678.
  expectLevels(directory, "3", "0",
               {levelRow(0, 100), levelRow(1, 200, "100.00000"), levelRow(2, 70, "125.89678")});
}

TEST(Frames, areReadOneAfterAnother_whenTheirNumbersAreNegative) {
  const TemporaryDirectory directory;
  // Seeking to a negative offset fails and leaves the position, which each read moves on by the
  // 1024 luma bytes alone. Frame 0 is then read from the start again.
  writeFile(directory.path + "/clip.yuv",
            std::string(1024, 10) + std::string(1024, 30) + std::string(1024, 60));
  expectLevels(directory, "4", "-3",
               {levelRow(-3, 10), levelRow(-2, 30, "20.00000"), levelRow(-1, 60, "30.00000"),
                levelRow(0, 10, "50.00000")});
}

TEST(Frames, areNone_whenStartAndCountTogetherPass31Bits) {
  const TemporaryDirectory directory;
  writeFlatClip(directory, {10});
  expectLevels(directory, "1", "2147483647", {});
  expectLevels(directory, "2147483647", "1", {});
  expectLevels(directory, "2147483647", "2147483647", {});
}

TEST(Frames, reachTheLastNumberBelow31Bits) {
  const TemporaryDirectory directory;
  writeFlatClip(directory, {10});
  // Start and count together are 2^31 - 1. The frame lies past the end.
  expectLevels(directory, "1", "2147483646", {levelRow(2147483646, 0)});
}

TEST(Frames, beginAtTheSmallestNumber) {
  const TemporaryDirectory directory;
  writeFlatClip(directory, {10});
  expectLevels(directory, "1", "-2147483648", {levelRow(-2147483648LL, 10)});
}

TEST(Frames, areReadWithoutGaps_whenTheInputIsAPipe) {
  const TemporaryDirectory directory;
  const Pipe input(lumaOnly({10, 20, 40}));
  expectAnalysis(
      directory, {input.path(), "32", "16", levelAndStep, "3", "0"},
      startMessages(input.path(), 32, 16, "3.00", 3, 0),
      {lowLevelRow(0, 10), lowLevelRow(1, 20, "10.00000"), lowLevelRow(2, 40, "20.00000")});
}

TEST(Frames, areReadFromTheBeginning_whenTheInputIsAPipeAndTheStartIsNot) {
  const TemporaryDirectory directory;
  const Pipe input(lumaOnly({10, 20, 40}));
  expectAnalysis(directory, {input.path(), "32", "16", levelAndStep, "2", "7", "0"},
                 startMessages(input.path(), 32, 16, "2.00", 2, 7),
                 {lowLevelRow(7, 10), lowLevelRow(8, 20, "10.00000")});
}

TEST(Frames, keepTheSamplesOfTwoFramesEarlier_whenAPipeEnds) {
  const TemporaryDirectory directory;
  const Pipe input(lumaOnly({10, 20}));
  expectAnalysis(directory, {input.path(), "32", "16", levelAndStep, "4", "0"},
                 startMessages(input.path(), 32, 16, "4.00", 4, 0),
                 {lowLevelRow(0, 10), lowLevelRow(1, 20, "10.00000"),
                  lowLevelRow(2, 10, "10.00000"), lowLevelRow(3, 20, "10.00000")});
}

TEST(Frames, areNone_whenTheInputIsAPipeAndTheCountIsNotGiven) {
  // A pipe's end is at position -1: no frame of three bytes, and minus one of a single byte.
  const TemporaryDirectory directory;
  for (const int width : {2, 1}) {
    const Pipe input("luma");
    expectAnalysis(directory, {input.path(), std::to_string(width), "1"},
                   startMessages(input.path(), width, 1, "25.00", width == 1 ? -1 : 0, 0), {});
  }
}

TEST(Frames, areReadFromStandardInput_whenItIsAPipe) {
  const TemporaryDirectory directory;
  const Pipe input(lumaOnly({10, 20}));
  expectAnalysis(directory, {"/dev/stdin", "32", "16", levelAndStep, "2", "0"},
                 startMessages("/dev/stdin", 32, 16, "2.00", 2, 0),
                 {lowLevelRow(0, 10), lowLevelRow(1, 20, "10.00000")}, input.path());
}

TEST(Frames, areReadFromStandardInput_whenItIsAFile) {
  const TemporaryDirectory directory;
  writeFlatClip(directory, {10, 20});
  expectAnalysis(directory, {"/dev/stdin", "32", "32", levelAndStep},
                 startMessages("/dev/stdin", 32, 32, "25.00", 2, 0),
                 {levelRow(0, 10), levelRow(1, 20, "10.00000")}, directory.path + "/clip.yuv");
}

TEST(Frames, freezeOnTheThirdStillOneAt25AndOnTheFirstAt10FramesPerSecond) {
  const TemporaryDirectory directory;
  writeFlatClip(directory, {10, 10, 10, 10, 10, 12, 12});
  // At 25 frames per second the run must reach 2.5 frames, at 10 one, at 50 five; the step of 2
  // ends it.
  const std::vector<std::pair<std::string, std::string>> flagsAtRates = {{"25", "0001100"},
                                                                         {"10", "0111101"},
                                                                         {"20", "0011100"},
                                                                         {"50", "0000000"},
                                                                         {"30", "0001100"}};
  for (const auto& [rate, flags] : flagsAtRates) {
    std::vector<Row> rows = zeroRows(0, 7);
    for (size_t k = 0; k < rows.size(); k++) rows[k].freezing = flags[k];
    rows[5].temporalActivity = "2.00000";
    expectAnalysis(directory, {"clip.yuv", "32", "32", "0x140", rate},
                   startMessages("clip.yuv", 32, 32, rate + ".00", 7, 0), rows);
  }
}

TEST(Frames, freezeAllFromTheSecondOn_whenTheFrameRateIsZeroOrLess) {
  const TemporaryDirectory directory;
  writeFlatClip(directory, {10, 60, 60});
  std::vector<Row> rows = zeroRows(0, 3);
  rows[1].freezing = rows[2].freezing = "1";
  rows[1].temporalActivity = "50.00000";
  expectAnalysis(directory, {"clip.yuv", "32", "32", "0x140", "garbage"},
                 startMessages("clip.yuv", 32, 32, "0.00", 3, 0), rows);
  expectAnalysis(directory, {"clip.yuv", "32", "32", "0x140", "-25"},
                 startMessages("clip.yuv", 32, 32, "-25.00", 3, 0), rows);
}

TEST(Frames, freezeByTheBlackoutOfTheFrameBefore) {
  const TemporaryDirectory directory;
  // One block 4 levels above the rest keeps a frame from being a blackout, and the step to the flat
  // frame is sqrt(64 * 16 / 1024) = 1, which counts as still. At 10 frames per second one still
  // frame freezes, unless the frame before was a blackout.
  const std::string flat = flatFrame(32, 32, 10);
  std::string luma(1024, 10);
  for (size_t y = 0; y < 8; y++) luma.replace(y * 32, 8, 8, 14);
  const std::string picture = frameOf(luma);
  writeFile(directory.path + "/clip.yuv", picture + flat + flat + picture + picture);
  std::vector<Row> rows = zeroRows(0, 5);
  rows[1].temporalActivity = rows[3].temporalActivity = "1.00000";
  rows[1].blackout = rows[2].blackout = "1";
  rows[1].freezing = rows[4].freezing = "1";
  expectAnalysis(directory, {"clip.yuv", "32", "32", "0x1c0", "10"},
                 startMessages("clip.yuv", 32, 32, "10.00", 5, 0), rows);
}
