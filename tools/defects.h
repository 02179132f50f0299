// The defects of the clip and the frames they occur in.
#ifndef LUMAPROBE_TOOLS_DEFECTS_H
#define LUMAPROBE_TOOLS_DEFECTS_H

#include <vector>

#include "scene.h"

struct Defect {
  const char* name;
  int first;  // frame
  int last;   // frame
  const char* indicator;

  // Damages, in place, frame `time` of the scene; the defect began with frame `first`.
  void (*apply)(Frame& frame, int time, int first);
};

// In the order of their frames, which do not overlap.
const std::vector<Defect>& defects();

constexpr int FRAMES = 233;

#endif
