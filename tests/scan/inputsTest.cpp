// Which files are found in folders and lists.
#include "scan/commandLine/inputs.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "clips.h"
#include "currentFolder.h"

namespace fs = std::filesystem;

namespace {

using Names = std::vector<std::string>;

// Files in the current folder or below it, with the folders that they need.
void makeFiles(const Names& names, const std::string& bytes = "") {
  for (const std::string& name : names) {
    if (fs::path(name).has_parent_path()) fs::create_directories(fs::path(name).parent_path());
    writeFile(name, bytes);
  }
}

struct Findings {
  Names files;
  Names problems;
};

Findings find(const Options& options) {
  Findings findings;
  for (const VideoSource& source : findInputs(options, &findings.problems)) {
    findings.files.push_back((source.isStandardInput ? "standard input: " : "") + source.path);
  }
  return findings;
}

Options scanOf(const Names& inputs) {
  Options options;
  options.inputs = inputs;
  options.output = "lumascan-results";
  return options;
}

// The files of a scan without problems.
Names filesOf(const Options& options) {
  const Findings findings = find(options);
  EXPECT_EQ(findings.problems, Names());
  return findings.files;
}

Names filesOf(const Names& inputs) {
  return filesOf(scanOf(inputs));
}

Names problemsOf(const Options& options) {
  const Findings findings = find(options);
  EXPECT_EQ(findings.files, Names());
  return findings.problems;
}

}  // namespace

TEST(FindInputs, takesFilesAsTheyAreNamed_whateverTheyHold) {
  const CurrentFolder here;
  makeFiles({"b.mp4", "notes.txt", "a.mp4"});
  EXPECT_EQ(filesOf({"b.mp4", "./notes.txt", "a.mp4"}), Names({"b.mp4", "./notes.txt", "a.mp4"}));
}

TEST(FindInputs, takesTheVideosOfAFolderAndOfItsFolders_sortedByName) {
  const CurrentFolder here;
  makeFiles({"clips/b.mp4", "clips/a/z.mkv", "clips/a.mp4", "clips/a/deep/er/c.avi", "other.mp4"});
  EXPECT_EQ(filesOf({"clips"}),
            Names({"clips/a.mp4", "clips/a/deep/er/c.avi", "clips/a/z.mkv", "clips/b.mp4"}));
}

TEST(FindInputs, namesFilesOfTheCurrentFolderWithoutIt) {
  const CurrentFolder here;
  makeFiles({"a.mp4", "clips/b.mp4"});
  EXPECT_EQ(filesOf({"."}), Names({"a.mp4", "clips/b.mp4"}));
  EXPECT_EQ(filesOf({"./clips/"}), Names({"clips/b.mp4"}));
}

TEST(FindInputs, knowsVideosByTheirExtensionInAnyCase) {
  const CurrentFolder here;
  makeFiles({"a.MP4", "b.Mkv", "c.webm", "d.y4m", "e.mp4.txt", "mp4", ".mp4", "f.mp5"});
  EXPECT_EQ(filesOf({"."}), Names({"a.MP4", "b.Mkv", "c.webm", "d.y4m"}));
}

TEST(FindInputs, knowsOtherVideosByTheirFirstBytes) {
  const CurrentFolder here;
  for (const char* const format : {"avi", "mp4", "matroska", "mpegts"}) {
    makeClip(here.directory, std::string("clip-") + format, {"-c:v", "mpeg4", "-f", format});
  }
  makeClip(here.directory, "clip-flv", {"-c:v", "flv1", "-f", "flv"});
  makeClip(here.directory, "clip-y4m", {"-pix_fmt", "yuv420p", "-f", "yuv4mpegpipe"});
  makeClip(here.directory, "clip.of-mine", {"-c:v", "mpeg4", "-f", "avi"});
  EXPECT_EQ(filesOf({"."}), Names({"clip-avi", "clip-flv", "clip-matroska", "clip-mp4",
                                   "clip-mpegts", "clip-y4m", "clip.of-mine"}));
}

