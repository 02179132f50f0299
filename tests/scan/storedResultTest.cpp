// Where results are stored, and stored results that something has damaged or changed.
#include "scan/results/storedResult.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <set>

#include "currentFolder.h"
#include "scan/files/json.h"
#include "scan/results/collection.h"
#include "support/runProgram.h"

namespace fs = std::filesystem;

namespace {

constexpr char VIDEO[] = "nowhere.mp4";

// A result of one frame.
VideoResult smallResult(const std::string& path = VIDEO) {
  VideoResult result = failedResult({path, 0, 0, ""}, {}, "not opened");
  ResultRecord& record = result.record;
  record.error = "";
  record.status = Status::COMPLETE;
  record.input.stream = StreamFacts{};
  record.input.stream->frameRate = 25.0;
  AnalysisFacts analysis;
  analysis.fps = 25.0;
  analysis.start = 0.0;
  analysis.end = 0.04;
  analysis.frames = 1;
  analysis.corruptFrames = 0;
  analysis.decodeErrors = 0;
  record.analysis = analysis;
  record.indicators.at(indicatorNamed("blur")).statistics.mean = 2.5;
  appendRow({0, 0.0, 0.04, true, false, {}}, &result.frames);
  judgeResult(DEFAULT_THRESHOLDS, &result);
  return result;
}

// Stores it and changes its result.json (RFC 7386).
void storeChanged(const std::string& folder, const std::string& changes) {
  ASSERT_EQ(storeResult(folder, smallResult(), nullptr), "");
  Json json = Json::parse(readFile(folder + "/result.json"));
  json.merge_patch(Json::parse(changes));
  writeFile(folder + "/result.json", jsonText(json));
}

// What is wrong with it then, behind the file's name.
std::string mistakeAfter(const std::string& changes) {
  const TemporaryDirectory directory;
  storeChanged(directory.path, changes);
  VideoResult result;
  const std::string mistake = readResult(directory.path, &result);
  const std::string start = "cannot read \"" + directory.path + "/result.json\": ";
  EXPECT_EQ(mistake.substr(0, start.size()), mistake.empty() ? "" : start);
  return mistake.empty() ? "" : mistake.substr(start.size());
}

std::string notWritten(const std::string& name) {
  return name + " is not what lumascan writes";
}

// Stores a result and the rows that a scan has written beside it before.
std::string storeWithRows(const std::string& folder, const VideoResult& result) {
  std::string error = storeResult(folder, result, nullptr);
  writeFile(folder + "/rows.tsv", "");
  return error;
}

std::string folderOf(const std::string& output, const std::string& path) {
  return resultFolder(output, {path, 0, 0, "", -1, false, nullptr});
}

}  // namespace

TEST(ResultFolder, isBelowTheFolderOfAllResults_byThePathFromHere) {
  const CurrentFolder here;
  EXPECT_EQ(folderOf("out", "a.mp4"), "out/a.mp4.lumascan");
  EXPECT_EQ(folderOf("out", "clips/a.mp4"), "out/clips/a.mp4.lumascan");
  EXPECT_EQ(folderOf("/out/", "./clips//a.mp4"), "/out/clips/a.mp4.lumascan");
  EXPECT_EQ(folderOf("out", here.directory.path + "/clips/a.mp4"), "out/clips/a.mp4.lumascan");
}

TEST(ResultFolder, hasThePathFromTheRoot_ofFilesElsewhere) {
  const CurrentFolder here;
  EXPECT_EQ(folderOf("out", "/mnt/clips/a.mp4"), "out/mnt/clips/a.mp4.lumascan");
  const std::string beside = fs::path(here.directory.path).parent_path().relative_path().string();
  EXPECT_EQ(folderOf("out", "../a.mp4"), "out/" + beside + "/a.mp4.lumascan");
}

