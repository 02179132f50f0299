// Runs of the program in a world that fails, and what they leave behind.
#include "faultyRun.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <numeric>

#include "../support/frames.h"

const std::vector<std::string> risingArguments = {"clip.yuv", "32", "32", levelAndStep};

const std::vector<std::string> noiseArguments = {"clip.yuv", "272", "264"};

namespace {

std::string logOf(const TemporaryDirectory& directory) {
  return directory.path + "/faults.log";
}

}  // namespace

ProgramRun analyseWithFaults(const TemporaryDirectory& directory,
                             const std::vector<std::string>& arguments,
                             const std::map<std::string, std::string>& faults,
                             const std::function<void()>& prepare) {
  writeFile(logOf(directory), "");
  return analyse(directory, arguments, "/dev/null", [&] {
    setenv("LD_PRELOAD", FAILING_CALLS_LIBRARY, 1);
    // The address sanitizer wants to be the first library unless told otherwise.
    setenv("ASAN_OPTIONS", "verify_asan_link_order=0", 1);
    setenv("FAULTS_LOG", logOf(directory).c_str(), 1);
    for (const auto& [name, value] : faults) setenv(name.c_str(), value.c_str(), 1);
    prepare();
  });
}

size_t faultsMade(const TemporaryDirectory& directory) {
  const std::string log = readFile(logOf(directory));
  return static_cast<size_t>(std::count(log.begin(), log.end(), '\n'));
}

// The superuser's program passes over permissions by two capabilities, which it can do without.
ProgramRun analyseWithinPermissions(const TemporaryDirectory& directory,
                                    const std::vector<std::string>& arguments) {
  if (geteuid() != 0) return analyse(directory, arguments);
  std::vector<std::string> command = {"--bounding-set=-dac_override,-dac_read_search",
                                      "--inh-caps=-dac_override,-dac_read_search",
                                      LUMAPROBE_BINARY};
  command.insert(command.end(), arguments.begin(), arguments.end());
  return runProgram("/usr/bin/setpriv", command, directory.path);
}

void require(bool isDone, const char* step) {
  if (isDone) return;
  perror(step);
  _exit(126);
}

void expectRun(const ProgramRun& run, int status, const std::string& out, const std::string& err) {
  EXPECT_EQ(run.status, status);
  EXPECT_EQ(run.out, out);
  EXPECT_EQ(run.err, err);
}

void writeRisingClip(const TemporaryDirectory& directory, int frames) {
  std::vector<int> levels(static_cast<size_t>(frames));
  std::iota(levels.begin(), levels.end(), 10);
  writeFlatClip(directory, levels);
}

std::string risingStart(int frames) {
  return startMessages("clip.yuv", 32, 32, "25.00", frames, 0) + consoleHeader;
}

std::vector<Row> risingRows(int frames) {
  std::vector<Row> rows;
  rows.reserve(static_cast<size_t>(frames));
  for (int k = 0; k < frames; k++)
    rows.push_back(levelRow(k, 10 + k, k == 0 ? "0.00000" : "1.00000"));
  return rows;
}

void writeNoiseClip(const TemporaryDirectory& directory) {
  std::string clip;
  for (int k = 0; k < 10; k++) {
    const uint8_t level = static_cast<uint8_t>(60 + 8 * k);
    // Two frames each are alike but for their level.
    const std::vector<uint8_t> luma =
        narrowNoise(272, 264, level, 20, static_cast<uint32_t>(k / 2));
    clip += frameOf(std::string(luma.begin(), luma.end()));
  }
  writeFile(directory.path + "/clip.yuv", clip);
}

void expectUndisturbed(const TemporaryDirectory& directory, const ProgramRun& run) {
  const std::string report = readReport(directory);
  const ProgramRun undisturbed = analyse(directory, noiseArguments);
  ASSERT_EQ(undisturbed.status, 0);
  EXPECT_EQ(run.out, undisturbed.out);
  EXPECT_EQ(run.err, "");
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(report, readReport(directory));
}
