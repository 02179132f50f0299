#include "scan/analysis/joinedTimes.h"

#include <cmath>
#include <utility>

#include "scan/numbers/decimals.h"

namespace {

constexpr double JITTER_SECONDS =
    0.5;  // by which times may fall back, or differ from what is expected
constexpr double LONGEST_GAP = 3600;  // seconds that may be missing from a recording

bool isExpected(double time, double expected) {
  return std::fabs(time - expected) <= JITTER_SECONDS;
}

double timeWithoutStamp(const JoinedTimes& times) {
  if (std::isnan(times.time)) return 0.0;
  return std::isnan(times.spacing) ? times.expected : times.time + times.spacing;
}

// Chooses what is added to a timestamp.
void join(int64_t frame, double stamp, JoinedTimes* times) {
  const double time = stamp + times->offset;
  // Unlike what a file says of durations, what it says of the last frame's time is trusted.
  const bool fallsBack = times->time - time > JITTER_SECONDS;
  const double ahead = time - times->expected;  // NaN: of the first frame
  const bool goesOnAsBefore = isExpected(stamp + times->otherOffset, times->expected);
  if ((fallsBack || ahead > JITTER_SECONDS) && goesOnAsBefore) {
    std::swap(times->offset, times->otherOffset);
  } else if (fallsBack || ahead > LONGEST_GAP) {
    times->otherOffset = std::exchange(times->offset, times->expected - stamp);
  } else {
    return;
  }
  if (times->joins.size() < MOST_JOINS)
    times->joins.push_back(
        {frame, wholeNanoseconds(stamp - times->stamp), wholeNanoseconds(times->offset)});
}

}  // namespace

double timeOfFrame(int64_t frame, double stamp, double duration, JoinedTimes* times) {
  double time = 0.0;
  if (std::isnan(stamp)) {
    time = timeWithoutStamp(*times);
  } else {
    const bool endsGap = isExpected(stamp + times->offset, times->expectedOther);
    if (!endsGap) join(frame, stamp, times);
    time = stamp + times->offset;
    if (endsGap) times->expectedOther = UNKNOWN;
    if (time - times->expected > JITTER_SECONDS) {
      times->expectedOther = times->expected;
    } else if (time > times->time) {
      times->spacing = time - times->time;
    }
    times->stamp = stamp;
  }
  times->time = time;
  times->expected = time + duration;
  times->expectedOther += duration;
  return time;
}
