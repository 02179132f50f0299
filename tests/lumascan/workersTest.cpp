// Worker processes: what they say, what is done to them, and what becomes of their files.
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <thread>

#include "scanRun.h"

namespace fs = std::filesystem;

namespace {

// Adds to what a worker has said: its standard error can be opened by others, too.
void sayFor(pid_t worker, const std::string& text) {
  std::ofstream("/proc/" + std::to_string(worker) + "/fd/2") << text << std::flush;
}

// A scan of one file whose two workers say something and are then killed. Without what is said, for
// the user to read, of the first one.
ProgramRun scanWithLogs(const TemporaryDirectory& directory, const Arguments& arguments,
                        const std::string& firstLog, const std::string& secondLog) {
  RunningScan scan(directory, arguments);
  const pid_t first = waitForWorkers(scan, 1).at(0);
  sayFor(first, firstLog);
  kill(first, SIGABRT);
  const pid_t second = waitForNextWorker(scan, first);
  sayFor(second, secondLog);
  kill(second, SIGKILL);
  return endOf(&scan);
}

int oomScoreOf(const std::string& process) {
  int score = -1;
  std::ifstream("/proc/" + process + "/oom_score_adj") >> score;
  return score;
}

// What a process has open beside its standard streams; some of it may be closed meanwhile.
std::vector<std::string> openBy(pid_t process) {
  std::vector<std::string> open;
  for (const auto& entry : fs::directory_iterator("/proc/" + std::to_string(process) + "/fd")) {
    const int number = std::stoi(entry.path().filename());
    std::error_code closed;
    const fs::path file = fs::read_symlink(entry.path(), closed);
    if (number > STDERR_FILENO && !closed) open.push_back(file);
  }
  std::sort(open.begin(), open.end());
  return open;
}

}  // namespace

TEST(Workers, haveOpenWhatTheyNeed_andNothingOfOthers) {
  const TemporaryDirectory directory;
  const std::string folder = fs::canonical(directory.path).string();
  makeFifo(directory, "a.y4m");
  makeFifo(directory, "b.y4m");
  RunningScan scan(directory, {"a.y4m", "b.y4m", "-j", "2", "--formats", "json"});
  const std::vector<pid_t> workers = waitForWorkers(scan, 2);
  for (size_t i = 0; i < 2; ++i) {
    // Its video, the pipe on which it tells how far it is, and a temporary file without a name.
    const std::string video = folder + (i == 0 ? "/a.y4m" : "/b.y4m");
    const size_t temporaryFiles = isAddressSanitized ? 0 : 1;
    waitUntil(scan, "a worker that has what it needs", [&] {
      std::vector<std::string> open = openBy(workers[i]);
      const auto isTemporary = [](const std::string& file) {
        return file.find("/lumascan") != std::string::npos &&
               file.find(" (deleted)") != std::string::npos;
      };
      const auto first = std::stable_partition(
          open.begin(), open.end(), [&](const std::string& file) { return !isTemporary(file); });
      const auto found = static_cast<size_t>(open.end() - first);
      return found == temporaryFiles && open.size() - found == 2 && open[0] == video &&
             open[1].substr(0, 5) == "pipe:";
    });
  }
}

TEST(Workers, doNotWaitForAPipe_whenTheyHaveWhatTheyWant) {
  const TemporaryDirectory directory;
  const std::string video = streamedVideo(directory);
  makeFifo(directory, "a.y4m");
  // With two cores for one file frames are decoded ahead, by a thread that waits for the pipe.
  RunningScan scan(directory, {"a.y4m", "-j", "2", "--end", "f:5", "--progress", "none"});
  const Feed to(scan, directory.path + "/a.y4m");
  feed(to, video.substr(0, video.size() / 2));
  const ProgramRun run = endOf(&scan);
  EXPECT_EQ(run.err, "");
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(resultOf(directory, "a.y4m")["analysis"]["frames"], 5);
}

TEST(Workers, tryTheSameFileOnceMore_whenAnotherOneHasItsNameByThen) {
  const TemporaryDirectory directory;
  makeFifo(directory, "a.y4m");
  RunningScan scan(directory, {"a.y4m", "-j", "1", "--progress", "none"});
  const pid_t first = waitForWorkers(scan, 1).at(0);
  fs::rename(directory.path + "/a.y4m", directory.path + "/old.y4m");
  makeFifo(directory, "a.y4m");
  kill(first, SIGKILL);
  waitForNextWorker(scan, first);
  {
    const Feed source(scan, directory.path + "/old.y4m");
    feed(source, streamedVideo(directory));
  }
  EXPECT_EQ(endOf(&scan).status, 0);
  EXPECT_EQ(resultOf(directory, "a.y4m")["analysis"]["frames"], 25);
}

