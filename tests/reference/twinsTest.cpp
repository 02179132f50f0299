// Every indicator against its twin, bit for bit, over many sizes and contents.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <iterator>
#include <string>

#include "contents.h"
#include "indicators/blackout.h"
#include "indicators/blockLoss.h"
#include "indicators/blockiness.h"
#include "indicators/blur.h"
#include "indicators/contrastRMS.h"
#include "indicators/exposure.h"
#include "indicators/flickering.h"
#include "indicators/freezing.h"
#include "indicators/interlace.h"
#include "indicators/letterbox.h"
#include "indicators/noise.h"
#include "indicators/pillarbox.h"
#include "indicators/results.h"
#include "indicators/slice.h"
#include "indicators/spatialActivity.h"
#include "indicators/temporalActivity.h"
#include "reference.h"
#include "support/frames.h"

namespace {

using reference::Luma;

uint64_t bitsOf(double value) {
  uint64_t bits;
  std::memcpy(&bits, &value, sizeof bits);
  return bits;
}

// The same bits; of NaN only that both are, since the twins do not follow its sign.
bool isSame(double a, double b) {
  return bitsOf(a) == bitsOf(b) || (std::isnan(a) && std::isnan(b));
}

Image imageOver(const Luma& frame) {
  return makeImage(frame.w, frame.h, const_cast<uint8_t*>(frame.samples.data()));
}

std::string describe(const Luma& frame, int content, uint32_t round) {
  return std::to_string(frame.w) + " x " + std::to_string(frame.h) + " " + contentName(content) +
         ", round " + std::to_string(round);
}

constexpr uint32_t MAX_W = 700;
constexpr uint32_t MAX_H = 600;

// A side of 1 to `limit`: small ones, multiples of 16 and those around the sizes from which
// indicators measure are more frequent than others.
uint32_t anySide(uint32_t limit, uint64_t* random) {
  constexpr uint32_t LEAST_SIDES[] = {8, 16, 32, 48, 256};
  switch (nextRandom(random) % 4) {
    case 2: {
      const uint32_t least = LEAST_SIDES[nextRandom(random) % std::size(LEAST_SIDES)];
      return std::min(limit, least - 1 + nextRandom(random) % 3);
    }
    case 0:
      return 1 + nextRandom(random) % 40;
    case 1:
      return (1 + nextRandom(random) % (limit / 16)) * 16;
    default:
      return 1 + nextRandom(random) % limit;
  }
}

// Calls check(frame) for `rounds` frames of each content, of random sizes from minSide on.
template <typename Check>
void forManyFrames(uint32_t rounds, uint32_t minSide, Check check) {
  uint64_t random = seedRandom(minSide + 1);
  for (uint32_t round = 0; round < rounds; ++round) {
    for (int content = 0; content < contentCount(); ++content) {
      const uint32_t w = std::max(minSide, anySide(MAX_W, &random));
      const uint32_t h = std::max(minSide, anySide(MAX_H, &random));
      const Luma frame = makeContent(content, w, h, &random);
      SCOPED_TRACE(describe(frame, content, round));
      ASSERT_NO_FATAL_FAILURE(check(frame));
    }
  }
}

// An indicator and its twin on many frames.
template <typename Twin>
void expectTwin(void* (*indicator)(void*), const double& field, Twin twin, uint32_t minSide = 1) {
  forManyFrames(40, minSide, [&](const Luma& frame) {
    Image image = imageOver(frame);
    indicator(&image);
    const double expected = twin(frame);
    ASSERT_TRUE(isSame(field, expected)) << field << " is not " << expected;
  });
}

}  // namespace

TEST(Twins, blockiness) {
  expectTwin(blockiness, Results.blockiness, reference::blockiness);
}

TEST(Twins, spatialActivity) {
  expectTwin(spatialActivity, Results.spatialActivity, reference::spatialActivity);
}

TEST(Twins, letterbox) {
  expectTwin(letterbox, Results.letterbox, reference::letterbox);
}

TEST(Twins, pillarbox) {
  expectTwin(pillarbox, Results.pillarbox, reference::pillarbox);
}

