#include "scan/video/videoReader.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstring>
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
constexpr double MOST_MISSING = 1e9;  // frames; a damaged file may name any time

// A video that is named by its number.
int namedVideo(AVFormatContext* container, int number, const AVCodec** codec) {
  return av_find_best_stream(container, AVMEDIA_TYPE_VIDEO, number, -1, codec, 0);
}

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

// One rounding alone: 5 units of 1/100 are 0.05.
double seconds(int64_t time, AVRational unit) {
  return static_cast<double>(time) * unit.num / unit.den;
}

// Seconds at which the container's first stream begins. FFmpeg rounds them to microseconds; the
// stream that they are from knows them exactly.
double startOf(const AVFormatContext& container) {
  if (container.start_time == AV_NOPTS_VALUE) return 0.0;
  for (unsigned int i = 0; i < container.nb_streams; ++i) {
    const AVStream& stream = *container.streams[i];
    const bool isFirst =
        stream.start_time != AV_NOPTS_VALUE &&
        av_rescale_q(stream.start_time, stream.time_base, AV_TIME_BASE_Q) == container.start_time;
    if (isFirst) return seconds(stream.start_time, stream.time_base);
  }
  return seconds(container.start_time, AV_TIME_BASE_Q);
}

void addDamage(DamageMessage message, VideoReader* reader) {
  while (!message.text.empty() && std::strchr("\r\n .", message.text.back()) != nullptr) {
    message.text.pop_back();
  }
  const bool isBeforeKeyFrame = !reader->hasKeyPacket || message.time < reader->keyPacketTime;
  if (!isBeforeKeyFrame) {
    reader->damage.push_back(std::move(message));
  } else if (reader->beforeKeyFrame.size() < MOST_BEFORE_KEY_FRAME) {
    reader->beforeKeyFrame.push_back(std::move(message));
  }
}

// What was said about bytes before a place belongs to the last packet that begins there.
void placeContainerMessages(int64_t place, VideoReader* reader) {
  std::vector<ContainerMessage> behind;
  for (ContainerMessage& message : reader->unplaced) {
    const bool isOfOthers = (message.stream >= 0 && message.stream != reader->stream->index) ||
                            (message.streamId >= 0 && message.streamId != reader->stream->id);
    if (isOfOthers) continue;
    if (message.position > place) {
      behind.push_back(std::move(message));
    } else {
      addDamage({reader->packetTime, true, std::move(message.text)}, reader);
    }
  }
  reader->unplaced = std::move(behind);
}

void takeContainerMessages(VideoReader* reader) {
  for (ContainerMessage& message : takeContainerMessages(&reader->log)) {
    // A demuxer that looks ahead when it is opened reads some bytes twice.
    const bool isKnown = std::any_of(
        reader->unplaced.begin(), reader->unplaced.end(), [&](const ContainerMessage& other) {
          return other.position == message.position && other.text == message.text;
        });
    if (!isKnown) reader->unplaced.push_back(std::move(message));
  }
}

void takeDecoderMessages(VideoReader* reader) {
  for (std::string& text : takeDecoderMessages(&reader->log)) {
    addDamage({reader->packetTime, false, std::move(text)}, reader);
  }
}

// Without any key frame there is none that the beginning could have come before.
void forgetBeginning(VideoReader* reader) {
  if (reader->hasKeyPacket) return;
  reader->hasKeyPacket = true;
  reader->damage.swap(reader->beforeKeyFrame);
  reader->decodeErrors = reader->refusedBefore;
}

void countRefusal(int error, VideoReader* reader) {
  if (error == AVERROR(ENOMEM)) addDamage({reader->packetTime, false, NO_MEMORY}, reader);
  ++(reader->hasKeyPacket ? reader->decodeErrors : reader->refusedBefore);
}

// Of a packet of the video.
void notePacket(const AVPacket& packet, VideoReader* reader) {
  reader->endsInDamage = (packet.flags & AV_PKT_FLAG_CORRUPT) != 0;
  if (packet.pos >= 0) placeContainerMessages(packet.pos, reader);
  const int64_t time = packet.pts == AV_NOPTS_VALUE ? packet.dts : packet.pts;
  if (time != AV_NOPTS_VALUE) {
    reader->packetTime = seconds(time, reader->stream->time_base) - reader->start;
  }
  if (time != AV_NOPTS_VALUE) reader->lastTick = std::max(reader->lastTick, time);
  const bool isShown = packet.size > 0 && (packet.flags & AV_PKT_FLAG_DISCARD) == 0;
  if (isShown && packet.pts != AV_NOPTS_VALUE)
    reader->lastShown = std::fmax(reader->lastShown, reader->packetTime);
  if ((packet.flags & AV_PKT_FLAG_KEY) == 0 || reader->hasKeyPacket) return;
  reader->hasKeyPacket = true;
  reader->keyPacketTime = reader->packetTime;
}

