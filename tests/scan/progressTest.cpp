// How far a scan is.
#include "scan/processes/progress.h"

#include <gtest/gtest.h>

#include "scan/files/json.h"

namespace {

// And a half second.
constexpr std::chrono::milliseconds HALF_AN_HOUR(1'800'500);

// As if the scan had begun so much earlier, and said nothing so far.
void goBack(std::chrono::milliseconds past, Progress* progress) {
  progress->start -= past;
  progress->lastShown -= past;
}

std::string shown(const std::vector<Task>& tasks, Progress* progress) {
  testing::internal::CaptureStderr();
  showProgress(tasks, progress);
  return testing::internal::GetCapturedStderr();
}

Task taskOf(int64_t size, TaskState state, double position = 0.0) {
  Task task;
  task.size = size;
  task.state = state;
  task.worker.heartbeat.position = position;
  return task;
}

}  // namespace

TEST(ShareDone, weighsFilesByTheirSizes) {
  // 300 of 300, half of 600 and none of 100: 600 of 1000 bytes.
  const std::vector<Task> tasks = {taskOf(300, TaskState::FINISHED),
                                   taskOf(600, TaskState::RUNNING, 0.5),
                                   taskOf(100, TaskState::WAITING)};
  EXPECT_DOUBLE_EQ(shareDone(tasks), 0.6);
}

TEST(ShareDone, knowsFilesByTheirState_whateverTheirWorkersSaidLast) {
  // A worker may end before it has said that it is at the end, or crash and be started once more.
  EXPECT_EQ(shareDone({taskOf(10, TaskState::FINISHED, 0.25)}), 1.0);
  EXPECT_EQ(shareDone({taskOf(10, TaskState::WAITING, 0.25)}), 0.0);
}

TEST(ShareDone, countsAPipe_whichHasNoSize) {
  const std::vector<Task> tasks = {taskOf(0, TaskState::FINISHED), taskOf(0, TaskState::WAITING)};
  EXPECT_EQ(shareDone(tasks), 0.5);
}

TEST(ShareDone, isAll_whenThereIsNothingToDo) {
  EXPECT_EQ(shareDone({}), 1.0);
}

