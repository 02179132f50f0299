// Depth of horizontal bars.
#ifndef LUMAPROBE_LETTERBOX_H
#define LUMAPROBE_LETTERBOX_H

#include <cstdint>

// Number of row pairs, from the top and bottom edge inwards, whose two rows are each of one value,
// as a fraction of half the height: 0 without bars, 1 for a frame of uniform rows.
//
// luma     Image, 8 bit; a height below 2 gives NaN.
// Writes   Results.letterbox.
void* letterbox(void* luma);

// Whether rows i and h - 1 - i of the w x h samples are each of one value.
bool checkLetterBar(const uint8_t* data, uint32_t w, uint32_t h, int32_t i);

#endif
