#include "scan/numbers/decimals.h"

#include <charconv>
#include <cmath>

std::string shortestText(double value) {
  if (std::isnan(value)) return "";
  char text[32];
  const auto result = std::to_chars(text, text + sizeof text, value);
  return std::string(text, result.ptr);
}

double wholeNanoseconds(double seconds) {
  constexpr double NANOSECONDS = 1e9;
  return std::round(seconds * NANOSECONDS) / NANOSECONDS;
}
