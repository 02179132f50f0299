#include "scan/events/eventDetection.h"

#include <algorithm>
#include <cmath>
#include <deque>
#include <functional>
#include <tuple>

#include "scan/analysis/indicatorTable.h"
#include "scan/events/signals.h"
#include "scan/numbers/decimals.h"
#include "scan/numbers/sortedValues.h"
#include "scan/numbers/unknown.h"

namespace {

using Values = Column<double>;

constexpr size_t NEIGHBOURS = 4;  // frames to either side that a scene cut is compared with
constexpr double CONTAINER_ROUNDING = 1e-3;  // seconds; many containers round times to this
// A threshold taken from the file's median: a stretch goes on for this share of the way to it.
constexpr double RELATIVE_LEAVE = 0.75;
// Steps from frame to frame are regular where so many of them are no further from their median
// than this share of it.
constexpr double REGULAR = 0.95;
constexpr double JITTER = 0.25;
constexpr double LONGEST_DAMAGE = 10.0;  // seconds behind the last sign of it
constexpr size_t LONE = 3;               // frames to either side that do not come near a lone cut

// When each frame is shown. NaN: unknown.
struct Times {
  Values start;    // seconds, as in the table or by the frame rate
  Values end;      // seconds
  Values elapsed;  // seconds since the first frame; never falls, whatever the timestamps do
  double typicalStep;
};

double typicalStep(const Values& time, double frameRate) {
  const double step = medianStep(time);
  if (!std::isnan(step)) return step;
  return frameRate > 0.0 ? 1.0 / frameRate : UNKNOWN;
}

Times timesOf(const FrameTable& table, double frameRate) {
  Times times;
  times.typicalStep = typicalStep(table.time, frameRate);
  const size_t rows = table.time.size();
  for (size_t i = 0; i < rows; ++i) {
    const double time = table.time[i];
    const auto frame = static_cast<double>(table.firstFrame + static_cast<int64_t>(i));
    times.start.push_back(std::isnan(time) && frameRate > 0.0 ? frame / frameRate : time);
  }
  double elapsed = 0.0;
  for (size_t i = 0; i < rows; ++i) {
    const double start = times.start[i];
    const double step = i + 1 < rows ? times.start[i + 1] - start : UNKNOWN;
    const double length = table.duration[i] > 0.0 ? table.duration[i]
                          : step > 0.0            ? step
                                                  : times.typicalStep;
    times.end.push_back(wholeNanoseconds(start + length));
    times.elapsed.push_back(elapsed);
    elapsed += step > 0.0 ? step : length;
  }
  return times;
}

// What the detection of one type looks at.
struct Scene {
  const FrameTable& table;
  const Times& times;
  const EventRule& rule;
  const Threshold& threshold;
  bool tellsDecodeErrors;  // these are looked for, too
};

Event eventAt(const Scene& scene, size_t first, size_t last) {
  const int64_t start = scene.table.firstFrame;
  Event event;
  event.type = scene.rule.type;
  event.severity = scene.threshold.severity;
  event.firstFrame = start + static_cast<int64_t>(first);
  event.lastFrame = start + static_cast<int64_t>(last);
  event.startTime = scene.times.start[first];
  event.endTime = scene.times.end[last];
  event.peakFrame = event.firstFrame;
  event.peakValue = UNKNOWN;
  event.threshold = UNKNOWN;
  event.isAtStart = first == 0;
  event.isAtEnd = last + 1 == scene.times.start.size();
  return event;
}

bool isLongEnough(const Scene& scene, size_t first, size_t last) {
  const Times& times = scene.times;
  const double seconds =
      times.elapsed[last] - times.elapsed[first] + (times.end[last] - times.start[last]);
  return std::isnan(seconds) || seconds >= scene.threshold.minSeconds - CONTAINER_ROUNDING;
}

struct Levels {
  double enter;
  double leave;
};

bool isBeyond(double value, double level, Direction direction) {
  return direction == Direction::ABOVE ? value >= level : value <= level;
}

Levels atMultipleOfMedian(const Threshold& threshold, const Values& values) {
  const double needed = threshold.ratio * medianOf(values);
  return {needed, needed * (threshold.leave / threshold.enter)};
}

Levels atDistanceFromMedian(const Threshold& threshold, const Values& values, Direction direction) {
  const double median = medianOf(values);
  Values deviations;
  for (const double value : values) deviations.push_back(std::fabs(value - median));
  const double distance = std::max(threshold.mad * medianOf(deviations), threshold.least);
  const double sign = direction == Direction::ABOVE ? 1.0 : -1.0;
  return {median + sign * distance, median + sign * RELATIVE_LEAVE * distance};
}

// The threshold's own levels, or those taken from the file's median where these lie further out:
// what counts is beyond both.
Levels levelsOf(const Scene& scene, const Values& values) {
  const Threshold& threshold = scene.threshold;
  const Direction direction = scene.rule.direction;
  const Levels own = {threshold.enter, threshold.leave};
  if (!(threshold.ratio > 0.0 || threshold.mad > 0.0)) return own;
  Levels relative = threshold.ratio > 0.0 ? atMultipleOfMedian(threshold, values)
                                          : atDistanceFromMedian(threshold, values, direction);
  if (isBeyond(relative.enter, threshold.alone, direction)) {
    relative = {threshold.alone, threshold.alone + (own.leave - own.enter)};
  }
  // The share of an `enter` that is 0 or below it may put `leave` anywhere.
  if (!isBeyond(relative.enter, relative.leave, direction)) relative.leave = relative.enter;
  return isBeyond(own.enter, relative.enter, direction) ? own : relative;
}

// The worst value of the last seconds that the threshold names, back to the last undefined one.
Values worstOfLastSeconds(const Scene& scene, const Values& values) {
  const double seconds = scene.threshold.holdSeconds - CONTAINER_ROUNDING;
  // Each value, and since when (seconds); each less bad than the one before.
  std::deque<std::pair<double, double>> worst;
  Values held;
  for (size_t i = 0; i < values.size(); ++i) {
    const double value = values[i];
    const double now = scene.times.elapsed[i];
    if (std::isnan(value)) {
      worst.clear();
      held.push_back(value);
      continue;
    }
    while (!worst.empty() && isBeyond(value, worst.back().first, scene.rule.direction)) {
      worst.pop_back();
    }
    worst.emplace_back(value, now);
    while (worst.size() > 1 && !(now - worst.front().second < seconds)) worst.pop_front();
    held.push_back(worst.front().first);
  }
  return held;
}

size_t worstRow(const Values& values, size_t first, size_t last, Direction direction) {
  size_t worst = first;
  double worstValue = values[first];
  for (size_t i = first + 1; i <= last; ++i) {
    const double value = values[i];
    const bool isWorse = direction == Direction::ABOVE ? value > worstValue : value < worstValue;
    if (!isWorse) continue;
    worst = i;
    worstValue = value;
  }
  return worst;
}

// Values may hold for frames before their own: of those that have the worst one, the first that was
// measured so.
size_t rowOfValue(const Scene& scene, const Values& own, size_t first, size_t last, size_t worst) {
  if (scene.rule.signal != Signal::INDICATOR) return worst;
  const Values& measured = scene.table.values[indicatorNamed(scene.rule.indicator)];
  for (size_t i = first; i <= last; ++i) {
    if (own[i] == own[worst] && measured[i] == own[worst]) return i;
  }
  return worst;
}

void findStretches(const Scene& scene, std::vector<Event>* events) {
  const bool isHeld = scene.threshold.holdSeconds > 0.0;
  const Values own = signalOf(scene.table, scene.rule);
  const Values held = isHeld ? worstOfLastSeconds(scene, own) : Values{};
  const Values& values = isHeld ? held : own;
  const Levels levels = levelsOf(scene, values);
  const Direction direction = scene.rule.direction;
  const size_t rows = values.size();
  for (size_t first = 0, next = 0; first < rows; first = next) {
    next = first + 1;
    if (!isBeyond(values[first], levels.enter, direction)) continue;
    while (next < rows && isBeyond(values[next], levels.enter, direction)) ++next;
    if (!isLongEnough(scene, first, next - 1)) continue;
    while (next < rows && isBeyond(values[next], levels.leave, direction)) ++next;
    size_t last = next - 1;
    while (!isBeyond(own[last], levels.leave, direction)) --last;  // not held any more
    const size_t worst = rowOfValue(scene, own, first, last, worstRow(own, first, last, direction));
    Event event = eventAt(scene, first, last);
    event.peakFrame = scene.table.firstFrame + static_cast<int64_t>(worst);
    event.peakValue = own[worst];
    event.threshold = levels.enter;
    events->push_back(event);
  }
}

double medianOfNeighbours(const Values& values, size_t row) {
  Values neighbours;
  const size_t end = std::min(row + NEIGHBOURS + 1, values.size());
  for (size_t i = row - std::min(row, NEIGHBOURS); i < end; ++i) {
    if (i != row) neighbours.push_back(values[i]);
  }
  return medianOf(neighbours);
}

bool isLone(const Values& values, size_t row, double share) {
  const size_t end = std::min(row + LONE + 1, values.size());
  for (size_t i = row - std::min(row, LONE); i < end; ++i) {
    if (i != row && values[i] >= share * values[row]) return false;
  }
  return true;
}

// A cut to or from a uniform picture is none: the "black" event says it. The first two comparisons
// have too little before them to stand out from.
void findSceneCuts(const Scene& scene, std::vector<Event>* events) {
  const Values& activity = scene.table.values[indicatorNamed(scene.rule.indicator)];
  for (size_t i = 3; i < activity.size(); ++i) {
    if (!(activity[i] >= scene.threshold.enter) || std::isnan(activity[i - 2])) continue;
    if (isBlack(scene.table, i) || isBlack(scene.table, i - 1)) continue;
    const double needed =
        std::max(scene.threshold.enter, scene.threshold.ratio * medianOfNeighbours(activity, i));
    if (activity[i] < needed) continue;
    // Both sides of a flash, the steps of what scrolls and those of an animation are no cuts.
    if (scene.threshold.lone > 0.0 && !isLone(activity, i, scene.threshold.lone)) continue;
    Event event = eventAt(scene, i, i);
    event.peakValue = activity[i];
    event.threshold = needed;
    events->push_back(event);
  }
}

// A stretch for each run of rows that are so.
void findRuns(const Scene& scene, const Column<bool>& isSo, std::vector<Event>* events) {
  for (size_t first = 0, next = 0; first < isSo.size(); first = next) {
    next = first + 1;
    if (!isSo[first]) continue;
    while (next < isSo.size() && isSo[next]) ++next;
    events->push_back(eventAt(scene, first, next - 1));
  }
}

// Damage stays in what later frames are predicted from: it lasts from a row that shows it to the
// next key frame that does not.
Column<bool> lastingDamage(const Scene& scene, size_t start,
                           const std::function<bool(size_t)>& isDamaged) {
  Column<bool> damaged;
  double until = 0.0;
  bool lasts = false;
  for (size_t i = 0; i < scene.table.isKey.size(); ++i) {
    const bool isShown = i >= start && isDamaged(i);
    const double now = scene.times.elapsed[i];
    if (isShown) until = now + LONGEST_DAMAGE;
    lasts = isShown || (lasts && !scene.table.isKey[i] && !(now >= until));
    damaged.push_back(lasts);
  }
  return damaged;
}

Column<bool> decodeErrors(const Scene& scene, size_t beginning) {
  return lastingDamage(scene, beginning, [&](size_t i) { return scene.table.isCorrupt[i]; });
}

// But for those of frames that are damaged anyway.
Column<bool> streamErrors(const Scene& scene, size_t beginning) {
  Column<bool> known;
  if (scene.tellsDecodeErrors) known = decodeErrors(scene, beginning);
  return lastingDamage(scene, 0, [&](size_t i) {
    return scene.table.messages[i] > 0 && !(scene.tellsDecodeErrors && known[i]);
  });
}

// How many rows come before the first key frame of a stream that begins in between.
size_t rowsOfBeginning(const FrameTable& table, const StreamFindings& stream) {
  if (!stream.startsMidstream || table.firstFrame != 0) return 0;
  size_t key = 0;
  while (key < table.isKey.size() && !table.isKey[key]) ++key;
  return key == table.isKey.size() ? 0 : key;
}

void addGap(const Scene& scene, size_t row, double step, double longest,
            std::vector<Event>* events) {
  Event event = eventAt(scene, row, row);
  event.peakValue = step;
  event.threshold = step < 0.0 ? 0.0 : longest;
  events->push_back(event);
}

void findTimestampGaps(const Scene& scene, const std::vector<Join>& joins,
                       std::vector<Event>* events) {
  const Values& time = scene.table.time;
  const double longest =
      std::max(scene.threshold.enter, scene.threshold.ratio * scene.times.typicalStep);
  for (size_t i = 1; i < time.size(); ++i) {
    const double step = time[i] - time[i - 1];
    if (step < 0.0 || step > longest) addGap(scene, i, step, longest, events);
  }
  // Where recordings were joined, times go on, but timestamps did not.
  for (const Join& join : joins) {
    const int64_t row = join.frame - scene.table.firstFrame;
    if (row > 0 && row < scene.table.rows())
      addGap(scene, static_cast<size_t>(row), join.step, longest, events);
  }
}

bool isRegular(const Values& time, double typicalStep) {
  size_t regular = 0;
  for (size_t i = 1; i < time.size(); ++i) {
    if (std::fabs(time[i] - time[i - 1] - typicalStep) <= JITTER * typicalStep) ++regular;
  }
  return static_cast<double>(regular) >= REGULAR * static_cast<double>(time.size() - 1);
}

void addMissing(const Scene& scene, size_t row, double count, std::vector<Event>* events) {
  Event event = eventAt(scene, row, row);
  event.peakValue = count;
  events->push_back(event);
}

void findMissingFrames(const Scene& scene, const StreamFindings& stream,
                       std::vector<Event>* events) {
  const Values& time = scene.table.time;
  const double typical = scene.times.typicalStep;
  if (!stream.hasOwnDurations && isRegular(time, typical)) {
    // Encoders hold the first frame of a video when they begin before what they record.
    const size_t held = scene.table.firstFrame == 0 ? 1 : 0;
    const size_t first = std::max(rowsOfBeginning(scene.table, stream), held) + 1;
    for (size_t i = first; i < time.size(); ++i) {
      const double steps = (time[i] - time[i - 1]) / typical;
      if (steps >= 2.0 - JITTER) addMissing(scene, i, std::round(steps) - 1.0, events);
    }
  }
  if (stream.missingAtEnd > 0)
    addMissing(scene, time.size() - 1, static_cast<double>(stream.missingAtEnd), events);
}

void findEvents(const Scene& scene, const StreamFindings& stream, std::vector<Event>* events) {
  const size_t last = scene.times.start.size() - 1;
  const size_t beginning = rowsOfBeginning(scene.table, stream);
  switch (scene.rule.kind) {
    case EventKind::STRETCH:
      findStretches(scene, events);
      break;
    case EventKind::SCENE_CUT:
      findSceneCuts(scene, events);
      break;
    case EventKind::DECODE_ERROR:
      findRuns(scene, decodeErrors(scene, beginning), events);
      break;
    case EventKind::STREAM_ERROR:
      findRuns(scene, streamErrors(scene, beginning), events);
      break;
    case EventKind::BEGINNING:
      if (stream.startsMidstream && scene.table.firstFrame == 0)
        events->push_back(eventAt(scene, 0, std::max(beginning, size_t{1}) - 1));
      break;
    case EventKind::TRUNCATION:
      if (stream.isTruncated) events->push_back(eventAt(scene, last, last));
      break;
    case EventKind::SIZE_CHANGE:
      if (stream.hasSizeChange) events->push_back(eventAt(scene, last, last));
      break;
    case EventKind::TIMESTAMP_GAP:
      findTimestampGaps(scene, stream.joins, events);
      break;
    case EventKind::MISSING:
      findMissingFrames(scene, stream, events);
      break;
  }
}

}  // namespace

std::vector<Event> detectEvents(const FrameTable& table, const Thresholds& thresholds,
                                const StreamFindings& stream) {
  std::vector<Event> events;
  if (table.rows() == 0) return events;
  const Times times = timesOf(table, stream.frameRate);
  const bool tellsDecodeErrors = thresholds[eventTypeNamed("decode_error")].isEnabled;
  for (size_t i = 0; i < EVENT_TYPES; ++i) {
    if (!thresholds[i].isEnabled) continue;
    findEvents({table, times, EVENT_RULES[i], thresholds[i], tellsDecodeErrors}, stream, &events);
  }
  std::sort(events.begin(), events.end(), [](const Event& a, const Event& b) {
    return std::tie(a.firstFrame, a.type) < std::tie(b.firstFrame, b.type);
  });
  int64_t id = 0;
  for (Event& event : events) event.id = ++id;
  return events;
}
