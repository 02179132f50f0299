#include "scan/results/videoResult.h"

#include <limits>

#include "driver/reportOutput.h"
#include "scan/events/eventDetection.h"
#include "scan/events/verdict.h"
#include "scan/files/fingerprint.h"
#include "scan/files/names.h"
#include "scan/numbers/decimals.h"
#include "scan/numbers/statistics.h"
#include "scan/version.h"
#include "scan/video/streamFacts.h"

namespace {

constexpr double UNDEFINED = std::numeric_limits<double>::quiet_NaN();
constexpr size_t OVERVIEW_POINTS = 64;

Json fileFacts(const VideoSource& source) {
  Json facts;
  facts["path"] = source.path;
  facts["path_uri"] = uriPath(source.path);
  facts["size"] = nullptr;
  facts["mtime_ns"] = nullptr;
  facts["checksum"] = nullptr;
  Fingerprint fingerprint;
  if (source.path != "-" && takeFingerprint(source.path, &fingerprint)) {
    facts["size"] = fingerprint.size;
    facts["mtime_ns"] = fingerprint.modificationTime;
    facts["checksum"] = fingerprint.checksum;
  }
  return facts;
}

Json requestedNames(IndicatorMask mask) {
  Json names = Json::array();
  for (size_t i = 0; i < INDICATORS; ++i) {
    if ((mask >> i & 1) != 0) names.push_back(INDICATOR_TABLE[i].name);
  }
  return names;
}

Json emptyResult(const VideoSource& source, const AnalysisOptions& options) {
  Json result;
  result["schema_version"] = "1.0";
  result["tool"] = {{"name", "lumascan"}, {"version", LUMASCAN_VERSION}};
  result["input"] = fileFacts(source);
  result["options"] = optionsJson(source, options);
  result["analysis"] = nullptr;
  result["status"] = "failed";
  result["error"] = nullptr;
  result["truncated"] = false;
  result["warnings"] = Json::array();
  result["verdict"] = "incomplete";
  result["reasons"] = Json::array();
  result["indicators"] = Json::object();
  result["thresholds"] = Json::object();
  return result;
}

const char* lumaName(LumaPath path) {
  switch (path) {
    case LumaPath::COPIED:
      return "copied";
    case LumaPath::NARROWED:
      return "narrowed";
    case LumaPath::CONVERTED:
      return "converted";
    default:
      return "none";
  }
}

const char* endName(AnalysisEnd end) {
  switch (end) {
    case AnalysisEnd::READ_ERROR:
      return "read_error";
    case AnalysisEnd::SIZE_CHANGE:
      return "size_change";
    case AnalysisEnd::UNSUPPORTED:
      return "unsupported";
    default:
      return "end";
  }
}

// When the last frame goes. One that does not say how long it is shown stays for an average frame.
double endOfLast(const FrameTable& frames, double frameRate) {
  if (frames.rows() == 0) return UNDEFINED;
  const double duration = frames.duration.back();
  return wholeNanoseconds(frames.time.back() + (std::isnan(duration) ? 1.0 / frameRate : duration));
}

Json analysisFacts(const AnalysisOutcome& outcome, const AnalysisOptions& options,
                   const FrameTable& frames, double fps, double frameRate) {
  Json facts;
  facts["indicators"] = requestedNames(options.mask);
  facts["fps"] = fps;
  facts["luma"] = lumaName(outcome.lumaPath);
  facts["first_frame"] = frames.firstFrame;
  facts["frames"] = outcome.frames;
  facts["start_s"] = numberOrNull(frames.rows() > 0 ? frames.time.front() : UNDEFINED);
  facts["end_s"] = numberOrNull(endOfLast(frames, frameRate));
  facts["corrupt_frames"] = outcome.corruptFrames;
  facts["decode_errors"] = outcome.decodeErrors;
  facts["ended_by"] = endName(outcome.end);
  return facts;
}

// Why the analysis is not complete, in words; empty when it is.
std::string shortcoming(const AnalysisOutcome& outcome) {
  if (outcome.end == AnalysisEnd::SIZE_CHANGE)
    return "the picture size changes: analysed up to there";
  if (!outcome.error.empty()) return outcome.error;
  if (outcome.frames == 0) return "there is no frame to analyse";
  if (outcome.isTruncated) return "the file is cut: its end is missing";
  if (outcome.decodeErrors == 1) return "a packet could not be decoded: its picture is missing";
  if (outcome.decodeErrors > 1) {
    return std::to_string(outcome.decodeErrors) +
           " packets could not be decoded: their pictures are missing";
  }
  return "";
}

// Means of the defined values of stretches of equal length; null where there are none.
Json overview(const Column<double>& values) {
  const size_t points = std::min(OVERVIEW_POINTS, values.size());
  Json means = Json::array();
  for (size_t k = 0; k < points; ++k) {
    double sum = 0.0;
    double count = 0.0;
    for (size_t i = k * values.size() / points; i < (k + 1) * values.size() / points; ++i) {
      if (std::isnan(values[i])) continue;
      sum += values[i];
      count += 1.0;
    }
    means.push_back(count > 0.0 ? Json(sum / count) : Json(nullptr));
  }
  return means;
}

Json indicatorFacts(const Column<double>& values) {
  const Statistics statistics = statisticsOf(values);
  Json facts;
  facts["n"] = statistics.n;
  facts["min"] = numberOrNull(statistics.min);
  facts["max"] = numberOrNull(statistics.max);
  facts["mean"] = numberOrNull(statistics.mean);
  facts["stdev"] = numberOrNull(statistics.stdev);
  facts["p1"] = numberOrNull(statistics.p1);
  facts["p5"] = numberOrNull(statistics.p5);
  facts["p50"] = numberOrNull(statistics.p50);
  facts["p95"] = numberOrNull(statistics.p95);
  facts["p99"] = numberOrNull(statistics.p99);
  facts["overview"] = overview(values);
  return facts;
}

}  // namespace

