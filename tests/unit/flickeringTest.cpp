// Flickering: blocks that switch between change and stillness.
#include "indicators/flickering.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <utility>
#include <vector>

#include "support/lumaFrames.h"

namespace {

using Bytes = std::vector<uint8_t>;

// A stream of frames at the start of a period, whatever ran before: one tiny block is shown until
// the running period ends.
struct Stream {
  LumaFrame switches;
  LumaFrame states;

  Stream(int w, int h) : switches(w / 8, h / 8), states(w / 8, h / 8) {
    LumaFrame tiny(8, 8);
    LumaFrame tinySwitches(1, 1);
    LumaFrame tinyStates(1, 1);
    const Image luma = tiny.view();
    Image count = tinySwitches.view();
    Image state = tinyStates.view();
    while (flickering(&luma, &luma, &count, &state) == -1.0) continue;
  }

  double show(LumaFrame current, LumaFrame previous) {
    const Image now = current.view();
    const Image before = previous.view();
    Image count = switches.view();
    Image state = states.view();
    return flickering(&now, &before, &count, &state);
  }
};

// A row of `blocks` black blocks, `changed` of which have one sample of 1: mean difference 1 / 64
// from black, enough to switch on.
LumaFrame row(int blocks, int changed = 0) {
  LumaFrame frame(8 * blocks, 8);
  for (int block = 0; block < changed; ++block) frame.at(8 * block + 7, 7) = 1;
  return frame;
}

// Value of a period in which `changed` of the blocks change in frames 1, 3, 5 and 7.
double alternating(int blocks, int changed) {
  Stream stream(8 * blocks, 8);
  for (int frame = 1; frame < 8; ++frame) {
    stream.show(row(blocks, frame % 2 * changed), row(blocks));
  }
  return stream.show(row(blocks), row(blocks));
}

// One frame of a stream with one block of size x size.
struct Single {
  LumaFrame switches{1, 1};
  LumaFrame states{1, 1};
  double difference = 0.0;

  // `total` samples differ by 1.
  uint32_t show(int size, int total, double threshold) {
    LumaFrame current(size, size, 10);
    LumaFrame previous(size, size, 10);
    for (int sample = 0; sample < total; ++sample) {
      current.at(sample % size, sample / size) = sample % 2 == 0 ? 11 : 9;
    }
    const Image now = current.view();
    const Image before = previous.view();
    Image counts = switches.view();
    Image flags = states.view();
    difference = 0.0;
    ImageDouble differences{1, 1, &difference};
    return calculateFlickering(&now, &before, &counts, &flags, &differences, size, threshold);
  }

  int count() { return switches.at(0, 0); }
  int state() { return states.at(0, 0); }
};

}  // namespace

TEST(Flickering, hasAValueOnEveryEighthCall) {
  Stream stream(272, 8);
  for (int call = 1; call <= 24; ++call) {
    EXPECT_EQ(stream.show(row(34), row(34)), call % 8 == 0 ? 0.0 : -1.0) << call;
  }
}

TEST(Flickering, isZero_onEqualFrames) {
  EXPECT_EQ(alternating(34, 0), 0.0);
}

TEST(Flickering, isOne_whereTheMostActiveBlocksSwitchInEveryFrame) {
  // k = 1 and 3 of 34 and 100 blocks: 8 k switches in 8 k.
  EXPECT_EQ(alternating(34, 1), 1.0);
  EXPECT_EQ(alternating(34, 34), 1.0);
  EXPECT_EQ(alternating(100, 3), 1.0);
}

TEST(Flickering, isMeanOfThreePercentOfTheBlocks) {
  // 3 % of 66, 67, 99, 100, 133 and 134 blocks are 1, 2, 2, 3, 3 and 4, of which one switches.
  const std::pair<int, double> cases[] = {{66, 1.0},        {67, 1.0 / 2.0},  {99, 1.0 / 2.0},
                                          {100, 1.0 / 3.0}, {133, 1.0 / 3.0}, {134, 1.0 / 4.0}};
  for (const auto& [blocks, expected] : cases) {
    EXPECT_EQ(alternating(blocks, 1), expected) << blocks;
  }
}

TEST(Flickering, isOneEighth_whereBlocksChangeAllTheTime) {
  // They switch on in the first frame of each period and stay on.
  Stream stream(272, 8);
  for (int call = 1; call <= 16; ++call) {
    EXPECT_EQ(stream.show(row(34, 34), row(34)), call % 8 == 0 ? 1.0 / 8.0 : -1.0) << call;
  }
}

