// The command line: positions, defaults, usage.
#ifndef LUMAPROBE_COMMAND_LINE_H
#define LUMAPROBE_COMMAND_LINE_H

#include <cstdint>

#include "driver/frameAnalysis.h"

// What a run was asked to do. Numbers are taken as they stand: nothing here is checked.
struct RunOptions {
  const char* inputName;
  int32_t width;
  int32_t height;
  IndicatorMask mask;
  double fps;
  bool hasFrameCount;  // when not, all whole frames of the file are meant
  int32_t frameCount;
  int32_t startFrame;
};

// Reads argv[1] and what follows; the least are a file name, width and height. With fewer,
// `options` is left alone and the answer is false.
bool parseCommandLine(int argc, const char* const* argv, RunOptions* options);

void printUsage(const char* program);

#endif
