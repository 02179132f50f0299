#include "scan/report/pageContent.h"

#include <algorithm>
#include <cmath>
#include <tuple>

#include "scan/report/resultFacts.h"

namespace {

constexpr size_t MOST_EVENT_ROWS = 2000;  // with a row of their own
constexpr double FINEST_GAP = 0.001;      // of the whole, between bands of events without a row

TimeSpan wholeSpan(const std::vector<Source>& sources) {
  TimeSpan whole = {0.0, 0.0};
  bool isFirst = true;
  for (const Source& source : sources) {
    if (source.times.empty()) continue;
    const TimeSpan span = axisSpan(source.input->frames, source.times, source.fps);
    whole =
        isFirst ? span : TimeSpan{std::min(whole.start, span.start), std::max(whole.end, span.end)};
    isFirst = false;
  }
  return whole;
}

// A frame's place on the axis of time; frames outside of the table have that of its nearest one.
double axisTimeOf(int64_t frame, const Source& source) {
  if (source.times.empty()) return 0.0;
  const auto last = static_cast<int64_t>(source.times.size()) - 1;
  const int64_t first = source.input->frames.firstFrame;
  const int64_t row = frame < first ? 0 : std::min(frame - first, last);
  return source.times[static_cast<size_t>(row)];
}

TimeSpan spanOf(const Event& event, const Source& source, const TimeSpan& page) {
  double start = event.startTime;
  double end = event.endTime;
  if (std::isnan(start)) start = axisTimeOf(event.firstFrame, source);
  if (std::isnan(end)) end = axisTimeOf(event.lastFrame, source) + 1.0 / source.fps;
  start = std::clamp(start, page.start, page.end);
  return {start, std::clamp(end, start, page.end)};
}

std::vector<PageEvent> collectEvents(const std::vector<Source>& sources, const TimeSpan& span) {
  std::vector<PageEvent> events;
  for (const Source& source : sources) {
    for (const Event& event : source.input->events) {
      events.push_back(
          {source.place, &event, spanOf(event, source, span), indicatorOfEvent(event.type)});
    }
  }
  return events;
}

void sortByTime(std::vector<PageEvent>* events) {
  std::stable_sort(events->begin(), events->end(), [](const PageEvent& a, const PageEvent& b) {
    return a.span.start < b.span.start;
  });
}

// Events of a kind that lie closer to each other than the gap become one.
std::vector<PageEvent> joined(std::vector<PageEvent> events, double gap) {
  const auto kindOf = [](const PageEvent& event) {
    return std::tie(event.event->type, event.source, event.event->severity);
  };
  sortByTime(&events);
  std::stable_sort(events.begin(), events.end(),
                   [&](const PageEvent& a, const PageEvent& b) { return kindOf(a) < kindOf(b); });
  std::vector<PageEvent> bands;
  for (const PageEvent& event : events) {
    const bool isNear = !bands.empty() && kindOf(bands.back()) == kindOf(event) &&
                        event.span.start - bands.back().span.end < gap;
    if (!isNear) bands.push_back(event);
    bands.back().span.end = std::max(bands.back().span.end, event.span.end);
  }
  return bands;
}

// Gives the gravest events a row of their own, and says where the others are.
void shareEvents(std::vector<PageEvent> events, Page* page) {
  for (const PageEvent& event : events) ++page->counts[event.event->type];
  std::stable_sort(events.begin(), events.end(), [](const PageEvent& a, const PageEvent& b) {
    return a.event->severity > b.event->severity;
  });
  const auto end =
      events.begin() + static_cast<std::ptrdiff_t>(std::min(events.size(), MOST_EVENT_ROWS));
  page->events = {events.begin(), end};
  sortByTime(&page->events);
  page->others = joined({end, events.end()}, FINEST_GAP * (page->span.end - page->span.start));
}

// Thresholds that several inputs share are shown once.
void collectThresholds(const Thresholds& thresholds, Page* page) {
  for (size_t i = 0; i < EVENT_TYPES; ++i) {
    const char* const type = EVENT_RULES[i].type;
    const size_t track = indicatorOfEvent(type);
    const double value = thresholds[i].enter;
    // A track shows the values of its indicator.
    if (track == INDICATORS || EVENT_RULES[i].signal != Signal::INDICATOR || std::isnan(value))
      continue;
    std::vector<PageThreshold>& known = page->thresholds[track];
    const bool isKnown =
        std::any_of(known.begin(), known.end(), [&](const PageThreshold& threshold) {
          return threshold.type == type && threshold.value == value;
        });
    if (!isKnown) known.push_back({value, type, thresholds[i].severity});
  }
}

}  // namespace

Page collectPage(const std::vector<const VideoResult*>& inputs) {
  Page page;
  for (size_t i = 0; i < inputs.size(); ++i) {
    const double fps = usableRate(frameRateOf(inputs[i]->record));
    page.sources.push_back({inputs[i], i, fps, axisTimes(inputs[i]->frames, fps)});
    collectThresholds(inputs[i]->record.thresholds, &page);
  }
  page.span = wholeSpan(page.sources);
  shareEvents(collectEvents(page.sources, page.span), &page);
  return page;
}

bool isComparison(const Page& page) {
  return page.sources.size() > 1;
}