TEST(FindInputs, leavesOutSoundPicturesAndTexts) {
  const CurrentFolder here;
  for (const char* const name : {"a.wav", "b.mp3", "c.m4a", "d.ogg", "e.flac", "f.mka", "g.MP3"}) {
    ffmpeg(here.directory, {"-f", "lavfi", "-i", "sine=duration=1", name});
  }
  ffmpeg(here.directory, {"-i", "a.wav", "-f", "wav", "sound"});
  makeClip(here.directory, "picture.png", {"-frames:v", "1"});
  makeClip(here.directory, "picture.jpg", {"-frames:v", "1"});
  makeFiles({"notes.txt", "frames.csv", "notes"}, "frame,pts,time_s\r\n0,0,0\r\n");
  makeFiles({"empty"});
  EXPECT_EQ(problemsOf(scanOf({"."})), Names({"there is no video in \".\""}));
}

TEST(FindInputs, takesRawFilesOfAFolder_whenTheirSizeIsGiven) {
  const CurrentFolder here;
  makeFiles({"clips/a.yuv", "clips/b.YUV", "clips/c.mp4"});
  EXPECT_EQ(filesOf({"clips"}), Names({"clips/c.mp4"}));
  Options options = scanOf({"clips"});
  options.raw = {"", 352, 288, "25"};
  EXPECT_EQ(filesOf(options), Names({"clips/a.yuv", "clips/b.YUV", "clips/c.mp4"}));
}

TEST(FindInputs, includesAndExcludesFilesOfFoldersByTheirNames) {
  const CurrentFolder here;
  makeFiles({"a.mp4", "b.mkv", "old/a.mp4", "old/c.mp4"});
  Options options = scanOf({"."});
  options.include = {"*.mp4"};
  EXPECT_EQ(filesOf(options), Names({"a.mp4", "old/a.mp4", "old/c.mp4"}));
  options.include = {"a.*", "b.*"};
  EXPECT_EQ(filesOf(options), Names({"a.mp4", "b.mkv", "old/a.mp4"}));
  options.include = {"*/old/*"};
  EXPECT_EQ(filesOf(options), Names({"old/a.mp4", "old/c.mp4"}));
  options.include = {};
  options.exclude = {"a.mp4"};
  EXPECT_EQ(filesOf(options), Names({"b.mkv", "old/c.mp4"}));
  // What is both is left out.
  options.include = {"*.mp4"};
  EXPECT_EQ(filesOf(options), Names({"old/c.mp4"}));
}

TEST(FindInputs, takesWhatIsIncluded_whateverItIsCalled) {
  const CurrentFolder here;
  makeFiles({"a.mp4", "b.bin", "c.txt"});
  Options options = scanOf({"."});
  EXPECT_EQ(filesOf(options), Names({"a.mp4"}));
  options.include = {"*.bin", "c.*"};
  EXPECT_EQ(filesOf(options), Names({"b.bin", "c.txt"}));
}

TEST(FindInputs, leavesHiddenFilesOut_unlessAPatternNamesThem) {
  const CurrentFolder here;
  makeFiles({"a.mp4", "._a.mp4", ".b.mp4", ".trash/c.mp4", "d/.e.mp4", "d/f.mp4"});
  Options options = scanOf({"."});
  EXPECT_EQ(filesOf(options), Names({"a.mp4", "d/f.mp4"}));
  options.include = {"*.mp4"};
  EXPECT_EQ(filesOf(options), Names({"a.mp4", "d/f.mp4"}));
  options.include = {".[_be]*"};
  EXPECT_EQ(filesOf(options), Names({"._a.mp4", ".b.mp4", "d/.e.mp4"}));
  // What is named is no part of a folder.
  EXPECT_EQ(filesOf({".b.mp4", ".trash"}), Names({".b.mp4", ".trash/c.mp4"}));
  options = scanOf({"."});
  options.isVerbose = true;
  testing::internal::CaptureStderr();
  filesOf(options);
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "lumascan: hidden files left out of \".\": 3\n");
}

