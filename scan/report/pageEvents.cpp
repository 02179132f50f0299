#include "scan/report/pageEvents.h"

#include <fmt/core.h>
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
  return fmt::format(
      R"(<figure><img decoding="async" alt="frame {}" src="data:image/jpeg;base64,{}">)"
      R"(<figcaption>{}</figcaption></figure>)",
      frame, base64(found->second), what);
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
  const double duration = durationOf(event);
  std::string edges;
  if (event.isAtStart) edges += " <small>from the start</small>";
  if (event.isAtEnd) edges += " <small>to the end</small>";

  std::string html = fmt::format(R"(<tr id="event-{0}" data-event="{0}">)", place);
  if (isComparison(page)) html += "<td>" + keyHtml(source) + "</td>";
  html +=
      fmt::format(R"(<td>{0}{1}</td><td data-v="{2}"><span class="severity {3}">{3}</span></td>)",
                  escapeHtml(words(event.type)), edges, static_cast<int>(event.severity),
                  severityName(event.severity));
  html += numberCell(span.start, fmt::format(R"(<a href="#tracks">{}</a>)",
                                             timecode(event.firstFrame, source.fps)));
  html += numberCell(duration, std::isnan(duration) ? DASH : roughText(duration) + " s");
  std::string frames = std::to_string(event.firstFrame);
  if (event.lastFrame != event.firstFrame) frames += DASH + std::to_string(event.lastFrame);
  html += numberCell(static_cast<double>(event.firstFrame), frames);
  html += numberCell(static_cast<double>(event.peakFrame), std::to_string(event.peakFrame));
  html += numberCell(event.peakValue, roughText(event.peakValue));
  html += numberCell(event.threshold, roughText(event.threshold));
  return html +
         fmt::format("<td class=\"pictures\">{}</td></tr>\n", picturesHtml(*source.input, event));
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
