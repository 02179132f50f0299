// The command line: how many arguments there are, and what the text of each stands for.
#include <gtest/gtest.h>

#include <filesystem>

#include "analysis.h"

namespace {

struct Reading {
  std::string text;
  int64_t value;
};

const std::string usageBehindName =
    " video.yuv WIDTH HEIGHT [RequestedZMRs] [FPS] [NumberOfFrames] [startFrame],\n"
    "where parameters in square brackets are optional.\n\n";

void expectUsage(const std::vector<std::string>& arguments) {
  SCOPED_TRACE(arguments.size());
  const TemporaryDirectory directory;
  const ProgramRun run = analyse(directory, arguments);
  EXPECT_EQ(run.out,
            "Not enough parameters\n\nUsage: " + std::string(LUMAPROBE_BINARY) + usageBehindName);
  EXPECT_EQ(run.err, "");
  EXPECT_EQ(run.status, 255);
  EXPECT_TRUE(std::filesystem::is_empty(directory.path));
}

// The rows of two 32x32 frames of levels 10 and 13 with only blockiness (0x1) and temporal activity
// (0x40): a flat frame has blockiness 1, and all samples differ by 3.
std::vector<Row> rowsOfMask0x41() {
  std::vector<Row> rows = zeroRows(0, 2);
  rows[0].blockiness = rows[1].blockiness = "1.00000";
  rows[1].temporalActivity = "3.00000";
  return rows;
}

void expectMask(const std::string& mask, const std::vector<Row>& rows) {
  SCOPED_TRACE("mask " + mask);
  const TemporaryDirectory directory;
  writeFlatClip(directory, {10, 13});
  expectAnalysis(directory, {"clip.yuv", "32", "32", mask},
                 startMessages("clip.yuv", 32, 32, "25.00", 2, 0), rows);
}

// Runs over nothing but zero frames with the frame rate `fps` as the last argument but one.
void expectFrameRate(const std::string& fps, const std::string& printed, int64_t count) {
  SCOPED_TRACE("frame rate " + fps);
  const TemporaryDirectory directory;
  writeFile(directory.path + "/clip.yuv", "");
  expectAnalysis(directory, {"clip.yuv", "32", "32", "0", fps, "unread"},
                 startMessages("clip.yuv", 32, 32, printed, count, 0), zeroRows(0, count));
}

}  // namespace

TEST(Arguments, printUsageAndCreateNothing_whenThereAreFewerThanThree) {
  expectUsage({});
  expectUsage({"clip.yuv"});
  expectUsage({"a.yuv", "352"});
}

TEST(Arguments, printUsage_evenIfTheInputExists) {
  const TemporaryDirectory directory;
  writeFlatClip(directory, {1});
  EXPECT_EQ(analyse(directory, {"clip.yuv", "32"}).status, 255);
  EXPECT_FALSE(std::filesystem::exists(directory.path + "/metricsResultsCSV.csv"));
}

TEST(Arguments, nameTheProgramAsItWasCalled_inTheUsageText) {
  const TemporaryDirectory directory;
  std::filesystem::create_symlink(LUMAPROBE_BINARY, directory.path + "/called %s so");
  const ProgramRun run = runProgram("./called %s so", {}, directory.path);
  EXPECT_EQ(run.out, "Not enough parameters\n\nUsage: ./called %s so" + usageBehindName);
  EXPECT_EQ(run.status, 255);
}

TEST(Arguments, requestEverythingAt25FramesPerSecond_whenThereAreThree) {
  const TemporaryDirectory directory;
  writeFlatClip(directory, {10, 13, 3});
  expectAnalysis(directory, {"clip.yuv", "32", "32"},
                 startMessages("clip.yuv", 32, 32, "25.00", 3, 0),
                 {flatRow(0, 10), flatRow(1, 13, "3.00000"), flatRow(2, 3, "10.00000")});
}

TEST(Arguments, chooseTheIndicators_whenThereAreFour) {
  expectMask("0x41", rowsOfMask0x41());
  expectMask("0", zeroRows(0, 2));
}

TEST(Arguments, countTheFramesOfTheFile_whenThereAreFive) {
  const TemporaryDirectory directory;
  writeFlatClip(directory, {10, 13});
  expectAnalysis(directory, {"clip.yuv", "32", "32", "0x41", "1"},
                 startMessages("clip.yuv", 32, 32, "1.00", 2, 0), rowsOfMask0x41());
}

TEST(Arguments, takeTheCountFromTheFrameRateAndStartAtZero_whenThereAreSix) {
  const TemporaryDirectory directory;
  writeFlatClip(directory, {10, 13, 20});
  expectAnalysis(directory, {"clip.yuv", "32", "32", "0x41", "2", "1"},
                 startMessages("clip.yuv", 32, 32, "2.00", 2, 0), rowsOfMask0x41());
}

