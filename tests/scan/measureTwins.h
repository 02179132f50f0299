// The measures once more, as docs/measures.md has them: slow, and without a look at the program.
#ifndef LUMASCAN_TESTS_MEASURE_TWINS_H
#define LUMASCAN_TESTS_MEASURE_TWINS_H

#include "definitions/definitions.h"
#include "scan/measures/lumaRange.h"
#include "scan/measures/measureTable.h"

// Of a frame and the one before it, which is null for the first.
MeasureValues slowMeasures(const Image& frame, const Image* previous, LumaRange range);

#endif
