// The measures beside the fifteen: against their twin, and against values computed by hand.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <set>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "measureTwins.h"
#include "scan/measures/frameMeasures.h"
#include "support/frames.h"
#include "support/guardedBuffer.h"
#include "support/specialValues.h"

namespace {

constexpr LumaRange VIDEO_RANGE = {};

// Sequences of three random frames. Fewer where that takes long, in sanitized programs.
#ifndef MEASURE_ROUNDS
#define MEASURE_ROUNDS 600
#endif

// ---- random sequences ---------------------------------------------------------------------------

class MeasureDice {
 public:
  explicit MeasureDice(uint32_t seed) : state_(seedRandom(seed)) {}

  // From `first` to `last`, both of them too.
  int from(int first, int last) {
    return first +
           static_cast<int>(nextRandom(&state_) % (static_cast<uint32_t>(last - first) + 1));
  }

  uint64_t below(uint64_t limit) { return nextRandom(&state_) % limit; }

  // Once in so many times.
  bool isOneIn(uint32_t times) { return nextRandom(&state_) % times == 0; }

  template <typename Value>
  Value any(std::initializer_list<Value> values) {
    return values.begin()[nextRandom(&state_) % values.size()];
  }

 private:
  uint64_t state_;
};

struct Plane {
  uint64_t w;
  uint64_t h;
  std::vector<uint8_t> samples;

