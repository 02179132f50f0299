// Values at places of a sorted column, found in little memory however long it is.
#ifndef LUMASCAN_SORTED_VALUES_H
#define LUMASCAN_SORTED_VALUES_H

#include <cstdint>
#include <vector>

#include "scan/numbers/column.h"

// The finite ones among a column's values, as if they were sorted. The column must outlive it.
struct SortedValues {
  const Column<double>& column;
  int64_t count = 0;  // of finite values
  // What was sorted for the last place asked for: these values stand from place `first` to before
  // `end`. One value alone stands at all of these.
  int64_t first = 0;
  int64_t end = 0;
  std::vector<double> part;
};

SortedValues sortedValues(const Column<double>& column);

// The value at a place from 0 to count - 1. Places near each other are found fast.
double valueAt(int64_t place, SortedValues* values);

// The middle value, or the mean of both middle ones; NaN when no value is finite.
double medianOf(const Column<double>& column);

// The median of the steps upwards from each value to the next; NaN when there is none.
double medianStep(const Column<double>& column);

#endif
