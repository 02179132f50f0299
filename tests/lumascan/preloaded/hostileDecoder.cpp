// Stands in for a decoder that has been taken over by the file it reads: when FFmpeg is asked to
// look into a video, this does what a sandbox must not let it do. Loaded by LD_PRELOAD; environment
// variables say what is done:
//
//   HOSTILE_TO=FOLDER     all of `attempts`, on the files "victim" and "second" in this folder and
//   on the
//                         system; standard error gets a line for each: "attempt NAME: " and what
//                         came of it
//   HOSTILE_HANG=         nothing, for ever
//   HOSTILE_SAYS=TEXT     the parent is told this, and the process ends as if all were well
//   HOSTILE_FLOOD=        the parent is told line feeds, and so is standard error, for ever
//   HOSTILE_MEMORY=BYTES  memory is written to until there is none left, or so much; then an abort
#include <dlfcn.h>
#include <fcntl.h>
#include <linux/bpf.h>
#include <linux/capability.h>
#include <linux/keyctl.h>
#include <netinet/in.h>
#include <sched.h>
#include <sys/inotify.h>
#include <sys/ipc.h>
#include <sys/mman.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/ptrace.h>
#include <sys/resource.h>
#include <sys/shm.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <string>
#include <thread>

// FFmpeg's.
struct AVFormatContext;
struct AVDictionary;

