// Files and offsets past 32 bits. The files are sparse: they take next to no room.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "analysis.h"

namespace {

void makeSparse(const std::string& path, uintmax_t bytes) {
  writeFile(path, "");
  std::filesystem::resize_file(path, bytes);
}

void writeAt(const std::string& path, std::streamoff offset, const std::string& bytes) {
  std::fstream file(path, std::ios::in | std::ios::out | std::ios::binary);
  file.seekp(offset);
  file << bytes;
  file.flush();
  ASSERT_TRUE(file.good());
}

}  // namespace

TEST(LargeFiles, areReadAtTheirFarEnd_whenTheOffsetPasses32Bits) {
  const TemporaryDirectory directory;
  // Frame 3000000 of 1536 bytes lies at 4608000000, past 2^32 = 4294967296. Offsets cut to 32 bits
  // would meet the hole in front.
  const std::string path = directory.path + "/clip.yuv";
  makeSparse(path, 3000003 * 1536ULL);
  writeAt(path, 3000000 * 1536LL, flatFrame(32, 32, 100) + flatFrame(32, 32, 103));
  expectAnalysis(directory, {"clip.yuv", "32", "32", "0xffff", "2", "3000000", "unread"},
                 startMessages("clip.yuv", 32, 32, "2.00", 2, 3000000),
                 {flatRow(3000000, 100), flatRow(3000001, 103, "3.00000")});
}

TEST(LargeFiles, haveTheirNumberOfFramesCutTo32Bits) {
  const TemporaryDirectory directory;
  // A frame of 1x1 takes one byte, one of 2x2 six.
  makeSparse(directory.path + "/clip.yuv", 4294967299);  // 2^32 + 3 frames
  expectAnalysis(directory, {"clip.yuv", "1", "1", "0"},
                 startMessages("clip.yuv", 1, 1, "25.00", 3, 0), zeroRows(0, 3));
  makeSparse(directory.path + "/clip.yuv", 6 * 4294967299 + 5);
  expectAnalysis(directory, {"clip.yuv", "2", "2", "0"},
                 startMessages("clip.yuv", 2, 2, "25.00", 3, 0), zeroRows(0, 3));
}

TEST(LargeFiles, giveNoFrames_whenTheirNumberIsNegativeIn32Bits) {
  const TemporaryDirectory directory;
  // 2^31 frames of 2x2. The low 32 bits of the file's size alone are 0.
  makeSparse(directory.path + "/clip.yuv", 6 * 2147483648);
  expectAnalysis(directory, {"clip.yuv", "2", "2", "0"},
                 startMessages("clip.yuv", 2, 2, "25.00", -2147483648LL, 0), {});
}

TEST(LargeFiles, leaveBuffersAsTheyAre_whenTheStartLiesFarPastTheEnd) {
  const TemporaryDirectory directory;
  writeFlatClip(directory, {100});
  // 1536 * 2796203 is 2^32 + 512: cut to 32 bits, the first of the frames would lie inside of the
  // file.
  expectAnalysis(directory, {"clip.yuv", "32", "32", "0x200", "2", "2796203", "unread"},
                 startMessages("clip.yuv", 32, 32, "2.00", 2, 2796203), zeroRows(2796203, 2));
}