TEST(ResultFolder, neverLeavesTheFolderOfAllResults) {
  const CurrentFolder here;
  EXPECT_EQ(folderOf("out", "clips/../a.mp4"), "out/a.mp4.lumascan");
  EXPECT_EQ(folderOf("out", "clips/../../../../../../../../a.mp4"), "out/a.mp4.lumascan");
  EXPECT_EQ(folderOf("out", "/../a.mp4"), "out/a.mp4.lumascan");
}

TEST(ResultFolder, takesNamesThatBeginWithDotsForNames) {
  const CurrentFolder here;
  EXPECT_EQ(folderOf("out", "..a.mp4"), "out/..a.mp4.lumascan");
  EXPECT_EQ(folderOf("out", "..clips/a..mp4"), "out/..clips/a..mp4.lumascan");
  EXPECT_EQ(folderOf("out", "...mp4"), "out/...mp4.lumascan");
}

TEST(ResultFolder, isNoFileOfTheFolderOfAllResults) {
  const CurrentFolder here;
  for (const char* const name :
       {"index.html", "summary.csv", "events.csv", "run.json", ".lumascan-lock"}) {
    const std::string own = name;
    EXPECT_EQ(folderOf("out", own + "~/a.mp4"), "out/" + own + "~~/a.mp4.lumascan");
    EXPECT_EQ(folderOf("out", own + "/a.mp4"), "out/" + own + "~/a.mp4.lumascan");
    EXPECT_EQ(folderOf("out", "b/" + own + "/a.mp4"), "out/b/" + own + "/a.mp4.lumascan");
    EXPECT_EQ(folderOf("out", own), "out/" + own + ".lumascan");
  }
}

TEST(ResultFolder, isNotWithinThatOfAnotherVideo) {
  const CurrentFolder here;
  EXPECT_EQ(folderOf("out", "a"), "out/a.lumascan");
  EXPECT_EQ(folderOf("out", "a.lumascan/b"), "out/a.lumascan~/b.lumascan");
  EXPECT_EQ(folderOf("out", "a.lumascan~/b"), "out/a.lumascan~~/b.lumascan");
  EXPECT_EQ(folderOf("out", "c/a.lumascan/d/b"), "out/c/a.lumascan~/d/b.lumascan");
  EXPECT_EQ(folderOf("out", ".lumascan/b"), "out/.lumascan/b.lumascan");  // of no video
}

TEST(ResultFolder, hasANameThatAFolderCanHave) {
  const CurrentFolder here;
  const std::string longest(246, 'x');
  EXPECT_EQ(folderOf("out", longest), "out/" + longest + ".lumascan");
  // FNV-1a of 247 and of 255 times "x", by another program: the first bytes stay.
  const std::string first = folderOf("out", longest + "x");
  const std::string second = folderOf("out", std::string(255, 'x'));
  for (const std::string& folder : {first, second}) {
    EXPECT_EQ(fs::path(folder).filename().string().size(), 255U);
    EXPECT_EQ(folder.substr(0, 4 + 229), "out/" + std::string(229, 'x'));
  }
  EXPECT_EQ(first.substr(4 + 229), "~4406fbf748a5ac1f.lumascan");
  EXPECT_EQ(second.substr(4 + 229), "~dff658324c99c7bf.lumascan");
}

TEST(ResultFolder, hasANameForStandardInput) {
  EXPECT_EQ(resultFolder("out", {"-", 0, 0, "", -1, true, nullptr}), "out/stdin.lumascan");
  EXPECT_EQ(folderOf("out", "./-"), "out/-.lumascan");
}

