// Finite differences. Each operator of the first group is one formula, put into the frame that they
// share: row 0 and column 0 are 0, every other sample is computed from itself and its neighbours to
// the left and above.
#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "definitions/assertion.h"
#include "definitions/definitions.h"
#include "definitions/kernels.h"

namespace {

bool sameSize(const Image* src, const Image32* dest) {
  return src->h == dest->h && src->w == dest->w;
}

bool sameSize(const Image* src, const Image* dest) {
  return src->h == dest->h && src->w == dest->w;
}

// Fills both outputs; output (x, y) is formula(p, stride, &X, &Y) for p the sample at column
// x * skipX and row y * skipY of `src`.
template <typename Formula>
inline void differences(const Image* src, Image32* destX, Image32* destY, int64_t skipX,
                        int64_t skipY, Formula formula) {
  const int64_t stride = static_cast<int64_t>(src->w);
  const int64_t w = static_cast<int64_t>(destX->w);
  const int64_t h = static_cast<int64_t>(destX->h);
  if (w == 0 || h == 0) return;
  std::fill_n(destX->data, w, 0);
  std::fill_n(destY->data, w, 0);
  for (int64_t y = 1; y < h; ++y) {
    const uint8_t* const row = src->data + y * skipY * stride;
    int32_t* const outX = destX->data + y * w;
    int32_t* const outY = destY->data + y * w;
    outX[0] = outY[0] = 0;
    for (int64_t x = 1; x < w; ++x) {  // vectorised
      formula(row + x * skipX, stride, outX + x, outY + x);
    }
  }
}

inline void robertsCross(const uint8_t* p, int64_t stride, int32_t* x, int32_t* y) {
  *x = p[-stride - 1] - p[0];
  *y = p[-stride] - p[-1];
}

// 3 x 3 Sobel gradient around p: right column minus left column, lower row minus upper row.
void sobelGradient(const uint8_t* p, int64_t stride, int32_t* x, int32_t* y) {
  const uint8_t* up = p - stride;
  const uint8_t* down = p + stride;
  *x = (up[1] + 2 * p[1] + down[1]) - (up[-1] + 2 * p[-1] + down[-1]);
  *y = (down[-1] + 2 * down[0] + down[1]) - (up[-1] + 2 * up[0] + up[1]);
}

}  // namespace

#define ASSERT_SAME_SIZES(firstLine)                                                           \
  do {                                                                                         \
    ASSERT_AT(sameSize(src, destX), "src->h == destX->h && src->w == destX->w", "definitions", \
              firstLine);                                                                      \
    ASSERT_AT(sameSize(src, destY), "src->h == destY->h && src->w == destY->w", "definitions", \
              (firstLine) + 1);                                                                \
  } while (false)

MULTIVERSIONED
void gradient(const Image* src, Image32* destX, Image32* destY) {
  ASSERT_SAME_SIZES(648);
  differences(src, destX, destY, 1, 1,
              [](const uint8_t* p, int64_t stride, int32_t* x, int32_t* y) {
                *x = p[0] - p[-1];
                *y = p[0] - p[-stride];
              });
}

MULTIVERSIONED
void absGradient(const Image* src, Image32* destX, Image32* destY) {
  ASSERT_SAME_SIZES(785);
  differences(src, destX, destY, 1, 1,
              [](const uint8_t* p, int64_t stride, int32_t* x, int32_t* y) {
                *x = std::abs(p[0] - p[-1]);
                *y = std::abs(p[0] - p[-stride]);
              });
}

MULTIVERSIONED
void roberts(const Image* src, Image32* destX, Image32* destY) {
  ASSERT_SAME_SIZES(1151);
  differences(src, destX, destY, 1, 1,
              [](const uint8_t* p, int64_t stride, int32_t* x, int32_t* y) {
                robertsCross(p, stride, x, y);
              });
}

void robertsSkip(const Image* src, Image32* destX, Image32* destY, int32_t skipX, uint32_t skipY) {
  differences(src, destX, destY, skipX, skipY, robertsCross);
}

double sobel(const Image* src, Image32* destX, Image32* destY) {
  ASSERT_SAME_SIZES(310);
  const uint64_t w = src->w;
  const uint64_t h = src->h;
  double squares = 0.0;
  for (uint64_t y = 0; y < h; ++y) {
    for (uint64_t x = 0; x < w; ++x) {
      int32_t gx = 0;
      int32_t gy = 0;
      if (y > 0 && y + 1 < h && x > 0 && x + 1 < w) {
        sobelGradient(src->data + y * w + x, static_cast<int64_t>(w), &gx, &gy);
      }
      destX->data[y * w + x] = gx;
      destY->data[y * w + x] = gy;
      squares += gx * gx + gy * gy;
    }
  }
  return std::sqrt(squares);
}

void sobel2(const Image* src, Image* destX, Image* destY) {
  ASSERT_SAME_SIZES(429);
  const uint64_t w = src->w;
  const uint64_t h = src->h;
  for (uint64_t y = 0; y < h; ++y) {
    for (uint64_t x = 0; x < w; ++x) {
      int32_t gx = 0;
      int32_t gy = 0;
      if (y > 0 && x > 0) {
        if (y + 1 == h || x + 1 == w) continue;  // last row and column keep what they held
        sobelGradient(src->data + y * w + x, static_cast<int64_t>(w), &gx, &gy);
      }
      destX->data[y * w + x] = static_cast<uint8_t>(gx);
      destY->data[y * w + x] = static_cast<uint8_t>(gy);
    }
  }
}
