#include "scan/results/thumbnails.h"

#include <algorithm>
#include <map>
#include <set>

namespace {

constexpr size_t MOST_EVENTS = 40;        // with three pictures each
constexpr int64_t PICTURES_OF_ALL = 100;  // at equal distances
// Frames that may be decoded once more for pictures of events: one in 25, or so many.
constexpr int64_t BUDGET_SHARE = 25;
constexpr int64_t LEAST_BUDGET = 300;
constexpr int MOST_WIDTH = 240;  // samples
constexpr int QUALITY = 5;       // of JPEG as FFmpeg counts it, 2 best to 31

FfmpegOwner<AVCodecContext> makeEncoder(int w, int h) {
  const AVCodec* const codec = avcodec_find_encoder(AV_CODEC_ID_MJPEG);
  if (codec == nullptr) return nullptr;
  FfmpegOwner<AVCodecContext> encoder(avcodec_alloc_context3(codec));
  encoder->width = w;
  encoder->height = h;
  encoder->pix_fmt = AV_PIX_FMT_YUVJ420P;
  encoder->time_base = {1, 1};
  encoder->thread_count = 1;
  encoder->flags |= AV_CODEC_FLAG_QSCALE | AV_CODEC_FLAG_BITEXACT;
  encoder->global_quality = QUALITY * FF_QP2LAMBDA;
  return avcodec_open2(encoder.get(), codec, nullptr) < 0 ? nullptr : std::move(encoder);
}

// How much wider than high a sample is, as the container says or else the codec.
double shapeOf(const VideoReader& reader, AVFrame* picture) {
  AVStream* const stream = reader.container->streams[reader.stream];
  const AVRational shape = av_guess_sample_aspect_ratio(reader.container.get(), stream, picture);
  return shape.num > 0 && shape.den > 0 ? av_q2d(shape) : 1.0;
}

// The picture scaled down, with square samples.
FfmpegOwner<AVFrame> shrink(const AVFrame& picture, double shape) {
  const double shownWidth = picture.width * shape;
  const double scale = std::min(1.0, MOST_WIDTH / shownWidth);
  FfmpegOwner<AVFrame> small(av_frame_alloc());
  small->format = AV_PIX_FMT_YUVJ420P;
  small->width = std::clamp(static_cast<int>(shownWidth * scale), 1, MOST_WIDTH);
  small->height = std::clamp(static_cast<int>(picture.height * scale), 1, 4 * MOST_WIDTH);
  if (av_frame_get_buffer(small.get(), 0) < 0) return nullptr;
  const FfmpegOwner<SwsContext> scaler(
      sws_getContext(picture.width, picture.height, static_cast<AVPixelFormat>(picture.format),
                     small->width, small->height, AV_PIX_FMT_YUVJ420P,
                     SWS_AREA | SWS_ACCURATE_RND | SWS_BITEXACT, nullptr, nullptr, nullptr));
  if (scaler == nullptr) return nullptr;
  const int rows = sws_scale(scaler.get(), picture.data, picture.linesize, 0, picture.height,
                             small->data, small->linesize);
  return rows <= 0 ? nullptr : std::move(small);
}

// Empty when it cannot be made.
std::string jpegOf(const AVFrame& picture, double shape) {
  const FfmpegOwner<AVFrame> small = shrink(picture, shape);
  if (small == nullptr) return "";
  const FfmpegOwner<AVCodecContext> encoder = makeEncoder(small->width, small->height);
  const FfmpegOwner<AVPacket> packet(av_packet_alloc());
  if (encoder == nullptr) return "";
  small->quality = encoder->global_quality;
  if (avcodec_send_frame(encoder.get(), small.get()) < 0) return "";
  if (avcodec_receive_packet(encoder.get(), packet.get()) < 0) return "";
  return {reinterpret_cast<const char*>(packet->data), static_cast<size_t>(packet->size)};
}

// The last key frame at or before a row, among those that can be sought; -1: there is none.
int64_t keyBefore(const FrameTable& frames, int64_t row) {
  while (row >= 0 && !(frames.isKey[static_cast<size_t>(row)] &&
                       frames.pts[static_cast<size_t>(row)] != NO_TIMESTAMP)) {
    --row;
  }
  return row;
}

struct Search {
  VideoReader reader;
  FfmpegOwner<AVFrame> picture;
  int64_t row;      // of the picture, or of what lies before the first row
  int64_t head;     // seconds before a key frame at which it is sought
  bool isSeekable;  // false: frames are counted from the file's start
};

// Opens the file, before its first frame.
bool start(const VideoSource& source, const FrameTable& frames, Search* search) {
  search->reader = {};
  search->row = -1 - frames.firstFrame;
  return openVideo(source, 1, &search->reader).empty();
}

bool readNext(Search* search) {
  std::string error;
  ++search->row;
  return readFrame(&search->reader, search->picture.get(), &error) == ReadResult::FRAME;
}

// Decodes a key frame, found by its timestamp: frames behind it can then be counted. Containers
// that look for the time of decoding may find what lies behind it, or begin in the middle of a
// group.
bool seekKey(const FrameTable& frames, int64_t key, Search* search) {
  VideoReader& reader = search->reader;
  const int64_t pts = frames.pts[static_cast<size_t>(key)];
  const AVRational unit = videoStream(reader).time_base;
  const int64_t target = pts - search->head * unit.den / unit.num;
  if (av_seek_frame(reader.container.get(), reader.stream, target, AVSEEK_FLAG_BACKWARD) < 0) {
    return false;
  }
  avcodec_flush_buffers(reader.decoder.get());
  reader.isDrained = false;
  const AVFrame& picture = *search->picture;
  while (readNext(search) && picture.best_effort_timestamp <= pts) {
    // A timestamp that is only guessed need not be the one that was guessed before.
    if (picture.key_frame == 0 || picture.pts != pts) continue;
    search->row = key;
    return true;
  }
  return false;
}

// The frames of the gravest events, the most telling first.
std::vector<int64_t> ranked(const std::vector<Event>& events) {
  std::vector<const Event*> order;
  order.reserve(events.size());
  for (const Event& event : events) order.push_back(&event);
  std::stable_sort(order.begin(), order.end(),
                   [](const Event* a, const Event* b) { return a->severity > b->severity; });
  order.resize(std::min(order.size(), MOST_EVENTS));
  std::vector<int64_t> frames;
  for (const Event* const event : order) {
    frames.insert(frames.end(), {event->peakFrame, event->firstFrame, event->lastFrame});
  }
  return frames;
}

// Decodes the frame of a row that lies behind the last one.
bool find(const VideoSource& source, const FrameTable& frames, int64_t row, Search* search) {
  constexpr int64_t ENOUGH = 1;  // seconds; no decoder holds pictures back for longer
  const int64_t key = keyBefore(frames, row);
  // Rows before the first are negative as well.
  const bool isAhead = key >= 0 && key > search->row + 1;
  while (isAhead && search->isSeekable && !seekKey(frames, key, search)) {
    search->isSeekable = search->head == 0;
    search->head = ENOUGH;
    if (!search->isSeekable && !start(source, frames, search)) return false;
  }
  while (search->row < row) {
    if (!readNext(search)) return false;
  }
  const int64_t pts = frames.pts[static_cast<size_t>(row)];
  const int64_t now = search->picture->pts;
  return pts == NO_TIMESTAMP || now == AV_NOPTS_VALUE || now == pts;
}

}  // namespace

