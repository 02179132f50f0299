// Signals in the middle of a run.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <stdlib.h>
#include <termios.h>
#include <unistd.h>

#include <functional>

#include "faultyRun.h"

namespace {

constexpr int MANY_FRAMES = 200;
constexpr int BEFORE = 150;  // rows before the signal, more than any stream's buffer holds
constexpr size_t LARGEST_BUFFER = 8192;  // bytes; the C library's for files

// `written` is the first part of `rowsSoFar`, less at most what one buffer holds.
void expectAllButABuffer(const std::string& written, const std::string& rowsSoFar) {
  ASSERT_LE(written.size(), rowsSoFar.size());
  EXPECT_EQ(written, rowsSoFar.substr(0, written.size()));
  EXPECT_GT(written.size() + LARGEST_BUFFER, rowsSoFar.size());
  EXPECT_GT(written.size(), 0u);
}

// `prepare` is that of runProgram.
ProgramRun analyseWithSignal(
    const TemporaryDirectory& directory, int number, int before = BEFORE,
    const std::function<void()>& prepare = [] {}) {
  writeRisingClip(directory, MANY_FRAMES);
  ProgramRun run = analyseWithFaults(
      directory, risingArguments,
      {{"FAULTS_SIGNAL", std::to_string(before) + ":" + std::to_string(number)}}, prepare);
  EXPECT_EQ(faultsMade(directory), 1u);
  return run;
}

void expectWholeRun(const TemporaryDirectory& directory, const ProgramRun& run) {
  expectRun(run, 0, risingStart(MANY_FRAMES) + consoleRows(risingRows(MANY_FRAMES)) + closing, "");
  EXPECT_EQ(readReport(directory), reportHeader + reportRows(risingRows(MANY_FRAMES)));
}

// A terminal that changes no byte, and what was shown there once nobody has it open any more.
struct Terminal {
  Terminal() : master(posix_openpt(O_RDWR | O_NOCTTY)) {
    EXPECT_TRUE(grantpt(master) == 0 && unlockpt(master) == 0);
    path = ptsname(master);
    slave = open(path.c_str(), O_RDWR | O_NOCTTY);
    termios modes = {};
    EXPECT_EQ(tcgetattr(slave, &modes), 0);
    cfmakeraw(&modes);
    EXPECT_EQ(tcsetattr(slave, TCSANOW, &modes), 0);
  }
  ~Terminal() { close(master); }
  Terminal(const Terminal&) = delete;
  Terminal& operator=(const Terminal&) = delete;

  std::string takeShown() {
    close(slave);
    std::string shown;
    char bytes[1000];
    for (ssize_t n; (n = read(master, bytes, sizeof bytes)) > 0;)
      shown.append(bytes, static_cast<size_t>(n));
    return shown;
  }

  int master;
  int slave;
  std::string path;
};

}  // namespace

TEST(Signals, killTheRunAndLeaveAllRowsButThoseOfABuffer) {
  for (const int number : {SIGINT, SIGTERM, SIGHUP, SIGKILL}) {
    SCOPED_TRACE(number);
    const TemporaryDirectory directory;
    const ProgramRun run =
        analyseWithSignal(directory, number, BEFORE, [&] { signal(number, SIG_DFL); });
    EXPECT_EQ(run.status, 128 + number);
    EXPECT_EQ(run.err, "");
    const std::vector<Row> rows = risingRows(BEFORE);
    expectAllButABuffer(run.out, risingStart(MANY_FRAMES) + consoleRows(rows));
    expectAllButABuffer(readReport(directory), reportHeader + reportRows(rows));
  }
}

TEST(Signals, leaveAllRowsSoFarOnATerminal) {
  // Few enough that the terminal takes them without being read.
  constexpr int SHOWN = 7;
  const TemporaryDirectory directory;
  Terminal terminal;
  const ProgramRun run = analyseWithSignal(directory, SIGINT, SHOWN, [&] {
    signal(SIGINT, SIG_DFL);
    require(dup2(open(terminal.path.c_str(), O_WRONLY | O_NOCTTY), 1) == 1, "terminal");
  });
  expectRun(run, 128 + SIGINT, "", "");
  EXPECT_EQ(terminal.takeShown(), risingStart(MANY_FRAMES) + consoleRows(risingRows(SHOWN)));
  EXPECT_EQ(readReport(directory), "");  // all of it was still in the buffer
}

TEST(Signals, changeNothing_whenTheyAreIgnored) {
  for (const int number : {SIGHUP, SIGINT}) {
    SCOPED_TRACE(number);
    const TemporaryDirectory directory;
    expectWholeRun(directory,
                   analyseWithSignal(directory, number, BEFORE, [&] { signal(number, SIG_IGN); }));
  }
}

TEST(Signals, changeNothing_whenTheyStopTheRunAndItGoesOn) {
  const TemporaryDirectory directory;
  const ProgramRun run = analyseWithSignal(directory, SIGSTOP);
  EXPECT_EQ(run.stops, 1);
  expectWholeRun(directory, run);
}
