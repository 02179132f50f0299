#include "scan/report/report.h"

#include <algorithm>
#include <cmath>
#include <tuple>

#include "scan/events/eventList.h"
#include "scan/files/outputFile.h"
#include "scan/report/document.h"
#include "scan/report/framePayload.h"
#include "scan/report/html.h"
#include "scan/report/pageFiles.h"
#include "scan/report/resultFacts.h"
#include "scan/report/timeline.h"
#include "scan/report/trackSvg.h"

namespace {

constexpr char DASH[] = "\xe2\x80\x93";
constexpr int COLOURS = 8;            // of inputs: classes i0 to i7
constexpr int LANE = 14;              // pixels of height
constexpr size_t MOST_EVENTS = 2000;  // with a row of their own
constexpr double FINEST_GAP = 0.001;  // of the whole, between bands of events without a row
constexpr double NEAR_END = 0.03;
constexpr int AXIS_MARKS = 8;  // on the axis above the lanes
constexpr const char* GROUPS[] = {"compression", "picture", "motion", "levels"};

// One input and what is derived from it.
struct Source {
  const ReportInput* input;
  size_t place;
  double fps;  // usable
  Column<double> times;
};

struct PageEvent {
  size_t source;
  const Event* event;
  TimeSpan span;  // within the page's
  size_t track;   // INDICATORS: none
};

struct Threshold {
  double value;
  std::string type;
  std::string severity;
};

struct Page {
  std::vector<Source> sources;
  TimeSpan span;
  std::vector<PageEvent> events;         // the gravest, in order of time
  std::vector<PageEvent> others;         // where the others are; neighbours of a kind are one
  std::map<std::string, size_t> counts;  // of all events, by type
  std::array<std::vector<Threshold>, INDICATORS> thresholds;
};

// ---- what is shown

TimeSpan wholeSpan(const std::vector<Source>& sources) {
  TimeSpan whole = {0.0, 0.0};
  bool isFirst = true;
  for (const Source& source : sources) {
    if (source.times.empty()) continue;
    const TimeSpan span = axisSpan(source.input->frames, source.times, source.fps);
    whole =
        isFirst ? span : TimeSpan{std::min(whole.start, span.start), std::max(whole.end, span.end)};
    isFirst = false;
  }
  return whole;
}

// A frame's place on the axis of time; frames outside of the table have that of its nearest one.
double axisTimeOf(int64_t frame, const Source& source) {
  if (source.times.empty()) return 0.0;
  const auto last = static_cast<int64_t>(source.times.size()) - 1;
  const int64_t first = source.input->frames.firstFrame;
  const int64_t row = frame < first ? 0 : std::min(frame - first, last);
  return source.times[static_cast<size_t>(row)];
}

TimeSpan spanOf(const Event& event, const Source& source, const TimeSpan& page) {
  double start = event.startTime;
  double end = event.endTime;
  if (std::isnan(start)) start = axisTimeOf(event.firstFrame, source);
  if (std::isnan(end)) end = axisTimeOf(event.lastFrame, source) + 1.0 / source.fps;
  start = std::clamp(start, page.start, page.end);
  return {start, std::clamp(end, start, page.end)};
}

std::vector<PageEvent> collectEvents(const std::vector<Source>& sources, const TimeSpan& span) {
  std::vector<PageEvent> events;
  for (const Source& source : sources) {
    for (const Event& event : source.input->events) {
      events.push_back(
          {source.place, &event, spanOf(event, source, span), indicatorOfEvent(event.type)});
    }
  }
  return events;
}

void sortByTime(std::vector<PageEvent>* events) {
  std::stable_sort(events->begin(), events->end(), [](const PageEvent& a, const PageEvent& b) {
    return a.span.start < b.span.start;
  });
}

std::vector<PageEvent> joined(std::vector<PageEvent> events, double gap) {
  const auto kindOf = [](const PageEvent& event) {
    return std::tie(event.event->type, event.source, event.event->severity);
  };
  sortByTime(&events);
  std::stable_sort(events.begin(), events.end(),
                   [&](const PageEvent& a, const PageEvent& b) { return kindOf(a) < kindOf(b); });
  std::vector<PageEvent> bands;
  for (const PageEvent& event : events) {
    const bool isNear = !bands.empty() && kindOf(bands.back()) == kindOf(event) &&
                        event.span.start - bands.back().span.end < gap;
    if (!isNear) bands.push_back(event);
    bands.back().span.end = std::max(bands.back().span.end, event.span.end);
  }
  return bands;
}

// Gives the gravest events a row of their own, and says where the others are.
void shareEvents(std::vector<PageEvent> events, Page* page) {
  for (const PageEvent& event : events) ++page->counts[event.event->type];
  std::stable_sort(events.begin(), events.end(), [](const PageEvent& a, const PageEvent& b) {
    return a.event->severity > b.event->severity;
  });
  const auto end =
      events.begin() + static_cast<std::ptrdiff_t>(std::min(events.size(), MOST_EVENTS));
  page->events = {events.begin(), end};
  sortByTime(&page->events);
  page->others = joined({end, events.end()}, FINEST_GAP * (page->span.end - page->span.start));
}

// Thresholds that several inputs share are shown once.
void collectThresholds(const Json& result, Page* page) {
  const Json& all = memberOf(result, "thresholds");
  if (!all.is_object()) return;
  for (const auto& [type, json] : all.items()) {
    const size_t track = indicatorOfEvent(type);
    const double value = numberOf(json, "enter");
    if (track == INDICATORS || std::isnan(value)) continue;
    std::vector<Threshold>& known = page->thresholds[track];
    const bool isKnown =
        std::any_of(known.begin(), known.end(), [&, key = type](const Threshold& threshold) {
          return threshold.type == key && threshold.value == value;
        });
    if (!isKnown) known.push_back({value, type, severityOf(json)});
  }
}

Page collectPage(const std::vector<ReportInput>& inputs) {
  Page page;
  for (size_t i = 0; i < inputs.size(); ++i) {
    const double fps = usableRate(frameRateOf(inputs[i].result));
    page.sources.push_back({&inputs[i], i, fps, axisTimes(inputs[i].frames, fps)});
    collectThresholds(inputs[i].result, &page);
  }
  page.span = wholeSpan(page.sources);
  shareEvents(collectEvents(page.sources, page.span), &page);
  return page;
}

// ---- pieces of HTML

bool isComparison(const Page& page) {
  return page.sources.size() > 1;
}

std::string colourClass(size_t place) {
  return "i" + std::to_string(place % COLOURS);
}

std::string nameHtml(const Source& source) {
  std::string name = nameOf(source.input->result);
  if (name.empty()) name = "input " + std::to_string(source.place + 1);
  return "<bdi class=\"name\">" + escapeHtml(name) + "</bdi>";
}

// The name behind the colour of its lines, where there is more than one.
std::string keyHtml(const Source& source) {
  return "<span class=\"key " + colourClass(source.place) + "\"></span>" + nameHtml(source);
}

std::string percentOf(double time, const TimeSpan& span) {
  char text[32];
  const double part = (time - span.start) / (span.end - span.start);
  std::snprintf(text, sizeof text, "%.4f%%", 100.0 * std::clamp(part, 0.0, 1.0));
  return text;
}

std::string numberCell(double value, const std::string& text) {
  return "<td class=\"n\" data-v=\"" + shortestText(value) + "\">" + text + "</td>";
}

// ---- verdicts and facts

std::string listHtml(const char* name, const std::vector<std::string>& texts) {
  if (texts.empty()) return "";
  std::string html = std::string("<ul class=\"") + name + "\">";
  for (const std::string& text : texts) html += "<li>" + escapeHtml(text) + "</li>";
  return html + "</ul>";
}

std::vector<std::string> warningsOf(const Json& result) {
  std::vector<std::string> warnings = textsOf(result, "warnings");
  if (flagOf(result, "truncated")) {
    warnings.insert(warnings.begin(), "The file ends before it should.");
  }
  return warnings;
}

std::string errorHtml(const Json& result) {
  const std::string error = textOf(result, "error");
  return error.empty() ? "" : "<p class=\"error\">" + escapeHtml(error) + "</p>";
}

std::string verdictHtml(const Page& page, const Source& source) {
  const Json& result = source.input->result;
  const Verdict verdict = verdictOf(result);
  return std::string("<section class=\"verdict ") + verdictKey(verdict) + "\"><h1>" +
         (isComparison(page) ? keyHtml(source) : nameHtml(source)) + "</h1><p class=\"mark\">" +
         verdictTitle(verdict) + "</p>" + listHtml("reasons", textsOf(result, "reasons")) +
         errorHtml(result) + listHtml("warnings", warningsOf(result)) + "</section>\n";
}

std::string factListHtml(const Source& source) {
  std::string html = "<dl class=\"facts\">";
  for (const Fact& fact : factsOf(source.input->result)) {
    html +=
        std::string("<div><dt>") + fact.title + "</dt><dd>" + escapeHtml(fact.text) + "</dd></div>";
  }
  return html + "</dl>\n";
}

// Empty when it is not among them.
std::string factNamed(const std::vector<Fact>& facts, std::string_view title) {
  for (const Fact& fact : facts) {
    if (fact.title == title) return fact.text;
  }
  return "";
}

// Facts that are not the same for all inputs stand out.
std::string factRowHtml(const std::vector<std::vector<Fact>>& inputs, const char* title) {
  std::string cells;
  bool isSame = true;
  for (const std::vector<Fact>& facts : inputs) {
    const std::string text = factNamed(facts, title);
    cells += "<td>" + escapeHtml(text) + "</td>";
    isSame = isSame && text == factNamed(inputs.front(), title);
  }
  return std::string(isSame ? "<tr>" : "<tr class=\"differs\">") + "<th scope=\"row\">" + title +
         "</th>" + cells + "</tr>";
}

std::string factTableHtml(const Page& page) {
  std::string html = "<div class=\"scroll\"><table class=\"facts\"><thead><tr><td></td>";
  std::vector<std::vector<Fact>> inputs;
  std::vector<Fact> rows;  // of all inputs
  for (const Source& source : page.sources) {
    html += "<th scope=\"col\">" + keyHtml(source) + "</th>";
    inputs.push_back(factsOf(source.input->result));
    for (const Fact& fact : inputs.back()) {
      if (factNamed(rows, fact.title).empty()) rows.push_back(fact);
    }
  }
  html += "</tr></thead><tbody>";
  for (const Fact& row : rows) html += factRowHtml(inputs, row.title);
  return html + "</tbody></table></div>\n";
}

std::string headHtml(const Page& page) {
  std::string html = "<header>\n<div class=\"verdicts\">";
  for (const Source& source : page.sources) html += verdictHtml(page, source);
  html += "</div>\n";
  if (isComparison(page)) return html + factTableHtml(page) + "</header>\n";
  for (const Source& source : page.sources) html += factListHtml(source);
  return html + "</header>\n";
}

// ---- lanes

std::string otherEventsHtml(const Page& page) {
  if (page.others.empty()) return "";
  size_t all = 0;
  for (const auto& [type, count] : page.counts) all += count;
  return "<p class=\"quiet\">Rows are shown for the " + std::to_string(page.events.size()) +
         " gravest of " + std::to_string(all) +
         " events. All are in events.csv and result.json.</p>\n";
}

std::string bandHtml(const Page& page, const PageEvent& event, const std::string& title) {
  char width[32];
  std::snprintf(width, sizeof width, "%.4f%%",
                100.0 * (event.span.end - event.span.start) / (page.span.end - page.span.start));
  const auto top = static_cast<int>(event.source) * LANE;
  return std::string("<rect class=\"") + severityName(event.event->severity) + "\" x=\"" +
         percentOf(event.span.start, page.span) + "\" y=\"" + std::to_string(top + 2) +
         "\" width=\"" + width + "\" height=\"" + std::to_string(LANE - 4) + "\"><title>" + title +
         "</title></rect>";
}

std::string linkedBandHtml(const Page& page, size_t place) {
  const PageEvent& event = page.events[place];
  const std::string title = escapeHtml(words(event.event->type)) + ", " +
                            severityName(event.event->severity) + ", " +
                            timecode(event.event->firstFrame, page.sources[event.source].fps);
  // The table is the keyboard's way to an event.
  return "<a href=\"#event-" + std::to_string(place) + "\" tabindex=\"-1\" data-event=\"" +
         std::to_string(place) + "\">" + bandHtml(page, event, title) + "</a>";
}

std::string markHtml(const TimeSpan& span, double mark, double step) {
  const std::string x = percentOf(mark, span);
  // Centred, it would reach beyond the page.
  const bool isLast = span.end - mark < NEAR_END * (span.end - span.start);
  std::string html = "<line y1=\"12\" y2=\"16\" x1=\"";
  html.append(x).append("\" x2=\"").append(x).append("\"/><text y=\"10\" x=\"").append(x);
  html.append(isLast ? "\" class=\"last\">" : "\">").append(markText(mark, step));
  return html + "</text>";
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
  std::string html = "<div class=\"lane\"><span>" + escapeHtml(words(type)) + " <small>" +
                     std::to_string(count) + "</small></span><svg class=\"bands\" height=\"" +
                     std::to_string(LANE * static_cast<int>(page.sources.size())) + "\">";
  for (size_t i = 0; isComparison(page) && i < page.sources.size(); ++i) {
    html += "<rect class=\"row " + colourClass(i) + "\" x=\"0\" width=\"100%\" y=\"" +
            std::to_string((static_cast<int>(i) + 1) * LANE - 1) + "\" height=\"1\"/>";
  }
  for (const PageEvent& event : page.others) {
    if (event.event->type == type) html += bandHtml(page, event, "events without a row");
  }
  for (size_t i = 0; i < page.events.size(); ++i) {
    if (page.events[i].event->type == type) html += linkedBandHtml(page, i);
  }
  return html + "</svg></div>\n";
}

std::string lanesHtml(const Page& page) {
  if (!(page.span.end > page.span.start)) return "";
  std::string html = "<section id=\"lanes\"><h2>Events over time</h2>\n" + otherEventsHtml(page) +
                     laneAxisHtml(page);
  if (page.counts.empty()) html += "<p class=\"quiet\">No events.</p>\n";
  for (const auto& [type, count] : page.counts) html += laneHtml(page, type, count);
  return html + "</section>\n";
}

// ---- tracks

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
  for (const Threshold& threshold : page.thresholds[indicator]) {
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
  for (const Threshold& threshold : page.thresholds[indicator]) {
    if (threshold.value < range.low || threshold.value > range.high) continue;
    char path[64];
    std::snprintf(path, sizeof path, "M0 %.1fH%d", svgHeightOf(threshold.value, range),
                  SVG_COLUMNS);
    html += "<path class=\"threshold " + threshold.severity + "\" d=\"" + path + "\"/>";
  }
  for (const Source& source : page.sources) {
    html += "<path class=\"line " + colourClass(source.place) + "\" d=\"" +
            envelopePath(source.times, source.input->frames.values[indicator], page.span, range,
                         isSparse(indicator)) +
            "\"/>";
  }
  return html + "</svg>";
}

std::string statisticsHtml(const Json& result, const char* name) {
  const Json& statistics = memberOf(memberOf(result, "indicators"), name);
  const double n = numberOf(statistics, "n");
  if (!(n > 0.0)) return "not measured";
  return roughText(numberOf(statistics, "min")) + " to " + roughText(numberOf(statistics, "max")) +
         ", mean " + roughText(numberOf(statistics, "mean"));
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
            statisticsHtml(source.input->result, info.name) + "</small></p>";
  }
  for (const Threshold& threshold : page.thresholds[indicator]) {
    html += "<p class=\"threshold " + threshold.severity + "\">" +
            escapeHtml(words(threshold.type)) + " at " + roughText(threshold.value) + "</p>";
  }
  html += "</div>\n<div class=\"plot\"><div class=\"static\"><span>" + roughText(range.high) +
          "</span><span>" + roughText(range.low) + "</span>" +
          trackSvgHtml(page, indicator, range) + "</div></div>\n</div>\n";
  return html;
}

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

