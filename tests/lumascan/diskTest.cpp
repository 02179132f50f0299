// What a scan brings to the disk and when, disks that fail, and how many files it has open.
#include <unistd.h>

#include <algorithm>
#include <filesystem>

#include "scanRun.h"

namespace fs = std::filesystem;

namespace {

// Has a process that is being prepared for a program watched by preloaded/diskCalls.cpp.
void watchDisk(const char* variable, const std::string& value) {
  preload(DISK_CALLS_LIBRARY, variable, value);
}

using Fields = std::vector<std::string>;

// What lies between the tabs of a line.
Fields fieldsOf(const std::string& line) {
  Fields fields(1);
  for (const char character : line) {
    if (character == '\n') break;
    if (character == '\t') {
      fields.emplace_back();
    } else {
      fields.back() += character;
    }
  }
  return fields;
}

std::string numberedRaw(int number) {
  return "videos/" + std::to_string(number) + ".yuv";
}

}  // namespace

TEST(Disk, hasEachFileBeforeItsName_andTheNameBeforeTheNextFile) {
  const TemporaryDirectory directory;
  makeVideo(directory, "a.mp4");
  const std::string here = fs::canonical(directory.path).string();
  const std::string results = here + "/results";
  const ProgramRun run =
      lumascan(directory, {"a.mp4", "-j", "1", "-o", results, "--sandbox", "off"}, "/dev/null",
               [&] { watchDisk("DISK_LOG", here + "/disk.log"); });
  EXPECT_EQ(run.status, 0) << run.err;
  const std::vector<std::string> steps = linesOf(readFile(here + "/disk.log"));
  // Three for each file: its bytes, its name, and the folder, which holds the name.
  ASSERT_EQ(steps.size() % 3, 0u);
  std::vector<std::string> named;
  for (size_t i = 0; i < steps.size(); i += 3) {
    const Fields renamed = fieldsOf(steps[i + 1]);
    ASSERT_EQ(renamed.size(), 4u) << steps[i + 1];
    const std::string& bytes = renamed[1];
    const std::string& temporary = renamed[2];
    const std::string& path = renamed[3];
    EXPECT_EQ(renamed[0], "rename");
    const fs::path whole = path;
    const std::string beside =
        whole.parent_path() / ("." + whole.filename().string() + ".lumascan-");
    EXPECT_EQ(temporary.substr(0, beside.size()), beside);
    EXPECT_EQ(bytes, std::to_string(fs::file_size(path))) << path;
    EXPECT_EQ(fieldsOf(steps[i]), (Fields{"fsync", bytes, temporary}));
    EXPECT_EQ(fieldsOf(steps[i + 2]), (Fields{"fsync", "0", fs::path(path).parent_path()}));
    named.push_back(path);
  }
  // The result is said to be there when all that belongs to it is, and the index after it.
  const std::string folder = results + "/a.mp4.lumascan/";
  const auto isOfVideo = [&](const std::string& path) { return path.find(folder) == 0; };
  const auto last = std::find_if(named.rbegin(), named.rend(), isOfVideo);
  ASSERT_NE(last, named.rend());
  EXPECT_EQ(*last, folder + "result.json");
  EXPECT_EQ(std::count_if(named.begin(), last.base(), isOfVideo), last.base() - named.begin());
  EXPECT_EQ(named.back(), results + "/run.json");
  std::vector<std::string> files;
  for (const auto& entry : fs::recursive_directory_iterator(results)) {
    const bool isLock = entry.path().filename() == ".lumascan-lock";
    if (entry.is_regular_file() && !isLock) files.push_back(entry.path().string());
  }
  std::sort(named.begin(), named.end());
  std::sort(files.begin(), files.end());
  EXPECT_EQ(named, files);
}

TEST(Disk, thatIsFullTakesNoFurtherVideo) {
  const TemporaryDirectory directory;
  makeVideo(directory, "a.mp4");
  makeVideo(directory, "b.mp4");
  const ProgramRun run = lumascan(directory, {"a.mp4", "b.mp4", "-j", "1", "--progress", "none"},
                                  "/dev/null", [] { watchDisk("DISK_FULL", "/a.mp4.lumascan/"); });
  EXPECT_EQ(run.status, 4);
  EXPECT_EQ(run.err,
            "lumascan: cannot write \"lumascan-results/a.mp4.lumascan/rows.tsv\": No space left on "
            "device\n");
  EXPECT_FALSE(fs::exists(directory.path + "/lumascan-results/b.mp4.lumascan"));
  EXPECT_EQ(readJson(directory, "lumascan-results/run.json")["files"][1]["status"], "unfinished");
}

