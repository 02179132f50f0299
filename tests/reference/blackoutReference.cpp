// Twin of the blackout: are the means of all whole 8 x 8 blocks less than 4 levels apart?
#include <algorithm>

#include "reference.h"

namespace reference {
namespace {

double blockMean(const Luma& frame, uint32_t x0, uint32_t y0) {
  int sum = 0;
  for (uint32_t y = y0; y < y0 + 8; ++y) {
    for (uint32_t x = x0; x < x0 + 8; ++x) sum += frame.samples[uint64_t{y} * frame.w + x];
  }
  return sum / 64.0;
}

}  // namespace

bool blackout(const Luma& frame) {
  std::vector<double> means;
  for (uint32_t y = 0; y + 8 <= frame.h; y += 8) {
    for (uint32_t x = 0; x + 8 <= frame.w; x += 8) means.push_back(blockMean(frame, x, y));
  }
  std::sort(means.begin(), means.end());
  return means.back() - means.front() < 4.0;
}

}  // namespace reference
