#include "scan/statistics.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

double percentile(const std::vector<double>& sorted, double share) {
  const double place = share * static_cast<double>(sorted.size() - 1);
  const auto below = static_cast<size_t>(place);
  const size_t above = std::min(below + 1, sorted.size() - 1);
  const double fraction = place - static_cast<double>(below);
  return sorted[below] + fraction * (sorted[above] - sorted[below]);
}

}  // namespace

Statistics statisticsOf(std::vector<double> values) {
  const auto isUnknown = [](double value) { return !std::isfinite(value); };
  values.erase(std::remove_if(values.begin(), values.end(), isUnknown), values.end());
  if (values.empty()) {
    constexpr double NONE = std::numeric_limits<double>::quiet_NaN();
    return {0, NONE, NONE, NONE, NONE, NONE, NONE, NONE, NONE, NONE};
  }
  const auto n = static_cast<double>(values.size());
  double sum = 0.0;
  for (const double value : values) sum += value;
  const double mean = sum / n;
  double squares = 0.0;
  for (const double value : values) squares += (value - mean) * (value - mean);
  std::sort(values.begin(), values.end());
  return {static_cast<int64_t>(values.size()),
          values.front(),
          values.back(),
          mean,
          std::sqrt(squares / n),
          percentile(values, 0.01),
          percentile(values, 0.05),
          percentile(values, 0.50),
          percentile(values, 0.95),
          percentile(values, 0.99)};
}