  uint8_t& at(uint64_t x, uint64_t y) { return samples[y * w + x]; }
  Image image() { return makeImage(w, h, samples.data()); }
};

Plane flatPlane(uint64_t w, uint64_t h, int level) {
  return {w, h, flatFrame(w, h, static_cast<uint8_t>(level))};
}

uint8_t cutToLevels(int value) {
  return static_cast<uint8_t>(std::clamp(value, 0, 255));
}

void addLevel(int difference, uint8_t* sample) {
  *sample = cutToLevels(*sample + difference);
}

// Levels at which something begins or ends.
int nearAThreshold(LumaRange range, MeasureDice* dice) {
  return std::clamp(
      dice->any({range.black, range.black + 24, range.white - 5, range.white}) + dice->from(-1, 1),
      0, 255);
}

void fillWith(int level, int swing, Plane* plane, MeasureDice* dice) {
  for (uint8_t& sample : plane->samples) sample = cutToLevels(level + dice->from(-swing, swing));
}

void addRamp(Plane* plane, MeasureDice* dice) {
  const int acrossBy = dice->from(-9, 9);
  const int downBy = dice->from(-9, 9);
  for (uint64_t y = 0; y < plane->h; ++y) {
    for (uint64_t x = 0; x < plane->w; ++x) {
      addLevel((static_cast<int>(x) * acrossBy + static_cast<int>(y) * downBy) / 4,
               &plane->at(x, y));
    }
  }
}

// Bars around the picture, not everywhere of one level, and a logo on them.
void addBars(LumaRange range, Plane* plane, MeasureDice* dice) {
  const int level = range.black + dice->from(0, 26);
  const int swing = dice->any({0, 1, 9, 10, 11, 14});
  const auto brightTenths = static_cast<uint32_t>(dice->any({0, 0, 1, 2, 3, 4}));
  const uint64_t top = dice->below(plane->h / 2 + 2);
  const uint64_t bottom = plane->h - std::min(plane->h, dice->below(plane->h / 2 + 2));
  const uint64_t left = dice->below(plane->w / 2 + 2);
  const uint64_t right = plane->w - std::min(plane->w, dice->below(plane->w / 2 + 2));
  for (uint64_t y = 0; y < plane->h; ++y) {
    for (uint64_t x = 0; x < plane->w; ++x) {
      if (y >= top && y < bottom && x >= left && x < right) continue;
      const bool isBright = dice->below(10) < brightTenths;
      plane->at(x, y) = cutToLevels(isBright ? 200 : level + dice->from(-swing, swing));
    }
  }
  if (!dice->isOneIn(3)) return;
  const uint64_t logoX = dice->below(plane->w);
  const uint64_t logoY = dice->below(plane->h);
  for (uint64_t y = logoY; y < std::min(plane->h, logoY + 6); ++y) {
    for (uint64_t x = logoX; x < std::min(plane->w, logoX + 9); ++x) plane->at(x, y) = 220;
  }
}

// Two fields that are some levels apart, in some of the columns.
void addFields(Plane* plane, MeasureDice* dice) {
  const int apart = dice->any({-30, -9, -8, -7, 7, 8, 9, 30});
  const auto columns = static_cast<uint32_t>(dice->any({1, 2, 5, 8}));
  for (uint64_t x = 0; x < plane->w; ++x) {
    if (!dice->isOneIn(columns)) continue;
    for (uint64_t y = 1; y < plane->h; y += 2) {
      addLevel(apart + (dice->isOneIn(16) ? dice->from(-1, 1) : 0), &plane->at(x, y));
    }
  }
}

// Lines that repeat the one above but for a few samples.
void holdLines(Plane* plane, MeasureDice* dice) {
  const auto flawed = static_cast<uint32_t>(dice->any({1, 2, 4, 8, 1000}));
  const auto isNew = static_cast<uint32_t>(dice->any({2, 6, 30}));
  const int swing = dice->any({1, 2, 4, 9, 80});
  for (uint64_t y = 0; y < plane->h; ++y) {
    const bool isHeld = y > 0 && !dice->isOneIn(isNew);
    for (uint64_t x = 0; x < plane->w; ++x) {
      if (!isHeld) {
        plane->at(x, y) = cutToLevels(120 + dice->from(-swing, swing));
      } else {
        plane->at(x, y) = plane->at(x, y - 1);
        if (dice->isOneIn(flawed)) addLevel(dice->from(0, 1), &plane->at(x, y));
      }
    }
  }
}

// Some blocks of the 16 x 16 grid differ from the rest by a level each.
void liftBlocks(Plane* plane, MeasureDice* dice) {
  const auto rare = static_cast<uint32_t>(dice->any({1, 2, 4}));
  const uint64_t offset = dice->isOneIn(4) ? 1 : 0;  // off the grid
  for (uint64_t top = offset; top < plane->h; top += 16) {
    for (uint64_t left = 0; left < plane->w; left += 16) {
      if (!dice->isOneIn(rare)) continue;
      const int lift = dice->any({-40, -8, -7, 4, 7, 8, 9, 16, 31, 32, 90});
      for (uint64_t y = top; y < std::min(plane->h, top + 16); ++y) {
        for (uint64_t x = left; x < std::min(plane->w, left + 16); ++x) {
          addLevel(lift, &plane->at(x, y));
        }
      }
    }
  }
}

// Some whole 8 x 8 blocks rise or fall by about a level in their mean.
void liftMeans(Plane* plane, MeasureDice* dice) {
  for (uint64_t top = 0; top + 8 <= plane->h; top += 8) {
    for (uint64_t left = 0; left + 8 <= plane->w; left += 8) {
      if (dice->isOneIn(2)) continue;
      const int lift = dice->any({-1, 1});
      for (uint64_t y = top; y < top + 8; ++y) {
        for (uint64_t x = left; x < left + 8; ++x) addLevel(lift, &plane->at(x, y));
      }
      if (dice->isOneIn(2)) addLevel(dice->any({-1, 1}), &plane->at(left, top + 1));
    }
  }
}

// Differences whose sums are about those from which a block is changed.
void changeSamples(Plane* plane, MeasureDice* dice) {
  for (uint64_t top = 0; top + 8 <= plane->h; top += 8) {
    for (uint64_t left = 0; left + 8 <= plane->w; left += 8) {
      const int by = dice->any({1, 2, 6, 7, 8, 40});
      const int most = std::min(7, by);
      const int samples = dice->any({7, 8, 9, 31, 32, 33}) / most + dice->from(0, 1);
      const int sign = dice->any({-1, 1});
      const uint64_t first = dice->below(8);
      for (int i = 0; i < std::min(samples, 32); ++i) {
        const uint64_t place = first + static_cast<uint64_t>(i);
        addLevel(sign * by, &plane->at(left + place % 8, top + place / 8 % 4 * 2));
      }
      if (dice->isOneIn(4)) addLevel(sign * 200, &plane->at(left + first, top + 3));
    }
  }
}

// Some lines show what is at their left.
void displaceLines(Plane* plane, MeasureDice* dice) {
  const uint64_t by = dice->below(plane->w);
  const uint64_t first = dice->below(plane->h);
  const uint64_t end = std::min(plane->h, first + 1 + dice->below(9));
  for (uint64_t y = first; y < end; ++y) {
    const auto line = plane->samples.begin() + static_cast<std::ptrdiff_t>(y * plane->w);
    std::rotate(line, line + static_cast<std::ptrdiff_t>(by),
                line + static_cast<std::ptrdiff_t>(plane->w));
  }
}

// A few lines stand out, most of them by a little.
void liftLines(Plane* plane, MeasureDice* dice) {
  for (uint64_t y = dice->below(6); y < plane->h; y += 1 + dice->below(9)) {
    const int lift = dice->any({-60, -2, 1, 3, 20});
    const bool isStep = dice->isOneIn(2);  // down to the last line
    for (uint64_t line = y; line < (isStep ? plane->h : y + 1); ++line) {
      for (uint64_t x = 0; x < plane->w; ++x) addLevel(lift, &plane->at(x, line));
    }
  }
}

void doubleContrast(Plane* plane) {
  const int middle = plane->samples[0];
  for (uint8_t& sample : plane->samples) sample = cutToLevels(2 * sample - middle);
}

Plane anyPlane(uint64_t w, uint64_t h, LumaRange range, MeasureDice* dice) {
  Plane plane = flatPlane(w, h, 0);
  switch (dice->from(0, 9)) {
    case 0:
      fillWith(nearAThreshold(range, dice), 0, &plane, dice);
      break;
    case 1:
      fillWith(128, 128, &plane, dice);
      break;
    case 2:
      fillWith(nearAThreshold(range, dice), dice->any({1, 2, 7}), &plane, dice);
      break;
    case 3:
      for (uint8_t& sample : plane.samples) sample = dice->isOneIn(2) ? 0 : 255;
      break;
    case 4:
      holdLines(&plane, dice);
      break;
    default:
      fillWith(dice->from(30, 200), dice->any({0, 0, 1, 2, 12}), &plane, dice);
  }
  if (dice->isOneIn(3)) addRamp(&plane, dice);
  if (dice->isOneIn(4)) addFields(&plane, dice);
  if (dice->isOneIn(3)) liftBlocks(&plane, dice);
  if (dice->isOneIn(3)) liftLines(&plane, dice);
  if (dice->isOneIn(3)) addBars(range, &plane, dice);
  return plane;
}

// What follows a frame: the same, something else, or one of the changes that something counts.
Plane planeBehind(const Plane& before, LumaRange range, MeasureDice* dice) {
  Plane plane = before;
  switch (dice->from(0, 9)) {
    case 0:
      break;
    case 1:
      plane = anyPlane(before.w, before.h, range, dice);
      break;
    case 2:
      liftMeans(&plane, dice);
      break;
    case 3:
      changeSamples(&plane, dice);
      break;
    case 4:
      addFields(&plane, dice);
      break;
    case 5:
      displaceLines(&plane, dice);
      break;
    case 6:
      liftLines(&plane, dice);
      break;
    case 7:
      doubleContrast(&plane);
      break;
    default:
      liftBlocks(&plane, dice);
  }
  return plane;
}

void fillPart(uint64_t left, uint64_t top, uint64_t w, uint64_t h, int level, Plane* plane) {
  for (uint64_t y = top; y < top + h; ++y) {
    for (uint64_t x = left; x < left + w; ++x) plane->at(x, y) = static_cast<uint8_t>(level);
  }
}

struct PlaneSize {
  uint64_t w;
  uint64_t h;
};

// A side at which something begins: blocks, the grid, groups of columns, what vectors hold.
uint64_t tellingSide(uint64_t limit, MeasureDice* dice) {
  const uint64_t edge = dice->any<uint64_t>(
      {2, 8, 16, 24, 32, 48, 64, 65, 80, 97, 128, 144, 160, 161, 193, 225, 289});
  return std::min(limit, edge - 1 + dice->below(3));
}

PlaneSize anySize(MeasureDice* dice) {
  switch (dice->from(0, 7)) {
    case 0:
      return {1 + dice->below(300), 1 + dice->below(20)};
    case 1:
      return {1 + dice->below(40), 1 + dice->below(140)};
    case 2:
      return {tellingSide(300, dice), tellingSide(140, dice)};
    case 3:
      return {tellingSide(40, dice), tellingSide(140, dice)};
    case 4:
      return {tellingSide(40, dice), tellingSide(40, dice)};
    case 5:
      return {dice->isOneIn(4) ? 480 + dice->below(600) : tellingSide(300, dice),
              1 + dice->below(40)};
    default:
      return {tellingSide(300, dice), tellingSide(40, dice)};
  }
}

bool areSameValues(double a, double b) {
  return a == b || (std::isnan(a) && std::isnan(b));
}

void expectMeasures(const MeasureValues& values, const MeasureValues& expected) {
  for (size_t i = 0; i < MEASURES; ++i) {
    EXPECT_TRUE(areSameValues(values[i], expected[i]))
        << MEASURE_TABLE[i].name << " is " << values[i] << ", not " << expected[i];
  }
}

// Takes a sequence of random frames through the program and its twin.
void expectAsTwin(PlaneSize size, int frames, MeasureDice* dice) {
  const LumaRange range = dice->isOneIn(3) ? FULL_RANGE : VIDEO_RANGE;
  FrameMeasures measures;
  Plane before = {};
  for (int frame = 0; frame < frames; ++frame) {
    Plane plane =
        frame == 0 ? anyPlane(size.w, size.h, range, dice) : planeBehind(before, range, dice);
    const Image image = plane.image();
    const Image imageBefore = before.image();
    const Image* const previous = frame == 0 ? nullptr : &imageBefore;
    SCOPED_TRACE(std::to_string(size.w) + " x " + std::to_string(size.h) + ", frame " +
                 std::to_string(frame));
    expectMeasures(measures.of(image, previous, range), slowMeasures(image, previous, range));
    if (testing::Test::HasFailure()) return;
    before = std::move(plane);
  }
}

}  // namespace

