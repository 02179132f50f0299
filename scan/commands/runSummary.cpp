#include "scan/commands/runSummary.h"

#include <fmt/core.h>
#include <algorithm>
#include <csignal>
#include <cstdio>
#include <ctime>

#include "scan/commandLine/exitStatus.h"
#include "scan/files/json.h"
#include "scan/files/names.h"
#include "scan/version.h"

namespace {

int64_t countOf(const RunEntry& entry, Severity severity) {
  return entry.events.counts.at(static_cast<size_t>(severity));
}

Json entryJson(const RunEntry& entry) {
  Json json;
  json["path"] = entry.path;
  json["folder"] = entry.folder;
  json["status"] = entry.status ? statusName(*entry.status) : "unfinished";
  json["verdict"] = verdictName(entry.judgement.verdict);
  json["error"] = textOrNull(entry.error);
  json["reasons"] = entry.judgement.reasons;
  json["frames"] = entry.frames;
  for (const Severity severity : {Severity::FAIL, Severity::WARN, Severity::INFO}) {
    json["events"][severityName(severity)] = countOf(entry, severity);
  }
  json["up_to_date"] = entry.wasUpToDate;
  json["attempts"] = entry.attempts;
  return json;
}

std::string utcText(std::chrono::system_clock::time_point time) {
  const std::time_t seconds = std::chrono::system_clock::to_time_t(time);
  std::tm parts = {};
  gmtime_r(&seconds, &parts);
  char text[32];
  std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", &parts);
  return text;
}

bool isFinding(const RunEntry& entry, Severity threshold) {
  const auto has = [&](Severity severity) {
    return severity >= threshold && countOf(entry, severity) != 0;
  };
  return has(Severity::INFO) || has(Severity::WARN) || has(Severity::FAIL);
}

}  // namespace

void printVerdict(const RunEntry& entry) {
  std::string line =
      fmt::format("{:<11}{}", verdictName(entry.judgement.verdict), printableName(entry.path));
  const char* separator = ": ";
  for (const std::string& reason : entry.judgement.reasons) {
    line += separator + printableName(reason);
    separator = "; ";
  }
  if (entry.wasUpToDate) line += " (up to date)";
  std::printf("%s\n", line.c_str());
  std::fflush(stdout);
}

std::string runText(const std::vector<RunEntry>& entries, const std::vector<std::string>& folders,
                    std::chrono::system_clock::time_point start, int status) {
  Json files = Json::array();
  Json verdicts;
  for (const Verdict verdict :
       {Verdict::PASS, Verdict::ATTENTION, Verdict::FAIL, Verdict::INCOMPLETE}) {
    verdicts[verdictName(verdict)] =
        std::count_if(entries.begin(), entries.end(),
                      [&](const RunEntry& entry) { return entry.judgement.verdict == verdict; });
  }
  for (const RunEntry& entry : entries) files.push_back(entryJson(entry));
  const std::chrono::duration<double> elapsed = std::chrono::system_clock::now() - start;
  Json run;
  run["schema_version"] = "1.0";
  run["tool"] = {{"name", "lumascan"}, {"version", LUMASCAN_VERSION}};
  run["started"] = utcText(start);
  run["elapsed_s"] = elapsed.count();
  run["exit_status"] = status;
  run["folders"] = Json::array();
  for (const std::string& folder : folders) run["folders"].push_back(uriPath(folder));
  run["verdicts"] = verdicts;
  run["files"] = files;
  return jsonText(run);
}

int statusOf(const std::vector<RunEntry>& entries, std::optional<Severity> failOn, bool hasProblem,
             int stopSignal) {
  if (stopSignal == SIGINT) return INTERRUPTED;
  if (stopSignal == SIGTERM) return TERMINATED;
  int status = hasProblem ? INPUT_PROBLEM : DONE;
  for (const RunEntry& entry : entries) {
    if (!entry.status) {
      status = OUTPUT_PROBLEM;
    } else if (*entry.status != Status::COMPLETE) {
      status = std::max<int>(status, INPUT_PROBLEM);
    }
    if (failOn.has_value() && isFinding(entry, *failOn)) status = std::max<int>(status, FOUND);
  }
  return status;
}
