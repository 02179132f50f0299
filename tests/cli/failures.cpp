// Runs that cannot do what they were asked for: what is still written, and the exit status.
#include <gtest/gtest.h>

#include <filesystem>

#include "analysis.h"

namespace {

const std::string noSuchFile = "Error opening file.\n\n: No such file or directory\n";

void expectRefusedSize(const std::string& width, const std::string& height) {
  SCOPED_TRACE(width + " x " + height);
  const TemporaryDirectory directory;
  writeFlatClip(directory, {1});
  writeFile(directory.path + "/metricsResultsCSV.csv", "of the run before\n");
  const ProgramRun run = analyse(directory, {"clip.yuv", width, height, "0", "1", "0"});
  EXPECT_EQ(run.out, "Cannot analyse frames of " + width + " x " + height +
                         ": width and height must be at least 1, and 3 * width * height at most "
                         "2147483647\n");
  EXPECT_EQ(run.err, "");
  EXPECT_EQ(run.status, 255);
  EXPECT_EQ(readReport(directory), "");
}

// The start messages and the header, then the end of the program in frame `start`, whose reading
// failed before its first byte with error 21.
void expectReadError(const std::string& input, const std::string& start) {
  SCOPED_TRACE(input + " from frame " + start);
  const TemporaryDirectory directory;
  std::filesystem::create_directory(directory.path + "/folder");
  const ProgramRun run = analyse(directory, {input, "32", "16", "0x7fff", "2", start, "0"});
  EXPECT_EQ(run.out, startMessages(input, 32, 16, "2.00", 2, std::stoi(start)) + consoleHeader +
                         "Some error occurred when reading the " + start +
                         " frame\n"
                         "Byte read = 0, Frame size = 512\n\n"  // 32 * 16 luma bytes
                         "Error code: 21 \n"
                         "Error description: Is a directory \n");
  EXPECT_EQ(run.err, "");
  EXPECT_EQ(run.status, 255);
  EXPECT_EQ(readReport(directory), reportHeader);
}

// The only output of a frame that has no whole 8x8 block while blackout is requested.
void expectBlackoutAssertion(const std::string& width, const std::string& height,
                             const std::string& mask) {
  SCOPED_TRACE(width + " x " + height + ", mask " + mask);
  const TemporaryDirectory directory;
  writeFile(directory.path + "/clip.yuv", std::string(1000, 'x'));
  const ProgramRun run = analyse(directory, {"clip.yuv", width, height, mask, "3", "2", "0"});
  EXPECT_EQ(run.out, startMessages("clip.yuv", std::stoi(width), std::stoi(height), "3.00", 3, 2) +
                         consoleHeader);
  EXPECT_EQ(run.err, std::filesystem::path(LUMAPROBE_BINARY).filename().string() +
                         ": blackout:49: minmax: Assertion `size > 0' failed.\n");
  EXPECT_EQ(run.status, 134);
  EXPECT_EQ(readReport(directory), reportHeader);
}

}  // namespace

TEST(Failures, leaveAnEmptyReport_whenTheInputIsMissing) {
  const TemporaryDirectory directory;
  const ProgramRun run = analyse(directory, {"missing.yuv", "32", "32"});
  EXPECT_EQ(run.out, "");
  EXPECT_EQ(run.err, noSuchFile);
  EXPECT_EQ(run.status, 255);
  EXPECT_EQ(readReport(directory), "");
}

TEST(Failures, emptyTheReportOfTheRunBefore_whenTheInputIsMissing) {
  const TemporaryDirectory directory;
  writeFile(directory.path + "/metricsResultsCSV.csv", "of the run before\n");
  EXPECT_EQ(analyse(directory, {"missing.yuv", "32", "32"}).status, 255);
  EXPECT_EQ(readReport(directory), "");
}

TEST(Failures, reportTheInputFirst_whenItIsMissingAndTheSizeIsWrong) {
  const TemporaryDirectory directory;
  const ProgramRun run = analyse(directory, {"missing.yuv", "0", "-1"});
  EXPECT_EQ(run.out, "");
  EXPECT_EQ(run.err, noSuchFile);
  EXPECT_EQ(run.status, 255);
}

TEST(Failures, keepTheInputsOwnError_whenTheReportCannotBeCreatedEither) {
  const TemporaryDirectory directory;
  std::filesystem::create_directory(directory.path + "/metricsResultsCSV.csv");
  const ProgramRun run = analyse(directory, {"missing.yuv", "32", "32"});
  EXPECT_EQ(run.out, "");
  EXPECT_EQ(run.err, noSuchFile);
  EXPECT_EQ(run.status, 255);
}

