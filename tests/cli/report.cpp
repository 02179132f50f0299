// The table on standard output and in the report file, byte for byte, over clips whose values can
// be derived by hand.
#include <gtest/gtest.h>

#include <filesystem>

#include "analysis.h"

TEST(Report, holdsThe163BytesOfItsHeaderAlone_whenThereIsNoFrame) {
  const TemporaryDirectory directory;
  writeFlatClip(directory, {});
  analyse(directory, {"clip.yuv", "32", "32"});
  const std::string report = readReport(directory);
  EXPECT_EQ(report,
            "Frame: \tBlockiness: \tSA: \tLetterbox: \tPillarbox: \tBlockloss: \tBlur: \tTA: "
            "\tBlackout: \tFreezing: \tExposure(bri): \tContrast: \tInterlace: \tNoise: \tSlice: "
            "\tFlickering:\n");
  EXPECT_EQ(report.size(), 163u);
}

TEST(Report, printsFrame7_whenEveryIndicatorIsZero) {
  const TemporaryDirectory directory;
  writeFlatClip(directory, {1, 2, 3, 4, 5, 6, 7, 8});
  const ProgramRun run = analyse(directory, {"clip.yuv", "32", "32", "0", "1", "7", "x"});
  EXPECT_EQ(run.out,
            startMessages("clip.yuv", 32, 32, "1.00", 1, 7) + consoleHeader +
                "00007 \t0.00000 \t0.00000 \t\t0.00000 \t0.00000 \t0.00000 \t0.000   \t0.00000 \t0 "
                "\t\t0 \t\t0      \t\t0.00000 \t0.00000 \t0.00     \t0.000   \t0.00000\n" +
                closing);
  EXPECT_EQ(readReport(directory),
            reportHeader +
                "00007 \t0.00000 \t0.00000 \t0.00000 \t0.00000 \t0.00000 \t0.000 \t0.00000 \t0 \t0 "
                "\t0      \t0.00000 \t0.00000 \t0.0000   \t0.000   \t0.00000\n");
}

TEST(Report, printsMoreDigits_whenFrameNumbersPassFive) {
  const TemporaryDirectory directory;
  writeFlatClip(directory, {1});
  const ProgramRun run = analyse(directory, {"clip.yuv", "32", "32", "0", "2", "99999", "x"});
  const std::string messages = startMessages("clip.yuv", 32, 32, "2.00", 2, 99999) + consoleHeader;
  EXPECT_EQ(run.out.substr(messages.size(), 8), "99999 \t0");
  EXPECT_NE(run.out.find("\n100000 \t0.00000 \t"), std::string::npos);
  const std::string report = readReport(directory);
  EXPECT_EQ(report.substr(reportHeader.size(), 8), "99999 \t0");
  EXPECT_NE(report.find("\n100000 \t0.00000 \t"), std::string::npos);
}

TEST(Report, printsFrameNumbersWithTheirSign) {
  const TemporaryDirectory directory;
  writeFlatClip(directory, {1});
  analyse(directory, {"clip.yuv", "32", "32", "0", "1", "-7", "x"});
  EXPECT_EQ(readReport(directory).substr(reportHeader.size(), 8), "-0007 \t0");
  analyse(directory, {"clip.yuv", "32", "32", "0", "1", "-12345", "x"});
  EXPECT_EQ(readReport(directory).substr(reportHeader.size(), 8), "-12345 \t");
}

TEST(Report, cutsAnExposureOf127_99To127) {
  const TemporaryDirectory directory;
  // 32x24: six blocks inside the border, five of them 128 and one with five samples of 127, which
  // is among the four darkest only: (8 * 64 * 128 - 5) / 512 = 127.990.
  std::string luma(32 * 24, static_cast<char>(128));
  luma.replace(0, 5, 5, static_cast<char>(127));
  writeFile(directory.path + "/clip.yuv", frameOf(luma));
  Row row = zeroRow(0);
  row.exposure = "127";
  expectAnalysis(directory, {"clip.yuv", "32", "24", "0x200"},
                 startMessages("clip.yuv", 32, 24, "25.00", 1, 0), {row});
}

