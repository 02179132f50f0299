// Twin of the exposure: the mean of the four darkest and the four brightest 8 x 8 blocks.
#include <algorithm>
#include <numeric>

#include "reference.h"

namespace reference {
namespace {

int blockSum(const Luma& frame, uint32_t x0, uint32_t y0) {
  int sum = 0;
  for (uint32_t y = y0; y < y0 + 8; ++y) {
    for (uint32_t x = x0; x < x0 + 8; ++x) sum += frame.samples[uint64_t{y} * frame.w + x];
  }
  return sum;
}

}  // namespace

double exposure(const Luma& frame) {
  // A block that ends exactly at the right or bottom edge does not count.
  std::vector<int> sums;
  for (uint32_t y = 0; y + 8 < frame.h; y += 8) {
    for (uint32_t x = 0; x + 8 < frame.w; x += 8) sums.push_back(blockSum(frame, x, y));
  }
  // Where there are fewer than four blocks, the extreme values stand in for the missing ones.
  std::vector<int> darkest = sums;
  std::vector<int> brightest = sums;
  darkest.insert(darkest.end(), 4, 8 * 8 * 255);
  brightest.insert(brightest.end(), 4, 0);
  std::sort(darkest.begin(), darkest.end());
  std::sort(brightest.rbegin(), brightest.rend());
  const int sum = std::accumulate(darkest.begin(), darkest.begin() + 4, 0) +
                  std::accumulate(brightest.begin(), brightest.begin() + 4, 0);
  return sum / 512.0;
}

}  // namespace reference
