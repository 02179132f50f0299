// The request mask: each of its bits fills its own column and no other.
#include <gtest/gtest.h>

#include <random>

#include "analysis.h"

namespace {

// Ten 64x48 frames that give every indicator something other than 0: bars (lines 0, 1, 46 and 47
// are of one value, columns 0 to 3 equal), a grainy left and a combed right half with an edge of
// its own on either side, steps between the frames, one flat frame (blackout) and a run of still
// ones (freezing).
void writeBusyClip(const TemporaryDirectory& directory) {
  std::minstd_rand random(1);
  std::string clip;
  std::string frame;
  for (uint32_t k = 0; k < 10; k++) {
    if (k == 1) {
      clip += flatFrame(64, 48, 90);
      continue;
    }
    if (k < 3 || k > 6) {  // frames 3 to 6 repeat frame 2
      std::string luma(64 * 48, 16);
      for (size_t y = 2; y < 46; y++)
        for (size_t x = 4; x < 64; x++)
          luma[y * 64 + x] =
              static_cast<char>(x < 32 ? 100 + random() % 16 : (y % 2 == 0 ? 60u : 180u) + k);
      frame = frameOf(luma);
    }
    clip += frame;
  }
  writeFile(directory.path + "/busy.yuv", clip);
}

std::vector<Fields> fieldsWithMask(const TemporaryDirectory& directory, const std::string& mask) {
  const ProgramRun run = analyse(directory, {"busy.yuv", "64", "48", mask});
  EXPECT_EQ(run.err, "");
  EXPECT_EQ(run.status, 0);
  std::vector<Fields> rows = fieldsOf(readReport(directory).substr(reportHeader.size()));
  EXPECT_EQ(rows.size(), 10u);
  return rows;
}

bool isZero(const std::string& field) {
  return field == "0" || field == "0.00000" || field == "0.000" || field == "0.0000";
}

// Column 0 is the frame number; bit b of the mask belongs to column b + 1.
void expectColumns(const std::vector<Fields>& rows, const std::vector<Fields>& complete,
                   uint32_t mask) {
  for (size_t k = 0; k < complete.size() && k < rows.size(); k++) {
    EXPECT_EQ(rows[k][0], complete[k][0]);
    for (size_t column = 1; column < 16; column++) {
      const bool requested = (mask >> (column - 1) & 1) != 0;
      if (requested)
        EXPECT_EQ(rows[k][column], complete[k][column]) << "row " << k << ", column " << column;
      else
        EXPECT_TRUE(isZero(rows[k][column])) << "row " << k << ", column " << column;
    }
  }
}

}  // namespace

TEST(Masks, fillEveryColumnSomewhere_whenAllBitsAreSet) {
  const TemporaryDirectory directory;
  writeBusyClip(directory);
  const std::vector<Fields> rows = fieldsWithMask(directory, "0x7fff");
  for (size_t column = 1; column < 16; column++) {
    size_t filled = 0;
    for (const Fields& row : rows) filled += isZero(row[column]) ? 0 : 1;
    EXPECT_GT(filled, 0u) << "column " << column;
  }
}

TEST(Masks, fillTheirOwnColumnAlone_whenASingleBitIsSet) {
  const TemporaryDirectory directory;
  writeBusyClip(directory);
  const std::vector<Fields> complete = fieldsWithMask(directory, "0x7fff");
  for (uint32_t mask = 0x1; mask <= 0x4000; mask <<= 1) {
    if (mask == 0x100) continue;  // freezing needs temporal activity as well
    SCOPED_TRACE(mask);
    expectColumns(fieldsWithMask(directory, std::to_string(mask)), complete, mask);
  }
}

TEST(Masks, leaveOneColumnAtZero_whenASingleBitIsClear) {
  const TemporaryDirectory directory;
  writeBusyClip(directory);
  const std::vector<Fields> complete = fieldsWithMask(directory, "0x7fff");
  for (uint32_t bit = 0x1; bit <= 0x4000; bit <<= 1) {
    const uint32_t mask = 0x7fff & ~bit;
    SCOPED_TRACE(mask);
    // Without temporal activity there is no freezing either. (The blackout in frame 1 precedes
    // a frame in motion, so that freezing is the same without it.)
    expectColumns(fieldsWithMask(directory, std::to_string(mask)), complete,
                  bit == 0x40 ? mask & ~0x100u : mask);
  }
}