TEST(Report, printsANoiseOf3_14159WithTwoDecimalsOnTheConsoleAndFourInTheFile) {
  const TemporaryDirectory directory;
  // 73 blocks of 97 and 103: 57 with alternating lines, 16 as a chequerboard. Each has a deviation
  // of 3 * sqrt(64 / 63) = 3.02, so all are taken and smoothed with the kernel of sigma 3: centre
  // 1 / 56.52, edge e = exp(-1/18) and corner c = exp(-2/18) times that. Smoothing 100 + d and
  // 100 - d leaves residuals whose halved difference is 3 * (1 + (4c - 1) / 56.52) in lines (two
  // edges on the own line; two edges and four corners on the others, of opposite sign) and
  // 3 * (1 + (4e - 4c - 1) / 56.52) in chequers (edges opposite, corners equal). With
  // the deviation of 36 inner samples, half of each kind, sqrt(36 / 35) times that:
  // (57 * 3.1814059 + 16 * 2.9997313) / 73 = 3.1415868.
  std::string luma;
  for (size_t y = 0; y < 8; y++)
    for (size_t x = 0; x < 584; x++)
      luma += (y + (x < 57 * 8 ? 0 : x)) % 2 == 0 ? char{97} : char{103};
  writeFile(directory.path + "/clip.yuv", frameOf(luma));
  const ProgramRun run = analyse(directory, {"clip.yuv", "584", "8", "0x1000"});
  EXPECT_EQ(run.out,
            startMessages("clip.yuv", 584, 8, "25.00", 1, 0) + consoleHeader +
                "00000 \t0.00000 \t0.00000 \t\t0.00000 \t0.00000 \t0.00000 \t0.000   \t0.00000 \t0 "
                "\t\t0 \t\t0      \t\t0.00000 \t0.00000 \t3.14     \t0.000   \t0.00000\n" +
                closing);
  EXPECT_EQ(readReport(directory),
            reportHeader +
                "00000 \t0.00000 \t0.00000 \t0.00000 \t0.00000 \t0.00000 \t0.000 \t0.00000 \t0 \t0 "
                "\t0      \t0.00000 \t0.00000 \t3.1416   \t0.000   \t0.00000\n");
}

