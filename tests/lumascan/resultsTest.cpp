// What a scan leaves behind.
#include <cmath>
#include <cstdlib>
#include <ctime>
#include <filesystem>

#include "scanRun.h"

namespace fs = std::filesystem;

namespace {

// lumaprobe's report on what the ffmpeg program decodes.
std::string lumaprobeReport(const TemporaryDirectory& directory, const std::string& video,
                            const Arguments& arguments) {
  decodeByProgram(directory, video, "decoded.yuv");
  Arguments all = {"decoded.yuv"};
  all.insert(all.end(), arguments.begin(), arguments.end());
  EXPECT_EQ(runProgram(LUMAPROBE_BINARY, all, directory.path).status, 0);
  return readFile(directory.path + "/metricsResultsCSV.csv");
}

std::string fileOf(const TemporaryDirectory& directory, const std::string& video,
                   const std::string& name) {
  return readFile(directory.path + "/lumascan-results/" + video + ".lumascan/" + name);
}

}  // namespace

TEST(Results, haveTheRowsOfLumaprobe) {
  const TemporaryDirectory directory;
  makeVideo(directory, "a.mp4");
  makeClip(directory, "b.avi", {"-c:v", "mpeg4", "-bf", "2"},
           "testsrc2=size=160x96:rate=10:duration=2");
  makeClip(directory, "c.mkv", {"-c:v", "ffv1"}, "testsrc=size=97x51:rate=50:duration=0.3");
  makeClip(directory, "d.y4m", {"-pix_fmt", "yuv420p"});
  EXPECT_EQ(lumascan(directory, {"a.mp4", "b.avi", "c.mkv", "d.y4m"}).status, 0);
  EXPECT_EQ(fileOf(directory, "a.mp4", "rows.tsv"),
            lumaprobeReport(directory, "a.mp4", {"320", "272", "0x7fff", "25"}));
  EXPECT_EQ(fileOf(directory, "b.avi", "rows.tsv"),
            lumaprobeReport(directory, "b.avi", {"160", "96", "0x7fff", "10"}));
  EXPECT_EQ(fileOf(directory, "d.y4m", "rows.tsv"),
            lumaprobeReport(directory, "d.y4m", {"128", "80", "0x7fff", "25"}));
  // What lumaprobe takes for a frame has whole chroma samples: of odd sizes it sees other rows.
  EXPECT_EQ(linesOf(fileOf(directory, "c.mkv", "rows.tsv")).size(), 16u);
}

TEST(Results, areTheSame_howeverManyFilesRunAtOnce) {
  const TemporaryDirectory directory;
  makeVideo(directory, "a.mp4");
  makeClip(directory, "b.avi", {"-c:v", "mpeg4"});
  EXPECT_EQ(lumascan(directory, {"a.mp4", "b.avi", "-j", "1", "-o", "one"}).status, 0);
  EXPECT_EQ(lumascan(directory, {"a.mp4", "b.avi", "-j", "8", "-o", "eight"}).status, 0);
  EXPECT_EQ(filesBelow(directory.path + "/one"), filesBelow(directory.path + "/eight"));
}

TEST(Results, ofARange_haveTheRowsOfLumaprobe) {
  const TemporaryDirectory directory;
  makeVideo(directory, "a.mp4");
  EXPECT_EQ(lumascan(directory, {"a.mp4", "--fps", "10", "--start", "f:5", "--end", "f:15"}).status,
            0);
  // Ten frames from the fifth on at ten a second: lumaprobe reads the number of frames from the
  // place of the rate, and the first frame from that of their number.
  EXPECT_EQ(fileOf(directory, "a.mp4", "rows.tsv"),
            lumaprobeReport(directory, "a.mp4", {"320", "272", "0x7fff", "10", "5", "0"}));
  const Json analysis = resultOf(directory, "a.mp4")["analysis"];
  EXPECT_EQ(analysis["first_frame"], 5);
  EXPECT_EQ(analysis["frames"], 10);
  EXPECT_EQ(analysis["start_s"], 0.2);
  EXPECT_EQ(analysis["end_s"], 0.6);
}

