// Any text where lumascan reads what it, a script or a person has written: tables of frames,
// thresholds, positions and stored results.
//
// The first byte of the input says what the others are (see LLVMFuzzerTestOneInput). Where there
// are two texts, a zero byte stands between them.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "require.h"
#include "requireEvents.h"
#include "scan/analysis/frameTable.h"
#include "scan/commandLine/exitStatus.h"
#include "scan/commandLine/inputs.h"
#include "scan/commands/commands.h"
#include "scan/events/eventDetection.h"
#include "scan/events/thresholds.h"
#include "scan/files/json.h"
#include "scan/processes/scanJob.h"
#include "scan/report/report.h"
#include "scan/results/collection.h"
#include "scan/results/storedResult.h"
#include "scan/video/ffmpeg.h"
#include "scan/video/position.h"
#include "support/runProgram.h"

namespace {

const std::string& folder() {
  static const TemporaryDirectory directory;
  return directory.path;
}

std::string upToZero(const std::string& text) {
  return text.substr(0, text.find('\0'));
}

bool hasSecond(const std::string& text) {
  return text.find('\0') != std::string::npos;
}

std::string behindZero(const std::string& text) {
  return hasSecond(text) ? text.substr(text.find('\0') + 1) : "";
}

// ---- what commands print ------------------------------------------------------------------------

// Takes the streams for as long as it lives. What a sanitizer says does not go through them.
struct Silence {
  FILE* const out = stdout;
  FILE* const err = stderr;
  char* messages = nullptr;
  size_t size = 0;

