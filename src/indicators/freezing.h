// Pictures that stand still.
#ifndef LUMAPROBE_FREEZING_H
#define LUMAPROBE_FREEZING_H

#include <cstdint>

// Whether the frame ends a run of still frames of at least a tenth of a second. A frame is still
// when it is no blackout and its temporal activity is at most 1. The length of the run is kept from
// call to call: one call per frame, in order, from one thread. With fps at or below 0 every frame
// is frozen, with fps NaN none is.
bool freezing(int32_t blackout, double temporalActivity, double fps);

#endif
