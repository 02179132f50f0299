// From end to end: a clip with known defects goes in, and on the frames of each defect its own
// indicator leaves the range that it has on the clean frames, far and in the direction that is
// meant.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <map>
#include <sstream>

#include "analysis.h"

namespace {

struct Stretch {
  std::string name;
  int first;
  int last;
};

struct Clip {
  std::vector<Stretch> clean;
  std::map<std::string, Stretch> defects;
  std::vector<Fields> rows;
};

// Columns of the report, from 0 for the frame number.
enum Column {
  BLOCKINESS = 1,
  LETTERBOX = 3,
  PILLARBOX = 4,
  BLOCK_LOSS = 5,
  BLUR = 6,
  BLACKOUT = 8,
  FREEZING = 9,
  EXPOSURE = 10,
  CONTRAST = 11,
  INTERLACE = 12,
  NOISE = 13,
  SLICE = 14,
  FLICKERING = 15
};

// Makes the clip and analyses it, once for all tests of this process.
const Clip& analysedClip() {
  static const Clip clip = [] {
    Clip result;
    const TemporaryDirectory directory;
    const ProgramRun maker = runProgram(MAKE_CLIP_BINARY, {"clip.yuv"}, directory.path);
    EXPECT_EQ(maker.status, 0) << maker.err;
    std::istringstream table(maker.out);
    std::string line;
    std::getline(table, line);
    EXPECT_EQ(line, "name\tfirst\tlast\tindicator");
    std::string indicator;
    for (Stretch s; table >> s.name >> s.first >> s.last >> indicator;) {
      if (s.name == "clean") {
        result.clean.push_back(s);
      } else {
        result.defects[s.name] = s;
      }
    }
    EXPECT_EQ(analyse(directory, {"clip.yuv", "352", "288"}).status, 0);
    const std::string report = readReport(directory);
    result.rows = fieldsOf(report.substr(reportHeader.size()));
    return result;
  }();
  return clip;
}

// The values of a column on a stretch of frames. Flickering speaks only at the end of a period.
std::vector<double> valuesOf(Column column, const Stretch& stretch, int skipped = 0) {
  std::vector<double> values;
  for (int k = stretch.first + skipped; k <= stretch.last; ++k) {
    const double value = std::atof(analysedClip().rows.at(static_cast<size_t>(k))[column].c_str());
    if (column != FLICKERING || value != -1.0) values.push_back(value);
  }
  return values;
}

double largestOnCleanFrames(Column column) {
  double largest = -INFINITY;
  for (const Stretch& stretch : analysedClip().clean) {
    for (double value : valuesOf(column, stretch)) largest = std::max(largest, value);
  }
  return largest;
}

double smallestOnCleanFrames(Column column) {
  double smallest = INFINITY;
  for (const Stretch& stretch : analysedClip().clean) {
    for (double value : valuesOf(column, stretch)) smallest = std::min(smallest, value);
  }
  return smallest;
}

// Every frame of the defect, but the first `skipped` ones, is above or below a limit.
void expectAbove(const std::string& defect, Column column, double limit, int skipped = 0) {
  const std::vector<double> values = valuesOf(column, analysedClip().defects.at(defect), skipped);
  ASSERT_FALSE(values.empty());
  for (double value : values) EXPECT_GT(value, limit);
}

void expectBelow(const std::string& defect, Column column, double limit) {
  const std::vector<double> values = valuesOf(column, analysedClip().defects.at(defect));
  ASSERT_FALSE(values.empty());
  for (double value : values) EXPECT_LT(value, limit);
}

}  // namespace

TEST(Defects, blackFramesAreBlackouts) {
  EXPECT_EQ(largestOnCleanFrames(BLACKOUT), 0.0);
  expectAbove("black", BLACKOUT, 0.5);
}

TEST(Defects, stillFramesAreFrozen_fromTheThirdOn) {
  EXPECT_EQ(largestOnCleanFrames(FREEZING), 0.0);
  expectAbove("freeze", FREEZING, 0.5, 2);
}

TEST(Defects, barsAboveAndBelowRaiseLetterbox) {
  EXPECT_EQ(largestOnCleanFrames(LETTERBOX), 0.0);
  // Each bar takes an eighth of the height, a quarter of half the height.
  for (double value : valuesOf(LETTERBOX, analysedClip().defects.at("letterbox"))) {
    EXPECT_EQ(value, 0.25);
  }
}