// Four frames of 64x64 that differ in all columns:
//
// 0: flat 16. No steps (blockiness 1), bars all over, exposure 16, every sample like the one 16
//    beside and below (slice 1). 4096 samples keep contrast at exactly 0.
// 1: left half 0, right half 200. The only steps lie on a block border: blockiness 0. Two columns
//    of gradient 800 in 62 lines: sqrt(2 * 62 * 640000 / 4096) = 139.19411. No line is uniform.
//    Columns 0 to 30 equal their right neighbour: 31 / 32. Each edge is one sample wide. The step
//    is 16 in one half and 184 in the other: sqrt((256 + 33856) / 2) = 130.59862. Four dark and
//    four bright blocks: 100. Contrast 100 * sqrt(4096 / 4095) = 100.01221. All blocks are flat: no
//    noise. Of 48 columns with a partner 16 beside, the 16 that cross the middle differ from it,
//    whereas all equal the one below: slice (32 / 48) / 1 = 0.667.
// 2: lines of 0 and 255. The steps between lines are the same everywhere: blockiness 1. Sobel sees
//    the same line above and below, and nothing changes along a line. Every line is uniform, every
//    column equals the next. The step is 0, 255, 200 or 55 in a quarter each:
//    sqrt((0 + 65025 + 40000 + 3025) / 4) = 164.35480. All blocks have the mean 127.5: a blackout,
//    of exposure 127. Contrast 127.5 * sqrt(4096 / 4095) = 127.51557. Every block is combed. The
//    blocks deviate by 128.5, past the last bin 127, which none of them matches: noise 0 / 0.
// 3: lines of 90 and 110, otherwise like frame 2. The step is 90 in even and 145 in odd lines:
//    sqrt((8100 + 21025) / 2) = 120.67518. Contrast 10 * sqrt(4096 / 4095) = 10.00122. All blocks
//    deviate by 10.08; smoothing with the kernel of sigma 10 gives residuals of halved difference
//    10 * (1 + (4 * exp(-2/200) - 1) / 628), times sqrt(36 / 35) of 36 samples: 10.18966.
TEST(Report, printsTheDerivedValuesOfFourFrames_inBothForms) {
  std::string halves, lines, softLines;
  for (size_t y = 0; y < 64; y++) {
    halves += std::string(32, 0) + std::string(32, static_cast<char>(200));
    lines += std::string(64, static_cast<char>(y % 2 == 0 ? 0 : 255));
    softLines += std::string(64, static_cast<char>(y % 2 == 0 ? 90 : 110));
  }
  const TemporaryDirectory directory;
  writeFile(directory.path + "/clip.yuv",
            flatFrame(64, 64, 16) + frameOf(halves) + frameOf(lines) + frameOf(softLines));
  const ProgramRun run = analyse(directory, {"clip.yuv", "64", "64"});
  EXPECT_EQ(
      run.out,
      "Video file clip.yuv opened successfully!\n\n"
      "Width = 64, Height = 64, FPS = 25.00, Number of Frames = 4, Start Frame = 0\n\n"
      "Frame: \tBlockiness: \tSpatial Activity: \tLetterbox: \tPillarbox: \tBlockloss: \tBlur: "
      "\t\tTemporalAct: \tBlackout: \tFreezing: \tExposure(bri): \tContrast: \tInterlace: "
      "\tNoise: \t\tSlice: \t\tFlickering:\n"
      "00000 \t1.00000 \t0.00000 \t\t1.00000 \t1.00000 \t-1.00000 \t0.000   \t0.00000 \t1 \t\t0 "
      "\t\t16     \t\t0.00000 \t0.00000 \t0.00     \t1.000   \t0.00000\n"
      "00001 \t0.00000 \t139.19411 \t\t0.00000 \t0.96875 \t-1.00000 \t1.000   \t130.59862 \t0 "
      "\t\t0 \t\t100    \t\t100.01221 \t0.00000 \t0.00     \t0.667   \t-1.00000\n"
      "00002 \t1.00000 \t0.00000 \t\t1.00000 \t1.00000 \t-1.00000 \t0.000   \t164.35480 \t1 \t\t0 "
      "\t\t127    \t\t127.51557 \t1.00000 \t-nan     \t1.000   \t-1.00000\n"
      "00003 \t1.00000 \t0.00000 \t\t1.00000 \t1.00000 \t-1.00000 \t0.000   \t120.67518 \t1 \t\t0 "
      "\t\t100    \t\t10.00122 \t1.00000 \t10.19    \t1.000   \t-1.00000\n"
      "\nFile stream closed\n\n");
  EXPECT_EQ(run.err, "");
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(
      readReport(directory),
      "Frame: \tBlockiness: \tSA: \tLetterbox: \tPillarbox: \tBlockloss: \tBlur: \tTA: \tBlackout: "
      "\tFreezing: \tExposure(bri): \tContrast: \tInterlace: \tNoise: \tSlice: \tFlickering:\n"
      "00000 \t1.00000 \t0.00000 \t1.00000 \t1.00000 \t-1.00000 \t0.000 \t0.00000 \t1 \t0 "
      "\t16     \t0.00000 \t0.00000 \t0.0000   \t1.000   \t0.00000\n"
      "00001 \t0.00000 \t139.19411 \t0.00000 \t0.96875 \t-1.00000 \t1.000 \t130.59862 \t0 \t0 "
      "\t100    \t100.01221 \t0.00000 \t0.0000   \t0.667   \t-1.00000\n"
      "00002 \t1.00000 \t0.00000 \t1.00000 \t1.00000 \t-1.00000 \t0.000 \t164.35480 \t1 \t0 "
      "\t127    \t127.51557 \t1.00000 \t-nan     \t1.000   \t-1.00000\n"
      "00003 \t1.00000 \t0.00000 \t1.00000 \t1.00000 \t-1.00000 \t0.000 \t120.67518 \t1 \t0 "
      "\t100    \t10.00122 \t1.00000 \t10.1897  \t1.000   \t-1.00000\n");
}

