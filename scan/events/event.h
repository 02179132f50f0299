// A stretch of a video of which something is to be said.
#ifndef LUMASCAN_EVENT_H
#define LUMASCAN_EVENT_H

#include <cstdint>
#include <string>

enum class Severity { INFO, WARN, FAIL };

struct Event {
  int64_t id = 0;  // from 1, in the order of the list: by first frame, then by type
  std::string type;
  Severity severity = Severity::INFO;
  int64_t firstFrame = 0;
  int64_t lastFrame = 0;   // inclusive
  double startTime = 0.0;  // seconds: when the first frame appears; NaN: unknown
  double endTime = 0.0;    // seconds: when the last one goes; NaN: unknown
  int64_t peakFrame = 0;   // the worst of them
  double peakValue = 0.0;  // NaN: the event has no value
  double threshold = 0.0;  // what the value was held against; NaN: nothing
  bool isAtStart = false;  // begins with the first analysed frame
  bool isAtEnd = false;    // lasts to the last one
};

const char* severityName(Severity severity);      // "info", "warn", "fail"
Severity severityNamed(const std::string& name);  // INFO for all else

#endif