TEST(Results, ofSomeIndicators_haveTheOthersEmpty) {
  const TemporaryDirectory directory;
  makeVideo(directory, "a.mp4");
  EXPECT_EQ(lumascan(directory, {"a.mp4", "--indicators", "blur,contrast"}).status, 0);
  EXPECT_EQ(fileOf(directory, "a.mp4", "rows.tsv"),
            lumaprobeReport(directory, "a.mp4", {"320", "272", "0x420", "25"}));
  const Json indicators = resultOf(directory, "a.mp4")["indicators"];
  EXPECT_EQ(indicators["blur"]["n"], 19);
  EXPECT_EQ(indicators["noise"]["n"], 0);
  EXPECT_TRUE(indicators["noise"]["mean"].is_null());
  const std::string row = linesOf(fileOf(directory, "a.mp4", "frames.csv"))[3];
  EXPECT_EQ(row.substr(0, 6), "2,1024");
  EXPECT_EQ(std::count(row.begin(), row.end(), ','), 41);
  // The last four indicators are empty; neither messages nor infinite values; then come measures.
  EXPECT_NE(row.find(",,,,,0,0,1"), std::string::npos) << row;
}

TEST(Results, listEveryFrameWithTheValuesOfItsRow) {
  const TemporaryDirectory directory;
  makeVideo(directory, "a.mp4");
  EXPECT_EQ(lumascan(directory, {"a.mp4"}).status, 0);
  const std::vector<std::string> frames = linesOf(fileOf(directory, "a.mp4", "frames.csv"));
  const std::vector<std::string> rows = linesOf(fileOf(directory, "a.mp4", "rows.tsv"));
  ASSERT_EQ(frames.size(), 20u);
  ASSERT_EQ(rows.size(), 20u);
  for (size_t i = 1; i < 20; ++i) {
    int frame = -1;
    double time = 0.0;
    double blockiness = 0.0;
    double activity = 0.0;
    // 25 frames a second in units of 1/12800: 512 for each.
    ASSERT_EQ(std::sscanf(frames[i].c_str(), "%d,%*d,%lf,0.04,%*d,0,%lf,%lf", &frame, &time,
                          &blockiness, &activity),
              4)
        << frames[i];
    EXPECT_EQ(frame, static_cast<int>(i) - 1);
    EXPECT_DOUBLE_EQ(time, (static_cast<double>(i) - 1.0) / 25.0);
    char expected[64];
    std::snprintf(expected, sizeof expected, "%05d \t%.5f \t%.5f \t", frame, blockiness, activity);
    EXPECT_EQ(rows[i].substr(0, std::string(expected).size()), expected);
  }
}

TEST(Results, areSummedUpOverAllFiles) {
  const TemporaryDirectory directory;
  fs::create_directory(directory.path + "/clips");
  makeVideo(directory, "clips/a.mp4");
  makeVideo(directory, "clips/b,\"c\".mp4");
  EXPECT_EQ(lumascan(directory, {"clips", "--thresholds", "/dev/null"}).status, 2);
  EXPECT_EQ(lumascan(directory, {"clips"}).status, 0);
  const std::vector<std::string> summary =
      linesOf(readFile(directory.path + "/lumascan-results/summary.csv"));
  ASSERT_EQ(summary.size(), 3u);
  EXPECT_EQ(summary[0].substr(0, 27), "path,status,verdict,frames,");
  EXPECT_EQ(summary[1].substr(0, 21), "clips/a.mp4,complete,");
  EXPECT_EQ(summary[2].substr(0, 29), "\"clips/b,\"\"c\"\".mp4\",complete,");
  const Json run = readJson(directory, "lumascan-results/run.json");
  EXPECT_EQ(run["files"].size(), 2u);
  EXPECT_EQ(run["files"][0]["path"], "clips/a.mp4");
  EXPECT_EQ(run["files"][0]["frames"], 19);
  EXPECT_EQ(run["exit_status"], 0);
  const std::string page = readFile(directory.path + "/lumascan-results/index.html");
  EXPECT_NE(page.find("href=\"clips/a.mp4.lumascan/report.html\""), std::string::npos);
}

