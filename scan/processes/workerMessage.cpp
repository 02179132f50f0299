#include "scan/processes/workerMessage.h"

#include <algorithm>
#include <cmath>

#include "scan/files/json.h"
#include "scan/files/names.h"

namespace {

constexpr int VERSION = 1;

Json bodyOf(const Heartbeat& heartbeat) {
  return {{"type", "heartbeat"},
          {"stage", heartbeat.stage},
          {"position", numberOrNull(heartbeat.position)},
          {"frames", heartbeat.frames}};
}

Json bodyOf(const JobEnd& end) {
  return {
      {"type", "end"}, {"needs_one_thread", end.needsOneThread}, {"output_error", end.outputError}};
}

}  // namespace

std::string messageLine(const WorkerMessage& message) {
  Json json = std::visit([](const auto& each) { return bodyOf(each); }, message);
  json["version"] = VERSION;
  return shortJsonText(json) + '\n';
}

std::optional<WorkerMessage> readMessage(const std::string& line) {
  const Json json = parsedJson(line);
  if (memberOf(json, "version") != VERSION) return std::nullopt;
  const std::string type = textOf(json, "type");
  if (type == "end") {
    return JobEnd{flagOf(json, "needs_one_thread"), printableName(textOf(json, "output_error"))};
  }
  if (type != "heartbeat") return std::nullopt;
  const double position = numberOf(json, "position");
  return Heartbeat{printableName(textOf(json, "stage")),
                   std::isnan(position) ? 0.0 : std::clamp(position, 0.0, 1.0),
                   std::max(int64_t{0}, wholeNumberOf(json, "frames"))};
}
