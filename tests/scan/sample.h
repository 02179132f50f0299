// Made-up analyses: plausible waves, events where they leave their thresholds.
#ifndef LUMASCAN_TESTS_SAMPLE_H
#define LUMASCAN_TESTS_SAMPLE_H

#include <cstdint>
#include <string>

#include "scan/events/eventList.h"
#include "scan/report/report.h"

// `frames` frames at `fps`; the same seed gives the same ones. Flickering is defined once in eight
// frames, three indicators only from the second frame on; frame 40 has no time of its own.
VideoResult sampleInput(const std::string& path, int64_t frames, double fps, uint32_t seed);

// The same as a part of a longer video, `firstFrame` frames into it.
VideoResult sampleRange(const std::string& path, int64_t frames, double fps, uint32_t seed,
                        int64_t firstFrame);

EventSummary summaryOf(const std::vector<Event>& events);

// What could not be opened: no frames, no events, hardly any facts.
VideoResult failedInput(const std::string& path);

#endif
