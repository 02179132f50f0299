// The command line: what is printed, and how the program ends.
#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <set>

#include "scanRun.h"

namespace fs = std::filesystem;

namespace {

// Three frames of black: little to analyse, and a warning at least (black for 0.2 s or more).
void makeBlack(const TemporaryDirectory& directory, const std::string& name) {
  makeClip(directory, name, {"-c:v", "ffv1", "-f", "matroska"},
           "color=black:size=64x64:rate=10:duration=0.3");
}

// Ends a process that is being prepared for lumascan when a step has failed.
void require(bool isDone) {
  if (!isDone) _exit(126);
}

void fillStandardOutput() {
  require(dup2(open("/dev/full", O_WRONLY), STDOUT_FILENO) == STDOUT_FILENO);
}

void closeStandardOutput() {
  require(close(STDOUT_FILENO) == 0);
}

// A pipe that nobody reads any more, with the signal for it as a shell leaves it.
void breakStandardOutput() {
  int ends[2];
  require(pipe(ends) == 0 && dup2(ends[1], STDOUT_FILENO) == STDOUT_FILENO);
  require(close(ends[0]) == 0 && close(ends[1]) == 0);
  std::signal(SIGPIPE, SIG_DFL);
}

std::string notPrinted(const std::string& reason) {
  return "lumascan: cannot write to standard output: " + reason + "\n";
}

}  // namespace

TEST(Commands, explainMistakes) {
  const TemporaryDirectory directory;
  makeVideo(directory, "a.mp4");
  const std::vector<std::pair<Arguments, std::string>> mistakes = {
      {{}, "lumascan: "},
      {{"scan"}, "there is no input"},
      {{"a.mp4", "--frobnicate"}, "--frobnicate"},
      {{"a.mp4", "--indicators", "blurr"}, "there is no indicator \"blurr\""},
      {{"a.mp4", "--indicators", "0"}, "\"0\" requests no indicator"},
      {{"a.mp4", "--start", "soon"}, "\"soon\" is neither seconds nor a timecode nor f:FRAME"},
      {{"a.mp4", "--raw", "320@25"}, "\"320@25\" is not of the form WIDTHxHEIGHT@FPS"},
      {{"a.mp4", "--formats", "pdf"}, "there is no format \"pdf\""},
      {{"a.mp4", "--fail-on", "always"}, "\"always\" is not one of info, warn and fail"},
      {{"a.mp4", "--thresholds", "none.json"},
       "thresholds of \"none.json\": No such file or directory"},
      {{"events", "a.mp4", "--thresholds", "none.json"}, "thresholds of \"none.json\": "},
      {{"a.mp4", "--fps", "-5"}, "--fps"},
      {{"a.mp4", "--include", "[a"},
       "the bracket in \"[a\" has no end\nTry 'lumascan scan --help'."},
      {{"events"}, "RESULT"}};
  for (const auto& mistake : mistakes) {
    const ProgramRun run = lumascan(directory, mistake.first);
    EXPECT_EQ(run.status, 2) << mistake.second;
    EXPECT_NE(run.err.find(mistake.second), std::string::npos) << run.err;
    EXPECT_EQ(run.out, "");
  }
  EXPECT_FALSE(fs::exists(directory.path + "/lumascan-results"));
}

TEST(Commands, haveHelpAndVersion) {
  const TemporaryDirectory directory;
  EXPECT_EQ(lumascan(directory, {"--version"}).out, "lumascan 1.0.0\n");
  for (const Arguments& arguments : {Arguments{"-h"}, {"scan", "--help"}, {"probe", "-h"}}) {
    const ProgramRun run = lumascan(directory, arguments);
    EXPECT_EQ(run.status, 0);
    EXPECT_NE(run.out.find("Usage: lumascan"), std::string::npos) << run.out;
    EXPECT_EQ(run.err, "");
  }
}

