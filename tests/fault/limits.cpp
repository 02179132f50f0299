// Small limits on what the system grants a process.
#include <gtest/gtest.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/resource.h>
#include <unistd.h>

#include <filesystem>

#include "faultyRun.h"

namespace {

void setLimit(__rlimit_resource resource, rlim_t most) {
  const rlimit limit = {most, most};
  require(setrlimit(resource, &limit) == 0, "setrlimit");
}

// Descriptors beyond the three standard streams, which the tests hand down, would count.
void limitDescriptors(rlim_t most) {
  require(close_range(3, ~0U, 0) == 0, "close_range");
  setLimit(RLIMIT_NOFILE, most);
}

// A user who has this one process and may have no second one, neither as a thread. The superuser
// may have any number, and becomes a user without processes first.
void allowNoSecondThread() {
  constexpr uid_t USER = 61616;
  if (geteuid() == 0) require(setresuid(USER, USER, USER) == 0, "setresuid");
  setLimit(RLIMIT_NPROC, 1);
  setenv("ASAN_OPTIONS", "detect_leaks=0", 1);  // which is looked for by a process of its own
}

// A run whose files, standard output too, can take up 5000 bytes each.
ProgramRun analyseIntoSmallFiles(const TemporaryDirectory& directory, void (*onTooLarge)(int)) {
  writeRisingClip(directory, FRAMES);
  return analyse(directory, risingArguments, "/dev/null", [&] {
    signal(SIGXFSZ, onTooLarge);
    setLimit(RLIMIT_CORE, 0);
    setLimit(RLIMIT_FSIZE, 5000);
  });
}

std::string wholeOutput() {
  return risingStart(FRAMES) + consoleRows(risingRows(FRAMES)) + closing;
}

std::string wholeReport() {
  return reportHeader + reportRows(risingRows(FRAMES));
}

}  // namespace

TEST(Limits, changeNoByte_whenTheStackIsSmall) {
  for (const rlim_t kilobytes : {128u, 64u}) {
    SCOPED_TRACE(kilobytes);
    const TemporaryDirectory directory;
    writeNoiseClip(directory);
    const auto limitStack = [&] { setLimit(RLIMIT_STACK, kilobytes * 1024); };
    expectUndisturbed(directory, analyse(directory, noiseArguments, "/dev/null", limitStack));
    // All indicators on the small stack itself.
    const ProgramRun run =
        analyseWithFaults(directory, noiseArguments, {{"FAULTS_THREADS", "x"}}, limitStack);
    EXPECT_EQ(faultsMade(directory), 120u);
    expectUndisturbed(directory, run);
  }
}

TEST(Limits, costTheReportAWarning_whenThereIsOneDescriptorForFiles) {
  const TemporaryDirectory directory;
  writeRisingClip(directory, 3);
  const ProgramRun run =
      analyse(directory, risingArguments, "/dev/null", [] { limitDescriptors(4); });
  expectRun(run, 0,
            risingStart(3) + "\n\n Could not create a log file\n\n" + consoleRows(risingRows(3)) +
                closing,
            "");
  EXPECT_FALSE(std::filesystem::exists(directory.path + "/metricsResultsCSV.csv"));
}

TEST(Limits, changeNoByte_whenThereAreTwoDescriptorsForFiles) {
  const TemporaryDirectory directory;
  writeNoiseClip(directory);
  expectUndisturbed(directory,
                    analyse(directory, noiseArguments, "/dev/null", [] { limitDescriptors(5); }));
}

TEST(Limits, changeNoByte_whenTheUserMayHaveNoThreads) {
  const TemporaryDirectory directory;
  writeNoiseClip(directory);
  // Another user reaches neither a private build folder nor a private temporary one.
  std::filesystem::permissions(directory.path, std::filesystem::perms::all);
  std::filesystem::copy_file(LUMAPROBE_BINARY, directory.path + "/lumaprobe");
  const ProgramRun shell = runProgram("/bin/sh", {"-c", "(:); echo made"}, directory.path,
                                      "/dev/null", allowNoSecondThread);
  ASSERT_TRUE(shell.out.empty() && shell.err.find("fork") != std::string::npos) << shell.err;
  const ProgramRun run = runProgram(directory.path + "/lumaprobe", noiseArguments, directory.path,
                                    "/dev/null", allowNoSecondThread);
  expectUndisturbed(directory, run);
}

TEST(Limits, killTheRunAndCutItsFiles_whenTheyWouldGrowTooLarge) {
  const TemporaryDirectory directory;
  const ProgramRun run = analyseIntoSmallFiles(directory, SIG_DFL);
  EXPECT_EQ(run.status, 128 + SIGXFSZ);
  EXPECT_EQ(run.err, "");
  EXPECT_EQ(run.out, wholeOutput().substr(0, 5000));
  const std::string report = readReport(directory);
  EXPECT_LE(report.size(), 5000u);
  EXPECT_EQ(report, wholeReport().substr(0, report.size()));
}

TEST(Limits, cutTheFilesInSilence_whenTheirSignalIsIgnored) {
  const TemporaryDirectory directory;
  expectRun(analyseIntoSmallFiles(directory, SIG_IGN), 0, wholeOutput().substr(0, 5000), "");
  EXPECT_EQ(readReport(directory), wholeReport().substr(0, 5000));
}
