// Events among the frames of one video.
#ifndef LUMASCAN_EVENT_DETECTION_H
#define LUMASCAN_EVENT_DETECTION_H

#include <vector>

#include "scan/analysis/frameTable.h"
#include "scan/analysis/joinedTimes.h"
#include "scan/events/event.h"
#include "scan/events/thresholds.h"

// What is known of the stream beside its frames.
struct StreamFindings {
  double frameRate;  // of frames without times; 0 or less: unknown
  bool isTruncated;
  bool hasSizeChange;            // the frame behind the last one has another size
  bool startsMidstream = false;  // with pictures whose key frame is missing
  bool hasOwnDurations = false;  // how long each frame is shown was somebody's choice
  int64_t missingAtEnd = 0;      // frames that should have come behind the last one
  std::vector<Join> joins = {};  // of recordings
};

// All events, in order of their first frame and then of their type's name.
//
// A stretch begins with the first frame of a run whose values are all at `enter` or beyond it, as
// soon as the run has lasted for `minSeconds`. It lasts as long as the values are at `leave` or
// beyond, and ends where a value is undefined. Exceptions from this:
// - A freeze begins where the picture stopped to move, which is before its flag rises.
// - A value of flickering holds for the comparisons that it is the mean of, the last one also for
//   what follows it.
// - Where the threshold has `holdSeconds`, a value holds for so long, unless a worse one follows or
//   an undefined one. The stretch ends with the last value that is at `leave` or beyond itself.
// - On uniform frames only "black" and "flicker" speak: letterbox, exposure and the like measure
//   such a frame, but what they say is the same once more.
// Times are measured by presentation timestamps; frames without one are spaced by the frame rate.
// When neither is known every run is long enough.
//
// Where the steps between frames are nearly all the same, a longer one is one in which frames are
// missing, unless it follows the video's first frame. Their number is the event's value.
//
// Damage lasts from the frame that shows it to the next key frame that does not, for ten seconds at
// most. What is said of frames that are damaged is no event of its own, unless "decode_error" is
// off.
//
// The peak is the first of the worst frames. Events without a value have their first frame there.
std::vector<Event> detectEvents(const FrameTable& table, const Thresholds& thresholds,
                                const StreamFindings& stream);

#endif
