// All analysed frames of one video, and their file, frames.csv.
#ifndef LUMASCAN_FRAME_TABLE_H
#define LUMASCAN_FRAME_TABLE_H

#include <cstdint>
#include <cstdio>
#include <string>

#include "scan/analysis/indicatorTable.h"
#include "scan/measures/measureTable.h"
#include "scan/numbers/column.h"

constexpr int64_t NO_TIMESTAMP = INT64_MIN;

// Columns of one length. Frames follow each other without a gap: row i is frame firstFrame + i of
// the video, in the order of display.
struct FrameTable {
  int64_t firstFrame = 0;
  Column<int64_t> pts;      // presentation timestamps in the stream's own unit; NO_TIMESTAMP
  Column<double> time;      // seconds from the start of the file; NaN: unknown
  Column<double> duration;  // seconds for which the frame is shown; NaN: unknown
  Column<bool> isKey;
  Column<bool> isCorrupt;
  Column<int64_t> messages;  // of damage, said about what was read for the frame
  std::array<Column<double>, INDICATORS> values;  // finite; NaN: undefined
  Column<IndicatorMask> infinite;                 // of the undefined ones, those above all numbers
  std::array<Column<double>, MEASURES> measures;  // finite; NaN: not measured

  int64_t rows() const { return static_cast<int64_t>(pts.size()); }
};

// One row of the table.
struct FrameRow {
  int64_t pts;
  double time;
  double duration;
  bool isKey;
  bool isCorrupt;
  IndicatorValues values;
  int64_t messages = 0;
  IndicatorMask infinite = 0;
  MeasureValues measures = NO_MEASURES;
};

void appendRow(const FrameRow& row, FrameTable* table);

// RFC 4180: a header, then one row per frame, CR LF behind each. Numbers as shortestText() has
// them, undefined ones empty.
void writeFramesCsv(const FrameTable& table, FILE* out);

// Reads such a file. Returns an empty text, or what is wrong with it and in which line.
std::string readFramesCsv(const std::string& path, FrameTable* table);

#endif
