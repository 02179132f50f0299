// What a process that decodes may do, tried by one that does its worst, and what becomes of a scan.
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <filesystem>
#include <map>

#include "scanRun.h"

namespace fs = std::filesystem;

namespace {

// For `prepare`: what stands in for FFmpeg does the worst; see preloaded/hostileDecoder.cpp.
std::function<void()> hostile(const char* variable, const std::string& value) {
  return [=] { preload(HOSTILE_DECODER, variable, value); };
}

// A system on which this call does not exist, for `prepare`.
std::function<void()> without(unsigned int call) {
  return [=] {
    sock_filter filter[] = {
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
        BPF_JUMP(BPF_JMP | BPF_K | BPF_JEQ, call, 0, 1),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | ENOSYS),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
    };
    const sock_fprog program = {4, filter};
    if (prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0) _exit(126);
    if (prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) != 0) _exit(126);
  };
}

// Why there is no sandbox on this machine, or in this build; empty: there is one.
std::string lackOfSandbox() {
  const TemporaryDirectory directory;
  writeFile(directory.path + "/a.y4m", "");
  const ProgramRun run = lumascan(directory, {"probe", "a.y4m", "--sandbox", "require"});
  return run.status == 4 ? run.err : "";
}

// What came of each attempt, by its name.
std::map<std::string, std::string> outcomesIn(const std::string& text) {
  constexpr char START[] = "attempt ";
  std::map<std::string, std::string> outcomes;
  for (const std::string& line : linesOf(text)) {
    if (line.rfind(START, 0) != 0) continue;
    const size_t colon = line.find(": ");
    const size_t name = sizeof START - 1;
    outcomes[line.substr(name, colon - name)] = line.substr(colon + 2, line.size() - colon - 3);
  }
  return outcomes;
}

struct Victim {
  std::string folder;
  struct stat facts = {};
};

Victim makeVictim(const TemporaryDirectory& directory) {
  Victim victim;
  victim.folder = fs::canonical(directory.path).string() + "/elsewhere";
  fs::create_directory(victim.folder);
  writeFile(victim.folder + "/victim", "precious\n");
  writeFile(victim.folder + "/second", "");
  chmod((victim.folder + "/victim").c_str(), 0640);
  stat((victim.folder + "/victim").c_str(), &victim.facts);
  return victim;
}

void expectUntouched(const Victim& victim) {
  struct stat now = {};
  ASSERT_EQ(stat((victim.folder + "/victim").c_str(), &now), 0);
  EXPECT_EQ(readFile(victim.folder + "/victim"), "precious\n");
  EXPECT_EQ(now.st_mode, victim.facts.st_mode);
  EXPECT_EQ(now.st_uid, victim.facts.st_uid);
  EXPECT_EQ(now.st_nlink, victim.facts.st_nlink);
  EXPECT_EQ(now.st_mtim.tv_sec, victim.facts.st_mtim.tv_sec);
  EXPECT_EQ(now.st_ctim.tv_sec, victim.facts.st_ctim.tv_sec);
  EXPECT_EQ(now.st_ctim.tv_nsec, victim.facts.st_ctim.tv_nsec);  // of any change of attributes
  EXPECT_EQ(std::distance(fs::directory_iterator(victim.folder), {}), 2);
}

}  // namespace

TEST(Sandbox, letsADecoderReachNothing_andTheScanGoOn) {
  const std::string lack = lackOfSandbox();
  if (!lack.empty()) GTEST_SKIP() << lack;
  const TemporaryDirectory directory;
  makeVideo(directory, "a.mp4");
  makeVideo(directory, "b.mp4");
  const Victim victim = makeVictim(directory);
  const Arguments scan = {"a.mp4", "b.mp4", "-j", "1", "-v"};
  const ProgramRun run =
      lumascan(directory, scan, "/dev/null", hostile("HOSTILE_TO", victim.folder));
  EXPECT_EQ(run.status, 0) << run.err;
  auto outcomes = outcomesIn(run.err);
  EXPECT_EQ(outcomes["thread"], "done");
  EXPECT_EQ(outcomes["callOfTheFuture"], "Function not implemented");
  EXPECT_EQ(outcomes["takeDescriptors"], "Too many open files");
  for (const char* const other : {"thread", "callOfTheFuture", "takeDescriptors"})
    outcomes.erase(other);
  EXPECT_EQ(outcomes.size(), 46U);
  for (const auto& [name, outcome] : outcomes) {
    EXPECT_TRUE(outcome == "Permission denied" || outcome == "Operation not permitted")
        << name << ": " << outcome;
  }
  expectUntouched(victim);
  for (const char* const video : {"a.mp4", "b.mp4"}) {
    const Json result = resultOf(directory, video);
    EXPECT_EQ(result["status"], "complete");
    EXPECT_EQ(result["sandbox"], Json({{"on", true}, {"why_not", nullptr}}));
  }
}

