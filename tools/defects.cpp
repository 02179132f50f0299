// One small function per kind of damage, and the table that says which frames it strikes.
#include "defects.h"

#include <algorithm>

namespace {

constexpr uint8_t BLACK = 16;
constexpr int MACROBLOCK = 16;

void fill(Frame& frame, int x0, int y0, int w, int h, uint8_t value) {
  for (int y = y0; y < y0 + h; ++y) {
    for (int x = x0; x < x0 + w; ++x) at(frame, x, y) = value;
  }
}

void black(Frame& frame, int, int) {
  fill(frame, 0, 0, frame.w, frame.h, BLACK);
}

void freeze(Frame& frame, int, int first) {
  frame = renderScene(first - 1, frame.w, frame.h);
}

void letterbox(Frame& frame, int, int) {
  const int bar = frame.h / 8;
  fill(frame, 0, 0, frame.w, bar, BLACK);
  fill(frame, 0, frame.h - bar, frame.w, bar, BLACK);
}

void pillarbox(Frame& frame, int, int) {
  const int bar = frame.w / 8;
  fill(frame, 0, 0, bar, frame.h, BLACK);
  fill(frame, frame.w - bar, 0, bar, frame.h, BLACK);
}

// Keeps the mean of every 8x8 block and little of its detail, like a coarse quantiser.
void coarseCoding(Frame& frame, int, int) {
  for (int y0 = 0; y0 < frame.h; y0 += 8) {
    for (int x0 = 0; x0 < frame.w; x0 += 8) {
      const int y1 = std::min(y0 + 8, frame.h);
      const int x1 = std::min(x0 + 8, frame.w);
      int sum = 0;
      for (int y = y0; y < y1; ++y) {
        for (int x = x0; x < x1; ++x) sum += at(frame, x, y);
      }
      const int mean = sum / ((y1 - y0) * (x1 - x0));
      for (int y = y0; y < y1; ++y) {
        for (int x = x0; x < x1; ++x) {
          at(frame, x, y) = clampToByte(mean + (at(frame, x, y) - mean) / 6);
        }
      }
    }
  }
}

// About one macroblock in sixteen never arrives and stays black.
void lostBlocks(Frame& frame, int time, int) {
  for (int y = 0; y + MACROBLOCK <= frame.h; y += MACROBLOCK) {
    for (int x = 0; x + MACROBLOCK <= frame.w; x += MACROBLOCK) {
      if (randomBits(x, y, time) % 16 == 0) fill(frame, x, y, MACROBLOCK, MACROBLOCK, 0);
    }
  }
}

// The mean of nine samples in a line along (stepX, stepY); the picture's border is continued.
void smear(Frame& frame, int stepX, int stepY) {
  Frame source = frame;
  for (int y = 0; y < frame.h; ++y) {
    for (int x = 0; x < frame.w; ++x) {
      int sum = 0;
      for (int i = -4; i <= 4; ++i) {
        sum += at(source, std::clamp(x + i * stepX, 0, frame.w - 1),
                  std::clamp(y + i * stepY, 0, frame.h - 1));
      }
      at(frame, x, y) = clampToByte((sum + 4) / 9);
    }
  }
}

// Out of focus: smeared twice in either direction, which comes close to a Gaussian.
void blur(Frame& frame, int, int) {
  for (int pass = 0; pass < 2; ++pass) {
    smear(frame, 1, 0);
    smear(frame, 0, 1);
  }
}

void overExposure(Frame& frame, int, int) {
  for (uint8_t& sample : frame.luma) sample = clampToByte(90 + sample * 3 / 2);
}

void lowContrast(Frame& frame, int, int) {
  for (uint8_t& sample : frame.luma) sample = clampToByte(112 + sample / 8);
}

// The odd lines belong to a field that is four frames old.
void combing(Frame& frame, int time, int) {
  for (int y = 1; y < frame.h; y += 2) {
    for (int x = 0; x < frame.w; ++x) at(frame, x, y) = pixel(time - 4, x, y, frame.w, frame.h);
  }
}

// The sum of four random bytes is close to Gaussian: mean 510, deviation 148, here scaled to 30.
void noise(Frame& frame, int time, int) {
  for (int y = 0; y < frame.h; ++y) {
    for (int x = 0; x < frame.w; ++x) {
      const uint32_t bits = randomBits(x, y, time);
      const uint32_t sum = (bits & 255) + (bits >> 8 & 255) + (bits >> 16 & 255) + (bits >> 24);
      at(frame, x, y) = clampToByte(at(frame, x, y) + (static_cast<int>(sum) - 510) / 5);
    }
  }
}

// In every fifth row of macroblocks the decoder loses its way and repeats one macroblock up to the
// right border.
void repeatedSlices(Frame& frame, int time, int) {
  for (int y = 0; y < frame.h; ++y) {
    const int row = y / MACROBLOCK;
    if ((row + time) % 5 != 0) continue;
    const int firstRepeated = (1 + row % 4) * MACROBLOCK;
    for (int x = firstRepeated; x < frame.w; ++x) at(frame, x, y) = at(frame, x - MACROBLOCK, y);
  }
}

// The middle of the picture is renewed only in every second frame, each time at another brightness.
void flicker(Frame& frame, int time, int first) {
  const int renewals = (time - first) / 2;
  const int shown = first + 2 * renewals;
  const int brightening = renewals % 2 == 0 ? 24 : 0;
  for (int y = frame.h / 4; y < frame.h * 3 / 4; ++y) {
    for (int x = frame.w / 4; x < frame.w * 3 / 4; ++x) {
      at(frame, x, y) = clampToByte(pixel(shown, x, y, frame.w, frame.h) + brightening);
    }
  }
}

}  // namespace

// Flickering is measured over the frames 8k + 1 .. 8k + 8. All stretches are whole such periods, so
// that no defect shows in the flickering of the clean frames around it. The freezing flag rises
// with the third still frame only.
const std::vector<Defect>& defects() {
  static const std::vector<Defect> table = {
      {"black", 9, 16, "blackout", black},
      {"freeze", 25, 40, "freezing", freeze},
      {"letterbox", 49, 56, "letterbox", letterbox},
      {"pillarbox", 65, 72, "pillarbox", pillarbox},
      {"coarseCoding", 81, 88, "blockiness", coarseCoding},
      {"lostBlocks", 97, 104, "blockLoss", lostBlocks},
      {"blur", 113, 120, "blur", blur},
      {"overExposure", 129, 136, "exposure", overExposure},
      {"lowContrast", 145, 152, "contrast", lowContrast},
      {"combing", 161, 168, "interlace", combing},
      {"noise", 177, 184, "noise", noise},
      {"repeatedSlices", 193, 200, "slice", repeatedSlices},
      {"flicker", 209, 224, "flickering", flicker},
  };
  return table;
}
