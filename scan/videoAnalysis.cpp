#include "scan/videoAnalysis.h"

#include "driver/videoInput.h"
#include "scan/luma.h"

namespace {

// What can be computed of frames of this size: blackout needs a whole block.
IndicatorMask computable(IndicatorMask mask, const Image& frame) {
  const bool hasBlock = frame.w >= BLOCKSIZE && frame.h >= BLOCKSIZE;
  return hasBlock ? mask : mask & ~IndicatorMask{BLACKOUT};
}

AnalysisEnd analyseFrames(const AnalysisOptions& options, VideoReader* reader, FrameImages* images,
                          AnalysisOutcome* outcome,
                          const std::function<void(const FrameRecord&)>& onFrame) {
  const double fps = options.fps > 0.0 ? options.fps : averageFrameRate(*reader);
  const auto schedule = options.isThreaded ? analyseFrame : analyseFrameSerially;
  LumaConverter converter;
  TemporalResults temporal = {};
  for (;;) {
    const ReadResult result = readFrame(reader, &outcome->error);
    if (result == ReadResult::END) return AnalysisEnd::COMPLETE;
    if (result == ReadResult::FAILURE) return AnalysisEnd::READ_ERROR;

    const AVFrame& picture = *reader->picture;
    const auto w = static_cast<uint32_t>(picture.width);
    const auto h = static_cast<uint32_t>(picture.height);
    const bool isFirst = outcome->frames == 0;
    if (isFirst) {
      if (!isFrameSizeSupported(picture.width, picture.height)) {
        outcome->error = "frames are too large";
        return AnalysisEnd::UNSUPPORTED;
      }
      *images = makeFrameImages(w, h);
    } else if (w != images->current.w || h != images->current.h) {
      return AnalysisEnd::SIZE_CHANGE;
    }
    if (!convertToLuma(&picture, &converter, images->current.data)) {
      outcome->error = "no luma is known of this pixel format";
      return AnalysisEnd::UNSUPPORTED;
    }

    schedule(computable(options.mask, images->current), fps, !isFirst, images, &temporal);
    const bool isDamaged = isCorrupt(picture);
    onFrame({static_cast<int32_t>(outcome->frames), presentationTime(*reader),
             presentationDuration(*reader), picture.key_frame != 0, isDamaged, Results, temporal});
    ++outcome->frames;
    outcome->corruptFrames += isDamaged ? 1 : 0;
    swapFrames(images);
  }
}

}  // namespace

AnalysisOutcome analyseVideo(const AnalysisOptions& options, VideoReader* reader,
                             const std::function<void(const FrameRecord&)>& onFrame) {
  AnalysisOutcome outcome = {AnalysisEnd::COMPLETE, "", 0, 0, 0};
  FrameImages images = {};
  outcome.end = analyseFrames(options, reader, &images, &outcome, onFrame);
  freeFrameImages(&images);
  outcome.decodeErrors = reader->decodeErrors;
  return outcome;
}
