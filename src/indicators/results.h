// The values of the spatial indicators, as each last stored its own.
#ifndef LUMAPROBE_RESULTS_H
#define LUMAPROBE_RESULTS_H

#include <cstdint>

struct FrameResults {
  double blockiness;
  double spatialActivity;
  double letterbox;
  double pillarbox;
  double blockLoss;
  double blur;
  double exposure;
  double interlace;
  double noise;
  double slice;
  double contrast;
  uint8_t blackout;  // 0 or 1
};

// The one record of the process: zero at start, never cleared. Each spatial indicator writes its
// own field and no other, so that all of them may run at once.
extern FrameResults Results;

// What an indicator's thread entry returns when it could not measure the frame: -1 in 32 bits.
void* gaveUp();

#endif