// ---- the table of events

std::string pictureHtml(const ReportInput& input, int64_t frame, const char* what) {
  const auto found = input.thumbnails.find(frame);
  if (found == input.thumbnails.end()) return "";
  const std::string number = std::to_string(frame);
  return "<figure><img decoding=\"async\" alt=\"frame " + number +
         "\" src=\"data:image/jpeg;base64," + base64(found->second) + "\"><figcaption>" + what +
         "</figcaption></figure>";
}

// A frame that is more than one of them is shown once.
std::string picturesHtml(const ReportInput& input, const Event& event) {
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

// ---- what the script works with

Json modelOf(const Page& page) {
  Json tracks = Json::array();
  for (size_t i = 0; i < INDICATORS; ++i) {
    Json thresholds = Json::array();
    for (const Threshold& threshold : page.thresholds[i]) {
      thresholds.push_back({{"value", threshold.value}, {"severity", threshold.severity}});
    }
    tracks.push_back({{"name", INDICATOR_TABLE[i].name},
                      {"isBridged", isSparse(i)},
                      {"thresholds", thresholds}});
  }
  Json events = Json::array();
  for (const PageEvent& event : page.events) {
    events.push_back({{"input", event.source},
                      {"type", words(event.event->type)},
                      {"severity", severityName(event.event->severity)},
                      {"start", event.span.start},
                      {"end", event.span.end},
                      {"peak", event.event->peakFrame},
                      {"track", event.track == INDICATORS ? Json() : Json(event.track)}});
  }
  return {
      {"start", page.span.start}, {"end", page.span.end}, {"tracks", tracks}, {"events", events}};
}

// Writes the model and the packed frames of every input.
void writeData(const Page& page, FILE* out) {
  Json model = modelOf(page);
  model["inputs"] = Json::array();
  for (const Source& source : page.sources) {
    const FrameTable& table = source.input->frames;
    model["inputs"].push_back({{"fps", source.fps},
                               {"firstFrame", table.firstFrame},
                               {"rows", table.rows()},
                               {"columns", describeColumns(table)}});
  }
  writeText("<script type=\"application/json\" id=\"model\">" + scriptJson(model) + "</script>\n",
            out);
  for (const Source& source : page.sources) {
    writeText("<script type=\"application/octet-stream\" id=\"frames-" +
                  std::to_string(source.place) + "\">",
              out);
    writeColumns(source.input->frames, model["inputs"][source.place]["columns"], out);
    writeText("</script>\n", out);
  }
}

std::string titleOf(const Page& page) {
  std::string title;
  for (const Source& source : page.sources) {
    title += (title.empty() ? "" : " / ") + nameOf(source.input->result) + ": " +
             verdictTitle(verdictOf(source.input->result));
  }
  return title;
}

}  // namespace

void writeReport(const std::vector<ReportInput>& inputs, FILE* out) {
  const Page page = collectPage(inputs);
  Document document;
  document.title = titleOf(page);
  for (const std::string_view style : {UPLOT_CSS, COMMON_CSS, REPORT_CSS}) document.style += style;
  std::string uplot = "/*\n";
  uplot.append(UPLOT_LICENSE).append("*/\n").append(UPLOT_JS);
  document.scripts.push_back(uplot);
  for (const std::string_view script : {SORTABLE_JS, FRAMES_JS, TRACKS_JS, EVENTS_JS, REPORT_JS}) {
    document.scripts.emplace_back(script);
  }
  writeText(documentStart(document) + "<main>\n", out);
  writeText(headHtml(page) + lanesHtml(page), out);
  writeText(tracksHtml(page), out);
  writeText(eventTableHtml(page) + "</main>\n", out);
  writeData(page, out);
  writeText(documentEnd(document), out);
}
