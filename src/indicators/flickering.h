// Blocks that switch between change and stillness.
#ifndef LUMAPROBE_FLICKERING_H
#define LUMAPROBE_FLICKERING_H

#include <cstdint>

#include "definitions/definitions.h"

// -1 on seven calls out of eight; on the eighth the mean number of switches per frame of the 3 % of
// 8 x 8 blocks that switched most, 0 to 1. NaN when the frame has fewer than 34 blocks.
//
// current, previous   frames of the same size.
// switches, states    (w / 8) x (h / 8), zero at the start of a stream and then left to this
//                     function: switches in this period, and 1 where a block is changing.
// One call per frame, in order, from one thread: the place in the period is kept between calls.
double flickering(const Image* current, const Image* previous, Image* switches, Image* states);

// Plain form of one pair of frames, with its parameters open: a block of size x size samples whose
// mean absolute difference reaches `threshold` goes on, one that stands perfectly still goes off,
// and each change is counted.
//
// differences   the size of `switches`, zero-filled; receives the mean differences.
// Returns the number of blocks.
uint32_t calculateFlickering(const Image* current, const Image* previous, Image* switches,
                             Image* states, ImageDouble* differences, int32_t size,
                             double threshold);

// qsort comparator of bytes, descending.
int compareElements(const void* a, const void* b);

#endif
