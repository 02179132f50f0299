#include "scan/results/thumbnails.h"

#include <algorithm>
#include <map>
#include <set>

#include "scan/video/frameSearch.h"

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
  const AVRational shape =
      av_guess_sample_aspect_ratio(reader.container.get(), reader.stream, picture);
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

// Rows of key frames that can be sought: their timestamps lie behind all earlier ones and before
// all later ones. Where recordings are joined a timestamp may come twice.
std::vector<int64_t> keyRows(const FrameTable& frames) {
  const auto rows = static_cast<size_t>(frames.rows());
  std::vector<int64_t> keys;
  int64_t latest = NO_TIMESTAMP;
  for (size_t row = 0; row < rows; ++row) {
    const int64_t pts = frames.pts[row];
    // A seek to a key that is not earlier than this later frame could end near this frame.
    while (pts != NO_TIMESTAMP && !keys.empty() &&
           frames.pts[static_cast<size_t>(keys.back())] >= pts)
      keys.pop_back();
    if (frames.isKey[row] && pts > latest) keys.push_back(static_cast<int64_t>(row));
    latest = std::max(latest, pts);
  }
  return keys;
}

// The last of them at or before a row; -1: there is none.
int64_t keyBefore(const std::vector<int64_t>& keys, int64_t row) {
  const auto behind = std::upper_bound(keys.begin(), keys.end(), row);
  return behind == keys.begin() ? -1 : *(behind - 1);
}

static_assert(NO_TIMESTAMP == AV_NOPTS_VALUE);

FramePlace placeOf(const FrameTable& frames, int64_t row) {
  return {frames.firstFrame + row, frames.pts[static_cast<size_t>(row)]};
}

// Decodes a frame that lies behind the one found last.
bool find(const FrameTable& frames, const std::vector<int64_t>& keys, int64_t row,
          FrameSearch* search) {
  const int64_t key = keyBefore(keys, row);
  return findFrame(placeOf(frames, row),
                   key < 0 ? std::nullopt : std::optional(placeOf(frames, key)), search);
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

}  // namespace

std::vector<int64_t> framesToShow(const std::vector<Event>& events, Thumbs thumbs,
                                  const FrameTable& frames) {
  if (thumbs == Thumbs::NONE || frames.rows() == 0) return {};
  const bool isLimited = thumbs != Thumbs::ALL;
  const int64_t budget = std::max(LEAST_BUDGET, frames.rows() / BUDGET_SHARE);
  const std::vector<int64_t> keys = keyRows(frames);
  std::set<int64_t> shown;
  std::map<int64_t, int64_t> decoded;  // how many frames from each key frame on
  int64_t spent = 0;
  for (const int64_t frame : ranked(events)) {
    const int64_t row = frame - frames.firstFrame;
    const int64_t key = keyBefore(keys, row);
    const int64_t start = std::max(int64_t{0}, key);
    const int64_t extra = std::max(int64_t{0}, row - start + 1 - decoded[key]);
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
                          const std::vector<int64_t>& wanted,
                          const std::function<void()>& onPicture) {
  Thumbnails thumbnails;
  FrameSearch search;
  if (wanted.empty() || !startSearch(source, &search)) return thumbnails;
  const std::vector<int64_t> keys = keyRows(frames);
  for (const int64_t frame : wanted) {
    onPicture();
    if (!find(frames, keys, frame - frames.firstFrame, &search)) continue;
    const std::string jpeg = jpegOf(*search.picture, shapeOf(*search.reader, search.picture.get()));
    if (!jpeg.empty()) thumbnails[frame] = jpeg;
  }
  return thumbnails;
}
