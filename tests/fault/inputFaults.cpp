// Inputs that change while they are read, that are no files, and that may not be read.
#include <gtest/gtest.h>
#include <sched.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "faultyRun.h"

namespace {

// Frames of 128x64 have luma planes of 8192 bytes and lie 12288 bytes apart. Both are multiples of
// what streams read at once, so that no byte of a frame is read ahead of it.
void writeWideClip(const TemporaryDirectory& directory, const std::vector<int>& levels) {
  std::string clip;
  for (const int level : levels) clip += flatFrame(128, 64, level);
  writeFile(directory.path + "/clip.yuv", clip);
}

// A run on the wide clip whose file gets the size `bytes` just before frame `frame` is read.
void expectResized(const TemporaryDirectory& directory, int frame, uintmax_t bytes,
                   const std::vector<std::string>& range, int frames,
                   const std::vector<Row>& rows) {
  std::vector<std::string> arguments = {"clip.yuv", "128", "64", levelAndStep};
  arguments.insert(arguments.end(), range.begin(), range.end());
  const ProgramRun run =
      analyseWithFaults(directory, arguments,
                        {{"FAULTS_RESIZE", std::to_string(frame) + ":" + std::to_string(bytes)}});
  const std::string fps = range.empty() ? "25.00" : range[0] + ".00";
  expectRun(run, 0,
            startMessages("clip.yuv", 128, 64, fps, frames, 0) + consoleHeader + consoleRows(rows) +
                closing,
            "");
  EXPECT_EQ(readReport(directory), reportHeader + reportRows(rows));
  EXPECT_EQ(faultsMade(directory), 1u);
  EXPECT_EQ(std::filesystem::file_size(directory.path + "/clip.yuv"), bytes);
}

void makeFifo(const TemporaryDirectory& directory) {
  ASSERT_EQ(mkfifo((directory.path + "/fifo").c_str(), 0600), 0);
}

// A run on a pipe with a name, into which another process writes `bytes` once it is open.
ProgramRun analyseFifo(const TemporaryDirectory& directory,
                       const std::vector<std::string>& arguments, const std::string& bytes) {
  makeFifo(directory);
  return analyse(directory, arguments, "/dev/null", [&] {
    const pid_t writer = fork();
    require(writer >= 0, "fork");
    if (writer > 0) return;
    alarm(600);  // in case that the program never opens the pipe
    std::ofstream("fifo", std::ios::binary) << bytes;
    _exit(0);
  });
}

// Waits until the kernel keeps a process waiting in the call that opens files, or it has ended.
void waitUntilItOpensAFile(pid_t process) {
  siginfo_t ended = {};
  long call = -1;
  while (call != SYS_openat && ended.si_pid == 0) {
    sched_yield();
    // "running", or the number of the call and its arguments.
    std::ifstream("/proc/" + std::to_string(process) + "/syscall") >> call;
    waitid(P_PID, static_cast<id_t>(process), &ended, WEXITED | WNOHANG | WNOWAIT);
  }
}

}  // namespace

TEST(ShrinkingInputs, keepTheSamplesOfTwoFramesEarlier_whereTheyHaveEnded) {
  const TemporaryDirectory directory;
  writeWideClip(directory, {10, 20, 40, 80, 160});
  expectResized(directory, 3, 2 * 12288, {}, 5,
                {levelRow(0, 10), levelRow(1, 20, "10.00000"), levelRow(2, 40, "20.00000"),
                 levelRow(3, 20, "20.00000"), levelRow(4, 40, "20.00000")});
}

TEST(ShrinkingInputs, keepTheRestOfTwoFramesEarlier_whereAFrameIsCut) {
  const TemporaryDirectory directory;
  writeWideClip(directory, {10, 20, 40, 80, 160});
  // The upper half of frame 3 is left: four blocks of 20, four of 80. The step from 40 is 40 in one
  // half and 20 in the other: sqrt((1600 + 400) / 2) = 31.62278. Frame 4 is all frame 2, from which
  // it steps back.
  expectResized(directory, 3, 3 * 12288 + 4096, {}, 5,
                {levelRow(0, 10), levelRow(1, 20, "10.00000"), levelRow(2, 40, "20.00000"),
                 levelRow(3, 50, "31.62278"), levelRow(4, 40, "31.62278")});
}

TEST(ShrinkingInputs, areBlack_whenTheyAreEmptiedBeforeTheFirstFrame) {
  const TemporaryDirectory directory;
  writeWideClip(directory, {10, 20});
  expectResized(directory, 0, 0, {}, 2, {levelRow(0, 0), levelRow(1, 0)});
}

TEST(GrowingInputs, keepTheNumberOfFramesThatTheyHadAtFirst) {
  const TemporaryDirectory directory;
  writeWideClip(directory, {10, 20});
  expectResized(directory, 1, 5 * 12288, {}, 2, {levelRow(0, 10), levelRow(1, 20, "10.00000")});
}

