// How FFmpeg gets at a file: through what is open already, and at nothing else.
#ifndef LUMASCAN_CONTAINER_INPUT_H
#define LUMASCAN_CONTAINER_INPUT_H

#include <atomic>
#include <functional>
#include <string>

#include "scan/files/inputFile.h"
#include "scan/video/ffmpeg.h"

// Where a video comes from, and how far it is waited for and decoded.
struct VideoSource {
  std::string path;     // for people; "-" of standard input
  int rawWidth = 0;     // 0: the file has headers. Else it is planar YUV 4:2:0, 8 bit, without any:
  int rawHeight = 0;    // frames of this size
  std::string rawRate;  // and so many per second, a number or a fraction
  int stream = -1;      // the number of a stream of the file; negative: its main video
  bool isStandardInput = false;                // it is a YUV4MPEG stream from there
  OpenInput file = nullptr;                    // open; none: it is to be opened by its path
  double patience = 0.0;                       // seconds that a pipe may be silent; 0: any time
  int64_t maxPixels = int64_t{16384} * 16384;  // of a picture; larger ones are not decoded
};

// The source's file, opened where it is not.
OpenInput fileOf(const VideoSource& source);

// What FFmpeg reads a file through; outlives the container.
struct ContainerInput {
  OpenInput file;
  int64_t place = 0;     // the next byte's
  int64_t furthest = 0;  // of all so far
  // Told when more has been read than before, and how much of the file, 0 to 1; of a pipe 0.
  std::function<void(double position)> onAdvance = [](double) {};
  std::atomic<bool> isGivenUp = false;  // ends reading, even from a pipe that is silent
  double patience = 0.0;                // as of the source
  FfmpegOwner<AVIOContext> stream;
};

// Opens the container, which has been allocated, over the source's file. Every other file that it
// names stays closed, and so does what is no video of one file: playlists, texts, sound. Frees the
// container when that fails. Returns an empty text, or what is wrong and what to do.
std::string openContainer(const VideoSource& source, ContainerInput* input,
                          AVFormatContext** container);

// Whether FFmpeg's demuxer of this name reads videos that are one file.
bool isVideoContainer(const std::string& demuxer);

#endif
