#include "scan/report/trackSvg.h"

#include <fmt/core.h>
#include <algorithm>
#include <cmath>

namespace {

// What falls into one column of the picture, in the order of its appearance.
struct Stroke {
  int place = -1;
  double min = 0.0;
  double max = 0.0;
  bool isMinFirst = true;
};

void appendPoint(int column, double y, bool isStart, std::string* path) {
  *path += fmt::format("{}{} {:.1f}", isStart ? 'M' : 'L', column, y);
}

void appendStroke(const Stroke& stroke, const ValueRange& range, bool isStart, std::string* path) {
  const double first = stroke.isMinFirst ? stroke.min : stroke.max;
  const double second = stroke.isMinFirst ? stroke.max : stroke.min;
  appendPoint(stroke.place, svgHeightOf(first, range), isStart, path);
  if (first != second) appendPoint(stroke.place, svgHeightOf(second, range), false, path);
  // A lone point is drawn as a line of one stroke.
  if (isStart && first == second) *path += "h1";
}

void addValue(double value, Stroke* stroke) {
  if (value < stroke->min) {
    stroke->min = value;
    stroke->isMinFirst = false;
  }
  if (value > stroke->max) {
    stroke->max = value;
    stroke->isMinFirst = true;
  }
}

}  // namespace

ValueRange shownRange(double min, double max, const std::vector<double>& thresholds) {
  constexpr double FURTHEST = 4.0;
  if (std::isnan(min) || std::isnan(max)) return {0.0, 1.0};
  ValueRange range = {min, max};
  const double reach = FURTHEST * (max - min);
  for (const double threshold : thresholds) {
    if (std::isfinite(threshold) && threshold >= min - reach && threshold <= max + reach) {
      range = {std::min(range.low, threshold), std::max(range.high, threshold)};
    }
  }
  if (range.low < range.high) return range;
  // One value alone stands at the bottom when it is 0, else in the middle.
  const double margin = min == 0.0 ? 1.0 : std::fabs(min) / 2.0;
  return {min == 0.0 ? 0.0 : min - margin, max + margin};
}

double svgHeightOf(double value, const ValueRange& range) {
  // Halves: the difference of two finite numbers may not be one.
  const double part = (value / 2.0 - range.low / 2.0) / (range.high / 2.0 - range.low / 2.0);
  return SVG_HEIGHT * (1.0 - std::clamp(part, 0.0, 1.0));
}

std::string envelopePath(const Column<double>& times, const Column<double>& values,
                         const TimeSpan& span, const ValueRange& range, bool isBridged) {
  std::string path;
  Stroke stroke;
  bool isInterrupted = true;
  bool isStart = true;
  for (size_t row = 0; row < values.size(); ++row) {
    const double value = values[row];
    if (std::isnan(value)) {
      isInterrupted = isInterrupted || !isBridged;
      continue;
    }
    const double part = (times[row] - span.start) / (span.end - span.start);
    const int place =
        static_cast<int>(std::floor(std::clamp(part, 0.0, 1.0) * (SVG_COLUMNS - 1) + 0.5));
    if (place == stroke.place) {
      addValue(value, &stroke);
    } else {
      if (stroke.place >= 0) appendStroke(stroke, range, isStart, &path);
      isStart = isInterrupted;
      stroke = {place, value, value, true};
    }
    isInterrupted = false;
  }
  if (stroke.place >= 0) appendStroke(stroke, range, isStart, &path);
  return path;
}
