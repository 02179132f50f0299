// Runs that get too little memory: they end early, but no row is ever wrong. Programs under a
// sanitizer reserve more address space than any limit here leaves, and are not looked at.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>

#include <filesystem>

#include "faultyRun.h"

namespace {

constexpr rlim_t MIB = 1024 * 1024;

ProgramRun analyseWithMemory(const TemporaryDirectory& directory,
                             const std::vector<std::string>& arguments, rlim_t bytes) {
  return analyse(directory, arguments, "/dev/null", [&] {
    const rlimit none = {0, 0};
    const rlimit most = {bytes, bytes};
    require(setrlimit(RLIMIT_CORE, &none) == 0 && setrlimit(RLIMIT_AS, &most) == 0, "setrlimit");
  });
}

// Two frames of 100 million luma samples, all holes.
void writeHugeClip(const TemporaryDirectory& directory) {
  writeFile(directory.path + "/clip.yuv", "");
  std::filesystem::resize_file(directory.path + "/clip.yuv", 300000000);
}
const std::vector<std::string> hugeArguments = {"clip.yuv", "10000", "10000", "0"};

}  // namespace

// From too little to be loaded, over room for some of the threads, to room for all.
TEST(MemoryLimits, letARunEndWellOrNotAtAllButPrintNoWrongRow) {
  const TemporaryDirectory directory;
  writeNoiseClip(directory);
  const std::string whole = analyse(directory, noiseArguments).out;
  const std::string wholeReport = readReport(directory);
  int wholeRuns = 0;
  for (rlim_t bytes = 2 * MIB; bytes < 10 * MIB; bytes += MIB / 16) {
    SCOPED_TRACE(bytes);
    writeFile(directory.path + "/metricsResultsCSV.csv", "");
    const ProgramRun run = analyseWithMemory(directory, noiseArguments, bytes);
    const std::string report = readReport(directory);
    if (run.status == 0) {
      wholeRuns++;
      EXPECT_EQ(run.out, whole);
      EXPECT_EQ(report, wholeReport);
    } else {
      const std::string rows = run.out.substr(0, run.out.find("Some error occurred"));
      EXPECT_EQ(rows, whole.substr(0, rows.size()));
      EXPECT_EQ(report, wholeReport.substr(0, report.size()));
    }
  }
  EXPECT_GT(wholeRuns, 0);
}

TEST(MemoryLimits, changeNoByte_whenThereIsRoomForAllThreadsButNotForHeapsOfTheirOwn) {
  const TemporaryDirectory directory;
  writeNoiseClip(directory);
  expectUndisturbed(directory, analyseWithMemory(directory, noiseArguments, 50 * MIB));
}

TEST(MemoryLimits, failTheReadingOfTheFirstFrame_whenThereIsRoomForNone) {
  const TemporaryDirectory directory;
  writeHugeClip(directory);
  expectRun(analyseWithMemory(directory, hugeArguments, 50 * MIB), 255,
            startMessages("clip.yuv", 10000, 10000, "25.00", 2, 0) + consoleHeader +
                "Some error occurred when reading the 0 frame\n"
                "Byte read = 0, Frame size = 100000000\n\n"
                "Error code: 14 \nError description: Bad address \n",
            "");
  EXPECT_EQ(readReport(directory), reportHeader);
}

// The second frame starts inside of a page, whose bytes the C library itself copies.
TEST(MemoryLimits, killTheRunAndLoseBufferedRows_whenThereIsRoomForOneFrame) {
  const TemporaryDirectory directory;
  writeHugeClip(directory);
  expectRun(analyseWithMemory(directory, hugeArguments, 150 * MIB), 128 + SIGSEGV, "", "");
  EXPECT_EQ(readReport(directory), "");
}

TEST(MemoryLimits, changeNoByte_whenThereIsRoomForBothFrames) {
  const TemporaryDirectory directory;
  writeHugeClip(directory);
  expectRun(analyseWithMemory(directory, hugeArguments, 250 * MIB), 0,
            startMessages("clip.yuv", 10000, 10000, "25.00", 2, 0) + consoleHeader +
                consoleRows(zeroRows(0, 2)) + closing,
            "");
  EXPECT_EQ(readReport(directory), reportHeader + reportRows(zeroRows(0, 2)));
}
