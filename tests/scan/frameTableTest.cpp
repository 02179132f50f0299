// Tables of frames, their file and the texts of its numbers.
#include "scan/analysis/frameTable.h"

#include <gtest/gtest.h>

#include <cmath>

#include "support/runProgram.h"

namespace {

// Of files without the last column, which early versions wrote.
constexpr char HEADER[] =
    "frame,pts,time_s,duration_s,keyframe,corrupt,blockiness,spatial_activity,letterbox,pillarbox,"
    "block_loss,blur,temporal_activity,blackout,freezing,exposure,contrast,interlace,noise,slice,"
    "flickering\r\n";
// A good row of frame 0.
constexpr char ROW[] = "0,0,0,0.04,1,0,1,2,3,4,5,6,7,8,9,10,11,12,13,14,15\r\n";

// A line with a column more.
std::string withLastColumn(const std::string& line, const std::string& field) {
  return line.substr(0, line.size() - 2) + ',' + field + "\r\n";
}

void write(const FrameTable& table, const std::string& path) {
  FILE* const file = std::fopen(path.c_str(), "w");
  writeFramesCsv(table, file);
  std::fclose(file);
}

// What readFramesCsv() has to say about a file of these bytes.
std::string mistakeIn(const std::string& bytes) {
  const TemporaryDirectory directory;
  writeFile(directory.path + "/frames.csv", bytes);
  FrameTable table;
  return readFramesCsv(directory.path + "/frames.csv", &table);
}

void expectSame(const Column<double>& column, const Column<double>& expected) {
  ASSERT_EQ(column.size(), expected.size());
  for (size_t i = 0; i < column.size(); ++i) {
    if (std::isnan(expected[i])) {
      EXPECT_TRUE(std::isnan(column[i])) << i;
    } else {
      EXPECT_EQ(column[i], expected[i]) << i;
    }
  }
}

}  // namespace

TEST(FrameTable, isWrittenWithAHeaderAndOneRowPerFrame) {
  const TemporaryDirectory directory;
  FrameTable table;
  FrameRow row = {0, 0.0, 0.04, true, false, {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15}};
  appendRow(row, &table);
  row = {NO_TIMESTAMP, std::nan(""), std::nan(""), false, true, {}};
  row.values.fill(std::nan(""));
  row.messages = 12;
  appendRow(row, &table);
  write(table, directory.path + "/frames.csv");
  EXPECT_EQ(readFile(directory.path + "/frames.csv"), withLastColumn(HEADER, "messages") +
                                                          withLastColumn(ROW, "0") +
                                                          "1,,,,0,1,,,,,,,,,,,,,,,,12\r\n");
}

TEST(FrameTable, isReadWithAndWithoutMessages) {
  const std::string header = withLastColumn(HEADER, "messages");
  EXPECT_EQ(mistakeIn(std::string(HEADER) + ROW), "");
  EXPECT_EQ(mistakeIn(header + withLastColumn(ROW, "3")), "");
  const std::string mistake = "line 2 is not a row of frames.csv";
  EXPECT_EQ(mistakeIn(header + ROW), mistake);
  for (const char* const messages : {"-1", "1.5", "x"}) {
    EXPECT_EQ(mistakeIn(header + withLastColumn(ROW, messages)), mistake) << messages;
  }
  EXPECT_EQ(mistakeIn(HEADER + withLastColumn(ROW, "3")), mistake);
}

TEST(FrameTable, comesBackFromItsFileAsItWas) {
  const TemporaryDirectory directory;
  FrameTable table;
  table.firstFrame = 75;
  // Numbers whose shortest texts are long, or have an exponent.
  FrameRow row = {-512, -0.04, 1.0 / 3.0, true, false, {}};
  row.values = {0.1 + 0.2, 1e300, 5e-324,    -0.0, -1e-7, 1e22, 255,         1,
                0,         127.5, 2.0 / 3.0, 0,    0,     0,    std::nan("")};
  appendRow(row, &table);
  row = {NO_TIMESTAMP, std::nan(""), std::nan(""), false, true, {}};
  row.values.fill(std::nan(""));
  appendRow(row, &table);
  row = {INT64_MAX, 1e9, 0.0, false, false, {}, 70};
  appendRow(row, &table);
  write(table, directory.path + "/frames.csv");

  FrameTable read;
  // What it held is forgotten.
  appendRow(row, &read);
  ASSERT_EQ(readFramesCsv(directory.path + "/frames.csv", &read), "");
  EXPECT_EQ(read.firstFrame, 75);
  EXPECT_EQ(read.rows(), 3);
  EXPECT_EQ(read.pts, table.pts);
  EXPECT_EQ(read.isKey, table.isKey);
  EXPECT_EQ(read.isCorrupt, table.isCorrupt);
  EXPECT_EQ(read.messages, table.messages);
  expectSame(read.time, table.time);
  expectSame(read.duration, table.duration);
  for (size_t i = 0; i < INDICATORS; ++i) expectSame(read.values[i], table.values[i]);
}

TEST(FrameTable, comesBackWithTheLongestNumbers) {
  const TemporaryDirectory directory;
  FrameTable table;
  constexpr double LONGEST = -2.2250738585072014e-308;
  table.firstFrame = int64_t{1} << 53;
  FrameRow row = {INT64_MIN + 1, LONGEST, LONGEST, true, true, {}};
  row.values.fill(LONGEST);
  appendRow(row, &table);
  write(table, directory.path + "/frames.csv");
  FrameTable read;
  ASSERT_EQ(readFramesCsv(directory.path + "/frames.csv", &read), "");
  EXPECT_EQ(read.pts, table.pts);
  EXPECT_EQ(read.values, table.values);
}