void noteEnd(const AVPacket& packet, VideoReader* reader) {
  reader->bytesRead = std::max(reader->bytesRead, av_sat_add64(packet.pos, packet.size));
  const int64_t time = packet.pts == AV_NOPTS_VALUE ? packet.dts : packet.pts;
  if (time == AV_NOPTS_VALUE) return;
  const AVStream& stream = *reader->container->streams[packet.stream_index];
  const double end = seconds(av_sat_add64(time, packet.duration), stream.time_base);
  // What begins late has declared that as well, what begins before zero has not.
  const double before = std::min(0.0, reader->start);
  reader->lastEnd = std::max(reader->lastEnd, end - before);
}

// The container's next packet. A demuxer may need several attempts to find one behind damage.
int readFrom(AVFormatContext* container, AVPacket* packet) {
  const Listening listening(container);
  for (;;) {
    const int64_t place = container->pb == nullptr ? 0 : avio_tell(container->pb);
    const int read = av_read_frame(container, packet);
    const bool hasMoved = container->pb != nullptr && avio_tell(container->pb) > place;
    // Some demuxers hold the end of the file for a failure.
    const bool isEnd = read == AVERROR(EIO) && container->pb != nullptr &&
                       container->pb->eof_reached != 0 && container->pb->error == 0;
    if (isEnd) return AVERROR_EOF;
    if (read != AVERROR(EAGAIN) || !hasMoved) return read;
  }
}

int readPacket(VideoReader* reader) {
  av_packet_unref(reader->packet.get());
  if (reader->ahead.empty()) return readFrom(reader->container.get(), reader->packet.get());
  av_packet_move_ref(reader->packet.get(), reader->ahead.front().get());
  reader->ahead.pop_front();
  return 0;
}

// The median of the steps between times, 0 where there are none.
int64_t usualStep(std::vector<int64_t> times) {
  std::sort(times.begin(), times.end());
  std::vector<int64_t> steps;
  for (size_t i = 1; i < times.size(); ++i) {
    if (times[i] > times[i - 1]) steps.push_back(av_sat_sub64(times[i], times[i - 1]));
  }
  if (steps.empty()) return 0;
  const auto middle = steps.begin() + static_cast<ptrdiff_t>(steps.size() / 2);
  std::nth_element(steps.begin(), middle, steps.end());
  return *middle;
}

// Gives a stream without an average rate that of its first packets: FFmpeg's guess where it agrees
// with the usual step between them, which containers round, and else what that step makes.
void findFrameRate(VideoReader* reader) {
  constexpr size_t ENOUGH = 32;     // packets of the video
  constexpr size_t MOST = 1000;     // of all streams
  constexpr double ROUNDING = 0.1;  // of a step
  AVStream& stream = *reader->stream;
  if (stream.avg_frame_rate.num > 0 && stream.avg_frame_rate.den > 0) return;
  std::vector<int64_t> times;
  while (times.size() < ENOUGH && reader->ahead.size() < MOST) {
    FfmpegOwner<AVPacket> packet(av_packet_alloc());
    if (readFrom(reader->container.get(), packet.get()) < 0) break;
    const int64_t time = packet->pts == AV_NOPTS_VALUE ? packet->dts : packet->pts;
    if (packet->stream_index == stream.index && time != AV_NOPTS_VALUE) times.push_back(time);
    reader->ahead.push_back(std::move(packet));
  }
  const int64_t step = usualStep(times);
  if (step == 0 || step > INT64_MAX / stream.time_base.num) return;
  const AVRational guess = stream.r_frame_rate;
  const double frames = seconds(step, stream.time_base) * (guess.num > 0 ? av_q2d(guess) : 0.0);
  if (std::fabs(frames - 1.0) <= ROUNDING) {
    stream.avg_frame_rate = guess;
  } else {
    av_reduce(&stream.avg_frame_rate.num, &stream.avg_frame_rate.den, stream.time_base.den,
              stream.time_base.num * step, INT_MAX);
  }
}

