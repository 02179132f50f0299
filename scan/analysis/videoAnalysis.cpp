#include "scan/analysis/videoAnalysis.h"

#include <cmath>
#include <new>
#include <utility>

#include "driver/videoInput.h"
#include "scan/measures/frameMeasures.h"
#include "scan/numbers/decimals.h"
#include "scan/video/decodedFrames.h"

namespace {

// What can be computed of frames of this size: blackout needs a whole block.
IndicatorMask computable(IndicatorMask mask, const Image& frame) {
  const bool hasBlock = frame.w >= BLOCKSIZE && frame.h >= BLOCKSIZE;
  return hasBlock ? mask : mask & ~IndicatorMask{BLACKOUT};
}

int64_t timestamp(const AVFrame& picture) {
  const int64_t pts = picture.best_effort_timestamp;
  return pts == AV_NOPTS_VALUE ? NO_TIMESTAMP : pts;
}

// Seconds for which a picture is shown, of which the file need not say anything.
double durationOf(const VideoReader& reader, const AVFrame& picture) {
  const double duration = presentationDuration(reader, picture);
  return std::isnan(duration) ? 1.0 / averageFrameRate(reader) : duration;
}

// Makes the images, or sees that the frame fits them.
AnalysisEnd accept(const AVFrame& picture, bool isFirst, FrameImages* images,
                   AnalysisOutcome* outcome) {
  const auto w = static_cast<uint32_t>(picture.width);
  const auto h = static_cast<uint32_t>(picture.height);
  if (isFirst) {
    if (!isFrameSizeSupported(picture.width, picture.height)) {
      outcome->error = "frames of this size are not supported";
      return AnalysisEnd::UNSUPPORTED;
    }
    *images = makeFrameImages(w, h);
    const bool hasMemory = images->current.data != nullptr && images->previous.data != nullptr;
    if (!hasMemory) throw std::bad_alloc();
    outcome->lumaPath = lumaPathOf(static_cast<AVPixelFormat>(picture.format));
  }
  const bool isSameSize = w == images->current.w && h == images->current.h;
  return isSameSize ? AnalysisEnd::COMPLETE : AnalysisEnd::SIZE_CHANGE;
}

bool showsDamage(const VideoReader& reader, const DecodedFrame& decoded) {
  // Of several threads the others are ahead of what they say.
  const bool isSaid =
      !decoded.damage.empty() || decoded.messagesAhead > 0 || decoded.messagesBeforeKeyFrame > 0;
  const bool isSeen = decoded.result == ReadResult::FRAME ? isCorrupt(*decoded.picture)
                      : decoded.result == ReadResult::END ? isTruncated(reader)
                                                          : true;
  return isSaid || isSeen || decoded.decodeErrors > 0;
}

// Counts messages, and keeps the first ones, whose times are to be moved by so many seconds.
// Returns how many they are.
int64_t keepMessages(const std::vector<DamageMessage>& messages, double offset,
                     AnalysisOutcome* outcome) {
  for (const DamageMessage& message : messages) {
    if (outcome->firstMessages.size() == MOST_MESSAGES) break;
    outcome->firstMessages.push_back(message);
    outcome->firstMessages.back().time = wholeNanoseconds(message.time + offset);
  }
  const auto count = static_cast<int64_t>(messages.size());
  outcome->messages += count;
  return count;
}

AnalysisEnd analyseFrames(const AnalysisOptions& options, const VideoReader& reader,
                          const std::function<DecodedFrame()>& next, FrameImages* images,
                          JoinedTimes* times, AnalysisOutcome* outcome,
                          const std::function<void(const FrameRecord&)>& onFrame,
                          const SkipListener& onSkipped) {
  const double fps = options.fps > 0.0 ? options.fps : averageFrameRate(reader);
  for (const Position* position : {&options.start, &options.end}) {
    outcome->error = mistakeAtRate(*position, fps);
    if (!outcome->error.empty()) return AnalysisEnd::UNSUPPORTED;
  }
  const auto schedule = options.isThreaded ? analyseFrame : analyseFrameSerially;
  LumaConverter converter;
  TemporalResults temporal = {};
  FrameMeasures measures;
  for (int64_t frame = 0;; ++frame) {
    const DecodedFrame decoded = next();
    outcome->error = decoded.error;
    // The reader may be ahead by now, and its count that of frames behind the last one.
    outcome->decodeErrors = decoded.decodeErrors;
    outcome->messagesBeforeKeyFrame = decoded.messagesBeforeKeyFrame;
    if (options.endsAtDamage && showsDamage(reader, decoded)) return AnalysisEnd::DAMAGE;
    if (decoded.result == ReadResult::END) {
      outcome->isTruncated = isTruncated(reader);
      outcome->messagesBehind = keepMessages(decoded.damage, times->offset, outcome);
      if (!outcome->isTruncated && times->joins.empty())
        outcome->missingAtEnd = framesMissingBehind(reader, times->stamp, times->spacing);
      return AnalysisEnd::COMPLETE;
    }
    if (decoded.result == ReadResult::FAILURE) return AnalysisEnd::READ_ERROR;

    const AVFrame& picture = *decoded.picture;
    const double time =
        timeOfFrame(frame, presentationTime(reader, picture), durationOf(reader, picture), times);
    const bool isEnding = !options.end.text.empty();
    if (isEnding && isAtOrBehind(frame, time, fps, options.end)) return AnalysisEnd::COMPLETE;
    // Times may fall back: behind the first frame that is analysed none is passed over.
    const bool isFirst = outcome->frames == 0;
    const bool isStarting = isFirst && !options.start.text.empty();
    if (isStarting && !isAtOrBehind(frame, time, fps, options.start)) {
      onSkipped(decoded.position);
      continue;
    }

    const AnalysisEnd end = accept(picture, isFirst, images, outcome);
    if (end != AnalysisEnd::COMPLETE) return end;
    if (!convertToLuma(&picture, &converter, images->current.data)) {
      outcome->error = "no luma is known of this pixel format";
      return AnalysisEnd::UNSUPPORTED;
    }
    const IndicatorMask mask = computable(withNeeded(options.mask), images->current);
    schedule(mask, fps, !isFirst, images, &temporal);
    const bool isDamaged = isCorrupt(picture);
    IndicatorMask infinite = 0;
    const IndicatorValues values = measuredValues(Results, temporal, mask, !isFirst,
                                                  images->current.w, images->current.h, &infinite);
    onFrame(
        {frame,
         {timestamp(picture), time, presentationDuration(reader, picture), picture.key_frame != 0,
          isDamaged, values, keepMessages(decoded.damage, times->offset, outcome), infinite,
          measures.of(images->current, isFirst ? nullptr : &images->previous,
                      lumaRangeOf(picture))},
         Results,
         temporal,
         decoded.position});
    ++outcome->frames;
    outcome->corruptFrames += isDamaged ? 1 : 0;
    swapFrames(images);
  }
}

}  // namespace

AnalysisOutcome analyseVideo(const AnalysisOptions& options, VideoReader* reader,
                             const std::function<void(const FrameRecord&)>& onFrame,
                             const SkipListener& onSkipped) {
  AnalysisOutcome outcome = {};
  FrameImages images = {};
  JoinedTimes times;
  if (options.isThreaded) {
    DecodeAhead ahead(reader);
    // The decoder's threads have their stacks by now.
    useSmallStacks();
    outcome.end = analyseFrames(
        options, *reader, [&] { return fetchNext(&ahead); }, &images, &times, &outcome, onFrame,
        onSkipped);
  } else {
    outcome.end = analyseFrames(
        options, *reader, [&] { return decodeNext(reader); }, &images, &times, &outcome, onFrame,
        onSkipped);
  }
  freeFrameImages(&images);
  outcome.joins = std::move(times.joins);
  return outcome;
}
