#include "scan/events/eventList.h"

#include <algorithm>

#include "scan/events/thresholds.h"
#include "scan/files/json.h"
#include "scan/files/names.h"
#include "scan/numbers/decimals.h"

namespace {

Json eventJson(const Event& event) {
  return {{"id", event.id},
          {"type", event.type},
          {"severity", severityName(event.severity)},
          {"first_frame", event.firstFrame},
          {"last_frame", event.lastFrame},
          {"start_s", numberOrNull(event.startTime)},
          {"end_s", numberOrNull(event.endTime)},
          {"duration_s", numberOrNull(durationOf(event))},
          {"peak_frame", event.peakFrame},
          {"peak_value", numberOrNull(event.peakValue)},
          {"threshold", numberOrNull(event.threshold)},
          {"at_start", event.isAtStart},
          {"at_end", event.isAtEnd}};
}

}  // namespace

// Types and severities hold neither commas nor quotes.
const char* const EVENT_COLUMNS =
    "id,type,severity,first_frame,last_frame,start_s,end_s,duration_s,peak_frame,peak_value,"
    "threshold,at_start,at_end";

double durationOf(const Event& event) {
  return wholeNanoseconds(event.endTime - event.startTime);
}

Json eventsJson(const std::vector<Event>& events) {
  Json all = Json::array();
  for (const Event& event : events) all.push_back(eventJson(event));
  return all;
}

Event eventOf(const Json& json) {
  Event event;
  event.id = wholeNumberOf(json, "id");
  event.type = textOf(json, "type");
  if (eventTypeNamed(event.type) == EVENT_TYPES) event.type = "unknown";
  event.severity = severityNamed(textOf(json, "severity"));
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

void writeEventsJson(const std::vector<Event>& events, FILE* out) {
  for (const Event& event : events) {
    std::fprintf(out, "%s    %s", &event == &events.front() ? "[\n" : ",\n",
                 eventJson(event).dump().c_str());
  }
  std::fputs(events.empty() ? "[]" : "\n  ]", out);
}

void addTo(EventSummary* summary, const Event& event) {
  ++summary->counts.at(static_cast<size_t>(event.severity));
  Severity& worst = summary->worst[event.type];  // INFO, when it is new
  worst = std::max(worst, event.severity);
}

std::string eventColumns(const Event& event) {
  std::string text = std::to_string(event.id) + ',' + csvField(event.type);
  text += std::string(",") + severityName(event.severity);
  text += ',' + std::to_string(event.firstFrame) + ',' + std::to_string(event.lastFrame);
  text += ',' + shortestText(event.startTime) + ',' + shortestText(event.endTime);
  text += ',' + shortestText(durationOf(event)) + ',' + std::to_string(event.peakFrame);
  text += ',' + shortestText(event.peakValue) + ',' + shortestText(event.threshold);
  text += event.isAtStart ? ",1" : ",0";
  text += event.isAtEnd ? ",1" : ",0";
  return text;
}

void writeEventsCsv(const std::vector<Event>& events, FILE* out) {
  std::fprintf(out, "%s\r\n", EVENT_COLUMNS);
  for (const Event& event : events) std::fprintf(out, "%s\r\n", eventColumns(event).c_str());
}
