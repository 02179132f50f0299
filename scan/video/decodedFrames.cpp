#include "scan/video/decodedFrames.h"

namespace {

// Decoders are uneven: a key frame takes several times as long as those behind it.
constexpr size_t FRAMES_AHEAD = 4;
// Of these, should pictures be larger than any that are shown today.
constexpr size_t BYTES_AHEAD = size_t{512} << 20;

size_t bytesOf(const DecodedFrame& frame) {
  size_t bytes = 0;
  for (const AVBufferRef* const buffer : frame.picture->buf) {
    if (buffer != nullptr) bytes += buffer->size;
  }
  return bytes;
}

bool hasRoom(const std::deque<DecodedFrame>& frames, const DecodedFrame& next) {
  size_t bytes = bytesOf(next);
  for (const DecodedFrame& frame : frames) bytes += bytesOf(frame);
  return frames.empty() || (frames.size() < FRAMES_AHEAD && bytes <= BYTES_AHEAD);
}

void decodeAll(VideoReader* reader, DecodeAhead* ahead) {
  for (bool isMore = true; isMore;) {
    DecodedFrame frame = decodeNext(reader);
    isMore = frame.result == ReadResult::FRAME;
    std::unique_lock<std::mutex> lock(ahead->mutex);
    ahead->changed.wait(lock, [&] { return ahead->isAbandoned || hasRoom(ahead->frames, frame); });
    if (ahead->isAbandoned) return;
    ahead->frames.push_back(std::move(frame));
    ahead->changed.notify_all();
  }
}

}  // namespace

DecodedFrame decodeNext(VideoReader* reader) {
  DecodedFrame frame = {
      ReadResult::END, "", FfmpegOwner<AVFrame>(av_frame_alloc()), 0.0, 0, {}, 0, 0};
  frame.result = readFrame(reader, frame.picture.get(), &frame.error);
  frame.position = positionInFile(*reader);
  frame.decodeErrors = reader->decodeErrors;
  const bool isFrame = frame.result == ReadResult::FRAME;
  frame.damage = takeDamage(reader, isFrame ? presentationTime(*reader, *frame.picture) : UNKNOWN);
  frame.messagesAhead = reader->damage.size();
  frame.messagesBeforeKeyFrame = static_cast<int64_t>(reader->beforeKeyFrame.size());
  return frame;
}

DecodeAhead::DecodeAhead(VideoReader* from)
    : reader(from), thread([=] { decodeAll(from, this); }) {}

DecodeAhead::~DecodeAhead() {
  {
    const std::lock_guard<std::mutex> lock(mutex);
    isAbandoned = true;
  }
  reader->input.isGivenUp = true;
  changed.notify_all();
  thread.join();
}

DecodedFrame fetchNext(DecodeAhead* ahead) {
  std::unique_lock<std::mutex> lock(ahead->mutex);
  ahead->changed.wait(lock, [&] { return !ahead->frames.empty(); });
  DecodedFrame frame = std::move(ahead->frames.front());
  ahead->frames.pop_front();
  ahead->changed.notify_all();
  return frame;
}
