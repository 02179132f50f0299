#include "scan/report/framePayload.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <functional>
#include <limits>
#include <string>

#include "scan/files/json.h"
#include "scan/report/deflatedText.h"

namespace {

bool isSame(double a, double b) {
  return (std::isnan(a) && std::isnan(b)) || (a == b && std::signbit(a) == std::signbit(b));
}

bool isConstant(const Column<double>& values) {
  const double first = values.front();
  return std::all_of(values.begin(), values.end(),
                     [&](double value) { return isSame(value, first); });
}

// The bounds keep the conversion defined; NaN is outside of them.
template <typename Number>
bool isExactIn(double value) {
  constexpr auto LIMIT = static_cast<double>(std::numeric_limits<Number>::max());
  const bool isInside =
      value >= static_cast<double>(std::numeric_limits<Number>::lowest()) && value <= LIMIT;
  return isInside && isSame(value, static_cast<double>(static_cast<Number>(value)));
}

template <typename Number>
bool holdsAll(const Column<double>& values) {
  return std::all_of(values.begin(), values.end(), [](double value) {
    return (std::numeric_limits<Number>::has_quiet_NaN && std::isnan(value)) ||
           isExactIn<Number>(value);
  });
}

const char* narrowestKind(const Column<double>& values) {
  if (holdsAll<uint8_t>(values)) return "uint8";
  if (holdsAll<int32_t>(values)) return "int32";
  return holdsAll<float>(values) ? "float32" : "float64";
}

Json describe(const char* name, const Column<double>& values) {
  if (!values.empty() && !isConstant(values)) {
    return {{"name", name}, {"kind", narrowestKind(values)}};
  }
  const bool isUndefined = values.empty() || std::isnan(values.front());
  return {
      {"name", name}, {"kind", "constant"}, {"value", isUndefined ? Json() : Json(values.front())}};
}

template <typename Number>
void putGrouped(const Column<double>& values, DeflatedText* text) {
  constexpr size_t MOST = 4096;
  std::string bytes;
  for (size_t place = 0; place < sizeof(Number); ++place) {
    for (const double value : values) {
      const auto number = static_cast<Number>(value);
      char parts[sizeof number];
      std::memcpy(parts, &number, sizeof number);
      bytes += parts[place];
      if (bytes.size() < MOST) continue;
      text->put(bytes);
      bytes.clear();
    }
  }
  text->put(bytes);
}

void putColumn(const Column<double>& values, const std::string& kind, DeflatedText* text) {
  if (kind == "uint8") putGrouped<uint8_t>(values, text);
  if (kind == "int32") putGrouped<int32_t>(values, text);
  if (kind == "float32") putGrouped<float>(values, text);
  if (kind == "float64") putGrouped<double>(values, text);
}

Column<double> flagsOf(const FrameTable& frames) {
  Column<double> flags;
  for (size_t row = 0; row < frames.isKey.size(); ++row) {
    flags.push_back((frames.isKey[row] ? 1.0 : 0.0) + (frames.isCorrupt[row] ? 2.0 : 0.0));
  }
  return flags;
}

void forEachColumn(const FrameTable& frames,
                   const std::function<void(const char*, const Column<double>&)>& take) {
  take("time_s", frames.time);
  take("duration_s", frames.duration);
  take("flags", flagsOf(frames));
  for (size_t i = 0; i < INDICATORS; ++i) take(INDICATOR_TABLE[i].name, frames.values[i]);
}

}  // namespace

Json describeColumns(const FrameTable& frames) {
  Json description = Json::array();
  forEachColumn(frames, [&](const char* name, const Column<double>& values) {
    description.push_back(describe(name, values));
  });
  return description;
}

void writeColumns(const FrameTable& frames, const Json& description, FILE* out) {
  DeflatedText text(out);
  size_t place = 0;
  forEachColumn(frames, [&](const char*, const Column<double>& values) {
    putColumn(values, description[place]["kind"], &text);
    ++place;
  });
  text.finish();
}
