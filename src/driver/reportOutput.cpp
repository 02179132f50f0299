#include "driver/reportOutput.h"

#include "indicators/truncateToInt32.h"

namespace {

// The console's extra tabs do not line up with those of its rows, and are not meant to: scripts
// split at tabs.
constexpr char CONSOLE_HEADER[] =
    "Frame: \tBlockiness: \tSpatial Activity: \tLetterbox: \tPillarbox: \tBlockloss: \tBlur: \t\t"
    "TemporalAct: \tBlackout: \tFreezing: \tExposure(bri): \tContrast: \tInterlace: \tNoise: \t\t"
    "Slice: \t\tFlickering:";
constexpr char REPORT_HEADER[] =
    "Frame: \tBlockiness: \tSA: \tLetterbox: \tPillarbox: \tBlockloss: \tBlur: \tTA: \tBlackout: \t"
    "Freezing: \tExposure(bri): \tContrast: \tInterlace: \tNoise: \tSlice: \tFlickering:\n";
static_assert(sizeof REPORT_HEADER - 1 == 163, "readers of the report skip 163 bytes");

constexpr char CONSOLE_ROW[] =
    "%05i \t%-5.5f \t%-5.5f \t\t%-5.5f \t%-5.5f \t%-5.5f \t%-7.3f \t%-5.5f \t%-d \t\t%-d \t\t%-6i "
    "\t\t%-5.5f \t%-5.5f \t%-8.2f \t%-7.3f \t%-5.5f\n";
constexpr char REPORT_ROW[] =
    "%05i \t%-5.5f \t%-5.5f \t%-5.5f \t%-5.5f \t%-5.5f \t%-5.3f \t%-5.5f \t%-d \t%-d \t%-6i "
    "\t%-5.5f \t%-5.5f \t%-8.4f \t%-7.3f \t%-5.5f\n";

void printRow(FILE* out, const char* format, int32_t frame, const FrameResults& spatial,
              const TemporalResults& temporal) {
  std::fprintf(out, format, frame, spatial.blockiness, spatial.spatialActivity, spatial.letterbox,
               spatial.pillarbox, spatial.blockLoss, spatial.blur, temporal.temporalActivity,
               int{spatial.blackout}, int{temporal.freezing}, truncateToInt32(spatial.exposure),
               spatial.contrast, spatial.interlace, spatial.noise, spatial.slice,
               temporal.flickering);
}

}  // namespace

FILE* openReport() {
  return std::fopen("metricsResultsCSV.csv", "w");
}

void printReportHeader(FILE* report) {
  std::fwrite(REPORT_HEADER, 1, sizeof REPORT_HEADER - 1, report);
}

void printReportRow(FILE* report, int32_t frame, const FrameResults& spatial,
                    const TemporalResults& temporal) {
  printRow(report, REPORT_ROW, frame, spatial, temporal);
}

void printHeaders(FILE* report) {
  std::puts(CONSOLE_HEADER);
  if (report == nullptr) {
    std::puts("\n\n Could not create a log file\n");
  } else {
    printReportHeader(report);
  }
}

void printRows(FILE* report, int32_t frame, const FrameResults& spatial,
               const TemporalResults& temporal) {
  printRow(stdout, CONSOLE_ROW, frame, spatial, temporal);
  if (report != nullptr) printReportRow(report, frame, spatial, temporal);
}
