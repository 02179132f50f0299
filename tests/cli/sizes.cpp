// Frames of odd and of the smallest sizes.
#include <gtest/gtest.h>

#include "analysis.h"

namespace {

// All indicators but blackout, which needs a whole 8x8 block.
const std::string withoutBlackout = "0x7f7f";

// A black frame with its last sample at 255.
std::string cornerFrame(size_t samples) {
  std::string luma(samples, 0);
  luma.back() = static_cast<char>(255);
  return frameOf(luma);
}

// What a frame of no whole block gives whatever it shows: no block border (blockiness 0/0 counts as
// 1), no region for block loss, no block inside the border for exposure (127.5), none for noise.
Row rowWithoutBlocks(int64_t frame) {
  Row row = zeroRow(frame);
  row.blockiness = "1.00000";
  row.blockLoss = "-1.00000";
  row.exposure = "127";
  row.noise = row.noiseInReport = "-nan";
  if (frame > 0) row.flickering = "-1.00000";
  return row;
}

}  // namespace

TEST(Sizes, take52BytesPerFrame_whenFramesAre7x5) {
  const TemporaryDirectory directory;
  writeFile(directory.path + "/clip.yuv", flatFrame(7, 5, 0) + cornerFrame(35));
  std::vector<Row> rows = {rowWithoutBlocks(0), rowWithoutBlocks(1)};
  rows[0].letterbox = rows[0].pillarbox = "1.00000";
  // The bright corner breaks the last line; the columns of the left half still equal their right
  // neighbours. One inner sample sees it, in both directions: sqrt(2 * 255^2 / 35) = 60.95666.
  // One sample of 255 in 35: sqrt((255^2 - 255^2 / 35) / 34) = 255 / sqrt(35) = 43.10287, and the
  // root of the mean squared step is the same.
  rows[1].spatialActivity = "60.95666";
  rows[1].pillarbox = "1.00000";
  rows[1].temporalActivity = rows[1].contrast = "43.10287";
  expectAnalysis(directory, {"clip.yuv", "7", "5", withoutBlackout},
                 startMessages("clip.yuv", 7, 5, "25.00", 2, 0), rows);
}

TEST(Sizes, take841BytesPerFrame_whenFramesAre17x33) {
  const TemporaryDirectory directory;
  // 561 luma samples; 1683 / 2 is 841.
  writeFile(directory.path + "/clip.yuv", flatFrame(17, 33, 0) + cornerFrame(561));
  std::vector<Row> rows = zeroRows(0, 2);
  for (Row& row : rows) {
    row.blockiness = row.pillarbox = "1.00000";
    row.blockLoss = "-1.00000";
    row.blackout = "1";  // the corner lies outside of the whole blocks
  }
  rows[0].letterbox = "1.00000";
  // As above: sqrt(2 * 255^2 / 561) = 15.22558 and 255 / sqrt(561) = 10.76611.
  rows[1].spatialActivity = "15.22558";
  rows[1].temporalActivity = rows[1].contrast = "10.76611";
  rows[1].flickering = "-1.00000";
  expectAnalysis(directory, {"clip.yuv", "17", "33"},
                 startMessages("clip.yuv", 17, 33, "25.00", 2, 0), rows);
}

TEST(Sizes, takeOneBytePerFrame_whenFramesAre1x1) {
  const TemporaryDirectory directory;
  writeFile(directory.path + "/clip.yuv", {5, 9});
  std::vector<Row> rows = {rowWithoutBlocks(0), rowWithoutBlocks(1)};
  // Half the lines, half the columns, the whole 4x4 blocks and the samples but one are all none.
  for (Row& row : rows) row.letterbox = row.pillarbox = row.interlace = row.contrast = "-nan";
  rows[1].temporalActivity = "4.00000";
  expectAnalysis(directory, {"clip.yuv", "1", "1", withoutBlackout},
                 startMessages("clip.yuv", 1, 1, "25.00", 2, 0), rows);
}

TEST(Sizes, giveBarsAcrossALine_whenFramesAre2x1) {
  const TemporaryDirectory directory;
  // Three bytes per frame. 0 and 255: sqrt(255^2 - 255^2 / 2) = 180.31223. A frame of one line has
  // no pair of lines for letterbox, and nothing that speaks against pillarbox.
  writeFile(directory.path + "/clip.yuv", std::string("\0\xff\x4d", 3));
  Row row = rowWithoutBlocks(0);
  row.letterbox = row.interlace = "-nan";
  row.pillarbox = "1.00000";
  row.contrast = "180.31223";
  expectAnalysis(directory, {"clip.yuv", "2", "1", withoutBlackout},
                 startMessages("clip.yuv", 2, 1, "25.00", 1, 0), {row});
}

TEST(Sizes, haveOneBlock_whenFramesAre8x8) {
  const TemporaryDirectory directory;
  writeFile(directory.path + "/clip.yuv", flatFrame(8, 8, 10) + flatFrame(8, 8, 13));
  // As flat as any frame, but without a block inside the border.
  std::vector<Row> rows = {flatRow(0, 127), flatRow(1, 127, "3.00000")};
  expectAnalysis(directory, {"clip.yuv", "8", "8"}, startMessages("clip.yuv", 8, 8, "25.00", 2, 0),
                 rows);
}