TEST(Commands, endWithOne_atAFindingThatIsGraveEnough) {
  const TemporaryDirectory directory;
  // Black for a second: a warning at least.
  makeClip(directory, "black.mkv", {"-c:v", "ffv1"}, "color=black:size=320x272:rate=25:duration=1");
  EXPECT_EQ(lumascan(directory, {"black.mkv"}).status, 0);
  EXPECT_EQ(lumascan(directory, {"black.mkv", "--fail-on", "info"}).status, 1);
  writeFile(directory.path + "/strict.json", R"({"black": {"severity": "fail"}})");
  const Arguments strict = {"black.mkv", "--fail-on", "fail", "--thresholds", "strict.json"};
  EXPECT_EQ(lumascan(directory, strict).status, 1);
  // What could not be read counts for more than what was found.
  writeFile(directory.path + "/text.mp4", "no video");
  EXPECT_EQ(lumascan(directory, {"black.mkv", "text.mp4", "--fail-on", "info"}).status, 3);
  EXPECT_EQ(lumascan(directory, {"text.mp4", "black.mkv", "--fail-on", "info"}).status, 3);
  EXPECT_EQ(lumascan(directory, {"none.mp4", "black.mkv", "--fail-on", "info"}).status, 3);
  const std::string results = "lumascan-results/black.mkv.lumascan";
  EXPECT_EQ(lumascan(directory, {"events", results, "--fail-on", "info"}).status, 1);
  EXPECT_EQ(lumascan(directory, {"events", results, "none", "--fail-on", "info"}).status, 3);
  EXPECT_EQ(lumascan(directory, {"events", "none", results, "--fail-on", "info"}).status, 3);
}

TEST(Commands, endWithThree_atABadInputAmongGoodOnes) {
  const TemporaryDirectory directory;
  makeBlack(directory, "a.mkv");
  makeBlack(directory, "b.mkv");
  ASSERT_EQ(lumascan(directory, {"a.mkv", "b.mkv", "-q"}).status, 0);
  const std::string good = "lumascan-results/a.mkv.lumascan";
  const std::string bad = "lumascan-results/b.mkv.lumascan";
  writeFile(directory.path + "/" + bad + "/result.json", "{}");
  const std::string isMissing = "lumascan: there is no result in \"none\"\n";
  const std::string isDamaged =
      "lumascan: cannot read \"" + bad + "/result.json\": it is not a result of lumascan\n";

  ProgramRun run = lumascan(directory, {"-n", "a.mkv", "none.mkv"});
  EXPECT_EQ(run.status, 3);
  EXPECT_EQ(run.out, "up to date  a.mkv -> " + good + "\n");
  EXPECT_EQ(run.err, "lumascan: cannot open \"none.mkv\": No such file or directory\n");
  EXPECT_EQ(lumascan(directory, {"-n", "none.mkv"}).status, 3);
  EXPECT_EQ(lumascan(directory, {"-n", "a.mkv"}).status, 0);

  const std::string events = lumascan(directory, {"events", good}).out;
  for (const auto& [input, error] : {std::pair(std::string("none"), isMissing), {bad, isDamaged}}) {
    SCOPED_TRACE(input);
    run = lumascan(directory, {"events", input, good});
    EXPECT_EQ(run.status, 3);
    EXPECT_EQ(run.out, events);
    EXPECT_EQ(run.err, error);
    run = lumascan(directory, {"report", input, good, "-o", "page.html"});
    EXPECT_EQ(run.status, 3);
    EXPECT_EQ(run.out, "page.html\n");
    EXPECT_EQ(run.err, error);
    EXPECT_NE(readFile(directory.path + "/page.html").find("a.mkv"), std::string::npos);
    fs::remove(directory.path + "/page.html");
    // Of bad ones alone there is no page.
    run = lumascan(directory, {"report", input, "-o", "page.html"});
    EXPECT_EQ(run.status, 3);
    EXPECT_EQ(run.out, "");
    EXPECT_FALSE(fs::exists(directory.path + "/page.html"));
  }
}

