#include "driver/frameAnalysis.h"

#include <pthread.h>

#include <cstddef>
#include <utility>

#include "indicators/blackout.h"
#include "indicators/blockLoss.h"
#include "indicators/blockiness.h"
#include "indicators/blur.h"
#include "indicators/contrastRMS.h"
#include "indicators/exposure.h"
#include "indicators/flickering.h"
#include "indicators/freezing.h"
#include "indicators/interlace.h"
#include "indicators/letterbox.h"
#include "indicators/noise.h"
#include "indicators/pillarbox.h"
#include "indicators/results.h"
#include "indicators/slice.h"
#include "indicators/spatialActivity.h"
#include "indicators/temporalActivity.h"

namespace {

using Entry = void* (*)(void*);

constexpr int SPATIAL_INDICATORS = 12;
// Bytes. The thread sanitizer keeps almost 1 MiB of each stack for itself: with less, no thread can
// be made.
#ifdef __SANITIZE_THREAD__
constexpr size_t STACK_SIZE = 2048 * 1024;
#else
constexpr size_t STACK_SIZE = 256 * 1024;
#endif

struct Worker {
  Entry entry;
  pthread_t thread;
  bool isRunning;
};

// Hands the entries of the requested spatial indicators to `start`, in the order in which they are
// started and joined.
template <typename Start>
void startSpatial(IndicatorMask mask, Start start) {
  if (mask & BLOCKINESS) start(blockiness);
  if (mask & SPATIAL_ACTIVITY) start(spatialActivity);
  if (mask & LETTERBOX) start(letterbox);
  if (mask & PILLARBOX) start(pillarbox);
  if (mask & BLOCK_LOSS) start(blockLoss);
  if (mask & BLUR) start(blur);
  if (mask & EXPOSURE) start(exposure);
  if (mask & INTERLACE) start(interlace);
  if (mask & NOISE) start(noise);
  if (mask & SLICE) start(slice);
  if (mask & BLACKOUT) start(blackout);
  if (mask & CONTRAST) start(contrastRMS);
}

void analyseTemporal(IndicatorMask mask, double fps, uint8_t blackoutFlag, FrameImages* images,
                     TemporalResults* temporal) {
  if (mask & TEMPORAL_ACTIVITY) {
    temporal->temporalActivity = temporalActivity(&images->current, &images->previous);
    if (mask & FREEZING) {
      temporal->freezing = freezing(blackoutFlag, temporal->temporalActivity, fps);
    }
  }
  if (mask & FLICKERING) {
    temporal->flickering =
        flickering(&images->current, &images->previous, &images->switches, &images->states);
  }
}

}  // namespace

FrameImages makeFrameImages(uint32_t w, uint32_t h) {
  return {callocImage(w, h), callocImage(w, h), callocImage(w / BLOCKSIZE, h / BLOCKSIZE),
          callocImage(w / BLOCKSIZE, h / BLOCKSIZE)};
}

void freeFrameImages(FrameImages* images) {
  freeImage(&images->current);
  freeImage(&images->previous);
  freeImage(&images->switches);
  freeImage(&images->states);
}

void swapFrames(FrameImages* images) {
  std::swap(images->current.data, images->previous.data);
}

void useSmallStacks() {
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  pthread_attr_setstacksize(&attributes, STACK_SIZE);
  pthread_setattr_default_np(&attributes);
  pthread_attr_destroy(&attributes);
}

void analyseFrame(IndicatorMask mask, double fps, bool hasPrevious, FrameImages* images,
                  TemporalResults* temporal) {
  // Freezing gets the previous frame's flag, read before a worker can change it: rows would
  // otherwise depend on which thread is faster.
  const uint8_t blackoutFlag = Results.blackout;
  Worker workers[SPATIAL_INDICATORS];
  int count = 0;
  startSpatial(mask, [&](Entry entry) {
    Worker* worker = &workers[count++];
    worker->entry = entry;
    worker->isRunning = pthread_create(&worker->thread, nullptr, entry, &images->current) == 0;
  });
  if (hasPrevious) analyseTemporal(mask, fps, blackoutFlag, images, temporal);
  for (int i = 0; i < count; ++i) {
    if (workers[i].isRunning) {
      pthread_join(workers[i].thread, nullptr);
    } else {
      workers[i].entry(&images->current);
    }
  }
}

void analyseFrameSerially(IndicatorMask mask, double fps, bool hasPrevious, FrameImages* images,
                          TemporalResults* temporal) {
  const uint8_t blackoutFlag = Results.blackout;
  startSpatial(mask, [&](Entry entry) { entry(&images->current); });
  if (hasPrevious) analyseTemporal(mask, fps, blackoutFlag, images, temporal);
}