// So that the attempts are known for such as would be successful.
TEST(Sandbox, isWhatRefusesThem) {
  const TemporaryDirectory directory;
  makeVideo(directory, "a.mp4");
  const Victim victim = makeVictim(directory);
  const ProgramRun run = lumascan(directory, {"a.mp4", "-j", "1", "-v", "--sandbox", "off"},
                                  "/dev/null", hostile("HOSTILE_TO", victim.folder));
  EXPECT_EQ(run.status, 0) << run.err;
  auto outcomes = outcomesIn(run.err);
  for (const char* const name : {"read",
                                 "readSystemFile",
                                 "listFolder",
                                 "write",
                                 "reopenVideoToWrite",
                                 "create",
                                 "createInTmp",
                                 "makeFolder",
                                 "makeFifo",
                                 "link",
                                 "symlink",
                                 "rename",
                                 "socketToNetworks",
                                 "socketToProcesses",
                                 "sharedMemory",
                                 "fork",
                                 "kill",
                                 "limitsOfParent",
                                 "truncate",
                                 "chmod",
                                 "fchmodat",
                                 "utimensat",
                                 "unlink",
                                 "readParent",
                                 "ptrace",
                                 "takeDescriptors",
                                 "anonymousFile",
                                 "sharedMapping",
                                 "growingMapping",
                                 "signalByDescriptor",
                                 "watchFolder",
                                 "outliveParent",
                                 "moveParent"}) {
    EXPECT_EQ(outcomes[name], "done") << name;
  }
  EXPECT_EQ(outcomes["exec"], "No such file or directory");
  EXPECT_EQ(outcomes["connect"], "Socket operation on non-socket");
  EXPECT_FALSE(fs::exists(victim.folder + "/victim"));
  EXPECT_EQ(resultOf(directory, "a.mp4")["sandbox"],
            Json({{"on", false}, {"why_not", "it was not asked for"}}));
  std::string name = victim.folder;
  std::replace(name.begin(), name.end(), '/', '_');
  EXPECT_TRUE(fs::remove("/tmp/lumascan" + name));
}

TEST(Sandbox, holdsAProbeToo) {
  const std::string lack = lackOfSandbox();
  if (!lack.empty()) GTEST_SKIP() << lack;
  const TemporaryDirectory directory;
  makeVideo(directory, "a.mp4");
  const Victim victim = makeVictim(directory);
  const ProgramRun run =
      lumascan(directory, {"probe", "a.mp4"}, "/dev/null", hostile("HOSTILE_TO", victim.folder));
  EXPECT_EQ(run.status, 0) << run.err;
  const auto outcomes = outcomesIn(run.err);
  EXPECT_EQ(outcomes.size(), 49U);
  const auto done = std::count_if(outcomes.begin(), outcomes.end(),
                                  [](const auto& outcome) { return outcome.second == "done"; });
  EXPECT_EQ(done, 1);  // the thread
  expectUntouched(victim);
}

TEST(Sandbox, leavesTheSameBytes) {
  const std::string lack = lackOfSandbox();
  if (!lack.empty()) GTEST_SKIP() << lack;
  const TemporaryDirectory directory;
  makeVideo(directory, "a.mp4");
  EXPECT_EQ(lumascan(directory, {"a.mp4", "-q", "-o", "with"}).status, 0);
  EXPECT_EQ(lumascan(directory, {"a.mp4", "-q", "-o", "without", "--sandbox", "off"}).status, 0);
  for (const char* const file : {"rows.tsv", "frames.csv", "events.csv", "report.html"}) {
    const std::string name = std::string("/a.mp4.lumascan/") + file;
    EXPECT_EQ(readFile(directory.path + "/with" + name),
              readFile(directory.path + "/without" + name))
        << file;
  }
}

