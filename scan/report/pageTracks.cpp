#include "scan/report/pageTracks.h"

#include <algorithm>
#include <cmath>

#include "scan/report/html.h"
#include "scan/report/pagePieces.h"
#include "scan/report/resultFacts.h"
#include "scan/report/trackSvg.h"

namespace {

constexpr const char* GROUPS[] = {"compression", "picture", "motion", "levels"};

// Of the values themselves: a report on some of a file's frames shows these.
ValueRange rangeOf(const Page& page, size_t indicator) {
  double min = std::nan("");
  double max = std::nan("");
  for (const Source& source : page.sources) {
    for (const double value : source.input->frames.values[indicator]) {
      min = std::fmin(min, value);
      max = std::fmax(max, value);
    }
  }
  std::vector<double> thresholds;
  for (const PageThreshold& threshold : page.thresholds[indicator]) {
    thresholds.push_back(threshold.value);
  }
  return shownRange(min, max, thresholds);
}

std::string trackSvgHtml(const Page& page, size_t indicator, const ValueRange& range) {
  std::string html = "<svg viewBox=\"0 0 " + std::to_string(SVG_COLUMNS) + " " +
                     std::to_string(SVG_HEIGHT) + "\" preserveAspectRatio=\"none\" role=\"img\"" +
                     " aria-label=\"" + INDICATOR_TABLE[indicator].title + " over time\">";
  for (const PageEvent& event : page.events) {
    if (event.track != indicator) continue;
    const double scale = SVG_COLUMNS / (page.span.end - page.span.start);
    char place[96];
    std::snprintf(place, sizeof place, "x=\"%.2f\" width=\"%.2f\"",
                  (event.span.start - page.span.start) * scale,
                  std::max(1.0, (event.span.end - event.span.start) * scale));
    html += std::string("<rect class=\"") + severityName(event.event->severity) + "\" " + place +
            " y=\"0\" height=\"100%\"/>";
  }
  for (const PageThreshold& threshold : page.thresholds[indicator]) {
    if (threshold.value < range.low || threshold.value > range.high) continue;
    char path[64];
    std::snprintf(path, sizeof path, "M0 %.1fH%d", svgHeightOf(threshold.value, range),
                  SVG_COLUMNS);
    html += "<path class=\"threshold " + std::string(severityName(threshold.severity)) + "\" d=\"" +
            path + "\"/>";
  }
  for (const Source& source : page.sources) {
    html += "<path class=\"line " + colourClass(source.place) + "\" d=\"" +
            envelopePath(source.times, source.input->frames.values[indicator], page.span, range,
                         isSparse(indicator)) +
            "\"/>";
  }
  return html + "</svg>";
}

std::string statisticsHtml(const Statistics& statistics) {
  if (statistics.n == 0) return "not measured";
  return roughText(statistics.min) + " to " + roughText(statistics.max) + ", mean " +
         roughText(statistics.mean);
}

std::string trackHtml(const Page& page, size_t indicator) {
  const IndicatorInfo& info = INDICATOR_TABLE[indicator];
  const ValueRange range = rangeOf(page, indicator);
  std::string html = std::string("<div class=\"track\" data-track=\"") + info.name +
                     "\">\n<div class=\"head\"><h4>" + info.title + " <small>" + info.unit +
                     "</small></h4>";
  for (const Source& source : page.sources) {
    html += "<p class=\"value " + colourClass(source.place) + "\"><output data-input=\"" +
            std::to_string(source.place) + "\"></output><small>" +
            statisticsHtml(source.input->record.indicators[indicator].statistics) + "</small></p>";
  }
  for (const PageThreshold& threshold : page.thresholds[indicator]) {
    html += "<p class=\"threshold " + std::string(severityName(threshold.severity)) + "\">" +
            escapeHtml(words(threshold.type)) + " at " + roughText(threshold.value) + "</p>";
  }
  html += "</div>\n<div class=\"plot\"><div class=\"static\"><span>" + roughText(range.high) +
          "</span><span>" + roughText(range.low) + "</span>" +
          trackSvgHtml(page, indicator, range) + "</div></div>\n</div>\n";
  return html;
}

}  // namespace

std::string tracksHtml(const Page& page) {
  if (!(page.span.end > page.span.start)) {
    return "<section><h2>Tracks</h2><p class=\"quiet\">No frame was analysed.</p></section>\n";
  }
  std::string html =
      "<section id=\"tracks\"><h2>Tracks</h2>\n<div id=\"bar\" hidden><div class=\"tools\">"
      "<button type=\"button\" id=\"previous\" title=\"previous event (p)\">\xe2\x80\xb9 Event"
      "</button><button type=\"button\" id=\"next\" title=\"next event (n)\">Event \xe2\x80\xba"
      "</button><button type=\"button\" id=\"out\" title=\"zoom out (-)\" aria-label=\"Zoom out\">"
      "\xe2\x88\x92</button><button type=\"button\" id=\"in\" title=\"zoom in (+)\" "
      "aria-label=\"Zoom in\">+</button><button type=\"button\" id=\"all\" title=\"show all (0)\">"
      "All</button><button type=\"button\" id=\"help\" title=\"keys (?)\">Keys</button></div>"
      "<div class=\"readouts\">";
  for (const Source& source : page.sources) {
    html += "<p class=\"readout\" data-input=\"" + std::to_string(source.place) + "\">" +
            (isComparison(page) ? keyHtml(source) + " " : "") +
            "<output class=\"timecode\"></output> <output class=\"frame\"></output> "
            "<output class=\"time\"></output> <output class=\"flags\"></output></p>";
  }
  html += "</div><div id=\"axis\" aria-hidden=\"true\"></div></div>\n<div id=\"plots\">\n";
  for (const char* const group : GROUPS) {
    html += std::string("<h3>") + group + "</h3>\n";
    for (size_t i = 0; i < INDICATORS; ++i) {
      if (std::string_view(INDICATOR_TABLE[i].group) == group) html += trackHtml(page, i);
    }
  }
  return html +
         "<div id=\"picked\" hidden></div><div id=\"selection\" hidden></div>"
         "<div id=\"cursor\" hidden></div>\n</div></section>\n";
}
