// Slow, obvious twins of the fifteen indicators: what the numbers mean, written as plainly as
// possible and without any code of the analyser. The tests hold the analyser to them bit for bit.
#ifndef LUMAPROBE_TESTS_REFERENCE_H
#define LUMAPROBE_TESTS_REFERENCE_H

#include <array>
#include <cstdint>
#include <vector>

namespace reference {

// A luma plane: sample (x, y) is samples[y * w + x].
struct Luma {
  uint32_t w;
  uint32_t h;
  std::vector<uint8_t> samples;
};

double blockiness(const Luma& frame);
double blockToMOS(double blockiness);
double spatialActivity(const Luma& frame);
double letterbox(const Luma& frame);
double pillarbox(const Luma& frame);
double blockLoss(const Luma& frame);
double blur(const Luma& frame);
double blurToMOS(double blur);
bool blackout(const Luma& frame);  // both sides at least 8
double exposure(const Luma& frame);
double contrast(const Luma& frame);
double interlace(const Luma& frame);
double noise(const Luma& frame);

// Frames too small to measure give `before`, the value of the frame before.
double slice(const Luma& frame, double before);

double temporalActivity(const Luma& current, const Luma& previous);

// `still` is the length of the run of still frames, 0 at the start of a stream.
bool freezing(int32_t& still, bool blackout, double temporalActivity, double fps);

// What flickering remembers from one pair of frames to the next.
struct FlickeringState {
  uint32_t calls = 0;  // since the last period ended
  std::vector<bool> on;
  std::vector<uint8_t> switches;
};

double flickering(FlickeringState& state, const Luma& current, const Luma& previous);

}  // namespace reference

#endif
