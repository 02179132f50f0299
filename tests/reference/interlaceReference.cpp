// Twin of the interlace: the fraction of the 4 x 4 blocks whose columns all go up and down from
// line to line.
#include "reference.h"

namespace reference {
namespace {

// `position` is that of the column's top sample. A column that leaves the plane is not combed.
bool isColumnCombed(const Luma& frame, uint32_t position) {
  if (uint64_t{position} + 3 * uint64_t{frame.w} >= frame.samples.size()) return false;
  int lines[4];
  for (uint32_t line = 0; line < 4; ++line) lines[line] = frame.samples[position + line * frame.w];
  const int first = lines[1] - lines[0];
  const int second = lines[2] - lines[1];
  const int third = lines[3] - lines[2];
  return first * second < 0 && second * third < 0;
}

// Columns past the end of a row go on in the rows below.
bool isBlockCombed(const Luma& frame, uint32_t x, uint32_t y) {
  for (uint32_t column = 0; column < 4; ++column) {
    if (!isColumnCombed(frame, y * frame.w + x + column)) return false;
  }
  return true;
}

}  // namespace

double interlace(const Luma& frame) {
  uint32_t combed = 0;
  for (uint32_t y = 0; y < frame.h; y += 4) {
    for (uint32_t x = 0; x < frame.w; x += 4) {
      if (isBlockCombed(frame, x, y)) ++combed;
    }
  }
  // Only whole blocks, although the others were looked at too. Both may be 0: divided at run time.
  const uint32_t wholeBlocks = (frame.h / 4) * (frame.w / 4);
  const volatile double blocks = wholeBlocks;
  return combed / blocks;
}

}  // namespace reference