TEST(Results, haveTheFormatsThatAreAskedFor) {
  const TemporaryDirectory directory;
  makeVideo(directory, "a.mp4");
  const auto names = [&] {
    std::vector<std::string> found;
    for (const auto& file : filesBelow(directory.path + "/lumascan-results")) {
      if (file.first.find("thumbs") == std::string::npos) found.push_back(file.first);
    }
    return found;
  };
  EXPECT_EQ(lumascan(directory, {"a.mp4"}).status, 0);
  EXPECT_EQ(names(), (std::vector<std::string>{
                         "a.mp4.lumascan/events.csv", "a.mp4.lumascan/frames.csv",
                         "a.mp4.lumascan/report.html", "a.mp4.lumascan/result.json",
                         "a.mp4.lumascan/rows.tsv", "events.csv", "index.html", "summary.csv"}));
  // What is not wanted any more does not stay beside what is.
  EXPECT_EQ(lumascan(directory, {"a.mp4", "--formats", "json"}).status, 0);
  EXPECT_EQ(names()[0], "a.mp4.lumascan/result.json");
}

TEST(Results, areOfThePipe) {
  const TemporaryDirectory directory;
  makeClip(directory, "a.y4m", {"-pix_fmt", "yuv420p"});
  EXPECT_EQ(lumascan(directory, {"-"}, "a.y4m").status, 0);
  const Json result = readJson(directory, "lumascan-results/stdin.lumascan/result.json");
  EXPECT_EQ(result["status"], "complete");
  EXPECT_EQ(result["analysis"]["frames"], 25);
  EXPECT_TRUE(result["input"]["size"].is_null());
  EXPECT_EQ(fileOf(directory, "stdin", "rows.tsv"),
            lumaprobeReport(directory, "a.y4m", {"128", "80", "0x7fff", "25"}));
}

TEST(Results, areOfYUV4MPEGAlone_whereThereIsNoName) {
  const TemporaryDirectory directory;
  makeClip(directory, "a.mkv", {"-c:v", "ffv1"});
  EXPECT_EQ(lumascan(directory, {"-"}, "a.mkv").status, 3);
  EXPECT_EQ(readJson(directory, "lumascan-results/stdin.lumascan/result.json")["status"], "failed");
}

TEST(Results, areOfAPipeWithAName) {
  const TemporaryDirectory directory;
  // Black for a second, which is an event: there would be pictures of it.
  makeClip(directory, "black.y4m", {"-pix_fmt", "yuv420p"}, "color=black:size=64x64:rate=25:d=1");
  makeFifo(directory, "a.y4m");
  RunningScan scan(directory, {"a.y4m"});
  {
    const Feed source(scan, directory.path + "/a.y4m");
    feed(source, readFile(directory.path + "/black.y4m"));
  }
  EXPECT_EQ(endOf(&scan).status, 0);
  const Json result = resultOf(directory, "a.y4m");
  EXPECT_EQ(result["status"], "complete");
  EXPECT_EQ(result["analysis"]["frames"], 25);
  EXPECT_EQ(result["events"][0]["type"], "black");
  EXPECT_FALSE(fs::exists(directory.path + "/lumascan-results/a.y4m.lumascan/thumbs"));
}

TEST(Results, areOfRawFiles) {
  const TemporaryDirectory directory;
  makeVideo(directory, "a.mp4");
  decodeByProgram(directory, "a.mp4", "a.yuv");
  EXPECT_EQ(lumascan(directory, {"--raw", "320x272@30000/1001", "a.yuv"}).status, 0);
  EXPECT_EQ(fileOf(directory, "a.yuv", "rows.tsv"),
            lumaprobeReport(directory, "a.mp4", {"320", "272", "0x7fff", "29.97"}));
  EXPECT_EQ(resultOf(directory, "a.yuv")["analysis"]["frames"], 19);
  // A frame of which a byte is missing.
  const std::string bytes = readFile(directory.path + "/a.yuv");
  writeFile(directory.path + "/cut.yuv", bytes.substr(0, bytes.size() - 1));
  EXPECT_EQ(lumascan(directory, {"--raw", "320x272@25", "cut.yuv"}).status, 3);
  EXPECT_EQ(resultOf(directory, "cut.yuv")["status"], "partial");
  EXPECT_EQ(resultOf(directory, "cut.yuv")["analysis"]["frames"], 18);
}

