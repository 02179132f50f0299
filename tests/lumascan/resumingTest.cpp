// Scans that are repeated, disturbed and stopped.
#include <sys/resource.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <thread>

#include "scanRun.h"

namespace fs = std::filesystem;

namespace {

// What the plan of a scan says about its only file.
std::string planOf(const TemporaryDirectory& directory, Arguments arguments) {
  arguments.insert(arguments.end(), {"a.mp4", "-n"});
  const std::string plan = lumascan(directory, arguments).out;
  return plan.substr(0, plan.find("  "));
}

// For a process that the system ends by itself once another one is gone.
void waitUntilGone(pid_t process) {
  while (isAlive(process)) std::this_thread::sleep_for(std::chrono::milliseconds(2));
}

bool hasNameWith(const std::string& folder, const std::string& part) {
  std::error_code ignored;
  for (const auto& entry : fs::directory_iterator(folder, ignored)) {
    if (entry.path().filename().string().find(part) != std::string::npos) return true;
  }
  return false;
}

}  // namespace

TEST(Resuming, skipsWhatIsUpToDate) {
  const TemporaryDirectory directory;
  makeVideo(directory, "a.mp4");
  EXPECT_EQ(lumascan(directory, {"a.mp4"}).status, 0);
  const fs::path rows = directory.path + "/lumascan-results/a.mp4.lumascan/rows.tsv";
  const auto written = fs::last_write_time(rows);
  const ProgramRun again = lumascan(directory, {"a.mp4"});
  EXPECT_EQ(again.status, 0);
  EXPECT_NE(again.out.find("(up to date)"), std::string::npos);
  EXPECT_EQ(fs::last_write_time(rows), written);
  EXPECT_EQ(lumascan(directory, {"a.mp4", "--force"}).status, 0);
  EXPECT_NE(fs::last_write_time(rows), written);
}

TEST(Resuming, redoesWhatHasChanged) {
  const TemporaryDirectory directory;
  makeVideo(directory, "a.mp4");
  EXPECT_EQ(lumascan(directory, {"a.mp4"}).status, 0);
  EXPECT_EQ(planOf(directory, {}), "up to date");
  EXPECT_EQ(planOf(directory, {"--fps", "50"}), "analyse");
  EXPECT_EQ(planOf(directory, {"--start", "f:1"}), "analyse");
  EXPECT_EQ(planOf(directory, {"--indicators", "blur"}), "analyse");
  EXPECT_EQ(planOf(directory, {"--thumbs", "none"}), "judge");
  writeFile(directory.path + "/strict.json", R"({"blur": {"enter": 1, "leave": 0.5}})");
  EXPECT_EQ(planOf(directory, {"--thresholds", "strict.json"}), "judge");
  const fs::path file = directory.path + "/a.mp4";
  const auto time = fs::last_write_time(file);
  fs::last_write_time(file, time + std::chrono::seconds(1));
  EXPECT_EQ(planOf(directory, {}), "analyse");
  fs::last_write_time(file, time);
  EXPECT_EQ(planOf(directory, {}), "up to date");
  // The same size and time, another content.
  std::string bytes = readFile(file.string());
  bytes[bytes.size() - 9] = static_cast<char>(bytes[bytes.size() - 9] + 1);
  writeFile(file.string(), bytes);
  fs::last_write_time(file, time);
  EXPECT_EQ(planOf(directory, {}), "analyse");
}

TEST(Resuming, judgesAgainWithoutDecoding) {
  const TemporaryDirectory directory;
  makeVideo(directory, "a.mp4");
  EXPECT_EQ(lumascan(directory, {"a.mp4"}).status, 0);
  const std::string folder = directory.path + "/lumascan-results/a.mp4.lumascan/";
  // Other values than the file's would give: they are taken as they are stored.
  std::string frames = readFile(folder + "frames.csv");
  const size_t at = frames.find("\r\n3,") + 2;
  frames.replace(at, frames.find("\r\n", at) - at,
                 "3,1536,0.12,0.04,0,0" + std::string(16, ',') + "0,0" + std::string(19, ','));
  writeFile(folder + "frames.csv", frames);
  const auto written = fs::last_write_time(folder + "rows.tsv");
  EXPECT_EQ(lumascan(directory, {"a.mp4", "--thumbs", "none"}).status, 0);
  EXPECT_EQ(fs::last_write_time(folder + "rows.tsv"), written);
  EXPECT_EQ(readFile(folder + "frames.csv"), frames);
}

