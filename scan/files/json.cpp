#include "scan/files/json.h"

#include <cmath>
#include <limits>

Json numberOrNull(double value) {
  return std::isfinite(value) ? Json(value) : Json(nullptr);
}

Json textOrNull(const std::string& text) {
  return text.empty() ? Json(nullptr) : Json(text);
}

std::string jsonText(const Json& json) {
  return json.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

std::string shortJsonText(const Json& json) {
  return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

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

Json parsedJson(const std::string& text) {
  constexpr int DEEPEST = 16;
  bool isTooDeep = false;
  const auto isKept = [&](int depth, Json::parse_event_t, const Json&) {
    isTooDeep = isTooDeep || depth > DEEPEST;
    return !isTooDeep;
  };
  Json json = Json::parse(text, isKept, false);
  return isTooDeep ? Json(Json::value_t::discarded) : json;
}
