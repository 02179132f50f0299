// The page on one video, or on several side by side.
#ifndef LUMASCAN_REPORT_H
#define LUMASCAN_REPORT_H

#include <cstdint>
#include <cstdio>
#include <map>
#include <string>
#include <vector>

#include "scan/analysis/frameTable.h"
#include "scan/events/event.h"
#include "scan/files/json.h"

// NOLINTNEXTLINE(bugprone-exception-escape): moving JSON throws nothing
struct ReportInput {
  Json result;  // docs/results.md; what is missing is left out
  std::vector<Event> events;
  FrameTable frames;                          // may be empty
  std::map<int64_t, std::string> thumbnails;  // frame number -> JPEG file
};

// Writes one HTML document that works offline, and in what matters without script and on paper. Of
// very many events it shows the gravest, and says so.
void writeReport(const std::vector<ReportInput>& inputs, FILE* out);

#endif
