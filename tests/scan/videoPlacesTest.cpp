// Whether videos of stored results are still there.
#include "scan/results/videoPlaces.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "currentFolder.h"
#include "scan/files/names.h"

namespace fs = std::filesystem;

namespace {

InputFacts inputAt(const std::string& path) {
  return {path, uriPath(path), std::nullopt, std::nullopt};
}

}  // namespace

TEST(ScanFolders, areTheCurrentOne_andThoseThatTheRunNames) {
  const CurrentFolder current;
  const std::string here = fs::current_path();
  EXPECT_EQ(scanFolders("results"), std::vector<std::string>{here});
  fs::create_directory("results");
  writeFile("results/run.json", R"({"folders": ["/a%20b", ")" + uriPath(here) + R"(", 7, "/c"]})");
  EXPECT_EQ(scanFolders("results"), (std::vector<std::string>{here, "/a b", "/c"}));
  for (const char* const run : {"", "{", "[]", "7", R"({"folders": "/a"})"}) {
    writeFile("results/run.json", run);
    EXPECT_EQ(scanFolders("results"), std::vector<std::string>{here}) << run;
  }
  fs::remove("results/run.json");
  fs::create_directory("results/run.json");
  EXPECT_EQ(scanFolders("results"), std::vector<std::string>{here});
}

TEST(IsVideoGone, whereItIsInNoneOfTheFolders) {
  const CurrentFolder current;
  const std::string here = fs::current_path();
  fs::create_directories("a/films");
  fs::create_directory("b");
  writeFile("a/films/x%y.mp4", "x");
  const InputFacts video = inputAt("films/x%y.mp4");
  EXPECT_FALSE(isVideoGone(video, {here + "/b", here + "/a"}));
  EXPECT_TRUE(isVideoGone(video, {here + "/b"}));
  EXPECT_TRUE(isVideoGone(video, {here + "/nowhere"}));
  // Below a file there is nothing.
  EXPECT_TRUE(isVideoGone(inputAt("a/films/x%y.mp4/z.mp4"), {here}));
  EXPECT_FALSE(isVideoGone(inputAt(here + "/a/films/x%y.mp4"), {here + "/b"}));
  EXPECT_TRUE(isVideoGone(inputAt(here + "/x%y.mp4"), {here + "/a/films"}));
}

TEST(IsVideoGone, neverOfAPipe_norOfWhatCannotBeLookedFor) {
  const CurrentFolder current;
  const std::string here = fs::current_path();
  EXPECT_FALSE(isVideoGone(inputAt("-"), {here}));
  EXPECT_FALSE(isVideoGone({"a.mp4", "", std::nullopt, std::nullopt}, {here}));
  fs::create_symlink("loop", "loop");
  EXPECT_FALSE(isVideoGone(inputAt("loop/a.mp4"), {here}));
}
