#include "scan/analysis/measurement.h"

#include <fmt/core.h>

#include <atomic>

#include "driver/reportOutput.h"
#include "scan/numbers/sortedValues.h"

namespace {

// Where frames come at another rate than the container declares; else an empty text.
std::string rateWarning(const FrameTable& frames, double declared) {
  constexpr double FACTOR = 1.5;
  const double step = medianStep(frames.time);  // NaN: there is none
  const double ratio = declared * step;
  if (!(ratio >= FACTOR || ratio <= 1.0 / FACTOR)) return "";
  return fmt::format("{:.6g} frames per second are declared, but most come at {:.6g} per second",
                     declared, 1.0 / step);
}

}  // namespace

const char* stageName(Stage stage) {
  switch (stage) {
    case Stage::OPENING:
      return "opening";
    case Stage::SKIPPING:
      return "skipping";
    case Stage::DECODING:
      return "decoding";
    case Stage::STATISTICS:
      return "statistics";
    case Stage::EVENTS:
      return "events";
    case Stage::PICTURES:
      return "pictures";
    default:
      return "writing";
  }
}

std::optional<Fingerprint> fingerprintOf(const VideoSource& source) {
  Fingerprint fingerprint;
  const OpenInput file = fileOf(source);
  return takeFingerprint(*file, &fingerprint) ? std::optional(fingerprint) : std::nullopt;
}

Measurement measureVideo(const VideoSource& source, const AnalysisOptions& options,
                         int decoderThreads, FILE* rows, const ProgressListener& onProgress) {
  Measurement measured;
  VideoReader reader;
  std::atomic<Stage> stage = Stage::OPENING;
  std::atomic<int64_t> rowsDone = 0;
  reader.input.onAdvance = [&](double position) { onProgress(stage, position, rowsDone); };
  measured.openError = openVideo(source, decoderThreads, &reader);
  measured.fingerprint = fingerprintOf(source);
  if (!measured.openError.empty()) return measured;

  FrameTable& frames = measured.frames;
  if (rows != nullptr) printReportHeader(rows);
  const auto take = [&](const FrameRecord& record) {
    if (frames.rows() == 0) frames.firstFrame = record.frame;
    appendRow(record.row, &frames);
    if (rows != nullptr) {
      printReportRow(rows, static_cast<int32_t>(record.frame), record.spatial, record.temporal);
    }
    stage = Stage::DECODING;
    rowsDone = frames.rows();
    onProgress(stage, record.position, rowsDone);
  };
  stage = options.start.text.empty() ? Stage::DECODING : Stage::SKIPPING;
  measured.outcome = analyseVideo(options, &reader, take,
                                  [&](double position) { onProgress(stage, position, 0); });
  if (frames.rows() > 0) {
    const auto last = static_cast<size_t>(frames.rows() - 1);
    frames.messages.set(last, frames.messages[last] + measured.outcome.messagesBehind);
  }
  measured.frameRate = averageFrameRate(reader);
  measured.stream = streamFacts(reader);
  measured.warnings = streamWarnings(reader);
  const std::string warning = rateWarning(frames, measured.stream->frameRate);
  if (!warning.empty()) measured.warnings.push_back(warning);
  return measured;
}
