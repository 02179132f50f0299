#include "scan/processes/sandbox.h"

#include <fcntl.h>
#include <linux/capability.h>
#include <linux/landlock.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "scan/processes/childProcess.h"
#include "scan/processes/syscallFilter.h"

#ifndef __has_feature
#define __has_feature(name) 0
#endif

namespace {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__) ||       \
    __has_feature(address_sanitizer) || __has_feature(thread_sanitizer) || \
    __has_feature(memory_sanitizer)
constexpr bool IS_SANITIZED = true;
#else
constexpr bool IS_SANITIZED = false;
#endif

constexpr rlim_t MOST_OPEN_FILES = 64;

// The kernel's rules as of its interface's version 6 (Linux 6.12), which older headers do not have.
struct LandlockRules {
  uint64_t ofFiles;
  uint64_t ofNetworks;
  uint64_t scopes;
};

constexpr uint64_t TRUNCATE = uint64_t{1} << 14;
constexpr uint64_t DEVICE_CONTROL = uint64_t{1} << 15;
constexpr uint64_t TCP = 1 | 2;                  // to listen, to connect
constexpr uint64_t SOCKETS_AND_SIGNALS = 1 | 2;  // to processes outside

constexpr uint64_t FILES_AT_FIRST = 2 * LANDLOCK_ACCESS_FS_MAKE_SYM - 1;
constexpr uint64_t FILES_OF_A_RESULT =
    LANDLOCK_ACCESS_FS_READ_FILE | LANDLOCK_ACCESS_FS_READ_DIR | LANDLOCK_ACCESS_FS_WRITE_FILE |
    LANDLOCK_ACCESS_FS_MAKE_REG | LANDLOCK_ACCESS_FS_MAKE_DIR | LANDLOCK_ACCESS_FS_REMOVE_FILE |
    LANDLOCK_ACCESS_FS_REMOVE_DIR | TRUNCATE;

// All that a version knows of.
LandlockRules rulesOf(long version) {
  LandlockRules rules = {FILES_AT_FIRST, 0, 0};
  if (version >= 2) rules.ofFiles |= LANDLOCK_ACCESS_FS_REFER;
  if (version >= 3) rules.ofFiles |= TRUNCATE;
  if (version >= 5) rules.ofFiles |= DEVICE_CONTROL;
  if (version >= 4) rules.ofNetworks = TCP;
  if (version >= 6) rules.scopes = SOCKETS_AND_SIGNALS;
  return rules;
}

std::string reason(const std::string& what) {
  return what + ": " + std::strerror(errno);
}

bool allow(int rules, const std::string& folder, uint64_t rights) {
  landlock_path_beneath_attr beneath = {};
  beneath.allowed_access = rights;
  beneath.parent_fd = open(folder.c_str(), O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
  if (beneath.parent_fd < 0) return false;
  const bool isAllowed =
      syscall(SYS_landlock_add_rule, rules, LANDLOCK_RULE_PATH_BENEATH, &beneath, 0) == 0;
  close(beneath.parent_fd);
  return isAllowed;
}

std::string restrictFiles(const std::string& folder) {
  const long version =
      syscall(SYS_landlock_create_ruleset, nullptr, 0, LANDLOCK_CREATE_RULESET_VERSION);
  if (version < 0) return reason("Landlock");
  const LandlockRules all = rulesOf(version);
  const auto rules = static_cast<int>(syscall(SYS_landlock_create_ruleset, &all, sizeof all, 0));
  if (rules < 0) return reason("Landlock");
  const bool isAllowed = folder.empty() || allow(rules, folder, FILES_OF_A_RESULT & all.ofFiles);
  const bool isRestricted = isAllowed && syscall(SYS_landlock_restrict_self, rules, 0) == 0;
  std::string mistake = isRestricted ? "" : reason("Landlock");
  close(rules);
  return mistake;
}

void limit(decltype(RLIMIT_DATA) what, rlim_t most) {
  rlimit limits = {};
  getrlimit(what, &limits);
  limits.rlim_max = std::min(limits.rlim_max, most);
  limits.rlim_cur = std::min(limits.rlim_cur, limits.rlim_max);
  setrlimit(what, &limits);
}

// Of root's powers only that to write to a folder of somebody else.
bool dropCapabilities() {
  __user_cap_header_struct header = {_LINUX_CAPABILITY_VERSION_3, 0};
  __user_cap_data_struct sets[_LINUX_CAPABILITY_U32S_3] = {};
  if (syscall(SYS_capget, &header, sets) != 0) return false;
  const __u32 kept = sets[0].permitted & (1U << CAP_DAC_OVERRIDE);
  sets[0] = {kept & sets[0].effective, kept, 0};
  sets[1] = {0, 0, 0};
  return syscall(SYS_capset, &header, sets) == 0;
}

}  // namespace

std::string confineProcess(const std::string& folder) {
  if (IS_SANITIZED) return "this build has a sanitizer, which reads and starts what it needs";
  limit(RLIMIT_CORE, 0);
  limit(RLIMIT_NOFILE, MOST_OPEN_FILES);
  if (!dropCapabilities()) return reason("capabilities");
  if (prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0) return reason("no new privileges");
  std::string mistake = restrictFiles(folder);
  return mistake.empty() ? filterSyscalls() : mistake;
}

SandboxFacts trySandbox(SandboxMode mode) {
  if (mode == SandboxMode::OFF) return {false, "it was not asked for"};
  const ChildRun trial = runInChild([] { return confineProcess(""); }, -1);
  const std::string mistake =
      trial.ending.empty() ? trial.text : "trying it ended by " + trial.ending;
  return {mistake.empty(), mistake};
}

void limitMemory(int64_t bytes) {
  if (bytes > 0 && !IS_SANITIZED) limit(RLIMIT_DATA, static_cast<rlim_t>(bytes));
}
