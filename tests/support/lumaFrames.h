// Small luma frames, and ways to run a spatial indicator on one.
#ifndef LUMAPROBE_TESTS_LUMA_FRAMES_H
#define LUMAPROBE_TESTS_LUMA_FRAMES_H

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <vector>

#include "definitions/definitions.h"
#include "indicators/results.h"

// Owns exactly w * h samples, so that a sanitizer sees every read beside them.
struct LumaFrame {
  int w;
  int h;
  std::vector<uint8_t> samples;

  LumaFrame(int width, int height, int value = 0)
      : w(width),
        h(height),
        samples(static_cast<size_t>(width) * static_cast<size_t>(height),
                static_cast<uint8_t>(value)) {}

  uint8_t& at(int x, int y) {
    return samples[static_cast<size_t>(y) * static_cast<size_t>(w) + static_cast<size_t>(x)];
  }

  Image view() { return {static_cast<uint64_t>(w), static_cast<uint64_t>(h), samples.data()}; }
};

// The frame whose sample (x, y) is the low byte of value(x, y).
template <typename Value>
LumaFrame frameOf(int w, int h, Value value) {
  LumaFrame frame(w, h);
  for (int y = 0; y < h; ++y) {
    for (int x = 0; x < w; ++x) frame.at(x, y) = static_cast<uint8_t>(value(x, y));
  }
  return frame;
}

// A frame in which every sample differs from its neighbours, and from those 8 or 16 away.
inline LumaFrame texture(int w, int h) {
  return frameOf(w, h, [](int x, int y) { return 7 * x + 13 * y; });
}

inline void fill(LumaFrame& frame, int x0, int y0, int w, int h, int value) {
  for (int y = y0; y < y0 + h; ++y) {
    for (int x = x0; x < x0 + w; ++x) frame.at(x, y) = static_cast<uint8_t>(value);
  }
}

using Indicator = void* (*)(void*);

// What an indicator stores in its field, which holds 77 before.
template <typename Field>
Field measure(Indicator indicator, LumaFrame frame, Field FrameResults::*field) {
  Results.*field = Field{77};
  Image luma = frame.view();
  indicator(&luma);
  return Results.*field;
}

// What an indicator returns, as the 32-bit status it stands for.
inline int32_t statusOf(Indicator indicator, LumaFrame frame) {
  Image luma = frame.view();
  return static_cast<int32_t>(reinterpret_cast<intptr_t>(indicator(&luma)));
}

inline bool returnsNull(Indicator indicator, LumaFrame frame) {
  Image luma = frame.view();
  return indicator(&luma) == nullptr;
}

// Expects that an indicator changes its own field, no other, and neither the frame nor its record.
template <typename Field>
void expectWritesOnly(Indicator indicator, LumaFrame frame, Field FrameResults::*own) {
  const FrameResults before{-2, -3, -4, -5, -6, -7, -8, -9, -10, -11, -12, 77};
  const std::vector<uint8_t> samples = frame.samples;
  Image luma = frame.view();

  Results = before;
  indicator(&luma);

  EXPECT_NE(Results.*own, before.*own);
  Results.*own = before.*own;
  EXPECT_EQ(Results.blockiness, before.blockiness);
  EXPECT_EQ(Results.spatialActivity, before.spatialActivity);
  EXPECT_EQ(Results.letterbox, before.letterbox);
  EXPECT_EQ(Results.pillarbox, before.pillarbox);
  EXPECT_EQ(Results.blockLoss, before.blockLoss);
  EXPECT_EQ(Results.blur, before.blur);
  EXPECT_EQ(Results.exposure, before.exposure);
  EXPECT_EQ(Results.interlace, before.interlace);
  EXPECT_EQ(Results.noise, before.noise);
  EXPECT_EQ(Results.slice, before.slice);
  EXPECT_EQ(Results.contrast, before.contrast);
  EXPECT_EQ(Results.blackout, before.blackout);
  EXPECT_EQ(frame.samples, samples);
  EXPECT_EQ(luma.w, static_cast<uint64_t>(frame.w));
  EXPECT_EQ(luma.h, static_cast<uint64_t>(frame.h));
  EXPECT_EQ(luma.data, frame.samples.data());
}

#endif
