// Doubles as decimals.
#ifndef LUMASCAN_DECIMALS_H
#define LUMASCAN_DECIMALS_H

#include <string>

// The shortest decimal text that reads back as the same number; empty for NaN.
std::string shortestText(double value);

// A sum or difference of times without what floating point adds to it: whole nanoseconds.
double wholeNanoseconds(double seconds);

#endif
