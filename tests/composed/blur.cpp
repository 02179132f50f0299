// Mean width of horizontal edges: finds the samples at which the horizontal gradient is strong and
// at a local maximum, and walks from each along its row, to both sides, for as long as the gradient
// keeps its sign and stays above a small local threshold.
#include "composed/composed.h"

#include <cmath>
#include <cstdlib>
#include <initializer_list>

#include "definitions/definitions.h"

namespace composed {

namespace {

constexpr uint32_t BLUR_BLOCKSIZE = 16;        // samples; blocks of the local threshold
constexpr double GLOBAL_FACTOR = 16.0;         // edges, in mean squared gradients of the frame
constexpr double LOCAL_FACTOR = 0.0009765625;  // 1/1024 of the block's deviation

// Horizontal and vertical differences and the square of the former, w samples to a row.
struct Gradients {
  const int32_t* x;
  const int32_t* y;
  const int32_t* squareX;
  int64_t w;
};

// Whether sample c is the crest of an edge. The vertical test does not ask which direction the edge
// has: it is meant so.
bool isEdge(const Gradients& g, int64_t c, double globalThreshold) {
  const int32_t* square = g.squareX + c;
  if (!(square[0] > globalThreshold)) return false;
  const bool crestInRow =
      std::abs(g.x[c]) >= std::abs(g.y[c]) && square[-1] <= square[0] && square[0] > square[1];
  const bool crestInColumn = square[-g.w] <= square[0] && square[0] > square[g.w];
  return crestInRow || crestInColumn;
}

// Position of the last sample to the right, from c on, before the gradient falls to the threshold;
// one less when the walk ends at the row's last sample.
int64_t rightEnd(const Gradients& g, int64_t c, int64_t y, int32_t sign, double threshold) {
  const int64_t end = (y + 1) * g.w - 2;
  int64_t j = c;
  while (sign * g.x[j + 1] > threshold && j < end) ++j;
  return j;
}

// Position of the first sample to the left that is not above the threshold; c itself when c is not.
int64_t leftEnd(const Gradients& g, int64_t c, int64_t y, int32_t sign, double threshold) {
  const int64_t start = y * g.w + 1;
  int64_t i = c;
  while (i > start && sign * g.x[i] > threshold) --i;
  return i;
}

}  // namespace

void* blur(void* luma) {
  const Image* frame = static_cast<const Image*>(luma);
  const uint64_t w = frame->w;
  const uint64_t h = frame->h;
  const uint64_t blocksW = w / BLUR_BLOCKSIZE;
  const uint64_t blocksH = h / BLUR_BLOCKSIZE;
  if (blocksW == 0 || blocksH == 0) {
    Results.blur = 0.0;
    return nullptr;
  }

  Image32 sums = callocImage32(blocksW, blocksH);
  Image32 squareSums = callocImage32(blocksW, blocksH);
  ImageDouble stdDevs = callocImageDouble(blocksW, blocksH);
  Image32 gradientX = callocImage32(w, h);
  Image32 gradientY = callocImage32(w, h);
  Image32 squares = callocImage32(w, h);

  calculateStdDevs(frame, &sums, &squareSums, &stdDevs, BLUR_BLOCKSIZE, BLUR_BLOCKSIZE);
  gradient(frame, &gradientX, &gradientY);
  multiply(&gradientX, &gradientX, &squares);
  const double meanSquare = static_cast<double>(sumPixels32(&squares)) /
                            (static_cast<double>(h) * static_cast<double>(w));
  const double globalThreshold = meanSquare * GLOBAL_FACTOR;

  const Gradients g = {gradientX.data, gradientY.data, squares.data, static_cast<int64_t>(w)};
  uint32_t widthSum = 0;
  uint32_t edges = 0;
  for (uint64_t y = 1; y <= blocksH * BLUR_BLOCKSIZE - 2; ++y) {
    const double* deviations = stdDevs.data + y / BLUR_BLOCKSIZE * blocksW;
    for (uint64_t x = 1; x <= blocksW * BLUR_BLOCKSIZE - 2; ++x) {
      const int64_t c = static_cast<int64_t>(y * w + x);
      if (!isEdge(g, c, globalThreshold)) continue;
      const int32_t sign = g.x[c] < 0 || g.x[c + 1] < 0 ? -1 : 1;
      const double threshold = deviations[x / BLUR_BLOCKSIZE] * LOCAL_FACTOR;
      const int64_t row = static_cast<int64_t>(y);
      widthSum += static_cast<uint32_t>(rightEnd(g, c, row, sign, threshold) -
                                        leftEnd(g, c, row, sign, threshold));
      ++edges;
    }
  }

  for (Image32* scratch : {&sums, &squareSums, &gradientX, &gradientY, &squares}) {
    freeImage32(scratch);
  }
  freeImageDouble(&stdDevs);

  // Both counts are signed 32-bit numbers.
  Results.blur = widthSum == 0 ? 0.0
                               : static_cast<double>(static_cast<int32_t>(widthSum)) /
                                     static_cast<double>(static_cast<int32_t>(edges));
  return nullptr;
}

}  // namespace composed
