#include "scan/processes/scanJob.h"

#include <new>
#include <system_error>

#include "scan/numbers/column.h"
#include "scan/results/thumbnails.h"

namespace {

// What came through a pipe is gone, and cannot be decoded twice.
bool isPipe(const VideoSource& source) {
  return !fileOf(source)->isRegular;
}

JobEnd judgeAndStore(const ScanJob& job, const ScanSettings& settings, OutputFile* rows,
                     const ProgressListener& onProgress, VideoResult* result) {
  const auto tell = [&](Stage stage) { onProgress(stage, 1.0, result->frames.rows()); };
  tell(Stage::EVENTS);
  judgeResult(settings.thresholds, result);
  result->record.outputs = settings.outputs;
  const bool hasPictures = settings.outputs.hasHtml && !isPipe(job.source);
  const Thumbs thumbs = hasPictures ? settings.outputs.thumbs : Thumbs::NONE;
  result->thumbnails = makeThumbnails(job.source, result->frames,
                                      framesToShow(result->events, thumbs, result->frames),
                                      [&] { tell(Stage::PICTURES); });
  result->record.pictures = static_cast<int64_t>(result->thumbnails.size());
  return {false, storeResult(job.folder, *result, rows, [&] { tell(Stage::WRITING); })};
}

JobEnd analyseAndStore(const ScanJob& job, const ScanSettings& settings,
                       const ProgressListener& onProgress) {
  std::string mistake = makeResultFolder(job.output, job.folder);
  if (!mistake.empty()) return {false, mistake};
  if (settings.sandbox.isOn) {
    openPieceFile();
    mistake = confineProcess(job.folder);
    if (!mistake.empty()) return {false, "cannot confine a process: " + mistake};
  }
  VideoResult stored;
  if (job.freshness == Freshness::JUDGE && readResult(job.folder, &stored).empty()) {
    return judgeAndStore(job, settings, nullptr, onProgress, &stored);
  }
  OutputFile rows;
  const bool hasRows = settings.outputs.hasCsv;
  if (hasRows) {
    std::string error = beginRows(job.folder, &rows);
    if (!error.empty()) return {false, error};
  }
  AnalysisOptions analysis = settings.analysis;
  analysis.isThreaded = job.isThreaded;
  const int threads = isPipe(job.source) ? 1 : job.decoderThreads;
  analysis.endsAtDamage = threads > 1;
  VideoResult result =
      analyseSource(job.source, analysis, threads, hasRows ? rows.stream : nullptr, onProgress);
  const std::optional<AnalysisFacts>& facts = result.record.analysis;
  if (facts && facts->endedBy == AnalysisEnd::DAMAGE) return {true, ""};
  result.record.sandbox = settings.sandbox;
  return judgeAndStore(job, settings, hasRows ? &rows : nullptr, onProgress, &result);
}

}  // namespace

JobEnd runJob(const ScanJob& job, const ScanSettings& settings,
              const ProgressListener& onProgress) {
  try {
    return analyseAndStore(job, settings, onProgress);
  } catch (const std::system_error& error) {  // the columns' temporary file, for one
    const bool isThread = error.code() == std::errc::resource_unavailable_try_again;
    if (!isThread) return {false, error.what()};
  } catch (const std::bad_alloc&) {
  }
  // Every thread of a decoder has pictures of its own.
  if (job.decoderThreads > 1 && !isPipe(job.source)) return {true, ""};
  return {false, storeFailure(job, settings, NO_MEMORY)};
}

std::string storeFailure(const ScanJob& job, const ScanSettings& settings,
                         const std::string& error) {
  std::string mistake = makeResultFolder(job.output, job.folder);
  if (!mistake.empty()) return mistake;
  VideoResult result = failedResult(job.source, settings.analysis, error);
  result.record.sandbox = settings.sandbox;
  judgeResult(settings.thresholds, &result);
  result.record.outputs = settings.outputs;
  return storeResult(job.folder, result, nullptr);
}