TEST(Workers, areGivenUpAfterTwoAttempts_withTheLastFiveLinesThatTheSecondSaid) {
  const TemporaryDirectory directory;
  makeFifo(directory, "stuck, and how.mp4");
  writeFile(directory.path + "/own.json", R"({"blur": {"enter": 9.25}})");
  const ProgramRun run = scanWithLogs(
      directory,
      {"stuck, and how.mp4", "-j", "1", "--progress", "none", "--thresholds", "own.json",
       "--formats", "csv"},
      "of the first attempt\n", "one\ntwo\n\n  \nthree \n  four\r\nfive\x1b\nsix, or \"6\"\n\n");
  EXPECT_EQ(run.status, 3);
  const std::string name = "lumascan: analysis of \"stuck, and how.mp4\" ended by ";
  const std::string error =
      "its analysis was given up after two attempts: signal 9 (Killed); last message: six, or "
      "\"6\"";
  // Lines without text are passed over; control characters can be seen.
  EXPECT_EQ(run.err, name + "signal 6 (Aborted): trying once more\n" + name +
                         "signal 9 (Killed): given up\n"
                         "lumascan:   it said: two\n"
                         "lumascan:   it said: three\n"
                         "lumascan:   it said:   four\n"
                         "lumascan:   it said: five\\x1b\n"
                         "lumascan:   it said: six, or \"6\"\n"
                         "lumascan: \"stuck, and how.mp4\": " +
                         error + "\n");
  EXPECT_EQ(run.out, "incomplete stuck, and how.mp4: Not analysed: " + error +
                         "\nResults: lumascan-results/run.json\n");
  Json result = resultOf(directory, "stuck, and how.mp4");
  EXPECT_EQ(result["status"], "failed");
  EXPECT_EQ(result["error"], error);
  EXPECT_EQ(result["verdict"], "incomplete");
  EXPECT_EQ(result["reasons"], Json({"Not analysed: " + error}));
  // By what it would have been judged, and what was to be written.
  EXPECT_EQ(result["thresholds"]["blur"]["enter"], 9.25);
  EXPECT_EQ(result["outputs"]["formats"], Json({"csv"}));
  std::vector<std::string> names;
  for (const auto& file : filesBelow(directory.path + "/lumascan-results")) {
    names.push_back(file.first);
  }
  const std::string folder = "stuck, and how.mp4.lumascan/";
  EXPECT_EQ(names,
            (std::vector<std::string>{"events.csv", folder + "events.csv", folder + "frames.csv",
                                      folder + "result.json", "summary.csv"}));
  // Fields with commas are in quotes, quotes in them are doubled; of fifteen means there is none.
  EXPECT_EQ(linesOf(readFile(directory.path + "/lumascan-results/summary.csv")).at(1),
            "\"stuck, and how.mp4\",failed,incomplete,,,0,0,0,,,0,\"its analysis was given up "
            "after two attempts: signal 9 (Killed); last message: six, or \"\"6\"\"\"" +
                std::string(15, ',') + "\r\n");
}

TEST(Workers, areHeardAtOnce_whenTheUserWantsToKnowMore) {
  const TemporaryDirectory directory;
  makeFifo(directory, "stuck.mp4");
  const ProgramRun run = scanWithLogs(
      directory, {"stuck.mp4", "-v", "--sandbox", "off", "-q", "-j", "1", "--progress", "none"},
      "first, \x1b[31m\nred", "second\n");
  const std::string ended = "lumascan: analysis of \"stuck.mp4\" ended by signal ";
  EXPECT_EQ(run.err, "first, \\x1b[31m\nred" + ended + "6 (Aborted): trying once more\nsecond\n" +
                         ended + "9 (Killed): given up\nlumascan:   it said: second\n" +
                         "lumascan: \"stuck.mp4\": its analysis was given up after two attempts: "
                         "signal 9 (Killed); last message: second\n");
}

