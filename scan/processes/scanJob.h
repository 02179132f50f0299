// One video from its file to its folder of results: what a worker process does.
#ifndef LUMASCAN_SCAN_JOB_H
#define LUMASCAN_SCAN_JOB_H

#include <string>

#include "scan/results/storedResult.h"

// What is asked of every video of a scan.
struct ScanSettings {
  AnalysisOptions analysis;
  Thresholds thresholds = DEFAULT_THRESHOLDS;
  OutputChoice outputs;
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

// Analyses, judges and stores. Whatever is wrong with the video is said in its result.
JobEnd runJob(const ScanJob& job, const ScanSettings& settings, const ProgressListener& onProgress);

#endif
