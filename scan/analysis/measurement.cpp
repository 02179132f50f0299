#include "scan/analysis/measurement.h"

#include "driver/reportOutput.h"

std::optional<Fingerprint> fingerprintOf(const VideoSource& source) {
  Fingerprint fingerprint;
  const bool isTaken = source.path != "-" && takeFingerprint(source.path, &fingerprint);
  return isTaken ? std::optional(fingerprint) : std::nullopt;
}

Measurement measureVideo(const VideoSource& source, const AnalysisOptions& options,
                         int decoderThreads, FILE* rows, const ProgressListener& onProgress) {
  Measurement measured;
  VideoReader reader;
  measured.openError = openVideo(source, decoderThreads, &reader);
  measured.fingerprint = fingerprintOf(source);
  if (!measured.openError.empty()) return measured;

  FrameTable& frames = measured.frames;
  if (rows != nullptr) printReportHeader(rows);
  measured.outcome = analyseVideo(options, &reader, [&](const FrameRecord& record) {
    if (frames.rows() == 0) frames.firstFrame = record.frame;
    appendRow(record.row, &frames);
    if (rows != nullptr) {
      printReportRow(rows, static_cast<int32_t>(record.frame), record.spatial, record.temporal);
    }
    onProgress(record.position, frames.rows());
  });
  if (frames.rows() > 0) {
    const auto last = static_cast<size_t>(frames.rows() - 1);
    frames.messages.set(last, frames.messages[last] + measured.outcome.messagesBehind);
  }
  measured.frameRate = averageFrameRate(reader);
  measured.stream = streamFacts(reader);
  measured.warnings = streamWarnings(reader);
  return measured;
}
