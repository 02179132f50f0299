// Frames of the video in a file of any container and codec, in the order in which they are shown.
#ifndef LUMASCAN_VIDEO_READER_H
#define LUMASCAN_VIDEO_READER_H

#include <cstdint>
#include <string>

#include "scan/ffmpeg.h"

struct VideoReader {
  FfmpegOwner<AVFormatContext> container;
  FfmpegOwner<AVCodecContext> decoder;
  FfmpegOwner<AVPacket> packet;
  FfmpegOwner<AVFrame> picture;  // the one read last
  int stream = -1;               // index in the container
  bool isDrained = false;        // the container has no further packets
  int64_t decodeErrors = 0;      // packets that the decoder has refused so far
};

// Opens the file's main video: the stream that a player would choose, and no cover art. Returns an
// empty text, or why there is nothing to read.
//
// threads   that the decoder may use; 0: as many as the machine has
std::string openVideo(const std::string& path, int threads, VideoReader* reader);

enum class ReadResult { FRAME, END, FAILURE };

// Decodes the next frame into reader->picture, where it stays until the next call. A packet that
// the decoder refuses is counted and passed over; damaged frames are delivered as they were
// decoded. A failure is one of reading the file; `error` then says why.
ReadResult readFrame(VideoReader* reader, std::string* error);

// Presentation time of the picture in seconds, from the start of the file's clock; NaN when it has
// none.
double presentationTime(const VideoReader& reader);

// Seconds for which the picture is shown; NaN when the file does not say.
double presentationDuration(const VideoReader& reader);

// Whether the decoder found damage in the picture.
bool isCorrupt(const AVFrame& picture);

// Average frames per second of the stream; 25 when it does not say.
double averageFrameRate(const VideoReader& reader);

#endif
