#include "driver/commandLine.h"

#include <cstdio>
#include <cstdlib>

namespace {

constexpr double DEFAULT_FPS = 25.0;
constexpr IndicatorMask DEFAULT_MASK = 0xffff;

// Leading decimal digits, 0 when there are none; the low 32 bits of the number.
int32_t decimal(const char* text) {
  return static_cast<int32_t>(std::strtol(text, nullptr, 10));
}

}  // namespace

bool parseCommandLine(int argc, const char* const* argv, RunOptions* options) {
  if (argc < 4) return false;
  options->inputName = argv[1];
  options->width = decimal(argv[2]);
  options->height = decimal(argv[3]);
  options->mask =
      argc > 4 ? static_cast<IndicatorMask>(std::strtoul(argv[4], nullptr, 0)) : DEFAULT_MASK;
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