TEST(Measures, areThoseOfTheirTwin_onRandomFrames) {
  for (uint32_t round = 0; round < MEASURE_ROUNDS && !HasFailure(); ++round) {
    SCOPED_TRACE(round);
    MeasureDice dice(round);
    expectAsTwin(anySize(&dice), 3, &dice);
  }
}

TEST(Measures, areThoseOfTheirTwin_onWideAndHighFrames) {
  uint32_t seed = 0;
  for (const PlaneSize size : {PlaneSize{2300, 70}, {70, 900}, {5000, 9}, {1031, 33}}) {
    MeasureDice dice(++seed);
    expectAsTwin(size, 2, &dice);
  }
}

TEST(Measures, areThoseOfTheirTwin_onALargeFrame) {
  Plane before = {1920, 1080, narrowNoise(1920, 1080, 40, 12, 1)};
  Plane plane = before;
  MeasureDice dice(1);
  displaceLines(&plane, &dice);
  fillPart(500, 16, 700, 300, 233, &plane);
  const Image imageBefore = before.image();
  const Image image = plane.image();
  FrameMeasures measures;
  measures.of(imageBefore, nullptr, VIDEO_RANGE);
  expectMeasures(measures.of(image, &imageBefore, VIDEO_RANGE),
                 slowMeasures(image, &imageBefore, VIDEO_RANGE));
}

// ---- by hand ------------------------------------------------------------------------------------

namespace {

double firstValue(Measure measure, Plane frame, LumaRange range = VIDEO_RANGE) {
  return FrameMeasures().of(frame.image(), nullptr, range)[measure];
}

double nextValue(Measure measure, Plane before, Plane frame) {
  FrameMeasures measures;
  const Image imageBefore = before.image();
  measures.of(imageBefore, nullptr, VIDEO_RANGE);
  return measures.of(frame.image(), &imageBefore, VIDEO_RANGE)[measure];
}

void fillLine(uint64_t y, int level, Plane* plane) {
  fillPart(0, y, plane->w, 1, level, plane);
}

Plane transposed(Plane plane) {
  Plane result = flatPlane(plane.h, plane.w, 0);
  for (uint64_t y = 0; y < plane.h; ++y) {
    for (uint64_t x = 0; x < plane.w; ++x) result.at(y, x) = plane.at(x, y);
  }
  return result;
}

Plane upsideDown(Plane plane) {
  Plane result = plane;
  for (uint64_t y = 0; y < plane.h; ++y) {
    for (uint64_t x = 0; x < plane.w; ++x) result.at(x, y) = plane.at(x, plane.h - 1 - y);
  }
  return result;
}

// The names of those that have no value.
std::set<std::string> unmeasured(uint64_t w, uint64_t h, bool isFirst) {
  FrameMeasures measures;
  Plane plane = flatPlane(w, h, 50);
  const Image image = plane.image();
  MeasureValues values = measures.of(image, nullptr, VIDEO_RANGE);
  if (!isFirst) values = measures.of(image, &image, VIDEO_RANGE);
  std::set<std::string> names;
  for (size_t i = 0; i < MEASURES; ++i) {
    if (std::isnan(values[i])) names.insert(MEASURE_TABLE[i].name);
  }
  return names;
}

// Blocks one above the other, each of one level.
Plane pileOfBlocks(const std::vector<int>& levels) {
  Plane plane = flatPlane(8, 8 * levels.size(), 0);
  for (size_t i = 0; i < levels.size(); ++i) fillPart(0, 8 * i, 8, 8, levels[i], &plane);
  return plane;
}

// `counted` blocks of levels `step`, 2 * `step` ... in a mixed order, and others between them.
Plane pileWithOthersBetween(size_t counted, size_t step) {
  std::vector<int> levels;
  for (size_t i = 0; i < counted; ++i) {
    if (i > 0) levels.push_back(i % 2 == 0 ? 0 : 255);
    levels.push_back(static_cast<int>(step * (1 + i * 11 % counted)));
  }
  return pileOfBlocks(levels);
}

// A frame of 10 x 12 with 3 dark lines at the top.
Plane withDarkTop(int level = 20) {
  Plane plane = flatPlane(10, 12, 200);
  fillPart(0, 0, 10, 3, level, &plane);
  return plane;
}

// Lines that alternate between `low` and `low` + `detail`.
Plane stripes(uint64_t w, uint64_t h, int low, int detail) {
  Plane plane = flatPlane(w, h, low);
  for (uint64_t x = 1; x < w; x += 2) fillPart(x, 0, 1, h, low + detail, &plane);
  return plane;
}

// One block whose lines 0 and 2 are at `even` and lines 1 and 3 at `odd`, in so many columns.
Plane combedBlock(int even, int odd, uint64_t columns) {
  Plane plane = flatPlane(8, 8, even);
  for (const uint64_t y : {1U, 3U}) fillPart(0, y, columns, 1, odd, &plane);
  return plane;
}

// One edge of so many levels, in line 16 of four blocks.
Plane withGridEdge(int step, uint64_t columns = 8) {
  Plane plane = flatPlane(32, 32, 100);
  fillPart(0, 16, columns, 16, 100 + step, &plane);
  return plane;
}

}  // namespace

TEST(Measures, areNotThere_whereNothingIsBefore) {
  EXPECT_EQ(unmeasured(40, 40, true),
            (std::set<std::string>{"unchanged_blocks", "changed_blocks", "brighter_blocks",
                                   "darker_blocks", "combed_blocks", "line_step", "grid_edges"}));
  EXPECT_EQ(unmeasured(40, 40, false), std::set<std::string>());
}

TEST(Measures, areNotThere_whereFramesAreTooSmall) {
  const std::set<std::string> grid = {"grid_edges"};
  std::set<std::string> blocks = {"brightness",    "low_level",        "middle_level",
                                  "high_level",    "dark_share",       "dark_blocks",
                                  "bright_share",  "unchanged_blocks", "changed_blocks",
                                  "combed_blocks", "brighter_blocks",  "darker_blocks"};
  blocks.insert("grid_edges");
  std::set<std::string> bars = blocks;
  bars.insert({"bar_top", "bar_bottom", "bar_left", "bar_right"});
  EXPECT_EQ(unmeasured(16, 32, false), std::set<std::string>());
  EXPECT_EQ(unmeasured(15, 32, false), grid);
  EXPECT_EQ(unmeasured(16, 31, false), grid);
  EXPECT_EQ(unmeasured(8, 8, false), grid);
  EXPECT_EQ(unmeasured(7, 300, false), blocks);
  EXPECT_EQ(unmeasured(300, 7, false), blocks);
  EXPECT_EQ(unmeasured(2, 2, false), blocks);
  EXPECT_EQ(unmeasured(1, 2, false), bars);
  EXPECT_EQ(unmeasured(2, 1, false), bars);
  EXPECT_EQ(unmeasured(1, 1, false), bars);
}

