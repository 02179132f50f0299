#include "contents.h"

#include <algorithm>
#include <cmath>

#include "support/frames.h"

namespace {

using reference::Luma;

uint32_t below(uint32_t limit, uint64_t* random) {
  return nextRandom(random) % limit;
}

uint8_t anyLevel(uint64_t* random) {
  return static_cast<uint8_t>(nextRandom(random));
}

uint8_t clamped(int level) {
  return static_cast<uint8_t>(std::clamp(level, 0, 255));
}

// Sets every sample to level(x, y).
template <typename Level>
void fill(Luma* frame, Level level) {
  for (uint32_t y = 0; y < frame->h; ++y) {
    for (uint32_t x = 0; x < frame->w; ++x) {
      frame->samples[uint64_t{y} * frame->w + x] = static_cast<uint8_t>(level(x, y));
    }
  }
}

// Adds level(old, x, y) in place.
template <typename Level>
void change(Luma* frame, Level level) {
  for (uint32_t y = 0; y < frame->h; ++y) {
    for (uint32_t x = 0; x < frame->w; ++x) {
      uint8_t* sample = &frame->samples[uint64_t{y} * frame->w + x];
      *sample = static_cast<uint8_t>(level(*sample, x, y));
    }
  }
}

void flat(Luma* frame, uint64_t* random) {
  const uint8_t level = anyLevel(random);
  fill(frame, [&](uint32_t, uint32_t) { return level; });
}

void noise(Luma* frame, uint64_t* random) {
  fill(frame, [&](uint32_t, uint32_t) { return anyLevel(random); });
}

void blackAndWhite(Luma* frame, uint64_t* random) {
  fill(frame, [&](uint32_t, uint32_t) { return below(2, random) * 255; });
}

void narrowNoise(Luma* frame, uint64_t* random) {
  const int level = anyLevel(random);
  const uint32_t range = 1 + below(40, random);
  fill(frame, [&](uint32_t, uint32_t) {
    return clamped(level + static_cast<int>(below(range, random)) - static_cast<int>(range / 2));
  });
}

// Means above 181, where the squared total of a 16 x 16 block no longer fits.
void brightNoise(Luma* frame, uint64_t* random) {
  const uint32_t range = 1 + below(75, random);
  fill(frame, [&](uint32_t, uint32_t) { return 255 - below(range, random); });
}

void slope(Luma* frame, uint64_t* random) {
  const uint32_t stepX = below(4, random);
  const uint32_t stepY = below(4, random);
  fill(frame, [&](uint32_t x, uint32_t y) { return x * stepX + y * stepY; });
}

// Soft shapes of several sizes with a little grain, as in a photograph.
void scene(Luma* frame, uint64_t* random) {
  const double periodX = 5 + below(60, random);
  const double periodY = 5 + below(60, random);
  const uint32_t grain = 1 + below(8, random);
  fill(frame, [&](uint32_t x, uint32_t y) {
    const double shape = 60 * std::sin(x / periodX) * std::cos(y / periodY) +
                         30 * std::sin((x + 2.0 * y) / (periodX / 3));
    return clamped(static_cast<int>(120 + shape) + static_cast<int>(below(grain, random)));
  });
}

// Flat tiles of random levels: edges on the grid that the tile size sets.
void tiles(Luma* frame, uint64_t* random) {
  const uint32_t side = 1u << (1 + below(6, random));
  const uint32_t seed = nextRandom(random);
  const uint32_t levels = 2 + below(254, random);
  fill(frame, [&](uint32_t x, uint32_t y) {
    uint64_t tile = seedRandom(seed + x / side * 7919 + y / side * 104729);
    return below(levels, &tile);
  });
}

// A flat frame with one 8 x 8 block that is brighter by a total of 254 to 258, around the 256 at
// which blackout ends.
void nearBlackout(Luma* frame, uint64_t* random) {
  const uint32_t level = below(200, random);
  const uint32_t left = below(frame->w, random) / 8 * 8;
  const uint32_t top = below(frame->h, random) / 8 * 8;
  uint32_t total = 254 + below(5, random);
  fill(frame, [&](uint32_t x, uint32_t y) {
    if (x / 8 * 8 != left || y / 8 * 8 != top) return level;
    const uint32_t more = std::min(total, (x % 8 < 2 || y % 8 > 3) ? 8u : 2u);
    total -= more;
    return level + more;
  });
}

// Lines alternate, with some blocks spared.
void combed(Luma* frame, uint64_t* random) {
  narrowNoise(frame, random);
  const uint32_t seed = nextRandom(random);
  change(frame, [&](uint8_t level, uint32_t x, uint32_t y) {
    uint64_t block = seedRandom(seed + x / 4 + y / 4 * 7919);
    return below(4, &block) == 0 ? level : clamped(level + (y % 2 == 0 ? -25 : 25));
  });
}

// Columns and rows that repeat after 16, with some samples changed.
void repeated(Luma* frame, uint64_t* random) {
  const uint32_t seed = nextRandom(random);
  const uint32_t periodX = below(2, random) == 0 ? 16 : 1000;
  const uint32_t periodY = below(2, random) == 0 ? 16 : 1000;
  const uint32_t flaws = 2 + below(1000, random);
  fill(frame, [&](uint32_t x, uint32_t y) {
    uint64_t sample = seedRandom(seed + x % periodX * 7919 + y % periodY * 104729);
    return below(flaws, random) == 0 ? 0 : below(256, &sample);
  });
}

// Bars of one level at all sides, of different depths.
void barred(Luma* frame, uint64_t* random) {
  scene(frame, random);
  const uint32_t left = below(frame->w / 2 + 1, random);
  const uint32_t top = below(frame->h / 2 + 1, random);
  const uint32_t bottom = below(frame->h / 2 + 1, random);
  change(frame, [&](uint8_t level, uint32_t x, uint32_t y) {
    return x < left || y < top || y >= frame->h - bottom ? 16 : level;
  });
}

// A flat frame with rare samples that differ: little energy, so that single edges stand out.
void sparse(Luma* frame, uint64_t* random) {
  const uint32_t level = below(255, random);
  const uint32_t rarity = 20 + below(2000, random);
  const uint32_t range = 1 + below(255 - level, random);
  fill(frame, [&](uint32_t, uint32_t) {
    return below(rarity, random) == 0 ? level + below(range + 1, random) : level;
  });
}

// Ramps of different widths between two levels: edges whose width is known.
void ramps(Luma* frame, uint64_t* random) {
  const uint32_t period = 20 + below(60, random);
  const uint32_t width = 1 + below(10, random);
  const uint32_t height = below(200, random) / width;
  const uint32_t base = below(50, random);
  fill(frame, [&](uint32_t x, uint32_t) {
    const uint32_t along = x % period;
    return base + height * std::min(along, width) * (x / period % 3 == 0 ? 1 : 0);
  });
}

// Bright strokes of 10 to 14 samples along the 16 x 16 grid of a dark frame: runs around the length
// from which they count.
void gridStrokes(Luma* frame, uint64_t* random) {
  const uint32_t seed = nextRandom(random);
  fill(frame, [&](uint32_t x, uint32_t y) {
    uint64_t cell = seedRandom(seed + x / 16 * 7919 + y / 16 * 104729);
    if (below(8, &cell) != 0) return 20u;
    const uint32_t length = 9 + below(5, &cell);
    const bool isRow = below(2, &cell) == 0;
    const uint32_t along = isRow ? x % 16 : y % 16;
    const uint32_t across = isRow ? y % 16 : x % 16;
    return across == 0 && along < length ? 220u : 20u;
  });
}

struct Content {
  const char* name;
  void (*make)(Luma*, uint64_t*);
};

constexpr Content contents[] = {
    {"flat", flat},
    {"noise", noise},
    {"scene", scene},
    {"blackAndWhite", blackAndWhite},
    {"tiles", tiles},
    {"narrowNoise", narrowNoise},
    {"slope", slope},
    {"brightNoise", brightNoise},
    {"combed", combed},
    {"nearBlackout", nearBlackout},
    {"barred", barred},
    {"repeated", repeated},
    {"sparse", sparse},
    {"ramps", ramps},
    {"gridStrokes", gridStrokes},
};

}  // namespace

