#include "scan/record/videoResult.h"

#include <algorithm>
#include <cmath>
#include <tuple>

#include "scan/events/eventDetection.h"
#include "scan/files/names.h"
#include "scan/numbers/decimals.h"
#include "scan/numbers/unknown.h"

namespace {

// When the last frame goes. One that does not say how long it is shown stays for an average frame.
double endOfLast(const FrameTable& frames, double frameRate) {
  if (frames.rows() == 0) return UNKNOWN;
  const double duration = frames.duration.back();
  return wholeNanoseconds(frames.time.back() + (std::isnan(duration) ? 1.0 / frameRate : duration));
}

// What follows a shortcoming that may have come from a lack of memory.
std::string lackOfMemory(const AnalysisOutcome& outcome) {
  const std::vector<DamageMessage>& said = outcome.firstMessages;
  const bool isSo = std::any_of(said.begin(), said.end(), [](const DamageMessage& message) {
    return message.text == NO_MEMORY;
  });
  return isSo ? std::string("; ") + NO_MEMORY : "";
}

// Why the analysis is not complete, in words; empty when it is.
std::string shortcoming(const AnalysisOutcome& outcome, const std::string& codec) {
  if (outcome.end == AnalysisEnd::SIZE_CHANGE)
    return "the picture size changes: analysed up to there";
  if (!outcome.error.empty()) return outcome.error;
  if (outcome.frames == 0 && codec == "webp")
    return "there is no frame to analyse: FFmpeg does not decode animated WebP";
  if (outcome.frames == 0) return "there is no frame to analyse" + lackOfMemory(outcome);
  if (outcome.isTruncated) return "the file is cut: its end is missing";
  if (outcome.decodeErrors == 1)
    return "a packet could not be decoded: its picture is missing" + lackOfMemory(outcome);
  if (outcome.decodeErrors > 1) {
    return std::to_string(outcome.decodeErrors) +
           " packets could not be decoded: their pictures are missing" + lackOfMemory(outcome);
  }
  return "";
}

// Containers of pictures each of which is shown for as long as its author chose.
bool hasOwnDurations(const std::string& container) {
  return container == "gif" || container == "apng" || container == "webp_pipe";
}

AnalysisFacts analysisFacts(const AnalysisOptions& options, const Measurement& measured) {
  const AnalysisOutcome& outcome = measured.outcome;
  const FrameTable& frames = measured.frames;
  AnalysisFacts facts;
  facts.indicators = withNeeded(options.mask);
  facts.fps = options.fps > 0.0 ? options.fps : measured.frameRate;
  facts.lumaPath = outcome.lumaPath;
  facts.firstFrame = frames.firstFrame;
  facts.start = frames.rows() > 0 ? frames.time.front() : UNKNOWN;
  facts.end = endOfLast(frames, measured.frameRate);
  facts.frames = outcome.frames;
  facts.corruptFrames = outcome.corruptFrames;
  facts.decodeErrors = outcome.decodeErrors;
  facts.messages = outcome.messages;
  facts.messagesBeforeKeyFrame = outcome.messagesBeforeKeyFrame;
  facts.missingAtEnd = outcome.missingAtEnd;
  facts.joins = outcome.joins;
  facts.endedBy = outcome.end;
  return facts;
}

ResultRecord recordOf(const VideoSource& source, const AnalysisOptions& options,
                      const Measurement& measured) {
  ResultRecord record;
  record.input = {source.path, uriPath(source.path), measured.fingerprint, measured.stream};
  record.options = askedOptions(source, options);
  record.error = measured.openError;
  if (!record.error.empty()) return record;
  record.error = shortcoming(measured.outcome, measured.stream->codec);
  record.analysis = analysisFacts(options, measured);
  record.status = measured.outcome.frames == 0 ? Status::FAILED
                  : record.error.empty()       ? Status::COMPLETE
                                               : Status::PARTIAL;
  record.isTruncated = measured.outcome.isTruncated;
  record.warnings = measured.warnings;
  record.messages = measured.outcome.firstMessages;
  return record;
}

}  // namespace

AskedOptions askedOptions(const VideoSource& source, const AnalysisOptions& options) {
  AskedOptions asked = {options.mask,     options.fps, options.start.text,
                        options.end.text, "",          source.stream};
  if (source.rawWidth > 0) {
    asked.raw = std::to_string(source.rawWidth) + 'x' + std::to_string(source.rawHeight) + '@' +
                source.rawRate;
  }
  return asked;
}

bool operator==(const AskedOptions& a, const AskedOptions& b) {
  return std::tie(a.indicators, a.fps, a.start, a.end, a.raw, a.stream) ==
         std::tie(b.indicators, b.fps, b.start, b.end, b.raw, b.stream);
}

VideoResult analyseSource(const VideoSource& source, const AnalysisOptions& options,
                          int decoderThreads, FILE* rows, const ProgressListener& onProgress) {
  Measurement measured = measureVideo(source, options, decoderThreads, rows, onProgress);
  VideoResult result;
  result.record = recordOf(source, options, measured);
  const auto onStep = [&] { onProgress(Stage::STATISTICS, 1.0, measured.frames.rows()); };
  result.record.indicators = summarise(measured.frames, onStep);
  result.record.measures = measureStatistics(measured.frames, onStep);
  result.frames = std::move(measured.frames);
  return result;
}

VideoResult failedResult(const VideoSource& source, const AnalysisOptions& options,
                         const std::string& error) {
  Measurement nothing;
  nothing.openError = error;
  nothing.fingerprint = fingerprintOf(source);
  VideoResult result;
  result.record = recordOf(source, options, nothing);
  return result;
}

void judgeResult(const Thresholds& thresholds, VideoResult* result) {
  ResultRecord& record = result->record;
  result->events.clear();
  double duration = UNKNOWN;
  if (result->frames.rows() > 0) {
    const double ofStream = record.input.stream ? record.input.stream->frameRate : UNKNOWN;
    const double frameRate = std::isnan(ofStream) ? record.analysis->fps : ofStream;
    const bool hasSizeChange = record.analysis->endedBy == AnalysisEnd::SIZE_CHANGE;
    const bool startsMidstream = record.analysis->messagesBeforeKeyFrame > 0;
    const bool isAnimation = record.input.stream && hasOwnDurations(record.input.stream->container);
    result->events =
        detectEvents(result->frames, thresholds,
                     {frameRate, record.isTruncated, hasSizeChange, startsMidstream, isAnimation,
                      record.analysis->missingAtEnd, record.analysis->joins});
    duration = endOfLast(result->frames, frameRate) - result->frames.time.front();
  }
  record.judgement = judge(record.status, record.error, result->events, duration);
  record.thresholds = thresholds;
}