TEST(Measures, haveTheMeanOfWholeBlocksAsBrightness) {
  // Two whole blocks; what is left of them counts for nothing.
  Plane plane = flatPlane(23, 15, 255);
  fillPart(0, 0, 8, 8, 10, &plane);
  fillPart(8, 0, 8, 8, 13, &plane);
  EXPECT_EQ(firstValue(BRIGHTNESS, plane), 11.5);
  plane.at(15, 7) = 14;
  EXPECT_EQ(firstValue(BRIGHTNESS, plane), 11.5 + 1.0 / 128);
}

TEST(Measures, haveTheBrightnessOfMoreSamplesThanA32BitSumHolds) {
  // 8192 * 4320 * 255 is 2.1 times 2^32.
  EXPECT_EQ(firstValue(BRIGHTNESS, flatPlane(8192, 4320, 255)), 255.0);
}

TEST(Measures, havePercentilesOfEveryOtherBlock) {
  const auto expectLevels = [](const Plane& plane, double low, double middle, double high) {
    EXPECT_EQ(firstValue(LOW_LEVEL, plane), low);
    EXPECT_EQ(firstValue(MIDDLE_LEVEL, plane), middle);
    EXPECT_EQ(firstValue(HIGH_LEVEL, plane), high);
  };
  expectLevels(pileWithOthersBetween(100, 2), 10, 100, 190);  // the 5th, the 50th, the 95th
  expectLevels(pileWithOthersBetween(21, 10), 20, 110, 200);  // 1.05, 10.5 and 19.95 of them
  expectLevels(pileWithOthersBetween(20, 10), 10, 100, 190);  // 1, 10 and 19
  expectLevels(pileWithOthersBetween(12, 10), 10, 60, 120);   // 0.6, 6 and 11.4
  // A last block that is between two others does not count.
  expectLevels(pileOfBlocks({30, 0}), 30, 30, 30);
}

TEST(Measures, haveEveryOtherBlockInTheOrderOfReading) {
  // Three in a row: the first and the last of the upper row, the middle one of the lower.
  Plane plane = flatPlane(24, 16, 250);
  fillPart(0, 0, 8, 8, 50, &plane);
  fillPart(16, 0, 8, 8, 70, &plane);
  fillPart(8, 8, 8, 8, 60, &plane);
  EXPECT_EQ(firstValue(LOW_LEVEL, plane), 50.0);
  EXPECT_EQ(firstValue(MIDDLE_LEVEL, plane), 60.0);
  EXPECT_EQ(firstValue(HIGH_LEVEL, plane), 70.0);
}

TEST(Measures, havePercentilesInQuarters) {
  // 15 samples more by a level are 15 / 64 of one, 16 a quarter, 63 less than a whole one.
  Plane plane = flatPlane(8, 8, 255);
  EXPECT_EQ(firstValue(HIGH_LEVEL, plane), 255.0);
  plane.at(7, 7) = 254;
  EXPECT_EQ(firstValue(HIGH_LEVEL, plane), 254.75);
  for (const auto& [samples, level] :
       {std::pair(15, 90.0), {16, 90.25}, {47, 90.5}, {48, 90.75}, {63, 90.75}, {64, 91.0}}) {
    plane = flatPlane(8, 8, 90);
    std::fill_n(plane.samples.begin(), samples, uint8_t{91});
    for (const Measure measure : {LOW_LEVEL, MIDDLE_LEVEL, HIGH_LEVEL}) {
      EXPECT_EQ(firstValue(measure, plane), level) << samples;
    }
  }
}

TEST(Measures, haveDarkSamplesOfEvenLines) {
  // Of 32 samples a block; behind the two blocks nothing counts.
  Plane plane = flatPlane(17, 9, 0);
  fillPart(0, 0, 16, 8, 41, &plane);
  EXPECT_EQ(firstValue(DARK_SHARE, plane), 0.0);
  for (const uint64_t y : {1U, 3U, 5U, 7U}) fillPart(0, y, 16, 1, 40, &plane);
  EXPECT_EQ(firstValue(DARK_SHARE, plane), 0.0);
  for (const uint64_t y : {0U, 2U, 4U, 6U}) plane.at(y * 2, y) = 40;
  EXPECT_EQ(firstValue(DARK_SHARE, plane), 4.0 / 64);
  EXPECT_EQ(firstValue(DARK_SHARE, flatPlane(8, 8, 24), FULL_RANGE), 1.0);
  EXPECT_EQ(firstValue(DARK_SHARE, flatPlane(8, 8, 25), FULL_RANGE), 0.0);
}

TEST(Measures, haveBlocksAsDark_inWhichOneSampleIsNot) {
  Plane plane = flatPlane(24, 8, 40);
  EXPECT_EQ(firstValue(DARK_BLOCKS, plane), 1.0);
  plane.at(0, 6) = 255;
  EXPECT_EQ(firstValue(DARK_BLOCKS, plane), 1.0);
  plane.at(7, 1) = 255;  // not a line that is looked at
  EXPECT_EQ(firstValue(DARK_BLOCKS, plane), 1.0);
  plane.at(7, 0) = 41;
  EXPECT_EQ(firstValue(DARK_BLOCKS, plane), 2.0 / 3);
  plane.at(8, 2) = 41;  // one each in two blocks
  plane.at(16, 4) = 41;
  EXPECT_EQ(firstValue(DARK_BLOCKS, plane), 2.0 / 3);
}

TEST(Measures, haveBrightSamplesOfTwoLinesABlock) {
  Plane plane = flatPlane(17, 9, 255);
  fillPart(0, 0, 16, 8, 229, &plane);
  EXPECT_EQ(firstValue(BRIGHT_SHARE, plane), 0.0);
  for (const uint64_t y : {1U, 2U, 3U, 5U, 6U, 7U}) fillPart(0, y, 16, 1, 230, &plane);
  EXPECT_EQ(firstValue(BRIGHT_SHARE, plane), 0.0);
  plane.at(3, 0) = 230;
  plane.at(15, 4) = 230;
  EXPECT_EQ(firstValue(BRIGHT_SHARE, plane), 2.0 / 32);
  EXPECT_EQ(firstValue(BRIGHT_SHARE, flatPlane(8, 8, 250), FULL_RANGE), 1.0);
  EXPECT_EQ(firstValue(BRIGHT_SHARE, flatPlane(8, 8, 249), FULL_RANGE), 0.0);
}

