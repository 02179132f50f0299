// Whole runs on any bytes: what is printed and written, byte by byte, against rows that are put
// together from the bytes in another way.
//
// The first line of the input holds the arguments behind the file's name, with blanks between; the
// bytes behind it are the video. So an input can be tried by hand.
#include <fcntl.h>
#include <pthread.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <sstream>
#include <string>
#include <vector>

#include "cli/analysis.h"
#include "driver/commandLine.h"
#include "driver/frameLoop.h"
#include "driver/videoInput.h"
#include "indicators/results.h"
#include "require.h"
#include "support/startAnew.h"

// The linker sends the program's calls of pthread_create here.
extern "C" {
int __real_pthread_create(pthread_t*, const pthread_attr_t*, void* (*)(void*), void*);
int __wrap_pthread_create(pthread_t* thread, const pthread_attr_t* attributes,
                          void* (*entry)(void*), void* argument);
}

namespace {

const char* const VIDEO = "video.yuv";

// Bounds that keep one input within milliseconds.
constexpr int32_t MAX_FRAME_SAMPLES = 128 * 128;
constexpr int32_t MAX_SIDE = 128;  // of frames that have more samples
constexpr int32_t MAX_FRAMES = 18;
constexpr int32_t MAX_VIDEO_SAMPLES = 64 * 64 * MAX_FRAMES;
constexpr int MAX_THREADS =
    15;  // made in one run: those of a whole frame, and of a part of the next

bool isRunning = false;
int threads = 0;  // made in the run so far

// ---- the input ----------------------------------------------------------------------------------

struct Run {
  RunOptions options;
  std::string video;
};

bool hasSupportedSize(const RunOptions& options) {
  return options.width >= 1 && options.height >= 1 &&
         int64_t{3} * options.width <= INT32_MAX / options.height;
}

// Whole chroma samples or not: three halves of the luma, rounded down.
int64_t frameBytes(const RunOptions& options) {
  return int64_t{options.width} * options.height * 3 / 2;
}

// Brings a run that would take long, or more memory than there is, within bounds. Blackout ends the
// process when there is no whole block to look at.
void bound(Run* run) {
  RunOptions* const options = &run->options;
  if (!hasSupportedSize(*options)) return;
  if (int64_t{options->width} * options->height > MAX_FRAME_SAMPLES) {
    options->width = 1 + options->width % MAX_SIDE;
    options->height = 1 + options->height % MAX_SIDE;
  }
  const int32_t samples = options->width * options->height;
  const int32_t frames = std::clamp(MAX_VIDEO_SAMPLES / samples, 1, MAX_FRAMES);
  options->frameCount = std::min(options->frameCount, frames);
  if (!options->hasFrameCount) {
    const size_t most = static_cast<size_t>(frames * frameBytes(*options));
    run->video.resize(std::min(run->video.size(), most));
  }
  if (options->width < 8 || options->height < 8) options->mask &= ~IndicatorMask{BLACKOUT};
}

// ---- what must come out of it -------------------------------------------------------------------

std::string decimals(double value, const char* format) {
  char text[400];  // any double fits
  std::snprintf(text, sizeof text, format, value);
  return text;
}

Row rowOf(int64_t frame, const FrameResults& spatial, const TemporalResults& temporal) {
  Row row = zeroRow(frame);
  row.blockiness = decimals(spatial.blockiness, "%.5f");
  row.spatialActivity = decimals(spatial.spatialActivity, "%.5f");
  row.letterbox = decimals(spatial.letterbox, "%.5f");
  row.pillarbox = decimals(spatial.pillarbox, "%.5f");
  row.blockLoss = decimals(spatial.blockLoss, "%.5f");
  row.blur = decimals(spatial.blur, "%.3f");
  row.temporalActivity = decimals(temporal.temporalActivity, "%.5f");
  row.blackout = spatial.blackout ? "1" : "0";
  row.freezing = temporal.freezing ? "1" : "0";
  row.exposure = decimals(std::floor(spatial.exposure), "%.0f");
  row.contrast = decimals(spatial.contrast, "%.5f");
  row.interlace = decimals(spatial.interlace, "%.5f");
  row.noise = decimals(spatial.noise, "%.2f");
  row.noiseInReport = decimals(spatial.noise, "%.4f");
  row.slice = decimals(spatial.slice, "%.3f");
  row.flickering = decimals(temporal.flickering, "%.5f");
  return row;
}

int32_t expectedCount(const Run& run) {
  if (run.options.hasFrameCount) return run.options.frameCount;
  return static_cast<int32_t>(static_cast<int64_t>(run.video.size()) / frameBytes(run.options));
}

// Two planes take turns, and keep what the file does not fill. Frames of negative number are read
// one after another, luma alone.
std::vector<Row> expectedRows(const Run& run) {
  const RunOptions& options = run.options;
  const int64_t luma = int64_t{options.width} * options.height;
  const int64_t size = static_cast<int64_t>(run.video.size());
  const int64_t first = options.startFrame;
  const int64_t count = std::max(expectedCount(run), 0);
  // A range whose end is past 31 bits has no frame.
  const int64_t end = first + count > INT32_MAX ? first : first + count;

  restartTemporalIndicators();
  Results = {};
  TemporalResults temporal = {};
  FrameImages images =
      makeFrameImages(static_cast<uint32_t>(options.width), static_cast<uint32_t>(options.height));
  int64_t position = 0;
  std::vector<Row> rows;
  for (int64_t frame = first; frame < end; ++frame) {
    if (frame >= 0) position = frame * frameBytes(options);
    const int64_t from = std::min(position, size);
    const int64_t to = std::min(position + luma, size);
    std::copy(run.video.begin() + from, run.video.begin() + to, images.current.data);
    position += to - from;
    analyseFrameSerially(options.mask, options.fps, frame > first, &images, &temporal);
    rows.push_back(rowOf(frame, Results, temporal));
    swapFrames(&images);
  }
  freeFrameImages(&images);
  return rows;
}

// ---- what does come out of it -------------------------------------------------------------------

struct Outcome {
  int status;
  std::string printed;
  std::string report;
};

// Runs in a folder of its own, with standard output in an unnamed file, and comes back.
Outcome outcomeOf(const Run& run) {
  static const TemporaryDirectory folder;
  static const int output = memfd_create("standard output", 0);
  static const std::string outputPath = "/proc/self/fd/" + std::to_string(output);
  const int home = open(".", O_RDONLY);
  const int standardOutput = dup(STDOUT_FILENO);
  require(home >= 0 && standardOutput >= 0 && chdir(folder.path.c_str()) == 0, "there is a folder");
  std::fflush(stdout);
  require(ftruncate(output, 0) == 0 && lseek(output, 0, SEEK_SET) == 0 &&
              dup2(output, STDOUT_FILENO) == STDOUT_FILENO,
          "there is an output");
  writeFile(VIDEO, run.video);

  restartTemporalIndicators();
  Results = {};
  Outcome outcome;
  threads = 0;
  isRunning = true;
  outcome.status = runAnalysis(run.options);
  isRunning = false;
  outcome.report = readFile("metricsResultsCSV.csv");
  std::fflush(stdout);
  outcome.printed = readFile(outputPath);

  require(dup2(standardOutput, STDOUT_FILENO) == STDOUT_FILENO && fchdir(home) == 0,
          "there is a way back");
  close(standardOutput);
  close(home);
  return outcome;
}

void requireSame(const std::string& text, const std::string& expected, const char* what) {
  if (text != expected) {
    std::fprintf(stderr, "%s\nis not\n%s\n", text.c_str(), expected.c_str());
  }
  require(text == expected, what);
}

void requireAnalysis(const Run& run) {
  const RunOptions& options = run.options;
  const std::vector<Row> rows = expectedRows(run);
  const Outcome outcome = outcomeOf(run);
  require(outcome.status == 0, "a run over frames of a supported size ends well");
  requireSame(outcome.printed,
              startMessages(VIDEO, options.width, options.height, decimals(options.fps, "%.2f"),
                            expectedCount(run), options.startFrame) +
                  consoleHeader + consoleRows(rows) + closing,
              "standard output holds messages, header, rows and the closing line");
  requireSame(outcome.report, reportHeader + reportRows(rows), "the report holds header and rows");
}

void requireRefusal(const Run& run) {
  const Outcome outcome = outcomeOf(run);
  require(outcome.status == -1, "a size that is not supported is refused");
  requireSame(outcome.printed,
              "Cannot analyse frames of " + std::to_string(run.options.width) + " x " +
                  std::to_string(run.options.height) +
                  ": width and height must be at least 1, and 3 * width * height at most "
                  "2147483647\n",
              "standard output holds the refusal");
  requireSame(outcome.report, "", "the report is empty");
}

}  // namespace

// No further threads can be made in a run that has had its share: their indicators are left to the
// main thread, which also takes less time.
int __wrap_pthread_create(pthread_t* thread, const pthread_attr_t* attributes,
                          void* (*entry)(void*), void* argument) {
  if (isRunning && threads++ >= MAX_THREADS) return EAGAIN;
  return __real_pthread_create(thread, attributes, entry, argument);
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const bool hasSmallStacks = (useSmallStacks(), true);
  static_cast<void>(hasSmallStacks);
  const uint8_t* const lineEnd = std::find(data, data + size, '\n');
  std::vector<std::string> texts = {"lumaprobe", VIDEO};
  std::istringstream line(std::string(data, lineEnd));
  for (std::string text; line >> text;) texts.push_back(text);
  std::vector<const char*> argv;
  argv.reserve(texts.size());
  for (const std::string& text : texts) argv.push_back(text.c_str());

  Run run;
  if (!parseCommandLine(static_cast<int>(argv.size()), argv.data(), &run.options)) return 0;
  if (lineEnd != data + size) run.video.assign(lineEnd + 1, data + size);
  bound(&run);
  if (hasSupportedSize(run.options)) {
    requireAnalysis(run);
  } else {
    requireRefusal(run);
  }
  return 0;
}