TEST(FindInputs, saysThatAnAddressIsNoFile) {
  const CurrentFolder here;
  EXPECT_EQ(
      problemsOf(scanOf({"http://example.org/a.mp4"})),
      Names(
          {"cannot open \"http://example.org/a.mp4\": it is an address, and only files are read"}));
}

TEST(FindInputs, doesNotAskPatternsAboutFilesThatAreNamed) {
  const CurrentFolder here;
  makeFiles({"a.mp4"});
  Options options = scanOf({"a.mp4"});
  options.exclude = {"a.mp4"};
  EXPECT_EQ(filesOf(options), Names({"a.mp4"}));
}

TEST(FindInputs, readsAListWithOneNameALine) {
  const CurrentFolder here;
  makeFiles({"a.mp4", "b c.mp4", "d.mp4", "clips/e.mp4"});
  Options options = scanOf({"d.mp4"});
  options.filesFrom = "list";
  // Empty lines are none; the last one needs no end. Folders may be named, too.
  writeFile("list", "\nb c.mp4\n\nclips\na.mp4");
  EXPECT_EQ(filesOf(options), Names({"d.mp4", "b c.mp4", "clips/e.mp4", "a.mp4"}));
}

TEST(FindInputs, readsAListFromAnotherSystem_whoseLinesEndInTwoBytes) {
  const CurrentFolder here;
  makeFiles({"a.mp4", "b.mp4", "c.mp4"});
  Options options = scanOf({});
  options.filesFrom = "list";
  writeFile("list", "a.mp4\r\n\r\nb.mp4\r\nc.mp4");
  EXPECT_EQ(filesOf(options), Names({"a.mp4", "b.mp4", "c.mp4"}));
}

TEST(FindInputs, takesNumberedFilesInTheOrderOfTheirNumbers) {
  const CurrentFolder here;
  makeFiles({"day 10/1.mp4", "day 2/1.mp4", "clip_10.mp4", "clip_2.mp4", "clip_1.mp4"});
  EXPECT_EQ(filesOf({"."}),
            Names({"clip_1.mp4", "clip_2.mp4", "clip_10.mp4", "day 2/1.mp4", "day 10/1.mp4"}));
}

TEST(FindInputs, readsAListWithZeroBytes_whereNamesMayHaveLineFeeds) {
  const CurrentFolder here;
  makeFiles({"a.mp4", "b\nc.mp4"});
  Options options = scanOf({});
  options.filesFrom = "list";
  writeFile("list", std::string("b\nc.mp4\0a.mp4\0", 14));
  EXPECT_EQ(filesOf(options), Names({"b\nc.mp4", "a.mp4"}));
}

TEST(FindInputs, takesAnEmptyListForWhatItIs) {
  const CurrentFolder here;
  Options options = scanOf({});
  options.filesFrom = "list";
  writeFile("list", "");
  EXPECT_EQ(filesOf(options), Names());
}

TEST(FindInputs, saysThatAListCannotBeRead) {
  const CurrentFolder here;
  Options options = scanOf({});
  options.filesFrom = "list";
  EXPECT_EQ(problemsOf(options), Names({"cannot open \"list\": No such file or directory"}));
  fs::create_directory("list");
  EXPECT_EQ(problemsOf(options), Names({"cannot open \"list\": Is a directory"}));
}

TEST(FindInputs, takesEachFileOnce_howeverItIsNamed) {
  const CurrentFolder here;
  makeFiles({"clips/a.mp4", "clips/b.mp4"});
  EXPECT_EQ(filesOf({"clips/b.mp4", "clips", "./clips/../clips/a.mp4",
                     here.directory.path + "/clips/b.mp4", "-", "-"}),
            Names({"clips/b.mp4", "clips/a.mp4", "standard input: -"}));
}