TEST(Measures, haveABarAtEachEdge) {
  const auto expectBars = [](const Plane& plane, const std::vector<double>& expected) {
    std::vector<double> shares;
    for (const Measure bar : {BAR_TOP, BAR_BOTTOM, BAR_LEFT, BAR_RIGHT}) {
      shares.push_back(firstValue(bar, plane));
    }
    EXPECT_EQ(shares, expected);
  };
  const Plane plane = withDarkTop();
  expectBars(plane, {3.0 / 12, 0, 0, 0});
  expectBars(upsideDown(plane), {0, 3.0 / 12, 0, 0});
  expectBars(transposed(plane), {0, 0, 3.0 / 12, 0});
  expectBars(transposed(upsideDown(plane)), {0, 0, 0, 3.0 / 12});
}

TEST(Measures, haveBarsOfHalfTheFrameAtMost) {
  for (const Measure bar : {BAR_TOP, BAR_BOTTOM}) {
    EXPECT_EQ(firstValue(bar, flatPlane(9, 5, 16)), 2.0 / 5);
    EXPECT_EQ(firstValue(bar, flatPlane(2, 2, 16)), 1.0 / 2);
    EXPECT_EQ(firstValue(bar, flatPlane(3, 66000, 16)), 1.0 / 2);
    EXPECT_EQ(firstValue(bar, flatPlane(66000, 3, 16)), 1.0 / 3);
  }
  for (const Measure bar : {BAR_LEFT, BAR_RIGHT}) {
    EXPECT_EQ(firstValue(bar, flatPlane(5, 9, 16)), 2.0 / 5);
    EXPECT_EQ(firstValue(bar, flatPlane(3, 66000, 16)), 1.0 / 3);
    EXPECT_EQ(firstValue(bar, flatPlane(66000, 3, 16)), 1.0 / 2);
  }
}

TEST(Measures, haveNoBarOfAHigherLevel) {
  // The mean of two lines, rounded down: with 9 of 10 samples 41 it is 40.9.
  Plane plane = withDarkTop(41);
  EXPECT_EQ(firstValue(BAR_TOP, plane), 0.0);
  EXPECT_EQ(firstValue(BAR_LEFT, transposed(plane)), 0.0);
  plane.at(4, 1) = 40;
  plane.at(5, 2) = 0;  // not of the first two lines
  EXPECT_EQ(firstValue(BAR_TOP, plane), 3.0 / 12);
  EXPECT_EQ(firstValue(BAR_LEFT, transposed(plane)), 3.0 / 12);
  EXPECT_EQ(firstValue(BAR_TOP, withDarkTop(24), FULL_RANGE), 3.0 / 12);
  EXPECT_EQ(firstValue(BAR_TOP, withDarkTop(25), FULL_RANGE), 0.0);
}

TEST(Measures, haveBarsOfLinesMostOfWhichIsNearTheirLevel) {
  // The fourth line and level 20: 10 levels away is near, 11 is not.
  for (const auto& [level, lines] : {std::pair(30, 4), {31, 3}, {10, 4}, {9, 3}}) {
    Plane plane = withDarkTop();
    fillLine(3, level, &plane);
    EXPECT_EQ(firstValue(BAR_TOP, plane), lines / 12.0) << level;
    EXPECT_EQ(firstValue(BAR_BOTTOM, upsideDown(plane)), lines / 12.0) << level;
    EXPECT_EQ(firstValue(BAR_LEFT, transposed(plane)), lines / 12.0) << level;
    EXPECT_EQ(firstValue(BAR_RIGHT, transposed(upsideDown(plane))), lines / 12.0) << level;
  }
  // 7 of 10 samples are enough, 6 are not; of 11 it takes 8.
  for (const auto& [w, near, lines] :
       {std::tuple(10U, 7U, 4), {10U, 6U, 3}, {11U, 8U, 4}, {11U, 7U, 3}}) {
    Plane plane = flatPlane(w, 12, 200);
    fillPart(0, 0, w, 3, 20, &plane);
    fillPart(0, 3, near, 1, 20, &plane);
    EXPECT_EQ(firstValue(BAR_TOP, plane), lines / 12.0) << near << " of " << w;
    EXPECT_EQ(firstValue(BAR_BOTTOM, upsideDown(plane)), lines / 12.0) << near << " of " << w;
    EXPECT_EQ(firstValue(BAR_LEFT, transposed(plane)), lines / 12.0) << near << " of " << w;
    EXPECT_EQ(firstValue(BAR_RIGHT, transposed(upsideDown(plane))), lines / 12.0) << near;
  }
}

TEST(Measures, haveBarsNearLevelZero_thatNothingBrightBelongsTo) {
  // Levels do not go round: 250 to 255 are not 10 levels below 4.
  for (const int level : {0, 4, 10}) {
    for (const int other : {245, 250, 255}) {
      Plane plane = withDarkTop(level);
      fillPart(0, 2, 6, 1, other, &plane);
      EXPECT_EQ(firstValue(BAR_TOP, plane), 2.0 / 12) << level << ' ' << other;
      EXPECT_EQ(firstValue(BAR_RIGHT, transposed(upsideDown(plane))), 2.0 / 12) << level;
    }
  }
}

TEST(Measures, haveBarsThatEndAtTheirFirstOtherLine) {
  Plane plane = withDarkTop();
  fillLine(4, 20, &plane);
  EXPECT_EQ(firstValue(BAR_TOP, plane), 3.0 / 12);
  // Lines 0 and 1 at 10 and 40 have a mean of 25, to which neither is near.
  fillLine(0, 10, &plane);
  fillLine(1, 40, &plane);
  EXPECT_EQ(firstValue(BAR_TOP, plane), 0.0);
}

TEST(Measures, haveTheLongestRunOfHeldLines) {
  // Lines 1 to 3 and 5 to 9 repeat the one above, line 4 is 9 levels higher: of 10 lines 5.
  Plane plane = stripes(33, 10, 100, 20);
  for (uint64_t y = 4; y < 10; ++y) {
    for (uint64_t x = 0; x < 33; ++x) addLevel(9, &plane.at(x, y));
  }
  EXPECT_EQ(firstValue(HELD_LINES, plane), 5.0 / 10);
  EXPECT_EQ(firstValue(HELD_LINES, upsideDown(plane)), 5.0 / 10);
  EXPECT_EQ(firstValue(HELD_LINES, stripes(33, 2, 100, 20)), 1.0 / 2);
  EXPECT_EQ(firstValue(HELD_LINES, stripes(33, 1, 100, 20)), 0.0);
}

TEST(Measures, haveHeldLinesThatDifferByALevelASampleAtMost) {
  // All 32 samples of line 1 are a level higher, one of them by two; their detail is 32 * 80.
  Plane plane = stripes(33, 2, 100, 80);
  for (uint64_t x = 0; x < 32; ++x) addLevel(1, &plane.at(x, 1));
  EXPECT_EQ(firstValue(HELD_LINES, plane), 0.5);
  plane.at(32, 1) = 255;  // only the detail has this column
  EXPECT_EQ(firstValue(HELD_LINES, plane), 0.5);
  addLevel(1, &plane.at(7, 1));
  EXPECT_EQ(firstValue(HELD_LINES, plane), 0.0);
}

