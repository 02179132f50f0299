// Stands in for a decoder that has been taken over by the file it reads: when FFmpeg is asked to
// look into a video, this does what a sandbox must not let it do. Loaded by LD_PRELOAD; environment
// variables say what is done:
//
//   HOSTILE_TO=FOLDER     all of `attempts`, on the files "victim" and "second" in this folder and
//   on the
//                         system; standard error gets a line for each: "attempt NAME: " and what
//                         came of it
//   HOSTILE_MEMORY=BYTES  memory is written to until there is none left, or so much; then an abort
#include <dlfcn.h>
#include <fcntl.h>
#include <linux/bpf.h>
#include <linux/keyctl.h>
#include <netinet/in.h>
#include <sched.h>
#include <sys/ipc.h>
#include <sys/mount.h>
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

struct Attempt {
  const char* name;
  std::function<long()> act;  // negative, with errno set: refused
};

void attemptAll(const std::string& folder) {
  const std::string path = folder + "/victim";
  const std::string other = folder + "/other";
  const char* const victim = path.c_str();
  const timespec then[2] = {{1, 0}, {1, 0}};
  const Attempt attempts[] = {
      {"read", [&] { return opened(victim, O_RDONLY); }},
      {"readSystemFile", [&] { return opened("/etc/passwd", O_RDONLY); }},
      {"listFolder", [&] { return opened(folder.c_str(), O_RDONLY | O_DIRECTORY); }},
      {"write", [&] { return opened(victim, O_WRONLY | O_APPEND); }},
      {"reopenVideoToWrite", [&] { return reopenVideo(); }},
      {"create", [&] { return opened((other + "1").c_str(), O_WRONLY | O_CREAT); }},
      {"createInTmp", [&] { return opened("/tmp/lumascanHostile", O_WRONLY | O_CREAT); }},
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
      {"sharedMemory", [&] { return shmget(IPC_PRIVATE, 4096, IPC_CREAT | 0600); }},
      {"exec", [&] { return execl("/nowhere", "nowhere", nullptr); }},
      // By its number: libraries have work of their own at a fork().
      {"fork", [&] { return started(syscall(SYS_clone, SIGCHLD, 0, 0, 0, 0)); }},
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
  const char* const memory = std::getenv("HOSTILE_MEMORY");
  if (memory != nullptr) takeMemory(std::strtoull(memory, nullptr, 10));
  const auto original = reinterpret_cast<decltype(avformat_find_stream_info)*>(
      dlsym(RTLD_NEXT, "avformat_find_stream_info"));
  return original(container, options);
}
