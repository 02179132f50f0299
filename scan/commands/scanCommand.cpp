// Analyses all inputs that are not up to date, and writes what there is to say about them together.
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <thread>

#include "scan/commandLine/exitStatus.h"
#include "scan/commandLine/inputs.h"
#include "scan/commandLine/messages.h"
#include "scan/commands/commands.h"
#include "scan/events/eventList.h"
#include "scan/files/names.h"
#include "scan/processes/progress.h"
#include "scan/results/collection.h"
#include "scan/version.h"

namespace fs = std::filesystem;

namespace {

size_t coresHere() {
  return std::max(1U, std::thread::hardware_concurrency());
}

Task makeTask(const Options& options, const Thresholds& thresholds, const std::string& path) {
  Task task;
  task.job.source = options.raw;
  task.job.source.path = path;
  task.job.folder = resultFolder(options.output, path);
  std::error_code ignored;
  const uintmax_t size = path == "-" ? 0 : fs::file_size(path, ignored);
  task.size = ignored ? 0 : static_cast<int64_t>(size);
  if (!options.isForced) {
    task.job.freshness =
        freshnessOf(task.job.folder, task.job.source, options.analysis, thresholds, options.choice);
  }
  if (task.job.freshness == Freshness::COMPLETE) task.state = TaskState::FINISHED;
  return task;
}

// With fewer files than cores, each gets several of them.
void shareCores(size_t jobs, std::vector<Task>* tasks) {
  const auto waiting =
      static_cast<size_t>(std::count_if(tasks->begin(), tasks->end(), [](const Task& task) {
        return task.state == TaskState::WAITING;
      }));
  if (waiting == 0 || waiting >= jobs) return;
  for (Task& task : *tasks) {
    task.job.isThreaded = true;
    task.job.decoderThreads = static_cast<int>(jobs / waiting);
  }
}

// Makes the folder, and keeps other scans out of it while the process lives. Negative, after a
// message, when it cannot be had.
int lockFolder(const std::string& folder) {
  std::error_code error;
  fs::create_directories(folder, error);
  if (error) {
    complain("cannot create " + quoted(folder) + ": " + error.message());
    return -1;
  }
  const int descriptor = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (descriptor < 0) {
    complain("cannot open " + quoted(folder) + ": " + std::strerror(errno));
  } else if (flock(descriptor, LOCK_EX | LOCK_NB) != 0) {
    complain("another scan is writing to " + quoted(folder));
    close(descriptor);
    return -1;
  }
  return descriptor;
}

// What a finished task came to, for the summary.
Json entryOf(const Task& task, const Options& options, bool wasUpToDate) {
  Json result;
  EventSummary events;
  const auto count = [&](const Event& event) { addTo(&events, event); };
  const bool isStored = readResultJson(task.job.folder, &result, count).empty();
  const bool isFinished = task.state == TaskState::FINISHED && task.outputError.empty() && isStored;
  Json entry;
  entry["path"] = task.job.source.path;
  entry["folder"] = fs::path(task.job.folder).lexically_relative(options.output).string();
  entry["status"] = isFinished ? result["status"] : Json("unfinished");
  entry["verdict"] = isFinished ? result["verdict"] : Json("incomplete");
  entry["error"] = isFinished ? result["error"] : textOrNull(task.outputError);
  entry["reasons"] = isFinished ? result["reasons"] : Json::array();
  entry["frames"] =
      isFinished && result["analysis"].is_object() ? result["analysis"]["frames"] : Json(0);
  if (!isFinished) events = {};
  for (const Severity severity : {Severity::FAIL, Severity::WARN, Severity::INFO}) {
    entry["events"][severityName(severity)] = events.counts.at(static_cast<size_t>(severity));
  }
  entry["up_to_date"] = wasUpToDate;
  entry["attempts"] = task.attempts;
  return entry;
}

void printVerdict(const Json& entry) {
  std::string line = entry["verdict"].get<std::string>();
  line.resize(std::max(line.size(), sizeof "incomplete"), ' ');
  line += printableName(entry["path"].get<std::string>());
  for (const Json& reason : entry["reasons"]) {
    line += (&reason == &entry["reasons"].front() ? ": " : "; ") + reason.get<std::string>();
  }
  if (entry["up_to_date"].get<bool>()) line += " (up to date)";
  std::printf("%s\n", line.c_str());
  std::fflush(stdout);
}

std::string utcText(std::chrono::system_clock::time_point time) {
  const std::time_t seconds = std::chrono::system_clock::to_time_t(time);
  std::tm parts = {};
  gmtime_r(&seconds, &parts);
  char text[32];
  std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", &parts);
  return text;
}

Json runJson(const Json& entries, std::chrono::system_clock::time_point start, int status) {
  Json totals = {{"pass", 0}, {"attention", 0}, {"fail", 0}, {"incomplete", 0}};
  for (const Json& entry : entries) {
    Json& total = totals[entry["verdict"].get<std::string>()];
    total = total.get<int64_t>() + 1;
  }
  const std::chrono::duration<double> elapsed = std::chrono::system_clock::now() - start;
  Json run;
  run["schema_version"] = "1.0";
  run["tool"] = {{"name", "lumascan"}, {"version", LUMASCAN_VERSION}};
  run["started"] = utcText(start);
  run["elapsed_s"] = elapsed.count();
  run["exit_status"] = status;
  run["verdicts"] = totals;
  run["files"] = entries;
  return run;
}

bool isFinding(const Json& events, Severity threshold) {
  const auto has = [&](Severity severity) {
    return severity >= threshold && events[severityName(severity)] != 0;
  };
  return has(Severity::INFO) || has(Severity::WARN) || has(Severity::FAIL);
}

int statusOf(const Options& options, const Json& entries, bool hasProblem, int stopSignal) {
  int status = hasProblem ? INPUT_PROBLEM : DONE;
  for (const Json& entry : entries) {
    if (entry["status"] == "unfinished") {
      status = std::max<int>(status, stopSignal == 0 ? OUTPUT_PROBLEM : DONE);
    } else if (entry["status"] != "complete") {
      status = std::max<int>(status, INPUT_PROBLEM);
    }
    const bool isFound = options.failOn.has_value() && isFinding(entry["events"], *options.failOn);
    if (isFound) status = std::max<int>(status, FOUND);
  }
  if (stopSignal == SIGINT) return INTERRUPTED;
  return stopSignal == SIGTERM ? TERMINATED : status;
}

int printPlan(const std::vector<Task>& tasks) {
  for (const Task& task : tasks) {
    const char* const plan = task.job.freshness == Freshness::COMPLETE ? "up to date"
                             : task.job.freshness == Freshness::JUDGE  ? "judge"
                                                                       : "analyse";
    std::printf("%-10s  %s -> %s\n", plan, printableName(task.job.source.path).c_str(),
                printableName(task.job.folder).c_str());
  }
  return DONE;
}

// Runs the tasks and says what each came to as soon as it is done.
int runTasks(const Options& options, const Thresholds& thresholds, std::vector<Task>* tasks) {
  const size_t jobs = options.jobs > 0 ? static_cast<size_t>(options.jobs) : coresHere();
  shareCores(jobs, tasks);
  Progress progress = startProgress(options);
  const bool isTelling = !options.isQuiet && !options.printsJson;
  TaskListener listener;
  listener.onFinished = [&](const std::vector<Task>&, const Task& task) {
    clearProgress(&progress);
    if (!task.outputError.empty()) complain(task.outputError);
    const Json entry = entryOf(task, options, false);
    if (!entry["error"].is_null() && task.outputError.empty()) {
      complain(quoted(task.job.source.path) + ": " + entry["error"].get<std::string>());
    }
    if (isTelling && task.outputError.empty()) printVerdict(entry);
  };
  listener.onTick = [&](const std::vector<Task>& all) { showProgress(all, &progress); };
  listener.onMessage = [&](const std::string& text) {
    clearProgress(&progress);
    complain(text);
  };
  for (const Task& task : *tasks) {
    if (task.state == TaskState::FINISHED && isTelling) printVerdict(entryOf(task, options, true));
  }
  const int stopSignal = superviseTasks(options, thresholds, jobs, listener, tasks);
  clearProgress(&progress);
  return stopSignal;
}

}  // namespace

