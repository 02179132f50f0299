// A whole run inside a process that goes on after it.
#include "driver/frameLoop.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <iterator>

#include "indicators/results.h"
#include "support/runProgram.h"

namespace {

int64_t openDescriptors() {
  const std::filesystem::directory_iterator descriptors("/proc/self/fd");
  return std::distance(begin(descriptors), end(descriptors));
}

// Runs over `input` with frames of 2 x `height` and no indicator, in a folder of its own. Expects
// `status`, no file left open, and returns the size of the report at that moment.
size_t reportSizeAfterRun(const char* input, int32_t height, int status) {
  const TemporaryDirectory directory;
  EXPECT_EQ(chdir(directory.path.c_str()), 0);
  writeFile("clip.yuv", std::string(6, 'x'));
  RunOptions options = {};
  options.inputName = input;
  options.width = 2;
  options.height = height;
  options.fps = 25.0;
  Results = {};  // as in a new process
  testing::internal::CaptureStdout();
  const int64_t before = openDescriptors();
  EXPECT_EQ(runAnalysis(options), status);
  EXPECT_EQ(openDescriptors(), before);
  // Looked at first: to take the captured text flushes all streams.
  const size_t size = readFile("metricsResultsCSV.csv").size();
  testing::internal::GetCapturedStdout();
  return size;
}

}  // namespace

TEST(RunAnalysis, leavesACompleteReportAndNoOpenFile_whenItReturns) {
  // A header of 163 bytes and a row of 16 fields: the 5 digits of the number, 9 values of
  // "0.00000", blur's and slice's "0.000" of which the latter is padded to 7, two flags, exposure's
  // "0" padded to 6 and noise's "0.0000" padded to 8, with " \t" between and a line end behind.
  const size_t row = 5 + 9 * 7 + 5 + 7 + 2 + 6 + 8 + 15 * 2 + 1;
  EXPECT_EQ(reportSizeAfterRun("clip.yuv", 2, 0), 163 + row);
}

TEST(RunAnalysis, leavesAnEmptyReportAndNoOpenFile_whenItFails) {
  EXPECT_EQ(reportSizeAfterRun("clip.yuv", 0, -1), 0u);
  testing::internal::CaptureStderr();
  EXPECT_EQ(reportSizeAfterRun("missing.yuv", 2, -1), 0u);
  testing::internal::GetCapturedStderr();
}