TEST(Commands, endWithFour_whenStandardOutputCannotBeWritten) {
  const TemporaryDirectory directory;
  makeBlack(directory, "a.mkv");
  const std::string results = "lumascan-results/a.mkv.lumascan";
  const std::vector<Arguments> commands = {{"a.mkv", "--progress", "none"},
                                           {"a.mkv", "--json", "--progress", "none"},
                                           {"a.mkv", "-n"},
                                           {"events", results},
                                           {"events", results, "--json"},
                                           {"report", results},
                                           {"probe", "a.mkv"},
                                           {"probe", "a.mkv", "--json"},
                                           {"--version"},
                                           {"scan", "--help"}};
  for (const Arguments& command : commands) {
    SCOPED_TRACE(testing::PrintToString(command));
    const ProgramRun full = lumascan(directory, command, "/dev/null", fillStandardOutput);
    EXPECT_EQ(full.status, 4);
    EXPECT_EQ(full.err, notPrinted("No space left on device"));
    const ProgramRun closed = lumascan(directory, command, "/dev/null", closeStandardOutput);
    EXPECT_EQ(closed.status, 4);
    EXPECT_EQ(closed.err, notPrinted("Bad file descriptor"));
  }
  // What it was run for is done, and who asks for no words can do without.
  EXPECT_EQ(resultOf(directory, "a.mkv")["status"], "complete");
  for (const auto& prepare : {fillStandardOutput, closeStandardOutput}) {
    EXPECT_EQ(lumascan(directory, {"a.mkv", "-q"}, "/dev/null", prepare).status, 0);
    EXPECT_EQ(lumascan(directory, {"report", results, "-q"}, "/dev/null", prepare).status, 0);
  }
}

TEST(Commands, leaveAnOutputThatNobodyReads_butAScanGoesOnToItsEnd) {
  const TemporaryDirectory directory;
  makeBlack(directory, "a.mkv");
  makeBlack(directory, "b.mkv");
  const ProgramRun scan = lumascan(directory, {"a.mkv", "b.mkv", "-j", "1", "--progress", "none"},
                                   "/dev/null", breakStandardOutput);
  EXPECT_EQ(scan.status, 4);
  EXPECT_EQ(scan.err, notPrinted("Broken pipe"));
  EXPECT_EQ(resultOf(directory, "b.mkv")["status"], "complete");
  EXPECT_TRUE(fs::exists(directory.path + "/lumascan-results/index.html"));
  const std::string results = "lumascan-results";
  for (const Arguments& command : {Arguments{"events", results}, {"probe", "a.mkv"}}) {
    const ProgramRun run = lumascan(directory, command, "/dev/null", breakStandardOutput);
    EXPECT_EQ(run.status, 128 + SIGPIPE);
    EXPECT_EQ(run.err, "");
  }
}

TEST(Commands, writeTheSameFiles_whicheverStandardStreamsAreClosed) {
  const TemporaryDirectory directory;
  makeBlack(directory, "a.mkv");
  writeFile(directory.path + "/text.mp4", "no video");
  const Arguments scan = {"a.mkv", "text.mp4", "-j", "2", "--progress", "none"};
  const ProgramRun usual = lumascan(directory, scan);
  ASSERT_EQ(usual.status, 3);
  const auto files = filesBelow(directory.path + "/lumascan-results");
  for (unsigned closed = 1; closed < 8; ++closed) {
    SCOPED_TRACE("closed streams: " + std::to_string(closed));
    fs::remove_all(directory.path + "/lumascan-results");
    const ProgramRun run = lumascan(directory, scan, "/dev/null", [=] {
      for (int stream = 0; stream < 3; ++stream) {
        if ((closed >> stream & 1U) != 0) require(close(stream) == 0);
      }
    });
    const bool isOutClosed = (closed & 2U) != 0;
    const bool isErrorClosed = (closed & 4U) != 0;
    EXPECT_EQ(run.status, isOutClosed ? 4 : 3);
    if (!isOutClosed) {
      EXPECT_EQ(linesOf(run.out).size(), linesOf(usual.out).size());
    }
    EXPECT_EQ(run.err, isErrorClosed ? ""
                       : isOutClosed ? usual.err + notPrinted("Bad file descriptor")
                                     : usual.err);
    EXPECT_EQ(filesBelow(directory.path + "/lumascan-results"), files);
  }
}

TEST(Commands, printNothingIntoTheirTemporaryFiles_whenStreamsAreClosed) {
  const TemporaryDirectory directory;
  // The values of more than 4096 frames are in a temporary file, which is opened as the second one,
  // behind that of the stored rows.
  writeFile(directory.path + "/long.yuv", std::string(size_t{16} * 16 * 3 / 2 * 4100, 'x'));
  ASSERT_EQ(lumascan(directory, {"long.yuv", "--raw", "16x16@25", "-q"}).status, 0);
  const ProgramRun run =
      lumascan(directory, {"report", "lumascan-results", "-o", "page.html"}, "/dev/null",
               [] { require(close(STDIN_FILENO) == 0 && close(STDOUT_FILENO) == 0); });
  EXPECT_EQ(run.status, 4);
  EXPECT_EQ(run.err, notPrinted("Bad file descriptor"));
}

