#include "scan/report/pagePieces.h"

#include <fmt/core.h>
#include <algorithm>

#include "scan/numbers/decimals.h"
#include "scan/report/html.h"
#include "scan/report/resultFacts.h"

std::string colourClass(size_t place) {
  constexpr int COLOURS = 8;
  return "i" + std::to_string(place % COLOURS);
}

std::string nameHtml(const Source& source) {
  std::string name = nameOf(source.input->record);
  if (name.empty()) name = "input " + std::to_string(source.place + 1);
  return fmt::format(R"(<bdi class="name">{}</bdi>)", escapeHtml(name));
}

std::string keyHtml(const Source& source) {
  return fmt::format(R"(<span class="key {}"></span>{})", colourClass(source.place),
                     nameHtml(source));
}

std::string percentOf(double time, const TimeSpan& span) {
  const double part = (time - span.start) / (span.end - span.start);
  return fmt::format("{:.4f}%", 100.0 * std::clamp(part, 0.0, 1.0));
}

std::string numberCell(double value, const std::string& text) {
  return fmt::format(R"(<td class="n" data-v="{}">{}</td>)", shortestText(value), text);
}