std::vector<int64_t> framesToShow(const std::vector<Event>& events, Thumbs thumbs,
                                  const FrameTable& frames) {
  if (thumbs == Thumbs::NONE || frames.rows() == 0) return {};
  const bool isLimited = thumbs != Thumbs::ALL;
  const int64_t budget = std::max(LEAST_BUDGET, frames.rows() / BUDGET_SHARE);
  std::set<int64_t> shown;
  std::map<int64_t, int64_t> decoded;  // how many frames from each key frame on
  int64_t spent = 0;
  for (const int64_t frame : ranked(events)) {
    const int64_t row = frame - frames.firstFrame;
    const int64_t key = keyBefore(frames, row);
    const int64_t extra = std::max(int64_t{0}, row - key + 1 - decoded[key]);
    if (isLimited && spent + extra > budget) continue;
    spent += extra;
    decoded[key] += extra;
    shown.insert(frame);
  }
  if (thumbs == Thumbs::ALL) {
    const int64_t pictures = std::min(PICTURES_OF_ALL, frames.rows());
    for (int64_t k = 0; k < pictures; ++k) {
      shown.insert(frames.firstFrame + k * frames.rows() / pictures);
    }
  }
  return {shown.begin(), shown.end()};
}

Thumbnails makeThumbnails(const VideoSource& source, const FrameTable& frames,
                          const std::vector<int64_t>& wanted) {
  Thumbnails thumbnails;
  Search search = {{}, FfmpegOwner<AVFrame>(av_frame_alloc()), 0, 0, true};
  if (wanted.empty() || !start(source, frames, &search)) return thumbnails;
  for (const int64_t frame : wanted) {
    if (!find(source, frames, frame - frames.firstFrame, &search)) continue;
    const std::string jpeg = jpegOf(*search.picture, shapeOf(search.reader, search.picture.get()));
    if (!jpeg.empty()) thumbnails[frame] = jpeg;
  }
  return thumbnails;
}
