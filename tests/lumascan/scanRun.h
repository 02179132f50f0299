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

// Its JSON files; paths are relative to the folder of the test.
Json readJson(const TemporaryDirectory& directory, const std::string& path);
Json resultOf(const TemporaryDirectory& directory, const std::string& video);

// Lines of a file, with what ends them.
std::vector<std::string> linesOf(const std::string& text);

// Three quarters of a second of H.264 in MP4 with the index in front, 19 frames of 320 x 272.
void makeVideo(const TemporaryDirectory& directory, const std::string& name);

// A FIFO: a video that does not get on, since nobody writes to it.
void makeFifo(const TemporaryDirectory& directory, const std::string& name);

std::vector<pid_t> childrenOf(pid_t process);

// The same when there are so many, for which it waits, at most 20 seconds.
std::vector<pid_t> waitForChildren(pid_t process, size_t count);

// Whether a process is there and no zombie.
bool isAlive(pid_t process);

// Every file below a folder but run.json, which holds times: its path and its bytes.
std::vector<std::pair<std::string, std::string>> filesBelow(const std::string& folder);

#endif
