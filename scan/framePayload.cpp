#include "scan/framePayload.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>

namespace {

bool isSame(double a, double b) {
  return (std::isnan(a) && std::isnan(b)) || (a == b && std::signbit(a) == std::signbit(b));
}

bool isConstant(const std::vector<double>& values) {
  return std::all_of(values.begin(), values.end(),
                     [&](double value) { return isSame(value, values.front()); });
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
bool holdsAll(const std::vector<double>& values) {
  return std::all_of(values.begin(), values.end(), [](double value) {
    return (std::numeric_limits<Number>::has_quiet_NaN && std::isnan(value)) ||
           isExactIn<Number>(value);
  });
}

template <typename Number>
void appendGrouped(const std::vector<double>& values, std::string* bytes) {
  const size_t start = bytes->size();
  const size_t rows = values.size();
  bytes->resize(start + rows * sizeof(Number));
  for (size_t row = 0; row < rows; ++row) {
    const auto value = static_cast<Number>(values[row]);
    char parts[sizeof value];
    std::memcpy(parts, &value, sizeof value);
    for (size_t i = 0; i < sizeof value; ++i) (*bytes)[start + i * rows + row] = parts[i];
  }
}

Json packColumn(const char* name, const std::vector<double>& values, std::string* bytes) {
  if (values.empty() || isConstant(values)) {
    const bool isUndefined = values.empty() || std::isnan(values.front());
    return {{"name", name},
            {"kind", "constant"},
            {"value", isUndefined ? Json() : Json(values.front())}};
  }
  const char* kind = "float64";
  if (holdsAll<uint8_t>(values)) {
    kind = "uint8";
    appendGrouped<uint8_t>(values, bytes);
  } else if (holdsAll<int32_t>(values)) {
    kind = "int32";
    appendGrouped<int32_t>(values, bytes);
  } else if (holdsAll<float>(values)) {
    kind = "float32";
    appendGrouped<float>(values, bytes);
  } else {
    appendGrouped<double>(values, bytes);
  }
  return {{"name", name}, {"kind", kind}};
}

}  // namespace

FramePayload packFrames(const FrameTable& frames) {
  std::vector<double> flags(frames.pts.size());
  for (size_t row = 0; row < flags.size(); ++row) {
    flags[row] = (frames.isKey[row] ? 1.0 : 0.0) + (frames.isCorrupt[row] ? 2.0 : 0.0);
  }
  std::string bytes;
  Json columns = Json::array();
  columns.push_back(packColumn("time_s", frames.time, &bytes));
  columns.push_back(packColumn("duration_s", frames.duration, &bytes));
  columns.push_back(packColumn("flags", flags, &bytes));
  for (size_t i = 0; i < INDICATORS; ++i) {
    columns.push_back(packColumn(INDICATOR_TABLE[i].name, frames.values[i], &bytes));
  }
  return {columns, deflated(bytes)};
}
