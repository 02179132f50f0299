// What all values of each indicator and measure come to.
#ifndef LUMASCAN_INDICATOR_SUMMARY_H
#define LUMASCAN_INDICATOR_SUMMARY_H

#include <array>
#include <functional>
#include <vector>

#include "scan/analysis/frameTable.h"
#include "scan/numbers/statistics.h"

struct IndicatorSummary {
  Statistics statistics;
  // Means of the defined values of at most 64 stretches of equal length; NaN where there are none.
  std::vector<double> overview;
};

using IndicatorSummaries = std::array<IndicatorSummary, INDICATORS>;
using MeasureStatistics = std::array<Statistics, MEASURES>;

// Call onStep before each column.
IndicatorSummaries summarise(
    const FrameTable& frames, const std::function<void()>& onStep = [] {});
MeasureStatistics measureStatistics(
    const FrameTable& frames, const std::function<void()>& onStep = [] {});

#endif
