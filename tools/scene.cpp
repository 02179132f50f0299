// The scene: clouds, hills and a wooded foreground that pass by at different speeds, and balloons.
#include "scene.h"

#include <cstdlib>
#include <optional>

namespace {

// Coordinates of the landscape are in 1/256 of a pixel.
constexpr uint32_t PIXEL = 256;

uint32_t hash(uint32_t a, uint32_t b, uint32_t c) {
  uint32_t mixed = a * 0x9e3779b1u ^ b * 0x85ebca77u ^ c * 0xc2b2ae3du;
  mixed = (mixed ^ (mixed >> 15)) * 0x2c1b3c6du;
  mixed = (mixed ^ (mixed >> 12)) * 0x297a2d39u;
  return mixed ^ (mixed >> 15);
}

uint32_t interpolate(uint32_t from, uint32_t to, uint32_t weight) {
  return (from * (256 - weight) + to * weight) >> 8;
}

// Eases a weight of 0..255 in and out (3t^2 - 2t^3), so that no seams show between cells.
uint32_t ease(uint32_t t) {
  return (t * t * (768 - 2 * t)) >> 16;
}

// Random values 0..255 at the corners of cells of 2^cellBits pixels, interpolated in between.
uint32_t valueNoise(uint32_t x, uint32_t y, uint32_t cellBits, uint32_t seed) {
  const uint32_t column = x >> (cellBits + 8);
  const uint32_t row = y >> (cellBits + 8);
  const uint32_t weightX = ease((x >> cellBits) & 255);
  const uint32_t weightY = ease((y >> cellBits) & 255);
  const auto corner = [=](uint32_t i, uint32_t j) { return hash(column + i, row + j, seed) >> 24; };
  return interpolate(interpolate(corner(0, 0), corner(1, 0), weightX),
                     interpolate(corner(0, 1), corner(1, 1), weightX), weightY);
}

// Octaves of noise, each at half the cell size and half the strength of the one before: -128..127.
int fractal(uint32_t x, uint32_t y, uint32_t cellBits, uint32_t octaves, uint32_t seed) {
  uint32_t sum = 0;
  for (uint32_t i = 0; i < octaves; ++i) {
    sum += valueNoise(x, y, cellBits - i, seed + i) << (octaves - 1 - i);
  }
  return static_cast<int>(sum / ((1u << octaves) - 1)) - 128;
}

// What is below the crest, as far as no nearer layer hides it.
struct Layer {
  uint32_t speed;     // of the camera's pan, in 1/256 pixel a frame
  int crest;          // mean height of the crest, in sixteenths of the picture from the top
  int relief;         // how far the crest swings, in sixteenths of the picture
  uint32_t cellBits;  // of the coarsest texture
  uint32_t octaves;
  int brightness;
  int contrast;  // in quarters
  uint32_t seed;
};

constexpr Layer LAYERS[] = {
    {840, 11, 10, 5, 4, 84, 4, 300},   // woods
    {330, 7, 8, 6, 5, 128, 3, 200},    // hills
    {110, -16, 0, 6, 5, 190, 3, 100},  // clouds
};

// A triangle wave between 0 and `swing` pixels: the hand that holds the camera.
int sway(int time, int swing) {
  return std::abs(time % (2 * swing) - swing);
}

int landscapeShade(int time, int x, int y, int h) {
  const uint32_t v = static_cast<uint32_t>(y + sway(time, 12)) * PIXEL;
  for (const Layer& layer : LAYERS) {
    const uint32_t u = static_cast<uint32_t>(x) * PIXEL + static_cast<uint32_t>(time) * layer.speed;
    const int crest =
        (layer.crest * 128 + layer.relief * fractal(u, 0, 7, 6, layer.seed)) * h / 2048;
    if (static_cast<int>(v / PIXEL) >= crest) {
      const int texture = fractal(u, v, layer.cellBits, layer.octaves, layer.seed + 50);
      return layer.brightness + texture * layer.contrast / 4;
    }
  }
  return 0;  // not reached: the clouds fill what is left
}

struct Balloon {
  int speed;     // pixels a frame
  int altitude;  // in sixteenths of the picture from the top
  int brightness;
};

constexpr Balloon BALLOONS[] = {{2, 4, 210}, {5, 6, 60}, {-3, 10, 150}};

// The balloons drift across the picture and come back at the other side.
std::optional<int> balloonShade(int time, int x, int y, int w, int h) {
  const int radius = h / 9;
  const int lap = w + 2 * radius;
  for (const Balloon& balloon : BALLOONS) {
    const int travelled = (balloon.speed * (time + 40)) % lap;
    const int dx = x + radius - (travelled < 0 ? travelled + lap : travelled);
    const int dy = y - balloon.altitude * h / 16 - sway(time, 20);
    if (dx * dx + dy * dy < radius * radius) {
      const bool isStriped = (2 * dx + dy + 3 * radius) * 3 / radius % 2 == 1;
      return balloon.brightness - (dx + dy) * 24 / radius - (isStriped ? 24 : 0);
    }
  }
  return std::nullopt;
}

}  // namespace

uint32_t randomBits(int x, int y, int time) {
  return hash(static_cast<uint32_t>(x), static_cast<uint32_t>(y), static_cast<uint32_t>(time));
}

uint8_t pixel(int time, int x, int y, int w, int h) {
  const std::optional<int> balloon = balloonShade(time, x, y, w, h);
  const int shade = balloon ? *balloon : landscapeShade(time, x, y, h);
  const int grain = static_cast<int>(randomBits(x, y, time) % 3) - 1;
  return clampToByte(shade + grain);
}

Frame renderScene(int time, int w, int h) {
  Frame frame{w, h, std::vector<uint8_t>(static_cast<size_t>(w * h))};
  for (int y = 0; y < h; ++y) {
    for (int x = 0; x < w; ++x) at(frame, x, y) = pixel(time, x, y, w, h);
  }
  return frame;
}
