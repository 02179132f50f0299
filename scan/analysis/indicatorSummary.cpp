#include "scan/analysis/indicatorSummary.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

constexpr size_t OVERVIEW_POINTS = 64;

std::vector<double> overviewOf(const Column<double>& values) {
  const size_t points = std::min(OVERVIEW_POINTS, values.size());
  std::vector<double> means;
  means.reserve(points);
  for (size_t k = 0; k < points; ++k) {
    double sum = 0.0;
    double count = 0.0;
    for (size_t i = k * values.size() / points; i < (k + 1) * values.size() / points; ++i) {
      if (std::isnan(values[i])) continue;
      sum += values[i];
      count += 1.0;
    }
    means.push_back(count > 0.0 ? sum / count : std::numeric_limits<double>::quiet_NaN());
  }
  return means;
}

}  // namespace

IndicatorSummaries summarise(const FrameTable& frames, const std::function<void()>& onStep) {
  IndicatorSummaries summaries;
  for (size_t i = 0; i < INDICATORS; ++i) {
    onStep();
    summaries[i] = {statisticsOf(frames.values[i]), overviewOf(frames.values[i])};
  }
  return summaries;
}

MeasureStatistics measureStatistics(const FrameTable& frames, const std::function<void()>& onStep) {
  MeasureStatistics statistics;
  for (size_t i = 0; i < MEASURES; ++i) {
    onStep();
    statistics[i] = statisticsOf(frames.measures[i]);
  }
  return statistics;
}