TEST(Resuming, triesWhatFailedAgain) {
  const TemporaryDirectory directory;
  writeFile(directory.path + "/a.mp4", "no video");
  EXPECT_EQ(lumascan(directory, {"a.mp4"}).status, 3);
  EXPECT_EQ(planOf(directory, {}), "analyse");
}

TEST(Resuming, startsACrashedWorkerOnceMore) {
  const TemporaryDirectory directory;
  makeFifo(directory, "stuck.mp4");
  RunningScan scan(directory, {"stuck.mp4", "-j", "1"});
  const pid_t first = waitForWorkers(scan, 1).at(0);
  kill(first, SIGABRT);
  const pid_t second = waitForNextWorker(scan, first);
  kill(second, SIGKILL);
  const ProgramRun run = endOf(&scan);
  EXPECT_EQ(run.status, 3);
  EXPECT_NE(run.err.find("\"stuck.mp4\" ended by signal 6 (Aborted): trying once more"),
            std::string::npos)
      << run.err;
  EXPECT_NE(run.err.find("ended by signal 9 (Killed): given up"), std::string::npos) << run.err;
  const Json result = resultOf(directory, "stuck.mp4");
  EXPECT_EQ(result["status"], "failed");
  EXPECT_EQ(result["error"], "its analysis was given up after two attempts: signal 9 (Killed)");
  EXPECT_TRUE(fs::exists(directory.path + "/lumascan-results/stuck.mp4.lumascan/report.html"));
}

TEST(Resuming, finishesTheOthers_whenAWorkerCrashes) {
  const TemporaryDirectory directory;
  makeFifo(directory, "a-stuck.mp4");
  makeVideo(directory, "b.mp4");
  RunningScan scan(directory, {"a-stuck.mp4", "b.mp4", "-j", "1", "--stall-timeout", "0"});
  const pid_t first = waitForWorkers(scan, 1).at(0);
  kill(first, SIGKILL);
  // What waits for the first time comes before what is tried again.
  const pid_t ofTheOther = waitForNextWorker(scan, first);
  waitUntil(scan, "the result of b.mp4", [&] {
    return fs::exists(directory.path + "/lumascan-results/b.mp4.lumascan/result.json");
  });
  kill(waitForNextWorker(scan, ofTheOther), SIGKILL);
  EXPECT_EQ(endOf(&scan).status, 3);
  EXPECT_EQ(resultOf(directory, "b.mp4")["status"], "complete");
  EXPECT_EQ(resultOf(directory, "a-stuck.mp4")["status"], "failed");
}

TEST(Resuming, leavesNoWorkerBehind) {
  const TemporaryDirectory directory;
  makeFifo(directory, "a.mp4");
  makeFifo(directory, "b.mp4");
  RunningScan scan(directory, {"a.mp4", "b.mp4", "-j", "2"});
  const std::vector<pid_t> workers = waitForWorkers(scan, 2);
  kill(scan.program.process, SIGKILL);
  EXPECT_EQ(endOf(&scan).status, 128 + SIGKILL);
  for (const pid_t worker : workers) waitUntilGone(worker);
}

