// The indicators in their plainest form: composed of the operations of definitions.h one after
// another, with a full image for every intermediate value. The fast forms in src/indicators are
// held to them bit for bit. Freezing has no other form.
#ifndef LUMAPROBE_TESTS_COMPOSED_H
#define LUMAPROBE_TESTS_COMPOSED_H

#include "definitions/definitions.h"
#include "indicators/results.h"

namespace composed {

// Thread entries like those of src/indicators, which write to this record.
extern FrameResults Results;

void* blockiness(void* luma);
void* spatialActivity(void* luma);
void* letterbox(void* luma);
void* pillarbox(void* luma);
void* blockLoss(void* luma);
void* blur(void* luma);
void* blackout(void* luma);
void* exposure(void* luma);
void* contrastRMS(void* luma);
void* interlace(void* luma);
void* noise(void* luma);
void* slice(void* luma);

double temporalActivity(const Image* current, const Image* previous);
double flickering(const Image* current, const Image* previous, Image* switches, Image* states);

// Absolute difference of every sample to its left neighbour, 0 in column 0. The caller frees it.
Image32 leftDifferences(const Image* image);

}  // namespace composed

#endif
