// Times every whole-image operation, every indicator and both schedules of a frame, on frames of
// the scene. Times are those of the clock on the wall; "cycles" are ticks of the x86 time stamp
// counter, which runs at one constant rate whatever the speed of the core, and are left out
// elsewhere.
#include <benchmark/benchmark.h>
#include <pthread.h>

#include <chrono>
#include <cstring>
#include <initializer_list>
#include <map>
#include <string>
#ifdef __x86_64__
#include <x86intrin.h>
#endif

#include "definitions/definitions.h"
#include "driver/frameAnalysis.h"
#include "indicators/blackout.h"
#include "indicators/blockLoss.h"
#include "indicators/blockiness.h"
#include "indicators/blur.h"
#include "indicators/contrastRMS.h"
#include "indicators/exposure.h"
#include "indicators/flickering.h"
#include "indicators/freezing.h"
#include "indicators/interlace.h"
#include "indicators/letterbox.h"
#include "indicators/noise.h"
#include "indicators/pillarbox.h"
#include "indicators/slice.h"
#include "indicators/spatialActivity.h"
#include "indicators/temporalActivity.h"
#include "scene.h"

namespace {

constexpr double FPS = 25.0;
constexpr IndicatorMask ALL = 0x7fff;
constexpr int SPATIAL_INDICATORS = 12;

struct Size {
  int w;
  int h;
};

constexpr Size SIZES[] = {{352, 288}, {1920, 1080}, {3840, 2160}};

// What the operations read and write, for one size of frame. It lives until the process ends.
struct Workspace {
  FrameImages frames;         // two frames of the scene
  Image32 x, y, energy;       // of the current frame: Roberts cross, sum of its squares
  Image32 integral;           // of the current frame
  ImageDouble real, divisor;  // the energy, and the same plus 1
  ImageDouble kernel;         // 3 x 3
  Image copy;                 // of the current frame
  Image bytesOut, bytesOut2;  // outputs, and memory for the block images below
  Image32 wordsOut, wordsOut2;
  ImageDouble realOut, realOut2, realOut3;
};

void renderInto(Image* image, int time) {
  const Frame frame = renderScene(time, static_cast<int>(image->w), static_cast<int>(image->h));
  std::memcpy(image->data, frame.luma.data(), frame.luma.size());
}

Workspace makeWorkspace(const Size& size) {
  const uint32_t w = static_cast<uint32_t>(size.w);
  const uint32_t h = static_cast<uint32_t>(size.h);
  Workspace s;
  s.frames = makeFrameImages(w, h);
  s.kernel = callocImageDouble(3, 3);
  for (Image* bytes : {&s.copy, &s.bytesOut, &s.bytesOut2}) *bytes = callocImage(w, h);
  for (Image32* words : {&s.x, &s.y, &s.energy, &s.integral, &s.wordsOut, &s.wordsOut2}) {
    *words = callocImage32(w, h);
  }
  for (ImageDouble* reals : {&s.real, &s.divisor, &s.realOut, &s.realOut2, &s.realOut3}) {
    *reals = callocImageDouble(w, h);
  }
  renderInto(&s.frames.previous, 0);
  renderInto(&s.frames.current, 1);
  roberts(&s.frames.current, &s.x, &s.y);
  addSquares32(&s.x, &s.y, &s.energy);
  integrate(&s.frames.current, &s.integral);
  onlyCopy(&s.frames.current, &s.copy);
  for (uint64_t i = 0; i < uint64_t{w} * h; ++i) {
    s.real.data[i] = s.energy.data[i];
    s.divisor.data[i] = s.energy.data[i] + 1.0;
  }
  for (int i = 0; i < 9; ++i) s.kernel.data[i] = 1.0 / 9.0;
  return s;
}

Workspace& workspaceOf(const Size& size) {
  static std::map<int, Workspace> made;  // by width
  const auto [place, isNew] = made.try_emplace(size.w);
  if (isNew) place->second = makeWorkspace(size);
  return place->second;
}

// Block images of edge x edge samples, zero-filled as the operations want them: part of their time.
Image32 blocksIn(const Image32& memory, uint64_t edge) {
  const Image32 blocks = makeImage32(memory.w / edge, memory.h / edge, memory.data);
  std::memset(blocks.data, 0, blocks.w * blocks.h * sizeof *blocks.data);
  return blocks;
}

ImageDouble blocksIn(const ImageDouble& memory, uint64_t edge) {
  const ImageDouble blocks = makeImageDouble(memory.w / edge, memory.h / edge, memory.data);
  std::memset(blocks.data, 0, blocks.w * blocks.h * sizeof *blocks.data);
  return blocks;
}

// Times `kernel` at every size.
//
// bytesPerPixel   what it must read and write at least once, block images left out.
void add(const std::string& name, double bytesPerPixel, void (*kernel)(Workspace&)) {
  for (const Size& size : SIZES) {
    const std::string title = name + "/" + std::to_string(size.w) + "x" + std::to_string(size.h);
    const double pixels = static_cast<double>(size.w) * size.h;
    const auto time = [=](benchmark::State& state) {
      Workspace& workspace = workspaceOf(size);
      kernel(workspace);  // the first run pays for the memory that it is the first to touch
      const auto start = std::chrono::steady_clock::now();
#ifdef __x86_64__
      const uint64_t startTicks = __rdtsc();
#endif
      for (auto _ : state) kernel(workspace);
      const double total = pixels * static_cast<double>(state.iterations());
#ifdef __x86_64__
      state.counters["cycles/pixel"] = static_cast<double>(__rdtsc() - startTicks) / total;
#endif
      const std::chrono::duration<double, std::nano> wall =
          std::chrono::steady_clock::now() - start;
      state.counters["ns/pixel"] = wall.count() / total;
      state.SetBytesProcessed(static_cast<int64_t>(bytesPerPixel * total));
    };
    benchmark::RegisterBenchmark(title.c_str(), time)->Unit(benchmark::kMicrosecond)->UseRealTime();
  }
}

void addImages() {
  add("onlyCopy", 2, [](Workspace& s) { onlyCopy(&s.frames.current, &s.bytesOut); });
  add("areEqual", 2, [](Workspace& s) { areEqual(&s.frames.current, &s.copy); });
  add("convU8toI32", 5, [](Workspace& s) { convU8toI32(&s.frames.current, &s.wordsOut); });
  add("convI32toU8", 5, [](Workspace& s) { convI32toU8(&s.x, &s.bytesOut); });
}

void addSums() {
  add("sumPixels32", 4, [](Workspace& s) { sumPixels32(&s.energy); });
  add("sumPixels", 1, [](Workspace& s) { sumPixels(&s.frames.current); });
  add("sumH", 1, [](Workspace& s) {
    const Image& frame = s.frames.current;
    sumH(frame.data, static_cast<uint32_t>(frame.w), static_cast<uint32_t>(frame.h));
  });
  add("sumV", 1, [](Workspace& s) {
    const Image& frame = s.frames.current;
    sumV(frame.data, static_cast<int32_t>(frame.w), static_cast<int32_t>(frame.h));
  });
  add("blockSums8x8", 1, [](Workspace& s) {
    Image32 sums = blocksIn(s.wordsOut, 8);
    blockSums(&s.frames.current, &sums, 8, 8);
  });
  add("sumAndSquareSum", 1, [](Workspace& s) {
    int32_t sum;
    int64_t squareSum;
    sumAndSquareSum(&s.frames.current, &sum, &squareSum);
  });
  add("integrate", 5, [](Workspace& s) { integrate(&s.frames.current, &s.wordsOut); });
  add("blockSumsInteg8x8", 4.0 / 64, [](Workspace& s) {
    Image32 sums = blocksIn(s.wordsOut, 8);
    blockSumsInteg(&s.integral, &sums, 8, 8);
  });
  add("blockSumsInteg2_8x8", 1.0 / 64, [](Workspace& s) {
    Image32 sums = blocksIn(s.wordsOut, 8);
    blockSumsInteg2(&s.frames.current, &sums, 8, 8);
  });
}

template <uint64_t edge>
void stdDevsOfBlocks(Workspace& s) {
  Image32 sums = blocksIn(s.wordsOut, edge);
  Image32 squareSums = blocksIn(s.wordsOut2, edge);
  ImageDouble stdDevs = blocksIn(s.realOut, edge);
  calculateStdDevs(&s.frames.current, &sums, &squareSums, &stdDevs, edge, edge);
}

void addDeviations() {
  add("calculateStdDevs8x8", 1, stdDevsOfBlocks<8>);
  add("calculateStdDevs16x16", 1, stdDevsOfBlocks<16>);
  add("calculateStdDevsDouble_ommitZeros8x8", 8, [](Workspace& s) {
    ImageDouble sums = blocksIn(s.realOut, 8);
    ImageDouble squareSums = blocksIn(s.realOut2, 8);
    ImageDouble stdDevs = blocksIn(s.realOut3, 8);
    calculateStdDevsDouble_ommitZeros(&s.real, &sums, &squareSums, &stdDevs, &s.kernel, 8, 8);
  });
}

void addGradients() {
  add("gradient", 9, [](Workspace& s) { gradient(&s.frames.current, &s.wordsOut, &s.wordsOut2); });
  add("absGradient", 9,
      [](Workspace& s) { absGradient(&s.frames.current, &s.wordsOut, &s.wordsOut2); });
  add("roberts", 9, [](Workspace& s) { roberts(&s.frames.current, &s.wordsOut, &s.wordsOut2); });
  // As block loss looks at the grid: every 16th row, and every 16th column.
  add("robertsSkip1x16", 10.0 / 16, [](Workspace& s) {
    Image32 x = makeImage32(s.x.w, s.x.h / 16, s.wordsOut.data);
    Image32 y = makeImage32(s.x.w, s.x.h / 16, s.wordsOut2.data);
    robertsSkip(&s.frames.current, &x, &y, 1, 16);
  });
  add("robertsSkip16x1", 10.0 / 16, [](Workspace& s) {
    Image32 x = makeImage32(s.x.w / 16, s.x.h, s.wordsOut.data);
    Image32 y = makeImage32(s.x.w / 16, s.x.h, s.wordsOut2.data);
    robertsSkip(&s.frames.current, &x, &y, 16, 1);
  });
  add("sobel", 9, [](Workspace& s) { sobel(&s.frames.current, &s.wordsOut, &s.wordsOut2); });
  add("sobel2", 3, [](Workspace& s) { sobel2(&s.frames.current, &s.bytesOut, &s.bytesOut2); });
}

void addArithmetic() {
  add("addSquares32", 12, [](Workspace& s) { addSquares32(&s.x, &s.y, &s.wordsOut); });
  add("multiply", 12, [](Workspace& s) { multiply(&s.x, &s.y, &s.wordsOut); });
  add("divideDouble", 24, [](Workspace& s) { divideDouble(&s.real, &s.divisor, &s.realOut); });
  add("divide", 16, [](Workspace& s) { divide(&s.energy, &s.integral, &s.realOut); });
  add("addSquares", 6,
      [](Workspace& s) { addSquares(&s.frames.current, &s.frames.previous, &s.wordsOut); });
  add("imageSqrt", 16, [](Workspace& s) { imageSqrt(&s.real, &s.realOut); });
}

// The threshold and the length are near those of block loss.
void addRuns() {
  add("countSeqsH16x16", 4, [](Workspace& s) {
    Image32 counts = blocksIn(s.wordsOut, 16);
    countSeqsH(&s.energy, &counts, 16, 16, 12, 500.0);
  });
  add("countSeqsV16x16", 4, [](Workspace& s) {
    Image32 counts = blocksIn(s.wordsOut, 16);
    Image32 lengths = makeImage32(s.x.w, 1, s.wordsOut2.data);
    std::memset(lengths.data, 0, lengths.w * sizeof *lengths.data);
    countSeqsV(&s.energy, &counts, &lengths, 16, 16, 12, 500.0);
  });
  add("tempCountSeqsH", 4, [](Workspace& s) { tempCountSeqsH(&s.energy, 0, 500, 0, 0, 12); });
}

void addFilter() {
  add("filter3x3", 9, [](Workspace& s) {
    const Image& frame = s.frames.current;
    filter(&frame, &s.realOut, &s.kernel, 1, static_cast<uint32_t>(frame.w),
           static_cast<uint32_t>(frame.h));
  });
}

void addIndicators() {
  add("blockiness", 1, [](Workspace& s) { blockiness(&s.frames.current); });
  add("spatialActivity", 1, [](Workspace& s) { spatialActivity(&s.frames.current); });
  add("letterbox", 1, [](Workspace& s) { letterbox(&s.frames.current); });
  add("pillarbox", 1, [](Workspace& s) { pillarbox(&s.frames.current); });
  add("blockLoss", 1, [](Workspace& s) { blockLoss(&s.frames.current); });
  add("blur", 1, [](Workspace& s) { blur(&s.frames.current); });
  add("temporalActivity", 2,
      [](Workspace& s) { temporalActivity(&s.frames.current, &s.frames.previous); });
  add("blackout", 1, [](Workspace& s) { blackout(&s.frames.current); });
  add("freezing", 0, [](Workspace&) { benchmark::DoNotOptimize(freezing(0, 13.0, FPS)); });
  add("exposure", 1, [](Workspace& s) { exposure(&s.frames.current); });
  add("contrastRMS", 1, [](Workspace& s) { contrastRMS(&s.frames.current); });
  add("interlace", 1, [](Workspace& s) { interlace(&s.frames.current); });
  add("noise", 1, [](Workspace& s) { noise(&s.frames.current); });
  add("slice", 1, [](Workspace& s) { slice(&s.frames.current); });
  add("flickering", 2, [](Workspace& s) {
    FrameImages& f = s.frames;
    flickering(&f.current, &f.previous, &f.switches, &f.states);
  });
}

void* idle(void*) {
  return nullptr;
}

void makeAndJoinThreads(Workspace&) {
  pthread_t threads[SPATIAL_INDICATORS];
  for (pthread_t& thread : threads) pthread_create(&thread, nullptr, idle, nullptr);
  for (const pthread_t& thread : threads) pthread_join(thread, nullptr);
}

// All fifteen on one frame, and what the threads alone cost.
void addSchedules() {
  static TemporalResults temporal;
  add("analyseFrame", 2, [](Workspace& s) { analyseFrame(ALL, FPS, true, &s.frames, &temporal); });
  add("analyseFrameSerially", 2,
      [](Workspace& s) { analyseFrameSerially(ALL, FPS, true, &s.frames, &temporal); });
  add("twelveIdleThreads", 0, makeAndJoinThreads);
}

}  // namespace

int main(int argc, char** argv) {
  useSmallStacks();  // as the program does
  addImages();
  addSums();
  addDeviations();
  addGradients();
  addArithmetic();
  addRuns();
  addFilter();
  addIndicators();
  addSchedules();
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
