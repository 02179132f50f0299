#include "scan/report/timeline.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace {

constexpr double DEFAULT_RATE = 25.0;
constexpr int64_t MINUTE = 60;
constexpr int64_t HOUR = 3600;
constexpr double LONGEST = 1e12;  // seconds that are still written as hours

template <typename... Parts>
std::string formatted(const char* format, Parts... parts) {
  char text[96];
  std::snprintf(text, sizeof text, format, parts...);
  return text;
}

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
  return formatted("%02lld:%02lld:%02lld:%02lld", static_cast<long long>(seconds / HOUR),
                   static_cast<long long>(seconds / MINUTE % MINUTE),
                   static_cast<long long>(seconds % MINUTE), static_cast<long long>(frame % rate));
}

std::string durationText(double seconds) {
  if (!(std::fabs(seconds) < LONGEST)) return "\xe2\x80\x93";
  const int64_t milliseconds = std::llround(std::fabs(seconds) * 1000.0);
  const int64_t whole = milliseconds / 1000;
  return formatted(
      "%s%lld:%02lld:%02lld.%03lld", seconds < 0.0 ? "-" : "", static_cast<long long>(whole / HOUR),
      static_cast<long long>(whole / MINUTE % MINUTE), static_cast<long long>(whole % MINUTE),
      static_cast<long long>(milliseconds % 1000));
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
  if (!(seconds >= 0.0 && seconds < LONGEST)) return "";
  const auto whole = static_cast<int64_t>(std::floor(seconds + step * 1e-6));
  const auto hours = static_cast<long long>(whole / HOUR);
  const auto minutes = static_cast<long long>(whole / MINUTE % MINUTE);
  const auto rest = static_cast<long long>(whole % MINUTE);
  std::string text = hours > 0 ? formatted("%lld:%02lld:%02lld", hours, minutes, rest)
                               : formatted("%lld:%02lld", minutes, rest);
  if (step < 1.0) {
    const auto hundredths = std::llround((seconds - static_cast<double>(whole)) * 100.0);
    text += formatted(".%02lld", hundredths);
  }
  return text;
}
