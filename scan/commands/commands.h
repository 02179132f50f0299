// lumascan's commands. Each prints what it has to say and returns the process's exit status.
#ifndef LUMASCAN_COMMANDS_H
#define LUMASCAN_COMMANDS_H

#include "scan/commandLine/options.h"

int runScan(const Options& options);
int runEvents(const Options& options);
int runReport(const Options& options);
int runProbe(const Options& options);
int runPrune(const Options& options);

#endif
