// Results whose videos are gone.
#include <filesystem>

#include "scanRun.h"

namespace fs = std::filesystem;

namespace {

const char* const mark = "the video is not there any more";

// Results of films/a.mkv, films/old/b.mkv and elsewhere/c.mkv, whose scan was started there.
void scanThree(const TemporaryDirectory& directory) {
  fs::create_directories(directory.path + "/films/old");
  fs::create_directory(directory.path + "/elsewhere");
  makeClip(directory, "films/a.mkv", {"-c:v", "ffv1", "-frames:v", "3"});
  fs::copy(directory.path + "/films/a.mkv", directory.path + "/films/old/b.mkv");
  fs::copy(directory.path + "/films/a.mkv", directory.path + "/elsewhere/c.mkv");
  const ProgramRun elsewhere = runProgram(
      LUMASCAN_BINARY, {"c.mkv", "-o", "../lumascan-results", "-q"}, directory.path + "/elsewhere");
  ASSERT_EQ(elsewhere.status, 0) << elsewhere.err;
  ASSERT_EQ(lumascan(directory, {"films", "-q"}).status, 0);
}

std::string resultFolder(const TemporaryDirectory& directory, const std::string& video) {
  return directory.path + "/lumascan-results/" + video + ".lumascan";
}

}  // namespace

TEST(Pruning, removesResultsWhoseVideoIsGone_andTellsTheOthersInTheIndex) {
  const TemporaryDirectory directory;
  scanThree(directory);
  EXPECT_EQ(lumascan(directory, {"prune"}).out, "lumascan-results: 0 of 3 results removed\n");
  fs::remove(directory.path + "/films/old/b.mkv");
  const auto before = filesBelow(directory.path + "/lumascan-results");
  const ProgramRun look = lumascan(directory, {"prune", "-n"});
  EXPECT_EQ(look.status, 0);
  EXPECT_EQ(look.out,
            "would be removed: lumascan-results/films/old/b.mkv.lumascan\n"
            "lumascan-results: 1 of 3 results would be removed\n");
  EXPECT_EQ(filesBelow(directory.path + "/lumascan-results"), before);

  const std::string index = directory.path + "/lumascan-results/index.html";
  EXPECT_EQ(readFile(index).find(mark), std::string::npos);
  EXPECT_EQ(lumascan(directory, {"films", "-q"}).status, 0);
  EXPECT_NE(readFile(index).find("films/old/b.mkv</bdi></a><p>" + std::string(mark)),
            std::string::npos);

  const ProgramRun run = lumascan(directory, {"prune", "lumascan-results/"});
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.out,
            "removed: lumascan-results/films/old/b.mkv.lumascan\n"
            "lumascan-results: 1 of 3 results removed\n");
  EXPECT_FALSE(fs::exists(directory.path + "/lumascan-results/films/old"));
  EXPECT_TRUE(fs::exists(resultFolder(directory, "films/a.mkv") + "/result.json"));
  EXPECT_TRUE(fs::exists(resultFolder(directory, "c.mkv") + "/result.json"));
  for (const char* const name : {"index.html", "summary.csv"}) {
    const std::string text = readFile(directory.path + "/lumascan-results/" + name);
    EXPECT_EQ(text.find("b.mkv"), std::string::npos) << name;
    EXPECT_NE(text.find("a.mkv"), std::string::npos) << name;
  }
}

TEST(Pruning, looksWhereTheScansWereStarted_whereverItIsStarted) {
  const TemporaryDirectory directory;
  scanThree(directory);
  fs::remove(directory.path + "/elsewhere/c.mkv");
  const std::string results = directory.path + "/lumascan-results";
  const ProgramRun run = runProgram(LUMASCAN_BINARY, {"prune", results}, "/");
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.out,
            "removed: " + results + "/c.mkv.lumascan\n" + results + ": 1 of 3 results removed\n");
}

