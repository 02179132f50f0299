#include "scan/video/position.h"

#include <fmt/core.h>
#include <algorithm>
#include <charconv>
#include <cmath>
#include <string_view>
#include <vector>

namespace {

constexpr double SECONDS_PER_UNIT = 60.0;    // of the next smaller one
constexpr double TIMESTAMP_ROUNDING = 1e-6;  // seconds that a timestamp may be off a decimal time

template <typename Number>
bool parseWhole(std::string_view text, Number* number) {
  // Neither signs nor "nan" nor "inf".
  if (text.empty() || text.find_first_not_of("0123456789.") != std::string_view::npos) return false;
  const char* const end = text.data() + text.size();
  const auto [last, error] = std::from_chars(text.data(), end, *number);
  return error == std::errc() && last == end;
}

std::vector<std::string_view> splitAtColons(std::string_view text) {
  std::vector<std::string_view> parts;
  for (;;) {
    const size_t colon = text.find(':');
    parts.push_back(text.substr(0, colon));
    if (colon == std::string_view::npos) return parts;
    text.remove_prefix(colon + 1);
  }
}

}  // namespace

bool parsePosition(const std::string& text, Position* position) {
  *position = {text, false, 0.0, 0};
  // Drop-frame timecodes, which go with the clock, have a semicolon before the frames.
  std::string colons = text;
  const size_t last = text.find_last_of(":;");
  if (last != std::string::npos && std::count(text.begin(), text.end(), ':') == 2)
    colons[last] = ':';
  std::vector<std::string_view> parts = splitAtColons(colons);
  if (parts.size() == 2 && parts[0] == "f") {
    position->isFrame = true;
    return parseWhole(parts[1], &position->frames);
  }
  if (parts.size() > 4) return false;
  const bool isTimecode = parts.size() == 4;
  if (isTimecode) {
    if (!parseWhole(parts.back(), &position->frames)) return false;
    parts.pop_back();
  }
  for (size_t i = 0; i < parts.size(); ++i) {
    const bool mayBeFraction = i + 1 == parts.size() && !isTimecode;
    double value = 0.0;
    if (!parseWhole(parts[i], &value)) return false;
    if (!mayBeFraction && value != std::floor(value)) return false;
    if (i > 0 && value >= SECONDS_PER_UNIT) return false;
    position->seconds = position->seconds * SECONDS_PER_UNIT + value;
  }
  return true;
}

std::string mistakeAtRate(const Position& position, double fps) {
  const bool isBeyond = !position.isFrame && static_cast<double>(position.frames) >= fps;
  if (!isBeyond || position.frames == 0) return "";
  return fmt::format("there is no frame {} in a second of {:.6g} frames: {}", position.frames, fps,
                     position.text);
}

bool isAtOrBehind(int64_t frame, double time, double fps, const Position& position) {
  if (position.isFrame) return frame >= position.frames;
  const double now = std::isnan(time) ? static_cast<double>(frame) / fps : time;
  const double then = position.seconds + static_cast<double>(position.frames) / fps;
  return now >= then - TIMESTAMP_ROUNDING;
}
