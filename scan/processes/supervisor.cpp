#include "scan/processes/supervisor.h"

#include <poll.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstring>
#include <filesystem>

#include "scan/files/names.h"
#include "scan/numbers/decimals.h"

namespace {

using Clock = std::chrono::steady_clock;

constexpr int MOST_ATTEMPTS = 2;
constexpr int TICK = 200;         // milliseconds
constexpr size_t LINES_TOLD = 5;  // of what a worker said before it crashed

struct Run {
  const ScanSettings& settings;
  const TaskLimits& limits;
  const TaskListener& listener;
  std::vector<Task>* tasks;
  std::vector<Clock::time_point> lastNews;  // of each task's worker
  int stopSignal = 0;                       // no task is started any more
  bool isKilling = false;                   // nor goes on
  bool isDiskLost = false;
};

std::string nameOf(const Task& task) {
  return "\"" + printableName(task.job.source.path) + "\"";
}

size_t running(const std::vector<Task>& tasks) {
  return static_cast<size_t>(std::count_if(tasks.begin(), tasks.end(), [](const Task& task) {
    return task.state == TaskState::RUNNING;
  }));
}

// Whether the disk takes no further results. Not for what a worker says alone, which may be no
// longer lumascan's.
bool isDiskLost(const Task& task) {
  if (!isOfWholeDisk(task.outputError)) return false;
  const std::string trial = (std::filesystem::path(task.job.folder) / "trial").string();
  const std::string error =
      writeOutput(trial, [](FILE* out) { writeText(std::string(1 << 20, ' '), out); });
  std::error_code ignored;
  std::filesystem::remove(trial, ignored);
  return isOfWholeDisk(error);
}

void finish(Run* run, Task* task) {
  task->job.source.file.reset();
  task->state = TaskState::FINISHED;
  run->isDiskLost = run->isDiskLost || isDiskLost(*task);
  run->listener.onFinished(*run->tasks, *task);
}

// The last lines that say something, oldest first.
std::vector<std::string> lastLines(const std::string& log) {
  std::vector<std::string> lines;
  size_t end = log.find_last_not_of("\r\n ");
  while (end != std::string::npos && lines.size() < LINES_TOLD) {
    const size_t before = log.find_last_of("\r\n", end);
    const size_t start = before == std::string::npos ? 0 : before + 1;
    lines.push_back(printableName(log.substr(start, end - start + 1)));
    end = start == 0 ? std::string::npos : log.find_last_not_of("\r\n ", start - 1);
  }
  std::reverse(lines.begin(), lines.end());
  return lines;
}

void giveUp(const Run& run, const std::string& what, Task* task) {
  const std::vector<std::string> lines = lastLines(task->worker.logTail);
  std::string error = "its analysis was given up after two attempts: " + what;
  if (!lines.empty()) error += "; last message: " + lines.back();
  task->outputError = storeFailure(task->job, run.settings, error);
}

// What a worker came to that did not end by itself.
void handleFailure(Run* run, const std::string& what, Task* task) {
  removeLeftovers(task->job.folder);
  if (run->isKilling) {
    task->state = TaskState::WAITING;
    return;
  }
  const bool isRetried = task->attempts < MOST_ATTEMPTS;
  run->listener.onMessage("analysis of " + nameOf(*task) + " ended by " + what +
                          (isRetried ? ": trying once more" : ": given up"));
  if (isRetried) {
    task->state = TaskState::WAITING;
  } else {
    for (const std::string& line : lastLines(task->worker.logTail)) {
      run->listener.onMessage("  it said: " + line);
    }
    giveUp(*run, what, task);
    finish(run, task);
  }
}

void startTask(Run* run, size_t i) {
  Task& task = (*run->tasks)[i];
  ++task.attempts;
  run->lastNews[i] = Clock::now();
  task.job.source.file = fileOf(task.job.source);
  if (startWorker(task.job, run->settings, run->limits.isVerbose, &task.worker)) {
    task.state = TaskState::RUNNING;
    return;
  }
  task.outputError = std::string("cannot start a process: ") + std::strerror(errno);
  finish(run, &task);
}

void collect(Run* run, bool isStalled, size_t i) {
  Task& task = (*run->tasks)[i];
  const std::string ending = endWorker(&task.worker, run->limits.isVerbose);
  const std::string stall =
      "having no new frame for " + shortestText(run->limits.stallTimeout) + " seconds";
  const JobEnd end = task.worker.end.value_or(JobEnd{});
  task.outputError = end.outputError;
  if (!ending.empty()) {
    handleFailure(run, isStalled ? stall : ending, &task);
  } else if (!task.worker.end) {
    handleFailure(run, "leaving without a word", &task);
  } else if (end.needsOneThread && task.job.decoderThreads > 1) {
    task.job.decoderThreads = 1;
    --task.attempts;
    startTask(run, i);
  } else {
    finish(run, &task);
  }
}

// Those that wait for the first time come before those that are tried again.
void startTasks(Run* run) {
  for (int attempts = 0; attempts < MOST_ATTEMPTS; ++attempts) {
    for (size_t i = 0; i < run->tasks->size(); ++i) {
      const Task& task = (*run->tasks)[i];
      if (run->stopSignal != 0 || run->isDiskLost || running(*run->tasks) >= run->limits.jobs)
        return;
      if (task.state == TaskState::WAITING && task.attempts == attempts) startTask(run, i);
    }
  }
}

void handleSignal(Run* run, int signals) {
  signalfd_siginfo info = {};
  if (read(signals, &info, sizeof info) != sizeof info) return;
  const int signal = static_cast<int>(info.ssi_signo);
  run->isKilling = run->stopSignal != 0 || signal == SIGTERM;
  run->stopSignal = signal;
  if (!run->isKilling) {
    run->listener.onMessage("finishing " + std::to_string(running(*run->tasks)) +
                            " running file(s); press Ctrl-C again to stop at once");
  }
}

bool isStalled(const Run& run, size_t i) {
  const std::chrono::duration<double> silence = Clock::now() - run.lastNews[i];
  const VideoSource& source = (*run.tasks)[i].job.source;
  // Who reads a pipe gives it up by itself, and keeps what has come.
  const double ofPipe = source.file->isRegular ? 0.0 : run.limits.stallTimeout + 1.0;
  return !source.isStandardInput && run.limits.stallTimeout > 0.0 &&
         silence.count() > run.limits.stallTimeout + ofPipe;
}

// Where this process has been away, its workers may have been, too: a group that was suspended, a
// machine that slept. Their silence starts anew.
void forgiveAbsence(Clock::time_point lastTick, Run* run) {
  constexpr auto LONG = std::chrono::seconds(1) + std::chrono::milliseconds(TICK);
  const Clock::time_point now = Clock::now();
  if (now - lastTick < LONG) return;
  std::fill(run->lastNews.begin(), run->lastNews.end(), now);
}

void serve(Run* run, size_t i) {
  Task& task = (*run->tasks)[i];
  if (task.worker.log >= 0) readLog(&task.worker, run->limits.isVerbose);
  if (task.worker.messages >= 0 && readMessages(&task.worker)) run->lastNews[i] = Clock::now();
  const bool isOver = task.worker.messages < 0;
  const bool isStuck = !isOver && isStalled(*run, i);
  if (isOver || isStuck || run->isKilling) collect(run, isStuck, i);
}

// Waits until there is something to read, or a tick is over.
void waitForNews(const std::vector<Task>& tasks, int signals) {
  std::vector<pollfd> descriptors = {{signals, POLLIN, 0}};
  for (const Task& task : tasks) {
    if (task.state != TaskState::RUNNING) continue;
    descriptors.push_back({task.worker.messages, POLLIN, 0});
    descriptors.push_back({task.worker.log, POLLIN, 0});
  }
  poll(descriptors.data(), descriptors.size(), TICK);
}

}  // namespace

int superviseTasks(const ScanSettings& settings, const TaskLimits& limits,
                   const TaskListener& listener, std::vector<Task>* tasks) {
  sigset_t stopping;
  sigset_t before;
  sigemptyset(&stopping);
  sigaddset(&stopping, SIGINT);
  sigaddset(&stopping, SIGTERM);
  sigprocmask(SIG_BLOCK, &stopping, &before);
  const int signals = signalfd(-1, &stopping, SFD_CLOEXEC | SFD_NONBLOCK);

  Run run = {settings, limits, listener, tasks, {}, 0, false, false};
  run.lastNews.resize(tasks->size());
  Clock::time_point lastTick = Clock::now();
  for (startTasks(&run); running(*tasks) > 0; startTasks(&run)) {
    waitForNews(*tasks, signals);
    forgiveAbsence(lastTick, &run);
    lastTick = Clock::now();
    handleSignal(&run, signals);
    for (size_t i = 0; i < tasks->size(); ++i) {
      if ((*tasks)[i].state == TaskState::RUNNING) serve(&run, i);
    }
    listener.onTick(*tasks);
  }
  close(signals);
  sigprocmask(SIG_SETMASK, &before, nullptr);
  return run.stopSignal;
}