int contentCount() {
  return static_cast<int>(std::size(contents));
}

const char* contentName(int content) {
  return contents[content].name;
}

Luma makeContent(int content, uint32_t w, uint32_t h, uint64_t* random) {
  Luma frame = {w, h, std::vector<uint8_t>(uint64_t{w} * h)};
  contents[content].make(&frame, random);
  return frame;
}

Luma nextFrame(const Luma& previous, uint64_t* random) {
  Luma frame = previous;
  const uint32_t seed = nextRandom(random);
  switch (below(6, random)) {
    case 0:
      break;
    case 1:
      frame.samples[below(static_cast<uint32_t>(frame.samples.size()), random)] ^= 1;
      break;
    case 2:
      change(&frame, [&](uint8_t level, uint32_t x, uint32_t y) {
        uint64_t block = seedRandom(seed + x / 8 + y / 8 * 7919);
        return below(3, &block) == 0 ? level ^ 3 : level;
      });
      break;
    case 3:  // a temporal activity of exactly 1
      change(&frame, [](uint8_t level, uint32_t, uint32_t) { return level ^ 1; });
      break;
    case 4:  // the smallest change a block can have
      change(&frame, [&](uint8_t level, uint32_t x, uint32_t y) {
        uint64_t block = seedRandom(seed + x / 8 + y / 8 * 7919);
        return x % 8 == 3 && y % 8 == 5 && below(2, &block) == 0 ? level ^ 1 : level;
      });
      break;
    default:
      return makeContent(static_cast<int>(below(static_cast<uint32_t>(contentCount()), random)),
                         frame.w, frame.h, random);
  }
  return frame;
}
