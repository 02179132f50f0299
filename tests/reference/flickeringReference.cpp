// Twin of the flickering: how often the 3 % most restless 8 x 8 blocks switch between changing and
// standing still, once every eight pairs of frames.
#include <algorithm>
#include <cstdlib>
#include <functional>
#include <numeric>

#include "reference.h"

namespace reference {
namespace {

double meanChange(const Luma& current, const Luma& previous, uint32_t x0, uint32_t y0) {
  int sum = 0;
  for (uint32_t y = y0; y < y0 + 8; ++y) {
    for (uint32_t x = x0; x < x0 + 8; ++x) {
      const uint64_t i = uint64_t{y} * current.w + x;
      sum += std::abs(current.samples[i] - previous.samples[i]);
    }
  }
  return sum / 64.0;
}

}  // namespace

double flickering(FlickeringState& state, const Luma& current, const Luma& previous) {
  const uint32_t columns = current.w / 8;
  const uint32_t blocks = columns * (current.h / 8);
  state.on.resize(blocks);
  state.switches.resize(blocks);

  for (uint32_t i = 0; i < blocks; ++i) {
    const double change = meanChange(current, previous, i % columns * 8, i / columns * 8);
    const bool turnsOn = !state.on[i] && change >= 0.0111;
    const bool turnsOff = state.on[i] && change == 0.0;
    if (turnsOn || turnsOff) {
      state.on[i] = turnsOn;
      ++state.switches[i];
    }
  }
  if (++state.calls != 8) return -1.0;

  std::vector<uint8_t> busiest = state.switches;
  std::sort(busiest.begin(), busiest.end(), std::greater<>());
  const auto chosen = static_cast<uint32_t>(blocks * 0.03);
  const uint32_t switches = std::accumulate(busiest.begin(), busiest.begin() + chosen, uint32_t{0});
  const volatile double frames = chosen * 8;  // 0 / 0 below 34 blocks, divided at run time
  state = {};
  return switches / frames;
}

}  // namespace reference