TEST(Resuming, finishesRunningFilesAtTheFirstInterrupt_andStopsAtTheSecond) {
  const TemporaryDirectory directory;
  makeFifo(directory, "a.mp4");
  makeVideo(directory, "b.mp4");
  RunningScan scan(directory, {"a.mp4", "b.mp4", "-j", "1", "--progress", "bar"});
  const pid_t worker = waitForWorkers(scan, 1).at(0);
  kill(scan.program.process, SIGINT);
  waitForError(scan, "finishing 1 running file(s); press Ctrl-C again to stop at once\n");
  // The bar that is drawn again tells that the scan has gone on.
  waitUntil(scan, "the bar", [&] {
    const std::string said = errorsOf(scan);
    return said.find("0 of 2 files", said.find("at once\n")) != std::string::npos;
  });
  EXPECT_TRUE(isAlive(worker));
  kill(scan.program.process, SIGINT);
  const ProgramRun run = endOf(&scan);
  EXPECT_EQ(run.status, 130);
  EXPECT_FALSE(isAlive(worker));
  EXPECT_EQ(run.err.find("finishing"), run.err.rfind("finishing"));  // said once
  EXPECT_NE(run.err.find("stopped; the same command goes on from here"), std::string::npos);
  EXPECT_FALSE(fs::exists(directory.path + "/lumascan-results/b.mp4.lumascan"));
  // Nothing half-written is left.
  for (const auto& file : filesBelow(directory.path + "/lumascan-results")) {
    EXPECT_EQ(file.first.find(".part"), std::string::npos) << file.first;
  }
}

TEST(Resuming, stopsAtOnce_whenTerminated) {
  const TemporaryDirectory directory;
  makeVideo(directory, "a.mp4");
  makeFifo(directory, "b.mp4");
  EXPECT_EQ(lumascan(directory, {"a.mp4"}).status, 0);
  RunningScan scan(directory, {"a.mp4", "b.mp4"});
  const pid_t worker = waitForWorkers(scan, 1).at(0);
  kill(scan.program.process, SIGTERM);
  const ProgramRun run = endOf(&scan);
  EXPECT_EQ(run.status, 143);
  EXPECT_EQ(run.err.find("finishing"), std::string::npos) << run.err;
  EXPECT_FALSE(isAlive(worker));
  EXPECT_EQ(planOf(directory, {}), "up to date");
}

TEST(Resuming, callsAFileUnfinished_whateverResultLiesThere) {
  const TemporaryDirectory directory;
  makeClip(directory, "a.y4m", {"-pix_fmt", "yuv420p"});
  EXPECT_EQ(lumascan(directory, {"a.y4m"}).status, 0);
  fs::remove(directory.path + "/a.y4m");
  makeFifo(directory, "a.y4m");
  RunningScan scan(directory, {"a.y4m", "--json"});
  waitForWorkers(scan, 1);
  kill(scan.program.process, SIGTERM);
  const ProgramRun run = endOf(&scan);
  EXPECT_EQ(run.status, 143);
  EXPECT_EQ(resultOf(directory, "a.y4m")["status"], "complete");
  const Json summary = Json::parse(run.out);
  EXPECT_EQ(summary["exit_status"], 143);
  const Json& file = summary["files"][0];
  EXPECT_EQ(file["status"], "unfinished");
  EXPECT_EQ(file["verdict"], "incomplete");
  EXPECT_EQ(file["frames"], 0);
  EXPECT_EQ(file["attempts"], 1);
  EXPECT_EQ(file["up_to_date"], false);
}

TEST(Resuming, keepsASecondScanOut) {
  const TemporaryDirectory directory;
  makeFifo(directory, "a.mp4");
  makeVideo(directory, "b.mp4");
  RunningScan scan(directory, {"a.mp4"});
  waitForWorkers(scan, 1);
  const ProgramRun second = lumascan(directory, {"b.mp4"});
  EXPECT_EQ(second.status, 4);
  EXPECT_EQ(second.err, "lumascan: another scan is writing to \"lumascan-results\"\n");
  kill(scan.program.process, SIGTERM);
  endOf(&scan);
  EXPECT_EQ(lumascan(directory, {"b.mp4"}).status, 0);
}

