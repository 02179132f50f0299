#include "scan/video/frameSearch.h"

namespace {

bool openAtStart(FrameSearch* search) {
  search->frame = -1;
  return openVideo(search->source, 1, &search->reader.emplace()).empty();
}

bool readNext(FrameSearch* search) {
  std::string error;
  ++search->frame;
  return readFrame(&*search->reader, search->picture.get(), &error) == ReadResult::FRAME;
}

// Decodes a key frame, found by its timestamp: frames behind it can then be counted. Containers
// that look for the time of decoding may find what lies behind it, or begin in the middle of a
// group.
bool seekKey(const FramePlace& key, FrameSearch* search) {
  VideoReader& reader = *search->reader;
  const AVRational unit = videoStream(reader).time_base;
  const int64_t target = av_sat_sub64(key.pts, search->head * unit.den / unit.num);
  if (av_seek_frame(reader.container.get(), reader.stream->index, target, AVSEEK_FLAG_BACKWARD) <
      0) {
    return false;
  }
  avcodec_flush_buffers(reader.decoder.get());
  reader.ahead.clear();
  reader.isDrained = false;
  const AVFrame& picture = *search->picture;
  while (readNext(search) && picture.best_effort_timestamp <= key.pts) {
    // A timestamp that is only guessed need not be the one that was guessed before.
    if (picture.key_frame == 0 || picture.pts != key.pts) continue;
    search->frame = key.frame;
    return true;
  }
  return false;
}

}  // namespace

bool startSearch(const VideoSource& source, FrameSearch* search) {
  search->source = source;
  search->picture.reset(av_frame_alloc());
  return openAtStart(search);
}

bool findFrame(const FramePlace& wanted, const std::optional<FramePlace>& key,
               FrameSearch* search) {
  constexpr int64_t ENOUGH = 1;  // seconds; no decoder holds pictures back for longer
  const bool isAhead = key && key->frame > search->frame + 1;
  while (isAhead && search->isSeekable && !seekKey(*key, search)) {
    search->isSeekable = search->head == 0;
    search->head = ENOUGH;
    if (!search->isSeekable && !openAtStart(search)) return false;
  }
  while (search->frame < wanted.frame) {
    if (!readNext(search)) return false;
  }
  const int64_t now = search->picture->pts;
  return wanted.pts == AV_NOPTS_VALUE || now == AV_NOPTS_VALUE || now == wanted.pts;
}
