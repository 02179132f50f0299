// What the page shows of its inputs, and where.
#ifndef LUMASCAN_PAGE_CONTENT_H
#define LUMASCAN_PAGE_CONTENT_H

#include <array>
#include <map>
#include <string>
#include <vector>

#include "scan/report/report.h"
#include "scan/report/timeline.h"

// One input and what is derived from it.
struct Source {
  const VideoResult* input;
  size_t place;  // among the inputs
  double fps;    // usable
  Column<double> times;
};

struct PageEvent {
  size_t source;  // its place
  const Event* event;
  TimeSpan span;  // within the page's
  size_t track;   // INDICATORS: none
};

struct PageThreshold {
  double value;
  std::string type;
  Severity severity;
};

struct Page {
  std::vector<Source> sources;
  TimeSpan span;
  std::vector<PageEvent> events;         // the gravest, in order of time
  std::vector<PageEvent> others;         // where the others are; neighbours of a kind are one
  std::map<std::string, size_t> counts;  // of all events, by type
  std::array<std::vector<PageThreshold>, INDICATORS> thresholds;
};

// The inputs must outlive it.
Page collectPage(const std::vector<const VideoResult*>& inputs);

// Whether there are several inputs, side by side.
bool isComparison(const Page& page);

#endif
