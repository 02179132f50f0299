#include "scan/video/videoReader.h"

#include <algorithm>
#include <cmath>
#include <string_view>

#include "scan/numbers/unknown.h"
#include "scan/video/fileEnding.h"

namespace {

constexpr double USUAL_FRAME_RATE = 25.0;  // frames per second
// Errors in a row, once all packets are sent, at which the decoder is taken to be at its end. It
// holds back fewer pictures than this.
constexpr int MOST_ERRORS_AT_END = 256;
// A file may end so many frames before what it declares, and so many seconds: containers round,
// count the last frame in different ways, and sound by packets of which the last ones may be
// missing.
constexpr double FRAMES_OF_TOLERANCE = 2.5;
constexpr double SECONDS_OF_TOLERANCE = 0.2;
constexpr char FILE_ADDRESS[] = "file:";

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

int openContainer(const VideoSource& source, AVFormatContext** container) {
  const AVInputFormat* format = nullptr;
  AVDictionary* options = nullptr;
  if (source.path == "-") format = av_find_input_format("yuv4mpegpipe");
  if (source.rawWidth > 0) {
    format = av_find_input_format("rawvideo");
    const std::string size =
        std::to_string(source.rawWidth) + 'x' + std::to_string(source.rawHeight);
    av_dict_set(&options, "video_size", size.c_str(), 0);
    av_dict_set(&options, "framerate", source.rawRate.c_str(), 0);
    av_dict_set(&options, "pixel_format", "yuv420p", 0);
  }
  // The file protocol takes any name, also one that looks like an address.
  const std::string address = source.path == "-" ? "pipe:0" : FILE_ADDRESS + source.path;
  const int error = avformat_open_input(container, address.c_str(), format, &options);
  av_dict_free(&options);
  return error;
}

// One rounding alone: 5 units of 1/100 are 0.05.
double seconds(int64_t time, AVRational unit) {
  return static_cast<double>(time) * unit.num / unit.den;
}

double startOf(const AVFormatContext& container) {
  return container.start_time == AV_NOPTS_VALUE ? 0.0
                                                : seconds(container.start_time, AV_TIME_BASE_Q);
}

void noteEnd(const AVPacket& packet, VideoReader* reader) {
  if (packet.stream_index == reader->stream->index) {
    reader->endsInDamage = (packet.flags & AV_PKT_FLAG_CORRUPT) != 0;
  }
  reader->bytesRead = std::max(reader->bytesRead, packet.pos + packet.size);
  const int64_t time = packet.pts == AV_NOPTS_VALUE ? packet.dts : packet.pts;
  if (time == AV_NOPTS_VALUE) return;
  const AVStream& stream = *reader->container->streams[packet.stream_index];
  const double end = seconds(time + packet.duration, stream.time_base);
  // What begins late has declared that as well, what begins before zero has not.
  const double before = std::min(0.0, startOf(*reader->container));
  reader->lastEnd = std::max(reader->lastEnd, end - before);
}

// Hands the decoder the stream's next packet, or the end. Negative when the file cannot be read.
int feed(VideoReader* reader) {
  AVFormatContext* const container = reader->container.get();
  AVPacket* const packet = reader->packet.get();
  do {
    av_packet_unref(packet);
    const int read = av_read_frame(container, packet);
    if (read < 0 && read != AVERROR_EOF) return read;
    reader->isDrained = read == AVERROR_EOF;
    if (!reader->isDrained) noteEnd(*packet, reader);
  } while (!reader->isDrained && packet->stream_index != reader->stream->index);
  // Some containers take a failure of the disk for the end.
  if (reader->isDrained && container->pb != nullptr && container->pb->error < 0) {
    return container->pb->error;
  }
  const int sent = avcodec_send_packet(reader->decoder.get(), reader->isDrained ? nullptr : packet);
  if (sent < 0) ++reader->decodeErrors;
  return 0;
}

}  // namespace

