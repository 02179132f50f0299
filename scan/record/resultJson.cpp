#include "scan/record/resultJson.h"

#include <algorithm>
#include <cmath>

#include "scan/files/json.h"

namespace {

constexpr char TOOL[] = "lumascan";
constexpr char SCHEMA[] = "1.0";
constexpr char CONTAINER[] = "container";
constexpr Status STATUSES[] = {Status::COMPLETE, Status::PARTIAL, Status::FAILED};
constexpr Verdict VERDICTS[] = {Verdict::INCOMPLETE, Verdict::FAIL, Verdict::ATTENTION,
                                Verdict::PASS};
constexpr LumaPath LUMA_PATHS[] = {LumaPath::COPIED, LumaPath::NARROWED, LumaPath::CONVERTED};
constexpr AnalysisEnd ENDS[] = {AnalysisEnd::COMPLETE, AnalysisEnd::READ_ERROR,
                                AnalysisEnd::SIZE_CHANGE, AnalysisEnd::UNSUPPORTED};
constexpr Thumbs THUMBS[] = {Thumbs::NONE, Thumbs::EVENTS, Thumbs::ALL};

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

// The one of these that has the name; the fallback when none has.
template <typename Enum, size_t N>
Enum named(const std::string& name, const Enum (&all)[N], const char* (*nameOf)(Enum),
           Enum fallback) {
  const Enum* const found =
      std::find_if(all, all + N, [&](Enum each) { return name == nameOf(each); });
  return found == all + N ? fallback : *found;
}

// ---- writing

Json maskJson(IndicatorMask mask) {
  Json names = Json::array();
  for (size_t i = 0; i < INDICATORS; ++i) {
    if ((mask >> i & 1) != 0) names.push_back(INDICATOR_TABLE[i].name);
  }
  return names;
}

Json countJson(const std::optional<int64_t>& count) {
  return count ? Json(*count) : Json(nullptr);
}

Json positiveOrNull(int64_t number) {
  return number > 0 ? Json(number) : Json(nullptr);
}

Json audioJson(const AudioFacts& audio) {
  Json json;
  json["stream"] = audio.stream;
  json["codec"] = audio.codec;
  json["channels"] = positiveOrNull(audio.channels);
  json["sample_rate"] = positiveOrNull(audio.sampleRate);
  json["language"] = textOrNull(audio.language);
  json["duration_s"] = numberOrNull(audio.duration);
  return json;
}

Json inputJson(const InputFacts& input) {
  Json json;
  json["path"] = input.path;
  json["path_uri"] = input.pathUri;
  json["size"] = nullptr;
  json["mtime_ns"] = nullptr;
  json["checksum"] = nullptr;
  if (input.fingerprint) {
    json["size"] = input.fingerprint->size;
    json["mtime_ns"] = input.fingerprint->modificationTime;
    json["checksum"] = input.fingerprint->checksum;
  }
  if (input.stream) json.update(streamJson(*input.stream));
  return json;
}

Json optionsJson(const AskedOptions& options) {
  Json json;
  json["indicators"] = maskJson(options.indicators);
  json["fps"] = options.fps > 0.0 ? Json(options.fps) : Json(nullptr);
  json["start"] = textOrNull(options.start);
  json["end"] = textOrNull(options.end);
  json["raw"] = textOrNull(options.raw);
  json["stream"] = options.stream < 0 ? Json() : Json(options.stream);
  return json;
}

Json sandboxJson(const SandboxFacts& sandbox) {
  return {{"on", sandbox.isOn}, {"why_not", textOrNull(sandbox.whyNot)}};
}

Json joinsJson(const std::vector<Join>& joins) {
  Json json = Json::array();
  for (const Join& join : joins) {
    json.push_back({{"frame", join.frame},
                    {"step_s", numberOrNull(join.step)},
                    {"offset_s", numberOrNull(join.offset)}});
  }
  return json;
}

Json analysisJson(const AnalysisFacts& analysis) {
  Json json;
  json["indicators"] = maskJson(analysis.indicators);
  json["fps"] = analysis.fps;
  json["luma"] = lumaPathName(analysis.lumaPath);
  json["first_frame"] = analysis.firstFrame;
  json["frames"] = countJson(analysis.frames);
  json["start_s"] = numberOrNull(analysis.start);
  json["end_s"] = numberOrNull(analysis.end);
  json["corrupt_frames"] = countJson(analysis.corruptFrames);
  json["decode_errors"] = countJson(analysis.decodeErrors);
  json["messages"] = analysis.messages;
  json["messages_before_key_frame"] = analysis.messagesBeforeKeyFrame;
  json["missing_at_end"] = analysis.missingAtEnd;
  json["joins"] = joinsJson(analysis.joins);
  json["ended_by"] = endName(analysis.endedBy);
  return json;
}

// The numbers of a summary, and their names.
struct StatisticKey {
  const char* name;
  double Statistics::*field;
};

constexpr StatisticKey STATISTIC_KEYS[] = {
    {"min", &Statistics::min},     {"max", &Statistics::max}, {"mean", &Statistics::mean},
    {"stdev", &Statistics::stdev}, {"p1", &Statistics::p1},   {"p5", &Statistics::p5},
    {"p50", &Statistics::p50},     {"p95", &Statistics::p95}, {"p99", &Statistics::p99},
};

Json statisticsJson(const Statistics& statistics) {
  Json json;
  json["n"] = statistics.n;
  for (const StatisticKey& key : STATISTIC_KEYS) {
    json[key.name] = numberOrNull(statistics.*key.field);
  }
  return json;
}

Json summaryJson(const IndicatorSummary& summary) {
  Json json = statisticsJson(summary.statistics);
  Json& overview = json["overview"] = Json::array();
  for (const double mean : summary.overview) overview.push_back(numberOrNull(mean));
  return json;
}

Json messagesJson(const std::vector<DamageMessage>& messages) {
  Json json = Json::array();
  for (const DamageMessage& message : messages) {
    json.push_back({{"time_s", numberOrNull(message.time)},
                    {"from", message.isOfContainer ? CONTAINER : "decoder"},
                    {"text", message.text}});
  }
  return json;
}

Json outputsJson(const OutputChoice& outputs, int64_t pictures) {
  Json formats = Json::array();
  if (outputs.hasCsv) formats.push_back("csv");
  if (outputs.hasHtml) formats.push_back("html");
  return {{"formats", formats}, {"thumbs", thumbsName(outputs.thumbs)}, {"pictures", pictures}};
}

// ---- reading

struct Part {
  const char* name;
  bool isAsWritten;
};

bool isListOfTexts(const Json& json) {
  return json.is_array() &&
         std::all_of(json.begin(), json.end(), [](const Json& each) { return each.is_string(); });
}

// What is wrong with the shape of what the program cannot do without.
std::string shapeMistake(const Json& json) {
  const std::string status = textOf(json, "status");
  const bool isFailed = status == statusName(Status::FAILED);
  const Json& input = memberOf(json, "input");
  const Json& rate = memberOf(input, "frame_rate");
  const Json& analysis = memberOf(json, "analysis");
  const Json& error = memberOf(json, "error");
  const std::string verdict = textOf(json, "verdict");
  const Part parts[] = {
      {"input.path", memberOf(input, "path").is_string()},
      {"input.frame_rate", rate.is_number() || rate.is_null()},
      {"analysis", analysis.is_object() || (isFailed && analysis.is_null())},
      {"analysis.fps", memberOf(analysis, "fps").is_number() || !analysis.is_object()},
      {"status", status == statusName(named(status, STATUSES, statusName, Status::FAILED))},
      {"error", error.is_string() || error.is_null()},
      {"truncated", memberOf(json, "truncated").is_boolean()},
      {"verdict", verdict == verdictName(named(verdict, VERDICTS, verdictName, Verdict::PASS))},
      {"reasons", isListOfTexts(memberOf(json, "reasons"))},
      {"outputs", memberOf(json, "outputs").is_object()},
  };
  for (const Part& part : parts) {
    if (!part.isAsWritten) return std::string(part.name) + " is not what lumascan writes";
  }
  return "";
}

IndicatorMask readMask(const Json& object) {
  IndicatorMask mask = 0;
  for (const std::string& name : textsOf(object, "indicators")) {
    const size_t i = indicatorNamed(name);
    if (i < INDICATORS) mask |= IndicatorMask{1} << i;
  }
  return mask;
}

std::optional<int64_t> readCount(const Json& object, const char* key) {
  const bool isCount = memberOf(object, key).is_number_integer();
  return isCount ? std::optional(wholeNumberOf(object, key)) : std::nullopt;
}

std::optional<Fingerprint> readFingerprint(const Json& input) {
  const bool isThere = memberOf(input, "size").is_number_integer() &&
                       memberOf(input, "mtime_ns").is_number_integer() &&
                       memberOf(input, "checksum").is_string();
  if (!isThere) return std::nullopt;
  return Fingerprint{wholeNumberOf(input, "size"), wholeNumberOf(input, "mtime_ns"),
                     textOf(input, "checksum")};
}

std::vector<AudioFacts> readAudio(const Json& json) {
  std::vector<AudioFacts> all;
  if (!json.is_array()) return all;
  for (const Json& audio : json) {
    all.push_back({wholeNumberOf(audio, "stream"), textOf(audio, "codec"),
                   wholeNumberOf(audio, "channels"), wholeNumberOf(audio, "sample_rate"),
                   textOf(audio, "language"), numberOf(audio, "duration_s")});
  }
  return all;
}

std::optional<StreamFacts> readStream(const Json& input) {
  if (!memberOf(input, "codec").is_string()) return std::nullopt;
  StreamFacts stream;
  stream.container = textOf(input, "container");
  stream.codec = textOf(input, "codec");
  stream.profile = textOf(input, "profile");
  stream.pixelFormat = textOf(input, "pixel_format");
  stream.width = wholeNumberOf(input, "width");
  stream.height = wholeNumberOf(input, "height");
  stream.frameRate = numberOf(input, "frame_rate");
  stream.frameRateFraction = textOf(input, "frame_rate_fraction");
  stream.timeBase = textOf(input, "time_base");
  stream.declaredDuration = numberOf(input, "declared_duration_s");
  stream.declaredFrames = wholeNumberOf(input, "declared_frames");
  stream.fieldOrder = textOf(input, "field_order");
  stream.colorRange = textOf(input, "color_range");
  stream.colorTransfer = textOf(input, "color_transfer");
  stream.rotation = numberOf(input, "rotation");
  stream.sampleAspectRatio = textOf(input, "sample_aspect_ratio");
  stream.bitRate = wholeNumberOf(input, "bit_rate");
  stream.containerBitRate = wholeNumberOf(input, "container_bit_rate");
  stream.startTimecode = textOf(input, "start_timecode");
  stream.audio = readAudio(memberOf(input, "audio"));
  return stream;
}

AskedOptions readOptions(const Json& json) {
  AskedOptions options;
  options.indicators = readMask(json);
  options.fps = memberOf(json, "fps").is_number() ? numberOf(json, "fps") : 0.0;
  options.start = textOf(json, "start");
  options.end = textOf(json, "end");
  options.raw = textOf(json, "raw");
  if (memberOf(json, "stream").is_number_integer()) {
    options.stream = static_cast<int>(wholeNumberOf(json, "stream"));
  }
  return options;
}

std::vector<Join> readJoins(const Json& json) {
  std::vector<Join> joins;
  if (!json.is_array()) return joins;
  for (const Json& join : json) {
    joins.push_back(
        {wholeNumberOf(join, "frame"), numberOf(join, "step_s"), numberOf(join, "offset_s")});
  }
  return joins;
}

std::optional<AnalysisFacts> readAnalysis(const Json& json) {
  if (!json.is_object()) return std::nullopt;
  AnalysisFacts analysis;
  analysis.indicators = readMask(json);
  analysis.fps = numberOf(json, "fps");
  analysis.lumaPath = named(textOf(json, "luma"), LUMA_PATHS, lumaPathName, LumaPath::NONE);
  analysis.firstFrame = wholeNumberOf(json, "first_frame");
  analysis.start = numberOf(json, "start_s");
  analysis.end = numberOf(json, "end_s");
  analysis.frames = readCount(json, "frames");
  analysis.corruptFrames = readCount(json, "corrupt_frames");
  analysis.decodeErrors = readCount(json, "decode_errors");
  analysis.messages = wholeNumberOf(json, "messages");
  analysis.messagesBeforeKeyFrame = wholeNumberOf(json, "messages_before_key_frame");
  analysis.missingAtEnd = wholeNumberOf(json, "missing_at_end");
  analysis.joins = readJoins(memberOf(json, "joins"));
  analysis.endedBy = named(textOf(json, "ended_by"), ENDS, endName, AnalysisEnd::COMPLETE);
  return analysis;
}

Statistics readStatistics(const Json& json) {
  Statistics statistics;
  statistics.n = wholeNumberOf(json, "n");
  for (const StatisticKey& key : STATISTIC_KEYS) statistics.*key.field = numberOf(json, key.name);
  return statistics;
}

IndicatorSummary readSummary(const Json& json) {
  IndicatorSummary summary = {readStatistics(json), {}};
  const Json& overview = memberOf(json, "overview");
  if (!overview.is_array()) return summary;
  for (const Json& mean : overview) {
    summary.overview.push_back(mean.is_number() ? mean.get<double>() : Statistics::NONE);
  }
  return summary;
}

std::vector<DamageMessage> readDamageMessages(const Json& json) {
  std::vector<DamageMessage> messages;
  if (!json.is_array()) return messages;
  for (const Json& message : json) {
    messages.push_back({numberOf(message, "time_s"), textOf(message, "from") == CONTAINER,
                        textOf(message, "text")});
  }
  return messages;
}

OutputChoice readOutputs(const Json& json) {
  const std::vector<std::string> formats = textsOf(json, "formats");
  const auto has = [&](const char* format) {
    return std::find(formats.begin(), formats.end(), format) != formats.end();
  };
  return {has("csv"), has("html"), named(textOf(json, "thumbs"), THUMBS, thumbsName, Thumbs::NONE)};
}

}  // namespace