TEST(ResultFolder, isMadeBelowTheFolderOfAllResults_butNotThroughALink) {
  const TemporaryDirectory directory;
  const std::string out = directory.path + "/out";
  EXPECT_EQ(makeResultFolder(out, out + "/a/b.mp4.lumascan"), "");
  EXPECT_TRUE(fs::is_directory(out + "/a/b.mp4.lumascan"));
  EXPECT_EQ(makeResultFolder(out, out + "/a/b.mp4.lumascan"), "");
  fs::create_directories(directory.path + "/mine/b.mp4.lumascan");
  for (const char* const link : {"/linked", "/a/c.mp4.lumascan"}) {
    fs::create_directory_symlink(directory.path + "/mine", out + link);
  }
  EXPECT_EQ(makeResultFolder(out, out + "/linked/b.mp4.lumascan"),
            "\"" + out + "/linked\" is a link: results are not written through it");
  EXPECT_EQ(makeResultFolder(out, out + "/a/c.mp4.lumascan"),
            "\"" + out + "/a/c.mp4.lumascan\" is a link: results are not written through it");
  // The folder of all results may be one.
  fs::create_directory_symlink(out, directory.path + "/other");
  EXPECT_EQ(makeResultFolder(directory.path + "/other", directory.path + "/other/d.mp4.lumascan"),
            "");
  EXPECT_TRUE(fs::is_directory(out + "/d.mp4.lumascan"));
}

TEST(StoredResult, comesBack) {
  EXPECT_EQ(mistakeAfter("{}"), "");
}

TEST(StoredResult, takesThePlaceOfWhatWasReadBefore) {
  const TemporaryDirectory directory;
  VideoResult result = smallResult();
  result.events.resize(2);
  ASSERT_EQ(storeResult(directory.path, result, nullptr), "");
  for (int i = 0; i < 2; ++i) {
    ASSERT_EQ(readResult(directory.path, &result), "");
    EXPECT_EQ(result.events.size(), 2u);
  }
}

TEST(StoredResult, isNotRead_whenItLacksWhatItTakes) {
  const std::vector<std::pair<std::string, std::string>> changes = {
      {R"({"input": null})", "input.path"},
      {R"({"input": "a.mp4"})", "input.path"},
      {R"({"input": {"path": 5}})", "input.path"},
      {R"({"input": {"frame_rate": "25"}})", "input.frame_rate"},
      {R"({"analysis": null})", "analysis"},
      {R"({"analysis": [25]})", "analysis"},
      {R"({"analysis": {"fps": null}})", "analysis.fps"},
      {R"({"analysis": {"fps": "25"}})", "analysis.fps"},
      {R"({"status": null})", "status"},
      {R"({"status": 1})", "status"},
      {R"({"status": "unfinished"})", "status"},
      {R"({"error": {"code": 5}})", "error"},
      {R"({"truncated": null})", "truncated"},
      {R"({"truncated": "no"})", "truncated"},
      {R"({"verdict": null})", "verdict"},
      {R"({"verdict": 1})", "verdict"},
      {R"({"verdict": "good"})", "verdict"},
      {R"({"reasons": null})", "reasons"},
      {R"({"reasons": "one"})", "reasons"},
      {R"({"reasons": ["one", 2]})", "reasons"},
      {R"({"outputs": null})", "outputs"},
      {R"({"outputs": ["csv"]})", "outputs"},
  };
  for (const auto& [change, name] : changes) {
    EXPECT_EQ(mistakeAfter(change), notWritten(name)) << change;
  }
  EXPECT_EQ(mistakeAfter(R"({"tool": null})"), "it is not a result of lumascan");
  EXPECT_EQ(mistakeAfter(R"({"schema_version": 1})"), "it is of another version of lumascan");
}

TEST(StoredResult, isNotRead_whenItIsDeeperThanTheStack) {
  const TemporaryDirectory directory;
  storeChanged(directory.path, R"({"tool": {"deep": "here"}})");
  std::string text = readFile(directory.path + "/result.json");
  constexpr size_t DEPTH = 1'000'000;
  text.replace(text.find("\"here\""), 6, std::string(DEPTH, '[') + std::string(DEPTH, ']'));
  writeFile(directory.path + "/result.json", text);
  VideoResult result;
  EXPECT_NE(readResult(directory.path, &result).find("it is not a result of lumascan"),
            std::string::npos);
}

