// Runs a program as a user would, and gives tests a folder of their own to run it in.
#ifndef LUMAPROBE_TESTS_RUNPROGRAM_H
#define LUMAPROBE_TESTS_RUNPROGRAM_H

#include <sys/types.h>

#include <cstdio>
#include <functional>
#include <string>
#include <vector>

// What a finished program left behind; a program killed by a signal has the status 128 + signal.
struct ProgramRun {
  int status;
  int stops;  // how often it was stopped; it was told to go on each time
  std::string out;
  std::string err;
};

// Runs `program` with `arguments` in the folder `directory` and waits for its end. The program
// path is handed on as the program's own name. The status is 127 if it cannot be started.
//
// prepare   what the new process does last before it becomes the program, with the folder and the
//           three standard streams in place.
ProgramRun runProgram(
    const std::string& program, const std::vector<std::string>& arguments,
    const std::string& directory, const std::string& standardInput = "/dev/null",
    const std::function<void()>& prepare = [] {});

// The same in two steps, for tests that do something while the program runs.
struct StartedProgram {
  FILE* out;
  FILE* err;
  pid_t process;
};

StartedProgram startProgram(
    const std::string& program, const std::vector<std::string>& arguments,
    const std::string& directory, const std::string& standardInput = "/dev/null",
    const std::function<void()>& prepare = [] {});
ProgramRun waitFor(const StartedProgram& started);

// A fresh empty folder that goes away with everything in it when the record goes out of scope.
struct TemporaryDirectory {
  TemporaryDirectory();
  ~TemporaryDirectory();
  TemporaryDirectory(const TemporaryDirectory&) = delete;
  TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

  std::string path;
};

// The bytes of a file. A file that cannot be read throws std::ios_base::failure.
std::string readFile(const std::string& path);

void writeFile(const std::string& path, const std::string& bytes);

#endif
