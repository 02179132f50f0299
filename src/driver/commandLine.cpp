#include "driver/commandLine.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

constexpr double DEFAULT_FPS = 25.0;
constexpr IndicatorMask DEFAULT_MASK = 0xffff;

// Numbers are read in 64 bits, stop at the bounds of these, and are then cut to 32 bits. The C
// library's `long` has 32 bits on some machines and would stop earlier there.

// Leading decimal digits, 0 when there are none; the low 32 bits of the number.
int32_t decimal(const char* text) {
  return static_cast<int32_t>(std::strtoll(text, nullptr, 10));
}

// The base of a number: 16 after 0x, 8 after a 0 before another digit, else 10. Deliberate: a C
// library that finds the base itself may read 0b11 as a binary number, which is 0 here.
int baseOf(const char* text) {
  const char* digits = text + std::strspn(text, " \t\n\v\f\r");
  if (*digits == '+' || *digits == '-') ++digits;
  if (digits[0] != '0') return 10;
  if (digits[1] == 'x' || digits[1] == 'X') return 16;
  return digits[1] >= '0' && digits[1] <= '9' ? 8 : 10;
}

// The number in front, 0 when there is none; its low 32 bits.
IndicatorMask maskOf(const char* text) {
  return static_cast<IndicatorMask>(std::strtoull(text, nullptr, baseOf(text)));
}

}  // namespace

bool parseCommandLine(int argc, const char* const* argv, RunOptions* options) {
  if (argc < 4) return false;
  options->inputName = argv[1];
  options->width = decimal(argv[2]);
  options->height = decimal(argv[3]);
  options->mask = argc > 4 ? maskOf(argv[4]) : DEFAULT_MASK;
  options->fps = argc > 5 ? std::atof(argv[5]) : DEFAULT_FPS;
  // The last two are each read from the position before their own, once their own is there. Scripts
  // rely on it; the seventh argument itself is never read.
  options->hasFrameCount = argc > 6;
  options->frameCount = argc > 6 ? decimal(argv[5]) : 0;
  options->startFrame = argc > 7 ? decimal(argv[6]) : 0;
  return true;
}

void printUsage(const char* program) {
  std::puts("Not enough parameters\n");
  std::printf(
      "Usage: %s video.yuv WIDTH HEIGHT [RequestedZMRs] [FPS] [NumberOfFrames] [startFrame],\n"
      "where parameters in square brackets are optional.\n\n",
      program);
}
