// What there is to say about one video: the record that becomes result.json, its frames, its
// events.
#ifndef LUMASCAN_VIDEO_RESULT_H
#define LUMASCAN_VIDEO_RESULT_H

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "scan/analysis/indicatorSummary.h"
#include "scan/analysis/measurement.h"
#include "scan/events/event.h"
#include "scan/events/thresholds.h"
#include "scan/events/verdict.h"
#include "scan/numbers/unknown.h"
#include "scan/record/outputChoice.h"
#include "scan/version.h"

struct InputFacts {
  std::string path;     // as it was given; in JSON, bytes that are no UTF-8 are U+FFFD
  std::string pathUri;  // the same bytes, percent-encoded
  std::optional<Fingerprint> fingerprint;  // none of a pipe
  std::optional<StreamFacts> stream;       // none of what cannot be opened
};

// What was asked about a video.
struct AskedOptions {
  IndicatorMask indicators = 0;
  double fps = 0.0;   // frames per second; 0: the stream's
  std::string start;  // as it was written; empty: from the first frame
  std::string end;    // to the last one
  std::string raw;    // WIDTHxHEIGHT@FPS; empty: the file has headers
  int stream = -1;    // number of the video's stream; negative: the main one
};

struct AnalysisFacts {
  IndicatorMask indicators = 0;
  double fps = UNKNOWN;
  LumaPath lumaPath = LumaPath::NONE;
  int64_t firstFrame = 0;
  double start = UNKNOWN;  // seconds: when the first frame appears; NaN: unknown
  double end = UNKNOWN;    // seconds: when the last one goes; NaN: unknown
  // None in a stored result that does not say.
  std::optional<int64_t> frames;
  std::optional<int64_t> corruptFrames;
  std::optional<int64_t> decodeErrors;
  int64_t messages = 0;                // of damage
  int64_t messagesBeforeKeyFrame = 0;  // others, of a stream that begins between key frames
  int64_t missingAtEnd = 0;            // frames that should have come behind the last one
  std::vector<Join> joins;             // of recordings, at most MOST_JOINS
  AnalysisEnd endedBy = AnalysisEnd::COMPLETE;
};

// Whether what decoded the video was confined to what it needs.
struct SandboxFacts {
  bool isOn = false;
  std::string whyNot;  // empty: it is on, or a stored result does not say
};

// docs/results.md, without the events.
struct ResultRecord {
  std::string toolVersion = LUMASCAN_VERSION;
  InputFacts input;
  AskedOptions options;
  SandboxFacts sandbox;
  std::optional<AnalysisFacts> analysis;  // none of what cannot be opened
  Status status = Status::FAILED;
  std::string error;  // why it is not complete, in words; empty: it is
  bool isTruncated = false;
  std::vector<std::string> warnings;
  std::vector<DamageMessage> messages;  // the first ones of damage
  Judgement judgement;
  IndicatorSummaries indicators;  // of what was analysed
  MeasureStatistics measures;
  Thresholds thresholds;
  OutputChoice outputs;
  int64_t pictures = 0;  // that are stored beside it
};

// JPEG pictures of frames, by the frames' numbers.
using Thumbnails = std::map<int64_t, std::string>;

struct VideoResult {
  ResultRecord record;
  FrameTable frames;
  std::vector<Event> events;
  Thumbnails thumbnails;
};

AskedOptions askedOptions(const VideoSource& source, const AnalysisOptions& options);
bool operator==(const AskedOptions& a, const AskedOptions& b);

// Opens and analyses a video. Whatever happens there is a result, whose status says how far it got.
// The parameters are those of measureVideo().
VideoResult analyseSource(const VideoSource& source, const AnalysisOptions& options,
                          int decoderThreads, FILE* rows, const ProgressListener& onProgress);

// The result of a video of which nothing could be found out.
VideoResult failedResult(const VideoSource& source, const AnalysisOptions& options,
                         const std::string& error);

// Finds the events and the verdict, in place of those that the result has.
void judgeResult(const Thresholds& thresholds, VideoResult* result);

#endif
