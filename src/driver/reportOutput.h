// The table of results, written twice: on standard output and, with its own header and three other
// number formats, to the report file.
#ifndef LUMAPROBE_REPORT_OUTPUT_H
#define LUMAPROBE_REPORT_OUTPUT_H

#include <cstdint>
#include <cstdio>

#include "driver/frameAnalysis.h"
#include "indicators/results.h"

// Creates "metricsResultsCSV.csv" in the current directory, or empties it; null when that fails.
FILE* openReport();

// The header and a row of the report alone.
void printReportHeader(FILE* report);
void printReportRow(FILE* report, int32_t frame, const FrameResults& spatial,
                    const TemporalResults& temporal);

// Both headers. Without a report (null) says so on standard output instead.
void printHeaders(FILE* report);

// Both rows of a frame; with a null report the one on standard output alone.
void printRows(FILE* report, int32_t frame, const FrameResults& spatial,
               const TemporalResults& temporal);

#endif
