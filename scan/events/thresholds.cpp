#include "scan/events/thresholds.h"

#include <cerrno>
#include <cmath>
#include <cstring>
#include <fstream>

#include "scan/analysis/indicatorTable.h"
#include "scan/files/json.h"

namespace {

constexpr double NONE = Threshold::NONE;
constexpr Severity INFO = Severity::INFO;
constexpr Severity WARN = Severity::WARN;
constexpr Severity FAIL = Severity::FAIL;

constexpr EventRule stretch(const char* type, const char* title, const char* indicator,
                            Direction direction, Signal signal = Signal::INDICATOR) {
  return {type, title, indicator, EventKind::STRETCH, direction, signal};
}

// A number that files may set, and where it is kept.
struct ThresholdKey {
  const char* name;
  double Threshold::*field;
};

constexpr ThresholdKey THRESHOLD_KEYS[] = {
    {"enter", &Threshold::enter},      {"leave", &Threshold::leave},
    {"min_s", &Threshold::minSeconds}, {"mad", &Threshold::mad},
    {"least", &Threshold::least},      {"ratio", &Threshold::ratio},
    {"alone", &Threshold::alone},      {"hold_s", &Threshold::holdSeconds},
    {"lone", &Threshold::lone},
};

std::string setNumber(const std::string& place, const Json& value, double* number) {
  if (std::isnan(*number)) return place + " does not exist";
  if (!value.is_number()) return place + " is not a number";
  *number = value.get<double>();
  return "";
}

std::string setSeverity(const std::string& place, const Json& value, Severity* severity) {
  for (const Severity known : {INFO, WARN, FAIL}) {
    if (value == severityName(known)) {
      *severity = known;
      return "";
    }
  }
  return place + " is none of \"info\", \"warn\" and \"fail\"";
}

std::string setEnabled(const std::string& place, const Json& value, bool* isEnabled) {
  if (!value.is_boolean()) return place + " is neither true nor false";
  *isEnabled = value.get<bool>();
  return "";
}

std::string setKey(const std::string& type, const std::string& key, const Json& value,
                   Threshold* threshold) {
  const std::string place = type + "." + key;
  if (key == "severity") return setSeverity(place, value, &threshold->severity);
  if (key == "enabled") return setEnabled(place, value, &threshold->isEnabled);
  for (const ThresholdKey& known : THRESHOLD_KEYS) {
    if (key == known.name) return setNumber(place, value, &(threshold->*known.field));
  }
  return place + " does not exist";
}

// Comparisons with NaN, of what a type has not, are all false.
std::string contradiction(const EventRule& rule, const Threshold& threshold) {
  const std::string type = rule.type;
  for (const ThresholdKey& key : THRESHOLD_KEYS) {
    const bool isLevel = key.field == &Threshold::enter || key.field == &Threshold::leave ||
                         key.field == &Threshold::alone;
    const bool mayBeNegative = rule.kind == EventKind::STRETCH && isLevel;
    if (threshold.*key.field < 0.0 && !mayBeNegative) return type + "." + key.name + " is negative";
  }
  const bool isAbove = rule.direction == Direction::ABOVE;
  if (isAbove && threshold.leave > threshold.enter)
    return type + ".leave is above " + type + ".enter";
  if (!isAbove && threshold.leave < threshold.enter)
    return type + ".leave is below " + type + ".enter";
  return "";
}

std::string setAll(const Json& file, Thresholds* thresholds) {
  if (!file.is_object()) return "the file is not a JSON object";
  for (const auto& [type, keys] : file.items()) {
    const size_t i = eventTypeNamed(type);
    if (i == EVENT_TYPES) return "there is no event \"" + type + "\"";
    if (!keys.is_object()) return type + " is not a JSON object";
    Threshold* const threshold = &(*thresholds)[i];
    for (const auto& [key, value] : keys.items()) {
      std::string error = setKey(type, key, value, threshold);
      if (!error.empty()) return error;
    }
    std::string error = contradiction(EVENT_RULES[i], *threshold);
    if (!error.empty()) return error;
  }
  return "";
}

}  // namespace

