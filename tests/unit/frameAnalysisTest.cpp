// The schedule of one frame: threads against one thread, and threads that cannot be made.
#include "driver/frameAnalysis.h"

#include <gtest/gtest.h>
#include <pthread.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "indicators/results.h"
#include "support/frames.h"
#include "support/sanitizers.h"
#include "support/startAnew.h"

// The linker sends the program's calls of pthread_create here.
extern "C" {
int __real_pthread_create(pthread_t*, const pthread_attr_t*, void* (*)(void*), void*);
int __wrap_pthread_create(pthread_t* thread, const pthread_attr_t* attributes,
                          void* (*entry)(void*), void* argument);
}

namespace {

int creations = 0;
int failures = 0;                         // that the system has not made, of those it was asked for
bool (*failsAt)(int creation) = nullptr;  // null: no creation fails

constexpr uint32_t W = 272;
constexpr uint32_t H = 264;
constexpr int FRAMES = 17;  // sixteen comparisons, two whole periods of flickering
constexpr IndicatorMask ALL = 0x7fff;

struct Values {
  FrameResults spatial;
  TemporalResults temporal;
};

bool areSame(const Values& a, const Values& b) {
  const auto same = [](double x, double y) { return std::memcmp(&x, &y, sizeof x) == 0; };
  return same(a.spatial.blockiness, b.spatial.blockiness) &&
         same(a.spatial.spatialActivity, b.spatial.spatialActivity) &&
         same(a.spatial.letterbox, b.spatial.letterbox) &&
         same(a.spatial.pillarbox, b.spatial.pillarbox) &&
         same(a.spatial.blockLoss, b.spatial.blockLoss) && same(a.spatial.blur, b.spatial.blur) &&
         same(a.spatial.exposure, b.spatial.exposure) &&
         same(a.spatial.interlace, b.spatial.interlace) && same(a.spatial.noise, b.spatial.noise) &&
         same(a.spatial.slice, b.spatial.slice) && same(a.spatial.contrast, b.spatial.contrast) &&
         a.spatial.blackout == b.spatial.blackout &&
         same(a.temporal.temporalActivity, b.temporal.temporalActivity) &&
         a.temporal.freezing == b.temporal.freezing &&
         same(a.temporal.flickering, b.temporal.flickering);
}

// A frame of the test video: noise around changing levels, standing still for five frames, with a
// flat stretch and a bar, so that every indicator has something to say.
std::vector<uint8_t> videoFrame(int k) {
  const int content = k >= 4 && k < 9 ? 4 : k;
  if (k == 11 || k == 12) return flatFrame(W, H, 40);
  std::vector<uint8_t> frame =
      narrowNoise(W, H, static_cast<uint8_t>(60 + 8 * content), 20, static_cast<uint32_t>(content));
  if (content % 3 == 0) std::fill_n(frame.begin(), W * 10, uint8_t{16});
  return frame;
}

using Schedule = void (*)(IndicatorMask, double, bool, FrameImages*, TemporalResults*);

// The values of all frames of the test video under a schedule, from a fresh start.
std::vector<Values> analyseVideo(Schedule schedule, IndicatorMask mask) {
  Results = {};
  restartTemporalIndicators();
  TemporalResults temporal = {};
  FrameImages images = makeFrameImages(W, H);
  std::vector<Values> values;
  for (int k = 0; k < FRAMES; ++k) {
    const std::vector<uint8_t> frame = videoFrame(k);
    std::copy(frame.begin(), frame.end(), images.current.data);
    schedule(mask, 25.0, k > 0, &images, &temporal);
    values.push_back({Results, temporal});
    swapFrames(&images);
  }
  freeFrameImages(&images);
  return values;
}

void expectSame(const std::vector<Values>& a, const std::vector<Values>& b) {
  ASSERT_EQ(a.size(), b.size());
  for (size_t k = 0; k < a.size(); ++k) EXPECT_TRUE(areSame(a[k], b[k])) << "frame " << k;
}

}  // namespace

