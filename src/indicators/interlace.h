// Combing: two fields shown as one frame.
#ifndef LUMAPROBE_INTERLACE_H
#define LUMAPROBE_INTERLACE_H

// Number of 4 x 4 blocks of which every column zig-zags from line to line, as a fraction of the
// whole blocks: 0 for a progressive frame. It can exceed 1 when a side is no multiple of 4, since
// partial blocks are looked at but not counted in the divisor, and is NaN or infinite when a side
// is below 4.
//
// luma     Image, 8 bit.
// Writes   Results.interlace.
void* interlace(void* luma);

#endif
