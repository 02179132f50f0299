// Slices of the picture that repeat.
#ifndef LUMAPROBE_SLICE_H
#define LUMAPROBE_SLICE_H

#include <cstdint>

#include "definitions/definitions.h"

// Samples that equal the one 16 columns to their right against samples that equal the one 16 rows
// below, as a ratio of their shares in a strip of 16 rows; the largest over all strips. Near 1
// where both are alike, towards 0 when every strip repeats downwards; infinite when a strip repeats
// sideways but not downwards; NaN may come from strips that repeat in neither direction.
//
// luma     Image, 8 bit; with fewer than 48 rows or up to 16 columns the result stays as it was.
// Writes   Results.slice.
// Returns  null, or gaveUp() for a frame that is too small.
void* slice(void* luma);

// Plain form: 1 where a sample equals the one `shift` positions further in the sequence of `src`,
// else 0, for all dest->w x dest->h samples of `dest`, which the caller keeps so small that both
// lie inside.
void compareShifted(const Image* src, Image* dest, int32_t shift);

// qsort comparators of doubles, ascending; NaN counts as equal to everything. Two names, one order.
int compare(const void* a, const void* b);
int compare_Double_asc(const void* a, const void* b);

#endif
