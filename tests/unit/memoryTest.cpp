// An analysis of any length takes up no more memory than one of a few frames.
#include <gtest/gtest.h>
#include <malloc.h>

#include <algorithm>

#include "driver/frameAnalysis.h"
#include "support/frames.h"

namespace {

// Bytes that the process has allocated and not freed. (Sanitizers have allocators and a search for
// leaks of their own; with them this is 0.)
size_t bytesInUse() {
  const struct mallinfo2 info = mallinfo2();
  return info.uordblks + info.hblkhd;
}

}  // namespace

TEST(Memory, isGivenBackByEveryIndicatorAfterEveryFrame) {
  constexpr uint32_t W = 320;
  constexpr uint32_t H = 272;  // block loss, too, has a region to measure
  FrameImages images = makeFrameImages(W, H);
  const std::vector<uint8_t> samples = noiseFrame(W, H, 1);
  std::copy(samples.begin(), samples.end(), images.current.data);
  TemporalResults temporal = {};
  for (IndicatorMask mask = 1; mask <= FLICKERING; mask *= 2) {
    SCOPED_TRACE(mask);
    const auto analyseFrames = [&](int count) {
      for (int frame = 0; frame < count; ++frame) {
        analyseFrameSerially(mask, 25.0, true, &images, &temporal);
      }
    };
    analyseFrames(16);  // the allocator keeps some freed blocks for next time
    const size_t before = bytesInUse();
    analyseFrames(16);
    EXPECT_EQ(bytesInUse(), before);
  }
  freeFrameImages(&images);
}

TEST(Memory, isGivenBackWithTheImagesOfARun) {
  const auto makeAndFree = [] {
    FrameImages images = makeFrameImages(100, 100);
    freeFrameImages(&images);
  };
  for (int i = 0; i < 16; ++i) makeAndFree();
  const size_t before = bytesInUse();
  for (int i = 0; i < 16; ++i) makeAndFree();
  EXPECT_EQ(bytesInUse(), before);
}
