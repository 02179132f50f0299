// Runs a command, its standard output going to a file, and prints in one line what it took:
// seconds, seconds of processor time, peak memory in KiB, minor page faults. The peak is never less
// than this program's own, over 1 MiB, which the command has inherited.
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>

namespace {

constexpr int NOT_RUN = 127;

[[noreturn]] void become(char** command, const char* outputName) {
  const int output = open(outputName, O_WRONLY | O_CREAT | O_TRUNC, 0666);
  if (output < 0 || dup2(output, STDOUT_FILENO) < 0) {
    std::perror(outputName);
  } else {
    execvp(command[0], command);
    std::perror(command[0]);
  }
  _exit(NOT_RUN);
}

double seconds(const timeval& time) {
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 3) {
    std::fputs("Usage: runMeasured OUTPUT COMMAND [ARGUMENT]...\n", stderr);
    return NOT_RUN;
  }
  const auto start = std::chrono::steady_clock::now();
  const pid_t child = fork();
  if (child == 0) become(argv + 2, argv[1]);
  int status;
  rusage usage;
  if (child < 0 || wait4(child, &status, 0, &usage) < 0) {
    std::perror("runMeasured");
    return NOT_RUN;
  }
  const std::chrono::duration<double> wall = std::chrono::steady_clock::now() - start;
  std::printf("%.6f %.6f %ld %ld\n", wall.count(),
              seconds(usage.ru_utime) + seconds(usage.ru_stime), usage.ru_maxrss, usage.ru_minflt);
  return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}
