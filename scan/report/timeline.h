// Where frames and events stand on the pages' axis of time.
#ifndef LUMASCAN_TIMELINE_H
#define LUMASCAN_TIMELINE_H

#include <cstdint>
#include <string>
#include <vector>

#include "scan/analysis/frameTable.h"

// Seconds.
struct TimeSpan {
  double start;
  double end;
};

// A usable frame rate: the given one, or 25 when it is not above 0 and finite.
double usableRate(double fps);

// One time per frame, finite and never falling: the frame's own, where that is unknown frame / fps;
// one that lies before that of the frame before it is the same as that.
Column<double> axisTimes(const FrameTable& frames, double fps);

// From the first frame's time to the end of the last one. Never empty; {0, 0} without frames.
TimeSpan axisSpan(const FrameTable& frames, const Column<double>& times, double fps);

// "HH:MM:SS:FF", frames counted from 00:00:00:00 at the file's first one, without dropped numbers.
std::string timecode(int64_t frame, double fps);

// "H:MM:SS.mmm"; an en dash when it is not finite.
std::string durationText(double seconds);

// Marks of an axis over the span: a round step apart, at most about `count` of them.
std::vector<double> axisMarks(const TimeSpan& span, int count);

// "M:SS" or "H:MM:SS", with hundredths when the step is below a second. Empty for negative times.
std::string markText(double seconds, double step);

#endif