TEST(Arguments, takeTheStartFromTheSixthAndNeverReadTheSeventh_whenThereAreSeven) {
  for (const std::string seventh : {"0", "-9", "0x7", "garbage", ""}) {
    SCOPED_TRACE("seventh argument " + seventh);
    const TemporaryDirectory directory;
    writeFlatClip(directory, {90, 10, 13, 20});
    std::vector<Row> rows = rowsOfMask0x41();
    rows[0].frame = "00001";
    rows[1].frame = "00002";
    expectAnalysis(directory, {"clip.yuv", "32", "32", "0x41", "2", "1", seventh},
                   startMessages("clip.yuv", 32, 32, "2.00", 2, 1), rows);
  }
}

TEST(Arguments, ignoreAllBehindTheSeventh_whenThereAreEight) {
  const TemporaryDirectory directory;
  writeFlatClip(directory, {10, 13});
  expectAnalysis(directory, {"clip.yuv", "32", "32", "0x41", "2", "0", "1", "2"},
                 startMessages("clip.yuv", 32, 32, "2.00", 2, 0), rowsOfMask0x41());
}

TEST(Arguments, giveThirtyFramesFromZeroOrFromTheHundredth_ofACifClip) {
  const TemporaryDirectory directory;
  writeFile(directory.path + "/a.yuv", "");
  // All frames are read past the end of the file, from buffers of zeros: of the two indicators of
  // mask 0x3, blockiness is 1 on a flat frame and spatial activity 0.
  std::vector<Row> rows = zeroRows(0, 30);
  for (Row& row : rows) row.blockiness = "1.00000";
  expectAnalysis(directory, {"a.yuv", "352", "288", "0x3", "30", "100"},
                 startMessages("a.yuv", 352, 288, "30.00", 30, 0), rows);

  rows = zeroRows(100, 30);
  for (Row& row : rows) row.blockiness = "1.00000";
  expectAnalysis(directory, {"a.yuv", "352", "288", "0x3", "30", "100", "5"},
                 startMessages("a.yuv", 352, 288, "30.00", 30, 100), rows);
}

TEST(Arguments, printTheInputNameAsItIs_whenItHoldsPercentSigns) {
  const TemporaryDirectory directory;
  writeFile(directory.path + "/100%s %n.yuv", flatFrame(32, 32, 1));
  expectAnalysis(directory, {"100%s %n.yuv", "32", "32", "0"},
                 startMessages("100%s %n.yuv", 32, 32, "25.00", 1, 0), zeroRows(0, 1));
}

TEST(Arguments, readSidesAsDecimalNumbers_cutTo32Bits) {
  const std::vector<Reading> sides = {
      {"32", 32},          {"+32", 32}, {" \t32", 32},      {"32abc", 32},
      {"32.9", 32},        {"032", 32}, {"4294967328", 32},  // 2^32 + 32
      {"-4294967264", 32},                                   // 32 - 2^32
      {"8589934624", 32},                                    // 2 * 2^32 + 32
  };
  const TemporaryDirectory directory;
  writeFile(directory.path + "/clip.yuv", "");
  for (const Reading& side : sides) {
    SCOPED_TRACE("side " + side.text);
    const int value = static_cast<int>(side.value);
    expectAnalysis(directory, {"clip.yuv", side.text, "48"},
                   startMessages("clip.yuv", value, 48, "25.00", 0, 0), {});
    expectAnalysis(directory, {"clip.yuv", "48", side.text},
                   startMessages("clip.yuv", 48, value, "25.00", 0, 0), {});
  }
}

TEST(Arguments, refuseSidesWhoseTextGivesNoPositiveNumber) {
  const std::vector<Reading> sides = {
      {"0x10", 0},
      {"abc", 0},
      {"", 0},
      {"-", 0},
      {"-32", -32},
      {"4294967296", 0},             // 2^32
      {"2147483648", -2147483648},   // 2^31
      {"99999999999999999999", -1},  // the largest 64-bit number
      {"-99999999999999999999", 0},  // the smallest
  };
  const std::string rule =
      ": width and height must be at least 1, and 3 * width * height at most "
      "2147483647\n";
  for (const Reading& side : sides) {
    SCOPED_TRACE("side " + side.text);
    const TemporaryDirectory directory;
    writeFile(directory.path + "/clip.yuv", "");
    const ProgramRun wide = analyse(directory, {"clip.yuv", side.text, "48"});
    EXPECT_EQ(wide.out, "Cannot analyse frames of " + std::to_string(side.value) + " x 48" + rule);
    EXPECT_EQ(wide.status, 255);
    const ProgramRun high = analyse(directory, {"clip.yuv", "48", side.text});
    EXPECT_EQ(high.out, "Cannot analyse frames of 48 x " + std::to_string(side.value) + rule);
    EXPECT_EQ(high.status, 255);
  }
}

