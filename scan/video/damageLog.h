// What a video's container and its decoder say is wrong while the video is read.
#ifndef LUMASCAN_DAMAGE_LOG_H
#define LUMASCAN_DAMAGE_LOG_H

#include <cstdint>
#include <mutex>
#include <string>
#include <vector>

#include "scan/video/ffmpeg.h"

struct DamageMessage {
  double time = 0.0;           // seconds from the start of the file: where it came; NaN: unknown
  bool isOfContainer = false;  // else of the decoder
  std::string text;
};

// A message of the container before it is known which packet it belongs to.
struct ContainerMessage {
  int64_t position;  // in the file: behind the damage
  int stream;        // its index; -1: of all
  int streamId;      // as the container has it, of transport streams the PID; -1: of all
  std::string text;
};

// Both may be written by the decoder's threads.
struct DamageLog {
  std::mutex mutex;
  std::vector<ContainerMessage> ofContainer;
  std::vector<std::string> ofDecoder;
  std::string unfinished;   // a line of the decoder that has no end yet
  std::string refusedSize;  // "WxH" of pictures that were too large for whoever looked into them
};

// From now on, what FFmpeg says about a container or by a decoder whose `opaque` is a log goes
// there, too, if it tells of damage: errors, packets that the container marks as damaged, and gaps
// in a transport stream. FFmpeg prints as before, except for what the scaler says.
void listenToFfmpeg();

// While one lives, what the parts of FFmpeg that read say on this thread without naming the
// container is of this one.
struct Listening {
  explicit Listening(AVFormatContext* container);
  ~Listening();
  Listening(const Listening&) = delete;
  Listening& operator=(const Listening&) = delete;
};

// What was said since the last call.
std::vector<ContainerMessage> takeContainerMessages(DamageLog* log);
std::vector<std::string> takeDecoderMessages(DamageLog* log);

#endif
