// Makers of test frames.
#include "support/frames.h"

#include <algorithm>

// The low half keeps the state from being 0.
uint64_t seedRandom(uint32_t seed) {
  return uint64_t(seed) << 32 | 0x9E3779B9u;
}

// xorshift64*, of which the upper half is the better one.
uint32_t nextRandom(uint64_t* state) {
  *state ^= *state >> 12;
  *state ^= *state << 25;
  *state ^= *state >> 27;
  return static_cast<uint32_t>(*state * 0x2545F4914F6CDD1Du >> 32);
}

// value(x, y) for every sample.
template <typename Value>
static std::vector<uint8_t> frameOf(uint64_t w, uint64_t h, Value value) {
  std::vector<uint8_t> frame;
  frame.reserve(w * h);
  for (uint64_t y = 0; y < h; y++)
    for (uint64_t x = 0; x < w; x++) frame.push_back(static_cast<uint8_t>(value(x, y)));
  return frame;
}

std::vector<uint8_t> flatFrame(uint64_t w, uint64_t h, uint8_t level) {
  return std::vector<uint8_t>(w * h, level);
}

std::vector<uint8_t> horizontalRamp(uint64_t w, uint64_t h, uint32_t step) {
  return frameOf(w, h, [&](uint64_t x, uint64_t) { return x * step; });
}

std::vector<uint8_t> verticalRamp(uint64_t w, uint64_t h, uint32_t step) {
  return frameOf(w, h, [&](uint64_t, uint64_t y) { return y * step; });
}

std::vector<uint8_t> checkerboard(uint64_t w, uint64_t h, uint64_t block, uint8_t first,
                                  uint8_t second) {
  return frameOf(w, h, [&](uint64_t x, uint64_t y) {
    return (x / block + y / block) % 2 == 0 ? first : second;
  });
}

std::vector<uint8_t> noiseFrame(uint64_t w, uint64_t h, uint32_t seed) {
  uint64_t state = seedRandom(seed);
  return frameOf(w, h, [&](uint64_t, uint64_t) { return nextRandom(&state) >> 24; });
}

std::vector<uint8_t> extremeNoise(uint64_t w, uint64_t h, uint32_t seed) {
  uint64_t state = seedRandom(seed);
  return frameOf(w, h, [&](uint64_t, uint64_t) { return nextRandom(&state) >> 31 ? 255 : 0; });
}

std::vector<uint8_t> narrowNoise(uint64_t w, uint64_t h, uint8_t level, uint8_t range,
                                 uint32_t seed) {
  uint64_t state = seedRandom(seed);
  return frameOf(w, h, [&](uint64_t, uint64_t) {
    const uint32_t spread = 2u * range + 1u;
    return std::clamp(level - range + static_cast<int>(nextRandom(&state) % spread), 0, 255);
  });
}

Image imageOver(std::vector<uint8_t>& samples, uint64_t w, uint64_t h) {
  return {w, h, samples.data()};
}

Image32 imageOver(std::vector<int32_t>& samples, uint64_t w, uint64_t h) {
  return {w, h, samples.data()};
}

ImageDouble imageOver(std::vector<double>& samples, uint64_t w, uint64_t h) {
  return {w, h, samples.data()};
}

std::vector<FrameSize> oddSizes() {
  const uint64_t sides[] = {1, 2, 3, 5, 7, 8, 9, 15, 16, 17, 31, 33, 39, 40};
  std::vector<FrameSize> sizes;
  for (uint64_t w : sides)
    for (uint64_t h : sides) sizes.push_back({w, h});
  return sizes;
}
