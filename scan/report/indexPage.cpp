#include "scan/report/indexPage.h"

#include <fmt/core.h>
#include <algorithm>
#include <array>
#include <cmath>
#include <tuple>

#include "scan/analysis/frameTable.h"
#include "scan/files/outputFile.h"
#include "scan/numbers/decimals.h"
#include "scan/report/document.h"
#include "scan/report/html.h"
#include "scan/report/pageFiles.h"
#include "scan/report/resultFacts.h"
#include "scan/report/timeline.h"

namespace {

constexpr int SPARK_W = 63;  // 64 stretches
constexpr int SPARK_H = 20;

struct Row {
  const IndexEntry* entry;
  std::array<const char*, INDICATORS> worst{};  // severity of its events; "" for none
};

struct Range {
  double low = std::nan("");
  double high = std::nan("");
};

Row rowOf(const IndexEntry& entry) {
  Row row{&entry};
  row.worst.fill("");
  for (const auto& [type, severity] : entry.events.worst) {
    const size_t indicator = indicatorOfEvent(type);
    if (indicator == INDICATORS || severity == Severity::INFO) continue;
    const char*& worst = row.worst[indicator];
    if (worst != std::string_view("fail")) worst = severityName(severity);
  }
  return row;
}

Verdict verdictOf(const Row& row) {
  return row.entry->record.judgement.verdict;
}

const std::string& pathOf(const Row& row) {
  return row.entry->record.input.path;
}

int64_t countOf(const Row& row, Severity severity) {
  return row.entry->events.counts.at(static_cast<size_t>(severity));
}

bool isWorse(const Row& a, const Row& b) {
  const auto rank = [](const Row& row) {
    return std::tuple(verdictOf(row), -countOf(row, Severity::FAIL), -countOf(row, Severity::WARN),
                      pathOf(row));
  };
  return rank(a) < rank(b);
}

// All inputs share an indicator's scale, so that rows can be compared.
Range rangeOf(const std::vector<IndexEntry>& entries, size_t indicator) {
  Range range;
  for (const IndexEntry& entry : entries) {
    for (const double mean : entry.record.indicators[indicator].overview) {
      range.low = std::fmin(range.low, mean);
      range.high = std::fmax(range.high, mean);
    }
  }
  return range;
}

// Undefined stretches interrupt the line, unless they are meant to be there (isBridged).
std::string sparkPath(const std::vector<double>& overview, const Range& range, bool isBridged) {
  std::string path;
  const size_t count = overview.size();
  bool isStart = true;
  for (size_t i = 0; i < count; ++i) {
    if (std::isnan(overview[i])) {
      isStart = isStart || !isBridged;
      continue;
    }
    const double spread = range.high / 2.0 - range.low / 2.0;
    const double part = spread > 0.0 ? (overview[i] / 2.0 - range.low / 2.0) / spread : 0.0;
    const auto y = static_cast<int>(std::lround((1.0 - part) * SPARK_H));
    const size_t x = count > 1 ? i * SPARK_W / (count - 1) : 0;
    path += fmt::format("{}{} {}", isStart ? 'M' : 'L', x, y);
    if (isStart) path += "h1";  // a lone one can be seen, too
    isStart = false;
  }
  return path;
}

std::string sparkHtml(const Row& row, size_t indicator, const Range& range) {
  const IndicatorInfo& info = INDICATOR_TABLE[indicator];
  const auto& [statistics, overview] = row.entry->record.indicators[indicator];
  const std::string text =
      fmt::format("{}: mean {}, {} to {}", info.title, roughText(statistics.mean),
                  roughText(statistics.min), roughText(statistics.max));
  const std::string path = sparkPath(overview, range, isSparse(indicator));
  const std::string picture =
      path.empty()
          ? "\xe2\x80\x93"
          : fmt::format(R"(<svg viewBox="-1 -2 {} {}" preserveAspectRatio="none" role="img" )"
                        R"(aria-label="{}"><title>{}</title><path d="{}"/></svg>)",
                        SPARK_W + 2, SPARK_H + 4, text, text, path);
  return fmt::format(R"(<td class="spark {}" data-v="{}"><span class="label">{}</span>{}</td>)",
                     row.worst[indicator], shortestText(statistics.mean), info.title, picture);
}

std::string countHtml(const Row& row, Severity severity) {
  const char* const title = severityName(severity);
  const int64_t count = countOf(row, severity);
  return fmt::format(R"(<td class="n count {}" data-v="{}"><span class="label">{} </span>{}</td>)",
                     count > 0 ? title : "none", count, title, count);
}

// A colon in the first part of a relative reference would make that part a scheme.
std::string linkOf(const std::string& folderUri) {
  const std::string first = folderUri.substr(0, folderUri.find('/'));
  const bool isScheme = first.find(':') != std::string::npos && first != "file:";
  return (isScheme ? "./" : "") + folderUri + "/report.html";
}

std::string rowHtml(const Row& row, size_t place, const std::array<Range, INDICATORS>& ranges) {
  const ResultRecord& record = row.entry->record;
  const double duration = durationOf(record);
  std::string html = fmt::format(R"(<tr><td data-v="{}"><span class="badge {}">{}</span></td>)"
                                 R"(<td class="input"><a href="{}"><bdi>{}</bdi></a>)",
                                 place, verdictName(verdictOf(row)), verdictTitle(verdictOf(row)),
                                 escapeHtml(linkOf(row.entry->folderUri)),
                                 escapeHtml(pathOf(row).empty() ? "(no name)" : pathOf(row)));
  for (const std::string& reason : record.judgement.reasons) {
    html += "<p>" + escapeHtml(reason) + "</p>";
  }
  if (row.entry->isVideoGone) html += "<p>the video is not there any more</p>";
  html +=
      fmt::format(R"(</td>{}{}{}<td class="n" data-v="{}">{}</td>)", countHtml(row, Severity::FAIL),
                  countHtml(row, Severity::WARN), countHtml(row, Severity::INFO),
                  shortestText(duration), durationText(duration));
  for (size_t i = 0; i < INDICATORS; ++i) html += sparkHtml(row, i, ranges[i]);
  return html + "</tr>\n";
}

std::string summaryHtml(const std::vector<Row>& rows) {
  std::string html = "<p class=\"summary\">";
  for (const Verdict verdict :
       {Verdict::INCOMPLETE, Verdict::FAIL, Verdict::ATTENTION, Verdict::PASS}) {
    const auto count = std::count_if(rows.begin(), rows.end(),
                                     [&](const Row& row) { return verdictOf(row) == verdict; });
    if (count > 0) {
      html += fmt::format(R"(<span class="badge {}">{} {}</span> )", verdictName(verdict), count,
                          verdictTitle(verdict));
    }
  }
  return html + "</p>\n";
}

}  // namespace