TEST(Flickering, isNaN_below34Blocks) {
  // 3 % of 33 is no block: 0 / 0.
  EXPECT_TRUE(std::isnan(alternating(33, 33)));
  EXPECT_TRUE(std::isnan(alternating(1, 1)));
}

TEST(Flickering, sortsSwitchesDescending_asUnsignedBytes) {
  // 100 blocks: the three largest of the counts so far, wherever they are, (200 + 130 + 6) / 24.
  Stream stream(800, 8);
  for (int call = 1; call < 8; ++call) stream.show(row(100), row(100));
  for (int block = 0; block < 100; ++block) {
    stream.switches.at(block, 0) = static_cast<uint8_t>(block % 5);
  }
  stream.switches.at(17, 0) = 6;
  stream.switches.at(50, 0) = 200;
  stream.switches.at(99, 0) = 130;
  EXPECT_EQ(stream.show(row(100), row(100)), 336.0 / 24.0);
}

TEST(Flickering, clearsSwitchesAndStatesAtTheEndOfAPeriod) {
  Stream stream(272, 8);
  for (int call = 1; call < 8; ++call) stream.show(row(34, 5), row(34));
  EXPECT_EQ(stream.switches.samples[4], 1);
  EXPECT_EQ(stream.states.samples[4], 1);
  stream.show(row(34, 5), row(34));
  EXPECT_EQ(stream.switches.samples, Bytes(34, 0));
  EXPECT_EQ(stream.states.samples, Bytes(34, 0));
}

TEST(Flickering, usesBlocksOf8x8) {
  // 24 x 15 is 3 x 1 blocks; samples right of and below whole blocks would not count.
  Stream stream(31, 15);
  LumaFrame current(31, 15);
  current.at(8, 0) = 1;
  current.at(23, 7) = 1;
  fill(current, 24, 0, 7, 15, 200);
  fill(current, 0, 8, 31, 7, 200);
  stream.show(current, LumaFrame(31, 15));
  EXPECT_EQ(stream.switches.samples, (Bytes{0, 1, 1}));
  EXPECT_EQ(stream.states.samples, (Bytes{0, 1, 1}));
}

TEST(Flickering, leavesFramesAlone) {
  Stream stream(272, 8);
  LumaFrame current = row(34, 3);
  LumaFrame previous = row(34);
  const Image now = current.view();
  const Image before = previous.view();
  Image count = stream.switches.view();
  Image state = stream.states.view();
  flickering(&now, &before, &count, &state);
  EXPECT_EQ(current.samples, row(34, 3).samples);
  EXPECT_EQ(previous.samples, row(34).samples);
}

TEST(CalculateFlickering, switchesOn_fromTheThresholdOn) {
  // 111 of 100 x 100 samples: exactly 0.0111.
  Single met;
  EXPECT_EQ(met.show(100, 111, 0.0111), 1u);
  EXPECT_EQ(met.difference, 0.0111);
  EXPECT_EQ(met.state(), 1);
  EXPECT_EQ(met.count(), 1);
  Single missed;
  missed.show(100, 110, 0.0111);
  EXPECT_EQ(missed.difference, 0.011);
  EXPECT_EQ(missed.state(), 0);
  EXPECT_EQ(missed.count(), 0);
}

TEST(CalculateFlickering, leavesBlockAlone_atADifferenceOf0point005) {
  // 2 of 20 x 20 samples: neither on from off nor off from on.
  Single off;
  for (int frame = 0; frame < 8; ++frame) off.show(20, 2, 0.0111);
  EXPECT_EQ(off.difference, 0.005);
  EXPECT_EQ(off.state(), 0);
  EXPECT_EQ(off.count(), 0);
  Single on;
  on.show(20, 400, 0.0111);
  for (int frame = 0; frame < 8; ++frame) on.show(20, 2, 0.0111);
  EXPECT_EQ(on.state(), 1);
  EXPECT_EQ(on.count(), 1);
}

TEST(CalculateFlickering, switchesOff_onPerfectStillnessOnly) {
  Single block;
  block.show(8, 64, 0.0111);
  EXPECT_EQ(block.difference, 1.0);
  block.show(8, 64, 0.0111);
  EXPECT_EQ(block.count(), 1);
  block.show(8, 0, 0.0111);
  EXPECT_EQ(block.difference, 0.0);
  EXPECT_EQ(block.state(), 0);
  EXPECT_EQ(block.count(), 2);
  block.show(8, 0, 0.0111);
  EXPECT_EQ(block.state(), 0);
  EXPECT_EQ(block.count(), 2);
}

