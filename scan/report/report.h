// The page on one video, or on several side by side.
#ifndef LUMASCAN_REPORT_H
#define LUMASCAN_REPORT_H

#include <cstdio>
#include <vector>

#include "scan/record/videoResult.h"

// Writes one HTML document that works offline, and in what matters without script and on paper. Of
// very many events it shows the gravest, and says so.
void writeReport(const std::vector<const VideoResult*>& inputs, FILE* out);

#endif
