// What a run of the program must print and write, put together from plain text, and the clips that
// the tests feed to it.
#ifndef LUMAPROBE_TESTS_ANALYSIS_H
#define LUMAPROBE_TESTS_ANALYSIS_H

#include <array>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "../support/runProgram.h"

// The texts of one row's values, without padding. The two tables differ in the decimals of noise.
struct Row {
  std::string frame;
  std::string blockiness = "0.00000";
  std::string spatialActivity = "0.00000";
  std::string letterbox = "0.00000";
  std::string pillarbox = "0.00000";
  std::string blockLoss = "0.00000";
  std::string blur = "0.000";
  std::string temporalActivity = "0.00000";
  std::string blackout = "0";
  std::string freezing = "0";
  std::string exposure = "0";
  std::string contrast = "0.00000";
  std::string interlace = "0.00000";
  std::string noise = "0.00";
  std::string noiseInReport = "0.0000";
  std::string slice = "0.000";
  std::string flickering = "0.00000";
};

// The row of a frame in which nothing was measured.
Row zeroRow(int64_t frame);
std::vector<Row> zeroRows(int64_t start, int64_t count);

// The row of a 32x32 frame of one level with all fifteen indicators: the first of its range, or one
// whose level differs by `temporalActivity` (more than 1) from the frame before.
Row flatRow(int64_t frame, int level);
Row flatRow(int64_t frame, int level, const std::string& temporalActivity);

// Exposure (0x200) of a flat frame is its level, and temporal activity (0x40) the step from the
// level of the frame before: together they show which samples were in the two buffers.
constexpr char levelAndStep[] = "0x240";
Row levelRow(int64_t frame, int level, const std::string& step = "0.00000");

extern const std::string consoleHeader;
extern const std::string reportHeader;
extern const std::string closing;

std::string startMessages(const std::string& input, int width, int height, const std::string& fps,
                          int64_t frames, int64_t start);
std::string consoleRows(const std::vector<Row>& rows);
std::string reportRows(const std::vector<Row>& rows);

// Runs the program in `directory`; `prepare` is that of runProgram.
ProgramRun analyse(
    const TemporaryDirectory& directory, const std::vector<std::string>& arguments,
    const std::string& standardInput = "/dev/null", const std::function<void()>& prepare = [] {});

std::string readReport(const TemporaryDirectory& directory);

// Runs the program and expects a normal end: nothing on standard error, status 0, and on standard
// output and in the report file exactly `messages`, the headers, `rows` and the closing line.
void expectAnalysis(const TemporaryDirectory& directory, const std::vector<std::string>& arguments,
                    const std::string& messages, const std::vector<Row>& rows,
                    const std::string& standardInput = "/dev/null");

// The fields of all `rows`, of either form, without their padding.
using Fields = std::array<std::string, 16>;
std::vector<Fields> fieldsOf(const std::string& rows);

// A frame as it is stored: the luma plane and the chroma bytes behind it. The chroma has a level
// that no test expects anywhere.
std::string frameOf(const std::string& luma);
std::string flatFrame(size_t width, size_t height, int level);

// Writes "clip.yuv": one 32x32 frame of each level.
void writeFlatClip(const TemporaryDirectory& directory, const std::vector<int>& levels);

#endif
