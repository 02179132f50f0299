// Which files a scan or a probe is about.
#ifndef LUMASCAN_INPUTS_H
#define LUMASCAN_INPUTS_H

#include <string>
#include <vector>

#include "scan/commandLine/options.h"

// The files that the inputs name: themselves, or for folders the videos in them and in their
// folders, sorted by name. Videos are known by their names' extensions, others by their first
// bytes. "-" is standard input where the command line has it, and a file's name elsewhere. Folders
// of results are not entered. Each file comes once. What cannot be read becomes a line of
// `problems`.
std::vector<VideoSource> findInputs(const Options& options, std::vector<std::string>* problems);

#endif
