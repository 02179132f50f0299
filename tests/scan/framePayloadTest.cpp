// Packed frames, unpacked here, are the frames.
#include "scan/report/framePayload.h"

#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>
#include <cstring>

#include "pageParts.h"
#include "sample.h"
#include "scan/files/json.h"
#include "support/specialValues.h"

namespace {

// A table whose first indicator has these values; all others are 0.
FrameTable tableWithFirst(const std::vector<double>& values) {
  FrameTable table;
  for (const double value : values) {
    FrameRow row{NO_TIMESTAMP, 0.0, 0.0, false, false, {}};
    row.values[0] = value;
    appendRow(row, &table);
  }
  return table;
}

std::string kindOf(const std::vector<double>& values) {
  return describeColumns(tableWithFirst(values)).at(3).at("kind");
}

size_t sizeOf(const std::string& kind) {
  if (kind == "uint8") return 1;
  if (kind == "float64") return 8;
  return kind == "constant" ? 0 : 4;
}

template <typename Number>
Number valueOf(const char* parts) {
  Number value;
  std::memcpy(&value, parts, sizeof value);
  return value;
}

double numberAt(const std::string& bytes, size_t start, size_t rows, size_t row,
                const std::string& kind) {
  char parts[8] = {};
  for (size_t i = 0; i < sizeOf(kind); ++i) parts[i] = bytes[start + i * rows + row];
  if (kind == "uint8") return static_cast<unsigned char>(parts[0]);
  if (kind == "float64") return valueOf<double>(parts);
  return kind == "float32" ? double{valueOf<float>(parts)} : 1.0 * valueOf<int32_t>(parts);
}

std::vector<std::vector<double>> unpacked(const FrameTable& table) {
  const auto rows = static_cast<size_t>(table.rows());
  const Json description = describeColumns(table);
  size_t size = 0;
  for (const Json& column : description) size += rows * sizeOf(column.at("kind"));
  const std::string text = writtenText([&](FILE* out) { writeColumns(table, description, out); });
  const std::string bytes = inflated(unbase64(text), size);
  std::vector<std::vector<double>> columns;
  size_t start = 0;
  for (const Json& column : description) {
    const std::string kind = column.at("kind");
    columns.emplace_back();
    for (size_t row = 0; row < rows; ++row) {
      if (kind == "constant") {
        const Json& value = column.at("value");
        columns.back().push_back(value.is_null() ? UNDEFINED : value.get<double>());
      } else {
        columns.back().push_back(numberAt(bytes, start, rows, row, kind));
      }
    }
    start += rows * sizeOf(kind);
  }
  return columns;
}

void expectSame(const std::vector<double>& actual, const Column<double>& expected) {
  ASSERT_EQ(actual.size(), expected.size());
  for (size_t row = 0; row < actual.size(); ++row) {
    if (std::isnan(expected[row])) {
      EXPECT_TRUE(std::isnan(actual[row])) << row;
    } else {
      EXPECT_EQ(actual[row], expected[row]) << row;
      EXPECT_EQ(std::signbit(actual[row]), std::signbit(expected[row])) << row;
    }
  }
}

}  // namespace

TEST(FramePayload, keepsEveryDigit) {
  const FrameTable table = sampleInput("a", 500, 30000.0 / 1001.0, 7).frames;
  const Json description = describeColumns(table);
  const auto columns = unpacked(table);
  ASSERT_EQ(columns.size(), 3 + INDICATORS);
  expectSame(columns[0], table.time);
  expectSame(columns[1], table.duration);
  for (size_t row = 0; row < 500; ++row) {
    EXPECT_EQ(columns[2][row], (table.isKey[row] ? 1 : 0) + (table.isCorrupt[row] ? 2 : 0));
  }
  EXPECT_EQ(description.at(0).at("name"), "time_s");
  for (size_t i = 0; i < INDICATORS; ++i) {
    expectSame(columns[3 + i], table.values[i]);
    EXPECT_EQ(description.at(3 + i).at("name"), INDICATOR_TABLE[i].name);
  }
}

TEST(FramePayload, takesTheNarrowestKindThatHoldsAllValues) {
  EXPECT_EQ(kindOf({7.25, 7.25}), "constant");
  EXPECT_EQ(kindOf({UNDEFINED, UNDEFINED}), "constant");
  EXPECT_EQ(kindOf({}), "constant");
  EXPECT_EQ(kindOf({0.0, 255.0}), "uint8");
  EXPECT_EQ(kindOf({0.0, 256.0}), "int32");
  EXPECT_EQ(kindOf({0.0, -1.0}), "int32");
  EXPECT_EQ(kindOf({0.0, 2147483647.0}), "int32");
  EXPECT_EQ(kindOf({0.0, 2147483648.0}), "float32");  // 2^31
  EXPECT_EQ(kindOf({0.0, 0.5}), "float32");
  EXPECT_EQ(kindOf({0.0, 2147483649.0}), "float64");
  EXPECT_EQ(kindOf({0.0, 0.1}), "float64");
  EXPECT_EQ(kindOf({0.0, 2.0 * FLT_MAX}), "float64");
}

TEST(FramePayload, keepsUndefinedValuesAndTheSignOfZero) {
  EXPECT_EQ(kindOf({UNDEFINED, 1.0}), "float32");
  EXPECT_EQ(kindOf({0.0, -0.0}), "float32");
  for (const std::vector<double>& values : {std::vector<double>{UNDEFINED, 1.0, 0.1},
                                            {0.0, -0.0, 1.0},
                                            {-0.0, -0.0},
                                            {UNDEFINED},
                                            {1.0, -2147483648.0},
                                            {255.0, 0.0},
                                            {DBL_MAX, -DBL_MAX, DBL_TRUE_MIN}}) {
    expectSame(unpacked(tableWithFirst(values))[3], values);
  }
}