TEST(Commands, printJsonAndNothingElse) {
  const TemporaryDirectory directory;
  makeVideo(directory, "a.mp4");
  const ProgramRun run = lumascan(directory, {"a.mp4", "--json"});
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.out, readFile(directory.path + "/lumascan-results/run.json"));
  EXPECT_EQ(Json::parse(run.out)["files"][0]["path"], "a.mp4");
}

TEST(Commands, printNothing_whenQuiet) {
  const TemporaryDirectory directory;
  makeVideo(directory, "a.mp4");
  const ProgramRun run = lumascan(directory, {"a.mp4", "-q"});
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.out + run.err, "");
  for (const Arguments& format : {Arguments{}, {"--json"}}) {
    Arguments arguments = {"events", "lumascan-results", "-q", "--fail-on", "info"};
    arguments.insert(arguments.end(), format.begin(), format.end());
    const ProgramRun events = lumascan(directory, arguments);
    EXPECT_EQ(events.status,
              lumascan(directory, {"events", "lumascan-results", "--fail-on", "info"}).status);
    EXPECT_EQ(events.out + events.err, "");
  }
}

TEST(Commands, tellProgressAsJson) {
  const TemporaryDirectory directory;
  const std::string video = streamedVideo(directory);
  writeFile(directory.path + "/a.y4m", video);
  makeFifo(directory, "b.y4m");
  RunningScan scan(directory, {"a.y4m", "b.y4m", "--progress", "json", "-j", "1"});
  waitUntil(scan, "the second file", [&] {
    return fs::exists(directory.path + "/lumascan-results/a.y4m.lumascan/result.json");
  });
  Json said;
  {
    const Feed source(scan, directory.path + "/b.y4m");
    feed(source, video.substr(0, video.size() / 2));
    waitUntil(scan, "frames of the second file", [&] {
      for (const std::string& line : linesOf(errorsOf(scan))) {
        if (line.back() == '\n') said = Json::parse(line);
      }
      return said.is_object() && said["finished"] == 1 && said["frames"] > 0;
    });
    feed(source, video.substr(video.size() / 2));
  }
  // Half of 25 frames at most, of a pipe, which counts for a byte.
  EXPECT_LE(said["frames"], 13);
  const auto bytes = static_cast<double>(video.size());
  EXPECT_EQ(said["progress"], bytes / (bytes + 1.0));
  EXPECT_EQ(said["files"], 2);
  EXPECT_EQ(said["running"], "b.y4m");
  EXPECT_GE(said["elapsed_s"], 1.0);  // what comes before is not worth a line
  const ProgramRun run = endOf(&scan);
  EXPECT_EQ(run.status, 0);
  double share = 0.0;
  const std::vector<std::string> lines = linesOf(run.err);
  EXPECT_EQ(Json::parse(lines.front())["progress"], 0.0);
  EXPECT_EQ(Json::parse(lines.back())["progress"], 1.0);
  EXPECT_EQ(Json::parse(lines.back())["finished"], 2);
  for (const std::string& line : lines) {
    const Json progress = Json::parse(line);
    EXPECT_GE(progress["progress"], share);
    EXPECT_LE(progress["progress"], 1.0);
    share = progress["progress"];
  }
}

TEST(Commands, planWithoutDoing) {
  const TemporaryDirectory directory;
  makeVideo(directory, "a.mp4");
  const ProgramRun run = lumascan(directory, {"a.mp4", "-n"});
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.out, "analyse     a.mp4 -> lumascan-results/a.mp4.lumascan\n");
  EXPECT_FALSE(fs::exists(directory.path + "/lumascan-results"));
}

