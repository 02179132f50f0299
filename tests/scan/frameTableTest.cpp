// Tables of frames, their file and the texts of its numbers.
#include "scan/analysis/frameTable.h"

#include <gtest/gtest.h>

#include <cmath>

#include "support/runProgram.h"

namespace {

// Of files without the columns from `messages` on, which early versions wrote.
constexpr char HEADER[] =
    "frame,pts,time_s,duration_s,keyframe,corrupt,blockiness,spatial_activity,letterbox,pillarbox,"
    "block_loss,blur,temporal_activity,blackout,freezing,exposure,contrast,interlace,noise,slice,"
    "flickering\r\n";
// A good row of frame 0.
constexpr char ROW[] = "0,0,0,0.04,1,0,1,2,3,4,5,6,7,8,9,10,11,12,13,14,15\r\n";

// What has come later than `messages`: in the header, and in a good row.
constexpr char LATER_COLUMNS[] =
    "infinite,brightness,low_level,middle_level,high_level,dark_share,dark_blocks,bright_share,"
    "bar_top,bar_bottom,bar_left,bar_right,held_lines,unchanged_blocks,changed_blocks,"
    "brighter_blocks,darker_blocks,combed_blocks,line_step,grid_edges";
constexpr char LATER_FIELDS[] = "5,21,22,23,24,25,26,27,28,29,30,31,32,33,34,35,36,37,38,39";

// A line with more behind it.
std::string extended(const std::string& line, const std::string& fields) {
  return line.substr(0, line.size() - 2) + ',' + fields + "\r\n";
}

std::string messagesHeader() {
  return extended(HEADER, "messages");
}

std::string wholeHeader() {
  return extended(messagesHeader(), LATER_COLUMNS);
}

std::string wholeRow() {
  return extended(extended(ROW, "3"), LATER_FIELDS);
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
  row = {3, 4, 5, false, false, {}, 7, 0x4001, {}};
  for (size_t i = 0; i < MEASURES; ++i) row.measures[i] = static_cast<double>(i) + 0.5;
  row.measures[COMBED_BLOCKS] = std::nan("");
  appendRow(row, &table);
  write(table, directory.path + "/frames.csv");
  // The first two rows have no measures.
  const std::string none(MEASURES, ',');
  EXPECT_EQ(readFile(directory.path + "/frames.csv"),
            wholeHeader() + extended(ROW, "0,0" + none) + "1,,,,0,1,,,,,,,,,,,,,,,,12,0" + none +
                "\r\n2,3,4,5,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,7,16385,0.5,1.5,2.5,3.5,4.5,5.5,6.5,"
                "7.5,8.5,9.5,10.5,11.5,12.5,13.5,14.5,15.5,,17.5,18.5\r\n");
}

TEST(FrameTable, isReadWithAndWithoutMessages) {
  EXPECT_EQ(mistakeIn(std::string(HEADER) + ROW), "");
  EXPECT_EQ(mistakeIn(messagesHeader() + extended(ROW, "3")), "");
  const std::string mistake = "line 2 is not a row of frames.csv";
  EXPECT_EQ(mistakeIn(messagesHeader() + ROW), mistake);
  for (const char* const messages : {"-1", "1.5", "x"}) {
    EXPECT_EQ(mistakeIn(messagesHeader() + extended(ROW, messages)), mistake) << messages;
  }
  EXPECT_EQ(mistakeIn(HEADER + extended(ROW, "3")), mistake);
}

TEST(FrameTable, isReadWithAndWithoutMeasures) {
  EXPECT_EQ(mistakeIn(wholeHeader() + wholeRow()), "");
  const std::string mistake = "line 2 is not a row of frames.csv";
  // Rows are of the header's form.
  EXPECT_EQ(mistakeIn(wholeHeader() + ROW), mistake);
  EXPECT_EQ(mistakeIn(wholeHeader() + extended(ROW, "3")), mistake);
  EXPECT_EQ(mistakeIn(messagesHeader() + wholeRow()), mistake);
  EXPECT_EQ(mistakeIn(HEADER + wholeRow()), mistake);
  EXPECT_EQ(mistakeIn(wholeHeader() + extended(wholeRow(), "1")), mistake);
  // A header that ends between two forms is of none.
  const std::string noHeader = "line 1 is not the header of frames.csv";
  EXPECT_EQ(mistakeIn(extended(messagesHeader(), "infinite")), noHeader);
  EXPECT_EQ(mistakeIn(extended(wholeHeader(), "more")), noHeader);
  EXPECT_EQ(mistakeIn(extended(HEADER, LATER_COLUMNS)), noHeader);
}

TEST(FrameTable, hasNoMeasures_whereAnOlderFileHasNone) {
  const TemporaryDirectory directory;
  for (const std::string& older :
       {std::string(HEADER) + ROW, messagesHeader() + extended(ROW, "3")}) {
    writeFile(directory.path + "/frames.csv", older);
    FrameTable table;
    ASSERT_EQ(readFramesCsv(directory.path + "/frames.csv", &table), "");
    EXPECT_EQ(table.infinite, Column<IndicatorMask>{0});
    EXPECT_EQ(table.values[INDICATORS - 1][0], 15.0);
    for (const Column<double>& measure : table.measures) {
      ASSERT_EQ(measure.size(), 1);
      EXPECT_TRUE(std::isnan(measure[0]));
    }
  }
}

TEST(FrameTable, hasMeasuresInTheOrderOfTheirColumns) {
  const TemporaryDirectory directory;
  writeFile(directory.path + "/frames.csv", wholeHeader() + wholeRow());
  FrameTable table;
  ASSERT_EQ(readFramesCsv(directory.path + "/frames.csv", &table), "");
  EXPECT_EQ(table.messages, Column<int64_t>{3});
  EXPECT_EQ(table.infinite, Column<IndicatorMask>{5});
  for (size_t i = 0; i < MEASURES; ++i) {
    EXPECT_EQ(table.measures[i], Column<double>{21.0 + static_cast<double>(i)}) << i;
  }
  EXPECT_EQ(table.measures[BRIGHTNESS][0], 21.0);
  EXPECT_EQ(table.measures[GRID_EDGES][0], 39.0);
}

TEST(FrameTable, isNotReadFromRowsWithOtherMeasures) {
  const std::string mistake = "line 2 is not a row of frames.csv";
  const auto mistakeWith = [](const std::string& infinite, const std::string& last) {
    return mistakeIn(wholeHeader() + extended(ROW, "3," + infinite + ",0.5" +
                                                       std::string(MEASURES - 1, ',') + last));
  };
  // Fifteen indicators have the bits below 32768.
  for (const char* const infinite : {"0", "1", "32767"}) EXPECT_EQ(mistakeWith(infinite, "1"), "");
  for (const char* const infinite : {"32768", "-1", "1.5", "x", "1e3", "4294967296", "+1"}) {
    EXPECT_EQ(mistakeWith(infinite, "1"), mistake) << infinite;
  }
  for (const char* const measure : {"", "-0.5", "1e300"}) EXPECT_EQ(mistakeWith("0", measure), "");
  for (const char* const measure : {"x", "1..", "1e999", "inf", "nan", "1 "}) {
    EXPECT_EQ(mistakeWith("0", measure), mistake) << measure;
  }
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
  row = {INT64_MAX, 1e9, 0.0, false, false, {}, 70, 0x7fff, {}};
  row.measures.fill(1.0 / 7.0);
  row.measures[LINE_STEP] = std::nan("");
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
  EXPECT_EQ(read.infinite, table.infinite);
  expectSame(read.time, table.time);
  expectSame(read.duration, table.duration);
  for (size_t i = 0; i < INDICATORS; ++i) expectSame(read.values[i], table.values[i]);
  for (size_t i = 0; i < MEASURES; ++i) expectSame(read.measures[i], table.measures[i]);
}

TEST(FrameTable, comesBackWithTheLongestNumbers) {
  const TemporaryDirectory directory;
  FrameTable table;
  constexpr double LONGEST = -2.2250738585072014e-308;
  table.firstFrame = int64_t{1} << 53;
  FrameRow row = {INT64_MIN + 1, LONGEST, LONGEST, true, true, {}};
  row.values.fill(LONGEST);
  row.messages = INT64_MAX;
  row.infinite = 0x7fff;
  row.measures.fill(LONGEST);
  appendRow(row, &table);
  write(table, directory.path + "/frames.csv");
  FrameTable read;
  ASSERT_EQ(readFramesCsv(directory.path + "/frames.csv", &read), "");
  EXPECT_EQ(read.pts, table.pts);
  EXPECT_EQ(read.values, table.values);
  EXPECT_EQ(read.messages, table.messages);
  EXPECT_EQ(read.measures, table.measures);
}

TEST(FrameTable, mayHaveNoFrames) {
  EXPECT_EQ(mistakeIn(HEADER), "");
  EXPECT_EQ(mistakeIn(messagesHeader()), "");
  EXPECT_EQ(mistakeIn(wholeHeader()), "");
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
