// The filter of system calls alone: other parts of the sandbox refuse much of the same.
#include "scan/processes/syscallFilter.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <functional>
#include <thread>
#include <vector>

#include "support/sanitizers.h"

namespace {

// What a process behind the filter finds: 0 for as it should be, or a number that says what is not.
int behindFilter(const std::function<int()>& look) {
  const pid_t child = fork();
  if (child == 0) {
    prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
    _exit(filterSyscalls().empty() ? look() : 255);
  }
  int status = 0;
  waitpid(child, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

bool isRefused(long result, int error = EPERM) {
  return result == -1 && errno == error;
}

// With arguments that would do nothing, or fail in another way.
// clang-format off
const std::vector<long> REFUSED_CALLS = {
    SYS_socket, SYS_socketpair, SYS_connect, SYS_bind, SYS_listen, SYS_accept, SYS_accept4,
    SYS_shmget, SYS_shmat, SYS_shmctl, SYS_semget, SYS_semop, SYS_semctl, SYS_msgget, SYS_msgsnd,
    SYS_msgrcv, SYS_msgctl, SYS_mq_open, SYS_mq_unlink, SYS_memfd_create, SYS_execve, SYS_execveat,
    SYS_ptrace, SYS_process_vm_readv, SYS_process_vm_writev, SYS_kill, SYS_tkill,
    SYS_rt_sigqueueinfo, SYS_rt_tgsigqueueinfo, SYS_pidfd_open, SYS_pidfd_getfd,
    SYS_pidfd_send_signal, SYS_setsid, SYS_setpriority, SYS_ioprio_set, SYS_sched_setaffinity,
    SYS_sched_setscheduler, SYS_sched_setparam, SYS_truncate, SYS_fchmod, SYS_fchmodat, SYS_fchown,
    SYS_fchownat, SYS_utimensat, SYS_setxattr, SYS_lsetxattr, SYS_fsetxattr, SYS_removexattr,
    SYS_lremovexattr, SYS_fremovexattr, SYS_getxattr, SYS_listxattr, SYS_ioctl, SYS_inotify_init1,
    SYS_inotify_add_watch, SYS_open_by_handle_at, SYS_unshare, SYS_setns, SYS_mount, SYS_umount2,
    SYS_chroot, SYS_bpf, SYS_perf_event_open, SYS_userfaultfd, SYS_keyctl, SYS_add_key,
    SYS_request_key, SYS_io_uring_setup, SYS_io_uring_enter, SYS_personality};
// clang-format on

}  // namespace

TEST(SyscallFilter, refusesEachCallByItself) {
  if (isAddressSanitized) GTEST_SKIP() << "a sanitizer makes calls of its own";
  for (const long call : REFUSED_CALLS) {
    EXPECT_EQ(behindFilter([=] { return isRefused(syscall(call, 0, 0, 0, 0, 0, 0)) ? 0 : 1; }), 0)
        << call;
  }
}

TEST(SyscallFilter, refusesWhatAnArgumentMakesHarmful) {
  if (isAddressSanitized) GTEST_SKIP() << "a sanitizer makes calls of its own";
  EXPECT_EQ(behindFilter([] {
              const pid_t parent = getppid();
              rlimit limit = {};
              if (!isRefused(fcntl(0, F_SETOWN, parent))) return 1;
              if (!isRefused(fcntl(0, F_SETSIG, SIGKILL))) return 2;
              if (!isRefused(prctl(PR_SET_PDEATHSIG, 0))) return 3;
              if (!isRefused(open("/dev/null", O_ACCMODE))) return 4;
              if (!isRefused(syscall(SYS_openat, AT_FDCWD, "/dev/null", O_ACCMODE))) return 5;
              if (!isRefused(syscall(SYS_tgkill, parent, parent, 0))) return 6;
              if (!isRefused(prlimit(parent, RLIMIT_CORE, nullptr, &limit))) return 7;
              if (!isRefused(syscall(SYS_clone, SIGCHLD, 0, 0, 0, 0))) return 8;
              for (const int flags : {MAP_SHARED, MAP_SHARED_VALIDATE, MAP_PRIVATE | MAP_GROWSDOWN})
                if (!isRefused(syscall(SYS_mmap, 0, 4096, 0, flags | MAP_ANONYMOUS, -1, 0)))
                  return 9;
              return 0;
            }),
            0);
}

TEST(SyscallFilter, knowsNothingOfCallsThatItCannotLookInto) {
  if (isAddressSanitized) GTEST_SKIP() << "a sanitizer makes calls of its own";
  for (const long call : {long{SYS_clone3}, long{SYS_openat2}, 451L, 467L, 0x40000000L}) {
    EXPECT_EQ(
        behindFilter([=] { return isRefused(syscall(call, 0, 0, 0, 0, 0, 0), ENOSYS) ? 0 : 1; }), 0)
        << call;
  }
}

TEST(SyscallFilter, letsHealthyCodeBe) {
  if (isAddressSanitized) GTEST_SKIP() << "a sanitizer makes calls of its own";
  EXPECT_EQ(behindFilter([] {
              rlimit limit = {};
              bool isDone = false;
              if (syscall(SYS_openat, AT_FDCWD, "/dev/null", O_RDWR) < 0) return 1;
              if (fcntl(0, F_GETFL) < 0) return 2;
              if (getrlimit(RLIMIT_DATA, &limit) != 0) return 3;
              if (syscall(SYS_mmap, 0, 4096, 0, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0) == -1) return 4;
              std::thread([&] { isDone = true; }).join();
              if (!isDone) return 5;
              if (syscall(SYS_tgkill, getpid(), getpid(), 0) != 0) return 6;
              return 0;
            }),
            0);
  EXPECT_EQ(behindFilter([]() -> int { std::abort(); }), -SIGABRT);
}
