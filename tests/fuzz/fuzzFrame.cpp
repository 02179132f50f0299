// Any short video: every indicator against its twin and its plain form, the threaded schedule
// against the serial one, values that are not finite only where they are meant to be, and nothing
// written but the requested fields.
//
// The first bytes of the input choose sizes, indicators and content (see InputBytes and
// chooseVideo), the others are samples. Bytes that are missing are 0.
#include <algorithm>
#include <cmath>
#include <cstring>
#include <iterator>
#include <limits>
#include <string>
#include <vector>

#include "composed/composed.h"
#include "driver/frameAnalysis.h"
#include "indicators/results.h"
#include "reference/contents.h"
#include "reference/reference.h"
#include "require.h"
#include "support/frames.h"
#include "support/startAnew.h"

namespace {

using reference::Luma;

// ---- the input ----------------------------------------------------------------------------------

struct InputBytes {
  const uint8_t* next;
  const uint8_t* end;

  size_t left() const { return static_cast<size_t>(end - next); }
  uint8_t byte() { return left() == 0 ? uint8_t{0} : *next++; }
  uint32_t word() {
    const uint32_t low = byte();
    return low | static_cast<uint32_t>(byte()) << 8;
  }
};

struct Video {
  IndicatorMask mask;
  double fps;
  bool usesThreads;
  std::vector<Luma> frames;  // at least one
};

// Bounds that keep one input within milliseconds. A single frame may have two by two whole regions
// of block loss; several frames together have the samples of a period of flickering on 1040 x 8.
constexpr uint32_t MAX_FRAME_SAMPLES = 512 * 512;
constexpr uint32_t MAX_SAMPLES = 75000;
constexpr uint32_t MAX_FRAMES = 18;  // two periods of flickering, and one frame more

// Mostly 1 to 100, now and then past the widths at which rows are taken in pieces.
uint32_t chooseSide(uint32_t word) {
  return 1 + (word < 0xc000 ? word % 100 : word % 1100);
}

// The bytes that are left, over and over, one frame after another.
std::vector<Luma> framesOfBytes(uint32_t w, uint32_t h, uint32_t count, const InputBytes& bytes) {
  std::vector<Luma> frames(count, {w, h, std::vector<uint8_t>(uint64_t{w} * h)});
  if (bytes.left() == 0) return frames;
  size_t position = 0;
  for (Luma& frame : frames) {
    for (uint8_t& sample : frame.samples) sample = bytes.next[position++ % bytes.left()];
  }
  return frames;
}

// Frames of a content and what might follow it. Each three bytes that are left put one sample,
// anywhere in the video, to another level.
std::vector<Luma> framesOfContent(int content, uint32_t w, uint32_t h, uint32_t count,
                                  uint64_t random, InputBytes* bytes) {
  std::vector<Luma> frames = {makeContent(content, w, h, &random)};
  while (frames.size() < count) frames.push_back(nextFrame(frames.back(), &random));
  const uint32_t frameSamples = w * h;
  while (bytes->left() >= 3) {
    const uint32_t position = bytes->word() * 7 % (frameSamples * count);
    frames[position / frameSamples].samples[position % frameSamples] = bytes->byte();
  }
  return frames;
}

Video chooseVideo(InputBytes bytes) {
  constexpr double RATES[] = {25.0, 10.0, 30.0, 29.97, 50.0, 0.0, -5.0, 60.0};
  Video video;
  const uint32_t w = chooseSide(bytes.word());
  const uint32_t h = std::min(chooseSide(bytes.word()), MAX_FRAME_SAMPLES / w);
  video.mask = bytes.word();
  // Blackout ends the process when there is no whole block to look at.
  if (w < 8 || h < 8) video.mask &= ~IndicatorMask{BLACKOUT};
  const uint32_t content = bytes.byte() % static_cast<uint32_t>(contentCount() + 1);
  const uint32_t count = std::clamp(MAX_SAMPLES / (w * h), 1u, 1 + bytes.byte() % MAX_FRAMES);
  const uint8_t flags = bytes.byte();
  video.fps = RATES[flags % std::size(RATES)];
  video.usesThreads = (flags & 0x80) != 0;
  const uint64_t random = seedRandom(bytes.word());
  video.frames = content == 0
                     ? framesOfBytes(w, h, count, bytes)
                     : framesOfContent(static_cast<int>(content) - 1, w, h, count, random, &bytes);
  return video;
}

// ---- the indicators -----------------------------------------------------------------------------

using Condition = bool (*)(const Luma& frame);

bool never(const Luma&) {
  return false;
}
bool always(const Luma&) {
  return true;
}
bool isOneRow(const Luma& frame) {
  return frame.h < 2;
}
bool isOneColumn(const Luma& frame) {
  return frame.w < 2;
}
bool isBelow4(const Luma& frame) {
  return frame.w < 4 || frame.h < 4;
}
bool isNarrow(const Luma& frame) {
  return frame.w < 4;
}
bool isFlat(const Luma& frame) {
  return std::count(frame.samples.begin(), frame.samples.end(), frame.samples[0]) ==
         static_cast<int64_t>(frame.samples.size());
}
bool isBelow34Blocks(const Luma& frame) {
  return (frame.w / 8) * (frame.h / 8) < 34;
}
bool hasStrips(const Luma& frame) {
  return frame.w > 16 && frame.h >= 48;
}

template <double (*TWIN)(const Luma&)>
double ofFrame(const Luma& frame, double) {
  return TWIN(frame);
}

struct Spatial {
  const char* name;
  IndicatorMask bit;
  double FrameResults::*field;
  double (*twin)(const Luma& frame, double before);
  void* (*plainForm)(void*);
  Condition mayBeNaN;
  Condition mayBeInfinite;
};

// All whose value is a number. What is not finite elsewhere than the conditions say is an error.
constexpr Spatial spatial[] = {
    // Infinite: steps inside blocks only.
    {"blockiness", BLOCKINESS, &FrameResults::blockiness, ofFrame<reference::blockiness>,
     composed::blockiness, never, always},
    {"spatial activity", SPATIAL_ACTIVITY, &FrameResults::spatialActivity,
     ofFrame<reference::spatialActivity>, composed::spatialActivity, never, never},
    // 0 / 0: no pair of rows, no pair of columns.
    {"letterbox", LETTERBOX, &FrameResults::letterbox, ofFrame<reference::letterbox>,
     composed::letterbox, isOneRow, never},
    {"pillarbox", PILLARBOX, &FrameResults::pillarbox, ofFrame<reference::pillarbox>,
     composed::pillarbox, isOneColumn, never},
    {"block loss", BLOCK_LOSS, &FrameResults::blockLoss, ofFrame<reference::blockLoss>,
     composed::blockLoss, never, never},
    {"blur", BLUR, &FrameResults::blur, ofFrame<reference::blur>, composed::blur, never, never},
    {"exposure", EXPOSURE, &FrameResults::exposure, ofFrame<reference::exposure>,
     composed::exposure, never, never},
    // The divisor counts whole blocks alone, while a narrow frame's blocks go on in the next row.
    {"interlace", INTERLACE, &FrameResults::interlace, ofFrame<reference::interlace>,
     composed::interlace, isBelow4, isNarrow},
    // NaN: no block has the level found.
    {"noise", NOISE, &FrameResults::noise, ofFrame<reference::noise>, composed::noise, always,
     never},
    // Infinite: a strip repeats sideways and never downwards. NaN: strips that do neither.
    {"slice", SLICE, &FrameResults::slice, reference::slice, composed::slice, hasStrips, hasStrips},
    // NaN: rounding leaves the variance of a flat frame below 0, or there is but one sample.
    {"contrast", CONTRAST, &FrameResults::contrast, ofFrame<reference::contrast>,
     composed::contrastRMS, isFlat, never},
};

struct Row {
  FrameResults spatial;
  TemporalResults temporal;
};

// Values that no indicator gives. Blackout's flag is also read, and stays what it is at the start.
constexpr Row UNTOUCHED = {{-2, -3, -4, -5, -6, -7, -8, -9, -10, -11, -12, 0}, {-13, false, -14}};

bool areSameBits(double a, double b) {
  return std::memcmp(&a, &b, sizeof a) == 0;
}

// Twins do not follow the sign of NaN.
bool areSameValues(double a, double b) {
  return areSameBits(a, b) || (std::isnan(a) && std::isnan(b));
}

void requireAllowed(const char* name, double value, const Luma& frame, Condition mayBeNaN,
                    Condition mayBeInfinite) {
  require(!std::isnan(value) || mayBeNaN(frame), std::string(name) + " is no NaN here");
  require(!std::isinf(value) || mayBeInfinite(frame), std::string(name) + " is finite here");
}

// ---- three ways to the rows of a video ----------------------------------------------------------

Image imageOver(Luma& frame) {
  return makeImage(frame.w, frame.h, frame.samples.data());
}

// Those of the twins, to which the plain forms are held.
std::vector<Row> rowsOfTwins(Video video) {
  composed::Results = UNTOUCHED.spatial;
  endFlickeringPeriod(composed::flickering);
  Row row = UNTOUCHED;
  int32_t still = 0;
  reference::FlickeringState state;
  Image switches = callocImage(video.frames[0].w / 8, video.frames[0].h / 8);
  Image states = callocImage(video.frames[0].w / 8, video.frames[0].h / 8);

  std::vector<Row> rows;
  for (size_t k = 0; k < video.frames.size(); ++k) {
    Luma& frame = video.frames[k];
    Image image = imageOver(frame);
    const bool blackoutBefore = row.spatial.blackout;
    for (const Spatial& indicator : spatial) {
      if ((video.mask & indicator.bit) == 0) continue;
      double* const value = &(row.spatial.*indicator.field);
      *value = indicator.twin(frame, *value);
      requireAllowed(indicator.name, *value, frame, indicator.mayBeNaN, indicator.mayBeInfinite);
      indicator.plainForm(&image);
      require(areSameValues(composed::Results.*indicator.field, *value),
              std::string("plain form is as twin: ") + indicator.name);
    }
    if (video.mask & BLACKOUT) {
      row.spatial.blackout = reference::blackout(frame);
      composed::blackout(&image);
      require(composed::Results.blackout == row.spatial.blackout,
              "plain form is as twin: blackout");
    }
    if (k > 0) {
      Luma& previous = video.frames[k - 1];
      const Image previousImage = imageOver(previous);
      TemporalResults* const temporal = &row.temporal;
      if (video.mask & TEMPORAL_ACTIVITY) {
        temporal->temporalActivity = reference::temporalActivity(frame, previous);
        requireAllowed("temporal activity", temporal->temporalActivity, frame, never, never);
        require(areSameValues(composed::temporalActivity(&image, &previousImage),
                              temporal->temporalActivity),
                "plain form is as twin: temporal activity");
        if (video.mask & FREEZING) {
          temporal->freezing =
              reference::freezing(still, blackoutBefore, temporal->temporalActivity, video.fps);
        }
      }
      if (video.mask & FLICKERING) {
        temporal->flickering = reference::flickering(state, frame, previous);
        requireAllowed("flickering", temporal->flickering, frame, isBelow34Blocks, never);
        require(areSameValues(composed::flickering(&image, &previousImage, &switches, &states),
                              temporal->flickering),
                "plain form is as twin: flickering");
      }
    }
    rows.push_back(row);
  }
  freeImage(&switches);
  freeImage(&states);
  return rows;
}

bool isSameImage(const Image& a, const Image& b) {
  return a.w == b.w && a.h == b.h && a.data == b.data;
}

bool holds(const Image& image, const std::vector<uint8_t>& samples) {
  return std::equal(samples.begin(), samples.end(), image.data);
}

using Schedule = void (*)(IndicatorMask, double, bool, FrameImages*, TemporalResults*);

// Those of the program. Its images have exactly the bytes they need, so that a sanitizer sees every
// access beside them; neither they nor the frames in them are changed.
std::vector<Row> rowsOfProgram(const Video& video, Schedule schedule) {
  restartTemporalIndicators();
  Results = UNTOUCHED.spatial;
  TemporalResults temporal = UNTOUCHED.temporal;
  const uint32_t w = video.frames[0].w;
  const uint32_t h = video.frames[0].h;
  FrameImages images = makeFrameImages(w, h);
  std::vector<uint8_t> previous(uint64_t{w} * h, 0);

  std::vector<Row> rows;
  for (const Luma& frame : video.frames) {
    std::copy(frame.samples.begin(), frame.samples.end(), images.current.data);
    const FrameImages before = images;
    schedule(video.mask, video.fps, !rows.empty(), &images, &temporal);
    require(isSameImage(images.current, before.current) &&
                isSameImage(images.previous, before.previous) &&
                isSameImage(images.switches, before.switches) &&
                isSameImage(images.states, before.states),
            "records of images stay as they are");
    require(holds(images.current, frame.samples), "the frame stays as it is");
    require(holds(images.previous, previous), "the frame before stays as it is");
    rows.push_back({Results, temporal});
    previous = frame.samples;
    swapFrames(&images);
  }
  freeFrameImages(&images);
  return rows;
}

using Sameness = bool (*)(double, double);

void requireSameRows(const std::vector<Row>& rows, const std::vector<Row>& expected, Sameness same,
                     const std::string& which) {
  for (size_t k = 0; k < expected.size(); ++k) {
    const Row& a = rows[k];
    const Row& b = expected[k];
    const auto requireSame = [&](bool isSame, const char* name) {
      require(isSame, which + ": " + name + ", frame " + std::to_string(k));
    };
    for (const Spatial& indicator : spatial) {
      requireSame(same(a.spatial.*indicator.field, b.spatial.*indicator.field), indicator.name);
    }
    requireSame(a.spatial.blackout == b.spatial.blackout, "blackout");
    requireSame(same(a.temporal.temporalActivity, b.temporal.temporalActivity),
                "temporal activity");
    requireSame(a.temporal.freezing == b.temporal.freezing, "freezing");
    requireSame(same(a.temporal.flickering, b.temporal.flickering), "flickering");
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const bool hasSmallStacks = (useSmallStacks(), true);
  static_cast<void>(hasSmallStacks);
  const Video video = chooseVideo({data, data + size});
  const std::vector<Row> serial = rowsOfProgram(video, analyseFrameSerially);
  requireSameRows(serial, rowsOfTwins(video), areSameValues, "serial is as the twins");
  if (video.usesThreads) {
    requireSameRows(rowsOfProgram(video, analyseFrame), serial, areSameBits,
                    "threaded is as serial");
  }
  return 0;
}
