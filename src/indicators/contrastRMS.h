// Contrast.
#ifndef LUMAPROBE_CONTRAST_RMS_H
#define LUMAPROBE_CONTRAST_RMS_H

// Sample standard deviation (divisor n - 1) of all samples, in luma levels: 0 for a flat frame,
// about 127.5 for half black, half white. For some flat frames rounding leaves the variance just
// below 0 and the value is NaN; so it is for a single sample.
//
// luma     Image, 8 bit.
// Writes   Results.contrast.
void* contrastRMS(void* luma);

#endif
