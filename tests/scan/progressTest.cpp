// How far a scan is.
#include "scan/processes/progress.h"

#include <gtest/gtest.h>

namespace {

Task taskOf(int64_t size, TaskState state, double position = 0.0) {
  Task task;
  task.size = size;
  task.state = state;
  task.worker.position = position;
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
  std::vector<Task> tasks = {taskOf(100, TaskState::FINISHED),
                             taskOf(300, TaskState::RUNNING, 1.0 / 3.0)};
  tasks[1].job.source.path = "b\n.mp4";
  tasks[1].worker.frames = 42;
  testing::internal::CaptureStderr();
  showProgress(tasks, &progress);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
  // Half an hour in, half is done: the other half takes as long.
  progress.start -= std::chrono::minutes(30);
  progress.lastShown -= std::chrono::minutes(1);
  testing::internal::CaptureStderr();
  showProgress(tasks, &progress);
  showProgress(tasks, &progress);
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "lumascan:  50 %  1 of 2 files, 30:00 left, 42 frames  b\\x0a.mp4\n");
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