const std::array<EventRule, EVENT_TYPES> EVENT_RULES = {{
    stretch("black", "Black or uniform picture", "blackout", Direction::ABOVE, Signal::DARKNESS),
    stretch("freeze", "Frozen picture", "freezing", Direction::ABOVE),
    stretch("letterbox", "Bars above and below", "letterbox", Direction::ABOVE,
            Signal::BARS_ABOVE_AND_BELOW),
    stretch("pillarbox", "Bars at the sides", "pillarbox", Direction::ABOVE,
            Signal::BARS_AT_THE_SIDES),
    stretch("combing", "Combed fields", "interlace", Direction::ABOVE),
    stretch("block_loss", "Lost blocks", "block_loss", Direction::ABOVE),
    stretch("slice", "Repeated slices", "slice", Direction::ABOVE),
    stretch("flicker", "Flickering blocks", "flickering", Direction::ABOVE),
    stretch("over_exposure", "Overexposed picture", "exposure", Direction::ABOVE),
    stretch("under_exposure", "Underexposed picture", "exposure", Direction::BELOW),
    stretch("low_contrast", "Low contrast", "contrast", Direction::BELOW),
    stretch("blockiness", "Blocky picture", "blockiness", Direction::BELOW),
    stretch("blur", "Blurred picture", "blur", Direction::ABOVE),
    stretch("noise", "Noisy picture", "noise", Direction::ABOVE),
    {"scene_cut", "Scene cut", "temporal_activity", EventKind::SCENE_CUT, Direction::ABOVE},
    {"decode_error", "Damaged frames", nullptr, EventKind::DECODE_ERROR, Direction::ABOVE},
    {"stream_error", "Damaged stream", nullptr, EventKind::STREAM_ERROR, Direction::ABOVE},
    {"starts_midstream", "Begins between key frames", nullptr, EventKind::BEGINNING,
     Direction::ABOVE},
    {"truncation", "File cut off", nullptr, EventKind::TRUNCATION, Direction::ABOVE},
    {"size_change", "Change of the frame size", nullptr, EventKind::SIZE_CHANGE, Direction::ABOVE},
    {"timestamp_gap", "Gap between timestamps", nullptr, EventKind::TIMESTAMP_GAP,
     Direction::ABOVE},
    {"missing_frames", "Missing frames", nullptr, EventKind::MISSING, Direction::ABOVE},
}};

