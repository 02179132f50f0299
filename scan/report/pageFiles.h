// Sources of the pages, built into the program by embed.cmake.
#ifndef LUMASCAN_PAGE_FILES_H
#define LUMASCAN_PAGE_FILES_H

#include <string_view>

// scan/page
extern const std::string_view COMMON_CSS;
extern const std::string_view REPORT_CSS;
extern const std::string_view INDEX_CSS;
extern const std::string_view SORTABLE_JS;
extern const std::string_view FRAMES_JS;
extern const std::string_view TRACKS_JS;
extern const std::string_view EVENTS_JS;
extern const std::string_view REPORT_JS;
extern const std::string_view INDEX_JS;

// uPlot, which draws the tracks
extern const std::string_view UPLOT_JS;
extern const std::string_view UPLOT_CSS;
extern const std::string_view UPLOT_LICENSE;

#endif
