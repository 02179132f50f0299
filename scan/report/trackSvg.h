// The still picture of a track: what is shown without script and on paper.
#ifndef LUMASCAN_TRACK_SVG_H
#define LUMASCAN_TRACK_SVG_H

#include <string>
#include <vector>

#include "scan/report/timeline.h"

// Values, low below high.
struct ValueRange {
  double low;
  double high;
};

constexpr int SVG_COLUMNS = 600;  // of a whole track
constexpr int SVG_HEIGHT = 100;

// What a track shows of values from min to max (NaN: none) that are held against thresholds: all
// values, and thresholds that lie no further beyond them than four times their spread.
ValueRange shownRange(double min, double max, const std::vector<double>& thresholds);

// The value's height in the picture, 0 at the top.
double svgHeightOf(double value, const ValueRange& range);

// The path through the lowest and highest value of every column; it is interrupted where values are
// undefined, unless they are meant to be (isBridged). Empty without values. times: axisTimes().
std::string envelopePath(const Column<double>& times, const Column<double>& values,
                         const TimeSpan& span, const ValueRange& range, bool isBridged);

#endif
