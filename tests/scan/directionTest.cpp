// Which way is worse: the indicators' real values of a damaged sequence lie beyond those of the
// clean one, in the direction in which the event's threshold looks.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <functional>
#include <set>

#include "driver/frameAnalysis.h"
#include "scan/events/eventDetection.h"
#include "support/lumaFrames.h"
#include "support/startAnew.h"

namespace {

constexpr int SIDE = 256;  // samples; one region of block loss
constexpr int LAST = 16;   // frame; flickering speaks with it, as every eighth comparison
constexpr double FPS = 25.0;

// 0 to levels - 1, without a pattern, from all three.
int grain(int t, int x, int y, int levels) {
  uint32_t bits = static_cast<uint32_t>((t * SIDE + y) * SIDE + x + 1) * 0x9e3779b1U;
  bits = (bits ^ bits >> 15) * 0x85ebca6bU;
  bits = (bits ^ bits >> 13) * 0xc2b2ae35U;
  return static_cast<int>((bits >> 16) % static_cast<uint32_t>(levels));
}

int clampedToByte(double value) {
  return static_cast<int>(std::clamp(value, 0.0, 255.0));
}

// Soft waves that move by two samples a frame, a bright square with hard edges and a little grain:
// 84 to 179.
int pixel(int t, int x, int y) {
  const double wave = 10 * std::sin((x + 2 * t) / 19.0) + 6 * std::sin((y + t) / 80.0);
  const int u = x + 2 * t;
  const bool isInSquare = u >= 90 && u < 180 && y >= 60 && y < 190;
  return clampedToByte(100 + wave + (isInSquare ? 60 : 0) + grain(t, x, y, 4));
}

LumaFrame clean(int t) {
  return frameOf(SIDE, SIDE, [t](int x, int y) { return pixel(t, x, y); });
}

// The mean of the (2 * radius + 1)^2 samples around each, up to the border.
LumaFrame smeared(LumaFrame source, int radius) {
  return frameOf(SIDE, SIDE, [&](int x, int y) {
    int sum = 0;
    int count = 0;
    for (int v = std::max(y - radius, 0); v <= std::min(y + radius, SIDE - 1); ++v) {
      for (int u = std::max(x - radius, 0); u <= std::min(x + radius, SIDE - 1); ++u, ++count)
        sum += source.at(u, v);
    }
    return sum / count;
  });
}

LumaFrame blockMeans(int t) {
  LumaFrame frame = clean(t);
  for (int y = 0; y < SIDE; y += 8) {
    for (int x = 0; x < SIDE; x += 8) {
      int sum = 0;
      for (int i = 0; i < 64; ++i) sum += frame.at(x + i % 8, y + i / 8);
      // A step of 1 inside the block, so that the ratio is not simply 0.
      fill(frame, x, y, 8, 8, sum / 64);
      fill(frame, x + 7, y, 1, 8, sum / 64 + 1);
    }
  }
  return frame;
}

LumaFrame withBars(int t, int x, int y, int w, int h) {
  LumaFrame frame(SIDE, SIDE, 16);
  LumaFrame picture = clean(t);
  for (int v = y; v < y + h; ++v) {
    for (int u = x; u < x + w; ++u) frame.at(u, v) = picture.at(u, v);
  }
  return frame;
}

LumaFrame withLostBlocks(int t) {
  LumaFrame frame = clean(t);
  for (int i = 0; i < 16; ++i) fill(frame, i * 16, (i * 7 + t) % 16 * 16, 16, 16, 0);
  return frame;
}

// A band that repeats its first sixteen columns. Grain keeps the rows below from repeating, too.
LumaFrame withRepeatedBand(int t) {
  return frameOf(SIDE, SIDE,
                 [t](int x, int y) { return pixel(t, y >= 64 && y < 80 ? x % 16 : x, y); });
}

LumaFrame scaled(int t, double gain, double offset) {
  return frameOf(SIDE, SIDE,
                 [=](int x, int y) { return clampedToByte(pixel(t, x, y) * gain + offset); });
}

struct Damage {
  const char* type;
  LumaFrame (*frame)(int t);
};

const std::vector<Damage> damages = {
    {"black", [](int) { return LumaFrame(SIDE, SIDE, 16); }},
    {"freeze", [](int) { return clean(0); }},
    {"letterbox", [](int t) { return withBars(t, 0, 32, SIDE, SIDE - 64); }},
    {"pillarbox", [](int t) { return withBars(t, 32, 0, SIDE - 64, SIDE); }},
    {"combing",
     [](int t) {
       return frameOf(SIDE, SIDE, [t](int x, int y) { return pixel(t + 4 * (y % 2), x, y); });
     }},
    {"block_loss", withLostBlocks},
    {"slice", withRepeatedBand},
    {"flicker", [](int t) { return clean(t / 2); }},
    {"over_exposure", [](int t) { return scaled(t, 1.0, 60.0); }},
    {"under_exposure", [](int t) { return scaled(t, 0.3, 10.0); }},
    {"low_contrast", [](int t) { return scaled(t, 0.2, 90.0); }},
    {"blockiness", blockMeans},
    {"blur", [](int t) { return smeared(clean(t), 4); }},
    {"noise",
     [](int t) {
       return frameOf(SIDE, SIDE, [t](int x, int y) {
         return clampedToByte(pixel(t, x, y) + grain(t + 100, x, y, 81) - 40);
       });
     }},
    {"scene_cut", [](int t) { return scaled(t, t < LAST ? 1.0 : -1.0, t < LAST ? 0.0 : 255.0); }},
};

// The last frame's values, of frames 0 to LAST.
IndicatorValues lastValues(const std::function<LumaFrame(int)>& frameAt) {
  Results = {};
  restartTemporalIndicators();
  FrameImages images = makeFrameImages(SIDE, SIDE);
  TemporalResults temporal = {};
  for (int t = 0; t <= LAST; ++t) {
    const LumaFrame frame = frameAt(t);
    std::copy(frame.samples.begin(), frame.samples.end(), images.current.data);
    analyseFrameSerially(0x7fff, FPS, t > 0, &images, &temporal);
    swapFrames(&images);
  }
  freeFrameImages(&images);
  return measuredValues(Results, temporal, 0x7fff, true, SIDE, SIDE);
}

}  // namespace

TEST(Directions, ofAllThresholdsAreThoseInWhichDamageMovesTheIndicator) {
  const IndicatorValues cleanValues = lastValues(clean);
  std::set<std::string> tested;
  for (const Damage& damage : damages) {
    const EventRule& rule = EVENT_RULES.at(eventTypeNamed(damage.type));
    const size_t indicator = indicatorNamed(rule.indicator);
    const double before = cleanValues.at(indicator);
    const double after = lastValues(damage.frame).at(indicator);
    // Further than any noise would move it.
    if (rule.direction == Direction::ABOVE) {
      EXPECT_GT(after, 1.3 * before) << rule.type;
    } else {
      EXPECT_LT(1.3 * after, before) << rule.type;
    }
    tested.insert(rule.type);
  }
  for (const EventRule& rule : EVENT_RULES) {
    EXPECT_EQ(tested.count(rule.type), rule.indicator == nullptr ? 0u : 1u) << rule.type;
  }
}
