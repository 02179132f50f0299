// JSON as lumascan writes it: keys in the order in which they were added.
#ifndef LUMASCAN_JSON_H
#define LUMASCAN_JSON_H

#include <cmath>
#include <nlohmann/json.hpp>
#include <string>

using Json = nlohmann::ordered_json;

// What is no number is null.
inline Json numberOrNull(double value) {
  return std::isfinite(value) ? Json(value) : Json(nullptr);
}

inline Json textOrNull(const std::string& text) {
  return text.empty() ? Json(nullptr) : Json(text);
}

// Two spaces per level and a line feed at the end. Bytes that are no UTF-8 become U+FFFD.
inline std::string jsonText(const Json& json) {
  return json.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

#endif
