// Lost blocks leave long, straight, strong edges exactly on the 16 x 16 grid, in both directions.
//
// An edge sample is strong when its Roberts energy exceeds six times the mean of the frame. Runs of
// 12 strong samples are counted along grid rows and along grid columns, in every whole 256 x 256
// region, and a region scores the product: damage has both, a horizon or a door frame has not.
#include "composed/composed.h"

#include <initializer_list>

#include "definitions/definitions.h"

namespace composed {

namespace {

constexpr uint32_t GRID = 16;     // samples between grid lines
constexpr uint32_t REGION = 256;  // samples; edge of the square in which runs are multiplied
constexpr uint32_t REGION_LINES = REGION / GRID;
constexpr uint32_t MIN_RUN = 12;         // samples; most of one block's edge
constexpr double STRENGTH_FACTOR = 6.0;  // strong edges, in mean energies of the frame

}  // namespace

void* blockLoss(void* luma) {
  const Image* frame = static_cast<const Image*>(luma);
  const uint32_t w = static_cast<uint32_t>(frame->w);
  const uint32_t h = static_cast<uint32_t>(frame->h);
  if (w < REGION || h < REGION) {
    Results.blockLoss = -1.0;
    return gaveUp();
  }

  Image32 rowX = callocImage32(w, h / GRID);
  Image32 rowY = callocImage32(w, h / GRID);
  Image32 rowEnergy = callocImage32(w, h / GRID);
  Image32 columnX = callocImage32(w / GRID, h);
  Image32 columnY = callocImage32(w / GRID, h);
  Image32 columnEnergy = callocImage32(w / GRID, h);
  Image32 fullX = callocImage32(w, h);
  Image32 fullY = callocImage32(w, h);
  Image32 fullEnergy = callocImage32(w, h);
  Image32 horizontalRuns = callocImage32(w / REGION, h / REGION);
  Image32 verticalRuns = callocImage32(w / REGION, h / REGION);
  Image32 runLengths = callocImage32(w, 1);
  Image32 scores = callocImage32(w / REGION, h / REGION);

  robertsSkip(frame, &rowX, &rowY, 1, GRID);
  robertsSkip(frame, &columnX, &columnY, GRID, 1);
  roberts(frame, &fullX, &fullY);
  addSquares32(&rowX, &rowY, &rowEnergy);
  addSquares32(&columnX, &columnY, &columnEnergy);
  addSquares32(&fullX, &fullY, &fullEnergy);

  const double samples = h * w;
  const double threshold =
      static_cast<double>(sumPixels32(&fullEnergy)) / samples * STRENGTH_FACTOR;
  countSeqsH(&rowEnergy, &horizontalRuns, REGION, REGION_LINES, MIN_RUN, threshold);
  countSeqsV(&columnEnergy, &verticalRuns, &runLengths, REGION_LINES, REGION, MIN_RUN, threshold);
  multiply(&horizontalRuns, &verticalRuns, &scores);
  const double result =
      static_cast<double>(sumPixels32(&scores)) / static_cast<double>(scores.w * scores.h);

  for (Image32* scratch :
       {&rowX, &rowY, &rowEnergy, &columnX, &columnY, &columnEnergy, &fullX, &fullY, &fullEnergy,
        &horizontalRuns, &verticalRuns, &runLengths, &scores}) {
    freeImage32(scratch);
  }
  Results.blockLoss = result;
  return nullptr;
}

}  // namespace composed