TEST(Sandbox, isMissedWithAReason_whereTheKernelHasNone) {
  const TemporaryDirectory directory;
  makeVideo(directory, "a.mp4");
  const auto prepare = without(SYS_landlock_create_ruleset);
  const std::string reason =
      isAddressSanitized ? "this build has a sanitizer, which reads and starts what it needs"
                         : "Landlock: Function not implemented";
  const std::string message = "lumascan: there is no sandbox here: " + reason + "\n";
  const ProgramRun required =
      lumascan(directory, {"a.mp4", "--sandbox", "require"}, "/dev/null", prepare);
  EXPECT_EQ(required.status, 4);
  EXPECT_EQ(required.err, message);
  EXPECT_FALSE(fs::exists(directory.path + "/lumascan-results"));
  const ProgramRun probed =
      lumascan(directory, {"probe", "a.mp4", "--sandbox", "require"}, "/dev/null", prepare);
  EXPECT_EQ(probed.status, 4);
  EXPECT_EQ(probed.err, message);

  const ProgramRun silent =
      lumascan(directory, {"a.mp4", "--progress", "none"}, "/dev/null", prepare);
  EXPECT_EQ(silent.status, 0);
  EXPECT_EQ(silent.err, "");
  EXPECT_EQ(resultOf(directory, "a.mp4")["sandbox"], Json({{"on", false}, {"why_not", reason}}));
  const ProgramRun told =
      lumascan(directory, {"a.mp4", "--force", "--progress", "none", "-v"}, "/dev/null", prepare);
  EXPECT_EQ(told.status, 0);
  EXPECT_NE(told.err.find(message), std::string::npos) << told.err;
}

TEST(Sandbox, isMissed_whereThereAreNoFilters) {
  if (isAddressSanitized) GTEST_SKIP() << "a build with a sanitizer has no sandbox";
  const TemporaryDirectory directory;
  writeFile(directory.path + "/a.y4m", "");
  const ProgramRun run = lumascan(directory, {"a.y4m", "--sandbox", "require"}, "/dev/null",
                                  without(SYS_landlock_restrict_self));
  EXPECT_EQ(run.status, 4);
  EXPECT_EQ(run.err, "lumascan: there is no sandbox here: Landlock: Function not implemented\n");
}

TEST(Sandbox, isNotNeeded_forAScanThatKnowsLiesOfItsWorkers) {
  const TemporaryDirectory directory;
  makeVideo(directory, "a.mp4");
  makeVideo(directory, "b.mp4");
  ASSERT_EQ(lumascan(directory, {"a.mp4", "-q"}).status, 0);
  const auto scanTelling = [&](const std::string& text) {
    return lumascan(directory,
                    {"a.mp4", "b.mp4", "-j", "1", "--force", "--progress", "none", "--json"},
                    "/dev/null", hostile("HOSTILE_SAYS", text));
  };
  // Nothing, for ever "once more", and what is no message: both files are given up.
  for (const char* const text :
       {"", "{\"version\":1,\"type\":\"end\",\"needs_one_thread\":true}\n", "garbage\n[[[[\n"}) {
    const ProgramRun run = scanTelling(text);
    EXPECT_EQ(run.status, 3) << text;
    for (const Json& file : Json::parse(run.out)["files"]) EXPECT_EQ(file["status"], "failed");
  }
  // A full disk of which nobody else knows does not end the scan.
  const ProgramRun full = scanTelling(
      "{\"version\":1,\"type\":\"end\",\"output_error\":\"\\u001b: No space left on device\"}\n");
  EXPECT_EQ(full.status, 4);
  EXPECT_EQ(full.err,
            "lumascan: \\x1b: No space left on device\n"
            "lumascan: \\x1b: No space left on device\n");
}

TEST(Sandbox, isNotNeeded_forAScanThatIsFlooded) {
  const TemporaryDirectory directory;
  makeVideo(directory, "a.mp4");
  const ProgramRun run =
      lumascan(directory, {"a.mp4", "-j", "1", "--stall-timeout", "1", "--progress", "none"},
               "/dev/null", hostile("HOSTILE_FLOOD", ""));
  EXPECT_EQ(run.status, 3);
  EXPECT_NE(run.err.find("given up after two attempts"), std::string::npos) << run.err;
}