TEST(StoredResult, isRead_whenItLacksWhatItCanDoWithout) {
  for (const char* const change :
       {R"({"input": {"frame_rate": null, "size": null}})", R"({"error": "it is cut"})",
        R"({"status": "failed", "analysis": null})", R"({"status": "partial"})",
        R"({"verdict": "incomplete", "reasons": ["one", "two"]})", R"({"truncated": true})",
        R"({"outputs": {"formats": "csv"}, "thresholds": 5, "indicators": 7, "options": null})",
        R"({"events": {"first": {}, "second": 2}})"}) {
    EXPECT_EQ(mistakeAfter(change), "") << change;
  }
}

TEST(StoredResult, isJudgedByTheRateOfItsAnalysis_whenTheStreamHasNone) {
  const TemporaryDirectory directory;
  storeChanged(directory.path, R"({"input": {"frame_rate": null}})");
  VideoResult result;
  ASSERT_EQ(readResult(directory.path, &result), "");
  judgeResult(DEFAULT_THRESHOLDS, &result);
  EXPECT_EQ(result.record.judgement.verdict, Verdict::PASS);
}

TEST(StoredResult, isStale_whenItDoesNotSayWhatItIsOf) {
  const TemporaryDirectory directory;
  const std::string video = directory.path + "/a.mp4";
  const std::string folder = directory.path + "/results";
  writeFile(video, "some bytes");
  ASSERT_EQ(storeWithRows(folder, smallResult(video)), "");
  const std::string whole = readFile(folder + "/result.json");
  const auto freshness = [&](const std::string& changes) {
    Json json = Json::parse(whole);
    json.merge_patch(Json::parse(changes));
    writeFile(folder + "/result.json", jsonText(json));
    return freshnessOf(folder, {video, 0, 0, ""}, {}, DEFAULT_THRESHOLDS, {});
  };
  EXPECT_EQ(freshness("{}"), Freshness::COMPLETE);
  EXPECT_EQ(freshness(R"({"thresholds": 5})"), Freshness::JUDGE);
  EXPECT_EQ(freshness(R"({"input": {"size": null}})"), Freshness::STALE);
  EXPECT_EQ(freshness(R"({"input": {"mtime_ns": null}})"), Freshness::STALE);
  EXPECT_EQ(freshness(R"({"input": {"checksum": null}})"), Freshness::STALE);
  EXPECT_EQ(freshness(R"({"outputs": ["csv"]})"), Freshness::STALE);
  EXPECT_EQ(freshness(R"({"verdict": "good"})"), Freshness::STALE);
}

TEST(StoredResult, isStale_whenAnythingElseIsAsked) {
  const TemporaryDirectory directory;
  const std::string video = directory.path + "/a.yuv";
  const std::string folder = directory.path + "/results";
  writeFile(video, "some bytes");
  const VideoSource source = {video, 64, 48, "25"};
  AnalysisOptions options;
  options.mask = 0x421;
  options.fps = 12.5;
  ASSERT_TRUE(parsePosition("f:5", &options.start));
  ASSERT_TRUE(parsePosition("00:00:09", &options.end));
  const auto freshness = [&](const VideoSource& from, const AnalysisOptions& asked) {
    return freshnessOf(folder, from, asked, DEFAULT_THRESHOLDS, {});
  };
  for (const Status status : {Status::COMPLETE, Status::PARTIAL}) {
    SCOPED_TRACE(statusName(status));
    VideoResult result = smallResult(video);
    result.record.status = status;
    result.record.options = {0x421, 12.5, "f:5", "00:00:09", "64x48@25"};
    ASSERT_EQ(storeWithRows(folder, result), "");
    EXPECT_EQ(freshness(source, options), Freshness::COMPLETE);
    EXPECT_EQ(freshness({video, 65, 48, "25"}, options), Freshness::STALE);
    EXPECT_EQ(freshness({video, 64, 49, "25"}, options), Freshness::STALE);
    EXPECT_EQ(freshness({video, 64, 48, "30"}, options), Freshness::STALE);
    EXPECT_EQ(freshness({video, 0, 0, ""}, options), Freshness::STALE);
    AnalysisOptions other = options;
    other.mask = 0x420;
    EXPECT_EQ(freshness(source, other), Freshness::STALE);
    other = options;
    other.fps = 0.0;
    EXPECT_EQ(freshness(source, other), Freshness::STALE);
    other = options;
    ASSERT_TRUE(parsePosition("f:6", &other.start));
    EXPECT_EQ(freshness(source, other), Freshness::STALE);
    other = options;
    ASSERT_TRUE(parsePosition("00:00:08", &other.end));
    EXPECT_EQ(freshness(source, other), Freshness::STALE);
    other.end = {};
    EXPECT_EQ(freshness(source, other), Freshness::STALE);
  }
}