TEST(Resuming, endsWithFour_whereResultsCannotBeWritten) {
  const TemporaryDirectory directory;
  makeVideo(directory, "a.mp4");
  makeVideo(directory, "b.mp4");
  writeFile(directory.path + "/file", "");
  EXPECT_EQ(lumascan(directory, {"a.mp4", "-o", "file"}).status, 4);
  EXPECT_EQ(lumascan(directory, {"a.mp4", "-o", "file/below"}).status, 4);
  // Files of more than 2000 bytes cannot be written. That is said of each.
  const Arguments scan = {"a.mp4", "b.mp4", "-j", "1", "--progress", "none"};
  const ProgramRun run = lumascan(directory, scan, "/dev/null", [] {
    const rlimit limit = {2000, 2000};
    setrlimit(RLIMIT_FSIZE, &limit);
  });
  EXPECT_EQ(run.status, 4);
  EXPECT_EQ(run.err,
            "lumascan: cannot write \"lumascan-results/a.mp4.lumascan/rows.tsv\": File too large\n"
            "lumascan: cannot write \"lumascan-results/b.mp4.lumascan/rows.tsv\": File too large\n"
            "lumascan: cannot write \"lumascan-results/index.html\": File too large\n");
  EXPECT_EQ(run.out, "");
  for (const auto& file : filesBelow(directory.path + "/lumascan-results")) {
    EXPECT_EQ(file.first.find("mp4.lumascan/"), std::string::npos) << file.first;
  }
  const Json summary = readJson(directory, "lumascan-results/run.json");
  EXPECT_EQ(summary["exit_status"], 4);
  for (const Json& file : summary["files"]) EXPECT_EQ(file["status"], "unfinished");
  EXPECT_EQ(lumascan(directory, {"a.mp4", "b.mp4"}).status, 0);
}

TEST(Resuming, goesOnWithTheOthers_whereOneResultCannotBeWritten) {
  const TemporaryDirectory directory;
  makeVideo(directory, "a.mp4");
  makeVideo(directory, "b.mp4");
  ASSERT_EQ(lumascan(directory, {"a.mp4", "-q"}).status, 0);
  fs::create_directory(directory.path + "/mine");
  const std::string folder = directory.path + "/lumascan-results/a.mp4.lumascan";
  fs::remove_all(folder);
  fs::create_directory_symlink(directory.path + "/mine", folder);
  const ProgramRun run = lumascan(directory, {"a.mp4", "b.mp4", "-j", "1", "--progress", "none"});
  EXPECT_EQ(run.status, 4);
  EXPECT_EQ(run.err,
            "lumascan: \"lumascan-results/a.mp4.lumascan\" is a link: results are not written "
            "through it\n");
  EXPECT_EQ(resultOf(directory, "b.mp4")["status"], "complete");
  EXPECT_TRUE(fs::is_empty(directory.path + "/mine"));
}

TEST(Resuming, endsWithFour_whereTheValuesOfALongVideoCannotBeKept) {
  const TemporaryDirectory directory;
  writeFile(directory.path + "/long.yuv", std::string(size_t{16} * 16 * 3 / 2 * 5000, 'x'));
  const Arguments scan = {"long.yuv", "--raw", "16x16@25", "-j", "1"};
  const ProgramRun run =
      lumascan(directory, scan, "/dev/null", [] { setenv("TMPDIR", "/nowhere", 1); });
  EXPECT_EQ(run.status, 4);
  EXPECT_NE(run.err.find("cannot keep values in a temporary file in \"/nowhere\": No such file"),
            std::string::npos)
      << run.err;
  for (const auto& file : filesBelow(directory.path + "/lumascan-results")) {
    EXPECT_EQ(file.first.find("long.yuv.lumascan/"), std::string::npos) << file.first;
  }
  EXPECT_EQ(lumascan(directory, scan).status, 0);
  // The result that lies there now is not that of a scan that fails.
  Arguments forced = scan;
  forced.insert(forced.end(), {"--force", "--json"});
  const ProgramRun failed =
      lumascan(directory, forced, "/dev/null", [] { setenv("TMPDIR", "/nowhere", 1); });
  EXPECT_EQ(failed.status, 4);
  EXPECT_EQ(Json::parse(failed.out)["files"][0]["status"], "unfinished");
  const ProgramRun again = lumascan(directory, {"events", "lumascan-results"}, "/dev/null",
                                    [] { setenv("TMPDIR", "/nowhere", 1); });
  EXPECT_EQ(again.status, 4);
  EXPECT_NE(again.err.find("/nowhere"), std::string::npos) << again.err;
}

