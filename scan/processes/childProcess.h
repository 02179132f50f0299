// Work on media that a process of its own does, so that a crash takes nothing else along.
#ifndef LUMASCAN_CHILD_PROCESS_H
#define LUMASCAN_CHILD_PROCESS_H

#include <functional>
#include <string>

// How a process ended, from its status: an empty text when by itself, or what became of it
// ("signal 11 (Segmentation fault)").
std::string endingOf(int status);

// Runs `work` in a child process and hands over the text that it returns. The child ends when this
// process does. Returns an empty text, or how the child ended otherwise.
std::string runInChild(const std::function<std::string()>& work, std::string* text);

#endif