// Hands the decoder the stream's next packet, or the end. Negative when the file cannot be read.
int feed(VideoReader* reader) {
  AVFormatContext* const container = reader->container.get();
  AVPacket* const packet = reader->packet.get();
  do {
    const int read = readPacket(reader);
    takeContainerMessages(reader);
    if (read < 0 && read != AVERROR_EOF) return read;
    reader->isDrained = read == AVERROR_EOF;
    if (!reader->isDrained) noteEnd(*packet, reader);
  } while (!reader->isDrained && packet->stream_index != reader->stream->index);
  if (reader->isDrained) {
    placeContainerMessages(INT64_MAX, reader);
    forgetBeginning(reader);
  } else {
    notePacket(*packet, reader);
  }
  // Some containers take a failure of the disk for the end.
  if (reader->isDrained && container->pb != nullptr && container->pb->error < 0) {
    return container->pb->error;
  }
  const int sent = avcodec_send_packet(reader->decoder.get(), reader->isDrained ? nullptr : packet);
  if (sent < 0) countRefusal(sent, reader);
  takeDecoderMessages(reader);
  return 0;
}

// What a decoder leaves out of a damaged picture must not show what the memory has held before:
// that depends on which frames were freed by then.
int cleanBuffer(AVCodecContext* decoder, AVFrame* picture, int flags) {
  const int error = avcodec_default_get_buffer2(decoder, picture, flags);
  for (int plane = 0; error >= 0 && plane < AV_NUM_DATA_POINTERS; ++plane) {
    AVBufferRef* const buffer = picture->buf[plane];
    if (buffer != nullptr) std::memset(buffer->data, 0, buffer->size);
  }
  return error;
}

// Why a video is not decoded of which the pictures are too large; else an empty text.
std::string sizeRefusal(const AVCodecParameters& video, int64_t maxPixels, const DamageLog& log) {
  const int64_t pixels = static_cast<int64_t>(video.width) * video.height;  // 0: unknown
  const bool isTooLarge = pixels > 0 ? pixels > maxPixels : !log.refusedSize.empty();
  const std::string size = pixels > 0
                               ? std::to_string(video.width) + 'x' + std::to_string(video.height)
                               : log.refusedSize;
  return isTooLarge ? "its pictures of " + size + " are larger than FFmpeg or --max-pixels allows"
                    : "";
}

// What FFmpeg's decoders may take a picture for before anybody knows its size: they count the
// borders that they give it.
int64_t pixelsWithBorders(int64_t maxPixels) {
  constexpr int64_t OF_SMALL_ONES = 1 << 20;
  return std::min(int64_t{INT_MAX}, 2 * maxPixels + OF_SMALL_ONES);
}

// Looks into the streams, decoding some of their first pictures if need be.
int findStreams(AVFormatContext* container, int64_t maxPixels) {
  std::vector<AVDictionary*> options(container->nb_streams, nullptr);
  for (AVDictionary*& each : options)
    av_dict_set_int(&each, "max_pixels", pixelsWithBorders(maxPixels), 0);
  const int error = avformat_find_stream_info(container, options.data());
  for (AVDictionary*& each : options) av_dict_free(&each);
  return error;
}

}  // namespace

