#include "scan/report/resultFacts.h"

#include <cmath>
#include <cstdio>
#include <limits>

#include "scan/analysis/frameTable.h"
#include "scan/report/timeline.h"

namespace {

constexpr char DASH[] = "\xe2\x80\x93";

struct EventIndicator {
  std::string_view event;
  std::string_view indicator;
};

constexpr EventIndicator EVENT_INDICATORS[] = {
    {"black", "blackout"},
    {"freeze", "freezing"},
    {"letterbox", "letterbox"},
    {"pillarbox", "pillarbox"},
    {"combing", "interlace"},
    {"block_loss", "block_loss"},
    {"slice", "slice"},
    {"flicker", "flickering"},
    {"over_exposure", "exposure"},
    {"under_exposure", "exposure"},
    {"low_contrast", "contrast"},
    {"blockiness", "blockiness"},
    {"blur", "blur"},
    {"noise", "noise"},
    {"scene_cut", "temporal_activity"},
};

std::string sizeText(double bytes) {
  constexpr const char* UNITS[] = {"bytes", "kB", "MB", "GB", "TB", "PB"};
  size_t unit = 0;
  while (bytes >= 1000.0 && unit + 1 < std::size(UNITS)) {
    bytes /= 1000.0;
    ++unit;
  }
  char text[48];
  std::snprintf(text, sizeof text, unit == 0 ? "%.0f %s" : "%.1f %s", bytes, UNITS[unit]);
  return text;
}

std::string wholeText(double value) {
  char text[32];
  std::snprintf(text, sizeof text, "%.0f", value);
  return std::isnan(value) ? "" : text;
}

std::string rateText(double rate) {
  char text[48];
  std::snprintf(text, sizeof text, "%.6g per second", rate);
  return std::isnan(rate) ? "" : text;
}

std::string pictureText(const Json& input) {
  const double w = numberOf(input, "width");
  const double h = numberOf(input, "height");
  if (std::isnan(w) || std::isnan(h)) return "";
  std::string text = wholeText(w) + " \xc3\x97 " + wholeText(h);
  const std::string aspect = textOf(input, "sample_aspect_ratio");
  if (!aspect.empty() && aspect != "1:1" && aspect != "0:1") text += ", samples " + aspect;
  const double rotation = numberOf(input, "rotation");
  if (!std::isnan(rotation) && rotation != 0.0)
    text += ", rotated " + wholeText(rotation) + "\xc2\xb0";
  return text;
}

std::string joined(const std::vector<std::string>& parts, const char* separator) {
  std::string text;
  for (const std::string& part : parts) {
    if (!part.empty()) text += (text.empty() ? "" : separator) + part;
  }
  return text;
}

std::string framesText(const Json& analysis) {
  const double frames = numberOf(analysis, "frames");
  if (std::isnan(frames)) return "";
  std::string text = wholeText(frames);
  const double first = numberOf(analysis, "first_frame");
  if (first > 0.0) text += ", from frame " + wholeText(first);
  return text;
}

std::string damageText(const Json& analysis) {
  const double corrupt = numberOf(analysis, "corrupt_frames");
  const double errors = numberOf(analysis, "decode_errors");
  if (std::isnan(corrupt) && std::isnan(errors)) return "";
  if (!(corrupt > 0.0) && !(errors > 0.0)) return "none";
  return joined({std::isnan(corrupt) ? "" : wholeText(corrupt) + " damaged frames",
                 std::isnan(errors) ? "" : wholeText(errors) + " decoding errors"},
                ", ");
}

}  // namespace

const Json& memberOf(const Json& object, const char* key) {
  static const Json NONE;
  const auto found = object.is_object() ? object.find(key) : object.end();
  return object.is_object() && found != object.end() ? *found : NONE;
}

std::string textOf(const Json& object, const char* key) {
  const Json& member = memberOf(object, key);
  return member.is_string() ? member.get<std::string>() : "";
}

double numberOf(const Json& object, const char* key) {
  const Json& member = memberOf(object, key);
  return member.is_number() ? member.get<double>() : std::numeric_limits<double>::quiet_NaN();
}

int64_t wholeNumberOf(const Json& object, const char* key) {
  const Json& member = memberOf(object, key);
  return member.is_number_integer() ? member.get<int64_t>() : 0;
}

bool flagOf(const Json& object, const char* key) {
  const Json& member = memberOf(object, key);
  return member.is_boolean() && member.get<bool>();
}

std::vector<std::string> textsOf(const Json& object, const char* key) {
  std::vector<std::string> texts;
  const Json& member = memberOf(object, key);
  if (!member.is_array()) return texts;
  for (const Json& text : member) {
    if (text.is_string()) texts.push_back(text.get<std::string>());
  }
  return texts;
}

