// What the command line says, where the program does not show it.
#include "driver/commandLine.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <iterator>

// The linker sends the program's calls of strtoull here. When the base is to be found in the text,
// this one reads 0b and binary digits, as C libraries do from the C standard of 2023 on.
extern "C" {
unsigned long long __real_strtoull(const char*, char**, int);
unsigned long long __wrap_strtoull(const char* text, char** end, int base) {
  const size_t blanks = std::strspn(text, " \t\n\v\f\r");
  const bool hasSign = text[blanks] == '+' || text[blanks] == '-';
  const char* const digits = text + blanks + (hasSign ? 1 : 0);
  const bool isBinary = base == 0 && digits[0] == '0' && (digits[1] == 'b' || digits[1] == 'B') &&
                        (digits[2] == '0' || digits[2] == '1');
  if (!isBinary) return __real_strtoull(text, end, base);
  const unsigned long long value = __real_strtoull(digits + 2, end, 2);
  return text[blanks] == '-' ? 0 - value : value;
}
}

namespace {

RunOptions parse(const char* width, const char* mask) {
  const char* const argv[] = {"lumaprobe", "clip.yuv", width, "48", mask};
  RunOptions options;
  EXPECT_TRUE(parseCommandLine(int{std::size(argv)}, argv, &options));
  return options;
}

int32_t widthOf(const char* text) {
  return parse(text, "0").width;
}

IndicatorMask maskOf(const char* text) {
  return parse("64", text).mask;
}

}  // namespace

TEST(ParseCommandLine, readsNoBinaryMasks_evenIfTheCLibraryDoes) {
  // The stand-in does.
  ASSERT_EQ(std::strtoull(" -0b11", nullptr, 0), 0 - 3ull);
  for (const char* text : {"0b11", "0B1", "0b", "0b2", "+0B11", "  -0b1", "\t\n\v\f\r 0b1"}) {
    EXPECT_EQ(maskOf(text), 0u) << text;
  }
}

TEST(ParseCommandLine, findsTheBaseOfAMask_behindBlanksAndASign) {
  for (const char* text : {"17", "+17", " 17", "021", "0021", " +021", "0x11", "0X11", "\t+0x11"}) {
    EXPECT_EQ(maskOf(text), 17u) << text;
  }
  for (const char* text : {"-17", " -021", " -0x11"}) EXPECT_EQ(maskOf(text), 0u - 17) << text;
  for (const char* text : {"", " ", "-", "0", "-0", "08", "09", "0x", "0xg", "- 17", "+-17"}) {
    EXPECT_EQ(maskOf(text), 0u) << text;
  }
}

TEST(ParseCommandLine, readsNumbersIn64Bits_alsoWhereALongHas32) {
  // 2^32 + 32, 32 - 2^32, and what is cut off the bounds 2^63 - 1 and -2^63.
  EXPECT_EQ(widthOf("4294967328"), 32);
  EXPECT_EQ(widthOf("-4294967264"), 32);
  EXPECT_EQ(widthOf("99999999999999999999"), -1);
  EXPECT_EQ(widthOf("-99999999999999999999"), 0);
  // 2^32 + 65, 2^63 + 65, and what is cut off the bound 2^64 - 1.
  EXPECT_EQ(maskOf("0x100000041"), 65u);
  EXPECT_EQ(maskOf("9223372036854775873"), 65u);
  EXPECT_EQ(maskOf("-4294967231"), 65u);
  EXPECT_EQ(maskOf("18446744073709551616"), 0xffffffff);
}

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
