// Counts still frames in a row and compares their number with a tenth of a second.
#include "indicators/freezing.h"

namespace {

constexpr double STILL_ACTIVITY = 1.0;  // luma levels; up to here a frame counts as still
constexpr double FREEZE_SECONDS = 0.1;

int32_t freezingTemp = 0;  // length of the run of still frames so far

}  // namespace

bool freezing(int32_t blackout, double temporalActivity, double fps) {
  const bool still = blackout == 0 && temporalActivity <= STILL_ACTIVITY;
  freezingTemp = still ? freezingTemp + 1 : 0;
  return freezingTemp >= fps * FREEZE_SECONDS;
}