Json streamJson(const StreamFacts& facts) {
  Json json;
  json["container"] = facts.container;
  json["codec"] = facts.codec;
  json["profile"] = textOrNull(facts.profile);
  json["pixel_format"] = facts.pixelFormat;
  json["width"] = facts.width;
  json["height"] = facts.height;
  json["frame_rate"] = numberOrNull(facts.frameRate);
  json["frame_rate_fraction"] = textOrNull(facts.frameRateFraction);
  json["time_base"] = facts.timeBase;
  json["declared_duration_s"] = numberOrNull(facts.declaredDuration);
  json["declared_frames"] = positiveOrNull(facts.declaredFrames);
  json["field_order"] = facts.fieldOrder;
  json["color_range"] = facts.colorRange;
  json["color_transfer"] = facts.colorTransfer;
  json["rotation"] = facts.rotation;
  json["sample_aspect_ratio"] = facts.sampleAspectRatio;
  json["bit_rate"] = positiveOrNull(facts.bitRate);
  json["container_bit_rate"] = positiveOrNull(facts.containerBitRate);
  json["start_timecode"] = textOrNull(facts.startTimecode);
  Json& audio = json["audio"] = Json::array();
  for (const AudioFacts& each : facts.audio) audio.push_back(audioJson(each));
  return json;
}

