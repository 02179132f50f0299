// What must hold of the events that are found in a table of frames.
#ifndef LUMAPROBE_TESTS_REQUIREEVENTS_H
#define LUMAPROBE_TESTS_REQUIREEVENTS_H

#include <tuple>
#include <vector>

#include "require.h"
#include "scan/analysis/frameTable.h"
#include "scan/events/event.h"
#include "scan/events/thresholds.h"

inline void requireEventsOf(const FrameTable& table, const Thresholds& thresholds,
                            const std::vector<Event>& events) {
  const int64_t start = table.firstFrame;
  const int64_t end = start + table.rows();
  int64_t id = 0;
  for (const Event& event : events) {
    require(event.id == ++id, "events are numbered from 1");
    require(id == 1 || std::tie(events[static_cast<size_t>(id) - 2].firstFrame,
                                events[static_cast<size_t>(id) - 2].type) <=
                           std::tie(event.firstFrame, event.type),
            "events are in order");
    require(start <= event.firstFrame && event.firstFrame <= event.peakFrame &&
                event.peakFrame <= event.lastFrame && event.lastFrame < end,
            "events lie inside the table");
    require(event.isAtStart == (event.firstFrame == start), "events know that they begin it");
    require(event.isAtEnd == (event.lastFrame + 1 == end), "events know that they end it");
    const size_t type = eventTypeNamed(event.type);
    require(type < EVENT_TYPES && thresholds[type].isEnabled, "events are of enabled types");
    require(event.severity == thresholds[type].severity, "events are as grave as they are said");
  }
}

#endif
