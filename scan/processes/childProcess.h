// Work on media that a process of its own does, so that a crash takes nothing else along.
#ifndef LUMASCAN_CHILD_PROCESS_H
#define LUMASCAN_CHILD_PROCESS_H

#include <functional>
#include <string>
#include <vector>

// How a process ended, from its status: an empty text when by itself, or what became of it
// ("signal 11 (Segmentation fault)").
std::string endingOf(int status);

// For a process that was just forked: keeps its standard streams and these descriptors; what else
// its parent has open is none of its business.
void closeOthers(std::vector<int> kept);

// Has it read nothing from standard input, and print to a descriptor.
void connectStandardStreams(int to);

// Prints on standard error what another process has printed. Decoders quote what files say about
// themselves: control characters are shown as digits.
void showLog(const std::string& text);

struct ChildRun {
  std::string text;    // that the work has returned
  std::string log;     // the first of what it printed
  std::string ending;  // empty: by itself, or what became of it
};

// Runs `work` in a child process that has nothing open but one descriptor (negative: none), and
// ends when this process does. One that takes minutes, or returns more than a MiB, is killed.
ChildRun runInChild(const std::function<std::string()>& work, int kept);

#endif
