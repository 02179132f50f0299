// Width of edges.
#ifndef LUMAPROBE_BLUR_H
#define LUMAPROBE_BLUR_H

// Mean width of the strong horizontal luma edges, in pixels: larger is blurrier, 0 when no edge
// stands out.
//
// luma     Image, 8 bit; a side below 16 gives 0.
// Writes   Results.blur.
void* blur(void* luma);

// Opinion score, 0 to 5, of a blur value. Not applied to the results.
double blurToMOS(double blur);

#endif
