// Standard output and error that are closed, full or no longer read.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <filesystem>

#include "../support/sanitizers.h"
#include "faultyRun.h"

namespace {

const std::string missingInput = "Error opening file.\n\n: No such file or directory\n";

// Runs the program in each of the seven ways to close some of the three standard streams. What goes
// to a closed one is lost, and all else is as ever: `out`, `err`, the report and the input.
void expectOnlyClosedStreamsMissing(const std::vector<std::string>& arguments, int status,
                                    const std::string& out, const std::string& err,
                                    const std::string& report) {
  for (unsigned closed = 1; closed < 8; closed++) {
    SCOPED_TRACE("closed streams: " + std::to_string(closed));
    const TemporaryDirectory directory;
    writeRisingClip(directory, 3);
    const std::string clip = readFile(directory.path + "/clip.yuv");
    const ProgramRun run = analyse(directory, arguments, "/dev/null", [&] {
      for (int stream = 0; stream < 3; stream++)
        if (closed & 1u << stream) require(close(stream) == 0, "close");
    });
    expectRun(run, status, closed & 2u ? "" : out, closed & 4u ? "" : err);
    EXPECT_EQ(readReport(directory), report);
    EXPECT_EQ(readFile(directory.path + "/clip.yuv"), clip);
  }
}

// A run on `frames` frames whose output is a pipe that nobody reads any more.
ProgramRun analyseIntoBrokenPipe(const TemporaryDirectory& directory, int frames,
                                 void (*onBrokenPipe)(int)) {
  writeRisingClip(directory, frames);
  return analyse(directory, risingArguments, "/dev/null", [&] {
    int ends[2];
    require(pipe(ends) == 0, "pipe");
    require(dup2(ends[1], 1) == 1 && close(ends[0]) == 0 && close(ends[1]) == 0, "dup2");
    signal(SIGPIPE, onBrokenPipe);
  });
}

}  // namespace

TEST(ClosedStreams, loseTheirOwnTextAlone_whenARunEndsWell) {
  expectOnlyClosedStreamsMissing(risingArguments, 0,
                                 risingStart(3) + consoleRows(risingRows(3)) + closing, "",
                                 reportHeader + reportRows(risingRows(3)));
}

TEST(ClosedStreams, loseTheirOwnTextAlone_whenTheInputIsMissing) {
  expectOnlyClosedStreamsMissing({"missing.yuv", "32", "32"}, 255, "", missingInput, "");
}

TEST(ClosedStreams, loseTheirOwnTextAlone_whenTheSizeIsRefused) {
  expectOnlyClosedStreamsMissing(
      {"clip.yuv", "0", "32"}, 255,
      "Cannot analyse frames of 0 x 32: width and height must be at least 1, "
      "and 3 * width * height at most 2147483647\n",
      "", "");
}

TEST(ClosedStreams, loseTheirOwnTextAlone_whenAnAssertionFails) {
  const std::string name = std::filesystem::path(LUMAPROBE_BINARY).filename().string();
  expectOnlyClosedStreamsMissing({"clip.yuv", "7", "5", "0x80", "1", "0"}, 134,
                                 startMessages("clip.yuv", 7, 5, "1.00", 1, 0) + consoleHeader,
                                 name + ": blackout:49: minmax: Assertion `size > 0' failed.\n",
                                 reportHeader);
}

TEST(BrokenPipes, killTheRunWithAWholeReport_whenAllRowsFitTheOutputBuffer) {
  if (isThreadSanitized) {
    GTEST_SKIP() << "the sanitizer writes standard output out before the C library does so";
  }
  // Standard output is written only at the end, and the report just before it.
  const TemporaryDirectory directory;
  expectRun(analyseIntoBrokenPipe(directory, 3, SIG_DFL), 128 + SIGPIPE, "", "");
  EXPECT_EQ(readReport(directory), reportHeader + reportRows(risingRows(3)));
}

TEST(BrokenPipes, killTheRunWithACutReport_whenThereAreMoreRows) {
  const TemporaryDirectory directory;
  expectRun(analyseIntoBrokenPipe(directory, 200, SIG_DFL), 128 + SIGPIPE, "", "");
  const std::string whole = reportHeader + reportRows(risingRows(200));
  const std::string report = readReport(directory);
  EXPECT_EQ(report, whole.substr(0, report.size()));
  EXPECT_LT(report.size(), whole.size());
}

TEST(BrokenPipes, loseTheRowsAlone_whenTheirSignalIsIgnored) {
  for (const int frames : {3, 200}) {
    const TemporaryDirectory directory;
    expectRun(analyseIntoBrokenPipe(directory, frames, SIG_IGN), 0, "", "");
    EXPECT_EQ(readReport(directory), reportHeader + reportRows(risingRows(frames)));
  }
}

TEST(BrokenPipes, killTheRunThatHeadCutsShort) {
  const TemporaryDirectory directory;
  // 2000 rows are more than the pipe and head's own buffer hold.
  const ProgramRun run =
      runProgram("/bin/bash",
                 {"-c", "\"$0\" /dev/zero 32 32 0 2000 0 | head -n 1; exit ${PIPESTATUS[0]}",
                  LUMAPROBE_BINARY},
                 directory.path, "/dev/null", [] { signal(SIGPIPE, SIG_DFL); });
  expectRun(run, 128 + SIGPIPE, "Video file /dev/zero opened successfully!\n", "");
  const std::string report = readReport(directory);
  EXPECT_EQ(report, (reportHeader + reportRows(zeroRows(0, 2000))).substr(0, report.size()));
}

TEST(FullOutput, losesTheRowsInSilenceAndKeepsTheReport) {
  const TemporaryDirectory directory;
  writeRisingClip(directory, 200);
  const ProgramRun run = analyse(directory, risingArguments, "/dev/null", [] {
    const int full = open("/dev/full", O_WRONLY);
    require(full >= 0 && dup2(full, 1) == 1, "/dev/full");
  });
  expectRun(run, 0, "", "");
  EXPECT_EQ(readReport(directory), reportHeader + reportRows(risingRows(200)));
}
