#include "scan/processes/childProcess.h"

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>

namespace {

constexpr int FAILED = 1;

[[noreturn]] void workInChild(const std::function<std::string()>& work, pid_t parent, int to) {
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  if (getppid() != parent) _exit(FAILED);
  const std::string text = work();
  for (size_t sent = 0; sent < text.size();) {
    const ssize_t count = write(to, text.data() + sent, text.size() - sent);
    if (count < 0 && errno != EINTR) _exit(FAILED);
    sent += static_cast<size_t>(count > 0 ? count : 0);
  }
  _exit(0);
}

std::string readAll(int from) {
  std::string text;
  char bytes[4096];
  for (ssize_t count = 1; count != 0;) {
    count = read(from, bytes, sizeof bytes);
    if (count > 0) text.append(bytes, static_cast<size_t>(count));
    if (count < 0 && errno != EINTR) break;
  }
  return text;
}

}  // namespace

std::string endingOf(int status) {
  if (WIFSIGNALED(status)) {
    return "signal " + std::to_string(WTERMSIG(status)) + " (" + strsignal(WTERMSIG(status)) + ")";
  }
  const int code = WEXITSTATUS(status);
  return code == 0 ? "" : "exit status " + std::to_string(code);
}

std::string runInChild(const std::function<std::string()>& work, std::string* text) {
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) return std::strerror(errno);
  std::fflush(nullptr);
  const pid_t parent = getpid();
  const pid_t child = fork();
  const int error = errno;
  if (child == 0) workInChild(work, parent, ends[1]);
  close(ends[1]);
  *text = readAll(ends[0]);
  close(ends[0]);
  if (child < 0) return std::strerror(error);
  int status = 0;
  while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
  }
  return endingOf(status);
}