TEST(Masks, leaveFreezingAtZero_whenTemporalActivityIsNotRequested) {
  const TemporaryDirectory directory;
  writeFlatClip(directory, {5, 5, 5, 5, 5, 5});
  expectAnalysis(directory, {"clip.yuv", "32", "32", "0x100"},
                 startMessages("clip.yuv", 32, 32, "25.00", 6, 0), zeroRows(0, 6));
  expectAnalysis(directory, {"clip.yuv", "32", "32", "0x100", "0"},
                 startMessages("clip.yuv", 32, 32, "0.00", 6, 0), zeroRows(0, 6));
}

TEST(Masks, giveFreezingItsColumn_whenTemporalActivityIsRequestedToo) {
  const TemporaryDirectory directory;
  writeBusyClip(directory);
  const std::vector<Fields> complete = fieldsWithMask(directory, "0x7fff");
  expectColumns(fieldsWithMask(directory, "0x140"), complete, 0x140);
  // Frames 2 to 6 are the same: the third that repeats its predecessor, 5, is frozen, and 6.
  std::string flags;
  for (const Fields& row : complete) flags += row[9];
  EXPECT_EQ(flags, "0000011000");
}

TEST(Masks, leaveAllColumnsAtZeroOnEveryRow_whenNoBitIsSet) {
  const TemporaryDirectory directory;
  writeBusyClip(directory);
  expectAnalysis(directory, {"busy.yuv", "64", "48", "0"},
                 startMessages("busy.yuv", 64, 48, "25.00", 10, 0), zeroRows(0, 10));
}

TEST(Masks, ignoreTheBitsFrom0x8000) {
  const TemporaryDirectory directory;
  writeBusyClip(directory);
  expectAnalysis(directory, {"busy.yuv", "64", "48", "0xffff8000"},
                 startMessages("busy.yuv", 64, 48, "25.00", 10, 0), zeroRows(0, 10));
  const std::string complete = analyse(directory, {"busy.yuv", "64", "48", "0x7fff"}).out;
  EXPECT_EQ(analyse(directory, {"busy.yuv", "64", "48", "0xffffffff"}).out, complete);
}

TEST(Masks, areAllBits_whenNoneIsGiven) {
  const TemporaryDirectory directory;
  writeBusyClip(directory);
  const std::string complete = analyse(directory, {"busy.yuv", "64", "48", "0x7fff"}).out;
  EXPECT_EQ(analyse(directory, {"busy.yuv", "64", "48"}).out, complete);
}

TEST(Masks, giveTheSameBytesInEveryRun) {
  const TemporaryDirectory directory;
  writeBusyClip(directory);
  const std::string out = analyse(directory, {"busy.yuv", "64", "48"}).out;
  const std::string report = readReport(directory);
  for (int runs = 0; runs < 10; runs++) {
    EXPECT_EQ(analyse(directory, {"busy.yuv", "64", "48"}).out, out);
    EXPECT_EQ(readReport(directory), report);
  }
}

TEST(Masks, giveTheSameValuesOnTheConsole_exceptForTheDecimalsOfNoise) {
  const TemporaryDirectory directory;
  writeBusyClip(directory);
  const std::vector<Fields> inReport = fieldsWithMask(directory, "0xffff");
  const std::string ahead = startMessages("busy.yuv", 64, 48, "25.00", 10, 0) + consoleHeader;
  const std::string out = analyse(directory, {"busy.yuv", "64", "48"}).out;
  const std::vector<Fields> onConsole =
      fieldsOf(out.substr(ahead.size(), out.size() - ahead.size() - closing.size()));
  ASSERT_EQ(onConsole.size(), inReport.size());
  for (size_t k = 0; k < inReport.size(); k++)
    for (size_t column = 0; column < 16; column++)
      if (column == 13)  // rounded to hundredths here and to tenths of a thousandth there
        EXPECT_NEAR(std::stod(onConsole[k][column]), std::stod(inReport[k][column]), 0.00506);
      else
        EXPECT_EQ(onConsole[k][column], inReport[k][column])
            << "row " << k << ", column " << column;
}
