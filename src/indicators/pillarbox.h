// Width of the vertical bar at the left edge.
#ifndef LUMAPROBE_PILLARBOX_H
#define LUMAPROBE_PILLARBOX_H

#include <cstdint>

// Number of columns, from the left edge on, that equal the column to their right, as a fraction of
// half the width: 0 without a bar, 1 for a frame of uniform rows. A bar of k columns counts k - 1.
//
// luma     Image, 8 bit; a width below 2 gives NaN. The middle row of an odd height is not read.
// Writes   Results.pillarbox.
void* pillarbox(void* luma);

// Plain form: 1 when columns c and c + 1 of the w x h samples agree in the top and bottom h / 2
// rows, else 0.
int checkPillarBar(const uint8_t* data, int32_t w, uint32_t h, uint32_t c);

#endif