TEST(Progress, isPlain_whereStandardErrorIsNoTerminal) {
  testing::internal::CaptureStderr();
  EXPECT_EQ(startProgress(ProgressStyle::AUTO, false).style, ProgressStyle::PLAIN);
  EXPECT_EQ(startProgress(ProgressStyle::JSON, false).style, ProgressStyle::JSON);
  EXPECT_EQ(startProgress(ProgressStyle::JSON, true).style, ProgressStyle::NONE);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST(Progress, saysALine_whenItsTimeHasCome) {
  Progress progress = startProgress(ProgressStyle::PLAIN, false);
  // 996 of 1000 bytes and three quarters of the other four: 999.
  std::vector<Task> tasks = {taskOf(996, TaskState::FINISHED), taskOf(4, TaskState::RUNNING, 0.75)};
  tasks[1].job.source.path = "b\n.mp4";
  tasks[1].worker.heartbeat.frames = 42;
  testing::internal::CaptureStderr();
  showProgress(tasks, &progress);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
  goBack(999 * HALF_AN_HOUR, &progress);
  EXPECT_EQ(shown(tasks, &progress),
            "lumascan:  99 %  1 of 2 files, 30:00 left, 42 frames  b\\x0a.mp4\n");
  // Ten seconds later at the earliest.
  testing::internal::CaptureStderr();
  progress.lastShown = std::chrono::steady_clock::now() + std::chrono::hours(1);
  showProgress(tasks, &progress);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST(Progress, countsHours_whereThereAreSome) {
  const std::vector<Task> tasks = {taskOf(999, TaskState::FINISHED), taskOf(1, TaskState::WAITING)};
  const auto leftAfter = [&](std::chrono::milliseconds past) {
    Progress progress = startProgress(ProgressStyle::PLAIN, false);
    goBack(past, &progress);
    const std::string line = shown(tasks, &progress);
    const size_t start = line.find("files, ") + 7;
    return line.substr(start, line.find(" left") - start);
  };
  // What is left takes a 999th of what is done: half a second behind the whole one, so that it
  // stays in that for eight minutes.
  const auto left = [](int64_t seconds) {
    return 999 * (std::chrono::seconds(seconds) + std::chrono::milliseconds(500));
  };
  EXPECT_EQ(leftAfter(left(59)), "0:59");
  EXPECT_EQ(leftAfter(left(3599)), "59:59");
  EXPECT_EQ(leftAfter(left(3600)), "1:00:00");
  EXPECT_EQ(leftAfter(left(3723)), "1:02:03");
  EXPECT_EQ(leftAfter(left(36610)), "10:10:10");
}

TEST(Progress, saysNoTimeLeft_beforeAHundredthIsDone) {
  for (const int64_t done : {9, 10}) {
    Progress progress = startProgress(ProgressStyle::PLAIN, false);
    goBack(HALF_AN_HOUR, &progress);
    const std::string line = shown(
        {taskOf(done, TaskState::FINISHED), taskOf(1000 - done, TaskState::WAITING)}, &progress);
    EXPECT_EQ(line.find(" left") != std::string::npos, done == 10) << line;
  }
}

TEST(Progress, countsTheFramesOfFilesThatRun) {
  // Those of finished files, and of files that wait to be tried again, are no progress any more.
  std::vector<Task> tasks = {taskOf(100, TaskState::FINISHED), taskOf(100, TaskState::WAITING),
                             taskOf(100, TaskState::RUNNING, 0.5),
                             taskOf(100, TaskState::RUNNING, 0.1)};
  int64_t frames = 1;
  for (Task& task : tasks) {
    task.worker.heartbeat.frames = frames;
    task.worker.heartbeat.stage = "stage " + std::to_string(frames);
    task.job.source.path = std::to_string(frames) + ".mp4";
    frames *= 10;
  }
  Progress progress = startProgress(ProgressStyle::JSON, false);
  goBack(HALF_AN_HOUR, &progress);
  const auto before = std::chrono::steady_clock::now();
  const Json said = Json::parse(shown(tasks, &progress));
  const std::chrono::duration<double> since = std::chrono::steady_clock::now() - before;
  EXPECT_EQ(said["frames"], 1100);
  EXPECT_EQ(said["running"], "100.mp4");  // the first of them
  EXPECT_EQ(said["stage"], "stage 100");
  EXPECT_EQ(said["finished"], 1);
  EXPECT_EQ(said["files"], 4);
  EXPECT_DOUBLE_EQ(said["progress"], 0.4);  // 100, 50 and 10 of 400
  EXPECT_GE(said["elapsed_s"], 1800.5);
  EXPECT_LE(said["elapsed_s"], 1801.5 + since.count());
}

TEST(Progress, takesItsBarAwayOnce) {
  Progress progress = startProgress(ProgressStyle::BAR, false);
  progress.lastShown -= std::chrono::minutes(1);
  testing::internal::CaptureStderr();
  showProgress({taskOf(100, TaskState::WAITING)}, &progress);
  const std::string bar = testing::internal::GetCapturedStderr();
  EXPECT_NE(bar.find("[....................]   0 %  0 of 1 files, 0 frames"), std::string::npos);
  testing::internal::CaptureStderr();
  clearProgress(&progress);
  clearProgress(&progress);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "\r\x1b[K");
}

TEST(Progress, namesWhatRunsInItsBar_whereThereIsRoom) {
  // The bar, its text and the spaces take 22 + 1 + 29 + 2 of 80 columns, and the last stays free.
  const std::string bar = "\r\x1b[K[....................]   0 %  0 of 1 files, 0 frames";
  const auto barWith = [](const std::string& name) {
    Progress progress = startProgress(ProgressStyle::BAR, false);
    progress.lastShown -= std::chrono::minutes(1);
    std::vector<Task> tasks = {taskOf(100, TaskState::RUNNING)};
    tasks[0].job.source.path = name;
    return shown(tasks, &progress);
  };
  const std::string longest(25, 'a');
  EXPECT_EQ(barWith(longest), bar + "  " + longest);
  EXPECT_EQ(barWith(longest + "a"), bar);
}

TEST(Progress, expectsTheTimeLeftByWhatTheScanItselfHasDone) {
  // 900 of 1000 bytes were up to date; 50 took half an hour, and the last 50 take as long.
  Progress progress = startProgress(ProgressStyle::PLAIN, false);
  std::vector<Task> tasks = {taskOf(900, TaskState::FINISHED), taskOf(50, TaskState::WAITING),
                             taskOf(50, TaskState::WAITING)};
  beginProgress(tasks, &progress);
  tasks[1].state = TaskState::FINISHED;
  goBack(HALF_AN_HOUR, &progress);
  EXPECT_EQ(shown(tasks, &progress), "lumascan:  95 %  2 of 3 files, 30:00 left, 0 frames  \n");
}

TEST(Progress, endsWithWhatThereIsInAll) {
  const std::vector<Task> tasks = {taskOf(300, TaskState::FINISHED),
                                   taskOf(100, TaskState::FINISHED),
                                   taskOf(100, TaskState::WAITING)};
  const auto ended = [&](ProgressStyle style) {
    Progress progress = startProgress(style, false);
    goBack(HALF_AN_HOUR, &progress);
    shown(tasks, &progress);
    testing::internal::CaptureStderr();
    endProgress(tasks, 1234, &progress);
    return testing::internal::GetCapturedStderr();
  };
  EXPECT_EQ(ended(ProgressStyle::BAR),
            "\r\x1b[K[################....]  80 %  2 of 3 files, 1234 frames in 30:00\n");
  EXPECT_EQ(ended(ProgressStyle::PLAIN), "lumascan:  80 %  2 of 3 files, 1234 frames in 30:00\n");
  EXPECT_EQ(Json::parse(ended(ProgressStyle::JSON))["progress"], 0.8);
  EXPECT_EQ(ended(ProgressStyle::NONE), "");
}

TEST(Progress, endsWithoutAWord_whereThereWasNone) {
  Progress progress = startProgress(ProgressStyle::BAR, false);
  testing::internal::CaptureStderr();
  endProgress({taskOf(1, TaskState::FINISHED)}, 7, &progress);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}
