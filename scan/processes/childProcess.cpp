#include "scan/processes/childProcess.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <climits>
#include <csignal>
#include <cstdio>
#include <cstring>

#include "scan/files/names.h"

namespace {

constexpr int FAILED = 1;
constexpr auto LONGEST_WORK = std::chrono::minutes(2);
constexpr size_t LONGEST_TEXT = 1 << 20;  // bytes
constexpr size_t LONGEST_LOG = 1 << 16;

struct Pipe {
  int ends[2] = {-1, -1};
  ~Pipe() {
    for (int& end : ends) closeEnd(&end);
  }
  static void closeEnd(int* end) {
    if (*end >= 0) close(*end);
    *end = -1;
  }
};

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

// Reads what there is, keeping so many bytes of all; closes the end of a pipe that has no more.
void readPart(int* from, size_t most, std::string* text) {
  char bytes[4096];
  const ssize_t count = read(*from, bytes, sizeof bytes);
  if (count > 0) {
    text->append(bytes, std::min(static_cast<size_t>(count), most - std::min(most, text->size())));
  } else if (count == 0 || errno != EINTR) {
    Pipe::closeEnd(from);
  }
}

// Takes in what a child sends. Empty, or why it is not to go on.
std::string listenTo(Pipe* texts, Pipe* logs, ChildRun* run) {
  const auto deadline = std::chrono::steady_clock::now() + LONGEST_WORK;
  int* const text = &texts->ends[0];
  int* const log = &logs->ends[0];
  while (*text >= 0 || *log >= 0) {
    pollfd ends[] = {{*text, POLLIN, 0}, {*log, POLLIN, 0}};  // negative ones are passed over
    if (poll(ends, 2, 1000) < 0 && errno != EINTR) return std::strerror(errno);
    if (ends[0].revents != 0) readPart(text, LONGEST_TEXT, &run->text);
    if (ends[1].revents != 0) readPart(log, LONGEST_LOG, &run->log);
    if (run->text.size() == LONGEST_TEXT) return "saying too much";
    if (std::chrono::steady_clock::now() > deadline) return "taking too long";
  }
  return "";
}

}  // namespace

std::string endingOf(int status) {
  if (WIFSIGNALED(status)) {
    return "signal " + std::to_string(WTERMSIG(status)) + " (" + strsignal(WTERMSIG(status)) + ")";
  }
  const int code = WEXITSTATUS(status);
  return code == 0 ? "" : "exit status " + std::to_string(code);
}

void connectStandardStreams(int to) {
  dup2(to, STDOUT_FILENO);
  dup2(to, STDERR_FILENO);
  const int nothing = open("/dev/null", O_RDONLY | O_CLOEXEC);
  dup2(nothing, STDIN_FILENO);
}

void closeOthers(std::vector<int> kept) {
  std::sort(kept.begin(), kept.end());
  unsigned int first = STDERR_FILENO + 1;
  for (const int descriptor : kept) {
    const auto next = static_cast<unsigned int>(descriptor);
    if (descriptor < static_cast<int>(first)) continue;
    if (next > first) close_range(first, next - 1, 0);
    first = next + 1;
  }
  close_range(first, UINT_MAX, 0);
}

void showLog(const std::string& text) {
  for (size_t start = 0; start < text.size();) {
    const size_t end = std::min(text.find('\n', start), text.size());
    const char* const ending = end < text.size() ? "\n" : "";
    std::fprintf(stderr, "%s%s", printableName(text.substr(start, end - start)).c_str(), ending);
    start = end + 1;
  }
}

ChildRun runInChild(const std::function<std::string()>& work, int kept) {
  ChildRun run;
  Pipe texts;
  Pipe logs;
  if (pipe2(texts.ends, O_CLOEXEC) != 0 || pipe2(logs.ends, O_CLOEXEC) != 0) {
    run.ending = std::strerror(errno);
    return run;
  }
  std::fflush(nullptr);
  const pid_t parent = getpid();
  const pid_t child = fork();
  if (child == 0) {
    connectStandardStreams(logs.ends[1]);
    closeOthers({texts.ends[1], kept});
    workInChild(work, parent, texts.ends[1]);
  }
  if (child < 0) {
    run.ending = std::strerror(errno);
    return run;
  }
  Pipe::closeEnd(&texts.ends[1]);
  Pipe::closeEnd(&logs.ends[1]);
  run.ending = listenTo(&texts, &logs, &run);
  if (!run.ending.empty()) kill(child, SIGKILL);
  int status = 0;
  while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
  }
  if (run.ending.empty()) run.ending = endingOf(status);
  return run;
}
