// The page on one video, or on several side by side.
#ifndef LUMASCAN_REPORT_H
#define LUMASCAN_REPORT_H

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "scan/frameTable.h"
#include "scan/html.h"

// NOLINTNEXTLINE(bugprone-exception-escape): moving JSON throws nothing
struct ReportInput {
  Json result;                                // docs/results.md; what is missing is left out
  FrameTable frames;                          // may be empty
  std::map<int64_t, std::string> thumbnails;  // frame number -> JPEG file
};

// One HTML document that works offline, and in what matters without script and on paper.
std::string renderReport(const std::vector<ReportInput>& inputs);

#endif
