// What the events of a type are found in: one value of each frame.
#ifndef LUMASCAN_SIGNALS_H
#define LUMASCAN_SIGNALS_H

#include "scan/analysis/frameTable.h"
#include "scan/events/thresholds.h"

// The values that stretches of a type are made of; NaN: undefined. Uniform frames are undefined for
// all but "black" and "flicker". In a table without measures, as early versions wrote them, all
// signals are the indicators' values.
//
// - A freeze's flag is raised on the still frames that led to it.
// - A value of flickering holds for the comparisons that it is the mean of, the last one also for
//   what follows it.
// - Darkness is the share of dark blocks, and 1 for a uniform frame.
// - Bars are as wide as the narrower one of both. There are none where one is much wider than the
//   other, as dark parts of pictures are, or where both leave less than half of the frame.
Column<double> signalOf(const FrameTable& table, const EventRule& rule);

// Uniform, as the indicator says.
bool isBlack(const FrameTable& table, size_t row);

#endif
