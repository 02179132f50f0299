#include "scan/videoReader.h"

#include <cmath>
#include <limits>

namespace {

constexpr double UNKNOWN = std::numeric_limits<double>::quiet_NaN();
constexpr double USUAL_FRAME_RATE = 25.0;  // frames per second
// Errors in a row, once all packets are sent, at which the decoder is taken to be at its end. It
// holds back fewer pictures than this.
constexpr int MOST_ERRORS_AT_END = 256;

// The stream that FFmpeg holds for the best, or the best of the others when that is a cover
// picture.
int mainVideo(AVFormatContext* container, const AVCodec** codec) {
  const int best = av_find_best_stream(container, AVMEDIA_TYPE_VIDEO, -1, -1, codec, 0);
  if (best < 0) return best;
  const auto isCover = [&](int stream) {
    return (container->streams[stream]->disposition & AV_DISPOSITION_ATTACHED_PIC) != 0;
  };
  if (!isCover(best)) return best;
  for (unsigned int i = 0; i < container->nb_streams; ++i) {
    const int stream = static_cast<int>(i);
    const AVCodecParameters& parameters = *container->streams[i]->codecpar;
    if (parameters.codec_type != AVMEDIA_TYPE_VIDEO || isCover(stream)) continue;
    *codec = avcodec_find_decoder(parameters.codec_id);
    return *codec == nullptr ? AVERROR_DECODER_NOT_FOUND : stream;
  }
  return AVERROR_STREAM_NOT_FOUND;
}

const AVStream& streamOf(const VideoReader& reader) {
  return *reader.container->streams[reader.stream];
}

// Hands the decoder the stream's next packet, or the end. Negative when the file cannot be read.
int feed(VideoReader* reader) {
  AVPacket* const packet = reader->packet.get();
  do {
    av_packet_unref(packet);
    const int read = av_read_frame(reader->container.get(), packet);
    if (read < 0 && read != AVERROR_EOF) return read;
    reader->isDrained = read == AVERROR_EOF;
  } while (!reader->isDrained && packet->stream_index != reader->stream);
  const int sent = avcodec_send_packet(reader->decoder.get(), reader->isDrained ? nullptr : packet);
  if (sent < 0) ++reader->decodeErrors;
  return 0;
}

}  // namespace

std::string openVideo(const std::string& path, int threads, VideoReader* reader) {
  AVFormatContext* container = nullptr;
  // The file protocol takes any name, also one that looks like an address.
  int error = avformat_open_input(&container, ("file:" + path).c_str(), nullptr, nullptr);
  if (error < 0) return ffmpegError(error);
  reader->container.reset(container);
  error = avformat_find_stream_info(container, nullptr);
  if (error < 0) return ffmpegError(error);

  const AVCodec* codec = nullptr;
  reader->stream = mainVideo(container, &codec);
  if (reader->stream == AVERROR_STREAM_NOT_FOUND) return "there is no video in it";
  if (reader->stream < 0) return ffmpegError(reader->stream);
  for (unsigned int i = 0; i < container->nb_streams; ++i) {
    if (static_cast<int>(i) != reader->stream) container->streams[i]->discard = AVDISCARD_ALL;
  }

  reader->decoder.reset(avcodec_alloc_context3(codec));
  error = avcodec_parameters_to_context(reader->decoder.get(), streamOf(*reader).codecpar);
  if (error < 0) return ffmpegError(error);
  reader->decoder->pkt_timebase = streamOf(*reader).time_base;
  reader->decoder->thread_count = threads;
  reader->decoder->flags |= AV_CODEC_FLAG_OUTPUT_CORRUPT;
  error = avcodec_open2(reader->decoder.get(), codec, nullptr);
  if (error < 0) return ffmpegError(error);
  reader->packet.reset(av_packet_alloc());
  reader->picture.reset(av_frame_alloc());
  return "";
}

ReadResult readFrame(VideoReader* reader, std::string* error) {
  int errorsAtEnd = 0;
  for (;;) {
    const int received = avcodec_receive_frame(reader->decoder.get(), reader->picture.get());
    if (received == 0) return ReadResult::FRAME;
    if (received == AVERROR_EOF) return ReadResult::END;
    if (received != AVERROR(EAGAIN)) ++reader->decodeErrors;
    if (reader->isDrained) {
      if (++errorsAtEnd == MOST_ERRORS_AT_END) return ReadResult::END;
      continue;
    }
    const int fed = feed(reader);
    if (fed < 0) {
      *error = ffmpegError(fed);
      return ReadResult::FAILURE;
    }
  }
}

double presentationTime(const VideoReader& reader) {
  const int64_t timestamp = reader.picture->best_effort_timestamp;
  if (timestamp == AV_NOPTS_VALUE) return UNKNOWN;
  return static_cast<double>(timestamp) * av_q2d(streamOf(reader).time_base);
}

double presentationDuration(const VideoReader& reader) {
  const int64_t duration = reader.picture->pkt_duration;
  if (duration <= 0) return UNKNOWN;
  return static_cast<double>(duration) * av_q2d(streamOf(reader).time_base);
}

bool isCorrupt(const AVFrame& picture) {
  return (picture.flags & AV_FRAME_FLAG_CORRUPT) != 0 || picture.decode_error_flags != 0;
}

double averageFrameRate(const VideoReader& reader) {
  const AVRational rate = streamOf(reader).avg_frame_rate;
  return rate.num > 0 && rate.den > 0 ? av_q2d(rate) : USUAL_FRAME_RATE;
}