TEST(Arguments, readTheMaskAsHexadecimalOctalOrDecimal) {
  // 0x41 is 65 is octal 101.
  for (const std::string mask : {"0x41", "0X41", "65", "0101", " 65", "+65", "65abc", "0x41z"})
    expectMask(mask, rowsOfMask0x41());
}

TEST(Arguments, cutTheMaskTo32Bits) {
  // 2^32 + 65, the same in hexadecimal, -(2^32 - 65), 2^63 + 65 and -(2^64 - 65).
  for (const std::string mask :
       {"4294967361", "0x100000041", "-4294967231", "9223372036854775873", "-18446744073709551551"})
    expectMask(mask, rowsOfMask0x41());
  // A number past 64 bits is read as the largest one, whose low 32 bits are all set.
  for (const std::string mask : {"-1", "18446744073709551616", "0xffffffffffffffffff"})
    expectMask(mask, {flatRow(0, 10), flatRow(1, 13, "3.00000")});
}

TEST(Arguments, requestNothing_whenTheMaskIsNoNumber) {
  for (const std::string mask : {"garbage", "", "0x", "09", "x41", "-", "-0", "0b11", "-0B11"})
    expectMask(mask, zeroRows(0, 2));
}

TEST(Arguments, readTheFrameRateAndTheCount_fromTheFifthText) {
  expectFrameRate("25", "25.00", 25);
  expectFrameRate("29.97", "29.97", 29);
  expectFrameRate("3.999", "4.00", 3);
  expectFrameRate(" 2", "2.00", 2);
  expectFrameRate("2fps", "2.00", 2);
  expectFrameRate("010", "10.00", 10);
  // The count stops at the first character that is no decimal digit, the frame rate reads on.
  expectFrameRate("1e2", "100.00", 1);
  expectFrameRate("0x10", "16.00", 0);
  expectFrameRate(".5", "0.50", 0);
  expectFrameRate("0.5", "0.50", 0);
  expectFrameRate("garbage", "0.00", 0);
  expectFrameRate("", "0.00", 0);
  expectFrameRate("inf", "inf", 0);
  expectFrameRate("nan", "nan", 0);
}

TEST(Arguments, cutTheCountTo32Bits) {
  expectFrameRate("4294967298", "4294967298.00", 2);  // 2^32 + 2
  expectFrameRate("-4294967294", "-4294967294.00", 2);
}

TEST(Arguments, giveNoFrames_whenTheCountIsNegative) {
  const std::vector<Reading> counts = {
      {"-25", -25},
      {"2147483648", -2147483648},  // 2^31
      {"9223372036854775808", -1},  // past 64 bits: the largest 64-bit number
      {"-9223372036854775809", 0},  // the smallest
  };
  for (const Reading& count : counts) {
    SCOPED_TRACE("count " + count.text);
    const TemporaryDirectory directory;
    writeFlatClip(directory, {1, 2});
    // The last two, 2^63 and -(2^63 + 1), are both rounded to a power of two as frame rates.
    const std::string fps =
        count.text == "-9223372036854775809" ? "-9223372036854775808.00" : count.text + ".00";
    expectAnalysis(directory, {"clip.yuv", "32", "32", "0", count.text, "0"},
                   startMessages("clip.yuv", 32, 32, fps, count.value, 0), {});
  }
}

TEST(Arguments, readTheStartAsADecimalNumber_cutTo32Bits) {
  const std::vector<Reading> starts = {
      {"5", 5},
      {"+5", 5},
      {" 5", 5},
      {"5.9", 5},
      {"010", 10},
      {"0x10", 0},
      {"garbage", 0},
      {"", 0},
      {"-5", -5},
      {"100000", 100000},
      {"4294967301", 5},             // 2^32 + 5
      {"-4294967291", 5},            // 5 - 2^32
      {"99999999999999999999", -1},  // the largest 64-bit number
      {"-99999999999999999999", 0},  // the smallest
  };
  const TemporaryDirectory directory;
  writeFile(directory.path + "/clip.yuv", "");
  for (const Reading& start : starts) {
    SCOPED_TRACE("start " + start.text);
    expectAnalysis(directory, {"clip.yuv", "32", "32", "0", "1", start.text, "unread"},
                   startMessages("clip.yuv", 32, 32, "1.00", 1, start.value),
                   zeroRows(start.value, 1));
  }
}

TEST(Arguments, keepTheStartAtZero_whenTheSixthTextIsAnotherAndTheSeventhIsMissing) {
  const TemporaryDirectory directory;
  writeFile(directory.path + "/clip.yuv", "");
  for (const std::string sixth : {"7", "-7", "garbage", "0x7", "99999999999999999999"}) {
    SCOPED_TRACE("sixth argument " + sixth);
    expectAnalysis(directory, {"clip.yuv", "32", "32", "0", "1", sixth},
                   startMessages("clip.yuv", 32, 32, "1.00", 1, 0), zeroRows(0, 1));
  }
}