TEST(Sandbox, isNotNeeded_forAProbeThatKnowsLies) {
  const TemporaryDirectory directory;
  makeVideo(directory, "a.mp4");
  makeVideo(directory, "b.mp4");
  const std::string deep(100000, '[');
  for (const std::string& text :
       {std::string("garbage"), std::string("[]"), std::string("{\"error\":5}"),
        std::string("{\"path\":1}"), "{\"stream\":" + deep, std::string("{\"stream\":[1]}")}) {
    const ProgramRun run = lumascan(directory, {"probe", "a.mp4", "b.mp4"}, "/dev/null",
                                    hostile("HOSTILE_SAYS", text));
    EXPECT_EQ(run.status, 3) << text.substr(0, 20);
    EXPECT_EQ(linesOf(run.err).size(), 2U) << run.err;
  }
  const ProgramRun odd = lumascan(directory, {"probe", "a.mp4"}, "/dev/null",
                                  hostile("HOSTILE_SAYS", R"({"stream":{"\u001b[2J":"\u001b[2J"},)"
                                                          R"("warnings":["\u001b[2J",3]})"));
  EXPECT_EQ(odd.out.find('\x1b'), std::string::npos);
  EXPECT_NE(odd.out.find("\\x1b[2J"), std::string::npos) << odd.out;
}

TEST(MemoryLimit, endsWhatTakesMemoryWithoutEnd_andTheScanGoesOn) {
  if (isAddressSanitized) GTEST_SKIP() << "there is no limit in a build with a sanitizer";
  const TemporaryDirectory directory;
  makeVideo(directory, "a.mp4");
  writeFile(directory.path + "/b.txt.mp4", "no video");
  const ProgramRun run = lumascan(
      directory,
      {"a.mp4", "b.txt.mp4", "-j", "1", "-v", "--progress", "none", "--memory-limit", "256M"},
      "/dev/null", hostile("HOSTILE_MEMORY", "1000000000"));
  EXPECT_EQ(run.status, 3);
  const size_t taken = run.err.find("taken ");
  ASSERT_NE(taken, std::string::npos) << run.err;
  const int megabytes = std::stoi(run.err.substr(taken + 6));
  EXPECT_GT(megabytes, 100);
  EXPECT_LT(megabytes, 256);
  EXPECT_NE(run.err.find("ended by signal 6 (Aborted): given up"), std::string::npos) << run.err;
  EXPECT_EQ(resultOf(directory, "a.mp4")["error"].get<std::string>().substr(0, 75),
            "its analysis was given up after two attempts: signal 6 (Aborted); last mess");
  EXPECT_EQ(resultOf(directory, "b.txt.mp4")["status"], "failed");
}

TEST(MemoryLimit, isNone_whenItIsZero) {
  if (isAddressSanitized) GTEST_SKIP() << "there is no limit in a build with a sanitizer";
  const TemporaryDirectory directory;
  makeVideo(directory, "a.mp4");
  const ProgramRun run = lumascan(directory, {"a.mp4", "-v", "--memory-limit", "0"}, "/dev/null",
                                  hostile("HOSTILE_MEMORY", std::to_string(int64_t{300} << 20)));
  EXPECT_NE(run.err.find("taken 300 MiB"), std::string::npos) << run.err;
}

TEST(MemoryLimit, isToldOfPicturesThatNeedMore) {
  if (isAddressSanitized) GTEST_SKIP() << "there is no limit in a build with a sanitizer";
  const TemporaryDirectory directory;
  makeClip(directory, "a.gif", {"-frames:v", "3"}, "color=size=6000x4000");
  const ProgramRun run = lumascan(directory, {"a.gif", "--memory-limit", "100M", "-j", "1", "-q"});
  EXPECT_EQ(run.status, 3);
  const std::string error = resultOf(directory, "a.gif")["error"];
  EXPECT_NE(error.find("it takes more memory than there is, or than --memory-limit allows"),
            std::string::npos)
      << error;
}

TEST(PictureSize, isLookedAtBeforeAnythingIsDecoded) {
  const TemporaryDirectory directory;
  for (const char* const name : {"a.mp4", "a.ts", "a.gif", "a.h264", "a.png"}) {
    makeClip(directory, name, {"-frames:v", "1"}, "testsrc2=size=640x360:rate=25");
    const Arguments scan = {name, "-q", "--force", "--max-pixels"};
    Arguments most = scan;
    most.emplace_back("640x360");
    EXPECT_EQ(lumascan(directory, most).status, 0) << name;
    for (const char* const less : {"230399", "640x359", "1"}) {
      Arguments limited = scan;
      limited.emplace_back(less);
      const ProgramRun run = lumascan(directory, limited);
      EXPECT_EQ(run.status, 3) << name;
      EXPECT_EQ(run.err, std::string("lumascan: \"") + name +
                             "\": its pictures of 640x360 are larger than FFmpeg or --max-pixels "
                             "allows\n");
      limited.insert(limited.begin(), "probe");
      limited.erase(std::find(limited.begin(), limited.end(), "--force"));
      EXPECT_EQ(lumascan(directory, limited).err, run.err);
    }
  }
}