Json optionsJson(const VideoSource& source, const AnalysisOptions& options) {
  Json json;
  json["indicators"] = requestedNames(options.mask);
  json["fps"] = options.fps > 0.0 ? Json(options.fps) : Json(nullptr);
  json["start"] = textOrNull(options.start.text);
  json["end"] = textOrNull(options.end.text);
  json["raw"] = source.rawWidth == 0
                    ? Json(nullptr)
                    : Json(std::to_string(source.rawWidth) + 'x' +
                           std::to_string(source.rawHeight) + '@' + source.rawRate);
  return json;
}

Json failedResult(const VideoSource& source, const AnalysisOptions& options,
                  const std::string& error) {
  Json result = emptyResult(source, options);
  result["error"] = error;
  return result;
}

VideoResult analyseSource(const VideoSource& source, const AnalysisOptions& options,
                          int decoderThreads, FILE* rows, const ProgressListener& onProgress) {
  VideoReader reader;
  const std::string openError = openVideo(source, decoderThreads, &reader);
  if (!openError.empty()) return {failedResult(source, options, openError), {}, {}};

  // Before the file is read: a change while it is read is found the next time.
  VideoResult result = {emptyResult(source, options), {}, {}};
  FrameTable& frames = result.frames;
  if (rows != nullptr) printReportHeader(rows);
  const AnalysisOutcome outcome = analyseVideo(options, &reader, [&](const FrameRecord& record) {
    if (frames.rows() == 0) frames.firstFrame = record.frame;
    appendRow(record.row, &frames);
    if (rows != nullptr) {
      printReportRow(rows, static_cast<int32_t>(record.frame), record.spatial, record.temporal);
    }
    onProgress(record.position, frames.rows());
  });

  const double frameRate = averageFrameRate(reader);
  const double fps = options.fps > 0.0 ? options.fps : frameRate;
  const std::string error = shortcoming(outcome);
  result.json["input"].update(streamFacts(reader));
  result.json["analysis"] = analysisFacts(outcome, options, frames, fps, frameRate);
  result.json["status"] = statusName(outcome.frames == 0 ? Status::FAILED
                                     : error.empty()     ? Status::COMPLETE
                                                         : Status::PARTIAL);
  result.json["error"] = textOrNull(error);
  result.json["truncated"] = outcome.isTruncated;
  result.json["warnings"] = streamWarnings(reader);
  for (size_t i = 0; i < INDICATORS; ++i) {
    result.json["indicators"][INDICATOR_TABLE[i].name] = indicatorFacts(frames.values[i]);
  }
  return result;
}

void judgeResult(const Thresholds& thresholds, VideoResult* result) {
  Json& json = result->json;
  result->events.clear();
  double duration = UNDEFINED;
  if (result->frames.rows() > 0) {
    const Json& rate = json["input"]["frame_rate"];
    const double frameRate = (rate.is_null() ? json["analysis"]["fps"] : rate).get<double>();
    const bool hasSizeChange = json["analysis"]["ended_by"] == "size_change";
    result->events = detectEvents(result->frames, thresholds,
                                  {frameRate, json["truncated"].get<bool>(), hasSizeChange});
    duration = endOfLast(result->frames, frameRate) - result->frames.time.front();
  }
  const std::string error = json["error"].is_null() ? "" : json["error"].get<std::string>();
  const std::string status = json["status"].get<std::string>();
  const Judgement judgement = judge(status == "complete"  ? Status::COMPLETE
                                    : status == "partial" ? Status::PARTIAL
                                                          : Status::FAILED,
                                    error, result->events, duration);
  json["verdict"] = verdictName(judgement.verdict);
  json["reasons"] = judgement.reasons;
  json["thresholds"] = thresholdsJson(thresholds);
}