Verdict verdictOf(const Json& result) {
  const std::string text = textOf(result, "verdict");
  for (const Verdict verdict : {Verdict::FAIL, Verdict::ATTENTION, Verdict::PASS}) {
    if (text == verdictName(verdict)) return verdict;
  }
  return Verdict::INCOMPLETE;
}

const char* verdictTitle(Verdict verdict) {
  switch (verdict) {
    case Verdict::PASS:
      return "Pass";
    case Verdict::ATTENTION:
      return "Attention";
    case Verdict::FAIL:
      return "Fail";
    default:
      return "Incomplete";
  }
}

const char* severityOf(const Json& event) {
  const std::string severity = textOf(event, "severity");
  if (severity == "fail") return "fail";
  return severity == "warn" ? "warn" : "info";
}

Event eventOf(const Json& json) {
  Event event;
  event.id = wholeNumberOf(json, "id");
  event.type = textOf(json, "type");
  const std::string_view severity = severityOf(json);
  if (severity == "warn") event.severity = Severity::WARN;
  if (severity == "fail") event.severity = Severity::FAIL;
  event.firstFrame = wholeNumberOf(json, "first_frame");
  event.lastFrame = wholeNumberOf(json, "last_frame");
  event.startTime = numberOf(json, "start_s");
  event.endTime = numberOf(json, "end_s");
  event.peakFrame = wholeNumberOf(json, "peak_frame");
  event.peakValue = numberOf(json, "peak_value");
  event.threshold = numberOf(json, "threshold");
  event.isAtStart = flagOf(json, "at_start");
  event.isAtEnd = flagOf(json, "at_end");
  return event;
}

std::string pathOf(const Json& result) {
  return textOf(memberOf(result, "input"), "path");
}

std::string nameOf(const Json& result) {
  const std::string path = pathOf(result);
  const size_t slash = path.find_last_of('/');
  return slash == std::string::npos || slash + 1 == path.size() ? path : path.substr(slash + 1);
}

double frameRateOf(const Json& result) {
  const double analysed = numberOf(memberOf(result, "analysis"), "fps");
  return std::isnan(analysed) ? numberOf(memberOf(result, "input"), "frame_rate") : analysed;
}

double durationOf(const Json& result) {
  const Json& analysis = memberOf(result, "analysis");
  const double analysed = numberOf(analysis, "end_s") - numberOf(analysis, "start_s");
  return std::isnan(analysed) ? numberOf(memberOf(result, "input"), "declared_duration_s")
                              : analysed;
}

size_t indicatorOfEvent(std::string_view type) {
  for (const EventIndicator& entry : EVENT_INDICATORS) {
    if (entry.event == type) return indicatorNamed(entry.indicator);
  }
  return INDICATORS;
}

bool isSparse(size_t indicator) {
  return indicator == indicatorNamed("flickering");
}

std::string words(std::string_view key) {
  std::string text(key);
  for (char& c : text) c = c == '_' ? ' ' : c;
  return text;
}

std::string roughText(double value) {
  if (std::isnan(value)) return DASH;
  char text[32];
  std::snprintf(text, sizeof text, "%.4g", value);
  return text;
}

std::vector<Fact> factsOf(const Json& result) {
  const Json& input = memberOf(result, "input");
  const Json& analysis = memberOf(result, "analysis");
  const double size = numberOf(input, "size");
  const double rate = numberOf(input, "frame_rate");
  const double declared = numberOf(input, "declared_duration_s");
  const double duration = durationOf(result);
  const bool isWhole = !(std::fabs(declared - duration) >= 1.0);
  std::string durationFact = std::isnan(duration) ? "" : durationText(duration);
  if (!isWhole) durationFact += " of " + durationText(declared) + " declared";

  const std::vector<Fact> facts = {
      {"Path", pathOf(result)},
      {"Codec", joined({textOf(input, "codec"), textOf(input, "pixel_format")}, ", ")},
      {"Container", textOf(input, "container")},
      {"Picture", pictureText(input)},
      {"Frame rate", rateText(rate)},
      {"Duration", durationFact},
      {"Frames", framesText(analysis)},
      {"Damage", damageText(analysis)},
      {"Fields", textOf(input, "field_order")},
      {"Colour", joined({textOf(input, "color_range"), textOf(input, "color_transfer")}, ", ")},
      {"Luma", textOf(analysis, "luma")},
      {"File size", std::isnan(size) ? "" : sizeText(size)},
      {"Checksum", textOf(input, "checksum")},
      {"Analysed by", joined({textOf(memberOf(result, "tool"), "name"),
                              textOf(memberOf(result, "tool"), "version")},
                             " ")},
  };
  std::vector<Fact> known;
  for (const Fact& fact : facts) {
    if (!fact.text.empty()) known.push_back(fact);
  }
  return known;
}
