// What a run of the program must print and write, put together from plain text, and the clips that
// the tests feed to it.
#include "analysis.h"

#include <gtest/gtest.h>

#include <sstream>

const std::string consoleHeader =
    "Frame: \tBlockiness: \tSpatial Activity: \tLetterbox: \tPillarbox: \tBlockloss: \tBlur: "
    "\t\tTemporalAct: \tBlackout: \tFreezing: \tExposure(bri): \tContrast: \tInterlace: \tNoise: "
    "\t\tSlice: \t\tFlickering:\n";

const std::string reportHeader =
    "Frame: \tBlockiness: \tSA: \tLetterbox: \tPillarbox: \tBlockloss: \tBlur: \tTA: \tBlackout: "
    "\tFreezing: \tExposure(bri): \tContrast: \tInterlace: \tNoise: \tSlice: \tFlickering:\n";

const std::string closing = "\nFile stream closed\n\n";

namespace {

std::string padded(std::string text, size_t width) {
  if (text.size() < width) text.resize(width, ' ');
  return text;
}

// At least five characters, filled with zeros behind the sign.
std::string frameText(int64_t frame) {
  std::string text = std::to_string(frame);
  if (text.size() < 5) text.insert(frame < 0 ? 1 : 0, 5 - text.size(), '0');
  return text;
}

}  // namespace

Row zeroRow(int64_t frame) {
  Row row;
  row.frame = frameText(frame);
  return row;
}

std::vector<Row> zeroRows(int64_t start, int64_t count) {
  std::vector<Row> rows;
  for (int64_t k = 0; k < count; k++) rows.push_back(zeroRow(start + k));
  return rows;
}

// A flat frame has no step anywhere (blockiness 0/0 counts as 1) and bars all over. It is too small
// for block loss and has no detail for blur, noise and interlace; below 48 lines slice stays 0.
// Nine whole blocks lie inside the border, so exposure is the level itself. The sum over 1024
// samples is a multiple of 1024, so contrast is exactly 0.
Row flatRow(int64_t frame, int level) {
  Row row = zeroRow(frame);
  row.blockiness = "1.00000";
  row.letterbox = "1.00000";
  row.pillarbox = "1.00000";
  row.blockLoss = "-1.00000";
  row.blackout = "1";
  row.exposure = std::to_string(level);
  return row;
}

// From the second frame on flickering gives -1 until its period ends.
Row flatRow(int64_t frame, int level, const std::string& temporalActivity) {
  Row row = flatRow(frame, level);
  row.temporalActivity = temporalActivity;
  row.flickering = "-1.00000";
  return row;
}

Row levelRow(int64_t frame, int level, const std::string& step) {
  Row row = zeroRow(frame);
  row.exposure = std::to_string(level);
  row.temporalActivity = step;
  return row;
}

std::string startMessages(const std::string& input, int width, int height, const std::string& fps,
                          int64_t frames, int64_t start) {
  return "Video file " + input + " opened successfully!\n\nWidth = " + std::to_string(width) +
         ", Height = " + std::to_string(height) + ", FPS = " + fps +
         ", Number of Frames = " + std::to_string(frames) +
         ", Start Frame = " + std::to_string(start) + "\n\n";
}

std::string consoleRows(const std::vector<Row>& rows) {
  std::string text;
  for (const Row& row : rows)
    text += row.frame + " \t" + padded(row.blockiness, 5) + " \t" + padded(row.spatialActivity, 5) +
            " \t\t" + padded(row.letterbox, 5) + " \t" + padded(row.pillarbox, 5) + " \t" +
            padded(row.blockLoss, 5) + " \t" + padded(row.blur, 7) + " \t" +
            padded(row.temporalActivity, 5) + " \t" + row.blackout + " \t\t" + row.freezing +
            " \t\t" + padded(row.exposure, 6) + " \t\t" + padded(row.contrast, 5) + " \t" +
            padded(row.interlace, 5) + " \t" + padded(row.noise, 8) + " \t" + padded(row.slice, 7) +
            " \t" + padded(row.flickering, 5) + "\n";
  return text;
}

std::string reportRows(const std::vector<Row>& rows) {
  std::string text;
  for (const Row& row : rows)
    text += row.frame + " \t" + padded(row.blockiness, 5) + " \t" + padded(row.spatialActivity, 5) +
            " \t" + padded(row.letterbox, 5) + " \t" + padded(row.pillarbox, 5) + " \t" +
            padded(row.blockLoss, 5) + " \t" + padded(row.blur, 5) + " \t" +
            padded(row.temporalActivity, 5) + " \t" + row.blackout + " \t" + row.freezing + " \t" +
            padded(row.exposure, 6) + " \t" + padded(row.contrast, 5) + " \t" +
            padded(row.interlace, 5) + " \t" + padded(row.noiseInReport, 8) + " \t" +
            padded(row.slice, 7) + " \t" + padded(row.flickering, 5) + "\n";
  return text;
}

ProgramRun analyse(const TemporaryDirectory& directory, const std::vector<std::string>& arguments,
                   const std::string& standardInput, const std::function<void()>& prepare) {
  return runProgram(LUMAPROBE_BINARY, arguments, directory.path, standardInput, prepare);
}

std::string readReport(const TemporaryDirectory& directory) {
  return readFile(directory.path + "/metricsResultsCSV.csv");
}

void expectAnalysis(const TemporaryDirectory& directory, const std::vector<std::string>& arguments,
                    const std::string& messages, const std::vector<Row>& rows,
                    const std::string& standardInput) {
  const ProgramRun run = analyse(directory, arguments, standardInput);
  EXPECT_EQ(run.out, messages + consoleHeader + consoleRows(rows) + closing);
  EXPECT_EQ(run.err, "");
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(readReport(directory), reportHeader + reportRows(rows));
}

std::vector<Fields> fieldsOf(const std::string& rows) {
  std::vector<Fields> fields;
  std::istringstream lines(rows);
  for (std::string line; std::getline(lines, line);) {
    std::istringstream words(line);
    for (std::string& field : fields.emplace_back()) words >> field;
  }
  return fields;
}

std::string frameOf(const std::string& luma) {
  return luma + std::string(luma.size() * 3 / 2 - luma.size(), static_cast<char>(77));
}

std::string flatFrame(size_t width, size_t height, int level) {
  return frameOf(std::string(width * height, static_cast<char>(level)));
}

void writeFlatClip(const TemporaryDirectory& directory, const std::vector<int>& levels) {
  std::string clip;
  for (int level : levels) clip += flatFrame(32, 32, level);
  writeFile(directory.path + "/clip.yuv", clip);
}
