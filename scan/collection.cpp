#include "scan/collection.h"

#include <algorithm>
#include <array>
#include <filesystem>

#include "scan/eventList.h"
#include "scan/indexPage.h"
#include "scan/names.h"
#include "scan/outputFile.h"
#include "scan/storedResult.h"

namespace fs = std::filesystem;

namespace {

// A value of JSON in a table: texts as they are, null empty.
std::string cell(const Json& value) {
  if (value.is_string()) return csvField(value.get<std::string>());
  if (value.is_number_float()) return shortestText(value.get<double>());
  if (value.is_boolean()) return value.get<bool>() ? "1" : "0";
  return value.is_number() ? value.dump() : "";
}

void put(const std::string& line, FILE* out) {
  std::fwrite(line.data(), 1, line.size(), out);
  std::fputs("\r\n", out);
}

int64_t eventsOf(const Json& result, const char* severity) {
  const Json& events = result["events"];
  return std::count_if(events.begin(), events.end(),
                       [&](const Json& event) { return event["severity"] == severity; });
}

Json durationOf(const Json& analysis) {
  if (!analysis.is_object() || !analysis["start_s"].is_number() || !analysis["end_s"].is_number()) {
    return nullptr;
  }
  return wholeNanoseconds(analysis["end_s"].get<double>() - analysis["start_s"].get<double>());
}

void writeSummary(const std::vector<IndexEntry>& entries, FILE* out) {
  std::string header =
      "path,status,verdict,frames,duration_s,fail_events,warn_events,info_events,corrupt_frames,"
      "decode_errors,truncated,error";
  for (const IndicatorInfo& indicator : INDICATOR_TABLE) {
    header += std::string(",") + indicator.name + "_mean";
  }
  put(header, out);
  for (const IndexEntry& entry : entries) {
    const Json& result = entry.result;
    const Json& analysis = result["analysis"];
    const auto fact = [&](const char* name) {
      return analysis.is_object() ? cell(analysis[name]) : "";
    };
    std::string line = cell(result["input"]["path"]) + ',' + cell(result["status"]) + ',' +
                       cell(result["verdict"]) + ',' + fact("frames") + ',' +
                       cell(durationOf(analysis));
    for (const char* const severity : {"fail", "warn", "info"}) {
      line += ',' + std::to_string(eventsOf(result, severity));
    }
    line += ',' + fact("corrupt_frames") + ',' + fact("decode_errors") + ',' +
            cell(result["truncated"]) + ',' + cell(result["error"]);
    for (const IndicatorInfo& indicator : INDICATOR_TABLE) {
      const Json& facts = result["indicators"];
      line += ',' + (facts.contains(indicator.name) ? cell(facts[indicator.name]["mean"]) : "");
    }
    put(line, out);
  }
}

void writeAllEvents(const std::vector<IndexEntry>& entries, FILE* out) {
  put("path," + std::string(EVENT_COLUMNS), out);
  for (const IndexEntry& entry : entries) {
    for (const Json& event : entry.result["events"]) {
      std::string line = cell(entry.result["input"]["path"]);
      for (const auto& member : event.items()) line += ',' + cell(member.value());
      put(line, out);
    }
  }
}

}  // namespace

std::vector<std::string> storedResults(const std::string& folder) {
  std::vector<std::string> folders;
  std::error_code error;
  if (fs::exists(fs::path(folder) / "result.json", error)) return {folder};
  for (fs::recursive_directory_iterator walk(folder, error), end; !error && walk != end;
       walk.increment(error)) {
    std::error_code ignored;
    if (!fs::exists(walk->path() / "result.json", ignored)) continue;
    folders.push_back(walk->path().string());
    walk.disable_recursion_pending();
  }
  std::sort(folders.begin(), folders.end());
  return folders;
}

std::string writeCollection(const std::string& folder, const OutputChoice& choice) {
  std::vector<IndexEntry> entries;
  for (const std::string& each : storedResults(folder)) {
    IndexEntry entry;
    if (!readResultJson(each, &entry.result).empty()) continue;
    entry.folderUri = uriPath(fs::path(each).lexically_relative(folder).string());
    entries.push_back(std::move(entry));
  }
  const fs::path to = folder;
  std::string error;
  const auto step = [&](bool isChosen, const char* name, const std::function<void(FILE*)>& write) {
    if (isChosen && error.empty()) error = writeOutput((to / name).string(), write);
  };
  step(choice.hasCsv, "summary.csv", [&](FILE* out) { writeSummary(entries, out); });
  step(choice.hasCsv, "events.csv", [&](FILE* out) { writeAllEvents(entries, out); });
  step(choice.hasHtml, "index.html", [&](FILE* out) {
    const std::string page = renderIndex(entries);
    std::fwrite(page.data(), 1, page.size(), out);
  });
  return error;
}
