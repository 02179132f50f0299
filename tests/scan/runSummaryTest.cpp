// What a scan came to: the exit status and run.json.
#include "scan/commands/runSummary.h"

#include <gtest/gtest.h>

#include <csignal>

#include "scan/commandLine/exitStatus.h"
#include "scan/files/json.h"

namespace {

// What an input came to that has so many events: informations, warnings, failures.
RunEntry entryWith(std::optional<Status> status, std::array<int64_t, 3> events = {0, 0, 0}) {
  RunEntry entry;
  entry.path = "a.mp4";
  entry.folder = "a.mp4.lumascan";
  entry.status = status;
  entry.events.counts = events;
  return entry;
}

int statusOfAll(const std::vector<RunEntry>& entries, std::optional<Severity> failOn = std::nullopt,
                bool hasProblem = false, int stopSignal = 0) {
  return statusOf(entries, failOn, hasProblem, stopSignal);
}

Json runOf(const std::vector<RunEntry>& entries, int64_t start, int status) {
  const std::chrono::system_clock::time_point time{std::chrono::seconds(start)};
  return Json::parse(runText(entries, {"/films", "/a b"}, time, status));
}

RunEntry goodEntry() {
  return entryWith(Status::COMPLETE);
}

RunEntry unfinishedEntry() {
  return entryWith(std::nullopt);
}

}  // namespace

TEST(StatusOf, isThatOfTheWorstInput_whereverItStands) {
  EXPECT_EQ(statusOfAll({}), DONE);
  EXPECT_EQ(statusOfAll({goodEntry(), goodEntry()}), DONE);
  for (const RunEntry& bad : {entryWith(Status::PARTIAL), entryWith(Status::FAILED)}) {
    EXPECT_EQ(statusOfAll({bad, goodEntry()}), INPUT_PROBLEM);
    EXPECT_EQ(statusOfAll({goodEntry(), bad}), INPUT_PROBLEM);
    EXPECT_EQ(statusOfAll({bad, unfinishedEntry()}), OUTPUT_PROBLEM);
    EXPECT_EQ(statusOfAll({unfinishedEntry(), bad}), OUTPUT_PROBLEM);
  }
  EXPECT_EQ(statusOfAll({goodEntry()}, std::nullopt, true), INPUT_PROBLEM);
  EXPECT_EQ(statusOfAll({unfinishedEntry()}, std::nullopt, true), OUTPUT_PROBLEM);
}

TEST(StatusOf, isOne_atAFindingThatIsGraveEnough) {
  const Severity severities[] = {Severity::INFO, Severity::WARN, Severity::FAIL};
  for (size_t worst = 0; worst < 3; ++worst) {
    std::array<int64_t, 3> events = {0, 0, 0};
    events.at(worst) = 1;
    const RunEntry found = entryWith(Status::COMPLETE, events);
    EXPECT_EQ(statusOfAll({goodEntry(), found}), DONE);
    for (size_t least = 0; least < 3; ++least) {
      const int expected = worst >= least ? FOUND : DONE;
      EXPECT_EQ(statusOfAll({goodEntry(), found}, severities[least]), expected) << worst << least;
      EXPECT_EQ(statusOfAll({found, goodEntry()}, severities[least]), expected) << worst << least;
    }
  }
}

TEST(StatusOf, isNotThatOfAFinding_whereThereIsMoreToTell) {
  const RunEntry found = entryWith(Status::COMPLETE, {0, 0, 1});
  const RunEntry failed = entryWith(Status::FAILED);
  const RunEntry partlyFound = entryWith(Status::PARTIAL, {0, 0, 1});
  for (const auto& entries : {std::vector{found, failed}, {failed, found}, {partlyFound}}) {
    EXPECT_EQ(statusOfAll(entries, Severity::INFO), INPUT_PROBLEM);
  }
  EXPECT_EQ(statusOfAll({found}, Severity::INFO, true), INPUT_PROBLEM);
  EXPECT_EQ(statusOfAll({found, unfinishedEntry()}, Severity::INFO), OUTPUT_PROBLEM);
  EXPECT_EQ(statusOfAll({unfinishedEntry(), found}, Severity::INFO), OUTPUT_PROBLEM);
}

TEST(StatusOf, isThatOfTheSignal_whateverElseThereIs) {
  for (const RunEntry& entry : {goodEntry(), entryWith(Status::FAILED), unfinishedEntry(),
                                entryWith(Status::COMPLETE, {1, 1, 1})}) {
    EXPECT_EQ(statusOfAll({entry}, Severity::INFO, true, SIGINT), 130);
    EXPECT_EQ(statusOfAll({entry}, Severity::INFO, true, SIGTERM), 143);
  }
}

TEST(RunText, saysWhatEachInputCameTo) {
  RunEntry fresh = entryWith(Status::PARTIAL, {1, 2, 3});
  fresh.judgement = {Verdict::INCOMPLETE, {"one", "two"}};
  fresh.error = "cut";
  fresh.frames = 7;
  fresh.attempts = 2;
  RunEntry upToDate = entryWith(Status::COMPLETE);
  upToDate.judgement.verdict = Verdict::PASS;
  upToDate.wasUpToDate = true;
  RunEntry none = unfinishedEntry();
  none.judgement.verdict = Verdict::INCOMPLETE;
  const Json run = runOf({fresh, upToDate, none}, 0, 4);
  EXPECT_EQ(run["exit_status"], 4);
  EXPECT_EQ(run["folders"], Json::array({"/films", "/a%20b"}));
  EXPECT_EQ(run["verdicts"], Json::parse(R"({"pass": 1, "attention": 0, "fail": 0,
                                             "incomplete": 2})"));
  EXPECT_EQ(run["files"][0], Json::parse(R"({"path": "a.mp4", "folder": "a.mp4.lumascan",
    "status": "partial", "verdict": "incomplete", "error": "cut", "reasons": ["one", "two"],
    "frames": 7, "events": {"fail": 3, "warn": 2, "info": 1}, "up_to_date": false,
    "attempts": 2})"));
  EXPECT_EQ(run["files"][1], Json::parse(R"({"path": "a.mp4", "folder": "a.mp4.lumascan",
    "status": "complete", "verdict": "pass", "error": null, "reasons": [],
    "frames": 0, "events": {"fail": 0, "warn": 0, "info": 0}, "up_to_date": true,
    "attempts": 0})"));
  EXPECT_EQ(run["files"][2]["status"], "unfinished");
}

TEST(RunText, saysWhenTheScanBegan_inTheTimeOfGreenwich) {
  // Thirty years with seven leap days have 10957 days, and 59 later the 29th of February begins.
  EXPECT_EQ(runOf({}, 11016 * 86400 - 1, 0)["started"], "2000-02-28T23:59:59Z");
  EXPECT_EQ(runOf({}, 11016 * 86400, 0)["started"], "2000-02-29T00:00:00Z");
  setenv("TZ", "EST5", 1);
  tzset();
  const std::string started = runOf({}, 13 * 3600 + 14 * 60 + 15, 0)["started"];
  unsetenv("TZ");
  tzset();
  EXPECT_EQ(started, "1970-01-01T13:14:15Z");
  EXPECT_GT(runOf({}, 0, 0)["elapsed_s"], 1.7e9);  // 1970 is long ago
}
