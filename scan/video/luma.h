// 8-bit luma of decoded pictures, whatever their pixel format. The indicators are defined on it.
#ifndef LUMASCAN_LUMA_H
#define LUMASCAN_LUMA_H

#include <cstdint>

#include "scan/measures/lumaRange.h"
#include "scan/video/ffmpeg.h"

// How the luma of a pixel format gets its 8 bits.
enum class LumaPath {
  COPIED,     // 8-bit YUV: as it is
  NARROWED,   // deeper YUV of b bits: min(255, (v + 2^(b - 9)) >> (b - 8))
  CONVERTED,  // RGB, palette, grey and all else: by the scaler, to video range; then as above
  NONE,       // pictures that stay in a device's memory, or that the scaler does not know
};

LumaPath lumaPathOf(AVPixelFormat format);

const char* lumaPathName(LumaPath path);  // "copied", "narrowed", "converted", "none"

// The levels that stand for black and white in what convertToLuma() makes of the picture: those of
// video, unless the picture says that it has all levels.
LumaRange lumaRangeOf(const AVFrame& picture);

// What is kept from picture to picture: the scaler of the last one that needed it.
struct LumaConverter {
  FfmpegOwner<SwsContext> scaler;
  AVPixelFormat format = AV_PIX_FMT_NONE;
  int w = 0;
  int h = 0;
};

// Writes the picture's luma to `luma`, w * h samples without padding between the rows. False when
// the picture's format has no path to it. Throws std::bad_alloc.
bool convertToLuma(const AVFrame* picture, LumaConverter* converter, uint8_t* luma);

#endif
