// The names of the indicators, and which of their values count.
#include "scan/analysis/indicatorTable.h"

#include <gtest/gtest.h>

#include <cmath>
#include <sstream>
#include <vector>

#include "driver/reportOutput.h"
#include "support/runProgram.h"
#include "support/specialValues.h"

namespace {

constexpr IndicatorMask ALL = 0x7fff;
constexpr uint64_t LARGE = 256;  // a frame of this size and square has every indicator

// In the order of the report: 1 to 15, flags 1.
FrameResults someSpatial() {
  FrameResults results = {};
  results.blockiness = 1;
  results.spatialActivity = 2;
  results.letterbox = 3;
  results.pillarbox = 4;
  results.blockLoss = 5;
  results.blur = 6;
  results.blackout = 1;
  results.exposure = 10;
  results.contrast = 11;
  results.interlace = 12;
  results.noise = 13;
  results.slice = 14;
  return results;
}

const TemporalResults someTemporal = {7, true, 15};
const IndicatorValues someValues = {1, 2, 3, 4, 5, 6, 7, 1, 1, 10, 11, 12, 13, 14, 15};

IndicatorValues valuesOf(IndicatorMask mask, bool hasPrevious = true, uint64_t w = LARGE,
                         uint64_t h = LARGE) {
  return measuredValues(someSpatial(), someTemporal, mask, hasPrevious, w, h);
}

// The indicators that have a value, as bits. All that do have their own.
IndicatorMask measured(const IndicatorValues& values) {
  IndicatorMask mask = 0;
  for (size_t i = 0; i < INDICATORS; ++i) {
    if (std::isnan(values[i])) continue;
    EXPECT_EQ(values[i], someValues[i]) << INDICATOR_TABLE[i].name;
    mask |= IndicatorMask{1} << i;
  }
  return mask;
}

// The columns of lumaprobe's report behind the frame's number, as its header has them.
std::vector<std::string> reportColumns() {
  const TemporaryDirectory directory;
  const std::string path = directory.path + "/header";
  FILE* const file = std::fopen(path.c_str(), "w");
  printReportHeader(file);
  std::fclose(file);
  std::istringstream header(readFile(path));
  std::vector<std::string> columns;
  for (std::string column; std::getline(header, column, '\t');) {
    columns.push_back(column.substr(0, column.find(':')));
  }
  columns.erase(columns.begin());
  return columns;
}

}  // namespace

TEST(IndicatorTable, hasTheOrderOfTheReport) {
  // The report's names, where they are not the table's titles.
  const auto titleOf = [](const std::string& column) -> std::string {
    if (column == "SA") return "Spatial activity";
    if (column == "TA") return "Temporal activity";
    if (column == "Blockloss") return "Block loss";
    if (column == "Exposure(bri)") return "Exposure";
    return column;
  };
  const std::vector<std::string> columns = reportColumns();
  ASSERT_EQ(columns.size(), INDICATORS);
  for (size_t i = 0; i < INDICATORS; ++i) {
    EXPECT_EQ(INDICATOR_TABLE[i].title, titleOf(columns[i])) << i;
  }
}

TEST(IndicatorTable, hasTheOrderOfTheBits) {
  EXPECT_EQ(1u << indicatorNamed("blockiness"), BLOCKINESS);
  EXPECT_EQ(1u << indicatorNamed("spatial_activity"), SPATIAL_ACTIVITY);
  EXPECT_EQ(1u << indicatorNamed("letterbox"), LETTERBOX);
  EXPECT_EQ(1u << indicatorNamed("pillarbox"), PILLARBOX);
  EXPECT_EQ(1u << indicatorNamed("block_loss"), BLOCK_LOSS);
  EXPECT_EQ(1u << indicatorNamed("blur"), BLUR);
  EXPECT_EQ(1u << indicatorNamed("temporal_activity"), TEMPORAL_ACTIVITY);
  EXPECT_EQ(1u << indicatorNamed("blackout"), BLACKOUT);
  EXPECT_EQ(1u << indicatorNamed("freezing"), FREEZING);
  EXPECT_EQ(1u << indicatorNamed("exposure"), EXPOSURE);
  EXPECT_EQ(1u << indicatorNamed("contrast"), CONTRAST);
  EXPECT_EQ(1u << indicatorNamed("interlace"), INTERLACE);
  EXPECT_EQ(1u << indicatorNamed("noise"), NOISE);
  EXPECT_EQ(1u << indicatorNamed("slice"), SLICE);
  EXPECT_EQ(1u << indicatorNamed("flickering"), FLICKERING);
}

TEST(IndicatorTable, doesNotKnowOtherNames) {
  for (const char* const name : {"", "Blur", "blu", "blurs", "blur ", "SA"}) {
    EXPECT_EQ(indicatorNamed(name), INDICATORS) << name;
  }
}

TEST(MeasuredValues, areTheStoredOnes_whenAllIsMeasured) {
  EXPECT_EQ(valuesOf(ALL), someValues);
}

TEST(MeasuredValues, areUndefined_whereNothingIsRequested) {
  for (size_t i = 0; i < INDICATORS; ++i) {
    const IndicatorMask bit = IndicatorMask{1} << i;
    if (bit == FREEZING) continue;
    EXPECT_EQ(measured(valuesOf(bit)), bit) << INDICATOR_TABLE[i].name;
  }
  EXPECT_EQ(measured(valuesOf(0)), 0u);
}

