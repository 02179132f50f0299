// Opinion scores of two indicators.
#include <algorithm>
#include <cmath>

#include "indicators/blockiness.h"
#include "indicators/blur.h"

double blockToMOS(double blockiness) {
  return std::max(0.0, (blockiness * 17.86 + -10.38) * 0.5);  // 0 of NaN, too
}

double blurToMOS(double blur) {
  const double e = std::exp(-1.5 * blur + 2.87);
  return std::max(0.0, 5.0 * std::pow(e / (1.0 + e), 0.14));  // 0 of NaN, too
}
