#include "driver/videoInput.h"

#include <sys/types.h>

#include <limits>

static_assert(sizeof(off_t) == 8, "files pass 2 GiB: compile with _FILE_OFFSET_BITS=64");

bool isFrameSizeSupported(int32_t width, int32_t height) {
  constexpr int64_t LARGEST = std::numeric_limits<int32_t>::max();
  return width > 0 && height > 0 && width <= LARGEST / 3 / height;
}

VideoInput makeVideoInput(FILE* stream, int32_t width, int32_t height) {
  const int32_t lumaSize = width * height;
  return {stream, lumaSize, lumaSize * 3 / 2};
}

int32_t countFrames(const VideoInput* input) {
  fseeko(input->stream, 0, SEEK_END);
  return static_cast<int32_t>(ftello(input->stream) / input->frameSize);
}

size_t readLuma(const VideoInput* input, int64_t k, Image* luma) {
  fseeko(input->stream, k * input->frameSize, SEEK_SET);
  return std::fread(luma->data, 1, static_cast<size_t>(input->lumaSize), input->stream);
}