Json resultJson(const ResultRecord& record) {
  Json json;
  json["schema_version"] = SCHEMA;
  json["tool"] = {{"name", TOOL}, {"version", record.toolVersion}};
  json["input"] = inputJson(record.input);
  json["options"] = optionsJson(record.options);
  json["sandbox"] = sandboxJson(record.sandbox);
  json["analysis"] = record.analysis ? analysisJson(*record.analysis) : Json(nullptr);
  json["status"] = statusName(record.status);
  json["error"] = textOrNull(record.error);
  json["truncated"] = record.isTruncated;
  json["warnings"] = record.warnings;
  json["messages"] = messagesJson(record.messages);
  json["verdict"] = verdictName(record.judgement.verdict);
  json["reasons"] = record.judgement.reasons;
  Json& indicators = json["indicators"] = Json::object();
  for (size_t i = 0; record.analysis && i < INDICATORS; ++i) {
    indicators[INDICATOR_TABLE[i].name] = summaryJson(record.indicators[i]);
  }
  Json& measures = json["measures"] = Json::object();
  for (size_t i = 0; record.analysis && i < MEASURES; ++i) {
    measures[MEASURE_TABLE[i].name] = statisticsJson(record.measures[i]);
  }
  json["thresholds"] = thresholdsJson(record.thresholds);
  json["outputs"] = outputsJson(record.outputs, record.pictures);
  return json;
}

