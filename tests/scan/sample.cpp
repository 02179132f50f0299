#include "sample.h"

#include <cmath>
#include <random>

#include "support/specialValues.h"

namespace {

constexpr int64_t WITHOUT_TIME = 40;

// One wave per indicator: its level, how far it swings, in how many seconds, and its noise.
struct Wave {
  double level, swing, period, noise;
};

constexpr std::array<Wave, INDICATORS> WAVES = {{{0.95, 0.04, 11.0, 0.01},
                                                 {64.0, 20.0, 7.0, 2.0},
                                                 {0.0, 0.0, 1.0, 0.0},
                                                 {0.0, 0.0, 1.0, 0.0},
                                                 {1.5, 1.0, 5.0, 0.4},
                                                 {3.2, 0.6, 9.0, 0.2},
                                                 {9.0, 5.0, 3.0, 1.5},
                                                 {0.0, 0.0, 1.0, 0.0},
                                                 {0.0, 0.0, 1.0, 0.0},
                                                 {118.0, 30.0, 13.0, 2.0},
                                                 {52.0, 12.0, 8.0, 1.0},
                                                 {0.004, 0.003, 6.0, 0.001},
                                                 {2.1, 0.5, 17.0, 0.2},
                                                 {4.0, 1.0, 10.0, 0.5},
                                                 {0.10, 0.05, 4.0, 0.02}}};

struct Defect {
  const char* type;
  Severity severity;
  const char* indicator;
  double start, end;  // parts of the whole
  double value;       // what the indicator is meanwhile
  double threshold;
};

constexpr Defect DEFECTS[] = {
    {"black", Severity::FAIL, "blackout", 0.00, 0.05, 1.0, 1.0},
    {"letterbox", Severity::INFO, "letterbox", 0.10, 0.90, 0.125, 0.05},
    {"freeze", Severity::FAIL, "freezing", 0.30, 0.37, 1.0, 1.0},
    {"blur", Severity::WARN, "blur", 0.50, 0.58, 9.3, 8.0},
    {"block_loss", Severity::FAIL, "block_loss", 0.62, 0.63, 41.0, 20.0},
    {"scene_cut", Severity::INFO, "temporal_activity", 0.70, 0.70, 88.0, 40.0},
    {"over_exposure", Severity::WARN, "exposure", 0.80, 0.86, 228.0, 215.0},
    {"freeze", Severity::WARN, "freezing", 0.95, 1.00, 1.0, 1.0}};

struct FrameSpan {
  int64_t first, last;
};

FrameSpan framesOf(const Defect& defect, int64_t count) {
  const auto last = static_cast<double>(count - 1);
  const auto first = static_cast<int64_t>(std::ceil(defect.start * last));
  return {first, std::max(first, static_cast<int64_t>(std::floor(defect.end * last)))};
}

double waveAt(const Wave& wave, double time, double noise) {
  constexpr double TURN = 6.283185307179586;
  const double value = wave.level + wave.swing * std::sin(TURN * time / wave.period);
  return std::fmax(0.0, value + wave.noise * noise);
}

FrameTable makeFrames(int64_t count, double fps, uint32_t seed) {
  FrameTable table;
  std::mt19937 random(seed);
  std::normal_distribution<double> noise;
  for (int64_t frame = 0; frame < count; ++frame) {
    const double time = static_cast<double>(frame) / fps;
    FrameRow row{frame * 512, time, 1.0 / fps, frame % 48 == 0, frame % 211 == 100, {}};
    if (frame == WITHOUT_TIME) row.time = UNDEFINED;
    for (size_t i = 0; i < INDICATORS; ++i) {
      row.values[i] = waveAt(WAVES[i], time + seed, noise(random));
    }
    for (const Defect& defect : DEFECTS) {
      const FrameSpan span = framesOf(defect, count);
      if (frame < span.first || frame > span.last) continue;
      const size_t i = indicatorNamed(defect.indicator);
      const bool isFlag = defect.value == 1.0;
      row.values[i] = isFlag ? 1.0 : defect.value * (1.0 + 0.02 * noise(random));
    }
    if (frame == 0) {
      for (const char* const name : {"temporal_activity", "freezing", "flickering"}) {
        row.values[indicatorNamed(name)] = UNDEFINED;
      }
    }
    if (frame % 8 != 7) row.values[indicatorNamed("flickering")] = UNDEFINED;
    appendRow(row, &table);
  }
  return table;
}

std::vector<Event> makeEvents(const FrameTable& table, double fps) {
  std::vector<Event> events;
  for (const Defect& defect : DEFECTS) {
    const Column<double>& values = table.values[indicatorNamed(defect.indicator)];
    const auto [first, end] = framesOf(defect, table.rows());
    int64_t peak = first;
    for (int64_t frame = first; frame <= end; ++frame) {
      if (values[static_cast<size_t>(frame)] > values[static_cast<size_t>(peak)]) peak = frame;
    }
    Event event;
    event.id = static_cast<int64_t>(events.size()) + 1;
    event.type = defect.type;
    event.severity = defect.severity;
    event.firstFrame = first;
    event.lastFrame = end;
    event.startTime = static_cast<double>(first) / fps;
    event.endTime = static_cast<double>(end + 1) / fps;
    event.peakFrame = peak;
    event.peakValue = values[static_cast<size_t>(peak)];
    event.threshold = defect.threshold;
    event.isAtStart = first == 0;
    event.isAtEnd = end + 1 == table.rows();
    events.push_back(event);
  }
  return events;
}

Thresholds thresholds() {
  Thresholds all;
  for (const Defect& defect : DEFECTS) {
    Threshold& threshold = all.at(eventTypeNamed(defect.type));
    threshold.enter = defect.threshold;
    threshold.severity = defect.severity;
  }
  Threshold& dark = all.at(eventTypeNamed("under_exposure"));
  dark.enter = 30.0;
  dark.severity = Severity::WARN;
  return all;
}

StreamFacts streamOf(double fps, double duration) {
  StreamFacts stream;
  stream.container = "mov,mp4,m4a,3gp,3g2,mj2";
  stream.codec = "h264";
  stream.pixelFormat = "yuv420p";
  stream.width = 1920;
  stream.height = 1080;
  stream.frameRate = fps;
  stream.declaredDuration = duration;
  stream.fieldOrder = "progressive";
  stream.colorRange = "tv";
  stream.colorTransfer = "bt709";
  stream.sampleAspectRatio = "1:1";
  return stream;
}

AnalysisFacts analysisOf(int64_t frames, double fps, double duration) {
  AnalysisFacts analysis;
  analysis.fps = fps;
  analysis.lumaPath = LumaPath::COPIED;
  analysis.start = 0.0;
  analysis.end = duration;
  analysis.frames = frames;
  analysis.corruptFrames = 3;
  analysis.decodeErrors = 0;
  return analysis;
}

}  // namespace

