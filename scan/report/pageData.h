// What the page's script works with.
#ifndef LUMASCAN_PAGE_DATA_H
#define LUMASCAN_PAGE_DATA_H

#include <cstdio>

#include "scan/report/pageContent.h"

// Writes the model and the packed frames of every input.
void writeData(const Page& page, FILE* out);

#endif