  Silence() {
    stdout = std::fopen("/dev/null", "w");
    stderr = open_memstream(&messages, &size);
  }
  ~Silence() {
    std::fclose(stdout);
    std::fclose(stderr);
    std::free(messages);
    stdout = out;
    stderr = err;
  }
  Silence(const Silence&) = delete;
  Silence& operator=(const Silence&) = delete;
};

struct Outcome {
  int status;
  std::string messages;
};

Outcome outcomeOf(int (*command)(const Options&), const Options& options) {
  const Silence silence;
  const int status = command(options);
  std::fflush(stderr);
  return {status, {silence.messages, silence.size}};
}

// ---- tables of frames ---------------------------------------------------------------------------

std::string csvOf(const FrameTable& table) {
  char* text = nullptr;
  size_t size = 0;
  FILE* const out = open_memstream(&text, &size);
  writeFramesCsv(table, out);
  std::fclose(out);
  std::string csv(text, size);
  std::free(text);
  return csv;
}

// Rows behind the header of files that have as many columns: older ones have fewer.
std::string withHeader(const std::string& rows) {
  const std::string header = csvOf({});
  const std::string first = rows.substr(0, rows.find('\r'));
  const auto commas = std::count(first.begin(), first.end(), ',');
  const char* const left = commas == 20 ? ",messages" : commas == 21 ? ",infinite" : "\r";
  return header.substr(0, header.find(left)) + "\r\n" + rows;
}

bool areSame(const Column<double>& a, const Column<double>& b) {
  bool isSame = a.size() == b.size();
  for (size_t i = 0; isSame && i < a.size(); ++i) {
    isSame = (std::isnan(a[i]) && std::isnan(b[i])) ||
             (a[i] == b[i] && std::signbit(a[i]) == std::signbit(b[i]));
  }
  return isSame;
}

bool areSame(const FrameTable& a, const FrameTable& b) {
  bool isSame = (a.rows() == 0 || a.firstFrame == b.firstFrame) && a.pts == b.pts &&
                areSame(a.time, b.time) && areSame(a.duration, b.duration) && a.isKey == b.isKey &&
                a.isCorrupt == b.isCorrupt && a.messages == b.messages && a.infinite == b.infinite;
  for (size_t i = 0; i < INDICATORS; ++i) isSame = isSame && areSame(a.values[i], b.values[i]);
  for (size_t i = 0; i < MEASURES; ++i) isSame = isSame && areSame(a.measures[i], b.measures[i]);
  return isSame;
}

// False when it is refused.
bool readTable(const std::string& csv, FrameTable* table) {
  const std::string path = folder() + "/table.csv";
  writeFile(path, csv);
  return readFramesCsv(path, table).empty();
}

void requireEvents(const FrameTable& table, const Thresholds& thresholds) {
  requireEventsOf(table, thresholds, detectEvents(table, thresholds, {25.0, true, true}));
}

void tryFrames(const std::string& csv) {
  FrameTable table;
  if (!readTable(csv, &table)) return;
  FrameTable again;
  require(readTable(csvOf(table), &again), "what is written can be read");
  require(areSame(table, again), "what is read again is the same");
  require(csvOf(table) == csvOf(again), "and so is what is written of it");
  requireEvents(table, DEFAULT_THRESHOLDS);
}

// ---- thresholds ---------------------------------------------------------------------------------

// Values around the usual thresholds, with undefined stretches, damaged and black frames, a frame
// without a time and a gap. Here and there slice is infinite, or a measure is missing.
FrameTable makeTable() {
  constexpr int64_t ROWS = 80;
  FrameTable table;
  table.firstFrame = 5;
  for (int64_t i = 0; i < ROWS; ++i) {
    FrameRow row = {
        i, static_cast<double>(i) * 0.1 + (i < 60 ? 0.0 : 4.0), 0.1, i % 10 == 0, i > 70 && i < 75,
        {}};
    if (i == 30) row.time = std::nan("");
    for (size_t k = 0; k < INDICATORS; ++k) {
      const double wave = std::sin(static_cast<double>(i) * (0.05 + 0.03 * static_cast<double>(k)));
      row.values[k] = std::exp(6.0 * wave) - (k % 4 == 0 ? 2.0 : 0.0);
      if ((static_cast<size_t>(i) + k) % 23 == 0) row.values[k] = std::nan("");
    }
    row.values[indicatorNamed("blackout")] = i >= 40 && i < 45 ? 1.0 : 0.0;
    if (i % 13 == 0) {
      row.values[indicatorNamed("slice")] = std::nan("");
      row.infinite = SLICE;
    }
    for (size_t k = 0; k < MEASURES; ++k) {
      const double wave = std::sin(static_cast<double>(i) * (0.04 + 0.05 * static_cast<double>(k)));
      if ((static_cast<size_t>(i) + k) % 17 != 0) row.measures[k] = 0.5 + 0.5 * wave;
    }
    appendRow(row, &table);
  }
  return table;
}

bool areSameBits(const Thresholds& a, const Thresholds& b) {
  return thresholdsJson(a).dump() == thresholdsJson(b).dump();
}

// The table may come with them: its rows, behind a zero byte.
void tryThresholds(const std::string& text) {
  static const FrameTable usual = makeTable();
  const std::string path = folder() + "/thresholds.json";
  writeFile(path, upToZero(text));
  Thresholds thresholds = DEFAULT_THRESHOLDS;
  const std::string mistake = readThresholds(path, &thresholds);
  if (!mistake.empty()) {
    require(areSameBits(thresholds, DEFAULT_THRESHOLDS), "what is refused changes nothing");
    return;
  }
  writeFile(path, jsonText(thresholdsJson(thresholds)));
  Thresholds again = DEFAULT_THRESHOLDS;
  require(readThresholds(path, &again).empty(), "thresholds that are written can be read");
  require(areSameBits(thresholds, again), "and are the same");

  FrameTable table;
  const bool hasTable = hasSecond(text) && readTable(withHeader(behindZero(text)), &table);
  requireEvents(hasTable ? table : usual, thresholds);
}

// ---- positions ----------------------------------------------------------------------------------

void tryPosition(const std::string& text) {
  constexpr double FPS = 25.0;
  constexpr double HALF = 0.5;  // frames
  Position position;
  if (!parsePosition(text, &position)) return;
  require(position.text == text, "a position keeps its text");
  require(position.frames >= 0 && position.seconds >= 0.0, "a position is not before the start");
  if (position.isFrame) {
    require(text == "f:" + text.substr(2) &&
                std::strtoll(text.c_str() + 2, nullptr, 10) == position.frames,
            "a frame is counted");
    require(isAtOrBehind(position.frames, 0.0, FPS, position) &&
                !isAtOrBehind(position.frames - 1, 0.0, FPS, position),
            "a frame is where it is said to be");
    return;
  }
  const double time = position.seconds + static_cast<double>(position.frames) / FPS;
  require(isAtOrBehind(0, time, FPS, position), "a time is where it is said to be");
  // Where doubles tell frames from each other.
  if (time < 1e9) require(!isAtOrBehind(0, time - HALF / FPS, FPS, position), "and not before");
}

// ---- stored results -----------------------------------------------------------------------------

// A result as lumascan stores it, and what it is of.
// NOLINTNEXTLINE(bugprone-exception-escape): moving JSON throws nothing
struct Stored {
  Options options;
  ScanJob job;
  Json json;
  std::string frames;  // frames.csv
};

// Waves, then black, then a picture that stands still.
std::string makeVideo() {
  constexpr int SIDE = 32;
  constexpr int FRAMES = 24;
  std::string video;
  for (int frame = 0; frame < FRAMES; ++frame) {
    for (int i = 0; i < SIDE * SIDE; ++i) {
      const int shown = std::min(frame, 16);
      const bool isBlack = frame >= 8 && frame < 12;
      video += static_cast<char>(isBlack ? 16 : 40 + (i * 7 + shown * shown * 5) % 160);
    }
    video.append(SIDE * SIDE / 2, static_cast<char>(128));
  }
  return video;
}

ScanSettings settingsOf(const OutputChoice& outputs) {
  return {{}, DEFAULT_THRESHOLDS, outputs, {}, 0};
}

const Stored& stored() {
  static const Stored made = [] {
    Stored result;
    av_log_set_level(AV_LOG_QUIET);
    result.job.source = {folder() + "/video.yuv", 32, 32, "10"};
    writeFile(result.job.source.path, makeVideo());
    result.options.inputs = {result.job.source.path};
    result.options.raw = result.job.source;
    result.options.raw.path = "";
    result.options.output = folder() + "/results";
    result.options.isTakenOver = true;  // no scan has marked it
    result.options.choice.thumbs = Thumbs::NONE;
    result.options.progress = ProgressStyle::NONE;
    result.job.folder = resultFolder(result.options.output, result.job.source);
    const JobEnd end =
        runJob(result.job, settingsOf(result.options.choice), [](Stage, double, int64_t) {});
    require(end.outputError.empty(), "there is a result");
    result.json = Json::parse(readFile(result.job.folder + "/result.json"));
    require(result.json["status"] == "complete", "and it is complete");
    result.frames = readFile(result.job.folder + "/frames.csv");
    return result;
  }();
  return made;
}

Freshness freshness(const OutputChoice& choice) {
  return freshnessOf(stored().job.folder, stored().job.source, stored().options.analysis,
                     DEFAULT_THRESHOLDS, choice);
}

// Commands on the folder say what is wrong with it, or do what they are for.
void requireCommands(bool isAccepted) {
  Options options;
  options.inputs = {stored().job.folder};
  options.output = folder() + "/report.html";
  for (const bool printsJson : {false, true}) {
    options.printsJson = printsJson;
    const Outcome events = outcomeOf(runEvents, options);
    require(events.status == (isAccepted ? DONE : INPUT_PROBLEM), "events end as they should");
    require(events.messages.empty() == isAccepted, "events say what is wrong");
  }
  const Outcome report = outcomeOf(runReport, options);
  require(report.status == (isAccepted ? DONE : INPUT_PROBLEM), "a report ends as it should");
  require(report.messages.empty() == isAccepted, "a report says what is wrong");
  require(writeCollection(stored().options.output, {}).empty(), "what is over all can be written");
}

// Without analysing anything, which is not what this is about.
void requireScan() {
  if (freshness(stored().options.choice) == Freshness::COMPLETE) {
    const int status = outcomeOf(runScan, stored().options).status;
    require(status == DONE || status == INPUT_PROBLEM, "a repeated scan ends as it should");
  }
  OutputChoice other = stored().options.choice;
  other.hasHtml = false;
  if (freshness(other) != Freshness::JUDGE) return;
  ScanJob job = stored().job;
  job.freshness = Freshness::JUDGE;
  require(runJob(job, settingsOf(other), [](Stage, double, int64_t) {}).outputError.empty(),
          "what is judged anew can be stored");
  require(freshness(other) == Freshness::COMPLETE, "and is up to date then");
}

void tryResult(const std::string& json, const std::string& frames) {
  const std::string& to = stored().job.folder;
  writeFile(to + "/result.json", json);
  writeFile(to + "/frames.csv", frames);
  VideoResult result;
  const bool isAccepted = readResult(to, &result).empty();
  if (isAccepted) {
    judgeResult(DEFAULT_THRESHOLDS, &result);
    FILE* const nowhere = std::fopen("/dev/null", "w");
    writeReport({&result}, nowhere);
    std::fclose(nowhere);
  }
  requireCommands(isAccepted);
  requireScan();
}

// The stored result with changes (RFC 7386); behind a zero byte other rows of frames.csv.
void tryChanges(const std::string& text) {
  const Json changes = Json::parse(upToZero(text), nullptr, false);
  if (changes.is_discarded()) return;
  Json json = stored().json;
  json.merge_patch(changes);
  tryResult(jsonText(json), hasSecond(text) ? withHeader(behindZero(text)) : stored().frames);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size == 0) return 0;
  const std::string text(data + 1, data + size);
  switch (data[0]) {
    case 'f':  // frames.csv
      tryFrames(text);
      return 0;
    case 'r':  // the rows of frames.csv
      tryFrames(withHeader(text));
      return 0;
    case 't':  // a file of thresholds, and rows that they are held against
      tryThresholds(text);
      return 0;
    case 'p':  // a position
      tryPosition(text);
      return 0;
    case 'j':  // result.json, and frames.csv where it is not that of the stored result
      tryResult(upToZero(text), hasSecond(text) ? behindZero(text) : stored().frames);
      return 0;
    case 'c':  // changes of a stored result.json, and rows of frames.csv
      tryChanges(text);
      return 0;
    default:
      return -1;  // not worth to be kept
  }
}