TEST(Measures, haveHeldLinesThatDifferByAnEighthOfTheirDetailAtMost) {
  // Line 1 has a detail of 32 * 5 = 160, of which an eighth is 20. What is raised changes nothing
  // of it but at the left end.
  Plane plane = stripes(33, 2, 100, 5);
  for (uint64_t x = 0; x < 20; ++x) addLevel(1, &plane.at(x, 0));
  EXPECT_EQ(firstValue(HELD_LINES, plane), 0.5);
  addLevel(1, &plane.at(20, 0));
  EXPECT_EQ(firstValue(HELD_LINES, plane), 0.0);
  // 160 - 1: an eighth is 19 now.
  plane = stripes(33, 2, 100, 5);
  plane.at(32, 1) = 101;
  for (uint64_t x = 0; x < 19; ++x) addLevel(1, &plane.at(x, 0));
  EXPECT_EQ(firstValue(HELD_LINES, plane), 0.5);
  addLevel(1, &plane.at(20, 0));
  EXPECT_EQ(firstValue(HELD_LINES, plane), 0.0);
}

TEST(Measures, haveHeldLinesOfTwoLevelsOfDetailASample) {
  Plane plane = stripes(33, 2, 100, 2);
  EXPECT_EQ(firstValue(HELD_LINES, plane), 0.5);
  plane.at(32, 1) = 101;
  EXPECT_EQ(firstValue(HELD_LINES, plane), 0.0);
  // That of the line itself, not of the one above.
  EXPECT_EQ(firstValue(HELD_LINES, upsideDown(plane)), 0.5);
}

TEST(Measures, haveLinesOfTheColumnsThatAreSummedOver) {
  // Whether line 1, which is another one in this column alone, still repeats line 0.
  const auto isSummed = [](uint64_t w, uint64_t column) {
    Plane plane = stripes(w, 2, 0, 3);
    addLevel(200, &plane.at(column, 1));
    return firstValue(HELD_LINES, plane) == 0.0;
  };
  for (const uint64_t w : {33U, 127U}) {
    for (uint64_t x = 0; x < w; ++x) EXPECT_EQ(isSummed(w, x), x < 32) << w << ' ' << x;
  }
  for (const uint64_t w : {128U, 224U, 225U}) {
    for (uint64_t x = 0; x < w; ++x) {
      const bool isInGroup = (x >= 64 && x < 96) || (x >= 192 && x < 224 && w == 225);
      EXPECT_EQ(isSummed(w, x), isInGroup) << w << ' ' << x;
    }
  }
  EXPECT_EQ(firstValue(HELD_LINES, stripes(32, 2, 0, 100)), 0.0);
}

TEST(Measures, haveTheStepOfALineThatStandsOut) {
  // Line 4 of 8 and all below it, 10 levels higher.
  const Plane flat = flatPlane(33, 8, 100);
  Plane plane = flat;
  fillPart(0, 4, 33, 4, 110, &plane);
  EXPECT_EQ(nextValue(LINE_STEP, flat, plane), 10.0);
  EXPECT_EQ(nextValue(LINE_STEP, plane, flat), 0.0);
  // Half of the samples, one of them by a level more.
  plane = flat;
  fillPart(0, 4, 16, 4, 110, &plane);
  fillPart(3, 4, 1, 4, 111, &plane);
  EXPECT_EQ(nextValue(LINE_STEP, flat, plane), 161.0 / 32);
  EXPECT_EQ(nextValue(LINE_STEP, flatPlane(33, 8, 0),
                      [] {
                        Plane most = flatPlane(33, 8, 0);
                        fillPart(0, 4, 33, 4, 255, &most);
                        return most;
                      }()),
            255.0);
}

TEST(Measures, haveStepsOfTheLinesFromTheFifthToTheFourthLast) {
  const Plane flat = flatPlane(33, 12, 100);
  for (uint64_t y = 1; y < 12; ++y) {
    Plane plane = flat;
    fillPart(0, y, 33, 12 - y, 110, &plane);
    EXPECT_EQ(nextValue(LINE_STEP, flat, plane), y >= 4 && y <= 8 ? 10.0 : 0.0) << y;
  }
  // Seven lines have no such line.
  Plane plane = flatPlane(33, 7, 100);
  fillPart(0, 4, 33, 3, 110, &plane);
  EXPECT_EQ(nextValue(LINE_STEP, flatPlane(33, 7, 100), plane), 0.0);
}

TEST(Measures, haveTheStepThatStandsOutMost) {
  // Two lines of 10 levels a sample, one of which has a level more in one sample.
  const Plane flat = flatPlane(33, 24, 100);
  for (const uint64_t most : {6U, 16U}) {
    Plane plane = flat;
    fillPart(0, 6, 33, 10, 110, &plane);
    fillPart(0, 16, 33, 8, 120, &plane);
    for (uint64_t y = most; y < 24; ++y) addLevel(1, &plane.at(5, y));
    EXPECT_EQ(nextValue(LINE_STEP, flat, plane), 321.0 / 32) << most;
  }
}

TEST(Measures, haveStepsBeyondThoseOfThreeLinesOnEitherSide) {
  const Plane flat = flatPlane(33, 24, 100);
  for (uint64_t y = 2; y < 23; ++y) {
    if (y == 12) continue;
    // Line 12 steps by 30, line y by 20, which itself stands out from all but line 12.
    Plane plane = flat;
    fillPart(0, 12, 33, 12, 130, &plane);
    for (uint64_t line = y; line < 24; ++line) {
      for (uint64_t x = 0; x < 33; ++x) addLevel(20, &plane.at(x, line));
    }
    const bool isNear = y >= 9 && y <= 15;
    EXPECT_EQ(nextValue(LINE_STEP, flat, plane), isNear ? 10.0 : 30.0) << y;
  }
}

TEST(Measures, haveStepsBeyondThoseBefore) {
  // A step of 30 in line 12, where the frame before has one of 20 in line y.
  Plane plane = flatPlane(33, 24, 100);
  fillPart(0, 12, 33, 12, 130, &plane);
  for (uint64_t y = 1; y < 24; ++y) {
    Plane before = flatPlane(33, 24, 100);
    fillPart(0, y, 33, 24 - y, 120, &before);
    const bool isNear = y >= 11 && y <= 13;
    EXPECT_EQ(nextValue(LINE_STEP, before, plane), isNear ? 10.0 : 30.0) << y;
  }
  EXPECT_EQ(nextValue(LINE_STEP, plane, plane), 0.0);
}

TEST(Measures, haveNoStepsOfLines_whereNoGroupOfColumnsIs) {
  Plane plane = flatPlane(32, 24, 100);
  fillPart(0, 12, 32, 12, 130, &plane);
  EXPECT_EQ(nextValue(LINE_STEP, flatPlane(32, 24, 100), plane), 0.0);
}

