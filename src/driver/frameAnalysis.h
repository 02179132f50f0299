// The schedule of one frame: which indicators run, where and in what order. Knows neither files nor
// printing.
#ifndef LUMAPROBE_FRAME_ANALYSIS_H
#define LUMAPROBE_FRAME_ANALYSIS_H

#include <cstdint>

#include "definitions/definitions.h"

// The indicators that are requested, one bit each in the order of the report. Further bits mean
// nothing.
using IndicatorMask = uint32_t;

enum IndicatorBit : IndicatorMask {
  BLOCKINESS = 0x1,
  SPATIAL_ACTIVITY = 0x2,
  LETTERBOX = 0x4,
  PILLARBOX = 0x8,
  BLOCK_LOSS = 0x10,
  BLUR = 0x20,
  TEMPORAL_ACTIVITY = 0x40,
  BLACKOUT = 0x80,
  FREEZING = 0x100,  // only together with TEMPORAL_ACTIVITY, on which it rests
  EXPOSURE = 0x200,
  CONTRAST = 0x400,
  INTERLACE = 0x800,
  NOISE = 0x1000,
  SLICE = 0x2000,
  FLICKERING = 0x4000,
};

// The images of a run: two frames, and what flickering keeps per 8 x 8 block.
struct FrameImages {
  Image current;
  Image previous;
  Image switches;
  Image states;
};

// Frames of w x h samples. All samples are 0.
FrameImages makeFrameImages(uint32_t w, uint32_t h);
void freeFrameImages(FrameImages* images);

// Makes the current frame the previous one; the current one then holds the frame before it.
void swapFrames(FrameImages* images);

// The values that come from comparing frames. They stay from frame to frame until computed anew.
struct TemporalResults {
  double temporalActivity;
  bool freezing;
  double flickering;
};

// Makes the stacks of all threads that the process starts from now on small. The C library keeps
// those of ended threads for the next ones as long as they take up little: twelve of the usual size
// are given back and fetched anew for every frame, which takes longer than to run the threads on a
// small picture. Indicators need less than 16 KiB. For programs whose other threads do not need
// more than 256 KiB.
void useSmallStacks();

// Analyses the current frame: the requested spatial indicators write to `Results`, each on a thread
// of its own, the temporal ones, when the frame has a previous one, to `temporal`. When a thread
// cannot be made, its indicator runs on the calling thread. All is done on return.
//
// fps   frames per second, for freezing.
// The state of temporal indicators is that of the process: one video, its frames in order.
void analyseFrame(IndicatorMask mask, double fps, bool hasPrevious, FrameImages* images,
                  TemporalResults* temporal);

// The same, to the last bit, on the calling thread alone.
void analyseFrameSerially(IndicatorMask mask, double fps, bool hasPrevious, FrameImages* images,
                          TemporalResults* temporal);

#endif
