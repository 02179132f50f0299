#include "scan/report/pageData.h"

#include "scan/files/json.h"
#include "scan/files/outputFile.h"
#include "scan/report/framePayload.h"
#include "scan/report/html.h"
#include "scan/report/resultFacts.h"

namespace {

Json modelOf(const Page& page) {
  Json tracks = Json::array();
  for (size_t i = 0; i < INDICATORS; ++i) {
    Json thresholds = Json::array();
    for (const PageThreshold& threshold : page.thresholds[i]) {
      thresholds.push_back(
          {{"value", threshold.value}, {"severity", severityName(threshold.severity)}});
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

}  // namespace

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