TEST(Measures, haveBlocksThatStayOrChange) {
  // `full` samples that count as 7 each, and `rest` levels; 17 x 9 has two blocks.
  const auto expectShares = [](int full, int rest, double unchanged, double changed) {
    const Plane before = flatPlane(17, 9, 100);
    for (const int sign : {-1, 1}) {
      Plane plane = before;
      for (int i = 0; i < full; ++i) {
        addLevel(sign * (7 + 10 * i),
                 &plane.at(static_cast<uint64_t>(i), static_cast<uint64_t>(2 * (i % 4))));
      }
      addLevel(sign * rest, &plane.at(7, 6));
      EXPECT_EQ(nextValue(UNCHANGED_BLOCKS, before, plane), unchanged) << full << ' ' << rest;
      EXPECT_EQ(nextValue(CHANGED_BLOCKS, before, plane), changed) << full << ' ' << rest;
    }
  };
  expectShares(0, 0, 1.0, 0.0);
  expectShares(1, 0, 1.0, 0.0);  // 7
  expectShares(0, 90, 1.0, 0.0);
  expectShares(1, 1, 0.5, 0.0);  // 8
  expectShares(4, 3, 0.5, 0.0);  // 31
  expectShares(4, 4, 0.5, 0.5);  // 32
}

TEST(Measures, haveChangesOfEvenLines) {
  const Plane before = flatPlane(17, 9, 100);
  Plane plane = before;
  for (const uint64_t y : {1U, 3U, 5U, 7U, 8U}) fillLine(y, 200, &plane);
  fillPart(16, 0, 1, 9, 200, &plane);
  EXPECT_EQ(nextValue(UNCHANGED_BLOCKS, before, plane), 1.0);
  EXPECT_EQ(nextValue(CHANGED_BLOCKS, before, plane), 0.0);
  // A level each in all 32 of the other samples.
  for (const uint64_t y : {0U, 2U, 4U, 6U}) fillPart(0, y, 8, 1, 101, &plane);
  EXPECT_EQ(nextValue(UNCHANGED_BLOCKS, before, plane), 0.5);
  EXPECT_EQ(nextValue(CHANGED_BLOCKS, before, plane), 0.5);
}

TEST(Measures, haveBlocksThatGetBrighterOrDarker) {
  // A level in the mean is 64 in the sum; three blocks and what is left.
  const Plane low = flatPlane(25, 8, 100);
  Plane high = low;
  fillPart(8, 0, 8, 8, 101, &high);
  high.at(0, 1) = 163;
  high.at(24, 0) = 255;
  EXPECT_EQ(nextValue(BRIGHTER_BLOCKS, low, high), 1.0 / 3);
  EXPECT_EQ(nextValue(DARKER_BLOCKS, low, high), 0.0);
  EXPECT_EQ(nextValue(DARKER_BLOCKS, high, low), 1.0 / 3);
  EXPECT_EQ(nextValue(BRIGHTER_BLOCKS, high, low), 0.0);
  high.at(0, 1) = 164;
  EXPECT_EQ(nextValue(BRIGHTER_BLOCKS, low, high), 2.0 / 3);
  EXPECT_EQ(nextValue(DARKER_BLOCKS, high, low), 2.0 / 3);
}

TEST(Measures, haveBlocksAsCombed_inWhichTwoColumnsAre) {
  const Plane flat = flatPlane(8, 8, 100);
  for (const auto& [odd, columns, combed] : {std::tuple(92, 2U, 1.0),
                                             {108, 2U, 1.0},
                                             {92, 1U, 0.0},
                                             {108, 1U, 0.0},
                                             {92, 8U, 1.0},
                                             {93, 8U, 0.0},
                                             {107, 8U, 0.0}}) {
    EXPECT_EQ(nextValue(COMBED_BLOCKS, flat, combedBlock(100, odd, columns)), combed)
        << odd << ' ' << columns;
  }
  // Of two such columns one is below, one above.
  Plane plane = flat;
  for (const uint64_t y : {1U, 3U}) {
    plane.at(0, y) = 92;
    plane.at(7, y) = 108;
  }
  EXPECT_EQ(nextValue(COMBED_BLOCKS, flat, plane), 1.0);
}

TEST(Measures, haveColumnsAsCombed_whoseEvenSamplesAreBothBeyondBothOthers) {
  const Plane before = flatPlane(8, 8, 200);  // all of it moves
  for (uint64_t line = 0; line < 4; ++line) {
    Plane plane = combedBlock(100, 92, 2);
    EXPECT_EQ(nextValue(COMBED_BLOCKS, before, plane), 1.0);
    // One sample of one of the columns, a level nearer to the others.
    addLevel(line % 2 == 0 ? -1 : 1, &plane.at(1, line));
    EXPECT_EQ(nextValue(COMBED_BLOCKS, before, plane), 0.0) << line;
    plane = combedBlock(100, 108, 2);
    addLevel(line % 2 == 0 ? 1 : -1, &plane.at(1, line));
    EXPECT_EQ(nextValue(COMBED_BLOCKS, before, plane), 0.0) << line;
  }
  // Lines 4 to 7 count for nothing.
  Plane below = flatPlane(8, 8, 100);
  for (const uint64_t y : {5U, 7U}) fillLine(y, 200, &below);
  EXPECT_EQ(nextValue(COMBED_BLOCKS, before, below), 0.0);
}

TEST(Measures, haveColumnsAsCombed_thatMoveInTheirMiddle) {
  const Plane plane = combedBlock(100, 80, 2);
  EXPECT_EQ(nextValue(COMBED_BLOCKS, plane, plane), 0.0);
  for (uint64_t line = 0; line < 4; ++line) {
    for (const int by : {-8, -7, 7, 8}) {
      Plane before = plane;
      for (const uint64_t x : {0U, 1U}) addLevel(by, &before.at(x, line));
      const bool isMoving = (line == 1 || line == 2) && std::abs(by) == 8;
      EXPECT_EQ(nextValue(COMBED_BLOCKS, before, plane), isMoving ? 1.0 : 0.0) << line << ' ' << by;
    }
  }
}

TEST(Measures, haveEdgesOfTheGrid) {
  // Four blocks, of which the two lower ones have an edge; strong from 8 * 8 on.
  const Plane flat = flatPlane(32, 32, 100);
  EXPECT_EQ(nextValue(GRID_EDGES, flat, withGridEdge(8)), 0.5);
  EXPECT_EQ(nextValue(GRID_EDGES, flat, withGridEdge(-8)), 0.5);
  EXPECT_EQ(nextValue(GRID_EDGES, flat, withGridEdge(8, 32)), 1.0);
  EXPECT_EQ(nextValue(GRID_EDGES, flat, withGridEdge(8, 7)), 0.0);
  EXPECT_EQ(nextValue(GRID_EDGES, flat, withGridEdge(7, 16)), 0.0);
  // Of the first eight columns alone; each counts as 31 at most.
  Plane plane = flat;
  fillPart(8, 16, 8, 16, 200, &plane);
  EXPECT_EQ(nextValue(GRID_EDGES, flat, plane), 0.0);
  EXPECT_EQ(nextValue(GRID_EDGES, flat, withGridEdge(33, 2)), 0.0);   // 62
  EXPECT_EQ(nextValue(GRID_EDGES, flat, withGridEdge(22, 3)), 0.5);   // 66
  EXPECT_EQ(nextValue(GRID_EDGES, flat, withGridEdge(100, 3)), 0.5);  // 93
}

