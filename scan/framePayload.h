// All values of a frame table in few bytes, for the page's script to unpack.
#ifndef LUMASCAN_FRAME_PAYLOAD_H
#define LUMASCAN_FRAME_PAYLOAD_H

#include <string>

#include "scan/frameTable.h"
#include "scan/html.h"

// Columns time_s, duration_s, flags (1: keyframe, 2: corrupt) and the fifteen. Each is of the
// narrowest kind that holds all its values exactly:
//   constant              "value" in `columns` (null: NaN), nothing in `data`
//   uint8, int32          whole numbers
//   float32, float64      anything, NaN too
// Bytes of wider kinds are grouped: the first (lowest) byte of all rows, then the second.
struct FramePayload {
  Json columns;      // an array of {"name", "kind"} and perhaps "value"
  std::string data;  // of all columns in their order: one zlib stream
};

FramePayload packFrames(const FrameTable& frames);

#endif
