#include "scan/video/audioFacts.h"

#include <string_view>

namespace {

const char* tagOf(const AVStream& stream, const char* name) {
  const AVDictionaryEntry* const tag = av_dict_get(stream.metadata, name, nullptr, 0);
  return tag == nullptr ? "" : tag->value;
}

}  // namespace

double streamDuration(const AVFormatContext& container, const AVStream& stream) {
  if (std::string_view(container.iformat->name) == "matroska,webm") {
    // It has only the duration of all streams together, and those who write it add a tag.
    int64_t microseconds = 0;
    const bool isTagged = av_parse_time(&microseconds, tagOf(stream, "DURATION"), 1) == 0;
    return isTagged ? static_cast<double>(microseconds) / AV_TIME_BASE : UNKNOWN;
  }
  // Of AVI, which counts in units of the stream, FFmpeg does not take it for uncompressed sound.
  const bool isCounted = std::string_view(container.iformat->name) == "avi";
  const bool isGuess = container.duration_estimation_method == AVFMT_DURATION_FROM_BITRATE;
  const int64_t duration = isCounted ? stream.nb_frames : stream.duration;
  if (isGuess || duration <= 0) return UNKNOWN;
  return static_cast<double>(duration) * av_q2d(stream.time_base);
}

std::vector<AudioFacts> audioFacts(const AVFormatContext& container) {
  std::vector<AudioFacts> all;
  for (unsigned int i = 0; i < container.nb_streams; ++i) {
    const AVStream& stream = *container.streams[i];
    const AVCodecParameters& sound = *stream.codecpar;
    if (sound.codec_type != AVMEDIA_TYPE_AUDIO) continue;
    all.push_back({static_cast<int64_t>(i), avcodec_get_name(sound.codec_id),
                   sound.ch_layout.nb_channels, sound.sample_rate, tagOf(stream, "language"),
                   streamDuration(container, stream)});
  }
  return all;
}
