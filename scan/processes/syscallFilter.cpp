#include "scan/processes/syscallFilter.h"

#include <linux/audit.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sched.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstring>
#include <vector>

namespace {

#if defined(__x86_64__)
constexpr unsigned int PROCESSOR = AUDIT_ARCH_X86_64;
#elif defined(__aarch64__) && defined(__AARCH64EL__)
constexpr unsigned int PROCESSOR = AUDIT_ARCH_AARCH64;
#else
constexpr unsigned int PROCESSOR = 0;  // none whose calls are known here
#endif

// clang-format off
constexpr int REFUSED[] = {
    // Networks, and queues and memory that other processes can open.
    SYS_socket, SYS_socketpair, SYS_connect, SYS_bind, SYS_listen, SYS_accept, SYS_accept4,
    SYS_shmget, SYS_semget, SYS_msgget, SYS_mq_open, SYS_mq_unlink,
    // Programs and other processes.
    SYS_execve, SYS_execveat, SYS_ptrace, SYS_process_vm_readv, SYS_process_vm_writev, SYS_kill,
    SYS_tkill, SYS_rt_sigqueueinfo, SYS_rt_tgsigqueueinfo, SYS_pidfd_open, SYS_pidfd_getfd,
    SYS_pidfd_send_signal, SYS_process_madvise, SYS_kcmp, SYS_setpgid, SYS_setsid, SYS_setpriority,
    // Attributes of files, which have no right of their own in Landlock, and truncation, which its
    // first versions do not know.
    SYS_truncate, SYS_fchmod, SYS_fchmodat, SYS_fchown, SYS_fchownat, SYS_utimensat, SYS_setxattr,
    SYS_lsetxattr, SYS_fsetxattr, SYS_removexattr, SYS_lremovexattr, SYS_fremovexattr, SYS_ioctl,
    SYS_name_to_handle_at, SYS_open_by_handle_at, SYS_fanotify_init, SYS_quotactl,
    // What the system consists of, and parts of it that were the way out of many a sandbox.
    SYS_unshare, SYS_setns, SYS_mount, SYS_umount2, SYS_pivot_root, SYS_chroot, SYS_open_tree,
    SYS_move_mount, SYS_fsopen, SYS_fsconfig, SYS_fsmount, SYS_fspick, SYS_mount_setattr, SYS_bpf,
    SYS_perf_event_open, SYS_userfaultfd, SYS_keyctl, SYS_add_key, SYS_request_key,
    SYS_io_uring_setup, SYS_io_uring_enter, SYS_io_uring_register, SYS_io_setup,
#ifdef __x86_64__  // forms that processors of later years do not have
    SYS_fork, SYS_vfork, SYS_chmod, SYS_chown, SYS_lchown, SYS_utime, SYS_utimes, SYS_futimesat,
#endif
};
// clang-format on

// Calls that are younger than this list, and in x86-64 those of another table.
constexpr int FIRST_UNKNOWN = SYS_set_mempolicy_home_node + 1;

constexpr unsigned int ALLOW = SECCOMP_RET_ALLOW;
constexpr unsigned int REFUSE = SECCOMP_RET_ERRNO | EPERM;
// As an older kernel answers: what asks has another way then.
constexpr unsigned int UNKNOWN_HERE = SECCOMP_RET_ERRNO | ENOSYS;

constexpr unsigned int NUMBER = offsetof(seccomp_data, nr);

// Of an argument its lower half, where the least significant byte comes first.
constexpr unsigned int argument(unsigned int i) {
  return static_cast<unsigned int>(offsetof(seccomp_data, args) + i * sizeof(__u64));
}

using Filter = std::vector<sock_filter>;

void load(unsigned int place, Filter* filter) {
  filter->push_back(BPF_STMT(BPF_LD | BPF_W | BPF_ABS, place));
}

// Ends with a verdict where the loaded value compares so with a constant, or where it does not.
void endIf(unsigned short comparison, unsigned int value, unsigned int verdict, Filter* filter) {
  filter->push_back(
      BPF_JUMP(static_cast<unsigned short>(BPF_JMP | BPF_K | comparison), value, 0, 1));
  filter->push_back(BPF_STMT(BPF_RET | BPF_K, verdict));
}

void endUnless(unsigned short comparison, unsigned int value, unsigned int verdict,
               Filter* filter) {
  filter->push_back(
      BPF_JUMP(static_cast<unsigned short>(BPF_JMP | BPF_K | comparison), value, 1, 0));
  filter->push_back(BPF_STMT(BPF_RET | BPF_K, verdict));
}

// Of one call: refused unless an argument compares so with a constant.
void refuseUnless(int call, unsigned int i, unsigned short comparison, unsigned int value,
                  Filter* filter) {
  filter->push_back(BPF_JUMP(BPF_JMP | BPF_K | BPF_JEQ, static_cast<unsigned int>(call), 0, 4));
  load(argument(i), filter);
  endUnless(comparison, value, REFUSE, filter);
  filter->push_back(BPF_STMT(BPF_RET | BPF_K, ALLOW));
}

Filter makeFilter() {
  Filter filter;
  load(offsetof(seccomp_data, arch), &filter);
  endUnless(BPF_JEQ, PROCESSOR, SECCOMP_RET_KILL_PROCESS, &filter);
  load(NUMBER, &filter);
  endIf(BPF_JGE, FIRST_UNKNOWN, UNKNOWN_HERE, &filter);
  for (const int call : REFUSED) {
    endIf(BPF_JEQ, static_cast<unsigned int>(call), REFUSE, &filter);
  }
  // Its flags lie in memory, where a filter cannot see them: the C library takes clone() instead.
  endIf(BPF_JEQ, SYS_clone3, UNKNOWN_HERE, &filter);
  refuseUnless(SYS_clone, 0, BPF_JSET, CLONE_THREAD, &filter);
  refuseUnless(SYS_tgkill, 0, BPF_JEQ, static_cast<unsigned int>(getpid()), &filter);  // abort()
  refuseUnless(SYS_prlimit64, 0, BPF_JEQ, 0, &filter);
  filter.push_back(BPF_STMT(BPF_RET | BPF_K, ALLOW));
  return filter;
}

}  // namespace

std::string filterSyscalls() {
  if (PROCESSOR == 0) return "the system calls of this processor are not known";
  Filter filter = makeFilter();
  const sock_fprog program = {static_cast<unsigned short>(filter.size()), filter.data()};
  if (prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) == 0) return "";
  return std::string("seccomp: ") + std::strerror(errno);
}
