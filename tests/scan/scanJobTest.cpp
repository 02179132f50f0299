// What a worker leaves in its folder: pictures where a page shows them, and nowhere else.
#include "scan/processes/scanJob.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

#include "clips.h"

TEST(ScanJob, makesPicturesForAPageAlone) {
  const TemporaryDirectory directory;
  makeClip(directory, "clip.mkv", {"-c:v", "ffv1"});
  ScanSettings settings;
  settings.analysis.mask = EXPOSURE;
  ScanJob job;
  job.source = {directory.path + "/clip.mkv", 0, 0, ""};
  job.folder = directory.path + "/clip.mkv.lumascan";
  // How many there are afterwards; -1: no folder for them, either.
  const auto picturesOf = [&](Freshness freshness, const OutputChoice& outputs) {
    job.freshness = freshness;
    settings.outputs = outputs;
    EXPECT_EQ(runJob(job, settings, [](Stage, double, int64_t) {}).outputError, "");
    EXPECT_EQ(std::filesystem::exists(job.folder + "/report.html"), outputs.hasHtml);
    const bool hasFolder = std::filesystem::exists(job.folder + "/thumbs");
    return hasFolder ? static_cast<int>(readThumbnails(job.folder).size()) : -1;
  };
  constexpr bool CSV = true;
  constexpr bool HTML = true;
  // All of 25 frames are fewer than the hundred at equal distances.
  EXPECT_EQ(picturesOf(Freshness::STALE, {CSV, HTML, Thumbs::ALL}), 25);
  EXPECT_EQ(picturesOf(Freshness::JUDGE, {CSV, HTML, Thumbs::NONE}), -1);
  EXPECT_EQ(picturesOf(Freshness::JUDGE, {CSV, HTML, Thumbs::ALL}), 25);
  EXPECT_EQ(picturesOf(Freshness::JUDGE, {CSV, !HTML, Thumbs::ALL}), -1);
  EXPECT_EQ(picturesOf(Freshness::STALE, {!CSV, HTML, Thumbs::ALL}), 25);
  EXPECT_EQ(picturesOf(Freshness::STALE, {!CSV, !HTML, Thumbs::ALL}), -1);
}

TEST(ScanJob, tellsWhatItIsDoing) {
  const TemporaryDirectory directory;
  makeClip(directory, "clip.mkv", {"-c:v", "ffv1"});
  ScanJob job;
  job.source = {directory.path + "/clip.mkv", 0, 0, ""};
  job.folder = directory.path + "/clip.mkv.lumascan";
  ScanSettings settings;
  settings.outputs.thumbs = Thumbs::ALL;
  ASSERT_TRUE(parsePosition("f:5", &settings.analysis.start));
  std::vector<Stage> stages;
  double furthest = 0.0;
  int64_t most = 0;
  EXPECT_EQ(runJob(job, settings,
                   [&](Stage stage, double position, int64_t frames) {
                     if (stages.empty() || stages.back() != stage) stages.push_back(stage);
                     furthest = std::max(furthest, position);
                     EXPECT_GE(frames, most);
                     most = frames;
                   })
                .outputError,
            "");
  EXPECT_EQ(stages,
            (std::vector<Stage>{Stage::OPENING, Stage::SKIPPING, Stage::DECODING, Stage::STATISTICS,
                                Stage::EVENTS, Stage::PICTURES, Stage::WRITING}));
  EXPECT_EQ(furthest, 1.0);
  EXPECT_EQ(most, 20);  // of 25
}

TEST(ScanJob, doesNotDecodeWhatCannotBeStored) {
  const TemporaryDirectory directory;
  makeClip(directory, "clip.mkv", {"-c:v", "ffv1"});
  writeFile(directory.path + "/results", "no folder");
  ScanJob job;
  job.source = {directory.path + "/clip.mkv", 0, 0, ""};
  job.folder = directory.path + "/results";
  int frames = 0;
  EXPECT_NE(runJob(job, {}, [&](Stage, double, int64_t) { ++frames; }).outputError, "");
  EXPECT_EQ(frames, 0);
}