TEST(StoredResult, isStale_whenItFailedOrIsOfAnotherVersion) {
  const TemporaryDirectory directory;
  const std::string video = directory.path + "/a.mp4";
  const std::string folder = directory.path + "/results";
  writeFile(video, "some bytes");
  const auto freshnessIn = [&](Status status, const std::string& version) {
    VideoResult result = smallResult(video);
    result.record.status = status;
    result.record.toolVersion = version;
    EXPECT_EQ(storeWithRows(folder, result), "");
    return freshnessOf(folder, {video, 0, 0, ""}, {}, DEFAULT_THRESHOLDS, {});
  };
  EXPECT_EQ(freshnessIn(Status::COMPLETE, LUMASCAN_VERSION), Freshness::COMPLETE);
  EXPECT_EQ(freshnessIn(Status::COMPLETE, "0.9"), Freshness::STALE);
  EXPECT_EQ(freshnessIn(Status::COMPLETE, ""), Freshness::STALE);
  EXPECT_EQ(freshnessIn(Status::FAILED, LUMASCAN_VERSION), Freshness::STALE);
}

TEST(StoredResult, isJudgedAgain_whenOtherFilesOrThresholdsAreAsked) {
  const TemporaryDirectory directory;
  const std::string video = directory.path + "/a.mp4";
  const std::string folder = directory.path + "/results";
  writeFile(video, "some bytes");
  Thresholds others = DEFAULT_THRESHOLDS;
  others.at(eventTypeNamed("blur")).isEnabled = false;
  const auto freshness = [&](const Thresholds& thresholds, const OutputChoice& choice) {
    return freshnessOf(folder, {video, 0, 0, ""}, {}, thresholds, choice);
  };
  ASSERT_EQ(storeWithRows(folder, smallResult(video)), "");
  EXPECT_EQ(freshness(DEFAULT_THRESHOLDS, {}), Freshness::COMPLETE);
  EXPECT_EQ(freshness(others, {}), Freshness::JUDGE);
  EXPECT_EQ(freshness(DEFAULT_THRESHOLDS, {true, true, Thumbs::ALL}), Freshness::JUDGE);
  EXPECT_EQ(freshness(DEFAULT_THRESHOLDS, {true, false, Thumbs::EVENTS}), Freshness::JUDGE);
  EXPECT_EQ(freshness(DEFAULT_THRESHOLDS, {false, true, Thumbs::EVENTS}), Freshness::JUDGE);
  // Without frames.csv there are no values that could be judged.
  VideoResult withoutFrames = smallResult(video);
  withoutFrames.record.outputs.hasCsv = false;
  ASSERT_EQ(storeWithRows(folder, withoutFrames), "");
  EXPECT_EQ(freshness(DEFAULT_THRESHOLDS, {false, true, Thumbs::EVENTS}), Freshness::COMPLETE);
  EXPECT_EQ(freshness(others, {false, true, Thumbs::EVENTS}), Freshness::STALE);
}

