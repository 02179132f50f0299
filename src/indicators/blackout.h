// Frames without picture.
#ifndef LUMAPROBE_BLACKOUT_H
#define LUMAPROBE_BLACKOUT_H

#include <cstdint>

// 1 when the means of all whole 8 x 8 blocks lie less than 4 luma levels apart, whatever the level,
// else 0.
//
// luma     Image, 8 bit, of at least one whole block (asserted).
// Writes   Results.blackout.
void* blackout(void* luma);

// Smallest and largest of `size` values, of which there is at least one (asserted).
void minmax(const int32_t* values, uint64_t size, int32_t* min, int32_t* max);

#endif