TEST(Disk, thatFailsIsNotTakenForTheEndOfAVideo) {
  const TemporaryDirectory directory;
  fs::create_directory(directory.path + "/failing");
  // Two seconds of noise in key frames alone: some hundreds of thousands of bytes in each
  // container.
  constexpr int FRAMES = 50;
  constexpr int FAILING_BYTE = 150'000;
  makeClip(directory, "failing/a.mkv",
           {"-vf", "noise=alls=60", "-c:v", "libx264", "-preset", "ultrafast", "-qp", "16", "-g",
            "1", "-pix_fmt", "yuv420p"},
           "testsrc2=size=128x80:rate=25:duration=2");
  const auto copyTo = [&](const std::string& name, Arguments options) {
    options.insert(options.begin(), {"-i", "failing/a.mkv", "-c", "copy"});
    options.push_back("failing/" + name);
    ffmpeg(directory, options);
  };
  copyTo("a.avi", {"-bsf:v", "h264_mp4toannexb"});
  copyTo("a.flv", {});
  copyTo("a.h264", {});
  copyTo("a.mp4", {"-movflags", "+faststart"});
  copyTo("a.ts", {});
  ffmpeg(directory, {"-i", "failing/a.mkv", "failing/a.y4m"});
  const ProgramRun run =
      lumascan(directory, {"failing", "-j", "1", "--formats", "json"}, "/dev/null",
               [] { watchDisk("DISK_ERROR", std::to_string(FAILING_BYTE) + ":/failing/"); });
  EXPECT_EQ(run.status, 3);
  for (const char* const kind : {"avi", "flv", "h264", "mkv", "mp4", "ts", "y4m"}) {
    SCOPED_TRACE(kind);
    const std::string name = std::string("failing/a.") + kind;
    ASSERT_GT(fs::file_size(directory.path + "/" + name), FAILING_BYTE + 100'000u);
    const std::string message = "lumascan: \"" + name + "\": Input/output error\n";
    EXPECT_NE(run.err.find(message), std::string::npos) << run.err;
    const Json result = resultOf(directory, name);
    EXPECT_EQ(result["status"], "partial");
    EXPECT_EQ(result["error"], "Input/output error");
    EXPECT_EQ(result["verdict"], "incomplete");
    EXPECT_EQ(result["analysis"]["ended_by"], "read_error");
    EXPECT_EQ(result["truncated"], false);
    EXPECT_GT(result["analysis"]["frames"], 0);
    EXPECT_LT(result["analysis"]["frames"], FRAMES);
  }
  // The same files, when the disk has done with failing.
  EXPECT_EQ(lumascan(directory, {"failing", "--formats", "json"}).status, 0);
}

TEST(OpenFiles, areNoMore_howeverManyVideosThereAre) {
  constexpr int DESCRIPTORS = 24;
  constexpr int VIDEOS = 30;
  const TemporaryDirectory directory;
  fs::create_directory(directory.path + "/videos");
  for (int i = 0; i < VIDEOS; ++i) {
    writeFile(directory.path + "/" + numberedRaw(i), std::string(16 * 16 * 3 / 2, 'x'));
  }
  const Arguments scan = {"videos", "--raw", "16x16@25", "-j", "1", "--formats", "json"};
  for (const bool isUpToDate : {false, true}) {
    const ProgramRun run = lumascan(directory, scan, "/dev/null", limitDescriptors(DESCRIPTORS));
    EXPECT_EQ(run.status, 0) << run.err;
    const Json files = readJson(directory, "lumascan-results/run.json")["files"];
    ASSERT_EQ(files.size(), size_t{VIDEOS});
    for (const Json& file : files) {
      EXPECT_EQ(file["status"], "complete");
      EXPECT_EQ(file["up_to_date"], isUpToDate);
      EXPECT_EQ(file["attempts"], isUpToDate ? 0 : 1);
    }
  }
}
