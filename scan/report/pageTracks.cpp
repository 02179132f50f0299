#include "scan/report/pageTracks.h"

#include <fmt/core.h>
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
  std::string html = fmt::format(
      R"(<svg viewBox="0 0 {} {}" preserveAspectRatio="none" role="img" aria-label="{} over time">)",
      SVG_COLUMNS, SVG_HEIGHT, INDICATOR_TABLE[indicator].title);
  for (const PageEvent& event : page.events) {
    if (event.track != indicator) continue;
    const double scale = SVG_COLUMNS / (page.span.end - page.span.start);
    html += fmt::format(R"(<rect class="{}" x="{:.2f}" width="{:.2f}" y="0" height="100%"/>)",
                        severityName(event.event->severity),
                        (event.span.start - page.span.start) * scale,
                        std::max(1.0, (event.span.end - event.span.start) * scale));
  }
  for (const PageThreshold& threshold : page.thresholds[indicator]) {
    if (threshold.value < range.low || threshold.value > range.high) continue;
    html += fmt::format(R"(<path class="threshold {}" d="M0 {:.1f}H{}"/>)",
                        severityName(threshold.severity), svgHeightOf(threshold.value, range),
                        SVG_COLUMNS);
  }
  for (const Source& source : page.sources) {
    html += fmt::format(R"(<path class="line {}" d="{}"/>)", colourClass(source.place),
                        envelopePath(source.times, source.input->frames.values[indicator],
                                     page.span, range, isSparse(indicator)));
  }
  return html + "</svg>";
}

std::string statisticsHtml(const Statistics& statistics) {
  if (statistics.n == 0) return "not measured";
  return fmt::format("{} to {}, mean {}", roughText(statistics.min), roughText(statistics.max),
                     roughText(statistics.mean));
}

std::string trackHtml(const Page& page, size_t indicator) {
  const IndicatorInfo& info = INDICATOR_TABLE[indicator];
  const ValueRange range = rangeOf(page, indicator);
  std::string html = fmt::format(
      "<div class=\"track\" data-track=\"{}\">\n<div class=\"head\"><h4>{} <small>{}</small></h4>",
      info.name, info.title, info.unit);
  for (const Source& source : page.sources) {
    html +=
        fmt::format(R"(<p class="value {}"><output data-input="{}"></output><small>{}</small></p>)",
                    colourClass(source.place), source.place,
                    statisticsHtml(source.input->record.indicators[indicator].statistics));
  }
  for (const PageThreshold& threshold : page.thresholds[indicator]) {
    html += fmt::format(R"(<p class="threshold {}">{} at {}</p>)", severityName(threshold.severity),
                        escapeHtml(words(threshold.type)), roughText(threshold.value));
  }
  html += fmt::format(
      "</div>\n<div class=\"plot\"><div class=\"static\"><span>{}</span><span>{}</span>{}</div>"
      "</div>\n</div>\n",
      roughText(range.high), roughText(range.low), trackSvgHtml(page, indicator, range));
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
    html +=
        fmt::format(R"(<p class="readout" data-input="{}">{}<output class="timecode"></output> )"
                    R"(<output class="frame"></output> <output class="time"></output> )"
                    R"(<output class="flags"></output></p>)",
                    source.place, isComparison(page) ? keyHtml(source) + " " : "");
  }
  html += "</div><div id=\"axis\" aria-hidden=\"true\"></div></div>\n<div id=\"plots\">\n";
  for (const char* const group : GROUPS) {
    html += fmt::format("<h3>{}</h3>\n", group);
    for (size_t i = 0; i < INDICATORS; ++i) {
      if (std::string_view(INDICATOR_TABLE[i].group) == group) html += trackHtml(page, i);
    }
  }
  return html +
         "<div id=\"picked\" hidden></div><div id=\"selection\" hidden></div>"
         "<div id=\"cursor\" hidden></div>\n</div></section>\n";
}
