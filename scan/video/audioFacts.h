// What a file says about the sound beside its video.
#ifndef LUMASCAN_AUDIO_FACTS_H
#define LUMASCAN_AUDIO_FACTS_H

#include <cstdint>
#include <string>
#include <vector>

#include "scan/numbers/unknown.h"
#include "scan/video/ffmpeg.h"

struct AudioFacts {
  int64_t stream = 0;  // its number in the file
  std::string codec;
  int64_t channels = 0;       // 0: the file does not say, like the rate
  int64_t sampleRate = 0;     // Hz
  std::string language;       // as the container has it; empty: it does not say
  double duration = UNKNOWN;  // seconds; NaN: the container does not say
};

std::vector<AudioFacts> audioFacts(const AVFormatContext& container);

// Seconds that one stream of the container lasts; NaN when only a guess from the bit rate says.
double streamDuration(const AVFormatContext& container, const AVStream& stream);

#endif
