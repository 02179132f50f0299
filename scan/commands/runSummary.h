// What a scan came to: lines that it prints, run.json and the exit status.
#ifndef LUMASCAN_RUN_SUMMARY_H
#define LUMASCAN_RUN_SUMMARY_H

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include "scan/events/eventList.h"
#include "scan/events/verdict.h"

// What one input came to.
struct RunEntry {
  std::string path;
  std::string folder;            // of its results, from the folder of all results
  std::optional<Status> status;  // none: its analysis was stopped, or could not be stored
  Judgement judgement;
  std::string error;
  int64_t frames = 0;
  EventSummary events;
  bool wasUpToDate = false;
  int attempts = 0;
};

void printVerdict(const RunEntry& entry);

// run.json. `status` is the run's exit status, `folders` are those in which scans were started.
std::string runText(const std::vector<RunEntry>& entries, const std::vector<std::string>& folders,
                    std::chrono::system_clock::time_point start, int status);

// The exit status. hasProblem: some input could not be found; stopSignal: 0, SIGINT or SIGTERM.
int statusOf(const std::vector<RunEntry>& entries, std::optional<Severity> failOn, bool hasProblem,
             int stopSignal);

#endif
