// The fifteen tracks, as they are without script; the script puts plots in their place.
#ifndef LUMASCAN_PAGE_TRACKS_H
#define LUMASCAN_PAGE_TRACKS_H

#include <string>

#include "scan/report/pageContent.h"

std::string tracksHtml(const Page& page);

#endif
