#include "scan/numbers/statistics.h"

#include <algorithm>
#include <cmath>

#include "scan/numbers/sortedValues.h"

namespace {

double percentile(double share, SortedValues* sorted) {
  const double place = share * static_cast<double>(sorted->count - 1);
  const auto below = static_cast<int64_t>(place);
  const int64_t above = std::min(below + 1, sorted->count - 1);
  const double fraction = place - static_cast<double>(below);
  const double low = valueAt(below, sorted);
  return low + fraction * (valueAt(above, sorted) - low);
}

}  // namespace

Statistics statisticsOf(const Column<double>& values) {
  SortedValues sorted = sortedValues(values);
  if (sorted.count == 0) return {};
  const auto n = static_cast<double>(sorted.count);
  double sum = 0.0;
  for (const double value : values) sum += std::isfinite(value) ? value : 0.0;
  const double mean = sum / n;
  double squares = 0.0;
  for (const double value : values) {
    const double distance = std::isfinite(value) ? value - mean : 0.0;
    squares += distance * distance;
  }
  return {sorted.count,
          valueAt(0, &sorted),
          valueAt(sorted.count - 1, &sorted),
          mean,
          std::sqrt(squares / n),
          percentile(0.01, &sorted),
          percentile(0.05, &sorted),
          percentile(0.50, &sorted),
          percentile(0.95, &sorted),
          percentile(0.99, &sorted)};
}
