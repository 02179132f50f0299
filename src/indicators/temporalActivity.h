// Amount of change between two frames.
#ifndef LUMAPROBE_TEMPORAL_ACTIVITY_H
#define LUMAPROBE_TEMPORAL_ACTIVITY_H

#include "definitions/definitions.h"

// Root mean square difference of the samples, in luma levels: 0 for equal frames, at most 255; NaN
// for empty ones. `previous` has the size of `current`.
double temporalActivity(const Image* current, const Image* previous);

// Square root of the summed squared differences.
double temporalAct(const Image* current, const Image* previous);

#endif
