// What a file says about itself.
#ifndef LUMASCAN_STREAM_FACTS_H
#define LUMASCAN_STREAM_FACTS_H

#include <cstdint>
#include <string>
#include <vector>

#include "scan/numbers/unknown.h"
#include "scan/video/audioFacts.h"
#include "scan/video/videoReader.h"

// Container, codec and what follows.
struct StreamFacts {
  std::string container;  // as FFmpeg names it, like the codec and the pixel format
  std::string codec;
  std::string profile;  // of the codec; empty: unknown
  std::string pixelFormat;
  int64_t width = 0;  // samples
  int64_t height = 0;
  double frameRate = UNKNOWN;         // frames per second, on average; NaN: unknown
  std::string frameRateFraction;      // "30000/1001"; empty: unknown
  std::string timeBase;               // seconds, as a fraction: "1/12800"
  double declaredDuration = UNKNOWN;  // seconds; NaN: the container does not say
  int64_t declaredFrames = 0;         // 0: the container does not say
  std::string fieldOrder;             // "progressive", "tt", "bb", "tb", "bt" or "unknown"
  std::string colorRange;
  std::string colorTransfer;
  double rotation = 0.0;          // degrees clockwise by which a player turns the picture
  std::string sampleAspectRatio;  // "1:1"
  int64_t bitRate = 0;            // bits per second of the video; 0: the file does not say
  int64_t containerBitRate = 0;   // and of all streams together
  std::string startTimecode;      // "10:00:00:00"; empty: the container has none
  std::vector<AudioFacts> audio;
};

StreamFacts streamFacts(const VideoReader& reader);

// What a person should know before the values are compared with those of other files.
std::vector<std::string> streamWarnings(const VideoReader& reader);

#endif
