#include "scan/measures/measureTable.h"

#include "scan/numbers/unknown.h"

const std::array<MeasureInfo, MEASURES> MEASURE_TABLE = {{
    {"brightness", "Brightness", "levels"},
    {"low_level", "Dark parts", "levels"},
    {"middle_level", "Middle parts", "levels"},
    {"high_level", "Bright parts", "levels"},
    {"dark_share", "Dark samples", "share of samples"},
    {"dark_blocks", "Dark blocks", "share of blocks"},
    {"bright_share", "Clipped samples", "share of samples"},
    {"bar_top", "Bar above", "share of the height"},
    {"bar_bottom", "Bar below", "share of the height"},
    {"bar_left", "Bar at the left", "share of the width"},
    {"bar_right", "Bar at the right", "share of the width"},
    {"held_lines", "Repeated lines", "share of the height"},
    {"unchanged_blocks", "Unchanged blocks", "share of blocks"},
    {"changed_blocks", "Changed blocks", "share of blocks"},
    {"brighter_blocks", "Blocks that brighten", "share of blocks"},
    {"darker_blocks", "Blocks that darken", "share of blocks"},
    {"combed_blocks", "Combed blocks", "share of blocks"},
    {"line_step", "New step between lines", "levels"},
    {"grid_edges", "New edges on the grid", "share of edges"},
}};

const MeasureValues NO_MEASURES = [] {
  MeasureValues none;
  none.fill(UNKNOWN);
  return none;
}();

size_t measureNamed(std::string_view name) {
  size_t i = 0;
  while (i < MEASURES && MEASURE_TABLE[i].name != name) ++i;
  return i;
}