std::string readRecord(const Json& json, ResultRecord* record) {
  if (textOf(memberOf(json, "tool"), "name") != TOOL) return "it is not a result of lumascan";
  if (memberOf(json, "schema_version") != SCHEMA) return "it is of another version of lumascan";
  std::string mistake = shapeMistake(json);
  if (!mistake.empty()) return mistake;

  const Json& input = memberOf(json, "input");
  *record = {};
  record->toolVersion = textOf(memberOf(json, "tool"), "version");
  record->input = {textOf(input, "path"), textOf(input, "path_uri"), readFingerprint(input),
                   readStream(input)};
  record->options = readOptions(memberOf(json, "options"));
  const Json& sandbox = memberOf(json, "sandbox");
  record->sandbox = {flagOf(sandbox, "on"), textOf(sandbox, "why_not")};
  record->analysis = readAnalysis(memberOf(json, "analysis"));
  record->status = named(textOf(json, "status"), STATUSES, statusName, Status::FAILED);
  record->error = textOf(json, "error");
  record->isTruncated = flagOf(json, "truncated");
  record->warnings = textsOf(json, "warnings");
  record->messages = readDamageMessages(memberOf(json, "messages"));
  record->judgement.verdict =
      named(textOf(json, "verdict"), VERDICTS, verdictName, Verdict::INCOMPLETE);
  record->judgement.reasons = textsOf(json, "reasons");
  for (size_t i = 0; i < INDICATORS; ++i) {
    record->indicators[i] =
        readSummary(memberOf(memberOf(json, "indicators"), INDICATOR_TABLE[i].name));
  }
  for (size_t i = 0; i < MEASURES; ++i) {
    record->measures[i] =
        readStatistics(memberOf(memberOf(json, "measures"), MEASURE_TABLE[i].name));
  }
  record->thresholds = thresholdsOf(memberOf(json, "thresholds"));
  record->outputs = readOutputs(memberOf(json, "outputs"));
  record->pictures = wholeNumberOf(memberOf(json, "outputs"), "pictures");
  return "";
}
