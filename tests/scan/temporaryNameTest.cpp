// Names of files that are being written, and which of them nobody writes any more.
#include "scan/files/temporaryName.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

constexpr std::time_t NOW = 1'000'000'000;
constexpr std::time_t DAY = 24 * 3600;

// The number of a process that is gone.
pid_t deadProcess() {
  const pid_t process = fork();
  if (process == 0) _exit(0);
  waitpid(process, nullptr, 0);
  return process;
}

// A name that this process has made, as if another one had.
std::string nameOfProcess(pid_t process) {
  std::string name = temporaryName("rows.tsv");
  const std::string own = "-" + std::to_string(getpid()) + "-";
  name.replace(name.rfind(own), own.size(), "-" + std::to_string(process) + "-");
  return name;
}

}  // namespace

TEST(TemporaryName, hasTheNameAndTheProcess_andIsNeverTheSame) {
  const std::string name = temporaryName("rows.tsv");
  EXPECT_EQ(name.substr(0, 19), ".rows.tsv.lumascan-");
  EXPECT_NE(name.find("-" + std::to_string(getpid()) + "-"), std::string::npos);
  EXPECT_EQ(name.substr(name.size() - 5), ".part");
  EXPECT_NE(temporaryName("rows.tsv"), name);
}

TEST(TemporaryName, isShortEnough_howeverLongTheNameIs) {
  EXPECT_LE(temporaryName(std::string(255, 'x')).size(), 255U);
  EXPECT_EQ(temporaryName(std::string(255, 'x')).substr(0, 111),
            "." + std::string(100, 'x') + ".lumascan-");
}

TEST(Leftover, isWhatAProcessOfThisMachineHadBegun_thatIsGone) {
  EXPECT_FALSE(isLeftover(temporaryName("a"), NOW, NOW));
  EXPECT_FALSE(isLeftover(nameOfProcess(getppid()), NOW, NOW));
  EXPECT_TRUE(isLeftover(nameOfProcess(deadProcess()), NOW, NOW));
}

TEST(Leftover, isWhatAZombieHadBegun) {
  const pid_t process = fork();
  if (process == 0) _exit(0);
  siginfo_t ended = {};
  waitid(P_PID, static_cast<id_t>(process), &ended, WEXITED | WNOWAIT);
  EXPECT_TRUE(isLeftover(nameOfProcess(process), NOW, NOW));
  waitpid(process, nullptr, 0);
}

TEST(Leftover, isWhatHasNotBeenTouchedForADay_whoeverHasBegunIt) {
  const std::string elsewhere = ".a.lumascan-another_host-1-0123456789abcdef.part";
  for (const std::string& name : {elsewhere, temporaryName("a")}) {
    EXPECT_FALSE(isLeftover(name, NOW - DAY + 1, NOW)) << name;
    EXPECT_TRUE(isLeftover(name, NOW - DAY, NOW)) << name;
  }
  // Clocks differ from machine to machine.
  EXPECT_FALSE(isLeftover(elsewhere, NOW + DAY, NOW));
}

TEST(Leftover, isNothingOfAnotherForm) {
  const std::string good = ".a.lumascan-host-7-0123456789abcdef.part";
  EXPECT_TRUE(isLeftover(good, 0, NOW));
  for (const char* const name :
       {"a.part1", "holiday.part1", ".part", "part", ".", "..", ".a.part",
        "a.lumascan-host-7-0123456789abcdef.part", ".a.lumascan-host-7-0123456789abcdef.part~",
        ".a.lumascan-host-7-0123456789abcde.part", ".a.lumascan-host-7-0123456789ABCDEF.part",
        ".a.lumascan-host--0123456789abcdef.part", ".a.lumascan-host-x-0123456789abcdef.part",
        ".a.lumascan-host-7x-0123456789abcdef.part", ".a.lumascan-host-0-0123456789abcdef.part",
        ".a.lumascan-0123456789abcdef.part", ".a.lumascann-host-7-0123456789abcdef.part",
        ".a-host-7-0123456789abcdef.part"}) {
    EXPECT_FALSE(isLeftover(name, 0, NOW)) << name;
  }
}
