#include "scan/analysis/indicatorTable.h"

#include <cmath>
#include <limits>

namespace {

constexpr IndicatorMask TEMPORAL = TEMPORAL_ACTIVITY | FREEZING | FLICKERING;
constexpr uint64_t SMALLEST_BLUR = 16;  // samples, both sides
constexpr uint64_t SMALLEST_SLICE_W = 17;
constexpr uint64_t SMALLEST_SLICE_H = 48;

// The indicators that say something about frames of this size. The others leave a value as well:
// blur 0, slice what it was; block loss says -1.
IndicatorMask meaningful(uint64_t w, uint64_t h) {
  IndicatorMask mask = 0x7fff;
  if (w < BLOCKSIZE || h < BLOCKSIZE) mask &= ~IndicatorMask{BLACKOUT};
  if (w < SMALLEST_BLUR || h < SMALLEST_BLUR) mask &= ~IndicatorMask{BLUR};
  if (w < SMALLEST_SLICE_W || h < SMALLEST_SLICE_H) mask &= ~IndicatorMask{SLICE};
  return mask;
}

}  // namespace

const std::array<IndicatorInfo, INDICATORS> INDICATOR_TABLE = {{
    {"blockiness", "Blockiness", "ratio", "compression"},
    {"spatial_activity", "Spatial activity", "levels", "picture"},
    {"letterbox", "Letterbox", "fraction", "picture"},
    {"pillarbox", "Pillarbox", "fraction", "picture"},
    {"block_loss", "Block loss", "pairs", "compression"},
    {"blur", "Blur", "pixels", "picture"},
    {"temporal_activity", "Temporal activity", "levels", "motion"},
    {"blackout", "Blackout", "flag", "levels"},
    {"freezing", "Freezing", "flag", "motion"},
    {"exposure", "Exposure", "levels", "levels"},
    {"contrast", "Contrast", "levels", "levels"},
    {"interlace", "Interlace", "fraction", "motion"},
    {"noise", "Noise", "levels", "picture"},
    {"slice", "Slice", "ratio", "compression"},
    {"flickering", "Flickering", "switches", "motion"},
}};

size_t indicatorNamed(std::string_view name) {
  size_t i = 0;
  while (i < INDICATORS && INDICATOR_TABLE[i].name != name) ++i;
  return i;
}

IndicatorMask withNeeded(IndicatorMask requested) {
  const bool isFreezing = (requested & FREEZING) != 0;
  return isFreezing ? requested | TEMPORAL_ACTIVITY | BLACKOUT : requested;
}

IndicatorValues measuredValues(const FrameResults& spatial, const TemporalResults& temporal,
                               IndicatorMask mask, bool hasPrevious, uint64_t w, uint64_t h,
                               IndicatorMask* infinite) {
  mask &= meaningful(w, h);
  if (!hasPrevious) mask &= ~TEMPORAL;
  // Freezing rests on temporal activity.
  if ((mask & TEMPORAL_ACTIVITY) == 0) mask &= ~IndicatorMask{FREEZING};
  if (spatial.blockLoss < 0.0) mask &= ~IndicatorMask{BLOCK_LOSS};
  if (temporal.flickering < 0.0) mask &= ~IndicatorMask{FLICKERING};

  IndicatorValues values = {spatial.blockiness,
                            spatial.spatialActivity,
                            spatial.letterbox,
                            spatial.pillarbox,
                            spatial.blockLoss,
                            spatial.blur,
                            temporal.temporalActivity,
                            static_cast<double>(spatial.blackout),
                            static_cast<double>(temporal.freezing),
                            spatial.exposure,
                            spatial.contrast,
                            spatial.interlace,
                            spatial.noise,
                            spatial.slice,
                            temporal.flickering};
  IndicatorMask boundless = 0;
  for (size_t i = 0; i < INDICATORS; ++i) {
    const bool isMeasured = (mask >> i & 1) != 0;
    const bool isInfinite = values[i] == std::numeric_limits<double>::infinity();
    if (isMeasured && isInfinite) boundless |= IndicatorMask{1} << i;
    if (!isMeasured || !std::isfinite(values[i]))
      values[i] = std::numeric_limits<double>::quiet_NaN();
  }
  if (infinite != nullptr) *infinite = boundless;
  return values;
}
