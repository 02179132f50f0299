// Frames of the video in a file of any container and codec, in the order in which they are shown.
#ifndef LUMASCAN_VIDEO_READER_H
#define LUMASCAN_VIDEO_READER_H

#include <cstdint>
#include <deque>
#include <string>
#include <vector>

#include "scan/numbers/unknown.h"
#include "scan/video/containerInput.h"
#include "scan/video/damageLog.h"
#include "scan/video/ffmpeg.h"

constexpr size_t MOST_BEFORE_KEY_FRAME = 10000;

struct VideoReader {
  DamageLog log;         // outlives what writes to it
  ContainerInput input;  // and this what reads from it
  FfmpegOwner<AVFormatContext> container;
  FfmpegOwner<AVCodecContext> decoder;
  FfmpegOwner<AVPacket> packet;
  std::deque<FfmpegOwner<AVPacket>> ahead;  // read to see the frame rate, and still to be decoded
  // The video. Not to be looked up while another thread reads: a stream that begins late moves the
  // container's list.
  AVStream* stream = nullptr;
  double start = 0.0;              // seconds: where the container's time begins
  bool isDrained = false;          // the container has no further packets
  bool hasKeyPacket = false;       // a packet of a key frame has come
  double packetTime = UNKNOWN;     // seconds: when what is in the last packet so far is shown
  double keyPacketTime = UNKNOWN;  // the same of the first one of a key frame
  int64_t decodeErrors = 0;        // packets that the decoder has refused since one came
  int64_t refusedBefore = 0;       // and before it
  bool endsInDamage = false;       // the video's last packet so far was not whole
  double lastShown = UNKNOWN;      // seconds: when the last picture of all packets so far is shown
  int64_t lastTick = 0;  // the same in the stream's unit; where that is unknown, when it is decoded
  bool hasFields = false;  // a picture came that consists of two fields
  double lastEnd = 0.0;    // seconds from zero: when the last packet so far, of any stream, ends
  int64_t bytesRead = 0;   // place in the file behind the last packet so far
  std::vector<ContainerMessage> unplaced;  // said about bytes behind the last packet so far
  std::vector<DamageMessage> damage;       // said and not taken yet
  // What was said of a stream that begins in the middle of a group of pictures, where it must come
  // to that: before its first key frame, and of pictures shown before that.
  std::vector<DamageMessage> beforeKeyFrame;  // at most MOST_BEFORE_KEY_FRAME
};

// Opens the source's main video: the stream that a player would choose, and no cover art; or the
// one that is named. Returns an empty text, or why there is nothing to read.
//
// threads   that the decoder may use; 0: as many as the machine has
std::string openVideo(const VideoSource& source, int threads, VideoReader* reader);

enum class ReadResult { FRAME, END, FAILURE };

// Decodes the next frame into `picture`. A packet that the decoder refuses is counted and passed
// over; damaged frames are delivered as they were decoded. A failure is one of reading the file;
// `error` then says why.
ReadResult readFrame(VideoReader* reader, AVFrame* picture, std::string* error);

// Takes what was said about what is shown up to this time; NaN: about all so far.
std::vector<DamageMessage> takeDamage(VideoReader* reader, double time);

const AVStream& videoStream(const VideoReader& reader);

// Seconds from the start of the file at which a picture appears; NaN when it has no timestamp.
double presentationTime(const VideoReader& reader, const AVFrame& picture);

// Seconds for which it is shown; NaN when the file does not say.
double presentationDuration(const VideoReader& reader, const AVFrame& picture);

// Whether the decoder found damage in the picture.
bool isCorrupt(const AVFrame& picture);

// Average frames per second of the stream. Where it does not say, what its first packets show; 25
// where they show nothing.
double averageFrameRate(const VideoReader& reader);

// Seconds that the container says it lasts; NaN when it does not, or when that is only a guess from
// what there is.
double declaredDuration(const VideoReader& reader);

// Whether a file that has been read to its end ends before the time that its container declares, in
// the middle of a packet, or without what closes a file of its kind.
bool isTruncated(const VideoReader& reader);

// How many frames should have come behind the last one: those whose packets came, and those that an
// AVI file has counted: its times go on behind a lost packet as if it had never been.
//
// time     seconds: when the last frame is shown, by its timestamp
// spacing  seconds from frame to frame; NaN: unknown
int64_t framesMissingBehind(const VideoReader& reader, double time, double spacing);

// How much of the file is behind the reader, 0 to 1, by the bytes read; 0 for a pipe.
double positionInFile(const VideoReader& reader);

#endif
