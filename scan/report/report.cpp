#include "scan/report/report.h"

#include "scan/files/outputFile.h"
#include "scan/report/document.h"
#include "scan/report/pageContent.h"
#include "scan/report/pageData.h"
#include "scan/report/pageEvents.h"
#include "scan/report/pageFiles.h"
#include "scan/report/pageHead.h"
#include "scan/report/pageLanes.h"
#include "scan/report/pageTracks.h"
#include "scan/report/resultFacts.h"

namespace {

std::string titleOf(const Page& page) {
  std::string title;
  for (const Source& source : page.sources) {
    title += (title.empty() ? "" : " / ") + nameOf(source.input->record) + ": " +
             verdictTitle(source.input->record.judgement.verdict);
  }
  return title;
}

}  // namespace

void writeReport(const std::vector<const VideoResult*>& inputs, FILE* out) {
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
