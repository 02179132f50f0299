// Every indicator against its twins, bit for bit, over many sizes and contents: against the one
// that was written from the definition alone, and against its own plain form, composed of the
// operations.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <iterator>
#include <string>
#include <utility>

#include "composed/composed.h"
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
#include "support/guardedBuffer.h"

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

// Rounds of frames of random sizes, each with all contents. Fewer where that takes long: in
// sanitized programs, and on emulated processors.
#ifndef TWIN_ROUNDS
#define TWIN_ROUNDS 40
#endif

// Of the contents of frames of every width and height, each or one in so many, in turn: no divisor
// of their number, so that it is another one from width to width.
#ifndef TWIN_CONTENTS
#define TWIN_CONTENTS 1
#endif

// Calls check(frame) for TWIN_ROUNDS frames of each content, of random sizes from minSide on.
template <typename Check>
void forManyFrames(uint32_t minSide, Check check) {
  uint64_t random = seedRandom(minSide + 1);
  for (uint32_t round = 0; round < TWIN_ROUNDS; ++round) {
    for (int content = 0; content < contentCount(); ++content) {
      const uint32_t w = std::max(minSide, anySide(MAX_W, &random));
      const uint32_t h = std::max(minSide, anySide(MAX_H, &random));
      const Luma frame = makeContent(content, w, h, &random);
      SCOPED_TRACE(describe(frame, content, round));
      ASSERT_NO_FATAL_FAILURE(check(frame));
    }
  }
}

using Entry = void* (*)(void*);

// Runs an indicator on a copy of the frame that lies against an unreadable page, with its end and
// with its start.
void* runGuarded(Entry indicator, const Luma& frame, double FrameResults::*field) {
  void* status = nullptr;
  const double before = Results.*field;
  for (GuardedBuffer buffer :
       {allocAfterGuard(frame.samples.size()), allocBeforeGuard(frame.samples.size())}) {
    std::copy(frame.samples.begin(), frame.samples.end(), buffer.data);
    Image image = makeImage(frame.w, frame.h, buffer.data);
    Results.*field = before;
    status = indicator(&image);
    freeGuardedBuffer(&buffer);
  }
  return status;
}

// An indicator, its plain form and its twin on one frame.
template <typename Twin>
void expectSame(const Luma& frame, Entry indicator, Entry plainForm, double FrameResults::*field,
                Twin twin) {
  Image image = imageOver(frame);
  void* const status = runGuarded(indicator, frame, field);
  ASSERT_EQ(status, plainForm(&image));
  const double value = Results.*field;
  const double plain = composed::Results.*field;
  const double expected = twin(frame);
  ASSERT_TRUE(isSame(value, expected)) << value << " is not " << expected;
  ASSERT_TRUE(isSame(value, plain)) << value << " is not " << plain;
}

// The same on many frames: of any size from minSide on; of every width up to 80, at which vector
// loops begin, end and leave remainders; of widths around those at which rows are taken in pieces,
// which are multiples of 1024, 8192 and 32768; and of heights around 256 and 512, at which columns
// are.
template <typename Twin>
void expectTwins(Entry indicator, Entry plainForm, double FrameResults::*field, Twin twin,
                 uint32_t minSide = 1) {
  const auto check = [&](const Luma& frame) {
    expectSame(frame, indicator, plainForm, field, twin);
  };
  forManyFrames(minSide, check);

  uint64_t random = seedRandom(7);
  int turn = 0;
  const auto checkWidth = [&](uint32_t w, uint32_t lowest, uint32_t highest) {
    for (int content = 0; content < contentCount(); ++content) {
      if (++turn < TWIN_CONTENTS) continue;
      turn = 0;
      const uint32_t h = lowest + nextRandom(&random) % (highest - lowest + 1);
      const Luma frame = makeContent(content, w, h, &random);
      SCOPED_TRACE(describe(frame, content, w));
      ASSERT_NO_FATAL_FAILURE(check(frame));
    }
  };
  for (uint32_t w = minSide; w <= 80; ++w) {
    ASSERT_NO_FATAL_FAILURE(checkWidth(w, minSide, 80));
  }
  for (uint32_t w : {1023u, 1024u, 1025u, 1026u, 1027u, 1031u, 1032u, 1033u, 1039u, 1040u,
                     2049u, 2050u, 2051u, 2052u, 2064u, 4097u, 4098u, 8199u, 8200u, 8208u}) {
    ASSERT_NO_FATAL_FAILURE(checkWidth(w, minSide, minSide + (w < 4096 ? 60 : 20)));
  }
  for (uint32_t h : {255u, 256u, 257u, 511u, 512u, 513u}) {
    ASSERT_NO_FATAL_FAILURE(checkWidth(minSide + h % 50, h, h));
  }
  for (uint32_t w : {32768u, 32769u, 32770u, 32784u}) {
    if (minSide > 1 && w != 32770) continue;  // high frames take long
    ASSERT_NO_FATAL_FAILURE(checkWidth(w, minSide, minSide + 8));
  }
}

}  // namespace

