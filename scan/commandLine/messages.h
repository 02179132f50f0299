// What lumascan says to the person who runs it.
#ifndef LUMASCAN_MESSAGES_H
#define LUMASCAN_MESSAGES_H

#include <string>

#include "scan/commandLine/options.h"
#include "scan/events/thresholds.h"

// A line on standard error, behind the program's name.
void complain(const std::string& text);

// A file's name for such a line.
std::string quoted(const std::string& name);

// The usual thresholds with the changes of the user's file. False, after a message, when there is
// something wrong with that.
bool chooseThresholds(const Options& options, Thresholds* thresholds);

// What the processes that decode are to be confined to. False, after a message, when that cannot be
// had and is required.
bool chooseSandbox(const Options& options, SandboxFacts* sandbox);

// Sees that all of standard output is written: `status`, or after a message OUTPUT_PROBLEM.
int finishOutput(int status);

#endif
