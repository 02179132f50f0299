#include "scan/results/collection.h"

#include <algorithm>
#include <array>
#include <filesystem>

#include "scan/events/eventList.h"
#include "scan/files/names.h"
#include "scan/files/outputFile.h"
#include "scan/numbers/decimals.h"
#include "scan/report/indexPage.h"
#include "scan/report/resultFacts.h"
#include "scan/results/storedResult.h"

namespace fs = std::filesystem;

namespace {

// A value of JSON in a table: texts as they are, null empty.
std::string cell(const Json& value) {
  if (value.is_string()) return csvField(value.get<std::string>());
  if (value.is_number_float()) return shortestText(value.get<double>());
  if (value.is_boolean()) return value.get<bool>() ? "1" : "0";
  return value.is_number() ? value.dump() : "";
}

void writeLine(const std::string& line, FILE* out) {
  writeText(line + "\r\n", out);
}

Json durationOf(const Json& analysis) {
  return numberOrNull(
      wholeNanoseconds(numberOf(analysis, "end_s") - numberOf(analysis, "start_s")));
}

void writeSummary(const std::vector<IndexEntry>& entries, FILE* out) {
  std::string header =
      "path,status,verdict,frames,duration_s,fail_events,warn_events,info_events,corrupt_frames,"
      "decode_errors,truncated,error";
  for (const IndicatorInfo& indicator : INDICATOR_TABLE) {
    header += std::string(",") + indicator.name + "_mean";
  }
  writeLine(header, out);
  for (const IndexEntry& entry : entries) {
    const Json& result = entry.result;
    const Json& analysis = memberOf(result, "analysis");
    const auto fact = [&](const char* name) { return cell(memberOf(analysis, name)); };
    std::string line = csvField(pathOf(result)) + ',' + cell(result["status"]) + ',' +
                       cell(result["verdict"]) + ',' + fact("frames") + ',' +
                       cell(durationOf(analysis));
    for (const Severity severity : {Severity::FAIL, Severity::WARN, Severity::INFO}) {
      line += ',' + std::to_string(entry.events.counts.at(static_cast<size_t>(severity)));
    }
    line += ',' + fact("corrupt_frames") + ',' + fact("decode_errors") + ',' +
            cell(result["truncated"]) + ',' + cell(memberOf(result, "error"));
    for (const IndicatorInfo& indicator : INDICATOR_TABLE) {
      const Json& facts = memberOf(memberOf(result, "indicators"), indicator.name);
      line += ',' + cell(memberOf(facts, "mean"));
    }
    writeLine(line, out);
  }
}

// Reads a result. Its events, of which all results together may have more than memory holds, go
// into the table at once; null: there is none. False when it cannot be read.
bool readEntry(const std::string& folder, FILE* eventTable, IndexEntry* entry) {
  std::vector<std::string> rows;
  const auto take = [&](const Event& event) {
    addTo(&entry->events, event);
    if (eventTable != nullptr) rows.push_back(eventColumns(event));
  };
  if (!readResultJson(folder, &entry->result, take).empty()) return false;
  const std::string path = csvField(pathOf(entry->result));
  for (const std::string& row : rows) {
    std::fprintf(eventTable, "%s,%s\r\n", path.c_str(), row.c_str());
  }
  return true;
}

std::vector<IndexEntry> readEntries(const std::string& folder, FILE* eventTable) {
  std::vector<IndexEntry> entries;
  if (eventTable != nullptr) writeLine("path," + std::string(EVENT_COLUMNS), eventTable);
  for (const std::string& each : storedResults(folder)) {
    IndexEntry entry;
    if (!readEntry(each, eventTable, &entry)) continue;
    entry.folderUri = uriPath(fs::path(each).lexically_relative(folder).string());
    entries.push_back(std::move(entry));
  }
  return entries;
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
  const fs::path to = folder;
  std::vector<IndexEntry> entries;
  std::string error;
  const auto step = [&](const char* name, const std::function<void(FILE*)>& write) {
    if (error.empty()) error = writeOutput((to / name).string(), write);
  };
  if (choice.hasCsv) {
    step("events.csv", [&](FILE* out) { entries = readEntries(folder, out); });
    step("summary.csv", [&](FILE* out) { writeSummary(entries, out); });
  } else {
    entries = readEntries(folder, nullptr);
  }
  if (choice.hasHtml) {
    step("index.html", [&](FILE* out) { writeIndex(entries, out); });
  }
  return error;
}
