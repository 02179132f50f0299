#include "scan/commandLine/messages.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>

#include "scan/commandLine/exitStatus.h"
#include "scan/files/names.h"

void complain(const std::string& text) {
  // Some of it may be from a file that strangers have made.
  std::fprintf(stderr, "lumascan: %s\n", printableName(text).c_str());
}

std::string quoted(const std::string& name) {
  return "\"" + printableName(name) + "\"";
}

bool chooseThresholds(const Options& options, Thresholds* thresholds) {
  *thresholds = DEFAULT_THRESHOLDS;
  if (options.thresholds.empty()) return true;
  const std::string mistake = readThresholds(options.thresholds, thresholds);
  if (!mistake.empty()) complain("thresholds of " + quoted(options.thresholds) + ": " + mistake);
  return mistake.empty();
}

bool chooseSandbox(const Options& options, SandboxFacts* sandbox) {
  *sandbox = trySandbox(options.sandbox);
  const bool isMissing = !sandbox->isOn && options.sandbox == SandboxMode::REQUIRE;
  const bool isTold = !sandbox->isOn && options.sandbox == SandboxMode::AUTO && options.isVerbose;
  if (isMissing || isTold) complain("there is no sandbox here: " + sandbox->whyNot);
  return !isMissing;
}

int finishOutput(int status) {
  if (std::fflush(stdout) == 0 && std::ferror(stdout) == 0) return status;
  complain(std::string("cannot write to standard output: ") + std::strerror(errno));
  return std::max<int>(status, OUTPUT_PROBLEM);
}