TEST(Commands, judgeStoredResultsAgain) {
  const TemporaryDirectory directory;
  makeVideo(directory, "a.mp4");
  EXPECT_EQ(lumascan(directory, {"a.mp4"}).status, 0);
  fs::remove(directory.path + "/a.mp4");
  const std::string folder = "lumascan-results/a.mp4.lumascan";
  // The same thresholds find the same events.
  const ProgramRun same = lumascan(directory, {"events", "lumascan-results"});
  EXPECT_EQ(same.status, 0);
  const std::vector<std::string> stored =
      linesOf(readFile(directory.path + "/" + folder + "/events.csv"));
  const std::vector<std::string> printed = linesOf(same.out);
  ASSERT_EQ(printed.size(), stored.size());
  EXPECT_EQ(printed[0], "path," + stored[0]);
  for (size_t i = 1; i < stored.size(); ++i) EXPECT_EQ(printed[i], "a.mp4," + stored[i]);
  // Any picture has a contrast below 200 levels.
  writeFile(directory.path + "/strict.json",
            R"({"low_contrast": {"enter": 200, "leave": 201, "min_s": 0, "mad": 0,
                                "severity": "fail"}})");
  const Arguments strict = {"events", folder,      "--thresholds", "strict.json",
                            "--json", "--fail-on", "fail"};
  const ProgramRun changed = lumascan(directory, strict);
  EXPECT_EQ(changed.status, 1);
  const Json result = Json::parse(changed.out)[0];
  EXPECT_EQ(result["verdict"], "fail");
  bool isFound = false;
  for (const Json& event : result["events"]) {
    if (event["type"] != "low_contrast") continue;
    isFound = true;
    EXPECT_EQ(event["first_frame"], 0);
    EXPECT_EQ(event["last_frame"], 18);
    EXPECT_EQ(event["at_end"], true);
  }
  EXPECT_TRUE(isFound);
  EXPECT_EQ(lumascan(directory, {"events", "nowhere"}).status, 3);
}

TEST(Commands, renderStoredResultsAgain) {
  const TemporaryDirectory directory;
  makeVideo(directory, "a.mp4");
  makeClip(directory, "b.avi", {"-c:v", "mpeg4"});
  EXPECT_EQ(lumascan(directory, {"a.mp4", "b.avi"}).status, 0);
  const std::string page = directory.path + "/lumascan-results/a.mp4.lumascan/report.html";
  const std::string before = readFile(page);
  fs::remove(page);
  EXPECT_EQ(lumascan(directory, {"report", "lumascan-results/a.mp4.lumascan"}).out,
            "lumascan-results/a.mp4.lumascan/report.html\n");
  EXPECT_EQ(readFile(page), before);
  EXPECT_EQ(lumascan(directory, {"report", "lumascan-results", "-o", "both.html"}).status, 0);
  const std::string both = readFile(directory.path + "/both.html");
  EXPECT_NE(both.find("a.mp4"), std::string::npos);
  EXPECT_NE(both.find("b.avi"), std::string::npos);
  const ProgramRun printed = lumascan(directory, {"report", "lumascan-results", "-o", "-"});
  EXPECT_EQ(printed.status, 0);
  EXPECT_TRUE(printed.out == both);
  EXPECT_EQ(printed.err, "");
  EXPECT_EQ(lumascan(directory, {"report", "lumascan-results", "-o", "no/such/folder"}).status, 4);
  // The page on several videos is that of none of them.
  fs::remove(page);
  EXPECT_EQ(lumascan(directory, {"report", "lumascan-results"}).out, "lumascan-report.html\n");
  EXPECT_EQ(readFile(directory.path + "/lumascan-report.html"), both);
  EXPECT_FALSE(fs::exists(page));
  // Nor is it when of several only one can be read.
  fs::remove(directory.path + "/lumascan-report.html");
  writeFile(directory.path + "/lumascan-results/b.avi.lumascan/result.json", "{}");
  EXPECT_EQ(lumascan(directory, {"report", "lumascan-results"}).out, "lumascan-report.html\n");
  EXPECT_FALSE(fs::exists(page));
}

TEST(Commands, quoteNamesWithCommasInTables) {
  const TemporaryDirectory directory;
  makeBlack(directory, "black, \"dark\".mkv");
  EXPECT_EQ(lumascan(directory, {"black, \"dark\".mkv"}).status, 0);
  const std::string name = "\"black, \"\"dark\"\".mkv\",";
  const std::string printed = lumascan(directory, {"events", "lumascan-results"}).out;
  EXPECT_EQ(printed, readFile(directory.path + "/lumascan-results/events.csv"));
  const std::vector<std::string> lines = linesOf(printed);
  ASSERT_GT(lines.size(), 1u);
  for (size_t i = 1; i < lines.size(); ++i) {
    EXPECT_EQ(lines[i].rfind(name + std::to_string(i) + ',', 0), 0u) << lines[i];
  }
}

