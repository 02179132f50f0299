// Visibility of the 8 x 8 coding grid.
#ifndef LUMAPROBE_BLOCKINESS_H
#define LUMAPROBE_BLOCKINESS_H

// Steps just inside the blocks divided by steps across their borders: near 1 without artefacts,
// below 1 and towards 0 the more the grid shows; infinite when there are steps inside only, 1 when
// there are none at all.
//
// luma     Image, 8 bit; a side below 8 leaves out the borders across it.
// Writes   Results.blockiness.
void* blockiness(void* luma);

// Opinion score of a blockiness value; 0 or more, 0 for NaN. Not applied to the results.
double blockToMOS(double blockiness);

#endif