int __wrap_pthread_create(pthread_t* thread, const pthread_attr_t* attributes,
                          void* (*entry)(void*), void* argument) {
  ++creations;
  if (failsAt != nullptr && failsAt(creations)) return EAGAIN;
  const int error = __real_pthread_create(thread, attributes, entry, argument);
  failures += error != 0 ? 1 : 0;
  return error;
}

TEST(FrameAnalysis, threadedEqualsSerial) {
  expectSame(analyseVideo(analyseFrame, ALL), analyseVideo(analyseFrameSerially, ALL));
}

TEST(FrameAnalysis, valuesOfTheTestVideoDiffer_soThatEqualityMeansSomething) {
  const std::vector<Values> values = analyseVideo(analyseFrameSerially, ALL);
  EXPECT_FALSE(areSame(values[0], values[1]));
  // Frames 5 to 8 stand still, at 25 frames per second the third of them is frozen.
  EXPECT_FALSE(values[6].temporal.freezing);
  EXPECT_TRUE(values[7].temporal.freezing);
  EXPECT_EQ(values[7].temporal.flickering, -1.0);
  EXPECT_NE(values[8].temporal.flickering, -1.0);
  EXPECT_EQ(values[11].spatial.blackout, 1);
  EXPECT_EQ(values[13].spatial.blackout, 0);
}

TEST(FrameAnalysis, startsOneThreadPerRequestedSpatialIndicator) {
  creations = 0;
  analyseVideo(analyseFrame, ALL);
  EXPECT_EQ(creations, 12 * FRAMES);
  creations = 0;
  // Blockiness and noise are spatial; temporal activity, freezing and flickering need no thread.
  analyseVideo(analyseFrame, BLOCKINESS | NOISE | TEMPORAL_ACTIVITY | FREEZING | FLICKERING);
  EXPECT_EQ(creations, 2 * FRAMES);
}

TEST(FrameAnalysis, serialStartsNoThread) {
  creations = 0;
  analyseVideo(analyseFrameSerially, ALL);
  EXPECT_EQ(creations, 0);
}

TEST(FrameAnalysis, valuesAreTheSame_whenNoThreadCanBeMade) {
  const std::vector<Values> expected = analyseVideo(analyseFrame, ALL);
  failsAt = [](int) { return true; };
  const std::vector<Values> values = analyseVideo(analyseFrame, ALL);
  failsAt = nullptr;
  expectSame(values, expected);
}

TEST(FrameAnalysis, valuesAreTheSame_whenSomeThreadsCannotBeMade) {
  const std::vector<Values> expected = analyseVideo(analyseFrame, ALL);
  failsAt = [](int creation) { return creation % 5 == 0 || creation % 7 == 3; };
  const std::vector<Values> values = analyseVideo(analyseFrame, ALL);
  failsAt = nullptr;
  expectSame(values, expected);
}

TEST(FrameAnalysis, valuesAreTheSameAndAllThreadsMade_onSmallStacks) {
  const std::vector<Values> expected = analyseVideo(analyseFrame, ALL);
  useSmallStacks();
  failures = 0;
  expectSame(analyseVideo(analyseFrame, ALL), expected);
  EXPECT_EQ(failures, 0);
}

TEST(FrameAnalysis, smallStacksAreOf256KiB_orOf2MiBUnderTheThreadSanitizer) {
  useSmallStacks();
  pthread_attr_t attributes;
  ASSERT_EQ(pthread_getattr_default_np(&attributes), 0);
  size_t size = 0;
  ASSERT_EQ(pthread_attr_getstacksize(&attributes, &size), 0);
  pthread_attr_destroy(&attributes);
  EXPECT_EQ(size, isThreadSanitized ? 2048u * 1024 : 256u * 1024);
}

