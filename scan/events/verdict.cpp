#include "scan/events/verdict.h"

#include <fmt/core.h>
#include <algorithm>
#include <cmath>

#include "scan/analysis/frameTable.h"
#include "scan/events/eventList.h"
#include "scan/events/thresholds.h"
#include "scan/numbers/decimals.h"

namespace {

constexpr double WHOLE = 0.999;  // share of the video from which on something lasts throughout

// All events of one type.
struct Group {
  size_t type;  // place in EVENT_RULES
  Severity severity;
  int64_t count;
  int64_t frames;
  double seconds;  // NaN: unknown
  double firstStart;
  double values;  // their peaks' sum
};

void addTo(std::vector<Group>* groups, const Event& event) {
  const size_t type = eventTypeNamed(event.type);
  const auto isSame = [&](const Group& group) { return group.type == type; };
  auto group = std::find_if(groups->begin(), groups->end(), isSame);
  if (group == groups->end())
    group = groups->insert(group, {type, event.severity, 0, 0, 0.0, event.startTime, 0.0});
  group->severity = std::max(group->severity, event.severity);
  ++group->count;
  group->frames += event.lastFrame - event.firstFrame + 1;
  group->seconds += durationOf(event);
  group->values += event.peakValue;
}

bool isWeightier(const Group& a, const Group& b) {
  if (a.severity != b.severity) return a.severity > b.severity;
  return a.frames > b.frames;
}

// Milliseconds are cut, not rounded: a time must not point behind the frame.
std::string clockText(double seconds) {
  constexpr double SMALL = 1e-6;    // 0.3 is kept as a little less
  constexpr double LONGEST = 1e12;  // a broken file may name any time
  if (!(std::fabs(seconds) < LONGEST)) return shortestText(seconds) + " s";
  const auto ms = static_cast<int64_t>(std::floor((std::fabs(seconds) + SMALL) * 1000.0));
  return fmt::format("{}{:02}:{:02}:{:02}.{:03}", seconds < 0.0 ? "-" : "", ms / 3'600'000,
                     ms / 60'000 % 60, ms / 1000 % 60, ms % 1000);
}

std::string secondsText(double seconds) {
  // What lasts for less than a tenth is not of no length.
  return fmt::format(seconds < 0.095 ? "{:.3f} s" : "{:.1f} s", seconds);
}

// Kinds that say something about one moment.
bool hasLength(EventKind kind) {
  return kind == EventKind::STRETCH || kind == EventKind::DECODE_ERROR ||
         kind == EventKind::STREAM_ERROR;
}

std::string reasonOf(const Group& group, double duration) {
  const EventRule& rule = EVENT_RULES[group.type];
  const bool isOne = group.count == 1;
  std::string text = std::string(rule.title) + ": ";
  if (isOne && hasLength(rule.kind) && group.seconds >= WHOLE * duration)
    return text + "throughout";
  if (rule.kind == EventKind::MISSING) {
    text += shortestText(group.values);
    if (!isOne) text += fmt::format(" in {} places", group.count);
  } else {
    text += isOne ? "once" : std::to_string(group.count) + " times";
  }
  if (hasLength(rule.kind) && group.seconds >= 0.0)
    text += ", " + secondsText(group.seconds) + (isOne ? "" : " in all");
  if (!std::isnan(group.firstStart))
    text += (isOne ? ", at " : ", first at ") + clockText(group.firstStart);
  return text;
}

std::string incompleteReason(Status status, const std::string& error) {
  const std::string text = status == Status::FAILED ? "Not analysed" : "Only analysed in part";
  return error.empty() ? text : text + ": " + error;
}

}  // namespace

const char* statusName(Status status) {
  switch (status) {
    case Status::COMPLETE:
      return "complete";
    case Status::PARTIAL:
      return "partial";
    default:
      return "failed";
  }
}

const char* verdictName(Verdict verdict) {
  switch (verdict) {
    case Verdict::PASS:
      return "pass";
    case Verdict::ATTENTION:
      return "attention";
    case Verdict::FAIL:
      return "fail";
    default:
      return "incomplete";
  }
}

Judgement judge(Status status, const std::string& error, const std::vector<Event>& events,
                double duration) {
  std::vector<Group> groups;
  for (const Event& event : events) {
    if (event.severity != Severity::INFO) addTo(&groups, event);
  }
  std::stable_sort(groups.begin(), groups.end(), isWeightier);

  Judgement judgement;
  if (status != Status::COMPLETE) {
    judgement.verdict = Verdict::INCOMPLETE;
    judgement.reasons.push_back(incompleteReason(status, error));
  } else if (groups.empty()) {
    judgement.verdict = Verdict::PASS;
  } else {
    const bool fails = groups.front().severity == Severity::FAIL;
    judgement.verdict = fails ? Verdict::FAIL : Verdict::ATTENTION;
  }
  for (const Group& group : groups) judgement.reasons.push_back(reasonOf(group, duration));
  return judgement;
}
