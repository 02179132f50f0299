// Amount of detail.
#ifndef LUMAPROBE_SPATIAL_ACTIVITY_H
#define LUMAPROBE_SPATIAL_ACTIVITY_H

#include "definitions/definitions.h"

// Root mean square of the Sobel gradient magnitude over all samples, in luma levels: 0 for a flat
// frame, larger for more detail. Border samples have no gradient but count in the mean.
//
// luma     Image, 8 bit, not empty.
// Writes   Results.spatialActivity.
void* spatialActivity(void* luma);

// Square root of the summed squared Sobel magnitudes of the inner samples; 0 when there are none.
double spatialAct(const Image* luma);

#endif
