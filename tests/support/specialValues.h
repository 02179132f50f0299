// Values that stand for something else than a measured number.
#ifndef LUMAPROBE_TESTS_SPECIALVALUES_H
#define LUMAPROBE_TESTS_SPECIALVALUES_H

#include <limits>

constexpr double INF = std::numeric_limits<double>::infinity();
constexpr double UNDEFINED = std::numeric_limits<double>::quiet_NaN();
constexpr double SENTINEL = -77.0;  // where nothing was written

#endif
