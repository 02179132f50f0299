#include "scan/events/signals.h"

#include <algorithm>
#include <cmath>

#include "scan/analysis/indicatorTable.h"
#include "scan/numbers/unknown.h"

namespace {

using Values = Column<double>;

constexpr double STILL_ACTIVITY = 1.0;  // levels; freezing's own limit
constexpr size_t FLICKER_PERIOD = 8;    // comparisons that one value of flickering is the mean of
// Bars are alike where they differ by no more than this share of the wider one, or of the frame.
constexpr double ALIKE = 0.15;
constexpr double ALIKE_IN_FRAME = 0.012;
constexpr double WIDEST_BARS = 0.5;  // of the frame, both together

// Raises the flag on the still frames that led to it.
void goBackToFirstStillFrame(const FrameTable& table, Values* flags) {
  const Values& activity = table.values[indicatorNamed("temporal_activity")];
  for (size_t i = flags->size(); i-- > 1;) {
    // Freezing starts anew behind a black frame.
    const bool isStill = activity[i - 1] <= STILL_ACTIVITY && (i < 2 || !isBlack(table, i - 2));
    if ((*flags)[i] > 0.0 && isStill) flags->set(i - 1, (*flags)[i]);
  }
}

void spreadOverPeriods(Values* values) {
  double last = UNKNOWN;  // the value spoken next, going backwards
  size_t age = 0;
  size_t spoken = values->size();  // the last row that has a value
  for (size_t i = values->size(); i-- > 0; ++age) {
    if (!std::isnan((*values)[i])) {
      if (std::isnan(last)) spoken = i;
      last = (*values)[i];
      age = 0;
    } else if (age < FLICKER_PERIOD) {
      values->set(i, last);
    }
  }
  for (size_t i = spoken + 1; i < values->size(); ++i) values->set(i, (*values)[i - 1]);
}

double barsOf(double one, double other) {
  const double wider = std::max(one, other);
  const double difference = std::fabs(one - other);
  const bool areAlike = difference <= ALIKE * wider || difference <= ALIKE_IN_FRAME;
  return areAlike && one + other <= WIDEST_BARS ? std::min(one, other) : 0.0;
}

Values barsOfFrames(const FrameTable& table, Measure one, Measure other) {
  Values bars;
  for (size_t i = 0; i < table.pts.size(); ++i)
    bars.push_back(barsOf(table.measures[one][i], table.measures[other][i]));
  return bars;
}

Values darknessOfFrames(const FrameTable& table) {
  Values darkness;
  for (size_t i = 0; i < table.pts.size(); ++i)
    darkness.push_back(isBlack(table, i) ? 1.0 : table.measures[DARK_BLOCKS][i]);
  return darkness;
}

Values ofIndicator(const FrameTable& table, std::string_view indicator) {
  Values values = table.values[indicatorNamed(indicator)];
  if (indicator == "freezing") goBackToFirstStillFrame(table, &values);
  if (indicator == "flickering") spreadOverPeriods(&values);
  return values;
}

bool hasMeasures(const FrameTable& table) {
  const Values& brightness = table.measures[BRIGHTNESS];
  return std::any_of(brightness.begin(), brightness.end(),
                     [](double value) { return !std::isnan(value); });
}

Values valuesOf(const FrameTable& table, const EventRule& rule) {
  switch (hasMeasures(table) ? rule.signal : Signal::INDICATOR) {
    case Signal::DARKNESS:
      return darknessOfFrames(table);
    case Signal::BARS_ABOVE_AND_BELOW:
      return barsOfFrames(table, BAR_TOP, BAR_BOTTOM);
    case Signal::BARS_AT_THE_SIDES:
      return barsOfFrames(table, BAR_LEFT, BAR_RIGHT);
    default:
      return ofIndicator(table, rule.indicator);
  }
}

}  // namespace

Column<double> signalOf(const FrameTable& table, const EventRule& rule) {
  Values values = valuesOf(table, rule);
  const std::string_view type = rule.type;
  if (type == "black" || type == "flicker") return values;
  for (size_t i = 0; i < values.size(); ++i) {
    if (isBlack(table, i)) values.set(i, UNKNOWN);
  }
  return values;
}

bool isBlack(const FrameTable& table, size_t row) {
  static const size_t blackout = indicatorNamed("blackout");
  return table.values[blackout][row] > 0.0;
}
