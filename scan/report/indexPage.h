// The page on all inputs of a run.
#ifndef LUMASCAN_INDEX_PAGE_H
#define LUMASCAN_INDEX_PAGE_H

#include <cstdio>
#include <string>
#include <vector>

#include "scan/events/eventList.h"
#include "scan/record/videoResult.h"

struct IndexEntry {
  ResultRecord record;
  std::string folderUri;  // where its report.html is: a relative reference, percent-encoded
  EventSummary events;
  bool isVideoGone = false;
};

// Writes one HTML document that works offline and without script. The worst come first: incomplete,
// fail, attention, pass; then those with more failures, then with more warnings; then by path.
void writeIndex(const std::vector<IndexEntry>& entries, FILE* out);

#endif
