// Runs of the program in a world that fails, and what they leave behind.
#ifndef LUMAPROBE_TESTS_FAULTYRUN_H
#define LUMAPROBE_TESTS_FAULTYRUN_H

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "../cli/analysis.h"

constexpr int FRAMES = 100;  // of the usual clip

// Runs the program while calls of the C library fail: `faults` are the variables that
// preloaded/failingCalls.cpp describes, and their values. `prepare` is that of runProgram.
ProgramRun analyseWithFaults(
    const TemporaryDirectory& directory, const std::vector<std::string>& arguments,
    const std::map<std::string, std::string>& faults, const std::function<void()>& prepare = [] {});

// How many faults took place in the last such run in `directory`.
size_t faultsMade(const TemporaryDirectory& directory);

// Runs the program so that the permissions of files hold for it, whoever runs the tests.
ProgramRun analyseWithinPermissions(const TemporaryDirectory& directory,
                                    const std::vector<std::string>& arguments);

// Ends a process that is being prepared for a program, with the status 126, when a step has failed.
void require(bool isDone, const char* step);

void expectRun(const ProgramRun& run, int status, const std::string& out, const std::string& err);

// Writes "clip.yuv": frame k of 32x32 has the level 10 + k. There are up to 240 frames.
void writeRisingClip(const TemporaryDirectory& directory, int frames);

// What analyses it with the mask `levelAndStep`; what is printed ahead of the rows; and the rows.
extern const std::vector<std::string> risingArguments;
std::string risingStart(int frames);
std::vector<Row> risingRows(int frames);

// Writes "clip.yuv": ten frames of noise, large enough for every indicator.
void writeNoiseClip(const TemporaryDirectory& directory);
extern const std::vector<std::string> noiseArguments;

// Expects of `run`, on the noise clip in `directory`, every byte of an undisturbed run.
void expectUndisturbed(const TemporaryDirectory& directory, const ProgramRun& run);

#endif
