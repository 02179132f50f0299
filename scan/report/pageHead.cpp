#include "scan/report/pageHead.h"

#include <fmt/core.h>

#include "scan/report/html.h"
#include "scan/report/pagePieces.h"
#include "scan/report/resultFacts.h"

namespace {

std::string listHtml(const char* name, const std::vector<std::string>& texts) {
  if (texts.empty()) return "";
  std::string html = fmt::format(R"(<ul class="{}">)", name);
  for (const std::string& text : texts) html += "<li>" + escapeHtml(text) + "</li>";
  return html + "</ul>";
}

std::vector<std::string> warningsOf(const ResultRecord& record) {
  std::vector<std::string> warnings = record.warnings;
  if (record.isTruncated) {
    warnings.insert(warnings.begin(), "The file ends before it should.");
  }
  return warnings;
}

std::string errorHtml(const std::string& error) {
  return error.empty() ? "" : "<p class=\"error\">" + escapeHtml(error) + "</p>";
}

std::string verdictHtml(const Page& page, const Source& source) {
  const ResultRecord& record = source.input->record;
  const auto& [verdict, reasons] = record.judgement;
  return fmt::format(
      "<section class=\"verdict {}\"><h1>{}</h1><p class=\"mark\">{}</p>{}{}{}</section>\n",
      verdictName(verdict), isComparison(page) ? keyHtml(source) : nameHtml(source),
      verdictTitle(verdict), listHtml("reasons", reasons), errorHtml(record.error),
      listHtml("warnings", warningsOf(record)));
}

std::string factListHtml(const Source& source) {
  std::string html = "<dl class=\"facts\">";
  for (const Fact& fact : factsOf(source.input->record)) {
    html += fmt::format("<div><dt>{}</dt><dd>{}</dd></div>", fact.title, escapeHtml(fact.text));
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
  return fmt::format(R"(<tr{}><th scope="row">{}</th>{}</tr>)", isSame ? "" : R"( class="differs")",
                     title, cells);
}

std::string factTableHtml(const Page& page) {
  std::string html = "<div class=\"scroll\"><table class=\"facts\"><thead><tr><td></td>";
  std::vector<std::vector<Fact>> inputs;
  std::vector<Fact> rows;  // of all inputs
  for (const Source& source : page.sources) {
    html += "<th scope=\"col\">" + keyHtml(source) + "</th>";
    inputs.push_back(factsOf(source.input->record));
    for (const Fact& fact : inputs.back()) {
      if (factNamed(rows, fact.title).empty()) rows.push_back(fact);
    }
  }
  html += "</tr></thead><tbody>";
  for (const Fact& row : rows) html += factRowHtml(inputs, row.title);
  return html + "</tbody></table></div>\n";
}

}  // namespace

std::string headHtml(const Page& page) {
  std::string html = "<header>\n<div class=\"verdicts\">";
  for (const Source& source : page.sources) html += verdictHtml(page, source);
  html += "</div>\n";
  if (isComparison(page)) return html + factTableHtml(page) + "</header>\n";
  for (const Source& source : page.sources) html += factListHtml(source);
  return html + "</header>\n";
}