TEST(Commands, probeFiles) {
  const TemporaryDirectory directory;
  makeVideo(directory, "a.mp4");
  const ProgramRun run = lumascan(directory, {"probe", "a.mp4", "missing.mp4", "--json"});
  EXPECT_EQ(run.status, 3);
  EXPECT_EQ(run.err, "lumascan: cannot open \"missing.mp4\": No such file or directory\n");
  const Json files = Json::parse(run.out);
  ASSERT_EQ(files.size(), 1u);
  EXPECT_EQ(files[0]["stream"]["codec"], "h264");
  EXPECT_EQ(files[0]["stream"]["width"], 320);
  EXPECT_EQ(files[0]["stream"]["declared_frames"], 19);
  const std::string text = lumascan(directory, {"probe", "a.mp4"}).out;
  EXPECT_NE(text.find("frame_rate           25.0"), std::string::npos) << text;
  EXPECT_NE(text.find("frame_rate_fraction  25/1"), std::string::npos) << text;
}

TEST(Commands, probeFoldersAndTheSoundOfFiles) {
  const TemporaryDirectory directory;
  fs::create_directories(directory.path + "/films/old");
  makeVideo(directory, "films/b.mp4");
  ffmpeg(directory, {"-f", "lavfi", "-i", "sine=duration=2", "-i", "films/b.mp4", "-c:v", "copy",
                     "-map", "1", "-map", "0", "films/old/a.mkv"});
  writeFile(directory.path + "/films/notes.txt", "none of them");
  const ProgramRun run = lumascan(directory, {"probe", "films", "--json"});
  EXPECT_EQ(run.status, 0);
  const Json files = Json::parse(run.out);
  ASSERT_EQ(files.size(), 2u);
  EXPECT_EQ(files[0]["path"], "films/b.mp4");
  EXPECT_EQ(files[1]["path"], "films/old/a.mkv");
  EXPECT_EQ(files[1]["stream"]["audio"][0]["stream"], 1);
  // The picture's last frame ends at 19 / 25 = 0.76 s.
  const char* const warning = "the sound of stream 1 is 1.2 s longer than the picture";
  EXPECT_EQ(files[1]["warnings"], Json::array({warning}));
  const std::string text = lumascan(directory, {"probe", "films/old"}).out;
  EXPECT_NE(text.find(std::string("warning: ") + warning), std::string::npos) << text;
  EXPECT_NE(text.find("stream 1, codec vorbis, channels 1, "), std::string::npos) << text;
  const ProgramRun none = lumascan(directory, {"probe", "films/old", "nothing"});
  EXPECT_EQ(none.status, 3);
  EXPECT_EQ(none.err, "lumascan: cannot open \"nothing\": No such file or directory\n");
}

TEST(Commands, takeAMinusForStandardInput_butAFileOfThatNameForAFile) {
  const TemporaryDirectory directory;
  writeFile(directory.path + "/-", streamedVideo(directory));
  makeBlack(directory, "b.mkv");
  EXPECT_EQ(lumascan(directory, {".", "-q"}).status, 0);
  const Json file = readJson(directory, "lumascan-results/-.lumascan/result.json");
  EXPECT_EQ(file["input"]["path"], "./-");
  EXPECT_EQ(file["analysis"]["frames"], 25);
  EXPECT_TRUE(file["input"]["size"].is_number());
  EXPECT_NE(lumascan(directory, {"."}).out.find("./- (up to date)"), std::string::npos);
  writeFile(directory.path + "/list", "-\n");
  EXPECT_EQ(lumascan(directory, {"--files-from", "list", "-n"}).out,
            "up to date  ./- -> lumascan-results/-.lumascan\n");
  EXPECT_EQ(lumascan(directory, {"-", "-q"}, directory.path + "/-").status, 0);
  const Json stream = readJson(directory, "lumascan-results/stdin.lumascan/result.json");
  EXPECT_EQ(stream["input"]["path"], "-");
  EXPECT_EQ(stream["analysis"]["frames"], 25);
  EXPECT_TRUE(stream["input"]["size"].is_null());
}

TEST(Commands, readStandardInputFromWhereItStands) {
  const TemporaryDirectory directory;
  const std::string video = streamedVideo(directory);
  writeFile(directory.path + "/text and video", "a line\n" + video);
  const auto passOver = [] { lseek(STDIN_FILENO, 7, SEEK_SET); };
  EXPECT_EQ(lumascan(directory, {"-", "-q"}, directory.path + "/text and video", passOver).status,
            0);
  EXPECT_EQ(
      readJson(directory, "lumascan-results/stdin.lumascan/result.json")["analysis"]["frames"], 25);
}