TEST(Workers, areQuotedWithTheEndOfWhatTheySaid) {
  const TemporaryDirectory directory;
  makeFifo(directory, "stuck.mp4");
  // Of 2506 bytes the last 2000 are kept: 6 for "\nend.\n", 1994 of the x.
  const ProgramRun run = scanWithLogs(directory, {"stuck.mp4", "-j", "1", "--progress", "none"}, "",
                                      std::string(2500, 'x') + "\nend.\n");
  const std::vector<std::string> lines = linesOf(run.err);
  ASSERT_EQ(lines.size(), 5u) << run.err;
  EXPECT_EQ(lines[2], "lumascan:   it said: " + std::string(1994, 'x') + "\n");
  EXPECT_EQ(lines[3], "lumascan:   it said: end.\n");
  // What the first one has said is not what the second one has died of.
  scanWithLogs(directory, {"stuck.mp4", "-j", "1"}, "of the first\n", "");
  EXPECT_EQ(resultOf(directory, "stuck.mp4")["error"],
            "its analysis was given up after two attempts: signal 9 (Killed)");
}

TEST(Workers, areTheFirstToGo_whenMemoryRunsOut) {
  const TemporaryDirectory directory;
  makeFifo(directory, "a.y4m");
  const RunningScan scan(directory, {"a.y4m"});
  const pid_t worker = waitForWorkers(scan, 1).at(0);
  const Feed reading(scan, directory.path + "/a.y4m");
  // 1000 is the most that there is (proc(5)); the parent stays as it was started.
  EXPECT_EQ(oomScoreOf(std::to_string(worker)), 1000);
  EXPECT_EQ(oomScoreOf(std::to_string(scan.program.process)), oomScoreOf("self"));
}

TEST(Workers, areWaitedForAsLongAsItTakes_withoutATimeToStallIn) {
  const TemporaryDirectory directory;
  const std::string video = streamedVideo(directory);
  makeFifo(directory, "a.y4m");
  RunningScan scan(directory, {"a.y4m", "--stall-timeout", "0", "--progress", "bar"});
  const pid_t worker = waitForWorkers(scan, 1).at(0);
  // The bar is drawn after the worker was looked at, and not before a fifth of a second is over.
  waitForError(scan, "0 of 1 files");
  {
    const Feed source(scan, directory.path + "/a.y4m");
    EXPECT_EQ(workersOf(scan), std::vector<pid_t>{worker});
    feed(source, video);
  }
  const ProgramRun run = endOf(&scan);
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.err.find("lumascan:"), std::string::npos) << run.err;
  EXPECT_EQ(resultOf(directory, "a.y4m")["analysis"]["frames"], 25);
}

TEST(Workers, areGivenUp_whenTheyStall) {
  const TemporaryDirectory directory;
  makeVideo(directory, "stuck.mp4");
  const ProgramRun run =
      lumascan(directory, {"stuck.mp4", "-j", "1", "--stall-timeout", "0.01", "--progress", "none"},
               "/dev/null", [] { preload(HOSTILE_DECODER, "HOSTILE_HANG", ""); });
  EXPECT_EQ(run.status, 3);
  const std::string start =
      "lumascan: analysis of \"stuck.mp4\" ended by having no new frame for 0.01 seconds: ";
  const std::string error =
      "its analysis was given up after two attempts: having no new frame for 0.01 seconds";
  EXPECT_EQ(run.err, start + "trying once more\n" + start +
                         "given up\nlumascan: \"stuck.mp4\": " + error + "\n");
  EXPECT_EQ(resultOf(directory, "stuck.mp4")["error"], error);
}

TEST(Workers, keepWhatHasCome_whenAPipeIsSilentForTooLong) {
  const TemporaryDirectory directory;
  const std::string video = streamedVideo(directory);
  for (const char* const jobs : {"1", "2"}) {  // that wait themselves, or decode ahead
    SCOPED_TRACE(jobs);
    makeFifo(directory, "a.y4m");
    RunningScan scan(
        directory, {"a.y4m", "--force", "-j", jobs, "--stall-timeout", "1", "--progress", "none"});
    const Feed to(scan, directory.path + "/a.y4m");
    feed(to, video.substr(0, video.size() / 2));
    const ProgramRun run = endOf(&scan);
    EXPECT_EQ(run.status, 3);
    EXPECT_EQ(run.err, "lumascan: \"a.y4m\": nothing has come for the time of --stall-timeout\n");
    const Json result = resultOf(directory, "a.y4m");
    EXPECT_EQ(result["status"], "partial");
    EXPECT_EQ(result["analysis"]["ended_by"], "read_error");
    EXPECT_EQ(result["analysis"]["frames"], 12);  // of 25
    fs::remove(directory.path + "/a.y4m");
  }
}