namespace {

// Descriptors that come of an attempt are of no use.
long opened(const char* path, int flags) {
  const int descriptor = open(path, flags | O_CLOEXEC, 0666);
  return descriptor < 0 ? -1 : close(descriptor);
}

// Of a process that would go on: it ends at once.
long started(long process) {
  if (process == 0) _exit(0);
  if (process > 0) waitpid(static_cast<pid_t>(process), nullptr, 0);
  return process;
}

long limitsOfParent() {
  rlimit limit = {};
  return prlimit(getppid(), RLIMIT_CORE, nullptr, &limit);
}

long readParent() {
  char byte = 0;
  const iovec here = {&byte, 1};
  const iovec there = {const_cast<char*>("somewhere"), 1};  // at the same place in both
  return process_vm_readv(getppid(), &here, 1, &there, 1, 0);
}

long connectTo(const std::string& socketPath) {
  sockaddr_un address = {};
  address.sun_family = AF_UNIX;
  socketPath.copy(address.sun_path, sizeof address.sun_path - 1);
  return connect(0, reinterpret_cast<const sockaddr*>(&address), sizeof address);
}

// What is open for reading, opened once more for writing.
long reopenVideo() {
  for (int descriptor = 3; descriptor < 64; ++descriptor) {
    const std::string link = "/proc/self/fd/" + std::to_string(descriptor);
    char target[4096] = {};
    const ssize_t length = readlink(link.c_str(), target, sizeof target - 1);
    if (length > 4 && std::strcmp(target + length - 4, ".mp4") == 0)
      return opened(link.c_str(), O_WRONLY);
  }
  errno = ENOENT;
  return -1;
}

long map(int flags) {
  void* const memory = mmap(nullptr, 4096, PROT_READ | PROT_WRITE, flags, -1, 0);
  if (memory == MAP_FAILED) return -1;
  munmap(memory, 4096);
  return 0;
}

// To the processors on which it may run as it is.
long moveParent() {
  cpu_set_t processors;
  sched_getaffinity(getppid(), sizeof processors, &processors);
  return sched_setaffinity(getppid(), sizeof processors, &processors);
}

long takeDescriptors() {
  int taken[100];
  int count = 0;
  while (count < 100 && (taken[count] = dup(0)) >= 0) ++count;
  const int error = errno;
  for (int i = 0; i < count; ++i) close(taken[i]);
  errno = error;
  return count == 100 ? 0 : -1;
}

// Whether a crash would leave a file of everything in memory.
long askForCore() {
  rlimit limit = {};
  getrlimit(RLIMIT_CORE, &limit);
  errno = EPERM;
  return limit.rlim_max == 0 ? -1 : 0;
}

// Of root's powers, any beside that over files of others.
long usePowers() {
  __user_cap_header_struct header = {_LINUX_CAPABILITY_VERSION_3, 0};
  __user_cap_data_struct sets[_LINUX_CAPABILITY_U32S_3] = {};
  syscall(SYS_capget, &header, sets);
  errno = EPERM;
  return (sets[0].effective & ~(1U << CAP_DAC_OVERRIDE)) == 0 && sets[1].effective == 0 ? -1 : 0;
}

struct Attempt {
  const char* name;
  std::function<long()> act;  // negative, with errno set: refused
};

void attemptAll(const std::string& folder) {
  const std::string path = folder + "/victim";
  const std::string other = folder + "/other";
  std::string tmpFile = folder;  // a name that no other test has
  std::replace(tmpFile.begin(), tmpFile.end(), '/', '_');
  tmpFile = "/tmp/lumascan" + tmpFile;
  const char* const victim = path.c_str();
  const timespec then[2] = {{1, 0}, {1, 0}};
  const Attempt attempts[] = {
      {"read", [&] { return opened(victim, O_RDONLY); }},
      {"readSystemFile", [&] { return opened("/etc/passwd", O_RDONLY); }},
      {"listFolder", [&] { return opened(folder.c_str(), O_RDONLY | O_DIRECTORY); }},
      {"write", [&] { return opened(victim, O_WRONLY | O_APPEND); }},
      {"reopenVideoToWrite", [&] { return reopenVideo(); }},
      {"create", [&] { return opened((other + "1").c_str(), O_WRONLY | O_CREAT); }},
      {"createInTmp", [&] { return opened(tmpFile.c_str(), O_WRONLY | O_CREAT); }},
      {"makeFolder", [&] { return mkdir((other + "2").c_str(), 0777); }},
      {"makeFifo", [&] { return mknod((other + "3").c_str(), S_IFIFO | 0666, 0); }},
      {"link", [&] { return link(victim, (other + "4").c_str()); }},
      {"symlink", [&] { return symlink(victim, (other + "5").c_str()); }},
      {"truncate", [&] { return truncate(victim, 0); }},
      {"chmod", [&] { return chmod(victim, 0777); }},
      {"fchmodat", [&] { return fchmodat(AT_FDCWD, victim, 0777, 0); }},
      {"chown", [&] { return chown(victim, 1, 1); }},
      {"utimensat", [&] { return utimensat(AT_FDCWD, victim, then, 0); }},
      {"setxattr", [&] { return setxattr(victim, "user.lumascan", "x", 1, 0); }},
      {"removexattr", [&] { return removexattr(victim, "user.lumascan"); }},
      {"rename", [&] { return rename((folder + "/second").c_str(), (other + "6").c_str()); }},
      {"unlink", [&] { return unlink(victim); }},
      {"socketToNetworks", [&] { return socket(AF_INET, SOCK_STREAM, 0); }},
      {"socketToProcesses", [&] { return socket(AF_UNIX, SOCK_STREAM, 0); }},
      {"connect", [&] { return connectTo(folder + "/socket"); }},
      {"attachSharedMemory", [&] { return shmat(0, nullptr, 0) == nullptr ? 0L : -1L; }},
      {"anonymousFile", [&] { return memfd_create("x", 0); }},
      {"sharedMapping", [&] { return map(MAP_SHARED | MAP_ANONYMOUS); }},
      {"growingMapping", [&] { return map(MAP_PRIVATE | MAP_ANONYMOUS | MAP_GROWSDOWN); }},
      {"truncateByOpening", [&] { return opened(victim, O_ACCMODE | O_TRUNC); }},
      {"signalByDescriptor", [&] { return fcntl(0, F_SETOWN, getppid()); }},
      {"watchFolder", [&] { return inotify_init1(0); }},
      {"outliveParent", [&] { return prctl(PR_SET_PDEATHSIG, 0); }},
      {"moveParent", [&] { return moveParent(); }},
      {"sharedMemory", [&] { return shmget(IPC_PRIVATE, 4096, IPC_CREAT | 0600); }},
      {"exec", [&] { return execl("/nowhere", "nowhere", nullptr); }},
      // By its number: libraries have work of their own at a fork().
      {"fork", [&] { return started(syscall(SYS_clone, SIGCHLD, 0, 0, 0, 0)); }},
      {"takeDescriptors", [&] { return takeDescriptors(); }},
      {"askForCore", [&] { return askForCore(); }},
      {"usePowers", [&] { return usePowers(); }},
      {"kill", [&] { return kill(getppid(), 0); }},
      {"limitsOfParent", [&] { return limitsOfParent(); }},
      {"readParent", [&] { return readParent(); }},
      {"ptrace", [&] { return ptrace(PTRACE_TRACEME, 0, nullptr, nullptr); }},
      {"bpf", [&] { return syscall(SYS_bpf, BPF_MAP_CREATE, nullptr, 0); }},
      {"ioUring", [&] { return syscall(SYS_io_uring_setup, 1, nullptr); }},
      {"keyctl", [&] { return syscall(SYS_keyctl, KEYCTL_GET_KEYRING_ID, -3, 0); }},
      {"mount", [&] { return mount("none", folder.c_str(), "none", 0, nullptr); }},
      {"namespace", [&] { return unshare(CLONE_NEWUSER); }},
      {"callOfTheFuture", [&] { return syscall(5000); }},
  };
  for (const Attempt& attempt : attempts) {
    errno = 0;
    const long result = attempt.act();
    std::fprintf(stderr, "attempt %s: %s\n", attempt.name,
                 result < 0 ? std::strerror(errno) : "done");
  }
  // What healthy decoders do must go on.
  std::thread([] { std::fprintf(stderr, "attempt thread: done\n"); }).join();
}

// The pipe on which a worker is heard.
int messagePipe() {
  for (int descriptor = 3; descriptor < 64; ++descriptor) {
    struct stat facts = {};
    if (fstat(descriptor, &facts) == 0 && S_ISFIFO(facts.st_mode)) return descriptor;
  }
  return -1;
}

void say(const std::string& text) {
  const ssize_t told = write(messagePipe(), text.data(), text.size());
  _exit(told == static_cast<ssize_t>(text.size()) ? 0 : 1);
}

void flood() {
  const std::string lines(1 << 16, '\n');
  for (const int to : {messagePipe(), STDERR_FILENO}) fcntl(to, F_SETFL, O_NONBLOCK);
  for (;;) {
    for (const int to : {messagePipe(), STDERR_FILENO}) {
      if (write(to, lines.data(), lines.size()) < 0) continue;
    }
  }
}

void takeMemory(size_t most) {
  constexpr size_t STEP = 1 << 20;
  size_t taken = 0;
  for (void* piece = nullptr; taken < most && (piece = std::malloc(STEP)) != nullptr;) {
    std::memset(piece, 1, STEP);
    taken += STEP;
  }
  std::fprintf(stderr, "taken %zu MiB\n", taken / STEP);
  std::abort();
}

}  // namespace

extern "C" int avformat_find_stream_info(AVFormatContext* container, AVDictionary** options) {
  const char* const folder = std::getenv("HOSTILE_TO");
  static bool isDone = false;  // pictures are looked for in the video once more
  if (folder != nullptr && !isDone) attemptAll(folder);
  isDone = true;
  const char* const text = std::getenv("HOSTILE_SAYS");
  if (text != nullptr) say(text);
  if (std::getenv("HOSTILE_FLOOD") != nullptr) flood();
  while (std::getenv("HOSTILE_HANG") != nullptr) pause();
  const char* const memory = std::getenv("HOSTILE_MEMORY");
  if (memory != nullptr) takeMemory(std::strtoull(memory, nullptr, 10));
  const auto original = reinterpret_cast<decltype(avformat_find_stream_info)*>(
      dlsym(RTLD_NEXT, "avformat_find_stream_info"));
  return original(container, options);
}
