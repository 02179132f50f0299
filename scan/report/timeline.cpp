#include "scan/report/timeline.h"

#include <fmt/core.h>
#include <algorithm>
#include <cmath>

namespace {

constexpr double DEFAULT_RATE = 25.0;
constexpr int64_t MINUTE = 60;
constexpr int64_t HOUR = 3600;
constexpr double LONGEST_SHOWN = 1e12;  // seconds that are still written as hours

}  // namespace

double usableRate(double fps) {
  return std::isfinite(fps) && fps > 0.0 ? fps : DEFAULT_RATE;
}

Column<double> axisTimes(const FrameTable& frames, double fps) {
  Column<double> times;
  for (size_t row = 0; row < frames.time.size(); ++row) {
    double time = frames.time[row];
    if (!std::isfinite(time)) {
      time = static_cast<double>(frames.firstFrame + static_cast<int64_t>(row)) / usableRate(fps);
    }
    times.push_back(times.empty() ? time : std::max(time, times.back()));
  }
  return times;
}

TimeSpan axisSpan(const FrameTable& frames, const Column<double>& times, double fps) {
  if (times.empty()) return {0.0, 0.0};
  const double last = frames.duration.back();
  const bool isKnown = std::isfinite(last) && last > 0.0;
  return {times.front(), times.back() + (isKnown ? last : 1.0 / usableRate(fps))};
}

std::string timecode(int64_t frame, double fps) {
  const int64_t rate = std::max<int64_t>(1, std::llround(usableRate(fps)));
  const int64_t seconds = frame / rate;
  return fmt::format("{:02}:{:02}:{:02}:{:02}", seconds / HOUR, seconds / MINUTE % MINUTE,
                     seconds % MINUTE, frame % rate);
}

std::string durationText(double seconds) {
  if (!(std::fabs(seconds) < LONGEST_SHOWN)) return "\xe2\x80\x93";
  const int64_t milliseconds = std::llround(std::fabs(seconds) * 1000.0);
  const int64_t whole = milliseconds / 1000;
  return fmt::format("{}{}:{:02}:{:02}.{:03}", seconds < 0.0 ? "-" : "", whole / HOUR,
                     whole / MINUTE % MINUTE, whole % MINUTE, milliseconds % 1000);
}

std::vector<double> axisMarks(const TimeSpan& span, int count) {
  constexpr double STEPS[] = {0.01,  0.02,  0.05,   0.1,    0.2,    0.5,   1.0,
                              2.0,   5.0,   10.0,   15.0,   30.0,   60.0,  120.0,
                              300.0, 600.0, 1200.0, 1800.0, 3600.0, 7200.0};
  const double wanted = (span.end - span.start) / count;
  const double* const found = std::find_if(std::begin(STEPS), std::end(STEPS),
                                           [&](double candidate) { return candidate >= wanted; });
  const double step = found != std::end(STEPS) ? *found : std::ceil(wanted / HOUR) * HOUR;
  std::vector<double> marks;
  const double first = std::ceil(span.start / step);
  // Counted: far away from 0 a sum may be the same as its first part.
  for (int i = 0; i <= count && (first + i) * step <= span.end; ++i) {
    marks.push_back((first + i) * step);
  }
  return marks;
}

std::string markText(double seconds, double step) {
  if (!(seconds >= 0.0 && seconds < LONGEST_SHOWN)) return "";
  const auto whole = static_cast<int64_t>(std::floor(seconds + step * 1e-6));
  std::string text = whole >= HOUR ? fmt::format("{}:{:02}:{:02}", whole / HOUR,
                                                 whole / MINUTE % MINUTE, whole % MINUTE)
                                   : fmt::format("{}:{:02}", whole / MINUTE, whole % MINUTE);
  if (step < 1.0) {
    const auto hundredths = std::llround((seconds - static_cast<double>(whole)) * 100.0);
    text += fmt::format(".{:02}", hundredths);
  }
  return text;
}