std::string openVideo(const VideoSource& source, int threads, VideoReader* reader) {
  listenToFfmpeg();
  AVFormatContext* container = avformat_alloc_context();
  container->opaque = &reader->log;
  std::string refusal = openContainer(source, &reader->input, &container);
  if (!refusal.empty()) return refusal;
  reader->container.reset(container);
  int error = 0;
  {
    const Listening listening(container);
    error = findStreams(container, source.maxPixels);
  }
  if (error < 0) return ffmpegError(error);

  // FFmpeg measures the average rate, and not of raw files.
  if (source.rawWidth > 0) {
    av_parse_video_rate(&container->streams[0]->avg_frame_rate, source.rawRate.c_str());
  }

  const AVCodec* codec = nullptr;
  const int found = source.stream < 0 ? mainVideo(container, &codec)
                                      : namedVideo(container, source.stream, &codec);
  if (found == AVERROR_STREAM_NOT_FOUND && source.stream >= 0)
    return "stream " + std::to_string(source.stream) + " of it is no video";
  if (found == AVERROR_STREAM_NOT_FOUND) return "there is no video in it";
  if (found < 0) return ffmpegError(found);
  reader->stream = container->streams[found];
  reader->start = startOf(*container);
  refusal = sizeRefusal(*reader->stream->codecpar, source.maxPixels, reader->log);
  if (!refusal.empty()) return refusal;

  reader->decoder.reset(avcodec_alloc_context3(codec));
  error = avcodec_parameters_to_context(reader->decoder.get(), videoStream(*reader).codecpar);
  if (error < 0) return ffmpegError(error);
  reader->decoder->max_pixels = pixelsWithBorders(source.maxPixels);
  reader->decoder->pkt_timebase = videoStream(*reader).time_base;
  // Damaged VP8 may be decoded in another way by several threads without a word.
  const bool isAlone = threads == 1 || codec->id == AV_CODEC_ID_VP8;
  reader->decoder->thread_count = isAlone ? 1 : threads;
  reader->decoder->flags |= AV_CODEC_FLAG_OUTPUT_CORRUPT;
  reader->decoder->err_recognition |= AV_EF_CRCCHECK;
  reader->decoder->opaque = &reader->log;
  if (isAlone) {
    reader->decoder->thread_type = 0;
    reader->decoder->get_buffer2 = cleanBuffer;
  }
  error = avcodec_open2(reader->decoder.get(), codec, nullptr);
  if (error < 0) return ffmpegError(error);
  reader->packet.reset(av_packet_alloc());
  findFrameRate(reader);
  return "";
}

ReadResult readFrame(VideoReader* reader, AVFrame* picture, std::string* error) {
  int errorsAtEnd = 0;
  for (;;) {
    const int received = avcodec_receive_frame(reader->decoder.get(), picture);
    takeDecoderMessages(reader);
    if (received == 0) {
      reader->hasFields = reader->hasFields || picture->interlaced_frame != 0;
      return ReadResult::FRAME;
    }
    if (received == AVERROR_EOF) return ReadResult::END;
    if (received != AVERROR(EAGAIN)) countRefusal(received, reader);
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

std::vector<DamageMessage> takeDamage(VideoReader* reader, double time) {
  const auto later =
      std::stable_partition(reader->damage.begin(), reader->damage.end(),
                            [&](const DamageMessage& message) { return !(message.time > time); });
  std::vector<DamageMessage> taken(std::make_move_iterator(reader->damage.begin()),
                                   std::make_move_iterator(later));
  reader->damage.erase(reader->damage.begin(), later);
  return taken;
}

const AVStream& videoStream(const VideoReader& reader) {
  return *reader.stream;
}

double presentationTime(const VideoReader& reader, const AVFrame& picture) {
  const int64_t timestamp = picture.best_effort_timestamp;
  if (timestamp == AV_NOPTS_VALUE) return UNKNOWN;
  return seconds(timestamp, videoStream(reader).time_base) - reader.start;
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
  // Of Ogg the declared end is when the last picture goes, which may be held as long as one likes.
  if (reader.endsInDamage || (missing > tolerance && format != "ogg")) return true;
  // Of YUV4MPEG a part of a frame is passed over without a word.
  if (format == "yuv4mpegpipe" && avio_tell(container.pb) > reader.bytesRead) return true;
  return lacksEnding(*reader.input.file, format);
}

int64_t framesMissingBehind(const VideoReader& reader, double time, double spacing) {
  const AVStream& stream = videoStream(reader);
  const double step = std::isnan(spacing) ? 1.0 / averageFrameRate(reader) : spacing;
  const bool isCounted = std::string_view(reader.container->iformat->name) == "avi";
  const int64_t ticksBehind = isCounted ? av_sat_sub64(stream.nb_frames, reader.lastTick) : 0;
  const double missingPackets = seconds(ticksBehind, stream.time_base) / step - 1.0;
  // Each of two fields may have a packet with a time of its own.
  const double missingPictures = reader.hasFields ? 0.0 : (reader.lastShown - time) / step;
  const auto whole = [](double frames) {
    return std::lround(std::fmin(std::fmax(0.0, frames), MOST_MISSING));
  };
  return whole(missingPackets) + whole(missingPictures);
}

double positionInFile(const VideoReader& reader) {
  AVIOContext* const file = reader.container->pb;
  const int64_t size = file == nullptr ? 0 : avio_size(file);
  if (size <= 0) return 0.0;
  // Where a part says that it is longer than the file, a demuxer goes behind the end.
  return std::min(1.0, static_cast<double>(avio_tell(file)) / static_cast<double>(size));
}
