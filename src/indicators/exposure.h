// Brightness.
#ifndef LUMAPROBE_EXPOSURE_H
#define LUMAPROBE_EXPOSURE_H

// Mean luma level, 0 to 255, of the 4 darkest and the 4 brightest 8 x 8 blocks. The last block
// column and row are left out even where they are whole.
//
// luma     Image, 8 bit; a side of 8 or less gives 127.5.
// Writes   Results.exposure.
void* exposure(void* luma);

#endif