TEST(FrameAnalysis, freezingSeesThePreviousFramesBlackoutFlag) {
  // Frames 11 and 12 are flat and equal. Frame 12 differs from 11 by nothing and follows a
  // blackout, frame 11 follows a picture.
  for (const Schedule schedule : {analyseFrame, analyseFrameSerially}) {
    Results = {};
    restartTemporalIndicators();
    TemporalResults temporal = {};
    FrameImages images = makeFrameImages(16, 16);
    constexpr IndicatorMask MASK = TEMPORAL_ACTIVITY | FREEZING | BLACKOUT;
    // Black frames. At 10 frames per second one still frame is enough to freeze, unless the flag
    // of the frame before is set.
    schedule(MASK, 10.0, false, &images, &temporal);
    EXPECT_EQ(Results.blackout, 1);
    schedule(MASK, 10.0, true, &images, &temporal);
    EXPECT_FALSE(temporal.freezing);

    // One bright block ends the blackout, but the flag of the frame before still holds.
    for (int i = 0; i < 8; ++i) images.current.data[i] = images.previous.data[i] = 255;
    schedule(MASK, 10.0, true, &images, &temporal);
    EXPECT_EQ(Results.blackout, 0);
    EXPECT_FALSE(temporal.freezing);
    schedule(MASK, 10.0, true, &images, &temporal);
    EXPECT_TRUE(temporal.freezing);

    // The blackout of this very frame does not count yet.
    std::fill_n(images.current.data, 16 * 16, uint8_t{0});
    std::fill_n(images.previous.data, 16 * 16, uint8_t{0});
    schedule(MASK, 10.0, true, &images, &temporal);
    EXPECT_EQ(Results.blackout, 1);
    EXPECT_TRUE(temporal.freezing);
    freeFrameImages(&images);
  }
}

TEST(FrameAnalysis, freezingIsNotComputed_withoutTemporalActivity) {
  FrameImages images = makeFrameImages(16, 16);
  TemporalResults temporal = {};
  // At 0 frames per second every computed flag would be set.
  for (int k = 0; k < 5; ++k) analyseFrameSerially(FREEZING, 0.0, true, &images, &temporal);
  EXPECT_FALSE(temporal.freezing);
  analyseFrameSerially(FREEZING | TEMPORAL_ACTIVITY, 0.0, true, &images, &temporal);
  EXPECT_TRUE(temporal.freezing);
  freeFrameImages(&images);
}

TEST(FrameAnalysis, freezingIsNotComputed_whenItIsNotRequested) {
  FrameImages images = makeFrameImages(16, 16);
  TemporalResults temporal = {};
  analyseFrameSerially(TEMPORAL_ACTIVITY, 0.0, true, &images, &temporal);
  EXPECT_FALSE(temporal.freezing);
  freeFrameImages(&images);
}

TEST(FrameAnalysis, temporalValuesStay_onAFrameWithoutPrevious) {
  FrameImages images = makeFrameImages(16, 16);
  TemporalResults temporal = {1.5, true, 2.5};
  analyseFrameSerially(ALL, 25.0, false, &images, &temporal);
  EXPECT_EQ(temporal.temporalActivity, 1.5);
  EXPECT_TRUE(temporal.freezing);
  EXPECT_EQ(temporal.flickering, 2.5);
  freeFrameImages(&images);
}

TEST(FrameAnalysis, swapExchangesSamplesAndKeepsSizes) {
  FrameImages images = makeFrameImages(9, 17);
  uint8_t* const current = images.current.data;
  uint8_t* const previous = images.previous.data;
  swapFrames(&images);
  EXPECT_EQ(images.current.data, previous);
  EXPECT_EQ(images.previous.data, current);
  EXPECT_EQ(images.current.w, 9u);
  EXPECT_EQ(images.previous.h, 17u);
  freeFrameImages(&images);
}

TEST(FrameAnalysis, imagesStartBlack_withOneElementPerWholeBlock) {
  FrameImages images = makeFrameImages(23, 16);
  for (const Image& image : {images.switches, images.states}) {
    EXPECT_EQ(image.w, 2u);
    EXPECT_EQ(image.h, 2u);
  }
  for (int i = 0; i < 23 * 16; ++i) {
    EXPECT_EQ(images.current.data[i], 0);
    EXPECT_EQ(images.previous.data[i], 0);
  }
  freeFrameImages(&images);
}
