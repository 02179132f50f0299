// Any bytes as a whole media file, on the way that a worker process goes with it: opened, analysed,
// judged, a few pictures taken, all of it stored and read again.
//
// The first byte of the input chooses the file's extension, which FFmpeg takes into account
// (EXTENSIONS), where the analysis begins and of which frames there are pictures (see choose()).
// The others are the file.
#include <sys/mman.h>
#include <unistd.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <iterator>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "indicators/results.h"
#include "requireEvents.h"
#include "scan/events/eventList.h"
#include "scan/files/json.h"
#include "scan/record/resultJson.h"
#include "scan/record/videoResult.h"
#include "scan/results/storedResult.h"
#include "scan/results/thumbnails.h"
#include "scan/video/videoReader.h"
#include "support/runProgram.h"
#include "support/startAnew.h"

namespace {

// ---- bounds that keep one input within a second -------------------------------------------------

constexpr const char* LAST_POSITION = "f:40";
// Samples of a picture. Larger ones take most of the time, for indicators that fuzzFrame looks at.
constexpr int64_t MOST_PIXELS = 1 << 15;
// Bytes that FFmpeg may have at once. Pictures are decoded before it is known how large they are,
// and indices are made as long as a file says they are.
constexpr size_t MOST_AT_ONCE = 32 << 20;

// ---- what is asked ------------------------------------------------------------------------------

// The kept inputs' first bytes count on their order.
constexpr const char* EXTENSIONS[] = {
    "",     "mp4",  "mov",  "mkv",   "webm", "avi",  "flv",  "wmv",  "ts",  "mpg", "mxf",
    "nut",  "ogv",  "y4m",  "gif",   "png",  "jpg",  "webp", "bmp",  "tif", "ivf", "h264",
    "hevc", "m2v",  "m4v",  "mjpg",  "dv",   "wtv",  "rm",   "swf",  "roq", "smk", "obu",
    "vc1",  "h261", "h263", "dnxhd", "cavs", "drc",  "ico",  "jp2",  "gxf", "nsv", "nuv",
    "ser",  "cdg",  "yuv",  "flm",   "cpk",  "mtv",  "thp",  "fits", "j2k", "exr", "dpx",
    "tga",  "qoi",  "jxl",  "svg",   "mpd",  "m3u8", "txt",  "mp3",  "lxf"};
constexpr unsigned EXTENSION_BITS = 0x3f;
constexpr unsigned BEGINS_LATER = 0x40;
constexpr unsigned SHOWS_ALL = 0x80;
static_assert(std::size(EXTENSIONS) == EXTENSION_BITS + 1);

struct Asked {
  VideoSource source;
  AnalysisOptions options;
  OutputChoice outputs;
};

Asked choose(unsigned byte, OpenInput file) {
  Asked asked;
  const std::string extension = EXTENSIONS[byte & EXTENSION_BITS];
  asked.source.path = extension.empty() ? "media" : "media." + extension;
  asked.source.file = std::move(file);
  asked.source.maxPixels = MOST_PIXELS;
  if ((byte & BEGINS_LATER) != 0) parsePosition("f:1", &asked.options.start);
  parsePosition(LAST_POSITION, &asked.options.end);
  asked.outputs.thumbs = (byte & SHOWS_ALL) != 0 ? Thumbs::ALL : Thumbs::EVENTS;
  return asked;
}

// A file in memory, without a name.
OpenInput fileOfBytes(const uint8_t* bytes, size_t size) {
  auto file = std::make_shared<InputFile>();
  file->descriptor = memfd_create("media", MFD_CLOEXEC);
  file->isRegular = true;
  const ssize_t written = write(file->descriptor, bytes, size);
  require(written >= 0 && static_cast<size_t>(written) == size, "there is memory for the file");
  return file;
}

// ---- what is said -------------------------------------------------------------------------------

std::string textBy(const std::function<void(FILE*)>& write) {
  char* text = nullptr;
  size_t size = 0;
  FILE* const out = open_memstream(&text, &size);
  write(out);
  std::fclose(out);
  std::string all(text, size);
  std::free(text);
  return all;
}

// A result as text, in which what is not known is the same as itself.
struct ResultText {
  std::string record;
  std::string frames;
  std::string events;
};

ResultText textOfResult(const VideoResult& result) {
  return {jsonText(resultJson(result.record)),
          textBy([&](FILE* out) { writeFramesCsv(result.frames, out); }),
          textBy([&](FILE* out) { writeEventsJson(result.events, out); })};
}

void requireSame(const ResultText& a, const ResultText& b, const std::string& when) {
  require(a.record == b.record, "the record is the same " + when);
  require(a.frames == b.frames, "the frames are the same " + when);
  require(a.events == b.events, "the events are the same " + when);
}

void requireText(const std::string& text) {
  require(text.find('\0') == std::string::npos, "what is said is text");
}

void requireTexts(const ResultRecord& record) {
  requireText(record.error);
  for (const std::string& warning : record.warnings) requireText(warning);
  for (const DamageMessage& message : record.messages) requireText(message.text);
  for (const std::string& reason : record.judgement.reasons) requireText(reason);
  if (!record.input.stream) return;
  const StreamFacts& facts = *record.input.stream;
  for (const std::string* const text :
       {&facts.container, &facts.codec, &facts.profile, &facts.pixelFormat,
        &facts.frameRateFraction, &facts.timeBase, &facts.fieldOrder, &facts.colorRange,
        &facts.colorTransfer, &facts.sampleAspectRatio, &facts.startTimecode}) {
    requireText(*text);
  }
  for (const AudioFacts& audio : facts.audio) requireText(audio.codec + audio.language);
}

// ---- the way of a worker ------------------------------------------------------------------------

// A result, and the rows that were printed on the way.
struct Scan {
  VideoResult result;
  std::string rows;
};

Scan scanOnce(const Asked& asked) {
  // As in a process of its own.
  Results = {};
  restartTemporalIndicators();
  Scan scan;
  int64_t told = 0;
  const auto listen = [&](Stage, double position, int64_t frames) {
    require(position >= 0.0 && position <= 1.0, "progress is a share of the file");
    require(frames == told || frames == told + 1, "progress counts frames");
    told = frames;
  };
  scan.rows = textBy([&](FILE* rows) {
    scan.result = analyseSource(asked.source, asked.options, 1, rows, listen);
  });
  VideoResult& result = scan.result;
  require(told == result.frames.rows(), "progress counts all frames");
  judgeResult(DEFAULT_THRESHOLDS, &result);
  const std::vector<int64_t> wanted =
      framesToShow(result.events, asked.outputs.thumbs, result.frames);
  result.thumbnails = makeThumbnails(asked.source, result.frames, wanted);
  require(result.thumbnails.size() <= wanted.size(), "there are no more pictures than are wanted");
  result.record.outputs = asked.outputs;
  result.record.pictures = static_cast<int64_t>(result.thumbnails.size());
  return scan;
}

void requireCounts(const Scan& scan) {
  const ResultRecord& record = scan.result.record;
  const FrameTable& frames = scan.result.frames;
  require((record.status == Status::FAILED) == (frames.rows() == 0),
          "without a frame it has failed, and only then");
  require((record.status == Status::COMPLETE) == record.error.empty(),
          "what is not complete has a reason");
  require(record.analysis.has_value() == record.input.stream.has_value(),
          "what can be opened is analysed");
  if (!record.analysis) {
    require(scan.rows.empty() && frames.rows() == 0, "what cannot be opened has no rows");
    return;
  }
  int64_t next = frames.firstFrame;
  for (size_t end = scan.rows.find('\n'); end + 1 < scan.rows.size(); ++next) {
    require(std::strtoll(scan.rows.c_str() + end, nullptr, 10) == next, "rows are numbered");
    end = scan.rows.find('\n', end + 1);
  }
  require(next == frames.firstFrame + frames.rows(), "each frame has a printed row");
  const AnalysisFacts& facts = *record.analysis;
  require(facts.frames == frames.rows(), "and is counted");
  require(frames.rows() == 0 || facts.firstFrame == frames.firstFrame, "from the first one on");
  require(facts.corruptFrames >= 0 && facts.corruptFrames <= facts.frames, "some are damaged");
  require(facts.decodeErrors >= 0 && facts.messages >= 0 && facts.messagesBeforeKeyFrame >= 0 &&
              facts.missingAtEnd >= 0,
          "nothing is counted below zero");
  int64_t messages = 0;
  for (const int64_t ofFrame : frames.messages) messages += ofFrame;
  require(frames.rows() == 0 || messages == facts.messages, "messages are those of the frames");
  for (const Column<double>& values : frames.values) {
    for (const double value : values) require(!std::isinf(value), "values are numbers or unknown");
  }
  for (size_t i = 0; i < frames.time.size(); ++i) {
    require(!std::isinf(frames.time[i]) && !std::isinf(frames.duration[i]), "and so are times");
  }
}

// A page's bytes are text in UTF-8, which is what JSON can hold.
void requirePage(const std::string& page) {
  require(!page.empty(), "there is a page");
  bool isText = true;
  try {
    (void)Json(page).dump();
  } catch (const Json::exception&) {
    isText = false;
  }
  require(isText, "a page is text");
  requireText(page);
}

void requireStored(const Scan& scan, const ResultText& text) {
  static const TemporaryDirectory directory;
  const VideoResult& result = scan.result;
  require(storeResult(directory.path, result, nullptr).empty(), "a result can be stored");
  require(Json::accept(readFile(directory.path + "/result.json")), "it is JSON");
  requirePage(readFile(directory.path + "/report.html"));
  require(readThumbnails(directory.path) == result.thumbnails, "its pictures are there");
  VideoResult again;
  require(readResult(directory.path, &again).empty(), "it can be read");
  requireSame(textOfResult(again), text, "when it is read");
  judgeResult(DEFAULT_THRESHOLDS, &again);
  requireSame(textOfResult(again), text, "when it is judged again");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size == 0) return 0;
  av_log_set_level(AV_LOG_QUIET);
  av_max_alloc(MOST_AT_ONCE);
  const Asked asked = choose(data[0], fileOfBytes(data + 1, size - 1));
  const Scan scan = scanOnce(asked);
  requireCounts(scan);
  requireTexts(scan.result.record);
  requireEventsOf(scan.result.frames, DEFAULT_THRESHOLDS, scan.result.events);
  const ResultText text = textOfResult(scan.result);
  requireStored(scan, text);
  const Scan second = scanOnce(asked);
  requireSame(textOfResult(second.result), text, "when it is scanned again");
  require(second.rows == scan.rows, "and so are the printed rows");
  require(second.result.thumbnails == scan.result.thumbnails, "and the pictures");
  return 0;
}
