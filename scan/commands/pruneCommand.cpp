// Removes results whose videos are gone.
#include <unistd.h>

#include <algorithm>
#include <filesystem>

#include "scan/commandLine/exitStatus.h"
#include "scan/commandLine/messages.h"
#include "scan/commands/commands.h"
#include "scan/files/names.h"
#include "scan/results/collection.h"
#include "scan/results/folderLock.h"
#include "scan/results/storedResult.h"
#include "scan/results/videoPlaces.h"

namespace fs = std::filesystem;

namespace {

struct Look {
  std::vector<std::string> gone;  // folders of results whose videos are gone
  size_t results = 0;
  size_t found = 0;  // videos that are there
  int status = DONE;
};

// What is behind a link is none of this folder's.
Look lookAt(const std::string& results) {
  Look look;
  const std::vector<std::string> folders = scanFolders(results);
  for (const std::string& folder : storedResults(results)) {
    if (fs::is_symlink(folder)) continue;
    ResultRecord record;
    const std::string error = readRecord(folder, &record, [](const Event&) {});
    ++look.results;
    if (!error.empty()) {
      complain(error);
      look.status = INPUT_PROBLEM;
    } else if (isVideoGone(record.input, folders)) {
      look.gone.push_back(folder);
    } else if (!isOfPipe(record.input)) {
      ++look.found;
    }
  }
  return look;
}

// Those tables over all results, and the index, that there are, of what is left.
int renewCollection(const std::string& results, bool isDisarmed) {
  const OutputChoice choice = {fs::exists(fs::path(results) / "summary.csv"),
                               fs::exists(fs::path(results) / "index.html"), Thumbs::NONE};
  const std::string error = writeCollection(results, choice, isDisarmed);
  if (error.empty()) return DONE;
  complain(error);
  return OUTPUT_PROBLEM;
}

// Removes what is gone, or says what it would remove.
int removeGone(const Options& options, const std::string& results, const Look& look) {
  int status = look.status;
  size_t removed = 0;
  const char* const done = options.isDryRun ? "would be removed" : "removed";
  for (const std::string& folder : look.gone) {
    const std::string error = options.isDryRun ? "" : removeResult(folder, results);
    if (!error.empty()) {
      complain(error);
      status = OUTPUT_PROBLEM;
      continue;
    }
    ++removed;
    if (!options.isQuiet) std::printf("%s: %s\n", done, printableName(folder).c_str());
  }
  if (!options.isDryRun && removed > 0)
    status = std::max(status, renewCollection(results, options.isDisarmed));
  if (!options.isQuiet) {
    std::printf("%s: %zu of %zu results %s\n", printableName(results).c_str(), removed,
                look.results, done);
  }
  return status;
}

int prune(const Options& options, const std::string& results) {
  if (!fs::is_directory(results) || fs::is_regular_file(fs::path(results) / "result.json")) {
    complain(quoted(results) + " is no folder of a scan's results");
    return INPUT_PROBLEM;
  }
  std::string error;
  const int lock = lockFolder(results, false, &error);
  if (lock < 0) {
    complain(error);
    return OUTPUT_PROBLEM;
  }
  const Look look = lookAt(results);
  int status = INPUT_PROBLEM;
  if (!look.gone.empty() && look.found == 0 && !options.isForced) {
    complain("no video of the results in " + quoted(results) +
             " is there: is a disk missing? --force removes them all");
  } else {
    status = removeGone(options, results, look);
  }
  close(lock);
  return status;
}

}  // namespace

int runPrune(const Options& options) {
  int status = DONE;
  for (const std::string& input : options.inputs) {
    // Without a slash behind it.
    const fs::path results = (fs::path(input) / "").lexically_normal().parent_path();
    status = std::max(status, prune(options, results.string()));
  }
  return finishOutput(status);
}
