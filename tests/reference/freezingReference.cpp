// Twin of the freezing: has the picture stood still for a tenth of a second?
#include "reference.h"

namespace reference {

bool freezing(int32_t& still, bool blackout, double temporalActivity, double fps) {
  const bool isStill = !blackout && temporalActivity <= 1.0;  // never for NaN
  still = isStill ? static_cast<int32_t>(static_cast<uint32_t>(still) + 1) : 0;
  return still >= fps * 0.1;
}

}  // namespace reference
