// Where the videos of stored results are, or were.
#ifndef LUMASCAN_VIDEO_PLACES_H
#define LUMASCAN_VIDEO_PLACES_H

#include <string>
#include <vector>

#include "scan/record/videoResult.h"

// The folders from which names of videos count that do not begin with "/": the current one, and
// those in which scans into this folder of results were started, as its run.json says.
std::vector<std::string> scanFolders(const std::string& results);

// Whether a video came through standard input: it is nowhere.
bool isOfPipe(const InputFacts& input);

// Whether a video is in none of these folders. What came through a pipe never is gone, nor is what
// cannot be looked for.
bool isVideoGone(const InputFacts& input, const std::vector<std::string>& folders);

#endif