TEST(Defects, barsAtTheSidesRaisePillarbox) {
  EXPECT_EQ(largestOnCleanFrames(PILLARBOX), 0.0);
  // The bar of 352 / 8 = 44 columns counts 43 of half the width, 43 / 176 = 0.244318...
  for (double value : valuesOf(PILLARBOX, analysedClip().defects.at("pillarbox"))) {
    EXPECT_EQ(value, 0.24432);
  }
}

TEST(Defects, coarseCodingLowersBlockiness) {
  expectBelow("coarseCoding", BLOCKINESS, smallestOnCleanFrames(BLOCKINESS) / 4);
}

TEST(Defects, lostBlocksRaiseBlockLoss) {
  expectAbove("lostBlocks", BLOCK_LOSS, 20 * std::max(1.0, largestOnCleanFrames(BLOCK_LOSS)));
}

TEST(Defects, defocusRaisesBlur) {
  expectAbove("blur", BLUR, 4 * largestOnCleanFrames(BLUR));
}

TEST(Defects, overExposureRaisesExposure) {
  expectAbove("overExposure", EXPOSURE, largestOnCleanFrames(EXPOSURE) + 40);
}

TEST(Defects, lowContrastLowersContrast) {
  expectBelow("lowContrast", CONTRAST, smallestOnCleanFrames(CONTRAST) / 4);
}

TEST(Defects, combingRaisesInterlace) {
  EXPECT_LT(largestOnCleanFrames(INTERLACE), 0.01);
  expectAbove("combing", INTERLACE, 0.4);
}

TEST(Defects, noiseRaisesNoise) {
  expectAbove("noise", NOISE, 5 * largestOnCleanFrames(NOISE));
}

TEST(Defects, repeatedSlicesRaiseSlice) {
  expectAbove("repeatedSlices", SLICE, 10 * largestOnCleanFrames(SLICE));
}

TEST(Defects, flickerRaisesFlickering) {
  expectAbove("flicker", FLICKERING, 4 * largestOnCleanFrames(FLICKERING));
}

TEST(Defects, everyDefectOfTheClipHasATestHere) {
  // The thirteen above.
  EXPECT_EQ(analysedClip().defects.size(), 13u);
}

TEST(MakeClip, writesTheSameBytesEveryTime) {
  const TemporaryDirectory directory;
  EXPECT_EQ(runProgram(MAKE_CLIP_BINARY, {"a", "256", "258"}, directory.path).status, 0);
  EXPECT_EQ(runProgram(MAKE_CLIP_BINARY, {"b", "256", "258"}, directory.path).status, 0);
  const std::string clip = readFile(directory.path + "/a");
  EXPECT_EQ(clip.size(), 233u * 256 * 258 * 3 / 2);
  EXPECT_TRUE(clip == readFile(directory.path + "/b"));
}

TEST(MakeClip, refusesBadArguments) {
  const TemporaryDirectory directory;
  const std::vector<std::vector<std::string>> mistakes = {{},
                                                          {"clip", "352"},
                                                          {"clip", "254", "288"},
                                                          {"clip", "352", "287"},
                                                          {"clip", "x", "288"},
                                                          {"clip", "352", "288", "1"},
                                                          {"clip", "352", "8194"}};
  for (const auto& arguments : mistakes) {
    const ProgramRun run = runProgram(MAKE_CLIP_BINARY, arguments, directory.path);
    EXPECT_EQ(run.status, 2);
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err,
              "Usage: makeClip OUTPUT.yuv [WIDTH HEIGHT] (even numbers from 256 to 8192)\n");
  }
}

TEST(MakeClip, saysSo_whenItCannotWrite) {
  const TemporaryDirectory directory;
  const ProgramRun full = runProgram(MAKE_CLIP_BINARY, {"/dev/full", "256", "256"}, directory.path);
  EXPECT_EQ(full.status, 1);
  EXPECT_EQ(full.err, "makeClip: cannot write /dev/full: No space left on device\n");
  const ProgramRun missing = runProgram(MAKE_CLIP_BINARY, {"no/clip"}, directory.path);
  EXPECT_EQ(missing.status, 1);
  EXPECT_EQ(missing.err, "makeClip: cannot write no/clip: No such file or directory\n");
}
