// Inputs that fail while they are read, and inputs that are slow to give their bytes.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "faultyRun.h"

namespace {

constexpr int FEW_FRAMES = 5;
constexpr int FRAME_SIZE = 32 * 32 * 3 / 2;  // bytes

std::string readErrorMessage(int frame, int bytesRead) {
  return "Some error occurred when reading the " + std::to_string(frame) +
         " frame\nByte read = " + std::to_string(bytesRead) + ", Frame size = 1024\n\n";
}

std::string systemsReason(const std::string& number, const std::string& description) {
  return "Error code: " + number + " \nError description: " + description + " \n";
}

// A run on five frames whose byte `failing` cannot be read: `frame` is the first without a row, and
// `bytesRead` of its bytes lie ahead.
void expectReadError(int failing, int frame, int bytesRead, const std::string& number = "5",
                     const std::string& description = "Input/output error") {
  SCOPED_TRACE(std::to_string(failing) + " " + description);
  const TemporaryDirectory directory;
  writeRisingClip(directory, FEW_FRAMES);
  const ProgramRun run = analyseWithFaults(
      directory, risingArguments, {{"FAULTS_READ_ERROR", std::to_string(failing) + ":" + number}});
  expectRun(run, 255,
            risingStart(FEW_FRAMES) + consoleRows(risingRows(frame)) +
                readErrorMessage(frame, bytesRead) + systemsReason(number, description),
            "");
  EXPECT_EQ(readReport(directory), reportHeader + reportRows(risingRows(frame)));
  EXPECT_GE(faultsMade(directory), 1u);
}

}  // namespace

TEST(ReadFaults, endTheRunWithTheRowsSoFar_whenNothingOfAFrameCanBeRead) {
  expectReadError(0, 0, 0);
  expectReadError(FRAME_SIZE, 1, 0);
  expectReadError(4 * FRAME_SIZE, 4, 0);
}

TEST(ReadFaults, stateTheBytesReadAndPrintNoRow_whenAFrameCanBeReadInPart) {
  expectReadError(1, 0, 1);
  expectReadError(3 * FRAME_SIZE + 700, 3, 700);
  expectReadError(2 * FRAME_SIZE + 1023, 2, 1023);
}

TEST(ReadFaults, nameTheSystemsReason_whateverItIs) {
  expectReadError(2 * FRAME_SIZE + 9, 2, 9, "116", "Stale file handle");
  expectReadError(2 * FRAME_SIZE + 9, 2, 9, "110", "Connection timed out");
}

// The program handles no signal, so that the system never cuts its reading short; a file system of
// the user's own may.
TEST(ReadFaults, endTheRun_whenReadingIsInterrupted) {
  expectReadError(FRAME_SIZE + 5, 1, 5, "4", "Interrupted system call");
}

TEST(ReadFaults, goUnnoticed_whenTheyLieInTheChromaOfTheLastFrame) {
  const TemporaryDirectory directory;
  writeRisingClip(directory, FEW_FRAMES);
  const int firstChroma = 4 * FRAME_SIZE + 1024;
  const ProgramRun run = analyseWithFaults(
      directory, risingArguments, {{"FAULTS_READ_ERROR", std::to_string(firstChroma) + ":5"}});
  expectRun(run, 0, risingStart(FEW_FRAMES) + consoleRows(risingRows(FEW_FRAMES)) + closing, "");
  EXPECT_EQ(readReport(directory), reportHeader + reportRows(risingRows(FEW_FRAMES)));
}

TEST(ReadFaults, comeAfterTheRowAndWithoutReason_whenTheyAreKnownOnlyThen) {
  // Each frame asks the stream twice, before its row and after it: call 5 is the second of frame 2.
  const TemporaryDirectory directory;
  writeRisingClip(directory, FEW_FRAMES);
  const ProgramRun run =
      analyseWithFaults(directory, risingArguments, {{"FAULTS_STREAM_ERROR", "5"}});
  expectRun(run, 255,
            risingStart(FEW_FRAMES) + consoleRows(risingRows(3)) + readErrorMessage(2, 1024), "");
  EXPECT_EQ(readReport(directory), reportHeader + reportRows(risingRows(3)));
  EXPECT_EQ(faultsMade(directory), 1u);
}

TEST(ReadFaults, areTheSystemsOwn_whenTheInputIsTheUnmappedMemoryOfTheProcess) {
  const TemporaryDirectory directory;
  const ProgramRun run = analyse(directory, {"/proc/self/mem", "32", "32", "0x7fff", "2", "0"});
  expectRun(run, 255,
            startMessages("/proc/self/mem", 32, 32, "2.00", 2, 0) + consoleHeader +
                readErrorMessage(0, 0) + systemsReason("5", "Input/output error"),
            "");
  EXPECT_EQ(readReport(directory), reportHeader);
}

TEST(ShortReads, changeNoRow_whenTheyGiveOneByteOrOddPieces) {
  const TemporaryDirectory directory;
  writeRisingClip(directory, FEW_FRAMES);
  for (const std::string piece : {"1", "7", "1000", "1025"}) {
    SCOPED_TRACE(piece);
    const ProgramRun run =
        analyseWithFaults(directory, risingArguments, {{"FAULTS_READ_PIECE", piece}});
    expectRun(run, 0, risingStart(FEW_FRAMES) + consoleRows(risingRows(FEW_FRAMES)) + closing, "");
    EXPECT_EQ(readReport(directory), reportHeader + reportRows(risingRows(FEW_FRAMES)));
    EXPECT_GE(faultsMade(directory), 4u);  // a stream asks for 4096 bytes or more
  }
}

TEST(ShortReads, changeNoRow_whenAPipeGivesOnePacketAtATime) {
  const TemporaryDirectory directory;
  int ends[2];
  ASSERT_EQ(pipe2(ends, O_DIRECT | O_NONBLOCK), 0);
  // Two frames of 1024 luma bytes in nine packets, which a reader gets one by one. The packets do
  // not end where the frames do.
  const std::string luma = std::string(1024, 10) + std::string(1024, 11);
  const std::vector<size_t> packets = {1, 2, 500, 100, 400, 22, 1000, 22, 1};
  size_t sent = 0;
  for (const size_t packet : packets) {
    ASSERT_EQ(write(ends[1], &luma[sent], packet), static_cast<ssize_t>(packet));
    sent += packet;
  }
  ASSERT_EQ(sent, luma.size());
  close(ends[1]);
  const std::string input = "/dev/fd/" + std::to_string(ends[0]);
  expectAnalysis(directory, {input, "32", "32", levelAndStep, "2", "0"},
                 startMessages(input, 32, 32, "2.00", 2, 0), risingRows(2));
  close(ends[0]);
}
