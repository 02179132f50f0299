#include "scan/processes/syscallFilter.h"

#include <fcntl.h>
#include <linux/audit.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sched.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstring>
#include <functional>
#include <initializer_list>
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
    SYS_shmget, SYS_shmat, SYS_shmctl, SYS_semget, SYS_semop, SYS_semtimedop, SYS_semctl,
    SYS_msgget, SYS_msgsnd, SYS_msgrcv, SYS_msgctl, SYS_mq_open, SYS_mq_unlink, SYS_memfd_create,
    SYS_memfd_secret,
    // Programs and other processes.
    SYS_execve, SYS_execveat, SYS_ptrace, SYS_process_vm_readv, SYS_process_vm_writev, SYS_kill,
    SYS_tkill, SYS_rt_sigqueueinfo, SYS_rt_tgsigqueueinfo, SYS_pidfd_open, SYS_pidfd_getfd,
    SYS_pidfd_send_signal, SYS_process_madvise, SYS_process_mrelease, SYS_kcmp, SYS_setpgid,
    SYS_setsid, SYS_setpriority, SYS_ioprio_set, SYS_sched_setaffinity, SYS_sched_setscheduler,
    SYS_sched_setparam, SYS_sched_setattr, SYS_migrate_pages, SYS_move_pages,
    // Attributes of files, which have no right of their own in Landlock, and truncation, which its
    // first versions do not know.
    SYS_truncate, SYS_fchmod, SYS_fchmodat, SYS_fchown, SYS_fchownat, SYS_utimensat, SYS_setxattr,
    SYS_lsetxattr, SYS_fsetxattr, SYS_removexattr, SYS_lremovexattr, SYS_fremovexattr,
    SYS_getxattr, SYS_lgetxattr, SYS_listxattr, SYS_llistxattr, SYS_ioctl, SYS_inotify_init1,
    SYS_inotify_add_watch, SYS_fanotify_init, SYS_name_to_handle_at, SYS_open_by_handle_at,
    SYS_quotactl, SYS_quotactl_fd,
    // What the system consists of, and parts of it that were the way out of many a sandbox.
    SYS_unshare, SYS_setns, SYS_mount, SYS_umount2, SYS_pivot_root, SYS_chroot, SYS_open_tree,
    SYS_move_mount, SYS_fsopen, SYS_fsconfig, SYS_fsmount, SYS_fspick, SYS_mount_setattr, SYS_bpf,
    SYS_perf_event_open, SYS_userfaultfd, SYS_keyctl, SYS_add_key, SYS_request_key,
    SYS_io_uring_setup, SYS_io_uring_enter, SYS_io_uring_register, SYS_io_setup, SYS_personality,
    SYS_syslog, SYS_remap_file_pages,
#ifdef __x86_64__  // forms that processors of later years do not have
    SYS_fork, SYS_vfork, SYS_chmod, SYS_chown, SYS_lchown, SYS_utime, SYS_utimes, SYS_futimesat,
    SYS_inotify_init, SYS_modify_ldt, SYS_uselib,
#endif
};
// clang-format on

// Calls that are younger than this list, and in x86-64 those of another table.
constexpr unsigned int FIRST_UNKNOWN = 451;

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

// What is to be said of one call: its own piece of the filter, behind which it is allowed.
void decide(int call, const std::function<void(Filter*)>& say, Filter* filter) {
  Filter piece;
  say(&piece);
  piece.push_back(BPF_STMT(BPF_RET | BPF_K, ALLOW));
  filter->push_back(BPF_JUMP(BPF_JMP | BPF_K | BPF_JEQ, static_cast<unsigned int>(call), 0,
                             static_cast<__u8>(piece.size())));
  filter->insert(filter->end(), piece.begin(), piece.end());
}

// Of one call: refused unless an argument compares so with a constant.
void refuseUnless(int call, unsigned int i, unsigned short comparison, unsigned int value,
                  Filter* filter) {
  decide(
      call,
      [=](Filter* piece) {
        load(argument(i), piece);
        endUnless(comparison, value, REFUSE, piece);
      },
      filter);
}

// Of one call: refused where an argument has any of these bits, or is one of these values.
void refuseBits(int call, unsigned int i, unsigned int bits, Filter* filter) {
  decide(
      call,
      [=](Filter* piece) {
        load(argument(i), piece);
        endIf(BPF_JSET, bits, REFUSE, piece);
      },
      filter);
}

void refuseValues(int call, unsigned int i, std::initializer_list<int> values, Filter* filter) {
  decide(
      call,
      [=](Filter* piece) {
        load(argument(i), piece);
        for (const int value : values)
          endIf(BPF_JEQ, static_cast<unsigned int>(value), REFUSE, piece);
      },
      filter);
}

// Opening for neither reading nor writing takes no right of Landlock's, and can still cut a file
// off or wake a device.
void refuseOddOpening(int call, unsigned int flags, Filter* filter) {
  decide(
      call,
      [=](Filter* piece) {
        load(argument(flags), piece);
        piece->push_back(BPF_STMT(BPF_ALU | BPF_K | BPF_AND, O_ACCMODE));
        endIf(BPF_JEQ, O_ACCMODE, REFUSE, piece);
      },
      filter);
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
  // Their flags lie in memory, where a filter cannot see them: the C library takes clone() instead.
  endIf(BPF_JEQ, SYS_clone3, UNKNOWN_HERE, &filter);
  endIf(BPF_JEQ, SYS_openat2, UNKNOWN_HERE, &filter);
  refuseUnless(SYS_clone, 0, BPF_JSET, CLONE_THREAD, &filter);
  refuseUnless(SYS_tgkill, 0, BPF_JEQ, static_cast<unsigned int>(getpid()), &filter);  // abort()
  refuseUnless(SYS_prlimit64, 0, BPF_JEQ, 0, &filter);
  // Signals to others by way of a descriptor, and what else tells of others' files.
  refuseValues(SYS_fcntl, 1, {F_SETOWN, F_SETSIG, F_SETOWN_EX, F_SETLEASE, F_NOTIFY}, &filter);
  refuseValues(SYS_prctl, 0, {PR_SET_PDEATHSIG}, &filter);
  // Memory that the limit does not count.
  refuseBits(SYS_mmap, 3, MAP_SHARED | MAP_GROWSDOWN, &filter);
  refuseOddOpening(SYS_openat, 2, &filter);
#ifdef __x86_64__
  refuseOddOpening(SYS_open, 1, &filter);
#endif
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