TEST(GrowingInputs, areReadAsFarAsTheyReachByThen_whenTheCountIsGiven) {
  const TemporaryDirectory directory;
  writeWideClip(directory, {10, 20});
  // The new frames are black. Frame 5 still lies past the end, and keeps the black of frame 3.
  expectResized(directory, 2, 5 * 12288, {"6", "0"}, 6,
                {levelRow(0, 10), levelRow(1, 20, "10.00000"), levelRow(2, 0, "20.00000"),
                 levelRow(3, 0), levelRow(4, 0), levelRow(5, 0)});
}

TEST(Devices, giveBlackFrames_whenTheyAreZeroOrNullAndTheCountIsGiven) {
  const TemporaryDirectory directory;
  for (const std::string input : {"/dev/zero", "/dev/null"})
    expectAnalysis(directory, {input, "32", "32", "0x7fff", "3", "1", "0"},
                   startMessages(input, 32, 32, "3.00", 3, 1),
                   {flatRow(1, 0), flatRow(2, 0, "0.00000"), flatRow(3, 0, "0.00000")});
}

TEST(Devices, haveNoFrames_whenTheCountIsNotGiven) {
  const TemporaryDirectory directory;
  for (const std::string input : {"/dev/zero", "/dev/null"})
    expectAnalysis(directory, {input, "32", "32"}, startMessages(input, 32, 32, "25.00", 0, 0), {});
}

TEST(Fifos, giveTheirFrames_whenTheCountIsGiven) {
  const TemporaryDirectory directory;
  const ProgramRun run = analyseFifo(directory, {"fifo", "32", "32", levelAndStep, "2", "0"},
                                     std::string(1024, 10) + std::string(1024, 11));
  expectRun(run, 0,
            startMessages("fifo", 32, 32, "2.00", 2, 0) + consoleHeader +
                consoleRows(risingRows(2)) + closing,
            "");
  EXPECT_EQ(readReport(directory), reportHeader + reportRows(risingRows(2)));
}

TEST(Fifos, giveBlackFrames_whenTheWriterWritesNothing) {
  const TemporaryDirectory directory;
  const ProgramRun run = analyseFifo(directory, {"fifo", "32", "32", levelAndStep, "2", "0"}, "");
  const std::vector<Row> rows = {levelRow(0, 0), levelRow(1, 0)};
  expectRun(
      run, 0,
      startMessages("fifo", 32, 32, "2.00", 2, 0) + consoleHeader + consoleRows(rows) + closing,
      "");
  EXPECT_EQ(readReport(directory), reportHeader + reportRows(rows));
}

TEST(Fifos, haveNoFrames_whenTheCountIsNotGiven) {
  const TemporaryDirectory directory;
  const ProgramRun run = analyseFifo(directory, {"fifo", "32", "32"}, "");
  expectRun(run, 0, startMessages("fifo", 32, 32, "25.00", 0, 0) + consoleHeader + closing, "");
  EXPECT_EQ(readReport(directory), reportHeader);
}

TEST(Fifos, areWaitedForWithTheOldReportInPlace_whileNobodyWrites) {
  const TemporaryDirectory directory;
  makeFifo(directory);
  writeFile(directory.path + "/metricsResultsCSV.csv", "of the run before\n");
  const StartedProgram program =
      startProgram(LUMAPROBE_BINARY, {"fifo", "32", "32", "0", "2", "0"}, directory.path);
  waitUntilItOpensAFile(program.process);
  kill(program.process, SIGTERM);
  expectRun(waitFor(program), 128 + SIGTERM, "", "");
  EXPECT_EQ(readReport(directory), "of the run before\n");
}

TEST(UnreadableInputs, areRefusedWithAnEmptyReport_whenTheirPermissionsSaySo) {
  const TemporaryDirectory directory;
  writeRisingClip(directory, 1);
  ASSERT_EQ(chmod((directory.path + "/clip.yuv").c_str(), 0), 0);
  const ProgramRun run = analyseWithinPermissions(directory, risingArguments);
  expectRun(run, 255, "", "Error opening file.\n\n: Permission denied\n");
  EXPECT_EQ(readReport(directory), "");
}

TEST(UnreadableInputs, areRefusedWithAnEmptyReport_whenTheyAreAClosedStandardInput) {
  const TemporaryDirectory directory;
  const ProgramRun run = analyse(directory, {"/dev/stdin", "32", "32", "0", "1", "0"}, "/dev/null",
                                 [] { require(close(0) == 0, "close"); });
  expectRun(run, 255, "", "Error opening file.\n\n: No such file or directory\n");
  EXPECT_EQ(readReport(directory), "");
}
