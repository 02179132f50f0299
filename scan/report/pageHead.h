// The page's head: verdicts, reasons and facts.
#ifndef LUMASCAN_PAGE_HEAD_H
#define LUMASCAN_PAGE_HEAD_H

#include <string>

#include "scan/report/pageContent.h"

std::string headHtml(const Page& page);

#endif
