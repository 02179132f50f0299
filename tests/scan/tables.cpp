#include "tables.h"

#include <cmath>

FrameTable emptyTable(size_t rows) {
  FrameTable table;
  for (size_t i = 0; i < rows; ++i) {
    FrameRow row = {static_cast<int64_t>(i), static_cast<double>(i) / 10, 0.1, false, false, {}};
    row.values.fill(std::nan(""));
    appendRow(row, &table);
  }
  return table;
}

FrameTable tableOf(const std::string& indicator, const std::vector<double>& values) {
  FrameTable table = emptyTable(values.size());
  column(&table, indicator) = values;
  return table;
}

Column<double>& column(FrameTable* table, const std::string& indicator) {
  return table->values.at(indicatorNamed(indicator));
}