VideoResult sampleInput(const std::string& path, int64_t frames, double fps, uint32_t seed) {
  const double duration = static_cast<double>(frames) / fps;
  VideoResult input;
  input.frames = makeFrames(frames, fps, seed);
  input.events = makeEvents(input.frames, fps);
  ResultRecord& record = input.record;
  record.input = {path, "", Fingerprint{48213377, 0, "9ae0daaf"}, streamOf(fps, duration)};
  record.analysis = analysisOf(frames, fps, duration);
  record.status = Status::COMPLETE;
  record.warnings = {"The container declares one frame more than there are."};
  record.judgement = {
      Verdict::FAIL,
      {"black for 1.5 s from 00:00:00:00", "freeze for 2.1 s", "block loss for 0.3 s"}};
  record.indicators = summarise(input.frames);
  record.measures = measureStatistics(input.frames);
  record.thresholds = thresholds();
  return input;
}

VideoResult sampleRange(const std::string& path, int64_t frames, double fps, uint32_t seed,
                        int64_t firstFrame) {
  VideoResult input = sampleInput(path, frames, fps, seed);
  const auto timeOf = [&](int64_t frame) { return static_cast<double>(frame) / fps; };
  FrameTable& table = input.frames;
  table.firstFrame = firstFrame;
  for (int64_t i = 0; i < frames; ++i) {
    const auto row = static_cast<size_t>(i);
    table.pts.set(row, (firstFrame + i) * 512);
    if (i != WITHOUT_TIME) table.time.set(row, timeOf(firstFrame + i));
  }
  for (Event& event : input.events) {
    for (int64_t* const frame : {&event.firstFrame, &event.peakFrame, &event.lastFrame}) {
      *frame += firstFrame;
    }
    event.startTime = timeOf(event.firstFrame);
    event.endTime = timeOf(event.lastFrame + 1);
  }
  input.record.analysis->firstFrame = firstFrame;
  input.record.analysis->start = timeOf(firstFrame);
  input.record.analysis->end = timeOf(firstFrame + frames);
  input.record.input.stream->declaredDuration = timeOf(firstFrame + frames);
  return input;
}

EventSummary summaryOf(const std::vector<Event>& events) {
  EventSummary summary;
  for (const Event& event : events) addTo(&summary, event);
  return summary;
}

VideoResult failedInput(const std::string& path) {
  VideoResult input;
  input.record.input = {path, "", Fingerprint{}, {}};
  input.record.error = "there is no video in it";
  input.record.judgement.reasons = {"Nothing was analysed."};
  return input;
}
