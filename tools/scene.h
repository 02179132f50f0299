// A moving landscape made of integer noise, so that its bytes are the same on every machine.
#ifndef LUMAPROBE_TOOLS_SCENE_H
#define LUMAPROBE_TOOLS_SCENE_H

#include <cstddef>
#include <cstdint>
#include <vector>

// A luma plane: sample (x, y) is luma[y * w + x].
struct Frame {
  int w;
  int h;
  std::vector<uint8_t> luma;
};

inline uint8_t& at(Frame& frame, int x, int y) {
  return frame.luma[static_cast<size_t>(y) * static_cast<size_t>(frame.w) + static_cast<size_t>(x)];
}

inline uint8_t clampToByte(int value) {
  return static_cast<uint8_t>(value < 0 ? 0 : value > 255 ? 255 : value);
}

// Random looking, the same for the same arguments.
uint32_t randomBits(int x, int y, int time);

// The scene's luma at (x, y) of a picture of w x h, `time` frames after the start.
uint8_t pixel(int time, int x, int y, int w, int h);

Frame renderScene(int time, int w, int h);

#endif
