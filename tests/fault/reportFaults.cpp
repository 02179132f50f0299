// Reports that cannot be created, or not be written to their end.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "faultyRun.h"

namespace {

const std::string noReport = "\n\n Could not create a log file\n\n";

// What the screen shows of a run on `frames` frames.
std::string wholeRun(int frames, const std::string& warning = "") {
  return risingStart(frames) + warning + consoleRows(risingRows(frames)) + closing;
}

std::string reportPath(const TemporaryDirectory& directory) {
  return directory.path + "/metricsResultsCSV.csv";
}

}  // namespace

TEST(ReportFaults, costAWarningAlone_whenTheFolderMayNotBeWritten) {
  const TemporaryDirectory directory;
  writeRisingClip(directory, 3);
  ASSERT_EQ(chmod(directory.path.c_str(), 0555), 0);
  const ProgramRun run = analyseWithinPermissions(directory, risingArguments);
  ASSERT_EQ(chmod(directory.path.c_str(), 0755), 0);
  expectRun(run, 0, wholeRun(3, noReport), "");
  EXPECT_FALSE(std::filesystem::exists(reportPath(directory)));
}

TEST(ReportFaults, leaveTheReportOfTheRunBefore_whenItMayNotBeWritten) {
  const TemporaryDirectory directory;
  writeRisingClip(directory, 3);
  writeFile(reportPath(directory), "of the run before\n");
  ASSERT_EQ(chmod(reportPath(directory).c_str(), 0444), 0);
  const ProgramRun run = analyseWithinPermissions(directory, risingArguments);
  expectRun(run, 0, wholeRun(3, noReport), "");
  EXPECT_EQ(readReport(directory), "of the run before\n");
}

TEST(ReportFaults, costAWarningAlone_whenTheFolderTakesNoFilesAtAll) {
  const TemporaryDirectory directory;
  writeRisingClip(directory, 3);
  const std::string input = directory.path + "/clip.yuv";
  const ProgramRun run =
      runProgram(LUMAPROBE_BINARY, {input, "32", "32", levelAndStep}, "/proc/self");
  expectRun(run, 0,
            startMessages(input, 32, 32, "25.00", 3, 0) + consoleHeader + noReport +
                consoleRows(risingRows(3)) + closing,
            "");
}

TEST(ReportFaults, cutTheReportInSilence_whenTheDiskFillsUp) {
  // 28 is the system's "No space left on device". The bytes ahead of the full disk are kept.
  for (const size_t room : {0u, 100u, 5000u, 8192u}) {
    SCOPED_TRACE(room);
    const TemporaryDirectory directory;
    writeRisingClip(directory, FRAMES);
    const ProgramRun run = analyseWithFaults(
        directory, risingArguments, {{"FAULTS_WRITE_ERROR", std::to_string(room) + ":28"}});
    expectRun(run, 0, wholeRun(FRAMES), "");
    const std::string whole = reportHeader + reportRows(risingRows(FRAMES));
    ASSERT_GT(whole.size(), room);
    EXPECT_EQ(readReport(directory), whole.substr(0, room));
    EXPECT_GE(faultsMade(directory), 1u);
  }
}

TEST(ReportFaults, cutTheReportInSilence_whenASmallFileSystemIsFull) {
  const TemporaryDirectory directory;
  writeRisingClip(directory, FRAMES);
  std::filesystem::create_directory(directory.path + "/small");
  // A file system of two pages that this command alone sees, and what is found there at the end.
  const auto onSmallDisk = [&](const std::string& command) {
    return runProgram("/usr/bin/unshare",
                      {"--mount", "--map-root-user", "sh", "-c",
                       "mount -t tmpfs -o size=8k none small && cd small && " + command, "sh",
                       LUMAPROBE_BINARY, levelAndStep},
                      directory.path);
  };
  if (onSmallDisk("true").status != 0) GTEST_SKIP() << "file systems cannot be mounted here";
  const ProgramRun run =
      onSmallDisk("\"$1\" ../clip.yuv 32 32 $2 && cp metricsResultsCSV.csv ../copy");
  expectRun(run, 0,
            startMessages("../clip.yuv", 32, 32, "25.00", FRAMES, 0) + consoleHeader +
                consoleRows(risingRows(FRAMES)) + closing,
            "");
  const std::string whole = reportHeader + reportRows(risingRows(FRAMES));
  ASSERT_GT(whole.size(), 8192u);
  EXPECT_EQ(readFile(directory.path + "/copy"), whole.substr(0, 8192));
}

TEST(ReportLinks, areFollowed_whenTheirTargetIsAFileOrNotYetThere) {
  for (const bool isThere : {true, false}) {
    SCOPED_TRACE(isThere);
    const TemporaryDirectory directory;
    const TemporaryDirectory elsewhere;
    writeRisingClip(directory, 3);
    const std::string target = elsewhere.path + "/target";
    if (isThere) writeFile(target, std::string(10000, '#'));
    std::filesystem::create_symlink(target, reportPath(directory));
    expectRun(analyse(directory, risingArguments), 0, wholeRun(3), "");
    EXPECT_TRUE(std::filesystem::is_symlink(reportPath(directory)));
    EXPECT_EQ(readFile(target), reportHeader + reportRows(risingRows(3)));
  }
}

TEST(ReportLinks, costAWarningAlone_whenTheyLeadNowhere) {
  const TemporaryDirectory directory;
  writeRisingClip(directory, 3);
  std::filesystem::create_symlink("missing/target", reportPath(directory));
  expectRun(analyse(directory, risingArguments), 0, wholeRun(3, noReport), "");
  EXPECT_TRUE(std::filesystem::is_symlink(reportPath(directory)));
}
