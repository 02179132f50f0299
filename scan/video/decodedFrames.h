// The frames of a video one after the other, decoded when they are asked for or some ahead.
#ifndef LUMASCAN_DECODED_FRAMES_H
#define LUMASCAN_DECODED_FRAMES_H

#include <condition_variable>
#include <deque>
#include <mutex>
#include <string>
#include <thread>

#include "scan/video/videoReader.h"

struct DecodedFrame {
  ReadResult result;
  std::string error;                  // of a failure
  FfmpegOwner<AVFrame> picture;       // of a frame
  double position;                    // in the file, 0 to 1, as positionInFile() has it
  int64_t decodeErrors;               // packets refused up to here, as the reader counts them
  std::vector<DamageMessage> damage;  // said about what is shown up to here and not told before
  size_t messagesAhead;               // that were said about what is shown later
  int64_t messagesBeforeKeyFrame;     // that were said so far
};

DecodedFrame decodeNext(VideoReader* reader);

// Decodes on a thread of its own, a few frames ahead. While it lives the reader is its alone.
struct DecodeAhead {
  explicit DecodeAhead(VideoReader* from);
  ~DecodeAhead();  // gives up what is not fetched
  DecodeAhead(const DecodeAhead&) = delete;
  DecodeAhead& operator=(const DecodeAhead&) = delete;

  std::mutex mutex;
  std::condition_variable changed;
  std::deque<DecodedFrame> frames;
  bool isAbandoned = false;
  VideoReader* reader;
  std::thread thread;
};

// The next frame, as decodeNext() gives it. Not to be called again behind one that is none.
DecodedFrame fetchNext(DecodeAhead* ahead);

#endif
