// Lost or badly concealed coding blocks.
#ifndef LUMAPROBE_BLOCK_LOSS_H
#define LUMAPROBE_BLOCK_LOSS_H

// Long strong edges on the 16 x 16 grid: runs along its rows times runs along its columns, mean
// over all whole 256 x 256 regions. 0 for an intact frame, larger for more damage.
//
// luma     Image, 8 bit; a side below 256 gives -1.
// Writes   Results.blockLoss.
// Returns  null, or gaveUp() for a frame that is too small.
void* blockLoss(void* luma);

#endif