TEST(Measures, haveEdgesOnTheGridAlone) {
  const Plane flat = flatPlane(32, 48, 100);
  for (uint64_t y = 1; y < 48; ++y) {
    Plane plane = flat;
    fillPart(0, y, 32, 48 - y, 120, &plane);
    EXPECT_EQ(nextValue(GRID_EDGES, flat, plane), y == 16 || y == 32 ? 0.5 : 0.0) << y;
  }
  // What is left at the right and below.
  const Plane odd = flatPlane(31, 47, 100);
  Plane plane = odd;
  fillPart(16, 16, 15, 31, 120, &plane);
  fillPart(0, 32, 31, 15, 120, &plane);
  EXPECT_EQ(nextValue(GRID_EDGES, odd, plane), 0.0);
  fillPart(0, 16, 16, 16, 120, &plane);
  EXPECT_EQ(nextValue(GRID_EDGES, odd, plane), 1.0);
}

TEST(Measures, haveEdgesBeyondTheLinesBesideThem) {
  // 8 columns of 20 across, and one line above or below 11 or 12: 9 or 8 times 8 remain.
  const Plane flat = flatPlane(16, 32, 100);
  for (const uint64_t beside : {15U, 17U}) {
    for (const auto& [step, edges] : {std::pair(12, 1.0), {13, 0.0}}) {
      Plane plane = flat;
      fillPart(0, 16, 16, 16, 120, &plane);
      for (uint64_t y = beside; y < 32; ++y) {
        for (uint64_t x = 0; x < 16; ++x) addLevel(step, &plane.at(x, y));
      }
      EXPECT_EQ(nextValue(GRID_EDGES, flat, plane), edges) << beside << ' ' << step;
      // The larger one of both, not their sum.
      const uint64_t other = 32 - beside;
      for (uint64_t y = other; y < 32; ++y) {
        for (uint64_t x = 0; x < 16; ++x) addLevel(5, &plane.at(x, y));
      }
      EXPECT_EQ(nextValue(GRID_EDGES, flat, plane), edges) << beside << ' ' << step;
    }
  }
}

TEST(Measures, haveEdgesThatAreTwiceAsStrongAsBefore) {
  EXPECT_EQ(nextValue(GRID_EDGES, withGridEdge(10), withGridEdge(20)), 0.5);
  EXPECT_EQ(nextValue(GRID_EDGES, withGridEdge(10), withGridEdge(19)), 0.0);
  EXPECT_EQ(nextValue(GRID_EDGES, withGridEdge(11), withGridEdge(20)), 0.0);
  EXPECT_EQ(nextValue(GRID_EDGES, withGridEdge(4), withGridEdge(8)), 0.5);
  // At most 31 levels of 8 columns are 248, which is twice as much as 4 * 15 + 4 * 16.
  Plane uneven = withGridEdge(15);
  fillPart(4, 16, 4, 16, 116, &uneven);
  EXPECT_EQ(nextValue(GRID_EDGES, uneven, withGridEdge(100)), 0.5);
  fillPart(0, 16, 1, 16, 116, &uneven);
  EXPECT_EQ(nextValue(GRID_EDGES, uneven, withGridEdge(100)), 0.0);
  // Before, the line below steps more: a strength of -80 does no harm.
  Plane before = flatPlane(32, 32, 100);
  fillPart(0, 17, 8, 15, 110, &before);
  EXPECT_EQ(nextValue(GRID_EDGES, before, withGridEdge(8)), 0.5);
}

TEST(Measures, areOfThatFrameBefore_whichWasGivenLastTime) {
  // Brighter by a level each, then the same.
  FrameMeasures measures;
  Plane planes[] = {flatPlane(8, 8, 50), flatPlane(8, 8, 51), flatPlane(8, 8, 52),
                    flatPlane(8, 8, 52), flatPlane(8, 8, 50)};
  const double brighter[] = {UNDEFINED, 1, 1, 0, 0};
  const double darker[] = {UNDEFINED, 0, 0, 0, 1};
  Image before = {};
  for (size_t i = 0; i < 5; ++i) {
    const Image image = planes[i].image();
    const MeasureValues values = measures.of(image, i == 0 ? nullptr : &before, VIDEO_RANGE);
    EXPECT_TRUE(areSameValues(values[BRIGHTER_BLOCKS], brighter[i])) << i;
    EXPECT_TRUE(areSameValues(values[DARKER_BLOCKS], darker[i])) << i;
    before = image;
  }
}

TEST(Measures, areReadWithinTheFrames) {
  MeasureDice dice(1);
  for (int round = 0; round < 150; ++round) {
    const PlaneSize size = anySize(&dice);
    const Plane before = anyPlane(size.w, size.h, VIDEO_RANGE, &dice);
    const Plane plane = planeBehind(before, VIDEO_RANGE, &dice);
    SCOPED_TRACE(std::to_string(size.w) + " x " + std::to_string(size.h));
    for (const auto alloc : {allocAfterGuard, allocBeforeGuard}) {
      GuardedBuffer buffers[] = {alloc(plane.samples.size()), alloc(plane.samples.size())};
      std::copy(before.samples.begin(), before.samples.end(), buffers[0].data);
      std::copy(plane.samples.begin(), plane.samples.end(), buffers[1].data);
      const Image imageBefore = makeImage(size.w, size.h, buffers[0].data);
      const Image image = makeImage(size.w, size.h, buffers[1].data);
      FrameMeasures measures;
      measures.of(imageBefore, nullptr, VIDEO_RANGE);
      expectMeasures(measures.of(image, &imageBefore, VIDEO_RANGE),
                     slowMeasures(image, &imageBefore, VIDEO_RANGE));
      for (GuardedBuffer& buffer : buffers) freeGuardedBuffer(&buffer);
    }
  }
}

TEST(MeasureTable, findsItsNames) {
  for (size_t i = 0; i < MEASURES; ++i) EXPECT_EQ(measureNamed(MEASURE_TABLE[i].name), i);
  for (const char* const name : {"", "Brightness", "brightnes", "blur"}) {
    EXPECT_EQ(measureNamed(name), MEASURES) << name;
  }
  EXPECT_EQ(measureNamed("brightness"), BRIGHTNESS);
  EXPECT_EQ(measureNamed("bar_right"), BAR_RIGHT);
  EXPECT_EQ(measureNamed("grid_edges"), GRID_EDGES);
  for (const double value : NO_MEASURES) EXPECT_TRUE(std::isnan(value));
}
