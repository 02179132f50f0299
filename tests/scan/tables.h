// Tables of frames with chosen values.
#ifndef LUMASCAN_TESTS_TABLES_H
#define LUMASCAN_TESTS_TABLES_H

#include <string>
#include <vector>

#include "scan/analysis/frameTable.h"

// Frames of a tenth of a second each, from 0 s on, of which no indicator says anything.
FrameTable emptyTable(size_t rows);

// Such frames with one indicator's values.
FrameTable tableOf(const std::string& indicator, const std::vector<double>& values);

Column<double>& column(FrameTable* table, const std::string& indicator);

#endif