TEST(CalculateFlickering, switchesOnFirst_atAThresholdOfZero) {
  // A still block reaches a threshold of 0; once on, it goes off again.
  Single block;
  block.show(8, 0, 0.0);
  EXPECT_EQ(block.state(), 1);
  block.show(8, 0, 0.0);
  EXPECT_EQ(block.state(), 0);
  EXPECT_EQ(block.count(), 2);
}

TEST(CalculateFlickering, wrapsSwitchesAt256) {
  Single block;
  for (int frame = 0; frame < 255; ++frame) block.show(1, (frame + 1) % 2, 0.5);
  EXPECT_EQ(block.count(), 255);
  block.show(1, 0, 0.5);
  EXPECT_EQ(block.count(), 0);
}

TEST(CalculateFlickering, takesMeanAbsoluteDifferences_blockByBlock) {
  // 3 x 2 blocks of 2 x 2 in 7 x 5, block (bx, by) differing by +-(bx + 3 by) in all samples; the
  // last column and row lie in no block.
  LumaFrame previous(7, 5, 100);
  LumaFrame current = frameOf(7, 5, [](int x, int y) {
    if (x == 6 || y == 4) return 255;
    const int difference = x / 2 + y / 2 * 3;
    return 100 + (x % 2 == 0 ? difference : -difference);
  });
  LumaFrame switches(3, 2);
  LumaFrame states(3, 2);
  std::vector<double> means(6, 0.0);
  const Image now = current.view();
  // The width of the previous record is not consulted.
  const Image before{1, 1, previous.samples.data()};
  Image count = switches.view();
  Image state = states.view();
  ImageDouble differences{3, 2, means.data()};
  EXPECT_EQ(calculateFlickering(&now, &before, &count, &state, &differences, 2, 3.0), 6u);
  EXPECT_EQ(means, (std::vector<double>{0, 1, 2, 3, 4, 5}));
  EXPECT_EQ(states.samples, (Bytes{0, 0, 0, 1, 1, 1}));
  EXPECT_EQ(switches.samples, (Bytes{0, 0, 0, 1, 1, 1}));
}

TEST(CalculateFlickering, doesNothing_withoutBlocks) {
  LumaFrame frame(8, 8, 200);
  LumaFrame black(8, 8);
  Bytes counts(4, 7);
  Bytes flags(4, 0);
  std::vector<double> means(4, 5.0);
  const Image now = frame.view();
  const Image before = black.view();
  for (auto [w, h] : {std::pair<uint64_t, uint64_t>{0, 4}, {4, 0}, {0, 0}}) {
    Image count{w, h, counts.data()};
    Image state{w, h, flags.data()};
    ImageDouble differences{w, h, means.data()};
    EXPECT_EQ(calculateFlickering(&now, &before, &count, &state, &differences, 8, 0.0111), 0u);
    EXPECT_EQ(counts, Bytes(4, 7));
    EXPECT_EQ(flags, Bytes(4, 0));
    EXPECT_EQ(means, std::vector<double>(4, 5.0));
  }
}

TEST(CompareElements, isSecondMinusFirst_ofUnsignedBytes) {
  const auto of = [](uint8_t a, uint8_t b) { return compareElements(&a, &b); };
  EXPECT_EQ(of(3, 200), 197);
  EXPECT_EQ(of(200, 3), -197);
  EXPECT_EQ(of(0, 255), 255);
  EXPECT_EQ(of(255, 0), -255);
  EXPECT_EQ(of(9, 9), 0);
}

TEST(CompareElements, sortsDescending) {
  Bytes values{3, 200, 0, 127, 128, 255};
  std::qsort(values.data(), values.size(), 1, compareElements);
  EXPECT_EQ(values, (Bytes{255, 200, 128, 127, 3, 0}));
}

TEST(Flickering, isZero_onAWideFrameThatStandsStill) {
  Stream stream(8 * 300, 8);
  const LumaFrame frame = texture(8 * 300, 8);
  for (int k = 1; k < 8; ++k) stream.show(frame, frame);
  EXPECT_EQ(stream.show(frame, frame), 0.0);
}

TEST(Flickering, followsEveryBlockOfAWideFrame) {
  // Of 130 blocks the 3 most active count, 130 * 0.03 = 3.9. The only ones that switch, 8 times
  // each, are at the right end: 24 / (3 * 8).
  LumaFrame changed = row(130);
  for (int block = 127; block < 130; ++block) changed.at(8 * block, 3) = 1;
  Stream stream(8 * 130, 8);
  for (int frame = 1; frame < 8; ++frame) {
    stream.show(frame % 2 == 1 ? changed : row(130), row(130));
  }
  EXPECT_EQ(stream.show(row(130), row(130)), 1.0);
}
