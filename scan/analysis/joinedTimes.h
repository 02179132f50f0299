// When frames appear: by their timestamps, where these begin anew as if they went on, and where
// there are none by the frames before.
#ifndef LUMASCAN_JOINED_TIMES_H
#define LUMASCAN_JOINED_TIMES_H

#include <cstddef>
#include <cstdint>
#include <vector>

#include "scan/numbers/unknown.h"

// Timestamps belong to another recording from a frame on. Both differences are whole nanoseconds.
struct Join {
  int64_t frame;  // its number in the order of display, from 0
  double step;    // seconds from the timestamp before to its own: negative, or very long
  double offset;  // seconds that are added to timestamps from here on
};

constexpr size_t MOST_JOINS = 1000;

struct JoinedTimes {
  double offset = 0.0;             // seconds that are added to timestamps now
  double otherOffset = UNKNOWN;    // and before the last join; NaN: there was none
  double time = UNKNOWN;           // seconds: when the last frame appeared; NaN: there was none
  double expected = UNKNOWN;       // when it goes
  double expectedOther = UNKNOWN;  // the same without the last gap; NaN: there was none
  double stamp = UNKNOWN;          // the last timestamp in seconds
  double spacing = UNKNOWN;        // seconds between the last two frames without a gap
  std::vector<Join> joins;         // at most MOST_JOINS
};

// When a frame appears, in seconds. Its timestamp in seconds may be unknown, NaN.
//
// A timestamp that falls back by more than half a second, or is more than an hour behind the
// expected one, is of another recording; its frame follows the one before it. One that is wrong
// alone is none: times return to where they were with the next frame. Other gaps stay as they are.
// A frame without a timestamp is as far from the one before it as that was from its own, or as long
// as that was shown.
//
// duration  seconds for which the frame is shown
double timeOfFrame(int64_t frame, double stamp, double duration, JoinedTimes* times);

#endif