TEST(FindInputs, saysWhoseResultsWouldGoToTheSameFolder) {
  const CurrentFolder here;
  const std::string outside = here.directory.path + "/a.mp4";
  // A file that is not below the current folder goes by its path from the root.
  fs::create_directories("inside");
  fs::current_path("inside");
  makeFiles({outside.substr(1)});
  writeFile(outside, "");
  const Findings findings = find(scanOf({outside, outside.substr(1)}));
  EXPECT_EQ(findings.files, Names{outside});
  EXPECT_EQ(findings.problems, Names{"the results of \"" + outside.substr(1) +
                                     "\" would go where those of \"" + outside + "\" go"});
}

TEST(FindInputs, doesNotEnterFoldersOfResults) {
  const CurrentFolder here;
  makeFiles({"a.mp4", "out/b.mp4", "c.mp4.lumascan/c.mp4", "deep/d.lumascan/e/f.mp4"});
  EXPECT_EQ(filesOf({"."}), Names({"a.mp4", "out/b.mp4"}));
  Options options = scanOf({"."});
  options.output = "./deep/../out";
  EXPECT_EQ(filesOf(options), Names({"a.mp4"}));
}

TEST(FindInputs, takesWhatLinksLeadTo_andDoesNotGoInCircles) {
  const CurrentFolder here;
  makeFiles({"clips/a.mp4"});
  fs::create_symlink("a.mp4", "clips/b.mp4");
  fs::create_symlink("missing.mp4", "clips/c.mp4");
  fs::create_directory_symlink(".", "clips/again");
  EXPECT_EQ(filesOf({"clips"}), Names({"clips/a.mp4", "clips/b.mp4"}));
}

TEST(FindInputs, passesOverPipesInFolders) {
  const CurrentFolder here;
  makeFiles({"a.mp4"});
  ASSERT_EQ(mkfifo("pipe.mp4", 0600), 0);
  EXPECT_EQ(filesOf({"."}), Names({"a.mp4"}));
  // By its own name it is taken.
  EXPECT_EQ(filesOf({"pipe.mp4"}), Names({"pipe.mp4"}));
}

TEST(FindInputs, saysWhichInputIsMissing_andGoesOn) {
  const CurrentFolder here;
  makeFiles({"a.mp4"});
  const Findings findings = find(scanOf({"x\n.mp4", "a.mp4", "a.mp4/b"}));
  EXPECT_EQ(findings.files, Names({"a.mp4"}));
  EXPECT_EQ(findings.problems, Names({"cannot open \"x\\x0a.mp4\": No such file or directory",
                                      "cannot open \"a.mp4/b\": Not a directory"}));
}

TEST(FindInputs, saysThatAFolderHasNoVideo) {
  const CurrentFolder here;
  fs::create_directory("empty");
  EXPECT_EQ(problemsOf(scanOf({"empty"})), Names({"there is no video in \"empty\""}));
}

TEST(FindInputs, saysWhichFolderCannotBeRead_andGoesOnBehindIt) {
  const CurrentFolder here;
  // Whatever the order in which the folder is read, most of these come behind the closed one.
  makeFiles({"a/a.mp4", "b/b.mp4", "c/c.mp4", "closed/d.mp4", "e/e.mp4", "f/f.mp4", "g.mp4"});
  fs::permissions(here.directory.path, fs::perms(0755));
  fs::permissions("closed", fs::perms::none);
  // Who may do everything may read everything.
  constexpr uid_t NOBODY = 65534;
  const uid_t before = geteuid();
  ASSERT_EQ(seteuid(before == 0 ? NOBODY : before), 0);
  const Findings all = find(scanOf({"."}));
  const Findings closed = find(scanOf({"closed"}));
  ASSERT_EQ(seteuid(before), 0);
  fs::permissions("closed", fs::perms::owner_all);
  EXPECT_EQ(all.files, Names({"a/a.mp4", "b/b.mp4", "c/c.mp4", "e/e.mp4", "f/f.mp4", "g.mp4"}));
  EXPECT_EQ(all.problems, Names({"cannot open \"./closed\": Permission denied"}));
  EXPECT_EQ(closed.files, Names());
  EXPECT_EQ(closed.problems, Names({"cannot open \"closed\": Permission denied"}));
}
