// What a scan says while it runs, on standard error.
#ifndef LUMASCAN_PROGRESS_H
#define LUMASCAN_PROGRESS_H

#include <chrono>
#include <string>

#include "scan/processes/progressStyle.h"
#include "scan/processes/supervisor.h"

struct Progress {
  ProgressStyle style = ProgressStyle::NONE;
  std::chrono::steady_clock::time_point start;
  std::chrono::steady_clock::time_point lastShown;
  double shareBefore = 0.0;  // of all tasks, done before the scan: what was up to date
  bool hasLine = false;      // an unfinished line stands on the terminal
  bool hasSpoken = false;    // there was a line at all
};

// With AUTO a terminal gets a bar and everything else plain lines; quiet wins over both.
Progress startProgress(ProgressStyle style, bool isQuiet);

// Shows how far all tasks are, when it is time to.
void showProgress(const std::vector<Task>& tasks, Progress* progress);

// Before the first task is begun. As JSON that is a record.
void beginProgress(const std::vector<Task>& tasks, Progress* progress);

// When all is done, or stopped: a record, or where there were lines a last one. `frames` are all
// that were analysed.
void endProgress(const std::vector<Task>& tasks, int64_t frames, Progress* progress);

// Takes the bar away, so that something else can be printed.
void clearProgress(Progress* progress);

// How much of all tasks is done, 0 to 1, by the sizes of their files.
double shareDone(const std::vector<Task>& tasks);

#endif
