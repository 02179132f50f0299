// What is to be made of a video, in a word and in a few sentences.
#ifndef LUMASCAN_VERDICT_H
#define LUMASCAN_VERDICT_H

#include <string>
#include <vector>

#include "scan/events/event.h"

struct Verdict {
  std::string verdict;               // "pass", "attention", "fail" or "incomplete"
  std::vector<std::string> reasons;  // in words, the weightiest first; none for "pass"
};

// status    "complete", "partial" or "failed"; all but the first are "incomplete", whatever the
//           events say, and `error` is the first reason.
// duration  of the video, in seconds; NaN: unknown.
// Events of severity FAIL make it fail, those of WARN attention, those of INFO nothing. There is
// one reason for each of their types, those that fail first, then by the number of their frames.
Verdict judge(const std::string& status, const std::string& error, const std::vector<Event>& events,
              double duration);

#endif
