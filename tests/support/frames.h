// Test frames, the same on every machine, and image records over their samples.
#ifndef LUMAPROBE_TESTS_FRAMES_H
#define LUMAPROBE_TESTS_FRAMES_H

#include <cstdint>
#include <vector>

#include "definitions/definitions.h"

// A generator of evenly spread 32-bit numbers; its state is never 0.
uint64_t seedRandom(uint32_t seed);
uint32_t nextRandom(uint64_t* state);

std::vector<uint8_t> flatFrame(uint64_t w, uint64_t h, uint8_t level);

// The column or row number, times `step`, modulo 256.
std::vector<uint8_t> horizontalRamp(uint64_t w, uint64_t h, uint32_t step = 1);
std::vector<uint8_t> verticalRamp(uint64_t w, uint64_t h, uint32_t step = 1);

// Squares of `block` samples a side, `first` in the upper left corner.
std::vector<uint8_t> checkerboard(uint64_t w, uint64_t h, uint64_t block, uint8_t first = 0,
                                  uint8_t second = 255);

// Samples of all values, of 0 and 255 only, and of level - range .. level + range cut to 0 .. 255.
std::vector<uint8_t> noiseFrame(uint64_t w, uint64_t h, uint32_t seed);
std::vector<uint8_t> extremeNoise(uint64_t w, uint64_t h, uint32_t seed);
std::vector<uint8_t> narrowNoise(uint64_t w, uint64_t h, uint8_t level, uint8_t range,
                                 uint32_t seed);

// Records over samples that stay with the vector.
Image imageOver(std::vector<uint8_t>& samples, uint64_t w, uint64_t h);
Image32 imageOver(std::vector<int32_t>& samples, uint64_t w, uint64_t h);
ImageDouble imageOver(std::vector<double>& samples, uint64_t w, uint64_t h);

struct FrameSize {
  uint64_t w;
  uint64_t h;
};

// Small and awkward sizes, all pairs of the sides 1 .. 40 that lie at and around block borders.
std::vector<FrameSize> oddSizes();

#endif
