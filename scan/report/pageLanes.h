// Events over the whole duration, a lane for every type.
#ifndef LUMASCAN_PAGE_LANES_H
#define LUMASCAN_PAGE_LANES_H

#include <string>

#include "scan/report/pageContent.h"

// Empty when no frame was analysed.
std::string lanesHtml(const Page& page);

// Says that not all events have a row, where that is so.
std::string otherEventsHtml(const Page& page);

#endif
