// Analyses all inputs that are not up to date, and writes what there is to say about them together.
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <thread>

#include "scan/commandLine/exitStatus.h"
#include "scan/commandLine/inputs.h"
#include "scan/commandLine/messages.h"
#include "scan/commands/commands.h"
#include "scan/commands/runSummary.h"
#include "scan/files/names.h"
#include "scan/processes/progress.h"
#include "scan/results/collection.h"
#include "scan/results/folderLock.h"
#include "scan/results/videoPlaces.h"

namespace fs = std::filesystem;

namespace {

size_t coresHere() {
  return std::max(1U, std::thread::hardware_concurrency());
}

Task makeTask(const Options& options, const ScanSettings& settings, const VideoSource& source) {
  Task task;
  task.job.source = source;
  // Nobody knows how long standard input will be silent.
  task.job.source.patience = source.isStandardInput ? 0.0 : options.stallTimeout;
  task.job.output = options.output;
  task.job.folder = resultFolder(options.output, source);
  std::error_code ignored;
  const uintmax_t size = source.isStandardInput ? 0 : fs::file_size(source.path, ignored);
  task.size = ignored ? 0 : static_cast<int64_t>(size);
  if (!options.isForced) {
    task.job.freshness = freshnessOf(task.job.folder, task.job.source, settings.analysis,
                                     settings.thresholds, settings.outputs);
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

// What a finished task came to, for the summary.
RunEntry entryOf(const Task& task, const Options& options, bool wasUpToDate) {
  RunEntry entry;
  entry.path = task.job.source.path;
  entry.folder = fs::path(task.job.folder).lexically_relative(options.output).string();
  entry.wasUpToDate = wasUpToDate;
  entry.attempts = task.attempts;
  entry.error = task.outputError;
  if (task.state != TaskState::FINISHED || !task.outputError.empty()) return entry;
  ResultRecord record;
  EventSummary events;
  const auto count = [&](const Event& event) { addTo(&events, event); };
  if (!readRecord(task.job.folder, &record, count).empty()) return entry;
  entry.status = record.status;
  entry.judgement = record.judgement;
  entry.error = record.error;
  if (record.analysis) entry.frames = record.analysis->frames.value_or(0);
  entry.events = events;
  return entry;
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
int runTasks(const Options& options, const ScanSettings& settings, std::vector<Task>* tasks) {
  const size_t jobs = options.jobs > 0 ? static_cast<size_t>(options.jobs) : coresHere();
  shareCores(jobs, tasks);
  Progress progress = startProgress(options.progress, options.isQuiet);
  const bool isTelling = !options.isQuiet && !options.printsJson;
  int64_t frames = 0;
  TaskListener listener;
  listener.onFinished = [&](const std::vector<Task>&, const Task& task) {
    clearProgress(&progress);
    if (!task.outputError.empty()) complain(task.outputError);
    const RunEntry entry = entryOf(task, options, false);
    frames += entry.frames;
    if (!entry.error.empty() && task.outputError.empty()) {
      complain(quoted(entry.path) + ": " + entry.error);
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
  beginProgress(*tasks, &progress);
  const int stopSignal =
      superviseTasks(settings, {jobs, options.stallTimeout, options.isVerbose}, listener, tasks);
  endProgress(*tasks, frames, &progress);
  return stopSignal;
}

// Writes the tables over all results and run.json, whose text becomes `run`. False, after messages
// and with the exit status for it, when something could not be written.
bool writeSummaries(const Options& options, const std::vector<RunEntry>& entries,
                    std::chrono::system_clock::time_point start, int* status, std::string* run) {
  const auto isGood = [&](const std::string& error) {
    if (error.empty()) return true;
    complain(error);
    *status = std::max<int>(*status, OUTPUT_PROBLEM);
    return false;
  };
  const bool hasTables =
      isGood(writeCollection(options.output, options.choice, options.isDisarmed));
  const std::vector<std::string> folders = scanFolders(options.output);
  *run = runText(entries, folders, start, *status);
  const std::string path = (fs::path(options.output) / "run.json").string();
  const bool hasRun = isGood(writeOutput(path, [&](FILE* out) { writeText(*run, out); }));
  if (!hasRun) *run = runText(entries, folders, start, *status);
  return hasTables && hasRun;
}

}  // namespace

int runScan(const Options& options) {
  // A scan goes on when nobody reads what it prints any more.
  std::signal(SIGPIPE, SIG_IGN);
  const auto start = std::chrono::system_clock::now();
  ScanSettings settings = {
      options.analysis, DEFAULT_THRESHOLDS, options.choice, {}, options.memoryLimit};
  if (!chooseThresholds(options, &settings.thresholds)) return USAGE;
  std::vector<std::string> problems;
  const std::vector<VideoSource> sources = findInputs(options, &problems);
  for (const std::string& problem : problems) complain(problem);
  std::vector<Task> tasks;
  tasks.reserve(sources.size());
  for (const VideoSource& source : sources) tasks.push_back(makeTask(options, settings, source));
  if (options.isDryRun)
    return finishOutput(std::max<int>(printPlan(tasks), problems.empty() ? DONE : INPUT_PROBLEM));
  if (tasks.empty()) return INPUT_PROBLEM;
  if (!chooseSandbox(options, &settings.sandbox)) return OUTPUT_PROBLEM;

  std::string lockError;
  const int lock = lockFolder(options.output, options.isTakenOver, &lockError);
  if (lock < 0) {
    complain(lockError);
    return OUTPUT_PROBLEM;
  }
  removeLeftovers(options.output);
  const int stopSignal = runTasks(options, settings, &tasks);

  std::vector<RunEntry> entries;
  entries.reserve(tasks.size());
  for (const Task& task : tasks) {
    const bool wasUpToDate = task.job.freshness == Freshness::COMPLETE;
    entries.push_back(entryOf(task, options, wasUpToDate));
  }
  int status = statusOf(entries, options.failOn, !problems.empty(), stopSignal);
  std::string run;
  const bool isWritten = writeSummaries(options, entries, start, &status, &run);
  if (options.printsJson) writeText(run, stdout);
  if (stopSignal != 0) complain("stopped; the same command goes on from here");
  if (stopSignal == 0 && isWritten && !options.isQuiet && !options.printsJson) {
    const char* const page = options.choice.hasHtml ? "index.html" : "run.json";
    std::printf("Results: %s\n", printableName((fs::path(options.output) / page).string()).c_str());
  }
  close(lock);
  return finishOutput(status);
}
