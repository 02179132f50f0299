// Raw planar YUV 4:2:0 video, 8 bit: frames without header, back to back, of which the luma planes
// are read.
#ifndef LUMAPROBE_VIDEO_INPUT_H
#define LUMAPROBE_VIDEO_INPUT_H

#include <cstdint>
#include <cstdio>

#include "definitions/definitions.h"

struct VideoInput {
  FILE* stream;
  int32_t lumaSize;   // bytes
  int64_t frameSize;  // bytes, chroma included
};

// Whether both sides are at least 1 and a frame's size can be computed in 32 bits: 3 * width *
// height is at most 2^31 - 1.
bool isFrameSizeSupported(int32_t width, int32_t height);

// Input of frames of a supported size. Takes the open stream over.
VideoInput makeVideoInput(FILE* stream, int32_t width, int32_t height);

// Number of whole frames in the file, cut to 32 bits. For a stream that has no size, such as a
// pipe, -1 when a frame is one byte (1 x 1 samples), else 0: either way no frame is analysed.
int32_t countFrames(const VideoInput* input);

// Reads the luma plane of frame k (from 0) into `luma`; returns the number of bytes read. At the
// end of the file that is fewer than the plane has, and the rest of `luma` stays as it was. A frame
// that cannot be sought (k negative, a pipe) is read from where the stream stands.
size_t readLuma(const VideoInput* input, int64_t k, Image* luma);

#endif
