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
  std::string stage;    // and what is done to it
};

State stateOf(const std::vector<Task>& tasks) {
  State state = {shareDone(tasks), 0, 0, "", ""};
  for (const Task& task : tasks) {
    if (task.state == TaskState::FINISHED) ++state.finished;
    if (task.state != TaskState::RUNNING) continue;
    state.frames += task.worker.heartbeat.frames;
    if (!state.running.empty()) continue;
    state.running = printableName(task.job.source.path);
    state.stage = task.worker.heartbeat.stage;
  }
  return state;
}

std::string minutes(double seconds) {
  const auto whole = static_cast<int64_t>(seconds);
  return whole >= 3600 ? fmt::format("{}:{:02}:{:02}", whole / 3600, whole / 60 % 60, whole % 60)
                       : fmt::format("{}:{:02}", whole / 60, whole % 60);
}

double elapsedOf(const Progress& progress) {
  return std::chrono::duration<double>(Clock::now() - progress.start).count();
}

// Time left at the pace so far; empty while nothing can be said.
std::string timeLeft(const State& state, const Progress& progress) {
  constexpr double ENOUGH_TO_SAY = 0.01;
  const double done = state.share - progress.shareBefore;
  if (done < ENOUGH_TO_SAY) return "";
  return minutes(elapsedOf(progress) * (1.0 - state.share) / done) + " left, ";
}

std::string summary(const State& state, size_t tasks) {
  return fmt::format("{:3} %  {} of {} files, ", static_cast<int>(state.share * 100.0),
                     state.finished, tasks);
}

std::string currentSummary(const State& state, size_t tasks, const Progress& progress) {
  return fmt::format("{}{}{} frames", summary(state, tasks), timeLeft(state, progress),
                     state.frames);
}

size_t terminalColumns() {
  winsize size = {};
  const bool isKnown = ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
  return isKnown ? size.ws_col : USUAL_COLUMNS;
}

std::string bar(const State& state) {
  const auto filled = static_cast<size_t>(state.share * static_cast<double>(BAR_COLUMNS));
  return fmt::format("[{:.<{}}] ", std::string(filled, '#'), BAR_COLUMNS);
}

void printBar(const State& state, const std::string& text) {
  std::string line = bar(state) + text;
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
  json["stage"] = state.stage;
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
                        : isRunning                       ? task.worker.heartbeat.position
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
  progress->hasSpoken = true;
  const State state = stateOf(tasks);
  const std::string text = currentSummary(state, tasks.size(), *progress);
  switch (progress->style) {
    case ProgressStyle::BAR:
      printBar(state, text);
      progress->hasLine = true;
      return;
    case ProgressStyle::JSON:
      printJson(state, tasks.size(), elapsedOf(*progress));
      return;
    default:
      std::fprintf(stderr, "lumascan: %s  %s\n", text.c_str(), state.running.c_str());
  }
}

void beginProgress(const std::vector<Task>& tasks, Progress* progress) {
  progress->shareBefore = shareDone(tasks);
  if (progress->style == ProgressStyle::JSON)
    printJson(stateOf(tasks), tasks.size(), elapsedOf(*progress));
}

void endProgress(const std::vector<Task>& tasks, int64_t frames, Progress* progress) {
  clearProgress(progress);
  const State state = stateOf(tasks);
  if (progress->style == ProgressStyle::JSON) {
    printJson(state, tasks.size(), elapsedOf(*progress));
  } else if (progress->hasSpoken) {
    const bool isBar = progress->style == ProgressStyle::BAR;
    std::fprintf(stderr, "%s%s%lld frames in %s\n",
                 isBar ? bar(state).c_str() : "lumascan: ", summary(state, tasks.size()).c_str(),
                 static_cast<long long>(frames), minutes(elapsedOf(*progress)).c_str());
  }
}

void clearProgress(Progress* progress) {
  if (progress->hasLine) std::fputs("\r\x1b[K", stderr);
  progress->hasLine = false;
}
