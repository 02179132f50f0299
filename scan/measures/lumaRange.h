// The luma levels that stand for black and white.
#ifndef LUMASCAN_LUMA_RANGE_H
#define LUMASCAN_LUMA_RANGE_H

struct LumaRange {
  int black = 16;
  int white = 235;
};

constexpr LumaRange FULL_RANGE = {0, 255};

#endif
