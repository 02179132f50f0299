// lumascan's command line.
#ifndef LUMASCAN_OPTIONS_H
#define LUMASCAN_OPTIONS_H

#include <optional>
#include <string>
#include <vector>

#include "scan/analysis/videoAnalysis.h"
#include "scan/events/event.h"
#include "scan/processes/progressStyle.h"
#include "scan/processes/sandbox.h"
#include "scan/record/outputChoice.h"

enum class Verb { SCAN, EVENTS, REPORT, PROBE, PRUNE };

struct Options {
  Verb verb = Verb::SCAN;
  std::vector<std::string> inputs;
  std::string filesFrom;             // a file, "-" for standard input, empty for none
  std::vector<std::string> include;  // patterns of names; empty: all
  std::vector<std::string> exclude;
  VideoSource raw;  // without a path; of raw files, their size and rate
  AnalysisOptions analysis;
  std::string output;  // of a scan: the folder; of a report: the file, empty where none is given
  OutputChoice choice;
  std::string thresholds;  // a file; empty: the usual ones
  std::optional<Severity> failOn;
  int jobs = 0;                 // at once; 0: as many as the machine has cores
  double stallTimeout = 120.0;  // seconds without a new frame; 0: any time
  SandboxMode sandbox = SandboxMode::AUTO;
  int64_t memoryLimit = int64_t{4} << 30;  // bytes that a worker may write to; 0: all there are
  bool isForced = false;
  bool isDryRun = false;
  bool isDisarmed = false;   // tables have no cells that spreadsheets take for formulas
  bool isTakenOver = false;  // a folder of results that others have files in
  bool printsJson = false;
  bool isQuiet = false;
  bool isVerbose = false;
  ProgressStyle progress = ProgressStyle::AUTO;
};

// Reads the command line. A value: the process is to end with it, and what there is to say (help,
// version, a mistake) has been said.
std::optional<int> parseOptions(int argc, char** argv, Options* options);

#endif