TEST(Resuming, comesToTheSameEnd_whateverIsKilledOnTheWay) {
  const TemporaryDirectory directory;
  for (const char* const name : {"a.mp4", "b.mp4", "c.mp4", "d.mp4"}) makeVideo(directory, name);
  const Arguments scan = {"a.mp4", "b.mp4", "c.mp4", "d.mp4", "-j", "2"};
  Arguments calm = scan;
  calm.insert(calm.end(), {"-o", "calm"});
  ASSERT_EQ(lumascan(directory, calm).status, 0);
  const std::string results = directory.path + "/lumascan-results";
  // What has just appeared when something is killed: a part of a name in a folder.
  const std::vector<std::pair<std::string, std::string>> moments = {
      {"", ""},
      {"a.mp4.lumascan", ".rows.tsv.lumascan-"},
      {"b.mp4.lumascan", ".rows.tsv.lumascan-"},
      {"a.mp4.lumascan", "frames.csv"},
      {"b.mp4.lumascan", "thumbs"},
      {"a.mp4.lumascan", ".report.html.lumascan-"},
      {"a.mp4.lumascan", "result.json"},
      {"c.mp4.lumascan", ".rows.tsv.lumascan-"},
      {"c.mp4.lumascan", "events.csv"},
      {"d.mp4.lumascan", "report.html"},
      {"d.mp4.lumascan", "result.json"},
      {"", ".index.html.lumascan-"}};
  for (size_t round = 0; round < moments.size(); ++round) {
    const auto& [folder, part] = moments[round];
    SCOPED_TRACE(part);
    const std::string watched = fs::path(results) / folder;
    RunningScan disturbed(directory, scan);
    // A moment may be over before it was seen; the scan goes on to its end then.
    while (isAlive(disturbed.program.process) && !hasNameWith(watched, part)) {
      std::this_thread::yield();
    }
    const std::vector<pid_t> workers = workersOf(disturbed);
    // A scan that has lost its worker comes to its end, and is compared.
    kill(round % 3 < 2 || workers.empty() ? disturbed.program.process : workers[0], SIGKILL);
    endOf(&disturbed);
    if (round % 3 == 2) {
      EXPECT_EQ(lumascan(directory, scan).status, 0);
      EXPECT_EQ(filesBelow(results), filesBelow(directory.path + "/calm"));
      fs::remove_all(results);
    }
  }
}

TEST(Resuming, goesOnWithTheOthers_whenAFileNeedsMoreMemoryThanThereIs) {
  if (isAddressSanitized || isThreadSanitized) {
    GTEST_SKIP()
        << "sanitizers reserve terabytes: no limit on addresses leaves a program that starts";
  }
  const TemporaryDirectory directory;
  makeVideo(directory, "b.mp4");
  // Two frames of 75 MB.
  constexpr uintmax_t FRAME_BYTES = 75000000;
  const std::string large = directory.path + "/a.y4m";
  writeFile(large, "YUV4MPEG2 W10000 H5000 F25:1\n");
  for (int frame = 0; frame < 2; ++frame) {
    std::ofstream(large, std::ios::binary | std::ios::app) << "FRAME\n";
    fs::resize_file(large, fs::file_size(large) + FRAME_BYTES);
  }
  bool isRefused = false;
  for (rlim_t megabytes = 325; megabytes <= 800; megabytes += 50) {
    SCOPED_TRACE(megabytes);
    const ProgramRun run =
        lumascan(directory, {"a.y4m", "b.mp4", "-j", "1", "--force"}, "/dev/null", [=] {
          const rlimit limit = {megabytes << 20, megabytes << 20};
          setrlimit(RLIMIT_AS, &limit);
        });
    const Json result = resultOf(directory, "a.y4m");
    const bool isComplete = result["status"] == "complete";
    EXPECT_EQ(run.status, isComplete ? 0 : 3) << run.err;
    EXPECT_TRUE(!isComplete || result["analysis"]["frames"] == 2);
    EXPECT_EQ(resultOf(directory, "b.mp4")["status"], "complete");
    EXPECT_TRUE(isComplete ||
                run.err.find("it takes more memory than there is") != std::string::npos)
        << run.err;
    isRefused = isRefused || !isComplete;
  }
  EXPECT_TRUE(isRefused);
}
