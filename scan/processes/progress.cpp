#include "scan/processes/progress.h"

#include <fmt/core.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>

#include "scan/files/json.h"
#include "scan/files/names.h"

namespace {

using Clock = std::chrono::steady_clock;

constexpr size_t USUAL_COLUMNS = 80;
constexpr size_t BAR_COLUMNS = 20;

// A pipe has no size; every file weighs something.
double weightOf(const Task& task) {
  return static_cast<double>(std::max(int64_t{1}, task.size));
}

struct State {
  double share;
  size_t finished;
  int64_t frames;       // of running files
  std::string running;  // the name of the first of them
};

State stateOf(const std::vector<Task>& tasks) {
  State state = {shareDone(tasks), 0, 0, ""};
  for (const Task& task : tasks) {
    if (task.state == TaskState::FINISHED) ++state.finished;
    if (task.state != TaskState::RUNNING) continue;
    state.frames += task.worker.frames;
    if (state.running.empty()) state.running = printableName(task.job.source.path);
  }
  return state;
}

std::string minutes(double seconds) {
  const auto whole = static_cast<int64_t>(seconds);
  return whole >= 3600 ? fmt::format("{}:{:02}:{:02}", whole / 3600, whole / 60 % 60, whole % 60)
                       : fmt::format("{}:{:02}", whole / 60, whole % 60);
}

// Time left at the pace so far; empty while nothing can be said.
std::string timeLeft(const State& state, double elapsed) {
  constexpr double ENOUGH_TO_SAY = 0.01;
  if (state.share < ENOUGH_TO_SAY) return "";
  return minutes(elapsed * (1.0 - state.share) / state.share) + " left, ";
}

std::string summary(const State& state, size_t tasks, double elapsed) {
  return fmt::format("{:3} %  {} of {} files, {}{} frames", static_cast<int>(state.share * 100.0),
                     state.finished, tasks, timeLeft(state, elapsed), state.frames);
}

size_t terminalColumns() {
  winsize size = {};
  const bool isKnown = ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
  return isKnown ? size.ws_col : USUAL_COLUMNS;
}

void printBar(const State& state, size_t tasks, double elapsed) {
  const auto filled = static_cast<size_t>(state.share * static_cast<double>(BAR_COLUMNS));
  std::string line = fmt::format("[{:.<{}}] {}", std::string(filled, '#'), BAR_COLUMNS,
                                 summary(state, tasks, elapsed));
  const size_t columns = terminalColumns();
  if (line.size() + state.running.size() + 3 <= columns) line += "  " + state.running;
  std::fprintf(stderr, "\r\x1b[K%s", line.substr(0, columns - 1).c_str());
}

void printJson(const State& state, size_t tasks, double elapsed) {
  Json json;
  json["progress"] = state.share;
  json["finished"] = state.finished;
  json["files"] = tasks;
  json["frames"] = state.frames;
  json["elapsed_s"] = elapsed;
  json["running"] = state.running;
  std::fprintf(stderr, "%s\n", shortJsonText(json).c_str());
}

std::chrono::milliseconds intervalOf(ProgressStyle style) {
  if (style == ProgressStyle::BAR) return std::chrono::milliseconds(200);
  if (style == ProgressStyle::JSON) return std::chrono::milliseconds(1000);
  return std::chrono::milliseconds(10000);
}

}  // namespace

Progress startProgress(ProgressStyle style, bool isQuiet) {
  Progress progress;
  progress.style = style;
  if (progress.style == ProgressStyle::AUTO) {
    progress.style = isatty(STDERR_FILENO) != 0 ? ProgressStyle::BAR : ProgressStyle::PLAIN;
  }
  if (isQuiet) progress.style = ProgressStyle::NONE;
  progress.start = Clock::now();
  progress.lastShown = progress.start;
  return progress;
}

double shareDone(const std::vector<Task>& tasks) {
  double done = 0.0;
  double all = 0.0;
  for (const Task& task : tasks) {
    const bool isRunning = task.state == TaskState::RUNNING;
    const double part = task.state == TaskState::FINISHED ? 1.0
                        : isRunning                       ? task.worker.position
                                                          : 0.0;
    done += weightOf(task) * part;
    all += weightOf(task);
  }
  return all > 0.0 ? done / all : 1.0;
}

void showProgress(const std::vector<Task>& tasks, Progress* progress) {
  const Clock::time_point now = Clock::now();
  if (progress->style == ProgressStyle::NONE) return;
  if (now - progress->lastShown < intervalOf(progress->style)) return;
  progress->lastShown = now;
  const double elapsed = std::chrono::duration<double>(now - progress->start).count();
  const State state = stateOf(tasks);
  switch (progress->style) {
    case ProgressStyle::BAR:
      printBar(state, tasks.size(), elapsed);
      progress->hasLine = true;
      return;
    case ProgressStyle::JSON:
      printJson(state, tasks.size(), elapsed);
      return;
    default:
      std::fprintf(stderr, "lumascan: %s  %s\n", summary(state, tasks.size(), elapsed).c_str(),
                   state.running.c_str());
  }
}

void recordProgress(const std::vector<Task>& tasks, const Progress& progress) {
  if (progress.style != ProgressStyle::JSON) return;
  const double elapsed = std::chrono::duration<double>(Clock::now() - progress.start).count();
  printJson(stateOf(tasks), tasks.size(), elapsed);
}

void clearProgress(Progress* progress) {
  if (progress->hasLine) std::fputs("\r\x1b[K", stderr);
  progress->hasLine = false;
}
