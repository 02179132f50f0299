#include "composed/composed.h"

#include <algorithm>

FrameResults composed::Results = {};

Image32 composed::leftDifferences(const Image* image) {
  // The operation leaves out row 0, which is therefore a row that is not looked at.
  Image below = callocImage(image->w, image->h + 1);
  Image rows = makeImage(image->w, image->h, below.data + image->w);
  onlyCopy(image, &rows);
  Image32 x = callocImage32(below.w, below.h);
  Image32 y = callocImage32(below.w, below.h);
  absGradient(&below, &x, &y);
  Image32 differences = callocImage32(image->w, image->h);
  std::copy_n(x.data + x.w, image->w * image->h, differences.data);
  freeImage(&below);
  freeImage32(&x);
  freeImage32(&y);
  return differences;
}