TEST(Twins, blockiness) {
  expectTwins(blockiness, composed::blockiness, &FrameResults::blockiness, reference::blockiness);
}

TEST(Twins, spatialActivity) {
  expectTwins(spatialActivity, composed::spatialActivity, &FrameResults::spatialActivity,
              reference::spatialActivity);
}

TEST(Twins, letterbox) {
  expectTwins(letterbox, composed::letterbox, &FrameResults::letterbox, reference::letterbox);
}

TEST(Twins, pillarbox) {
  expectTwins(pillarbox, composed::pillarbox, &FrameResults::pillarbox, reference::pillarbox);
}

TEST(Twins, blockLoss) {
  expectTwins(blockLoss, composed::blockLoss, &FrameResults::blockLoss, reference::blockLoss);
}

TEST(Twins, blockLoss_onFramesOfWholeRegions) {
  expectTwins(blockLoss, composed::blockLoss, &FrameResults::blockLoss, reference::blockLoss, 256);
}

TEST(Twins, blockLoss_onFramesOfTwoByTwoRegions) {
  uint64_t random = seedRandom(44);
  for (const auto& [w, h] : {std::pair{512u, 512u}, std::pair{521u, 599u}}) {
    for (int content = 0; content < contentCount(); ++content) {
      const Luma frame = makeContent(content, w, h, &random);
      SCOPED_TRACE(describe(frame, content, 0));
      ASSERT_NO_FATAL_FAILURE(expectSame(frame, blockLoss, composed::blockLoss,
                                         &FrameResults::blockLoss, reference::blockLoss));
    }
  }
}

TEST(Twins, blur) {
  expectTwins(blur, composed::blur, &FrameResults::blur, reference::blur);
}

TEST(Twins, exposure) {
  expectTwins(exposure, composed::exposure, &FrameResults::exposure, reference::exposure);
}

TEST(Twins, contrast) {
  expectTwins(contrastRMS, composed::contrastRMS, &FrameResults::contrast, reference::contrast);
}

TEST(Twins, interlace) {
  expectTwins(interlace, composed::interlace, &FrameResults::interlace, reference::interlace);
}

TEST(Twins, noise) {
  expectTwins(noise, composed::noise, &FrameResults::noise, reference::noise);
}

TEST(Twins, slice) {
  // What frames too small to measure must leave in place at first.
  Results.slice = composed::Results.slice = 0.25;
  double before = Results.slice;
  expectTwins(slice, composed::slice, &FrameResults::slice,
              [&](const Luma& frame) { return before = reference::slice(frame, before); });
}

TEST(Twins, blackout) {
  forManyFrames(8, [](const Luma& frame) {
    Image image = imageOver(frame);
    blackout(&image);
    composed::blackout(&image);
    ASSERT_EQ(Results.blackout, reference::blackout(frame));
    ASSERT_EQ(Results.blackout, composed::Results.blackout);
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
  forManyFrames(1, [&](const Luma& previous) {
    const Luma current = nextFrame(previous, &random);
    const Image currentImage = imageOver(current);
    const Image previousImage = imageOver(previous);
    const double value = temporalActivity(&currentImage, &previousImage);
    const double plain = composed::temporalActivity(&currentImage, &previousImage);
    const double expected = reference::temporalActivity(current, previous);
    ASSERT_TRUE(isSame(value, expected)) << value << " is not " << expected;
    ASSERT_TRUE(isSame(value, plain)) << value << " is not " << plain;
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
    // Every fourth is around the width from which block rows are taken in pieces.
    const uint32_t w =
        video % 4 == 0 ? 1010 + nextRandom(&random) % 60 : anySide(MAX_W / 2, &random);
    const uint32_t h = anySide(MAX_H / 2, &random);
    Image switches = callocImage(w / 8, h / 8);
    Image states = callocImage(w / 8, h / 8);
    Image plainSwitches = callocImage(w / 8, h / 8);
    Image plainStates = callocImage(w / 8, h / 8);
    reference::FlickeringState state;
    Luma previous = makeContent(video % contentCount(), w, h, &random);
    for (int frame = 0; frame < 16; ++frame) {  // whole periods, for the next video's sake
      const Luma current = nextFrame(previous, &random);
      const Image currentImage = imageOver(current);
      const Image previousImage = imageOver(previous);
      const double value = flickering(&currentImage, &previousImage, &switches, &states);
      const double plain =
          composed::flickering(&currentImage, &previousImage, &plainSwitches, &plainStates);
      const double expected = reference::flickering(state, current, previous);
      ASSERT_TRUE(isSame(value, expected)) << value << " is not " << expected << ": " << w << " x "
                                           << h << ", video " << video << ", frame " << frame;
      ASSERT_TRUE(isSame(value, plain)) << value << " is not " << plain << ", frame " << frame;
      previous = current;
    }
    for (Image* image : {&switches, &states, &plainSwitches, &plainStates}) freeImage(image);
  }
}