TEST(Twins, blockLoss) {
  expectTwin(blockLoss, Results.blockLoss, reference::blockLoss);
}

TEST(Twins, blockLoss_onFramesOfWholeRegions) {
  expectTwin(blockLoss, Results.blockLoss, reference::blockLoss, 256);
}

TEST(Twins, blur) {
  expectTwin(blur, Results.blur, reference::blur);
}

TEST(Twins, exposure) {
  expectTwin(exposure, Results.exposure, reference::exposure);
}

TEST(Twins, contrast) {
  expectTwin(contrastRMS, Results.contrast, reference::contrast);
}

TEST(Twins, interlace) {
  expectTwin(interlace, Results.interlace, reference::interlace);
}

TEST(Twins, noise) {
  expectTwin(noise, Results.noise, reference::noise);
}

TEST(Twins, slice) {
  Results.slice = 0.25;  // what frames too small to measure must leave in place at first
  double before = Results.slice;
  expectTwin(slice, Results.slice,
             [&](const Luma& frame) { return before = reference::slice(frame, before); });
}

TEST(Twins, blackout) {
  forManyFrames(40, 8, [](const Luma& frame) {
    Image image = imageOver(frame);
    blackout(&image);
    ASSERT_EQ(Results.blackout, reference::blackout(frame));
  });
}

TEST(Twins, opinionScores) {
  for (double value = -2.0; value < 30.0; value += 0.001) {
    ASSERT_TRUE(isSame(blockToMOS(value), reference::blockToMOS(value))) << value;
    ASSERT_TRUE(isSame(blurToMOS(value), reference::blurToMOS(value))) << value;
  }
}

TEST(Twins, temporalActivity) {
  uint64_t random = seedRandom(41);
  forManyFrames(40, 1, [&](const Luma& previous) {
    const Luma current = nextFrame(previous, &random);
    const Image currentImage = imageOver(current);
    const Image previousImage = imageOver(previous);
    const double value = temporalActivity(&currentImage, &previousImage);
    const double expected = reference::temporalActivity(current, previous);
    ASSERT_TRUE(isSame(value, expected)) << value << " is not " << expected;
  });
}

TEST(Twins, freezing) {
  freezing(1, 0.0, 25.0);  // ends whatever run there is
  int32_t still = 0;
  uint64_t random = seedRandom(42);
  const double activities[] = {0.0,          0.5, 1.0, std::nextafter(1.0, 2.0),
                               std::nan(""), 3.0, 0.0, 0.0};
  const double rates[] = {25.0, 25.0, 30.0, 50.0, 29.97, 10.0, 0.0, -5.0, std::nan("")};
  for (int call = 0; call < 20000; ++call) {
    const bool blackoutFlag = nextRandom(&random) % 16 == 0;
    const double activity = activities[nextRandom(&random) % std::size(activities)];
    const double fps = rates[nextRandom(&random) % std::size(rates)];
    ASSERT_EQ(freezing(blackoutFlag, activity, fps),
              reference::freezing(still, blackoutFlag, activity, fps))
        << "call " << call << ", activity " << activity << ", fps " << fps;
  }
}

TEST(Twins, flickering) {
  uint64_t random = seedRandom(43);
  for (int video = 0; video < 40; ++video) {
    const uint32_t w = anySide(MAX_W / 2, &random);
    const uint32_t h = anySide(MAX_H / 2, &random);
    Image switches = callocImage(w / 8, h / 8);
    Image states = callocImage(w / 8, h / 8);
    reference::FlickeringState state;
    Luma previous = makeContent(video % contentCount(), w, h, &random);
    for (int frame = 0; frame < 16; ++frame) {  // whole periods, for the next video's sake
      const Luma current = nextFrame(previous, &random);
      const Image currentImage = imageOver(current);
      const Image previousImage = imageOver(previous);
      const double value = flickering(&currentImage, &previousImage, &switches, &states);
      const double expected = reference::flickering(state, current, previous);
      ASSERT_TRUE(isSame(value, expected)) << value << " is not " << expected << ": " << w << " x "
                                           << h << ", video " << video << ", frame " << frame;
      previous = current;
    }
    freeImage(&switches);
    freeImage(&states);
  }
}
