// All frames of one video through the indicators.
#ifndef LUMASCAN_VIDEO_ANALYSIS_H
#define LUMASCAN_VIDEO_ANALYSIS_H

#include <cstdint>
#include <functional>
#include <string>

#include "scan/analysis/frameTable.h"
#include "scan/analysis/joinedTimes.h"
#include "scan/video/luma.h"
#include "scan/video/position.h"
#include "scan/video/videoReader.h"

struct AnalysisOptions {
  IndicatorMask mask = 0x7fff;  // and what these need
  double fps = 0.0;             // frames per second, for freezing; 0: the stream's average
  Position start;               // the first frame analysed
  Position end;                 // the first one not analysed any more
  // Decode ahead on one thread and give each indicator one of its own, or do all on the calling
  // thread.
  bool isThreaded = false;
  // End at the first sign of damage. What several threads of a decoder make of that differs from
  // run to run; what one makes of it does not.
  bool endsAtDamage = false;
};

// One analysed frame.
struct FrameRecord {
  int64_t frame;  // its number in the order of display, from 0
  FrameRow row;
  FrameResults spatial;  // as lumaprobe prints them
  TemporalResults temporal;
  double position;  // in the file, 0 to 1
};

enum class AnalysisEnd {
  COMPLETE,     // the file's own end, or the position at which to end
  READ_ERROR,   // `error` says why the file cannot be read any further
  SIZE_CHANGE,  // the next frame has another size
  UNSUPPORTED,  // `error` says what about the next frame, or about a position
  DAMAGE,       // see endsAtDamage
};

struct AnalysisOutcome {
  AnalysisEnd end;
  std::string error;
  bool isTruncated;  // see isTruncated() of the reader; false where the file's end was not reached
  LumaPath lumaPath;
  int64_t frames;
  int64_t corruptFrames;
  int64_t decodeErrors;  // packets refused up to where it ended
  // What was said of damage: how much of it was said of a beginning in the middle of a group of
  // pictures, and of what else.
  int64_t messagesBeforeKeyFrame;
  int64_t messages;                          // others
  int64_t messagesBehind;                    // of these, behind the last frame
  std::vector<DamageMessage> firstMessages;  // at most MOST_MESSAGES; times in whole nanoseconds
  // Frames that should have come behind the last one; 0 where the file's end was not reached or is
  // missing.
  int64_t missingAtEnd;
  std::vector<Join> joins;  // the first ones of all frames decoded
};

constexpr size_t MOST_MESSAGES = 20;

// Told of each frame that is passed over before the first one that is analysed, how much of the
// file is done, 0 to 1.
using SkipListener = std::function<void(double position)>;

// Analyses an opened video from where it stands and hands over each frame when it is done. The
// indicators' state is the process's: one video in each. Of frames that hold no block of 8 x 8
// blackout is not computed.
AnalysisOutcome analyseVideo(
    const AnalysisOptions& options, VideoReader* reader,
    const std::function<void(const FrameRecord&)>& onFrame,
    const SkipListener& onSkipped = [](double) {});

#endif
