// An analysis of any length takes up no more memory than one of a few frames.
#include <gtest/gtest.h>
#include <malloc.h>

#include <algorithm>

#include "driver/frameAnalysis.h"
#include "support/frames.h"

// A function of the sanitizers, null without them.
extern "C" __attribute__((weak)) size_t __sanitizer_get_current_allocated_bytes();

namespace {

constexpr int REPETITIONS = 200;
// Bytes. The allocator keeps a few freed blocks, not the same ones each time. The smallest image
// that an indicator could forget holds 100 bytes.
constexpr size_t MOST_GROWTH = REPETITIONS * 50;

// Bytes that the process has allocated and not freed. Sanitizers count them in an allocator of
// their own.
size_t bytesInUse() {
  if (__sanitizer_get_current_allocated_bytes != nullptr) {
    return __sanitizer_get_current_allocated_bytes();
  }
  const struct mallinfo2 info = mallinfo2();
  return info.uordblks + info.hblkhd;
}

template <typename Action>
void expectNoGrowth(Action action) {
  for (int i = 0; i < 16; ++i) action();
  const size_t before = bytesInUse();
  for (int i = 0; i < REPETITIONS; ++i) action();
  EXPECT_LT(bytesInUse(), before + MOST_GROWTH);
}

}  // namespace

TEST(Memory, isGivenBackByEveryIndicatorAfterEveryFrame) {
  constexpr uint32_t WIDTH = 320;
  constexpr uint32_t HEIGHT = 272;  // block loss, too, has a region to measure
  FrameImages images = makeFrameImages(WIDTH, HEIGHT);
  TemporalResults temporal = {};
  // On a flat frame some indicators give up.
  for (const std::vector<uint8_t>& samples :
       {noiseFrame(WIDTH, HEIGHT, 1), flatFrame(WIDTH, HEIGHT, 9)}) {
    std::copy(samples.begin(), samples.end(), images.current.data);
    for (IndicatorMask mask = 1; mask <= FLICKERING; mask *= 2) {
      SCOPED_TRACE(mask);
      expectNoGrowth([&] { analyseFrameSerially(mask, 25.0, true, &images, &temporal); });
    }
  }
  freeFrameImages(&images);
}

TEST(Memory, isGivenBackWithTheImagesOfARun) {
  expectNoGrowth([] {
    FrameImages images = makeFrameImages(100, 100);
    freeFrameImages(&images);
  });
}
