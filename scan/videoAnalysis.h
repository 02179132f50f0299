// All frames of one video through the indicators.
#ifndef LUMASCAN_VIDEO_ANALYSIS_H
#define LUMASCAN_VIDEO_ANALYSIS_H

#include <cstdint>
#include <functional>
#include <string>

#include "driver/frameAnalysis.h"
#include "indicators/results.h"
#include "scan/videoReader.h"

struct AnalysisOptions {
  IndicatorMask mask = 0x7fff;
  double fps = 0.0;         // frames per second, for freezing; 0: the stream's average
  bool isThreaded = false;  // a thread for each indicator, or all on the calling one
};

// One analysed frame, with the values that lumaprobe prints of it.
struct FrameRecord {
  int32_t frame;    // its number in the order of display, from 0
  double time;      // seconds, from presentation timestamps; NaN: it has none
  double duration;  // seconds; NaN: the file does not say
  bool isKey;
  bool isCorrupt;
  FrameResults spatial;
  TemporalResults temporal;
};

enum class AnalysisEnd {
  COMPLETE,     // the file's own end
  READ_ERROR,   // `error` says why the file cannot be read any further
  SIZE_CHANGE,  // the next frame has another size
  UNSUPPORTED,  // `error` says what about the next frame
};

struct AnalysisOutcome {
  AnalysisEnd end;
  std::string error;
  int64_t frames;
  int64_t corruptFrames;
  int64_t decodeErrors;
};

// Analyses an opened video from where it stands and hands over each frame when it is done. The
// indicators' state is the process's: one video in each. Of frames that hold no block of 8 x 8
// blackout is not computed.
AnalysisOutcome analyseVideo(const AnalysisOptions& options, VideoReader* reader,
                             const std::function<void(const FrameRecord&)>& onFrame);

#endif