TEST(StoredResult, isMadeAgain_whereFilesAreGone) {
  const TemporaryDirectory directory;
  const std::string video = directory.path + "/a.mp4";
  const std::string folder = directory.path + "/results";
  writeFile(video, "some bytes");
  const auto without = [&](const char* name) {
    VideoResult result = smallResult(video);
    result.thumbnails = {{3, "three"}, {50, "fifty"}};
    result.record.pictures = 2;
    EXPECT_EQ(storeWithRows(folder, result), "");
    fs::remove_all(folder + "/" + name);
    return freshnessOf(folder, {video, 0, 0, ""}, {}, DEFAULT_THRESHOLDS, {});
  };
  EXPECT_EQ(without("nothing"), Freshness::COMPLETE);
  for (const char* const name : {"report.html", "thumbs", "thumbs/3.jpg"}) {
    EXPECT_EQ(without(name), Freshness::JUDGE) << name;
  }
  for (const char* const name : {"rows.tsv", "frames.csv", "events.csv", "result.json"}) {
    EXPECT_EQ(without(name), Freshness::STALE) << name;
  }
}

TEST(StoredResult, hasNoPicturesOfAnEarlierOne) {
  const TemporaryDirectory directory;
  VideoResult result = smallResult();
  result.thumbnails = {{3, "three"}, {50, "fifty"}};
  ASSERT_EQ(storeResult(directory.path, result, nullptr), "");
  EXPECT_EQ(readThumbnails(directory.path), result.thumbnails);
  EXPECT_EQ(readFile(directory.path + "/thumbs/50.jpg"), "fifty");
  result.thumbnails = {{50, "other"}};
  ASSERT_EQ(storeResult(directory.path, result, nullptr), "");
  EXPECT_EQ(readThumbnails(directory.path), result.thumbnails);
  result.thumbnails.clear();
  ASSERT_EQ(storeResult(directory.path, result, nullptr), "");
  EXPECT_FALSE(fs::exists(directory.path + "/thumbs"));
}

TEST(StoredResult, isRemovedWithTheFoldersThatAreEmptyThen) {
  const TemporaryDirectory directory;
  VideoResult result = smallResult();
  result.thumbnails = {{3, "three"}};
  const std::string all = directory.path + "/all";
  const std::string first = all + "/a/b/x.mp4.lumascan";
  const std::string second = all + "/a/y.mp4.lumascan";
  ASSERT_EQ(storeWithRows(first, result), "");
  ASSERT_EQ(storeWithRows(second, result), "");
  // Of a process that was killed, and of somebody else.
  writeFile(first + "/.frames.csv.lumascan-there-7-0123456789abcdef.part", "");
  fs::last_write_time(first + "/.frames.csv.lumascan-there-7-0123456789abcdef.part",
                      fs::file_time_type::clock::now() - std::chrono::hours(25));
  writeFile(second + "/note.txt", "");
  writeFile(second + "/thumbs/best.jpg", "");
  EXPECT_EQ(removeResult(first, all), "");
  EXPECT_FALSE(fs::exists(all + "/a/b"));
  EXPECT_TRUE(fs::exists(second + "/result.json"));
  EXPECT_EQ(removeResult(second, all), "");
  std::set<std::string> left;
  for (const auto& entry : fs::recursive_directory_iterator(all)) {
    if (entry.is_regular_file()) left.insert(entry.path().filename().string());
  }
  EXPECT_EQ(left, (std::set<std::string>{"best.jpg", "note.txt"}));
  ASSERT_EQ(storeWithRows(all + "/z.mp4.lumascan", smallResult()), "");
  fs::remove_all(all + "/a");
  EXPECT_EQ(removeResult(all + "/z.mp4.lumascan", all), "");
  EXPECT_TRUE(fs::is_empty(all));
}