TEST(Workers, areNotGivenUp_whenTheyWereSuspendedWithTheirParent) {
  const TemporaryDirectory directory;
  makeFifo(directory, "a.y4m");
  RunningScan scan(directory, {"a.y4m", "-j", "1", "--stall-timeout", "4", "--progress", "none"});
  const pid_t worker = waitForWorkers(scan, 1).at(0);
  kill(scan.program.process, SIGSTOP);
  kill(worker, SIGSTOP);
  std::this_thread::sleep_for(std::chrono::seconds(5));
  kill(scan.program.process, SIGCONT);
  kill(worker, SIGCONT);
  {
    const Feed source(scan, directory.path + "/a.y4m");
    feed(source, streamedVideo(directory));
  }
  const ProgramRun run = endOf(&scan);
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.err, "");
}

TEST(Workers, areNotGivenUp_whileTheyPassFramesOver) {
  const TemporaryDirectory directory;
  const std::string video = streamedVideo(directory);
  makeFifo(directory, "a.y4m");
  RunningScan scan(directory, {"a.y4m", "-j", "1", "--start", "f:24", "--stall-timeout", "3",
                               "--progress", "none"});
  waitForWorkers(scan, 1);
  {
    const Feed source(scan, directory.path + "/a.y4m");
    // The beginning at once, then a frame now and then: four and a half seconds in all.
    const size_t frame = (video.size() - video.find('\n') - 1) / 25;
    size_t sent = video.size() - 9 * frame;
    feed(source, video.substr(0, sent));
    for (; sent < video.size(); sent += frame) {
      std::this_thread::sleep_for(std::chrono::milliseconds(500));
      feed(source, video.substr(sent, frame));
    }
  }
  const ProgramRun run = endOf(&scan);
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.err, "");
  EXPECT_EQ(resultOf(directory, "a.y4m")["analysis"]["frames"], 1);
}

TEST(Workers, finishTheirFiles_whenATerminalInterruptsThemWithTheirParent) {
  const TemporaryDirectory directory;
  const std::string video = streamedVideo(directory);
  makeFifo(directory, "a.y4m");
  makeFifo(directory, "b.y4m");
  // A group of its own, all processes of which get the signal, as by Ctrl-C.
  RunningScan scan(directory, {"a.y4m", "b.y4m", "-j", "1", "--json"}, [] { setpgid(0, 0); });
  waitForWorkers(scan, 1);
  {
    const Feed source(scan, directory.path + "/a.y4m");
    feed(source, video.substr(0, video.size() / 2));
    kill(-scan.program.process, SIGINT);
    waitForError(scan, "finishing 1 running file(s); press Ctrl-C again to stop at once");
    feed(source, video.substr(video.size() / 2));
  }
  const ProgramRun run = endOf(&scan);
  EXPECT_EQ(run.status, 130);
  EXPECT_EQ(linesOf(run.err).back(), "lumascan: stopped; the same command goes on from here\n");
  EXPECT_EQ(resultOf(directory, "a.y4m")["analysis"]["frames"], 25);
  const Json summary = Json::parse(run.out);
  EXPECT_EQ(summary["exit_status"], 130);
  EXPECT_EQ(summary["files"][0]["status"], "complete");
  EXPECT_EQ(summary["files"][0]["attempts"], 1);
  EXPECT_EQ(summary["files"][1]["status"], "unfinished");
  EXPECT_EQ(summary["files"][1]["attempts"], 0);
  EXPECT_FALSE(fs::exists(directory.path + "/lumascan-results/b.y4m.lumascan"));
}

TEST(Workers, thatCannotBeStartedAreAProblemOfTheSystem) {
  if (isAddressSanitized) {
    GTEST_SKIP() << "to look at an object the sanitizer needs a pipe, which it does not get";
  }
  const TemporaryDirectory directory;
  makeFifo(directory, "a.mp4");
  // Standard streams, the lock, the source of signals and the video are six. A worker takes a pipe
  // of two ends for its messages, and then another one for what it says.
  for (const int most : {6, 7, 8, 9}) {
    const ProgramRun run = lumascan(directory, {"a.mp4", "--formats", "json", "--progress", "none"},
                                    "/dev/null", limitDescriptors(most));
    EXPECT_EQ(run.status, 4);
    EXPECT_EQ(run.err, "lumascan: cannot start a process: Too many open files\n");
    const Json file = readJson(directory, "lumascan-results/run.json")["files"][0];
    EXPECT_EQ(file["error"], "cannot start a process: Too many open files");
  }
}