TEST(Results, sayWhatIsWrongWithAFile) {
  const TemporaryDirectory directory;
  makeVideo(directory, "a.mp4");
  const std::string bytes = readFile(directory.path + "/a.mp4");
  writeFile(directory.path + "/cut.mp4", bytes.substr(0, bytes.size() / 2));
  writeFile(directory.path + "/text.mp4", "no video");
  // Four bits a sample, which FFmpeg's scaler does not read.
  makeClip(directory, "rgb4.nut", {"-c:v", "rawvideo", "-pix_fmt", "rgb4"});
  const ProgramRun run =
      lumascan(directory, {"text.mp4", "cut.mp4", "missing.mp4", "a.mp4", "rgb4.nut"});
  EXPECT_EQ(run.status, 3);
  EXPECT_NE(run.err.find("lumascan: \"rgb4.nut\": no luma is known of this pixel format\n"),
            std::string::npos);
  EXPECT_NE(run.err.find("lumascan: cannot open \"missing.mp4\": No such file or directory\n"),
            std::string::npos);
  EXPECT_NE(run.err.find("lumascan: \"cut.mp4\": the file is cut: its end is missing\n"),
            std::string::npos);
  EXPECT_NE(run.err.find("lumascan: \"text.mp4\": Invalid data found when processing input\n"),
            std::string::npos);
  EXPECT_EQ(resultOf(directory, "a.mp4")["status"], "complete");
  EXPECT_EQ(resultOf(directory, "text.mp4")["status"], "failed");
  EXPECT_EQ(resultOf(directory, "text.mp4")["verdict"], "incomplete");
  const Json cut = resultOf(directory, "cut.mp4");
  EXPECT_EQ(cut["status"], "partial");
  EXPECT_EQ(cut["truncated"], true);
  EXPECT_EQ(cut["events"].back()["type"], "truncation");
  EXPECT_FALSE(fs::exists(directory.path + "/lumascan-results/missing.mp4.lumascan"));
}

TEST(Results, areOfFilesWithAnyName) {
  const TemporaryDirectory directory;
  makeVideo(directory, "a.mp4");
  const std::string bytes = readFile(directory.path + "/a.mp4");
  const std::vector<std::string> names = {"sp ace.mp4",     "q\"uo'te.mp4", "new\nline.mp4",
                                          "in\xff\xfe.mp4", "-dash.mp4",    "http:x.mp4",
                                          "<b>\"&amp;.mp4", "%41#?.mp4"};
  for (const std::string& name : names) writeFile(directory.path + "/" + name, bytes);
  const ProgramRun run = lumascan(directory, {"."});
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(linesOf(run.out).size(), names.size() + 2);
  for (const std::string& name : names) {
    EXPECT_EQ(fileOf(directory, name, "rows.tsv"), fileOf(directory, "a.mp4", "rows.tsv")) << name;
  }
  EXPECT_EQ(resultOf(directory, "in\xff\xfe.mp4")["input"]["path"],
            "in\xef\xbf\xbd\xef\xbf\xbd.mp4");
  EXPECT_EQ(resultOf(directory, "in\xff\xfe.mp4")["input"]["path_uri"], "in%FF%FE.mp4");
  const std::string page = readFile(directory.path + "/lumascan-results/index.html");
  EXPECT_EQ(page.find("<b>\""), std::string::npos);
  EXPECT_NE(page.find("href=\"%2541%23%3F.mp4.lumascan/report.html\""), std::string::npos);
}

