// What a column of values comes to.
#ifndef LUMASCAN_STATISTICS_H
#define LUMASCAN_STATISTICS_H

#include <cstdint>
#include <limits>

#include "scan/numbers/column.h"

// Of no values all but n are NaN. A percentile between two values lies between them in proportion:
// the p-th is at place p / 100 * (n - 1) of the sorted values, counted from 0.
struct Statistics {
  static constexpr double NONE = std::numeric_limits<double>::quiet_NaN();

  int64_t n = 0;
  double min = NONE;
  double max = NONE;
  double mean = NONE;
  double stdev = NONE;  // of the values themselves, not an estimate from a sample: divided by n
  double p1 = NONE;
  double p5 = NONE;
  double p50 = NONE;
  double p95 = NONE;
  double p99 = NONE;
};

// Statistics of the finite ones among the values.
Statistics statisticsOf(const Column<double>& values);

#endif