TEST(Report, printsFlickeringAfterEveryEighthComparison) {
  const TemporaryDirectory directory;
  // 64 blocks, of which 3 % is one. From frame 1 to 8 all blocks change and stand still in turns:
  // eight switches in eight frames. From 9 to 16 they stand still. In between it is -1.
  std::string clip;
  std::vector<Row> rows = zeroRows(0, 18);
  for (int k = 0; k < 18; k++) {
    const int level = k < 8 ? 10 * ((k + 1) / 2) : 40;
    clip += flatFrame(64, 64, level);
    if (k > 0) rows[static_cast<size_t>(k)].flickering = "-1.00000";
  }
  rows[8].flickering = "1.00000";
  rows[16].flickering = "0.00000";
  writeFile(directory.path + "/clip.yuv", clip);
  expectAnalysis(directory, {"clip.yuv", "64", "64", "0x4000"},
                 startMessages("clip.yuv", 64, 64, "25.00", 18, 0), rows);
}

TEST(Report, printsNoNumberForFlickering_whenAPeriodEndsWithTooFewBlocks) {
  const TemporaryDirectory directory;
  // 16 blocks, of which 3 % is none: 0 / 0 in frame 8.
  writeFlatClip(directory, {1, 1, 1, 1, 1, 1, 1, 1, 1, 1});
  std::vector<Row> rows = zeroRows(0, 10);
  for (size_t k = 1; k < 10; k++) rows[k].flickering = k == 8 ? "-nan" : "-1.00000";
  expectAnalysis(directory, {"clip.yuv", "32", "32", "0x4000"},
                 startMessages("clip.yuv", 32, 32, "25.00", 10, 0), rows);
}

TEST(Report, replacesTheOneBefore) {
  const TemporaryDirectory directory;
  writeFlatClip(directory, {10, 13});
  writeFile(directory.path + "/metricsResultsCSV.csv", std::string(10000, '#'));
  for (int runs = 0; runs < 2; runs++)
    expectAnalysis(directory, {"clip.yuv", "32", "32"},
                   startMessages("clip.yuv", 32, 32, "25.00", 2, 0),
                   {flatRow(0, 10), flatRow(1, 13, "3.00000")});
}

TEST(Report, isTheOnlyFileMade) {
  const TemporaryDirectory directory;
  writeFlatClip(directory, {10});
  analyse(directory, {"clip.yuv", "32", "32"});
  size_t files = 0;
  for (const auto& entry : std::filesystem::directory_iterator(directory.path)) {
    const std::string name = entry.path().filename().string();
    EXPECT_TRUE(name == "clip.yuv" || name == "metricsResultsCSV.csv") << name;
    files++;
  }
  EXPECT_EQ(files, 2u);
}

TEST(Report, goesToTheCurrentFolder_whenTheInputLiesElsewhere) {
  const TemporaryDirectory directory;
  const TemporaryDirectory elsewhere;
  writeFlatClip(elsewhere, {10});
  const std::string input = elsewhere.path + "/clip.yuv";
  expectAnalysis(directory, {input, "32", "32"}, startMessages(input, 32, 32, "25.00", 1, 0),
                 {flatRow(0, 10)});
  EXPECT_FALSE(std::filesystem::exists(elsewhere.path + "/metricsResultsCSV.csv"));
}

TEST(Report, emptiesTheInputBeforeItIsRead_whenBothAreOneFile) {
  const TemporaryDirectory directory;
  writeFile(directory.path + "/metricsResultsCSV.csv", flatFrame(32, 32, 1));
  expectAnalysis(directory, {"metricsResultsCSV.csv", "32", "32"},
                 startMessages("metricsResultsCSV.csv", 32, 32, "25.00", 0, 0), {});
}
