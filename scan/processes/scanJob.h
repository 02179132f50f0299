// One video from its file to its folder of results: what a worker process does.
#ifndef LUMASCAN_SCAN_JOB_H
#define LUMASCAN_SCAN_JOB_H

#include <string>

#include "scan/processes/sandbox.h"
#include "scan/results/storedResult.h"

// What is asked of every video of a scan.
struct ScanSettings {
  AnalysisOptions analysis;
  Thresholds thresholds = DEFAULT_THRESHOLDS;
  OutputChoice outputs;
  SandboxFacts sandbox;     // is on: the process that decodes is confined
  int64_t memoryLimit = 0;  // bytes that it may write to; 0: all there are
};

struct ScanJob {
  VideoSource source;
  std::string output;  // the folder of all results
  std::string folder;  // of this one's, below it
  Freshness freshness = Freshness::STALE;
  bool isThreaded = false;
  int decoderThreads = 1;
};

struct JobEnd {
  // Nothing is stored: the video is damaged, and must be decoded by one thread. In another process,
  // since the indicators have begun.
  bool needsOneThread = false;
  std::string outputError;  // why the results could not be stored; empty: they are
};

// Analyses, judges and stores, in a process that is confined before it looks at the video.
// Whatever is wrong with the video is said in its result.
JobEnd runJob(const ScanJob& job, const ScanSettings& settings, const ProgressListener& onProgress);

// Stores the result of a video of which nothing could be found out. Returns an empty text, or what
// went wrong.
std::string storeFailure(const ScanJob& job, const ScanSettings& settings,
                         const std::string& error);

#endif