int runScan(const Options& options) {
  // A scan goes on when nobody reads what it prints any more.
  std::signal(SIGPIPE, SIG_IGN);
  const auto start = std::chrono::system_clock::now();
  Thresholds thresholds;
  if (!chooseThresholds(options, &thresholds)) return USAGE;
  std::vector<std::string> problems;
  const std::vector<std::string> paths = findInputs(options, &problems);
  for (const std::string& problem : problems) complain(problem);
  std::vector<Task> tasks;
  tasks.reserve(paths.size());
  for (const std::string& path : paths) tasks.push_back(makeTask(options, thresholds, path));
  if (options.isDryRun)
    return std::max<int>(printPlan(tasks), problems.empty() ? DONE : INPUT_PROBLEM);
  if (tasks.empty()) return INPUT_PROBLEM;

  const int lock = lockFolder(options.output);
  if (lock < 0) return OUTPUT_PROBLEM;
  removeLeftovers(options.output);
  const int stopSignal = runTasks(options, thresholds, &tasks);

  Json entries = Json::array();
  for (const Task& task : tasks) {
    const bool wasUpToDate = task.job.freshness == Freshness::COMPLETE;
    entries.push_back(entryOf(task, options, wasUpToDate));
  }
  int status = statusOf(options, entries, !problems.empty(), stopSignal);
  const std::string run = jsonText(runJson(entries, start, status));
  std::string error = writeCollection(options.output, options.choice);
  if (error.empty()) {
    error = writeOutput((fs::path(options.output) / "run.json").string(),
                        [&](FILE* out) { std::fwrite(run.data(), 1, run.size(), out); });
  }
  if (!error.empty()) {
    complain(error);
    status = std::max<int>(status, OUTPUT_PROBLEM);
  }
  if (options.printsJson) std::fwrite(run.data(), 1, run.size(), stdout);
  if (stopSignal != 0) complain("stopped; the same command goes on from here");
  if (stopSignal == 0 && error.empty() && !options.isQuiet && !options.printsJson) {
    const char* const page = options.choice.hasHtml ? "index.html" : "run.json";
    std::printf("Results: %s\n", printableName((fs::path(options.output) / page).string()).c_str());
  }
  close(lock);
  return finishOutput(status);
}