void writeIndex(const std::vector<IndexEntry>& entries, FILE* out) {
  std::vector<Row> rows;
  rows.reserve(entries.size());
  for (const IndexEntry& entry : entries) rows.push_back(rowOf(entry));
  std::stable_sort(rows.begin(), rows.end(), isWorse);
  std::array<Range, INDICATORS> ranges;
  for (size_t i = 0; i < INDICATORS; ++i) ranges[i] = rangeOf(entries, i);

  Document document;
  document.title = "lumascan: all inputs";
  document.style.append(COMMON_CSS).append(INDEX_CSS);
  document.scripts = {std::string(SORTABLE_JS), std::string(INDEX_JS)};
  writeText(documentStart(document), out);

  std::string html =
      "<main>\n<h1>" + std::to_string(rows.size()) + (rows.size() == 1 ? " input" : " inputs") +
      "</h1>\n" + summaryHtml(rows) +
      "<div class=\"filter\" hidden><label>Verdict <select id=\"verdict\">"
      "<option value=\"\">all</option><option>Incomplete</option>"
      "<option>Fail</option><option>Attention</option><option>Pass</option>"
      "</select></label><label>Text <input id=\"text\" type=\"search\"></label>"
      "<output id=\"count\"></output></div>\n<div class=\"scroll\">"
      "<table class=\"index\"><thead><tr><th scope=\"col\">Verdict</th>"
      "<th scope=\"col\">Input</th><th scope=\"col\" class=\"n\">Fail</th>"
      "<th scope=\"col\" class=\"n\">Warn</th><th scope=\"col\" class=\"n\">Info</th>"
      "<th scope=\"col\" class=\"n\">Duration</th>";
  for (const IndicatorInfo& info : INDICATOR_TABLE) {
    html += fmt::format(R"(<th scope="col" class="spark">{}</th>)", info.title);
  }
  html += "</tr></thead>\n<tbody>\n";
  writeText(html, out);
  for (size_t i = 0; i < rows.size(); ++i) writeText(rowHtml(rows[i], i, ranges), out);
  writeText("</tbody></table></div>\n</main>\n" + documentEnd(document), out);
}