TEST(FrameTable, mayHaveNoFrames) {
  EXPECT_EQ(mistakeIn(HEADER), "");
}

TEST(FrameTable, isNotReadFromAFileWithoutItsHeader) {
  const std::string mistake = "line 1 is not the header of frames.csv";
  EXPECT_EQ(mistakeIn(""), mistake);
  EXPECT_EQ(mistakeIn(ROW), mistake);
  EXPECT_EQ(mistakeIn("\r\n"), mistake);
  EXPECT_EQ(mistakeIn("x" + std::string(HEADER)), mistake);
  EXPECT_EQ(mistakeIn(std::string(HEADER) + HEADER), "line 2 is not a row of frames.csv");
}

TEST(FrameTable, isNotReadFromAFileThatIsCut) {
  const std::string whole = std::string(HEADER) + ROW;
  const std::string header = HEADER;
  // At any byte but the end of a line.
  for (size_t size = 1; size < whole.size(); ++size) {
    if (size == header.size()) continue;
    EXPECT_EQ(mistakeIn(whole.substr(0, size)),
              size < header.size() ? "line 1 has no end" : "line 2 has no end")
        << size;
  }
}

TEST(FrameTable, isNotReadFromLinesThatEndOtherwise) {
  std::string unixLines = std::string(HEADER) + ROW;
  unixLines.erase(unixLines.find('\r'), 1);
  EXPECT_EQ(mistakeIn(unixLines), "line 1 has no end");
  EXPECT_EQ(mistakeIn(HEADER + std::string(5000, '1') + "\r\n"), "line 2 has no end");
  EXPECT_EQ(mistakeIn(HEADER + std::string("0,0,\0", 5) + ROW), "line 2 has no end");
}

TEST(FrameTable, isNotReadFromRowsThatAreNone) {
  const std::string mistake = "line 3 is not a row of frames.csv";
  for (const char* const row : {
           "",                                                       // nothing
           ",0,0,0.04,1,0,1,2,3,4,5,6,7,8,9,10,11,12,13,14,15",      // no number of a frame
           "1.5,0,0,0.04,1,0,1,2,3,4,5,6,7,8,9,10,11,12,13,14,15",   // half a frame
           "1,0.5,0,0.04,1,0,1,2,3,4,5,6,7,8,9,10,11,12,13,14,15",   // half a timestamp
           "1,0,x,0.04,1,0,1,2,3,4,5,6,7,8,9,10,11,12,13,14,15",     // no time
           "1,0,0,0.04s,1,0,1,2,3,4,5,6,7,8,9,10,11,12,13,14,15",    // a unit
           "1,0,0,0.04,,0,1,2,3,4,5,6,7,8,9,10,11,12,13,14,15",      // no flag
           "1,0,0,0.04,2,0,1,2,3,4,5,6,7,8,9,10,11,12,13,14,15",     // no flag, either
           "1,0,0,0.04,1,01,1,2,3,4,5,6,7,8,9,10,11,12,13,14,15",    // nor is this
           "1,0,0,0.04,1,0,1,2,3,4,5,6,7,8,9,10,11,12,13,14,1 5",    // a gap
           "1,0,0,0.04,1,0,1,2,3,4,5,6,7,8,9,10,11,12,13,14,1e999",  // more than a number holds
           "1,0,0,0.04,1,0,1,2,3,4,5,6,7,8,9,10,11,12,13,14,inf",    // not finite
           "1,0,0,0.04,1,0,1,2,3,4,5,6,7,8,9,10,11,12,13,14,nan",    // undefined is empty
           "1,0,0,0.04,1,0,1,2,3,4,5,6,7,8,9,10,11,12,13,14",        // a column less
           "1,0,0,0.04,1,0",                                         // no indicators
           "1,0,0,0.04,1,0,1,2,3,4,5,6,7,8,9,10,11,12,13,14,15,",    // a column more
           "1,0,0,0.04,1,0,1,2,3,4,5,6,7,8,9,10,11,12,13,14,15,16",  // and one with a number
       }) {
    EXPECT_EQ(mistakeIn(std::string(HEADER) + ROW + row + "\r\n"), mistake) << row;
  }
}

TEST(FrameTable, isNotReadFromRowsWithGapsBetween) {
  EXPECT_EQ(mistakeIn(std::string(HEADER) + ROW + ROW), "line 3 does not follow the one before");
  EXPECT_EQ(mistakeIn(std::string(HEADER) + ROW + "2" + (ROW + 1)),
            "line 3 does not follow the one before");
}

// Sums and differences of these would not be numbers any more.
TEST(FrameTable, isNotReadFromRowsBeyondAllVideos) {
  const std::string mistake = "line 2 is not a row of frames.csv";
  const std::string values = ",1,0,1,2,3,4,5,6,7,8,9,10,11,12,13,14,15\r\n";
  for (const char* const row : {"-1,0,0,0", "9007199254740993,0,0,0", "9223372036854775807,0,0,0",
                                "0,0,1.1e30,0", "0,0,-1.1e30,0", "0,0,0,1.1e30", "0,0,0,-1.1e30"}) {
    EXPECT_EQ(mistakeIn(HEADER + (row + values)), mistake) << row;
  }
  for (const char* const row :
       {"0,-9223372036854775807,-1e30,-1e30", "9007199254740992,0,1e30,1e30"}) {
    EXPECT_EQ(mistakeIn(HEADER + (row + values)), "") << row;
  }
}

TEST(FrameTable, isNotRead_whereThereIsNoFile) {
  const TemporaryDirectory directory;
  FrameTable table;
  EXPECT_EQ(readFramesCsv(directory.path + "/frames.csv", &table), "No such file or directory");
  EXPECT_EQ(readFramesCsv(directory.path, &table), "Is a directory");
}
