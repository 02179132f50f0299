// The energy of a frame: a square for each sample, summed in long runs.
#ifndef LUMAPROBE_ENERGY_H
#define LUMAPROBE_ENERGY_H

#include <algorithm>
#include <cstdint>

// Samples whose squared differences, 65025 at most for every second one, are summed in 31 bits.
constexpr int64_t ENERGY_CHUNK = 65536;

// Sum of the squares of all samples of a plane of w x h, both at least 1, but those of row 0 and
// column 0, which have none. `squareOf(p)` is that of one sample, `squaresOf(first, n)` the sum of
// n samples from `first` on, whatever row they are in: rows are summed in strips, so that there is
// a rest of less than a vector only once in a strip, and what column 0 has added on the way is
// taken away again.
template <typename Square, typename Squares>
int64_t energyOf(const uint8_t* data, int64_t w, int64_t h, Square squareOf, Squares squaresOf) {
  constexpr int64_t STRIP = 16;  // rows
  int64_t energy = 0;
  for (int64_t y = 1; y < h; y += STRIP) {
    const uint8_t* const strip = data + y * w;
    const int64_t rows = std::min(STRIP, h - y);
    energy += squaresOf(strip + 1, rows * w - 1);
    for (int64_t r = 1; r < rows; ++r) energy -= squareOf(strip + r * w);
  }
  return energy;
}

#endif
