// The fifteen indicators as lumascan names them, in the order of the report.
#ifndef LUMASCAN_INDICATOR_TABLE_H
#define LUMASCAN_INDICATOR_TABLE_H

#include <array>
#include <string_view>

#include "driver/frameAnalysis.h"
#include "indicators/results.h"

constexpr size_t INDICATORS = 15;

struct IndicatorInfo {
  const char* name;   // in files and on the command line
  const char* title;  // on the page
  const char* unit;
  const char* group;  // compression, picture, motion or levels
};

// Indicator i is requested by bit i of a mask.
extern const std::array<IndicatorInfo, INDICATORS> INDICATOR_TABLE;

// Place in the table, or INDICATORS when there is no such name.
size_t indicatorNamed(std::string_view name);

// The requested indicators and those that they rest on: freezing needs temporal activity and
// blackout.
IndicatorMask withNeeded(IndicatorMask requested);

// One frame's values in the order of the table.
using IndicatorValues = std::array<double, INDICATORS>;

// What the indicators stored, with NaN for all that was not measured: what is not requested or, of
// temporal ones, has no frame before it; flickering within a period; an indicator that the frame is
// too small for. What came out infinite is NaN as well; `infinite`, unless it is null, gets the
// indicators that were measured and came out as positive infinity.
IndicatorValues measuredValues(const FrameResults& spatial, const TemporalResults& temporal,
                               IndicatorMask mask, bool hasPrevious, uint64_t w, uint64_t h,
                               IndicatorMask* infinite = nullptr);

#endif
