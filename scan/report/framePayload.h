// All values of a frame table in few bytes, for the page's script to unpack.
#ifndef LUMASCAN_FRAME_PAYLOAD_H
#define LUMASCAN_FRAME_PAYLOAD_H

#include <cstdio>

#include "scan/analysis/frameTable.h"
#include "scan/files/jsonFwd.h"

// How the columns time_s, duration_s, flags (1: keyframe, 2: corrupt) and the fifteen are packed:
// an array of {"name", "kind"} and perhaps "value". Each is of the narrowest kind that holds all
// its values exactly:
//   constant              "value" (null: NaN), and no bytes
//   uint8, int32          whole numbers
//   float32, float64      anything, NaN too
Json describeColumns(const FrameTable& frames);

// Writes the bytes of the columns in their order, as DeflatedText does. Those of wider kinds are
// grouped: the first (lowest) byte of all rows, then the second.
void writeColumns(const FrameTable& frames, const Json& description, FILE* out);

#endif
