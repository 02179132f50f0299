// What a file says about itself.
#ifndef LUMASCAN_STREAM_FACTS_H
#define LUMASCAN_STREAM_FACTS_H

#include <string>
#include <vector>

#include "scan/files/json.h"
#include "scan/video/videoReader.h"

// Container, codec and what follows: the part of result.json's "input" that needs an open file.
Json streamFacts(const VideoReader& reader);

// What a person should know before the values are compared with those of other files.
std::vector<std::string> streamWarnings(const VideoReader& reader);

#endif