TEST(MeasuredValues, haveFreezingOnlyTogetherWithTemporalActivity) {
  EXPECT_EQ(measured(valuesOf(FREEZING | BLUR)), BLUR);
  EXPECT_EQ(measured(valuesOf(FREEZING | TEMPORAL_ACTIVITY)), FREEZING | TEMPORAL_ACTIVITY);
}

TEST(MeasuredValues, haveNothingTemporal_withoutAFrameBefore) {
  EXPECT_EQ(measured(valuesOf(ALL, false)), ALL & ~(TEMPORAL_ACTIVITY | FREEZING | FLICKERING));
}

TEST(MeasuredValues, leaveOutWhatSaysMinusOne) {
  FrameResults spatial = someSpatial();
  TemporalResults temporal = someTemporal;
  spatial.blockLoss = -1;
  EXPECT_EQ(measured(measuredValues(spatial, temporal, ALL, true, LARGE, LARGE)),
            ALL & ~IndicatorMask{BLOCK_LOSS});
  temporal.flickering = -1;
  EXPECT_EQ(measured(measuredValues(spatial, temporal, ALL, true, LARGE, LARGE)),
            ALL & ~(BLOCK_LOSS | FLICKERING));
}

TEST(MeasuredValues, keepZero) {
  const IndicatorValues values = measuredValues({}, {}, ALL, true, LARGE, LARGE);
  for (const double value : values) EXPECT_EQ(value, 0.0);
}

TEST(MeasuredValues, leaveOutWhatTheFrameIsTooSmallFor) {
  // Blackout takes a block of 8 x 8, blur one of 16 x 16, slice 17 columns and 48 rows.
  EXPECT_EQ(measured(valuesOf(ALL, true, 17, 48)), ALL);
  EXPECT_EQ(measured(valuesOf(ALL, true, 16, 48)), ALL & ~IndicatorMask{SLICE});
  EXPECT_EQ(measured(valuesOf(ALL, true, 17, 47)), ALL & ~IndicatorMask{SLICE});
  EXPECT_EQ(measured(valuesOf(ALL, true, 16, 16)), ALL & ~IndicatorMask{SLICE});
  EXPECT_EQ(measured(valuesOf(ALL, true, 15, 16)), ALL & ~(SLICE | BLUR));
  EXPECT_EQ(measured(valuesOf(ALL, true, 1000, 15)), ALL & ~(SLICE | BLUR));
  EXPECT_EQ(measured(valuesOf(ALL, true, 8, 8)), ALL & ~(SLICE | BLUR));
  EXPECT_EQ(measured(valuesOf(ALL, true, 7, 1000)), ALL & ~(SLICE | BLUR | BLACKOUT));
  EXPECT_EQ(measured(valuesOf(ALL, true, 1000, 7)), ALL & ~(SLICE | BLUR | BLACKOUT));
}

TEST(MeasuredValues, leaveOutWhatIsNotFinite) {
  FrameResults spatial = someSpatial();
  TemporalResults temporal = someTemporal;
  spatial.slice = INF;
  spatial.interlace = -INF;
  spatial.contrast = -std::nan("");
  temporal.flickering = std::nan("");
  EXPECT_EQ(measured(measuredValues(spatial, temporal, ALL, true, LARGE, LARGE)),
            ALL & ~(SLICE | INTERLACE | CONTRAST | FLICKERING));
}

TEST(MeasuredValues, tellWhatIsAboveAllNumbers) {
  const auto infiniteOf = [](const FrameResults& spatial, const TemporalResults& temporal,
                             IndicatorMask mask, bool hasPrevious = true, uint64_t h = LARGE) {
    IndicatorMask infinite = ALL;  // what it held is forgotten
    measuredValues(spatial, temporal, mask, hasPrevious, LARGE, h, &infinite);
    return infinite;
  };
  EXPECT_EQ(infiniteOf(someSpatial(), someTemporal, ALL), 0u);
  // Of these, slice and flickering alone are positive infinity.
  FrameResults spatial = someSpatial();
  TemporalResults temporal = someTemporal;
  spatial.slice = INF;
  spatial.interlace = -INF;
  spatial.contrast = std::nan("");
  temporal.flickering = INF;
  EXPECT_EQ(infiniteOf(spatial, temporal, ALL), IndicatorMask{SLICE | FLICKERING});
  // Only of what was measured: requested, with a frame before, and on a frame that is large enough.
  EXPECT_EQ(infiniteOf(spatial, temporal, ALL & ~IndicatorMask{SLICE}), IndicatorMask{FLICKERING});
  EXPECT_EQ(infiniteOf(spatial, temporal, 0), 0u);
  EXPECT_EQ(infiniteOf(spatial, temporal, ALL, false), IndicatorMask{SLICE});
  EXPECT_EQ(infiniteOf(spatial, temporal, ALL, true, 47), IndicatorMask{FLICKERING});
  spatial.blockiness = INF;
  EXPECT_EQ(infiniteOf(spatial, temporal, BLOCKINESS | BLUR), IndicatorMask{BLOCKINESS});
}
