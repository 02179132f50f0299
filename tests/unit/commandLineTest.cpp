// What the command line says, where the program does not show it.
#include "driver/commandLine.h"

#include <gtest/gtest.h>

#include <iterator>

TEST(ParseCommandLine, limitsNothing_withoutASixthArgument) {
  const char* const argv[] = {"lumaprobe", "clip.yuv", "64", "48", "0", "30", "9"};
  RunOptions options;
  for (int argc = 4; argc <= 6; ++argc) {
    ASSERT_TRUE(parseCommandLine(argc, argv, &options));
    EXPECT_FALSE(options.hasFrameCount) << argc;
    EXPECT_EQ(options.frameCount, 0) << argc;
  }
  ASSERT_TRUE(parseCommandLine(int{std::size(argv)}, argv, &options));
  EXPECT_TRUE(options.hasFrameCount);
  EXPECT_EQ(options.frameCount, 30);
  EXPECT_EQ(options.startFrame, 0);
}
