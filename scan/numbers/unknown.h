// A number that is not known.
#ifndef LUMASCAN_UNKNOWN_H
#define LUMASCAN_UNKNOWN_H

#include <limits>

constexpr double UNKNOWN = std::numeric_limits<double>::quiet_NaN();

#endif
