// What lumascan measures of a frame beside the fifteen indicators, for its events.
#ifndef LUMASCAN_MEASURE_TABLE_H
#define LUMASCAN_MEASURE_TABLE_H

#include <array>
#include <cstddef>
#include <string_view>

// The places of the measures in all tables. docs/measures.md defines each.
enum Measure : size_t {
  BRIGHTNESS,
  LOW_LEVEL,
  MIDDLE_LEVEL,
  HIGH_LEVEL,
  DARK_SHARE,
  DARK_BLOCKS,
  BRIGHT_SHARE,
  BAR_TOP,
  BAR_BOTTOM,
  BAR_LEFT,
  BAR_RIGHT,
  HELD_LINES,
  UNCHANGED_BLOCKS,
  CHANGED_BLOCKS,
  BRIGHTER_BLOCKS,
  DARKER_BLOCKS,
  COMBED_BLOCKS,
  LINE_STEP,
  GRID_EDGES,
};

constexpr size_t MEASURES = 19;

struct MeasureInfo {
  const char* name;   // in files
  const char* title;  // for people
  const char* unit;
};

extern const std::array<MeasureInfo, MEASURES> MEASURE_TABLE;

// Place in the table, or MEASURES when there is no such name.
size_t measureNamed(std::string_view name);

// One frame's values in the order of the table. NaN: not measured, since the frame is the first one
// or too small.
using MeasureValues = std::array<double, MEASURES>;

extern const MeasureValues NO_MEASURES;  // all of them NaN

#endif
