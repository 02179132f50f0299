// What a scan needs in memory does not depend on the video's length.
#include <sys/resource.h>
#include <sys/wait.h>

#include <fstream>

#include "scanRun.h"

namespace {

constexpr int SIDE = 16;         // samples
constexpr int SCENE = 10;        // frames
constexpr int64_t MOST = 6'144;  // KiB that a long video may need more; its values alone are 8 MiB

// Scenes that stand still: a cut and a freeze in each.
void makeScenes(const std::string& path, int frames) {
  std::ofstream file(path, std::ios::binary);
  std::string frame(SIDE * SIDE * 3 / 2, '\x80');
  for (int k = 0; k < frames; ++k) {
    for (int i = 0; i < SIDE * SIDE; ++i) {
      frame[static_cast<size_t>(i)] = static_cast<char>(i * (k / SCENE % 7 + 1) * 31 % 256);
    }
    file << frame;
  }
}

// The greatest memory of any of its processes, in KiB.
int64_t peakOfScan(const TemporaryDirectory& directory, const std::string& video) {
  const StartedProgram program =
      startProgram(LUMASCAN_BINARY, {video, "--raw", "16x16@25", "-q", "-j", "1"}, directory.path);
  int status = 0;
  rusage usage = {};
  EXPECT_EQ(wait4(program.process, &status, 0, &usage), program.process);
  EXPECT_EQ(status, 0);
  std::fclose(program.out);
  std::fclose(program.err);
  return usage.ru_maxrss;
}

}  // namespace

TEST(Memory, staysTheSame_howeverLongTheVideoIs) {
  if (isAddressSanitized || isThreadSanitized) {
    GTEST_SKIP() << "sanitizers need memory of their own, the more the longer the program runs";
  }
  const TemporaryDirectory directory;
  makeScenes(directory.path + "/short.yuv", 2'000);
  makeScenes(directory.path + "/long.yuv", 60'000);
  const int64_t small = peakOfScan(directory, "short.yuv");
  const int64_t large = peakOfScan(directory, "long.yuv");
  EXPECT_LT(large - small, MOST) << small << " and " << large;
  // All is there, and much of it.
  const Json result = resultOf(directory, "long.yuv");
  EXPECT_EQ(result["analysis"]["frames"], 60'000);
  EXPECT_GT(result["events"].size(), 5'000U);
}