TEST(StoredResult, isGone_whereANewOneCannotBeStored) {
  for (const char* const name : {"frames.csv", "events.csv", "report.html"}) {
    const TemporaryDirectory directory;
    ASSERT_EQ(storeResult(directory.path, smallResult(), nullptr), "");
    ASSERT_TRUE(fs::exists(directory.path + "/result.json"));
    // A folder that is not empty gives its name to no file.
    fs::remove(directory.path + "/" + name);
    fs::create_directories(directory.path + "/" + name + "/folder");
    const std::string error = storeResult(directory.path, smallResult(), nullptr);
    EXPECT_NE(error.find(name), std::string::npos) << error;
    EXPECT_FALSE(fs::exists(directory.path + "/result.json")) << name;
  }
}

TEST(Collection, hasEachFolderThatIsAResult_butNoneWithinIt) {
  const TemporaryDirectory directory;
  const std::string& all = directory.path;
  for (const char* const folder : {"/b.lumascan", "/clips/a.lumascan", "/b.lumascan/inner.lumascan",
                                   "/b.lumascan/far/inner.lumascan"}) {
    ASSERT_EQ(storeResult(all + folder, smallResult(), nullptr), "");
  }
  EXPECT_EQ(storedResults(all),
            (std::vector<std::string>{all + "/b.lumascan", all + "/clips/a.lumascan"}));
  EXPECT_EQ(storedResults(all + "/b.lumascan"), std::vector<std::string>{all + "/b.lumascan"});
  EXPECT_EQ(storedResults(all + "/b.lumascan/far"),
            std::vector<std::string>{all + "/b.lumascan/far/inner.lumascan"});
  EXPECT_EQ(storedResults(all + "/nowhere"), std::vector<std::string>{});
}

TEST(Collection, hasWhatEachResultSays) {
  const TemporaryDirectory directory;
  storeChanged(directory.path + "/a.lumascan", R"({
    "input": {"path": "a,b.mp4"}, "status": "partial", "verdict": "incomplete", "truncated": true,
    "error": "it is \"cut\"", "analysis": {"frames": 7, "corrupt_frames": 3, "decode_errors": 2},
    "events": [{"id": 1, "type": "freeze", "severity": "fail", "first_frame": 2, "last_frame": 3,
                "start_s": 0.5, "end_s": 0.75, "peak_frame": 3, "peak_value": 1, "threshold": 0.25},
               {"id": 2, "type": "blur", "severity": "warn", "at_start": true},
               {"id": 3, "type": "blur", "severity": "warn", "at_end": true}]})");
  ASSERT_EQ(writeCollection(directory.path, {}), "");
  EXPECT_NE(readFile(directory.path + "/summary.csv")
                .find("\r\n\"a,b.mp4\",partial,incomplete,7,0.04,1,2,0,3,2,1,\"it is "
                      "\"\"cut\"\"\",,,,,,2.5,,,,,,,,,\r\n"),
            std::string::npos);
  EXPECT_EQ(readFile(directory.path + "/events.csv"),
            "path,id,type,severity,first_frame,last_frame,start_s,end_s,duration_s,peak_frame,"
            "peak_value,threshold,at_start,at_end\r\n"
            "\"a,b.mp4\",1,freeze,fail,2,3,0.5,0.75,0.25,3,1,0.25,0,0\r\n"
            "\"a,b.mp4\",2,blur,warn,0,0,,,,0,,,1,0\r\n"
            "\"a,b.mp4\",3,blur,warn,0,0,,,,0,,,0,1\r\n");
}

