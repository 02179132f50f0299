#include "scan/numbers/sortedValues.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

namespace {

constexpr int64_t MOST_SORTED = 65536;  // values that are sorted in memory
constexpr int KEY = 64;                 // bits
constexpr int DIGIT = 16;
constexpr size_t DIGITS = size_t{1} << DIGIT;

// Whole numbers in the order of the doubles that they stand for.
uint64_t keyOf(double value) {
  constexpr uint64_t SIGN = uint64_t{1} << (KEY - 1);
  uint64_t bits = 0;
  std::memcpy(&bits, &value, sizeof bits);
  return (bits & SIGN) != 0 ? ~bits : bits | SIGN;
}

// Values whose keys are alike in the bits of the mask.
struct Bin {
  uint64_t mask;
  uint64_t key;
  int64_t first;  // place of its first value among all
  int64_t count;
};

bool isIn(const Bin& bin, double value) {
  return std::isfinite(value) && (keyOf(value) & bin.mask) == bin.key;
}

// The part of a bin that holds the place, by the next digit of the keys.
Bin narrowed(const Bin& bin, int shift, int64_t place, const Column<double>& column) {
  std::vector<int64_t> counts(DIGITS);
  for (const double value : column) {
    if (isIn(bin, value)) ++counts[keyOf(value) >> shift & (DIGITS - 1)];
  }
  size_t digit = 0;
  int64_t first = bin.first;
  for (; first + counts[digit] <= place; ++digit) first += counts[digit];
  return {bin.mask | uint64_t{DIGITS - 1} << shift, bin.key | uint64_t{digit} << shift, first,
          counts[digit]};
}

}  // namespace

SortedValues sortedValues(const Column<double>& column) {
  const auto isFinite = [](double value) { return std::isfinite(value); };
  return {column, std::count_if(column.begin(), column.end(), isFinite), 0, 0, {}};
}

double valueAt(int64_t place, SortedValues* values) {
  if (place < values->first || place >= values->end) {
    Bin bin = {0, 0, 0, values->count};
    int shift = KEY;
    while (bin.count > MOST_SORTED && shift > 0) {
      shift -= DIGIT;
      bin = narrowed(bin, shift, place, values->column);
    }
    values->first = bin.first;
    values->end = bin.first + bin.count;
    values->part.clear();
    for (const double value : values->column) {
      if (!isIn(bin, value)) continue;
      values->part.push_back(value);
      if (shift == 0) break;  // all the same
    }
    std::sort(values->part.begin(), values->part.end());
  }
  const auto row = static_cast<size_t>(place - values->first);
  return values->part[std::min(row, values->part.size() - 1)];
}

double medianOf(const Column<double>& column) {
  SortedValues values = sortedValues(column);
  if (values.count == 0) return std::numeric_limits<double>::quiet_NaN();
  const double above = valueAt(values.count / 2, &values);
  if (values.count % 2 == 1) return above;
  return (valueAt(values.count / 2 - 1, &values) + above) / 2.0;
}

double medianStep(const Column<double>& column) {
  Column<double> steps;
  for (size_t i = 1; i < column.size(); ++i) {
    const double step = column[i] - column[i - 1];
    if (step > 0.0) steps.push_back(step);
  }
  return medianOf(steps);
}
