#include "scan/report/pageLanes.h"

#include <fmt/core.h>
#include <algorithm>

#include "scan/report/html.h"
#include "scan/report/pagePieces.h"
#include "scan/report/resultFacts.h"

namespace {

constexpr int LANE = 14;  // pixels of height
constexpr double NEAR_END = 0.03;
constexpr int AXIS_MARKS = 8;  // on the axis above the lanes

std::string bandHtml(const Page& page, const PageEvent& event, const std::string& title) {
  const double part = (event.span.end - event.span.start) / (page.span.end - page.span.start);
  return fmt::format(
      R"(<rect class="{}" x="{}" y="{}" width="{:.4f}%" height="{}"><title>{}</title></rect>)",
      severityName(event.event->severity), percentOf(event.span.start, page.span),
      static_cast<int>(event.source) * LANE + 2, 100.0 * part, LANE - 4, title);
}

std::string linkedBandHtml(const Page& page, size_t place) {
  const PageEvent& event = page.events[place];
  const std::string title = escapeHtml(words(event.event->type)) + ", " +
                            severityName(event.event->severity) + ", " +
                            timecode(event.event->firstFrame, page.sources[event.source].fps);
  // The table is the keyboard's way to an event.
  return fmt::format(R"(<a href="#event-{0}" tabindex="-1" data-event="{0}">{1}</a>)", place,
                     bandHtml(page, event, title));
}

std::string markHtml(const TimeSpan& span, double mark, double step) {
  const std::string x = percentOf(mark, span);
  // Centred, it would reach beyond the page.
  const bool isLast = span.end - mark < NEAR_END * (span.end - span.start);
  return fmt::format(
      R"(<line y1="12" y2="16" x1="{0}" x2="{0}"/><text y="10" x="{0}"{1}>{2}</text>)", x,
      isLast ? R"( class="last")" : "", markText(mark, step));
}

std::string laneAxisHtml(const Page& page) {
  const std::vector<double> marks = axisMarks(page.span, AXIS_MARKS);
  const double step = marks.size() > 1 ? marks[1] - marks[0] : 1.0;
  std::string html =
      "<div class=\"lane axis\"><span></span><svg height=\"16\" aria-hidden=\"true\">";
  for (const double mark : marks) html += markHtml(page.span, mark, step);
  return html + "</svg></div>\n";
}

std::string laneHtml(const Page& page, const std::string& type, size_t count) {
  std::string html = fmt::format(
      R"(<div class="lane"><span>{} <small>{}</small></span><svg class="bands" height="{}">)",
      escapeHtml(words(type)), count, LANE * page.sources.size());
  for (size_t i = 0; isComparison(page) && i < page.sources.size(); ++i) {
    html += fmt::format(R"(<rect class="row {}" x="0" width="100%" y="{}" height="1"/>)",
                        colourClass(i), (i + 1) * LANE - 1);
  }
  for (const PageEvent& event : page.others) {
    if (event.event->type == type) html += bandHtml(page, event, "events without a row");
  }
  for (size_t i = 0; i < page.events.size(); ++i) {
    if (page.events[i].event->type == type) html += linkedBandHtml(page, i);
  }
  return html + "</svg></div>\n";
}

}  // namespace

std::string lanesHtml(const Page& page) {
  if (!(page.span.end > page.span.start)) return "";
  std::string html = "<section id=\"lanes\"><h2>Events over time</h2>\n" + otherEventsHtml(page) +
                     laneAxisHtml(page);
  if (page.counts.empty()) html += "<p class=\"quiet\">No events.</p>\n";
  for (const auto& [type, count] : page.counts) html += laneHtml(page, type, count);
  return html + "</section>\n";
}

std::string otherEventsHtml(const Page& page) {
  if (page.others.empty()) return "";
  size_t all = 0;
  for (const auto& [type, count] : page.counts) all += count;
  return fmt::format(
      "<p class=\"quiet\">Rows are shown for the {} gravest of {} events. "
      "All are in events.csv and result.json.</p>\n",
      page.events.size(), all);
}
