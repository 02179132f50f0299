#include "scan/report/pageEvents.h"

#include <cmath>
#include <tuple>

#include "scan/events/eventList.h"
#include "scan/report/html.h"
#include "scan/report/pageLanes.h"
#include "scan/report/pagePieces.h"
#include "scan/report/resultFacts.h"

namespace {

std::string pictureHtml(const VideoResult& input, int64_t frame, const char* what) {
  const auto found = input.thumbnails.find(frame);
  if (found == input.thumbnails.end()) return "";
  const std::string number = std::to_string(frame);
  return "<figure><img decoding=\"async\" alt=\"frame " + number +
         "\" src=\"data:image/jpeg;base64," + base64(found->second) + "\"><figcaption>" + what +
         "</figcaption></figure>";
}

// A frame that is more than one of them is shown once.
std::string picturesHtml(const VideoResult& input, const Event& event) {
  const auto [first, peak, last] = std::tuple(event.firstFrame, event.peakFrame, event.lastFrame);
  std::string html = pictureHtml(input, first, peak == first ? "start, peak" : "start");
  if (peak != first) html += pictureHtml(input, peak, peak == last ? "peak, end" : "peak");
  if (last != first && last != peak) html += pictureHtml(input, last, "end");
  return html;
}

std::string eventRowHtml(const Page& page, size_t place) {
  const TimeSpan& span = page.events[place].span;
  const Event& event = *page.events[place].event;
  const Source& source = page.sources[page.events[place].source];
  const std::string severity = severityName(event.severity);
  const std::string rank = std::to_string(static_cast<int>(event.severity));
  const double duration = durationOf(event);
  std::string edges;
  if (event.isAtStart) edges += " <small>from the start</small>";
  if (event.isAtEnd) edges += " <small>to the end</small>";

  std::string html = "<tr id=\"event-" + std::to_string(place) + "\" data-event=\"" +
                     std::to_string(place) + "\">";
  if (isComparison(page)) html += "<td>" + keyHtml(source) + "</td>";
  html += "<td>" + escapeHtml(words(event.type)) + edges + "</td><td data-v=\"" + rank +
          "\"><span class=\"severity " + severity + "\">" + severity + "</span></td>";
  html += numberCell(span.start,
                     "<a href=\"#tracks\">" + timecode(event.firstFrame, source.fps) + "</a>");
  html += numberCell(duration, std::isnan(duration) ? DASH : roughText(duration) + " s");
  std::string frames = std::to_string(event.firstFrame);
  if (event.lastFrame != event.firstFrame) frames += DASH + std::to_string(event.lastFrame);
  html += numberCell(static_cast<double>(event.firstFrame), frames);
  html += numberCell(static_cast<double>(event.peakFrame), std::to_string(event.peakFrame));
  html += numberCell(event.peakValue, roughText(event.peakValue));
  html += numberCell(event.threshold, roughText(event.threshold));
  return html + "<td class=\"pictures\">" + picturesHtml(*source.input, event) + "</td></tr>\n";
}

}  // namespace

std::string eventTableHtml(const Page& page) {
  if (page.events.empty()) return "";
  std::string html =
      "<section id=\"events\"><h2>Events</h2>\n" + otherEventsHtml(page) +
      "<div class=\"filter\" hidden>"
      "<label>Type <select id=\"type\"><option value=\"\">all</option></select></label>"
      "<label>Severity <select id=\"severity\"><option value=\"\">all</option>"
      "<option>fail</option><option>warn</option><option>info</option></select></label>"
      "<label>Text <input id=\"text\" type=\"search\"></label>"
      "<output id=\"count\"></output></div>\n"
      "<div class=\"scroll\"><table class=\"events\"><thead><tr>";
  if (isComparison(page)) html += "<th scope=\"col\">Input</th>";
  html +=
      "<th scope=\"col\">Type</th><th scope=\"col\">Severity</th>"
      "<th scope=\"col\" class=\"n\">Start</th><th scope=\"col\" class=\"n\">Duration</th>"
      "<th scope=\"col\" class=\"n\">Frames</th><th scope=\"col\" class=\"n\">Peak at</th>"
      "<th scope=\"col\" class=\"n\">Peak</th><th scope=\"col\" class=\"n\">Threshold</th>"
      "<td>Pictures</td></tr></thead>\n<tbody>\n";
  for (size_t i = 0; i < page.events.size(); ++i) html += eventRowHtml(page, i);
  return html + "</tbody></table></div></section>\n";
}
