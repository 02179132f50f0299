// What a column of values comes to.
#ifndef LUMASCAN_STATISTICS_H
#define LUMASCAN_STATISTICS_H

#include <cstdint>

#include "scan/numbers/column.h"

// Of no values all but n are NaN. A percentile between two values lies between them in proportion:
// the p-th is at place p / 100 * (n - 1) of the sorted values, counted from 0.
struct Statistics {
  int64_t n;
  double min;
  double max;
  double mean;
  double stdev;  // of the values themselves, not an estimate from a sample: divided by n
  double p1;
  double p5;
  double p50;
  double p95;
  double p99;
};

// Statistics of the finite ones among the values.
Statistics statisticsOf(const Column<double>& values);

#endif
