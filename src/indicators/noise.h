// Noise level.
#ifndef LUMAPROBE_NOISE_H
#define LUMAPROBE_NOISE_H

// Mean standard deviation, in luma levels, of what a Gaussian smoothing removes from the 8 x 8
// blocks of the most frequent level of detail (at most 1000 of them): larger is noisier, 0 when the
// typical block is flat, NaN when no block has the level that was found.
//
// luma     Image, 8 bit.
// Writes   Results.noise.
// Returns  null, or gaveUp() when the typical block is flat.
void* noise(void* luma);

#endif
