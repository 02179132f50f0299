// The table of events, with pictures.
#ifndef LUMASCAN_PAGE_EVENTS_H
#define LUMASCAN_PAGE_EVENTS_H

#include <string>

#include "scan/report/pageContent.h"

// Empty without events.
std::string eventTableHtml(const Page& page);

#endif
