// Events as files have them.
#ifndef LUMASCAN_EVENT_LIST_H
#define LUMASCAN_EVENT_LIST_H

#include <array>
#include <cstdio>
#include <map>
#include <string>
#include <vector>

#include "scan/events/event.h"
#include "scan/files/jsonFwd.h"

// Seconds from the event's start to its end; NaN: unknown.
double durationOf(const Event& event);

// An array with an object for every event, as docs/results.md has it. NaN is null.
Json eventsJson(const std::vector<Event>& events);

// An event of such an array.
Event eventOf(const Json& json);

// Writes such an array on several lines, for a place two spaces in.
void writeEventsJson(const std::vector<Event>& events, FILE* out);

// How many there are of each severity, by its number, and the worst severity of each type.
struct EventSummary {
  std::array<int64_t, 3> counts{};
  std::map<std::string, Severity> worst;
};

void addTo(EventSummary* summary, const Event& event);

// The names of an event's columns, and their texts, separated by commas; neither ends the line.
extern const char* const EVENT_COLUMNS;
std::string eventColumns(const Event& event);

// RFC 4180: a header, then one row per event, CR LF behind each. Numbers as shortestText() has
// them, NaN empty; flags are 0 or 1.
void writeEventsCsv(const std::vector<Event>& events, FILE* out);

#endif
