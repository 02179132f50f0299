// A whole run: open, then read, analyse and report frame by frame.
#ifndef LUMAPROBE_FRAME_LOOP_H
#define LUMAPROBE_FRAME_LOOP_H

#include "driver/commandLine.h"

// Analyses the video that `options` names and writes the table. Returns the exit status: 0, or -1
// after saying why the run could not start or go on.
int runAnalysis(const RunOptions& options);

#endif