TEST(Failures, nameTheSystemsError_whenTheInputCannotBeOpened) {
  const TemporaryDirectory directory;
  writeFlatClip(directory, {1});
  EXPECT_EQ(analyse(directory, {"", "32", "32"}).err, noSuchFile);
  EXPECT_EQ(analyse(directory, {"clip.yuv/beneath", "32", "32"}).err,
            "Error opening file.\n\n: Not a directory\n");
  std::filesystem::create_symlink("loop", directory.path + "/loop");
  EXPECT_EQ(analyse(directory, {"loop", "32", "32"}).err,
            "Error opening file.\n\n: Too many levels of symbolic links\n");
}

TEST(Failures, endTheRun_whenTheInputIsADirectory) {
  expectReadError("folder", "0");
  expectReadError("folder", "3");
  expectReadError("folder", "-3");
  expectReadError(".", "100000");
}

TEST(Failures, goOnWithoutReport_whenItCannotBeCreated) {
  const TemporaryDirectory directory;
  writeFlatClip(directory, {10, 13});
  std::filesystem::create_directory(directory.path + "/metricsResultsCSV.csv");
  const ProgramRun run = analyse(directory, {"clip.yuv", "32", "32"});
  EXPECT_EQ(run.out, startMessages("clip.yuv", 32, 32, "25.00", 2, 0) + consoleHeader +
                         "\n\n Could not create a log file\n\n" +
                         consoleRows({flatRow(0, 10), flatRow(1, 13, "3.00000")}) + closing);
  EXPECT_EQ(run.err, "");
  EXPECT_EQ(run.status, 0);
  EXPECT_TRUE(std::filesystem::is_empty(directory.path + "/metricsResultsCSV.csv"));
}

TEST(Failures, goUnnoticed_whenTheReportCannotBeWritten) {
  const TemporaryDirectory directory;
  writeFlatClip(directory, {10});
  std::filesystem::create_symlink("/dev/full", directory.path + "/metricsResultsCSV.csv");
  const ProgramRun run = analyse(directory, {"clip.yuv", "32", "32"});
  EXPECT_EQ(run.out, startMessages("clip.yuv", 32, 32, "25.00", 1, 0) + consoleHeader +
                         consoleRows({flatRow(0, 10)}) + closing);
  EXPECT_EQ(run.err, "");
  EXPECT_EQ(run.status, 0);
}

TEST(Failures, refuseSides_whenOneIsZeroOrNegative) {
  expectRefusedSize("0", "32");
  expectRefusedSize("32", "0");
  expectRefusedSize("0", "0");
  expectRefusedSize("-32", "32");
  expectRefusedSize("32", "-32");
  expectRefusedSize("-32", "-32");
  expectRefusedSize("-2147483648", "-2147483648");
}

TEST(Failures, refuseSides_whenThreeTimesTheirProductPasses31Bits) {
  expectRefusedSize("715827883", "1");  // 3 * 715827883 = 2^31 + 1
  expectRefusedSize("1", "715827883");
  expectRefusedSize("30000", "30000");
  expectRefusedSize("65536", "65536");            // the product is 2^32, 0 in 32 bits
  expectRefusedSize("2147483647", "2147483647");  // three times the product passes 2^63
}

TEST(Failures, acceptTheLargestFrame_whoseThreefoldSizeFits31Bits) {
  const TemporaryDirectory directory;
  writeFile(directory.path + "/clip.yuv", "");
  // 3 * 715827882 = 2^31 - 2. No frame is read.
  expectAnalysis(directory, {"clip.yuv", "715827882", "1", "0"},
                 startMessages("clip.yuv", 715827882, 1, "25.00", 0, 0), {});
}

TEST(Failures, stopOnBlackoutsAssertion_whenAFrameHasNoWholeBlock) {
  expectBlackoutAssertion("7", "5", "0x80");
  expectBlackoutAssertion("7", "8", "0x80");
  expectBlackoutAssertion("8", "7", "0x80");
  expectBlackoutAssertion("4", "64", "0x80");
}

TEST(Failures, stopOnBlackoutsAssertion_whenItRunsBesideAllOthers) {
  expectBlackoutAssertion("7", "5", "0xffff");
  expectBlackoutAssertion("1", "1", "0xffff");
}