TEST(Collection, hasTheFilesThatAreChosen) {
  const TemporaryDirectory directory;
  const auto namesFor = [&](const OutputChoice& choice) {
    const std::string folder =
        directory.path + (choice.hasCsv ? "/csv" : "/none") + (choice.hasHtml ? "/html" : "/none");
    EXPECT_EQ(storeResult(folder + "/a.lumascan", smallResult(), nullptr), "");
    EXPECT_EQ(writeCollection(folder, choice), "");
    std::set<std::string> names;
    for (const auto& entry : fs::directory_iterator(folder)) {
      if (entry.is_regular_file()) names.insert(entry.path().filename().string());
    }
    return names;
  };
  using Names = std::set<std::string>;
  EXPECT_EQ(namesFor({true, true, Thumbs::NONE}),
            (Names{"events.csv", "index.html", "summary.csv"}));
  EXPECT_EQ(namesFor({true, false, Thumbs::NONE}), (Names{"events.csv", "summary.csv"}));
  EXPECT_EQ(namesFor({false, true, Thumbs::NONE}), Names{"index.html"});
  EXPECT_EQ(namesFor({false, false, Thumbs::NONE}), Names{});
}

TEST(Collection, hasNoValue_whereAResultHasNone) {
  const TemporaryDirectory directory;
  const auto lineAfter = [&](const std::string& changes) {
    storeChanged(directory.path + "/a.lumascan", changes);
    EXPECT_EQ(writeCollection(directory.path, {}), "");
    const std::string summary = readFile(directory.path + "/summary.csv");
    const std::string line = summary.substr(summary.find("\r\n") + 2);
    return line.substr(0, line.find("\r\n"));
  };
  const std::string blur = ",,,,,,2.5,,,,,,,,,";
  EXPECT_EQ(lineAfter("{}"), "nowhere.mp4,complete,pass,1,0.04,0,0,0,0,0,0," + blur);
  EXPECT_EQ(lineAfter(R"({"analysis": {"frames": null, "end_s": null, "decode_errors": null}})"),
            "nowhere.mp4,complete,pass,,,0,0,0,0,,0," + blur);
  // From the tenth second on: what was analysed lasts for two and a half.
  EXPECT_EQ(lineAfter(R"({"analysis": {"start_s": 10.25, "end_s": 12.75}})"),
            "nowhere.mp4,complete,pass,1,2.5,0,0,0,0,0,0," + blur);
  EXPECT_EQ(lineAfter(R"({"indicators": {"blur": null, "noise": 5, "slice": {"mean": null}}})"),
            "nowhere.mp4,complete,pass,1,0.04,0,0,0,0,0,0,,,,,,,,,,,,,,,,");
  EXPECT_EQ(lineAfter(R"({"indicators": 5, "error": null})"),
            "nowhere.mp4,complete,pass,1,0.04,0,0,0,0,0,0,,,,,,,,,,,,,,,,");
  EXPECT_EQ(lineAfter(R"({"verdict": 5})"), "");  // it is left out
}

// What a process leaves that a video has taken over.
TEST(ReadRecord, refusesWhatIsNoFile_andWhatNoResultIsAsLargeAs) {
  const TemporaryDirectory directory;
  ResultRecord record;
  const auto errorOf = [&] { return readRecord(directory.path, &record, [](const Event&) {}); };
  const std::string path = directory.path + "/result.json";
  std::filesystem::create_directory(path);
  EXPECT_EQ(errorOf(), "cannot read \"" + path + "\": Is a directory");
  std::filesystem::remove(path);
  for (const std::string list : {"junk", "events"}) {
    std::string numbers = R"({"tool": {"name": "lumascan"}, ")" + list + "\": [0";
    for (int i = 0; i < 100000; ++i) numbers += ",0";
    writeFile(path, numbers + "]}");
    EXPECT_EQ(errorOf(), "cannot read \"" + path + "\": it is not a result of lumascan") << list;
  }
  writeFile(path, R"({"tool": {"name": "lumascan"}, "junk": [0]})");
  EXPECT_EQ(errorOf(), "cannot read \"" + path + "\": it is of another version of lumascan");
}
