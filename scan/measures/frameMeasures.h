// The measures of the frames of one video, one after the other.
#ifndef LUMASCAN_FRAME_MEASURES_H
#define LUMASCAN_FRAME_MEASURES_H

#include "definitions/definitions.h"
#include "scan/measures/gridEdges.h"
#include "scan/measures/lines.h"
#include "scan/measures/lumaRange.h"
#include "scan/measures/measureTable.h"

// What is kept of a frame for the next one. All of it can be computed from the frame alone.
struct FrameTrace {
  std::vector<int32_t> blockSums;
  std::vector<uint32_t> lineSteps;
  std::vector<int16_t> gridEdges;
};

class FrameMeasures {
 public:
  // Of a frame and the one before it, which is null for the first; both have the same size, and the
  // one before was given last time.
  MeasureValues of(const Image& frame, const Image* previous, LumaRange range);

 private:
  FrameTrace now_;
  FrameTrace before_;
};

#endif