std::string openVideo(const VideoSource& source, int threads, VideoReader* reader) {
  AVFormatContext* container = nullptr;
  int error = openContainer(source, &container);
  if (error < 0) return ffmpegError(error);
  reader->container.reset(container);
  error = avformat_find_stream_info(container, nullptr);
  if (error < 0) return ffmpegError(error);

  // FFmpeg measures the average rate, and not of raw files.
  if (source.rawWidth > 0) {
    av_parse_video_rate(&container->streams[0]->avg_frame_rate, source.rawRate.c_str());
  }

  const AVCodec* codec = nullptr;
  const int found = mainVideo(container, &codec);
  if (found == AVERROR_STREAM_NOT_FOUND) return "there is no video in it";
  if (found < 0) return ffmpegError(found);
  reader->stream = container->streams[found];

  reader->decoder.reset(avcodec_alloc_context3(codec));
  error = avcodec_parameters_to_context(reader->decoder.get(), videoStream(*reader).codecpar);
  if (error < 0) return ffmpegError(error);
  reader->decoder->pkt_timebase = videoStream(*reader).time_base;
  reader->decoder->thread_count = threads;
  reader->decoder->flags |= AV_CODEC_FLAG_OUTPUT_CORRUPT;
  error = avcodec_open2(reader->decoder.get(), codec, nullptr);
  if (error < 0) return ffmpegError(error);
  reader->packet.reset(av_packet_alloc());
  return "";
}

ReadResult readFrame(VideoReader* reader, AVFrame* picture, std::string* error) {
  int errorsAtEnd = 0;
  for (;;) {
    const int received = avcodec_receive_frame(reader->decoder.get(), picture);
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

const AVStream& videoStream(const VideoReader& reader) {
  return *reader.stream;
}

double presentationTime(const VideoReader& reader, const AVFrame& picture) {
  const int64_t timestamp = picture.best_effort_timestamp;
  if (timestamp == AV_NOPTS_VALUE) return UNKNOWN;
  return seconds(timestamp, videoStream(reader).time_base) - startOf(*reader.container);
}

double presentationDuration(const VideoReader& reader, const AVFrame& picture) {
  const int64_t duration = picture.pkt_duration;
  return duration > 0 ? seconds(duration, videoStream(reader).time_base) : UNKNOWN;
}

bool isCorrupt(const AVFrame& picture) {
  return (picture.flags & AV_FRAME_FLAG_CORRUPT) != 0 || picture.decode_error_flags != 0;
}

double averageFrameRate(const VideoReader& reader) {
  const AVRational rate = videoStream(reader).avg_frame_rate;
  return rate.num > 0 && rate.den > 0 ? av_q2d(rate) : USUAL_FRAME_RATE;
}

double declaredDuration(const VideoReader& reader) {
  const AVFormatContext& container = *reader.container;
  const bool isDeclared = container.duration_estimation_method == AVFMT_DURATION_FROM_STREAM;
  if (!isDeclared || container.duration <= 0) return UNKNOWN;
  // Of an AVI that is cut FFmpeg shortens the duration to what there is, but not the number of
  // frames, which are the stream's unit of time there.
  const AVStream& stream = videoStream(reader);
  const bool countsFrames = std::string_view(container.iformat->name) == "avi";
  const double counted = countsFrames ? seconds(stream.nb_frames, stream.time_base) : 0.0;
  return std::max(counted, seconds(container.duration, AV_TIME_BASE_Q));
}

bool isTruncated(const VideoReader& reader) {
  const AVFormatContext& container = *reader.container;
  const std::string format = container.iformat->name;
  const double missing = declaredDuration(reader) - reader.lastEnd;  // NaN: nothing is declared
  const double tolerance =
      std::max(SECONDS_OF_TOLERANCE, FRAMES_OF_TOLERANCE / averageFrameRate(reader));
  if (reader.endsInDamage || missing > tolerance) return true;
  // Of YUV4MPEG a part of a frame is passed over without a word.
  if (format == "yuv4mpegpipe" && avio_tell(container.pb) > reader.bytesRead) return true;
  const std::string url = container.url;
  return url.compare(0, sizeof FILE_ADDRESS - 1, FILE_ADDRESS) == 0 &&
         lacksEnding(url.substr(sizeof FILE_ADDRESS - 1), format);
}

double positionInFile(const VideoReader& reader) {
  AVIOContext* const file = reader.container->pb;
  const int64_t size = file == nullptr ? 0 : avio_size(file);
  return size > 0 ? static_cast<double>(avio_tell(file)) / static_cast<double>(size) : 0.0;
}
