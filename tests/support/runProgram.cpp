// Runs a program as a user would, and gives tests a folder of their own to run it in.
#include "runProgram.h"

#include <fcntl.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <system_error>

namespace {

// The program's output goes to unnamed files: they take any amount without a reader.
FILE* makeOutput() {
  FILE* file = tmpfile();
  if (file == nullptr) throw std::system_error(errno, std::generic_category(), "tmpfile");
  return file;
}

std::string takeOutput(FILE* file) {
  std::string bytes;
  rewind(file);
  for (int byte; (byte = getc(file)) != EOF;) bytes += static_cast<char>(byte);
  fclose(file);
  return bytes;
}

}  // namespace

StartedProgram startProgram(const std::string& program, const std::vector<std::string>& arguments,
                            const std::string& directory, const std::string& standardInput,
                            const std::function<void()>& prepare) {
  std::vector<char*> argv{const_cast<char*>(program.c_str())};
  for (const std::string& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
  argv.push_back(nullptr);

  const StartedProgram started = {makeOutput(), makeOutput(), fork()};
  if (started.process < 0) throw std::system_error(errno, std::generic_category(), "fork");
  if (started.process == 0) {
    const int in = open(standardInput.c_str(), O_RDONLY);
    if (in >= 0 && dup2(in, 0) == 0 && dup2(fileno(started.out), 1) == 1 &&
        dup2(fileno(started.err), 2) == 2 && chdir(directory.c_str()) == 0) {
      prepare();
      execv(argv[0], argv.data());
    }
    _exit(127);
  }
  return started;
}

ProgramRun waitFor(const StartedProgram& started) {
  ProgramRun run = {};
  int status = 0;
  for (;;) {
    const pid_t changed = waitpid(started.process, &status, WUNTRACED);
    if (changed < 0 && errno == EINTR) continue;
    if (changed < 0 || !WIFSTOPPED(status)) break;
    run.stops++;
    kill(started.process, SIGCONT);
  }
  run.status = WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
  run.out = takeOutput(started.out);
  run.err = takeOutput(started.err);
  return run;
}

ProgramRun runProgram(const std::string& program, const std::vector<std::string>& arguments,
                      const std::string& directory, const std::string& standardInput,
                      const std::function<void()>& prepare) {
  return waitFor(startProgram(program, arguments, directory, standardInput, prepare));
}

TemporaryDirectory::TemporaryDirectory()
    : path((std::filesystem::temp_directory_path() / "lumaprobeXXXXXX").string()) {
  if (mkdtemp(path.data()) == nullptr)
    throw std::system_error(errno, std::generic_category(), "mkdtemp " + path);
}

TemporaryDirectory::~TemporaryDirectory() {
  std::error_code ignored;
  std::filesystem::remove_all(path, ignored);
}

std::string readFile(const std::string& path) {
  std::ifstream file;
  file.exceptions(std::ios::failbit | std::ios::badbit);
  file.open(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

void writeFile(const std::string& path, const std::string& bytes) {
  std::ofstream file;
  file.exceptions(std::ios::failbit | std::ios::badbit);
  file.open(path, std::ios::binary);
  file << bytes;
}
