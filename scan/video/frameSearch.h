// Single frames of a video that is decoded once more, from key frame to key frame where it can be
// sought.
#ifndef LUMASCAN_FRAME_SEARCH_H
#define LUMASCAN_FRAME_SEARCH_H

#include <cstdint>
#include <optional>

#include "scan/video/videoReader.h"

// What is known of a frame from the first time.
struct FramePlace {
  int64_t frame;  // its number in the order of display, from 0
  int64_t pts;    // in the stream's own unit; AV_NOPTS_VALUE: none
};

struct FrameSearch {
  VideoSource source;
  std::optional<VideoReader> reader;  // none before it is opened
  FfmpegOwner<AVFrame> picture;       // that was found last
  int64_t frame = -1;                 // its number; -1: none yet
  int64_t head = 0;                   // seconds before a key frame at which it is sought
  bool isSeekable = true;             // false: frames are counted from the file's start
};

// Opens the file, before its first frame. False when that fails.
bool startSearch(const VideoSource& source, FrameSearch* search);

// Decodes a frame that lies behind the one found last. False when it is not found again.
//
// key   the last key frame at or before it that has a timestamp; none: there is no such frame
bool findFrame(const FramePlace& wanted, const std::optional<FramePlace>& key, FrameSearch* search);

#endif
