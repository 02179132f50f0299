// What there is to say about one video: its frames, and the record that becomes result.json.
#ifndef LUMASCAN_VIDEO_RESULT_H
#define LUMASCAN_VIDEO_RESULT_H

#include <cstdio>
#include <functional>
#include <vector>

#include "scan/analysis/videoAnalysis.h"
#include "scan/events/event.h"
#include "scan/events/thresholds.h"
#include "scan/files/json.h"

// NOLINTNEXTLINE(bugprone-exception-escape): moving JSON throws nothing
struct VideoResult {
  Json json;  // docs/results.md, without the events
  FrameTable frames;
  std::vector<Event> events;
};

// Told behind each frame how much of the file is done, 0 to 1, and how many frames.
using ProgressListener = std::function<void(double, int64_t)>;

// Opens and analyses a video. Whatever happens there is a result, whose status says how far it got.
//
// decoderThreads   0: as many as the machine has
// rows             gets the report that lumaprobe would write; null: nobody does
VideoResult analyseSource(const VideoSource& source, const AnalysisOptions& options,
                          int decoderThreads, FILE* rows, const ProgressListener& onProgress);

// The result of a video of which nothing could be found out.
Json failedResult(const VideoSource& source, const AnalysisOptions& options,
                  const std::string& error);

// What was asked about a video, as result.json has it.
Json optionsJson(const VideoSource& source, const AnalysisOptions& options);

// Finds the events and the verdict, in place of those that the result has.
void judgeResult(const Thresholds& thresholds, VideoResult* result);

#endif