TEST(Commands, followNoPlaylist_whateverItIsCalled) {
  const TemporaryDirectory directory;
  makeVideo(directory, "other.mp4");
  fs::create_directory(directory.path + "/films");
  writeFile(directory.path + "/films/holiday.mp4",
            "ffconcat version 1.0\nfile '" + directory.path + "/other.mp4'\n");
  const ProgramRun run = lumascan(directory, {"films"});
  EXPECT_EQ(run.status, 3);
  EXPECT_EQ(run.err,
            "lumascan: \"films/holiday.mp4\": it is a playlist, no video: name the videos "
            "themselves\n");
  const Json result = resultOf(directory, "films/holiday.mp4");
  EXPECT_EQ(result["status"], "failed");
  EXPECT_TRUE(result["analysis"].is_null());
  EXPECT_FALSE(fs::exists(directory.path + "/lumascan-results/films/holiday.mp4.lumascan/thumbs"));
}

TEST(Commands, measureTheFileThatWasOpened_whenAnotherOneTakesItsName) {
  const TemporaryDirectory directory;
  const std::string video = streamedVideo(directory);
  makeFifo(directory, "a.y4m");
  RunningScan scan(directory, {"a.y4m", "--progress", "none"});
  waitForWorkers(scan, 1);
  {
    const Feed source(scan, directory.path + "/a.y4m");
    feed(source, video.substr(0, video.size() / 2));
    fs::rename(directory.path + "/a.y4m", directory.path + "/old.y4m");
    makeBlack(directory, "a.y4m");
    feed(source, video.substr(video.size() / 2));
  }
  EXPECT_EQ(endOf(&scan).status, 0);
  EXPECT_EQ(resultOf(directory, "a.y4m")["analysis"]["frames"], 25);
}

TEST(Commands, probeInAProcessOfItsOwn) {
  const TemporaryDirectory directory;
  makeVideo(directory, "b.mp4");
  makeFifo(directory, "a.y4m");
  // Without the trial of a sandbox, which is a child, too.
  RunningScan probe(directory, {"probe", "a.y4m", "b.mp4", "--sandbox", "off"});
  waitUntil(probe, "its child", [&] { return childrenOf(probe).size() == 1; });
  kill(childrenOf(probe).at(0), SIGKILL);
  const ProgramRun run = endOf(&probe);
  EXPECT_EQ(run.status, 3);
  EXPECT_EQ(run.err, "lumascan: \"a.y4m\": its probe ended by signal 9 (Killed)\n");
  EXPECT_EQ(run.out.substr(0, 6), "b.mp4\n");
}

TEST(Commands, disarmNamesThatASpreadsheetTakesForFormulas) {
  const TemporaryDirectory directory;
  makeBlack(directory, "=1+1.mkv");
  makeBlack(directory, "gone.mkv");
  EXPECT_EQ(lumascan(directory, {".", "-q"}).status, 0);
  const auto firstCells = [&](const char* table) {
    std::set<std::string> cells;
    for (const std::string& line :
         linesOf(readFile(directory.path + "/lumascan-results/" + table))) {
      cells.insert(line.substr(0, line.find(',')));
    }
    return cells;
  };
  for (const char* const table : {"summary.csv", "events.csv"}) {
    EXPECT_EQ(firstCells(table), (std::set<std::string>{"path", "=1+1.mkv", "gone.mkv"})) << table;
  }
  EXPECT_EQ(lumascan(directory, {".", "-q", "--disarm-cells"}).status, 0);
  for (const char* const table : {"summary.csv", "events.csv"}) {
    EXPECT_EQ(firstCells(table), (std::set<std::string>{"path", "'=1+1.mkv", "gone.mkv"})) << table;
  }
  const std::string events =
      lumascan(directory, {"events", "lumascan-results", "--disarm-cells"}).out;
  EXPECT_NE(events.find("\r\n'=1+1.mkv,"), std::string::npos) << events;
  fs::remove(directory.path + "/gone.mkv");
  EXPECT_EQ(lumascan(directory, {"prune", "-q", "--disarm-cells"}).status, 0);
  EXPECT_EQ(firstCells("summary.csv"), (std::set<std::string>{"path", "'=1+1.mkv"}));
}
