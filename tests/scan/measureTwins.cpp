#include "measureTwins.h"

#include <algorithm>
#include <cstdlib>
#include <vector>

namespace {

// What everything below looks at.
struct TwinInput {
  const Image& frame;
  const Image* previous;
  LumaRange range;
};

int sampleOf(const Image& image, uint64_t x, uint64_t y) {
  return image.data[y * image.w + x];
}

double shareOf(uint64_t count, uint64_t all) {
  return static_cast<double>(count) / static_cast<double>(all);
}

// ---- blocks -------------------------------------------------------------------------------------

// Calls look(x, y) with the upper left corner of every whole block, in the order of reading.
template <typename Look>
void forTwinBlocks(const Image& image, Look look) {
  for (uint64_t y = 0; y + 8 <= image.h; y += 8) {
    for (uint64_t x = 0; x + 8 <= image.w; x += 8) look(x, y);
  }
}

int blockTotal(const Image& image, uint64_t left, uint64_t top) {
  int total = 0;
  for (uint64_t y = top; y < top + 8; ++y) {
    for (uint64_t x = left; x < left + 8; ++x) total += sampleOf(image, x, y);
  }
  return total;
}

// In quarters of a level.
int percentileOf(std::vector<int> means, size_t hundredths) {
  std::sort(means.begin(), means.end());
  size_t i = 0;
  while ((i + 1) * 100 < hundredths * means.size()) ++i;
  return means[i];
}

void twinLevels(const TwinInput& input, MeasureValues* values) {
  uint64_t total = 0;
  uint64_t blocks = 0;
  std::vector<int> quarters;  // the means of every other block
  forTwinBlocks(input.frame, [&](uint64_t x, uint64_t y) {
    const int sum = blockTotal(input.frame, x, y);
    total += static_cast<uint64_t>(sum);
    if (blocks % 2 == 0) quarters.push_back(sum / 16);
    ++blocks;
  });
  values->at(BRIGHTNESS) = shareOf(total, blocks * 64);
  values->at(LOW_LEVEL) = percentileOf(quarters, 5) / 4.0;
  values->at(MIDDLE_LEVEL) = percentileOf(quarters, 50) / 4.0;
  values->at(HIGH_LEVEL) = percentileOf(quarters, 95) / 4.0;
}

void twinDarkAndBright(const TwinInput& input, MeasureValues* values) {
  uint64_t blocks = 0;
  uint64_t darkBlocks = 0;
  uint64_t dark = 0;
  uint64_t bright = 0;
  forTwinBlocks(input.frame, [&](uint64_t left, uint64_t top) {
    uint64_t darkHere = 0;
    for (uint64_t y = top; y < top + 8; y += 2) {
      for (uint64_t x = left; x < left + 8; ++x) {
        if (sampleOf(input.frame, x, y) <= input.range.black + 24) ++darkHere;
      }
    }
    for (uint64_t y = top; y < top + 8; y += 4) {
      for (uint64_t x = left; x < left + 8; ++x) {
        if (sampleOf(input.frame, x, y) >= input.range.white - 5) ++bright;
      }
    }
    dark += darkHere;
    if (darkHere >= 31) ++darkBlocks;
    ++blocks;
  });
  values->at(DARK_SHARE) = shareOf(dark, blocks * 32);
  values->at(DARK_BLOCKS) = shareOf(darkBlocks, blocks);
  values->at(BRIGHT_SHARE) = shareOf(bright, blocks * 16);
}

void twinChanges(const TwinInput& input, MeasureValues* values) {
  const Image& before = *input.previous;
  uint64_t blocks = 0;
  uint64_t unchanged = 0;
  uint64_t changed = 0;
  uint64_t brighter = 0;
  uint64_t darker = 0;
  forTwinBlocks(input.frame, [&](uint64_t left, uint64_t top) {
    int change = 0;
    for (uint64_t y = top; y < top + 8; y += 2) {
      for (uint64_t x = left; x < left + 8; ++x) {
        change += std::min(7, std::abs(sampleOf(input.frame, x, y) - sampleOf(before, x, y)));
      }
    }
    const int rise = blockTotal(input.frame, left, top) - blockTotal(before, left, top);
    if (change < 8) ++unchanged;
    if (change >= 32) ++changed;
    if (rise >= 64) ++brighter;
    if (rise <= -64) ++darker;
    ++blocks;
  });
  values->at(UNCHANGED_BLOCKS) = shareOf(unchanged, blocks);
  values->at(CHANGED_BLOCKS) = shareOf(changed, blocks);
  values->at(BRIGHTER_BLOCKS) = shareOf(brighter, blocks);
  values->at(DARKER_BLOCKS) = shareOf(darker, blocks);
}

bool isTwinColumnCombed(const TwinInput& input, uint64_t x, uint64_t top) {
  int lines[4];
  for (uint64_t i = 0; i < 4; ++i) lines[i] = sampleOf(input.frame, x, top + i);
  bool isMoving = false;
  for (uint64_t i = 1; i <= 2; ++i) {
    if (std::abs(lines[i] - sampleOf(*input.previous, x, top + i)) >= 8) isMoving = true;
  }
  bool isAbove = true;
  bool isBelow = true;
  for (const int even : {lines[0], lines[2]}) {
    for (const int odd : {lines[1], lines[3]}) {
      if (even - odd < 8) isAbove = false;
      if (odd - even < 8) isBelow = false;
    }
  }
  return isMoving && (isAbove || isBelow);
}

void twinCombing(const TwinInput& input, MeasureValues* values) {
  uint64_t blocks = 0;
  uint64_t combed = 0;
  forTwinBlocks(input.frame, [&](uint64_t left, uint64_t top) {
    int columns = 0;
    for (uint64_t x = left; x < left + 8; ++x) {
      if (isTwinColumnCombed(input, x, top)) ++columns;
    }
    if (columns >= 2) ++combed;
    ++blocks;
  });
  values->at(COMBED_BLOCKS) = shareOf(combed, blocks);
}

// ---- bars ---------------------------------------------------------------------------------------

// The share of lines that a bar at the edge has, counted from the edge on. sample(line, i) is the
// i-th sample of the line.
template <typename Sample>
double twinBar(uint64_t lines, uint64_t length, int black, Sample sample) {
  uint64_t total = 0;
  for (uint64_t i = 0; i < length; ++i) {
    total += static_cast<uint64_t>(sample(0, i)) + static_cast<uint64_t>(sample(1, i));
  }
  const auto level = static_cast<int>(total / (2 * length));
  if (level > black + 24) return 0.0;
  uint64_t line = 0;
  for (; line < lines / 2; ++line) {
    uint64_t near = 0;
    for (uint64_t i = 0; i < length; ++i) {
      if (std::abs(sample(line, i) - level) <= 10) ++near;
    }
    if (near * 10 < length * 7) break;
  }
  return shareOf(line, lines);
}

void twinBars(const TwinInput& input, MeasureValues* values) {
  const Image& frame = input.frame;
  const int black = input.range.black;
  values->at(BAR_TOP) = twinBar(
      frame.h, frame.w, black, [&](uint64_t line, uint64_t i) { return sampleOf(frame, i, line); });
  values->at(BAR_BOTTOM) = twinBar(frame.h, frame.w, black, [&](uint64_t line, uint64_t i) {
    return sampleOf(frame, i, frame.h - 1 - line);
  });
  values->at(BAR_LEFT) = twinBar(
      frame.w, frame.h, black, [&](uint64_t line, uint64_t i) { return sampleOf(frame, line, i); });
  values->at(BAR_RIGHT) = twinBar(frame.w, frame.h, black, [&](uint64_t line, uint64_t i) {
    return sampleOf(frame, frame.w - 1 - line, i);
  });
}

// ---- lines --------------------------------------------------------------------------------------

std::vector<uint64_t> summedColumns(uint64_t w) {
  std::vector<uint64_t> columns;
  // One more column follows each group.
  for (uint64_t first = w < 128 ? 0 : 64; first + 32 < w; first += 128) {
    for (uint64_t x = first; x < first + 32; ++x) columns.push_back(x);
  }
  return columns;
}

int64_t stepOf(const Image& image, const std::vector<uint64_t>& columns, uint64_t y) {
  int64_t step = 0;
  for (const uint64_t x : columns) {
    step += std::abs(sampleOf(image, x, y) - sampleOf(image, x, y - 1));
  }
  return step;
}

int64_t detailOf(const Image& image, const std::vector<uint64_t>& columns, uint64_t y) {
  int64_t detail = 0;
  for (const uint64_t x : columns) {
    detail += std::abs(sampleOf(image, x, y) - sampleOf(image, x + 1, y));
  }
  return detail;
}

double twinHeldLines(const Image& frame) {
  const std::vector<uint64_t> columns = summedColumns(frame.w);
  if (columns.empty()) return 0.0;
  const auto samples = static_cast<int64_t>(columns.size());
  uint64_t run = 0;
  uint64_t longest = 0;
  for (uint64_t y = 1; y < frame.h; ++y) {
    const int64_t step = stepOf(frame, columns, y);
    const int64_t detail = detailOf(frame, columns, y);
    const bool isRepeated = step <= samples && step <= detail / 8 && detail >= 2 * samples;
    run = isRepeated ? run + 1 : 0;
    longest = std::max(longest, run);
  }
  return shareOf(longest, frame.h);
}

double twinLineStep(const Image& frame, const Image& before) {
  const std::vector<uint64_t> columns = summedColumns(frame.w);
  if (columns.empty()) return 0.0;
  // Of each line but the first, which is never asked for.
  std::vector<int64_t> steps(frame.h);
  std::vector<int64_t> stepsBefore(frame.h);
  for (uint64_t y = 1; y < frame.h; ++y) {
    steps[y] = stepOf(frame, columns, y);
    stepsBefore[y] = stepOf(before, columns, y);
  }
  int64_t most = 0;
  for (uint64_t y = 4; y + 4 <= frame.h; ++y) {
    int64_t others = 0;
    for (uint64_t i = 1; i <= 3; ++i) others = std::max({others, steps[y - i], steps[y + i]});
    for (uint64_t line = y - 1; line <= y + 1; ++line) {
      others = std::max(others, stepsBefore[line]);
    }
    most = std::max(most, steps[y] - others);
  }
  return static_cast<double>(most) / static_cast<double>(columns.size());
}

// ---- the grid -----------------------------------------------------------------------------------

// Of eight columns, between this line and the one above.
int stepAcross(const Image& image, uint64_t left, uint64_t y) {
  int step = 0;
  for (uint64_t x = left; x < left + 8; ++x) {
    step += std::min(31, std::abs(sampleOf(image, x, y) - sampleOf(image, x, y - 1)));
  }
  return step;
}

int edgeStrength(const Image& image, uint64_t left, uint64_t y) {
  return stepAcross(image, left, y) -
         std::max(stepAcross(image, left, y - 1), stepAcross(image, left, y + 1));
}

double twinGridEdges(const Image& frame, const Image& before) {
  uint64_t edges = 0;
  uint64_t fresh = 0;
  for (uint64_t y = 16; y + 16 <= frame.h; y += 16) {
    for (uint64_t x = 0; x + 16 <= frame.w; x += 16) {
      const int strength = edgeStrength(frame, x, y);
      if (strength >= 64 && strength >= 2 * edgeStrength(before, x, y)) ++fresh;
      ++edges;
    }
  }
  return shareOf(fresh, edges);
}

}  // namespace

MeasureValues slowMeasures(const Image& frame, const Image* previous, LumaRange range) {
  const TwinInput input = {frame, previous, range};
  const bool hasBlocks = frame.w >= 8 && frame.h >= 8;
  MeasureValues values = NO_MEASURES;
  if (hasBlocks) {
    twinLevels(input, &values);
    twinDarkAndBright(input, &values);
  }
  if (frame.w >= 2 && frame.h >= 2) twinBars(input, &values);
  values[HELD_LINES] = twinHeldLines(frame);
  if (previous == nullptr) return values;
  if (hasBlocks) {
    twinChanges(input, &values);
    twinCombing(input, &values);
  }
  values[LINE_STEP] = twinLineStep(frame, *previous);
  if (frame.w >= 16 && frame.h >= 32) values[GRID_EDGES] = twinGridEdges(frame, *previous);
  return values;
}