TEST(Results, sayOfTheRunWhenItBeganAndWhatWasUpToDate) {
  const TemporaryDirectory directory;
  makeClip(directory, "a.mkv", {"-c:v", "ffv1"});
  for (const bool isAgain : {false, true}) {
    SCOPED_TRACE(isAgain);
    const std::time_t before = std::time(nullptr);
    // The time is that of Greenwich, wherever the machine stands.
    ASSERT_EQ(
        lumascan(directory, {"a.mkv", "-q"}, "/dev/null", [] { setenv("TZ", "EST5", 1); }).status,
        0);
    const std::time_t after = std::time(nullptr);
    const Json run = readJson(directory, "lumascan-results/run.json");
    const std::string started = run["started"];
    std::tm parts = {};
    const char* const end = strptime(started.c_str(), "%Y-%m-%dT%H:%M:%SZ", &parts);
    ASSERT_TRUE(end != nullptr && *end == '\0') << started;
    EXPECT_GE(timegm(&parts), before);
    EXPECT_LE(timegm(&parts), after);
    EXPECT_GT(run["elapsed_s"], 0.0);
    EXPECT_LE(run["elapsed_s"], static_cast<double>(after - before) + 1.0);
    EXPECT_EQ(run["files"][0]["up_to_date"], isAgain);
    EXPECT_EQ(run["files"][0]["attempts"], isAgain ? 0 : 1);
    EXPECT_EQ(run["files"][0]["status"], "complete");
    EXPECT_EQ(run["files"][0]["frames"], 25);
  }
}

TEST(Results, areThereButNotTheirIndex_whenThatCannotBeWritten) {
  const TemporaryDirectory directory;
  makeClip(directory, "a.mkv", {"-c:v", "ffv1"});
  for (const char* const name : {"events.csv", "summary.csv", "index.html", "run.json"}) {
    SCOPED_TRACE(name);
    const std::string output = std::string("without-") + name;
    ASSERT_EQ(lumascan(directory, {"a.mkv", "-o", output, "-q"}).status, 0);
    fs::remove(directory.path + "/" + output + "/" + name);
    fs::create_directories(directory.path + "/" + output + "/" + name);
    const std::string error =
        "lumascan: cannot write \"" + output + "/" + name + "\": Is a directory\n";
    const ProgramRun run =
        lumascan(directory, {"a.mkv", "-o", output, "--json", "--progress", "none"});
    EXPECT_EQ(run.status, 4);
    EXPECT_EQ(run.err, error);
    EXPECT_EQ(Json::parse(run.out)["exit_status"], 4);
    EXPECT_EQ(readJson(directory, output + "/a.mkv.lumascan/result.json")["status"], "complete");
    // Nobody is sent to a page that is not there.
    const ProgramRun again = lumascan(directory, {"a.mkv", "-o", output, "--progress", "none"});
    EXPECT_EQ(again.status, 4);
    EXPECT_EQ(again.err, error);
    EXPECT_EQ(again.out.find("Results:"), std::string::npos) << again.out;
  }
}

TEST(Results, standBesideNoLeftovers_butBesideAllElse) {
  const TemporaryDirectory directory;
  makeClip(directory, "a.mkv", {"-c:v", "ffv1"});
  makeClip(directory, "b.mkv", {"-c:v", "ffv1"});
  ASSERT_EQ(lumascan(directory, {"b.mkv", "-q"}).status, 0);
  const std::string results = directory.path + "/lumascan-results/";
  fs::create_directory(results + "a.mkv.lumascan");
  // Of another machine, where nobody has touched them for a day.
  const std::string form = ".lumascan-there-4-0123456789abcdef.part";
  const std::vector<std::string> leftovers = {".index.html" + form,
                                              "a.mkv.lumascan/.rows.tsv" + form,
                                              "a.mkv.lumascan/.result.json" + form};
  const std::vector<std::string> others = {"notes.txt",
                                           "holiday.part1",
                                           "index.html.part",
                                           "a.mkv.lumascan/rows.tsv.part4",
                                           "a.mkv.lumascan/.rows.tsv" + form + ".old",
                                           "b.mkv.lumascan/.rows.tsv" + form};
  for (const char* const formats : {"csv,html", "json"}) {
    SCOPED_TRACE(formats);
    for (const std::string& name : leftovers) {
      writeFile(results + name, "cut");
      fs::last_write_time(results + name,
                          fs::file_time_type::clock::now() - std::chrono::hours(25));
    }
    for (const std::string& name : others) writeFile(results + name, "kept");
    // Nothing is written for b.mkv, which is up to date with the formats that are the usual ones.
    ASSERT_EQ(lumascan(directory, {"a.mkv", "-q", "--force", "--formats", formats}).status, 0);
    for (const std::string& name : leftovers) EXPECT_FALSE(fs::exists(results + name)) << name;
    for (const std::string& name : others) EXPECT_EQ(readFile(results + name), "kept") << name;
  }
}

