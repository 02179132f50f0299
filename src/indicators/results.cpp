#include "indicators/results.h"

FrameResults Results = {};

void* gaveUp() {
  return reinterpret_cast<void*>(uintptr_t{0xffffffff});  // NOLINT(performance-no-int-to-ptr)
}
