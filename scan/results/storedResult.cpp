#include "scan/results/storedResult.h"

#include <fmt/core.h>
#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "scan/events/eventList.h"
#include "scan/files/json.h"
#include "scan/files/names.h"
#include "scan/record/resultJson.h"
#include "scan/report/report.h"

namespace fs = std::filesystem;

namespace {

std::string readWhole(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

std::string makeFolder(const std::string& folder) {
  std::error_code error;
  fs::create_directories(folder, error);
  if (!error) return "";
  return "cannot create \"" + printableName(folder) + "\": " + error.message();
}

// What is at the other end of a link is not lumascan's.
bool isOwnFolder(const fs::path& folder) {
  std::error_code ignored;
  return fs::symlink_status(folder, ignored).type() == fs::file_type::directory;
}

// The pictures in a folder, and nothing else that is in it.
std::vector<fs::path> picturePaths(const fs::path& folder) {
  std::vector<fs::path> paths;
  if (!isOwnFolder(folder)) return paths;
  std::error_code error;
  for (const auto& entry : fs::directory_iterator(folder, error)) {
    const std::string number = entry.path().stem().string();
    const bool isNumber = number.find_first_not_of("0123456789") == std::string::npos;
    const bool isFile = entry.symlink_status(error).type() == fs::file_type::regular;
    if (isNumber && isFile && entry.path().extension() == ".jpg") paths.push_back(entry.path());
  }
  return paths;
}

void removePictures(const fs::path& folder) {
  std::error_code ignored;
  for (const fs::path& path : picturePaths(folder)) fs::remove(path, ignored);
  fs::remove(folder, ignored);
}

std::string storeThumbnails(const fs::path& folder, const Thumbnails& thumbnails,
                            const std::function<void()>& onStep) {
  removePictures(folder);
  if (thumbnails.empty()) return "";
  std::string error = makeFolder(folder.string());
  for (const auto& thumbnail : thumbnails) {
    if (!error.empty()) return error;
    onStep();
    const fs::path path = folder / (std::to_string(thumbnail.first) + ".jpg");
    error = writeOutput(path.string(), [&](FILE* out) { writeText(thumbnail.second, out); });
  }
  return error;
}

// Discarded, when it is not JSON, or deeper or larger than any result: that could take all of the
// stack or of memory.
Json parseResult(std::istream& file, const EventListener& onEvent) {
  constexpr int MEMBER = 1;  // depth
  constexpr int ELEMENT = 2;
  constexpr int DEEPEST = 16;
  constexpr int64_t MOST_VALUES = 100000;  // beside events; lumascan writes some thousand
  bool isInEvents = false;
  bool isTooMuch = false;
  int64_t values = 0;
  const auto isKept = [&](int depth, Json::parse_event_t what, const Json& parsed) {
    const bool isOfEvent = isInEvents && depth > ELEMENT;
    if (!isOfEvent && what == Json::parse_event_t::value) ++values;
    isTooMuch = isTooMuch || depth > DEEPEST || values > MOST_VALUES;
    if (isTooMuch) return false;
    if (depth == MEMBER && what == Json::parse_event_t::key) isInEvents = parsed == "events";
    const bool isEvent = isInEvents && depth == ELEMENT && what == Json::parse_event_t::object_end;
    if (isEvent) onEvent(eventOf(parsed));
    return !isEvent;
  };
  Json result = Json::parse(file, isKept, false);
  return isTooMuch ? Json(Json::value_t::discarded) : result;
}

// Writes a file that is chosen; one that is not is removed.
std::string storeChosen(bool isChosen, const fs::path& path,
                        const std::function<void(FILE*)>& write) {
  if (isChosen) return writeOutput(path.string(), write);
  std::error_code ignored;
  fs::remove(path, ignored);
  return "";
}

// The events, of which there may be many, are written one by one behind the rest.
void writeResultJson(const VideoResult& result, FILE* out) {
  std::string text = jsonText(resultJson(result.record));
  text.erase(text.rfind("\n}"));
  writeText(text + ",\n  \"events\": ", out);
  writeEventsJson(result.events, out);
  writeText("\n}\n", out);
}

// A folder of videos may be called like a file over all results, or like a result. Such a name, and
// what it becomes, gets an ending that nothing of lumascan has.
std::string unlikeOwn(const std::string& name, bool isAtTop) {
  constexpr std::array OWN = {"index.html", "summary.csv", "events.csv", "run.json",
                              ".lumascan-lock"};
  const std::string plain = name.substr(0, name.find_last_not_of('~') + 1);
  const bool isFile = isAtTop && std::find(OWN.begin(), OWN.end(), plain) != OWN.end();
  return isFile || fs::path(plain).extension() == ".lumascan" ? name + "~" : name;
}

// The name, or where no folder could have it with its ending behind it, what there is room for and
// a number for the whole of it.
std::string shortName(const std::string& name) {
  constexpr size_t LONGEST = 255 - (sizeof ".lumascan" - 1);  // bytes
  if (name.size() <= LONGEST) return name;
  // FNV-1a of 64 bits.
  uint64_t number = 0xcbf29ce484222325;
  for (const char c : name) number = (number ^ static_cast<unsigned char>(c)) * 0x100000001b3;
  const std::string digits = fmt::format("~{:016x}", number);
  return name.substr(0, LONGEST - digits.size()) + digits;
}

}  // namespace

std::string resultFolder(const std::string& output, const VideoSource& source) {
  if (source.isStandardInput) return (fs::path(output) / "stdin.lumascan").string();
  const fs::path absolute = fs::absolute(source.path).lexically_normal();
  const fs::path fromHere = absolute.lexically_relative(fs::current_path());
  const bool isBelow = !fromHere.empty() && *fromHere.begin() != "..";
  const fs::path relative = isBelow ? fromHere : absolute.relative_path();
  fs::path folder = output;
  for (const fs::path& name : relative.parent_path()) folder /= unlikeOwn(name, folder == output);
  return folder / (shortName(relative.filename()) + ".lumascan");
}

bool hasFiles(const fs::path& folder, std::initializer_list<const char*> names) {
  return std::all_of(names.begin(), names.end(), [&](const char* name) {
    std::error_code ignored;
    return fs::exists(folder / name, ignored);
  });
}

Freshness freshnessOf(const std::string& folder, const VideoSource& source,
                      const AnalysisOptions& options, const Thresholds& thresholds,
                      const OutputChoice& choice) {
  ResultRecord record;
  if (!readRecord(folder, &record, [](const Event&) {}).empty()) return Freshness::STALE;
  const std::optional<Fingerprint>& fingerprint = record.input.fingerprint;
  // A disk that has failed may do better the next time.
  const bool isCutShort = record.analysis && record.analysis->endedBy == AnalysisEnd::READ_ERROR;
  const bool isValid = record.status != Status::FAILED && !isCutShort &&
                       record.toolVersion == LUMASCAN_VERSION &&
                       record.options == askedOptions(source, options) && fingerprint &&
                       fingerprint == fingerprintOf(source);
  if (!isValid) return Freshness::STALE;
  const bool isJudged =
      thresholdsJson(record.thresholds) == thresholdsJson(thresholds) && record.outputs == choice;
  const bool hasCsv =
      record.outputs.hasCsv && hasFiles(folder, {"rows.tsv", "frames.csv", "events.csv"});
  const bool hasHtml = record.outputs.hasHtml && hasFiles(folder, {"report.html"});
  const bool hasPictures =
      static_cast<int64_t>(picturePaths(fs::path(folder) / "thumbs").size()) >= record.pictures;
  const bool isThere =
      hasPictures && hasCsv == record.outputs.hasCsv && hasHtml == record.outputs.hasHtml;
  if (isJudged && isThere) return Freshness::COMPLETE;
  return hasCsv ? Freshness::JUDGE : Freshness::STALE;
}

std::string readRecord(const std::string& folder, ResultRecord* record,
                       const EventListener& onEvent) {
  const fs::path path = fs::path(folder) / "result.json";
  std::error_code ignored;
  const bool isFolder = fs::is_directory(path, ignored);
  std::ifstream file(path);
  const std::string mistake = isFolder ? std::strerror(EISDIR)
                              : file   ? readRecord(parseResult(file, onEvent), record)
                                       : std::strerror(errno);
  return mistake.empty() ? "" : "cannot read \"" + printableName(path.string()) + "\": " + mistake;
}

std::string readResult(const std::string& folder, VideoResult* result) {
  result->events.clear();
  std::string error = readRecord(folder, &result->record,
                                 [&](Event event) { result->events.push_back(std::move(event)); });
  if (!error.empty() || result->record.status == Status::FAILED) return error;
  const std::string path = (fs::path(folder) / "frames.csv").string();
  const std::string mistake = readFramesCsv(path, &result->frames);
  return mistake.empty() ? "" : "cannot read \"" + printableName(path) + "\": " + mistake;
}

Thumbnails readThumbnails(const std::string& folder) {
  Thumbnails thumbnails;
  for (const fs::path& path : picturePaths(fs::path(folder) / "thumbs")) {
    thumbnails[std::strtoll(path.stem().c_str(), nullptr, 10)] = readWhole(path);
  }
  return thumbnails;
}

std::string removeResult(const std::string& folder, const std::string& results) {
  const fs::path place = folder;
  std::error_code error;
  // Half a result, should this be stopped, is none.
  for (const char* const name :
       {"result.json", "report.html", "frames.csv", "events.csv", "rows.tsv"}) {
    if (!error) fs::remove(place / name, error);
  }
  if (error) return "cannot remove \"" + printableName(folder) + "\": " + error.message();
  if (isOwnFolder(place / "thumbs")) removeLeftovers(place / "thumbs");
  removePictures(place / "thumbs");
  removeLeftovers(folder);
  for (fs::path empty = place; empty != results; empty = empty.parent_path()) {
    if (!fs::remove(empty, error)) break;
  }
  return "";
}

std::string makeResultFolder(const std::string& output, const std::string& folder) {
  fs::path place = output;
  for (const fs::path& name : fs::path(folder).lexically_relative(output)) {
    place /= name;
    std::error_code ignored;
    if (fs::is_symlink(place, ignored))
      return "\"" + printableName(place.string()) +
             "\" is a link: results are not written through it";
  }
  std::string mistake = makeFolder(folder);
  for (const fs::path& own : {fs::path(folder), fs::path(folder) / "thumbs"}) {
    if (mistake.empty() && isOwnFolder(own)) removeLeftovers(own.string());
  }
  return mistake;
}

std::string beginRows(const std::string& folder, OutputFile* rows) {
  const std::string path = (fs::path(folder) / "rows.tsv").string();
  if (openOutput(path, rows)) return "";
  return "cannot write \"" + printableName(path) + "\": " + std::strerror(errno);
}

std::string storeResult(const std::string& folder, const VideoResult& result, OutputFile* rows,
                        const std::function<void()>& onStep) {
  const fs::path to = folder;
  std::string error = makeFolder(folder);
  if (!error.empty()) return error;
  std::error_code ignored;
  fs::remove(to / "result.json", ignored);

  onStep();
  const OutputChoice& outputs = result.record.outputs;
  if (rows != nullptr && !commitOutput(rows)) {
    error = "cannot write \"" + printableName(rows->path) + "\": " + std::strerror(errno);
  }
  if (!outputs.hasCsv) fs::remove(to / "rows.tsv", ignored);
  const auto step = [&](bool isChosen, const char* name, const std::function<void(FILE*)>& write) {
    onStep();
    if (error.empty()) error = storeChosen(isChosen, to / name, write);
  };
  step(outputs.hasCsv, "frames.csv", [&](FILE* out) { writeFramesCsv(result.frames, out); });
  step(outputs.hasCsv, "events.csv", [&](FILE* out) { writeEventsCsv(result.events, out); });
  if (error.empty()) error = storeThumbnails(to / "thumbs", result.thumbnails, onStep);
  step(outputs.hasHtml, "report.html", [&](FILE* out) { writeReport({&result}, out); });
  step(true, "result.json", [&](FILE* out) { writeResultJson(result, out); });
  return error;
}