// enter, leave, min_s, severity, enabled, mad, least, ratio, alone, hold_s, lone.
// docs/thresholds.md says how they were chosen and what they find.
const Thresholds DEFAULT_THRESHOLDS = {{
    {0.955, 0.94, 0.2, WARN, true, NONE, NONE, NONE, NONE, NONE, NONE},    // black
    {1.0, 1.0, 0.3, FAIL, true, NONE, NONE, NONE, NONE, NONE, NONE},       // freeze
    {0.03, 0.02, 1.0, WARN, true, NONE, NONE, NONE, NONE, NONE, NONE},     // letterbox
    {0.03, 0.02, 1.0, WARN, true, NONE, NONE, NONE, NONE, NONE, NONE},     // pillarbox
    {0.027, 0.0135, 0.5, WARN, true, NONE, NONE, NONE, NONE, NONE, NONE},  // combing
    {20.0, 7.0, 0.6, FAIL, true, NONE, NONE, 4.0, 400.0, 0.3, NONE},       // block_loss
    {12.0, 4.8, 0.4, WARN, true, NONE, NONE, 5.0, NONE, NONE, NONE},       // slice
    {0.83, 0.75, 0.9, WARN, true, NONE, NONE, NONE, NONE, NONE, NONE},     // flicker
    {152.0, 146.0, 0.3, WARN, true, 4.0, 25.0, NONE, 190.0, NONE, NONE},   // over_exposure
    {78.0, 82.0, 1.0, WARN, true, NONE, NONE, NONE, NONE, NONE, NONE},     // under_exposure
    {15.5, 17.0, 0.3, WARN, true, 4.0, 20.0, NONE, 9.7, NONE, NONE},       // low_contrast
    {0.63, 0.7, 1.0, WARN, true, 6.0, 0.25, NONE, NONE, 0.6, NONE},        // blockiness
    {5.5, 5.0, 1.2, WARN, true, 6.0, 2.0, NONE, NONE, NONE, NONE},         // blur
    {3.0, 2.4, 0.3, WARN, true, 6.0, 2.0, NONE, NONE, NONE, NONE},         // noise
    {20.0, NONE, NONE, INFO, true, NONE, NONE, 3.5, NONE, NONE, 0.5},      // scene_cut
    {NONE, NONE, NONE, FAIL, true, NONE, NONE, NONE, NONE, NONE, NONE},    // decode_error
    {NONE, NONE, NONE, WARN, true, NONE, NONE, NONE, NONE, NONE, NONE},    // stream_error
    {NONE, NONE, NONE, INFO, true, NONE, NONE, NONE, NONE, NONE, NONE},    // starts_midstream
    {NONE, NONE, NONE, FAIL, true, NONE, NONE, NONE, NONE, NONE, NONE},    // truncation
    {NONE, NONE, NONE, WARN, true, NONE, NONE, NONE, NONE, NONE, NONE},    // size_change
    {0.5, NONE, NONE, WARN, true, NONE, NONE, 3.0, NONE, NONE, NONE},      // timestamp_gap
    {NONE, NONE, NONE, WARN, true, NONE, NONE, NONE, NONE, NONE, NONE},    // missing_frames
}};

size_t eventTypeNamed(std::string_view type) {
  size_t i = 0;
  while (i < EVENT_TYPES && EVENT_RULES[i].type != type) ++i;
  return i;
}

size_t indicatorOfEvent(std::string_view type) {
  const size_t i = eventTypeNamed(type);
  const char* const indicator = i < EVENT_TYPES ? EVENT_RULES[i].indicator : nullptr;
  return indicator == nullptr ? INDICATORS : indicatorNamed(indicator);
}

std::string readThresholds(const std::string& path, Thresholds* thresholds) {
  std::ifstream in(path, std::ios::binary);
  if (!in) return std::strerror(errno);
  Json file;
  try {
    in >> file;
    in >> std::ws;
  } catch (const Json::parse_error& error) {
    return "no JSON at byte " + std::to_string(error.byte);
  } catch (const Json::exception&) {
    return "a number is too large";
  }
  if (!in.eof()) return "there is more than one JSON value";
  Thresholds changed = *thresholds;
  std::string error = setAll(file, &changed);
  if (error.empty()) *thresholds = changed;
  return error;
}

Json thresholdsJson(const Thresholds& thresholds) {
  Json all = Json::object();
  for (size_t i = 0; i < EVENT_TYPES; ++i) {
    Json one = Json::object();
    for (const ThresholdKey& key : THRESHOLD_KEYS) {
      const double number = thresholds[i].*key.field;
      if (!std::isnan(number)) one[key.name] = number;
    }
    one["severity"] = severityName(thresholds[i].severity);
    one["enabled"] = thresholds[i].isEnabled;
    all[EVENT_RULES[i].type] = one;
  }
  return all;
}

Thresholds thresholdsOf(const Json& json) {
  Thresholds thresholds;
  for (size_t i = 0; i < EVENT_TYPES; ++i) {
    const Json& one = memberOf(json, EVENT_RULES[i].type);
    for (const ThresholdKey& key : THRESHOLD_KEYS)
      thresholds[i].*key.field = numberOf(one, key.name);
    thresholds[i].severity = severityNamed(textOf(one, "severity"));
    thresholds[i].isEnabled = flagOf(one, "enabled");
  }
  return thresholds;
}