TEST(Results, areNotPutAmongFilesOfOthers) {
  const TemporaryDirectory directory;
  makeClip(directory, "a.mkv", {"-c:v", "ffv1", "-frames:v", "2"});
  fs::create_directory(directory.path + "/site");
  writeFile(directory.path + "/site/index.html", "mine");
  const std::string refusal =
      "lumascan: \"site\" has files in it, and none of a scan: --take-over writes to it all the "
      "same\n";
  for (const char* const other : {"", R"({"tool": {"name": "other"}})", "[1]", "no JSON"}) {
    if (*other != '\0') writeFile(directory.path + "/site/run.json", other);
    const auto before = filesBelow(directory.path + "/site");
    const ProgramRun run = lumascan(directory, {"a.mkv", "-o", "site"});
    EXPECT_EQ(run.status, 4) << other;
    EXPECT_EQ(run.err, refusal) << other;
    EXPECT_EQ(filesBelow(directory.path + "/site"), before) << other;
    EXPECT_EQ(lumascan(directory, {"prune", "site"}).err, refusal) << other;
  }
  EXPECT_EQ(lumascan(directory, {"a.mkv", "-o", "site", "--take-over", "-q"}).status, 0);
  EXPECT_NE(readFile(directory.path + "/site/index.html"), "mine");
  EXPECT_EQ(lumascan(directory, {"a.mkv", "-o", "site", "-q"}).status, 0);
  // An empty folder, one that a killed scan has begun, and one of an earlier version.
  fs::create_directory(directory.path + "/empty");
  fs::create_directory(directory.path + "/begun");
  writeFile(directory.path + "/begun/.lumascan-lock", "");
  writeFile(directory.path + "/begun/notes", "mine");
  fs::create_directory(directory.path + "/old");
  writeFile(directory.path + "/old/run.json", R"({"tool": {"name": "lumascan"}})");
  for (const char* const folder : {"empty", "begun", "old"}) {
    EXPECT_EQ(lumascan(directory, {"a.mkv", "-o", folder, "-q"}).status, 0) << folder;
  }
}

TEST(Results, haveAFolder_howeverLongTheVideosNameIs) {
  const TemporaryDirectory directory;
  makeClip(directory, "a.mkv", {"-c:v", "ffv1", "-frames:v", "2"});
  const std::string name = std::string(251, 'x') + ".mkv";
  fs::rename(directory.path + "/a.mkv", directory.path + "/" + name);
  makeClip(directory, "b.mkv", {"-c:v", "ffv1", "-frames:v", "2"});
  EXPECT_EQ(lumascan(directory, {".", "-q"}).status, 0);
  const Json files = readJson(directory, "lumascan-results/run.json")["files"];
  ASSERT_EQ(files.size(), 2U);
  EXPECT_EQ(readJson(directory, "lumascan-results/" + files[1]["folder"].get<std::string>() +
                                    "/result.json")["input"]["path"],
            name);
  EXPECT_NE(lumascan(directory, {name}).out.find("(up to date)"), std::string::npos);
}

TEST(Results, ofFoldersThatAreCalledLikeTheirOwnFilesStandBesideThese) {
  const TemporaryDirectory directory;
  fs::create_directory(directory.path + "/run.json");
  fs::create_directory(directory.path + "/result.json");
  makeClip(directory, "run.json/a.mkv", {"-c:v", "ffv1", "-frames:v", "2"});
  fs::copy(directory.path + "/run.json/a.mkv", directory.path + "/result.json/b.mkv");
  EXPECT_EQ(lumascan(directory, {"run.json", "result.json", "-q"}).status, 0);
  const Json run = readJson(directory, "lumascan-results/run.json");
  EXPECT_EQ(run["files"][0]["folder"], "run.json~/a.mkv.lumascan");
  EXPECT_EQ(run["files"][1]["folder"], "result.json/b.mkv.lumascan");
  EXPECT_EQ(linesOf(readFile(directory.path + "/lumascan-results/summary.csv")).size(), 3U);
  // The table of all results takes the folder for none.
  EXPECT_EQ(lumascan(directory, {"events", "lumascan-results"}).status, 0);
}
