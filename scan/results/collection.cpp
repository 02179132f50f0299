#include "scan/results/collection.h"

#include <algorithm>
#include <array>
#include <filesystem>

#include "scan/events/eventList.h"
#include "scan/files/names.h"
#include "scan/files/outputFile.h"
#include "scan/numbers/decimals.h"
#include "scan/report/indexPage.h"
#include "scan/results/storedResult.h"
#include "scan/results/videoPlaces.h"

namespace fs = std::filesystem;

namespace {

std::string cell(const std::optional<int64_t>& count) {
  return count ? std::to_string(*count) : "";
}

void writeLine(const std::string& line, FILE* out) {
  writeText(line + "\r\n", out);
}

std::string summaryLine(const IndexEntry& entry, bool isDisarmed) {
  const ResultRecord& record = entry.record;
  const AnalysisFacts analysis = record.analysis.value_or(AnalysisFacts{});
  std::string line = csvField(record.input.path, isDisarmed) + ',' + statusName(record.status) +
                     ',' + verdictName(record.judgement.verdict) + ',' + cell(analysis.frames) +
                     ',' + shortestText(wholeNanoseconds(analysis.end - analysis.start));
  for (const Severity severity : {Severity::FAIL, Severity::WARN, Severity::INFO}) {
    line += ',' + std::to_string(entry.events.counts.at(static_cast<size_t>(severity)));
  }
  line += ',' + cell(analysis.corruptFrames) + ',' + cell(analysis.decodeErrors) + ',' +
          (record.isTruncated ? '1' : '0') + ',' + csvField(record.error, isDisarmed);
  for (const IndicatorSummary& summary : record.indicators) {
    line += ',' + shortestText(summary.statistics.mean);
  }
  return line;
}

void writeSummary(const std::vector<IndexEntry>& entries, bool isDisarmed, FILE* out) {
  std::string header =
      "path,status,verdict,frames,duration_s,fail_events,warn_events,info_events,corrupt_frames,"
      "decode_errors,truncated,error";
  for (const IndicatorInfo& indicator : INDICATOR_TABLE) {
    header += std::string(",") + indicator.name + "_mean";
  }
  writeLine(header, out);
  for (const IndexEntry& entry : entries) writeLine(summaryLine(entry, isDisarmed), out);
}

// Reads a result. Its events, of which all results together may have more than memory holds, go
// into the table at once; null: there is none. False when it cannot be read.
bool readEntry(const std::string& folder, bool isDisarmed, FILE* eventTable, IndexEntry* entry) {
  std::vector<std::string> rows;
  const auto take = [&](const Event& event) {
    addTo(&entry->events, event);
    if (eventTable != nullptr) rows.push_back(eventColumns(event));
  };
  if (!readRecord(folder, &entry->record, take).empty()) return false;
  const std::string path = csvField(entry->record.input.path, isDisarmed);
  for (const std::string& row : rows) {
    std::fprintf(eventTable, "%s,%s\r\n", path.c_str(), row.c_str());
  }
  return true;
}

std::vector<IndexEntry> readEntries(const std::string& folder, bool isDisarmed, FILE* eventTable) {
  std::vector<IndexEntry> entries;
  if (eventTable != nullptr) writeLine("path," + std::string(EVENT_COLUMNS), eventTable);
  const std::vector<std::string> folders = scanFolders(folder);
  for (const std::string& each : storedResults(folder)) {
    IndexEntry entry;
    if (!readEntry(each, isDisarmed, eventTable, &entry)) continue;
    entry.isVideoGone = isVideoGone(entry.record.input, folders);
    entry.folderUri = uriPath(fs::path(each).lexically_relative(folder).string());
    entries.push_back(std::move(entry));
  }
  return entries;
}

bool isResult(const fs::path& folder) {
  std::error_code ignored;
  return fs::is_regular_file(folder / "result.json", ignored);
}

}  // namespace

std::vector<std::string> storedResults(const std::string& folder) {
  std::vector<std::string> folders;
  std::error_code error;
  if (isResult(folder)) return {folder};
  constexpr auto PASSING = fs::directory_options::skip_permission_denied;
  for (fs::recursive_directory_iterator walk(folder, PASSING, error), end; !error && walk != end;
       walk.increment(error)) {
    if (!isResult(walk->path())) continue;
    folders.push_back(walk->path().string());
    walk.disable_recursion_pending();
  }
  std::sort(folders.begin(), folders.end());
  return folders;
}

std::string writeCollection(const std::string& folder, const OutputChoice& choice,
                            bool isDisarmed) {
  const fs::path to = folder;
  std::vector<IndexEntry> entries;
  std::string error;
  const auto step = [&](const char* name, const std::function<void(FILE*)>& write) {
    if (error.empty()) error = writeOutput((to / name).string(), write);
  };
  if (choice.hasCsv) {
    step("events.csv", [&](FILE* out) { entries = readEntries(folder, isDisarmed, out); });
    step("summary.csv", [&](FILE* out) { writeSummary(entries, isDisarmed, out); });
  } else {
    entries = readEntries(folder, isDisarmed, nullptr);
  }
  if (choice.hasHtml) {
    step("index.html", [&](FILE* out) { writeIndex(entries, out); });
  }
  return error;
}
