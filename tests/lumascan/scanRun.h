// lumascan as a user runs it, in a folder of the test's own.
#ifndef LUMASCAN_TESTS_SCAN_RUN_H
#define LUMASCAN_TESTS_SCAN_RUN_H

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "scan/clips.h"
#include "scan/files/json.h"
#include "support/sanitizers.h"

// Runs it to its end. Standard input is a file in the folder.
ProgramRun lumascan(
    const TemporaryDirectory& directory, const Arguments& arguments,
    const std::string& standardInput = "/dev/null", const std::function<void()>& prepare = [] {});

// For `prepare`: leaves the program so many file descriptors, standard streams among them.
std::function<void()> limitDescriptors(int most);

// For `prepare`: has a library of preloaded/ stand in front of others, which an environment
// variable tells what for.
void preload(const char* library, const char* variable, const std::string& value);

// Its JSON files; paths are relative to the folder of the test.
Json readJson(const TemporaryDirectory& directory, const std::string& path);
Json resultOf(const TemporaryDirectory& directory, const std::string& video);

// Lines of a file, with what ends them.
std::vector<std::string> linesOf(const std::string& text);

// Three quarters of a second of H.264 in MP4 with the index in front, 19 frames of 320 x 272.
void makeVideo(const TemporaryDirectory& directory, const std::string& name);

// A FIFO: a video that does not get on, until somebody writes to it.
void makeFifo(const TemporaryDirectory& directory, const std::string& name);

// The bytes of a second of YUV4MPEG, 25 frames of 128 x 80, which come as well through a FIFO.
std::string streamedVideo(const TemporaryDirectory& directory);

// A scan that goes on while the test does something. What is left of it when the record goes is
// killed. `prepare` is that of runProgram.
struct RunningScan {
  RunningScan(
      const TemporaryDirectory& directory, const Arguments& arguments,
      const std::function<void()>& prepare = [] {});
  ~RunningScan();
  RunningScan(const RunningScan&) = delete;
  RunningScan& operator=(const RunningScan&) = delete;

  StartedProgram program;
  bool isOver = false;
};

// Waits for its end.
ProgramRun endOf(RunningScan* scan);

// What it has printed on standard error so far.
std::string errorsOf(const RunningScan& scan);

// Waits for a state, however long the machine takes to it. What will not come, since the scan has
// ended or minutes have passed, ends the test by an exception.
void waitUntil(const RunningScan& scan, const std::string& what, const std::function<bool()>& isSo);
void waitForError(const RunningScan& scan, const std::string& text);

// The processes that it has started and not yet collected.
std::vector<pid_t> childrenOf(const RunningScan& scan);

// Workers among them that are ready: their standard streams are theirs, their signals set.
std::vector<pid_t> workersOf(const RunningScan& scan);

// Waits for so many.
std::vector<pid_t> waitForWorkers(const RunningScan& scan, size_t count);

// Waits for one of which the number is another.
pid_t waitForNextWorker(const RunningScan& scan, pid_t last);

// The end of a FIFO to write to, once a worker reads it.
struct Feed {
  Feed(const RunningScan& scan, const std::string& path);
  ~Feed();
  Feed(const Feed&) = delete;
  Feed& operator=(const Feed&) = delete;

  int descriptor = -1;
};

// Writes all of it, as fast as the worker reads.
void feed(const Feed& to, const std::string& bytes);

// Whether a process is there and no zombie.
bool isAlive(pid_t process);

// Every file below a folder but run.json, which holds times, and the lock: its path and its bytes.
std::vector<std::pair<std::string, std::string>> filesBelow(const std::string& folder);

#endif