TEST(Pruning, removesNothing_whereNoVideoIsThere) {
  const TemporaryDirectory directory;
  scanThree(directory);
  fs::rename(directory.path + "/films", directory.path + "/unmounted");
  fs::remove(directory.path + "/elsewhere/c.mkv");
  // What came through a pipe says nothing about disks.
  writeFile(directory.path + "/stream", streamedVideo(directory));
  ASSERT_EQ(lumascan(directory, {"-", "-q"}, directory.path + "/stream").status, 0);
  const auto before = filesBelow(directory.path + "/lumascan-results");
  const ProgramRun run = lumascan(directory, {"prune"});
  EXPECT_EQ(run.status, 3);
  EXPECT_EQ(
      run.err,
      "lumascan: no video of the results in \"lumascan-results\" is there: is a disk missing? "
      "--force removes them all\n");
  EXPECT_EQ(filesBelow(directory.path + "/lumascan-results"), before);
  EXPECT_EQ(lumascan(directory, {"prune", "--force", "-q"}).out, "");
  EXPECT_FALSE(fs::exists(directory.path + "/lumascan-results/films"));
  EXPECT_FALSE(fs::exists(resultFolder(directory, "c.mkv")));
  EXPECT_TRUE(fs::exists(resultFolder(directory, "stdin")));
}

TEST(Pruning, leavesWhatIsNotItsOwn) {
  const TemporaryDirectory directory;
  scanThree(directory);
  fs::remove(directory.path + "/films/a.mkv");
  fs::remove(directory.path + "/films/old/b.mkv");
  const std::string other = directory.path + "/other";
  fs::rename(resultFolder(directory, "films/old/b.mkv"), other);
  fs::create_directory_symlink(other, resultFolder(directory, "films/old/b.mkv"));
  const std::string note = resultFolder(directory, "films/a.mkv") + "/note.txt";
  writeFile(note, "mine");
  fs::create_directory(directory.path + "/pictures");
  writeFile(directory.path + "/pictures/7.jpg", "mine");
  const std::string thumbs = resultFolder(directory, "films/a.mkv") + "/thumbs";
  fs::remove_all(thumbs);
  fs::create_directory_symlink(directory.path + "/pictures", thumbs);

  EXPECT_EQ(lumascan(directory, {"prune"}).out,
            "removed: lumascan-results/films/a.mkv.lumascan\n"
            "lumascan-results: 1 of 2 results removed\n");
  EXPECT_FALSE(fs::exists(resultFolder(directory, "films/a.mkv") + "/result.json"));
  EXPECT_EQ(readFile(note), "mine");
  EXPECT_EQ(readFile(directory.path + "/pictures/7.jpg"), "mine");
  EXPECT_TRUE(fs::exists(other + "/result.json"));
}

TEST(Pruning, refusesWhatIsNoFolderOfResults) {
  const TemporaryDirectory directory;
  scanThree(directory);
  for (const std::string& name : {std::string("nothing"), std::string("films/a.mkv"),
                                  std::string("lumascan-results/c.mkv.lumascan")}) {
    const ProgramRun run = lumascan(directory, {"prune", name});
    EXPECT_EQ(run.status, 3) << name;
    EXPECT_EQ(run.err, "lumascan: \"" + name + "\" is no folder of a scan's results\n");
  }
}

TEST(Pruning, staysOutOfAFolderInWhichAScanIsWriting) {
  const TemporaryDirectory directory;
  makeFifo(directory, "slow.y4m");
  RunningScan scan(directory, {"slow.y4m"});
  waitForWorkers(scan, 1);
  const ProgramRun run = lumascan(directory, {"prune"});
  EXPECT_EQ(run.status, 4);
  EXPECT_EQ(run.err, "lumascan: another scan is writing to \"lumascan-results\"\n");
}

TEST(Pruning, leavesAResultThatCannotBeRead_andSaysSo) {
  const TemporaryDirectory directory;
  scanThree(directory);
  writeFile(resultFolder(directory, "c.mkv") + "/result.json", "{");
  const ProgramRun run = lumascan(directory, {"prune"});
  EXPECT_EQ(run.status, 3);
  EXPECT_NE(run.err.find("c.mkv.lumascan/result.json"), std::string::npos) << run.err;
  EXPECT_EQ(run.out, "lumascan-results: 0 of 3 results removed\n");
  EXPECT_TRUE(fs::exists(resultFolder(directory, "c.mkv") + "/result.json"));
}
