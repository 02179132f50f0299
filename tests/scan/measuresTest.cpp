// The measures beside the fifteen: against their twin, and against values computed by hand.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <set>
#include <string>
#include <vector>

#include "measureTwins.h"
#include "scan/measures/frameMeasures.h"
#include "support/frames.h"
#include "support/guardedBuffer.h"

namespace {

constexpr LumaRange VIDEO_RANGE = {};

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

void add(int difference, uint8_t* sample) {
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
      add((static_cast<int>(x) * acrossBy + static_cast<int>(y) * downBy) / 4, &plane->at(x, y));
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
      add(apart + (dice->isOneIn(16) ? dice->from(-1, 1) : 0), &plane->at(x, y));
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
        if (dice->isOneIn(flawed)) add(dice->from(0, 1), &plane->at(x, y));
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
          add(lift, &plane->at(x, y));
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
        for (uint64_t x = left; x < left + 8; ++x) add(lift, &plane->at(x, y));
      }
      if (dice->isOneIn(2)) add(dice->any({-1, 1}), &plane->at(left, top + 1));
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
        add(sign * by, &plane->at(left + place % 8, top + place / 8 % 4 * 2));
      }
      if (dice->isOneIn(4)) add(sign * 200, &plane->at(left + first, top + 3));
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
      for (uint64_t x = 0; x < plane->w; ++x) add(lift, &plane->at(x, line));
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

struct PlaneSize {
  uint64_t w;
  uint64_t h;
};

// A side at which something begins: blocks, the grid, groups of columns, what vectors hold.
uint64_t telling(uint64_t limit, MeasureDice* dice) {
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
      return {telling(300, dice), telling(140, dice)};
    case 3:
      return {telling(40, dice), telling(140, dice)};
    case 4:
      return {telling(40, dice), telling(40, dice)};
    default:
      return {telling(300, dice), telling(40, dice)};
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
  for (uint32_t round = 0; round < 1100 && !HasFailure(); ++round) {
    SCOPED_TRACE(round);
    MeasureDice dice(round);
    expectAsTwin(anySize(&dice), 3, &dice);
  }
}

TEST(Measures, areThoseOfTheirTwin_onLargeFrames) {
  uint32_t seed = 0;
  for (const PlaneSize size : {PlaneSize{1920, 1080}, {2300, 70}, {70, 1500}, {5000, 9}}) {
    MeasureDice dice(++seed);
    expectAsTwin(size, 2, &dice);
  }
}
