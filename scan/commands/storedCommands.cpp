// Commands on results that are stored: nothing is decoded.
#include <filesystem>

#include "scan/commandLine/exitStatus.h"
#include "scan/commandLine/messages.h"
#include "scan/commands/commands.h"
#include "scan/events/eventList.h"
#include "scan/files/json.h"
#include "scan/files/names.h"
#include "scan/report/report.h"
#include "scan/results/collection.h"
#include "scan/results/storedResult.h"

namespace fs = std::filesystem;

namespace {

// The results that the inputs name; one that cannot be read becomes a message and the status.
std::vector<std::string> namedResults(const Options& options, int* status) {
  std::vector<std::string> folders;
  for (const std::string& input : options.inputs) {
    const std::vector<std::string> found = storedResults(input);
    if (found.empty()) {
      complain("there is no result in " + quoted(input));
      *status = INPUT_PROBLEM;
    }
    folders.insert(folders.end(), found.begin(), found.end());
  }
  return folders;
}

// Reads a stored result; one that cannot be read becomes a message and the status.
bool readStored(const std::string& folder, VideoResult* result, int* status) {
  const std::string error = readResult(folder, result);
  if (error.empty()) return true;
  complain(error);
  *status = INPUT_PROBLEM;
  return false;
}

}  // namespace

int runEvents(const Options& options) {
  Thresholds thresholds;
  if (!chooseThresholds(options, &thresholds)) return USAGE;
  int status = DONE;
  Json all = Json::array();
  const bool printsCsv = !options.printsJson && !options.isQuiet;
  if (printsCsv) std::printf("path,%s\r\n", EVENT_COLUMNS);
  for (const std::string& folder : namedResults(options, &status)) {
    VideoResult result;
    if (!readStored(folder, &result, &status)) continue;
    judgeResult(thresholds, &result);
    const ResultRecord& record = result.record;
    const std::string& path = record.input.path;
    for (const Event& event : result.events) {
      const bool isFinding = options.failOn.has_value() && event.severity >= *options.failOn;
      if (isFinding) status = std::max<int>(status, FOUND);
      if (!printsCsv) continue;
      std::printf("%s,%s\r\n", csvField(path, options.isDisarmed).c_str(),
                  eventColumns(event).c_str());
    }
    all.push_back({{"path", path},
                   {"status", statusName(record.status)},
                   {"verdict", verdictName(record.judgement.verdict)},
                   {"reasons", record.judgement.reasons},
                   {"events", eventsJson(result.events)}});
  }
  if (options.printsJson && !options.isQuiet) std::fputs(jsonText(all).c_str(), stdout);
  return finishOutput(status);
}

int runReport(const Options& options) {
  Thresholds thresholds;
  if (!chooseThresholds(options, &thresholds)) return USAGE;
  int status = DONE;
  std::vector<VideoResult> results;
  const std::vector<std::string> folders = namedResults(options, &status);
  for (const std::string& folder : folders) {
    VideoResult result;
    if (!readStored(folder, &result, &status)) continue;
    if (!options.thresholds.empty()) judgeResult(thresholds, &result);
    result.thumbnails = readThumbnails(folder);
    results.push_back(std::move(result));
  }
  if (results.empty()) return INPUT_PROBLEM;
  std::vector<const VideoResult*> inputs;
  inputs.reserve(results.size());
  for (const VideoResult& result : results) inputs.push_back(&result);
  if (options.output == "-") {
    writeReport(inputs, stdout);
    return finishOutput(status);
  }
  std::string path = options.output;
  if (path.empty()) {
    path = folders.size() == 1 ? (fs::path(folders[0]) / "report.html").string()
                               : "lumascan-report.html";
  }
  const std::string error = writeOutput(path, [&](FILE* out) { writeReport(inputs, out); });
  if (!error.empty()) {
    complain(error);
    return OUTPUT_PROBLEM;
  }
  if (!options.isQuiet) std::printf("%s\n", printableName(path).c_str());
  return finishOutput(status);
}
