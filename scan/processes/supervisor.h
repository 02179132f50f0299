// Many jobs, some at a time, each in a worker process.
#ifndef LUMASCAN_SUPERVISOR_H
#define LUMASCAN_SUPERVISOR_H

#include <string>
#include <vector>

#include "scan/processes/workerProcess.h"

enum class TaskState { WAITING, RUNNING, FINISHED };

struct Task {
  ScanJob job;       // its file is open from its first attempt to its end
  int64_t size = 0;  // of its file, in bytes: its share of the progress
  TaskState state = TaskState::WAITING;
  int attempts = 0;
  std::string outputError;  // why its results could not be stored
  WorkerProcess worker;     // while it runs
};

// How they are run.
struct TaskLimits {
  size_t jobs = 1;              // at a time
  double stallTimeout = 120.0;  // seconds without a new frame; 0: any time
  bool isVerbose = false;       // what workers print is shown
};

// What happens to tasks, for those who want to know. `tasks` are all of them.
struct TaskListener {
  std::function<void(const std::vector<Task>& tasks, const Task& task)> onFinished;
  std::function<void(const std::vector<Task>& tasks)> onTick;  // several times a second
  std::function<void(const std::string& text)> onMessage;      // for the user to read
};

// Runs all waiting tasks, some at a time. A worker that crashes or stalls is started once more;
// when that goes wrong, too, a result is stored that says so. A disk that takes no results any more
// keeps further tasks from being started. The first SIGINT lets running tasks finish, a second one
// or SIGTERM kills them.
//
// Returns the signal that stopped the run, or 0.
int superviseTasks(const ScanSettings& settings, const TaskLimits& limits,
                   const TaskListener& listener, std::vector<Task>* tasks);

#endif
